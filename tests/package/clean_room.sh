#!/bin/sh
# Installs the package in a new Debian 12, renders, draws snow with ffmpeg, and removes it without a trace.  As root,
# with debootstrap; takes minutes and a gigabyte, so it is run by hand.
# usage: clean_room.sh PACKAGE FOLDER [MIRROR]     FOLDER must not be there; it is left for a look.
set -eu
package="$(realpath "$1")"
root="$2"
mirror="${3:-http://deb.debian.org/debian}"
[ ! -e "$root" ] || { echo "clean_room.sh: '$root' is there already" >&2; exit 1; }

debootstrap --variant=minbase bookworm "$root" "$mirror" >"$root.log" 2>&1
# The tool finds its presets and modules from its own place, which /proc tells.
mount -t proc proc "$root/proc"
trap 'umount "$root/proc"' EXIT
inside() { chroot "$root" env DEBIAN_FRONTEND=noninteractive HOME=/root "$@"; }
listed() { (cd "$root" && find usr/bin usr/lib/vintrel usr/lib/frei0r-1 usr/OFX usr/share etc -name '*intrel*' 2>/dev/null | sort); }

# The dependencies come first, so that what is left afterwards is the package's doing.
inside apt-get update -qq
cp "$package" "$root/tmp/vintrel.deb"
inside apt-get install -y -qq --no-install-recommends /tmp/vintrel.deb ffmpeg >>"$root.log" 2>&1

inside vintrel --version
inside vintrel render --blank 320x180 -o /tmp/snow.png -q --preset heavy-snow
inside ffmpeg -nostdin -v error -f lavfi -i color=navy:s=320x176:r=25:d=1 -vf 'frei0r=vintrel:0.6|0.6' \
  -f framemd5 /tmp/with.md5
inside ffmpeg -nostdin -v error -f lavfi -i color=navy:s=320x176:r=25:d=1 -pix_fmt rgba -f framemd5 /tmp/without.md5
[ -s "$root/tmp/snow.png" ]
[ "$(grep -vc '^#' "$root/tmp/with.md5")" -eq 25 ]
! cmp -s "$root/tmp/with.md5" "$root/tmp/without.md5"
inside test -f /usr/OFX/Plugins/Vintrel.ofx.bundle/Contents/Linux-x86-64/Vintrel.ofx

inside apt-get purge -y -qq vintrel >>"$root.log" 2>&1
[ -z "$(listed)" ] || { echo "left behind:"; listed; exit 1; }
[ ! -e "$root/usr/OFX" ] || { echo "left behind: usr/OFX"; exit 1; }
echo "installed, rendered, filtered and removed"
