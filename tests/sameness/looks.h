// The frames of the list, whoever makes them: looks, their plates, and what becomes of what was rendered.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#include "minihost/frame.h"
#include "minihost/parameter/set.h"

namespace sameness {

struct Look {
  const char* name;
  std::vector<std::pair<std::string_view, minihost::Track>> tracks = {};
  std::int32_t time = 10;
  minihost::Protocol protocol = minihost::Protocol::kSmart;
  int reduction = 1;
  PF_RationalScale aspect{1, 1};
  double shutter = 180;
  bool hasLayer = true;
};

const std::vector<Look>& Looks();

/// Frames a second of them all.
inline constexpr int kRate = 30;

minihost::ParameterSet ParametersOf(const Look& look, minihost::SharedParameterList list);

/// The layer in render pixels.
minihost::Image PlateOf(const Look& look, minihost::Depth depth);

/// The frame in the effect's order and count, straight; nothing where this front cannot have the look.
using Front = std::function<std::optional<minihost::Image>(const Look&, minihost::Depth)>;

/// For a main function, after the arguments that it takes for itself.  Without any more prints a line for
/// each frame: its name, its depth and a hash of its bytes.  With NAME DEPTH FILE writes the bytes of that
/// frame. With NAME DEPTH FILE FILE prints the first pixel in which two such files differ.  Answers with the
/// exit code; what is thrown is told.
int Run(const Front& front, int count, char** arguments);

}  // namespace sameness
