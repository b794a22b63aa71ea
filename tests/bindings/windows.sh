#!/bin/sh
# The modules for Windows export what they promise, need nothing but Windows, move no vector as if the stack were
# aligned to more than 16 bytes, and make the frames of the list, byte for byte, on every CPU path of this machine.
# usage: windows.sh WINDOWS_BUILD OUT
set -eu
windows="$1"
out="$2"
bundle=Vintrel.ofx.bundle/Contents
prefix=x86_64-w64-mingw32
WINEPREFIX=$(mktemp -d)
export WINEPREFIX WINEDEBUG=-all
# The server outlives the programs by a moment, and writes when it ends.
trap '/usr/lib/wine/wineserver -k || true; /usr/lib/wine/wineserver -w; rm -rf "$WINEPREFIX"' EXIT
fail() {
  echo "$*" >&2
  exit 1
}

frei0r="f0r_construct f0r_deinit f0r_destruct f0r_get_param_info f0r_get_param_value f0r_get_plugin_info f0r_init
  f0r_set_param_value f0r_update"
for module in "$out/$bundle/Win64/Vintrel.ofx" "$out/vintrel.dll" "$out/vintrel_source.dll"; do
  promised="$frei0r"
  [ "${module%.ofx}" = "$module" ] || promised="OfxGetNumberOfPlugins OfxGetPlugin"
  exported=$($prefix-objdump -p "$module" |
    awk '/^.Ordinal.Name Pointer. Table/ { on = 1 } NF == 0 { on = 0 } on && $1 == "[" { print $NF }' | sort | tr '\n' ' ')
  # shellcheck disable=SC2086  # a list of words
  [ "$exported" = "$(printf '%s ' $promised)" ] || fail "$module exports $exported"
  foreign=$($prefix-objdump -p "$module" | sed -n 's/.*DLL Name: //p' | grep -Eiv '^(kernel32|msvcrt)\.dll$' || true)
  [ -z "$foreign" ] || fail "$module needs $foreign"
  aligned=$($prefix-objdump -d "$module" | grep -E 'vmov(apd|aps|dqa|dqa32|dqa64) .*\(' | head -n 3 || true)
  [ -z "$aligned" ] || fail "$module moves aligned vectors: $aligned"
done

Compare() {
  compare="$(dirname "$0")/../sameness/compare.sh"
  frames="/usr/lib/wine/wine64 $windows/bindings/bindings_frames.exe"
  # shellcheck disable=SC2086  # a program and its runner
  "$compare" 33 "$1, OpenFX" $frames openfx "$2" && "$compare" 7 "$1, frei0r" $frames frei0r "$3"
}
Compare "what is shipped" "$out/$bundle/Win64/Vintrel.ofx" "$out/vintrel.dll"
for path in kBaseline kAvx2 kAvx512; do
  case "$path" in
    kAvx2) grep -qw avx2 /proc/cpuinfo || continue ;;
    kAvx512) grep -qw avx512vl /proc/cpuinfo || continue ;;
  esac
  Compare "$path" "$windows/bindings/openfx_$path.dll" "$windows/bindings/frei0r_$path.dll"
done
