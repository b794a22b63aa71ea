// Stroke terms and the list of covered pixels against what DrawDroppyMB hands to its operator.
#include "effect/pixel/fast/coverage_list.h"

#include <algorithm>
#include <cmath>
#include <set>

#include "effect/pixel/pixel_type.h"
#include "effect/pixel/rasterizer.h"
#include "tests/pixel/fast/stage.h"

namespace {

/// Which byte of the image a covered pixel begins at, and the alpha laid on it.
using Entry = std::pair<std::int64_t, double>;
using Entries = std::vector<Entry>;
Entries recorded;
const void* firstPixel;

template <class T>
void Record(const T* top, const T* bottom, T&) {
  recorded.push_back(
      {reinterpret_cast<const std::byte*>(bottom) - static_cast<const std::byte*>(firstPixel), top->alpha});
}

/// Flakes over an image of some scale: inside, across its edges and far away, still, level, steep and long,
/// thin and thick; some are no numbers, or too far for any.
template <class T>
struct RandomStrokes {
  explicit RandomStrokes(std::uint32_t seed) : random(seed) {
    utils.ansi.sqrt = [](double v) { return std::sqrt(v); };
    inData.utils = &utils;
    const PF_RationalScale ratios[] = {{1, 1}, {1, 1}, {1, 2}, {2, 3}, {3333, 10'000}, {1, 100}};
    inData.downsample_x = ratios[random() % 6];
    inData.downsample_y = ratios[random() % 6];
    inData.pixel_aspect_ratio = random() % 2 == 0 ? PF_RationalScale{1, 1} : PF_RationalScale{768, 1405};
    image.width = static_cast<std::int32_t>(1 + random() % (seed % 20 == 0 ? 900 : 90));
    image.height = static_cast<std::int32_t>(1 + random() % 60);
    if (seed % 20 == 10) {  // taller than is near, at a scale that is not too small for that
      image.height = 600;
      inData.downsample_y = {1, 60};
    }
    image.rowbytes = image.width * static_cast<std::int32_t>(sizeof(T)) + 12;
    pixels.resize(static_cast<std::size_t>(image.rowbytes) * static_cast<std::size_t>(image.height));
    image.data = pixels.data();
    const FX_PARc scale(&inData);
    const double width = image.width * scale.xScaleInv, height = image.height * scale.yScaleInv;
    for (std::size_t i = 0; i < kLanes; ++i) {
      strokes.startX[i] = Number(-0.3 * width, 1.3 * width);
      strokes.startY[i] = Number(-0.3 * height, 1.3 * height);
      const double reach = random() % 4 == 0 ? 2 * width : 8;
      strokes.endX[i] = strokes.startX[i] + (random() % 5 == 0 ? 0 : Number(-reach, reach));
      strokes.endY[i] = strokes.startY[i] + (random() % 5 == 0 ? 0 : Number(-reach, reach));
      const float sizes[] = {-1, 0, Number(0, 1), Number(0, 1), Number(0, 4), Number(0, 4), Number(0, 60)};
      strokes.size[i] = sizes[random() % 7];
    }
  }

  float Number(double low, double high) {
    const float odd[] = {1e4f, -4e4f, 3e9f, 1e30f, -1e38f, INFINITY, NAN};
    if (random() % 200 == 0) {
      return odd[random() % 7];
    }
    return static_cast<float>(low + (high - low) * (random() % 65536) / 65535.0);
  }

  /// What DrawDroppyMB does with a flake, in the order of the image's bytes.
  Entries Plain(std::size_t lane, typename PixelType<T>::Channel peakAlpha) {
    const FX_PARc scale(&inData);
    recorded.clear();
    firstPixel = image.data;
    DrawDroppyMB<T>(&inData, &scale, strokes.size[lane], {strokes.startX[lane], strokes.startY[lane]},
                    {strokes.endX[lane], strokes.endY[lane]}, {peakAlpha, 0, 0, 0}, &image, Record<T>);
    return recorded;
  }

  Random random;
  PF_UtilCallbacks utils{};
  PF_InData inData{};
  PF_LayerDef image{};
  std::vector<std::byte> pixels;
  StrokeBatch strokes;
};

/// Adds a list to the entries of its flakes.  A block's repeats of an entry count once; a pixel in two blocks
/// would be blended twice, and so stands twice.
template <class T>
void Collect(const CoverageList<T>& list, std::int64_t imageBytes, std::vector<Entries>& flakes) {
  constexpr std::size_t kBlock = CoverageList<T>::kBlock;
  ASSERT_EQ(list.count % kBlock, 0u);
  for (std::size_t entry = 0; entry < list.count; entry += kBlock) {
    const std::size_t lane = list.lanes[entry / kBlock];
    ASSERT_TRUE(entry == 0 || lane >= list.lanes[entry / kBlock - 1]) << "flakes stand in their order";
    std::set<Entry> block;
    for (std::size_t k = 0; k < kBlock; ++k) {
      block.insert({list.offsets[entry + k], static_cast<double>(list.alphas[entry + k])});
    }
    flakes[lane].insert(flakes[lane].end(), block.begin(), block.end());
  }
  for (std::size_t k = 0; k < CoverageList<T>::kPrefetch; ++k) {
    ASSERT_LT(list.offsets[list.count + k], imageBytes) << "what is fetched beyond the list is in the image";
  }
}

template <class T>
class Coverage : public testing::Test {};
TYPED_TEST_SUITE(Coverage, Depths);

TYPED_TEST(Coverage, ListsWhatTheRasterizerDraws) {
  using T = TypeParam;
  std::size_t covered = 0, fullLists = 0;
  for (std::uint32_t seed = 1; seed <= 300; ++seed) {
    RandomStrokes<T> random(seed);
    const FX_PARc scale(&random.inData);
    const PF_LayerDef& image = random.image;
    const auto peakAlpha = static_cast<typename PixelType<T>::Channel>(
        static_cast<float>(PixelType<T>::kWhite) / static_cast<float>(1 << seed % 3));
    const std::size_t first = seed % 5 == 0 ? random.random() % kLanes : 0;
    const std::size_t last = first + random.random() % (kLanes - first) + 1;
    std::vector<Entries> plain(kLanes);
    for (std::size_t lane = first; lane < last; ++lane) {
      plain[lane] = random.Plain(lane, peakAlpha);
      covered += plain[lane].size();
    }
    for (const CpuPath path : SupportedPaths()) {
      StrokeTerms terms;
      SetStrokeTerms(random.strokes, static_cast<float>(peakAlpha), scale, image.width, image.height, terms,
                     path);
      CoverageList<T> list(image.width);
      ListCursor cursor = {.lane = first};
      std::vector<Entries> flakes(kLanes);
      for (bool done = false; !done; fullLists += !done) {
        done =
            ListCoverage(terms, scale, last, cursor, static_cast<std::uint32_t>(image.rowbytes), list, path);
        ASSERT_NO_FATAL_FAILURE(Collect(list, std::ssize(random.pixels), flakes)) << "seed " << seed;
      }
      for (std::size_t lane = 0; lane < kLanes; ++lane) {
        std::sort(flakes[lane].begin(), flakes[lane].end());
        ASSERT_EQ(flakes[lane], plain[lane])
            << "seed " << seed << ", lane " << lane << ", path " << static_cast<int>(path);
      }
    }
  }
  EXPECT_TRUE(covered > 100'000 && fullLists > 20) << covered << " pixels, " << fullLists << " full lists";
}

}  // namespace
