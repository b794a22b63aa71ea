#include "effect/pixel/noise.h"

#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <random>
#include <set>
#include <vector>

namespace {

constexpr std::int32_t kMin = std::numeric_limits<std::int32_t>::min();
constexpr std::int32_t kMax = std::numeric_limits<std::int32_t>::max();

std::int64_t Unsigned32(std::int64_t value) {
  return ((value % 0x100000000) + 0x100000000) % 0x100000000;
}
std::int64_t Signed32(std::int64_t value) {
  return Unsigned32(value + 0x80000000) - 0x80000000;
}

// The stream of a key, in wide integers.
struct Stream {
  std::int64_t state;
  float Next() {
    state = (Unsigned32(state) * 1103515245 + 12345) % 0x100000000;
    return static_cast<float>(state / 65536 % 32768) * std::bit_cast<float>(0x38800100u) - 1.0f;
  }
};

/// The table entry by entry; adds which of the three pairs occurred.
std::vector<float> PlainTable(std::int64_t seed, std::int64_t step, float phase, std::int64_t period,
                              std::int64_t offset, std::set<std::size_t>& pairs) {
  std::array<Stream, 4> streams{};
  for (std::int64_t i = 0; i < 4; ++i) {
    std::int64_t key = Signed32(seed + (i - 1) * step);
    if (const std::int64_t m = Signed32(step * period); m != 0) key = key % m + (key % m < 0 ? m : 0);
    streams[static_cast<std::size_t>(i)].state = Signed32(Signed32(key ^ 0x0AB1CEA9) + offset);
  }
  Stream blend{137789};
  std::vector<float> table;
  for (int i = 0; i < 1024; ++i) {
    std::array<float, 4> r;
    for (std::size_t k = 0; k < 4; ++k) r[k] = streams[k].Next();
    float t = blend.Next() + phase;
    std::size_t pair = 1;
    if (t < 0.0f) {
      t = t + 1.0f;
      pair = 0;
    } else if (t > 1.0f) {
      t = t - 1.0f;
      pair = 2;
    }
    const float s = t <= 0.0f ? 0.0f : t >= 1.0f ? 1.0f : (t * t) * (t * -2.0f + 3.0f);
    table.push_back(r[pair] + s * (r[pair + 1] - r[pair]));
    pairs.insert(pair);
  }
  return table;
}

std::int32_t PlainIndex(std::int64_t n) {
  return static_cast<std::int32_t>(((n + 89 * (n / 23)) ^ (n / 23)) & 1023);
}

float PlainNoise(const std::vector<float>& table, float x) {
  const double floor = std::floor(static_cast<double>(x));
  const auto at = [&](int k) {
    return table[static_cast<std::size_t>(PlainIndex(Signed32(static_cast<std::int64_t>(floor) + k)))];
  };
  const float f = x - static_cast<float>(floor), f2 = f * f, f3 = f2 * f, g = 1.0f - f;
  const float w0 = (g * g) * g;
  const float w1 = 3.0f * f3 - 6.0f * f2 + 4.0f;
  const float w2 = -3.0f * f3 + 3.0f * f2 + 3.0f * f + 1.0f;
  return (w0 * at(-1) + w1 * at(0) + w2 * at(1) + f3 * at(2)) * 0.16666667f;
}

TEST(Noise, WorkedValues) {
  NoiseValues<float> noise;
  ASSERT_EQ(noise.NoiseTableLin(1793, 128, 0.0f, 0), PF_Err_NONE);
  const float first[] = {0.747666776f,  -0.073515296f, -0.972272158f, -0.368590146f,
                         -0.330745578f, 0.426382422f,  -0.623989105f, 0.202966154f};
  for (int i = 0; i < 8; ++i) EXPECT_EQ(noise.table[i], first[i]) << i;
  const float read[][2] = {{0, 0.649501681f},
                           {0.5f, 0.32318902f},
                           {1, -0.0864444301f},
                           {10.25f, -0.528392315f},
                           {-1.5f, 0.0653890297f}};
  for (const auto& [x, want] : read) EXPECT_EQ(noise.noisebspline(x), want) << x;
  const std::int32_t index[][2] = {{-2, 1022}, {-1, 1023}, {0, 0},      {22, 22},
                                   {23, 113},  {24, 112},  {1023, 871}, {1024, 864}};
  for (const auto& [n, want] : index) EXPECT_EQ(NoiseIndex(n), want) << n;
}

TEST(Noise, TableFollowsItsFourKeysAndTheBlend) {
  NoiseValues<float> noise;  // refilled each time
  std::set<std::size_t> pairs;
  const float u = Stream{137789}.Next();  // phases that place the first entry exactly on 0 and on 1
  for (const std::int32_t seed : {0, 1793, -1, -100'000, kMin, kMax, 0x0AB1CEA9})
    for (const std::int32_t step : {128, 7, 0, -1, 0x40000000})
      for (const std::uint32_t period : {0u, 1u, 5u, 1000u})
        for (const float phase : {0.0f, 0.75f, -0.75f, -u, 1.0f - u, 2.5f, -3.0f})
          for (const std::int32_t offset : {0, -77, kMax}) {
            noise.seedOffset = offset;
            ASSERT_EQ(noise.NoiseTableLin(seed, step, phase, period), PF_Err_NONE);
            ASSERT_EQ(std::vector<float>(noise.table, noise.table + 1024),
                      PlainTable(seed, step, phase, period, offset, pairs))
                << "seed " << seed << " step " << step << " period " << period << " phase " << phase
                << " offset " << offset;
          }
  EXPECT_EQ(pairs, (std::set<std::size_t>{0, 1, 2}));
}

TEST(Noise, IndexIsDefinedForEveryInteger) {
  for (std::int32_t n = -60'000; n <= 60'000; ++n) ASSERT_EQ(NoiseIndex(n), PlainIndex(n)) << n;
  for (const std::int32_t edge : {kMin, kMax})
    for (std::int32_t i = 0; i < 100; ++i) {
      const std::int32_t n = edge < 0 ? edge + i : edge - i;
      ASSERT_EQ(NoiseIndex(n), PlainIndex(n)) << n;
    }
}

TEST(Noise, LookupIsTheSplineBitForBitAndSmooth) {
  NoiseValues<float> noise;
  for (const std::uint32_t count : {0u, 4'000'000'000u}) ASSERT_EQ(noise.Allocate(count), PF_Err_NONE);
  ASSERT_EQ(noise.NoiseTableLin(42, 128, 0.0f, 0), PF_Err_NONE);
  const std::vector<float> table(noise.table, noise.table + 1024);
  float last = noise.noisebspline(-1200.0f);
  for (int i = 1; i <= 2400 * 64; ++i) {
    const float x = static_cast<float>(i) / 64.0f - 1200.0f;
    const float value = noise.noisebspline(x);
    ASSERT_EQ(value, PlainNoise(table, x)) << x;
    ASSERT_LE(std::abs(value), 1.0f) << x;
    ASSERT_LE(std::abs(value - last), 2.0f / 64.0f + 1e-6f) << x;  // the slope is at most 2
    last = value;
  }
  std::mt19937 random(5);
  for (int i = 0; i < 300'000; ++i) {
    const float x = std::ldexp(static_cast<float>(random()) - 0x1p31f, static_cast<int>(random() % 48) - 48);
    ASSERT_EQ(noise.noisebspline(x), PlainNoise(table, x)) << "draw " << i << ": " << x;
  }
  constexpr float kInfinity = std::numeric_limits<float>::infinity();
  for (const float x : {0x1.fffffep30f, 0x1p31f, -0x1p31f, -0x1.000002p31f, 3e38f, -3e38f, kInfinity,
                        -kInfinity, std::numeric_limits<float>::quiet_NaN(), -0.0f, 1e-45f, -1e-45f})
    EXPECT_LE(std::abs(noise.noisebspline(x)), 1.0f) << x;
}

}  // namespace
