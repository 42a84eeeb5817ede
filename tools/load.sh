#!/usr/bin/env bash
# Measures the programs on very many files, very many frequencies and a very long file, and fits how time and memory grow.
#
#   tools/load.sh [files] [list] [rows] [selections] [large]     builds (build/bench) and measures what is named; without a word everything
#
# files: a run on up to 2 000 files. list: the main window with them. rows: import, imaging and spectra of up to 65 536
# frequencies, each an IF. selections: the same number in 256 frequency selections, imaged and in the main window.
# large: a run on one file of up to 20 GB, most of it holes. LOAD_FOLDER (a folder for 1 GB, of which 20 GB
# seem to be taken), LOAD_REPEATS (3) and LOAD_BUILD (a build folder that is there already) change how.
set -euo pipefail
cd "$(dirname "$0")/.."
build=${LOAD_BUILD:-build/bench}
if [ -z "${LOAD_BUILD:-}" ]; then
  tools/install-packages.sh build test >&2
  cmake --preset bench >&2
  cmake --build --preset bench --parallel "$(nproc)" >&2
fi
exec python3 tools/load.py "$build" "$@"
