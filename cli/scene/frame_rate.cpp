#include "cli/scene/frame_rate.h"

#include <cmath>
#include <numeric>

#include "cli/report/error.h"
#include "cli/report/number.h"

namespace cli {
namespace {

constexpr double kMinRate = 0.01;
constexpr double kMaxRate = 1000;
constexpr int kMaxDecimals = 6;  // keeps 1000 * 10^6 within the host's 32-bit ticks

[[noreturn]] void RefuseRate(std::string_view text) {
  Refuse(ExitCode::kUsage, "'{}' is not a frame rate from {} to {}; write 24, 23.976 or 24000/1001", text,
         kMinRate, kMaxRate);
}

/// The whole of `digits` as a number without sign.
std::int64_t WholeNumber(std::string_view digits, std::string_view text) {
  const auto number = ParseNumber<std::uint32_t>(digits);
  if (!number) {
    RefuseRate(text);
  }
  return *number;
}

struct Ratio {
  std::int64_t numerator;
  std::int64_t denominator;
};

/// The broadcast rate that `value` rounds, given to `unit` = 10^-decimals; denominator 0 when it is none.
Ratio BroadcastRate(double value, double unit) {
  for (const std::int64_t nominal : {24, 30, 48, 60, 120}) {
    const double exact = static_cast<double>(nominal) * 1000 / 1001;
    if (std::abs(value - std::round(exact / unit) * unit) < unit / 2) {
      return {nominal * 1000, 1001};
    }
  }
  return {0, 0};
}

Ratio ParseDecimal(std::string_view text, std::size_t dot) {
  const std::string_view decimals = text.substr(dot + 1);
  if (decimals.empty() || decimals.size() > kMaxDecimals) {
    RefuseRate(text);
  }
  std::int64_t denominator = 1;
  for (std::size_t i = 0; i < decimals.size(); ++i) {
    denominator *= 10;
  }
  const std::int64_t numerator =
      WholeNumber(text.substr(0, dot), text) * denominator + WholeNumber(decimals, text);
  if (decimals.size() >= 2) {
    const double unit = 1 / static_cast<double>(denominator);
    const Ratio broadcast = BroadcastRate(static_cast<double>(numerator) * unit, unit);
    if (broadcast.denominator != 0) {
      return broadcast;
    }
  }
  return {numerator, denominator};
}

Ratio ParseRatio(std::string_view text) {
  if (const std::size_t slash = text.find('/'); slash != text.npos) {
    return {WholeNumber(text.substr(0, slash), text), WholeNumber(text.substr(slash + 1), text)};
  }
  if (const std::size_t dot = text.find('.'); dot != text.npos) {
    return ParseDecimal(text, dot);
  }
  return {WholeNumber(text, text), 1};
}

}  // namespace

FrameRate ParseFrameRate(std::string_view text) {
  const Ratio ratio = ParseRatio(text);
  if (ratio.denominator == 0) {
    RefuseRate(text);
  }
  const double rate = static_cast<double>(ratio.numerator) / static_cast<double>(ratio.denominator);
  if (rate < kMinRate || rate > kMaxRate) {
    RefuseRate(text);
  }
  const std::int64_t divisor = std::gcd(ratio.numerator, ratio.denominator);
  const std::int64_t scale = ratio.numerator / divisor;
  const std::int64_t step = ratio.denominator / divisor;
  if (scale > INT32_MAX || step > INT32_MAX) {
    RefuseRate(text);
  }
  return {static_cast<std::int32_t>(scale), static_cast<std::int32_t>(step)};
}

}  // namespace cli
