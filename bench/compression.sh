#!/bin/sh
# Prints the table of docs/tool.md on compression: milliseconds of processor time to encode and write a picture of
# 1920 x 1080 without drawing on it, and its megabytes.  A frame's time is that of nine frames less that of one, by
# eight; that of the snow alone has the drawing of its flakes in it.
#   bench/compression.sh path/to/vintrel
set -eu
examples="$(cd "$(dirname "$0")/../examples" && pwd)"
tool="$(realpath "${1:?usage: compression.sh path/to/vintrel}")"
out="$(mktemp -d)"
trap 'rm -rf "$out"' EXIT
cd "$out"

# processor FRAMES ARGUMENT...: milliseconds.
processor() {
  last=$(($1 - 1))
  shift
  command time -o seconds -f '%U %S' "$tool" render "$@" --frames "0-$last" -q --jobs 1
  awk '{ print ($1 + $2) * 1000 }' seconds
}

# cell FORMAT DEPTH COMPRESSION PICTURE...
cell() {
  format="$1" depth="$2" compression="$3"
  shift 3
  set -- "$@" -o "f.####.$format" --depth "$depth" ${compression:+--compression "$compression"}
  one="$(processor 1 "$@")"
  nine="$(processor 9 "$@")"
  echo "$one $nine $(stat -c %s "f.0000.$format")" | awk '{ printf " %.0f, %.2f |", ($2 - $1) / 8, $3 / 1e6 }'
}

echo '| | street | window (alpha) | snow alone (alpha) |'
echo '|---|---|---|---|'
while IFS='|' read -r name format depth compression; do
  printf '| %s |' "$name"
  cell "$format" "$depth" "$compression" "$examples/street.png" --set flakes=0
  cell "$format" "$depth" "$compression" "$examples/window.png" --set flakes=0
  cell "$format" "$depth" "$compression" --blank 1920x1080 --only-snow --preset heavy-snow
  echo
done <<'END'
PNG, the default and `zip`|png|8|
PNG `zip:6`, as most write it|png|8|zip:6
PNG `zip:4`|png|8|zip:4
PNG `zip:1`|png|8|zip:1
EXR half `piz`, the default without alpha|exr|8|piz
EXR half `zip`, the default with alpha|exr|8|zip
EXR half `zip:1`|exr|8|zip:1
EXR half `none`|exr|8|none
EXR float `piz`|exr|float|piz
EXR float `zip`|exr|float|zip
TIFF `none`|tif|8|none
END
