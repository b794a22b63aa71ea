#!/bin/sh
# Counts the instructions of the flake loop on the default frame: 10,000 flakes on 1920 x 1080.
#   bench/callgrind.sh path/to/vintrel_bench
# The counts do not depend on what else the machine does.  valgrind knows no AVX-512.
set -eu
bench="${1:?usage: callgrind.sh path/to/vintrel_bench}"
flakes=10000

if ! command -v valgrind >/dev/null; then
  echo "callgrind: skipped, valgrind is not there"
  exit 0
fi
log="$(mktemp)"
trap 'rm -f "$log"' EXIT

# count FORM DEPTH
count() {
  case "$1" in
    plain) loop='*DrawFlakesPlainly*' ;;
    *) loop='*DrawFlakesFast*' ;;
  esac
  valgrind --tool=callgrind --callgrind-out-file=/dev/null --toggle-collect="$loop" \
    "$bench" --draw-once "$1" --depth "$2" >"$log" 2>&1 || {
    cat "$log" >&2
    exit 1
  }
  sed -n 's/.*Collected : \([0-9]*\).*/\1/p' "$log"
}

echo "instructions a flake"
printf '%6s %8s %10s %8s\n' depth plain baseline avx2
for depth in 8 16 float; do
  plain="$(count plain "$depth")"
  baseline="$(count baseline "$depth")"
  avx2="$(count avx2 "$depth")"
  printf '%6s %8d %10d %8d\n' "$depth" $((plain / flakes)) $((baseline / flakes)) $((avx2 / flakes))
done
