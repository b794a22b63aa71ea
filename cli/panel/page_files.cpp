#include "cli/panel/page_files.h"

#include <fmt/format.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <utility>

#include "cli/file/extension.h"
#include "cli/report/error.h"

namespace cli {
namespace {

namespace fs = std::filesystem;

constexpr char kIndex[] = "index.html";

std::string TypeOf(const fs::path& file) {
  constexpr std::pair<std::string_view, std::string_view> kTypes[] = {
      {".html", "text/html; charset=utf-8"},
      {".js", "text/javascript; charset=utf-8"},
      {".mjs", "text/javascript; charset=utf-8"},
      {".css", "text/css; charset=utf-8"},
      {".json", "application/json"},
      {".toml", "application/toml"},
      {".txt", "text/plain; charset=utf-8"},
      {".wasm", "application/wasm"},
      {".png", "image/png"},
      {".jpg", "image/jpeg"},
      {".svg", "image/svg+xml"},
      {".ico", "image/vnd.microsoft.icon"},
      {".woff2", "font/woff2"}};
  const std::string extension = LowerExtension(file);
  const auto* const found = std::ranges::find(kTypes, std::string_view(extension),
                                              &std::pair<std::string_view, std::string_view>::first);
  return std::string(found == std::end(kTypes) ? "application/octet-stream" : found->second);
}

bool IsBelow(const fs::path& file, const fs::path& folder) {
  return std::ranges::mismatch(folder, file).in1 == folder.end();
}

}  // namespace

fs::path PageFiles::FolderOfTool() {
  std::error_code error;
  const fs::path tool = fs::read_symlink("/proc/self/exe", error);
  fs::path installed = (tool.parent_path() / VINTREL_PAGE_FROM_TOOL).lexically_normal();
  if (!error && fs::is_directory(installed, error)) {
    return installed;
  }
  return VINTREL_PAGE_OF_SOURCES;
}

PageFiles::PageFiles(const fs::path& folder) {
  std::error_code error;
  folder_ = fs::canonical(folder, error);
  if (error || !fs::is_regular_file(folder_ / kIndex, error)) {
    Refuse(ExitCode::kInput,
           "there is no page in '{}'; make it with ./run web in the sources, or install the tool again",
           folder.string());
  }
}

HttpReply PageFiles::Read(std::string_view path) const {
  const HttpError missing(404, "the page has no such file");
  if (path.find('\0') != path.npos || path.starts_with('/')) {
    throw missing;
  }
  fs::path asked = folder_ / path;
  if (path.empty() || path.ends_with('/')) {
    asked /= kIndex;
  }
  std::error_code error;
  const fs::path file = fs::canonical(asked, error);
  if (error || !IsBelow(file, folder_) || !fs::is_regular_file(file, error)) {
    throw missing;
  }
  std::ifstream stream(file, std::ios::binary);
  if (!stream) {
    throw missing;
  }
  HttpBytes bytes{std::istreambuf_iterator<char>(stream), {}};
  return {.status = 200,
          .type = TypeOf(file),
          .headers = {},
          .body = std::make_shared<const HttpBytes>(std::move(bytes)),
          .stream = {}};
}

}  // namespace cli
