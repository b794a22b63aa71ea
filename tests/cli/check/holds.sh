#!/bin/sh
# The battery holds for the built module, with no fewer faults than it is known to inject, and in a locale with commas
# where one can be made.
# usage: holds.sh TOOL MODULE [--against MODULE]...
set -eu
least=28000
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
if command -v localedef >/dev/null && localedef -i de_DE -f UTF-8 "$scratch/de_DE.UTF-8" >/dev/null 2>&1; then
  export LOCPATH="$scratch"
fi
tool="$1"
shift
"$tool" check "$@" --quick --json >"$scratch/report" || { cat "$scratch/report" >&2; exit 1; }
faults=$(sed -nE 's/.*"passed":true,"faults":([0-9]+).*/\1/p' "$scratch/report")
[ "${faults:-0}" -ge $least ] || { echo "$faults faults were injected, fewer than $least" >&2; exit 1; }
