#include "cli/frames/orientation.h"

namespace cli {

minihost::Image TurnUpright(minihost::Image stored, const Orientation& orientation) {
  if (orientation.IsUpright()) {
    return stored;
  }
  const auto [width, height] = orientation.Upright();
  minihost::Image upright(width, height, stored.PixelDepth(), minihost::Clearing::kNone);
  minihost::WithPixel(stored.PixelDepth(), [&]<class Pixel>(Pixel) {
    for (int row = 0; row < stored.Height(); ++row) {
      const auto pixels = stored.Row<Pixel>(row);
      for (int column = 0; column < stored.Width(); ++column) {
        const auto place = orientation.Find(column, row);
        upright.Row<Pixel>(place.row)[static_cast<std::size_t>(place.column)] =
            pixels[static_cast<std::size_t>(column)];
      }
    }
  });
  return upright;
}

}  // namespace cli
