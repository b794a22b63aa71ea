// Video in and out: exact pixels, right colours, whole files, sound.
#include <gmock/gmock.h>
#include <sys/resource.h>

#include <csignal>
#include <cstdint>
#include <fstream>
#include <random>

#include "cli/sample_convert.h"
#include "cli/video_pixels.h"
#include "cli/video_reader.h"
#include "cli/video_writer.h"
#include "tests/cli/clip.h"
#include "tests/cli/expect_error.h"
#include "tests/cli/temporary_folder.h"

namespace {

using cli::ExitCode;
using cli::VideoReader;
using cli::VideoTraits;
using cli::VideoWriter;
using minihost::Depth;
using minihost::Image;
using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr char kTenFrames[] = "-f lavfi -i testsrc2=s=64x48:r=25:d=0.4 ";

std::string Pixels(const Image& image) {
  std::string bytes;
  for (int row = 0; row < image.height(); ++row) {
    const auto* first =
        reinterpret_cast<const char*>(image.data()) + static_cast<std::size_t>(row) * image.rowBytes();
    bytes.append(first, static_cast<std::size_t>(image.width()) * BytesPerPixel(image.depth()));
  }
  return bytes;
}

/// What tells a frame from others, short enough to be printed.
std::string MarkOf(VideoReader& video, std::int32_t frame) {
  const auto picture = video.Read(frame);
  return picture ? std::to_string(std::hash<std::string>()(Pixels(picture->image))) : "no frame";
}

VideoTraits TraitsFrom(const VideoReader& video) {
  const cli::SourceTraits& source = video.Traits();
  return {source.width,       source.height, source.depth, source.hasAlpha,
          source.pixelAspect, *source.rate,  video.Tags(), video.Sound(0, *source.lastFrame)};
}

void WriteFrames(VideoReader& video, VideoWriter& writer, std::int32_t first, std::int32_t last) {
  for (std::int32_t frame = first; frame <= last; ++frame) {
    const auto picture = video.Read(frame);
    ASSERT_TRUE(picture) << frame;
    writer.Write(frame, writer.Encode(frame, picture->image, picture->traits));
  }
}

/// Reads a video and writes it with nothing drawn.
void CopyVideo(const std::filesystem::path& from, const std::filesystem::path& to,
               std::optional<Depth> depth = {}) {
  VideoReader video(from, depth);
  VideoWriter writer(to, TraitsFrom(video));
  WriteFrames(video, writer, 0, *video.Traits().lastFrame);
  writer.Finish();
}

class Video : public testing::Test {
 protected:
  void SetUp() override {
    if (!HasFfmpeg()) GTEST_SKIP() << "ffmpeg is not installed";
  }
  TemporaryFolder folder_;
};

cli::AvFrame MakeFrame(AVPixelFormat format, int width, int height) {
  cli::AvFrame frame(av_frame_alloc());
  frame->format = format;
  frame->width = width;
  frame->height = height;
  EXPECT_EQ(av_frame_get_buffer(frame.get(), 0), 0);
  return frame;
}

template <class Sample>
Sample* RowOf(const AVFrame& frame, int plane, int row) {
  return reinterpret_cast<Sample*>(frame.data[plane] + row * frame.linesize[plane]);
}

/// Calls `visit(plane, row, column)` for every sample of a planar frame of luma and chroma.
template <class Visit>
void VisitSamples(const AVFrame& frame, int chromaShift, Visit visit) {
  for (int plane = 0; plane < 3; ++plane) {
    const int shift = plane ? chromaShift : 0;
    for (int row = 0; row < AV_CEIL_RSHIFT(frame.height, shift); ++row) {
      for (int column = 0; column < AV_CEIL_RSHIFT(frame.width, shift); ++column) visit(plane, row, column);
    }
  }
}

// With colours that RGB can show, one step in 8 bits, none above; odd sizes have smaller blocks at the edges.
TEST(VideoColor, YuvKeepsItsCodes) {
  std::mt19937 random(7);
  for (const AVColorSpace matrix : {AVCOL_SPC_BT709, AVCOL_SPC_SMPTE170M, AVCOL_SPC_BT2020_NCL}) {
    for (const Depth depth : {Depth::kBits8, Depth::kBits16, Depth::kFloat}) {
      const cli::YuvCoding coding{matrix, AVCOL_RANGE_MPEG};
      const auto small = MakeFrame(AV_PIX_FMT_YUV420P, 64, 48);
      VisitSamples(*small, 1, [&](int plane, int row, int column) {
        RowOf<std::uint8_t>(*small, plane, row)[column] =
            static_cast<std::uint8_t>(plane ? std::uniform_int_distribution(108, 148)(random)
                                            : std::uniform_int_distribution(70, 180)(random));
      });
      const auto smallBack = MakeFrame(AV_PIX_FMT_YUV420P, 64, 48);
      cli::EncodePixels(DecodePixels(*small, coding, depth, cli::AlphaForm::kStraight), matrix, *smallBack);
      int worst = 0;
      VisitSamples(*small, 1, [&](int plane, int row, int column) {
        worst = std::max(worst, std::abs(RowOf<std::uint8_t>(*small, plane, row)[column] -
                                         RowOf<std::uint8_t>(*smallBack, plane, row)[column]));
      });
      EXPECT_LE(worst, depth == Depth::kBits8 ? 1 : 0) << "matrix " << matrix;
      if (depth == Depth::kBits8) continue;

      const auto fine = MakeFrame(AV_PIX_FMT_YUVA444P10, 5, 3);
      VisitSamples(*fine, 0, [&](int plane, int row, int column) {
        RowOf<std::uint16_t>(*fine, plane, row)[column] =
            static_cast<std::uint16_t>(std::uniform_int_distribution(450, 570)(random));
        RowOf<std::uint16_t>(*fine, 3, row)[column] =
            static_cast<std::uint16_t>(std::uniform_int_distribution(0, 1023)(random));
      });
      const auto fineBack = MakeFrame(AV_PIX_FMT_YUVA444P10, 5, 3);
      cli::EncodePixels(DecodePixels(*fine, coding, depth, cli::AlphaForm::kStraight), matrix, *fineBack);
      VisitSamples(*fine, 0, [&](int plane, int row, int column) {
        EXPECT_EQ(RowOf<std::uint16_t>(*fine, plane, row)[column],
                  RowOf<std::uint16_t>(*fineBack, plane, row)[column]);
        EXPECT_EQ(RowOf<std::uint16_t>(*fine, 3, row)[column],
                  RowOf<std::uint16_t>(*fineBack, 3, row)[column]);
      });
    }
  }
}

// The bars of the standards, made in luma and chroma, have known colours; the source has them as codes.
TEST_F(Video, ShowsBarsInTheirColors) {
  const std::array<std::array<int, 3>, 7> colors = {
      {{191, 191, 191}, {191, 191, 0}, {0, 191, 191}, {0, 191, 0}, {191, 0, 191}, {191, 0, 0}, {0, 0, 191}}};
  const auto check = [&](const std::string& name, const char* note, int left, int width) {
    VideoReader video(folder_ / name);
    EXPECT_THAT(video.Notes(), note ? testing::Matcher<std::vector<std::string>>(Contains(HasSubstr(note)))
                                    : testing::Matcher<std::vector<std::string>>(IsEmpty()));
    const auto picture = video.Read(0);
    const auto row = picture->image.Row<PF_Pixel>(20);
    for (std::size_t bar = 0; bar < colors.size(); ++bar) {
      const PF_Pixel& pixel =
          row[static_cast<std::size_t>(left + width / 2) + bar * static_cast<std::size_t>(width)];
      EXPECT_NEAR(pixel.red, colors[bar][0], 2) << name << bar;
      EXPECT_NEAR(pixel.green, colors[bar][1], 2) << name << bar;
      EXPECT_NEAR(pixel.blue, colors[bar][2], 2) << name << bar;
      EXPECT_EQ(pixel.alpha, 255);
    }
  };
  const std::string tags = " -color_range tv -colorspace ";
  MakeClip(folder_ / "601.mkv",
           "-f lavfi -i smptebars=s=448x96 -frames:v 1 -c:v ffv1 -pix_fmt yuv420p" + tags + "smpte170m");
  MakeClip(folder_ / "untagged.avi", "-f lavfi -i smptebars=s=448x96 -frames:v 1 -c:v ffv1 -pix_fmt yuv422p");
  MakeClip(folder_ / "709.mkv",
           "-f lavfi -i smptehdbars=s=640x96 -frames:v 1 -c:v ffv1 -pix_fmt yuv444p" + tags + "bt709");
  MakeClip(folder_ / "full.avi",
           "-f lavfi -i smptebars=s=448x96 -frames:v 1 -c:v mjpeg -q:v 1 -pix_fmt yuvj444p");
  check("601.mkv", nullptr, 0, 64);
  check("untagged.avi", "BT.601", 0, 64);
  check("709.mkv", nullptr, 80, 68);
  check("full.avi", nullptr, 0, 64);
}

TEST_F(Video, LosslessRgbComesBackEqual) {
  struct Case {
    const char* pixels;
    const char* codec;
    std::optional<Depth> depth;
    const char* written;
  };
  const Case cases[] = {{"bgr0", "ffv1", {}, "bgr0"},
                        {"bgra", "ffv1", {}, "bgra"},
                        {"gbrp", "utvideo", {}, "bgr0"},
                        {"gbrap", "utvideo", {}, "bgra"},
                        {"gbrp16le", "ffv1", Depth::kFloat, "gbrp16le"},
                        {"gbrap16le", "ffv1", Depth::kFloat, "gbrap16le"}};
  for (const Case& c : cases) {
    SCOPED_TRACE(c.pixels);
    const auto clip = folder_ / "clip.mkv";
    // Noise over all bits, alpha included.
    MakeClip(clip, std::string("-f lavfi -i \"nullsrc=s=63x47:d=0.12,format=gbrap16le,"
                               "geq=r='random(1)*65535':g='random(2)*65535':b='random(3)*65535':"
                               "a='random(4)*65535'\" -c:v ") +
                       c.codec + " -pix_fmt " + c.pixels);
    CopyVideo(clip, folder_ / "copy.mkv", c.depth);
    EXPECT_THAT(Probe(folder_ / "copy.mkv", "v", "pix_fmt"),
                HasSubstr(std::string("pix_fmt=") + c.written + "\n"));
    const std::string pixels = std::string(c.written) == "bgr0" ? "bgr24" : c.written;  // the 0 means nothing
    EXPECT_TRUE(RawFrames(clip, pixels) == RawFrames(folder_ / "copy.mkv", pixels));
  }
}

TEST_F(Video, WritesWhatOthersRead) {
  struct Case {
    const char* name;
    const char* source;
    std::vector<const char*> found;
  };
  const Case cases[] = {
      {"a.mp4",
       "-vf setsar=12/11 -pix_fmt yuv420p -colorspace bt709 -color_primaries bt709 -color_trc bt709 "
       "-color_range tv",
       {"codec_name=h264", "pix_fmt=yuv420p", "color_space=bt709", "color_primaries=bt709",
        "color_transfer=bt709", "color_range=tv", "sample_aspect_ratio=12:11"}},
      {"b.mp4", "-pix_fmt yuv420p", {"color_space=smpte170m", "color_primaries=smpte170m", "color_range=tv"}},
      {"a.mov",
       "-pix_fmt bgra",
       {"codec_name=prores", "profile=4444", "pix_fmt=yuva444p", "color_space=smpte170m"}},
      {"b.mov", "-pix_fmt yuv420p -colorspace bt709", {"pix_fmt=yuv444p", "color_space=bt709"}},
      {"A.MKV",
       "-vf setsar=12/11 -pix_fmt bgra",
       {"codec_name=ffv1", "pix_fmt=bgra", "color_space=gbr", "color_range=pc",
        "sample_aspect_ratio=12:11"}}};
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    MakeClip(folder_ / "clip.mkv",
             "-f lavfi -i testsrc2=s=64x48:r=30000/1001:d=0.3 -c:v ffv1 " + std::string(c.source));
    CopyVideo(folder_ / "clip.mkv", folder_ / c.name);
    const std::string found =
        Probe(folder_ / c.name, "v",
              "codec_name,profile,width,height,pix_fmt,r_frame_rate,color_space,color_range,"
              "color_primaries,color_transfer,sample_aspect_ratio,nb_read_packets");
    for (const char* part : {"width=64|height=48", "r_frame_rate=30000/1001", "nb_read_packets=9"}) {
      EXPECT_THAT(found, HasSubstr(part));
    }
    for (const char* part : c.found) EXPECT_THAT(found, HasSubstr(part));
    CopyVideo(folder_ / "clip.mkv", folder_ / (std::string("again-") + c.name));
    EXPECT_TRUE(ReadAll(folder_ / c.name) == ReadAll(folder_ / (std::string("again-") + c.name)));
    // Close to the source for ours too.
    VideoReader before(folder_ / "clip.mkv");
    VideoReader after(folder_ / c.name, Depth::kBits8);
    const auto was = before.Read(5);
    const auto is = after.Read(5);
    ASSERT_TRUE(was && is);
    double sum = 0;
    for (int row = 0; row < 48; ++row) {
      for (std::size_t x = 0; x < 64; ++x) {
        const PF_Pixel& a = was->image.Row<PF_Pixel>(row)[x];
        const PF_Pixel& b = is->image.Row<PF_Pixel>(row)[x];
        sum += std::abs(a.red - b.red) + std::abs(a.green - b.green) + std::abs(a.blue - b.blue);
        EXPECT_NEAR(a.alpha, before.Traits().hasAlpha ? b.alpha : 255, 1);
      }
    }
    EXPECT_LT(sum / (64 * 48 * 3), 6);
  }
  // The index of an MP4 stands in front.
  const std::string mp4 = ReadAll(folder_ / "a.mp4");
  EXPECT_LT(mp4.find("moov"), mp4.find("mdat"));
}

