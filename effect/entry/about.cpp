#include "effect/entry/about.h"

#include <array>
#include <cstddef>
#include <cstring>

namespace {

constexpr char kFamily[] = "Kelmora 1.7.1";
constexpr char kName[] = "Vintrel";
constexpr char kDescription[] = "\rSimulates falling snow with depth, light simulation and motion blur.";
constexpr int kMajor = 1;
constexpr int kMinor = 0;

// The object format and processor of this build.
constexpr char kPlatform[] =
#if defined(__APPLE__)
    "MachO "
#elif defined(_WIN32)
    "PE "
#elif defined(__ELF__)
    "ELF "
#endif
#if defined(__x86_64__)
    "x86-64"
#elif defined(__aarch64__)
    "AArch64"
#elif defined(__riscv)
    "RISC-V"
#else
    "portable"
#endif
    ;

}  // namespace

void ComposeAboutText(const PF_InData* in_data, PF_OutData* out_data) {
  constexpr std::size_t kMessageSize = sizeof out_data->return_msg;
  const PF_ANSICallbacks& ansi = in_data->utils->ansi;

  // The host may hand in a message that fills its array to the last byte.
  std::array<char, kMessageSize> earlier = {};
  std::memcpy(earlier.data(), out_data->return_msg, kMessageSize - 1);

  constexpr std::size_t kFixedParts =
      sizeof kFamily + sizeof kName + sizeof kPlatform + sizeof kDescription + 64;
  std::array<char, kFixedParts + kMessageSize> text = {};
  ansi.sprintf(text.data(), "%s\r%s, v%d.%d  (%s)\r%s%s", kFamily, kName, kMajor, kMinor, kPlatform,
               kDescription, earlier.data());
  text[kMessageSize - 1] = '\0';
  ansi.sprintf(out_data->return_msg, "%s", text.data());
}
