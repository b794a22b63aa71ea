// The files that a render reads, so that it writes over none of them.
#pragma once

#include <sys/types.h>

#include <filesystem>
#include <set>
#include <utility>

#include "cli/run/plan.h"
#include "cli/scene/scene.h"

namespace cli {

class InputFiles {
 public:
  /// Those of the scene's input that the plan's frames need.
  InputFiles(const Scene& scene, const RenderPlan& plan);

  /// Throws ToolError(kUsage) when `output` is one of them, by whatever name.
  void CheckKept(const std::filesystem::path& output) const;

 private:
  void Add(const std::filesystem::path& file);

  std::set<std::pair<dev_t, ino_t>> files_;
};

}  // namespace cli
