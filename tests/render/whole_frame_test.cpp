// Whole frames through the effect's entry, against the reference and against each other.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <functional>
#include <initializer_list>
#include <memory>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "minihost/copy.h"
#include "minihost/instance.h"
#include "minihost/sampling.h"
#include "tests/render/reference_flake.h"
#include "tests/support/random_frame.h"

namespace {

using minihost::Depth;
using minihost::Frame;
using minihost::Image;
using minihost::Instance;
using minihost::ParameterSet;
using minihost::Protocol;

const std::shared_ptr<const minihost::Effect>& Snow() {
  static const auto effect = minihost::Effect::Linked(MainEntry);
  return effect;
}

/// Parameters that the effect takes as the numbers they are, and where the reference keeps them.
constexpr std::pair<const char*, double SnowLook::*> kNumbers[] = {
    {"Flakes", &SnowLook::flakes},
    {"Size", &SnowLook::size},
    {"Variation % (Size)", &SnowLook::sizeVariation},
    {"Scene Depth", &SnowLook::sceneDepth},
    {"Variation % (Speed)", &SnowLook::speedVariation},
    {"Variation % (Wind)", &SnowLook::windVariation},
    {"Spread", &SnowLook::spreadDegrees},
    {"Amount", &SnowLook::amount},
    {"Variation % (Amount)", &SnowLook::amountVariation},
    {"Frequency", &SnowLook::frequencyEnd},
    {"Variation % (Frequency)", &SnowLook::frequencyVariation},
    {"Flake Flatness %", &SnowLook::flatness},
    {"Opacity", &SnowLook::opacity},
    {"Influence %", &SnowLook::influence},
    {"Spread Width", &SnowLook::spreadWidth},
    {"Spread Height", &SnowLook::spreadHeight},
    {"Ground Level %", &SnowLook::groundLevel},
    {"Embed Depth %", &SnowLook::embedDepth}};

ParameterSet Scene(std::initializer_list<std::pair<const char*, double>> values) {
  ParameterSet set(Snow()->sharedParameters());
  for (const auto& [name, value] : values) set.Set(name, minihost::Value(value));
  return set;
}

/// Valid values all over the ranges, with keys on Speed, Wind, Amount and Offset (Frequency takes none).
ParameterSet RandomScene(std::uint32_t seed) {
  using minihost::Point, minihost::Track;
  const SnowLook look = RandomFrame<PF_Pixel>(seed).Look();
  ParameterSet set = Scene({{"Stochastic Wiggle", look.stochastic},
                            {"Transfer Mode", look.transferMode},
                            {"Composite With Original", look.compositeWithOriginal},
                            {"Random Seed", look.randomSeed}});
  for (const auto& [name, member] : kNumbers) set.Set(name, minihost::Value(look.*member));
  const auto byte = [](int value) { return static_cast<double>(value); };
  set.Set("Color", minihost::Value(
                       minihost::Color{byte(look.color.red), byte(look.color.green), byte(look.color.blue)}));
  set.Set("Speed", Track({{0, 3.7 + seed}, {2.5, 200.3}, {6, std::min(look.speedEnd, 2000.0)}}));
  set.Set("Wind", Track({{1, -30.1}, {4, look.windEnd, minihost::Ease::kSmooth}, {9, 12.9}}));
  set.Set("Amount", Track({{0, look.amount}, {5, look.amountEnd}}));
  set.Set("Offset", Track({{0, Point{50, 50}}, {7, Point{-13.7, 207.1}}}));
  return set;
}

SnowLook LookAt(const ParameterSet& set, const Frame& frame) {
  const double now = frame.time, local = frame.timing.localTimeStep;
  const double open = frame.timing.shutterDegrees > 0 ? frame.timing.shutterDegrees / 360 : 1.0;
  const double end = now + std::trunc(open * frame.timing.timeStep);
  const auto value = [&](const char* name, double ticks) {
    return set.At(minihost::FindParameter(set.list(), name)->index, ticks / std::abs(local));
  };
  const auto at = [&](const char* name, double ticks) { return std::get<double>(value(name, ticks)); };
  const auto whole = [&](const char* name) { return static_cast<std::int32_t>(at(name, now)); };

  SnowLook look;
  for (const auto& [name, member] : kNumbers) look.*member = at(name, now);
  look.amountEnd = at("Amount", end);
  look.stochastic = whole("Stochastic Wiggle") != 0;
  look.compositeWithOriginal = whole("Composite With Original") != 0;
  look.transferMode = whole("Transfer Mode");
  look.randomSeed = whole("Random Seed");
  const auto color = std::get<minihost::Color>(value("Color", now));
  look.color = {255, static_cast<std::uint8_t>(color.red), static_cast<std::uint8_t>(color.green),
                static_cast<std::uint8_t>(color.blue)};
  look.extentWidth = frame.input->width(), look.extentHeight = frame.input->height();
  const auto offset = [&](double ticks) {
    const auto point = std::get<minihost::Point>(value("Offset", ticks));
    const auto fixed = [](double percent, double side) {
      return std::round(percent / 100 * side * 65536) / 65536;
    };
    return DoublePoint{fixed(point.x, look.extentWidth), fixed(point.y, look.extentHeight)};
  };
  look.offset = offset(now), look.offsetEnd = offset(end);

  look.speedEnd = at("Speed", end), look.windEnd = at("Wind", end), look.frequencyEnd = at("Frequency", end);
  const auto add = [&](double ticks, double weight) {
    look.speedSum += weight * at("Speed", ticks);
    look.windSum += weight * at("Wind", ticks);
    look.frequencySum += weight * at("Frequency", ticks);
  };
  const double frames = std::floor(now / local), part = now / local - frames;
  for (double i = 0; i <= frames; ++i) add(i * local, 1);
  if (part > 0) add((std::max(frames, -1.0) + 2) * local, part);
  return look;
}

template <class T>
Image Reference(const ParameterSet& set, const Frame& frame) {
  FrameHost host;
  host.inData.current_time = frame.time;
  host.inData.time_step = frame.timing.timeStep;
  host.inData.local_time_step = frame.timing.localTimeStep;
  host.inData.time_scale = frame.timing.timeScale;
  host.inData.shutter_angle = static_cast<PF_Fixed>(frame.timing.shutterDegrees / 360 * 65536);
  host.inData.downsample_x = frame.downsampleX;
  host.inData.downsample_y = frame.downsampleY;
  host.inData.pixel_aspect_ratio = frame.pixelAspectRatio;
  FrameSetup<T> record{{.scale = FX_PARc(&host.inData), .inData = &host.inData}};
  FillRecord(LookAt(set, frame), record);
  if (record.wiggleOn && record.stochasticWiggle)
    record.noiseTable.NoiseTableLin(record.wiggleSeed, 128, 0, 0);
  const Image& input = *frame.input;
  Image output =
      record.compositeWithOriginal ? input.Clone() : Image(input.width(), input.height(), input.depth());
  const auto tenth = [](int side) { return side / 10 <= 1 ? 2 : side / 10; };
  const Image light = minihost::Resized(input, tenth(input.width()), tenth(input.height()));
  PF_LayerDef lightWorld = light.World(), outputWorld = output.World();
  record.illumWorld = &lightWorld;
  record.output = &outputWorld;
  record.sampleFn = [](PF_ProgPtr, PF_Fixed x, PF_Fixed y, const PF_SampPB* params, T* dst) {
    *dst = minihost::SampleBilinear<T>(*params->src, x, y);
    return PF_Err_NONE;
  };
  bool beyondWrap = false;
  if (record.flakeColor.alpha > 0) reference::DrawFlakes(record, beyondWrap);
  EXPECT_FALSE(beyondWrap);
  return output;
}

template <class T>
bool SameImage(const Image& a, const Image& b) {
  for (int row = 0; row < a.height(); ++row)
    if (std::memcmp(a.Row<T>(row).data(), b.Row<T>(row).data(), a.Row<T>(row).size_bytes()) != 0)
      return false;
  return true;
}

template <class T>
constexpr double kWhite = sizeof(T) == 4   ? 255
                          : sizeof(T) == 8 ? 32768
                                           : 1;

/// Transparent, half-transparent and opaque stripes of changing colour.
template <class T>
Image Plate(int width, int height) {
  using C = decltype(T::alpha);
  const auto channel = [](int v) { return static_cast<C>(v % 8 / 7.0 * kWhite<T>); };
  Image plate(width, height, minihost::kDepthOf<T>);
  for (int y = 0; y < height; ++y)
    for (int x = 0; x < width; ++x)
      plate.Row<T>(y)[static_cast<std::size_t>(x)] = {channel(x / 3 % 3 == 0   ? 0
                                                              : x / 3 % 3 == 1 ? 7
                                                                               : 4),
                                                      channel(x + y), channel(x * y), channel(3 * y)};
  return plate;
}

Frame FrameOf(const Image& plate, std::int32_t time) {
  Frame frame;
  frame.input = &plate;
  frame.time = time;
  return frame;
}

/// Renders, and holds the instance to its loans.
Image Rendered(Instance& instance, Frame frame) {
  Image output = frame.tile ? Image(frame.tile->right - frame.tile->left,
                                    frame.tile->bottom - frame.tile->top, frame.input->depth())
                            : Image(frame.input->width(), frame.input->height(), frame.input->depth());
  frame.output = &output;
  const minihost::RenderResult result = instance.Render(frame);
  EXPECT_EQ(result.err, 0) << result.message;
  EXPECT_EQ(instance.ledger().Outstanding(), 0u) << testing::PrintToString(instance.ledger().Missing());
  EXPECT_TRUE(instance.ledger().faults().empty()) << testing::PrintToString(instance.ledger().faults());
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
  constexpr std::pair<int, int> kSizes[] = {{1, 1},  {1, 9},   {9, 1},   {2, 2},
                                            {15, 8}, {20, 33}, {67, 41}, {90, 20}};
  for (std::uint32_t seed = 0; seed < 64; ++seed) {
    const ParameterSet set = RandomScene(seed);
    const auto [width, height] = kSizes[seed % std::size(kSizes)];
    const Image plate = Plate<T>(width, height);
    Frame frame = FrameOf(plate, 0);
    const std::int32_t step = seed < 32 ? 1001 : 1;
    frame.timing = {static_cast<std::uint32_t>(30 * step), step, step, seed % 3 * 180.0};
    if (seed / 8 % 4 == 1) frame.downsampleX = {1, 2}, frame.downsampleY = {1, 3};
    if (seed / 8 % 4 == 2) frame.pixelAspectRatio = {10, 11};
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
      ASSERT_TRUE(SameImage<T>(RenderedAlone(set, frame), Reference<T>(set, frame)))
          << seed << " at " << time;
    }
  }
}

