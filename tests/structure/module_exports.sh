#!/bin/sh
# A built module exports the names given and no others, and needs nothing but the C and C++ libraries.
# usage: module_exports.sh MODULE NAME...
set -eu
module="$1"
shift

exported=$(nm -D --defined-only "$module" | awk '{ print $3 }' | sort | tr '\n' ' ')
promised=$(printf '%s\n' "$@" | sort | tr '\n' ' ')
if [ "$exported" != "$promised" ]; then
  echo "$module should export $promised and exports $exported" >&2
  exit 1
fi

foreign=$(readelf -d "$module" | sed -n 's/.*(NEEDED).*\[\(.*\)\]/\1/p' |
  grep -Ev '^(libstdc\+\+|libm|libc|libgcc_s|ld-linux[^.]*)\.so' || true)
if [ -n "$foreign" ]; then
  echo "$module needs more than the standard libraries: $foreign" >&2
  exit 1
fi
