#!/usr/bin/env bash
# Installs what is missing, builds, and runs every test.
#
#   ./test.sh               release build; with CI=true also the rooms that read files under the address and
#                           undefined-behaviour sanitizers, and a minute of fuzzing for each of them
#   ./test.sh --sanitize    release build, and everything once more under the sanitizers (an hour on two cores)
set -euo pipefail
cd "$(dirname "$0")"

rooms=()  # under the sanitizers; none: not at all, "all": everything
groups=(build test)
if [ "${CI:-}" = true ]; then
  rooms=(core io convert analysis)
  groups+=(fuzz)
fi
case ${1:-} in
  --sanitize) rooms=(all) ;;
  '') ;;
  *) sed -n '2,6s/^# \{0,1\}//p' "$0" >&2; exit 2 ;;
esac

tools/install-packages.sh "${groups[@]}"

# buildAndTest PRESET ROOM...: "all", or the tests of some rooms.
buildAndTest() {
  local preset=$1 targets=(all) filter=() names
  shift
  if [ "$1" != all ]; then
    targets=("${@/#/lumo_}")
    targets=("${targets[@]/%/_tests}")
    names=$*
    filter=(-R "^(${names// /|})\\.")
  fi
  cmake --preset "$preset"
  cmake --build --preset "$preset" --parallel "$(nproc)" --target "${targets[@]}"
  ctest --preset "$preset" --parallel "$(nproc)" --no-label-summary "${filter[@]}"
}

[ "${CI:-}" != true ] || tools/fuzz.sh 60
if [ ${#rooms[@]} -gt 0 ]; then
  export UBSAN_OPTIONS=print_stacktrace=1
  buildAndTest sanitize "${rooms[@]}"
fi
buildAndTest release all
