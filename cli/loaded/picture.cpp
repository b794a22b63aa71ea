// The tool's side: the reader and the writer are those of the module, which is loaded at their first use.
#include "cli/loaded/module.h"
#include "cli/picture/exports.h"

namespace cli {
namespace {

const PictureModule& Module() {
  static const PictureModule& kModule =
      *reinterpret_cast<GetPictureModule*>(FindInModule("picture", "pictures", kPictureModuleName))();
  return kModule;
}

}  // namespace

Picture ReadPicture(const std::filesystem::path& path, std::optional<minihost::Depth> depth) {
  return Module().read(path, depth);
}

std::vector<std::uint8_t> EncodePicture(const minihost::Image& image, const PictureTraits& traits,
                                        FileFormat format, const EncodingSettings& encoding) {
  return Module().encode(image, traits, format, encoding);
}

}  // namespace cli
