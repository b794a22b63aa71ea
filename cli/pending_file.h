// A file that others fill under a hidden name, and that gets its own name in the end.
#pragma once

#include <filesystem>

namespace cli {

/// An empty file beside `path` (`.name.tmp-PID.ext`), removed with this object unless it was committed.  A
/// symbolic link stays and its target is replaced; a replaced file keeps its permissions.
class PendingFile {
 public:
  /// Throws ToolError(kOutput), naming `path`, when it cannot become a file.
  explicit PendingFile(const std::filesystem::path& path);
  ~PendingFile();
  PendingFile(const PendingFile&) = delete;
  PendingFile& operator=(const PendingFile&) = delete;

  const std::filesystem::path& HiddenPath() const { return hidden_; }

  /// Brings what was written to the disk and renames.  Throws ToolError(kOutput); then `path` is as it was.
  void Commit();

 private:
  [[noreturn]] void RefuseByErrno() const;

  std::filesystem::path target_;
  std::filesystem::path hidden_;
  int descriptor_ = -1;
  bool committed_ = false;
};

}  // namespace cli
