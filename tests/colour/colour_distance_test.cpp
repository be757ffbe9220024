#include "colour/colour_distance.h"

#include <gtest/gtest.h>

namespace {

struct Tables {
  uint32_t fade[256], cosine[361], reciprocal[202];
  Tables() { roxe::init_cylindrical_metric(fade, 256, cosine, 361, reciprocal, 202); }
};

int32_t Signed(uint32_t bits) { return static_cast<int32_t>(bits); }

uint32_t Distance(roxe::Hsv pixel, roxe::Hsv reference, uint32_t limit) {
  const Tables t;
  return roxe::cylindrical_metric(pixel.hue, pixel.saturation, static_cast<uint32_t>(pixel.value),
                                  reference.hue, reference.saturation,
                                  static_cast<uint32_t>(reference.value), limit, limit * limit,
                                  t.reciprocal[limit], t.fade, t.cosine);
}

TEST(ColourDistance, FadeIsABellOfTheValue) {
  const Tables t;
  EXPECT_EQ(t.fade[0], 256u);
  EXPECT_EQ(t.fade[1], 254u);   // 256 exp(-0.005) = 254.72
  EXPECT_EQ(t.fade[10], 155u);  // 256 exp(-0.5) = 155.27
  EXPECT_EQ(t.fade[33], 1u);    // 256 exp(-5.445) = 1.106
  for (int i = 34; i < 256; ++i) EXPECT_EQ(t.fade[i], 0u);
}

TEST(ColourDistance, CosinesAreTruncatedTowardZero) {
  const Tables t;
  EXPECT_EQ(Signed(t.cosine[0]), 32768);
  EXPECT_EQ(Signed(t.cosine[60]), 16383);
  EXPECT_EQ(Signed(t.cosine[90]), 0);
  EXPECT_EQ(Signed(t.cosine[91]), -571);  // 32768 * -0.017452 = -571.88
  EXPECT_EQ(Signed(t.cosine[120]), -16384);
  EXPECT_EQ(Signed(t.cosine[180]), -32768);
  EXPECT_EQ(Signed(t.cosine[240]), -16383);
  EXPECT_EQ(Signed(t.cosine[270]), 0);
  EXPECT_EQ(Signed(t.cosine[300]), 16384);
  EXPECT_EQ(Signed(t.cosine[360]), 32768);
}

TEST(ColourDistance, ReciprocalsStartWithNone) {
  const Tables t;
  EXPECT_EQ(t.reciprocal[0], 0u);
  EXPECT_EQ(t.reciprocal[1], 16384u);
  EXPECT_EQ(t.reciprocal[3], 5461u);
  EXPECT_EQ(t.reciprocal[201], 81u);
}

TEST(ColourDistance, ACountOfNoneLeavesATable) {
  uint32_t table[2] = {7, 7};
  roxe::init_cylindrical_metric(table, 0, table, 0, table, 1);
  EXPECT_EQ(table[0], 0u);
  EXPECT_EQ(table[1], 7u);
}

TEST(ColourDistance, IdenticalColoursAreAtNone) {
  EXPECT_EQ(Distance({210, 170, 30}, {210, 170, 30}, 201), 0u);
  EXPECT_EQ(Distance({180, 0, 200}, {180, 0, 200}, 1), 0u);
}

TEST(ColourDistance, OppositeHuesAreOutsideEveryLimit) {
  // 2 * 255^2 + 2 * 255^2, a quarter of it 65025: above 201^2.
  for (uint32_t limit = 1; limit <= 201; ++limit)
    EXPECT_EQ(Distance({180, 255, 255}, {360, 255, 255}, limit), limit);
}

TEST(ColourDistance, IsAShareOfTheSquaredChord) {
  // Values 128 and 120, no saturation: q = 64 / 4 = 16, 16 * 1638 >> 14 = 1.
  EXPECT_EQ(Distance({180, 0, 128}, {180, 0, 120}, 10), 1u);
  // (200 - 255)^2 + 255^2 + 216^2 - 2 * 255 * 216 = 3025 + 39^2 = 4546; q = 1136;
  // 1136 * 202 >> 14 = 14.
  EXPECT_EQ(Distance({360, 216, 200}, {360, 255, 255}, 81), 14u);
}

TEST(ColourDistance, NegativeCosinesAreSigned) {
  // 120 degrees apart, saturations 100: 2 * 100^2 + 100^2 = 30000; q = 7500;
  // 7500 * 81 >> 14 = 37.
  EXPECT_EQ(Distance({200, 100, 100}, {80, 100, 100}, 201), 37u);
}

TEST(ColourDistance, NearBlackAllHuesAreAlike) {
  // Value 3, fade 244: saturations 255 + (244 * -252 >> 8 = -241) = 14. 120 degrees:
  // 3 * 14^2 = 588, q = 147; 147 * 202 >> 14 = 1.
  EXPECT_EQ(Distance({360, 255, 3}, {240, 255, 3}, 81), 1u);
}

TEST(ColourDistance, WithLimitOneOnlyTheNearestAreInside) {
  EXPECT_EQ(Distance({180, 0, 101}, {180, 0, 100}, 1), 0u);  // q = 1 / 4
  EXPECT_EQ(Distance({180, 0, 102}, {180, 0, 100}, 1), 1u);  // q = 1
}

TEST(ColourDistance, AChordBelowNothingIsOutside) {
  // Rounding can do that; here a cosine of 1.5 does: 1 + 1 - (3 * 16384 >> 14) = -1.
  const Tables t;
  uint32_t cosine[361] = {3 * 16384};
  EXPECT_EQ(roxe::cylindrical_metric(10, 1, 200, 10, 1, 200, 201, 201 * 201, 81, t.fade, cosine),
            201u);
}

TEST(ColourDistance, SelectionKeepsTheReferenceInRange) {
  const roxe::ColourSelection far = roxe::colours_near(0, 256, UINT32_MAX, 81);
  EXPECT_EQ(far.reference.hue, 60);  // yellow
  EXPECT_EQ(far.reference.saturation, 255);
  EXPECT_EQ(far.reference.value, 255);
  EXPECT_EQ(far.limit, 81u);
  EXPECT_EQ(far.limit_squared, 6561u);
  EXPECT_EQ(far.limit_reciprocal, 202u);
}

TEST(ColourDistance, AchromaticLooksAtTheFirstColourOnly) {
  EXPECT_EQ(roxe::achromatic_pixel_metric(0, 10, 10, 0, 0, 10, 100), 1.0);
  EXPECT_EQ(roxe::achromatic_pixel_metric(0, 9, 200, 0, 250, 150, 100), 0.5);
  EXPECT_EQ(roxe::achromatic_pixel_metric(0, 200, 9, 0, 250, 34, 100), 0.25);
  EXPECT_EQ(roxe::achromatic_pixel_metric(0, 0, 200, 0, 0, 99, 100), 1.0);
}

TEST(ColourDistance, MinkowskiHasMixedExponents) {
  // 360 - 356 = 4 (not squared), 2^3 = 8, 2^2 = 4: the root of 16.
  EXPECT_EQ(roxe::minkowski_metric(358, 12, 50, 2, 10, 52, 8), 0.5);
  EXPECT_EQ(roxe::minkowski_metric(358, 12, 50, 2, 10, 52, 3), 1.0);
}

TEST(ColourDistance, MinkowskiTakesDifferencesInSinglePrecision) {
  // Saturations apart by 100 and less than half the step of floats there: the root of 100^3 is
  // 1000. Not rounded first it would be 1000.00006.
  EXPECT_EQ(roxe::minkowski_metric(0, 0, 0, 0, 100.0000038, 0, 2000), 0.5);
  // Values: the root of 100^2. Not rounded first 100.000008.
  EXPECT_EQ(roxe::minkowski_metric(0, 0, 0, 0, 0, 100.0000038, 200), 0.5);
  // Hues: 360 - 296 = 64, whose root is 8. Not rounded first 7.999999.
  EXPECT_EQ(roxe::minkowski_metric(0, 0, 0, 296.000012, 0, 0, 16), 0.5);
}

TEST(ColourDistance, CanberraAddsShares) {
  EXPECT_EQ(roxe::canberra_metric(10, 30, 20, 30, 10, 20, 4), 0.25);  // 0.5 + 0.5 + 0
  EXPECT_EQ(roxe::canberra_metric(0, 0, 1, 0, 0.0005, 3, 1), 0.5);    // a sum of 0.0005 is no sum
  EXPECT_EQ(roxe::canberra_metric(1, 1, 1, 0, 0, 0, 2), 1.0);
}

TEST(ColourDistance, ChromaticIsNone) {
  EXPECT_EQ(roxe::chromatic_metric(1, 2, 3, 4, 5, 6, 7), 0.0);
}

}  // namespace
