#!/bin/sh
# The pipeline on two threads under the thread sanitizer: to its end, interrupted, and resumed, for pictures; a video.
# usage: threads.sh TOOL     of the preset `thread`
set -eu
tool="$1"
here="$(cd "$(dirname "$0")" && pwd)"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export TSAN_OPTIONS="suppressions=$here/thread_sanitizer.supp exitcode=66 history_size=7"
plate="$here/../../../examples/street.png"
Render() { "$tool" render "$plate" --jobs 2 --proxy 4 --frames 0-11 -q "$@"; }
Render -o "$work/whole.####.png"
# A shell's background does not hear interruptions by itself.
env --default-signal=INT "$tool" render "$plate" --jobs 2 --proxy 4 --frames 0-11 -q -o "$work/part.####.png" 2>"$work/interrupted" &
process=$!
while [ ! -e "$work/part.0002.png" ] && kill -0 $process 2>/dev/null; do sleep 0.05; done
kill -INT $process 2>/dev/null || true
code=0
wait $process || code=$?
[ "$code" -ne 66 ] || { cat "$work/interrupted"; exit 1; }
[ "$code" -ne 0 ] || echo "it was faster than the interruption"
Render -o "$work/part.####.png" --resume
for frame in 00 01 02 03 04 05 06 07 08 09 10 11; do
  cmp "$work/whole.00$frame.png" "$work/part.00$frame.png"
done
Render -o "$work/clip.mov"
"$tool" render "$work/clip.mov" -o "$work/again.mkv" --jobs 2 -q
echo "no race: twelve frames whole, interrupted with code $code and resumed; a video written and read"
