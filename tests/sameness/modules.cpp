// Frames by a built module, through what its kind of host calls.
//
//   modules openfx FILE [...]    all but those whose shutter is not open for half a frame, which hosts cannot
//   say modules frei0r FILE [...]    of 8 bits, full size and values that stay: such hosts have one picture
//   and numbers
//
// What follows is sameness::Run's.  Neither kind chooses the protocol.
#include <cstring>
#include <stdexcept>
#include <string>

#include "hostapi/commands.h"
#include "minihost/effect.h"
#include "tests/bindings/library.h"
#include "tests/bindings/openfx/host.h"
#include "tests/sameness/looks.h"

namespace {

using minihost::Depth;
using minihost::Image;
using minihost::ParameterInfo;
using minihost::Track;
using sameness::Look;

bool IsCommon(const Look& look) {
  return look.protocol == minihost::Protocol::kSmart && look.shutter == 180;
}

const std::shared_ptr<const minihost::Effect>& TheEffect() {
  static const auto effect = minihost::Effect::Linked(&MainEntry);
  return effect;
}

// Calls `task` with each pixel and its number.
template <class Image, class Task>
void ForEachPixel(Image& image, Task&& task) {
  minihost::WithPixel(image.PixelDepth(), [&]<class Pixel>(Pixel) {
    std::size_t number = 0;
    for (int row = 0; row < image.Height(); ++row) {
      for (auto& pixel : image.template Row<Pixel>(row)) {
        task(pixel, number++);
      }
    }
  });
}

// Hosts have alpha last.  Of 16 bits they count to 65535, the effect to 32768.
template <class Sample>
Sample ToHost(Sample sample) {
  return std::is_same_v<Sample, std::uint16_t> ? static_cast<Sample>((sample * 65535u + 16384) / 32768)
                                               : sample;
}
template <class Sample>
Sample FromHost(Sample sample) {
  return std::is_same_v<Sample, std::uint16_t> ? static_cast<Sample>((sample * 32768u + 32767) / 65535)
                                               : sample;
}

void SetCurves(ofxhost::Effect& effect, const ParameterInfo& info, const Track& track) {
  for (auto& [name, param] : effect.params) {
    const auto& labels = param->properties["OfxPropLabel"];
    const std::string label = labels.empty() ? "" : std::get<std::string>(labels[0]);
    const auto set = [&, to = param.get()](const std::string& of, std::size_t place, auto&& part) {
      if (label == of) {
        to->curves.resize(std::max(to->curves.size(), place + 1));
        to->curves[place] = [track, part](double time) { return part(track.At(time)); };
      }
    };
    using minihost::Color;
    using minihost::Point;
    const std::string display = info.DisplayName();
    if (info.type == PF_Param_POINT) {
      set(display + " X", 0, [](const minihost::Value& value) { return std::get<Point>(value).x; });
      set(display + " Y", 0, [](const minihost::Value& value) { return std::get<Point>(value).y; });
    } else if (info.type == PF_Param_COLOR) {
      set(display, 0, [](const minihost::Value& value) { return std::get<Color>(value).red / 255; });
      set(display, 1, [](const minihost::Value& value) { return std::get<Color>(value).green / 255; });
      set(display, 2, [](const minihost::Value& value) { return std::get<Color>(value).blue / 255; });
    } else {
      const double first = info.type == PF_Param_POPUP ? 1 : 0;
      set(display, 0, [first](const minihost::Value& value) { return std::get<double>(value) - first; });
    }
  }
}

std::optional<Image> ByOpenFx(const ofxhost::Plugin& plugin, const Look& look, Depth depth) {
  if (!IsCommon(look)) {
    return {};
  }
  Image image = sameness::PlateOf(look, depth);
  const ofxhost::Layout layout{.width = image.Width(),
                               .height = image.Height(),
                               .depth = depth == Depth::kBits8    ? "OfxBitDepthByte"
                                        : depth == Depth::kBits16 ? "OfxBitDepthShort"
                                                                  : "OfxBitDepthFloat",
                               .isDownwards = true,
                               .pixelAspectRatio = static_cast<double>(look.aspect.num) / look.aspect.den};
  const auto source = MakePicture(layout);
  const auto output = MakePicture(layout);
  const auto hostPixel = [&](ofxhost::Picture& picture, std::size_t number) {
    const int row = static_cast<int>(number) / layout.width;
    return PixelAt(picture, static_cast<int>(number) % layout.width, layout.height - 1 - row);
  };
  ForEachPixel(image, [&](const auto& pixel, std::size_t number) {
    const decltype(pixel.red) host[] = {ToHost(pixel.red), ToHost(pixel.green), ToHost(pixel.blue),
                                        ToHost(pixel.alpha)};
    std::memcpy(hostPixel(*source, number), host, sizeof host);
  });
  const auto effect = plugin.Create("OfxImageEffectContextFilter");
  for (auto& [name, clip] : effect->clips) {
    clip.properties["OfxImageEffectPropFrameRate"] = {static_cast<double>(sameness::kRate)};
  }
  const auto parameters = sameness::ParametersOf(look, TheEffect()->SharedParameters());
  for (const ParameterInfo& info : parameters.List()) {
    if (info.HasValue()) {
      SetCurves(*effect, info, parameters.TrackOf(info.index));
    }
  }
  if (plugin.Render(*effect, look.time, source.get(), *output, 1.0 / look.reduction) != 0) {
    throw std::runtime_error(std::string(look.name) + " was not rendered");
  }
  plugin.Destroy(*effect);
  ForEachPixel(image, [&](auto& pixel, std::size_t number) {
    decltype(pixel.red) host[4];
    std::memcpy(host, hostPixel(*output, number), sizeof host);
    pixel = {FromHost(host[3]), FromHost(host[0]), FromHost(host[1]), FromHost(host[2])};
  });
  return image;
}

class Frei0r {
 public:
  explicit Frei0r(const char* file) : library_(OpenLibrary(file)) {
    if (library_ == nullptr || Find<int()>("f0r_init")() != 1) {
      throw std::runtime_error(std::string("cannot load ") + file);
    }
  }

