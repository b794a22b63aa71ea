// The binary interface of OpenFX as far as this binding needs it, written down from measurements.
#pragma once

#include <cstddef>

extern "C" {

using OfxStatus = int;
using OfxTime = double;  // counts frames
using OfxPropertySetHandle = struct OfxPropertySetStruct*;
using OfxImageEffectHandle = struct OfxImageEffectStruct*;
using OfxImageClipHandle = struct OfxImageClipStruct*;
using OfxImageMemoryHandle = struct OfxImageMemoryStruct*;
using OfxParamSetHandle = struct OfxParamSetStruct*;
using OfxParamHandle = struct OfxParamStruct*;

struct OfxRectD {
  double x1, y1, x2, y2;
};
struct OfxRangeD {
  double min, max;
};

struct OfxHost {
  OfxPropertySetHandle host;
  const void* (*fetchSuite)(OfxPropertySetHandle host, const char* name, int version);
};

struct OfxPlugin {
  const char* pluginApi;
  int apiVersion;
  const char* pluginIdentifier;
  unsigned pluginVersionMajor;
  unsigned pluginVersionMinor;
  void (*setHost)(OfxHost* host);
  OfxStatus (*mainEntry)(const char* action, const void* handle, OfxPropertySetHandle inArgs,
                         OfxPropertySetHandle outArgs);
};
static_assert(sizeof(OfxPlugin) == 48 && offsetof(OfxPlugin, setHost) == 32);

struct OfxPropertySuite {
  OfxStatus (*propSetPointer)(OfxPropertySetHandle set, const char* name, int index, void* value);
  OfxStatus (*propSetString)(OfxPropertySetHandle set, const char* name, int index, const char* value);
  OfxStatus (*propSetDouble)(OfxPropertySetHandle set, const char* name, int index, double value);
  OfxStatus (*propSetInt)(OfxPropertySetHandle set, const char* name, int index, int value);
  OfxStatus (*propSetPointerN)(OfxPropertySetHandle set, const char* name, int count, void* const* value);
  OfxStatus (*propSetStringN)(OfxPropertySetHandle set, const char* name, int count,
                              const char* const* value);
  OfxStatus (*propSetDoubleN)(OfxPropertySetHandle set, const char* name, int count, const double* value);
  OfxStatus (*propSetIntN)(OfxPropertySetHandle set, const char* name, int count, const int* value);
  OfxStatus (*propGetPointer)(OfxPropertySetHandle set, const char* name, int index, void** value);
  OfxStatus (*propGetString)(OfxPropertySetHandle set, const char* name, int index, char** value);
  OfxStatus (*propGetDouble)(OfxPropertySetHandle set, const char* name, int index, double* value);
  OfxStatus (*propGetInt)(OfxPropertySetHandle set, const char* name, int index, int* value);
  OfxStatus (*propGetPointerN)(OfxPropertySetHandle set, const char* name, int count, void** value);
  OfxStatus (*propGetStringN)(OfxPropertySetHandle set, const char* name, int count, char** value);
  OfxStatus (*propGetDoubleN)(OfxPropertySetHandle set, const char* name, int count, double* value);
  OfxStatus (*propGetIntN)(OfxPropertySetHandle set, const char* name, int count, int* value);
  OfxStatus (*propReset)(OfxPropertySetHandle set, const char* name);
  OfxStatus (*propGetDimension)(OfxPropertySetHandle set, const char* name, int* count);
};

struct OfxImageEffectSuite {
  OfxStatus (*getPropertySet)(OfxImageEffectHandle effect, OfxPropertySetHandle* set);
  OfxStatus (*getParamSet)(OfxImageEffectHandle effect, OfxParamSetHandle* set);
  OfxStatus (*clipDefine)(OfxImageEffectHandle effect, const char* name, OfxPropertySetHandle* set);
  OfxStatus (*clipGetHandle)(OfxImageEffectHandle effect, const char* name, OfxImageClipHandle* clip,
                             OfxPropertySetHandle* set);
  OfxStatus (*clipGetPropertySet)(OfxImageClipHandle clip, OfxPropertySetHandle* set);
  OfxStatus (*clipGetImage)(OfxImageClipHandle clip, OfxTime time, const OfxRectD* region,
                            OfxPropertySetHandle* image);
  OfxStatus (*clipReleaseImage)(OfxPropertySetHandle image);
  OfxStatus (*clipGetRegionOfDefinition)(OfxImageClipHandle clip, OfxTime time, OfxRectD* bounds);
  int (*abort)(OfxImageEffectHandle effect);
  OfxStatus (*imageMemoryAlloc)(OfxImageEffectHandle effect, std::size_t bytes, OfxImageMemoryHandle* memory);
  OfxStatus (*imageMemoryFree)(OfxImageMemoryHandle memory);
  OfxStatus (*imageMemoryLock)(OfxImageMemoryHandle memory, void** bytes);
  OfxStatus (*imageMemoryUnlock)(OfxImageMemoryHandle memory);
};

struct OfxParameterSuite {
  OfxStatus (*paramDefine)(OfxParamSetHandle set, const char* type, const char* name,
                           OfxPropertySetHandle* properties);
  OfxStatus (*paramGetHandle)(OfxParamSetHandle set, const char* name, OfxParamHandle* param,
                              OfxPropertySetHandle* properties);
  OfxStatus (*paramSetGetPropertySet)(OfxParamSetHandle set, OfxPropertySetHandle* properties);
  OfxStatus (*paramGetPropertySet)(OfxParamHandle param, OfxPropertySetHandle* properties);
  OfxStatus (*paramGetValue)(OfxParamHandle param, ...);
  OfxStatus (*paramGetValueAtTime)(OfxParamHandle param, OfxTime time, ...);
  OfxStatus (*paramGetDerivative)(OfxParamHandle param, OfxTime time, ...);
  OfxStatus (*paramGetIntegral)(OfxParamHandle param, OfxTime from, OfxTime to, ...);
  OfxStatus (*paramSetValue)(OfxParamHandle param, ...);
  OfxStatus (*paramSetValueAtTime)(OfxParamHandle param, OfxTime time, ...);
  OfxStatus (*paramGetNumKeys)(OfxParamHandle param, unsigned* count);
  OfxStatus (*paramGetKeyTime)(OfxParamHandle param, unsigned key, OfxTime* time);
  OfxStatus (*paramGetKeyIndex)(OfxParamHandle param, OfxTime time, int direction, int* key);
  OfxStatus (*paramDeleteKey)(OfxParamHandle param, OfxTime time);
  OfxStatus (*paramDeleteAllKeys)(OfxParamHandle param);
  OfxStatus (*paramCopy)(OfxParamHandle to, OfxParamHandle from, OfxTime offset, const OfxRangeD* range);
  OfxStatus (*paramEditBegin)(OfxParamSetHandle set, const char* name);
  OfxStatus (*paramEditEnd)(OfxParamSetHandle set);
};

struct OfxMessageSuite {
  OfxStatus (*message)(void* handle, const char* type, const char* id, const char* format, ...);
};

struct OfxProgressSuite {
  OfxStatus (*progressStart)(void* instance, const char* label);
  OfxStatus (*progressUpdate)(void* instance, double progress);
  OfxStatus (*progressEnd)(void* instance);
};

}  // extern "C"

namespace openfx {

inline constexpr OfxStatus kOk = 0;
inline constexpr OfxStatus kFailed = 1;
inline constexpr OfxStatus kMissingHostFeature = 4;
inline constexpr OfxStatus kErrMemory = 8;
inline constexpr OfxStatus kErrBadHandle = 9;
inline constexpr OfxStatus kReplyYes = 12;
inline constexpr OfxStatus kReplyNo = 13;
inline constexpr OfxStatus kReplyDefault = 14;
inline constexpr OfxStatus kErrImageFormat = 1000;

}  // namespace openfx
