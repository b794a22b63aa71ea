#include "cli/video/ffv1_check.h"

extern "C" {
#include <libavutil/crc.h>
}

namespace cli {

Ffv1State CheckFfv1(std::span<const std::uint8_t> packet) {
  constexpr std::size_t kTrailer = 3 + 1 + 4;
  const AVCRC* table = av_crc_get_table(AV_CRC_32_IEEE);
  bool intact = true;
  while (!packet.empty()) {
    if (packet.size() < kTrailer) {
      return Ffv1State::kUnknown;
    }
    const auto length = packet.last(kTrailer);
    const std::size_t size = (length[0] * 65536u + length[1] * 256u + length[2]) + kTrailer;
    // Without sums the trailer is shorter, and what is read as a length leads nowhere.
    if (size > packet.size()) {
      return Ffv1State::kUnknown;
    }
    intact = intact && av_crc(table, 0, packet.last(size).data(), size) == 0;
    packet = packet.first(packet.size() - size);
  }
  return intact ? Ffv1State::kIntact : Ffv1State::kDamaged;
}

}  // namespace cli
