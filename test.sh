#!/usr/bin/env bash
# Installs what is missing, builds, and runs every test.
#
#   ./test.sh               release build
#   ./test.sh --sanitize    and once more under the address and undefined-behaviour sanitizers (also with CI=true)
set -euo pipefail
cd "$(dirname "$0")"

sanitize=false
[ "${CI:-}" = true ] && sanitize=true
case ${1:-} in
  --sanitize) sanitize=true ;;
  '') ;;
  *) sed -n '2,5s/^# \{0,1\}//p' "$0" >&2; exit 2 ;;
esac

tools/install-packages.sh build test

buildAndTest() {
  local preset=$1
  cmake --preset "$preset"
  cmake --build --preset "$preset" --parallel "$(nproc)"
  ctest --preset "$preset" --parallel "$(nproc)" --no-label-summary
}

buildAndTest release
if $sanitize; then
  export UBSAN_OPTIONS=print_stacktrace=1
  buildAndTest sanitize
fi
