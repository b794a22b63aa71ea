#include "cli/run/input_files.h"

#include <sys/stat.h>

#include "cli/report/error.h"

namespace cli {

InputFiles::InputFiles(const Scene& scene, const RenderPlan& plan) {
  if (scene.blank) {
    return;
  }
  Add(scene.input);
  for (const std::int32_t frame : plan.job.frames) {
    Add(plan.source->FileOf(frame));
  }
}

void InputFiles::Add(const std::filesystem::path& file) {
  struct stat status {};
  if (::stat(file.c_str(), &status) == 0) {
    files_.insert({status.st_dev, status.st_ino});
  }
}

void InputFiles::CheckKept(const std::filesystem::path& output) const {
  struct stat status {};
  if (::stat(output.c_str(), &status) != 0 || !files_.contains({status.st_dev, status.st_ino})) {
    return;
  }
  Refuse(ExitCode::kUsage, "'{}' would overwrite the input; choose another name", output.string());
}

}  // namespace cli
