#include "bindings/frei0r/history.h"

#include <algorithm>
#include <iterator>
#include <utility>
#include <vector>

namespace frei0r {

using minihost::Key;
using minihost::Track;
using minihost::Value;

History::Change History::See(std::int32_t frame, const Value& value) {
  const auto after = runs_.upper_bound(frame);
  if (after != runs_.begin()) {
    const Run& run = std::prev(after)->second;
    if (frame <= run.last) {
      if (run.value == value) {
        return Change::kNone;
      }
      runs_.clear();
      SeeNew(frame, value);
      return Change::kEdited;
    }
  }
  return SeeNew(frame, value);
}

History::Change History::SeeNew(std::int32_t frame, const Value& value) {
  const bool wasConstant = !runs_.empty() && IsConstant() && runs_.begin()->second.value == value;
  const auto after = runs_.upper_bound(frame);
  const auto before = after == runs_.begin() ? runs_.end() : std::prev(after);
  if (before != runs_.end() && before->second.last + 1 == frame && before->second.value == value) {
    before->second.last = frame;
  } else {
    runs_.emplace(frame, Run{frame, value});
  }
  return wasConstant ? Change::kNone : Change::kTrack;
}

bool History::IsConstant() const {
  const Value& first = runs_.begin()->second.value;
  return std::ranges::all_of(runs_, [&](const auto& run) { return run.second.value == first; });
}

Track History::Seen() const {
  if (IsConstant()) {
    return Track(runs_.begin()->second.value);
  }
  std::vector<Key> keys;
  for (const auto& [first, run] : runs_) {
    keys.push_back({static_cast<double>(first), run.value});
    if (run.last > first) {
      keys.push_back({static_cast<double>(run.last), run.value});
    }
  }
  return Track(std::move(keys));
}

}  // namespace frei0r
