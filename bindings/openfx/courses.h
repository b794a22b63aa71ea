// What has been read of the host's curves, and the effect's sums of it, kept for the frames to come.
#pragma once

#include <cstdint>
#include <list>
#include <map>
#include <memory>
#include <mutex>
#include <vector>

#include "bindings/openfx/parameters.h"
#include "minihost/frame.h"
#include "minihost/instance.h"

namespace openfx {

/// By parameter: its numbers at the frames 0, 1, ... as they were read; of what cannot be animated, one. Only
/// parameters are here that the effect reads at frames before the one it renders, which is what a motion's
/// sums are made of.
using Courses = std::map<int, std::vector<double>>;

/// An instance of the effect between two renders.
struct Work {
  std::unique_ptr<minihost::Instance> instance;
  std::shared_ptr<const Courses> courses;  // never null
  minihost::FrameTiming timing;
  std::int64_t frame = -1;  // the layer frame that its sums go up to; below 1: they are of no use
  std::uint64_t edits = 0;  // how many there had been when the courses were last read
};

/// For all uses in a process: hosts may make a new use for each frame, on any thread.
///
/// What is kept is used again only where the host still gives the values that were read.  Up to 1,000 frames
/// each is read again, and in the first render after any change that the host told of, whatever it was.
/// Beyond, and without such news, these are: the last frames, 1,000 spread over the rest, and at each key and
/// in four places between two keys, which tells any two cubics apart; a host that gives other values between
/// without telling has the curve edited behind its own back.
class Store {
 public:
  /// A work whose sums go up to the frame before this one and hold.  Null when there is none.
  std::unique_ptr<Work> TakeFollowing(std::int64_t frame, const minihost::FrameTiming& timing,
                                      const HostParameters& host);

  /// The longest courses that hold up to this frame; empty ones when there are none.  For a new work.
  std::shared_ptr<const Courses> FindCourses(std::int64_t frame, const HostParameters& host);

  void Give(std::unique_ptr<Work> work);

  /// The host says that something has changed.
  void NoteEdit();
  std::uint64_t Edits() const;

 private:
  struct Known {
    std::shared_ptr<const Courses> courses;
    std::uint64_t edits;
  };

  mutable std::mutex mutex_;
  std::list<std::unique_ptr<Work>> works_;  // the last given first
  std::list<Known> known_;                  // the last given first
  std::uint64_t edits_ = 0;
};

/// Whether the host gives the values of the courses up to this frame.  kEveryFrame reads them all, kSome
/// those that tell a long curve from another.
enum class Check { kEveryFrame, kSome };
bool Hold(const Courses& courses, std::int64_t frame, const HostParameters& host, Check check);

/// Answers the effect during one render, and notes what it read.
class Reading {
 public:
  /// `frame` is the layer frame that is rendered.
  Reading(const HostParameters& host, std::int64_t frame, std::shared_ptr<const Courses> known);

  minihost::Value At(int parameter, double layerFrame);

  /// The courses with what has been read.
  std::shared_ptr<const Courses> Result();

 private:
  Courses& Own();

  const HostParameters& host_;
  std::int64_t frame_;
  std::shared_ptr<const Courses> known_;
  std::shared_ptr<Courses> own_;  // null until something is added
};

}  // namespace openfx
