// In place of the effect's own: a module that takes one path for its loops, whatever the machine could do.
#include "effect/pixel/fast/cpu_path.h"

bool SupportsCpuPath(CpuPath path) {
  return path <= CpuPath::VINTREL_TEST_CPU_PATH;
}

CpuPath BestCpuPath() {
  return CpuPath::VINTREL_TEST_CPU_PATH;
}
