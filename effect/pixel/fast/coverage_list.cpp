#include "effect/pixel/fast/coverage_list.h"

#include <cstring>
#include <limits>

#if defined(__x86_64__)
#include <immintrin.h>
#endif

namespace {

// Snow is tall and narrow: a step takes a block of rows down one column, and the rows' terms are computed
// once for the block.
constexpr std::int32_t kBlockRows = 8;

template <class Value>
struct alignas(32) BlockOf {
  Value& operator[](std::int32_t row) { return rows[row]; }
  const Value& operator[](std::int32_t row) const { return rows[row]; }
  Value rows[kBlockRows];
};

constexpr float kFarAcross = std::numeric_limits<float>::infinity();

// What each row of the block adds to every column.
struct BlockTerms {
  BlockOf<float> across;
  BlockOf<float> along;
};

// What all columns have in common.
struct ListedImage {
  float xScaleInv;
  float yScaleInv;
  std::uint32_t rowBytes;
  BlockOf<std::uint32_t> rowOffsets;  // from a block's first row
};

// The flakes of blocks are noted this many at a time.
constexpr std::size_t kLanesStep = 8;

// One column of a block, before the rows that are not covered are left out.
template <class Alpha>
struct BlockEntries {
  BlockOf<std::int32_t> covered;  // -1 or 0
  BlockOf<std::uint32_t> offset;
  BlockOf<Alpha> alpha;
};

struct ColumnRange {
  std::int32_t first;
  std::int32_t last;
};

// One flake's terms out of the batch.
struct Stroke {
  float normalX;
  float normalY;
  float acrossOffset;
  float alongOffset;
  float pathLength;
  float peakAlpha;
  float columnsPerAcross;
  ColumnRange columns;
  std::int32_t lastRow;
};

VINTREL_INLINE Stroke StrokeOf(const StrokeTerms& terms, std::size_t lane) {
  return {terms.normalX[lane],          terms.normalY[lane],
          terms.acrossOffset[lane],     terms.alongOffset[lane],
          terms.pathLength[lane],       terms.peakAlpha[lane],
          terms.columnsPerAcross[lane], {terms.firstColumn[lane], terms.lastColumn[lane]},
          terms.lastRow[lane]};
}

// The lanes of flakes that may cover pixels, in their order, and their number.  Half of all flakes are out of
// sight, and no branch predictor can guess which.
VINTREL_INLINE std::size_t FindVisible(const StrokeTerms& terms, std::size_t firstLane, std::size_t lastLane,
                                       Lanes<std::uint8_t>& visible) {
  std::size_t count = 0;
  for (std::size_t lane = firstLane; lane < lastLane; ++lane) {
    visible[count] = static_cast<std::uint8_t>(lane);
    count += static_cast<std::size_t>(terms.firstRow[lane] <= terms.lastRow[lane]);
  }
  return count;
}

// AppendRows writes the covered entries one after another and returns their number.  It may write eight
// entries whatever the number, and does not branch on the coverage, which no predictor can guess.
namespace baseline {

template <class Alpha>
VINTREL_INLINE std::size_t AppendRows(const BlockEntries<Alpha>& entries, std::uint32_t* offsets,
                                      Alpha* alphas) {
  std::size_t count = 0;
  for (std::int32_t k = 0; k < kBlockRows; ++k) {
    offsets[count] = entries.offset[k];
    alphas[count] = entries.alpha[k];
    count -= static_cast<std::size_t>(entries.covered[k]);
  }
  return count;
}

#include "effect/pixel/fast/coverage_kernel.inc"

}  // namespace baseline

#if defined(__x86_64__)

// For each set of covered rows, the lanes that bring them to the front.
struct PackTable {
  alignas(32) std::int32_t lanes[256][kBlockRows];
};

constexpr PackTable MakePackTable() {
  PackTable table = {};
  for (std::int32_t set = 0; set < 256; ++set) {
    std::int32_t count = 0;
    for (std::int32_t k = 0; k < kBlockRows; ++k) {
      if ((set >> k & 1) != 0) {
        table.lanes[set][count++] = k;
      }
    }
  }
  return table;
}

constexpr PackTable kPackTable = MakePackTable();

VINTREL_BEGIN_AVX2
namespace avx2 {

template <class Alpha>
VINTREL_INLINE std::size_t AppendRows(const BlockEntries<Alpha>& entries, std::uint32_t* offsets,
                                      Alpha* alphas) {
  const auto* covered = reinterpret_cast<const float*>(entries.covered.rows);
  const int set = _mm256_movemask_ps(_mm256_load_ps(covered));
  const __m256i order = _mm256_load_si256(reinterpret_cast<const __m256i*>(kPackTable.lanes[set]));
  const __m256i offset = _mm256_load_si256(reinterpret_cast<const __m256i*>(entries.offset.rows));
  const __m256i alpha = _mm256_load_si256(reinterpret_cast<const __m256i*>(entries.alpha.rows));
  _mm256_storeu_si256(reinterpret_cast<__m256i*>(offsets), _mm256_permutevar8x32_epi32(offset, order));
  _mm256_storeu_si256(reinterpret_cast<__m256i*>(alphas), _mm256_permutevar8x32_epi32(alpha, order));
  return static_cast<std::size_t>(__builtin_popcount(static_cast<unsigned>(set)));
}

#include "effect/pixel/fast/coverage_kernel.inc"

}  // namespace avx2
VINTREL_END_TARGET

VINTREL_BEGIN_AVX512
namespace avx512 {

template <class Alpha>
VINTREL_INLINE std::size_t AppendRows(const BlockEntries<Alpha>& entries, std::uint32_t* offsets,
                                      Alpha* alphas) {
  const __m256i covered = _mm256_load_si256(reinterpret_cast<const __m256i*>(entries.covered.rows));
  const __mmask8 set = _mm256_movepi32_mask(covered);
  const __m256i offset = _mm256_load_si256(reinterpret_cast<const __m256i*>(entries.offset.rows));
  const __m256i alpha = _mm256_load_si256(reinterpret_cast<const __m256i*>(entries.alpha.rows));
  _mm256_storeu_si256(reinterpret_cast<__m256i*>(offsets), _mm256_maskz_compress_epi32(set, offset));
  _mm256_storeu_si256(reinterpret_cast<__m256i*>(alphas), _mm256_maskz_compress_epi32(set, alpha));
  return static_cast<std::size_t>(__builtin_popcount(set));
}

#include "effect/pixel/fast/coverage_kernel.inc"

}  // namespace avx512
VINTREL_END_TARGET

#endif

}  // namespace

