// The list beside a sequence of what made each of its files, so that a run can be resumed where it ended.
//
// A line of text for each file: `frame size contents recipe check`, the last three in 16 hexadecimal digits.
// The recipe stands for the scene, the version of the tool and the frame's input; the check for the line
// before it.  Lines are appended with one write each and the last of a frame counts.  Whatever else the file
// holds, a line cut short by a crash or written by another version, is passed over.
//
// Nothing is brought to the disk by force: a frame counts as done only when its file has the size and the
// contents that are noted, so the worst that a lost line costs is rendering its frame again.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace cli {

/// Stands for the contents of a file.  Tells a whole file from a damaged one; no seal against forgery.
struct FileMark {
  std::uint64_t size = 0;  // bytes
  std::uint64_t contents = 0;
  bool operator==(const FileMark&) const = default;
};

/// `folder/snow.####.png` has its list in `folder/.snow.####.png.vintrel`.
std::filesystem::path ManifestName(const std::filesystem::path& pattern);

/// Several processes may append to one list, on a file system where appending is atomic.  One thread at a
/// time.
class Manifest {
 public:
  /// `scene` is all that decides how the frames look but their input, `version` the tool's.  Reads the list
  /// if there is one, and changes nothing.
  Manifest(std::filesystem::path name, std::string_view scene, std::string_view version);
  ~Manifest();
  Manifest(const Manifest&) = delete;
  Manifest& operator=(const Manifest&) = delete;

  /// Whether `file` is whole and was made for this frame by the same scene and version from the same input,
  /// for which `input` stands.
  bool IsDone(std::int32_t frame, const std::filesystem::path& file, std::string_view input) const;

  /// Whether the frame was noted, and by another scene or version or from another input.
  bool IsOfAnother(std::int32_t frame, std::string_view input) const;

  /// The frames that are noted, rising.
  std::vector<std::int32_t> Frames() const;

  /// Takes in what other processes have noted meanwhile.
  void Read();

  /// Notes that `file` is this frame, of this scene, version and input.  Throws ToolError(kOutput) when the
  /// file cannot be read back or the list cannot be written.
  void Note(std::int32_t frame, const std::filesystem::path& file, std::string_view input);

 private:
  struct Entry {
    FileMark mark;
    std::uint64_t recipe;
  };

  std::uint64_t RecipeFor(std::string_view input) const;
  void TakeLine(std::string_view line);

  std::filesystem::path name_;
  std::string recipe_;  // but for the input
  std::unordered_map<std::int32_t, Entry> entries_;
  int descriptor_ = -1;  // once something has been noted
};

}  // namespace cli
