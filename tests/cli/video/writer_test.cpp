// Video out: exact pixels, tags that others read, whole files, sound.
#include "cli/video/sink.h"

#include <fmt/ranges.h>
#include <gmock/gmock.h>
#include <sys/resource.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <fstream>

#include "cli/video/format.h"
#include "tests/cli/video/clip.h"
#include "tests/support/cli/expect_error.h"

namespace {

using cli::ExitCode;
using cli::VideoReader;
using cli::VideoSink;
using cli::VideoTraits;
using minihost::Depth;
using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class VideoWrite : public VideoTest {};

TEST_F(VideoWrite, LosslessRgbComesBackEqual) {
  struct Case {
    const char* pixels;
    const char* codec;
    std::optional<Depth> depth;
    const char* compared;
  };
  const Case cases[] = {{"bgr0", "ffv1", {}, "bgr24"},  // the 0 means nothing
                        {"gbrap", "utvideo", {}, "bgra"},
                        {"bgr0 -s 400x4", "ffv1", {}, "bgr24"},  // too wide for one slice, too low for many
                        {"gbrap16le", "ffv1", Depth::kFloat, "gbrap16le"}};
  for (const Case& c : cases) {
    const auto clip = folder_ / "clip.mkv";
    // Noise over all bits, alpha included.
    MakeClip(clip, std::string("-f lavfi -i \"nullsrc=s=63x47:d=0.12,format=gbrap16le,"
                               "geq=r='random(1)*65535':g='random(2)*65535':b='random(3)*65535':"
                               "a='random(4)*65535'\" -c:v ") +
                       c.codec + " -pix_fmt " + c.pixels);
    CopyVideo(clip, folder_ / "copy.mkv", c.depth);
    EXPECT_TRUE(RawFrames(clip, c.compared) == RawFrames(folder_ / "copy.mkv", c.compared)) << c.pixels;
  }
}

TEST_F(VideoWrite, WritesWhatOthersRead) {
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
    for (const char* part : c.found) {
      EXPECT_THAT(found, HasSubstr(part));
    }
    CopyVideo(folder_ / "clip.mkv", folder_ / (std::string("again-") + c.name));
    EXPECT_TRUE(ReadAll(folder_ / c.name) == ReadAll(folder_ / (std::string("again-") + c.name)));
    // Close to the source for ours too.
    EXPECT_LT(MeanDifference(folder_ / "clip.mkv", folder_ / c.name), 5);
  }
  // The index of an MP4 stands in front.
  const std::string mp4 = ReadAll(folder_ / "a.mp4");
  EXPECT_LT(mp4.find("moov"), mp4.find("mdat"));
}

TEST_F(VideoWrite, AppearsWholeOrNotAtAll) {
  MakeClip(folder_ / "clip.mkv",
           "-f lavfi -i \"nullsrc=s=128x128:d=0.4,geq='random(1)*255':128:128\" -c:v ffv1 -pix_fmt yuv420p");
  VideoReader video(folder_ / "clip.mkv");
  VideoTraits traits = TraitsFrom(video);
  for (const char* name : {"a.mp4", "a.mov", "a.mkv"}) {
    SCOPED_TRACE(name);
    std::ofstream(folder_ / name) << "old";
    {
      VideoSink writer(folder_ / name, traits);
      WriteFrames(video, writer, 0, 5);
    }
    EXPECT_EQ(ReadAll(folder_ / name), "old");
    rlimit before{};
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &before), 0);
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    const rlimit tiny{40'000, before.rlim_max};
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &tiny), 0);
    ExpectError(ExitCode::kOutput, std::string(name) + "': File too large", [&] {
      VideoSink writer(folder_ / name, traits);
      WriteFrames(video, writer, 0, 9);
      writer.Finish();
    });
    ::setrlimit(RLIMIT_FSIZE, &before);
    std::signal(SIGXFSZ, handler);
    EXPECT_EQ(ReadAll(folder_ / name), "old");
  }
  EXPECT_THAT(folder_.Names(), ElementsAre("a.mkv", "a.mov", "a.mp4", "clip.mkv"));

  ExpectError(ExitCode::kUsage, ".mp4, .mov or .mkv", [&] { VideoSink(folder_ / "a.avi", traits); });
  ExpectError(ExitCode::kOutput, "mkdir", [&] { VideoSink(folder_ / "no/a.mkv", traits); });
  traits.width = 127;
  ExpectError(ExitCode::kOutput, "127 x 128; crop", [&] { VideoSink(folder_ / "b.mp4", traits); });
  traits.width = 16'386;
  ExpectError(ExitCode::kOutput,
              "h264 takes no 16386 x 128 pixels at 25 frames a second, at most 16384 a side",
              [&] { VideoSink(folder_ / "b.mp4", traits); });
  EXPECT_THAT(folder_.Names(), ElementsAre("a.mkv", "a.mov", "a.mp4", "clip.mkv"));
}

