#include "tests/support/random_frame.h"

#include <algorithm>
#include <cmath>
#include <initializer_list>
#include <random>
#include <utility>

#include "effect/pixel/pixel_type.h"
#include "minihost/picture/sampling.h"

const std::vector<SnowRange> kSnowRanges = {
    {1, 200, 200, {kFlakes}},
    {0, 15, 2, {kSize}},
    {100, 50'000, 500, {kSceneDepth}},
    {0.01, 2000, 2000, {kSpeed}},
    {-10'000, 10'000, 10'000, {kWind}},
    {0, 90, 89.9, {kSpread}},
    {0, 1000, 40, {kAmount, kSpreadWidth, kSpreadHeight}},
    {0, 10, 10, {kFrequency}},
    {1, 100, 100, {kOpacity}},
    {0, 100, 100, {kSizeVariation, kSpeedVariation, kWindVariation, kAmountVariation, kFrequencyVariation}},
    {0, 100, 100, {kFlakeFlatness, kInfluence, kGroundLevel, kEmbedDepth}},
    {0, 1, 1, {kStochasticWiggle, kCompositeWithOriginal}},
    {1, 2, 2, {kTransferMode}},
    {0, 10'000, 10'000, {kRandomSeed}}};

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
    return values.begin()[engine_() % values.size()];
  }

 private:
  std::mt19937 engine_;
};

SnowLook RollLook(std::uint32_t seed) {
  Dice dice(seed);
  SnowLook look{};
  for (const auto& [low, high, usual, of] : kSnowRanges) {
    for (const ParameterIndex index : of) {
      look.open[index] = dice.OneIn(2) ? dice.Between(low, usual) : dice.Ends(low, high);
    }
  }
  for (const auto whole :
       {kStochasticWiggle, kTransferMode, kCompositeWithOriginal, kInfluence, kRandomSeed}) {
    look.open[whole] = std::round(look.open[whole]);
  }
  if (dice.OneIn(3)) {
    look.open[kFlakes] = dice.Pick({1.0, 2.0, 129.0, 130.0, 257.9, 258.0});
  }
  if (dice.OneIn(3)) {
    look.open[kWind] = 0;
  }
  for (auto channel : {&PF_Pixel::red, &PF_Pixel::green, &PF_Pixel::blue}) {
    look.color.*channel = static_cast<std::uint8_t>(dice.Ends(0, 255));
  }

  look.close = look.open;
  if (dice.OneIn(3)) {
    look.open[kAmount] = look.close[kAmount] = look.open[kFlakeFlatness] = 0;
  }
  if (dice.OneIn(2)) {
    look.close[kAmount] = dice.Ends(0, 1000);
  }
  const double frames = dice.OneIn(4) ? 1e5 : dice.Whole(1, 500);
  for (const auto index : {kSpeed, kWind, kFrequency}) {
    look.sum[index] = frames * look.open[index];
  }
  look.sum[kFrequency] *= dice.Between(0.5, 1.5);
  // At last past any wrap.
  if (dice.OneIn(8)) {
    look.sum[kSpeed] *= dice.Pick({0.1, 1e9, 1e15, 1e30});
  }
  return look;
}

