#!/usr/bin/env bash
# Times lumo-cli and WSClean on the same simulated visibilities, in turns, and prints the tables of docs/comparison.md.
#
#   tools/bench-wsclean.sh OUT [SECTION...]      OUT: folder for the observations and the maps, made when missing
#
#   data       simulates the observations (the other sections do so too where one is missing)
#   clean512   CLEAN iterations a second, two terms or joined channels, 512²; clean1024: 1024²
#   fast       CLEAN iterations a second, one term, --fast-clean and WSClean's sub-minor loop down to a threshold
#   grid16     visibilities a second of the gridding alone, 16 channels in a row; grid1: one channel
#   whole      16 million visibilities to all products, order 2 or two channels, 512², 5000 iterations
#   real:FILE[,FILE...]    import and run of published UVFITS files, order 2, 512², 2000 iterations (lumo-cli only)
#
# Rates are the best of REPEATS (3) runs, whole runs are made once. LUMO_CLI and LUMO_UVX_TO_MS name other programs than build/bench's.
# Optional: without Debian's wsclean, time or python3-astropy it says so and ends.
set -euo pipefail
out=${1:?folder for the results}
shift
[ $# -gt 0 ] || set -- clean512 clean1024 fast grid16 grid1 whole
. "$(dirname "$0")/wsclean-common.sh"
mkdir -p "$out/lumo" "$out/wsclean"
repeats=${REPEATS:-3}

small() { observe "$sky/sky.json" near --channels 16 --channel-width 125 --interval 120; }
large() { observe "$sky/sky.json" large --channels 16 --channel-width 125 --interval 11.75; }
single() { observe "$sky/sky.json" single --channels 1 --channel-width 1000 --interval 6; }

least() { sort -g | head -1; }
ratio() { awk -v a="$1" -v b="$2" -v form="${3:-%.1f}" 'BEGIN { printf form, a / b }'; }

# phase NAME FILE.uvx... -- OPTIONS...: least seconds that a run spends in a phase.
phase() {
  local name=$1 inputs=() i
  shift
  while [ "$1" != -- ]; do inputs+=("$1"); shift; done
  shift
  for ((i = 0; i < repeats; ++i)); do
    "$cli" run "${inputs[@]}" --folder "$out/lumo" --prefix bench --json "$@" 2>"$out/run.log" |
      "$python" -c '
import json, sys
def seconds(phase):
    found = [phase["seconds"]] if phase["name"] == sys.argv[1] else []
    return sum((seconds(part) for part in phase.get("parts", [])), found)
print(seconds(json.load(sys.stdin)["timing"])[0])' "$name"
  done | least
}

# dirtyCell NAME SIZE: the width of the pixels of a run, degrees.
dirtyCell() {
  "$cli" run "$out/imported/$1.uvx" --folder "$out/lumo" --prefix cell --order 1 --iterations 1 --half-size $2 \
    --uv-limit "$(limits "$out/imported/$1.uvx")" >"$out/run.log" 2>&1
  cellOf "$out/lumo/cell^cln0.exm"
}

# theirs OPTIONS...: a run of wsclean with times in its log, $out/wsclean.log.
theirs() {
  wsclean -log-time -no-update-model-required -pol I -weight natural -temp-dir "$out/wsclean" -name "$out/wsclean/bench" \
    "$@" >"$out/wsclean.log" 2>&1 || { tail -5 "$out/wsclean.log" >&2; return 1; }
}

# between FIRST LAST: seconds between the first lines of wsclean's log that hold these texts.
between() {
  "$python" - "$out/wsclean.log" "$1" "$2" <<'PY'
import datetime, sys
name, *texts = sys.argv[1:]
times = []
for text in texts:
    line = next(line for line in open(name, encoding="utf-8") if text in line)
    times.append(datetime.datetime.strptime(line[:27], "%Y-%b-%d %H:%M:%S.%f"))
print((times[1] - times[0]).total_seconds())
PY
}

# Both loops are timed with two numbers of iterations, so that what comes before and after the loop falls out.
cleanRates() {
  local size=$1 few=$2 many=$3 cell rate theirBest=0 threads fast name seconds
  small
  cell=$(dirtyCell near $size)
  declare -A rates
  local limit
  limit=$(limits "$out/imported/near.uvx")
  for threads in 1 2; do
    for fast in "" --fast-clean; do
      seconds=()
      for count in $few $many; do
        seconds+=("$(phase iterate "$out/imported/near.uvx" -- --order 2 --half-size $size --uv-limit "$limit" \
          --iterations $count --threads $threads $fast)")
      done
      rates["lumo-cli${fast:+ $fast}, $threads thread(s)"]=$(awk -v n=$((many - few)) -v a="${seconds[0]}" -v b="${seconds[1]}" 'BEGIN { printf "%.0f", n / (b - a) }')
    done
    seconds=()
    for count in $few $many; do
      seconds+=("$(for ((i = 0; i < repeats; ++i)); do
        theirs -j $threads -size $size $size -scale "$cell" -channels-out 2 -join-channels -mgain 1 -no-fast-subminor \
          -gain 0.1 -niter $count "$out/near.ms"
        between "Initial peak" "Stopped on peak"
      done | least)")
    done
    rate=$(awk -v n=$((many - few)) -v a="${seconds[0]}" -v b="${seconds[1]}" 'BEGIN { printf "%.0f", n / (b - a) }')
    rates["wsclean -no-fast-subminor, $threads thread(s)"]=$rate
    [ "$rate" -lt "$theirBest" ] || theirBest=$rate
  done
  echo "| CLEAN loop, $size², N = 2 | iterations/s | over wsclean's best |"
  echo "|---|---|---|"
  for name in "${!rates[@]}"; do
    echo "| $name | ${rates[$name]} | $(ratio "${rates[$name]}" "$theirBest") |"
  done | sort
}

fastRates() {
  local size threshold cell best count rate seconds mine
  small
  echo "| CLEAN loop, N = 1, gain 0.01, down to | iterations | wsclean, iterations/s | lumo-cli --fast-clean | lumo-cli | fast / wsclean |"
  echo "|---|---|---|---|---|---|"
  for size in 512 1024; do
    cell=$(dirtyCell near $size)
    for threshold in 0.1 0.01; do
      best=$(for ((i = 0; i < repeats; ++i)); do
        theirs -size $size $size -scale "$cell" -reorder -mgain 1 -gain 0.01 -niter 1000000 -threshold $threshold "$out/near.ms"
        between "Initial peak" "Stopped on peak"
      done | least)
      count=$(sed -n 's/.*Performed \([0-9]*\) iterations.*/\1/p' "$out/wsclean.log")
      mine=()
      for fast in --fast-clean ""; do
        seconds=$(phase iterate "$out/imported/near.uvx" -- --order 1 --half-size $size --iterations "$count" --gain 0.01 \
          --uv-limit "$(limits "$out/imported/near.uvx")" $fast)
        mine+=("$(ratio "$count" "$seconds" %.0f)")
      done
      rate=$(ratio "$count" "$best" %.0f)
      echo "| $threshold Jy, $size² | $count | $rate | ${mine[0]} | ${mine[1]} | $(ratio "${mine[0]}" "$rate") |"
    done
  done
}

# gridRates NAME CHANNELS
gridRates() {
  local name=$1 channels=$2 cell rows visibilities seconds threads
  cell=$(dirtyCell "$name" 512)
  rows=$(sed -n 's/.*: \([0-9]*\) rows$/\1/p' "$out/$name.log")
  visibilities=$((rows * channels))
  seconds=$(for ((i = 0; i < repeats; ++i)); do
    theirs -size 512 512 -scale "$cell" -reorder -niter 0 -grid-mode nn -kernel-size 1 -oversampling 1 -nwlayers 1 "$out/$name.ms"
    between "Gridding pass 0" "Fourier transforms"
  done | least)
  local theirRate
  theirRate=$(ratio $visibilities "$seconds" %.0f)
  echo "| gridding, $channels channel(s) a row, $visibilities visibilities | million/s | over wsclean |"
  echo "|---|---|---|"
  echo "| wsclean, nearest neighbour, one w layer | $(ratio "$theirRate" 1e6 %.1f) | 1 |"
  local kind inputs
  for kind in "imported from the set" "a file a band"; do
    inputs=("$out/imported/$name.uvx")
    [ "$kind" = "a file a band" ] && inputs=("$out/$name"/*.uvx)
    for threads in 1 2; do
      seconds=$(phase grid "${inputs[@]}" -- --order 1 --half-size 512 --iterations 1 --threads $threads \
        --uv-limit "$(limits "$out/imported/$name.uvx")")
      echo "| lumo-cli, $kind, $threads thread(s) | $(ratio $visibilities "$seconds" %.0f | xargs -I{} awk -v r={} 'BEGIN { printf "%.1f", r / 1e6 }') | $(ratio "$(ratio $visibilities "$seconds" %.0f)" "$theirRate") |"
    done
  done
}

wholeRun() {
  local cell options
  large
  cell=$(dirtyCell large 512)
  echo "| 16 million visibilities to all products, 512², 5000 iterations | time | peak memory |"
  echo "|---|---|---|"
  options=(--folder "$out/lumo" --prefix whole --order 2 --half-size 512 --iterations 5000
    --uv-limit "$(limits "$out/imported/large.uvx")")
  echo "| lumo-cli run, imported from the set | $(timed "$cli" run "$out/imported/large.uvx" "${options[@]}") |"
  echo "| lumo-cli run, a file a band | $(timed "$cli" run "$out/large"/*.uvx "${options[@]}") |"
  options=(-size 512 512 -scale "$cell" -weight natural -channels-out 2 -join-channels -niter 5000 -gain 0.1 -mgain 1
    -no-fast-subminor -no-update-model-required -pol I -temp-dir "$out/wsclean" -name "$out/wsclean/whole")
  echo "| wsclean, nearest neighbour, one w layer | $(timed wsclean "${options[@]}" -grid-mode nn -kernel-size 1 -oversampling 1 -nwlayers 1 "$out/large.ms") |"
  echo "| wsclean, its own choice of gridding | $(timed wsclean "${options[@]}" "$out/large.ms") |"
  echo "| wsclean -use-wgridder | $(timed wsclean "${options[@]}" -use-wgridder "$out/large.ms") |"
  echo "| lumo-cli import of the set | $(timed "$cli" import "$out/large.ms" --out "$out/again") |"
}

realRun() {
  local files=() file i seconds
  IFS=, read -ra files <<<"$1"
  rm -rf "$out/real"
  for ((i = 0; i < repeats; ++i)); do
    rm -rf "$out/real"
    seconds=$(timed "$cli" import "${files[@]}" --out "$out/real")
    echo "import ${#files[@]} file(s): $seconds; run: $(timed "$cli" run "$out/real"/*.uvx --folder "$out/real" --order 2 \
      --half-size 512 --iterations 2000)"
  done
}

for section in "$@"; do
  echo
  case $section in
    data) small; large; single ;;
    clean512) cleanRates 512 1000 6000 ;;
    clean1024) cleanRates 1024 300 1300 ;;
    fast) fastRates ;;
    grid16) large; gridRates large 16 ;;
    grid1) single; gridRates single 1 ;;
    whole) wholeRun ;;
    real:*) realRun "${section#real:}" ;;
    *) echo "unknown section $section" >&2; exit 2 ;;
  esac
done
