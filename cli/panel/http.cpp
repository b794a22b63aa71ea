#include "cli/panel/http.h"

namespace cli {

std::vector<std::string> HttpRequest::Headers(const std::string& name) const {
  std::vector<std::string> values;
  for (auto [at, end] = headers.equal_range(name); at != end; ++at) {
    values.push_back(at->second);
  }
  return values;
}

std::string HttpRequest::Query(const std::string& name) const {
  const auto found = query.find(name);
  return found == query.end() ? std::string() : found->second;
}

HttpReply TextReply(int status, std::string type, std::string_view text) {
  return {.status = status,
          .type = std::move(type),
          .headers = {},
          .body = std::make_shared<const HttpBytes>(text.begin(), text.end()),
          .stream = {}};
}

}  // namespace cli
