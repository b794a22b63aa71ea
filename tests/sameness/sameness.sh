#!/bin/sh
# Holds the frames of each compiler, level of optimization and CPU path to the list beside this file.
# usage: sameness.sh BUILD_FOLDER [--update]     --update makes the list anew, by g++ -O2
set -eu
here="$(cd "$(dirname "$0")" && pwd)"
build="$1"
list="$here/frames.txt"
wrong=0

# Name, compiler, level, what runs its programs, and more for CMake.
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

Compare() {
  runner="$1"
  for program in "$build/$name"/frames_*; do
    path="${program##*frames_}"
    status=0
    # shellcheck disable=SC2086  # nothing, or a program
    $runner "$program" "$path" >"$build/$name.txt" || status=$?
    if [ "$status" -eq 77 ]; then
      echo "$name, $path: not on this machine"
    elif [ "$status" -eq 0 ] && cmp -s "$list" "$build/$name.txt"; then
      echo "$name, $path: $(wc -l <"$list") frames are those of the list"
    else
      echo "$name, $path: other frames (code $status):"
      diff "$list" "$build/$name.txt" | head -n 8 || true
      wrong=1
    fi
  done
}

mkdir -p "$build"
if [ "${2:-}" = --update ]; then
  Build g++ -O2
  "$build/$name/frames_best" best >"$list"
  exit 0
fi
for compiler in g++ clang++-14; do
  for level in -O0 -O2 -O3; do
    Build "$compiler" "$level"
    Compare ""
  done
done
for level in -O0 -O2 -O3; do
  Build aarch64-linux-gnu-g++ "$level" -DCMAKE_SYSTEM_NAME=Linux -DCMAKE_SYSTEM_PROCESSOR=aarch64 \
    -DCMAKE_EXE_LINKER_FLAGS=-static
  Compare qemu-aarch64-static
done
exit $wrong
