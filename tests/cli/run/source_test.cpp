// Frames that are no video: blank frames, one picture, numbered pictures; and what decides among them.
#include <gmock/gmock.h>

#include <fstream>

#include "cli/file/pending_file.h"
#include "cli/frames/source.h"
#include "cli/picture/still_sink.h"
#include "cli/picture/still_source.h"
#include "cli/run/open_source.h"
#include "tests/cli/video/clip.h"
#include "tests/support/cli/expect_error.h"
#include "tests/support/cli/temporary_folder.h"

namespace {

using cli::ExitCode;
using minihost::Depth;
using minihost::Image;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

/// A picture of one colour, so that frames can be told apart.
Image Plain(int width, int height, std::uint8_t red) {
  Image image(width, height, Depth::kBits8);
  for (int row = 0; row < height; ++row) {
    std::ranges::fill(image.Row<PF_Pixel>(row), PF_Pixel{255, red, 2, 3});
  }
  return image;
}

void WritePicture(const std::filesystem::path& path, const Image& image) {
  cli::WriteWhole(path, cli::EncodePicture(image, {}, cli::FormatOf(path)));
}

int RedOf(cli::FrameSource& source, std::int32_t frame) {
  const auto picture = source.Read(frame);
  return picture ? picture->image.Row<PF_Pixel>(0)[0].red : -1;
}

TEST(SequenceSource, ReadsAllWaysOfNumbering) {
  struct Case {
    const char* pattern;
    std::vector<const char*> files;  // of the frames 3, 4 and 12
  };
  const Case cases[] = {{"p.####.png", {"p.0003.png", "p.0004.png", "p.0012.png"}},
                        {"p%04d.png", {"p0003.png", "p0004.png", "p0012.png"}},
                        {"p%d.png", {"p3.png", "p4.png", "p12.png"}},
                        {"p7_@.png", {"p7_3.png", "p7_4.png", "p7_12.png"}},
                        {"p@@@v2.png", {"p003v2.png", "p004v2.png", "p012v2.png"}}};
  for (const Case& c : cases) {
    SCOPED_TRACE(c.pattern);
    TemporaryFolder folder;
    const int frames[] = {3, 4, 12};
    for (std::size_t i = 0; i < 3; ++i) {
      WritePicture(folder / c.files[i], Plain(4, 2, static_cast<std::uint8_t>(frames[i])));
    }
    // Neighbours that are none of it.
    for (const char* other :
         {"p.00005.png", "p.5.png", "p00005.png", "p.0005.tif", "q.0005.png", "p7_005.png"}) {
      std::ofstream(folder / other) << "x";
    }
    if (std::string(c.pattern) == "p%d.png") {
      std::filesystem::remove(folder / "p00005.png");
    }
    EXPECT_TRUE(cli::IsSequenceName(folder / c.pattern));
    cli::SequenceSource sequence(folder / c.pattern);
    EXPECT_EQ(sequence.Traits().firstFrame, 3);
    EXPECT_EQ(sequence.Traits().lastFrame, 12);
    EXPECT_THAT(sequence.Missing(), ElementsAre(5, 6, 7, 8, 9, 10, 11));
    for (const int frame : {12, 3, 4}) {
      EXPECT_EQ(RedOf(sequence, frame), frame);
    }
    for (const int frame : {2, 5, 13, -3}) {
      EXPECT_EQ(RedOf(sequence, frame), -1);
    }
  }
}

TEST(SequenceSource, RefusesWhatDoesNotFit) {
  TemporaryFolder folder;
  WritePicture(folder / "p.-0001.png", Plain(4, 2, 1));
  WritePicture(folder / "p.0000.png", Plain(4, 3, 2));
  std::ofstream(folder / "p.0001.png") << "no picture";
  cli::SequenceSource sequence(folder / "p.####.png", Depth::kBits16);
  EXPECT_EQ(sequence.Traits().firstFrame, -1);
  EXPECT_EQ(sequence.Read(-1)->image.PixelDepth(), Depth::kBits16);
  ExpectError(ExitCode::kInput, "p.-0001.png' is 4 x 2; all frames need one size", [&] { sequence.Read(0); });
  ExpectError(ExitCode::kInput, "p.0001.png", [&] { sequence.Read(1); });
  ExpectError(ExitCode::kInput, "q.0001.png'", [&] { cli::SequenceSource(folder / "q.#.png"); });
  ExpectError(ExitCode::kInput, "No such file", [&] { cli::SequenceSource(folder / "no/q.#.png"); });
  ExpectError(ExitCode::kUsage, "more than one place", [&] { cli::OpenSource(folder / "q.#.#.png"); });
}

TEST(OpenSource, DecidesByWhatTheFileIs) {
  TemporaryFolder folder;
  // The names would say otherwise: a place for a number, a JPEG, nothing.
  WritePicture(folder / "odd.png", Plain(4, 2, 9));
  for (const char* name : {"p@2x.png", "photo.jpg", "photo"}) {
    std::filesystem::copy_file(folder / "odd.png", folder / name);
    auto opened = cli::OpenSource(folder / name);
    EXPECT_EQ(opened.video, nullptr);
    EXPECT_EQ(RedOf(*opened.frames, 0), 9) << name;
    EXPECT_EQ(RedOf(*opened.frames, 1000), 9) << name;
    EXPECT_FALSE(opened.frames->Traits().lastFrame);
  }
  for (const int frame : {1, 2, 5, 7, 8}) {
    WritePicture(folder / ("s." + std::to_string(frame) + ".tif"),
                 Plain(4, 2, static_cast<std::uint8_t>(frame)));
  }
  auto sequence = cli::OpenSource(folder / "s.@.tif", {Depth::kFloat});
  EXPECT_THAT(sequence.notes, ElementsAre(HasSubstr("s.@.tif' are missing: 3-4, 6")));
  EXPECT_EQ(sequence.frames->Traits().depth, Depth::kFloat);

  std::ofstream(folder / "junk.mov") << "this is no video";
  ExpectError(ExitCode::kInput, "junk.mov", [&] { cli::OpenSource(folder / "junk.mov"); });
  ExpectError(ExitCode::kInput, "none.mp4': ", [&] { cli::OpenSource(folder / "none.mp4"); });
  ExpectError(ExitCode::kInput, "it is a folder", [&] { cli::OpenSource(folder / "."); });

  if (!HasFfmpeg()) {
    GTEST_SKIP() << "ffmpeg is not installed";
  }
  MakeClip(folder / "clip.mkv", "-f lavfi -i testsrc2=s=64x48:d=0.2 -c:v ffv1 -pix_fmt bgr0");
  // A colon in the name is no protocol.
  std::filesystem::rename(folder / "clip.mkv", folder / "http:clip.png");
  auto video = cli::OpenSource(folder / "http:clip.png");
  ASSERT_NE(video.video, nullptr);
  EXPECT_EQ(video.frames->Traits().lastFrame, 4);
  MakeClip(folder / "still.bmp", "-f lavfi -i testsrc2=s=64x48 -frames:v 1");
  auto still = cli::OpenSource(folder / "still.bmp");
  EXPECT_EQ(still.video, nullptr);
  EXPECT_TRUE(still.frames->Read(99));
}

}  // namespace
