#include "cli/check/promise.h"

#include <algorithm>
#include <optional>
#include <string_view>

#include "hostapi/suites.h"

namespace cli::check {
namespace {

// What one call that fails leads to.
struct Outcome {
  enum Kind {
    kIgnored,     // the frame goes on, to the same picture
    kGoesOn,      // to another picture
    kUnknowable,  // with the wrong idea of its pixels
    kEnds,
  } kind = kIgnored;
  Promise promise{};
};

constexpr Outcome Ends(PF_Err code, Shows shows) {
  return {Outcome::kEnds, {code, shows}};
}

bool IsPaint(const HostCall& call) {
  return call.entry == Entry::kCopy || call.entry == Entry::kFill;
}

class Reading {
 public:
  Reading(const CleanFrame& frame, const Fault& fault) : frame_(frame), fault_(fault) {}

  /// Of the call that stands there in the clean frame.
  Outcome At(std::size_t place) const { return IsThrow(fault_.lie) ? AfterThrow(place) : AfterLie(place); }

 private:
  // The calls before have prepared the background.
  bool IsPainted(std::size_t place) const {
    const auto before = frame_.calls.first(place);
    return std::ranges::any_of(before, IsPaint);
  }

  Shows ShownBefore(std::size_t place) const {
    return IsPainted(place) ? Shows::kBackground : Shows::kUntouched;
  }

  // Throwing is a failure at any place but on the way out, where what was lent is given back.
  Outcome AfterThrow(std::size_t place) const {
    switch (frame_.calls[place].entry) {
      case Entry::kReleaseSuite:
      case Entry::kDisposeWorld:
        return {};
      case Entry::kSample:
      case Entry::kProgress:
        return Ends(CodeOfThrow(fault_), Shows::kAny);
      default:
        return Ends(CodeOfThrow(fault_), ShownBefore(place));
    }
  }

  Outcome AfterLie(std::size_t place) const {
    const bool refused = fault_.lie == Lie::kError;
    switch (frame_.calls[place].entry) {
      case Entry::kAcquireSuite:
        return AfterLackOfSuite(place);
      case Entry::kReleaseSuite:
      case Entry::kDisposeWorld:
      case Entry::kCheckinParam:
        return {};
      case Entry::kNewHandle:
      case Entry::kLockHandle:
        return Ends(PF_Err_OUT_OF_MEMORY, Shows::kUntouched);
      case Entry::kHostNewHandle:
        return Ends(517, Shows::kCleared);
      case Entry::kNewWorld:
        return Ends(refused ? fault_.code : PF_Err_OUT_OF_MEMORY, Shows::kBackground);
      case Entry::kPixelFormat:
        return Ends(PF_Err_BAD_CALLBACK_PARAM, Shows::kUntouched);
      case Entry::kAbort:
        return Ends(fault_.code, Shows::kBackground);
      case Entry::kProgress:
        return Ends(fault_.code, Shows::kAny);
      case Entry::kCheckoutLayerPixels:
      case Entry::kCheckoutOutput:
        return Ends(refused ? fault_.code : PF_Err_NONE, Shows::kUntouched);
      case Entry::kFill:
      case Entry::kCopy:
      case Entry::kCheckoutLayer:
        return refused ? Ends(fault_.code, ShownBefore(place)) : Outcome{Outcome::kGoesOn};
      default:  // a parameter, a sample
        return {Outcome::kGoesOn};
    }
  }

  // The first question for worlds is what the pixels are, which the world's own flags tell but for float.
  Outcome AfterLackOfSuite(std::size_t place) const {
    const HostCall& call = frame_.calls[place];
    const auto before = frame_.calls.first(place);
    const bool hasReadParameters = std::ranges::any_of(
        before, [](const HostCall& earlier) { return earlier.entry == Entry::kCheckoutParam; });
    const bool isQuestion = !hasReadParameters && call.number == 2 && call.about != nullptr &&
                            static_cast<const char*>(call.about) == std::string_view(kPFWorldSuite);
    if (!isQuestion) {
      return Ends(PF_Err_BAD_CALLBACK_PARAM, ShownBefore(place));
    }
    return {frame_.depth == minihost::Depth::kFloat ? Outcome::kUnknowable : Outcome::kIgnored};
  }

  const CleanFrame& frame_;
  const Fault& fault_;
};

// The noise is needed; the batches are not, as flakes can be drawn one by one.
Promise WithoutMemory(const CleanFrame& frame, const Fault& fault) {
  if (frame.scenario.hasNoise && fault.call == 1) {
    return {PF_Err_OUT_OF_MEMORY, Shows::kBackground};
  }
  return {};
}

// Of samples and reports the last one's status is the frame's.
bool IsLastStatus(const CleanFrame& frame, std::size_t place) {
  const auto after = frame.calls.subspan(place + 1);
  return std::ranges::none_of(after, [](const HostCall& call) {
    return call.entry == Entry::kSample || call.entry == Entry::kProgress;
  });
}

}  // namespace

Promise PromiseOf(const CleanFrame& frame, const Fault& fault) {
  if (fault.entry == Entry::kOperatorNew) {
    return WithoutMemory(frame, fault);
  }
  const Reading reading(frame, fault);
  Promise promise;
  std::uint64_t number = 0;
  for (std::size_t place = 0; place < frame.calls.size(); ++place) {
    if (frame.calls[place].entry != fault.entry) {
      continue;
    }
    ++number;
    if (number < fault.call || (number > fault.call && !fault.fromThenOn)) {
      continue;
    }
    const Outcome outcome = reading.At(place);
    if (outcome.kind == Outcome::kEnds) {
      return outcome.promise;
    }
    if (outcome.kind != Outcome::kIgnored) {
      promise.shows = Shows::kAny;
    }
    promise.isUnknowable = promise.isUnknowable || outcome.kind == Outcome::kUnknowable;
    if (fault.entry == Entry::kSample && fault.lie == Lie::kError && IsLastStatus(frame, place)) {
      promise.code = fault.code;
    }
  }
  return promise;
}

}  // namespace cli::check
