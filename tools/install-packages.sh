#!/usr/bin/env bash
# Installs the Debian packages of tools/packages.txt that are missing.
#
#   tools/install-packages.sh [GROUP...]      groups: build, test, fuzz, lint; without any: build and test
set -euo pipefail
cd "$(dirname "$0")"
groups=("$@")
[ ${#groups[@]} -gt 0 ] || groups=(build test)

packages=()
for group in "${groups[@]}"; do
  mapfile -t found < <(awk -v wanted="[$group]" '
    { sub(/#.*/, "") } /^\[/ { inside = ($1 == wanted); next } inside && NF { print $1 }' packages.txt)
  if [ ${#found[@]} -eq 0 ]; then
    echo "install-packages: tools/packages.txt has no group '$group'" >&2
    exit 2
  fi
  packages+=("${found[@]}")
done

if ! command -v dpkg-query >/dev/null; then
  echo "install-packages: this is not a Debian system; see that these are there: ${packages[*]}" >&2
  exit 0
fi
missing=()
for package in "${packages[@]}"; do
  state=$(dpkg-query -W -f='${db:Status-Status}\n' "$package" 2>/dev/null | head -n 1 || true)
  [ "$state" = installed ] || missing+=("$package")
done
if [ ${#missing[@]} -eq 0 ]; then
  echo "install-packages: all ${#packages[@]} packages are there"
  exit 0
fi

root=()
if [ "$(id -u)" -ne 0 ]; then
  if ! command -v sudo >/dev/null; then
    echo "install-packages: missing: ${missing[*]}" >&2
    echo "install-packages: neither root nor sudo; ask an administrator for: apt-get install ${missing[*]}" >&2
    exit 1
  fi
  root=(sudo)
fi
echo "install-packages: installing with ${root[*]:+sudo }apt-get: ${missing[*]}"
"${root[@]}" apt-get update
"${root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y --no-install-recommends "${missing[@]}" </dev/null
