// Sources that need no files of their own.
#include "cli/frames/source.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>

namespace {

using minihost::Depth;

/// Blank frames up to the ninth, each with a file.
struct Numbered : cli::BlankSource {
  using BlankSource::BlankSource;
  std::optional<cli::Picture> Read(std::int32_t frame) override {
    return frame < 10 ? BlankSource::Read(frame) : std::nullopt;
  }
  std::filesystem::path FileOf(std::int32_t frame) const override { return std::to_string(frame); }
};

TEST(FrameSource, IsBlankInAnyDepthAndReducedByItsProxy) {
  const struct { int divisor, width, height; } cases[] = {{1, 13, 6}, {2, 6, 3}, {4, 3, 1}, {8, 1, 1}};
  for (const Depth depth : {Depth::kBits8, Depth::kBits16, Depth::kFloat}) {
    for (const auto& [divisor, width, height] : cases) {
      SCOPED_TRACE(testing::Message() << "one over " << divisor << " depth " << int(depth));
      cli::ProxySource proxy(std::make_unique<Numbered>(cli::FrameSize{13, 6}, depth), divisor);
      const std::optional<cli::Picture> picture = proxy.Read(9);
      ASSERT_TRUE(picture);
      EXPECT_TRUE(picture->traits.hasAlpha && proxy.Traits().hasAlpha);
      EXPECT_TRUE(picture->image.PixelDepth() == depth && proxy.Traits().depth == depth);
      EXPECT_TRUE(picture->image.Width() == width && proxy.Traits().width == width);
      EXPECT_TRUE(picture->image.Height() == height && proxy.Traits().height == height);
      minihost::WithPixel(depth, [&, &width = width, &height = height]<class Pixel>(Pixel) {
        const Pixel last = picture->image.Row<Pixel>(height - 1)[static_cast<std::size_t>(width - 1)];
        EXPECT_TRUE(last.alpha == 0 && last.red == 0 && last.green == 0 && last.blue == 0);
      });
      EXPECT_FALSE(proxy.Read(10));
      EXPECT_EQ(proxy.FileOf(3), "3");
    }
  }
}

}  // namespace
