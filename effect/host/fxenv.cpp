#include "effect/host/fxenv.h"

Fxenv::Fxenv(PF_InData* in_data, PF_OutData* out_data, PF_ParamDef** parameters, PF_LayerDef* outputWorld)
    : inData(in_data),
      outData(out_data),
      params(parameters),
      output(outputWorld),
      input(nullptr),
      smartExtra(nullptr),
      suites(in_data->pica_basicP),
      pixelFormat(PF_PixelFormat_INVALID) {}

PF_PixelFormat Fxenv::PixelFormat() {
  if (pixelFormat != PF_PixelFormat_INVALID || output == nullptr) {
    return pixelFormat;
  }
  // Straight from the basic suite: a host that lacks the suite is not an error here.
  constexpr std::int32_t kVersion = 2;
  const SPBasicSuite& basic = *inData->pica_basicP;
  const void* suite = nullptr;
  if (basic.AcquireSuite(kPFWorldSuite, kVersion, &suite) == 0 && suite != nullptr) {
    static_cast<const PF_WorldSuite2*>(suite)->PF_GetPixelFormat(output, &pixelFormat);
  } else {
    const bool deep = (output->world_flags & PF_WorldFlag_DEEP) != 0;
    pixelFormat = deep ? PF_PixelFormat_ARGB64 : PF_PixelFormat_ARGB32;
  }
  if (suite != nullptr) {
    basic.ReleaseSuite(kPFWorldSuite, kVersion);
  }
  return pixelFormat;
}
