#!/usr/bin/env bash
# Builds the benchmark (optimised, without the heap's pointer checks), runs
# it with repetitions and writes the medians to docs/PERFORMANCE.md.
#   scripts/bench.sh            full run
#   scripts/bench.sh --smoke    one quick pass on the small inputs (CI)
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/setup.sh
scripts/install-bench-deps.sh
cmake -S . -B build/bench -G Ninja -DCMAKE_BUILD_TYPE=Release \
  -DVESK_HEAP_CHECKS=OFF -DVESK_BUILD_TESTS=OFF >/dev/null
cmake --build build/bench --target vesk_bench vesktext
bench=build/bench/bench/vesk_bench

if [ "${1:-}" = "--smoke" ]; then
  exec "$bench" --benchmark_min_time=0.0001 \
    --benchmark_filter='-(1MiB|adversarial)'
fi

# Many short repetitions in random order, so that the slow spells of a
# shared machine fall on every row alike rather than on one side of a
# comparison. Each group of rows that are set against each other, one
# operation on one input, runs in a process of its own, so that its rounds
# are short and a row and its peers see the same spells. Why, with the
# figures that showed it: docs/PERFORMANCE.md, "Method".
repetitions=100
results=build/bench/results
rm -rf "$results"
mkdir -p "$results" docs
groups=$("$bench" --benchmark_list_tests | awk -F/ '!seen[$1 "/" $2]++ { print $1 "/" $2 }')
index=0
for group in $groups; do
  index=$((index + 1))
  "$bench" --benchmark_filter="^$group/" --benchmark_repetitions=$repetitions \
    --benchmark_enable_random_interleaving=true \
    --benchmark_report_aggregates_only=true --benchmark_min_time=0.01 \
    --benchmark_out="$(printf '%s/%03d.json' "$results" $index)" \
    --benchmark_out_format=json >/dev/null
  echo "ran $group"
done
bench/line_lengths.sh build/bench/tools/vesktext >"$results/line_lengths.md"
echo "ran vesktext on long and short lines"
python3 bench/report.py docs/PERFORMANCE.md $repetitions "$results"/*.json \
  "$results/line_lengths.md"
echo "wrote docs/PERFORMANCE.md"
