// A request and its reply as plain values: what decides about them needs no library of the network.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace cli {

struct HttpRequest {
  std::string method;  // upper case
  std::string path;    // percent-decoded, with a slash at the front
  std::multimap<std::string, std::string> query;
  std::multimap<std::string, std::string> headers;  // names in lower case
  std::string body;
  int peerPort = 0;

  /// All values of a header, by its name in lower case.
  std::vector<std::string> Headers(const std::string& name) const;

  /// The first value of a name in the query; empty without one.
  std::string Query(const std::string& name) const;
};

using HttpBytes = std::vector<std::uint8_t>;

/// Waits for what comes next and adds it to `text`, maybe nothing when nothing came for a while.  False when
/// there will be no more.
using HttpStream = std::function<bool(std::string& text)>;

struct HttpReply {
  int status = 200;
  std::string type;  // of the body; empty without one
  std::vector<std::pair<std::string, std::string>> headers;
  std::shared_ptr<const HttpBytes> body;
  HttpStream stream;  // in place of a body
};

HttpReply TextReply(int status, std::string type, std::string_view text);

/// No to a request, with the status and a sentence for whoever asked.
class HttpError : public std::runtime_error {
 public:
  HttpError(int status, const std::string& message) : std::runtime_error(message), status_(status) {}
  int Status() const { return status_; }

 private:
  int status_;
};

/// A server on 127.0.0.1 alone.
class HttpServer {
 public:
  virtual ~HttpServer() = default;

  /// Takes the port, or any free one for 0, and returns which.  Throws ToolError(kUsage) when it is taken.
  virtual int Bind(int port) = 0;

  /// Answers requests, several at a time, until Stop; after Bind.  `answer` throws nothing.
  virtual void Run(const std::function<HttpReply(const HttpRequest&)>& answer) = 0;

  /// Ends Run, which has been called or is about to be; from another thread, and again.
  virtual void Stop() = 0;
};

std::unique_ptr<HttpServer> MakeHttpServer();

}  // namespace cli
