#include "bindings/openfx/row.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <cstring>
#include <type_traits>

#include "hostapi/worlds.h"

namespace openfx {
namespace {

// How the host and the effect count a channel.  Like PixelType of the effect, which bindings may not include.
template <class Pixel>
struct Way;
template <>
struct Way<PF_Pixel> {
  using Sample = std::uint8_t;
  using Word = std::uint32_t;  // a pixel
  static constexpr std::uint32_t kHostWhite = 255;
};
template <>
struct Way<PF_Pixel16> {
  using Sample = std::uint16_t;
  using Word = std::uint64_t;
  static constexpr std::uint32_t kHostWhite = 65535;  // the effect's is 32768
};
template <>
struct Way<PF_PixelFloat> {
  using Sample = float;
  static constexpr float kHostWhite = 1;
};

template <class Pixel>
using SampleOf = typename Way<Pixel>::Sample;
template <class Pixel>
constexpr bool kIsFloat = std::is_same_v<Pixel, PF_PixelFloat>;

// round(value * to / from), halves up; exact at both ends.
constexpr std::uint32_t Scale(std::uint32_t value, std::uint32_t from, std::uint32_t to) {
  return from == to ? std::min(value, to) : (std::min(value, from) * to + from / 2) / from;
}
static_assert(Scale(65535, 65535, 32768) == 32768 && Scale(32768, 32768, 65535) == 65535 &&
              Scale(0, 65535, 32768) == 0);

// The same between the two whites of 16 bits, without a division.  32768 / 65535 is a little above a half, by
// less than a half over the whole range: halves go up, all else is as for a half.  65535 / 32768 is a little
// below two, and takes a whole one away from the second half.
constexpr std::uint16_t ToEffect16(std::uint16_t value) {
  return static_cast<std::uint16_t>(value - value / 2);
}
constexpr std::uint16_t ToHost16(std::uint16_t value) {
  const std::uint16_t within = std::min<std::uint16_t>(value, 32768);
  return static_cast<std::uint16_t>(2 * within - (within > 16384 ? 1 : 0));
}
static_assert([] {
  constexpr std::uint32_t kStride = 255;  // of odd and even values; compilers bound what they try
  for (std::uint32_t value = 0; value <= 65535; value += kStride) {
    const auto sample = static_cast<std::uint16_t>(value);
    if (ToEffect16(sample) != Scale(value, 65535, 32768) || ToHost16(sample) != Scale(value, 32768, 65535)) {
      return false;
    }
  }
  return true;
}());
static_assert(ToHost16(16384) == Scale(16384, 32768, 65535) &&
              ToHost16(16385) == Scale(16385, 32768, 65535) && ToHost16(32768) == 65535);

// A row goes in pieces that stay in the nearest cache, each in several loops that the compiler turns into
// vectors: in the host's order of channels and count of white, until the effect's are needed.
constexpr std::size_t kPiece = 256;  // pixels
template <class Pixel>
using Piece = std::array<SampleOf<Pixel>, kPiece * 4>;
constexpr std::size_t kAlpha = 3;  // of a pixel's samples

/// Whether a premultiplied pixel differs from a straight one.  Where alpha is 0 a color is light without a
/// surface: it passes as it is.  In whole numbers it cannot be told from a flake too faint for an alpha of 1,
/// which leaves no light: there WriteRow takes it away.
template <class Pixel>
bool HasSoftAlpha(const Piece<Pixel>& piece, std::size_t samples) {
  unsigned soft = 0;
  for (std::size_t i = kAlpha; i < samples; i += 4) {
    soft |= static_cast<unsigned>(piece[i] != SampleOf<Pixel>(Way<Pixel>::kHostWhite));
  }
  return soft != 0;
}

template <class Pixel>
void SetAlphaWhite(Piece<Pixel>& piece, std::size_t samples) {
  for (std::size_t i = kAlpha; i < samples; i += 4) {
    piece[i] = SampleOf<Pixel>(Way<Pixel>::kHostWhite);
  }
}

/// Straight is round(color * white / alpha).
template <class Pixel>
void Unpremultiply(Piece<Pixel>& piece, std::size_t samples) {
  constexpr auto kHostWhite = Way<Pixel>::kHostWhite;
  for (std::size_t i = 0; i < samples; i += 4) {
    const SampleOf<Pixel> alpha = piece[i + kAlpha];
    if (alpha == 0 || alpha == SampleOf<Pixel>(kHostWhite)) {
      continue;
    }
    for (std::size_t channel = i; channel < i + kAlpha; ++channel) {
      if constexpr (kIsFloat<Pixel>) {
        piece[channel] /= alpha;
      } else {
        piece[channel] = static_cast<SampleOf<Pixel>>(Scale(piece[channel], alpha, kHostWhite));
      }
    }
  }
}

enum class AtZero { kKeepColor, kNoColor };

template <AtZero kAtZero, class Pixel>
void Premultiply(Piece<Pixel>& piece, std::size_t samples) {
  for (std::size_t i = 0; i < samples; i += 4) {
    const SampleOf<Pixel> alpha = piece[i + kAlpha];
    for (std::size_t channel = i; channel < i + kAlpha; ++channel) {
      if constexpr (!kIsFloat<Pixel>) {
        piece[channel] = static_cast<SampleOf<Pixel>>(Scale(piece[channel], Way<Pixel>::kHostWhite, alpha));
      } else if (kAtZero == AtZero::kNoColor || alpha != 0) {
        piece[channel] *= alpha;
      }
    }
  }
}

template <class Sample, std::size_t kSize>
void ApplyToAll(std::array<Sample, kSize>& piece, std::size_t samples, auto scale) {
  for (std::size_t i = 0; i < samples; ++i) {
    piece[i] = scale(piece[i]);
  }
}

// Channels to the effect's order, which has alpha first, and back.  In whole numbers that is a rotation.
static_assert(std::endian::native == std::endian::little);
template <class Pixel>
void AlphaFirst(const Piece<Pixel>& piece, std::span<Pixel> row) {
  for (std::size_t i = 0; i < row.size(); ++i) {
    const SampleOf<Pixel>* host = &piece[i * 4];
    if constexpr (kIsFloat<Pixel>) {
      row[i] = {host[3], host[0], host[1], host[2]};
    } else {
      typename Way<Pixel>::Word word;
      std::memcpy(&word, host, sizeof word);
      row[i] = std::bit_cast<Pixel>(std::rotl(word, static_cast<int>(8 * sizeof(SampleOf<Pixel>))));
    }
  }
}
template <class Pixel>
void AlphaLast(std::span<const Pixel> row, Piece<Pixel>& piece) {
  for (std::size_t i = 0; i < row.size(); ++i) {
    SampleOf<Pixel>* host = &piece[i * 4];
    if constexpr (kIsFloat<Pixel>) {
      const SampleOf<Pixel> samples[] = {row[i].red, row[i].green, row[i].blue, row[i].alpha};
      std::memcpy(host, samples, sizeof samples);
    } else {
      const auto word = std::bit_cast<typename Way<Pixel>::Word>(row[i]);
      const auto turned = std::rotr(word, static_cast<int>(8 * sizeof(SampleOf<Pixel>)));
      std::memcpy(host, &turned, sizeof turned);
    }
  }
}

}  // namespace

template <class Pixel>
void ReadRow(const std::byte* host, Alpha kind, std::span<Pixel> row) {
  Piece<Pixel> piece;
  while (!row.empty()) {
    const std::span<Pixel> part = row.first(std::min(row.size(), kPiece));
    const std::size_t samples = part.size() * 4;
    std::memcpy(piece.data(), host, part.size_bytes());
    if (kind == Alpha::kOpaque) {
      SetAlphaWhite<Pixel>(piece, samples);
    } else if (kind == Alpha::kPremultiplied && HasSoftAlpha<Pixel>(piece, samples)) {
      Unpremultiply<Pixel>(piece, samples);
    }
    if constexpr (std::is_same_v<Pixel, PF_Pixel16>) {
      ApplyToAll(piece, samples, ToEffect16);
    }
    AlphaFirst<Pixel>(piece, part);
    host += part.size_bytes();
    row = row.subspan(part.size());
  }
}

template <class Pixel>
void WriteRow(std::span<const Pixel> row, Alpha kind, std::byte* host) {
  Piece<Pixel> piece;
  while (!row.empty()) {
    const std::span<const Pixel> part = row.first(std::min(row.size(), kPiece));
    const std::size_t samples = part.size() * 4;
    AlphaLast<Pixel>(part, piece);
    if constexpr (std::is_same_v<Pixel, PF_Pixel16>) {
      ApplyToAll(piece, samples, ToHost16);
    }
    if (kind != Alpha::kStraight && HasSoftAlpha<Pixel>(piece, samples)) {
      kind == Alpha::kOpaque ? Premultiply<AtZero::kNoColor, Pixel>(piece, samples)
                             : Premultiply<AtZero::kKeepColor, Pixel>(piece, samples);
    }
    if (kind == Alpha::kOpaque) {
      SetAlphaWhite<Pixel>(piece, samples);
    }
    std::memcpy(host, piece.data(), part.size_bytes());
    host += part.size_bytes();
    row = row.subspan(part.size());
  }
}

template void ReadRow(const std::byte*, Alpha, std::span<PF_Pixel>);
template void ReadRow(const std::byte*, Alpha, std::span<PF_Pixel16>);
template void ReadRow(const std::byte*, Alpha, std::span<PF_PixelFloat>);
template void WriteRow(std::span<const PF_Pixel>, Alpha, std::byte*);
template void WriteRow(std::span<const PF_Pixel16>, Alpha, std::byte*);
template void WriteRow(std::span<const PF_PixelFloat>, Alpha, std::byte*);

}  // namespace openfx
