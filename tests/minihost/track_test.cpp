#include "minihost/track.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "fake_effect.h"

namespace minihost {
namespace {

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

TEST(TrackTest, EasesLeadFromKeyToKeyAndTheEndsHold) {
  // Given out of order, with a fraction and a negative frame.
  const Track track(
      {{4, 30.0, Ease::kSmooth}, {-2, 10.0, Ease::kLinear}, {8.5, -6.0, Ease::kHold}, {10, 1.0}});
  const struct {
    double frame, value;
  } expected[] = {{-1e9, 10},  {-2, 10}, {-0.5, 15}, {1, 20},  {4, 30},   {8.5, -6},
                  {9.999, -6}, {10, 1},  {11, 1},    {1e9, 1}, {6.25, 12}};
  for (const auto& [frame, value] : expected)
    EXPECT_DOUBLE_EQ(std::get<double>(track.At(frame)), value) << frame;
  const double t = (5.0 - 4) / 4.5;
  EXPECT_DOUBLE_EQ(std::get<double>(track.At(5)), 30 + -36 * (t * t * (3 - 2 * t)));
  EXPECT_TRUE(track.animated());
}

TEST(TrackTest, MixesEveryComponent) {
  const Track color({{0, Color{0, 100, 200}}, {10, Color{100, 0, 250}}});
  EXPECT_EQ(std::get<Color>(color.At(5)), (Color{50, 50, 225}));
  const Track point({{0, Point{-10, 50}}, {4, Point{10, 150}}});
  EXPECT_EQ(std::get<Point>(point.At(1)), (Point{-5, 75}));
  const Track constant(Point{3, 4});
  EXPECT_FALSE(constant.animated());
  EXPECT_EQ(std::get<Point>(constant.At(-7)), (Point{3, 4}));
}

TEST(TrackTest, RefusesWhatHasNoCourse) {
  EXPECT_THROW(Track(std::vector<Key>{}), std::invalid_argument);
  EXPECT_THROW(Track{kNan}, std::invalid_argument);
  EXPECT_THROW(Track(Color{0, kInfinity, 0}), std::invalid_argument);
  EXPECT_THROW(Track(Point{0, -kInfinity}), std::invalid_argument);
  EXPECT_THROW(Track({{kNan, 1.0}}), std::invalid_argument);
  EXPECT_THROW(Track({{0, 1.0}, {1, Point{}}}), std::invalid_argument);
  const std::string text = ErrorOf([] { Track({{7.5, 1.0}, {2, 1.0}, {7.5, 2.0}}); });
  EXPECT_NE(text.find("7.5"), std::string::npos) << text;
}

}  // namespace
}  // namespace minihost
