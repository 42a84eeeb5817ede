#!/usr/bin/env bash
# Prints which share of the lines of each room the tests reach, and fails where one reaches too few: 90 in a hundred, 75
# in app and in the ui folders.
#
#   tools/coverage.sh             builds with the compiler's counters (build/coverage), runs every test, prints the table
#   tools/coverage.sh --report    only the table, of the tests that ran last
#
# Every line of src that has code counts, also of a source that no test links. LUMO_REAL_DATA names the folder with real
# observations for the tests that want them; COVERAGE_LINES=1 also lists the lines that were not reached.
set -euo pipefail
cd "$(dirname "$0")/.."
build=build/coverage
jobs=${LUMO_JOBS:-$(nproc)}
failed=0

case ${1:-} in
  '')
    tools/install-packages.sh build test coverage >&2
    cmake --preset coverage ${LUMO_REAL_DATA+-DLUMO_REAL_DATA="$LUMO_REAL_DATA"} >&2
    cmake --build --preset coverage --parallel "$jobs" >&2
    # Collecting the names of the tests has run the programs already.
    find "$build" -name '*.gcda' -delete
    ctest --preset coverage --parallel "$jobs" --no-label-summary >&2 || failed=1
    ;;
  --report) ;;
  *) sed -n '2,9s/^# \{0,1\}//p' "$0" >&2; exit 2 ;;
esac

data=$(sed -n 's/^LUMO_REAL_DATA:[^=]*=//p' "$build/CMakeCache.txt")
[ -d "$data" ] && echo "with real observations" || echo "without real observations"
# Nothing but sources that the build makes is left out: no lines by a mark in the text, no sources by name.
gcovr --root . --filter 'src/' --filter "$build/roots/" --no-markers -j "$jobs" --json "$build/lines.json" "$build"
python3 tools/coverage-table.py "$build/lines.json" || failed=1
exit $failed
