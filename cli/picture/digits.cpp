#include "cli/picture/digits.h"

#include <array>
#include <string>

#include "minihost/picture/copy.h"

namespace cli {
namespace {

constexpr int kDigitWidth = 5;
constexpr int kAdvance = kDigitWidth + 1;

using Glyph = std::array<std::uint8_t, kDigitHeight>;  // rows from the top; bit 4 is the leftmost dot

constexpr std::array<Glyph, 10> kDigits = {{
    {0b01110, 0b10001, 0b10011, 0b10101, 0b11001, 0b10001, 0b01110},
    {0b00100, 0b01100, 0b00100, 0b00100, 0b00100, 0b00100, 0b01110},
    {0b01110, 0b10001, 0b00001, 0b00010, 0b00100, 0b01000, 0b11111},
    {0b11111, 0b00010, 0b00100, 0b00010, 0b00001, 0b10001, 0b01110},
    {0b00010, 0b00110, 0b01010, 0b10010, 0b11111, 0b00010, 0b00010},
    {0b11111, 0b10000, 0b11110, 0b00001, 0b00001, 0b10001, 0b01110},
    {0b00110, 0b01000, 0b10000, 0b11110, 0b10001, 0b10001, 0b01110},
    {0b11111, 0b00001, 0b00010, 0b00100, 0b01000, 0b01000, 0b01000},
    {0b01110, 0b10001, 0b10001, 0b01110, 0b10001, 0b10001, 0b01110},
    {0b01110, 0b10001, 0b10001, 0b01111, 0b00001, 0b00010, 0b01100},
}};
constexpr Glyph kMinus = {0, 0, 0, 0b11111, 0, 0, 0};

}  // namespace

void DrawNumber(std::int32_t number, int left, int top, int scale, const PF_Pixel& color,
                const PF_LayerDef& world) {
  for (const char sign : std::to_string(number)) {
    const Glyph& glyph = sign == '-' ? kMinus : kDigits[static_cast<std::size_t>(sign - '0')];
    for (int row = 0; row < kDigitHeight; ++row) {
      for (int column = 0; column < kDigitWidth; ++column) {
        if ((glyph[static_cast<std::size_t>(row)] >> (kDigitWidth - 1 - column) & 1) == 0) {
          continue;
        }
        const int x = left + column * scale;
        const int y = top + row * scale;
        minihost::FillPixels(color, {x, y, x + scale, y + scale}, world, minihost::Depth::kBits8);
      }
    }
    left += kAdvance * scale;
  }
}

}  // namespace cli
