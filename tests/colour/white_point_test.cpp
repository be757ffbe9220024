#include "colour/white_point.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>

#include "geometry/xrml.h"
#include "support/image.h"
#include "support/seams.h"

namespace {

using Matrix = std::array<float, 9>;
constexpr Matrix kPrimaries = {0.64f, 0.30f, 0.15f, 0.33f, 0.60f, 0.06f, 0.03f, 0.10f, 0.79f};
constexpr Matrix kIdentity = {1, 0, 0, 0, 1, 0, 0, 0, 1};

roxe::WhitePoint White(int32_t temperature, int32_t tint) {
  roxe::WhitePoint white;
  EXPECT_EQ(roxe::GetWhitePoint(temperature, tint, &white), 1);
  EXPECT_EQ(white.Y, 1.0f);
  return white;
}

std::array<float, 3> Xyz(int32_t temperature) {
  const roxe::WhitePoint white = White(temperature, 0);
  return {white.x / white.y, 1.0f, (1.0f - white.x - white.y) / white.y};
}

std::array<float, 3> Column(const Matrix& m, const std::array<float, 3>& v) {
  std::array<float, 3> result;
  for (size_t i = 0; i < 3; ++i)
    result[i] = m[3 * i] * v[0] + m[3 * i + 1] * v[1] + m[3 * i + 2] * v[2];
  return result;
}

Matrix Times(const Matrix& a, const Matrix& b) {
  Matrix c;
  EXPECT_EQ(roxe::xrmlMatrixMultiply(a.data(), b.data(), c.data(), 3, 3), 1);
  return c;
}

template <size_t n>
void ExpectNear(const std::array<float, n>& actual, const std::array<float, n>& expected) {
  for (size_t i = 0; i < n; ++i) EXPECT_NEAR(actual[i], expected[i], 2e-5f) << i;
}

TEST(WhitePoint, DaylightLocus) {
  // 6500: -4.607 / 274.625 + 2.9678 / 42.25 + 0.09911 / 6.5 + 0.244063 = 0.312779;
  // y = -3 * 0.0978307 + 2.87 * 0.312779 - 0.275 = 0.329183.
  EXPECT_NEAR(White(6500, 0).x, 0.312779, 1e-6);
  EXPECT_NEAR(White(6500, 0).y, 0.329183, 1e-6);
  EXPECT_NEAR(White(4000, 0).x, 0.382344, 1e-6);
  EXPECT_NEAR(White(4000, 0).y, 0.383766, 1e-6);
  EXPECT_NEAR(White(7000, 0).x, 0.305357, 1e-6);  // the first form, up to and with 7000
  EXPECT_NEAR(White(7001, 0).x, 0.305343, 1e-6);  // the second
  // 25000: -2.0064 / 15625 + 1.9018 / 625 + 0.24748 / 25 + 0.23704 = 0.249854.
  EXPECT_NEAR(White(25000, 0).x, 0.249854, 1e-6);
  EXPECT_NEAR(White(25000, 0).y, 0.254799, 1e-6);
}

TEST(WhitePoint, BelowFourThousandALineToTheRedPrimary) {
  for (const int32_t tint : {-50, 0, 7}) {
    EXPECT_EQ(White(0, tint).x, 0.64f);
    EXPECT_EQ(White(0, tint).y, 0.33f);
  }
  EXPECT_NEAR(White(2000, 9).x, (0.64 + 0.382344) / 2, 1e-6);
  EXPECT_NEAR(White(2000, 9).y, (0.33 + 0.383766) / 2, 1e-6);
  // One step of 1 / 4000 of the way.
  EXPECT_NEAR(White(3999, 0).x - White(4000, 0).x, (0.64 - 0.382344) / 4000, 1e-7);
  EXPECT_NEAR(White(-4000, 0).x, 2 * 0.64 - 0.382344, 1e-6);
}

TEST(WhitePoint, AboveTwentyFiveThousandALineToTheBluePrimary) {
  EXPECT_NEAR(White(33000, 5).x, (0.249854 + 0.15) / 2, 1e-6);
  EXPECT_NEAR(White(33000, 5).y, (0.254799 + 0.06) / 2, 1e-6);
  EXPECT_NEAR(White(41000, 0).x, 0.15, 1e-6);
  EXPECT_NEAR(White(57000, 0).x, 2 * 0.15 - 0.249854, 1e-6);
  White(INT32_MAX, INT32_MAX);
  White(INT32_MIN, INT32_MIN);
}

TEST(WhitePoint, RoundingsOfTheFormsAreTheirs) {
  // x is squared first: -3 x * x would end in 6e.
  EXPECT_EQ(White(10000, 0).y, 0x1.2af972p-2f);
  // 16777219 becomes 16777220 before 25000 is taken away: 16752219 would give ...174p+6.
  EXPECT_EQ(White(16777219, 0).x, -0x1.a13176p+6f);
}

TEST(WhitePoint, TintMovesAlongTheNormal) {
  const roxe::WhitePoint none = White(6500, 0), greener = White(6500, -1), redder = White(6500, 1);
  EXPECT_NEAR(greener.x - none.x, -0.00045, 1e-7);
  EXPECT_NEAR(redder.x - none.x, 0.0006, 1e-7);
  // The slope of the normal is -1 / (2.87 - 6 * 0.312779) = -1.00674.
  EXPECT_NEAR(greener.y - none.y, 0.00045 * 1.00674, 1e-7);
  EXPECT_NEAR(redder.y - none.y, -0.0006 * 1.00674, 1e-7);
}

TEST(WhitePoint, TintCountsFromFourThousandToTwentyFiveThousand) {
  for (const int32_t temperature : {3999, 25001})
    EXPECT_EQ(White(temperature, 90).x, White(temperature, 0).x) << temperature;
  for (const int32_t temperature : {4000, 25000})  // 90 * 0.0006
    EXPECT_NEAR(White(temperature, 90).x - White(temperature, 0).x, 0.054, 1e-6) << temperature;
}

TEST(WhitePoint, PrimariesSumToTheWhite) {
  const roxe::WhitePoint white = White(6500, 0);
  std::array<float, 3> scale;
  EXPECT_EQ(roxe::Getuvw(kPrimaries.data(), white.Y, white.x, white.y, scale.data()), 1);
  ExpectNear(Column(kPrimaries, scale), Xyz(6500));

  Matrix to_xyz;
  EXPECT_EQ(roxe::GetRGB2XYZMatrix(kPrimaries.data(), 6500, 0, to_xyz.data()), 1);
  ExpectNear(Column(to_xyz, {1, 1, 1}), Xyz(6500));
  EXPECT_FLOAT_EQ(to_xyz[4], kPrimaries[4] * scale[1]);
}

TEST(WhitePoint, MissingMatricesFail) {
  float out[9];
  EXPECT_EQ(roxe::Getuvw(nullptr, 1, 0.3f, 0.3f, out), 0);
  EXPECT_EQ(roxe::Getuvw(kPrimaries.data(), 1, 0.3f, 0.3f, nullptr), 0);
  EXPECT_EQ(roxe::GetRGB2XYZMatrix(nullptr, 6500, 0, out), 0);
  EXPECT_EQ(roxe::GetRGB2XYZMatrix(kPrimaries.data(), 6500, 0, nullptr), 0);
  EXPECT_EQ(roxe::GetColorTemperatureMatrix(5000, 0, 5000, 0, nullptr), 0);
  EXPECT_EQ(roxe::GetBradfordXYZMatrix(5000, 0, 5000, 0, nullptr), 0);
  EXPECT_EQ(roxe::GetSRGBColorTemperatureMatrix(5000, 0, 5000, 0, nullptr), 0);
}

TEST(WhitePoint, EqualWhitesGiveTheIdentityWithoutWork) {
  const AllocationWatch watch;
  Matrix matrix;
  EXPECT_EQ(roxe::GetColorTemperatureMatrix(5000, 3, 5000, 3, matrix.data()), 1);
  EXPECT_EQ(matrix, kIdentity);
  matrix.fill(0);
  EXPECT_EQ(roxe::GetSRGBColorTemperatureMatrix(5000, 3, 5000, 3, matrix.data()), 1);
  EXPECT_EQ(matrix, kIdentity);
  EXPECT_EQ(watch.allocations(), 0);
}

TEST(WhitePoint, EqualTemperaturesWithOtherTintsAreOtherWhites) {
  Matrix convert, from, to;
  EXPECT_EQ(roxe::GetColorTemperatureMatrix(5000, 0, 5000, 20, convert.data()), 1);
  roxe::GetRGB2XYZMatrix(kPrimaries.data(), 5000, 0, from.data());
  roxe::GetRGB2XYZMatrix(kPrimaries.data(), 5000, 20, to.data());
  ExpectNear(Times(to, convert), from);
  EXPECT_GT(std::abs(convert[0] - 1), 0.001f);

  EXPECT_EQ(roxe::GetSRGBColorTemperatureMatrix(5000, 0, 5000, 20, convert.data()), 1);
  roxe::GetBradfordXYZMatrix(5000, 0, 5000, 20, from.data());
  ExpectNear(Times(to, convert), Times(from, to));
  EXPECT_GT(std::abs(convert[0] - 1), 0.001f);
}

TEST(WhitePoint, PlainConversionKeepsXyz) {
  Matrix convert, from, to;
  EXPECT_EQ(roxe::GetColorTemperatureMatrix(5000, 0, 6500, 10, convert.data()), 1);
  roxe::GetRGB2XYZMatrix(kPrimaries.data(), 5000, 0, from.data());
  roxe::GetRGB2XYZMatrix(kPrimaries.data(), 6500, 10, to.data());
  ExpectNear(Times(to, convert), from);
}

TEST(WhitePoint, BradfordTakesOneWhiteToTheOther) {
  Matrix adapt;
  EXPECT_EQ(roxe::GetBradfordXYZMatrix(5000, 0, 6500, 0, adapt.data()), 1);
  ExpectNear(Column(adapt, Xyz(5000)), Xyz(6500));
  EXPECT_EQ(roxe::GetBradfordXYZMatrix(5000, 0, 5000, 0, adapt.data()), 1);
  ExpectNear(adapt, kIdentity);
}

TEST(WhitePoint, AdaptationOfLinearRgbUsesTheSecondWhiteOnBothSides) {
  Matrix convert, adapt, to_xyz;
  EXPECT_EQ(roxe::GetSRGBColorTemperatureMatrix(5000, 0, 6500, 0, convert.data()), 1);
  roxe::GetBradfordXYZMatrix(5000, 0, 6500, 0, adapt.data());
  roxe::GetRGB2XYZMatrix(kPrimaries.data(), 6500, 0, to_xyz.data());
  ExpectNear(Times(to_xyz, convert), Times(adapt, to_xyz));
}

TEST(WhitePoint, WithoutMemoryMatricesFail) {
  Matrix matrix;
  for (int64_t n = 1; n <= 3; ++n) {
    const AllocationWatch plain(n);
    // The inverse of the primaries goes unchecked: only the third one, of the second white, counts.
    EXPECT_EQ(roxe::GetColorTemperatureMatrix(5000, 0, 6500, 0, matrix.data()), n < 3 ? 1 : 0);
    EXPECT_EQ(plain.live_blocks(), 0);
    const AllocationWatch adapted(n);
    EXPECT_EQ(roxe::GetSRGBColorTemperatureMatrix(5000, 0, 6500, 0, matrix.data()), n == 2 ? 1 : 0);
    EXPECT_EQ(adapted.live_blocks(), 0);
  }
  const AllocationWatch bradford(1);
  EXPECT_EQ(roxe::GetBradfordXYZMatrix(5000, 0, 6500, 0, matrix.data()), 0);
}

TEST(WhitePoint, PlainApplicationUsesTheDiagonalOnBytes) {
  const Matrix matrix = {0.5f, 9, 9, 9, 3, 9, 9, 9, -1};
  Image image = Bgr({{{100, 100, 99}, {0, 80, 255}}});
  roxe::ApplyColorTemperatureMatrix(image, image, matrix.data());
  EXPECT_EQ(image, Bgr({{{0, 255, 49}, {0, 240, 127}}}));
}

Image Applied(Pixel pixel, const Matrix& matrix) {
  Image image = Bgr({{pixel}});
  roxe::ApplySRGBColorTemperatureMatrix(image, image, matrix.data());
  return image;
}

TEST(WhitePoint, LinearApplicationSharesRedAndBlue) {
  EXPECT_EQ(Applied({255, 255, 255}, kIdentity), Bgr({{{255, 255, 255}}}));
  // Red 1.5: 0.25 to green and blue, encoded 137.
  EXPECT_EQ(Applied({0, 0, 255}, {1.5f, 0, 0, 0, 1, 0, 0, 0, 1}), Bgr({{{137, 137, 255}}}));
  // Blue 1.5: 0.25 to red and green.
  EXPECT_EQ(Applied({255, 0, 0}, {1, 0, 0, 0, 1, 0, 0, 0, 1.5f}), Bgr({{{255, 137, 137}}}));
  // Green 1.5 is cut.
  EXPECT_EQ(Applied({0, 255, 0}, {1, 0, 0, 0, 1.5f, 0, 0, 0, 1}), Bgr({{{0, 255, 0}}}));
  // Red -0.5: a quarter less of green and blue, 0.75 encoded is 225.06.
  EXPECT_EQ(Applied({255, 255, 255}, {-0.5f, 0, 0, 0, 1, 0, 0, 0, 1}), Bgr({{{225, 225, 0}}}));
  // Blue -0.5 likewise; red overflows first and gives blue its share: 2 - 1 halved, -0.5 + 0.5.
  EXPECT_EQ(Applied({255, 0, 255}, {2, 0, 0, 0, 1, 0, 0, 0, -0.5f}), Bgr({{{0, 188, 255}}}));
}

TEST(WhitePoint, SenselessMatricesGiveSomeBytes) {
  Matrix matrix;
  matrix.fill(0.0f);
  matrix[0] /= matrix[1];  // no number
  EXPECT_EQ(Applied({255, 255, 255}, matrix), Bgr({{{0, 0, 0}}}));
  Image image = Bgr({{{1, 2, 3}}});
  roxe::ApplyColorTemperatureMatrix(image, image, matrix.data());
  EXPECT_EQ(image, Bgr({{{0, 0, 0}}}));
}

TEST(WhitePoint, ApplicationNeedsItsArgumentsAndMemory) {
  Image image = Bgr({{{1, 2, 3}}});
  const Image before(image);
  const Matrix none = {};
  roxe::ApplyColorTemperatureMatrix(nullptr, image, none.data());
  roxe::ApplyColorTemperatureMatrix(image, nullptr, none.data());
  roxe::ApplyColorTemperatureMatrix(image, image, nullptr);
  roxe::ApplySRGBColorTemperatureMatrix(nullptr, image, none.data());
  roxe::ApplySRGBColorTemperatureMatrix(image, nullptr, none.data());
  roxe::ApplySRGBColorTemperatureMatrix(image, image, nullptr);
  for (int64_t n = 1; n <= 2; ++n) {
    const AllocationWatch watch(n);
    roxe::ApplySRGBColorTemperatureMatrix(image, image, none.data());
    EXPECT_EQ(watch.live_blocks(), 0);
  }
  EXPECT_EQ(image, before);
}

}  // namespace
