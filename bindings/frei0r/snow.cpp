#include "bindings/frei0r/snow.h"

#include <bit>
#include <cstring>
#include <stdexcept>
#include <string>

#include "hostapi/commands.h"
#include "minihost/effect.h"
#include "minihost/parameter/set.h"
#include "minihost/picture/image.h"

namespace frei0r {
namespace {

using minihost::Image;
using Kind = Parameter::Kind;

TimeUnit UnitOf(double setting) {
  if (setting >= 2.0 / 3) {
    return TimeUnit::kMilliseconds;
  }
  return setting >= 1.0 / 3 ? TimeUnit::kSeconds : TimeUnit::kAuto;
}

// The effect has alpha first: as whole pixels, which the compiler takes many at once, that is a rotation.
static_assert(std::endian::native == std::endian::little);

void ReadRows(const std::uint8_t* in, Image& image) {
  for (int row = 0; row < image.Height(); ++row) {
    for (PF_Pixel& pixel : image.Row<PF_Pixel>(row)) {
      std::uint32_t word;
      std::memcpy(&word, in, sizeof word);
      pixel = std::bit_cast<PF_Pixel>(std::rotl(word, 8));
      in += sizeof word;
    }
  }
}

void WriteRows(const Image& image, std::uint8_t* out) {
  for (int row = 0; row < image.Height(); ++row) {
    for (const PF_Pixel& pixel : image.Row<PF_Pixel>(row)) {
      const std::uint32_t word = std::rotr(std::bit_cast<std::uint32_t>(pixel), 8);
      std::memcpy(out, &word, sizeof word);
      out += sizeof word;
    }
  }
}

int CheckedSide(unsigned side) {
  if (side < 1 || side > static_cast<unsigned>(Image::kMaxSide)) {
    throw std::invalid_argument(std::to_string(side) + " pixels; 1 to " + std::to_string(Image::kMaxSide) +
                                " a side can be drawn on");
  }
  return static_cast<int>(side);
}

}  // namespace

const SnowEffect& TheEffect() {
  static const SnowEffect effect = [] {
    auto linked = minihost::Effect::Linked(&MainEntry);
    std::vector<Parameter> parameters = MakeParameters(linked->Parameters());
    return SnowEffect{std::move(linked), std::move(parameters)};
  }();
  return effect;
}

Snow::Snow(unsigned width, unsigned height)
    : width_(CheckedSide(width)),
      height_(CheckedSide(height)),
      histories_(TheEffect().effect->Parameters().size()) {
  for (const Parameter& parameter : TheEffect().parameters) {
    settings_.push_back(DefaultOf(parameter));
  }
}

minihost::Value Snow::ValueOf(std::size_t index) const {
  const Parameter& parameter = TheEffect().parameters[index];
  switch (parameter.kind) {
    case Kind::kColor:
      return ColorOf(settings_[index]);
    case Kind::kPointX:
      // The other side stands next.
      return minihost::Point{NumberOf(parameter, settings_[index][0]),
                             NumberOf(TheEffect().parameters[index + 1], settings_[index + 1][0])};
    default:
      return NumberOf(parameter, settings_[index][0]);
  }
}

void Snow::Follow(std::int32_t frame) {
  minihost::ParameterSet set = instance_->Parameters();
  bool isChanged = false;
  bool isEdited = !(clock_.FrameRate() == renderedRate_);
  for (std::size_t i = 0; i < settings_.size(); ++i) {
    const Parameter& parameter = TheEffect().parameters[i];
    if (parameter.info == nullptr || parameter.kind == Kind::kPointY) {
      continue;
    }
    const int index = parameter.info->index;
    const minihost::Value now = ValueOf(i);
    if (!parameter.info->animatable) {
      if (set.At(index, 0) != now) {
        set.Set(index, now);
        isChanged = isEdited = true;
      }
      continue;
    }
    History& history = histories_[static_cast<std::size_t>(index)];
    const History::Change change = history.See(frame, now);
    if (change != History::Change::kNone) {
      set.Set(index, history.Seen());
      isChanged = true;
      isEdited = isEdited || change == History::Change::kEdited;
    }
  }
  if (isChanged) {
    instance_->SetParameters(std::move(set));
  }
  if (isEdited) {
    // The effect's sums up to the last frame hold no more.
    instance_->Send(PF_Cmd_SEQUENCE_SETDOWN);
    instance_->Send(PF_Cmd_SEQUENCE_SETUP);
  }
  renderedRate_ = clock_.FrameRate();
}

void Snow::Render(double time, const std::uint8_t* in, std::uint8_t* out) {
  if (!instance_) {
    input_ = Image(width_, height_, minihost::Depth::kBits8);
    output_ = Image(width_, height_, minihost::Depth::kBits8);
    instance_ = std::make_unique<minihost::Instance>(TheEffect().effect);
  }
  double framesPerSecond = 0;
  TimeUnit unit = TimeUnit::kAuto;
  for (std::size_t i = 0; i < settings_.size(); ++i) {
    if (TheEffect().parameters[i].kind == Kind::kFrameRate) {
      framesPerSecond = FramesPerSecondOf(settings_[i][0]);
    } else if (TheEffect().parameters[i].kind == Kind::kTimeUnit) {
      unit = UnitOf(settings_[i][0]);
    }
  }
  clock_.Set(framesPerSecond, unit);
  const std::int32_t number = clock_.FrameAt(time);
  Follow(number);

  const Rate& rate = clock_.FrameRate();
  minihost::Frame frame;
  frame.time = number * rate.timeStep;
  frame.timing = {static_cast<std::uint32_t>(rate.timeScale), rate.timeStep, rate.timeStep};
  if (in != nullptr) {
    ReadRows(in, input_);
  }
  frame.input = &input_;
  frame.output = &output_;
  if (const minihost::RenderResult result = instance_->Render(frame); result.err != PF_Err_NONE) {
    throw std::runtime_error("the effect failed with code " + std::to_string(result.err));
  }
  WriteRows(output_, out);
}

}  // namespace frei0r
