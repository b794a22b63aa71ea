// From the command line to the files: in this process, and for exit codes as the built tool.
#include <gmock/gmock.h>
#include <sys/wait.h>

#include <cstdlib>

#include "cli/options.h"
#include "cli/pending_file.h"
#include "cli/picture_reader.h"
#include "cli/picture_writer.h"
#include "cli/render_command.h"
#include "hostapi/commands.h"
#include "tests/cli/expect_error.h"
#include "tests/cli/temporary_folder.h"

namespace {

using cli::ExitCode;
using minihost::Depth;
using minihost::Image;
using testing::ElementsAre;
using testing::HasSubstr;

class Tool : public testing::Test {
 protected:
  /// Parses and renders.  Files are in the folder.
  void Render(const std::string& photo, const std::string& output, const std::string& options = "") {
    cli::Options parsed;
    cli::MakeParser(parsed)->parse("render -q '" + (folder_ / photo).string() + "' -o '" +
                                   (folder_ / output).string() + "' " + options);
    ASSERT_EQ(cli::RunRender(parsed.render, effect_), ExitCode::kDone);
  }

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

  /// A plate with slow gradients, not quite opaque when it has alpha.
  void WritePlate(const std::string& name, Depth depth, bool hasAlpha) {
    Image image(96, 64, Depth::kFloat);
    for (int row = 0; row < image.height(); ++row) {
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
};

/// Stands for all the pixels.
std::size_t PixelDigest(const Image& image) {
  std::string pixels;
  for (int row = 0; row < image.height(); ++row) {
    const std::byte* first = image.data() + static_cast<std::size_t>(row) * image.rowBytes();
    pixels.append(reinterpret_cast<const char*>(first),
                  static_cast<std::size_t>(image.width()) * minihost::BytesPerPixel(image.depth()));
  }
  return std::hash<std::string>()(pixels);
}

TEST_F(Tool, SnowsInEveryFormatAndDepth) {
  for (const char* name : {"a.png", "a.tif", "a.exr"}) {
    for (const Depth depth : {Depth::kBits8, Depth::kBits16, Depth::kFloat}) {
      for (const bool hasAlpha : {false, true}) {
        SCOPED_TRACE(testing::Message() << name << " depth " << int(depth) << " alpha " << hasAlpha);
        WritePlate(name, depth, hasAlpha);
        const std::string snowName = std::string("snow") + name;
        const std::string bareName = std::string("bare") + name;
        Render(name, bareName, "--set flakes=0");
        Render(name, snowName);
        const cli::Picture input = cli::ReadPicture(folder_ / name);
        const cli::Picture bare = cli::ReadPicture(folder_ / bareName);
        const cli::Picture snow = cli::ReadPicture(folder_ / snowName);
        EXPECT_EQ(bare.image.depth(), input.image.depth());
        EXPECT_EQ(snow.traits.hasAlpha, hasAlpha);
        // Colour times alpha and back costs a rounding each way.
        const bool exact = name[2] != 'e' || !hasAlpha;
        EXPECT_TRUE(!exact || PixelDigest(bare.image) == PixelDigest(input.image)) << "no flakes, no change";
        EXPECT_NE(PixelDigest(snow.image), PixelDigest(bare.image));
      }
    }
  }
}

TEST_F(Tool, FramesOfASequenceAreThoseRenderedAlone) {
  WritePlate("a.png", Depth::kBits8, false);
  Render("a.png", "s.###.png", "--frames -1-2,9 --fps 23.976");
  EXPECT_THAT(folder_.Names(), ElementsAre(".s.###.png.vintrel", "a.png", "s.-001.png", "s.000.png",
                                           "s.001.png", "s.002.png", "s.009.png"));
  Render("a.png", "alone.png", "--frames 9 --fps 24000/1001");
  EXPECT_EQ(Digest("alone.png"), Digest("s.009.png"));
  EXPECT_NE(Digest("s.001.png"), Digest("s.002.png"));
  Render("a.png", "alone.png");
  EXPECT_NE(Digest("alone.png"), Digest("s.009.png")) << "replaced";
}

TEST_F(Tool, ResumesWhatIsWholeAndOfTheSameSceneAndInput) {
  for (const char* name : {"p.1.png", "p.2.png", "p.3.png"}) WritePlate(name, Depth::kBits8, false);
  const auto render = [&](const std::string& options) {
    return Run("render 'p.%d.png' -o 's.%d.png' --resume " + options).err;
  };
  EXPECT_THAT(render("--part 1/3"), HasSubstr("1 frame, "));
  std::ofstream(folder_ / ".s.2.tmp-1.png") << "of a process that was killed";
  EXPECT_THAT(render(""), AllOf(HasSubstr("2 frames, "), HasSubstr("1 done before")));
  const std::size_t digest = Digest("s.2.png");
  EXPECT_THAT(render(""), HasSubstr("3 done before"));
  EXPECT_THAT(render("--seed 1"), testing::Not(HasSubstr("done before")));
  render("");
  std::filesystem::resize_file(folder_ / "s.2.png", 100);
  EXPECT_THAT(render(""), HasSubstr("2 done before"));
  EXPECT_EQ(Digest("s.2.png"), digest);
  WritePlate("p.2.png", Depth::kBits8, true);
  EXPECT_THAT(render("--proxy 1"), HasSubstr("2 done before"));
  EXPECT_THAT(folder_.Names(), ElementsAre(".s.%d.png.vintrel", "p.1.png", "p.2.png", "p.3.png", "s.1.png",
                                           "s.2.png", "s.3.png"));
  for (const char* output : {"s.mp4", "s.png"}) {
    const Outcome refused = Run(std::string("render p.1.png --resume -o ") + output);
    EXPECT_EQ(refused.code, 2);
    EXPECT_THAT(refused.err, HasSubstr("cannot be taken up in the middle")) << output;
  }
}

TEST_F(Tool, OptionsReachTheEffect) {
  WritePlate("a.png", Depth::kBits8, false);
  const auto render = [&](const std::string& options) {
    Render("a.png", "out.png", options);
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

TEST_F(Tool, RefusesBeforeAnyWork) {
  WritePlate("a.png", Depth::kBits8, false);
  const struct {
    ExitCode code;
    const char* photo;
    const char* output;
    const char* options;
    const char* part;
  } cases[] = {
      {ExitCode::kUsage, "a.png", "b.png", "--frames 0-1", "b.####.png"},
      {ExitCode::kUsage, "a.png", "b.png", "--frames 5-", "--frames: '5-'"},
      {ExitCode::kUsage, "a.png", "b.png", "--frames 2147483647 --fps 23.976", "beyond frame 2145337"},
      {ExitCode::kUsage, "a.png", "b.png", "--set flaks=1", "did you mean 'flakes'?"},
      {ExitCode::kUsage, "a.png", "b.png", "--set Size=16", "Size: '16' is not possible; it takes 0 to 15"},
      {ExitCode::kUsage, "a.png", "b.png", "--seed -1", "Random Seed: '-1'"},
      {ExitCode::kUsage, "a.png", "b.png", "--shutter 0", "not between 1 and 720"},
      {ExitCode::kUsage, "a.png", "b.png", "--shutter nan", "not between 1 and 720"},
      {ExitCode::kUsage, "a.png", "b.png", "--depth 10", "8, 16 or float"},
      {ExitCode::kUsage, "a.png", "b.jpg", "", "must end in"},
      {ExitCode::kUsage, "a.png", "b.tif", "--compression piz",
       "a TIFF takes (did you mean 'zip'?): none, packbits, lzw, zip"},
      {ExitCode::kUsage, "a.png", "b.mkv", "--compression none", "a video has its own"},
      {ExitCode::kUsage, "a.png", "a.png", "", "would overwrite the input"},
      {ExitCode::kInput, "none.png", "b.png", "", "No such file"},
      {ExitCode::kOutput, "a.png", "none/b.png", "", "mkdir -p"},
  };
  for (const auto& wrong : cases) {
    SCOPED_TRACE(std::string(wrong.output) + ' ' + wrong.options);
    ExpectError(wrong.code, wrong.part, [&] { Render(wrong.photo, wrong.output, wrong.options); });
  }
  EXPECT_THAT(folder_.Names(), ElementsAre("a.png"));
}

TEST_F(Tool, EndsWithTheCodeForWhatWentWrong) {
  WritePlate("a.png", Depth::kBits8, false);
  WritePlate("5.png", Depth::kBits8, false);
  const struct {
    const char* arguments;
    int code;
    const char* part;
  } cases[] = {
      {"", 2, "vintrel: no command; begin with: vintrel render"},
      {"rendr", 2, "there is no command 'rendr' (did you mean 'render'?)"},
      {"render a.png -o b.png --franes 1", 2, "'--franes' is one too many (did you mean '--frames'?)"},
      {"render a.png -o b.png --frames ''", 2, "--frames: is empty"},
      {"render a.png -o b.png --jobs 1.5", 2, "--jobs: '1.5' is not a whole number"},
      {"render 5.png -o '%d.png' --frames 3-6", 2, "'5.png' would overwrite the input"},
      {"render '%d.png' -o '%d.png'", 2, "'5.png' would overwrite the input"},
      {"render 5.png -o b.png --save-scene 5.png", 2, "'5.png' would overwrite the input"},
      {"sheet 5.png -o 5.png", 2, "'5.png' would overwrite the input"},
      {"render a.png -o b.png --frames 0-1", 2, "vintrel: 2 frames need"},
      {"render none.png -o b.png", 3, "vintrel: cannot read 'none.png'"},
      {"params >/dev/full", 4, "vintrel: cannot write"},
      {"render a.png -o b.png", 0, "1 frame, 96 x 64, 8 bits, "}};
  for (const auto& [arguments, code, part] : cases) {
    const Outcome outcome = Run(arguments);
    EXPECT_EQ(outcome.code, code) << arguments << ": " << outcome.err;
    EXPECT_THAT(outcome.err, HasSubstr(part)) << arguments;
  }
  const Outcome quiet = Run("render a.png -o b.png -q");
  EXPECT_EQ(quiet.err + quiet.out, "");
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
