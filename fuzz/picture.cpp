// Files that are no pictures, or nearly: they are refused, or read as what their header says.
#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <string_view>

#include "cli/picture/module/open_file.h"
#include "cli/picture/reader.h"
#include "fuzz/input.h"

namespace {

// A file in memory, which has a name all the same.
class MemoryFile {
 public:
  MemoryFile(const std::uint8_t* bytes, std::size_t size) : file_(memfd_create("fuzz", MFD_CLOEXEC)) {
    fuzz::Require(file_ >= 0 && write(file_, bytes, size) == static_cast<ssize_t>(size), "memory for a file");
  }
  ~MemoryFile() { close(file_); }
  MemoryFile(const MemoryFile&) = delete;
  MemoryFile& operator=(const MemoryFile&) = delete;

  std::filesystem::path Path() const { return "/proc/self/fd/" + std::to_string(file_); }

 private:
  int file_;
};

constexpr std::int64_t kMostAnnounced = 1 << 18;

// 0 where there are no more bytes.
std::int64_t NumberAt(std::string_view bytes, std::size_t at) {
  std::int32_t number = 0;
  if (at + sizeof number <= bytes.size()) {
    std::memcpy(&number, bytes.data() + at, sizeof number);
  }
  return number;
}

// Left, top, right, bottom.
bool IsVastWindow(std::string_view window) {
  return NumberAt(window, 8) - NumberAt(window, 0) >= kMostAnnounced ||
         NumberAt(window, 12) - NumberAt(window, 4) >= kMostAnnounced;
}

// The library takes memory for an EXR's attributes, its rows and a table of them, as its header has them,
// before anyone can ask for the size.  A gigabyte is soon refused without sanitizers and takes a minute with
// them.
bool IsVast(std::string_view file) {
  constexpr std::int64_t kHasParts = 0x1000;
  if (!file.starts_with("\x76\x2f\x31\x01")) {
    return false;
  }
  const bool hasParts = (NumberAt(file, 4) & kHasParts) != 0;
  std::string_view rest = file;
  const auto skip = [&](std::size_t bytes) { rest.remove_prefix(std::min(bytes, rest.size())); };
  const auto takeWord = [&] {
    const std::string_view word = rest.substr(0, rest.find('\0'));
    skip(word.size() + 1);
    return word;
  };
  skip(8);
  for (;;) {
    const std::string_view name = takeWord();
    if (!name.empty()) {
      takeWord();  // its type
      const std::int64_t size = NumberAt(rest, 0);
      skip(4);
      if (size >= kMostAnnounced || (name == "dataWindow" && IsVastWindow(rest))) {
        return true;
      }
      skip(size < 0 ? 0 : static_cast<std::size_t>(size));
    } else if (!hasParts || rest.empty() || rest.front() == '\0') {  // the end of the last header
      return false;
    }
  }
}

// More samples than this say nothing that fewer do not, and take long.
bool IsSmall(const OIIO::ImageSpec& spec) {
  constexpr std::int64_t kMost = 1 << 18;
  const auto within = [&](int width, int height) {
    return std::int64_t{width} * height * std::max(spec.nchannels, 1) <= kMost;
  };
  return within(spec.width, spec.height) && within(spec.full_width, spec.full_height);
}

}  // namespace

// libpng leaves the callback in which the library notes that a PNG ends early by a jump, past the destructor
// of the note: a string is left for each such file.  The callback is six frames up at the most, and is seen
// there only when stacks are walked slowly.
extern "C" const char* __lsan_default_suppressions() {
  return "leak:PNGInput::PngReadCallback\n";
}
extern "C" const char* __asan_default_options() {
  return "fast_unwind_on_malloc=0:malloc_context_size=6";
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  if (IsVast({reinterpret_cast<const char*>(bytes), size})) {
    return -1;
  }
  const MemoryFile file(bytes, size);
  try {
    if (!IsSmall(cli::OpenFile(file.Path()).Spec())) {
      return -1;
    }
    const cli::Picture picture = cli::ReadPicture(file.Path());
    fuzz::Require(picture.image.Width() >= 1 && picture.image.Height() >= 1, "a picture has pixels");
  } catch (const cli::ToolError& error) {
    fuzz::Require(error.Code() == cli::ExitCode::kInput, "what cannot be read is an input's fault");
  }
  return 0;
}
