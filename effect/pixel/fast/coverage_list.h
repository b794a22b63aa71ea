// The rasterizer's first half by batches: which pixels each flake covers, and with what alpha.
//
// With the blending of the list this is the fast form of DrawDroppyMB, equal to it bit for bit: a flake has
// each of its pixels once, so their order within the flake is free, and the flakes stand in their own order.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <type_traits>

#include "effect/pixel/fast/cpu_path.h"
#include "effect/pixel/fast/lanes.h"
#include "effect/pixel/fast/stroke_terms.h"
#include "effect/render/frame/scale.h"
#include "hostapi/worlds.h"

/// Covered pixels in blocks of one flake each.  A flake's last block is filled up by repeating its last
/// entry: the repeats read and write what that entry does, so nothing needs to tell them apart.  Entries
/// behind `count` may be read (up to kPrefetch of them) and hold valid offsets.
template <class T>
struct CoverageList {
  using Alpha = std::conditional_t<std::is_same_v<T, PF_PixelFloat>, float, std::int32_t>;
  static constexpr std::size_t kBlock = std::is_same_v<T, PF_PixelFloat> ? 4 : 8;
  static constexpr std::size_t kPrefetch = 64;

  /// Room for the widest step of ListCoverage over an image that wide.  Throws std::bad_alloc.
  explicit CoverageList(std::int32_t width);

  std::size_t capacity;
  std::size_t count = 0;                     // entries, a multiple of kBlock
  std::unique_ptr<std::uint32_t[]> offsets;  // bytes from the image's first pixel
  std::unique_ptr<Alpha[]> alphas;           // as the operator's top pixel has it
  std::unique_ptr<std::uint8_t[]> lanes;     // each block's flake
};

/// Where listing goes on: at a row of a flake, or at a flake's first.
struct ListCursor {
  static constexpr std::int32_t kFirstRow = -1;
  std::size_t lane;
  std::int32_t row = kFirstRow;
};

/// Lists the flakes from the cursor to `lastLane` - 1 into the emptied list.  False when the list is full:
/// blend it and call again with the same cursor.  `rowBytes` is the image's; offsets stay below 2^32.
template <class T>
bool ListCoverage(const StrokeTerms& terms, const FX_PARc& scale, std::size_t lastLane, ListCursor& cursor,
                  std::uint32_t rowBytes, CoverageList<T>& list, CpuPath path);
