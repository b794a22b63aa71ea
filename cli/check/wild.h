// Values that no parameter should have, as a host might hand them out all the same.
#pragma once

#include <cstdint>

#include "cli/check/random.h"
#include "hostapi/params.h"

namespace cli::check {

/// Of whole numbers, such as times and steps: the ends of integers, zero and their neighbors.
std::int32_t WildInteger(Random& random);

/// What a host's check-outs hand out: one value in `share` is wild (zeros, ends of integers, what no float or
/// integer holds, infinities, NaN), and flakes are few, so that a small picture does not take long.  `flakes`
/// is the index of their number.
class WildParameters {
 public:
  WildParameters(Random& random, std::uint64_t share, std::int32_t flakes)
      : random_(random), share_(share), flakes_(flakes) {}

  void operator()(std::int32_t index, std::int32_t time, PF_ParamDef& def) const;

 private:
  Random& random_;
  std::uint64_t share_;
  std::int32_t flakes_;
};

}  // namespace cli::check
