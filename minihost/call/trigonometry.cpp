#include "minihost/call/trigonometry.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <iterator>
#include <limits>

namespace minihost {
namespace {

// Radians.  The quarter turn in AngleOf is good to 2^-163, and so many of them as lie below this to 2^-123.
constexpr double kFarthest = 0x1p40;

// The unrounded sum of two numbers, of which the second is at most half a step of the first: 106 bits.
struct Pair {
  double high;
  double low;
};

Pair Negated(Pair a) {
  return {-a.high, -a.low};
}

// Exact where a is 0 or not the smaller of the two.
Pair SumInOrder(double a, double b) {
  const double sum = a + b;
  return {sum, b - (sum - a)};
}

// Exact.
Pair Sum(double a, double b) {
  const double sum = a + b;
  const double ofB = sum - a;
  return {sum, (a - (sum - ofB)) + (b - ofB)};
}

// Exact: the factors in halves of 26 bits, whose products have no more than 53.
Pair Product(double a, double b) {
  constexpr double kHalf = 0x1p27 + 1;
  const double aHigh = kHalf * a - (kHalf * a - a);
  const double bHigh = kHalf * b - (kHalf * b - b);
  const double aLow = a - aHigh;
  const double bLow = b - bHigh;
  const double product = a * b;
  return {product, ((aHigh * bHigh - product) + aHigh * bLow + aLow * bHigh) + aLow * bLow};
}

Pair operator+(Pair a, Pair b) {
  const Pair high = Sum(a.high, b.high);
  const Pair low = Sum(a.low, b.low);
  const Pair sum = SumInOrder(high.high, high.low + low.high);
  return SumInOrder(sum.high, sum.low + low.low);
}

Pair operator*(Pair a, Pair b) {
  const Pair product = Product(a.high, b.high);
  return SumInOrder(product.high, product.low + (a.high * b.low + a.low * b.high));
}

// By three digits of 53 bits, each of what the ones before have left.
Pair operator/(Pair a, Pair b) {
  const double first = a.high / b.high;
  a = a + Negated(b * Pair{first, 0});
  const double second = a.high / b.high;
  a = a + Negated(b * Pair{second, 0});
  const Pair quotient = SumInOrder(first, second);
  return SumInOrder(quotient.high, quotient.low + a.high / b.high);
}

// An angle as whole quarter turns and a rest of an eighth turn at the most to either side.
struct Angle {
  Pair rest;
  unsigned quarters;  // modulo 4
};

Angle AngleOf(double radians) {
  constexpr double kQuarter[] = {0x1.921fb54442d18p+0, 0x1.1a62633145c07p-54, -0x1.f1976b7ed8fbcp-110};
  const double quarters = std::floor(radians / kQuarter[0] + 0.5);
  Pair rest{radians, 0};
  for (const double part : kQuarter) {
    rest = rest + Product(-quarters, part);
  }
  return {rest, static_cast<unsigned>(static_cast<std::int64_t>(quarters)) & 3};
}

// The alternating series that begins with `term`, which is the power of x before `factor`: x^n / n!, every
// other n. The last of its terms is below 2^-100.
Pair Series(Pair x, Pair term, int factor) {
  constexpr int kTerms = 14;
  const Pair square = Negated(x * x);
  Pair sum = term;
  for (int i = 0; i < kTerms; ++i, factor += 2) {
    term = term * square / Pair{static_cast<double>(factor * (factor + 1)), 0};
    sum = sum + term;
  }
  return sum;
}

Pair SineOf(Pair x) {
  return Series(x, x, 2);
}
Pair CosineOf(Pair x) {
  return Series(x, {1, 0}, 1);
}

double NearestCosine(double radians) {
  const auto [rest, quarters] = AngleOf(radians);
  const double value = (quarters & 1) != 0 ? SineOf(rest).high : CosineOf(rest).high;
  return quarters == 1 || quarters == 2 ? -value : value;
}

// Of no more than an eighth turn, to 2^-53.
double QuickSine(double x) {
  const double z = x * x;
  double sum = 1.0 / 355687428096000;  // 17!
  for (const double factorial :
       {-1307674368000.0, 6227020800.0, -39916800.0, 362880.0, -5040.0, 120.0, -6.0}) {
    sum = sum * z + 1 / factorial;
  }
  return x + x * z * sum;
}
double QuickCosine(double x) {
  const double z = x * x;
  double sum = 1.0 / 20922789888000;  // 16!
  for (const double factorial : {-87178291200.0, 479001600.0, -3628800.0, 40320.0, -720.0, 24.0, -2.0}) {
    sum = sum * z + 1 / factorial;
  }
  return 1 + z * sum;
}

// Where glibc's tangent is the next number above the nearest, or below it.
constexpr struct {
  double radians;
  int step;
} kSecondNearest[] = {
    {0x1.194ed7c7c26d4p-4, +1}, {0x1.870b0979388ecp-4, -1}, {0x1.88d490897404ep-4, +1},
    {0x1.b85ecc6c6e7e2p-4, +1}, {0x1.f2a232b0cdbc1p-4, +1}, {0x1.fbed576b9c88dp-4, -1},
    {0x1.4320fd1065061p-3, +1}, {0x1.541b802a99e85p-3, -1}, {0x1.7446ff4ec8367p-3, -1},
    {0x1.8a14d57b373ep-3, -1},  {0x1.8b2759b827b8p-3, -1},  {0x1.a511802385e8cp-3, +1},
    {0x1.b1c1f249f8e2bp-3, -1}, {0x1.e39ef75ba70f1p-3, +1}, {0x1.158e08f278c2p-2, +1},
    {0x1.91241161bbb6fp-2, -1}, {0x1.aea145ed90d3fp-2, +1}, {0x1.b4e29ea660f16p-2, +1},
    {0x1.c9b4d0f048de5p-2, +1}, {0x1.d73326447033bp-2, -1}, {0x1.d8e5ccfa424a6p-2, +1},
    {0x1.e99baf053b0ep-2, +1},  {0x1.514ae50aa2a7dp-1, +1}, {0x1.516d359240b71p-1, +1},
    {0x1.525d69479321fp-1, -1}, {0x1.61a545abf5ed8p-1, +1}, {0x1.6d5a13efe1cccp-1, +1},
    {0x1.7d2b3272bcd55p-1, -1},
};

}  // namespace

double Cosine(double radians) {
  constexpr double kQuick = 0x1p20;  // up to there the number of quarters times the first part is exact
  constexpr double kQuarterHigh = 0x1.921fb544p+0;  // 33 bits
  constexpr double kQuarterLow = 0x1.0b4611a626331p-34;
  constexpr double kError = 0x1p-50;  // twice what the rest and the series may be off
  if (!(std::fabs(radians) < kFarthest)) {
    return std::cos(radians);
  }
  if (std::fabs(radians) >= kQuick) {
    return NearestCosine(radians);
  }
  constexpr double kToWhole = 0x1.8p52;  // a number of this size has no fraction
  const double count = (radians * (1 / 0x1.921fb54442d18p+0) + kToWhole) - kToWhole;
  const double rest = (radians - count * kQuarterHigh) - count * kQuarterLow;
  const auto quarters = static_cast<unsigned>(static_cast<int>(count)) & 3;
  const double value = (quarters & 1) != 0 ? QuickSine(rest) : QuickCosine(rest);
  // Where both ends of the error round to one number, so does the truth.
  if (static_cast<float>(value - kError) != static_cast<float>(value + kError)) {
    return NearestCosine(radians);
  }
  return quarters == 1 || quarters == 2 ? -value : value;
}

double Tangent(double radians) {
  if (!(std::fabs(radians) < kFarthest)) {
    return std::tan(radians);
  }
  const auto [rest, quarters] = AngleOf(radians);
  const Pair sine = SineOf(rest);
  const Pair cosine = CosineOf(rest);
  const double nearest = ((quarters & 1) != 0 ? Negated(cosine) / sine : sine / cosine).high;
  const auto* other = std::ranges::find(kSecondNearest, radians, [](const auto& one) { return one.radians; });
  if (other == std::end(kSecondNearest)) {
    return nearest;
  }
  return std::nextafter(nearest, other->step * std::numeric_limits<double>::infinity());
}

}  // namespace minihost
