#!/usr/bin/env bash
# Cross-builds for each machine named (default: aarch64 and s390x, the
# big-endian one) with Debian's cross g++ and the toolchain file
# cmake/MACHINE-linux-gnu.cmake, then runs the tests under qemu-user, which
# ctest starts through the toolchain's emulator: the unit tests, the fuzz
# corpus replay, the tool's table test, the README's examples and the
# example programs. The consumer tests are left to the native builds.
#   usage: cross.sh [MACHINE...]
set -euo pipefail
cd "$(dirname "$0")/.."
source scripts/quietly.sh

scripts/setup.sh --cross

# ctest in build directory $1, further arguments passed on; the caller's
# environment reaches the programs under qemu.
run_tests() {
  local dir=$1; shift
  ctest --test-dir "$dir" --output-on-failure -j "$(nproc)" "$@"
}

machines=("$@")
[ $# -gt 0 ] || machines=(aarch64 s390x)
for machine in "${machines[@]}"; do
  dir="build/$machine"
  echo "== $machine: cross g++, tests under qemu-user; build and tests," \
    "about 1 min 45 s each"
  quietly cmake -S . -B "$dir" -G Ninja \
    --toolchain "cmake/$machine-linux-gnu.cmake" \
    -DCMAKE_BUILD_TYPE=RelWithDebInfo -DVESK_BUILD_TESTS=ON \
    -DVESK_BUILD_BENCH=OFF -DVESK_INSTALL=OFF
  quietly cmake --build "$dir"
  run_tests "$dir"
done
