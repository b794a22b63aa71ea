#include "cli/file/pending_file.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <functional>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

#include "cli/report/error.h"

namespace cli {
namespace {

std::filesystem::path FolderOf(const std::filesystem::path& path) {
  return path.has_parent_path() ? path.parent_path() : std::filesystem::path(".");
}

/// The file that is written, there or not, at the end of symbolic links.
std::filesystem::path TargetOf(const std::filesystem::path& path) {
  std::error_code error;
  if (!std::filesystem::is_symlink(path, error)) {
    return path;
  }
  auto target = std::filesystem::weakly_canonical(path, error);
  if (error) {
    RefuseOutput(path, error.message());
  }
  return target;
}

constexpr std::size_t kLongestStem = 200;  // the whole hidden name fits the usual 255 bytes

/// Digits of this process alone among those that may write to one folder, on other machines too.
const std::string& OwnNumber() {
  static const std::string number = [] {
    char host[256] = {};
    ::gethostname(host, sizeof host - 1);
    constexpr std::size_t kHosts = 1'000'000;
    return fmt::format("{}{:07}", std::hash<std::string_view>()(host) % kHosts, ::getpid());
  }();
  return number;
}

std::filesystem::path HiddenName(const std::filesystem::path& path) {
  const std::string stem = path.stem().string().substr(0, kLongestStem);
  const std::string name = fmt::format(".{}.tmp-{}{}", stem, OwnNumber(), path.extension().string());
  return path.parent_path() / name;
}

/// The name that another process's hidden file would have got; empty for other names, and for cut ones.
std::string NameBehind(std::string_view hidden) {
  constexpr std::string_view kMark = ".tmp-";
  const std::size_t mark = hidden.rfind(kMark);
  if (!hidden.starts_with('.') || mark == hidden.npos || mark > kLongestStem) {
    return {};
  }
  const std::size_t number = mark + kMark.size();
  const std::size_t end = std::min(hidden.find_first_not_of("0123456789", number), hidden.size());
  const std::string_view process = hidden.substr(number, end - number);
  // Where locks belong to processes, ours would not keep us from removing what we are writing.
  if (process.empty() || process == OwnNumber()) {
    return {};
  }
  return std::string(hidden.substr(1, mark - 1)) + std::string(hidden.substr(end));
}

void RemoveUnlessLocked(const std::filesystem::path& hidden) {
  const int descriptor = ::open(hidden.c_str(), O_WRONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
  if (descriptor < 0) {
    return;
  }
  if (::flock(descriptor, LOCK_EX | LOCK_NB) == 0) {
    ::unlink(hidden.c_str());
  }
  ::close(descriptor);
}

/// The file itself is there and whole, so a failure is not one of ours.
void SyncFolder(const std::filesystem::path& folder) {
  const int descriptor = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (descriptor < 0) {
    return;
  }
  ::fsync(descriptor);
  ::close(descriptor);
}

}  // namespace

void CheckWritable(const std::filesystem::path& path) {
  std::error_code error;
  const std::filesystem::path folder = FolderOf(path);
  if (!std::filesystem::is_directory(folder, error)) {
    RefuseOutput(path, fmt::format("there is no folder '{}'; make it with: mkdir -p '{}'", folder.string(),
                                   folder.string()));
  }
  if (::access(folder.c_str(), W_OK | X_OK) != 0) {
    RefuseOutput(path, std::generic_category().message(errno));
  }
  const auto status = std::filesystem::status(path, error);
  if (std::filesystem::exists(status) && !std::filesystem::is_regular_file(status)) {
    RefuseOutput(path, std::filesystem::is_directory(status) ? "it is a folder" : "it is not a regular file");
  }
}

PendingFile::PendingFile(const std::filesystem::path& path) : given_(path), target_(TargetOf(path)) {
  CheckWritable(target_);
  hidden_ = HiddenName(target_);
  leftover_.emplace(hidden_.string());
  struct stat made {};
  do {
    if (descriptor_ >= 0) {
      ::close(descriptor_);
    }
    // Whatever bears this name is left over from a dead process that had our number.
    ::unlink(hidden_.c_str());
    descriptor_ = ::open(hidden_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (descriptor_ < 0) {
      RefuseByErrno();
    }
    ::flock(descriptor_, LOCK_EX);
    // Before it was locked, another process may have taken it for abandoned.
  } while (::fstat(descriptor_, &made) == 0 && made.st_nlink == 0);
}

PendingFile::~PendingFile() {
  if (descriptor_ < 0) {
    return;
  }
  ::unlink(hidden_.c_str());
  ::close(descriptor_);
}

void PendingFile::RefuseByErrno() const {
  RefuseOutput(given_, std::generic_category().message(errno));
}

void PendingFile::Append(std::span<const std::uint8_t> bytes) {
  while (!bytes.empty()) {
    const ssize_t written = ::write(descriptor_, bytes.data(), bytes.size());
    if (written < 0 && errno == EINTR) {
      continue;
    }
    if (written < 0) {
      RefuseByErrno();
    }
    bytes = bytes.subspan(static_cast<std::size_t>(written));
  }
}

void PendingFile::Commit() {
  struct stat old {};
  // Not being allowed to is no reason to lose the file.
  if (::stat(target_.c_str(), &old) == 0 && ::fchmod(descriptor_, old.st_mode & 07777) != 0) {
    errno = 0;
  }
  // Some file systems cannot sync, which they say with EINVAL.
  if (::fsync(descriptor_) != 0 && errno != EINVAL) {
    RefuseByErrno();
  }
  // Some speak of a full disk only when a file is closed.  Closing a copy asks them before the name is given.
  const int copy = ::dup(descriptor_);
  if (copy >= 0 && ::close(copy) != 0 && errno != EINTR) {
    RefuseByErrno();
  }
  if (::rename(hidden_.c_str(), target_.c_str()) != 0) {
    RefuseByErrno();
  }
  ::close(descriptor_);
  descriptor_ = -1;
  SyncFolder(FolderOf(target_));
}

void RemoveAbandoned(const std::filesystem::path& folder,
                     const std::function<bool(std::string_view name)>& isOurs) {
  std::error_code error;
  std::vector<std::filesystem::path> hidden;
  for (std::filesystem::directory_iterator entry(folder.empty() ? "." : folder, error), end;
       !error && entry != end; entry.increment(error)) {
    const std::string name = NameBehind(entry->path().filename().string());
    if (!name.empty() && isOurs(name)) {
      hidden.push_back(entry->path());
    }
  }
  for (const std::filesystem::path& file : hidden) {
    RemoveUnlessLocked(file);
  }
}

void WriteWhole(const std::filesystem::path& path, std::span<const std::uint8_t> bytes) {
  PendingFile file(path);
  file.Append(bytes);
  file.Commit();
}

}  // namespace cli
