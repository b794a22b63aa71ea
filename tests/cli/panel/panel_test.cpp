// The panel as its page, other pages, other users and other programs meet it: over the network, by the server
// that the tool has.
#include <arpa/inet.h>
#include <fmt/format.h>
#include <gmock/gmock.h>
#include <httplib.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <future>
#include <thread>

#include "cli/file/pending_file.h"
#include "cli/panel/serve.h"
#include "cli/picture/reader.h"
#include "cli/picture/writer.h"
#include "cli/report/json.h"
#include "tests/support/cli/scene_values.h"
#include "tests/support/cli/temporary_folder.h"

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

class PanelTest : public testing::Test {
 protected:
  PanelTest() {
    std::filesystem::create_directories(folder_ / "page/engine");
    std::ofstream(folder_ / "page/index.html") << "<p>page";
    std::ofstream(folder_ / "page/engine/snow.wasm") << "wasm";
    std::ofstream(folder_ / "page-secret.txt") << "secret";
    std::filesystem::create_symlink("../page-secret.txt", folder_ / "page/leak.txt");
    std::filesystem::create_symlink("engine/snow.wasm", folder_ / "page/inside.wasm");
  }

  ~PanelTest() override {
    isInterrupted_ = true;
    End();
  }

  /// Serves a panel with this input, relative to the folder; none for "".
  void Open(const std::string& input, std::chrono::milliseconds silence = std::chrono::minutes(1)) {
    cli::Scene scene(EffectParameters());
    if (!input.empty()) {
      scene.input = folder_ / input;
    }
    server_ = cli::MakeHttpServer();
    port_ = server_->Bind(0);
    panel_ = std::make_unique<cli::Panel>(
        scene, EffectParameters(),
        cli::PanelSettings{.page = folder_ / "page", .tool = VINTREL_TOOL, .longestSilence = silence}, port_);
    const std::string address = panel_->Address();
    base_ = address.substr(address.find('/', 7), 34);
    ASSERT_TRUE(base_.ends_with('/')) << address;
    serving_ = std::async(std::launch::async, [this] {
      return cli::Serve(*server_, *panel_, [this] { return isInterrupted_.load(); });
    });
  }

  cli::PanelEnd End() { return serving_.valid() ? serving_.get() : cli::PanelEnd::kInterrupted; }

  httplib::Client Client() {
    httplib::Client client("127.0.0.1", port_);
    client.set_read_timeout(60);
    return client;
  }

  /// The reply to a request for a path below the secret.
  httplib::Response Send(const std::string& method, const std::string& path, const std::string& body = "",
                         const httplib::Headers& headers = {}) {
    return SendTo(method, base_ + path, body, headers);
  }

  httplib::Response SendTo(const std::string& method, const std::string& path, const std::string& body,
                           const httplib::Headers& headers) {
    httplib::Request request;
    request.method = method;
    request.path = path;
    request.body = body;
    request.headers = headers;
    auto client = Client();
    const auto result = client.send(request);
    EXPECT_TRUE(result) << method << ' ' << path;
    return result ? *result : httplib::Response();
  }

  std::string ErrorOf(const httplib::Response& response) {
    return Json::parse(response.body).value("error", "");
  }

  std::string Url(const char* call, const std::string& file) { return call + (folder_ / file).string(); }

  httplib::Response StartRender(const std::string& scene, const std::string& output, bool replace = false) {
    return Send(
        "POST", "api/renders",
        Json({{"scene", scene}, {"output", (folder_ / output).string()}, {"replace", replace}}).dump());
  }

  /// The objects that a render says, `task` called at each, and its last one.
  Json FollowRender(
      const Json& id, const std::function<void(const Json&)>& task = [](const Json&) {}) {
    std::string text;
    Json last;
    const auto take = [&](const char* data, std::size_t size) {
      text.append(data, size);
      for (std::size_t end; (end = text.find("\n\n")) != text.npos; text.erase(0, end + 2)) {
        if (text.starts_with("data: ")) {
          task(last = Json::parse(text.substr(6, end - 6)));
        }
      }
      return true;
    };
    Client().Get(base_ + "api/renders/" + id.get<std::string>() + "/events", take);
    return last;
  }

  TemporaryFolder folder_;
  std::unique_ptr<cli::HttpServer> server_;
  std::unique_ptr<cli::Panel> panel_;
  int port_ = 0;
  std::string base_;  // "/TOKEN/"
  std::atomic<bool> isInterrupted_ = false;
  std::future<cli::PanelEnd> serving_;
};

