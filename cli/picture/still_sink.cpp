#include "cli/picture/still_sink.h"

#include "cli/file/pending_file.h"

namespace cli {
namespace {

struct PictureBytes : EncodedFrame {
  std::vector<std::uint8_t> bytes;
};

}  // namespace

std::unique_ptr<EncodedFrame> StillSink::Encode(std::int32_t, const minihost::Image& image,
                                                const PictureTraits& traits) const {
  auto encoded = std::make_unique<PictureBytes>();
  encoded->bytes = EncodePicture(image, traits, format_, encoding_);
  return encoded;
}

void StillSink::Write(std::int32_t frame, std::unique_ptr<EncodedFrame> encoded) {
  WriteWhole(name_.ForFrame(frame), static_cast<PictureBytes&>(*encoded).bytes);
}

}  // namespace cli
