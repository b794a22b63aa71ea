#!/bin/sh
# Holds the frames that a program prints to the list beside this file.  Of those that differ the first are told by
# their first pixel, and by the first stage if STAGES is the same build's program for them.
# usage: [REFERENCE=FOLDER] [STAGES=...] compare.sh COUNT LABEL PROGRAM...   the folder has frames_best, stages_best
set -eu
list="$(dirname "$0")/frames.txt"
count="$1"
label="$2"
shift 2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
status=0
"$@" >"$work/raw" 2>"$work/errors" || status=$?
if [ "$status" -eq 77 ]; then
  echo "$label: not on this machine"
  exit 0
fi
tr -d '\r' <"$work/raw" >"$work/frames"
grep -Fxv -f "$list" "$work/frames" >"$work/wrong" || true
if [ "$status" -ne 0 ] || [ "$(wc -l <"$work/frames")" -ne "$count" ]; then
  echo "$label: $(wc -l <"$work/frames") frames, not $count; code $status"
  tail -n 5 "$work/errors"
  exit 1
fi
if [ ! -s "$work/wrong" ]; then
  echo "$label: $count frames are those of the list"
  exit 0
fi
echo "$label: $(wc -l <"$work/wrong") of $count frames are not those of the list"
if [ -z "${REFERENCE:-}" ]; then
  cat "$work/wrong"
  exit 1
fi
head -n 3 "$work/wrong" | while read -r name depth hash; do
  echo "$name $depth"
  "$@" "$name" "$depth" "$work/other" >/dev/null </dev/null
  "$REFERENCE/frames_best" best fast "$name" "$depth" "$work/own"
  "$REFERENCE/frames_best" best fast "$name" "$depth" "$work/own" "$work/other"
  [ -n "${STAGES:-}" ] || continue
  # shellcheck disable=SC2086  # a program and its arguments
  $STAGES "$name" "$depth" "$work/other" </dev/null | tr -d '\r' >"$work/stages"
  "$REFERENCE/stages_best" best fast "$name" "$depth" "$work/own" >"$work/own_stages"
  diff "$work/own_stages" "$work/stages" | sed -n 's/^> \(.*\) [^ ]*$/  first stage that differs: \1/p' | head -n 1
done
exit 1
