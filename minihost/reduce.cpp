// Scaling by exact area: see ReducePixels.
//
// Along each axis a target pixel covers an interval of source pixels, of which only the two at its ends can
// be covered in part.  Measured in units of 1 / targetSize of a source pixel (with the sizes in lowest
// terms), all weights are whole numbers, so that 8-bit sums are exact.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numeric>
#include <type_traits>
#include <vector>

#include "minihost/copy.h"

namespace minihost {
namespace {

// The source columns (or rows) first..end - 1 under one target column (or row).
struct Cover {
  std::int32_t target;
  std::int32_t first;
  std::int32_t end;
  double firstWeight;
  double innerWeight;  // of each between the first and the last
  double lastWeight;   // 0 when there is only one
  double total;
};

// One axis of a scaling: where the rectangles begin, how long they are, and how far the images reach.
struct Axis {
  std::int64_t sourceBegin;
  std::int64_t sourceLength;
  std::int32_t sourceLimit;
  std::int64_t targetBegin;
  std::int64_t targetLength;
  std::int32_t targetLimit;
};

// Every target position inside the target image with source pixels under it.
std::vector<Cover> CoversOf(const Axis& axis) {
  const std::int64_t common = std::gcd(axis.sourceLength, axis.targetLength);
  // Lengths are below 2^32, so their products fit without a sign.
  const auto perTarget =
      static_cast<std::uint64_t>(axis.sourceLength / common);  // units a target pixel covers
  const auto perSource =
      static_cast<std::uint64_t>(axis.targetLength / common);  // units a source pixel is long
  const auto firstInside = static_cast<std::uint64_t>(std::max(std::int64_t{0}, -axis.sourceBegin));
  const std::int64_t reach = std::min(axis.sourceLength, axis.sourceLimit - axis.sourceBegin);

  std::vector<Cover> covers;
  const std::int64_t targetEnd =
      std::min(axis.targetBegin + axis.targetLength, std::int64_t{axis.targetLimit});
  for (std::int64_t target = std::max(std::int64_t{0}, axis.targetBegin); target < targetEnd; ++target) {
    const std::uint64_t begin = static_cast<std::uint64_t>(target - axis.targetBegin) * perTarget;
    const std::uint64_t end = begin + perTarget;
    const std::uint64_t first = std::max(begin / perSource, firstInside);
    const std::uint64_t last = (end - 1) / perSource;
    if (reach <= 0 || first >= static_cast<std::uint64_t>(reach)) continue;
    const std::uint64_t lastInside = std::min(last, static_cast<std::uint64_t>(reach) - 1);
    if (lastInside < first) continue;

    const auto weightOf = [&](std::uint64_t source) {
      return static_cast<double>(std::min((source + 1) * perSource, end) -
                                 std::max(source * perSource, begin));
    };
    const auto inner = static_cast<double>(perSource);
    Cover cover{};
    cover.target = static_cast<std::int32_t>(target);
    cover.first = static_cast<std::int32_t>(axis.sourceBegin + static_cast<std::int64_t>(first));
    cover.end = static_cast<std::int32_t>(axis.sourceBegin + static_cast<std::int64_t>(lastInside) + 1);
    cover.firstWeight = weightOf(first);
    cover.innerWeight = inner;
    cover.lastWeight = lastInside > first ? weightOf(lastInside) : 0;
    const std::uint64_t innerCount = lastInside > first + 1 ? lastInside - first - 1 : 0;
    cover.total = cover.firstWeight + cover.lastWeight + static_cast<double>(innerCount) * inner;
    covers.push_back(cover);
  }
  return covers;
}

// Weighted sums over an area: of alpha, of the weight that colours have (alpha where it is above 0), and of
// the colours by that weight.
struct Sums {
  double alpha;
  double colorWeight;
  double red;
  double green;
  double blue;
};

// What the sums over a run of whole pixels are kept in.  A run is at most Image::kMaxSide pixels long, so 8
// bits (16 a product) fit into 32 and 16 bits (30 a product) into 64, exactly.
template <class P>
using RunSum =
    std::conditional_t<kDepthOf<P> == Depth::kFloat, double,
                       std::conditional_t<kDepthOf<P> == Depth::kBits8, std::uint32_t, std::uint64_t>>;

template <class P>
struct RunOfPixels {
  using Number = RunSum<P>;
  Number alpha = 0;
  Number colorWeight = 0;
  Number red = 0;
  Number green = 0;
  Number blue = 0;

  void Add(const P& pixel) noexcept {
    const Number pixelAlpha = pixel.alpha;
    const Number weight = std::max(pixelAlpha, Number{0});
    alpha += pixelAlpha;
    colorWeight += weight;
    red += weight * pixel.red;
    green += weight * pixel.green;
    blue += weight * pixel.blue;
  }

