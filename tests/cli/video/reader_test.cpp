// Video in: the right frame, upright, in its colours, and words for what is wrong with the file.
#include "cli/video/module/reader.h"

#include <fmt/ranges.h>
#include <gmock/gmock.h>

#include <array>
#include <fstream>

#include "tests/cli/video/clip.h"
#include "tests/support/cli/expect_error.h"

namespace {

using cli::ExitCode;
using cli::VideoReader;
using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

class VideoRead : public VideoTest {};

/// What tells a frame from others.
std::string MarkOf(VideoReader& video, std::int32_t frame) {
  const auto picture = video.Read(frame);
  const auto row = picture->image.Row<PF_Pixel>(24);
  return {reinterpret_cast<const char*>(row.data()), row.size_bytes()};
}

/// Within 2 codes.
auto Near(int code) {
  return AllOf(testing::Ge(code - 2), testing::Le(code + 2));
}

// The second bar is yellow, made in luma and chroma of the matrix that the file names or leaves out.
TEST_F(VideoRead, ReadsTheMatrixAndRangeOfTheFile) {
  struct Case {
    const char* name;
    const char* arguments;
    const char* note;
  };
  const Case cases[] = {
      {"601.mkv", "smptebars=s=448x96 -c:v ffv1 -pix_fmt yuv420p -color_range tv -colorspace smpte170m", ""},
      {"untagged.avi", "smptebars=s=448x96 -c:v ffv1 -pix_fmt yuv422p", "BT.601"},
      {"709.mkv", "smptehdbars=s=640x96 -c:v ffv1 -pix_fmt yuv444p -color_range tv -colorspace bt709", ""},
      {"full.avi", "smptebars=s=448x96 -c:v mjpeg -q:v 1 -pix_fmt yuvj444p", ""},
      {"palette.mkv", "'smptebars=s=448x96:d=1,split[a][b];[a]palettegen[p];[b][p]paletteuse' -c:v png", ""}};
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    MakeClip(folder_ / c.name, "-f lavfi -i " + std::string(c.arguments) + " -frames:v 1");
    VideoReader video(folder_ / c.name);
    EXPECT_EQ(video.Notes().empty(), *c.note == 0);
    EXPECT_THAT(fmt::format("{}", fmt::join(video.Notes(), "\n")), HasSubstr(c.note));
    const auto picture = video.Read(0);
    const PF_Pixel pixel = picture->image.Row<PF_Pixel>(20)[video.Traits().width == 640 ? 182 : 96];
    EXPECT_THAT((std::array{pixel.red, pixel.green, pixel.blue, pixel.alpha}),
                ElementsAre(Near(191), Near(191), Near(0), Near(255)));
  }
}

// As a phone stores it; the other reader turns pictures too.
TEST_F(VideoRead, TurnsPicturesUpright) {
  MakeClip(folder_ / "lying.mp4", std::string(kTenFrames) + "-vf setsar=2 -pix_fmt yuv420p");
  for (const char* degrees : {"90", "180", "270"}) {
    SCOPED_TRACE(degrees);
    MakeClip(folder_ / "turned.mp4",
             "-i '" + (folder_ / "lying.mp4").string() + "' -c copy -metadata:s:v rotate=" + degrees);
    VideoReader video(folder_ / "turned.mp4");
    EXPECT_EQ(video.Traits().width, *degrees == '1' ? 64 : 48);
    EXPECT_EQ(video.Traits().pixelAspect, *degrees == '1' ? 2 : 0.5);
    MakeClip(folder_ / "upright.mkv", "-i '" + (folder_ / "turned.mp4").string() + "' -c:v ffv1");
    EXPECT_EQ(MeanDifference(folder_ / "turned.mp4", folder_ / "upright.mkv"), 0);
  }
}

