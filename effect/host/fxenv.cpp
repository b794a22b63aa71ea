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

namespace {

// A suite straight from the host, past the cache: one that the host lacks is null here, not an error.  Given
// back on every way out.
class SuiteLoan {
 public:
  SuiteLoan(const SPBasicSuite& basic, const char* name, std::int32_t version)
      : basic_(basic), name_(name), version_(version) {
    acquired_ = basic_.AcquireSuite(name_, version_, &suite_) == 0;
  }
  ~SuiteLoan() {
    if (suite_ == nullptr) {
      return;
    }
    try {
      basic_.ReleaseSuite(name_, version_);
    } catch (...) {  // the result of a release does not count either
    }
  }
  SuiteLoan(const SuiteLoan&) = delete;
  SuiteLoan& operator=(const SuiteLoan&) = delete;

  const void* Get() const { return acquired_ ? suite_ : nullptr; }

 private:
  const SPBasicSuite& basic_;
  const char* name_;
  std::int32_t version_;
  const void* suite_ = nullptr;
  bool acquired_ = false;
};

}  // namespace

PF_PixelFormat Fxenv::PixelFormat() {
  if (pixelFormat != PF_PixelFormat_INVALID || output == nullptr) {
    return pixelFormat;
  }
  const SuiteLoan loan(*inData->pica_basicP, kPFWorldSuite, 2);
  const auto* const worlds = static_cast<const PF_WorldSuite2*>(loan.Get());
  if (worlds != nullptr && worlds->PF_GetPixelFormat != nullptr) {
    worlds->PF_GetPixelFormat(output, &pixelFormat);
  } else {
    const bool deep = (output->world_flags & PF_WorldFlag_DEEP) != 0;
    pixelFormat = deep ? PF_PixelFormat_ARGB64 : PF_PixelFormat_ARGB32;
  }
  return pixelFormat;
}
