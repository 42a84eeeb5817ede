#!/usr/bin/env bash
# Builds the fuzz targets and runs them from the stored corpora, one on each core.
#
#   tools/fuzz.sh [SECONDS [TARGET...]]   SECONDS (60) for each target; all of fuzz/CMakeLists.txt without a name.
#                                         The small text readers (array, frequency, history) get a quarter
#   tools/fuzz.sh --merge [TARGET...]     makes fuzz/corpus anew: the smallest set of the stored files and those under
#                                         LUMO_FUZZ_WORK that reaches every edge, 1.2 MB of each at most
#
# Every run begins with fuzz/crashes, the inputs that once were findings.
# LUMO_FUZZ_WORK=FOLDER keeps what the runs find in FOLDER/<target> and goes on from there. A finding ends with a failure;
# the input that gave it stays in build/fuzz/findings.
set -euo pipefail
cd "$(dirname "$0")/.."
root=$PWD
build=$root/build/fuzz
export UBSAN_OPTIONS=print_stacktrace=1
# One block stays below 64 MiB, everything together below 1 GiB; the targets themselves hold the heap to a multiple of the
# input (fuzz/FuzzSupport.h). An input that takes 10 s is a finding too.
options=(-max_len=65536 -timeout=10 -malloc_limit_mb=64 -rss_limit_mb=1024 -print_final_stats=1)

merge=false
seconds=60
case ${1:-} in
  --merge) merge=true; shift ;;
  -*) sed -n '2,12s/^# \{0,1\}//p' "$0" >&2; exit 2 ;;
  '') ;;
  *) seconds=$1; shift ;;
esac
targets=("$@")
[ ${#targets[@]} -gt 0 ] || mapfile -t targets < <(sed -n 's/^lumo_fuzz(\([a-z]*\) .*/\1/p' fuzz/CMakeLists.txt)

# The targets work in folders of their own, so every path is a full one.
corpus=$root/fuzz/corpus
[ -z "${LUMO_FUZZ_WORK:-}" ] || { mkdir -p "$LUMO_FUZZ_WORK"; LUMO_FUZZ_WORK=$(realpath "$LUMO_FUZZ_WORK"); }

cmake --preset fuzz
cmake --build --preset fuzz --parallel "$(nproc)" --target "${targets[@]/#/lumo_fuzz_}"

scratch=$(mktemp -d -p /dev/shm lumo-fuzz.XXXXXX)
trap 'rm -rf "$scratch"' EXIT
export TMPDIR=$scratch
mkdir -p "$build/findings"

if $merge; then
  for target in "${targets[@]}"; do
    mkdir -p "$scratch/$target" "${LUMO_FUZZ_WORK:?names the folder to merge}/$target"
    "$build/fuzz/lumo_fuzz_$target" -set_cover_merge=1 -use_counters=0 "${options[@]}" "$scratch/$target" \
      "$corpus/$target" "$LUMO_FUZZ_WORK/$target" >"$scratch/$target.log" 2>&1 ||
      { tail -n 30 "$scratch/$target.log" >&2; exit 1; }
    # The largest files go where a corpus would have more than 1.2 MB; their edges are soon found again.
    while [ "$(du -sb "$scratch/$target" | cut -f 1)" -gt 1200000 ]; do
      rm "$scratch/$target/$(ls -S "$scratch/$target" | head -n 1)"
    done
    rm -rf "${corpus:?}/$target"
    cp -r "$scratch/$target" "$corpus/$target"
    echo "fuzz: $target: $(find "$corpus/$target" -type f | wc -l) files, $(du -sb "$corpus/$target" | cut -f 1) bytes"
  done
  exit 0
fi

# runOne TARGET: a line about the run; its log stays in build/fuzz/findings when it fails.
runOne() {
  local target=$1 time=$seconds work=${LUMO_FUZZ_WORK:-$scratch}/$1 log=$scratch/$1.log dictionary=() crashes=() status=0
  case $target in array | frequency | history) time=$(((seconds + 3) / 4)) ;; esac
  [ ! -f "fuzz/dict/$target.dict" ] || dictionary=("-dict=$root/fuzz/dict/$target.dict")
  [ ! -d "fuzz/crashes/$target" ] || crashes=("$root/fuzz/crashes/$target")
  mkdir -p "$work"
  TIMEFORMAT='%U %S'
  { time "$build/fuzz/lumo_fuzz_$target" "${options[@]}" "-max_total_time=$time" "${dictionary[@]}" \
    "-artifact_prefix=$build/findings/$target-" "$work" "$corpus/$target" "${crashes[@]}" >"$log" 2>&1; } 2>"$log.time" || status=$?
  if [ $status -ne 0 ]; then
    cp "$log" "$build/findings/$target.log"
    tail -n 60 "$log" >&2
    echo "fuzz: $target: a finding; see $build/findings" >&2
    return 1
  fi
  awk -v target="$target" '
    FILENAME ~ /time$/ { cpu = $1 + $2; next }
    match($0, /cov: [0-9]+/) { edges = substr($0, RSTART + 5, RLENGTH - 5) }
    /number_of_executed_units/ { runs = $2 } /peak_rss_mb/ { memory = $2 }
    END { printf "fuzz: %-9s %9d executions, %5d edges, %6.1f s of CPU, peak %d MB: clean\n", target, runs, edges, cpu, memory }
  ' "$log.time" "$log"
}
export -f runOne
export root build corpus seconds scratch
# Arrays are not exported.
export optionsText="${options[*]}"
printf '%s\n' "${targets[@]}" |
  xargs -P "$(nproc)" -I {} bash -c 'set -euo pipefail; read -ra options <<<"$optionsText"; runOne {}'
