#!/usr/bin/env bash
# Installs the peer libraries the benchmark compares against, from Debian's
# packages, when any is missing. The library and its tests never need them.
set -euo pipefail

packages=(libbenchmark-dev libcurl4-openssl-dev libboost-url1.81-dev libabsl-dev
  libfmt-dev)
missing=()
for package in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q "ok installed" ||
    missing+=("$package")
done
[ ${#missing[@]} -eq 0 ] && exit 0

echo "install-bench-deps: installing ${missing[*]}"
run_as_root=()
[ "$(id -u)" -eq 0 ] || run_as_root=(sudo)
"${run_as_root[@]}" apt-get update -q
"${run_as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
  apt-get install -y -q --no-install-recommends "${missing[@]}"