TEST_F(Video, AppearsWholeOrNotAtAll) {
  MakeClip(folder_ / "clip.mkv",
           "-f lavfi -i \"nullsrc=s=128x128:d=0.4,geq='random(1)*255':128:128\" -c:v ffv1 -pix_fmt yuv420p");
  VideoReader video(folder_ / "clip.mkv");
  VideoTraits traits = TraitsFrom(video);
  for (const char* name : {"a.mp4", "a.mov", "a.mkv"}) {
    SCOPED_TRACE(name);
    std::ofstream(folder_ / name) << "old";
    {
      VideoWriter writer(folder_ / name, traits);
      WriteFrames(video, writer, 0, 5);
    }
    EXPECT_EQ(ReadAll(folder_ / name), "old");
    rlimit before{};
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &before), 0);
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    const rlimit tiny{40'000, before.rlim_max};
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &tiny), 0);
    ExpectError(ExitCode::kOutput, std::string(name) + "': File too large", [&] {
      VideoWriter writer(folder_ / name, traits);
      WriteFrames(video, writer, 0, 9);
      writer.Finish();
    });
    ::setrlimit(RLIMIT_FSIZE, &before);
    std::signal(SIGXFSZ, handler);
    EXPECT_EQ(ReadAll(folder_ / name), "old");
  }
  EXPECT_THAT(folder_.Names(), ElementsAre("a.mkv", "a.mov", "a.mp4", "clip.mkv"));

  ExpectError(ExitCode::kUsage, ".mp4, .mov or .mkv", [&] { VideoWriter(folder_ / "a.avi", traits); });
  ExpectError(ExitCode::kOutput, "mkdir", [&] { VideoWriter(folder_ / "no/a.mkv", traits); });
  traits.width = 127;
  ExpectError(ExitCode::kOutput, "127 x 128; crop", [&] { VideoWriter(folder_ / "b.mp4", traits); });
  EXPECT_THAT(folder_.Names(), ElementsAre("a.mkv", "a.mov", "a.mp4", "clip.mkv"));
}

