#!/usr/bin/env bash
# Checks that every tracked C++ file is laid out as .clang-format says,
# with clang-format 14; prints each difference and fails if there is any.
# Changes nothing: `clang-format-14 -i FILE` applies the layout.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/setup.sh clang-format-14
git ls-files -z '*.cpp' '*.h' |
  xargs -0 clang-format-14 --dry-run --Werror
echo "check-format: every C++ file is formatted"
