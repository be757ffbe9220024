// The constant tables of the colour rows against the formulas that they are made from.
#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "colour/colour_distance.h"
#include "colour/linear_light.h"

namespace {

#include "rows/colour_tables.inl"

TEST(ColourTables, LinearLightOfEveryByte) {
  for (uint32_t i = 0; i < 256; ++i) {
    float linear;
    roxe::sRGB2LinearRGBChannel(i, &linear);
    EXPECT_EQ(kLinearLight[i], static_cast<int32_t>(linear * 4096.0f)) << i;
  }
  EXPECT_EQ(kLinearLight[0], 0);
  EXPECT_EQ(kLinearLight[10], 12);    // 0.0392157 / 12.92 * 4096 = 12.43
  EXPECT_EQ(kLinearLight[128], 884);  // 0.2158605 * 4096 = 884.16
  EXPECT_EQ(kLinearLight[255], 4096);
}

TEST(ColourTables, EveryLinearLightHasItsByte) {
  uint32_t byte = 0;
  for (int32_t i = 0; i <= 4096; ++i) {
    uint8_t expected;
    roxe::LinearRGB2sRGBChannel(&expected, static_cast<float>(i) / 4096.0f);
    while (byte < 255 && kFirstLight[byte + 1] <= i) ++byte;
    EXPECT_EQ(byte, expected) << i;
  }
  EXPECT_EQ(kFirstLight[0], 0);
  EXPECT_EQ(kFirstLight[10], 12);  // 11: 12.92 * 11 / 4096 * 255 = 8.85 rounds to 9; 12: 9.65
}

TEST(ColourTables, TablesOfTheMetric) {
  uint32_t fade[256], cosine[361], reciprocal[1];
  roxe::init_cylindrical_metric(fade, 256, cosine, 361, reciprocal, 1);
  for (size_t i = 0; i < 256; ++i) EXPECT_EQ(kFade[i], fade[i]) << i;
  for (size_t i = 0; i < 361; ++i) EXPECT_EQ(kCosine[i], static_cast<int32_t>(cosine[i])) << i;
}

}  // namespace
