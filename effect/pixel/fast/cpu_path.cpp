#include "effect/pixel/fast/cpu_path.h"

bool SupportsCpuPath(CpuPath path) {
  switch (path) {
    case CpuPath::kBaseline:
      return true;
#if defined(__x86_64__)
    case CpuPath::kAvx2:
      return __builtin_cpu_supports("avx2") != 0;
    case CpuPath::kAvx512:
      return __builtin_cpu_supports("avx512f") != 0 && __builtin_cpu_supports("avx512bw") != 0 &&
             __builtin_cpu_supports("avx512dq") != 0 && __builtin_cpu_supports("avx512vl") != 0;
#endif
    default:
      return false;
  }
}

CpuPath BestCpuPath() {
  CpuPath best = CpuPath::kBaseline;
  for (const CpuPath path : kCpuPaths) {
    if (SupportsCpuPath(path)) {
      best = path;
    }
  }
  return best;
}
