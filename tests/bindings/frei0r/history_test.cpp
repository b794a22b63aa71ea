// What a parameter is known to have been, from what was seen of it.
#include "bindings/frei0r/history.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

using frei0r::History;
using minihost::Track;

double At(const History& history, double frame) {
  return std::get<double>(history.Seen().At(frame));
}

TEST(History, IsConstantInAnyOrder) {
  History history;
  EXPECT_EQ(history.See(7, 3.0), History::Change::kTrack);
  for (const int frame : {8, 2, 100, 7, -5, 8}) {
    EXPECT_EQ(history.See(frame, 3.0), History::Change::kNone);
  }
  EXPECT_FALSE(history.Seen().Animated());
  EXPECT_EQ(At(history, 1e6), 3);
}

TEST(History, KeepsEachValueSeenAndLinesBetween) {
  History history;
  const std::vector<std::pair<int, double>> seen = {{10, 5.0},  {11, 5.0}, {12, 5.0},
                                                    {20, 13.0}, {4, 1.0},  {5, 9.0}};
  for (const auto& [frame, value] : seen) {
    EXPECT_EQ(history.See(frame, value) == History::Change::kNone, frame == 11 || frame == 12) << frame;
  }
  for (const auto& [frame, value] : seen) {
    EXPECT_EQ(At(history, frame), value) << frame;
    EXPECT_EQ(history.See(frame, value), History::Change::kNone) << "seen again";
  }
  EXPECT_EQ(At(history, 16), 9) << "half-way from 12 to 20";
  EXPECT_EQ(At(history, 0), 1) << "before all";
  EXPECT_EQ(At(history, 99), 13) << "after all";
}

TEST(History, ForgetsWhatWasEdited) {
  History history;
  history.See(0, 1.0);
  history.See(1, 2.0);
  history.See(2, 3.0);
  EXPECT_EQ(history.See(1, 8.0), History::Change::kEdited);
  EXPECT_EQ(At(history, 0), 8);
  EXPECT_EQ(At(history, 2), 8);
}

}  // namespace
