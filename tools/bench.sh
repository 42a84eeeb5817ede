#!/usr/bin/env bash
# Builds the benchmark programs and prints every figure of docs/benchmarks.md.
#
#   tools/bench.sh [GOOGLE_BENCHMARK_OPTION...]
set -euo pipefail
cd "$(dirname "$0")/.."
tools/install-packages.sh build test >&2
cmake --preset bench >&2
cmake --build --preset bench --parallel "$(nproc)" >&2
grep -m1 'model name' /proc/cpuinfo
for program in build/bench/bench/*/lumo_*_bench; do
  echo "== $(basename "$program")"
  "$program" "$@" 2>/dev/null | grep '^BM_'
done
