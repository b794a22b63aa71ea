#include "cli/run/manifest.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>
#include <xxhash.h>

#include <algorithm>
#include <cerrno>
#include <fstream>
#include <system_error>
#include <utility>

#include "cli/report/error.h"
#include "cli/report/number.h"

namespace cli {
namespace {

std::uint64_t Hash(std::string_view bytes) {
  return ::XXH64(bytes.data(), bytes.size(), 0);
}

std::optional<std::string> Contents(const std::filesystem::path& file) {
  std::error_code error;
  if (!std::filesystem::is_regular_file(file, error)) {
    return {};
  }
  std::ifstream stream(file, std::ios::binary | std::ios::ate);
  if (!stream) {
    return {};
  }
  std::string bytes(static_cast<std::size_t>(stream.tellg()), '\0');
  stream.seekg(0).read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  if (!stream) {
    return {};
  }
  return bytes;
}

/// Empty when there is no such file or it cannot be read.
std::optional<FileMark> MarkOf(const std::filesystem::path& file) {
  const auto bytes = Contents(file);
  if (!bytes) {
    return {};
  }
  return FileMark{bytes->size(), Hash(*bytes)};
}

/// Takes the next field, up to a space or the end, off `line`.
std::string_view TakeField(std::string_view& line) {
  const std::string_view field = line.substr(0, line.find(' '));
  line.remove_prefix(std::min(field.size() + 1, line.size()));
  return field;
}

/// In one piece, so that the lines of several processes do not mix.  False, with errno, when that fails.
bool Append(int descriptor, std::string_view line) {
  if (descriptor < 0) {
    return false;
  }
  ssize_t written;
  do {
    written = ::write(descriptor, line.data(), line.size());
  } while (written < 0 && errno == EINTR);
  if (written == static_cast<ssize_t>(line.size())) {
    return true;
  }
  if (written >= 0) {
    errno = ENOSPC;
  }
  return false;
}

}  // namespace

std::filesystem::path ManifestName(const std::filesystem::path& pattern) {
  return pattern.parent_path() / fmt::format(".{}.vintrel", pattern.filename().string());
}

Manifest::Manifest(std::filesystem::path name, std::string_view scene, std::string_view version)
    // A zero byte ends each part, so that none reads like the rest of another.
    : name_(std::move(name)), recipe_(fmt::format("{}{}{}{}", version, '\0', scene, '\0')) {
  Read();
}

Manifest::~Manifest() {
  if (descriptor_ >= 0) {
    ::close(descriptor_);
  }
}

void Manifest::Read() {
  const auto contents = Contents(name_);
  if (!contents) {
    return;
  }
  std::string_view rest = *contents;
  for (std::size_t end; (end = rest.find('\n')) != std::string_view::npos; rest.remove_prefix(end + 1)) {
    TakeLine(rest.substr(0, end));
  }
}

void Manifest::TakeLine(std::string_view line) {
  const std::size_t space = line.rfind(' ');
  if (space == std::string_view::npos) {
    return;
  }
  std::string_view fields = line.substr(0, space);
  if (ParseHexadecimal<std::uint64_t>(line.substr(space + 1)) != Hash(fields)) {
    return;
  }
  const auto frame = ParseNumber<std::int32_t>(TakeField(fields));
  const auto size = ParseNumber<std::uint64_t>(TakeField(fields));
  const auto contents = ParseHexadecimal<std::uint64_t>(TakeField(fields));
  const auto recipe = ParseHexadecimal<std::uint64_t>(TakeField(fields));
  if (frame && size && contents && recipe && fields.empty()) {
    entries_[*frame] = {{*size, *contents}, *recipe};
  }
}

std::vector<std::int32_t> Manifest::Frames() const {
  std::vector<std::int32_t> frames;
  for (const auto& entry : entries_) {
    frames.push_back(entry.first);
  }
  std::ranges::sort(frames);
  return frames;
}

std::uint64_t Manifest::RecipeFor(std::string_view input) const {
  return Hash(recipe_ + std::string(input));
}

bool Manifest::IsDone(std::int32_t frame, const std::filesystem::path& file, std::string_view input) const {
  const auto entry = entries_.find(frame);
  return entry != entries_.end() && entry->second.recipe == RecipeFor(input) &&
         MarkOf(file) == entry->second.mark;
}

bool Manifest::IsOfAnother(std::int32_t frame, std::string_view input) const {
  const auto entry = entries_.find(frame);
  return entry != entries_.end() && entry->second.recipe != RecipeFor(input);
}

void Manifest::Note(std::int32_t frame, const std::filesystem::path& file, std::string_view input) {
  const auto mark = MarkOf(file);
  if (!mark) {
    Refuse(ExitCode::kOutput, "cannot read '{}' back after it was written", file.string());
  }
  const std::uint64_t recipe = RecipeFor(input);
  const std::string fields = fmt::format("{} {} {:016x} {:016x}", frame, mark->size, mark->contents, recipe);
  // A line break comes first when this is the first line of ours: a line cut short may be the last one there.
  const std::string line = fmt::format("{}{} {:016x}\n", descriptor_ < 0 ? "\n" : "", fields, Hash(fields));
  if (descriptor_ < 0) {
    descriptor_ = ::open(name_.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0666);
  }
  if (!Append(descriptor_, line)) {
    RefuseOutput(name_, std::generic_category().message(errno));
  }
  entries_[frame] = {*mark, recipe};
}

}  // namespace cli
