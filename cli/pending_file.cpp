#include "cli/pending_file.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <system_error>

#include "cli/atomic_file.h"
#include "cli/tool_error.h"

namespace cli {
namespace {

/// The file that is written, there or not, at the end of symbolic links.
std::filesystem::path TargetOf(const std::filesystem::path& path) {
  std::error_code error;
  if (!std::filesystem::is_symlink(path, error)) return path;
  const auto target = std::filesystem::weakly_canonical(path, error);
  return error ? path : target;
}

std::filesystem::path HiddenName(const std::filesystem::path& path) {
  constexpr std::size_t kLongestStem = 200;  // the whole name fits the usual 255 bytes
  const std::string stem = path.stem().string().substr(0, kLongestStem);
  const std::string name = fmt::format(".{}.tmp-{}{}", stem, ::getpid(), path.extension().string());
  return path.parent_path() / name;
}

}  // namespace

PendingFile::PendingFile(const std::filesystem::path& path) : target_(TargetOf(path)) {
  CheckWritable(path);
  hidden_ = HiddenName(target_);
  // Whatever bears this name is left over from a dead process that had our number.
  ::unlink(hidden_.c_str());
  descriptor_ = ::open(hidden_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
  if (descriptor_ < 0) RefuseByErrno();
}

PendingFile::~PendingFile() {
  ::close(descriptor_);
  if (!committed_) ::unlink(hidden_.c_str());
}

void PendingFile::RefuseByErrno() const {
  throw ToolError(ExitCode::kOutput, fmt::format("cannot write '{}': {}", target_.string(),
                                                 std::generic_category().message(errno)));
}

void PendingFile::Commit() {
  struct stat old {};
  // Not being allowed to is no reason to lose the file.
  if (::stat(target_.c_str(), &old) == 0 && ::fchmod(descriptor_, old.st_mode & 07777) != 0) errno = 0;
  // Some file systems cannot sync, which they say with EINVAL.
  if (::fsync(descriptor_) != 0 && errno != EINVAL) RefuseByErrno();
  if (::rename(hidden_.c_str(), target_.c_str()) != 0) RefuseByErrno();
  committed_ = true;
}

}  // namespace cli
