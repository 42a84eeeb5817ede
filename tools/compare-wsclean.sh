#!/usr/bin/env bash
# Images one simulated observation with lumo-cli and with WSClean and prints what both make of its sources, with times
# and memory of the same run, as the tables of docs/comparison.md.
#
#   tools/compare-wsclean.sh OUT      OUT: folder for the observation and the maps, made when missing
#
# LUMO_CLI and LUMO_UVX_TO_MS name other programs than build/bench's. Optional: without Debian's wsclean, time or
# python3-astropy it says so and ends.
set -euo pipefail
out=${1:?folder for the results}
. "$(dirname "$0")/wsclean-common.sh"
mkdir -p "$out/lumo" "$out/wsclean"

# onPixels CELL: the sky with every source moved to the centre of the nearest pixel of that width in degrees.
onPixels() {
  "$python" -c '
import json, sys
sky = json.load(open(sys.argv[1]))
cell = float(sys.argv[2]) * 3.6e6
for source in sky["components"]:
    for key in ("east_mas", "north_mas"):
        source[key] = round(source[key] / cell) * cell
print(json.dumps(sky))' "$sky/sky.json" "$1"
}

# compare TITLE OBSERVATION SKY SIZE ITERATIONS WEIGHTING
compare() {
  local title=$1 name=$2 model=$3 size=$4 iterations=$5 weighting=$6 cell ours once major
  ours=$(timed "$cli" run "$out/imported/$name.uvx" --folder "$out/lumo" --prefix $name-$size-$weighting --order 2 \
    --iterations $iterations --half-size $size --weighting $weighting --uv-limit "$(limits "$out/imported/$name.uvx")")
  local lumo=$out/lumo/$name-$size-$weighting
  cell=$(cellOf "$lumo^cln0.exm")
  local options=(-size $size $size -scale "$cell" -weight $weighting -channels-out 2 -join-channels -niter $iterations
    -gain 0.1 -no-fast-subminor -no-update-model-required -pol I -temp-dir "$out/wsclean")
  once=$(timed wsclean -name "$out/wsclean/once" "${options[@]}" -mgain 1 "$out/$name.ms")
  major=$(timed wsclean -name "$out/wsclean/major" "${options[@]}" -mgain 0.8 "$out/$name.ms")
  echo
  echo "**$title**"
  echo
  "$python" "$root/tools/compare-sources.py" "$model" "$lumo" "$out/wsclean/once" "$out/wsclean/major"
  echo
  echo "| program | time | peak memory |"
  echo "|---|---|---|"
  echo "| lumo-cli run | $ours |"
  echo "| wsclean -mgain 1 (once) | $once |"
  echo "| wsclean -mgain 0.8 (major) | $major |"
}

observe "$sky/sky.json" near --channels 16 --channel-width 125 --interval 120
observe "$sky/sky-far.json" far --channels 16 --channel-width 125 --interval 120
compare "512², natural weighting" near "$sky/sky.json" 512 3000 natural
compare "1024², natural weighting" near "$sky/sky.json" 1024 3000 natural
compare "512², uniform weighting" near "$sky/sky.json" 512 3000 uniform
onPixels "$(cellOf "$out/lumo/near-512-uniform^cln0.exm")" >"$out/sky-centred.json"
observe "$out/sky-centred.json" centred --channels 16 --channel-width 125 --interval 120
compare "512², uniform weighting, the sources moved to pixel centres" centred "$out/sky-centred.json" 512 3000 uniform
compare "512², natural weighting, with a source far out" far "$sky/sky-far.json" 512 3000 natural
