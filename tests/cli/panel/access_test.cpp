// What the panel's server answers, and to whom: not to other pages, other users and other names.
#include <arpa/inet.h>
#include <gmock/gmock.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>

#include "tests/cli/panel/panel.h"

namespace {

using testing::HasSubstr;

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
      (void)::connect(connection, reinterpret_cast<const sockaddr*>(&address), sizeof address);
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

}  // namespace
