#include <httplib.h>
#include <sys/socket.h>

#include <algorithm>
#include <atomic>
#include <cctype>
#include <chrono>
#include <thread>

#include "cli/panel/http.h"
#include "cli/report/error.h"

namespace cli {
namespace {

constexpr char kLoopback[] = "127.0.0.1";
// A browser keeps six connections to a server open, each of which holds a thread; so two windows and a
// script.
constexpr std::size_t kThreads = 16;
// A scene in JSON, every letter of it escaped.
constexpr std::size_t kMaxBodyBytes = 7 << 20;

HttpRequest RequestOf(const httplib::Request& given) {
  HttpRequest request{.method = given.method,
                      .path = given.path,
                      .query = given.params,
                      .headers = {},
                      .body = given.body,
                      .peerPort = given.remote_port};
  for (const auto& [name, value] : given.headers) {
    std::string lower = name;
    std::ranges::transform(lower, lower.begin(), [](unsigned char letter) { return std::tolower(letter); });
    request.headers.emplace(std::move(lower), value);
  }
  return request;
}

/// The reply's own bytes, not a copy: a frame has megabytes.
void GiveBody(const std::shared_ptr<const HttpBytes>& body, const std::string& type,
              httplib::Response& response) {
  if (body->empty()) {
    response.set_content("", type);
    return;
  }
  response.set_content_provider(
      body->size(), type, [body](std::size_t offset, std::size_t length, httplib::DataSink& sink) {
        return sink.write(reinterpret_cast<const char*>(body->data()) + offset, length);
      });
}

void GiveStream(const HttpStream& stream, const std::string& type, httplib::Response& response) {
  response.set_chunked_content_provider(type, [stream](std::size_t, httplib::DataSink& sink) {
    std::string text;
    const bool goesOn = stream(text);
    if (!text.empty() && !sink.write(text.data(), text.size())) {
      return false;
    }
    if (!goesOn) {
      sink.done();
    }
    return true;
  });
}

class LoopbackServer : public HttpServer {
 public:
  LoopbackServer() {
    // A second panel must not share a port with the first, as the library has it by itself.
    server_.set_socket_options([](socket_t socket) {
      const int yes = 1;
      ::setsockopt(socket, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
    });
    server_.new_task_queue = [] { return new httplib::ThreadPool(kThreads); };
    server_.set_payload_max_length(kMaxBodyBytes);
    // Replies are written in two pieces, and the second must not wait for word of the first.
    server_.set_tcp_nodelay(true);
  }

  int Bind(int port) override {
    const int bound = port == 0                               ? server_.bind_to_any_port(kLoopback)
                      : server_.bind_to_port(kLoopback, port) ? port
                                                              : -1;
    if (bound < 0) {
      Refuse(ExitCode::kUsage,
             "port {} of {} is taken, or not yours to take; leave --port out for any free one", port,
             kLoopback);
    }
    return bound;
  }

  void Run(const std::function<HttpReply(const HttpRequest&)>& answer) override {
    const auto give = [&answer](const httplib::Request& request, httplib::Response& response) {
      const HttpReply reply = answer(RequestOf(request));
      response.status = reply.status;
      for (const auto& [name, value] : reply.headers) {
        response.set_header(name, value);
      }
      if (reply.stream) {
        GiveStream(reply.stream, reply.type, response);
      } else if (reply.body) {
        GiveBody(reply.body, reply.type, response);
      }
    };
    // What a method or a path may do is for `answer` to say.
    constexpr char kAny[] = R"([\s\S]*)";
    server_.Get(kAny, give)
        .Put(kAny, give)
        .Post(kAny, give)
        .Patch(kAny, give)
        .Delete(kAny, give)
        .Options(kAny, give);
    server_.listen_after_bind();
    hasEnded_ = true;
  }

  void Stop() override {
    // The library forgets to stop what has not begun, and may not be told twice.
    while (!server_.is_running() && !hasEnded_) {
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    if (!isStopped_.exchange(true)) {
      server_.stop();
    }
  }

 private:
  httplib::Server server_;
  std::atomic<bool> hasEnded_ = false;
  std::atomic<bool> isStopped_ = false;
};

}  // namespace

std::unique_ptr<HttpServer> MakeHttpServer() {
  return std::make_unique<LoopbackServer>();
}

}  // namespace cli
