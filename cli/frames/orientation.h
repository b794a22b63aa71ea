// How a camera was held: where the pixels of a stored picture belong in the upright one.
#pragma once

#include "minihost/picture/image.h"

namespace cli {

/// The eight orientations of picture metadata, 1..8; 1 is upright.
class Orientation {
 public:
  struct Size {
    int width;
    int height;
  };
  struct Place {
    int column;
    int row;
  };

  /// Numbers outside of 1..8 count as upright.  `stored` is the size in the file, in pixels.
  constexpr Orientation(int number, Size stored)
      : stored_(stored),
        mirrorsColumns_(number == 2 || number == 3 || number == 7 || number == 8),
        mirrorsRows_(number == 3 || number == 4 || number == 6 || number == 7),
        sideways_(number >= 5 && number <= 8) {}

  /// Whether every pixel stays where it is.
  constexpr bool IsUpright() const { return !mirrorsColumns_ && !mirrorsRows_ && !sideways_; }

  /// The size of the upright picture: of one that lies on its side, width and height change places.
  constexpr Size Upright() const { return sideways_ ? Size{stored_.height, stored_.width} : stored_; }

  /// The width of an upright pixel over its height, from that of a stored one.
  constexpr double UprightAspect(double stored) const { return sideways_ ? 1 / stored : stored; }

  /// Where the stored pixel at `column`, `row` belongs in the upright picture: mirrored first, and then
  /// over the diagonal.
  constexpr Place Find(int column, int row) const {
    const Place mirrored{mirrorsColumns_ ? stored_.width - 1 - column : column,
                         mirrorsRows_ ? stored_.height - 1 - row : row};
    return sideways_ ? Place{mirrored.row, mirrored.column} : mirrored;
  }

 private:
  Size stored_;
  bool mirrorsColumns_;
  bool mirrorsRows_;
  bool sideways_;
};

/// The upright picture of `stored`, whose size is the orientation's.
minihost::Image TurnUpright(minihost::Image stored, const Orientation& orientation);

}  // namespace cli
