// How a camera was held: where the pixels of a stored picture belong in the upright one.
#pragma once

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

  /// Numbers outside of 1..8 count as upright.  `stored` is the size in the file.
  constexpr Orientation(int number, Size stored)
      : number_(number < 1 || number > 8 ? 1 : number), stored_(stored) {}

  /// Whether the picture lies on its side, so that its width and height change places.
  constexpr bool Sideways() const { return number_ >= 5; }

  constexpr Size Upright() const { return Sideways() ? Size{stored_.height, stored_.width} : stored_; }

  /// Where the stored pixel at `column`, `row` belongs in the upright picture.
  constexpr Place Find(int column, int row) const {
    const int fromRight = stored_.width - 1 - column;
    const int fromBottom = stored_.height - 1 - row;
    switch (number_) {
      case 2:
        return {fromRight, row};
      case 3:
        return {fromRight, fromBottom};
      case 4:
        return {column, fromBottom};
      case 5:
        return {row, column};
      case 6:
        return {fromBottom, column};
      case 7:
        return {fromBottom, fromRight};
      case 8:
        return {row, fromRight};
      default:
        return {column, row};
    }
  }

 private:
  int number_;
  Size stored_;
};

}  // namespace cli
