// What the bundle's module exports, and the host's actions.  Nothing throws across these functions.
#include <atomic>
#include <cstring>
#include <exception>
#include <new>
#include <string>
#include <string_view>

#include "bindings/openfx/ofx.h"
#include "bindings/openfx/parameters.h"
#include "bindings/openfx/render.h"
#include "minihost/instance.h"

namespace {

using namespace openfx;

constexpr char kLabel[] = "Vintrel";
constexpr const char* kContexts[] = {"OfxImageEffectContextFilter", "OfxImageEffectContextGeneral",
                                     "OfxImageEffectContextGenerator"};
constexpr const char* kDepths[] = {"OfxBitDepthByte", "OfxBitDepthShort", "OfxBitDepthFloat"};

std::atomic<const OfxHost*> theHost{nullptr};

OfxPropertySetHandle PropertySetOf(const Suites& suites, OfxImageEffectHandle effect) {
  OfxPropertySetHandle set = nullptr;
  if (suites.effect->getPropertySet(effect, &set) != kOk) {
    throw ActionError{kErrBadHandle, ""};
  }
  return set;
}

void Describe(const Suites& suites, OfxImageEffectHandle effect) {
  const Properties properties(suites, PropertySetOf(suites, effect));
  properties.SetString("OfxPropLabel", kLabel);
  properties.SetString("OfxImageEffectPluginPropGrouping", "Filter");
  for (int i = 0; i < 3; ++i) {
    properties.SetString("OfxImageEffectPropSupportedContexts", kContexts[i], i);
    properties.SetString("OfxImageEffectPropSupportedPixelDepths", kDepths[i], i);
  }
  // Nothing is kept in instances, and what all share is locked.
  properties.SetString("OfxImageEffectPluginRenderThreadSafety", "OfxImageEffectRenderFullySafe");
  properties.SetInt("OfxImageEffectPluginPropHostFrameThreading", 0);
  properties.SetInt("OfxImageEffectPluginPropSingleInstance", 0);
  // Light and depth come from the whole picture.
  properties.SetInt("OfxImageEffectPropSupportsTiles", 0);
  properties.SetInt("OfxImageEffectPropSupportsMultiResolution", 1);
  properties.SetInt("OfxImageEffectPropTemporalClipAccess", 0);
  constexpr int kFasterInOrder = 2;
  properties.SetInt("OfxImageEffectInstancePropSequentialRender", kFasterInOrder);
}

void DefineClip(const Suites& suites, OfxImageEffectHandle effect, const char* name, bool isOptional) {
  OfxPropertySetHandle set = nullptr;
  if (suites.effect->clipDefine(effect, name, &set) != kOk) {
    throw ActionError{kFailed, ""};
  }
  const Properties properties(suites, set);
  properties.SetString("OfxImageEffectPropSupportedComponents", "OfxImageComponentRGBA");
  properties.SetInt("OfxImageEffectPropSupportsTiles", 0);
  if (isOptional) {
    properties.SetInt("OfxImageClipPropOptional", 1);
  }
}

void DescribeInContext(const Suites& suites, OfxImageEffectHandle effect, const Properties& arguments) {
  const std::string context = arguments.String("OfxImageEffectPropContext");
  if (context != kContexts[2]) {
    DefineClip(suites, effect, "Source", context != kContexts[0]);
  }
  DefineClip(suites, effect, "Output", false);
  OfxParamSetHandle set = nullptr;
  if (suites.effect->getParamSet(effect, &set) != kOk) {
    throw ActionError{kErrBadHandle, ""};
  }
  DefineParameters(suites, set, TheEffect()->Parameters());
}

/// Lets the effect grey out what has no meaning with the values of now.
void UpdateUi(const Suites& suites, OfxImageEffectHandle effect, double time) {
  const HostParameters host(suites, effect, TheEffect()->Parameters());
  minihost::ParameterSet values(TheEffect()->SharedParameters());
  for (const minihost::ParameterInfo& info : host.List()) {
    if (info.HasValue()) {
      values.Set(info.index, minihost::Track(host.At(info.index, time)));
    }
  }
  minihost::Instance instance(TheEffect(), std::move(values));
  if (instance.UpdateParamsUi(minihost::UiEvent::kUpdate).err != 0) {
    return;  // how things look is no reason to fail
  }
  for (const minihost::ParameterInfo& info : host.List()) {
    if (info.HasValue()) {
      host.SetDisabled(info.index, instance.IsDisabled(info.index));
    }
  }
}

/// Snow falls on a still picture too, and makes a picture of its own where there is none.
void SetClipPreferences(const Suites& suites, OfxImageEffectHandle effect, const Properties& preferences) {
  preferences.SetInt("OfxImageEffectFrameVarying", 1);
  OfxImageClipHandle clip = nullptr;
  OfxPropertySetHandle set = nullptr;
  const bool isDefined = suites.effect->clipGetHandle(effect, "Source", &clip, &set) == kOk;
  const Properties source(suites, isDefined ? set : nullptr);
  const bool isConnected = isDefined && source.Int("OfxImageClipPropConnected", 0) != 0;
  if (!isConnected || source.String("OfxImageEffectPropPreMultiplication") == "OfxImageOpaque") {
    preferences.SetString("OfxImageEffectPropPreMultiplication", "OfxImageAlphaPremultiplied");
  }
}

OfxStatus Act(std::string_view action, const Suites& suites, OfxImageEffectHandle effect,
              const Properties& inArgs, const Properties& outArgs) {
  if (action == "OfxActionDescribe") {
    Describe(suites, effect);
  } else if (action == "OfxImageEffectActionDescribeInContext") {
    DescribeInContext(suites, effect, inArgs);
  } else if (action == "OfxActionCreateInstance") {
    UpdateUi(suites, effect, 0);
  } else if (action == "OfxActionInstanceChanged") {
    if (inArgs.String("OfxPropChangeReason") != "OfxChangeTime") {
      NoteEdit();
    }
    UpdateUi(suites, effect, inArgs.Double("OfxPropTime", 0));
  } else if (action == "OfxImageEffectActionGetClipPreferences") {
    SetClipPreferences(suites, effect, outArgs);
  } else if (action == "OfxImageEffectActionRender") {
    Render(suites, effect, inArgs);
  } else if (action == "OfxActionLoad") {
    TheEffect();
  } else if (action == "OfxActionPurgeCaches" || action == "OfxActionUnload") {
    FreeSpareMemory();
  } else if (action != "OfxActionDestroyInstance") {
    return kReplyDefault;
  }
  return kOk;
}

void Tell(const Suites* suites, const void* handle, const char* text) noexcept {
  if (suites != nullptr && suites->message != nullptr && handle != nullptr && *text != '\0') {
    suites->message->message(const_cast<void*>(handle), "OfxMessageError", "vintrel", "%s", text);
  }
}

OfxStatus MainAction(const char* action, const void* handle, OfxPropertySetHandle inArgs,
                     OfxPropertySetHandle outArgs) noexcept {
  const Suites* known = nullptr;
  try {
    const Suites suites = FetchSuites(theHost.load());
    known = &suites;
    // The handles of actions are const by mistake of the interface.
    auto* effect = static_cast<OfxImageEffectHandle>(const_cast<void*>(handle));
    try {
      return Act(action == nullptr ? "" : action, suites, effect, Properties(suites, inArgs),
                 Properties(suites, outArgs));
    } catch (const ActionError& error) {
      Tell(known, handle, error.message.c_str());
      return error.status;
    } catch (const std::bad_alloc&) {
      Tell(known, handle, "Vintrel is out of memory");
      return kErrMemory;
    } catch (const std::exception& error) {
      Tell(known, handle, error.what());
      return kFailed;
    }
  } catch (const ActionError& error) {
    return error.status;
  } catch (...) {
    return kFailed;
  }
}

void SetHost(OfxHost* host) noexcept {
  theHost.store(host);
}

}  // namespace

#if defined(_WIN32)
#define VINTREL_EXPORT extern "C" __declspec(dllexport)
#else
#define VINTREL_EXPORT extern "C" __attribute__((visibility("default")))
#endif

VINTREL_EXPORT int OfxGetNumberOfPlugins() {
  return 1;
}

VINTREL_EXPORT OfxPlugin* OfxGetPlugin(int index) {
  static OfxPlugin plugin = {"OfxImageEffectPluginAPI", 1, "vintrel.snow", 1, 0, SetHost, MainAction};
  return index == 0 ? &plugin : nullptr;
}
