#include "tests/bindings/openfx/host.h"

#include <algorithm>
#include <cstdarg>
#include <stdexcept>
#include <type_traits>

#include "tests/bindings/library.h"

namespace ofxhost {
namespace {

using openfx::kOk;
constexpr OfxStatus kUnknown = 3;

PropertySet& SetOf(OfxPropertySetHandle handle) {
  return *reinterpret_cast<PropertySet*>(handle);
}

OfxPropertySetHandle HandleOf(PropertySet& set) {
  return reinterpret_cast<OfxPropertySetHandle>(&set);
}

template <class Value, class Given>
OfxStatus Set(OfxPropertySetHandle handle, const char* name, int index, Given value) {
  std::vector<PropertyValue>& values = SetOf(handle)[name];
  values.resize(std::max(values.size(), static_cast<std::size_t>(index) + 1));
  values[static_cast<std::size_t>(index)] = Value(value);
  return kOk;
}

template <class Value, class Out>
OfxStatus Get(OfxPropertySetHandle handle, const char* name, int index, Out* out) {
  const auto found = SetOf(handle).find(name);
  const auto place = static_cast<std::size_t>(index);
  if (found == SetOf(handle).end() || place >= found->second.size() ||
      !std::holds_alternative<Value>(found->second[place])) {
    return kUnknown;
  }
  if constexpr (std::is_same_v<Value, std::string>) {
    *out = std::get<Value>(found->second[place]).data();
  } else {
    *out = std::get<Value>(found->second[place]);
  }
  return kOk;
}

const OfxPropertySuite kPropertySuite = [] {
  OfxPropertySuite suite{};
  suite.propSetPointer = Set<void*, void*>;
  suite.propSetString = Set<std::string, const char*>;
  suite.propSetDouble = Set<double, double>;
  suite.propSetInt = Set<int, int>;
  suite.propGetPointer = Get<void*, void*>;
  suite.propGetString = Get<std::string, char*>;
  suite.propGetDouble = Get<double, double>;
  suite.propGetInt = Get<int, int>;
  return suite;
}();

Effect& EffectOf(void* handle) {
  return *static_cast<Effect*>(handle);
}

OfxStatus GetClip(OfxImageEffectHandle effect, const char* name, OfxImageClipHandle* clip,
                  OfxPropertySetHandle* set) {
  const auto found = EffectOf(effect).clips.find(name);
  if (found == EffectOf(effect).clips.end()) {
    return openfx::kErrBadHandle;
  }
  found->second.properties["effect"] = {static_cast<void*>(effect)};
  *clip = reinterpret_cast<OfxImageClipHandle>(&found->second);
  *set = HandleOf(found->second.properties);
  return kOk;
}

OfxStatus GetImage(OfxImageClipHandle handle, OfxTime, const OfxRectD*, OfxPropertySetHandle* image) {
  Clip& clip = *reinterpret_cast<Clip*>(handle);
  if (clip.picture == nullptr) {
    return 1;
  }
  auto* effect = static_cast<Effect*>(std::get<void*>(clip.properties["effect"][0]));
  ++effect->pictures;
  clip.picture->properties["effect"] = {static_cast<void*>(effect)};
  *image = HandleOf(clip.picture->properties);
  return kOk;
}

const OfxImageEffectSuite kEffectSuite = [] {
  OfxImageEffectSuite suite{};
  suite.getPropertySet = [](OfxImageEffectHandle effect, OfxPropertySetHandle* set) {
    *set = HandleOf(EffectOf(effect).properties);
    return kOk;
  };
  suite.getParamSet = [](OfxImageEffectHandle effect, OfxParamSetHandle* set) {
    *set = reinterpret_cast<OfxParamSetHandle>(effect);
    return kOk;
  };
  suite.clipDefine = [](OfxImageEffectHandle effect, const char* name, OfxPropertySetHandle* set) {
    *set = HandleOf(EffectOf(effect).clips[name].properties);
    return kOk;
  };
  suite.clipGetHandle = GetClip;
  suite.clipGetImage = GetImage;
  suite.clipReleaseImage = [](OfxPropertySetHandle image) {
    --EffectOf(std::get<void*>(SetOf(image)["effect"][0])).pictures;
    return kOk;
  };
  suite.abort = [](OfxImageEffectHandle effect) { return EffectOf(effect).abort(); };
  return suite;
}();

OfxStatus DefineParam(OfxParamSetHandle set, const char* type, const char* name, OfxPropertySetHandle* out) {
  Effect& effect = EffectOf(set);
  std::unique_ptr<Param>& param = effect.params[name];
  if (param != nullptr) {
    return 6;
  }
  param = std::make_unique<Param>();
  param->type = type;
  effect.order.emplace_back(name);
  *out = HandleOf(param->properties);
  return kOk;
}

OfxStatus GetParam(OfxParamSetHandle set, const char* name, OfxParamHandle* param,
                   OfxPropertySetHandle* out) {
  Effect& effect = EffectOf(set);
  const auto found = effect.params.find(name);
  if (found == effect.params.end()) {
    return kUnknown;
  }
  found->second->properties["effect"] = {static_cast<void*>(&effect)};
  *param = reinterpret_cast<OfxParamHandle>(found->second.get());
  *out = HandleOf(found->second->properties);
  return kOk;
}

OfxStatus GetValueAtTime(OfxParamHandle handle, OfxTime time, ...) {
  const Param& param = *reinterpret_cast<const Param*>(handle);
  ++static_cast<Effect*>(std::get<void*>(param.properties.at("effect")[0]))->reads;
  const bool isDouble = param.type == "OfxParamTypeDouble" || param.type == "OfxParamTypeRGB";
  va_list out;
  va_start(out, time);
  for (const Curve& curve : param.curves) {
    if (isDouble) {
      *va_arg(out, double*) = curve(time);
    } else {
      *va_arg(out, int*) = static_cast<int>(curve(time));
    }
  }
  va_end(out);
  return kOk;
}

const OfxParameterSuite kParameterSuite = [] {
  OfxParameterSuite suite{};
  suite.paramDefine = DefineParam;
  suite.paramGetHandle = GetParam;
  suite.paramGetValueAtTime = GetValueAtTime;
  suite.paramGetNumKeys = [](OfxParamHandle param, unsigned* count) {
    *count = static_cast<unsigned>(reinterpret_cast<const Param*>(param)->keys.size());
    return kOk;
  };
  suite.paramGetKeyTime = [](OfxParamHandle param, unsigned key, OfxTime* time) {
    *time = reinterpret_cast<const Param*>(param)->keys.at(key);
    return kOk;
  };
  return suite;
}();

OfxStatus Message(void* effect, const char*, const char*, const char* format, ...) {
  va_list values;
  va_start(values, format);
  EffectOf(effect).messages.emplace_back(va_arg(values, const char*));
  va_end(values);
  return kOk;
}
const OfxMessageSuite kMessageSuite = {Message};

const OfxProgressSuite kProgressSuite = {
    [](void* effect, const char*) { return ++EffectOf(effect).openProgress, kOk; },
    [](void* effect, double) { return ++EffectOf(effect).progress, openfx::kReplyYes; },
    [](void* effect) { return --EffectOf(effect).openProgress, kOk; }};

const void* FetchSuite(OfxPropertySetHandle, const char* name, int version) {
  const std::map<std::string, const void*> suites = {{"OfxPropertySuite", &kPropertySuite},
                                                     {"OfxImageEffectSuite", &kEffectSuite},
                                                     {"OfxParameterSuite", &kParameterSuite},
                                                     {"OfxMessageSuite", &kMessageSuite},
                                                     {"OfxProgressSuite", &kProgressSuite}};
  const auto found = suites.find(name);
  return version == 1 && found != suites.end() ? found->second : nullptr;
}

}  // namespace

std::size_t BytesPerPixel(const std::string& depth) {
  return depth == "OfxBitDepthByte" ? 4 : depth == "OfxBitDepthShort" ? 8 : 16;
}

std::unique_ptr<Picture> MakePicture(const Layout& layout) {
  constexpr int kPadding = 12;
  auto picture = std::make_unique<Picture>();
  const int rowBytes = layout.width * static_cast<int>(BytesPerPixel(layout.depth)) + kPadding;
  picture->bytes.assign(static_cast<std::size_t>(rowBytes) * static_cast<std::size_t>(layout.height),
                        std::byte{0xCD});
  std::byte* first = picture->bytes.data() + (layout.isDownwards ? rowBytes * (layout.height - 1) : 0);
  const std::vector<PropertyValue> bounds = {layout.x1, layout.y1, layout.x1 + layout.width,
                                             layout.y1 + layout.height};
  picture->properties = PropertySet({{"OfxImagePropData", {static_cast<void*>(first)}},
                                     {"OfxImagePropBounds", bounds},
                                     {"OfxImagePropRegionOfDefinition", bounds},
                                     {"OfxImagePropRowBytes", {layout.isDownwards ? -rowBytes : rowBytes}},
                                     {"OfxImageEffectPropPixelDepth", {layout.depth}},
                                     {"OfxImageEffectPropComponents", {std::string("OfxImageComponentRGBA")}},
                                     {"OfxImageEffectPropPreMultiplication", {layout.alpha}},
                                     {"OfxImagePropPixelAspectRatio", {layout.pixelAspectRatio}}});
  return picture;
}

std::byte* PixelAt(Picture& picture, int x, int y) {
  auto* first = static_cast<std::byte*>(std::get<void*>(picture.properties["OfxImagePropData"][0]));
  const auto depth = std::get<std::string>(picture.properties["OfxImageEffectPropPixelDepth"][0]);
  return first + y * std::get<int>(picture.properties["OfxImagePropRowBytes"][0]) +
         x * static_cast<int>(BytesPerPixel(depth));
}

Plugin::Plugin(const std::string& file) : host_{nullptr, FetchSuite} {
  void* library = OpenLibrary(file.c_str());
  if (library == nullptr) {
    throw std::runtime_error("cannot load " + file);
  }
  const auto count = reinterpret_cast<int (*)()>(FindSymbol(library, "OfxGetNumberOfPlugins"));
  const auto get = reinterpret_cast<OfxPlugin* (*)(int)>(FindSymbol(library, "OfxGetPlugin"));
  if (count == nullptr || get == nullptr || count() != 1 || get(1) != nullptr) {
    throw std::runtime_error(file + " holds no plug-in");
  }
  plugin = get(0);
  plugin->setHost(&host_);
}

OfxStatus Plugin::Act(const char* action, Effect* effect, PropertySet* in, PropertySet* out) const {
  return plugin->mainEntry(action, effect, in == nullptr ? nullptr : HandleOf(*in),
                           out == nullptr ? nullptr : HandleOf(*out));
}

std::unique_ptr<Effect> Plugin::Create(const std::string& context) const {
  auto effect = std::make_unique<Effect>();
  PropertySet in = {{"OfxImageEffectPropContext", {context}}};
  if (Act("OfxActionLoad", nullptr) != kOk || Act("OfxActionDescribe", effect.get()) != kOk ||
      Act("OfxImageEffectActionDescribeInContext", effect.get(), &in) != kOk) {
    throw std::runtime_error("the plug-in does not describe itself");
  }
  for (auto& [name, param] : effect->params) {
    for (const PropertyValue& value : param->properties["OfxParamPropDefault"]) {
      const double number =
          std::holds_alternative<int>(value) ? std::get<int>(value) : std::get<double>(value);
      param->curves.push_back([number](double) { return number; });
    }
  }
  for (auto& [name, clip] : effect->clips) {
    clip.properties["OfxImageEffectPropFrameRate"] = {25.0};
  }
  if (Act("OfxActionCreateInstance", effect.get()) != kOk) {
    throw std::runtime_error("the plug-in makes no instance");
  }
  return effect;
}

OfxStatus Plugin::Render(Effect& effect, double time, Picture* source, Picture& output, double scale) const {
  effect.clips["Source"].picture = source;
  effect.clips["Output"].picture = &output;
  PropertySet in({{"OfxPropTime", {time}},
                  {"OfxImageEffectPropRenderScale", {scale, scale}},
                  {"OfxImageEffectPropFieldToRender", {std::string("OfxFieldBoth")}},
                  {"OfxImageEffectPropSequentialRenderStatus", {0}},
                  {"OfxImageEffectPropRenderWindow", output.properties["OfxImagePropBounds"]}});
  for (const char* action : {"OfxImageEffectActionIsIdentity", "OfxImageEffectActionGetRegionsOfInterest",
                             "OfxImageEffectActionBeginSequenceRender"}) {
    Act(action, &effect, &in);
  }
  const OfxStatus status = Act("OfxImageEffectActionRender", &effect, &in);
  Act("OfxImageEffectActionEndSequenceRender", &effect, &in);
  return status;
}

}  // namespace ofxhost
