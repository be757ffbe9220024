#include "colour/linear_light.h"

#include <gtest/gtest.h>

#include <limits>
#include <vector>

#include "support/seams.h"

namespace {

float Linear(uint32_t value) {
  float linear;
  roxe::sRGB2LinearRGBChannel(value, &linear);
  return linear;
}

int32_t Encoded(float linear) {
  uint8_t byte;
  roxe::LinearRGB2sRGBChannel(&byte, linear);
  return byte;
}

TEST(LinearLight, EndsAndTheLinearStretch) {
  EXPECT_EQ(Linear(0), 0.0f);
  EXPECT_EQ(Linear(255), 1.0f);
  EXPECT_EQ(Linear(10), 10 * 0.003921569f * 0.07739938f);  // 0.0392 is below 0.03928
  EXPECT_NEAR(Linear(11), 0.00334654, 1e-8);               // ((0.0431373 + 0.055) / 1.055)^2.4
  EXPECT_NEAR(Linear(128), 0.2158605, 1e-7);
}

TEST(LinearLight, EncodingRoundsAndClamps) {
  EXPECT_EQ(Encoded(0.0f), 0);
  EXPECT_EQ(Encoded(1.0f), 255);
  EXPECT_EQ(Encoded(12.0f / 4096.0f), 10);  // 12.92 * 0.0029297 * 255 = 9.65
  EXPECT_EQ(Encoded(0.5f), 188);            // (1.055 * 0.5^(1 / 2.4) - 0.055) * 255 = 187.52
  EXPECT_EQ(Encoded(-1.0f), 0);
  EXPECT_EQ(Encoded(2.0f), 255);
  EXPECT_EQ(Encoded(std::numeric_limits<float>::infinity()), 255);
  EXPECT_EQ(Encoded(-std::numeric_limits<float>::infinity()), 0);
  EXPECT_EQ(Encoded(std::numeric_limits<float>::quiet_NaN()), 0);
}

TEST(LinearLight, TablesHoldEveryEntry) {
  const roxe::Block<float> linear = roxe::CreatesRGB2LinearRGBIndex();
  const roxe::Block<uint8_t> encoded = roxe::CreateLinearRGB2sRGBIndex();
  ASSERT_TRUE(linear && encoded);
  for (uint32_t i = 0; i < 256; ++i) EXPECT_EQ(linear[i], Linear(i));
  for (uint32_t i = 0; i <= 4096; ++i)
    EXPECT_EQ(encoded[i], Encoded(static_cast<float>(i) * 0.000244140625f));
  EXPECT_EQ(encoded[0], 0);
  EXPECT_EQ(encoded[12], 10);
  EXPECT_EQ(encoded[4096], 255);
}

TEST(LinearLight, TheRoundTripMissesSevenLevels) {
  const roxe::Block<float> linear = roxe::CreatesRGB2LinearRGBIndex();
  const roxe::Block<uint8_t> encoded = roxe::CreateLinearRGB2sRGBIndex();
  std::vector<uint32_t> missed;
  for (uint32_t i = 0; i < 256; ++i) {
    const int32_t back = encoded[static_cast<size_t>(linear[i] * 4096.0f)];
    if (back == static_cast<int32_t>(i)) continue;
    EXPECT_EQ(back, static_cast<int32_t>(i) - 1);
    missed.push_back(i);
  }
  EXPECT_EQ(missed, (std::vector<uint32_t>{3, 4, 7, 8, 11, 14, 17}));
}

TEST(LinearLight, SizesAndFailures) {
  {
    const AllocationWatch watch;
    const roxe::Block<float> linear = roxe::CreatesRGB2LinearRGBIndex();
    EXPECT_EQ(watch.peak_bytes(), 1024u);
  }
  {
    const AllocationWatch watch;
    const roxe::Block<uint8_t> encoded = roxe::CreateLinearRGB2sRGBIndex();
    EXPECT_EQ(watch.peak_bytes(), 4097u);
  }
  const AllocationWatch first(1);
  EXPECT_EQ(roxe::CreatesRGB2LinearRGBIndex(), nullptr);
  const AllocationWatch second(1);
  EXPECT_EQ(roxe::CreateLinearRGB2sRGBIndex(), nullptr);
}

}  // namespace