  void AddTo(Sums& sums, double weight) const noexcept {
    sums.alpha += weight * static_cast<double>(alpha);
    sums.colorWeight += weight * static_cast<double>(colorWeight);
    sums.red += weight * static_cast<double>(red);
    sums.green += weight * static_cast<double>(green);
    sums.blue += weight * static_cast<double>(blue);
  }
};

template <class P>
void AddPixel(const P& pixel, double weight, Sums& sums) noexcept {
  RunOfPixels<P> run;
  run.Add(pixel);
  run.AddTo(sums, weight);
}

// Adds one source row, which weighs `rowWeight`, to the sums of all target columns.
template <class P>
void AddRow(const P* row, double rowWeight, const std::vector<Cover>& columns, Sums* sums) noexcept {
  for (const Cover& cover : columns) {
    Sums& sum = *sums++;
    AddPixel(row[cover.first], rowWeight * cover.firstWeight, sum);
    if (cover.end - cover.first == 1) continue;
    RunOfPixels<P> inner;
    for (int column = cover.first + 1; column < cover.end - 1; ++column) inner.Add(row[column]);
    inner.AddTo(sum, rowWeight * cover.innerWeight);
    AddPixel(row[cover.end - 1], rowWeight * cover.lastWeight, sum);
  }
}

template <class Channel>
Channel ChannelOf(double value) noexcept {
  if constexpr (std::is_floating_point_v<Channel>) {
    return static_cast<Channel>(value);
  } else {
    return static_cast<Channel>(std::floor(value + 0.5));
  }
}

template <class P>
P MeanOf(const Sums& sums, double area) noexcept {
  using Channel = decltype(P::alpha);
  P mean{};
  mean.alpha = ChannelOf<Channel>(sums.alpha / area);
  if (sums.colorWeight > 0) {
    mean.red = ChannelOf<Channel>(sums.red / sums.colorWeight);
    mean.green = ChannelOf<Channel>(sums.green / sums.colorWeight);
    mean.blue = ChannelOf<Channel>(sums.blue / sums.colorWeight);
  }
  return mean;
}

template <class P>
P* RowOf(const PF_LayerDef& world, std::int32_t row) noexcept {
  return reinterpret_cast<P*>(static_cast<std::byte*>(world.data) + std::int64_t{row} * world.rowbytes);
}

template <class P>
void Reduce(const PF_LayerDef& src, const PF_LayerDef& dst, const std::vector<Cover>& columns,
            const std::vector<Cover>& rows) {
  std::vector<Sums> sums(columns.size());
  for (const Cover& cover : rows) {
    std::fill(sums.begin(), sums.end(), Sums{});
    for (int row = cover.first; row < cover.end; ++row) {
      const double weight = row == cover.first     ? cover.firstWeight
                            : row == cover.end - 1 ? cover.lastWeight
                                                   : cover.innerWeight;
      AddRow(RowOf<const P>(src, row), weight, columns, sums.data());
    }
    P* target = RowOf<P>(dst, cover.target);
    for (std::size_t i = 0; i < columns.size(); ++i) {
      target[columns[i].target] = MeanOf<P>(sums[i], columns[i].total * cover.total);
    }
  }
}

}  // namespace

void ReducePixels(const PF_LayerDef& src, const PF_LRect& srcRect, const PF_LayerDef& dst,
                  const PF_LRect& dstRect, Depth depth) {
  const auto axis = [](std::int64_t sourceBegin, std::int64_t sourceEnd, std::int32_t sourceLimit,
                       std::int64_t targetBegin, std::int64_t targetEnd, std::int32_t targetLimit) {
    return Axis{sourceBegin, sourceEnd - sourceBegin, sourceLimit,
                targetBegin, targetEnd - targetBegin, targetLimit};
  };
  const Axis horizontal =
      axis(srcRect.left, srcRect.right, src.width, dstRect.left, dstRect.right, dst.width);
  const Axis vertical =
      axis(srcRect.top, srcRect.bottom, src.height, dstRect.top, dstRect.bottom, dst.height);
  if (std::min({horizontal.sourceLength, horizontal.targetLength, vertical.sourceLength,
                vertical.targetLength}) <= 0) {
    return;
  }
  const std::vector<Cover> columns = CoversOf(horizontal);
  const std::vector<Cover> rows = CoversOf(vertical);
  WithPixel(depth, [&](auto pixel) { Reduce<decltype(pixel)>(src, dst, columns, rows); });
}

}  // namespace minihost
