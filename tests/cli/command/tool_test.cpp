// From the command line to the files: in this process, and for formats and exit codes as the built tool.
#include <gmock/gmock.h>
#include <sys/wait.h>

#include <CLI/CLI.hpp>
#include <cstdlib>
#include <sstream>

#include "cli/command/commands.h"
#include "cli/command/explain.h"
#include "cli/command/options.h"
#include "cli/file/pending_file.h"
#include "cli/picture/reader.h"
#include "cli/picture/writer.h"
#include "cli/report/error.h"
#include "cli/report/json.h"
#include "cli/run/open_source.h"
#include "hostapi/commands.h"
#include "tests/cli/video/clip.h"
#include "tests/support/cli/temporary_folder.h"

namespace {

using minihost::Depth;
using minihost::Image;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsSupersetOf;

class Tool : public testing::Test {
 protected:
  struct Outcome {
    int code;
    std::string out;
    std::string err;
  };

  /// Runs the built tool in the folder, with these arguments as a shell reads them.
  Outcome Run(const std::string& arguments) {
    const std::string out = streams_ / "out";
    const std::string err = streams_ / "err";
    const std::string command = "cd '" + (folder_ / "").string() + "' && >'" + out + "' 2>'" + err + "' '" +
                                VINTREL_TOOL "' " + arguments;
    const int status = std::system(command.c_str());
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, ReadAll(out), ReadAll(err)};
  }

  /// The same in this process, without the time that starting takes.  Renders and sheets alone.
  Outcome RunHere(const std::string& arguments) {
    cli::Messages messages(cli::MessageForm::kText);
    cli::CommandLine line;
    const auto app = cli::MakeParser(line);
    try {
      app->parse(arguments);
      const bool isSheet = app->got_subcommand("sheet");
      const auto code = isSheet ? cli::RenderSheet(line.shot, line.sheetCells, effect_, messages)
                                : cli::RenderShot(line.shot, effect_, messages);
      return {static_cast<int>(code), "", ""};
    } catch (const CLI::ParseError& error) {
      return {static_cast<int>(cli::ExitCode::kUsage), "", cli::Explain(*app, error, effect_->Parameters())};
    } catch (const cli::ToolError& error) {
      return {static_cast<int>(error.Code()), "", error.what()};
    }
  }

  void Render(const std::string& arguments) {
    const Outcome outcome = RunHere("render -q " + arguments);
    EXPECT_EQ(outcome.code, 0) << arguments << ": " << outcome.err;
  }

  /// A plate with slow gradients, not quite opaque when it has alpha.
  void WritePlate(const std::string& name, Depth depth, bool hasAlpha) {
    Image image(96, 64, Depth::kFloat);
    for (int row = 0; row < image.Height(); ++row) {
      auto pixels = image.Row<PF_PixelFloat>(row);
      for (std::size_t i = 0; i < pixels.size(); ++i) {
        const float light = static_cast<float>(i) / 400;
        pixels[i] = {hasAlpha ? 0.75f : 1.0f, light, 0.1f, static_cast<float>(row) / 300};
      }
    }
    // Through a float file, so that it is the reader that makes the depth.
    const auto raw = streams_ / "raw.tif";
    cli::WriteWhole(raw, cli::EncodePicture(image, {.hasAlpha = hasAlpha}, cli::FileFormat::kTiff));
    const cli::Picture plate = cli::ReadPicture(raw, depth);
    cli::WriteWhole(folder_ / name, cli::EncodePicture(plate.image, plate.traits, cli::FormatOf(name)));
  }

  /// Stands for a file's bytes.
  std::size_t Digest(const std::string& name) { return std::hash<std::string>()(ReadAll(folder_ / name)); }

  TemporaryFolder folder_;
  TemporaryFolder streams_;
  std::shared_ptr<const minihost::Effect> effect_ = minihost::Effect::Linked(&MainEntry);

 private:
  void SetUp() override { std::filesystem::current_path(folder_ / ""); }
  void TearDown() override { std::filesystem::current_path("/"); }
};

/// Stands for all the pixels.
std::size_t PixelDigest(const Image& image) {
  std::string pixels;
  for (int row = 0; row < image.Height(); ++row) {
    const std::byte* first = image.Data() + static_cast<std::size_t>(row) * image.RowBytes();
    pixels.append(reinterpret_cast<const char*>(first),
                  static_cast<std::size_t>(image.Width()) * minihost::BytesPerPixel(image.PixelDepth()));
  }
  return std::hash<std::string>()(pixels);
}

