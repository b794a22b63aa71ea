// What the tool says: to programs, of losses, of mistakes, and about itself.
#include <gmock/gmock.h>

#include <sstream>

#include "cli/report/json.h"
#include "tests/cli/command/tool.h"
#include "tests/cli/video/clip.h"

namespace {

using minihost::Depth;
using testing::ElementsAre;
using testing::HasSubstr;

TEST_F(Tool, TellsProgramsEverythingInObjects) {
  for (const char* name : {"p.1.png", "p.3.png", "p.4.png"}) {
    WritePlate(name, Depth::kBits8, false);
  }
  std::filesystem::resize_file(folder_ / "p.4.png", 100);
  // Of each line of standard error, which is JSON throughout, what it is.
  const auto events = [&](const std::string& arguments) {
    std::istringstream lines(Run(arguments).err);
    std::vector<std::string> found;
    for (std::string line; std::getline(lines, line);) {
      const cli::Json object = cli::Json::parse(line);
      std::string event = object["event"];
      for (const char* key : {"frame", "status", "path", "code", "written", "skipped", "missing", "failed"}) {
        if (object.contains(key)) {
          event += ' ' + (object[key].is_string() ? std::string(object[key]) : object[key].dump());
        }
      }
      EXPECT_EQ(object.contains("reason"), event.starts_with("frame") && object["status"] != "written");
      if (event != "note") {  // of gaps, and of libraries
        found.push_back(event);
      }
    }
    return found;
  };
  const std::string render = "render 'p.%d.png' -o 's.%d.png' --missing skip --progress json ";
  EXPECT_THAT(events(render + "--keep-going"),
              ElementsAre("frame 1 written s.1.png", "frame 2 missing s.2.png", "frame 3 written s.3.png",
                          "frame 4 failed s.4.png", "end 1 2 0 1 1"));
  EXPECT_THAT(events(render + "--resume -q"),
              ElementsAre("frame 1 skipped s.1.png", "frame 3 skipped s.3.png", "frame 2 missing s.2.png",
                          "frame 4 failed s.4.png", "error 3", "end 3 0 2 1 1"));
  EXPECT_THAT(events(render), testing::Contains("end 3 2 0 1 1")) << "up to the frame that ended it";
  EXPECT_THAT(events("render --progress=json --franes"), ElementsAre("error 2", "end 2 0 0 0 0"));
}

TEST_F(Tool, SaysOnceWhatIsLost) {
  if (!HasFfmpeg()) {
    GTEST_SKIP() << "ffmpeg is not installed";
  }
  MakeClip(folder_ / "clip.mkv", std::string(kTenFrames) +
                                     "-f lavfi -i sine=d=0.4 -map 0 -map 1 -map 1 -pix_fmt yuv420p10 "
                                     "-colorspace bt709 -color_range tv -c:v ffv1 -c:a pcm_s16le");
  const std::pair<const char*, std::vector<const char*>> cases[] = {
      {"-o a.mp4 --frames 0-8x4", {"the sound is left out", "holds 8 bits"}},
      {"-o a.mp4",
       {"sound track 1 of 2 of 'clip.mkv' is encoded as AAC", "sound track 2 of", "holds 8 bits"}},
      {"-o a.mov --sound none", {}},
      {"-o a.png --frames 3 --only-snow", {"cannot be laid over"}},
      {"--blank 8x8 -o a.mov", {"a single frame; --frames 0-47"}},
      {"--blank 8x8 -o 'a #1.png'", {"the # in 'a #1.png' stands for the frame's number"}}};
  for (const auto& [options, parts] : cases) {
    for (const char* more : {"", " --dry-run"}) {
      const char* input = std::string_view(options).starts_with("--blank") ? "render " : "render clip.mkv ";
      const std::string said = Run(std::string(input) + options + more).err;
      std::size_t notes = 0;
      for (std::size_t at = 0; (at = said.find("note: ", at)) != std::string::npos; ++at) {
        ++notes;
      }
      EXPECT_EQ(notes, parts.size()) << options << more << '\n' << said;
      for (const char* part : parts) {
        EXPECT_THAT(said, HasSubstr(part)) << options << more;
      }
    }
  }
}

TEST_F(Tool, RefusesBeforeAnyWorkWithTheCodeForWhatIsWrong) {
  for (const char* name : {"a.png", "5.png"}) {
    WritePlate(name, Depth::kBits8, false);
  }
  struct Case {
    const char* arguments;
    int code;
    const char* part;
  };
  const Case cases[] = {
      {"", 2, "no command; begin with: vintrel render"},
      {"rendr", 2, "unknown command 'rendr' (did you mean 'render'?)"},
      {"render a.png -o b.png --franes 1", 2, "unknown option '--franes' (did you mean '--frames'?)"},
      {"render a.png -o b.png --fps", 2, "--fps needs a value; see: vintrel render --help"},
      {"render a.png -o b.png --jobs -1", 2, "--jobs: -1 is not between 0 and 1024"},
      {"render a.png b.png -o c.png", 2,
       "'b.png' is one file too many beside the input and the output 'c.png'"},
      {"render a.png b.png c.png", 2, "unexpected argument 'c.png': one input at a time"},
      {"render a.png b.png --flakes 9", 2, "write --set flakes=VALUE"},
      {"render a.png b.gif --frames 0-9", 2, "output 'b.gif' must end in"},
      {"-i a.png b.png", 2, "write: vintrel render -i ..."},
      {"render a.png -o b.png -o c.png", 2, "--output is given more than once"},
      {"render a.png -o b.jpg --quality 101", 2, "quality 101 is not on the scale of JPEG, 1 to 100 (best)"},
      {"render a.png -o b.mkv --codec libx265", 2, "codec 'libx265' has another name here: hevc"},
      {"render a.png -o b.mkv --codec hevc --quality 52", 2, "scale of hevc, 0 (best) to 51"},
      {"render a.png -o b.png --codec hevc", 2, "codec 'hevc' is for videos, not for 'b.png'"},
      {"render a.png -o b.png --depth half", 2, "depth half is for EXR"},
      {"render a.png -y -o 5.png --no-overwrite", 2, "excludes"},
      {"render a.png -o 5.png --no-overwrite", 4, "cannot write '5.png': it is there already"},
      {"render a.png -o none.toml/b.png --preset ./mine.toml", 3, "mine.toml"},
      {"render a.png -o b.png --frames 0-1", 2, "2 frames need a place for their number"},
      {"render a.png -o b.png --frames 5-", 2, "--frames: '5-'"},
      {"render a.png -o b.png --frames 2147483647 --fps 23.976", 2,
       "frame 2147483647 is beyond 2145337, the last"},
      {"render a.png -o b.png --set flaks=1", 2, "did you mean 'flakes'?"},
      {"render a.png -o b.png --seed -1", 2, "Random Seed: '-1' is not possible; it takes 0 to 10000"},
      {"render a.png -o b.png --shutter nan", 2, "not between 1 and 720"},
      {"render a.png -o b.png --jobs 1.5", 2, "--jobs: '1.5' is not a whole number"},
      {"render a.png -o b.png --depth 10", 2, "8, 16, half or float"},
      {"render a.png -o b.bmp", 2, "must end in .png, .jpg, .tif, .exr, .mp4, .mov or .mkv"},
      {"render a.png -o b.tif --compression piz", 2, "a TIFF takes (did you mean 'zip'?): none, packbits"},
      {"render a.png -o b.mkv --compression none", 2, "a video has its own"},
      {"render a.png -o b.mkv --part 1/2", 1, "no frame to write, so 'b.mkv' was not made"},
      {"render a.png -o b.mkv --resume", 2, "a video is one file and cannot be resumed"},
      {"render a.png -o b.png --resume", 2, "'b.png' is a single picture, with nothing to go on from"},
      {"render 5.png -o '%d.png' --frames 3-6", 2, "'5.png' would overwrite the input"},
      {"render '%d.png' -o '%d.png'", 2, "'5.png' would overwrite the input"},
      {"render 5.png -o b.png --save-scene 5.png", 2, "'5.png' would overwrite the input"},
      {"sheet 5.png -o 5.png", 2, "'5.png' would overwrite the input"},
      {"sheet 5.png -o a.png --no-overwrite", 4, "cannot write 'a.png': it is there already"},
      {"sheet 5.png -o b.jpg --quality 0", 2, "quality 0 is not on the scale of JPEG"},
      {"sheet 5.png -o b.png --quality 50", 2, "other pictures keep every bit"},
      {"render none.png -o b.png", 3, "cannot read 'none.png': No such file"},
      {"render a.png -o none/b.png", 4, "mkdir -p 'none'"}};
  for (const auto& [arguments, code, part] : cases) {
    const Outcome outcome = RunHere(arguments);
    EXPECT_EQ(outcome.code, code) << arguments << ": " << outcome.err;
    EXPECT_THAT(outcome.err, HasSubstr(part)) << arguments;
  }
  const Case ofTheProcess[] = {
      {"rendr", 2, "unknown command"},
      {"render a.png b.png -crf 20", 2, "unknown option '-crf'; write --quality"},
      {"render a.png -hide_banner b.png", 2, "unknown option '-hide_banner'; for less"},
      {"render a.png b.png --threads=4", 2, "unknown option '--threads=4'; write --jobs"},
      {"render a.png -o b.png --frames ''", 2, "--frames: is empty"},
      {"render none.png -o b.png", 3, "cannot read 'none.png'"},
      {"params >/dev/full", 4, "cannot write"},
      {"render a.png -o b.png --dry-run >/dev/full", 4, "cannot write"}};
  for (const auto& [arguments, code, part] : ofTheProcess) {
    const Outcome outcome = Run(arguments);
    EXPECT_EQ(outcome.code, code) << arguments;
    EXPECT_THAT(outcome.err, HasSubstr(std::string("vintrel: ") + part)) << arguments;
  }
  EXPECT_THAT(folder_.Names(), ElementsAre("5.png", "a.png"));
  EXPECT_THAT(Run("render a.png -o b.png").err, HasSubstr("1 frame, 96 x 64, 8 bits, "));
}

TEST_F(Tool, Explains) {
  const Outcome help = Run("--help");
  EXPECT_EQ(help.code, 0);
  EXPECT_LE(std::ranges::count(help.out, '\n'), 24);
  EXPECT_THAT(Run("--version").out, testing::MatchesRegex("vintrel [0-9.]+\n"));
  EXPECT_THAT(Run("about").out, HasSubstr("snow"));
  const std::string table = Run("params").out;
  for (const char* line :
       {"\n1 +Flakes +flakes +number +0 to 2000000 +10000 +yes\n",
        "\n3 +Variation % .Size. +variation-size +number +0 to 100 +25.0 +no\n",
        "\n15 +Stochastic Wiggle +stochastic-wiggle +checkbox +on or off +on +no +Wiggle\n",
        "\n25 +Transfer Mode +transfer-mode +popup +Composite or Lighten +Lighten +yes\n",
        "\n28 +Offset +offset +point +x%,y% from -32767 to 32767 +50%,50% +yes +Extras\n",
        "\n31 +Random Seed +random-seed +integer +0 to 10000, whole +0 +yes +Extras\n"}) {
    EXPECT_THAT(table, testing::ContainsRegex(line));
  }
}

}  // namespace
