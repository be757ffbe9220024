#include "frame/numbers.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <random>

namespace {

using roxe::fused_in_doubles;

float FromBits(uint32_t bits) {
  float value;
  std::memcpy(&value, &bits, sizeof value);
  return value;
}
uint32_t BitsOf(float value) {
  uint32_t bits;
  std::memcpy(&bits, &value, sizeof bits);
  return bits;
}

void ExpectFused(float a, float b, float c) {
  const float got = fused_in_doubles(a, b, c), expected = std::fma(a, b, c);
  if (std::isnan(expected))
    ASSERT_TRUE(std::isnan(got)) << a << ' ' << b << ' ' << c;
  else
    ASSERT_EQ(BitsOf(got), BitsOf(expected)) << std::hexfloat << a << ' ' << b << ' ' << c;
}

TEST(Numbers, FusedRoundsOnce) {
  // The product is 2^-24 - 2^-70. With 1 + 2^-23 the sum lies just below the middle of two floats;
  // in double precision it would be that middle, and the next rounding would go up to the even one.
  const float a = 0x1.000002p-24f, b = 1 - 0x1p-23f, odd = 1 + 0x1p-23f;
  EXPECT_EQ(fused_in_doubles(a, b, odd), odd);
  EXPECT_EQ(fused_in_doubles(-a, b, -odd), -odd);
  // 1 + 2^-24 + 2^-47 + ... lies just above the middle.
  EXPECT_EQ(fused_in_doubles(a, odd, 1.0f), odd);
  // Just below and above the middle of the smallest subnormal float and 0.
  EXPECT_EQ(fused_in_doubles(0x1p-75f, 0x1p-75f, 0.0f), 0.0f);
  EXPECT_EQ(fused_in_doubles(0x1.000002p-75f, 0x1p-75f, 0.0f), 0x1p-149f);
  EXPECT_EQ(fused_in_doubles(0x1p-75f, 0x1p-75f, 0x1p-149f), 0x1p-148f);
  // A sum of few bits: 2^-150 - 2^-196, just below half of the last one, and 2^20 + 1 of them.
  const float subnormal = 0x1.00001p-129f;
  EXPECT_EQ(fused_in_doubles(0x1.000002p-75f, 0x1.fffffcp-76f, subnormal), subnormal);
  EXPECT_EQ(fused_in_doubles(-0x1.000002p-75f, 0x1.fffffcp-76f, -subnormal), -subnormal);
  EXPECT_EQ(fused_in_doubles(3.0f, 5.0f, -15.0f), 0.0f);
}

TEST(Numbers, FusedOfExtremesAndOfWhatIsNoNumber) {
  const float inf = std::numeric_limits<float>::infinity();
  const float values[] = {0.0f,
                          -0.0f,
                          1.0f,
                          -1.0f,
                          0x1p-149f,
                          -0x1p-149f,
                          0x1p-126f,
                          0x1.fffffep127f,
                          -0x1.fffffep127f,
                          inf,
                          -inf,
                          std::nanf(""),
                          0x1.fffffep-127f,
                          0x1.000002p0f,
                          0x1.fffffep-1f};
  for (const float a : values)
    for (const float b : values)
      for (const float c : values) ExpectFused(a, b, c);
}

TEST(Numbers, FusedIsTheRealOneForAnyBits) {
  std::mt19937 random(1);
  for (int i = 0; i < 1000000; ++i)
    ExpectFused(FromBits(static_cast<uint32_t>(random())),
                FromBits(static_cast<uint32_t>(random())),
                FromBits(static_cast<uint32_t>(random())));
}

// Few bits set, exponents close to each other: sums that end near the middle of two floats.
TEST(Numbers, FusedIsTheRealOneNearTheMiddleOfFloats) {
  std::mt19937 random(2);
  const auto sparse = [&](uint32_t exponent) {
    uint32_t mantissa = 0;
    for (uint32_t bit = random() % 4; bit > 0; --bit) mantissa ^= 1u << random() % 23;
    if (random() % 3 == 0) mantissa = ~mantissa;
    return FromBits((static_cast<uint32_t>(random()) & 0x80000000) | exponent << 23 |
                    (mantissa & 0x7fffff));
  };
  for (int i = 0; i < 1000000; ++i) {
    const uint32_t a = 1 + static_cast<uint32_t>(random() % 200);
    const uint32_t b = 1 + static_cast<uint32_t>(random() % 54);
    // The exponent of the product is a + b - 127; c lies up to 60 above or below it.
    const int32_t c = static_cast<int32_t>(a + b) - 127 + static_cast<int32_t>(random() % 121) - 60;
    ExpectFused(sparse(a), sparse(b), sparse(static_cast<uint32_t>(std::min(254, std::max(0, c)))));
  }
}

}  // namespace
