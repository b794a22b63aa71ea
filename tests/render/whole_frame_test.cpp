// Whole frames through the effect's entry, against the reference and against each other.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <future>
#include <utility>
#include <vector>

#include "effect/pixel/pixel_type.h"
#include "minihost/instance.h"
#include "minihost/picture/copy.h"
#include "minihost/picture/sampling.h"
#include "tests/render/reference_flake.h"
#include "tests/support/random_frame.h"

namespace {

using minihost::Frame, minihost::Image, minihost::Instance, minihost::ParameterSet;
using minihost::Point, minihost::Protocol, minihost::Track;

const std::shared_ptr<const minihost::Effect>& Snow() {
  static const auto effect = minihost::Effect::Linked(MainEntry);
  return effect;
}

ParameterSet Scene(const std::vector<ParameterIndex>& indices = {}, const std::vector<double>& values = {}) {
  ParameterSet set(Snow()->SharedParameters());
  for (std::size_t i = 0; i < indices.size(); ++i) {
    set.Set(indices[i], minihost::Value(values[i]));
  }
  return set;
}

/// Valid values all over the ranges, with keys on Speed, Wind, Amount and Offset (Frequency takes none).
ParameterSet RandomScene(std::uint32_t seed) {
  SnowLook look = RandomFrame<PF_Pixel>(seed).look;
  ParameterSet set = Scene();
  for (const SnowRange& range : kSnowRanges) {
    for (const ParameterIndex index : range.of) {
      set.Set(index, minihost::Value(look.open[index]));
    }
  }
  set.Set(kColor, minihost::Value(
                      minihost::Color{1.0 * look.color.red, 1.0 * look.color.green, 1.0 * look.color.blue}));
  set.Set(kSpeed, Track({{0, 3.7 + seed}, {2.5, 200.3}, {6, look.open[kSpeed]}}));
  set.Set(kWind, Track({{1, -30.1}, {4, look.open[kWind], minihost::Ease::kSmooth}, {9, 12.9}}));
  set.Set(kAmount, Track({{0, look.open[kAmount]}, {5, look.close[kAmount]}}));
  set.Set(kOffset, Track({{0, Point{50, 50}}, {7, Point{-13.7, 207.1}}}));
  return set;
}

SnowLook LookAt(const ParameterSet& set, const Frame& frame) {
  const double now = frame.time, local = frame.timing.localTimeStep;
  const double open = frame.timing.shutterDegrees > 0 ? frame.timing.shutterDegrees / 360 : 1.0;
  const double end = now + std::trunc(open * frame.timing.timeStep);
  const auto at = [&](int index, double ticks) { return set.At(index, ticks / std::abs(local)); };
  const auto number = [&](int index, double ticks) { return std::get<double>(at(index, ticks)); };

  SnowLook look;
  for (const SnowRange& range : kSnowRanges) {
    for (const ParameterIndex index : range.of) {
      look.open[index] = number(index, now);
      look.close[index] = number(index, end);
    }
  }
  const auto color = std::get<minihost::Color>(at(kColor, now));
  look.color = {255, static_cast<std::uint8_t>(color.red), static_cast<std::uint8_t>(color.green),
                static_cast<std::uint8_t>(color.blue)};
  look.extent = {1.0 * frame.input->Width(), 1.0 * frame.input->Height()};
  const auto offset = [&](double ticks) {
    const auto point = std::get<Point>(at(kOffset, ticks));
    const auto fixed = [](double v) { return std::round(v * 65536) / 65536; };
    return DoublePoint{fixed(point.x / 100 * look.extent.x), fixed(point.y / 100 * look.extent.y)};
  };
  look.offset = offset(now);
  look.offsetEnd = offset(end);

  const double frames = std::floor(now / local), part = now / local - frames;
  for (const ParameterIndex index : {kSpeed, kWind, kFrequency}) {
    for (double i = 0; i <= frames; ++i) {
      look.sum[index] += number(index, i * local);
    }
    if (part > 0) {
      look.sum[index] += part * number(index, (std::max(frames, -1.0) + 2) * local);
    }
  }
  return look;
}

template <class T>
Image Reference(const ParameterSet& set, const Frame& frame) {
  FrameHost host;
  host.inData.time_step = frame.timing.timeStep;
  host.inData.local_time_step = frame.timing.localTimeStep;
  host.inData.time_scale = frame.timing.timeScale;
  host.inData.shutter_angle = static_cast<PF_Fixed>(frame.timing.shutterDegrees / 360 * 65536);
  host.inData.downsample_x = frame.downsampleX;
  host.inData.downsample_y = frame.downsampleY;
  host.inData.pixel_aspect_ratio = frame.pixelAspectRatio;
  FrameSetup<T> record{{.scale = FX_PARc(&host.inData), .inData = &host.inData}};
  FillRecord(LookAt(set, frame), record);
  const Image& input = *frame.input;
  Image output =
      record.compositeWithOriginal ? input.Clone() : Image(input.Width(), input.Height(), input.PixelDepth());
  const Image light =
      minihost::Resized(input, std::max(2, input.Width() / 10), std::max(2, input.Height() / 10));
  PF_LayerDef lightWorld = light.World(), outputWorld = output.World();
  record.illumWorld = &lightWorld;
  record.output = &outputWorld;
  record.sampleFn = [](PF_ProgPtr, PF_Fixed x, PF_Fixed y, const PF_SampPB* params, T* dst) {
    *dst = minihost::SampleBilinear<T>(*params->src, x, y);
    return PF_Err_NONE;
  };
  EXPECT_EQ(reference::DrawFlakes(record), PF_Err_NONE);
  return output;
}

template <class T>
bool SameImage(const Image& a, const Image& b) {
  for (int row = 0; row < a.Height(); ++row) {
    if (std::memcmp(a.Row<T>(row).data(), b.Row<T>(row).data(), a.Row<T>(row).size_bytes()) != 0) {
      return false;
    }
  }
  return true;
}

/// Transparent, opaque and half-transparent stripes of changing colour.
template <class T>
Image Plate(int width, int height) {
  const auto channel = [](int v) {
    return static_cast<typename PixelType<T>::Channel>(v % 8 / 7.0 * PixelType<T>::kWhite);
  };
  constexpr int kAlphas[] = {0, 7, 4};
  Image plate(width, height, minihost::kDepthOf<T>);
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      plate.Row<T>(y)[static_cast<std::size_t>(x)] = {channel(kAlphas[x / 3 % 3]), channel(x + y),
                                                      channel(x * y), channel(3 * y)};
    }
  }
  return plate;
}

