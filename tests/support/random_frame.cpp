#include "tests/support/random_frame.h"

#include <algorithm>
#include <cmath>
#include <initializer_list>
#include <iterator>
#include <limits>
#include <random>
#include <type_traits>

namespace {

// The standard fixes mt19937's numbers but not those of its distributions.
class Dice {
 public:
  explicit Dice(std::uint32_t seed) : engine_(seed) {}
  bool OneIn(std::uint32_t n) { return engine_() % n == 0; }
  double Between(double low, double high) {
    return low + (high - low) * (static_cast<std::uint32_t>(engine_()) / 4294967295.0);
  }
  std::int32_t Whole(int low, int high) { return low + static_cast<int>(Between(0, high - low + 0.999)); }
  /// Each end once in six.
  double Ends(double low, double high) { return OneIn(6) ? low : OneIn(5) ? high : Between(low, high); }
  template <class V>
  V Pick(std::initializer_list<V> values) {
    return std::data(values)[engine_() % values.size()];
  }

 private:
  std::mt19937 engine_;
};

SnowLook RollLook(Dice& dice) {
  SnowLook look{};
  look.flakes = dice.OneIn(3) ? dice.Pick({1.0, 2.0, 129.0, 130.0, 257.9}) : dice.Between(1, 200);
  look.size = dice.OneIn(2) ? dice.Between(0, 2) : dice.Ends(0, 15);
  look.sceneDepth = dice.OneIn(2) ? dice.Between(100, 500) : dice.Ends(100, 50'000);
  look.spreadDegrees = dice.OneIn(6) ? 89.9 : dice.Ends(0, 90);
  for (double* percent :
       {&look.sizeVariation, &look.speedVariation, &look.windVariation, &look.amountVariation,
        &look.frequencyVariation, &look.flatness, &look.groundLevel, &look.embedDepth, &look.influence})
    *percent = dice.Ends(0, 100);
  if (dice.OneIn(4)) {
    look.flatness = 0;
  } else {
    look.amount = dice.OneIn(2) ? dice.Between(0, 40) : dice.Ends(0, 1000);
    look.amountEnd = dice.OneIn(2) ? look.amount : dice.Ends(0, 1000);
  }
  look.opacity = dice.Ends(1, 100);
  look.stochastic = dice.OneIn(2);
  look.color = {255, static_cast<std::uint8_t>(dice.Ends(0, 255)),
                static_cast<std::uint8_t>(dice.Ends(0, 255)), static_cast<std::uint8_t>(dice.Ends(0, 255))};
  look.spreadWidth = dice.Ends(0, 1000);
  look.spreadHeight = dice.Ends(0, 1000);
  look.transferMode = dice.Whole(1, 2);
  look.compositeWithOriginal = !dice.OneIn(4);
  look.randomSeed = static_cast<std::int32_t>(dice.Ends(0, 10'000));

  const double frames = dice.OneIn(4) ? 1e5 : dice.Whole(1, 500);
  look.speedEnd = dice.Ends(0.01, 2000);
  look.windEnd = dice.OneIn(3) ? 0.0 : dice.Ends(-10'000, 10'000);
  look.frequencyEnd = dice.Ends(0, 10);
  look.speedSum = frames * dice.Pick({look.speedEnd, dice.Between(0.01, 2000)});
  look.windSum = frames * look.windEnd;
  look.frequencySum = frames * look.frequencyEnd * dice.Between(0.5, 1.5);
  if (dice.OneIn(16)) look.speedSum *= dice.Pick({1e9, 1e15, 1e30});  // past any wrap
  if (dice.OneIn(16)) look.speedEnd *= 1e9;                           // the end far off the picture
  return look;
}

void RollHost(Dice& dice, PF_InData& inData) {
  for (PF_RationalScale* ratio : {&inData.downsample_x, &inData.downsample_y})
    *ratio = dice.Pick<PF_RationalScale>({{1, 1}, {1, 1}, {1, 2}, {1, 3}, {2, 3}, {3333, 10'000}});
  inData.pixel_aspect_ratio = dice.Pick<PF_RationalScale>({{1, 1}, {1, 1}, {10, 11}, {2, 1}, {768, 1405}});
  inData.time_step = inData.local_time_step = dice.Pick({1001, 1000, 1200});
  inData.time_scale = 30'000;
  inData.shutter_angle = dice.Pick<PF_Fixed>({0, -65536, 32768, 65536, 131072, 1});
}

/// A ratio that cannot be drawn with, or a distance that is none.
void Break(Dice& dice, PF_InData& inData, SnowLook& look) {
  constexpr double kBad[] = {std::numeric_limits<double>::infinity(),
                             std::numeric_limits<double>::quiet_NaN()};
  switch (dice.Whole(0, 5)) {
    case 0:
      return void(inData.downsample_x.num = 0);
    case 1:
      return void(inData.downsample_y.den = 0);
    case 2:
      return void(inData.pixel_aspect_ratio.num = 0);
    case 3:
      return void(inData.pixel_aspect_ratio.den = 0);
    case 4:
      return void(look.windSum = kBad[dice.Whole(0, 1)]);
    default:
      look.offset.y = kBad[dice.Whole(0, 1)];
  }
}

template <class T>
T RollPixel(Dice& dice, int kind) {
  using C = decltype(T::alpha);
  const double white = sizeof(C) == 1 ? 255 : sizeof(C) == 2 ? 32768 : 1;
  const double over = std::is_floating_point_v<C> ? 1.25 : 1.0;
  const auto channel = [&](double v) { return static_cast<C>(v * white); };
  const double alpha = kind == 0 ? 0.0 : kind == 1 ? 1.0 : kind == 2 ? dice.Ends(0, over) : 0.5;
  return {channel(alpha), channel(dice.Ends(0, over)), channel(dice.Ends(0, over)), channel(dice.Ends(0, 1))};
}

template <class T>
void Paint(Dice& dice, GuardedWorld<T>& world) {
  const int kind = dice.Whole(0, 3);  // transparent, opaque, mixed, half transparent
  for (std::int32_t row = 0; row < world.World()->height; ++row)
    for (std::int32_t column = 0; column < world.World()->width; ++column)
      world.At(column, row) = RollPixel<T>(dice, kind);
}

/// Distances that cancel out, so that sums in another order, or products in another precision, differ by more
/// than the last step to single precision hides.
void MagnifyRoundings(Dice& dice, FrameField& record) {
  const double far = dice.Pick({1e9, 1e11});
  record.windVariation = 0;
  switch (dice.Whole(0, 2)) {
    case 0:
      record.windBlur = far;
      record.offsetDeltaX = -far;
      break;
    case 1:
      record.windDistance = far;
      record.offsetX = -far;
      break;
    default:
      record.wiggleAmount = record.wiggleAmountEnd = far;
      record.wiggleOn = true;
      record.stochasticWiggle = false;
      record.phaseBlur = 0;
  }
}

float Fraction(double percent) {
  return static_cast<float>(percent * 0.01);
}

template <class C>
C ChannelOf(float value, float white) {
  return value <= 0 ? C{0} : static_cast<C>(std::min(value, white));
}

void SetColor(const SnowLook& look, FrameSetup<PF_Pixel>& r) {
  r.flakeColor = look.color;
  r.flakeColor.alpha = ChannelOf<std::uint8_t>(r.opacity * 255.0f, 255.0f);
  r.influenceScale = r.influence / 255.0f;
}

void SetColor(const SnowLook& look, FrameSetup<PF_Pixel16>& r) {
  const auto adapt = [](int v) { return static_cast<std::uint16_t>((v * 32768 + 128) / 255); };
  r.flakeColor = {ChannelOf<std::uint16_t>(r.opacity * 32768.0f, 32768.0f), adapt(look.color.red),
                  adapt(look.color.green), adapt(look.color.blue)};
  r.influenceScale = r.influence * (1.0f / 32768.0f);
}

void SetColor(const SnowLook& look, FrameSetup<PF_PixelFloat>& r) {
  constexpr float k = 0.003921568859368563f;
  r.flakeColor = {r.opacity, look.color.red * k, look.color.green * k, look.color.blue * k};
  r.flakeRed = r.flakeColor.red;
  r.flakeGreen = r.flakeColor.green;
  r.flakeBlue = r.flakeColor.blue;
  r.influenceScale = r.influence;
}

}  // namespace

template <class T>
void FillRecord(const SnowLook& look, FrameSetup<T>& r) {
  const PF_InData& host = *r.inData;
  r.scale = FX_PARc(&host);
  r.renderTime = host.current_time;
  r.timeStep = host.time_step;
  r.localTimeStep = host.local_time_step;
  r.timeScale = host.time_scale;
  r.frameSeconds = host.local_time_step / static_cast<double>(host.time_scale);
  r.stepSeconds = host.time_step / static_cast<double>(host.time_scale);
  const double open = host.shutter_angle > 0 ? host.shutter_angle / 65536.0 : 1.0;
  r.shutterEndTime = host.current_time + static_cast<std::int32_t>(open * host.time_step);

  r.flakeCount = static_cast<std::int32_t>(look.flakes);
  r.sceneDepth = look.sceneDepth;
  r.flakeSize = look.size;
  r.sizeVariation = look.sizeVariation * 0.01;
  r.speedVariation = look.speedVariation * 0.01;
  r.windVariation = look.windVariation * 0.01;
  r.amountVariation = look.amountVariation * 0.01;
  r.frequencyVariation = look.frequencyVariation * 0.01;
  r.stochasticWiggle = look.stochastic;
  r.flatness = Fraction(look.flatness);
  r.opacity = Fraction(look.opacity);
  r.influence = Fraction(look.influence);
  r.spreadWidth = static_cast<float>(look.spreadWidth);
  r.spreadHeight = static_cast<float>(look.spreadHeight);
  r.transferMode = look.transferMode;
  r.compositeWithOriginal = look.compositeWithOriginal;
  r.embedDepth = look.compositeWithOriginal ? look.embedDepth * 0.01 : 1.0;
  r.groundLevel = look.groundLevel * 0.01;
  r.randomSeed = look.randomSeed;

  r.frameWidth = look.extentWidth * r.scale.xScaleInv;
  r.frameHeight = look.extentHeight * r.scale.yScaleInv;
  r.halfFrameWidth = 0.5 * r.frameWidth;
  r.halfFrameHeight = 0.5 * r.frameHeight;
  r.originX = -static_cast<float>(look.tileX * r.scale.xScaleInv);
  r.originY = -static_cast<float>(look.tileY * r.scale.yScaleInv);
  r.frameMax = std::max(r.frameWidth, r.frameHeight);
  r.fieldWidth = (r.frameWidth * (r.frameMax + r.sceneDepth)) / r.frameMax;
  r.fieldHeight = (r.frameHeight * (r.frameMax + r.sceneDepth)) / r.frameMax;
  r.halfFieldWidth = 0.5 * r.fieldWidth;
  r.halfFieldHeight = 0.5 * r.fieldHeight;
  r.offsetX = look.offset.x * r.scale.xScaleInv;
  r.offsetY = look.offset.y * r.scale.yScaleInv;
  r.offsetDeltaX = look.offsetEnd.x * r.scale.xScaleInv - r.offsetX;
  r.offsetDeltaY = look.offsetEnd.y * r.scale.yScaleInv - r.offsetY;
  r.groundY = r.groundLevel * r.halfFieldHeight;
  r.embedDistance = r.frameMax + r.embedDepth * r.sceneDepth;
  r.spreadTan = std::tan(std::min(look.spreadDegrees, 89.9) * 0.008726646259971648);

  r.wiggleOn = look.amount > 0 || look.amountEnd > 0 || r.flatness != 0;
  const bool noise = r.wiggleOn && look.stochastic;
  const double k = noise ? 2.0 : 6.283185307179586;
  r.wiggleAmount = noise ? look.amount + look.amount : look.amount;
  r.wiggleAmountEnd = noise ? look.amountEnd + look.amountEnd : look.amountEnd;
  r.fallDistance = look.speedSum * r.frameSeconds;
  r.windDistance = look.windSum * r.frameSeconds;
  r.wigglePhase = (look.frequencySum * r.frameSeconds) * k;
  r.fallBlur = (look.speedEnd * r.stepSeconds) * open;
  r.windBlur = (look.windEnd * r.stepSeconds) * open;
  r.phaseBlur = ((look.frequencyEnd * r.stepSeconds) * open) * k;

  r.flakeSeed = look.randomSeed ^ 731;
  r.illumSeed = look.randomSeed ^ 3179;
  r.wiggleSeed = look.randomSeed ^ 1793;
  SetColor(look, r);
  r.transferOp = look.transferMode == 2 ? JLightenT<T> : JCompositeT<T>;
  r.underOp = JCompositeUnderT<T>;
}

FrameHost::FrameHost() {
  inData.effect_ref = this;
  inData.utils = &utils;
  utils.ansi.cos = [](double v) { return std::cos(v); };
  utils.ansi.sqrt = [](double v) { return std::sqrt(v); };
  utils.ansi.tan = [](double v) { return std::tan(v); };
  inData.inter.progress = [](PF_ProgPtr ref, std::int32_t current, std::int32_t total) {
    FrameHost& host = *static_cast<FrameHost*>(ref);
    host.calls.push_back({HostCall::kProgress, current, total});
    return host.answer ? host.answer(host.calls.back()) : PF_Err_NONE;
  };
}

template <class T>
PF_Err SampleNearestMock(PF_ProgPtr ref, PF_Fixed x, PF_Fixed y, const PF_SampPB* params, T* dst) {
  FrameHost& host = *static_cast<FrameHost*>(ref);
  host.calls.push_back({HostCall::kSample, x, y});
  const PF_LayerDef& world = *params->src;
  if (x < 0 || y < 0 || x > (world.width - 1) * 65536 || y > (world.height - 1) * 65536) {
    host.samplesInside = false;
    x = y = 0;
  }
  const auto* row = static_cast<const std::byte*>(world.data) + ((y + 32768) >> 16) * world.rowbytes;
  *dst = reinterpret_cast<const T*>(row)[(x + 32768) >> 16];
  return host.answer ? host.answer(host.calls.back()) : PF_Err_NONE;
}

template <class T>
RandomFrame<T>::RandomFrame(std::uint32_t seed)
    : seed_(seed),
      look_([&] {
        Dice dice(seed);
        return RollLook(dice);
      }()),
      broken_(seed % 16 == 15),
      record_{{.scale = FX_PARc(&host_.inData), .inData = &host_.inData}},
      output_(Dice(seed * 4 + 1).Whole(1, 97), Dice(seed * 4 + 2).Whole(1, 61)),
      illumination_(std::max(2, output_.World()->width / 10), std::max(2, output_.World()->height / 10)) {
  Dice dice(seed ^ 0x5eed);
  RollHost(dice, host_.inData);
  look_.extentWidth = output_.World()->width;
  look_.extentHeight = output_.World()->height;
  if (dice.OneIn(3)) {  // the output is a tile of a larger layer
    look_.tileX = dice.Whole(0, 150);
    look_.tileY = dice.Whole(0, 150);
    look_.extentWidth += look_.tileX + dice.Whole(0, 50);
    look_.extentHeight += look_.tileY + dice.Whole(0, 50);
  }
  look_.offset = dice.OneIn(6) ? DoublePoint{dice.Ends(-32768, 32767), dice.Ends(-32768, 32767)}
                               : DoublePoint{look_.extentWidth * 0.5, look_.extentHeight * 0.5};
  look_.offsetEnd = look_.offset;
  if (dice.OneIn(3)) look_.offsetEnd = {dice.Between(-50, 50), dice.Between(-50, 50)};
  if (broken_) Break(dice, host_.inData, look_);

  FillRecord(look_, record_);
  if (seed % 8 == 3) MagnifyRoundings(dice, record_);
  if (record_.wiggleOn && record_.stochasticWiggle)
    record_.noiseTable.NoiseTableLin(record_.wiggleSeed, 128, 0, 0);
  record_.output = output_.World();
  record_.illumWorld = illumination_.World();
  record_.sampleFn = SampleNearestMock<T>;
  Reset();
}

template <class T>
void RandomFrame<T>::Reset() {
  Dice dice(seed_ + 77);
  Paint(dice, output_);
  Paint(dice, illumination_);
  host_.calls.clear();
  host_.samplesInside = true;
}

#define VINTREL_INSTANTIATE(T)                                    \
  template void FillRecord(const SnowLook& look, FrameSetup<T>&); \
  template class RandomFrame<T>;                                  \
  template PF_Err SampleNearestMock(PF_ProgPtr, PF_Fixed, PF_Fixed, const PF_SampPB*, T*);
VINTREL_INSTANTIATE(PF_Pixel)
VINTREL_INSTANTIATE(PF_Pixel16)
VINTREL_INSTANTIATE(PF_PixelFloat)
