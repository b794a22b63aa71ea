// Stands in for the strokes of a 2D library where none was found.
#include "bench/cases.h"

CaseSection StrokeCases(Effort) {
  return {
      {"Drawing against strokes of Cairo: skipped, its development files were not found when this was built",
       "nothing", "", ""},
      {}};
}
