#!/usr/bin/env bash
# Installs the peer libraries the benchmark compares against, from Debian's
# packages, when any is missing. The library and its tests never need them.
set -euo pipefail
exec "$(dirname "$0")/setup.sh" libbenchmark-dev libcurl4-openssl-dev \
  libboost-url1.81-dev libabsl-dev libfmt-dev