TEST_F(PanelTest, AnswersToItsOwnPageAlone) {
  Open("");
  const std::string port = std::to_string(port_);
  std::string otherSecret = base_;
  otherSecret[5] = otherSecret[5] == '0' ? '1' : '0';
  struct Case {
    std::string path;
    httplib::Headers headers;
    int status;
  };
  const Case cases[] = {
      {base_, {}, 200},
      {base_, {{"Host", "localhost:" + port}, {"Origin", "http://localhost:" + port}}, 200},
      {base_, {{"Origin", "http://127.0.0.1:" + port}, {"Sec-Fetch-Site", "same-origin"}}, 200},
      {base_, {{"Sec-Fetch-Site", "none"}}, 200},
      {"/", {}, 403},
      {"/api/panel", {}, 403},
      {otherSecret, {}, 403},
      {base_.substr(0, 33), {}, 403},
      {base_.substr(0, 20) + "/", {}, 403},
      {base_.substr(0, 33) + "0/", {}, 403},
      {"/x" + base_, {}, 403},
      {base_, {{"Host", "rebound.example:" + port}}, 403},
      {base_, {{"Host", "127.0.0.1"}}, 403},
      {base_, {{"Host", "127.0.0.1:" + port}, {"Host", "rebound.example"}}, 403},
      {base_, {{"Origin", "http://other.example"}}, 403},
      {base_, {{"Origin", "http://127.0.0.1:1"}}, 403},
      {base_, {{"Origin", "null"}}, 403},
      {base_, {{"Sec-Fetch-Site", "cross-site"}}, 403},
      {base_, {{"Sec-Fetch-Site", "same-site"}}, 403},
  };
  for (const Case& c : cases) {
    const auto response = SendTo("GET", c.path, "", c.headers);
    EXPECT_EQ(response.status, c.status)
        << c.path << ' '
        << (c.headers.empty() ? "" : c.headers.begin()->first + ": " + c.headers.begin()->second);
    EXPECT_THAT(response.body, c.status == 200 ? HasSubstr("page") : HasSubstr("\"error\""));
  }
  // The same holds where something would be done.
  EXPECT_EQ(SendTo("PUT", base_ + Url("api/scene?file=", "a.toml"), "", {{"Origin", "http://other.example"}})
                .status,
            403);
  EXPECT_FALSE(std::filesystem::exists(folder_ / "a.toml"));
}

TEST_F(PanelTest, RefusesOtherUsers) {
  if (::getuid() != 0) {
    GTEST_SKIP() << "only root can be another user";
  }
  Open("");
  const std::string request = "GET " + base_ + " HTTP/1.1\r\nHost: 127.0.0.1:" + std::to_string(port_) +
                              "\r\nConnection: close\r\n\r\n";
  const auto statusAs = [&](uid_t user) {
    std::array<char, 13> reply{};  // "HTTP/1.1 200" and an end
    const pid_t child = ::fork();
    if (child == 0) {
      sockaddr_in address{};
      address.sin_family = AF_INET;
      address.sin_port = htons(static_cast<std::uint16_t>(port_));
      address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
      const bool hasAsked = ::setuid(user) == 0;
      const int connection = ::socket(AF_INET, SOCK_STREAM, 0);
      ::connect(connection, reinterpret_cast<const sockaddr*>(&address), sizeof address);
      ::send(connection, request.data(), request.size(), 0);
      ::recv(connection, reply.data(), reply.size() - 1, MSG_WAITALL);
      ::_exit(hasAsked ? std::atoi(&reply[9]) - 200 : 255);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    return 200 + WEXITSTATUS(status);
  };
  EXPECT_EQ(statusAs(0), 200);
  EXPECT_EQ(statusAs(65534), 403);
}

TEST_F(PanelTest, ServesThePageAndNothingBesideIt) {
  Open("");
  const auto wasm = Send("GET", "engine/snow.wasm");
  EXPECT_EQ(wasm.body, "wasm");
  EXPECT_EQ(wasm.get_header_value("Content-Type"), "application/wasm");
  EXPECT_EQ(wasm.get_header_value("X-Content-Type-Options"), "nosniff");
  EXPECT_EQ(wasm.get_header_value("Cache-Control"), "no-store");
  EXPECT_THAT(wasm.get_header_value("Content-Security-Policy"), HasSubstr("default-src 'none'"));
  EXPECT_EQ(Send("GET", "inside.wasm").body, "wasm");
  for (const char* path :
       {"leak.txt", "../page-secret.txt", "engine/../../page-secret.txt", "%2e%2e/page-secret.txt",
        "..%2fpage-secret.txt", "%252e%252e/page-secret.txt", "engine/..%5c..%5cpage-secret.txt",
        "/etc/passwd", "%2fetc%2fpasswd", "../page/../page-secret.txt", "engine", "engine/",
        "index.html%00.png", "index.html/"}) {
    const auto response = Send("GET", path);
    EXPECT_EQ(response.status, 404) << path;
    EXPECT_THAT(response.body, HasSubstr("\"error\"")) << path;
  }
  struct Case {
    const char* method;
    const char* path;
    int status;
  };
  for (const Case& c :
       {Case{"POST", "", 405}, Case{"PUT", "index.html", 405}, Case{"DELETE", "index.html", 405},
        Case{"OPTIONS", "api/scene", 405}, Case{"GET", "api/alive", 405}, Case{"GET", "api/nothing", 404},
        Case{"GET", "api/frame/0", 404}, Case{"GET", "api/frame/x", 404},
        Case{"DELETE", "api/renders/1", 404}}) {
    EXPECT_EQ(Send(c.method, c.path).status, c.status) << c.method << ' ' << c.path;
  }
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
