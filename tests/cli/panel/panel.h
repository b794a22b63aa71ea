// A panel that is served, and who asks it.
#pragma once

#include <gtest/gtest.h>
#include <httplib.h>

#include <atomic>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <functional>
#include <future>
#include <memory>
#include <string>

#include "cli/panel/serve.h"
#include "cli/report/json.h"
#include "tests/support/cli/scene_values.h"
#include "tests/support/cli/temporary_folder.h"

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
    return cli::Json::parse(response.body).value("error", "");
  }

  std::string Url(const char* call, const std::string& file) { return call + (folder_ / file).string(); }

  httplib::Response StartRender(const std::string& scene, const std::string& output, bool replace = false) {
    return Send(
        "POST", "api/renders",
        cli::Json({{"scene", scene}, {"output", (folder_ / output).string()}, {"replace", replace}}).dump());
  }

  /// The objects that a render says, `task` called at each, and its last one.
  cli::Json FollowRender(
      const cli::Json& id, const std::function<void(const cli::Json&)>& task = [](const cli::Json&) {}) {
    std::string text;
    cli::Json last;
    const auto take = [&](const char* data, std::size_t size) {
      text.append(data, size);
      for (std::size_t end; (end = text.find("\n\n")) != text.npos; text.erase(0, end + 2)) {
        if (text.starts_with("data: ")) {
          task(last = cli::Json::parse(text.substr(6, end - 6)));
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