void RollHost(Dice& dice, PF_InData& inData) {
  for (PF_RationalScale* ratio : {&inData.downsample_x, &inData.downsample_y}) {
    *ratio = dice.Pick<PF_RationalScale>({{1, 1}, {1, 1}, {1, 2}, {1, 3}, {2, 3}, {3333, 10'000}});
  }
  inData.pixel_aspect_ratio = dice.Pick<PF_RationalScale>({{1, 1}, {1, 1}, {10, 11}, {2, 1}, {768, 1405}});
  inData.time_step = inData.local_time_step = dice.Pick({1001, 1000, 1200});
  inData.time_scale = 30'000;
  inData.shutter_angle = dice.Pick<PF_Fixed>({0, -65536, 32768, 65536, 131072, 1});
}

/// A ratio that cannot be drawn with, or a distance that is none.
void Break(Dice& dice, PF_InData& inData, SnowLook& look) {
  PF_RationalScale& aspect = inData.pixel_aspect_ratio;
  if (dice.OneIn(3)) {
    *dice.Pick({&look.sum[kWind], &look.offset.y}) = dice.Pick<double>({INFINITY, NAN});
  } else {
    *dice.Pick({&inData.downsample_x.num, &aspect.num}) = 0;
  }
  if (dice.OneIn(2)) {
    *dice.Pick({&inData.downsample_y.den, &aspect.den}) = 0;
  }
}

template <class T>
void Paint(Dice& dice, GuardedWorld<T>& world) {
  using C = typename PixelType<T>::Channel;
  const double over = sizeof(C) == 4 ? 1.25 : 1.0;
  const auto channel = [](double v) { return static_cast<C>(v * PixelType<T>::kWhite); };
  const int kind = dice.Whole(0, 3);  // transparent, opaque, mixed, half transparent
  for (std::int32_t i = 0; i < world.World()->height * world.World()->width; ++i) {
    const double alpha = kind == 2 ? dice.Ends(0, over) : kind == 3 ? 0.5 : kind;
    world.At(i % world.World()->width, i / world.World()->width) = {
        channel(alpha), channel(dice.Ends(0, over)), channel(dice.Ends(0, over)), channel(dice.Ends(0, 1))};
  }
}

/// Numbers that cancel out, so that sums in another order, or products in another precision, differ by more
/// than the last step to single precision hides.
void MagnifyRoundings(Dice& dice, FrameField& record) {
  const double far = dice.Pick({1e9, 1e11});
  if (dice.OneIn(4)) {
    record.wiggleAmount = record.wiggleAmountEnd = far;
    record.phaseBlur = 0;
  } else if (dice.OneIn(4)) {
    record.frameMax = 1;
    record.sceneDepth = 1e308;
    record.flakeSize = 1.5e308;
  } else {
    record.windVariation = record.speedVariation = record.spreadTan = 0;
    const auto [there, back] =
        dice.Pick<std::pair<double*, double*>>({{&record.windBlur, &record.offsetDeltaX},
                                                {&record.fallBlur, &record.offsetDeltaY},
                                                {&record.windDistance, &record.offsetX},
                                                {&record.fallDistance, &record.offsetY}});
    *there = far;
    *back = -far;
  }
}

template <class T>
void SetColor(const PF_Pixel& color, FrameSetup<T>& record) {
  using C = typename PixelType<T>::Channel;
  constexpr float kWhite = PixelType<T>::kWhite;
  // In float, the nearest to 1 / 255; 32768 and less is exact in float.
  const auto channel = [](int v) {
    return static_cast<C>(sizeof(C) == 4 ? static_cast<float>(v) * 0.003921568859368563f
                                         : static_cast<float>(sizeof(C) == 1 ? v : (v * 32768 + 128) / 255));
  };
  record.flakeColor = {static_cast<C>(record.opacity * kWhite), channel(color.red), channel(color.green),
                       channel(color.blue)};
  record.influenceScale = record.influence / kWhite;
}

/// The nearest pixel of the image, also when the answer is an error.
template <class T>
PF_Err SampleNearestMock(PF_ProgPtr ref, PF_Fixed x, PF_Fixed y, const PF_SampPB* params, T* dst) {
  FrameHost& host = *static_cast<FrameHost*>(ref);
  host.calls.push_back({HostCall::kSample, x, y});
  *dst = minihost::SampleNearest<T>(*params->src, x, y);
  return host.answer ? host.answer(host.calls.back()) : PF_Err_NONE;
}

}  // namespace

template <class T>
void FillRecord(SnowLook look, FrameSetup<T>& r) {
  const PF_InData& host = *r.inData;
  const auto fraction = [&](ParameterIndex index) { return look.open[index] * 0.01; };
  r.scale = FX_PARc(&host);
  r.flakeCount = static_cast<std::int32_t>(look.open[kFlakes]);
  r.sceneDepth = look.open[kSceneDepth];
  r.flakeSize = look.open[kSize];
  r.sizeVariation = fraction(kSizeVariation);
  r.speedVariation = fraction(kSpeedVariation);
  r.windVariation = fraction(kWindVariation);
  r.amountVariation = fraction(kAmountVariation);
  r.frequencyVariation = fraction(kFrequencyVariation);
  r.stochasticWiggle = look.open[kStochasticWiggle] != 0;
  r.flatness = static_cast<float>(fraction(kFlakeFlatness));
  r.opacity = static_cast<float>(fraction(kOpacity));
  r.influence = static_cast<float>(fraction(kInfluence));
  r.spreadWidth = static_cast<float>(look.open[kSpreadWidth]);
  r.spreadHeight = static_cast<float>(look.open[kSpreadHeight]);
  r.compositeWithOriginal = look.open[kCompositeWithOriginal] != 0;

  r.frameWidth = look.extent.x * r.scale.xScaleInv;
  r.frameHeight = look.extent.y * r.scale.yScaleInv;
  r.halfFrameWidth = 0.5 * r.frameWidth;
  r.halfFrameHeight = 0.5 * r.frameHeight;
  r.originX = -static_cast<float>(look.tile.x * r.scale.xScaleInv);
  r.originY = -static_cast<float>(look.tile.y * r.scale.yScaleInv);
  r.frameMax = std::max(r.frameWidth, r.frameHeight);
  r.fieldWidth = (r.frameWidth * (r.frameMax + r.sceneDepth)) / r.frameMax;
  r.fieldHeight = (r.frameHeight * (r.frameMax + r.sceneDepth)) / r.frameMax;
  r.halfFieldWidth = 0.5 * r.fieldWidth;
  r.halfFieldHeight = 0.5 * r.fieldHeight;
  r.offsetX = look.offset.x * r.scale.xScaleInv;
  r.offsetY = look.offset.y * r.scale.yScaleInv;
  r.offsetDeltaX = look.offsetEnd.x * r.scale.xScaleInv - r.offsetX;
  r.offsetDeltaY = look.offsetEnd.y * r.scale.yScaleInv - r.offsetY;
  r.groundY = fraction(kGroundLevel) * r.halfFieldHeight;
  r.embedDistance = r.frameMax + (r.compositeWithOriginal ? fraction(kEmbedDepth) : 1.0) * r.sceneDepth;
  r.spreadTan = std::tan(std::min(look.open[kSpread], 89.9) * 0.008726646259971648);

  const double frameSeconds = host.local_time_step / static_cast<double>(host.time_scale);
  const double stepSeconds = host.time_step / static_cast<double>(host.time_scale);
  const double open = host.shutter_angle > 0 ? host.shutter_angle / 65536.0 : 1.0;
  r.wiggleOn = look.open[kAmount] > 0 || look.close[kAmount] > 0 || r.flatness != 0;
  const bool noise = r.wiggleOn && r.stochasticWiggle;
  const double k = noise ? 2.0 : 6.283185307179586;
  r.wiggleAmount = look.open[kAmount] * (noise ? 2 : 1);
  r.wiggleAmountEnd = look.close[kAmount] * (noise ? 2 : 1);
  r.fallDistance = look.sum[kSpeed] * frameSeconds;
  r.windDistance = look.sum[kWind] * frameSeconds;
  r.wigglePhase = (look.sum[kFrequency] * frameSeconds) * k;
  r.fallBlur = (look.close[kSpeed] * stepSeconds) * open;
  r.windBlur = (look.close[kWind] * stepSeconds) * open;
  r.phaseBlur = ((look.close[kFrequency] * stepSeconds) * open) * k;

  const auto seed = static_cast<std::int32_t>(look.open[kRandomSeed]);
  r.flakeSeed = seed ^ 731;
  r.illumSeed = seed ^ 3179;
  r.wiggleSeed = seed ^ 1793;
  if (noise) {
    r.noiseTable.NoiseTableLin(r.wiggleSeed, 128, 0, 0);
  }
  SetColor(look.color, r);
  r.transferOp = look.open[kTransferMode] == 2 ? JLightenT<T> : JCompositeT<T>;
  r.underOp = JCompositeUnderT<T>;
}

FrameHost::FrameHost() {
  inData.effect_ref = this;
  inData.utils = &utils;
  utils.ansi.cos = [](double v) { return std::cos(v); };
  utils.ansi.sqrt = [](double v) { return std::sqrt(v); };
  inData.inter.progress = [](PF_ProgPtr ref, std::int32_t current, std::int32_t total) {
    FrameHost& host = *static_cast<FrameHost*>(ref);
    host.calls.push_back({HostCall::kProgress, current, total});
    return host.answer ? host.answer(host.calls.back()) : PF_Err_NONE;
  };
}

template <class T>
RandomFrame<T>::RandomFrame(std::uint32_t s)
    : seed(s),
      broken(s % 16 == 15),
      look(RollLook(s)),
      record{{.scale = FX_PARc(&host.inData), .inData = &host.inData}},
      output(Dice(s * 4 + 1).Whole(1, 97), Dice(s * 4 + 2).Whole(1, 61)),
      illumination(std::max(2, output.World()->width / 10), std::max(2, output.World()->height / 10)) {
  Dice dice(s ^ 0x5eed);
  RollHost(dice, host.inData);
  look.extent = {1.0 * output.World()->width, 1.0 * output.World()->height};
  if (dice.OneIn(3)) {  // the output is a tile of a larger layer
    look.tile = {1.0 * dice.Whole(0, 150), 1.0 * dice.Whole(0, 150)};
    look.extent = {look.extent.x + look.tile.x + dice.Whole(0, 50), look.extent.y + look.tile.y + 7};
  }
  look.offset = {look.extent.x * 0.5, look.extent.y * 0.5};
  if (dice.OneIn(6)) {
    look.offset = {dice.Ends(-32768, 32767), dice.Ends(-32768, 32767)};
  }
  look.offsetEnd = dice.OneIn(3) ? DoublePoint{dice.Between(-50, 50), dice.Between(-50, 50)} : look.offset;
  if (broken) {
    Break(dice, host.inData, look);
  }

  FillRecord(look, record);
  if (s % 8 == 3) {
    MagnifyRoundings(dice, record);
  }
  // The end far off the picture.
  if (dice.OneIn(16)) {
    record.fallBlur *= 1e9;
  }
  // Phases and colours beyond 32 bits.
  if (dice.OneIn(16)) {
    record.wigglePhase = dice.Pick({1e12, -1e12});
    record.influence = 1e12f;
    record.influenceScale = record.influence / static_cast<float>(PixelType<T>::kWhite);
  }
  record.output = output.World();
  record.illumWorld = illumination.World();
  record.sampleFn = SampleNearestMock<T>;
  Reset();
}

template <class T>
void RandomFrame<T>::Reset() {
  Dice dice(seed + 77);
  Paint(dice, output);
  Paint(dice, illumination);
  host.calls.clear();
}

template void FillRecord(SnowLook, FrameSetup<PF_Pixel>&);
template void FillRecord(SnowLook, FrameSetup<PF_Pixel16>&);
template void FillRecord(SnowLook, FrameSetup<PF_PixelFloat>&);
template struct RandomFrame<PF_Pixel>;
template struct RandomFrame<PF_Pixel16>;
template struct RandomFrame<PF_PixelFloat>;
