// Who may ask: the page that this panel opened, for the user that runs it.
#pragma once

#include <sys/types.h>

#include <optional>
#include <string>

#include "cli/panel/http.h"

namespace cli {

/// Any page in a browser can send requests to a port of this machine, and so can any user of it.  Four things
/// keep them out, each for itself: a secret in the address; the Host, so that no foreign name that leads here
/// is taken; what the browser says of the page that asks; and the user at the other end of the connection.
class Guard {
 public:
  /// With a secret of 128 bits from the system, of this guard alone.  Throws ToolError(kFrameFailed) when the
  /// system has none to give.
  explicit Guard(int port);

  /// What the page is opened by, without its query: "http://127.0.0.1:PORT/TOKEN/".
  std::string Address() const;

  /// The path of a request below the secret: "", "main.js", "api/panel".  Throws HttpError(403) for a request
  /// that may not be answered.
  std::string PathOf(const HttpRequest& request) const;

 private:
  int port_;
  std::string token_;
};

/// The user who holds the other end of a connection of this machine to 127.0.0.1:`ownPort`; empty when there
/// is no such connection any more.
std::optional<uid_t> UserAtPort(int peerPort, int ownPort);

}  // namespace cli