template <class T>
CoverageList<T>::CoverageList(std::int32_t width) {
  constexpr std::size_t kLeast = 4096;
  const std::size_t widest = static_cast<std::size_t>(width) * kBlockRows;
  capacity = widest > kLeast ? widest : kLeast;
  // Each flake may fill up a block, and behind the last entry AppendRows may write a block of rows.
  const std::size_t size = capacity + kLanes * kBlock + kPrefetch + kBlockRows;
  offsets = std::make_unique_for_overwrite<std::uint32_t[]>(size);
  alphas = std::make_unique_for_overwrite<Alpha[]>(size);
  lanes = std::make_unique_for_overwrite<std::uint8_t[]>(size / kBlock + kLanesStep);
  // A flake that covers nothing, before any other, has these as its last entry.
  offsets[0] = 0;
  alphas[0] = 0;
}

template <class T>
bool ListCoverage(const StrokeTerms& terms, const FX_PARc& scale, std::size_t lastLane, ListCursor& cursor,
                  std::uint32_t rowBytes, CoverageList<T>& list, CpuPath path) {
  ListedImage image = {scale.xScaleInvF, scale.yScaleInvF, rowBytes, {}};
  for (std::int32_t k = 0; k < kBlockRows; ++k) {
    image.rowOffsets[k] = static_cast<std::uint32_t>(k) * rowBytes;
  }
#if defined(__x86_64__)
  const auto kernel = SelectPath(path, baseline::List<T>, avx2::List<T>, avx512::List<T>);
#else
  const auto kernel = SelectPath(path, baseline::List<T>, baseline::List<T>, baseline::List<T>);
#endif
  return kernel(terms, image, lastLane, cursor, list);
}

#define VINTREL_INSTANTIATE(T)                                                                            \
  template struct CoverageList<T>;                                                                        \
  template bool ListCoverage(const StrokeTerms&, const FX_PARc&, std::size_t, ListCursor&, std::uint32_t, \
                             CoverageList<T>&, CpuPath);
VINTREL_INSTANTIATE(PF_Pixel)
VINTREL_INSTANTIATE(PF_Pixel16)
VINTREL_INSTANTIATE(PF_PixelFloat)
#undef VINTREL_INSTANTIATE
