// Loadable modules of the system that this is built for, for as long as the process lives.
#pragma once

#if defined(_WIN32)
#include <windows.h>
#else
#include <dlfcn.h>
#endif

/// Null when it cannot be loaded.
inline void* OpenLibrary(const char* file) {
#if defined(_WIN32)
  return reinterpret_cast<void*>(LoadLibraryA(file));
#else
  return dlopen(file, RTLD_NOW | RTLD_LOCAL);
#endif
}

/// Null when there is none.
inline void* FindSymbol(void* library, const char* name) {
#if defined(_WIN32)
  return reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(library), name));
#else
  return dlsym(library, name);
#endif
}
