#!/usr/bin/env bash
# Sets up, builds and runs every test: once with g++ (optimised) and once
# with clang (debug), both with warnings as errors, each also with every
# form of the block kernels forced in turn; the unit tests and the corpus
# replay with g++ where plain char is unsigned and without SSE2; everything
# but the consumers cross-built for aarch64 and s390x under qemu-user
# (scripts/cross.sh); then the clang build's unit tests under valgrind,
# everything again under AddressSanitizer and UndefinedBehaviorSanitizer,
# and the fuzz target for 60 seconds. Each stage prints a line as it
# starts; builds print nothing unless they fail.
set -euo pipefail
cd "$(dirname "$0")/.."
source scripts/quietly.sh

echo "== setup: checking the packages (installing missing ones takes minutes)"
scripts/setup.sh

# run_suite NAME COMPILER BUILD_TYPE [CXXFLAGS [CTEST_ARGS...]]
run_suite() {
  local name=$1 compiler=$2 build_type=$3 flags=${4:-}
  shift $(($# < 4 ? $# : 4))
  local dir="build/$name"
  echo "== $name: $compiler, $build_type${flags:+ $flags}; build and tests"
  quietly env CXX="$compiler" cmake -S . -B "$dir" -G Ninja \
    -DCMAKE_BUILD_TYPE="$build_type" -DCMAKE_CXX_FLAGS="$flags" \
    -DVESK_BUILD_TESTS=ON
  quietly cmake --build "$dir"
  ctest --test-dir "$dir" --output-on-failure -j "$(nproc)" "$@"
}

run_suite gcc g++ RelWithDebInfo
# DWARF 4: the valgrind below cannot read clang 14's default DWARF 5. The
# consumers (run in the g++ and sanitizer builds) and the tool's piece test
# (g++ only) are the longest tests and check nothing a compiler changes.
run_suite clang clang++ Debug "-gdwarf-4" -E '_consumer$|^vesktext_pieces$'
# Plain char unsigned, as on AArch64, and the byte loops that machines
# without SSE2 take: the unit tests and the corpus replay.
echo "== plain: g++, -funsigned-char -U__SSE2__; unit tests and replay"
quietly cmake -S . -B build/plain -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
  -DCMAKE_CXX_FLAGS="-funsigned-char -U__SSE2__" -DVESK_BUILD_TESTS=ON \
  -DVESK_BUILD_EXAMPLES=OFF -DVESK_BUILD_TOOLS=OFF -DVESK_BUILD_BENCH=OFF \
  -DVESK_INSTALL=OFF
quietly cmake --build build/plain
ctest --test-dir build/plain --output-on-failure -j "$(nproc)" \
  -E subproject_consumer
scripts/cross.sh
scripts/valgrind.sh build/clang
scripts/sanitize.sh
scripts/fuzz.sh 60