TEST_F(VideoWrite, CarriesTheSoundOfItsFrames) {
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
    VideoSink writer(folder_ / name, traits);
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
    VideoSink writer(folder_ / "click.mov", traits);
    WriteFrames(clicking, writer, 20, 49);
    writer.Finish();
  }
  const std::string sound =
      RunShell("ffmpeg -v error -i '" + (folder_ / "click.mov").string() + "' -f s8 -ac 1 -");
  const std::size_t click = sound.find_first_not_of('\0');
  EXPECT_NEAR(static_cast<double>(click) / 48000, 0.2, 0.001);
  // What a container cannot hold is encoded anew: the click stays at its frame, through edit lists too.
  const auto write = [&](const char* name, cli::SoundWish wish) {
    traits.encoding.sound = wish;
    VideoSink writer(folder_ / name, traits);
    EXPECT_EQ(writer.Notes().empty(), wish != cli::SoundWish::kAuto);
    WriteFrames(clicking, writer, 20, 49);
    writer.Finish();
    return Probe(folder_ / name, "a", "codec_name");
  };
  for (const cli::SoundWish wish : {cli::SoundWish::kAuto, cli::SoundWish::kAac}) {
    EXPECT_THAT(write("click.mp4", wish), HasSubstr("aac"));
    const std::string again =
        RunShell("ffmpeg -v error -i '" + (folder_ / "click.mp4").string() + "' -f s8 -ac 1 -");
    const auto loud = std::ranges::find_if(again, [](char sample) { return std::abs(sample) > 60; });
    EXPECT_NEAR(static_cast<double>(loud - again.begin()) / 48000, 0.2, 0.002);
    EXPECT_NEAR(static_cast<double>(again.size()) / 48000, 1.2, 0.03);
  }
  EXPECT_THAT(write("silent.mp4", cli::SoundWish::kNone), testing::Not(HasSubstr("codec_name")));
  ExpectError(ExitCode::kOutput, "mp4 cannot hold pcm_s16le; encode it with --sound aac",
              [&] { write("click.mp4", cli::SoundWish::kCopy); });
}

