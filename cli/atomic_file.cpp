#include "cli/atomic_file.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <system_error>

#include "cli/tool_error.h"

namespace cli {
namespace {

[[noreturn]] void Refuse(const std::filesystem::path& path, std::string_view reason) {
  throw ToolError(ExitCode::kOutput, fmt::format("cannot write '{}': {}", path.string(), reason));
}

std::string LastError() {
  return std::generic_category().message(errno);
}

std::filesystem::path FolderOf(const std::filesystem::path& path) {
  return path.has_parent_path() ? path.parent_path() : std::filesystem::path(".");
}

/// The file that is written, there or not, at the end of symbolic links.
std::filesystem::path TargetOf(const std::filesystem::path& path) {
  std::error_code error;
  if (!std::filesystem::is_symlink(path, error)) return path;
  const auto target = std::filesystem::weakly_canonical(path, error);
  if (error) Refuse(path, error.message());
  return target;
}

std::filesystem::path HiddenName(const std::filesystem::path& path) {
  constexpr std::size_t kLongestStem = 200;  // the whole name fits the usual 255 bytes
  const std::string stem = path.stem().string().substr(0, kLongestStem);
  return FolderOf(path) / fmt::format(".{}.tmp-{}{}", stem, ::getpid(), path.extension().string());
}

/// The hidden file: open while it is filled, removed at the end unless it was renamed.
class HiddenFile {
 public:
  explicit HiddenFile(const std::filesystem::path& target) : target_(target), name_(HiddenName(target)) {
    // Whatever bears this name is left over from a dead process that had our number.
    ::unlink(name_.c_str());
    descriptor_ = ::open(name_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (descriptor_ < 0) Refuse(target_, LastError());
  }
  ~HiddenFile() {
    if (descriptor_ >= 0) ::close(descriptor_);
    if (!renamed_) ::unlink(name_.c_str());
  }
  HiddenFile(const HiddenFile&) = delete;
  HiddenFile& operator=(const HiddenFile&) = delete;

  void Fill(std::span<const std::uint8_t> bytes) {
    while (!bytes.empty()) {
      const ssize_t written = ::write(descriptor_, bytes.data(), bytes.size());
      if (written < 0 && errno == EINTR) continue;
      if (written < 0) Refuse(target_, LastError());
      bytes = bytes.subspan(static_cast<std::size_t>(written));
    }
  }

  void TakePermissionsOfTarget() {
    struct stat old {};
    // Not being allowed to is no reason to lose the picture.
    if (::stat(target_.c_str(), &old) == 0 && ::fchmod(descriptor_, old.st_mode & 07777) != 0) errno = 0;
  }

  /// Brings the bytes to the disk and closes; the last chances for a full disk to be reported.
  void Finish() {
    // Some file systems cannot sync, which they say with EINVAL.
    if (::fsync(descriptor_) != 0 && errno != EINVAL) Refuse(target_, LastError());
    const int closed = ::close(descriptor_);
    descriptor_ = -1;
    if (closed != 0 && errno != EINTR) Refuse(target_, LastError());
  }

  void MoveToTarget() {
    if (::rename(name_.c_str(), target_.c_str()) != 0) Refuse(target_, LastError());
    renamed_ = true;
  }

 private:
  std::filesystem::path target_;
  std::filesystem::path name_;
  int descriptor_ = -1;
  bool renamed_ = false;
};

/// Brings the new name to the disk.  The file itself is there and whole, so a failure is not one of ours.
void SyncFolder(const std::filesystem::path& folder) {
  const int descriptor = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (descriptor < 0) return;
  ::fsync(descriptor);
  ::close(descriptor);
}

}  // namespace

void CheckWritable(const std::filesystem::path& path) {
  std::error_code error;
  const std::filesystem::path folder = FolderOf(path);
  if (!std::filesystem::is_directory(folder, error)) {
    Refuse(path, fmt::format("there is no folder '{}'; make it with: mkdir -p '{}'", folder.string(),
                             folder.string()));
  }
  const auto status = std::filesystem::status(path, error);
  if (std::filesystem::exists(status) && !std::filesystem::is_regular_file(status)) {
    Refuse(path, std::filesystem::is_directory(status) ? "it is a folder" : "it is not a regular file");
  }
}

void WriteWhole(const std::filesystem::path& path, std::span<const std::uint8_t> bytes) {
  CheckWritable(path);
  const std::filesystem::path target = TargetOf(path);
  HiddenFile file(target);
  file.Fill(bytes);
  file.TakePermissionsOfTarget();
  file.Finish();
  file.MoveToTarget();
  SyncFolder(FolderOf(target));
}

}  // namespace cli