// Groups with pictures between, in containers that know times well, roughly and not at all.
TEST_F(VideoRead, FindsEveryFrameInAnyOrder) {
  // Every frame is as bright as its number says.
  const std::string code =
      "-f lavfi -i \"nullsrc=s=64x48:r=24000/1001:d=3,geq=16+3*N:128:128\" "
      "-c:v libx264 -qp 4 -g 12 -bf 3 -pix_fmt yuv420p ";
  const auto numberShown = [](VideoReader& video, std::int32_t frame) {
    const auto picture = video.Read(frame);
    return picture ? std::lround(picture->image.Row<PF_Pixel>(24)[32].green * 219 / 255.0 / 3) : -1;
  };
  for (const char* name : {"a.mp4", "a.mkv", "a.ts", "a.avi", "a.h264"}) {
    SCOPED_TRACE(name);
    MakeClip(folder_ / name, code);
    VideoReader video(folder_ / name);
    EXPECT_EQ(video.Traits().lastFrame, 71);
    if (std::string(name) != "a.h264") {  // a bare stream has no rate
      EXPECT_EQ(video.Traits().rate->timeScale, 24000);
      EXPECT_EQ(video.Traits().rate->timeStep, 1001);
    }
    for (std::int32_t frame = 0; frame < 72; ++frame) {
      EXPECT_EQ(numberShown(video, frame), frame);
    }
    for (const std::int32_t frame : {71, 50, 3, 3, 4, 60, 0, 35, 36, 37, 11}) {
      EXPECT_EQ(numberShown(video, frame), frame) << "out of order";
    }
    for (const std::int32_t frame : {-1, 72}) {
      EXPECT_EQ(numberShown(video, frame), -1);
    }
  }
}

TEST_F(VideoRead, TellsWhichFrameIsDamaged) {
  const auto clip = folder_ / "clip.mkv";
  MakeClip(clip, std::string(kTenFrames) + "-c:v ffv1 -level 3 -slicecrc 1 -g 1 -pix_fmt bgr0");
  VideoReader whole(clip);
  const std::string fourth = MarkOf(whole, 4);
  const std::string sixth = MarkOf(whole, 6);
  // The middle of the packet of frame 5.
  const std::string place = RunShell("ffprobe -v error -show_entries packet=pos,size -of csv=p=0 '" +
                                     clip.string() + "' | sed -n 6p");
  const auto comma = place.find(',');
  const std::size_t numbers[] = {std::stoul(place), std::stoul(place.substr(comma + 1))};
  const std::size_t middle = std::max(numbers[0], numbers[1]) + std::min(numbers[0], numbers[1]) / 2;
  std::fstream(clip, std::ios::in | std::ios::out | std::ios::binary)
          .seekp(static_cast<std::streamoff>(middle))
      << "damage";
  VideoReader video(clip);
  EXPECT_EQ(MarkOf(video, 4), fourth);
  for (int i = 0; i < 2; ++i) {
    ExpectError(ExitCode::kInput, "cannot read frame 5 of '" + clip.string(), [&] { video.Read(5); });
  }
  EXPECT_EQ(MarkOf(video, 6), sixth);
  EXPECT_EQ(MarkOf(video, 4), fourth);

  MakeClip(folder_ / "a.mp4", std::string(kTenFrames) + "-pix_fmt yuv420p");
  std::filesystem::resize_file(folder_ / "a.mp4", 2000);
  ExpectError(ExitCode::kInput, "a.mp4'", [&] { VideoReader(folder_ / "a.mp4"); });
  for (const char* name : {"b.mkv", "b.mp4"}) {
    MakeClip(folder_ / name, std::string(kTenFrames) + "-c:v libx264 -g 4 -movflags +faststart");
    EXPECT_THAT(VideoReader(folder_ / name).Notes(), Not(Contains(HasSubstr("breaks off"))));
    std::filesystem::resize_file(folder_ / name, std::filesystem::file_size(folder_ / name) * 3 / 4);
    VideoReader broken(folder_ / name);
    EXPECT_THAT(broken.Notes(), Contains(HasSubstr("breaks off after"))) << name;
    EXPECT_THAT(broken.Damage(), HasSubstr("seconds"));
    EXPECT_GE(*broken.Traits().lastFrame, 1);
    EXPECT_TRUE(broken.Read(*broken.Traits().lastFrame)) << "every frame that is announced is there";
  }
  // One picture less is too few, though a file that begins late or is cut by an edit list is whole.
  const std::string clipped = " -c:v libx264 -g 4 -movflags +faststart ";
  MakeClip(folder_ / "c.mp4", kTenFrames + clipped);
  MakeClip(folder_ / "c.mkv", kTenFrames + clipped);
  RunShell("cd '" + (folder_ / "").string() +
           "' && ffmpeg -v error -y -ss 0.1 -i c.mp4 -c copy edited.mp4 && "
           "ffmpeg -v error -y -itsoffset 0.5 -i c.mp4 -f lavfi -i sine=d=1 -c:v copy late.mkv");
  for (const char* name : {"c.mp4", "c.mkv", "edited.mp4", "late.mkv"}) {
    EXPECT_EQ(VideoReader(folder_ / name).Damage(), "") << name;
  }
  for (const char* name : {"c.mp4", "c.mkv"}) {
    const std::string last = RunShell("ffprobe -v error -show_entries packet=pos -of csv=p=0 '" +
                                      (folder_ / name).string() + "' | sort -n | tail -1");
    std::filesystem::resize_file(folder_ / name, std::stoul(last) + 5);
    EXPECT_THAT(VideoReader(folder_ / name).Damage(), HasSubstr("breaks off")) << name;
  }
  MakeClip(folder_ / "sound.wav", "-f lavfi -i sine=d=0.1");
  ExpectError(ExitCode::kInput, "there is neither picture nor video in it",
              [&] { VideoReader(folder_ / "sound.wav"); });
  std::ofstream(folder_ / "notes.txt") << std::string(5000, '.') << '\n';
  ExpectError(ExitCode::kInput, "it is a text", [&] { VideoReader(folder_ / "notes.txt"); });
}

