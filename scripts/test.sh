#!/usr/bin/env bash
# Sets up, builds and runs every test: once with g++ (optimised) and once
# with clang (debug), both with warnings as errors, each also with every
# form of the block kernels forced in turn (tests/CMakeLists.txt); then the
# clang build's unit tests under valgrind, everything again under
# AddressSanitizer and UndefinedBehaviorSanitizer, and the fuzz target for
# 120 seconds. Each stage prints a line as it starts, with how long it took
# on 2 idle cores when that is more than a few seconds; builds print
# nothing unless they fail.
set -euo pipefail
cd "$(dirname "$0")/.."
source scripts/quietly.sh

echo "== setup: checking the packages (installing missing ones takes minutes)"
scripts/setup.sh

run_suite() {
  local name=$1 compiler=$2 build_type=$3 duration=$4 flags=${5:-}
  local dir="build/$name"
  echo "== $name: $compiler, $build_type${flags:+ $flags}; build and tests," \
    "$duration"
  quietly env CXX="$compiler" cmake -S . -B "$dir" -G Ninja \
    -DCMAKE_BUILD_TYPE="$build_type" -DCMAKE_CXX_FLAGS="$flags" \
    -DVESK_BUILD_TESTS=ON
  quietly cmake --build "$dir"
  ctest --test-dir "$dir" --output-on-failure -j "$(nproc)"
}

run_suite gcc g++ RelWithDebInfo "about 30 s"
# DWARF 4: the valgrind below cannot read clang 14's default DWARF 5.
run_suite clang clang++ Debug "about 15 s" "-gdwarf-4"
scripts/valgrind.sh build/clang
scripts/sanitize.sh
scripts/fuzz.sh 120
