#include "effect/pixel/fast/cpu_path.h"

bool SupportsCpuPath(CpuPath path) {
#if defined(__x86_64__)
  if (path == CpuPath::kAvx2) {
    return __builtin_cpu_supports("avx2") != 0;
  }
  if (path == CpuPath::kAvx512) {
    return __builtin_cpu_supports("avx512f") != 0 && __builtin_cpu_supports("avx512bw") != 0 &&
           __builtin_cpu_supports("avx512dq") != 0 && __builtin_cpu_supports("avx512vl") != 0;
  }
#endif
  return path == CpuPath::kBaseline;
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
