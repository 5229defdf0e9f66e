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
cmake --build build/bench --target vesk_bench
bench=build/bench/bench/vesk_bench

if [ "${1:-}" = "--smoke" ]; then
  exec "$bench" --benchmark_min_time=0.0001 \
    --benchmark_filter='-(1MiB|adversarial)'
fi

# Many short repetitions in random order, so that the slow spells of a
# shared machine fall on every row alike rather than on one side of a
# comparison. The spells last from a tenth of a second to seconds; with 25
# repetitions of 0.04 s a row's median still fell in the fast spells in
# one run and the slow ones in the next (the URL search read 1.13 to 1.60
# of strstr over three runs of unchanged code). With 100 of 0.01 s, four
# of five runs read 1.15 to 1.33 and one 1.68: steadier, not steady.
repetitions=100
"$bench" --benchmark_repetitions=$repetitions \
  --benchmark_enable_random_interleaving=true \
  --benchmark_report_aggregates_only=true --benchmark_min_time=0.01 \
  --benchmark_out=build/bench/results.json --benchmark_out_format=json
mkdir -p docs
python3 bench/report.py build/bench/results.json docs/PERFORMANCE.md $repetitions
echo "wrote docs/PERFORMANCE.md"
