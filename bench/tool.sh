#!/bin/sh
# Times the whole tool: its start, one frame, and sequences and a video of 24 frames, with the effect's share of
# them (a difference of two runs, so good to some ms) and what ffmpeg takes, where it is there, to encode the same
# frames with the same settings: PNG at the level and with the filter that are the tool's own, EXR zipped by 16
# rows of half floats (ffmpeg writes no piz), FFV1.
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

# rendered NAME OUTPUT FRAMES FLAKES [OPTION VALUE]
rendered() {
  set -- "$@" "" ""
  # shellcheck disable=SC2086  # an option and its value, or nothing
  timed "$1" "$tool" render "$picture" -q -o "$out/$2" --frames "$3" --set flakes="$4" $5 $6
}

# encoded FORMAT: what the tool has written, read by ffmpeg and encoded again; and read alone.
encoded() {
  case "$1" in
    png) set -- png "$out/s.%04d.png" -compression_level 5 -pred up -start_number 24 "$out/f.%04d.png" ;;
    zip) set -- zip "$out/z.%04d.exr" -compression zip16 -format half -start_number 24 "$out/f.%04d.exr" ;;
    mkv) set -- mkv "$out/s.mkv" -c:v ffv1 "$out/f.mkv" ;;
  esac
  format="$1"
  input="$2"
  shift 2
  first=""
  [ "$format" = mkv ] || first="-start_number 24"
  # shellcheck disable=SC2086  # an option and its value
  timed "$format.ffmpeg" ffmpeg -nostdin -v error -y $first -i "$input" "$@"
  # shellcheck disable=SC2086
  timed "$format.read" ffmpeg -nostdin -v error -y $first -i "$input" -f null -
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
  rendered zip.snow z.####.exr 24-47 10000 --compression zip
  rendered zip.none n.####.exr 24-47 0 --compression zip
  rendered mkv.snow s.mkv 24-47 10000
  rendered mkv.none n.mkv 24-47 0
  ! command -v ffmpeg >/dev/null || for format in png zip mkv; do
    encoded "$format"
  done
  round=$((round + 1))
done

for format in png exr mkv; do
  case "$format" in
    mkv) set -- "$out/s.mkv" "$out/n.mkv" ;;
    *)
      set -- "$out/s.0024.$format" "$out/n.0024.$format"
      [ "$(find "$out" -name "s.*.$format" | wc -l)" -eq "$frames" ] || {
        echo "tool.sh: the $format sequence has not $frames frames" >&2
        exit 1
      }
      ;;
  esac
  ! cmp -s "$1" "$2" || {
    echo "tool.sh: the $format frames are the same with snow and without" >&2
    exit 1
  }
done

# row NAME TITLE: frames a second, processor time of a frame, the snow's share, what ffmpeg takes to encode it.
row() {
  ffmpeg="-"
  [ ! -f "$out/$1.ffmpeg.cpu" ] || ffmpeg="$(awk -v frames="$frames" -v both="$(median "$1.ffmpeg.cpu")" \
    -v read="$(median "$1.read.cpu")" 'BEGIN { printf "%.0f (%.0f)", (both - read) / frames, both / frames }')"
  awk -v frames="$frames" -v title="$2" -v wall="$(median "$1.snow.wall")" -v snow="$(median "$1.snow.cpu")" \
    -v none="$(median "$1.none.cpu")" -v ffmpeg="$ffmpeg" 'BEGIN {
      printf "| %s | %.1f | %.0f | %.1f | %s |\n",
        title, frames * 1000 / wall, snow / frames, (snow - none) / frames, ffmpeg
    }'
}

printf 'start (--version): %.0f ms; one frame: %.0f ms; %d frames:\n' "$(median start.wall)" "$(median one.wall)" "$frames"
echo
echo "| written | frames/s | processor ms a frame | of it snow | ffmpeg: encoding (and reading) |"
echo "|---|---|---|---|---|"
row png "PNG"
row exr "EXR, piz"
row zip "EXR, zip"
row mkv "FFV1 in Matroska"
