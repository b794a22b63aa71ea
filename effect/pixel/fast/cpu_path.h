// Which instructions the fast forms of the stages may use.
//
// A stage is written once, as a plain loop that is always inlined, and RunOnPath compiles it into one
// function for each path; the attribute of that function decides how wide the compiler makes the loop.  All
// paths perform the same operations in the same order, so they give the same bits.
#pragma once

#include <array>

enum class CpuPath { kBaseline, kAvx2, kAvx512 };

inline constexpr std::array kCpuPaths = {CpuPath::kBaseline, CpuPath::kAvx2, CpuPath::kAvx512};

/// Whether this machine can run the path.
bool SupportsCpuPath(CpuPath path);

/// The widest path that this machine can run.
CpuPath BestCpuPath();

#define VINTREL_INLINE [[gnu::always_inline]] inline

#if defined(__x86_64__)
#define VINTREL_AVX2 __attribute__((target("avx2")))
#if defined(__clang__)
#define VINTREL_AVX512 __attribute__((target("avx512f,avx512bw,avx512dq,avx512vl")))
#else
#define VINTREL_AVX512 __attribute__((target("avx512f,avx512bw,avx512dq,avx512vl,prefer-vector-width=512")))
#endif
#else
#define VINTREL_AVX2
#define VINTREL_AVX512
#endif

/// The one of three functions that belongs to the path.
template <class Function>
Function* SelectPath(CpuPath path, Function* baseline, Function* avx2, Function* avx512) {
  switch (path) {
    case CpuPath::kAvx512:
      return avx512;
    case CpuPath::kAvx2:
      return avx2;
    case CpuPath::kBaseline:
      break;
  }
  return baseline;
}

namespace cpu_path {

template <auto stage, class... Arguments>
void RunBaseline(Arguments&... arguments) {
  stage(arguments...);
}
template <auto stage, class... Arguments>
VINTREL_AVX2 void RunAvx2(Arguments&... arguments) {
  stage(arguments...);
}
template <auto stage, class... Arguments>
VINTREL_AVX512 void RunAvx512(Arguments&... arguments) {
  stage(arguments...);
}

}  // namespace cpu_path

/// Calls `stage`, a function marked VINTREL_INLINE, with the arguments, in the form of the path.
template <auto stage, class... Arguments>
void RunOnPath(CpuPath path, Arguments&... arguments) {
  SelectPath(path, cpu_path::RunBaseline<stage, Arguments...>, cpu_path::RunAvx2<stage, Arguments...>,
             cpu_path::RunAvx512<stage, Arguments...>)(arguments...);
}

// Around functions that name a path's instructions themselves, rather than leave the width to the compiler.
#define VINTREL_PRAGMA(text) _Pragma(#text)
#if defined(__clang__)
#define VINTREL_BEGIN_AVX2 \
  VINTREL_PRAGMA(clang attribute push(__attribute__((target("avx2"))), apply_to = function))
#define VINTREL_BEGIN_AVX512                                                                         \
  VINTREL_PRAGMA(clang attribute push(__attribute__((target("avx512f,avx512bw,avx512dq,avx512vl"))), \
                                      apply_to = function))
#define VINTREL_END_TARGET VINTREL_PRAGMA(clang attribute pop)
#else
#define VINTREL_BEGIN_AVX2 VINTREL_PRAGMA(GCC push_options) VINTREL_PRAGMA(GCC target("avx2"))
#define VINTREL_BEGIN_AVX512 \
  VINTREL_PRAGMA(GCC push_options) VINTREL_PRAGMA(GCC target("avx512f,avx512bw,avx512dq,avx512vl"))
#define VINTREL_END_TARGET VINTREL_PRAGMA(GCC pop_options)
#endif