TEST_F(VideoWrite, TakesTheCodecAndQualityThatAreAskedFor) {
  MakeClip(folder_ / "clip.mkv", std::string(kTenFrames) +
                                     "-c:v ffv1 -pix_fmt yuv420p10le -colorspace bt2020nc "
                                     "-color_trc smpte2084 -color_primaries bt2020");
  VideoReader video(folder_ / "clip.mkv");
  struct Case {
    const char* name;
    const char* codec;
    int quality;
    std::vector<const char*> found;
  };
  const Case cases[] = {
      {"a.mp4", "hevc", 12, {"codec_name=hevc", "hvc1", "pix_fmt=yuv420p10le", "color_transfer=smpte2084"}},
      {"a.mov", "h264", 30, {"codec_name=h264", "pix_fmt=yuv420p"}},
      {"a.mkv", "prores", 4, {"codec_name=prores", "pix_fmt=yuv444p"}}};
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    VideoTraits traits = TraitsFrom(video);
    traits.encoding.codec = c.codec;
    std::array<std::string, 2> bytes;
    for (std::string& written : bytes) {
      VideoSink writer(folder_ / c.name, traits);
      const bool loses = std::string(c.codec) == "h264";
      EXPECT_THAT(fmt::format("{}", fmt::join(writer.Notes(), "")),
                  HasSubstr(loses ? "HDR shows steps" : ""));
      WriteFrames(video, writer, 0, 9);
      writer.Finish();
      written = ReadAll(folder_ / c.name);
    }
    EXPECT_TRUE(bytes[0] == bytes[1]) << "the same bytes each time";
    const std::string found =
        Probe(folder_ / c.name, "v", "codec_name,codec_tag_string,pix_fmt,color_transfer");
    for (const char* part : c.found) {
      EXPECT_THAT(found, HasSubstr(part));
    }
    EXPECT_LT(MeanDifference(folder_ / "clip.mkv", folder_ / c.name), 5);
    traits.encoding.quality = c.quality;
    VideoSink writer(folder_ / c.name, traits);
    WriteFrames(video, writer, 0, 9);
    writer.Finish();
    EXPECT_FALSE(ReadAll(folder_ / c.name) == bytes[0]);
  }
  VideoTraits fine = TraitsFrom(video);
  fine.depth = Depth::kFloat;
  EXPECT_THAT(VideoSink(folder_ / "b.mov", fine).Notes(),
              Contains(HasSubstr("'" + (folder_ / "b.mov").string() + "' holds 10 bits")));
  const auto refuse = [](cli::VideoFormat format, const char* codec, std::optional<int> quality,
                         const char* message) {
    cli::EncodingSettings settings;
    settings.codec = codec;
    settings.quality = quality;
    ExpectError(ExitCode::kUsage, message, [&] { cli::CodecOf(format, settings); });
  };
  refuse(cli::VideoFormat::kMp4, "prores", {}, "does not go into .mp4; write .mov or .mkv");
  refuse(cli::VideoFormat::kMov, "ffv1", {}, "write .mkv");
  refuse(cli::VideoFormat::kMkv, "vp9", {}, "'vp9' is not h264, hevc, prores or ffv1");
  refuse(cli::VideoFormat::kMkv, "", 3, "without loss");
  refuse(cli::VideoFormat::kMp4, "", 52, "quality 52 is not on the scale of h264, 0 (best) to 51");
}

// What only the pictures say, as messages of their codec, stands in the file after.
TEST_F(VideoWrite, KeepsLightLevelsAndFields) {
  MakeClip(folder_ / "hdr.mkv",
           std::string(kTenFrames) +
               "-c:v libx265 -pix_fmt yuv420p12le -color_trc smpte2084 -color_primaries bt2020 -colorspace "
               "bt2020nc -x265-params 'log-level=none:master-display=G(13250,34500)B(7500,3000)R(34000,16000)"
               "WP(15635,16450)L(10000000,50):max-cll=1000,400'");
  VideoReader hdr(folder_ / "hdr.mkv");
  VideoTraits traits = TraitsFrom(hdr);
  traits.levels = hdr.Levels();
  traits.sourceBits = hdr.Bits();
  traits.encoding.codec = "hevc";
  {
    VideoSink writer(folder_ / "hdr.mp4", traits);
    EXPECT_THAT(writer.Notes(),
                Contains(HasSubstr("holds 10 bits a channel, less than the frames have (12)")));
    WriteFrames(hdr, writer, 0, 9);
    writer.Finish();
  }
  for (const char* part : {"streams", "frames -read_intervals %+#1"}) {
    const std::string found =
        RunShell("ffprobe -v error -show_" + std::string(part) + " '" + (folder_ / "hdr.mp4").string() + "'");
    EXPECT_THAT(found, AllOf(HasSubstr("max_luminance=10000000/10000"), HasSubstr("green_x=13250/50000"),
                             HasSubstr("max_content=1000"), HasSubstr("max_average=400")))
        << part;
  }
  MakeClip(folder_ / "bottom.mpg", std::string(kTenFrames) + "-c:v mpeg2video -flags +ildct+ilme -top 0");
  VideoReader bottom(folder_ / "bottom.mpg");
  traits = TraitsFrom(bottom);
  traits.fields = bottom.Fields();
  for (const char* name : {"a.mp4", "a.mov", "a.mkv"}) {
    SCOPED_TRACE(name);
    VideoSink writer(folder_ / name, traits);
    WriteFrames(bottom, writer, 0, 9);
    writer.Finish();
    EXPECT_THAT(Probe(folder_ / name, "v", "field_order"), HasSubstr("field_order=bb"));
    EXPECT_THAT(
        RunShell("ffprobe -v error -show_entries frame=interlaced_frame,top_field_first -of compact '" +
                 (folder_ / name).string() + "'"),
        HasSubstr("interlaced_frame=1|top_field_first=0"));
    EXPECT_LT(MeanDifference(folder_ / "bottom.mpg", folder_ / name), 5);
  }
}

