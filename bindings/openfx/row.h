// A row of pixels on its way from the host's form into the effect's, and back.
#pragma once

#include <cstddef>
#include <span>

namespace openfx {

/// What a picture of the host's says of its fourth channel.
enum class Alpha { kStraight, kPremultiplied, kOpaque };

/// Pixels of the host are red, green, blue, alpha, without padding, at any address; 16 bits are white at
/// 65535. `Pixel` is one of the three of hostapi/worlds.h, and straight.  An opaque picture has white for
/// alpha, and is written as it shows on black.
template <class Pixel>
void ReadRow(const std::byte* host, Alpha kind, std::span<Pixel> row);
template <class Pixel>
void WriteRow(std::span<const Pixel> row, Alpha kind, std::byte* host);

}  // namespace openfx
