#!/bin/sh
# Times the whole tool: its start, one frame, and sequences and a video of 24 frames, with the effect's share of
# them and what ffmpeg takes, where it is there, to encode the same frames with the same settings.
#   bench/tool.sh path/to/vintrel [PICTURE] [ROUNDS]
# PICTURE is the example street of 1920 x 1080 unless given.  Figures are medians of the rounds; the share is
# of processor time (by GNU time), which other work on the machine disturbs less.
set -eu
here="$(cd "$(dirname "$0")" && pwd)"
tool="${1:?usage: tool.sh path/to/vintrel [PICTURE] [ROUNDS]}"
picture="${2:-$here/../examples/street.png}"
rounds="${3:-3}"
frames=24

if ! command time -f '' true 2>/dev/null; then
  echo "tool.sh: skipped, GNU time is not there"
  exit 0
fi
out="$(mktemp -d)"
trap 'rm -rf "$out"' EXIT

# timed NAME COMMAND...: adds the run's milliseconds to the files NAME.wall and NAME.cpu.
timed() {
  name="$1"
  shift
  begin="$(date +%s%N)"
  command time -o "$out/seconds" -f '%U %S' "$@" >/dev/null
  end="$(date +%s%N)"
  echo $(((end - begin) / 1000)) | awk '{ print $1 / 1000 }' >>"$out/$name.wall"
  awk '{ print ($1 + $2) * 1000 }' "$out/seconds" >>"$out/$name.cpu"
}

# rendered NAME OUTPUT FRAMES FLAKES
rendered() { timed "$1" "$tool" render "$picture" -q -o "$out/$2" --frames "$3" --set flakes="$4"; }

# encoded FORMAT: what the tool has written, read and encoded again by ffmpeg.
encoded() {
  case "$1" in
    png) set -- png -start_number 24 -i "$out/s.%04d.png" -compression_level 6 -start_number 24 "$out/f.%04d.png" ;;
    exr) set -- exr -start_number 24 -i "$out/s.%04d.exr" -compression zip16 -format half "$out/f.%04d.exr" ;;
    mkv) set -- mkv -i "$out/s.mkv" -c:v ffv1 "$out/f.mkv" ;;
  esac
  format="$1"
  shift
  timed "$format.ffmpeg" ffmpeg -nostdin -v error -y "$@"
}

median() { sort -n "$out/$1" | sed -n "$(((rounds + 1) / 2))p"; }

# The forms take turns.
round=0
while [ "$round" -lt "$rounds" ]; do
  timed start "$tool" --version
  rendered one one.png 24 10000
  for format in png exr; do
    rendered "$format.snow" "s.####.$format" 24-47 10000
    rendered "$format.none" "n.####.$format" 24-47 0
  done
  rendered mkv.snow s.mkv 24-47 10000
  rendered mkv.none n.mkv 24-47 0
  ! command -v ffmpeg >/dev/null || for format in png exr mkv; do
    encoded "$format"
  done
  round=$((round + 1))
done

for format in png exr; do
  [ "$(find "$out" -name "s.*.$format" | wc -l)" -eq "$frames" ] || {
    echo "tool.sh: the $format sequence has not $frames frames" >&2
    exit 1
  }
  ! cmp -s "$out/s.0024.$format" "$out/n.0024.$format" || {
    echo "tool.sh: the $format frames are the same with snow and without" >&2
    exit 1
  }
done

printf 'start (--version)  %8.1f ms\n' "$(median start.wall)"
printf 'one frame          %8.1f ms\n' "$(median one.wall)"
for format in png exr mkv; do
  awk -v frames="$frames" -v format="$format" -v wall="$(median "$format.snow.wall")" \
    -v snow="$(median "$format.snow.cpu")" -v none="$(median "$format.none.cpu")" 'BEGIN {
      printf "%d frames, %s     %8.1f frames/s; of %.1f ms of processor time each, snow takes %.1f ms (%.0f %%)\n",
        frames, format, frames * 1000 / wall, snow / frames, (snow - none) / frames, (snow - none) * 100 / snow
    }'
  [ ! -f "$out/$format.ffmpeg.cpu" ] || awk -v frames="$frames" -v cpu="$(median "$format.ffmpeg.cpu")" 'BEGIN {
      printf "    ffmpeg, read and encoded again: %.1f ms of processor time each\n", cpu / frames
    }'
done
