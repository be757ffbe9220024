#include "geometry/rotate.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <vector>

#include "reference/geometry.h"
#include "support/image.h"
#include "support/seams.h"

namespace {

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();

// One row of blue values between two rows of zeros, so that it can be sampled.
Image Row(const std::vector<uint8_t>& blues) {
  Image image(kRoxeFormatRGB24, static_cast<int32_t>(blues.size()), 4);
  image.fill(0);
  for (size_t x = 0; x < blues.size(); ++x) *image.pixel(static_cast<int32_t>(x), 1) = blues[x];
  return image;
}

std::vector<int> Blues(const Image& image, int32_t y) {
  std::vector<int> blues;
  for (int32_t x = 0; x < image.record.width; ++x) blues.push_back(*image.pixel(x, y));
  return blues;
}

TEST(Rotate, ByNothingCopiesAllButTheOutermostRing) {
  const Image src(kRoxeFormatRGB24, 7, 5, 24);
  Image dst(kRoxeFormatRGB24, 7, 5, 21);
  dst.fill(9);
  EXPECT_EQ(roxeRotateImage(src, 3, 2, 0, dst, 3, 2), kRoxeOK);
  for (int32_t y = 0; y < 5; ++y) {
    for (int32_t x = 0; x < 7; ++x) {
      const bool inside = x >= 1 && x <= 5 && y >= 1 && y <= 3;
      for (int c = 0; c < 3; ++c)
        EXPECT_EQ(dst.pixel(x, y)[c], inside ? src.pixel(x, y)[c] : 9) << x << ' ' << y;
    }
  }
}

TEST(Rotate, QuarterTurnIsClockwiseOnScreen) {
  const Image src(kRoxeFormatRGB24, 5, 5);
  Image dst(kRoxeFormatRGB24, 5, 5);
  dst.fill(9);
  EXPECT_EQ(roxeRotateImage(src, 2, 2, 1.57079632679f, dst, 2, 2), kRoxeOK);
  for (int32_t y = 0; y < 5; ++y) {
    for (int32_t x = 0; x < 5; ++x) {
      const bool inside = x >= 1 && x <= 3 && y >= 1 && y <= 3;
      // What was left of the centre (x < 2) now lies above it (y < 2).
      for (int c = 0; c < 3; ++c)
        EXPECT_EQ(dst.pixel(x, y)[c], inside ? src.pixel(y, 4 - x)[c] : 9) << x << ' ' << y;
    }
  }
}

TEST(Rotate, CentreComesToLieWhereAsked) {
  const Image src(kRoxeFormatRGB24, 9, 9);
  Image dst(kRoxeFormatRGB24, 20, 15);
  dst.fill(9);
  EXPECT_EQ(roxeRotateImage(src, 4, 5, 0.6f, dst, 11, 7), kRoxeOK);
  for (int c = 0; c < 3; ++c) EXPECT_EQ(dst.pixel(11, 7)[c], src.pixel(4, 5)[c]);
  // The corners lie farther from the centre than any part of the source.
  for (const uint8_t* corner : {dst.pixel(0, 0), dst.pixel(19, 0), dst.pixel(0, 14)})
    EXPECT_EQ(*corner, 9);
}

TEST(Rotate, SourcesTwoPixelsWideOrHighWriteNothing) {
  for (const auto& [width, height] : {std::pair(2, 9), std::pair(9, 2), std::pair(1, 1)}) {
    const Image src(kRoxeFormatRGB24, width, height);
    Image dst(kRoxeFormatRGB24, 9, 9);
    const Image before(dst);
    for (const float angle : {0.0f, 0.4f, 1.57f})
      EXPECT_EQ(roxeRotateImage(src, width / 2, height / 2, angle, dst, 4, 4), kRoxeOK);
    EXPECT_EQ(dst, before);
  }
}

TEST(Rotate, GreySourceWritesNothing) {
  const Image src(kRoxeFormatGray8, 9, 9);
  Image dst(kRoxeFormatRGB24, 9, 9);
  const Image before(dst);
  EXPECT_EQ(roxeRotateImage(src, 4, 4, 0.3f, dst, 4, 4), kRoxeOK);
  EXPECT_EQ(dst, before);
}

TEST(Rotate, GreyDestinationIsWrittenAs24BitAsFarAsItsRowsReach) {
  Image src(kRoxeFormatRGB24, 12, 6);
  src.fill(200);
  Image dst(kRoxeFormatGray8, 10, 6);  // rows of 10 bytes hold three pixels
  dst.fill(9);
  EXPECT_EQ(roxeRotateImage(src, 0, 0, 0, dst, 0, 0), kRoxeOK);
  for (int32_t y = 0; y < 6; ++y)
    for (int32_t x = 0; x < 10; ++x)
      EXPECT_EQ(*dst.pixel(x, y), y >= 1 && y <= 4 && x >= 3 && x <= 8 ? 200 : 9) << x << ' ' << y;
}

TEST(Rotate, ColumnsThatSourceRowsDoNotHoldAreOutside) {
  // 3 * 0x55555557 wraps to 5, so a row of 15 bytes passes; it holds five pixels.
  Image src(kRoxeFormatRGB24, 5, 4);
  src.fill(200);
  src.record.width = 0x55555557;
  Image dst(kRoxeFormatRGB24, 8, 4);
  dst.fill(9);
  EXPECT_EQ(roxeRotateImage(src, 0, 0, 0, dst, 0, 0), kRoxeOK);
  EXPECT_EQ(Blues(dst, 1), (std::vector<int>{9, 200, 200, 200, 9, 9, 9, 9}));
}

TEST(Rotate, RecordsAreVerifiedSourceFirst) {
  Image good(kRoxeFormatRGB24, 5, 5), bad(kRoxeFormatRGB24, 5, 5);
  bad.record.height = 0;
  EXPECT_EQ(roxeRotateImage(nullptr, 0, 0, 0, nullptr, 0, 0), kRoxeErrNull);
  EXPECT_EQ(roxeRotateImage(good, 0, 0, 0, nullptr, 0, 0), kRoxeErrNull);
  EXPECT_EQ(roxeRotateImage(bad, 0, 0, 0, nullptr, 0, 0), kRoxeErrInvalid);
  EXPECT_EQ(roxeRotateImage(good, 0, 0, 0, bad, 0, 0), kRoxeErrInvalid);
  bad.record = good.record;
  bad.record.pixels = nullptr;
  EXPECT_EQ(roxeRotateImage(bad, 0, 0, 0, good, 0, 0), kRoxeErrInvalid);
}

TEST(Rotate, DestinationIsVerifiedEvenWhereAGreySourceLeavesItAlone) {
  const Image grey(kRoxeFormatGray8, 9, 9);
  Image bad(kRoxeFormatRGB24, 9, 9);
  bad.record.rowBytes = 26;
  EXPECT_EQ(roxeRotateImage(grey, 4, 4, 0.5f, nullptr, 4, 4), kRoxeErrNull);
  EXPECT_EQ(roxeRotateImage(grey, 4, 4, 0.5f, bad, 4, 4), kRoxeErrInvalid);
}

TEST(Rotate, UnknownFormats) {
  Image src(kRoxeFormatRGB24, 5, 5), dst(kRoxeFormatRGB24, 5, 5);
  const Image before(dst);
  src.record.format = 7;
  EXPECT_EQ(roxeRotateImage(src, 2, 2, 0, dst, 2, 2), kRoxeOK);
  EXPECT_EQ(dst, before);
  src.record.format = kRoxeFormatRGB24;
  src.fill(200);

  const PixelArray nowhere = {7, INT32_MAX, INT32_MAX, INT32_MAX, nullptr};
  PixelArray record = nowhere;
  EXPECT_EQ(roxeRotateImage(src, 2, 2, 0, &record, 2, 2), kRoxeOK);
  record = {7, -3, 5, 15, dst.bytes()};
  EXPECT_EQ(roxeRotateImage(src, 2, 2, 0, &record, 2, 2), kRoxeOK);
  record = {7, 5, 5, -15, dst.bytes()};
  EXPECT_EQ(roxeRotateImage(src, 2, 2, 0, &record, 2, 2), kRoxeOK);
  record = {7, 5, -5, 15, dst.bytes()};
  EXPECT_EQ(roxeRotateImage(src, 2, 2, 0, &record, 2, 2), kRoxeOK);
  EXPECT_EQ(dst, before);

  dst.record.format = 7;
  EXPECT_EQ(roxeRotateImage(src, 2, 2, 0, dst, 2, 2), kRoxeOK);
  EXPECT_EQ(*dst.pixel(2, 2), 200);
}

TEST(Rotate, AnglesThatAreNotFiniteWriteNothing) {
  const Image src(kRoxeFormatRGB24, 9, 9);
  Image dst(kRoxeFormatRGB24, 9, 9);
  const Image before(dst);
  for (const float angle : {kNan, kInfinity, -kInfinity})
    EXPECT_EQ(roxeRotateImage(src, 4, 4, angle, dst, 4, 4), kRoxeOK);
  EXPECT_EQ(dst, before);
}

TEST(Rotate, CentresMayBeAnyIntegers) {
  const Image src(kRoxeFormatRGB24, 9, 9);
  Image dst(kRoxeFormatRGB24, 9, 9);
  const Image before(dst);
  const int32_t centres[] = {-INT32_MAX, -65536, INT32_MAX};
  for (const int32_t x : centres)
    for (const int32_t y : centres)
      EXPECT_EQ(roxeRotateImage(src, x, y, 0.5f, dst, -y, x), kRoxeOK);
  EXPECT_EQ(dst, before);
}

TEST(Rotate, AllocatesNothing) {
  const Image src(kRoxeFormatRGB24, 30, 30);
  Image dst(kRoxeFormatRGB24, 30, 30);
  AllocationWatch watch;
  EXPECT_EQ(roxeRotateImage(src, 15, 15, 0.5f, dst, 15, 15), kRoxeOK);
  EXPECT_EQ(watch.allocations(), 0);
}

TEST(RotateMap, MixesFourNeighboursAndTruncates) {
  Image src(kRoxeFormatRGB24, 4, 4);
  src.fill(0);
  *src.pixel(1, 1) = 10;
  *src.pixel(2, 1) = 20;
  *src.pixel(1, 2) = 30;
  *src.pixel(2, 2) = 41;
  Image dst(kRoxeFormatRGB24, 3, 3);
  dst.fill(9);
  const float halves[6] = {1, 0, 0.5f, 0, 1, 0.5f};
  roxe::RotateImage_RGB24(src.record, dst.record, halves);
  EXPECT_EQ(*dst.pixel(1, 1), 25);  // 101 / 4
  // Weights 64, 192 across and 192, 64 down: (64 * 192 * 10 + 192 * 192 * 20 + 64 * 64 * 30 +
  // 192 * 64 * 41) / 65536 = (122880 + 737280 + 122880 + 503808) / 65536 = 22.69
  const float quarters[6] = {1, 0, 0.75f, 0, 1, 0.25f};
  roxe::RotateImage_RGB24(src.record, dst.record, quarters);
  EXPECT_EQ(*dst.pixel(1, 1), 22);
}

TEST(RotateMap, WeightsHaveEightBits) {
  const Image src = Row({0, 0, 255, 0});
  Image dst(kRoxeFormatRGB24, 2, 4);
  // The fraction 255.5 / 256 counts as 255 / 256: 255 * 255 / 256 = 254.004. (The fraction 1.0
  // cannot occur.)
  const float map[6] = {1, 0, 255.5f / 256, 0, 1, 0};
  dst.fill(9);
  roxe::RotateImage_RGB24(src.record, dst.record, map);
  EXPECT_EQ(Blues(dst, 1), (std::vector<int>{9, 254}));
}

TEST(RotateMap, NegativeStartIsRoundedDown) {
  const Image src = Row({200, 40, 80, 120, 60, 0});
  Image dst(kRoxeFormatRGB24, 7, 4);
  dst.fill(9);
  // Column x shows x - 0.25, that is 1/4 of column x - 1 and 3/4 of column x.
  const float map[6] = {1, 0, -0.25f, 0, 1, 0};
  roxe::RotateImage_RGB24(src.record, dst.record, map);
  EXPECT_EQ(Blues(dst, 1), (std::vector<int>{9, 9, 70, 110, 75, 15, 9}));
}

TEST(RotateMap, BordersAreStrict) {
  const Image src = Row({1, 2, 3, 4, 5, 6});
  Image dst(kRoxeFormatRGB24, 6, 4);
  dst.fill(9);
  // Column 0 + 65535/65536 is before the first usable one, column 4 + 65535/65536 is the last.
  const float almost[6] = {1, 0, 65535.0f / 65536, 0, 1, 0};
  roxe::RotateImage_RGB24(src.record, dst.record, almost);
  EXPECT_EQ(Blues(dst, 1), (std::vector<int>{9, 2, 3, 4, 5, 9}));
}

TEST(RotateMap, StepsAreTruncatedAndAccumulated) {
  Image src(kRoxeFormatRGB24, 300, 4);
  src.fill(0);
  *src.pixel(258, 1) = 255;
  Image dst(kRoxeFormatRGB24, 258, 2);
  dst.fill(9);
  // 1 - 2^-17 is a step of 65535, not 65535.5: after 257 steps from column 1 the position is
  // column 258 less 257 / 65536, weight 254: 254 * 255 / 256 = 253.01. Multiplied out it would be
  // less 128.5 / 65536, weight 255.
  const float map[6] = {1 - 0x1p-17f, 0, 1, 0, 1, 0};
  roxe::RotateImage_RGB24(src.record, dst.record, map);
  EXPECT_EQ(*dst.pixel(257, 1), 253);

  // The same down a column.
  Image tall(kRoxeFormatRGB24, 4, 300);
  tall.fill(0);
  *tall.pixel(1, 258) = 255;
  Image column(kRoxeFormatRGB24, 2, 258);
  column.fill(9);
  const float down[6] = {1, 0, 0, 0, 1 - 0x1p-17f, 1};
  roxe::RotateImage_RGB24(tall.record, column.record, down);
  EXPECT_EQ(*column.pixel(1, 257), 253);
}

TEST(RotateMap, SameRecordReadsWhatEarlierPixelsWrote) {
  Image image = Row({10, 20, 30, 40, 50, 60});
  // Column x shows column x - 1, which column x - 1 has just replaced.
  const float map[6] = {1, 0, -1, 0, 1, 0};
  roxe::RotateImage_RGB24(image.record, image.record, map);
  EXPECT_EQ(Blues(image, 1), (std::vector<int>{10, 20, 20, 20, 20, 20}));
}

TEST(RotateMap, OverlapByPartOfAPixelGoesByteByByte) {
  Image image(kRoxeFormatRGB24, 40, 4);
  const std::vector<uint8_t> before = image.pixels();
  PixelArray dst = image.record;
  dst.height = 3;
  dst.pixels += 1;
  const float map[6] = {1, 0, 0, 0, 1, 0};
  roxe::RotateImage_RGB24(image.record, dst, map);
  // In rows 1 and 2 each byte from the second pixel's second on receives its left neighbour.
  std::vector<uint8_t> expected = before;
  for (const size_t row : {120u, 240u})
    std::fill(expected.begin() + static_cast<ptrdiff_t>(row) + 4,
              expected.begin() + static_cast<ptrdiff_t>(row) + 118, before[row + 3]);
  EXPECT_EQ(image.pixels(), expected);
}

TEST(RotateMap, MapsThatAreNotFiniteWriteNothing) {
  const Image src(kRoxeFormatRGB24, 9, 9);
  Image dst(kRoxeFormatRGB24, 9, 9);
  const Image before(dst);
  for (int k = 0; k < 6; ++k) {
    for (const float bad : {kNan, kInfinity, -kInfinity}) {
      float map[6] = {1, 0, 0, 0, 1, 0};
      map[k] = bad;
      roxe::RotateImage_RGB24(src.record, dst.record, map);
    }
  }
  EXPECT_EQ(dst, before);
}

TEST(RotateMap, StepsBeyondAPixelCarryOncePerStep) {
  // A step of 1.5 pixels carries one pixel a time, so the fraction piles up: 0, 0.5 + 1 carried
  // once, ... column k is at pixel k with a fraction of k / 2, weights 128 k and 256 - 128 k.
  const Image src = Row({0, 10, 20, 40, 80, 0});
  Image dst(kRoxeFormatRGB24, 4, 4);
  dst.fill(9);
  const float map[6] = {1.5f, 0, 0, 0, 1, 0};
  roxe::RotateImage_RGB24(src.record, dst.record, map);
  // k = 1: (10 + 20) / 2; k = 2: the whole of the right one, 40; k = 3: 80 + (80 - 40) / 2 = 100
  EXPECT_EQ(Blues(dst, 1), (std::vector<int>{9, 15, 40, 100}));
}

TEST(RotateMap, AnyStepBeyondAPixelCarriesOncePerStep) {
  // One step at a time a little or far beyond a pixel, either way; fractions pile up.
  std::mt19937 random(17);
  Image src(kRoxeFormatRGB24, 150, 90);
  src.randomise(random);
  for (const size_t k : {0u, 1u, 3u, 4u})
    for (const float step : {65537.0f / 65536, -65537.0f / 65536, 1.0f, -1.0f, 1.75f, -1.75f}) {
      float map[6] = {0.5f, 0.25f, 40.9999f, -0.25f, 0.5f, 30.9999f};
      map[k] = step;
      Image dst(kRoxeFormatRGB24, 140, 70), expected(kRoxeFormatRGB24, 140, 70);
      roxe::RotateImage_RGB24(src.record, dst.record, map);
      reference::RotateImage_RGB24(src.record, expected.record, map);
      EXPECT_EQ(dst, expected) << k << ' ' << step;
    }
}

}  // namespace
