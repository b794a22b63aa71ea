// Whether a packet of FFV1 is as it was written: its decoder paints over damage without a word.
#pragma once

#include <cstdint>
#include <span>

namespace cli {

enum class Ffv1State { kIntact, kDamaged, kUnknown };  // unknown: written without check sums

/// Checks the sums of all slices.  A packet is a row of slices, each ending with its length in 3 bytes and,
/// when there are sums, one byte of status and the CRC that makes the CRC of the whole slice 0.
Ffv1State CheckFfv1(std::span<const std::uint8_t> packet);

}  // namespace cli