TEST_F(VideoWrite, CarriesTitleChaptersAndTimecode) {
  std::ofstream(folder_ / "chapters") << ";FFMETADATA1\ntitle=Street\n"
                                         "[CHAPTER]\nTIMEBASE=1/100\nSTART=0\nEND=20\ntitle=One\n"
                                         "[CHAPTER]\nTIMEBASE=1/100\nSTART=20\nEND=40\ntitle=Two\n";
  std::ofstream(folder_ / "words.srt") << "1\n00:00:00,000 --> 00:00:00,300\nSnow\n";
  MakeClip(folder_ / "clip.mov",
           std::string(kTenFrames) + "-i '" + (folder_ / "chapters").string() + "' -i '" +
               (folder_ / "words.srt").string() +
               "' -map 0 -map 2 -map_metadata 1 -map_chapters 1 -c:s mov_text -timecode 01:00:00:00");
  VideoReader video(folder_ / "clip.mov");
  VideoTraits traits = TraitsFrom(video);
  traits.carried = cli::CarriedFile{.range = video.Range(7, 9)};
  for (const char* name : {"a.mov", "a.mkv"}) {
    VideoSink writer(folder_ / name, traits);
    // The titles of chapters and the timecode have tracks of their own, and are none of these.
    EXPECT_THAT(writer.Notes(), ElementsAre("1 subtitle track of 'clip.mov' is left out"));
    WriteFrames(video, writer, 7, 9);
    writer.Finish();
    const std::string found = RunShell("ffprobe -v error -show_chapters -show_format -show_streams '" +
                                       (folder_ / name).string() + "'");
    EXPECT_THAT(found, AllOf(HasSubstr("title=Street"), HasSubstr("title=Two"), HasSubstr("01:00:00:07")));
    EXPECT_THAT(found, testing::Not(HasSubstr("title=One")));
  }
  traits.carried->hasGaps = true;
  VideoSink writer(folder_ / "gaps.mov", traits);
  EXPECT_THAT(writer.Notes(), Contains(HasSubstr("frames between are: chapters, the timecode 01:00:00:00")));
  WriteFrames(video, writer, 7, 7);
  WriteFrames(video, writer, 9, 9);
  writer.Finish();
  const std::string found = RunShell("ffprobe -v error -show_chapters -show_format -show_streams '" +
                                     (folder_ / "gaps.mov").string() + "'");
  EXPECT_THAT(found, AllOf(HasSubstr("title=Street"), testing::Not(HasSubstr("title=Two")),
                           testing::Not(HasSubstr("TAG:timecode"))));
}

}  // namespace
