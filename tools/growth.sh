#!/usr/bin/env bash
# Measures how a run's time and memory grow with visibilities, iterations, pixels and spectral terms, and fits lines.
#
#   tools/growth.sh [visibilities] [iterations] [pixels] [terms]     builds (build/bench) and measures what is named; without a word everything
#
# tools/load.sh does the same for files and frequencies. GROWTH_FOLDER (a folder for 1 GB), GROWTH_REPEATS (5) and GROWTH_BUILD (a
# build folder that is there already) change how.
set -euo pipefail
cd "$(dirname "$0")/.."
build=${GROWTH_BUILD:-build/bench}
if [ -z "${GROWTH_BUILD:-}" ]; then
  tools/install-packages.sh build >&2
  cmake --preset bench >&2
  cmake --build --preset bench --parallel "$(nproc)" --target lumo-cli >&2
fi
exec python3 tools/growth.py "$build" "$@"