Frame FrameOf(const Image& plate, std::int32_t time, const minihost::FrameTiming& timing = {}) {
  Frame frame;
  frame.input = &plate;
  frame.time = time;
  frame.timing = timing;
  return frame;
}

/// Renders, and holds the instance to its loans.
Image Rendered(Instance& instance, Frame frame) {
  const PF_LRect area = frame.tile.value_or(PF_LRect{0, 0, frame.input->Width(), frame.input->Height()});
  Image output(area.right - area.left, area.bottom - area.top, frame.input->PixelDepth());
  frame.output = &output;
  const minihost::RenderResult result = instance.Render(frame);
  EXPECT_EQ(result.err, 0) << result.message;
  EXPECT_EQ(instance.HostLedger().Outstanding(), 0u)
      << testing::PrintToString(instance.HostLedger().Missing());
  EXPECT_TRUE(instance.HostLedger().Faults().empty())
      << testing::PrintToString(instance.HostLedger().Faults());
  return output;
}

Image RenderedAlone(const ParameterSet& set, const Frame& frame) {
  Instance instance(Snow(), set);
  return Rendered(instance, frame);
}

template <class T>
class WholeFrame : public testing::Test {};
using Depths = testing::Types<PF_Pixel, PF_Pixel16, PF_PixelFloat>;
TYPED_TEST_SUITE(WholeFrame, Depths);

