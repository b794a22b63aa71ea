#include "effect/pixel/noise.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <new>
#include <random>
#include <vector>

#include "effect/pixel/flake_random.h"
#include "effect/pixel/integer.h"

static bool noMemory = false;

void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
  return noMemory ? nullptr : operator new[](size);
}

namespace {

struct Stream {
  std::uint32_t state;
  float Next() {
    state = state * 1103515245u + 12345u;
    return static_cast<float>(state / 65536 % 32768) * (2.0f / 32767.0f) - 1.0f;
  }
};

std::vector<float> PlainTable(std::int64_t seed, std::int64_t step, float phase, std::int64_t period,
                              std::int32_t offset) {
  std::vector<Stream> streams;
  for (const std::int64_t sum : {seed - step, seed, seed + step, seed + 2 * step}) {
    std::int64_t key = static_cast<std::int32_t>(sum);
    if (const std::int64_t modulus = static_cast<std::int32_t>(step * period); modulus != 0) {
      key = key % modulus + (key % modulus < 0 ? modulus : 0);
    }
    streams.push_back({static_cast<std::uint32_t>((key ^ 0x0AB1CEA9) + offset)});
  }
  Stream blend{137789};
  std::vector<float> table;
  while (table.size() < 1024) {
    float r[4];
    for (std::size_t k = 0; k < 4; ++k) {
      r[k] = streams[k].Next();
    }
    const float place = blend.Next() + phase;
    const int pair = place < 0.0f ? 0 : place > 1.0f ? 2 : 1;
    const float t = place + static_cast<float>(1 - pair);
    const float s = t <= 0.0f ? 0.0f : t >= 1.0f ? 1.0f : (t * t) * (t * -2.0f + 3.0f);
    table.push_back(r[pair] + s * (r[pair + 1] - r[pair]));
  }
  return table;
}

float PlainNoise(const std::vector<float>& table, float x) {
  const float floor = std::floor(x);
  const auto at = [&](int k) {
    const std::int64_t n = static_cast<std::int64_t>(floor) + k;
    return table[static_cast<std::size_t>(((n + 89 * (n / 23)) ^ (n / 23)) & 1023)];
  };
  const float f = x - floor, f2 = f * f, f3 = f2 * f, g = 1.0f - f;
  const float w1 = 3.0f * f3 - 6.0f * f2 + 4.0f;
  const float w2 = -3.0f * f3 + 3.0f * f2 + 3.0f * f + 1.0f;
  return (((g * g) * g) * at(-1) + w1 * at(0) + w2 * at(1) + f3 * at(2)) * 0.16666667f;
}

TEST(Noise, TableFollowsItsFourKeysAndTheBlend) {
  NoiseValues<float> noise;
  const float u = Stream{137789}.Next();  // of the first entry, whose place gets to 0 and to 1
  for (const std::int32_t seed : {0, 1793, -1, -100'000, INT32_MIN, INT32_MAX}) {
    for (const std::int32_t step : {128, 7, 0, -1, 0x40000000}) {
      for (const std::uint32_t period : {0u, 1u, 5u, 1000u}) {
        for (const float phase : {0.0f, 0.75f, -0.75f, -u, 1.0f - u, 2.5f, -3.0f}) {
          for (const std::int32_t offset : {0, -77, INT32_MAX}) {
            noise.seedOffset = offset;
            ASSERT_EQ(noise.NoiseTableLin(seed, step, phase, period), PF_Err_NONE);
            ASSERT_EQ(std::vector<float>(noise.table, noise.table + 1024),
                      PlainTable(seed, step, phase, period, offset))
                << seed << ", " << step << ", " << period << ", " << phase << ", " << offset;
          }
        }
      }
    }
  }
}

TEST(Noise, NeedsMemory) {
  NoiseValues<float> noise;
  noMemory = true;
  EXPECT_EQ(noise.NoiseTableLin(1793, 128, 0.0f, 0), PF_Err_OUT_OF_MEMORY);
  noMemory = false;
  EXPECT_EQ(noise.table, nullptr);
}

TEST(Noise, LookupIsTheSplineBitForBit) {
  NoiseValues<float> noise;
  for (const std::uint32_t count : {0u, 4'000'000'000u}) {
    ASSERT_EQ(noise.Allocate(count), PF_Err_NONE);
  }
  ASSERT_EQ(noise.NoiseTableLin(1793, 128, 0.0f, 0), PF_Err_NONE);
  EXPECT_EQ(noise.noisebspline(-1.5f), 0.0653890297f);

  const std::vector<float> table(noise.table, noise.table + 1024);
  std::mt19937 random(5);
  for (int i = 0; i < 500'000; ++i) {
    const float far = std::ldexp(static_cast<float>(random()) - 0x1p31f, i % 48 - 48);
    const float x = random() % 2 == 0 ? far : static_cast<float>(i) / 64.0f - 3000.0f;
    ASSERT_EQ(noise.noisebspline(x), PlainNoise(table, x)) << "draw " << i << ": " << x;
  }
  for (const float x : {0x1.fffffep30f, 0x1p31f, -0x1p31f, -0x1.000002p31f, 3e38f, -3e38f, std::nanf("")}) {
    EXPECT_LE(std::abs(noise.noisebspline(x)), 1.0f) << x;
  }
}

TEST(Numbers, FractionsAreProductsAndIntegersTruncateWhatFits) {
  for (std::int32_t draw = 0; draw <= kRandomMax; ++draw) {
    ASSERT_EQ(UnitFraction(draw), draw * (1.0 / 32767.0)) << draw;
    ASSERT_EQ(SignedFraction(draw), draw * (2.0 / 32767.0) - 1.0) << draw;
  }
  for (const double zero : {-0.9, 2147483648.0, -2147483649.0}) {
    EXPECT_EQ(TruncateToInt32(zero), 0) << zero;
  }
  EXPECT_EQ(TruncateToInt32(2147483647.9), INT32_MAX);
  EXPECT_EQ(TruncateToInt32(-2147483648.9), INT32_MIN);
}

}  // namespace
