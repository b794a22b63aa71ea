#!/bin/sh
# Holds the frames of each compiler, level of optimization, CPU path and front to the list beside this file.
# usage: sameness.sh BUILD_FOLDER RELEASE_BUILD [all [OUT_WEB]]     all: also under sanitizers, for
#                                                                  other machines, and by the page's engine
#        sameness.sh BUILD_FOLDER --update                          makes the list anew, by g++ -O2
set -eu
here="$(cd "$(dirname "$0")" && pwd)"
build="$1"
wrong=0
export REFERENCE="$build/g++-O2"

# Compiler, level, and more for CMake.
Build() {
  name="$1$2"
  compiler="$1"
  level="$2"
  shift 2
  cmake -S "$here" -B "$build/$name" -G Ninja -DCMAKE_BUILD_TYPE=Release -DCMAKE_CXX_COMPILER="$compiler" \
    -DCMAKE_CXX_FLAGS_RELEASE="$level" "$@" >"$build/$name.log" &&
    cmake --build "$build/$name" --target frames >>"$build/$name.log" || {
    cat "$build/$name.log" >&2
    exit 1
  }
}

# What runs its programs, and what their names end with.
CompareBuild() {
  for program in "$build/$name"/frames_*"${2:-}"; do
    case "$program" in *.wasm) continue ;; esac
    path="${program##*frames_}"
    path="${path%"${2:-}"}"
    for loop in fast plain; do
      # shellcheck disable=SC2086  # nothing, or a program
      STAGES="$1 $build/$name/stages_$path${2:-} $path $loop" \
        "$here/compare.sh" 42 "$name, $path, $loop" $1 "$program" "$path" "$loop" || wrong=1
    done
  done
}

mkdir -p "$build"
Build g++ -O2
if [ "$2" = --update ]; then
  "$REFERENCE/frames_best" best fast >"$here/frames.txt"
  exit 0
fi
for compiler in g++ clang++-14; do
  for level in -O0 -O2 -O3; do
    Build "$compiler" "$level"
    CompareBuild ""
  done
done
release="$2"
"$here/compare.sh" 30 "tool" "$release/tests/sameness_tool" "$release/cli/vintrel" "$build/tool" || wrong=1
"$here/compare.sh" 33 "OpenFX" "$release/bindings/bindings_frames" openfx \
  "$release/bindings/openfx/Vintrel.ofx.bundle/Contents/Linux-x86-64/Vintrel.ofx" || wrong=1
"$here/compare.sh" 7 "frei0r" "$release/bindings/bindings_frames" frei0r "$release/bindings/frei0r/vintrel.so" ||
  wrong=1
[ "${3:-}" = all ] || exit $wrong

# What nobody wrote is not read: by clang's sanitizer, and in an emulator, which has no AVX-512.
Build clang++-14 -fsanitize=memory
CompareBuild ""
for path in kBaseline kAvx2; do
  for loop in fast plain; do
    "$here/compare.sh" 42 "memcheck, $path, $loop" valgrind -q --error-exitcode=9 \
      "$REFERENCE/frames_$path" "$path" "$loop" || wrong=1
  done
done
for level in -O0 -O2 -O3; do
  Build aarch64-linux-gnu-g++ "$level" -DCMAKE_SYSTEM_NAME=Linux -DCMAKE_SYSTEM_PROCESSOR=aarch64 \
    -DCMAKE_EXE_LINKER_FLAGS=-static
  CompareBuild qemu-aarch64-static
done
Build x86_64-w64-mingw32-g++-posix -O2 -DCMAKE_TOOLCHAIN_FILE="$here/../../bindings/windows.cmake"
WINEPREFIX=$(mktemp -d)
export WINEPREFIX WINEDEBUG=-all
CompareBuild /usr/lib/wine/wine64 .exe
/usr/lib/wine/wineserver -k || true
/usr/lib/wine/wineserver -w
rm -rf "$WINEPREFIX"
Build em++ -O3 -DCMAKE_TOOLCHAIN_FILE=/usr/share/emscripten/cmake/Modules/Platform/Emscripten.cmake
CompareBuild node .js
"$release/tests/sameness_tool" --cases "$build/cases.json"
for loop in fast plain; do
  "$here/compare.sh" 30 "page's engine, $loop" node "$here/engine.mjs" "$4" "$build/cases.json" "$loop" || wrong=1
done
exit $wrong
