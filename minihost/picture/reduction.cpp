#include "minihost/picture/reduction.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <numeric>
#include <type_traits>
#include <vector>

#include "minihost/picture/wide_pixel.h"
#include "minihost/picture/world.h"

namespace minihost {
namespace {

// Along each axis a target pixel covers an interval of source pixels, of which only the two at its ends can
// be covered in part.  Measured in units of 1 / targetSize of a source pixel (with the sizes in lowest
// terms), all weights are whole numbers, so that 8-bit sums are exact.

// The source columns (or rows) from `first` to before `end` under one target column (or row).  Those from
// `wholeFirst` to before `wholeEnd` are covered wholly; the others, at most one on each side, in part.
struct Cover {
  std::int32_t target;
  std::int32_t first;
  std::int32_t wholeFirst;
  std::int32_t wholeEnd;
  std::int32_t end;
  double firstWeight;  // of `first` when it is covered in part
  double wholeWeight;
  double lastWeight;  // of `end` - 1 when it is covered in part
  double total;

  double WeightOf(std::int32_t source) const noexcept {
    return source < wholeFirst ? firstWeight : source < wholeEnd ? wholeWeight : lastWeight;
  }
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
  // Units that a target pixel covers, and that a source pixel is long.  Lengths are below 2^32, so their
  // products fit without a sign.
  const auto perTarget = static_cast<std::uint64_t>(axis.sourceLength / common);
  const auto perSource = static_cast<std::uint64_t>(axis.targetLength / common);
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
    if (reach <= 0 || first >= static_cast<std::uint64_t>(reach)) {
      continue;
    }
    const std::uint64_t lastInside = std::min(last, static_cast<std::uint64_t>(reach) - 1);
    if (lastInside < first) {
      continue;
    }

    const auto weightOf = [&](std::uint64_t source) {
      return static_cast<double>(std::min((source + 1) * perSource, end) -
                                 std::max(source * perSource, begin));
    };
    const auto whole = static_cast<double>(perSource);
    Cover cover{};
    cover.target = static_cast<std::int32_t>(target);
    cover.first = static_cast<std::int32_t>(axis.sourceBegin + static_cast<std::int64_t>(first));
    cover.end = static_cast<std::int32_t>(axis.sourceBegin + static_cast<std::int64_t>(lastInside) + 1);
    cover.firstWeight = weightOf(first);
    cover.wholeWeight = whole;
    cover.lastWeight = weightOf(lastInside);
    cover.wholeFirst = cover.first + (cover.firstWeight < whole ? 1 : 0);
    cover.wholeEnd = std::max(cover.wholeFirst, cover.end - (cover.lastWeight < whole ? 1 : 0));
    cover.total = static_cast<double>(cover.wholeEnd - cover.wholeFirst) * whole +
                  (cover.first < cover.wholeFirst ? cover.firstWeight : 0) +
                  (cover.wholeEnd < cover.end ? cover.lastWeight : 0);
    covers.push_back(cover);
  }
  return covers;
}

// Weighted sums over an area: of alpha and, by the weight that colours have (alpha where it is above 0), of
// red, green and blue; and of that weight.
struct Sums {
  WideChannels channels;
  double colorWeight;
};

// Sums over whole pixels of one row.  Integers are summed exactly: a product of 16 bits has 30, and a row is
// at most Image::kMaxSide pixels long.
template <class P>
class Run {
 public:
  void Add(const P* pixels, std::int32_t count) noexcept {
    for (const P* pixel = pixels; pixel != pixels + count; ++pixel) {
      const WideChannels wide = Widen(*pixel);
      const double weight = std::max(wide.alphaRed[0], 0.0);
      alphaRed_ += wide.alphaRed * Doubles{1, weight};
      greenBlue_ += wide.greenBlue * weight;
      colorWeight_ += weight;
    }
  }