  std::optional<Image> Render(const Look& look, Depth depth) const {
    bool isConstant = true;
    for (const auto& [name, track] : look.tracks) {
      isConstant = isConstant && !track.Animated();
    }
    if (!IsCommon(look) || depth != Depth::kBits8 || !isConstant || look.reduction != 1) {
      return {};
    }
    Image image = sameness::PlateOf(look, depth);
    std::vector<std::uint8_t> in;  // alpha last
    for (int row = 0; row < image.Height(); ++row) {
      for (const PF_Pixel& pixel : image.Row<PF_Pixel>(row)) {
        in.insert(in.end(), {pixel.red, pixel.green, pixel.blue, pixel.alpha});
      }
    }
    std::vector<std::uint8_t> out(in.size());
    void* snow = Find<void*(unsigned, unsigned)>("f0r_construct")(static_cast<unsigned>(image.Width()),
                                                                  static_cast<unsigned>(image.Height()));
    SetParameters(snow, look);
    Find<void(void*, double, const void*, void*)>("f0r_update")(
        snow, static_cast<double>(look.time) / sameness::kRate, in.data(), out.data());
    Find<void(void*)>("f0r_destruct")(snow);
    const std::uint8_t* host = out.data();
    for (int row = 0; row < image.Height(); ++row) {
      for (PF_Pixel& pixel : image.Row<PF_Pixel>(row)) {
        pixel = {host[3], host[0], host[1], host[2]};
        host += 4;
      }
    }
    return image;
  }

 private:
  template <class Function>
  Function* Find(const char* name) const {
    return reinterpret_cast<Function*>(FindSymbol(library_, name));
  }

  // They go by their order, a point as two; the rate of frames stands behind them.
  void SetParameters(void* snow, const Look& look) const {
    int place = 0;
    const auto set = [&](double setting) {
      Find<void(void*, void*, int)>("f0r_set_param_value")(snow, &setting, place);
    };
    const auto parameters = sameness::ParametersOf(look, TheEffect()->SharedParameters());
    for (const ParameterInfo& info : parameters.List()) {
      if (!info.HasValue()) {
        continue;
      }
      const minihost::Value value = parameters.At(info.index, 0);
      if (info.type == PF_Param_CHECKBOX) {
        set(std::get<double>(value));
      } else if (info.type == PF_Param_POPUP) {
        set((std::get<double>(value) - 0.5) / static_cast<double>(info.choices.size()));
      } else if (const double* number = std::get_if<double>(&value)) {
        set((*number - info.sliderMin) / (info.sliderMax - info.sliderMin));
      }
      place += info.type == PF_Param_POINT ? 2 : 1;
    }
    set(sameness::kRate);
  }

  void* library_;
};

int Main(int count, char** arguments) {
  if (count >= 3 && arguments[1] == std::string_view("openfx")) {
    const ofxhost::Plugin plugin(arguments[2]);
    return sameness::Run([&](const Look& look, Depth depth) { return ByOpenFx(plugin, look, depth); },
                         count - 3, arguments + 3);
  }
  if (count >= 3 && arguments[1] == std::string_view("frei0r")) {
    const Frei0r module(arguments[2]);
    return sameness::Run([&](const Look& look, Depth depth) { return module.Render(look, depth); }, count - 3,
                         arguments + 3);
  }
  return 2;
}

}  // namespace

int main(int count, char** arguments) {
  try {
    return Main(count, arguments);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
  }
}
