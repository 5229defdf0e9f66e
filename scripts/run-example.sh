#!/usr/bin/env bash
# Sets up, builds and runs the example program: a URL built, appended to,
# sliced and compared.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/setup.sh
cmake -S . -B build/example -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
  -DVESK_BUILD_TESTS=OFF >/dev/null
cmake --build build/example --target walkthrough >/dev/null
build/example/examples/walkthrough
