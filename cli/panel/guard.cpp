#include "cli/panel/guard.h"

#include <arpa/inet.h>
#include <fmt/format.h>
#include <sys/random.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <fstream>
#include <sstream>
#include <system_error>

#include "cli/report/error.h"
#include "cli/report/number.h"

namespace cli {
namespace {

std::string MakeToken() {
  std::array<unsigned char, 16> bytes{};
  if (::getrandom(bytes.data(), bytes.size(), 0) != static_cast<ssize_t>(bytes.size())) {
    Refuse(ExitCode::kFrameFailed, "the system gives no random numbers: {}",
           std::generic_category().message(errno));
  }
  std::string token;
  for (const unsigned char byte : bytes) {
    token += fmt::format("{:02x}", byte);
  }
  return token;
}

/// In a time that does not tell how many letters were right.
bool IsSame(std::string_view given, std::string_view secret) {
  if (given.size() != secret.size()) {
    return false;
  }
  int different = 0;
  for (std::size_t i = 0; i < secret.size(); ++i) {
    different |= static_cast<unsigned char>(given[i]) ^ static_cast<unsigned char>(secret[i]);
  }
  return different == 0;
}

/// "0100007F:1F90", as the kernel lists the ends of connections: the address as a number in the machine's own
/// order.
std::string KernelName(int port) {
  return fmt::format("{:08X}:{:04X}", htonl(INADDR_LOOPBACK), port);
}

}  // namespace

Guard::Guard(int port) : port_(port), token_(MakeToken()) {}

std::string Guard::Address() const {
  return fmt::format("http://127.0.0.1:{}/{}/", port_, token_);
}

std::string Guard::PathOf(const HttpRequest& request) const {
  const auto hosts = request.Headers("host");
  const bool isOurs = hosts.size() == 1 && (hosts[0] == fmt::format("127.0.0.1:{}", port_) ||
                                            hosts[0] == fmt::format("localhost:{}", port_));
  if (!isOurs) {
    throw HttpError(403, "the panel answers to its own address alone");
  }
  for (const std::string& origin : request.Headers("origin")) {
    if (origin != "http://" + hosts[0]) {
      throw HttpError(403, "the panel answers to its own page alone");
    }
  }
  // "none" is an address that the user typed or opened.
  for (const std::string& site : request.Headers("sec-fetch-site")) {
    if (site != "same-origin" && site != "none") {
      throw HttpError(403, "the panel answers to its own page alone");
    }
  }
  const std::size_t end = request.path.find('/', 1);
  if (end == request.path.npos || !IsSame(std::string_view(request.path).substr(1, end - 1), token_)) {
    throw HttpError(403, "this address is not the one that the panel said when it started");
  }
  if (UserAtPort(request.peerPort, port_) != ::getuid()) {
    throw HttpError(403, "the panel answers to the user who started it alone");
  }
  return request.path.substr(end + 1);
}

std::optional<uid_t> UserAtPort(int peerPort, int ownPort) {
  const std::string wanted = KernelName(peerPort) + ' ' + KernelName(ownPort);
  std::ifstream connections("/proc/net/tcp");
  for (std::string line; std::getline(connections, line);) {
    // "  12: 0100007F:D431 0100007F:1F90 01 00000000:00000000 00:00000000 00000000  1000 ..."
    if (line.find(wanted) == line.npos) {
      continue;
    }
    std::istringstream fields(line);
    std::string field;
    for (int i = 0; i < 8; ++i) {
      fields >> field;
    }
    return ParseNumber<uid_t>(field);
  }
  return {};
}

}  // namespace cli
