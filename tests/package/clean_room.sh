#!/bin/sh
# Installs the package in a new Debian 12, renders, opens the panel, checks the effect, draws snow with ffmpeg, and
# removes it without a trace.  As root, with debootstrap and curl; takes minutes and a gigabyte, so it is run by hand.
# usage: clean_room.sh PACKAGE FOLDER [MIRROR]     FOLDER must not be there; it is left only when something fails.
set -eu
package="$(realpath "$1")"
root="$2"
[ ! -e "$root" ] || { echo "clean_room.sh: '$root' is there already" >&2; exit 1; }

debootstrap --variant=minbase bookworm "$root" ${3:+"$3"} >"$root.log" 2>&1
# This machine's ways to the packages.
cp /etc/apt/apt.conf.d/* "$root/etc/apt/apt.conf.d/"
cp /etc/resolv.conf /etc/hosts "$root/etc/"
mkdir -p "$root/etc/ssl/certs"
cp -L /etc/ssl/certs/ca-certificates.crt "$root/etc/ssl/certs/"

panel=""
leave() {
  [ -z "$panel" ] || kill "$panel" 2>/dev/null || true
  umount "$root/proc" "$root/dev"
}
mount -t proc proc "$root/proc"
mount --bind /dev "$root/dev"
trap leave EXIT
inside() { chroot "$root" env DEBIAN_FRONTEND=noninteractive HOME=/root "$@"; }
install() { inside apt-get install -y -qq --no-install-recommends "$@" >>"$root.log" 2>&1; }
purge() { inside apt-get purge -y -qq vintrel >>"$root.log" 2>&1; }
# All but what apt and dpkg keep for themselves, and the loader's cache.
listed() {
  (cd "$root" && find . \( -path ./proc -o -path ./dev -o -path ./tmp -o -path ./var/lib/apt -o -path ./var/lib/dpkg \
    -o -path ./var/cache -o -path ./var/log -o -path ./etc/ld.so.cache \) -prune -o -print | sort)
}

# What it depends on comes first, and nothing else, so that what is left afterwards is the package's doing.
inside apt-get update -qq
cp "$package" "$root/tmp/vintrel.deb"
inside apt-get satisfy -y -qq --no-install-recommends "$(dpkg-deb -f "$package" Depends)" >>"$root.log" 2>&1
listed >"$root.before"
install /tmp/vintrel.deb
inside vintrel --version
inside vintrel render --blank 320x180 -o /tmp/snow.png -q --preset heavy-snow
inside vintrel render /tmp/snow.png -o /tmp/snow.mov -q --frames 0-4
[ -s "$root/tmp/snow.png" ] && [ -s "$root/tmp/snow.mov" ]
inside vintrel check --quick /usr/lib/vintrel/Vintrel.so | tail -n 1
inside test -f /usr/OFX/Plugins/Vintrel.ofx.bundle/Contents/Linux-x86-64/Vintrel.ofx
chroot "$root" vintrel panel --no-browser /tmp/snow.png >"$root/tmp/address" 2>>"$root.log" &
panel=$!
for _ in $(seq 600); do
  [ ! -s "$root/tmp/address" ] || break
  sleep 0.1
done
address="$(cat "$root/tmp/address")"
curl -sf "$address" | grep -q '<title>Vintrel'
[ "$(curl -sf "${address%\?*}engine/vintrel.wasm" | wc -c)" -gt 100000 ]
kill "$panel"
wait "$panel" || [ $? -eq 130 ]
panel=""
purge
listed >"$root.after"
diff "$root.before" "$root.after" || { echo "clean_room.sh: that is left behind, or gone" >&2; exit 1; }

# ffmpeg is no dependency: hosts bring the effect along with their other filters.
install /tmp/vintrel.deb ffmpeg
inside ffmpeg -nostdin -v error -f lavfi -i color=navy:s=320x176:r=25:d=1 -vf 'frei0r=vintrel:0.6|0.6' \
  -f framemd5 /tmp/with.md5
inside ffmpeg -nostdin -v error -f lavfi -i color=navy:s=320x176:r=25:d=1 -pix_fmt rgba -f framemd5 /tmp/without.md5
[ "$(grep -vc '^#' "$root/tmp/with.md5")" -eq 25 ]
! cmp -s "$root/tmp/with.md5" "$root/tmp/without.md5"

trap - EXIT
leave
rm -rf --one-file-system "$root" "$root.log" "$root.before" "$root.after"
echo "installed, rendered, checked, served, filtered and removed"
