// Files that appear under their final name whole or not at all.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <span>
#include <string_view>

#include "cli/report/interrupt.h"

namespace cli {

/// Throws ToolError(kOutput), naming the place and what to try, when `path` cannot become a file: its folder
/// does not exist or may not be written to, or something that is not a file stands there.  Meant for the
/// door, before any work.
void CheckWritable(const std::filesystem::path& path);

/// An empty file beside `path` (`.name.tmp-PID.ext`) that is filled under this hidden name and gets its own
/// in the end; locked while this object lives, and removed with it, or with the process when a signal ends
/// that, unless it was committed.  A symbolic link
/// stays and its target is replaced; a replaced file keeps its permissions.
///
/// Threads may write different paths at the same time.
class PendingFile {
 public:
  /// Throws ToolError(kOutput), naming `path`, when it cannot become a file.
  explicit PendingFile(const std::filesystem::path& path);
  ~PendingFile();
  PendingFile(const PendingFile&) = delete;
  PendingFile& operator=(const PendingFile&) = delete;

  /// For those who write by themselves.
  const std::filesystem::path& HiddenPath() const { return hidden_; }

  /// Throws ToolError(kOutput).
  void Append(std::span<const std::uint8_t> bytes);

  /// Brings what was written to the disk, renames, and brings the name to the disk.  Throws
  /// ToolError(kOutput); then `path` is as it was.
  void Commit();

 private:
  [[noreturn]] void RefuseByErrno() const;

  std::filesystem::path given_;
  std::filesystem::path target_;
  std::filesystem::path hidden_;
  int descriptor_ = -1;  // until it was committed
  std::optional<Leftover> leftover_;
};

/// Removes hidden files in `folder` that processes left behind which were killed, when `isOurs` says yes to
/// the name that they would have got.  Files of processes that live, here or elsewhere on the network, stay:
/// they are locked.  What cannot be removed stays too.
void RemoveAbandoned(const std::filesystem::path& folder,
                     const std::function<bool(std::string_view name)>& isOurs);

/// A file of these bytes.  Throws ToolError(kOutput); then `path` is as it was.
void WriteWhole(const std::filesystem::path& path, std::span<const std::uint8_t> bytes);

}  // namespace cli
