// Files that appear under their final name whole or not at all.
#pragma once

#include <cstdint>
#include <filesystem>
#include <span>

namespace cli {

/// Throws ToolError(kOutput), naming the place and what to try, when `path` cannot become a file: its folder
/// does not exist, or something that is not a file stands there.  Meant for the door, before any work.
void CheckWritable(const std::filesystem::path& path);

/// Writes `bytes` to a hidden file beside `path` (`.name.tmp-PID.ext`), brings it to the disk and renames it
/// over `path`.  A symbolic link stays and its target is replaced; a replaced file keeps its permissions.
/// Throws ToolError(kOutput); then `path` is as it was and the hidden file is gone.
///
/// Threads may write different paths at the same time.
void WriteWhole(const std::filesystem::path& path, std::span<const std::uint8_t> bytes);

}  // namespace cli
