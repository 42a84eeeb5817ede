#!/usr/bin/env bash
# Kills the programs while they write, fills disks, takes folders away, and counts what is left; fails when anything is half
# written. docs/reliability.md has the figures.
#
#   tools/reliability.sh [--build FOLDER] [--kills N] [--seed N] [--draws] [--part kills|disks]
#                                                                             (default: build/release, 500 kills, all parts)
#
# --draws: the pictures of `plot` too. Needs the programs lumo-cli and lumo_store_writer of the build. As root also a small
# tmpfs and a user without rights; what cannot be done here is told.
set -euo pipefail
exec python3 "$(dirname "$0")/reliability.py" "$@"
