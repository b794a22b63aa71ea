#!/bin/sh
# Installs the libraries below the build folder, builds examples/embed.cpp against them as a stranger would, and
# compares its frame with the tool's.
# usage: embed.sh BUILD_FOLDER COMPILER TOOL
set -eu
build="$1"
compiler="$2"
tool="$3"
source="$(cd "$(dirname "$0")/../.." && pwd)"
work="$build/embed"
rm -rf "$work"
mkdir -p "$work"

cmake --install "$build" --prefix "$work/prefix" --component development >"$work/install.log"
! [ -e "$work/prefix/include/vintrel/minihost/call" ] || { echo "the inside of minihost is installed" >&2; exit 1; }
cmake -S "$source/examples" -B "$work/build" -G Ninja -DCMAKE_PREFIX_PATH="$work/prefix" \
  -DCMAKE_CXX_COMPILER="$compiler" >"$work/build.log"
cmake --build "$work/build" >>"$work/build.log" || { cat "$work/build.log" >&2; exit 1; }

cd "$work"
ffmpeg -nostdin -v error -i "$source/examples/street.png" -vf scale=320:180 -frames:v 1 plate.ppm
ffmpeg -nostdin -v error -i plate.ppm plate.png
build/embed plate.ppm embed.ppm 24
"$tool" render plate.png -o tool.png -q --frames 24 --set flakes=30000 --key 'wind@0=0,48=600'
ffmpeg -nostdin -v error -i tool.png -pix_fmt rgb24 tool.ppm
! cmp -s plate.ppm embed.ppm || { echo "there is no snow" >&2; exit 1; }
cmp embed.ppm tool.ppm
