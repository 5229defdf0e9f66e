#!/usr/bin/env bash
# Sets up, builds and runs every test: once with g++ (optimised) and once
# with clang (debug), both with warnings as errors.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/setup.sh

run_suite() {
  local name=$1 compiler=$2 build_type=$3
  local dir="build/$name"
  echo "== $name: $compiler, $build_type"
  CXX=$compiler cmake -S . -B "$dir" -G Ninja -DCMAKE_BUILD_TYPE="$build_type" \
    -DVESK_BUILD_TESTS=ON >/dev/null
  cmake --build "$dir"
  ctest --test-dir "$dir" --output-on-failure -j "$(nproc)"
}

run_suite gcc g++ RelWithDebInfo
run_suite clang clang++ Debug