TEST_F(Tool, SnowsInEveryFormatAndDepth) {
  const std::pair<Depth, bool> cases[] = {
      {Depth::kBits8, false}, {Depth::kBits8, true}, {Depth::kBits16, true}, {Depth::kFloat, false}};
  for (const auto& [depth, hasAlpha] : cases) {
    WritePlate("plate.tif", depth, hasAlpha);
    for (const std::string name : {".%d.png", ".%d.tif", ".%d.exr", ".mp4", ".mov", ".mkv"}) {
      SCOPED_TRACE(testing::Message() << name << " depth " << int(depth) << " alpha " << hasAlpha);
      const Outcome outcome = Run("render -q plate.tif --frames 7-8 -o 'snow" + name + "'");
      EXPECT_EQ(outcome.code, 0);
      EXPECT_EQ(outcome.err + outcome.out, "");
      Render("plate.tif --frames 7-8 -o 'bare" + name + "' --set flakes=0");
      const auto snow = cli::OpenSource(folder_ / ("snow" + name), {.depth = depth});
      const auto bare = cli::OpenSource(folder_ / ("bare" + name), {.depth = depth});
      const cli::SourceTraits traits = snow.frames->Traits();
      EXPECT_EQ(*traits.lastFrame, *traits.firstFrame + 1);
      EXPECT_EQ(traits.hasAlpha, hasAlpha && name != ".mp4");
      const std::size_t ground = PixelDigest(bare.frames->Read(*traits.firstFrame)->image);
      EXPECT_NE(PixelDigest(snow.frames->Read(*traits.firstFrame)->image), ground);
      // PNG and MKV have no float; colour times alpha and back costs a rounding each way.
      if (name == ".%d.tif" || (name == ".%d.exr" && !hasAlpha) ||
          ((name == ".%d.png" || name == ".mkv") && depth != Depth::kFloat)) {
        EXPECT_EQ(ground, PixelDigest(cli::ReadPicture(folder_ / "plate.tif", depth).image));
      }
      if (depth != Depth::kBits16) {
        continue;
      }
      const std::string file = name[1] == '%' ? "snow.7" + name.substr(3) : "snow" + name;
      const std::size_t bytes = Digest(file);
      Render("plate.tif --frames 7-8 --jobs 1 -o 'snow" + name + "'");
      EXPECT_EQ(Digest(file), bytes) << "at any number of jobs";
    }
  }
}

TEST_F(Tool, FramesOfASequenceAreThoseRenderedAlone) {
  WritePlate("a.png", Depth::kBits8, false);
  Render("a.png -o s.###.png --frames=-1-2,9 --fps 23.976");
  EXPECT_THAT(folder_.Names(), ElementsAre(".s.###.png.vintrel", "a.png", "s.-001.png", "s.000.png",
                                           "s.001.png", "s.002.png", "s.009.png"));
  Render("a.png -o alone.png --frames 9 --fps 24000/1001");
  EXPECT_EQ(Digest("alone.png"), Digest("s.009.png"));
  EXPECT_NE(Digest("s.001.png"), Digest("s.002.png"));
  Render("a.png -o alone.png");
  EXPECT_NE(Digest("alone.png"), Digest("s.009.png")) << "replaced";
}

TEST_F(Tool, ResumesWhatIsWholeAndOfTheSameSceneAndInput) {
  for (const char* name : {"p.1.png", "p.2.png", "p.3.png"}) {
    WritePlate(name, Depth::kBits8, false);
  }
  const auto render = [&](const std::string& options) {
    return Run("render 'p.%d.png' -o 's.%d.png' --resume " + options).err;
  };
  EXPECT_THAT(render("--part 1/3"), HasSubstr("1 frame, "));
  std::ofstream(folder_ / ".s.2.tmp-1.png") << "of a process that was killed";
  EXPECT_THAT(render(""), AllOf(HasSubstr("2 frames, "), HasSubstr("1 done before")));
  const std::size_t digest = Digest("s.2.png");
  EXPECT_THAT(render(""), HasSubstr("3 done before"));
  EXPECT_THAT(render("--part 2/3"), testing::Not(HasSubstr("note: ")));
  EXPECT_THAT(render("--part 2/3 --seed 1"),
              AllOf(HasSubstr("1 frame of 's.%d.png' is of another scene"), HasSubstr("such as frame 1\n")));
  EXPECT_THAT(render("--seed 1"), HasSubstr("1 done before"));
  render("");
  std::filesystem::resize_file(folder_ / "s.2.png", 100);
  EXPECT_THAT(render(""), HasSubstr("2 done before"));
  EXPECT_EQ(Digest("s.2.png"), digest);
  WritePlate("p.2.png", Depth::kBits8, true);
  EXPECT_THAT(render("--proxy 1"), HasSubstr("2 done before"));
  EXPECT_THAT(folder_.Names(), ElementsAre(".s.%d.png.vintrel", "p.1.png", "p.2.png", "p.3.png", "s.1.png",
                                           "s.2.png", "s.3.png"));
}

