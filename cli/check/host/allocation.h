// The memory that an effect takes by `operator new`, counted, and refused on demand.
//
// The operators that this room puts in the place of the standard library's are exported by the tool, so a
// module that it loads takes its memory from them as well.
#pragma once

#include <cstdint>

namespace cli::check {

/// Of one thread.  As long as nobody counts, an allocation looks at one flag.
struct AllocationWatch {
  bool isCounting = false;        // set while the effect runs, and not while the host does
  std::uint64_t count = 0;        // allocations while counting
  std::uint64_t refuseFirst = 0;  // the calls to refuse, counted from 1; none at 0
  std::uint64_t refuseLast = 0;
  std::uint64_t refused = 0;
};

AllocationWatch& Allocations() noexcept;

/// The host's side of a call: what is allocated here is none of the effect's.
class HostSide {
 public:
  HostSide() noexcept : was_(Allocations().isCounting) { Allocations().isCounting = false; }
  ~HostSide() { Allocations().isCounting = was_; }
  HostSide(const HostSide&) = delete;
  HostSide& operator=(const HostSide&) = delete;

 private:
  bool was_;
};

}  // namespace cli::check
