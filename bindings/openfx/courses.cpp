#include "bindings/openfx/courses.h"

#include <algorithm>
#include <cmath>
#include <set>
#include <utility>

namespace openfx {
namespace {

constexpr std::int64_t kReadAll = 1000;  // frames
constexpr std::size_t kKept = 16;        // works, and courses

bool SameTiming(const minihost::FrameTiming& a, const minihost::FrameTiming& b) {
  return a.timeScale == b.timeScale && a.timeStep == b.timeStep && a.localTimeStep == b.localTimeStep;
}

double NumberAt(const HostParameters& host, int parameter, std::int64_t frame) {
  return std::get<double>(host.At(parameter, static_cast<double>(frame)));
}

/// The frames of 0 to `last` that tell whether a long curve is the same.
std::set<std::int64_t> Probes(const HostParameters& host, int parameter, std::int64_t last) {
  constexpr std::int64_t kPlaces = 5;  // from a key to the next
  constexpr std::int64_t kLast = 16;
  std::set<std::int64_t> probes;
  const auto add = [&](double frame) {
    if (frame >= 0 && frame <= static_cast<double>(last)) {
      probes.insert(static_cast<std::int64_t>(frame));
    }
  };
  for (std::int64_t i = 0; i <= kReadAll; ++i) {
    probes.insert(last * i / kReadAll);
  }
  for (std::int64_t i = 0; i < kLast; ++i) {
    add(static_cast<double>(last - i));
  }
  const std::vector<double> keys = host.KeyTimes(parameter);
  for (std::size_t i = 0; i < keys.size(); ++i) {
    add(std::floor(keys[i]));
    add(std::ceil(keys[i]));
    for (std::int64_t place = 1; i + 1 < keys.size() && place < kPlaces; ++place) {
      add(std::round(keys[i] + (keys[i + 1] - keys[i]) * static_cast<double>(place) / kPlaces));
    }
  }
  return probes;
}

/// The courses up to this frame: the only part that has been checked after an edit.
std::shared_ptr<const Courses> UpTo(std::int64_t frame, const Courses& courses) {
  auto part = std::make_shared<Courses>(courses);
  for (auto& [parameter, numbers] : *part) {
    numbers.resize(std::min(numbers.size(), static_cast<std::size_t>(std::max<std::int64_t>(frame, 0)) + 1));
  }
  return part;
}

}  // namespace

bool Hold(const Courses& courses, std::int64_t frame, const HostParameters& host, Check check) {
  return std::ranges::all_of(courses, [&](const auto& course) {
    const auto& [parameter, numbers] = course;
    const std::int64_t last = std::min<std::int64_t>(frame, std::ssize(numbers) - 1);
    const auto holds = [&, index = parameter, &known = numbers](std::int64_t probe) {
      return NumberAt(host, index, probe) == known[static_cast<std::size_t>(probe)];
    };
    if (check == Check::kSome && last >= kReadAll) {
      return std::ranges::all_of(Probes(host, parameter, last), holds);
    }
    for (std::int64_t probe = 0; probe <= last; ++probe) {
      if (!holds(probe)) {
        return false;
      }
    }
    return true;
  });
}

std::unique_ptr<Work> Store::TakeFollowing(std::int64_t frame, const minihost::FrameTiming& timing,
                                           const HostParameters& host) {
  std::set<const Work*> tried;
  for (;;) {
    std::unique_ptr<Work> work;
    std::uint64_t edits = 0;
    {
      const std::lock_guard lock(mutex_);
      const auto found = std::ranges::find_if(works_, [&](const auto& candidate) {
        return candidate->frame >= 1 && candidate->frame + 1 == frame &&
               SameTiming(candidate->timing, timing) && !tried.contains(candidate.get());
      });
      if (found == works_.end()) {
        return nullptr;
      }
      work = std::move(*found);
      works_.erase(found);
      edits = edits_;
    }
    // The host is asked with no lock held: it may wait for another of its threads.
    const Check check = work->edits == edits ? Check::kSome : Check::kEveryFrame;
    if (Hold(*work->courses, frame, host, check)) {
      if (check == Check::kEveryFrame) {
        work->courses = UpTo(frame, *work->courses);
        work->edits = edits;
      }
      return work;
    }
    tried.insert(work.get());
    const std::lock_guard lock(mutex_);
    works_.push_back(std::move(work));
  }
}

std::shared_ptr<const Courses> Store::FindCourses(std::int64_t frame, const HostParameters& host) {
  std::list<Known> known;
  std::uint64_t edits = 0;
  {
    const std::lock_guard lock(mutex_);
    known = known_;
    edits = edits_;
  }
  const auto length = [](const Known& one) {
    std::size_t longest = 0;
    for (const auto& course : *one.courses) {
      longest = std::max(longest, course.second.size());
    }
    return longest;
  };
  known.sort([&](const Known& a, const Known& b) { return length(a) > length(b); });
  for (const Known& one : known) {
    const Check check = one.edits == edits ? Check::kSome : Check::kEveryFrame;
    if (Hold(*one.courses, frame, host, check)) {
      return check == Check::kSome ? one.courses : UpTo(frame, *one.courses);
    }
  }
  return std::make_shared<const Courses>();
}

void Store::Give(std::unique_ptr<Work> work) {
  const std::lock_guard lock(mutex_);
  known_.remove_if([&](const Known& one) { return one.courses == work->courses; });
  known_.push_front({work->courses, work->edits});
  works_.push_front(std::move(work));
  if (known_.size() > kKept) {
    known_.pop_back();
  }
  if (works_.size() > kKept) {
    works_.pop_back();
  }
}

void Store::NoteEdit() {
  const std::lock_guard lock(mutex_);
  ++edits_;
}

std::uint64_t Store::Edits() const {
  const std::lock_guard lock(mutex_);
  return edits_;
}

Reading::Reading(const HostParameters& host, std::int64_t frame, std::shared_ptr<const Courses> known)
    : host_(host), frame_(frame), known_(std::move(known)) {}

Courses& Reading::Own() {
  if (own_ == nullptr) {
    own_ = std::make_shared<Courses>(*known_);
    known_ = own_;
  }
  return *own_;
}

minihost::Value Reading::At(int parameter, double layerFrame) {
  const minihost::ParameterInfo& info = host_.List()[static_cast<std::size_t>(parameter)];
  const bool isNumber = std::holds_alternative<double>(*info.defaultValue);
  const bool isWhole = layerFrame == std::floor(layerFrame) && layerFrame >= 0;
  if (!isNumber || !isWhole || layerFrame > static_cast<double>(frame_)) {
    return host_.At(parameter, layerFrame);
  }
  const std::size_t place = info.animatable ? static_cast<std::size_t>(layerFrame) : 0;
  const auto course = known_->find(parameter);
  const std::size_t size = course == known_->end() ? 0 : course->second.size();
  if (place < size) {
    return course->second[place];
  }
  minihost::Value value = host_.At(parameter, layerFrame);
  const bool isPast = layerFrame < static_cast<double>(frame_);
  if (place == size && (isPast || course != known_->end())) {
    Own()[parameter].push_back(std::get<double>(value));
  }
  return value;
}

std::shared_ptr<const Courses> Reading::Result() {
  return known_;
}

}  // namespace openfx
