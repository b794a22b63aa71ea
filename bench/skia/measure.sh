#!/bin/sh
# The default frame's flakes as strokes of Skia, through its prebuilt npm package; skipped where node or the
# package is missing.
#   bench/skia/measure.sh path/to/vintrel_bench [ROUNDS]
set -eu
bench="${1:?usage: measure.sh path/to/vintrel_bench [ROUNDS]}"
rounds="${2:-5}"
here="$(cd "$(dirname "$0")" && pwd)"

if ! command -v node >/dev/null; then
  echo "Skia: skipped, node is not there"
  exit 0
fi
if [ ! -d "$here/node_modules" ]; then
  echo "Skia: skipped, its package is not there; install it with: (cd bench/skia && npm install --no-package-lock)"
  exit 0
fi
capsules="$(mktemp)"
trap 'rm -f "$capsules"' EXIT
"$bench" --capsules "$capsules"
node "$here/strokes.mjs" "$capsules" "$rounds"
"$bench" --filter '^strokes/200k'
