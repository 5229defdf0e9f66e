#!/usr/bin/env bash
# Builds and runs the whole test suite (unit tests, the example and the fuzz
# corpus replays) with clang under AddressSanitizer, leak detection on, and
# UndefinedBehaviorSanitizer, every report fatal, with the C++ library's
# assertions on. MemorySanitizer is left out: it reports every read of
# memory written by code built without it, and the C++ library and
# GoogleTest here are built without it.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/setup.sh
source scripts/sanitizer-flags.sh
dir=build/sanitize
echo "== sanitize: clang++, $VESK_SANITIZER_FLAGS; build and tests"
configure_sanitized "$dir" -DVESK_BUILD_TESTS=ON
# The tool's piece test starts the tool thousands of times, minutes under
# the sanitizers; the g++ build runs it, and the tool's own table runs here.
ctest --test-dir "$dir" --output-on-failure -j "$(nproc)" -E '^vesktext_pieces$'
