#!/usr/bin/env bash
# Images the published observations of docs/real-data.md, prints the figures of its table and draws its pictures.
#
#   tools/real-data.sh DATA OUT      DATA: the folder of observations; OUT: gets UVX files, maps and pictures
#
# LUMO_CLI names another lumo-cli than build/release's. Needs python3-astropy and python3-matplotlib.
set -euo pipefail
data=${1:?folder of the observations}
out=${2:?folder for the results}
here=$(dirname "$0")
cli=${LUMO_CLI:-$here/../build/release/src/cli/lumo-cli}

# image PREFIX OPTIONS... -- FILES...: imports the files, runs, and notes the prefix.
image() {
  local prefix=$1 options=()
  shift
  while [ "$1" != -- ]; do options+=("$1"); shift; done
  shift
  local uvx=() file
  for file in "$@"; do
    $cli import "$data/$file" --out "$out/uvx" >"$out/import.log"
    file=$(basename "$file")
    uvx+=("$out/uvx/${file%.*}.uvx")
  done
  $cli run "${uvx[@]}" --folder "$out/maps" --prefix "$prefix" "${options[@]}" >"$out/$prefix.log"
}

mkdir -p "$out"
c=vlba-3c111-2014/3C111_C_2014_05_08.uvf
x=vlba-3c111-2014/3C111_X_2014_05_08.uvf
u=vlba-3c111-2014/3C111_U_2014_05_08.uvf
image 3c111-cx --order 2 --iterations 3000 --half-size 512 -- $c $x
image 3c111-cxu-2 --order 2 --iterations 3000 --half-size 512 -- $c $x $u
image 3c111-cxu-3 --order 3 --iterations 3000 --half-size 512 -- $c $x $u
image j1026 --order 2 --iterations 1000 --half-size 256 -- vlba-j1026-2006/J1026_2542-VLBA.UVF
image 0235-2 --order 2 --iterations 2000 --half-size 256 -- vlba-0235-2022/0235+164E.{Ku,K,Q}.uvf
image 0235-3 --order 3 --iterations 2000 --half-size 256 -- vlba-0235-2022/0235+164E.{Ku,K,Q}.uvf

# Debian's python has Debian's astropy; another python on the PATH may not.
python=$(command -v /usr/bin/python3 || command -v python3)
"$python" "$here/describe-maps.py" "$out/maps" "$out" 3c111-cx 3c111-cxu-2 3c111-cxu-3 j1026 0235-2 0235-3
