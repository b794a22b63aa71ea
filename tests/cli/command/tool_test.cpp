// What the tool makes of its input, in all formats, and what it leaves alone.
#include <gmock/gmock.h>

#include <fstream>

#include "cli/run/open_source.h"
#include "tests/cli/command/tool.h"
#include "tests/cli/video/clip.h"

namespace {

using minihost::Depth;
using minihost::Image;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsSupersetOf;

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

TEST_F(Tool, MakesASheetOfWhatThereIs) {
  for (const char* name : {"p.1.png", "p.3.png", "p.4.png"}) {
    WritePlate(name, Depth::kBits8, false);
  }
  std::filesystem::resize_file(folder_ / "p.4.png", 100);
  const std::string sheet = "sheet 'p.%d.png' -o sheet.jpg --missing skip --progress json ";
  const Outcome stopped = Run(sheet);
  EXPECT_EQ(stopped.code, 3);
  EXPECT_THAT(stopped.err, HasSubstr("\"end\",\"code\":3,\"written\":2,"));
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

}  // namespace
