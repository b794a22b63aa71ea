#!/bin/sh
# Real hosts make the frames of the tool, byte for byte: ffmpeg's filter and source, and melt with one thread and
# with several.
# usage: hosts.sh TOOL FOLDER_OF_MODULES [LIBRARY_TO_PRELOAD_INTO_HOSTS]
set -eu
tool="$1"
export FREI0R_PATH="$2" MLT_FREI0R_PLUGIN_PATH="$2"
preload="${3:-}"
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cd "$folder"

# The sanitizers see leaks of the hosts' own, and code of theirs that they were not built for.
InHost() {
  ASAN_OPTIONS=detect_leaks=0 LD_PRELOAD="$preload" timeout 60 "$@"
}
# The first bytes may be left out.
Expect() {
  if ! cmp -i "${3:-0}" tool.rgba "$1"; then
    echo "$2 differs from the tool" >&2
    exit 1
  fi
}
Plates() {
  ffmpeg -v error -y -f lavfi -i "color=black:s=$1:r=25,format=rgba,
    geq=r='X*4':g='Y*5':b='mod(X*Y+T*200,256)':a='mod(X*7+Y*5,256)'" -frames:v 6 -start_number 0 in.%04d.png
}
Raw() { ffmpeg -v error -y -start_number 0 -i "$1.%04d.png" -f rawvideo -pix_fmt rgba "$1.rgba"; }

# As the tool and as ffmpeg take them, which has no way to leave one out; melt takes the names.
plain="--set flakes=3000"
plain_settings="0.06|0.454545454545455|0.25|0.444444444444444|0.214285714285714|0.5|0.5|0|0.333333333333333|0.2|0
  |0.473684210526316|0.75|y|0.5|1/1/1|0.5|0.8|0.375|0.25|0.75|y|0.5|0.5|1|1|0|0.25"
plain_settings=$(printf %s "$plain_settings" | tr -d '\n ')
all="--set flakes=3000 --set size=4.4 --set variation-size=50 --set scene-depth=3700 --set speed=450
  --set variation-speed=40 --set wind=25 --set variation-wind=20 --set spread=9 --set amount=30
  --set variation-amount=10 --set frequency=1.05 --set variation-frequency=60 --set stochastic-wiggle=off
  --set flake-flatness=30 --set color=#336699 --set opacity=90 --set influence=70 --set spread-width=200
  --set spread-height=100 --set transfer-mode=Composite --set offset=30%,60% --set ground-level=80
  --set embed-depth=90 --set random-seed=77"
all_settings="0.06|0.709090909090909|0.5|0.3|0.5|0.4|0.75|0.2|0.2|0.3|0.1|0.5|0.6|n|0.3|0.2/0.4/0.6|0.9|0.7|0.5|0.5|0.25
  |y|0.3|0.6|0.8|0.9|0.077|0.25"
all_settings=$(printf %s "$all_settings" | tr -d '\n ')

# ffmpeg hands out absurd times for the second.  It pads rows to 64 bytes where the standard has none, so that
# odd widths are left to melt.
for size in 80x49 720x40; do
  Plates "$size"
  for look in plain all; do
    eval "options=\$$look settings=\$${look}_settings"
    # shellcheck disable=SC2154,SC2086  # set by the line above; a list of words
    "$tool" render 'in.####.png' -o 'tool.####.png' --frames 0-5 --fps 25 -q $options
    Raw tool
    # shellcheck disable=SC2154
    InHost ffmpeg -v error -y -framerate 25 -start_number 0 -i in.%04d.png -vf "frei0r=vintrel:$settings" \
      -f rawvideo -pix_fmt rgba host.rgba
    Expect host.rgba "ffmpeg ($size, $look)"
  done
done

# A rate that is not told is found out from the second frame on.
Plates 80x49
"$tool" render 'in.####.png' -o 'tool.####.png' --frames 0-5 --fps 30 -q
Raw tool
InHost ffmpeg -v error -y -framerate 30 -start_number 0 -i in.%04d.png -vf frei0r=vintrel -f rawvideo -pix_fmt rgba \
  host.rgba
Expect host.rgba "ffmpeg (no rate told)" $((80 * 49 * 4))

# Clips of melt have the size of its profile.
Plates 65x49
cat >profile <<'TEXT'
description=small
frame_rate_num=25
frame_rate_den=1
width=65
height=49
progressive=1
sample_aspect_num=1
sample_aspect_den=1
display_aspect_num=65
display_aspect_den=49
colorspace=709
TEXT
# That reader waits forever for a lock of the C library when a sanitizer is loaded before all else; the other gives
# other frames each time when there are several threads.
reader="pixbuf:in.%04d.png ttl=1 length=6"
numbers_of_threads="-1 -2"
if [ -n "$preload" ]; then
  reader="avformat:in.%04d.png"
  numbers_of_threads="-1"
fi
# On a busy machine melt sometimes ends well without a frame, or not at all, with no filter as well.
Melt() {
  threads="$1"
  shift
  : >melt.rgba
  for attempt in 1 2 3 4 5; do
    code=0
    # shellcheck disable=SC2086  # a list of words
    InHost melt -silent -profile profile $reader out=5 -filter frei0r.vintrel "$@" \
      -consumer avformat:melt.rgba f=rawvideo vcodec=rawvideo pix_fmt=rgba mlt_image_format=rgba an=1 \
      "real_time=$threads" </dev/null >melt.log 2>&1 || code=$?
    if [ "$code" -eq 0 ] && [ -s melt.rgba ]; then
      return
    fi
    [ "$code" -eq 0 ] || [ "$code" -eq 124 ] || break
    echo "melt gave no frame (code $code), attempt $attempt" >&2
  done
  cat melt.log >&2
  exit 1
}
# shellcheck disable=SC2086
"$tool" render 'in.####.png' -o 'tool.####.png' --frames 0-5 --fps 25 -q $all
Raw tool
for threads in $numbers_of_threads; do
  Melt "$threads" Flakes=0.06 Size=0.709090909090909 "Variation % (Size)=0.5" "Scene Depth=0.3" Speed=0.5 \
    "Variation % (Speed)=0.4" Wind=0.75 "Variation % (Wind)=0.2" Spread=0.2 Amount=0.3 \
    "Variation % (Amount)=0.1" Frequency=0.5 "Variation % (Frequency)=0.6" "Stochastic Wiggle=0" \
    "Flake Flatness %=0.3" "Color=#336699" Opacity=0.9 "Influence %=0.7" "Spread Width=0.5" \
    "Spread Height=0.5" "Transfer Mode=0.25" "Offset X=0.3" "Offset Y=0.6" "Ground Level %=0.8" \
    "Embed Depth %=0.9" "Random Seed=0.077" "Frame Rate=0.25"
  Expect melt.rgba "melt with real_time=$threads"
done

# A value that changes from frame to frame, seen by one instance: the fall is that of the keys.
"$tool" render 'in.####.png' -o 'tool.####.png' --frames 0-5 --fps 25 -q --key speed@0=100,5=800
Raw tool
Melt -1 "Speed=0=0;5=1" "Frame Rate=0.25"
Expect melt.rgba "melt with keys"

# shellcheck disable=SC2086
"$tool" render --blank 64x48 -o 'tool.####.png' --frames 0-5 --fps 25 --only-snow --depth 8 -q $plain
Raw tool
source="frei0r_src=size=64x48:framerate=25:filter_name=vintrel_source:filter_params=$plain_settings"
InHost ffmpeg -v error -y -f lavfi -i "$source" -frames:v 6 -f rawvideo -pix_fmt rgba host.rgba
Expect host.rgba "ffmpeg's source"
