// JSON as this tool writes it.
#pragma once

#include <cmath>
#include <nlohmann/json.hpp>
#include <string>

namespace cli {

/// Keys stay in the order in which they were given.
using Json = nlohmann::ordered_json;

/// The object on a line of its own.  Bytes that are not UTF-8, as names of files may have, become U+FFFD.
inline std::string JsonLine(const Json& object) {
  return object.dump(-1, ' ', false, Json::error_handler_t::replace) + '\n';
}

/// No more digits than anybody reads.
inline double Thousandths(double number) {
  return std::round(number * 1000) / 1000;
}

}  // namespace cli