TEST_F(Tool, FillsGapsAsItIsTold) {
  for (const char* name : {"p.1.png", "p.3.png"}) {
    WritePlate(name, Depth::kBits8, false);
  }
  EXPECT_THAT(RunHere("render -q 'p.%d.png' -o 'e.%d.png'").err, HasSubstr("no frame 2; try --missing skip"));
  EXPECT_THAT(RunHere("render -q 'p.%d.png' -o 'o.%d.png' --frames 1,9").err,
              HasSubstr("no frame 9 (it has 1 to 3)"));
  Render("'p.%d.png' -o 's.%d.png' --missing skip");
  EXPECT_THAT(Run("render 'p.%d.png' -o 'b.%d.png' --missing black --progress json").err,
              testing::ContainsRegex("\"frame\":1,.*\n.*\"frame\":2,.*\n.*\"frame\":3,"));
  EXPECT_THAT(folder_.Names(),
              IsSupersetOf({"b.1.png", "b.2.png", "b.3.png", "e.1.png", "s.1.png", "s.3.png"}));
  EXPECT_FALSE(std::filesystem::exists("s.2.png"));
  EXPECT_FALSE(std::filesystem::exists("o.1.png")) << "before any work";
}

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

TEST_F(Tool, OptionsReachTheEffect) {
  WritePlate("a.png", Depth::kBits8, false);
  const auto render = [&](const std::string& options) {
    Render("a.png -o out.png " + options);
    return Digest("out.png");
  };
  const std::size_t standard = render("");
  for (const char* options :
       {"--seed 5", "--shutter 720", "--only-snow", "--frames 1", "--set color=#f00",
        "--set 'Offset=10%,10%'", "--depth float", "--frames 20 --set wiggle/amount=500"}) {
    EXPECT_NE(render(options), standard) << options;
  }
  // Whichever options change a parameter, the last one counts.
  EXPECT_EQ(render("--seed 5"), render("--seed 4 --set 'RANDOM SEED=5'"));
  EXPECT_EQ(render("--seed 5"), render("--set random-seed=4 --key random-seed@0=3 --seed 5"));
  EXPECT_EQ(render("--set size=9"), render("--key size@0=3,8=5 --set size=9"));
  EXPECT_EQ(render("--set size=3"), render("--set size=9 --key size@0=3,8=5"));
  EXPECT_EQ(render("--only-snow --set composite-with-original=on"), standard);
  EXPECT_EQ(render("--frames 2 --fps 29.97"), render("--frames 2 --fps 30000/1001"));
  EXPECT_NE(render("--frames 2 --fps 29.97"), render("--frames 2 --fps 30"));
  EXPECT_EQ(render("--set 'Composite With Original=off'"), render("--only-snow"));
  const cli::Picture snow = cli::ReadPicture(folder_ / "out.png");
  ASSERT_TRUE(snow.traits.hasAlpha);
  EXPECT_NE(snow.image.Row<PF_Pixel>(0)[0].alpha, 255);
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

TEST_F(Tool, MakesASheetOfWhatThereIs) {
  for (const char* name : {"p.1.png", "p.3.png", "p.4.png"}) {
    WritePlate(name, Depth::kBits8, false);
  }
  std::filesystem::resize_file(folder_ / "p.4.png", 100);
  const std::string sheet = "sheet 'p.%d.png' -o sheet.jpg --missing skip --progress json ";
  EXPECT_EQ(Run(sheet).code, 3);
  EXPECT_FALSE(std::filesystem::exists("sheet.jpg"));
  const Outcome outcome = Run(sheet + "--keep-going");
  EXPECT_EQ(outcome.code, 1);
  EXPECT_THAT(outcome.err,
              testing::ContainsRegex("\"frame\":2,\"status\":\"missing\".*\n(.*\n)*.*\"frame\":4,"
                                     "\"status\":\"failed\".*\n.*\"end\",\"code\":1,\"written\":2,"));
  EXPECT_TRUE(std::filesystem::exists("sheet.jpg"));
  // A scene's encoding is that of the shot, not of the sheet.
  Render("p.1.png -o a.exr --compression piz --save-scene shot.toml");
  EXPECT_EQ(Run("sheet --scene shot.toml -o sheet.png").code, 0);
  EXPECT_THAT(Run("sheet --scene shot.toml").err, HasSubstr("no output")) << "not over the shot's";
  if (!HasFfmpeg()) {
    GTEST_SKIP() << "ffmpeg is not installed";
  }
  MakeClip(folder_ / "clip.mkv", "-f lavfi -i testsrc2=s=64x48:d=2 -c:v ffv1");
  std::filesystem::resize_file(folder_ / "clip.mkv", std::filesystem::file_size(folder_ / "clip.mkv") / 2);
  const Outcome broken = Run("sheet clip.mkv -q -o broken.png");
  EXPECT_EQ(broken.code, 3);
  EXPECT_THAT(broken.err, HasSubstr("breaks off after"));
  EXPECT_TRUE(std::filesystem::exists("broken.png"));
}

TEST_F(Tool, NeedsItsModulesForPicturesAlone) {
  std::filesystem::copy_file(VINTREL_TOOL, folder_ / "alone");
  const std::string tool = (folder_ / "alone").string();
  EXPECT_EQ(std::system(("'" + tool + "' --version >/dev/null").c_str()), 0);
  std::ofstream(folder_ / "a.png") << "\x89PNG";
  const Outcome outcome = Run("--version >/dev/null; '" + tool + "' info a.png 2>err");
  EXPECT_EQ(outcome.code, 1);
  EXPECT_THAT(ReadAll(folder_ / "err"), HasSubstr("there are no pictures without the module '"));
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
