#!/usr/bin/env bash
# Fuzzes each target with libFuzzer under AddressSanitizer and
# UndefinedBehaviorSanitizer, from its seed corpus in fuzz/corpus, for the
# given number of seconds each (default 600) in two processes, and prints
# the executions and findings of each. New inputs collect in
# build/fuzz/corpus/<target>; findings (crashes, leaks, timeouts, running
# out of memory) in build/fuzz/findings/<target>. Fails when there are any.
set -euo pipefail
cd "$(dirname "$0")/.."

seconds=${1:-600}
scripts/setup.sh
source scripts/sanitizer-flags.sh
dir=build/fuzz
echo "== fuzz: clang++ -fsanitize=fuzzer, $VESK_SANITIZER_FLAGS; build," \
  "about 15 s, then each target for $seconds s"
configure_sanitized "$dir" -DVESK_BUILD_TESTS=OFF -DVESK_BUILD_EXAMPLES=OFF \
  -DVESK_BUILD_FUZZERS=ON -DVESK_HEAP_CHECKS=ON

failed=0
for target in text; do
  corpus=$dir/corpus/$target
  findings=$dir/findings/$target
  log=$dir/$target.log
  echo "fuzz $target: running for $seconds s"
  rm -rf "$findings"
  mkdir -p "$corpus" "$findings"
  "$dir/fuzz/${target}_fuzzer" -fork=2 -max_total_time="$seconds" \
    -max_len=4096 -timeout=10 -malloc_limit_mb=2048 -rss_limit_mb=4096 \
    -ignore_crashes=1 -ignore_timeouts=1 -ignore_ooms=1 -print_funcs=0 \
    -artifact_prefix="$findings/" "$corpus" "fuzz/corpus/$target" \
    >"$log" 2>&1 || failed=1
  # The fork mode's last status line: "#<executions>: cov: ...".
  executions=$(grep -oE '^#[0-9]+:' "$log" | tail -1 | tr -d '#:')
  found=$(find "$findings" -type f | wc -l)
  echo "fuzz $target: ${executions:-no} executions in ${seconds} s," \
    "$found findings (log: $log)"
  [ -n "$executions" ] && [ "$found" -eq 0 ] || failed=1
done
exit "$failed"
