#include "cli/picture/contact_sheet.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "cli/frames/sample_convert.h"
#include "cli/picture/digits.h"
#include "cli/report/error.h"
#include "minihost/picture/copy.h"

namespace cli {
namespace {

using minihost::Depth;
using minihost::Image;

constexpr int kGap = 8;           // pixels around every cell
constexpr int kNumberMargin = 4;  // pixels above a number
constexpr PF_Pixel kGround{255, 40, 40, 40};
constexpr PF_Pixel kNumberColor{255, 200, 200, 200};

/// Colour of 8 bits and its alpha on the ground, rounded to the nearest.
std::uint8_t OnGround(int value, int alpha, int ground) {
  return static_cast<std::uint8_t>((value * alpha + ground * (255 - alpha) + 127) / 255);
}

template <class Pixel>
PF_Pixel OnGround(const Pixel& pixel) {
  const auto convert = [](auto sample) { return ConvertSample<To255, WayOf<Pixel>>(sample); };
  const int alpha = convert(pixel.alpha);
  return {255, OnGround(convert(pixel.red), alpha, kGround.red),
          OnGround(convert(pixel.green), alpha, kGround.green),
          OnGround(convert(pixel.blue), alpha, kGround.blue)};
}

Image OnGround(const Image& image) {
  Image result(image.Width(), image.Height(), Depth::kBits8, minihost::Clearing::kNone);
  minihost::WithPixel(image.PixelDepth(), [&](auto zero) {
    using Pixel = decltype(zero);
    for (int row = 0; row < image.Height(); ++row) {
      std::ranges::transform(image.Row<Pixel>(row), result.Row<PF_Pixel>(row).begin(),
                             [](const Pixel& pixel) { return OnGround(pixel); });
    }
  });
  return result;
}

}  // namespace

struct ContactSheet::Reduced : EncodedFrame {
  Image image;
  std::vector<std::uint8_t> iccProfile;
};

ContactSheet::ContactSheet(std::vector<std::int32_t> frames, const SourceTraits& traits)
    : frames_(std::move(frames)) {
  if (frames_.empty() || frames_.size() > kMaxCells) {
    Refuse(ExitCode::kUsage, "a contact sheet holds 1 to {} frames, not {}", kMaxCells, frames_.size());
  }
  columns_ = static_cast<std::size_t>(std::ceil(std::sqrt(static_cast<double>(frames_.size()))));
  const std::size_t rows = (frames_.size() + columns_ - 1) / columns_;
  const int columns = static_cast<int>(columns_);
  const int widest = (kMaxSheetWidth - kGap) / columns - kGap;
  // Square pixels come from squeezing the longer side.
  const double width = traits.width * std::min(traits.pixelAspect, 1.0);
  const double height = traits.height / std::max(traits.pixelAspect, 1.0);
  const double scale = std::min(1.0, widest / width);
  cellWidth_ = std::max(1, static_cast<int>(std::lround(width * scale)));
  cellHeight_ = std::max(1, static_cast<int>(std::lround(height * scale)));
  digitScale_ = cellWidth_ < 160 ? 1 : 2;
  const Corner end = CornerOf(rows * columns_);
  if (end.top > Image::kMaxSide) {
    Refuse(ExitCode::kUsage,
           "the contact sheet would be {} pixels high, but {} is the limit; try fewer frames", end.top,
           Image::kMaxSide);
  }
  sheet_.image = Image(columns * (cellWidth_ + kGap) + kGap, end.top, Depth::kBits8);
  const PF_LayerDef world = sheet_.image.World();
  minihost::FillPixels(kGround, minihost::BoundsOf(world), world, Depth::kBits8);
  for (std::size_t cell = 0; cell < frames_.size(); ++cell) {
    const auto [left, top] = CornerOf(cell);
    DrawNumber(frames_[cell], left, top + cellHeight_ + kNumberMargin, digitScale_, kNumberColor, world);
  }
}

ContactSheet::Corner ContactSheet::CornerOf(std::size_t cell) const {
  const int column = static_cast<int>(cell % columns_);
  const int row = static_cast<int>(cell / columns_);
  const int rowHeight = cellHeight_ + kNumberMargin + kDigitHeight * digitScale_ + kGap;
  return {kGap + column * (cellWidth_ + kGap), kGap + row * rowHeight};
}

std::unique_ptr<EncodedFrame> ContactSheet::Encode(std::int32_t, const Image& image,
                                                   const PictureTraits& traits) const {
  auto reduced = std::make_unique<Reduced>();
  reduced->image = OnGround(minihost::Resized(image, cellWidth_, cellHeight_));
  reduced->iccProfile = traits.iccProfile;
  return reduced;
}

void ContactSheet::Write(std::int32_t frame, std::unique_ptr<EncodedFrame> encoded) {
  const Reduced& reduced = static_cast<const Reduced&>(*encoded);
  const auto cell = static_cast<std::size_t>(std::ranges::find(frames_, frame) - frames_.begin());
  const auto [left, top] = CornerOf(cell);
  const PF_LayerDef source = reduced.image.World();
  minihost::CopyPixels(source, minihost::BoundsOf(source), sheet_.image.World(),
                       {left, top, left + cellWidth_, top + cellHeight_}, Depth::kBits8);
  if (sheet_.traits.iccProfile.empty()) {
    sheet_.traits.iccProfile = reduced.iccProfile;
  }
}

}  // namespace cli
