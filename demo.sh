#!/usr/bin/env bash
# From nothing to a spectral-index map: installs what is missing, builds, simulates a VLBA observation of a core and a
# jet in three bands, images it, and prints what came out beside what went in.
#
#   ./demo.sh        everything goes to build/demo and demo-out
set -euo pipefail
cd "$(dirname "$0")"

tools/install-packages.sh build
cmake --preset demo
cmake --build --preset demo --parallel "$(nproc)"
cli=build/demo/src/cli/lumo-cli

rm -rf demo-out
mkdir demo-out
$cli simulate --sky demo/sky.json --array vlba --bands 5900,6500,7100 --ifs 2 --channels 4 --channel-width 8000 \
  --hours 8 --interval 120 --noise 0.01 --seed 1 --out demo-out/uvx
$cli run demo-out/uvx/*.uvx --folder demo-out/maps --prefix JET --reference 6500 --order 2 --iterations 2000 \
  --half-size 512
echo
build/demo/demo/lumo-demo-report demo/sky.json demo-out/maps JET
