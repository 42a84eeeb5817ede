# What the comparisons with WSClean share; sourced by compare-wsclean.sh and bench-wsclean.sh. Sets $cli, $convert, $sky
# and $python, and ends the script with a sentence where something is missing that no build needs.
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
cli=${LUMO_CLI:-$root/build/bench/src/cli/lumo-cli}
convert=${LUMO_UVX_TO_MS:-$root/build/bench/bench/wsclean/lumo_uvx_to_ms}
sky=$root/bench/wsclean
bands=4600,4730,4860,4990,5120,5250,5380,5510
export OPENBLAS_NUM_THREADS=1
for program in wsclean /usr/bin/time "$cli" "$convert"; do
  command -v "$program" >/dev/null || { echo "skipped: there is no $program (Debian's wsclean and time; cmake --preset bench)"; exit 0; }
done
# Debian's python has Debian's astropy; another python on the PATH may not.
python=$(command -v /usr/bin/python3 || command -v python3)
"$python" -c 'import astropy' 2>/dev/null || { echo "skipped: there is no python3-astropy"; exit 0; }

# observe SKY NAME OPTIONS...: simulates NAME/*.uvx, makes NAME.ms of them and imports that to imported/NAME.uvx.
observe() {
  local model=$1 name=$2
  shift 2
  [ -e "$out/imported/$name.uvx" ] && return
  rm -rf "$out/$name.ms" "${out:?}/$name"
  "$cli" simulate --sky "$model" --array vlba --bands $bands --hours 10 --noise 0.05 --out "$out/$name" "$@" >"$out/$name.log"
  "$convert" "$out/$name.ms" "$out/$name"/*.uvx >>"$out/$name.log"
  "$cli" import "$out/$name.ms" --out "$out/imported" >>"$out/$name.log"
}

# limits FILE.uvx: the --uv-limit that makes the cells square, two of them to the shortest fringe along u.
limits() {
  "$cli" info --json "$1" | "$python" -c '
import json, sys
file = json.load(sys.stdin)["files"][0]
reach = [max(map(abs, file[axis])) for axis in ("u_seconds", "v_seconds")]
print(f"2,{2 * reach[0] / reach[1]!r}")'
}

# cellOf MAP: the width of its pixels in degrees, as wsclean's -scale takes it.
cellOf() {
  "$python" -c '
import sys
from astropy.io import fits
print(repr(fits.getheader(sys.argv[1])["CDELT2"]))' "$1"
}

# timed COMMAND...: runs it quietly and prints seconds and peak memory in MB, or what it said if it fails.
timed() {
  if ! /usr/bin/time -o "$out/time" -f '%e %M' "$@" >"$out/timed.log" 2>&1; then
    tail -5 "$out/timed.log" >&2
    return 1
  fi
  awk '{printf "%.2f s | %.0f MB", $1, $2 / 1024}' "$out/time"
}