  void AddTo(Sums& sums, double weight) const noexcept {
    sums.channels.alphaRed += alphaRed_ * weight;
    sums.channels.greenBlue += greenBlue_ * weight;
    sums.colorWeight += colorWeight_ * weight;
  }

 private:
  Doubles alphaRed_{};
  Doubles greenBlue_{};
  double colorWeight_ = 0;
};

// 8 bits in integers, two pixels at a time: products fit into 16 bits and sums into 32.
template <>
class Run<PF_Pixel> {
 public:
  void Add(const PF_Pixel* pixels, std::int32_t count) noexcept {
    std::int32_t i = 0;
    for (; i + 1 < count; i += 2) {
      AddPair(BitsOf<std::uint64_t>(pixels + i));
    }
    if (i < count) {
      AddPair(BitsOf<std::uint32_t>(pixels + i));
    }
  }

  void AddTo(Sums& sums, double weight) const noexcept {
    const WideChannels wide = Widen(sums_);
    sums.channels.alphaRed += wide.alphaRed * weight;
    sums.channels.greenBlue += wide.greenBlue * weight;
    sums.colorWeight += wide.alphaRed[0] * weight;
  }

 private:
  template <class Bits>
  static Bits BitsOf(const PF_Pixel* pixels) noexcept {
    Bits bits;
    std::memcpy(&bits, pixels, sizeof bits);
    return bits;
  }

  // A pixel of zeros adds nothing.
  void AddPair(std::uint64_t pixels) noexcept {
    const Words channels = Widen(reinterpret_cast<Bytes>(LongIntegers{pixels, 0}));
    const Words alphas = __builtin_shufflevector(channels, channels, 0, 0, 0, 0, 4, 4, 4, 4);
    const Words colors = {0, 0xFFFF, 0xFFFF, 0xFFFF, 0, 0xFFFF, 0xFFFF, 0xFFFF};
    const Words one = {1, 0, 0, 0, 1, 0, 0, 0};
    const Words products = channels * ((alphas & colors) | one);
    sums_ += WidenLow(products) + WidenHigh(products);
  }

  Integers sums_{};
};

template <class P>
void AddPixel(const P& pixel, double weight, Sums& sums) noexcept {
  Run<P> run;
  run.Add(&pixel, 1);
  run.AddTo(sums, weight);
}

// Adds one source row, which weighs `rowWeight`, to the sums of all target columns.
template <class P>
void AddRow(const P* row, double rowWeight, const std::vector<Cover>& columns, Sums* sums) noexcept {
  for (const Cover& cover : columns) {
    Sums& sum = *sums++;
    if (cover.first < cover.wholeFirst) {
      AddPixel(row[cover.first], rowWeight * cover.firstWeight, sum);
    }
    Run<P> run;
    run.Add(row + cover.wholeFirst, cover.wholeEnd - cover.wholeFirst);
    run.AddTo(sum, rowWeight * cover.wholeWeight);
    if (cover.wholeEnd < cover.end) {
      AddPixel(row[cover.end - 1], rowWeight * cover.lastWeight, sum);
    }
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
  mean.alpha = ChannelOf<Channel>(sums.channels.alphaRed[0] / area);
  if (sums.colorWeight > 0) {
    mean.red = ChannelOf<Channel>(sums.channels.alphaRed[1] / sums.colorWeight);
    mean.green = ChannelOf<Channel>(sums.channels.greenBlue[0] / sums.colorWeight);
    mean.blue = ChannelOf<Channel>(sums.channels.greenBlue[1] / sums.colorWeight);
  }
  return mean;
}

template <class P>
void Reduce(const PF_LayerDef& src, const PF_LayerDef& dst, const std::vector<Cover>& columns,
            const std::vector<Cover>& rows) {
  std::vector<Sums> sums(columns.size());
  for (const Cover& cover : rows) {
    std::fill(sums.begin(), sums.end(), Sums{});
    for (int row = cover.first; row < cover.end; ++row) {
      AddRow(RowOf<const P>(src, row), cover.WeightOf(row), columns, sums.data());
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
