#include "cli/scene/parameter_text.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <optional>
#include <vector>

#include "cli/report/error.h"
#include "cli/report/number.h"
#include "cli/scene/color_names.h"

namespace cli {
namespace {

using minihost::Color;
using minihost::ParameterInfo;
using minihost::Point;
using minihost::Value;

// Points travel as 16.16 fixed point.
constexpr double kMostPercent = 32767;

constexpr double kSinglePrecision = 1e-7;

std::string_view Trimmed(std::string_view text) {
  const auto isSpace = [](char letter) { return letter == ' ' || letter == '\t'; };
  while (!text.empty() && isSpace(text.front())) {
    text.remove_prefix(1);
  }
  while (!text.empty() && isSpace(text.back())) {
    text.remove_suffix(1);
  }
  return text;
}

bool SameWord(std::string_view one, std::string_view other) {
  return std::ranges::equal(
      one, other, [](unsigned char a, unsigned char b) { return std::tolower(a) == std::tolower(b); });
}

std::string_view WithoutPercentSign(std::string_view text) {
  if (text.ends_with('%')) {
    text.remove_suffix(1);
  }
  return Trimmed(text);
}

/// All of `text` as a finite number.
std::optional<double> Number(std::string_view text) {
  const auto number = ParseNumber<double>(Trimmed(text));
  return number && std::isfinite(*number) ? number : std::nullopt;
}

std::vector<std::string_view> SplitAtCommas(std::string_view text) {
  std::vector<std::string_view> parts;
  while (true) {
    const std::size_t comma = std::min(text.find(','), text.size());
    parts.push_back(Trimmed(text.substr(0, comma)));
    if (comma == text.size()) {
      return parts;
    }
    text.remove_prefix(comma + 1);
  }
}

std::optional<double> ParseSlider(const ParameterInfo& parameter, std::string_view text) {
  const bool percent = parameter.name.find('%') != std::string::npos;
  const auto number = Number(percent ? WithoutPercentSign(text) : text);
  if (!number) {
    return {};
  }
  // A bound is single precision: what it reads as in decimals may lie a rounding error beyond it.
  const double within = std::clamp(*number, parameter.validMin, parameter.validMax);
  if (std::abs(*number - within) > std::abs(within) * kSinglePrecision) {
    return {};
  }
  if (parameter.type == PF_Param_SLIDER && within != std::floor(within)) {
    return {};
  }
  return within;
}

std::optional<double> ParseCheckbox(std::string_view text) {
  for (const std::string_view word : {"on", "true", "1"}) {
    if (SameWord(text, word)) {
      return 1;
    }
  }
  for (const std::string_view word : {"off", "false", "0"}) {
    if (SameWord(text, word)) {
      return 0;
    }
  }
  return {};
}

std::optional<double> ParsePopup(const ParameterInfo& parameter, std::string_view text) {
  for (std::size_t i = 0; i < parameter.choices.size(); ++i) {
    if (SameWord(text, parameter.choices[i])) {
      return static_cast<double>(i + 1);
    }
  }
  const auto number = Number(text);
  if (!number || *number < parameter.validMin || *number > parameter.validMax ||
      *number != std::floor(*number)) {
    return {};
  }
  return number;
}

Color ColorOfBits(std::uint32_t bits) {
  return {static_cast<double>(bits >> 16), static_cast<double>(bits >> 8 & 255),
          static_cast<double>(bits & 255)};
}

std::optional<Color> ParseHexColor(std::string_view digits) {
  const auto parsed = ParseHexadecimal<std::uint32_t>(digits);
  if (!parsed) {
    return {};
  }
  const std::uint32_t bits = *parsed;
  if (digits.size() == 6) {
    return ColorOfBits(bits);
  }
  if (digits.size() == 3) {  // each digit stands for two of its kind
    return Color{static_cast<double>((bits >> 8) * 17), static_cast<double>((bits >> 4 & 15) * 17),
                 static_cast<double>((bits & 15) * 17)};
  }
  return {};
}

std::optional<Color> ParseColor(std::string_view text) {
  if (text.starts_with('#')) {
    return ParseHexColor(text.substr(1));
  }
  if (const auto named = NamedColor(text)) {
    return ColorOfBits(*named);
  }
  const auto parts = SplitAtCommas(text);
  if (parts.size() != 3) {
    return {};
  }
  double channels[3];
  for (std::size_t i = 0; i < 3; ++i) {
    const auto number = Number(parts[i]);
    if (!number || *number < 0 || *number > 255 || *number != std::floor(*number)) {
      return {};
    }
    channels[i] = *number;
  }
  return Color{channels[0], channels[1], channels[2]};
}

std::optional<Point> ParsePoint(const ParameterInfo& parameter, std::string_view text) {
  const auto parts = SplitAtCommas(text);
  if (parts.size() != 2) {
    return {};
  }
  const double least = parameter.restrictedToLayer ? 0 : -kMostPercent;
  const double most = parameter.restrictedToLayer ? 100 : kMostPercent;
  const auto x = Number(WithoutPercentSign(parts[0]));
  const auto y = Number(WithoutPercentSign(parts[1]));
  if (!x || !y || std::min(*x, *y) < least || std::max(*x, *y) > most) {
    return {};
  }
  return Point{*x, *y};
}

template <class Parsed>
Value OrRefuse(const std::optional<Parsed>& parsed, const ParameterInfo& parameter, std::string_view text) {
  if (!parsed) {
    Refuse(ExitCode::kUsage, "{}: '{}' is not possible; it takes {}", parameter.DisplayName(), text,
           DescribeRange(parameter));
  }
  return *parsed;
}

std::string FormatNumber(double number, int decimals) {
  std::string fixed = fmt::format("{:.{}f}", number, decimals);
  return Number(fixed) == number ? fixed : fmt::format("{}", number);
}

}  // namespace

Value ParseValue(const ParameterInfo& parameter, std::string_view text) {
  const std::string_view word = Trimmed(text);
  switch (parameter.type) {
    case PF_Param_CHECKBOX:
      return OrRefuse(ParseCheckbox(word), parameter, text);
    case PF_Param_POPUP:
      return OrRefuse(ParsePopup(parameter, word), parameter, text);
    case PF_Param_COLOR:
      return OrRefuse(ParseColor(word), parameter, text);
    case PF_Param_POINT:
      return OrRefuse(ParsePoint(parameter, word), parameter, text);
    default:
      return OrRefuse(ParseSlider(parameter, word), parameter, text);
  }
}

std::string FormatValue(const ParameterInfo& parameter, const Value& value) {
  if (const auto* color = std::get_if<Color>(&value)) {
    return fmt::format("#{:02x}{:02x}{:02x}", std::lround(color->red), std::lround(color->green),
                       std::lround(color->blue));
  }
  if (const auto* point = std::get_if<Point>(&value)) {
    return fmt::format("{}%,{}%", point->x, point->y);
  }
  const double number = std::get<double>(value);
  if (parameter.type == PF_Param_CHECKBOX) {
    return number != 0 ? "on" : "off";
  }
  if (parameter.type == PF_Param_POPUP) {
    return parameter.choices.at(static_cast<std::size_t>(number) - 1);
  }
  return FormatNumber(number, parameter.decimals);
}

std::string DescribeRange(const ParameterInfo& parameter) {
  switch (parameter.type) {
    case PF_Param_CHECKBOX:
      return "on or off";
    case PF_Param_POPUP:
      return fmt::format("{}", fmt::join(parameter.choices, " or "));
    case PF_Param_COLOR:
      return "#rrggbb, red,green,blue or a name such as ivory";
    case PF_Param_POINT:
      return parameter.restrictedToLayer ? "x%,y% from 0 to 100"
                                         : fmt::format("x%,y% from {} to {}", -kMostPercent, kMostPercent);
    default:
      // In single precision, which the bounds are, the shortest decimal form is the one that was meant.
      return fmt::format("{} to {}{}", static_cast<float>(parameter.validMin),
                         static_cast<float>(parameter.validMax),
                         parameter.type == PF_Param_SLIDER ? ", whole" : "");
  }
}

std::string_view DescribeType(const ParameterInfo& parameter) {
  switch (parameter.type) {
    case PF_Param_CHECKBOX:
      return "checkbox";
    case PF_Param_POPUP:
      return "popup";
    case PF_Param_COLOR:
      return "color";
    case PF_Param_POINT:
      return "point";
    case PF_Param_SLIDER:
      return "integer";
    default:
      return "number";
  }
}

}  // namespace cli
