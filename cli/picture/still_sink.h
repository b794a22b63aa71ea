// Frames into numbered pictures.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <utility>

#include "cli/file/output_name.h"
#include "cli/frames/sink.h"
#include "cli/picture/writer.h"

namespace cli {

/// One file a frame; each appears whole as soon as it is written.
class StillSink : public FrameSink {
 public:
  StillSink(OutputName name, FileFormat format, EncodingSettings encoding)
      : name_(std::move(name)), format_(format), encoding_(std::move(encoding)) {}

  std::unique_ptr<EncodedFrame> Encode(std::int32_t frame, const minihost::Image& image,
                                       const PictureTraits& traits) const override;
  void Write(std::int32_t frame, std::unique_ptr<EncodedFrame> encoded) override;
  void Finish() override {}

 private:
  OutputName name_;
  FileFormat format_;
  EncodingSettings encoding_;
};

}  // namespace cli
