// What the panel does for its page, by the server that the tool has: frames, scenes and renders.
#include <fmt/format.h>
#include <gmock/gmock.h>
#include <sys/wait.h>

#include <thread>
#include <utility>

#include "cli/file/pending_file.h"
#include "cli/picture/reader.h"
#include "cli/picture/writer.h"
#include "tests/cli/panel/panel.h"

namespace {

using cli::Json;
using minihost::Depth;
using minihost::Image;
using testing::HasSubstr;

/// A picture in which no two frames and no two pixels are the same, with alpha.
void WritePlate(const std::filesystem::path& file, Depth depth, int frame) {
  Image image(24, 10, Depth::kFloat);
  for (int row = 0; row < image.Height(); ++row) {
    auto pixels = image.Row<PF_PixelFloat>(row);
    for (std::size_t i = 0; i < pixels.size(); ++i) {
      pixels[i] = {static_cast<float>(row) / 10, static_cast<float>(i) / 23, 0.3f,
                   static_cast<float>(frame) / 20};
    }
  }
  cli::PictureTraits traits;
  traits.hasAlpha = true;
  const auto raw = file.string() + ".tif";
  cli::WriteWhole(raw, cli::EncodePicture(image, traits, cli::FileFormat::kTiff, {}));
  cli::WriteWhole(file,
                  cli::EncodePicture(cli::ReadPicture(raw, depth).image, traits, cli::FormatOf(file), {}));
  std::filesystem::remove(raw);
}

/// What a browser has of a picture file that is read in 8 bits.
std::string RgbaOf(const std::filesystem::path& file) {
  const cli::Picture picture = cli::ReadPicture(file, Depth::kBits8);
  std::string bytes;
  for (int row = 0; row < picture.image.Height(); ++row) {
    for (const PF_Pixel& pixel : picture.image.Row<PF_Pixel>(row)) {
      for (const std::uint8_t channel : {pixel.red, pixel.green, pixel.blue, pixel.alpha}) {
        bytes += static_cast<char>(channel);
      }
    }
  }
  return bytes;
}

TEST_F(PanelTest, GivesFramesAsRendersReadThem) {
  for (const Depth depth : {Depth::kBits8, Depth::kBits16, Depth::kFloat}) {
    const bool isFloat = depth == Depth::kFloat;
    for (int frame = 7; frame < 19; ++frame) {
      WritePlate(folder_ / fmt::format("p.{:04}.{}", frame, isFloat ? "exr" : "png"), depth, frame);
    }
    std::filesystem::remove(folder_ / (isFloat ? "p.0009.exr" : "p.0009.png"));
    Open(isFloat ? "p.####.exr" : "p.####.png");
    const Json input = Json::parse(Send("GET", "api/panel").body)["input"];
    EXPECT_EQ(input["first"], 7);
    EXPECT_EQ(input["last"], 18);
    EXPECT_EQ(input["isStill"], false);
    EXPECT_EQ(input["hasAlpha"], true);
    EXPECT_EQ(input["depth"], isFloat ? 32 : depth == Depth::kBits16 ? 16 : 8);
    EXPECT_EQ(input["notes"].dump().find("shown in 8 bits") != std::string::npos, depth != Depth::kBits8);
    // From both ends at once, each twice.
    const auto read = [&](int first, int step) {
      for (int i = 0; i < 24; ++i) {
        const int frame = first + i / 2 * step;
        const auto response = Send("GET", fmt::format("api/frame/{}", frame));
        if (frame == 9) {
          EXPECT_EQ(response.status, 404);
          EXPECT_EQ(ErrorOf(response), "the input has no frame 9; it has 7 to 18");
          continue;
        }
        EXPECT_EQ(response.get_header_value("X-Vintrel-Width"), "24");
        EXPECT_EQ(response.get_header_value("X-Vintrel-Height"), "10");
        EXPECT_EQ(response.body, RgbaOf(folder_ / fmt::format("p.{:04}.{}", frame, isFloat ? "exr" : "png")))
            << frame;
      }
    };
    std::thread backwards([&] { read(18, -1); });
    read(7, 1);
    backwards.join();
    isInterrupted_ = true;
    End();
    isInterrupted_ = false;
  }
}

TEST_F(PanelTest, SavesScenesAndLosesNone) {
  Open("");
  const std::string one = "[parameters]\nFlakes = 1\n";
  const std::string two = "[parameters]\nFlakes = 2\n";
  const auto text = [&] { return ReadAll(folder_ / "a.toml"); };
  EXPECT_EQ(Send("PUT", Url("api/scene?replace=0&file=", "a.toml"), one).status, 200);
  EXPECT_EQ(text(), one);
  EXPECT_EQ(Send("PUT", Url("api/scene?replace=0&file=", "a.toml"), two).status, 409);
  EXPECT_EQ(Send("PUT", Url("api/scene?file=", "a.toml"), two).status, 409);
  EXPECT_EQ(text(), one);
  const auto broken = Send("PUT", Url("api/scene?replace=1&file=", "a.toml"), "[parameters]\nFlaques = 2\n");
  EXPECT_EQ(broken.status, 400);
  EXPECT_THAT(ErrorOf(broken), HasSubstr("a.toml:2:1: "));
  EXPECT_EQ(text(), one);
  EXPECT_EQ(Send("PUT", Url("api/scene?replace=1&file=", "a.toml"), two).status, 200);
  EXPECT_EQ(text(), two);
  EXPECT_EQ(Send("PUT", Url("api/scene?replace=1&file=", "page-secret.txt"), one).status, 400);
  EXPECT_EQ(Send("PUT", Url("api/scene?replace=1&file=", "none/a.toml"), one).status, 400);
  EXPECT_EQ(Send("PUT", "api/scene?replace=1", one).status, 400);
  EXPECT_EQ(ReadAll(folder_ / "page-secret.txt"), "secret");
}

TEST_F(PanelTest, RendersAsTheToolDoes) {
  WritePlate(folder_ / "plate.png", Depth::kBits8, 3);
  Open("plate.png");
  const std::string scene = "[render]\nframes = \"0-3\"\n[parameters]\nFlakes = 300\n";
  const auto started = StartRender(scene, "here.####.png");
  ASSERT_EQ(started.status, 201) << started.body;
  const Json end = FollowRender(Json::parse(started.body)["id"]);
  EXPECT_EQ(end["event"], "end");
  EXPECT_EQ(end["code"], 0) << end;
  EXPECT_EQ(end["written"], 4);
  std::ofstream(folder_ / "s.toml") << scene;
  const std::string inFolder =
      "cd '" + (folder_ / "").string() + "' && '" VINTREL_TOOL "' render -q --scene s.toml ";
  ASSERT_EQ(std::system((inFolder + "-i plate.png -o there.####.png").c_str()), 0);
  for (const char* number : {"0000", "0003"}) {
    EXPECT_EQ(ReadAll(folder_ / fmt::format("here.{}.png", number)),
              ReadAll(folder_ / fmt::format("there.{}.png", number)));
  }

  const auto again = StartRender(scene, "here.####.png");
  EXPECT_EQ(again.status, 409);
  EXPECT_THAT(ErrorOf(again), HasSubstr("here.0000.png' is there already"));
  EXPECT_EQ(StartRender(scene, "here.####.png", true).status, 201);
  FollowRender("2");
  struct Case {
    const char* scene;
    const char* output;
    const char* words;
  };
  for (const Case& c : {Case{"[parameters]\nFlaques = 1\n", "a.png", "scene:2:1: "},
                        Case{"[render]\nframes = \"0-3\"\n", "a.png", "need a place for their number"},
                        Case{"", "plate.png", "would overwrite the input"}, Case{"", "a.gif", "a.gif"}}) {
    const auto refused = StartRender(c.scene, c.output, true);
    EXPECT_EQ(refused.status, 400);
    EXPECT_THAT(ErrorOf(refused), HasSubstr(c.words));
  }
  EXPECT_EQ(Send("POST", "api/renders", "{").status, 400);
  EXPECT_EQ(Send("POST", "api/renders", R"({"scene": 3})").status, 400);
}

TEST_F(PanelTest, StopsRenders) {
  Open("");
  // More than any machine draws before it is told to stop.
  const std::string scene = "[render]\nblank = \"640x480\"\nframes = \"0-99999\"\n";
  const auto start = [&](const char* output) {
    const auto response = StartRender(scene, output);
    EXPECT_EQ(response.status, 201) << response.body;
    return Json::parse(response.body)["id"];
  };
  const Json id = start("a.#####.png");
  bool isAsked = false;
  const Json end = FollowRender(id, [&](const Json& object) {
    if (object["event"] == "frame" && !std::exchange(isAsked, true)) {
      EXPECT_EQ(StartRender(scene, "b.#####.png").status, 503);
      EXPECT_EQ(Send("DELETE", "api/renders/" + id.get<std::string>()).status, 204);
    }
  });
  EXPECT_EQ(end["code"], 130) << end;
  EXPECT_GT(end["left"], 0);
  EXPECT_EQ(Send("DELETE", "api/renders/" + id.get<std::string>()).status, 204);

  // With the panel ends what is under way.
  FollowRender(start("c.#####.png"), [&](const Json&) { isInterrupted_ = true; });
  EXPECT_EQ(End(), cli::PanelEnd::kInterrupted);
  EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), -1) << "a process is left";
}

TEST_F(PanelTest, EndsWhenThePageHasGone) {
  const std::chrono::milliseconds silence(300);
  Open("", silence);
  // As long as no page has come, whoever has the address may take their time.
  EXPECT_EQ(Send("GET", "").status, 200);
  EXPECT_EQ(serving_.wait_for(3 * silence), std::future_status::timeout);
  const auto render = StartRender("[render]\nblank = \"64x48\"\nframes = \"0-399\"\n", "a.###.png");
  ASSERT_EQ(render.status, 201) << render.body;
  EXPECT_EQ(Send("POST", "api/alive").status, 204);
  EXPECT_EQ(End(), cli::PanelEnd::kAbandoned);
  EXPECT_TRUE(std::filesystem::exists(folder_ / "a.399.png")) << "a render under way is finished first";
}

}  // namespace
