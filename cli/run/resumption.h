// Resuming a sequence where an earlier run ended.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "cli/file/output_name.h"
#include "cli/frames/source.h"
#include "cli/run/manifest.h"
#include "cli/scene/scene.h"

namespace cli {

/// Stands for a file as it is now: its size and the time of its last change.  Empty without a file.
std::string FileStamp(const std::filesystem::path& file);

/// What is done of the frames of a sequence, and what has to be made again since its scene or its input
/// changed.  The stamps of all inputs are taken at the start: what is replaced during the run counts as new.
class Resumption {
 public:
  /// The scene's output is a pattern; `inputStamp` is that of its input from before it was opened.  The
  /// source must outlive this.
  Resumption(const Scene& scene, const std::string& inputStamp, const FrameSource& source,
             const std::vector<std::int32_t>& frames);

  /// Takes out the frames that are done, and returns them.
  std::vector<std::int32_t> TakeOut(std::vector<std::int32_t>& frames) const;

  /// How many of the frames there are as files that were made from another scene, version or input.
  std::size_t OfAnotherScene(const std::vector<std::int32_t>& frames) const;

  /// A frame beside those of this run that is there as a file and was made from another scene, version or
  /// input; empty when there is none, also by what other processes have noted since.  Of a long sequence the
  /// first are looked at.
  std::optional<std::int32_t> OfAnotherBeside();

  /// Notes that the frame's file has been written.  Throws ToolError(kOutput).
  void Note(std::int32_t frame);

 private:
  bool IsDone(std::int32_t frame) const;
  bool IsOfAnother(std::int32_t frame, const std::string& stamp) const;
  std::string StampFor(std::int32_t frame) const;

  OutputName name_;
  const FrameSource& source_;
  std::string sharedStamp_;  // of an input that is one for all frames
  Manifest manifest_;
  std::unordered_map<std::int32_t, std::string> stamps_;  // of the frames' inputs; empty for gaps
};

}  // namespace cli
