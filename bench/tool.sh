#!/bin/sh
# Times the whole tool: its start, one frame, and a sequence of 24 frames with the effect's share of it.
#   bench/tool.sh path/to/vintrel [PICTURE] [ROUNDS]
# PICTURE is the example street of 1920 x 1080 unless given.  Figures are medians of the rounds.
set -eu
here="$(cd "$(dirname "$0")" && pwd)"
tool="${1:?usage: tool.sh path/to/vintrel [PICTURE] [ROUNDS]}"
picture="${2:-$here/../examples/street.png}"
rounds="${3:-3}"
frames=24

out="$(mktemp -d)"
trap 'rm -rf "$out"' EXIT

# micros COMMAND...: runs it and prints its microseconds.
micros() {
  begin="$(date +%s%N)"
  "$@" >/dev/null
  end="$(date +%s%N)"
  echo $(((end - begin) / 1000))
}

median() { sort -n | sed -n "$(((rounds + 1) / 2))p"; }

# The forms take turns, a file of figures for each.
snow() { "$tool" render "$picture" -q -o "$out/$1" --frames "$2" --set flakes="$3"; }
round=0
while [ "$round" -lt "$rounds" ]; do
  micros "$tool" --version >>"$out/start"
  micros snow one.png 24 10000 >>"$out/one"
  for format in png exr; do
    micros snow "s.####.$format" 24-47 10000 >>"$out/$format.snow"
    micros snow "s.####.$format" 24-47 0 >>"$out/$format.none"
  done
  round=$((round + 1))
done

cmp -s "$picture" "$out/one.png" && {
  echo "tool.sh: the frame is the picture itself, without snow" >&2
  exit 1
}
[ "$(find "$out" -name 's.*.exr' | wc -l)" -eq "$frames" ] || {
  echo "tool.sh: the sequence has not $frames frames" >&2
  exit 1
}

milliseconds() { awk -v micros="$(median <"$1")" 'BEGIN { printf "%.1f ms", micros / 1000 }'; }
echo "start (--version)  $(milliseconds "$out/start")"
echo "one frame          $(milliseconds "$out/one")"
for format in png exr; do
  awk -v frames="$frames" -v format="$format" -v snow="$(median <"$out/$format.snow")" \
    -v none="$(median <"$out/$format.none")" 'BEGIN {
      printf "%d frames, %s     %.1f frames/s; the snow takes %.1f ms of each, %.0f %%\n",
        frames, format, frames * 1e6 / snow, (snow - none) / 1000 / frames, (snow - none) * 100 / snow
    }'
done
