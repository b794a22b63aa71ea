#include "effect/render/frame/parameters.h"

#include "effect/host/parameter_index.h"
#include "effect/pixel/integer.h"

namespace {

constexpr double kPercent = 0.01;

// Reads at one time with the frame's step and scale.
class Reader {
 public:
  Reader(const FrameField& frame, std::int32_t time) : frame_(frame), time_(time) {}

  /// `function` is one of the host's readers.
  template <class Function>
  auto Read(Function function, ParameterIndex index) const {
    return function(frame_.inData, index, time_, frame_.timeStep, frame_.timeScale);
  }

  double Number(ParameterIndex index) const { return Read(Get_Float_Slider, index); }
  double Fraction(ParameterIndex index) const { return Number(index) * kPercent; }
  float NumberF(ParameterIndex index) const { return static_cast<float>(Number(index)); }
  float FractionF(ParameterIndex index) const { return static_cast<float>(Fraction(index)); }
  std::int32_t Integer(ParameterIndex index) const { return Read(Get_Int_Slider, index); }
  std::int32_t Choice(ParameterIndex index) const { return Read(Get_PopUp, index); }
  bool Checked(ParameterIndex index) const { return Read(Get_Checkbox, index); }
  DoublePoint Point(ParameterIndex index) const { return Read(Get_Point, index); }

 private:
  const FrameField& frame_;
  std::int32_t time_;
};

}  // namespace

double ShutterFraction(const PF_InData* in_data) {
  const double fraction = in_data->shutter_angle / 65536.0;
  return fraction > 0.0 ? fraction : 1.0;
}

void ReadTimes(FrameField& frame) {
  const PF_InData& in = *frame.inData;
  frame.renderTime = in.current_time;
  frame.timeStep = in.time_step;
  frame.timeScale = in.time_scale;
  frame.localTimeStep = in.local_time_step;
  const double open = ShutterFraction(frame.inData) * static_cast<double>(in.time_step);
  frame.shutterEndTime = WrapAdd(frame.renderTime, TruncateToInt32(open));
  frame.frameSeconds = static_cast<double>(frame.localTimeStep) / static_cast<double>(frame.timeScale);
  frame.stepSeconds = static_cast<double>(frame.timeStep) / static_cast<double>(frame.timeScale);
}

ViewSamples ReadParameters(FrameField& frame) {
  ViewSamples view = {};
  // The order of the reads is the order in which a recording host sees them.
  const Reader open(frame, frame.renderTime);
  frame.flakeCount = TruncateToInt32(open.Number(kFlakes));
  frame.sceneDepth = open.Number(kSceneDepth);
  frame.flakeSize = open.Number(kSize);
  frame.embedDepth = open.Fraction(kEmbedDepth);
  frame.opacity = open.FractionF(kOpacity);
  frame.influence = open.FractionF(kInfluence);
  frame.spreadWidth = open.NumberF(kSpreadWidth);
  frame.spreadHeight = open.NumberF(kSpreadHeight);
  frame.transferMode = open.Choice(kTransferMode);
  frame.speedVariation = open.Fraction(kSpeedVariation);
  frame.windVariation = open.Fraction(kWindVariation);
  view.spreadDegrees = open.Number(kSpread);
  frame.compositeWithOriginal = open.Checked(kCompositeWithOriginal);
  frame.groundLevel = open.Fraction(kGroundLevel);
  frame.randomSeed = open.Integer(kRandomSeed);
  frame.stochasticWiggle = open.Checked(kStochasticWiggle);
  frame.wiggleAmount = open.Number(kAmount);
  frame.amountVariation = open.Fraction(kAmountVariation);
  frame.sizeVariation = open.Fraction(kSizeVariation);
  frame.frequencyVariation = open.Fraction(kFrequencyVariation);
  frame.flatness = open.FractionF(kFlakeFlatness);
  view.offset = open.Point(kOffset);

  const Reader close(frame, frame.shutterEndTime);
  frame.wiggleAmountEnd = close.Number(kAmount);
  view.offsetEnd = close.Point(kOffset);
  return view;
}

PF_Pixel ReadColor(const FrameField& frame) {
  return Reader(frame, frame.renderTime).Read(Get_Color, kColor);
}
