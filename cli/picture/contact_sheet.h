// Many frames on one picture: a grid of reduced frames, each with its number under it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "cli/frames/sink.h"
#include "cli/frames/source.h"

namespace cli {

/// Takes the frames of a render into a grid that is about as wide as it is high in cells, at most
/// kMaxSheetWidth pixels wide.  A frame gets smaller, never larger, and its pixels get square.  The sheet is
/// of 8 bits and opaque: where a frame is transparent a dark grey shows.  A frame that never comes, because
/// it failed or is missing, leaves its cell empty but for its number.
class ContactSheet : public FrameSink {
 public:
  static constexpr int kMaxSheetWidth = 1920;
  static constexpr std::size_t kMaxCells = 400;  // more would not be told apart

  /// Throws ToolError(kUsage) for no frames, more than kMaxCells, or a sheet that gets higher than a
  /// picture may be.
  ContactSheet(std::vector<std::int32_t> frames, const SourceTraits& traits);

  std::unique_ptr<EncodedFrame> Encode(std::int32_t frame, const minihost::Image& image,
                                       const PictureTraits& traits) const override;
  void Write(std::int32_t frame, std::unique_ptr<EncodedFrame> encoded) override;
  void Finish() override {}

  /// The sheet as it is, and the first colour profile that one of its frames has.
  const Picture& Sheet() const { return sheet_; }

 private:
  struct Reduced;

  /// The top left corner of a cell.
  struct Corner {
    int left;
    int top;
  };
  Corner CornerOf(std::size_t cell) const;

  std::vector<std::int32_t> frames_;
  std::size_t columns_;
  int cellWidth_;
  int cellHeight_;
  int digitScale_;
  Picture sheet_;
};

}  // namespace cli
