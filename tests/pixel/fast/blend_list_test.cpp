// Blending a list against the plain operators, one entry after the other.
#include "effect/pixel/fast/blend_list.h"

#include <algorithm>
#include <cstring>

#include "effect/pixel/pixel_type.h"
#include "effect/pixel/transfer.h"
#include "tests/pixel/fast/stage.h"

namespace {

template <class T>
struct RandomList {
  using Channel = typename PixelType<T>::Channel;
  static constexpr std::int32_t kPixels = 97;
  static constexpr std::size_t kStride = sizeof(T) + 4;  // offsets need be no multiples of a pixel
  static constexpr std::size_t kBlock = CoverageList<T>::kBlock;

  explicit RandomList(std::uint32_t seed) : random(seed), list(kPixels), image(kPixels * kStride) {
    for (std::int32_t i = 0; i < kPixels; ++i) {
      const T pixel = Pixel();
      std::memcpy(&image[static_cast<std::size_t>(i) * kStride], &pixel, sizeof pixel);
    }
    for (T& color : colors) {
      color = Pixel();
    }
    list.count = 40 * kBlock;
    for (std::size_t block = 0; block < list.count / kBlock; ++block) {
      list.lanes[block] = static_cast<std::uint8_t>(random() % kLanes);
      const std::size_t filled = random() % 3 == 0 ? 1 + random() % kBlock : kBlock;
      const std::uint32_t start = random() % kPixels, step = 1 + random() % 12;  // kPixels is a prime
      for (std::size_t k = 0; k < kBlock; ++k) {
        const std::size_t entry = block * kBlock + k;
        const auto place = static_cast<std::uint32_t>((start + step * std::min(k, filled - 1)) % kPixels);
        list.offsets[entry] = place * static_cast<std::uint32_t>(kStride);
        list.alphas[entry] = k < filled ? Number() : list.alphas[entry - 1];
      }
    }
    std::fill_n(&list.offsets[list.count], CoverageList<T>::kPrefetch, 0u);
  }

  /// Black, white, the steps beside them, all between, and in float what is over-range or faint.
  Channel Number() {
    constexpr auto kWhite = static_cast<Channel>(PixelType<T>::kWhite);
    if constexpr (std::is_floating_point_v<Channel>) {
      const float numbers[] = {0, kWhite, 1.75f, 1e-9f, 0.5f, static_cast<float>(random() % 4096) / 4095.0f};
      return numbers[std::min(random() % 10, 5u)];
    } else {
      const std::uint32_t numbers[] = {0, kWhite, random() % 16, kWhite - 1u, random() % (kWhite + 1u)};
      return static_cast<Channel>(numbers[std::min(random() % 8, 4u)]);
    }
  }
  T Pixel() { return {Number(), Number(), Number(), Number()}; }

  std::vector<std::byte> Plain(std::size_t begin, std::size_t end, TransferFunc<T> op) const {
    std::vector<std::byte> picture = image;
    for (std::size_t entry = begin; entry < end; ++entry) {
      const bool repeats = entry % kBlock != 0 && list.offsets[entry] == list.offsets[entry - 1];
      if (repeats) {
        continue;
      }
      T top = colors[list.lanes[entry / kBlock]], bottom;
      top.alpha = static_cast<Channel>(list.alphas[entry]);
      std::memcpy(&bottom, &picture[list.offsets[entry]], sizeof bottom);
      op(&top, &bottom, bottom);
      std::memcpy(&picture[list.offsets[entry]], &bottom, sizeof bottom);
    }
    return picture;
  }

  Random random;
  CoverageList<T> list;
  Lanes<T> colors;
  std::vector<std::byte> image;
};

template <class T>
class Blend : public testing::Test {};
TYPED_TEST_SUITE(Blend, Depths);

TYPED_TEST(Blend, IsTheOperatorEntryByEntry) {
  using T = TypeParam;
  const std::pair<BlendMode, TransferFunc<T>> modes[] = {{BlendMode::kComposite, JCompositeT<T>},
                                                         {BlendMode::kLighten, JLightenT<T>},
                                                         {BlendMode::kCompositeUnder, JCompositeUnderT<T>}};
  for (std::uint32_t seed = 1; seed <= 1500; ++seed) {
    RandomList<T> random(seed);
    const std::size_t begin = random.random() % 20 * random.kBlock;
    const std::size_t end = random.list.count - random.random() % 20 * random.kBlock;
    for (const auto& [mode, op] : modes) {
      const std::vector<std::byte> want = random.Plain(begin, end, op);
      for (const CpuPath path : SupportedPaths()) {
        std::vector<std::byte> got = random.image;
        BlendList(random.list, begin, end, random.colors, mode, got.data(), path);
        const auto wrong = std::mismatch(got.begin(), got.end(), want.begin()).first - got.begin();
        ASSERT_EQ(wrong, std::ssize(want)) << "byte of the image; seed " << seed << ", mode "
                                           << static_cast<int>(mode) << ", path " << static_cast<int>(path);
      }
    }
  }
}

}  // namespace
