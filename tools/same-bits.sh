#!/usr/bin/env bash
# One run over and over, on other numbers of threads, instruction sets and engines: every product must have one checksum.
#
#   tools/same-bits.sh [--build FOLDER] [--small] [--repeat N]      (default: build/release, 1024 x 1024 pixels)
#
# Compared are whole files, histories with their dates included: SOURCE_DATE_EPOCH holds the clock still. The checksums
# belong to this machine: FFTW chooses its code by the processor and cannot be told otherwise.
set -euo pipefail
build=$(dirname "$0")/../build/release
small=false repeat=20
while [ $# -gt 0 ]; do
  case $1 in
    --build) build=$2; shift ;;
    --small) small=true ;;
    --repeat) repeat=$2; shift ;;
    *) sed -n '2,7s/^# \{0,1\}//p' "$0" >&2; exit 2 ;;
  esac
  shift
done
cli=$(realpath "$build")/src/cli/lumo-cli
work=$(mktemp -d "${TMPDIR:-/tmp}/lumo-bits-XXXXXX")
trap 'rm -rf "$work"' EXIT
cd "$work"
export SOURCE_DATE_EPOCH=1700000000

cat > sky.json <<'EOF'
{"name": "sky", "ra_deg": 187.7, "dec_deg": 12.4, "reference_mhz": 5000, "components": [
  {"name": "core", "type": "point", "east_mas": 0, "north_mas": 0, "flux_jy": 1, "index": 0.2},
  {"name": "jet", "type": "gaussian", "east_mas": -2.5, "north_mas": 1.5, "flux_jy": 0.7, "index": -0.8,
   "major_mas": 1.5, "minor_mas": 0.8, "pa_deg": -60}]}
EOF
if $small; then
  "$cli" simulate --sky sky.json --array vlba --bands 4600,5400 --ifs 3 --channels 2 --interval 900 --noise 0.01 \
    --out uvx > /dev/null
  options=(--half-size 256 --iterations 40 --order 2)
else
  "$cli" simulate --sky sky.json --array vlba --bands 4600,5000,5400 --ifs 4 --channels 16 --interval 60 --noise 0.01 \
    --out uvx > /dev/null
  options=(--half-size 1024 --iterations 300 --order 3)
fi
options+=(--weighting uniform --kernel gauss --kernel-width 2,2 --index-error)

# What there is to choose from, the widest first: told by a name that there is not.
sets=$(LUMO_SIMD='?' "$cli" info uvx 2>&1 | sed -n 's/.*it has: //p') || true
[ -n "$sets" ] || { echo 'no list of instruction sets' >&2; exit 1; }

# run ENGINE THREADS SET: prints the checksums of the products.
run() {
  local more=() engine=$1
  if [ "$engine" = rounds-once ]; then more=(--fast-clean) engine=fast; fi
  rm -rf out
  LUMO_CLEAN=$engine LUMO_SIMD=$3 "$cli" run uvx/*.uvx --folder out --threads "$2" "${options[@]}" "${more[@]}" > log 2>&1 ||
    { cat log >&2; return 1; }
  (cd out && sha256sum ./*)
}

combinations=()
for engine in plain fast; do
  for threads in 1 2 3 8; do
    for set in $sets; do
      # Vector code is the fast engine's and the gridding's.
      combinations+=("$engine $threads $set")
    done
  done
done
# The list is gone through in steps that reach every part of it, however short the walk.
count=${#combinations[@]}
$small && repeat=$count
step=7
while [ $((count % step)) = 0 ]; do step=$((step + 2)); done

echo "instruction sets: $sets"
failures=0 first='' at=0
for ((n = 0; n < repeat; n++)); do
  combination=${combinations[$at]}
  at=$(((at + step) % count))
  began=$SECONDS
  # shellcheck disable=SC2086
  sums=$(run $combination)
  # An engine or a set that did not take hold would show here.
  $small || echo "$combination: $((SECONDS - began)) s"
  if [ -z "$first" ]; then
    first=$sums
  elif [ "$sums" != "$first" ]; then
    failures=$((failures + 1))
    echo "other bits with $combination:"
    diff <(echo "$first") <(echo "$sums") || true
  fi
done
echo "plain and fast engine: $repeat runs of $(echo "$first" | wc -l) products, $failures with other bits"

# --fast-clean gives up the last bits of the other engines, but not its own.
once='' onceRuns=0
for threads in 1 3 8; do
  for set in $sets; do
    $small || [ "$threads" = 3 ] || [ "$set" = "${sets%% *}" ] || continue
    sums=$(run rounds-once "$threads" "$set")
    onceRuns=$((onceRuns + 1))
    if [ -z "$once" ]; then
      once=$sums
    elif [ "$sums" != "$once" ]; then
      failures=$((failures + 1))
      echo "other bits with --fast-clean, $threads threads, $set"
    fi
  done
done
echo "--fast-clean: $onceRuns runs, compared among each other"
echo "$first"
[ "$failures" = 0 ]
