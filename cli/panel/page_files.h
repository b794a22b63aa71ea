// The files of the page, from one folder and nowhere else.
#pragma once

#include <filesystem>
#include <string_view>

#include "cli/panel/http.h"

namespace cli {

class PageFiles {
 public:
  /// Of the page that came with the tool, from where it was installed to, else from its sources.
  static std::filesystem::path FolderOfTool();

  /// Throws ToolError(kInput) when the folder has no page.
  explicit PageFiles(const std::filesystem::path& folder);

  /// The file at a path below the folder, of a folder its index.html.  Throws HttpError(404) for what is not
  /// a file, or lies elsewhere once its links are followed.
  HttpReply Read(std::string_view path) const;

 private:
  std::filesystem::path folder_;  // without links
};

}  // namespace cli
