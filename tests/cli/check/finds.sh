#!/bin/sh
# The battery fails for a module with a fault in it, and names the fault.
# usage: finds.sh TOOL MODULE LEVEL REGULAR_EXPRESSION
set -u
report=$("$1" check "$2" --levels "$3" --quick)
code=$?
if [ $code -ne 1 ] || ! printf '%s\n' "$report" | grep -q "$4"; then
  printf '%s\n' "code $code, and no '$4' in:" "$report" >&2
  exit 1
fi