// Ten pictures a second for a second, then five: retimed, each stays as long as it is shown.
TEST_F(VideoRead, ShowsThePictureOfEachMoment) {
  const auto clip = folder_ / "clip.mkv";
  MakeClip(clip,
           "-f lavfi -i \"nullsrc=s=64x48:r=10:d=2,geq=16+9*N:128:128,select='lt(n,10)+not(mod(n,2))'\" "
           "-vsync vfr -c:v ffv1 -pix_fmt yuv420p -metadata title=Street");
  VideoReader video(clip, {.retimed = cli::FrameRate{20, 1}});
  EXPECT_TRUE(video.HasVaryingRate());
  EXPECT_NEAR(*video.Traits().lastFrame, 38, 1);
  EXPECT_EQ(video.Traits().rate->timeScale, 20);
  for (const auto& [frame, number] :
       {std::pair{0, 0}, {1, 0}, {2, 1}, {19, 9}, {20, 10}, {23, 10}, {24, 12}}) {
    const auto picture = video.Read(frame);
    EXPECT_EQ(std::lround(picture->image.Row<PF_Pixel>(24)[32].green * 219 / 255.0 / 9), number) << frame;
  }
  using Fact = std::pair<std::string, std::string>;
  MakeClip(folder_ / "a.mxf",
           "-f lavfi -i testsrc2=s=720x576:r=25:d=0.1 -c:v mpeg2video -pix_fmt yuv422p "
           "-timecode 10:00:00:00");
  EXPECT_THAT(VideoReader(folder_ / "a.mxf").About(), Contains(Fact("timecode", "10:00:00:00")));
  EXPECT_THAT(video.About(), AllOf(Contains(Fact("codec", "ffv1")), Contains(Fact("pixel format", "yuv420p")),
                                   Contains(Fact("title", "Street"))));
}

}  // namespace
