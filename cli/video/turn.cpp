#include "cli/video/turn.h"

#include <algorithm>
#include <array>
#include <cstdlib>

#include "cli/frames/orientation.h"

namespace cli {
namespace {

/// Where a step to the right and a step down lead in the upright picture: right and down again.
struct Steps {
  std::array<int, 2> ofRight;
  std::array<int, 2> ofDown;
  bool operator==(const Steps&) const = default;
};

/// By number, from 1.
constexpr std::array kOrientations = {
    Steps{{1, 0}, {0, 1}}, Steps{{-1, 0}, {0, 1}}, Steps{{-1, 0}, {0, -1}}, Steps{{1, 0}, {0, -1}},
    Steps{{0, 1}, {1, 0}}, Steps{{0, 1}, {-1, 0}}, Steps{{0, -1}, {-1, 0}}, Steps{{0, -1}, {1, 0}}};

/// Of a number with 16 bits behind the point; nearly 0 is 0.
int Sign(std::int32_t fixed) {
  constexpr std::int32_t kNothing = 1 << 8;
  return fixed > kNothing ? 1 : fixed < -kNothing ? -1 : 0;
}

}  // namespace

std::optional<int> OrientationOf(const AVStream& stream) {
  const auto* bytes = av_stream_get_side_data(&stream, AV_PKT_DATA_DISPLAYMATRIX, nullptr);
  if (!bytes) {
    return 1;
  }
  // Rows of three; the last column is of perspective, the last row of place.
  const auto* matrix = reinterpret_cast<const std::int32_t*>(bytes);
  const Steps steps{{Sign(matrix[0]), Sign(matrix[1])}, {Sign(matrix[3]), Sign(matrix[4])}};
  const auto found = std::ranges::find(kOrientations, steps);
  if (found == kOrientations.end()) {
    return {};
  }
  return static_cast<int>(found - kOrientations.begin()) + 1;
}

minihost::Image Turn(minihost::Image stored, int orientation) {
  if (orientation == 1) {
    return stored;
  }
  const Orientation places(orientation, {stored.Width(), stored.Height()});
  const auto [width, height] = places.Upright();
  minihost::Image upright(width, height, stored.PixelDepth(), minihost::Clearing::kNone);
  minihost::WithPixel(stored.PixelDepth(), [&]<class Pixel>(Pixel) {
    for (int row = 0; row < stored.Height(); ++row) {
      const auto pixels = stored.Row<Pixel>(row);
      for (int column = 0; column < stored.Width(); ++column) {
        const auto place = places.Find(column, row);
        upright.Row<Pixel>(place.row)[static_cast<std::size_t>(place.column)] =
            pixels[static_cast<std::size_t>(column)];
      }
    }
  });
  return upright;
}

}  // namespace cli
