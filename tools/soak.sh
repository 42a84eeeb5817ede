#!/usr/bin/env bash
# The desktop program under a scripted user, with the address sanitizer and its search for leaks.
#
#   tools/soak.sh [MINUTES [BUILD_FOLDER]]        # 30 minutes and build/asan unless told otherwise
#
# What was held after each visit comes to BUILD_FOLDER/soak.tsv. Ends without success when a visit goes wrong,
# when open files or widgets are left over, when memory grows, and when anything has leaked.
set -euo pipefail
cd "$(dirname "$0")/.."
minutes=${1:-30}
build=${2:-build/asan}

cmake --preset asan -B "$build"
cmake --build "$build" --parallel "$(nproc)" --target lumo_longuse_tests

# What is freed waits in a quarantine of 16 MB only, so that resident memory comes to rest.
export ASAN_OPTIONS=detect_leaks=1:quarantine_size_mb=16
export LSAN_OPTIONS=suppressions=$PWD/tools/lsan.supp:print_suppressions=1
export LUMO_LONG_USE_MINUTES=$minutes LUMO_LONG_USE_RECORD=$build/soak.tsv QT_QPA_PLATFORM=offscreen
"$build"/tests/longuse/lumo_longuse_tests --gtest_filter='LongUseTest.*'
tail -n 1 "$build/soak.tsv" | awk '{ printf "%d visits in %.0f s, %.1f MB allocated, %.1f MB resident\n", $1, $2, $3 / 1e6, $4 / 1e6 }'
