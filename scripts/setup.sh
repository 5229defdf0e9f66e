#!/usr/bin/env bash
# Installs what the build, the tests and their checkers need, from Debian's
# packages, when any of it is missing; given package names, those instead.
# Needs root (or sudo) only when it has to install.
#   usage: setup.sh [PACKAGE...]
set -euo pipefail

# libclang-rt-14-dev: clang 14's sanitizer and libFuzzer runtimes.
packages=(cmake ninja-build g++ clang libgtest-dev pkg-config libclang-rt-14-dev
  valgrind)
[ $# -eq 0 ] || packages=("$@")
missing=()
for package in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q "ok installed" ||
    missing+=("$package")
done
[ ${#missing[@]} -eq 0 ] && exit 0

echo "setup: installing ${missing[*]}"
run_as_root=()
[ "$(id -u)" -eq 0 ] || run_as_root=(sudo)
"${run_as_root[@]}" apt-get update -q
"${run_as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
  apt-get install -y -q --no-install-recommends "${missing[@]}"
