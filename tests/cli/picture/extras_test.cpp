// What stands beside the picture: from file to file, and as other programs see it.
#include <gmock/gmock.h>

#include <fstream>
#include <numeric>

#include "cli/picture/losses.h"
#include "cli/picture/module/exif.h"
#include "cli/picture/reader.h"
#include "tests/cli/picture/picture_files.h"
#include "tests/support/cli/temporary_folder.h"

namespace {

using minihost::Depth;
using testing::HasSubstr;

TEST(PictureExtras, CameraDataGoesThroughEveryFormat) {
  TemporaryFolder folder;
  OIIO::ImageSpec spec(4, 2, 3, OIIO::TypeDesc::UINT8);
  spec["Orientation"] = 6;
  spec["Make"] = "Acme";
  spec["Exif:PhotographicSensitivity"] = 400;
  spec["GPS:LatitudeRef"] = "N";
  spec["DateTime"] = "2021:01:02 03:04:05";
  spec["XResolution"] = 300.0f;
  spec["YResolution"] = 300.0f;
  spec["ResolutionUnit"] = "cm";
  WriteForeign(folder / "a.jpg", spec, std::vector<std::uint8_t>(24));
  std::ofstream(folder / "a.jpg", std::ios::app) << "<x:xmpmeta tiff:Orientation=\"6\"></x:xmpmeta>";
  const char* before = "a.jpg";
  for (const char* name : {"b.tif", "c.tif", "d.png", "e.jpg"}) {
    SCOPED_TRACE(name);
    const cli::Picture picture = cli::ReadPicture(folder / before);
    EXPECT_THAT(picture.traits.extras->facts, testing::Contains(testing::Pair("metadata", "EXIF, XMP")));
    EXPECT_THAT(cli::LossesInVideo({.extras = picture.traits.extras}),
                testing::ElementsAre("a video holds none of the picture's EXIF, XMP"));
    Write(folder / name, picture.image, picture.traits);
    const OIIO::ImageSpec stored = ReadStored(folder / name).spec;
    EXPECT_EQ(stored.width, 2) << "upright";
    EXPECT_EQ(stored.get_int_attribute("Orientation", 1), 1);
    EXPECT_EQ(stored.get_string_attribute("Make"), "Acme");
    if (!std::string(name).ends_with("tif")) {  // of which the library does not read them
      EXPECT_EQ(stored.get_int_attribute("Exif:PhotographicSensitivity"), 400);
      EXPECT_EQ(stored.get_string_attribute("GPS:LatitudeRef"), "N");
    }
    EXPECT_EQ(stored.get_string_attribute("DateTime"), "2021:01:02 03:04:05");
    const float perUnit = stored.get_string_attribute("ResolutionUnit") == "cm" ? 1 : 1 / 2.54f;
    EXPECT_NEAR(stored.get_float_attribute("XResolution") * perUnit, 300, 1);
    const std::string bytes = ReadAll(folder / name);
    const std::size_t packet = bytes.find("<x:xmpmeta tiff:Orientation=\"1\"></x:xmpmeta>");
    EXPECT_NE(packet, std::string::npos);
    EXPECT_EQ(bytes.find("<x:xmpmeta", packet + 1), std::string::npos) << "twice";
    before = name;
  }
}

TEST(PictureExtras, CameraDataOfAnExrLeavesEveryFormatReadable) {
  TemporaryFolder folder;
  OIIO::ImageSpec spec(4, 2, 3, OIIO::TypeDesc::HALF);
  spec["Make"] = "Acme";
  spec["ExposureTime"] = 0.001f;
  spec["FNumber"] = 2.8f;
  spec["Exif:PhotographicSensitivity"] = 400;
  spec["GPS:LatitudeRef"] = "N";
  WriteForeign(folder / "a.exr", spec, std::vector<float>(24));
  const cli::Picture picture = cli::ReadPicture(folder / "a.exr");
  for (const char* name : {"b.tif", "b.png", "b.jpg", "b.exr"}) {
    SCOPED_TRACE(name);
    Write(folder / name, picture.image, picture.traits);
    EXPECT_EQ(ReadStored(folder / name).spec.get_string_attribute("Make"), "Acme");
  }
}

TEST(Exif, IsReadInAnyByteOrderWhateverIsDamaged) {
  using namespace std::string_literals;
  // At 8 the picture's directory, at 62 the camera's, at 104 values.
  const std::string block =
      "MM\0*\0\0\0\x08"
      "\0\x04\x01\x0F\0\x02\0\0\0\x06\0\0\0\x68"  // the maker, "Acmes"
      "\x01\x12\0\x03\0\0\0\x01\0\x06\0\0"        // the orientation, which does not go over
      "\x01\x1A\0\x05\0\0\0\x01\0\0\0\x6E"        // the resolution, 7 / 2
      "\x87\x69\0\x04\0\0\0\x01\0\0\0\x3E\0\0\0\0"
      "\0\x03\x88\x27\0\x03\0\0\0\x01\x01\x90\0\0"  // 400 ISO
      "\x92\x7C\0\x07\0\0\0\x06\0\0\0\x68"          // the maker's own note
      "\x99\x99\0\x07\xFF\xFF\xFF\xFF\0\0\0\x68"    // more than there is
      "\0\0\0\0Acmes\0\0\0\0\x07\0\0\0\x02"s;
  const cli::Exif exif = cli::ReadExif(block);
  ASSERT_EQ(exif.picture.size(), 2u);
  EXPECT_EQ(exif.picture[0].bytes, "Acmes\0"s);
  EXPECT_EQ(exif.picture[1].bytes, "\x07\0\0\0\x02\0\0\0"s);
  ASSERT_EQ(exif.camera.size(), 1u);
  EXPECT_EQ(exif.camera[0].bytes, "\x90\x01"s);
  const cli::Exif back = cli::ReadExif(cli::WriteExif(exif, 3, 2));
  EXPECT_EQ(back.picture[1].bytes, exif.picture[1].bytes);
  EXPECT_EQ(back.camera[0].bytes, exif.camera[0].bytes);
  for (std::size_t size = 0; size < block.size(); ++size) {
    EXPECT_LE(cli::ReadExif(block.substr(0, size)).picture.size(), 2u) << size;
  }
}

TEST(PictureExtras, KeepTheChannelsAndTheOverscanOfAnExr) {
  TemporaryFolder folder;
  OIIO::ImageSpec spec(4, 3, 5, OIIO::TypeDesc::HALF);
  spec.channelnames = {"R", "G", "B", "Z", "id"};
  spec.channelformats = {OIIO::TypeDesc::HALF, OIIO::TypeDesc::HALF, OIIO::TypeDesc::HALF,
                         OIIO::TypeDesc::FLOAT, OIIO::TypeDesc::UINT32};
  spec.full_x = spec.full_y = 1;  // a row and a column are overscan
  spec.full_width = 3;
  spec.full_height = 2;
  spec["shot"] = "s01";
  std::vector<float> samples(60);
  std::iota(samples.begin(), samples.end(), 0.0f);
  WriteForeign(folder / "a.exr", spec, samples);
  cli::Picture picture = cli::ReadPicture(folder / "a.exr");
  EXPECT_THAT(picture.traits.extras->leftOut, testing::ElementsAre(testing::HasSubstr("overscan")));
  Write(folder / "b.exr", picture.image, picture.traits);
  const Stored before = ReadStored(folder / "a.exr");
  const Stored after = ReadStored(folder / "b.exr");
  EXPECT_EQ(after.spec.channelnames, spec.channelnames);
  EXPECT_EQ(after.spec.channelformats, spec.channelformats);
  EXPECT_EQ(after.spec.get_string_attribute("shot"), "s01");
  EXPECT_EQ(after.spec.full_x, 1);
  EXPECT_EQ(after.spec.x, 0);
  EXPECT_EQ(after.samples, before.samples);
  // Around snow alone there is nothing, but what is no color stays.
  picture.traits.hasAlpha = picture.traits.isSnowAlone = true;
  Write(folder / "b.exr", picture.image, picture.traits);
  const Stored alone = ReadStored(folder / "b.exr");
  EXPECT_THAT(std::vector(alone.samples.begin(), alone.samples.begin() + 6),
              testing::ElementsAre(0, 0, 0, 0, before.samples[3], before.samples[4]));
  EXPECT_EQ(alone.samples[5 * 6], before.samples[5 * 5]) << "the picture";
  // Of another size: color and alpha alone.
  Write(folder / "b.exr", RandomImage(2, 2, Depth::kFloat, Alpha::kOpaque), picture.traits);
  EXPECT_EQ(ReadStored(folder / "b.exr").spec.nchannels, 4);
  cli::SourceTraits traits{.extras = picture.traits.extras};
  EXPECT_THAT(cli::LossesOf(cli::FileFormat::kExr, traits), testing::IsEmpty());
  EXPECT_THAT(cli::LossesInVideo(traits), testing::ElementsAre(HasSubstr("left out: Z, id")));
  traits.isReduced = true;
  EXPECT_THAT(cli::LossesOf(cli::FileFormat::kExr, traits),
              testing::ElementsAre("channels are left out: Z, id; .exr at full size keeps them"));
}

}  // namespace