TEST_F(Video, CarriesTheSoundOfItsFrames) {
  const auto clip = folder_ / "clip.mov";
  MakeClip(
      clip,
      "-f lavfi -i testsrc2=s=64x48:r=25:d=2 -f lavfi -i sine=440:r=48000:d=2 -pix_fmt yuv420p -c:a aac");
  VideoReader video(clip);
  VideoTraits traits = TraitsFrom(video);
  for (const char* name : {"a.mp4", "a.mov", "a.mkv"}) {
    SCOPED_TRACE(name);
    traits.sound = video.Sound(10, 34);
    ASSERT_TRUE(traits.sound);
    VideoWriter writer(folder_ / name, traits);
    EXPECT_THAT(writer.Notes(), IsEmpty());
    WriteFrames(video, writer, 10, 34);
    writer.Finish();
    // Decoded, and so trimmed by edit lists, it is one second long, give or take a packet of 1024 samples.
    const std::string sound =
        RunShell("ffmpeg -v error -i '" + (folder_ / name).string() + "' -f s16le -ac 1 -");
    EXPECT_NEAR(static_cast<double>(sound.size()) / 2, 48000, 1100);
    EXPECT_THAT(Probe(folder_ / name, "v", "start_time"), HasSubstr("start_time=0.000000"));
    EXPECT_THAT(Probe(folder_ / name, "v", "nb_read_packets"), HasSubstr("nb_read_packets=25"));
  }
  // A click in the middle stays at its frame.
  MakeClip(folder_ / "click.mkv",
           "-f lavfi -i testsrc2=s=64x48:r=25:d=2 -f lavfi -i "
           "\"aevalsrc='if(between(t,1,1.01),1,0)':s=48000:d=2\" "
           "-c:v ffv1 -c:a pcm_s16le");
  VideoReader clicking(folder_ / "click.mkv");
  traits = TraitsFrom(clicking);
  traits.sound = clicking.Sound(20, 49);
  {
    VideoWriter writer(folder_ / "click.mov", traits);
    WriteFrames(clicking, writer, 20, 49);
    writer.Finish();
  }
  const std::string sound =
      RunShell("ffmpeg -v error -i '" + (folder_ / "click.mov").string() + "' -f s8 -ac 1 -");
  const std::size_t click = sound.find_first_not_of('\0');
  EXPECT_NEAR(static_cast<double>(click) / 48000, 0.2, 0.001);
  EXPECT_THAT(VideoWriter(folder_ / "click.mp4", traits).Notes(),
              Contains(AllOf(HasSubstr("left out"), HasSubstr("pcm_s16le"))));

  MakeClip(folder_ / "mute.mkv", std::string(kTenFrames) + "-c:v ffv1");
  EXPECT_FALSE(VideoReader(folder_ / "mute.mkv").Sound(0, 9));
}

// Groups with pictures between, in containers that know times well, roughly and not at all.
TEST_F(Video, FindsEveryFrameInAnyOrder) {
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
    for (std::int32_t frame = 0; frame < 72; ++frame) EXPECT_EQ(numberShown(video, frame), frame);
    for (const std::int32_t frame : {71, 50, 3, 3, 4, 60, 0, 35, 36, 37, 11}) {
      EXPECT_EQ(numberShown(video, frame), frame) << "out of order";
    }
    for (const std::int32_t frame : {-1, 72}) EXPECT_EQ(numberShown(video, frame), -1);
  }
}

TEST_F(Video, TellsWhichFrameIsDamaged) {
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
  MakeClip(folder_ / "sound.wav", "-f lavfi -i sine=d=0.1");
  ExpectError(ExitCode::kInput, "there is no video in it", [&] { VideoReader(folder_ / "sound.wav"); });
}

}  // namespace
