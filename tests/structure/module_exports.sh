#!/bin/sh
# The built module exports MainEntry alone, and needs nothing but the C and C++ libraries.
set -eu
module="$1"

exported=$(nm -D --defined-only "$module" | awk '{ print $3 }')
if [ "$exported" != MainEntry ]; then
  echo "$module should export MainEntry alone, and exports: $exported" >&2
  exit 1
fi

foreign=$(readelf -d "$module" | sed -n 's/.*(NEEDED).*\[\(.*\)\]/\1/p' |
  grep -Ev '^(libstdc\+\+|libm|libc|libgcc_s|ld-linux[^.]*)\.so' || true)
if [ -n "$foreign" ]; then
  echo "$module needs more than the standard libraries: $foreign" >&2
  exit 1
fi
