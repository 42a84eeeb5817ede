#!/usr/bin/env bash
# Opens a map in DS9 without a screen and takes a picture of its window, to see that the viewer takes file name,
# coordinates, unit and values as they are.
#
#   tools/ds9-picture.sh MAP PICTURE.png [X Y [REGIONS.reg]]      X Y: FITS pixel to point at
#
# Needs Debian's saods9, xvfb, xauth and imagemagick.
set -euo pipefail
if [ "${1:-}" = --inside ]; then  # what runs on the screen that xvfb-run makes
  picture=$2
  shift 2
  ds9 "$@" &
  viewer=$!
  sleep 8
  import -window root -crop 1000x832+0+0 +repage "$picture"
  kill "$viewer"
  exit
fi
map=${1:?map} picture=${2:?picture}
options=(-geometry 1000x800 -scale log -cmap b -zoom 2 -grid yes -colorbar yes)
[ $# -lt 4 ] || options+=(-mode crosshair -crosshair "$3" "$4" image)
[ $# -lt 5 ] || options+=(-regions load "$5")
xvfb-run -a -s "-screen 0 1100x900x24" "$0" --inside "$picture" "$map" "${options[@]}"
