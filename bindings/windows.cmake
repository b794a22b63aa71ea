# Debian's cross compiler for 64-bit Windows.  What it makes needs nothing but Windows.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(CMAKE_CXX_COMPILER x86_64-w64-mingw32-g++-posix)
set(CMAKE_FIND_ROOT_PATH /usr/x86_64-w64-mingw32)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)

# The stack is aligned to 16 bytes there, and this compiler cannot align locals to more, though it emits moves
# that want 32 and 64 (no option of its own helps: -mstackrealign aligns to 16 too).  The assembler writes every
# aligned vector move as the unaligned one, which takes as long on aligned data and never faults.
set(CMAKE_CXX_FLAGS_INIT "-Wa,-muse-unaligned-vector-move")
set(CMAKE_MODULE_LINKER_FLAGS_INIT "-static -s")
set(CMAKE_EXE_LINKER_FLAGS_INIT "-static -s")