// After years, and in exposures of months, the cosine's phase is so large that each rounding on the way to it
// shows.  In the long exposure the offset takes back what the flakes fall, so that they end in the picture.
TYPED_TEST(WholeFrame, LongTimesKeepTheLastBitOfThePhase) {
  using T = TypeParam;
  const Image plate = Plate<T>(64, 36);
  for (const double frequency : {9.7, 3.3, 0.7}) {
    for (const bool longExposure : {false, true}) {
      ParameterSet set = Scene({{"Flakes", 500},
                                {"Size", 15},
                                {"Scene Depth", 300},
                                {"Speed", 0.01},
                                {"Variation % (Speed)", 0},
                                {"Amount", longExposure ? 1000 : 60},
                                {"Frequency", frequency},
                                {"Stochastic Wiggle", 0}});
      const minihost::Point start{50, 50}, end{50, 50 - 30'000 / 36.0 * 100};
      if (longExposure) set.Set("Offset", minihost::Track({{0, start}, {1, end}}));
      Frame frame = FrameOf(plate, longExposure ? 0 : 40'000'006);
      frame.timing = {1, 8'000'003, longExposure ? 1 : 20'000'003, 135};
      ASSERT_TRUE(SameImage<T>(RenderedAlone(set, frame), Reference<T>(set, frame))) << frequency;
    }
  }
}

TYPED_TEST(WholeFrame, ATileLiesWhereTheFullFrameHasIt) {
  using T = TypeParam;
  const Image plate = Plate<T>(80, 60);
  // Rounded to other places the same flake differs by a step of alpha, a few times over.
  const double white = kWhite<T>, allowed = white * 1e-3 + (sizeof(T) == 16 ? 0 : 3);
  for (const double composite : {0.0, 1.0}) {
    const ParameterSet set = Scene(
        {{"Influence %", 0}, {"Scene Depth", 300}, {"Flakes", 300}, {"Composite With Original", composite}});
    Frame frame = FrameOf(plate, 3);
    const Image full = RenderedAlone(set, frame);
    EXPECT_FALSE(SameImage<T>(full, plate));
    frame.tile = PF_LRect{17, 9, 60, 55};
    const Image tile = RenderedAlone(set, frame);
    for (int y = 0; y < tile.height(); ++y) {
      for (std::size_t x = 0; x < static_cast<std::size_t>(tile.width()); ++x) {
        const T &a = full.Row<T>(y + 9)[x + 17], &b = tile.Row<T>(y)[x];
        ASSERT_NEAR(double(a.alpha), double(b.alpha), allowed) << x << " " << y;
        if (double(a.alpha) < 0.05 * white) continue;  // colour that does not show
        ASSERT_NEAR(double(a.red), double(b.red), allowed) << x << " " << y;
        ASSERT_NEAR(double(a.blue), double(b.blue), allowed) << x << " " << y;
      }
    }
  }
}

TYPED_TEST(WholeFrame, SnowAloneIsTransparentBetweenTheFlakesAndLightMovesNone) {
  using T = TypeParam;
  const Image plate = Plate<T>(80, 60);
  const Frame frame = FrameOf(plate, 5);
  ParameterSet set =
      Scene({{"Flakes", 400}, {"Scene Depth", 200}, {"Composite With Original", 0}, {"Transfer Mode", 1}});
  const Image lit = RenderedAlone(set, frame);
  set.Set("Influence %", minihost::Value(0.0));
  const Image unlit = RenderedAlone(set, frame);
  EXPECT_FALSE(SameImage<T>(lit, unlit));
  int clear = 0, snow = 0;
  for (int y = 0; y < 60; ++y) {
    for (std::size_t x = 0; x < 80; ++x) {
      const T &a = lit.Row<T>(y)[x], &b = unlit.Row<T>(y)[x];
      ASSERT_EQ(a.alpha, b.alpha) << x << " " << y;
      ++(a.alpha > 0 ? snow : clear);
      // Under no light, every flake is white.
      if (b.alpha > 0) {
        ASSERT_NEAR(double(b.red), kWhite<T>, 1e-5);
      }
    }
  }
  EXPECT_GT(clear, 500);
  EXPECT_GT(snow, 500);
}

TYPED_TEST(WholeFrame, UndrawableScalesLeaveTheBackground) {
  const Image plate = Plate<TypeParam>(21, 13);
  for (const PF_RationalScale bad :
       {PF_RationalScale{0, 1}, PF_RationalScale{1, 0}, PF_RationalScale{0, 0}}) {
    for (const auto ratio : {&Frame::downsampleX, &Frame::downsampleY, &Frame::pixelAspectRatio}) {
      for (const Protocol protocol : {Protocol::kSmart, Protocol::kPlain}) {
        Frame frame = FrameOf(plate, 1);
        frame.protocol = protocol;
        frame.*ratio = bad;
        EXPECT_TRUE(SameImage<TypeParam>(RenderedAlone(Scene({}), frame), plate));
      }
    }
  }
}

TYPED_TEST(WholeFrame, InstancesOnTwoThreadsMakeTheSameFramesFarOutToo) {
  using T = TypeParam;
  const Image plate = Plate<T>(64, 36);
  const ParameterSet set = RandomScene(3);
  std::vector<Image> pictures[2];
  const auto work = [&](std::vector<Image>& into) {
    Instance instance(Snow(), set);
    for (const int n : {0, 1, 2, 3, 100'000, 100'001}) {
      into.push_back(Rendered(instance, FrameOf(plate, n)));
    }
  };
  std::thread other(work, std::ref(pictures[0]));
  work(pictures[1]);
  other.join();
  for (std::size_t i = 0; i < 6; ++i) EXPECT_TRUE(SameImage<T>(pictures[0][i], pictures[1][i])) << i;
}

TYPED_TEST(WholeFrame, TheDefaultFrameIsTheGoldenOne) {
  using T = TypeParam;
  const Image plate = Plate<T>(96, 54);
  const Frame frame = FrameOf(plate, 12);
  const Image picture = RenderedAlone(Scene({}), frame);
  std::uint64_t hash = 14695981039346656037u;  // FNV-1a
  for (int row = 0; row < 54; ++row)
    for (const std::byte b : std::as_bytes(picture.Row<T>(row)))
      hash = (hash ^ std::to_integer<std::uint64_t>(b)) * 1099511628211u;
  // A change means that the same project renders to other pixels: say why in the commit that changes them.
  const std::uint64_t golden = sizeof(T) == 4   ? 9273240413800968653u
                               : sizeof(T) == 8 ? 3339475749192500843u
                                                : 8987988384673318213u;
  EXPECT_EQ(hash, golden);
}

TEST(EmptyLayer, RendersNothing) {
  Instance instance(Snow());
  Image output(8, 8, Depth::kBits8);
  Frame frame;
  frame.output = &output;
  EXPECT_EQ(instance.Render(frame).err, 0);
  EXPECT_TRUE(SameImage<PF_Pixel>(output, Image(8, 8, Depth::kBits8)));
  EXPECT_EQ(instance.ledger().Outstanding(), 0u);
}

}  // namespace
