#include "blur/box_blur.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <vector>

#include "support/image.h"
#include "support/seams.h"

namespace {

std::vector<int32_t> Range(int32_t before, int32_t after, int32_t n) {
  roxe::LengthRange range = {};
  roxe::BoxBlurGetModLengthRange(&range, before, after, n);
  return {range.min, range.end};
}

TEST(BoxBlurLengths, WindowInsideTheRow) {
  EXPECT_EQ(Range(2, 3, 10), (std::vector<int32_t>{3, 7}));  // 3 at the right end, 6 inside
  EXPECT_EQ(Range(0, 1, 4), (std::vector<int32_t>{1, 3}));
}

TEST(BoxBlurLengths, WindowLongerThanTheRow) {
  EXPECT_EQ(Range(9, 9, 4), (std::vector<int32_t>{4, 5}));
  EXPECT_EQ(Range(3, 2, 5), (std::vector<int32_t>{3, 6}));
  EXPECT_EQ(Range(1, 1, 1), (std::vector<int32_t>{1, 2}));
}

TEST(BoxBlurLengths, ExtentsNearTheLargestInteger) {
  EXPECT_EQ(Range(INT_MAX, INT_MAX, 10), (std::vector<int32_t>{10, 11}));
  EXPECT_EQ(Range(0, INT_MAX, 10), (std::vector<int32_t>{1, 11}));
  EXPECT_EQ(Range(INT_MAX, 0, 10), (std::vector<int32_t>{1, 11}));
  EXPECT_EQ(Range(0, 1, INT_MAX), (std::vector<int32_t>{1, 3}));
  EXPECT_EQ(Range(INT_MAX, INT_MAX, INT_MAX), (std::vector<int32_t>{INT_MAX, INT_MIN}));  // wraps
}

TEST(BoxBlurReciprocals, AreTruncated) {
  const roxe::Block<uint32_t> d = roxe::BoxBlurCreateModDivBuffer(1, 3, 2, 4);
  ASSERT_NE(d, nullptr);
  EXPECT_EQ(d[0], 4194304u);  // 1 x 2
  EXPECT_EQ(d[1], 2097152u);  // 2 x 2
  EXPECT_EQ(d[2], 2796202u);  // 1 x 3
  EXPECT_EQ(d[3], 1398101u);  // 2 x 3
}

TEST(BoxBlurReciprocals, AreZeroBeyondTwoToThe23) {
  const roxe::Block<uint32_t> d = roxe::BoxBlurCreateModDivBuffer(2048, 2050, 4095, 4097);
  ASSERT_NE(d, nullptr);
  EXPECT_EQ(d[0], 1u);  // 2048 * 4095 = 2^23 - 2048
  EXPECT_EQ(d[1], 0u);  // 2049 * 4095 = 8390655
  EXPECT_EQ(d[2], 1u);  // 2048 * 4096 = 2^23
  EXPECT_EQ(d[3], 0u);
  const roxe::Block<uint32_t> wide = roxe::BoxBlurCreateModDivBuffer(65536, 65537, 65536, 65537);
  ASSERT_NE(wide, nullptr);
  EXPECT_EQ(wide[0], 0u);  // 2^32 pixels
}

TEST(BoxBlurReciprocals, TooManyEntriesAreNoMemory) {
  EXPECT_EQ(roxe::BoxBlurCreateModDivBuffer(1, 65537, 1, 65537), nullptr);  // 2^32 entries
  EXPECT_EQ(roxe::BoxBlurCreateModDivBuffer(1, 32769, 1, 32769), nullptr);  // 2^30, 2^32 bytes
  const AllocationWatch watch(1);
  EXPECT_EQ(roxe::BoxBlurCreateModDivBuffer(1, 3, 1, 3), nullptr);
}

TEST(BoxBlurSumLine, AddsAndSubtractsRunningSums) {
  const uint8_t row[4] = {1, 2, 255, 9};
  std::vector<uint32_t> acc = {10, 0, UINT32_MAX, 7};
  EXPECT_EQ(roxe::BoxBlurSumLine8(row, 3, acc.data(), 5), 1);
  EXPECT_EQ(acc, (std::vector<uint32_t>{11, 3, 257, 7}));  // the last entry is beyond the width
  EXPECT_EQ(roxe::BoxBlurSumLine8(row, 3, acc.data(), 0), 1);
  EXPECT_EQ(acc, (std::vector<uint32_t>{10, 0, UINT32_MAX, 7}));
}

TEST(BoxBlurSumLine, KeepsChannelsApart) {
  const uint8_t row[6] = {1, 2, 3, 10, 20, 30};
  std::vector<uint32_t> acc(6);
  EXPECT_EQ(roxe::BoxBlurSumLine24(row, 2, acc.data(), 1), 1);
  EXPECT_EQ(acc, (std::vector<uint32_t>{1, 2, 3, 11, 22, 33}));
  EXPECT_EQ(roxe::BoxBlurSumLine24(row, 2, acc.data(), 0), 1);
  EXPECT_EQ(acc, std::vector<uint32_t>(6, 0));
}

TEST(BoxBlurProcessRow, DividesByTheClippedLength) {
  const uint32_t acc[4] = {1, 3, 6, 10};  // the row 1, 2, 3, 4
  const uint32_t reciprocals[4] = {8388608, 4194304, 2796202, 2097152};
  uint8_t out[5] = {9, 9, 9, 9, 9};
  EXPECT_EQ(roxe::BoxBlurProcessRow8(acc, out, 4, 1, 1, {reciprocals, 1}), 0);
  // 3 / 2; 6 / 3, one below because the third is truncated; 9 / 3, the same; 7 / 2
  EXPECT_EQ(std::vector<uint8_t>(out, out + 5), (std::vector<uint8_t>{1, 1, 2, 3, 9}));

  roxe::BoxBlurProcessRow8(acc, out, 4, 3, 3, {reciprocals, 1});
  EXPECT_EQ(std::vector<uint8_t>(out, out + 5), (std::vector<uint8_t>{2, 2, 2, 2, 9}));  // 10 / 4
}

TEST(BoxBlurProcessRow, TreatsChannelsAlike) {
  const uint32_t acc[6] = {10, 20, 30, 20, 60, 31};  // two pixels
  const uint32_t reciprocals[2] = {8388608, 4194304};
  uint8_t out[6] = {};
  EXPECT_EQ(roxe::BoxBlurProcessRow24(acc, out, 2, 0, 1, {reciprocals, 1}), 0);
  EXPECT_EQ(std::vector<uint8_t>(out, out + 6), (std::vector<uint8_t>{10, 30, 15, 10, 40, 1}));
}

// Blurs a copy of image in place and a copy apart, expects the same bytes and gives them.
Image Blurred(const Image& image, int32_t left, int32_t top, int32_t right, int32_t bottom) {
  Image src = image, dst = image, in_place = image;
  dst.fill(7);
  EXPECT_EQ(roxe::BoxBlurA(src, dst, left, top, right, bottom), 1);
  EXPECT_EQ(roxe::BoxBlurA(in_place, in_place, left, top, right, bottom), 1);
  EXPECT_EQ(src, image);
  EXPECT_EQ(in_place, dst);
  return dst;
}

TEST(BoxBlur, SpreadsOnePixelOverItsWindow) {
  const Image dot =
      Gray({{0, 0, 0, 0, 0}, {0, 0, 0, 0, 0}, {0, 0, 90, 0, 0}, {0, 0, 0, 0, 0}, {0, 0, 0, 0, 0}});
  const Image expected = Gray({{0, 0, 0, 0, 0},
                               {0, 9, 9, 9, 0},
                               {0, 9, 9, 9, 0},
                               {0, 9, 9, 9, 0},
                               {0, 0, 0, 0, 0}});  // 90 * 932067 >> 23
  EXPECT_EQ(Blurred(dot, 1, 1, 1, 1), expected);
}

TEST(BoxBlur, ExtentsAreLeftTopRightBottom) {
  const Image dot = Gray({{0, 0, 0}, {0, 120, 0}, {0, 0, 0}});
  EXPECT_EQ(Blurred(dot, 1, 1, 0, 0), Gray({{0, 0, 0}, {0, 30, 30}, {0, 30, 30}}));
  EXPECT_EQ(Blurred(dot, 1, 0, 0, 1), Gray({{0, 30, 30}, {0, 30, 30}, {0, 0, 0}}));  // at 1, 1 too
}

TEST(BoxBlur, WhiteStaysWhiteOnlyWhereTheWindowIsAPowerOfTwo) {
  for (const uint32_t format : {kRoxeFormatRGB24, kRoxeFormatGray8}) {
    Image white(format, 4, 4);
    white.fill(255);
    const Image blurred = Blurred(white, 1, 1, 1, 1);
    for (int32_t y = 0; y < 4; ++y)
      for (int32_t x = 0; x < 4; ++x) {
        const bool corner = (x == 0 || x == 3) && (y == 0 || y == 3);
        EXPECT_EQ(*blurred.pixel(x, y), corner ? 255 : 254) << x << ' ' << y;
      }
  }
}

TEST(BoxBlur, LongWindowsDarken) {
  Image below(kRoxeFormatGray8, 33156, 1), above(kRoxeFormatGray8, 33157, 1);
  below.fill(255);
  above.fill(255);
  EXPECT_EQ(*Blurred(below, 40000, 1, 40000, 0).pixel(0, 0), 254);  // reciprocal 253
  EXPECT_EQ(*Blurred(above, 40000, 1, 40000, 0).pixel(0, 0), 253);  // reciprocal 252

  Image square(kRoxeFormatGray8, 2049, 2049), half_black(kRoxeFormatGray8, 2049, 4096);
  square.fill(255);
  half_black.fill(255);
  EXPECT_EQ(*Blurred(square, 3000, 3000, 3000, 3000).pixel(1024, 1024), 127);
  // 2049 * 4094 pixels are the last below 2^23.
  const Image tall = Blurred(half_black, 3000, 0, 3000, 4094);
  EXPECT_EQ(*tall.pixel(0, 0), 0);
  EXPECT_EQ(*tall.pixel(0, 1), 0);    // 4095 rows
  EXPECT_EQ(*tall.pixel(0, 2), 254);  // 4094 rows, reciprocal 1: 255 * 8388606 >> 23
}

TEST(BoxBlur, OneRowAndOneColumn) {
  EXPECT_EQ(Blurred(Gray({{0, 90, 0, 60}}), 1, 5, 0, 5), Gray({{0, 45, 45, 30}}));
  EXPECT_EQ(Blurred(Gray({{0}, {90}, {0}, {60}}), 5, 1, 5, 0), Gray({{0}, {45}, {45}, {30}}));
  EXPECT_EQ(Blurred(Gray({{77}}), 1, 1, 1, 1), Gray({{77}}));
}

TEST(BoxBlur, SavesRowsThatLeaveTheWindowAfterTheLastEntered) {
  // 168 / 6 and 96 / 3 are truncated to one below; 144 / 4, 80 / 2, 88 / 2 and 48 are exact.
  EXPECT_EQ(Blurred(Gray({{8, 16}, {24, 32}, {40, 48}}), 0, 0, 1, 2),
            Gray({{27, 31}, {36, 40}, {44, 48}}));
}

TEST(BoxBlur, RowsOverwrittenInTheWindowLeaveItAsTheyAreByThen) {
  // dst begins one row below src in the same memory; windows of three rows. (120 + 30) / 2 = 75
  // overwrites row 1; (120 + 30 + 0) / 3 = 49 (the third is truncated) overwrites row 2 and
  // (30 + 0 + 0) / 3 = 9 row 3. Row 1, which entered as 30, then leaves as 75: 0 + 0 + 0 + 30 - 75
  // = -45 in a window of three is -15, 241 as a byte, truncated toward minus infinity from
  // -14.99999. Row 2, which entered as 0, leaves as 49: -94 halved is -47, 209 as a byte.
  Image memory = Gray({{120}, {30}, {0}, {0}, {0}, {7}});
  PixelArray src = memory.record, dst = memory.record;
  src.height = dst.height = 5;
  dst.pixels = memory.pixel(0, 1);
  EXPECT_EQ(roxe::BoxBlurA(&src, &dst, 1, 1, 1, 1), 1);
  EXPECT_EQ(memory, Gray({{120}, {75}, {49}, {9}, {241}, {209}}));
}

TEST(BoxBlur, ExtentsFarBeyondThePicture) {
  const Image image = Gray({{10, 20}, {30, 40}});
  EXPECT_EQ(Blurred(image, INT_MAX, INT_MAX, INT_MAX, INT_MAX), Gray({{25, 25}, {25, 25}}));
  EXPECT_EQ(Blurred(image, INT_MAX, INT_MAX, 0, 0), Gray({{10, 15}, {20, 25}}));
  EXPECT_EQ(Blurred(image, 0, 0, INT_MAX, INT_MAX), Gray({{25, 30}, {35, 40}}));
}

TEST(BoxBlur, LeavesPaddingAlone) {
  Image src(kRoxeFormatRGB24, 2, 2, 11), dst(kRoxeFormatRGB24, 2, 2, 7);
  src.fill(100);
  Image expected = dst;
  expected.fill(100);  // windows of 2 and 4 pixels are exact
  EXPECT_EQ(roxe::BoxBlurA(src, dst, 1, 1, 1, 1), 1);
  EXPECT_EQ(dst, expected);
}

TEST(BoxBlur, RejectsWhatItCannotBlur) {
  Image src = Gray({{10, 20}, {30, 40}}), dst = Gray({{1, 2}, {3, 4}});
  const Image untouched = dst;
  EXPECT_EQ(roxe::BoxBlurA(nullptr, dst, 1, 1, 1, 1), 0);
  EXPECT_EQ(roxe::BoxBlurA(src, nullptr, 1, 1, 1, 1), 0);
  EXPECT_EQ(roxe::BoxBlurA(src, dst, -1, 1, 1, 1), 0);
  EXPECT_EQ(roxe::BoxBlurA(src, dst, 1, -1, 1, 1), 0);
  EXPECT_EQ(roxe::BoxBlurA(src, dst, 1, 1, -1, 1), 0);
  EXPECT_EQ(roxe::BoxBlurA(src, dst, 1, 1, 1, -1), 0);
  EXPECT_EQ(roxe::BoxBlurA(src, dst, 1, 0, 1, 0), 0);  // one direction only
  EXPECT_EQ(roxe::BoxBlurA(src, dst, 0, 1, 0, 1), 0);

  PixelArray other = src.record;
  other.width = 1;
  EXPECT_EQ(roxe::BoxBlurA(&other, dst, 1, 1, 1, 1), 0);
  other = src.record;
  other.height = 1;
  EXPECT_EQ(roxe::BoxBlurA(&other, dst, 1, 1, 1, 1), 0);
  other = src.record;
  other.format = kRoxeFormatRGB24;
  EXPECT_EQ(roxe::BoxBlurA(&other, dst, 1, 1, 1, 1), 0);
  other.format = dst.record.format = 7;
  EXPECT_EQ(roxe::BoxBlurA(&other, dst, 1, 1, 1, 1), 0);
  dst.record.format = kRoxeFormatGray8;
  EXPECT_EQ(dst, untouched);
}

TEST(BoxBlur, TouchesOnlyWhatTheRowsHold) {
  Image src(kRoxeFormatRGB24, 3, 2), dst(kRoxeFormatRGB24, 3, 2);
  src.fill(100);
  dst.fill(1);
  Image expected = dst;
  for (int32_t y = 0; y < 2; ++y) std::fill_n(expected.pixel(0, y), 6, uint8_t{100});
  // Rows of 9 bytes that claim to be of 8 hold two whole pixels.
  src.record.rowBytes = 9;
  dst.record.rowBytes = 8;
  PixelArray short_rows = dst.record;
  short_rows.height = src.record.height = 1;
  std::fill_n(expected.pixel(0, 1), 6, uint8_t{1});
  EXPECT_EQ(roxe::BoxBlurA(src, &short_rows, 1, 1, 1, 1), 1);
  EXPECT_EQ(dst.pixels(), expected.pixels());

  PixelArray no_pixels = dst.record;
  no_pixels.pixels = nullptr;
  PixelArray empty = dst.record;
  empty.height = -1;
  EXPECT_EQ(roxe::BoxBlurA(&no_pixels, &no_pixels, 1, 1, 1, 1), 1);
  EXPECT_EQ(roxe::BoxBlurA(&empty, &empty, 1, 1, 1, 1), 1);
}

TEST(BoxBlur, EveryAllocationMayFail) {
  const Image image = Gray({{10, 20}, {30, 40}, {50, 60}});
  for (int64_t n = 1; n <= 3; ++n) {  // ring, accumulator, reciprocals
    Image in_place = image;
    const AllocationWatch watch(n);
    EXPECT_EQ(roxe::BoxBlurA(in_place, in_place, 1, 1, 1, 0), 0);
    EXPECT_EQ(in_place, image);
    EXPECT_EQ(watch.live_blocks(), 0);
  }
  for (int64_t n = 1; n <= 2; ++n) {  // apart there is no ring
    Image src = image, dst = image;
    const AllocationWatch watch(n);
    EXPECT_EQ(roxe::BoxBlurA(src, dst, 1, 1, 1, 0), 0);
    EXPECT_EQ(dst, image);
    EXPECT_EQ(watch.live_blocks(), 0);
  }
  Image in_place = image;
  const AllocationWatch watch;
  EXPECT_EQ(roxe::BoxBlurA(in_place, in_place, 1, 1, 1, 0), 1);
  EXPECT_EQ(watch.allocations(), 3);
  EXPECT_EQ(watch.live_blocks(), 0);
  // One row saved, four-byte sums of one row, reciprocals of lengths 2 ... 2 and 1 ... 2.
  EXPECT_EQ(watch.peak_bytes(), 1u * 2 + 4 * 2 + 4 * 1 * 2);
}

TEST(BoxBlur, RingsBeyond32BitsAreNoMemory) {
  // 65536 rows of 65536 claimed bytes: nothing is touched, since the ring is asked for first.
  uint8_t pixel = 5;
  PixelArray huge = {kRoxeFormatGray8, 65536, 131072, 65536, &pixel};
  EXPECT_EQ(roxe::BoxBlurA(&huge, &huge, 1, 65535, 1, 65535), 0);
  EXPECT_EQ(pixel, 5);
}

// The definition, pixel by pixel.
uint8_t Mean(const Image& image, int32_t x, int32_t y, int32_t c, int32_t left, int32_t top,
             int32_t right, int32_t bottom) {
  const int32_t x0 = std::max(0, x - left), x1 = std::min(image.record.width - 1, x + right);
  const int32_t y0 = std::max(0, y - top), y1 = std::min(image.record.height - 1, y + bottom);
  uint64_t sum = 0;
  for (int32_t v = y0; v <= y1; ++v)
    for (int32_t u = x0; u <= x1; ++u) sum += image.pixel(u, v)[c];
  const uint64_t pixels = static_cast<uint64_t>((x1 - x0 + 1) * (y1 - y0 + 1));
  return static_cast<uint8_t>((sum * (8388608 / pixels)) >> 23);
}

void CompareWithDefinition(int32_t cases, int32_t largest) {
  std::mt19937 random(4);
  for (int32_t i = 0; i < cases; ++i) {
    const uint32_t format = random() % 2 != 0 ? kRoxeFormatRGB24 : kRoxeFormatGray8;
    const int32_t channels = format == kRoxeFormatRGB24 ? 3 : 1;
    Image src = RandomImage(random, format, largest);
    const int32_t width = src.record.width, height = src.record.height;
    const auto extent = [&](int32_t side) {
      return static_cast<int32_t>(random() % static_cast<uint32_t>(side + 3));
    };
    const int32_t left = extent(width), right = std::max(extent(width), left == 0 ? 1 : 0);
    const int32_t top = extent(height), bottom = std::max(extent(height), top == 0 ? 1 : 0);

    Image dst(format, width, height, channels * width + static_cast<int32_t>(random() % 5));
    Image expected = dst;
    for (int32_t y = 0; y < height; ++y)
      for (int32_t x = 0; x < width; ++x)
        for (int32_t c = 0; c < channels; ++c)
          expected.pixel(x, y)[c] = Mean(src, x, y, c, left, top, right, bottom);

    ASSERT_EQ(roxe::BoxBlurA(src, dst, left, top, right, bottom), 1);
    ASSERT_EQ(dst, expected) << left << ' ' << top << ' ' << right << ' ' << bottom;
    ASSERT_EQ(roxe::BoxBlurA(src, src, left, top, right, bottom), 1);
    ASSERT_EQ(src.pixels(), expected.pixels())
        << left << ' ' << top << ' ' << right << ' ' << bottom;
  }
}

TEST(BoxBlur, IsTheMeanOfTheClippedWindow) { CompareWithDefinition(2000, 12); }

TEST(ExhaustiveBoxBlur, IsTheMeanOfTheClippedWindow) { CompareWithDefinition(100000, 9); }

}  // namespace
