// Pictures to files and back, and files that others have written.
#include <gmock/gmock.h>
#include <unistd.h>

#include <array>
#include <cstring>
#include <optional>
#include <set>

#ifdef __SANITIZE_ADDRESS__
#include <sanitizer/lsan_interface.h>
#endif

#include "cli/picture/reader.h"
#include "tests/cli/picture/picture_files.h"
#include "tests/support/cli/expect_error.h"
#include "tests/support/cli/temporary_folder.h"

namespace {

using cli::ClearColor;
using cli::ExitCode;
using minihost::Depth;
using minihost::Image;

constexpr Depth kDepths[] = {Depth::kBits8, Depth::kBits16, Depth::kFloat};

TEST(PictureFile, KeepsEveryBitInAnyCompressionThatClaimsTo) {
  TemporaryFolder folder;
  const struct {
    const char* name;
    std::vector<const char*> compressions;
  } cases[] = {{"a.png", {"", "zip", "zip:0", "zip:9", "rle", "none"}},
               {"a.TIFF", {"", "zip", "zip:1", "lzw", "packbits", "none"}},
               {"a.exr", {"", "zip", "zip:9", "zips", "zips:1", "piz", "rle", "none"}}};
  for (const auto& [name, compressions] : cases) {
    const cli::FileFormat format = cli::FormatOf(name);
    const bool isExr = format == cli::FileFormat::kExr;
    for (const Depth depth : kDepths) {
      // PNG has no float.
      if (depth == Depth::kFloat && format == cli::FileFormat::kPng) {
        continue;
      }
      for (const Alpha alpha : {Alpha::kOpaque, Alpha::kAny}) {
        // It holds colour times alpha.
        if (isExr && alpha == Alpha::kAny) {
          continue;
        }
        const Image image = RandomImage(37, 23, depth, alpha);
        const cli::PictureTraits traits = {.hasAlpha = alpha == Alpha::kAny};
        const auto standard = cli::EncodePicture(image, traits, format);
        for (const char* compression : compressions) {
          SCOPED_TRACE(testing::Message() << name << ' ' << compression << " depth " << int(depth));
          const auto bytes = cli::EncodePicture(image, traits, format, {.compression = compression});
          const char* usual = isExr ? "piz" : "zip";
          const bool isStandard = std::set<std::string>({"", usual}).contains(compression);
          EXPECT_TRUE(bytes == standard || !isStandard);
          cli::WriteWhole(folder / name, bytes);
          const cli::Picture picture = cli::ReadPicture(folder / name, depth);
          EXPECT_EQ(picture.traits.hasAlpha, traits.hasAlpha);
          EXPECT_EQ(picture.traits.clearColor, ClearColor::kHidden);
          EXPECT_EQ(Channels(picture.image), Channels(image));
        }
      }
    }
    for (const char* compression : compressions) {
      if (*compression) {
        cli::CheckCompression(format, compression);
      }
    }
    for (const auto& [text, part] : {std::pair{"lzww", "'lzww' is none"},
                                     {"none:3", "'none' has no levels"},
                                     {"zip:10", "zip:9"},
                                     {"zip:", "is not possible"},
                                     {"zip:-1", "is not possible"}}) {
      ExpectError(ExitCode::kUsage, part, [&, &text = text] { cli::CheckCompression(format, text); });
    }
  }
}

TEST(PictureFile, ExrHoldsColorTimesAlpha) {
  TemporaryFolder folder;
  for (const Depth depth : kDepths) {
    for (const ClearColor clear : {ClearColor::kHidden, ClearColor::kLight}) {
      SCOPED_TRACE(testing::Message() << "depth " << int(depth) << " clear " << int(clear));
      const Image image = RandomImage(37, 23, depth, Alpha::kAny);
      Write(folder / "a.exr", image, {.hasAlpha = true, .clearColor = clear});
      const Stored stored = ReadStored(folder / "a.exr");
      EXPECT_EQ(stored.spec.format, depth == Depth::kBits8 ? OIIO::TypeDesc::HALF : OIIO::TypeDesc::FLOAT);
      const double white = WhiteOf(depth);
      const double storedStep = depth == Depth::kBits8 ? 1.0 / 2048 : 1.0 / (1 << 23);
      const std::vector<double> before = Channels(image);
      const cli::Picture back = cli::ReadPicture(folder / "a.exr", depth);
      EXPECT_EQ(back.traits.clearColor, ClearColor::kLight);
      const std::vector<double> after = Channels(back.image);
      for (std::size_t i = 0; i < before.size(); ++i) {
        const std::size_t pixel = i / 4 * 4;
        const double alpha = before[pixel] / white;
        const double color = before[i] / white;
        const bool isAlpha = i == pixel;
        const float inFile = stored.samples[isAlpha ? pixel + 3 : i - 1];
        const double expected = isAlpha                       ? alpha
                                : alpha > 0                   ? color * alpha
                                : clear == ClearColor::kLight ? color
                                                              : 0;
        ASSERT_NEAR(inFile, expected, storedStep) << i;
        const bool light = clear == ClearColor::kLight;
        if (alpha > 0 || light || isAlpha) {
          // Premultiplying costs what dividing by a small alpha blows up.
          const double tolerance = white * storedStep * (alpha > 0 ? 1 / alpha : 1);
          ASSERT_NEAR(after[i], before[i], depth == Depth::kFloat ? tolerance : std::floor(tolerance + 0.5))
              << i;
        }
      }
    }
  }
}

TEST(PictureFile, HalfStaysHalfUnlessAsked) {
  TemporaryFolder folder;
  const Image image = RandomImage(37, 23, Depth::kFloat, Alpha::kOpaque);
  const auto formatOf = [&](const cli::PictureTraits& traits, const cli::EncodingSettings& encoding) {
    cli::WriteWhole(folder / "a.exr", cli::EncodePicture(image, traits, cli::FileFormat::kExr, encoding));
    return ReadStored(folder / "a.exr").spec.format;
  };
  EXPECT_EQ(formatOf({}, {}), OIIO::TypeDesc::FLOAT);
  EXPECT_FALSE(cli::ReadPicture(folder / "a.exr").traits.isHalf);
  EXPECT_EQ(formatOf({}, {.isHalf = true}), OIIO::TypeDesc::HALF);
  EXPECT_TRUE(cli::ReadPicture(folder / "a.exr").traits.isHalf);
  EXPECT_FALSE(cli::ReadPicture(folder / "a.exr", Depth::kFloat).traits.isHalf);
  EXPECT_EQ(formatOf({.isHalf = true}, {}), OIIO::TypeDesc::HALF);
}

TEST(PictureFile, JpegLiesOverBlackAndKeepsItsColorFine) {
  TemporaryFolder folder;
  Image image(16, 16, Depth::kBits16);
  for (int row = 0; row < 16; ++row) {
    for (PF_Pixel16& pixel : image.Row<PF_Pixel16>(row)) {
      pixel.alpha = 16384;
      (row % 2 == 0 ? pixel.red : pixel.blue) = 32768;
    }
  }
  std::size_t before = 0;
  for (const int quality : {1, 50, 100}) {
    const auto bytes =
        cli::EncodePicture(image, {.hasAlpha = true}, cli::FileFormat::kJpeg, {.quality = quality});
    EXPECT_GT(bytes.size(), before);
    before = bytes.size();
    cli::WriteWhole(folder / "a.jpg", bytes);
  }
  const std::vector<double> channels = Channels(cli::ReadPicture(folder / "a.jpg").image);
  for (std::size_t pixel = 0; pixel < 256; ++pixel) {
    const bool isRed = pixel / 16 % 2 == 0;  // rows of colour stay apart
    EXPECT_NEAR(channels[4 * pixel + 1], isRed ? 128 : 0, 3) << pixel;
    EXPECT_NEAR(channels[4 * pixel + 3], isRed ? 0 : 128, 3) << pixel;
  }
}

TEST(PictureFile, DepthFollowsTheFileUnlessAsked) {
  TemporaryFolder folder;
  const std::vector<float> samples{0, 0.5f, 1, 0.25f, 2, -1};
  const struct {
    const char* name;
    OIIO::TypeDesc type;
    Depth depth;
  } cases[] = {
      {"a.png", OIIO::TypeDesc::UINT8, Depth::kBits8},   {"b.png", OIIO::TypeDesc::UINT16, Depth::kBits16},
      {"a.tif", OIIO::TypeDesc::UINT16, Depth::kBits16}, {"b.tif", OIIO::TypeDesc::FLOAT, Depth::kFloat},
      {"a.exr", OIIO::TypeDesc::HALF, Depth::kFloat},    {"a.jpg", OIIO::TypeDesc::UINT8, Depth::kBits8}};
  for (const auto& [name, type, depth] : cases) {
    SCOPED_TRACE(name);
    WriteForeign(folder / name, OIIO::ImageSpec(2, 1, 3, type), samples);
    EXPECT_EQ(cli::ReadPicture(folder / name).image.PixelDepth(), depth);
    const bool precise = name[2] != 'j';
    for (const Depth asked : kDepths) {
      const Image image = cli::ReadPicture(folder / name, asked).image;
      ASSERT_EQ(image.PixelDepth(), asked);
      const double white = WhiteOf(asked);
      const std::vector<double> channels = Channels(image);
      EXPECT_EQ(channels[0], white);
      EXPECT_EQ(channels[4], white);
      // Half a step of the file's 8 bits, then half a step of the depth's.
      if (precise) {
        EXPECT_NEAR(channels[2], 0.5 * white, white / 510 + 0.5);
      }
      if (precise && asked != Depth::kFloat) {
        EXPECT_EQ(channels[6], white) << "over-range is clamped";
      }
    }
  }
  const std::vector<double> kept = Channels(cli::ReadPicture(folder / "a.exr").image);
  EXPECT_EQ(kept[6], 2);
  EXPECT_EQ(kept[7], -1);
}

TEST(PictureFile, GreyBecomesThreeColors) {
  TemporaryFolder folder;
  for (const char* name : {"a.png", "a.tif", "a.exr"}) {
    WriteForeign<float>(folder / name, OIIO::ImageSpec(2, 1, 1, OIIO::TypeDesc::FLOAT), {0, 1});
    const cli::Picture grey = cli::ReadPicture(folder / name, Depth::kBits8);
    EXPECT_FALSE(grey.traits.hasAlpha);
    EXPECT_THAT(Channels(grey.image), testing::ElementsAre(255, 0, 0, 0, 255, 255, 255, 255)) << name;
  }
  OIIO::ImageSpec spec(2, 1, 2, OIIO::TypeDesc::UINT8);
  spec.alpha_channel = 1;
  spec["oiio:UnassociatedAlpha"] = 1;
  WriteForeign<std::uint8_t>(folder / "ga.png", spec, {10, 0, 200, 128});
  const cli::Picture greyAlpha = cli::ReadPicture(folder / "ga.png");
  EXPECT_TRUE(greyAlpha.traits.hasAlpha);
  EXPECT_THAT(Channels(greyAlpha.image), testing::ElementsAre(0, 10, 10, 10, 128, 200, 200, 200));
}

// The data window lies beside the display window by a column and a row.
TEST(PictureFile, ShowsTheDisplayWindow) {
  TemporaryFolder folder;
  for (const auto& [left, top, channels] : {std::array{1, -1, 3}, {1, -1, 4}, {-1, 1, 3}, {-1, 1, 4}}) {
    OIIO::ImageSpec spec(3, 3, channels, OIIO::TypeDesc::HALF);
    spec.x = 10 + left;
    spec.y = 20 + top;
    spec.full_x = 10;
    spec.full_y = 20;
    spec.full_width = 3;
    spec.full_height = 3;
    WriteForeign(folder / "a.exr", spec, std::vector<float>(static_cast<std::size_t>(9 * channels), 1));
    const std::vector<double> shown = Channels(cli::ReadPicture(folder / "a.exr", Depth::kBits8).image);
    ASSERT_EQ(shown.size(), 4u * 9);
    for (int i = 0; i < 9; ++i) {
      const auto at = static_cast<std::size_t>(4 * i);
      const int column = i % 3 - left;
      const int row = i / 3 - top;
      const bool covered = column >= 0 && column < 3 && row >= 0 && row < 3;
      EXPECT_EQ(shown[at], covered || channels == 3 ? 255 : 0) << i << " of " << channels;
      EXPECT_EQ(shown[at + 1], covered ? 255 : 0) << i << " of " << channels;
    }
  }
}

TEST(PictureFile, IsTurnedUpright) {
  TemporaryFolder folder;
  // Stored as rows "01" "23" "45"; how each orientation shows them.
  const std::vector<std::vector<int>> upright = {{0, 1, 2, 3, 4, 5}, {1, 0, 3, 2, 5, 4}, {5, 4, 3, 2, 1, 0},
                                                 {4, 5, 2, 3, 0, 1}, {0, 2, 4, 1, 3, 5}, {4, 2, 0, 5, 3, 1},
                                                 {5, 3, 1, 4, 2, 0}, {1, 3, 5, 0, 2, 4}};
  for (int number = 1; number <= 8; ++number) {
    SCOPED_TRACE(number);
    OIIO::ImageSpec spec(2, 3, 1, OIIO::TypeDesc::UINT8);
    spec["Orientation"] = number;
    spec["PixelAspectRatio"] = 2.0f;
    WriteForeign<std::uint8_t>(folder / "a.tif", spec, {0, 1, 2, 3, 4, 5});
    const cli::Picture picture = cli::ReadPicture(folder / "a.tif");
    EXPECT_EQ(picture.image.Width(), number < 5 ? 2 : 3);
    EXPECT_EQ(picture.traits.pixelAspect, number < 5 ? 2 : 0.5);
    const std::vector<double> channels = Channels(picture.image);
    for (std::size_t i = 0; i < 6; ++i) {
      EXPECT_EQ(channels[4 * i + 1], upright[static_cast<std::size_t>(number) - 1][i]) << i;
    }
    WriteForeign<std::uint8_t>(folder / "a.jpg", spec, {0, 1, 2, 3, 4, 5});
    EXPECT_EQ(cli::ReadPicture(folder / "a.jpg").image.Width(), number < 5 ? 2 : 3);
  }
}

TEST(PictureFile, CarriesAspectAndProfileAndNoDate) {
  TemporaryFolder folder;
  // The least that passes: a header, and one tag of noise that does not compress.
  std::vector<std::uint8_t> profile(244);
  std::generate(profile.begin() + 152, profile.end(), std::mt19937(1));
  profile[3] = 244;
  std::memcpy(profile.data() + 12, "mntrRGB XYZ ", 12);
  std::memcpy(profile.data() + 36, "acsp", 4);
  std::memcpy(profile.data() + 68, "\0\0\xF6\xD6\0\1\0\0\0\0\xD3\x2D", 12);  // the light it is seen in
  profile[131] = 1;
  std::memcpy(profile.data() + 132, "test\0\0\0\x90\0\0\0\x64", 12);
  for (const char* name : {"a.png", "a.tif", "a.exr"}) {
    SCOPED_TRACE(name);
    const Image image = RandomImage(3, 3, Depth::kBits16, Alpha::kAny);
    Write(folder / name, image, {.hasAlpha = true, .pixelAspect = 1.5, .iccProfile = profile});
    const cli::Picture picture = cli::ReadPicture(folder / name);
    EXPECT_NEAR(picture.traits.pixelAspect, 1.5, 1e-6);
    EXPECT_EQ(picture.traits.iccProfile, name[2] == 'e' ? std::vector<std::uint8_t>() : profile);
    EXPECT_EQ(ReadStored(folder / name).spec.get_string_attribute("DateTime"), "");
  }
  profile[3] = 7;  // not its length
  Write(folder / "a.png", RandomImage(3, 3, Depth::kBits8, Alpha::kAny), {.iccProfile = profile});
  EXPECT_THAT(cli::ReadPicture(folder / "a.png").traits.iccProfile, testing::IsEmpty());
}

TEST(PictureFile, RefusesWhatIsNoPicture) {
  TemporaryFolder folder;
  const auto refused = [&](const std::string& name, const char* part) {
    ExpectError(ExitCode::kInput, part, [&] { cli::ReadPicture(folder / name); });
    ExpectError(ExitCode::kInput, (folder / name).string(), [&] { cli::ReadPicture(folder / name); });
  };
  refused("none.png", "No such file");
  std::filesystem::create_directory(folder / "dir.png");
  refused("dir.png", "it is a folder");
  if (::geteuid() != 0) {  // who may read anything
    std::ofstream(folder / "locked.png");
    std::filesystem::permissions(folder / "locked.png", std::filesystem::perms::none);
    refused("locked.png", "Permission denied");
  }
  std::ofstream(folder / "text.png") << "this is no picture";
  refused("text.png", "cannot read");
  std::ofstream(folder / "empty.png");
  refused("empty.png", "cannot read");
  WriteForeign<std::uint8_t>(folder / "a.bmp", OIIO::ImageSpec(1, 1, 3, OIIO::TypeDesc::UINT8), {1, 2, 3});
  refused("a.bmp", "format 'bmp'; PNG, JPEG, TIFF and EXR are read");
  OIIO::ImageSpec jpeg(64, 64, 3, OIIO::TypeDesc::UINT8);
  for (const char* name : {"cut.jpg", "progressive.jpg"}) {
    WriteForeign(folder / name, jpeg, std::vector<std::uint8_t>(64 * 64 * 3));
    jpeg["jpeg:progressive"] = 1;
  }
  for (const char* name : {"cut.png", "cut.tif", "cut.exr", "cut.jpg", "progressive.jpg"}) {
    if (!std::string_view(name).ends_with("jpg")) {
      Write(folder / name, RandomImage(64, 64, Depth::kBits16, Alpha::kAny), {.hasAlpha = true});
    }
    std::filesystem::resize_file(folder / name, std::filesystem::file_size(folder / name) / 2);
#ifdef __SANITIZE_ADDRESS__
    // When a PNG ends early its library jumps over a string of the reader's, which is not ours to free.
    std::optional<__lsan::ScopedDisabler> theirLeak;
    if (name[4] == 'p') {
      theirLeak.emplace();
    }
#endif
    refused(name, "cannot read");
  }
  WriteForeign(folder / "long.png", OIIO::ImageSpec(32768, 1, 1, OIIO::TypeDesc::UINT8),
               std::vector<std::uint8_t>(32768));
  refused("long.png", "32768 pixels long; at most 32767");
  for (const char* name : {"a.gif", "a", "png", "a.png.gz"}) {
    ExpectError(ExitCode::kUsage, "must end in .png, .jpg, .tif or .exr", [&] { cli::FormatOf(name); });
  }
}

}  // namespace
