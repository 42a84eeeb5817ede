#!/usr/bin/env bash
# Builds the Debian package and proves it in a clean root of its own: installs it there with apt, simulates and images a
# small observation with it, starts the desktop program, removes it, and compares the root's files before and after.
#
#   sudo tools/check-package.sh [FOLDER]      the root is made in FOLDER/root (default: a new folder under /var/tmp)
set -euo pipefail
cd "$(dirname "$0")/.."
[ "$(id -u)" -eq 0 ] || { echo "check-package: a root of its own needs root rights" >&2; exit 2; }
command -v debootstrap >/dev/null || { echo "check-package: install debootstrap first" >&2; exit 2; }

cmake --preset demo >/dev/null
cmake --build --preset demo --parallel "$(nproc)"
rm -f build/demo/lumo_*.deb
(cd build/demo && cpack -G DEB)
package=$(echo build/demo/lumo_*.deb)
dpkg-deb --info "$package"
dpkg-deb --contents "$package"

folder=${1:-$(mktemp -d /var/tmp/lumo-package.XXXXXX)}
root=$folder/root
mkdir -p "$root"
mirror=$(apt-get indextargets --format '$(REPO_URI)' 'Created-By: Packages' | head -n 1)
suite=$(. /etc/os-release && echo "$VERSION_CODENAME")
[ -e "$root/usr" ] || debootstrap --variant=minbase "$suite" "$root" "$mirror" >"$folder/debootstrap.log"

inRoot() { env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin HOME=/root DEBIAN_FRONTEND=noninteractive chroot "$root" "$@"; }
# What belongs to nobody in particular: scratch, logs, the package manager's own records and caches.
listing() {
  inRoot find / -xdev \( -path /proc -o -path /sys -o -path /dev -o -path /tmp -o -path /var/log -o -path /var/cache \
    -o -path /var/lib/apt -o -path /var/lib/dpkg \) -prune -o -printf '%y %m %s %p\n' | grep -v ' /$' | sort
}

cp "$package" "$root/tmp/lumo.deb"
cp demo/sky.json "$root/tmp/sky.json"
inRoot apt-get update -qq
# The packages it needs stay when it goes, so they are there before the first look. Directories change their size.
inRoot bash -c 'apt-get install -y -qq --no-install-recommends /tmp/lumo.deb >/tmp/install.log && dpkg --purge lumo >/dev/null'
listing | sed -E 's/^d ([0-9]+) [0-9]+/d \1/' >"$folder/before.txt"

inRoot apt-get install -y -qq --no-install-recommends /tmp/lumo.deb
inRoot lumo-cli --version
inRoot lumo-cli simulate --sky /tmp/sky.json --array vlba --bands 5900,6500,7100 --interval 300 --out /tmp/uvx
inRoot bash -c 'lumo-cli run /tmp/uvx/*.uvx --folder /tmp/maps --order 2 --iterations 500'
inRoot lumo-cli measure --folder /tmp/maps
inRoot lumo-cli plot "/tmp/maps/MFS^cln0.exm" --out /tmp/map.png
test -s "$root/tmp/map.png"
# The main window waits for its user, so being stopped is what should end it.
status=0
inRoot env QT_QPA_PLATFORM=offscreen timeout 5 lumo || status=$?
[ "$status" -eq 124 ] || { echo "check-package: the desktop program ended by itself with $status" >&2; exit 1; }

inRoot dpkg --purge lumo
rm -rf "$root/root/.config"  # the user's own parameters, which no package may remove
listing | sed -E 's/^d ([0-9]+) [0-9]+/d \1/' >"$folder/after.txt"
if ! diff "$folder/before.txt" "$folder/after.txt"; then
  echo "check-package: the package left the traces above" >&2
  exit 1
fi
echo "check-package: installed, used and removed without a trace in $root"
