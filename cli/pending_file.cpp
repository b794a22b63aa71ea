#include "cli/pending_file.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <string_view>
#include <system_error>

#include "cli/tool_error.h"

namespace cli {
namespace {

[[noreturn]] void Refuse(const std::filesystem::path& path, std::string_view reason) {
  throw ToolError(ExitCode::kOutput, fmt::format("cannot write '{}': {}", path.string(), reason));
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
  const std::string name = fmt::format(".{}.tmp-{}{}", stem, ::getpid(), path.extension().string());
  return path.parent_path() / name;
}

/// The file itself is there and whole, so a failure is not one of ours.
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

PendingFile::PendingFile(const std::filesystem::path& path) : target_(TargetOf(path)) {
  CheckWritable(target_);
  hidden_ = HiddenName(target_);
  // Whatever bears this name is left over from a dead process that had our number.
  ::unlink(hidden_.c_str());
  descriptor_ = ::open(hidden_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
  if (descriptor_ < 0) RefuseByErrno();
}

PendingFile::~PendingFile() {
  if (descriptor_ < 0) return;
  ::unlink(hidden_.c_str());
  ::close(descriptor_);
}

void PendingFile::RefuseByErrno() const {
  Refuse(target_, std::generic_category().message(errno));
}

void PendingFile::Append(std::span<const std::uint8_t> bytes) {
  while (!bytes.empty()) {
    const ssize_t written = ::write(descriptor_, bytes.data(), bytes.size());
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) RefuseByErrno();
    bytes = bytes.subspan(static_cast<std::size_t>(written));
  }
}

void PendingFile::Commit() {
  struct stat old {};
  // Not being allowed to is no reason to lose the file.
  if (::stat(target_.c_str(), &old) == 0 && ::fchmod(descriptor_, old.st_mode & 07777) != 0) errno = 0;
  // Some file systems cannot sync, which they say with EINVAL.
  if (::fsync(descriptor_) != 0 && errno != EINVAL) RefuseByErrno();
  // Some speak of a full disk only when a file is closed.  Closing a copy asks them before the name is given.
  const int copy = ::dup(descriptor_);
  if (copy >= 0 && ::close(copy) != 0 && errno != EINTR) RefuseByErrno();
  if (::rename(hidden_.c_str(), target_.c_str()) != 0) RefuseByErrno();
  ::close(descriptor_);
  descriptor_ = -1;
  SyncFolder(FolderOf(target_));
}

void WriteWhole(const std::filesystem::path& path, std::span<const std::uint8_t> bytes) {
  PendingFile file(path);
  file.Append(bytes);
  file.Commit();
}

}  // namespace cli