TYPED_TEST(WholeFrame, RandomScenesAreTheReferenceInOrderAloneSmartAndPlain) {
  using T = TypeParam;
  constexpr std::pair<int, int> kSizes[] = {{1, 1}, {1, 9}, {9, 1}, {15, 8}, {20, 33}, {67, 41}};
  for (std::uint32_t seed = 0; seed < 144; ++seed) {
    const ParameterSet set = RandomScene(seed);
    const auto [width, height] = kSizes[seed % std::size(kSizes)];
    const Image plate = Plate<T>(width, height);
    const std::int32_t step = seed % 32 < 16 ? 1001 : 1;
    Frame frame =
        FrameOf(plate, 0, {static_cast<std::uint32_t>(30 * step), step, step, seed % 4 * 180.0 - 180});
    const std::uint32_t divisor = seed / 8 % 3 + 1;
    frame.downsampleX = {1, divisor};
    frame.downsampleY = {2, 1 + divisor};
    frame.pixelAspectRatio = {10, 9 + divisor};
    Instance smart(Snow(), set), plain(Snow(), set);
    for (const int n : {0, 1, 2, 3, 5, 8, 8, 7}) {
      frame.time = n * step;
      const Image want = Reference<T>(set, frame);
      frame.protocol = Protocol::kSmart;
      ASSERT_TRUE(SameImage<T>(Rendered(smart, frame), want)) << seed << " frame " << n;
      ASSERT_TRUE(SameImage<T>(RenderedAlone(set, frame), want)) << seed << " frame " << n << " alone";
      frame.protocol = Protocol::kPlain;
      ASSERT_TRUE(SameImage<T>(Rendered(plain, frame), want)) << seed << " frame " << n << " plain";
    }
    for (const auto& [local, time] :
         {std::pair{1001, 2252}, {2002, 1001}, {-1001, 2252}, {-1001, 3003}, {1, 20'000}}) {
      frame.timing.localTimeStep = local;
      frame.time = time;
      ASSERT_TRUE(SameImage<T>(RenderedAlone(set, frame), Reference<T>(set, frame))) << seed << " " << time;
    }
  }
}

// After years, and in exposures of months, the cosine's phase is so large that each rounding on the way to it
// shows.  In the long exposure the offset takes back what the flakes fall, so that they end in the picture.
TYPED_TEST(WholeFrame, LongTimesKeepTheLastBitOfThePhase) {
  const Image plate = Plate<TypeParam>(64, 36);
  for (const double frequency : {9.7, 3.3, 0.7}) {
    for (const bool longExposure : {false, true}) {
      ParameterSet set = Scene(
          {kFlakes, kSize, kSceneDepth, kSpeed, kSpeedVariation, kStochasticWiggle, kFrequency, kAmount},
          {500, 15, 300, 0.01, 0, 0, frequency, longExposure ? 1000.0 : 60.0});
      const Point start{50, 50}, end{50, 50 - 30'000 / 36.0 * 100};
      if (longExposure) {
        set.Set(kOffset, Track({{0, start}, {1, end}}));
      }
      const Frame frame =
          FrameOf(plate, longExposure ? 0 : 40'000'006, {1, 8'000'003, longExposure ? 1 : 20'000'003, 135});
      ASSERT_TRUE(SameImage<TypeParam>(RenderedAlone(set, frame), Reference<TypeParam>(set, frame)))
          << frequency;
    }
  }
}

TYPED_TEST(WholeFrame, ATileLiesWhereTheFullFrameHasIt) {
  using T = TypeParam;
  const Image plate = Plate<T>(80, 60);
  // Rounded to other places the same flake differs by a step of alpha, a few times over.
  const double white = PixelType<T>::kWhite, allowed = white * 1e-3 + (sizeof(T) == 16 ? 0 : 3);
  const ParameterSet set = Scene({kInfluence, kSceneDepth, kFlakes}, {0, 300, 300});
  Frame frame = FrameOf(plate, 3);
  const Image full = RenderedAlone(set, frame);
  EXPECT_FALSE(SameImage<T>(full, plate));
  frame.tile = PF_LRect{17, 9, 60, 55};
  const Image tile = RenderedAlone(set, frame);
  for (std::size_t i = 0; i < 43 * 46; ++i) {
    const int y = static_cast<int>(i / 43);
    const T &a = full.Row<T>(y + 9)[i % 43 + 17], &b = tile.Row<T>(y)[i % 43];
    ASSERT_NEAR(double(a.alpha), double(b.alpha), allowed) << i;
    // Colour that does not show.
    if (a.alpha < 0.05 * white) {
      continue;
    }
    ASSERT_TRUE(std::abs(a.red - b.red) <= allowed && std::abs(a.blue - b.blue) <= allowed) << i;
  }
}

TYPED_TEST(WholeFrame, UndrawableScalesLeaveTheBackground) {
  const Image plate = Plate<TypeParam>(21, 13);
  for (const PF_RationalScale bad : {PF_RationalScale{0, 1}, {1, 0}, {0, 0}}) {
    for (const auto ratio : {&Frame::downsampleX, &Frame::downsampleY, &Frame::pixelAspectRatio}) {
      for (const Protocol protocol : {Protocol::kSmart, Protocol::kPlain}) {
        Frame frame = FrameOf(plate, 1);
        frame.protocol = protocol;
        frame.*ratio = bad;
        EXPECT_TRUE(SameImage<TypeParam>(RenderedAlone(Scene(), frame), plate));
      }
    }
  }
}

TYPED_TEST(WholeFrame, InstancesOnTwoThreadsAreTheReferenceFarOutToo) {
  const Image plate = Plate<TypeParam>(64, 36);
  const ParameterSet set = RandomScene(3);
  const auto renderAll = [&] {
    Instance instance(Snow(), set);
    for (const int n : {0, 1, 2, 3, 100'000, 100'001}) {
      const Frame frame = FrameOf(plate, n);
      EXPECT_TRUE(SameImage<TypeParam>(Rendered(instance, frame), Reference<TypeParam>(set, frame))) << n;
    }
  };
  const std::future<void> other = std::async(std::launch::async, renderAll);
  renderAll();
}

TYPED_TEST(WholeFrame, TheDefaultFrameIsTheGoldenOne) {
  const Image plate = Plate<TypeParam>(96, 54);
  const Image picture = RenderedAlone(Scene(), FrameOf(plate, 12));
  std::uint64_t hash = 14695981039346656037u;  // FNV-1a
  for (int row = 0; row < 54; ++row) {
    for (const std::byte b : std::as_bytes(picture.Row<TypeParam>(row))) {
      hash = (hash ^ std::to_integer<std::uint64_t>(b)) * 1099511628211u;
    }
  }
  // A change means that the same project renders to other pixels: say why in the commit that changes them.
  const std::uint64_t golden = sizeof(TypeParam) == 4   ? 9273240413800968653u
                               : sizeof(TypeParam) == 8 ? 3339475749192500843u
                                                        : 8987988384673318213u;
  EXPECT_EQ(hash, golden);
}

}  // namespace
