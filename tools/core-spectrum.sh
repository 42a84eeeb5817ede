#!/usr/bin/env bash
# Images every band of two published observations alone, on one grid of cells, and fits a power law to the core.
#
#   tools/core-spectrum.sh DATA OUT      DATA: the folder of observations; OUT: gets UVX files, maps, tables, pictures
#
# Every band is imaged twice: as it is, and tapered to the resolution of the lowest band. The grid is that of the band
# that reaches furthest: the map cell is 1 / (2 limit reach), so a band of smaller reach gets a larger --uv-limit.
# LUMO_CLI names another lumo-cli than build/release's. Needs python3.
set -euo pipefail
data=${1:?folder of the observations}
out=${2:?folder for the results}
here=$(dirname "$0")
cli=${LUMO_CLI:-$here/../build/release/src/cli/lumo-cli}

# The --uv-limit of every UVX file, a line each, that gives all of them the cell of the furthest with a limit of 2.
# Then a line with the reach of the first file, to which the others are tapered.
limits() {
  $cli info --json "$@" | python3 -c '
import json, sys
reaches = []
for file in json.load(sys.stdin)["files"]:
    top = max(b["frequency_hz"] + b["channel_width_hz"] * (b["channels"] - 1) for b in file["bands"])
    reaches.append([top * max(map(abs, file[axis])) for axis in ("u_seconds", "v_seconds")])
far = [max(r[i] for r in reaches) for i in (0, 1)]
for r in reaches:
    print(f"{2 * far[0] / r[0]!r},{2 * far[1] / r[1]!r}")
print(f"{reaches[0][0]!r},{reaches[0][1]!r}")'
}

# spectrum NAME RADIUS_MAS HALF_SIZE ITERATIONS FILE...: the core inside a circle about the phase centre, where the
# brightest feature of every band lies; the file of the lowest frequency comes first.
spectrum() {
  local name=$1 radius=$2 size=$3 iterations=$4 uvx=() file
  shift 4
  for file in "$@"; do
    $cli import "$data/$file" --out "$out/uvx" >"$out/import.log"
    file=$(basename "$file")
    uvx+=("$out/uvx/${file%.*}.uvx")
  done
  local lines
  mapfile -t lines < <(limits "${uvx[@]}")
  local reach=${lines[-1]} kind i options maps
  # The phase centre lies at matrix column and row size / 2, counted from 0; the file counts columns from the east.
  printf 'image\ncircle(%d,%d,%s") # text={core}\n' $((size / 2)) $((size / 2 + 1)) \
    "$(python3 -c "print($radius / 1000)")" >"$out/$name.reg"
  for kind in native tapered; do
    maps=()
    for i in "${!uvx[@]}"; do
      options=(--order 1 --iterations "$iterations" --half-size "$size" --uv-limit "${lines[$i]}")
      [ $kind = tapered ] && options+=(--taper gauss --taper-width "$reach")
      $cli run "${uvx[$i]}" --folder "$out/maps" --prefix "$name-$kind-$i" "${options[@]}" >"$out/$name-$kind-$i.log" 2>&1
      maps+=("$out/maps/$name-$kind-$i^cln0.exm")
    done
    for format in table csv; do
      $cli fit "${maps[@]}" --regions "$out/$name.reg" --format $format >"$out/$name-$kind.$format"
    done
    # A build without windows has no pictures to draw.
    QT_QPA_PLATFORM=offscreen $cli plot "${maps[@]}" --regions "$out/$name.reg" --out "$out/core-$name-$kind.png" ||
      echo "no picture of $name, $kind" >&2
    echo "== $name, $kind"
    $cli info "${maps[@]}" | grep -E '^  (frequency|beam)'
    cat "$out/$name-$kind.table"
  done
}

mkdir -p "$out"
spectrum 0235 2.5 512 2000 vlba-0235-2022/0235+164E.{Ku,K,Q}.uvf
spectrum 3c111 4 1024 4000 vlba-3c111-2014/3C111_{C,X,U,Q,W}_2014_05_08.uvf
