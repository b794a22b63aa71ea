#!/bin/sh
# How much faster the tool is with two frames at the same time, held against what two processes reach that
# know nothing of each other, which is all that the machine itself has to give.
#   bench/jobs.sh path/to/vintrel [FLAKES] [ROUNDS] [FOLDER]
# 48 frames on the example street of 1920 x 1080, into FOLDER (in memory unless given) and without compression,
# so that snow is most of the work.  Of the rounds, in which the forms take turns, medians count.
#
# Where a low ratio comes from: from other programs, when `others`, the processors that they kept busy, is not
# near 0; from a cache, memory or core that two frames share, when processor time for each frame (by GNU time)
# grows; else somebody waited.
set -eu
here="$(cd "$(dirname "$0")" && pwd)"
tool="${1:?usage: jobs.sh path/to/vintrel [FLAKES] [ROUNDS] [FOLDER]}"
flakes="${2:-1000000}"
rounds="${3:-3}"
folder="${4:-/dev/shm}"
frames=48

if ! command time -f '' true 2>/dev/null; then
  echo "jobs.sh: skipped, GNU time is not there"
  exit 0
fi
out="$(mktemp -d "$folder/jobs.XXXXXX")"
trap 'rm -rf "$out"' EXIT
trap 'exit 130' INT TERM

# rendered FORM [OPTION...]: the frames into the form's folder, or those of them that --part leaves.
rendered() {
  form="$1"
  shift
  command time -a -o "$out/$form.seconds" -f '%U %S' "$tool" render "$here/../examples/street.png" -q \
    -o "$out/$form/s.####.$format" --compression none --frames "0-$((frames - 1))" --set flakes="$flakes" "$@"
}

# One process, one frame at a time; the same with two; two processes with half of the frames each.
one() { rendered one --jobs 1; }
two() { rendered two --jobs 2; }
beside() {
  rendered beside --jobs 1 --part 1/2 &
  rendered beside --jobs 1 --part 2/2
  wait "$!"
}

# Milliseconds that all processors together have worked for whomever since the machine started.
worked() {
  awk -v tick="$(getconf CLK_TCK)" \
    '/^cpu / { printf "%.0f\n", ($2 + $3 + $4 + $7 + $8) * 1000 / tick }' /proc/stat
}

# timed FORM: adds the milliseconds of the run to FORM.wall, of its processors to FORM.cpu, and the number of
# processors that other programs kept busy meanwhile to FORM.others.
timed() {
  rm -rf "${out:?}/$1" "$out/$1.seconds"
  mkdir "$out/$1"
  before="$(worked)"
  begin="$(date +%s%N)"
  "$1"
  end="$(date +%s%N)"
  after="$(worked)"
  wall=$(((end - begin) / 1000000))
  cpu="$(awk '{ sum += $1 + $2 } END { print sum * 1000 }' "$out/$1.seconds")"
  echo "$wall" >>"$out/$1.wall"
  echo "$cpu" >>"$out/$1.cpu"
  awk -v all="$((after - before))" -v cpu="$cpu" -v wall="$wall" \
    'BEGIN { printf "%.2f\n", (all - cpu) / wall }' >>"$out/$1.others"
}

median() { sort -n "$out/$1" | sed -n "$(((rounds + 1) / 2))p"; }

# told FORM TEXT: a line about the form, with its speed as a ratio to `one`.
told() {
  awk -v text="$2" -v frames="$frames" -v wall="$(median "$1.wall")" -v cpu="$(median "$1.cpu")" \
    -v reference="$(median one.wall)" -v others="$(median "$1.others")" 'BEGIN {
      printf "  %-24s %6.2f frames/s  %5.2f times  %6.1f ms of processor time a frame  others %.2f\n",
        text, frames * 1000 / wall, reference / wall, cpu / frames, others
    }'
}

for format in tif exr; do
  rm -f "$out"/*.wall "$out"/*.cpu "$out"/*.others
  round=0
  while [ "$round" -lt "$rounds" ]; do
    for form in one two beside; do timed "$form"; done
    round=$((round + 1))
  done

  for form in one two beside; do
    (cd "$out/$form" && sha256sum s.*) >"$out/$form.sums"
    cmp -s "$out/one.sums" "$out/$form.sums" || {
      echo "jobs.sh: the $format frames of '$form' are not those of 'one'" >&2
      exit 1
    }
  done
  [ "$(cut -d ' ' -f 1 "$out/one.sums" | sort -u | wc -l)" -eq "$frames" ] || {
    echo "jobs.sh: the $format sequence has not $frames different frames" >&2
    exit 1
  }

  echo "$frames frames, $format, $flakes flakes, $(nproc) processors; equal bytes"
  told one '--jobs 1'
  told two '--jobs 2'
  told beside 'two processes, --jobs 1'
  awk -v two="$(median two.wall)" -v beside="$(median beside.wall)" \
    'BEGIN { printf "  --jobs 2 reaches %.0f %% of two processes\n", beside * 100 / two }'
done
