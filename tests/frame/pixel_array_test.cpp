#include <gtest/gtest.h>

#include <climits>
#include <vector>

#include "frame/pixel_array.h"
#include "support/image.h"

namespace {

uint8_t some_pixels[64];

PixelArray Record(uint32_t format, int32_t width, int32_t height, int32_t row_bytes) {
  return {format, width, height, row_bytes, some_pixels};
}

TEST(VerifyPixelArray, MissingRecordIsNull) {
  EXPECT_EQ(roxeVerifyPixelArray(nullptr), kRoxeErrNull);
}

TEST(VerifyPixelArray, RowMustHoldThreeBytesAPixel) {
  PixelArray image = Record(kRoxeFormatRGB24, 10, 1, 30);
  EXPECT_EQ(roxeVerifyPixelArray(&image), kRoxeOK);
  image.rowBytes = 29;
  EXPECT_EQ(roxeVerifyPixelArray(&image), kRoxeErrInvalid);
}

TEST(VerifyPixelArray, GreyRowMustHoldOneByteAPixel) {
  PixelArray image = Record(kRoxeFormatGray8, 10, 1, 10);
  EXPECT_EQ(roxeVerifyPixelArray(&image), kRoxeOK);
  image.rowBytes = 9;
  EXPECT_EQ(roxeVerifyPixelArray(&image), kRoxeErrInvalid);
}

TEST(VerifyPixelArray, SidesMustBePositive) {
  for (const uint32_t format : {kRoxeFormatRGB24, kRoxeFormatGray8}) {
    for (const int32_t side : {0, -1, INT32_MIN}) {
      PixelArray image = Record(format, side, 1, 30);
      EXPECT_EQ(roxeVerifyPixelArray(&image), kRoxeErrInvalid);
      image = Record(format, 1, side, 30);
      EXPECT_EQ(roxeVerifyPixelArray(&image), kRoxeErrInvalid);
    }
  }
}

TEST(VerifyPixelArray, MissingPixelsAreInvalid) {
  PixelArray image = Record(kRoxeFormatRGB24, 10, 1, 30);
  image.pixels = nullptr;
  EXPECT_EQ(roxeVerifyPixelArray(&image), kRoxeErrInvalid);
  image.format = kRoxeFormatGray8;
  EXPECT_EQ(roxeVerifyPixelArray(&image), kRoxeErrInvalid);
}

TEST(VerifyPixelArray, UnknownFormatPassesUnexamined) {
  for (const uint32_t format : {1u, 2u, 4u, 7u, UINT32_MAX}) {
    const PixelArray image = {format, -5, 0, INT32_MIN, nullptr};
    EXPECT_EQ(roxeVerifyPixelArray(&image), kRoxeOK);
  }
}

TEST(VerifyPixelArray, RowSizeWrapsIn32Bits) {
  // 3 * 0x60000000 = 0x1'2000'0000, which wraps to 0x20000000.
  PixelArray image = Record(kRoxeFormatRGB24, 0x60000000, 1, 0x20000000);
  EXPECT_EQ(roxeVerifyPixelArray(&image), kRoxeOK);
  image.rowBytes = 0x1fffffff;
  EXPECT_EQ(roxeVerifyPixelArray(&image), kRoxeErrInvalid);
  // 3 * 0x40000000 = 0xc0000000 is negative and passes any row size.
  image = Record(kRoxeFormatRGB24, 0x40000000, 1, 0);
  EXPECT_EQ(roxeVerifyPixelArray(&image), kRoxeOK);
}

TEST(PixelArray, ColumnsAreWhatTheRowsHold) {
  EXPECT_EQ(roxe::columns_24(Record(kRoxeFormatRGB24, 10, 1, 30)), 10);
  EXPECT_EQ(roxe::columns_24(Record(kRoxeFormatRGB24, 10, 1, 29)), 9);
  EXPECT_EQ(roxe::columns_24(Record(kRoxeFormatGray8, 10, 1, 10)), 3);
  EXPECT_EQ(roxe::columns_24(Record(7, 10, 1, -30)), 0);
  EXPECT_EQ(roxe::columns_24(Record(7, -10, 1, 30)), 0);
  EXPECT_EQ(roxe::columns_24({7, 10, 1, 30, nullptr}), 0);
  EXPECT_EQ(roxe::columns_8(Record(kRoxeFormatGray8, 10, 1, 9)), 9);
  EXPECT_EQ(roxe::columns_8({7, 10, 1, 10, nullptr}), 0);
}

TEST(PixelArray, RowOffsetsGoBeyondTwoGigabytes) {
  const PixelArray image = {kRoxeFormatGray8, 1, 100000, 100000, some_pixels};
  EXPECT_EQ(reinterpret_cast<uintptr_t>(roxe::row_of(image, 99999)) -
                reinterpret_cast<uintptr_t>(some_pixels),
            static_cast<uintptr_t>(9999900000u));
}

TEST(PixelArray, OverlapIsOfBytesBetweenFirstAndLast) {
  const PixelArray a = {kRoxeFormatRGB24, 2, 2, 8, some_pixels};  // bytes 0 ... 13
  const PixelArray touching = {kRoxeFormatRGB24, 2, 2, 8, some_pixels + 14};
  const PixelArray inside = {kRoxeFormatRGB24, 2, 2, 8, some_pixels + 13};
  EXPECT_TRUE(roxe::overlap_24(a, a));
  EXPECT_FALSE(roxe::overlap_24(a, touching));
  EXPECT_TRUE(roxe::overlap_24(a, inside));
  EXPECT_TRUE(roxe::overlap_24(inside, a));
  EXPECT_TRUE(roxe::overlap(a, 1, a, 1));
  EXPECT_FALSE(roxe::overlap(a, 0, a, 1));
  EXPECT_FALSE(roxe::overlap(a, 1, a, 0));
}

TEST(PixelArray, WalkIsByRowsOrByPixelsWhereRowsOverlap) {
  const PixelArray a = {kRoxeFormatRGB24, 3, 2, 9, some_pixels};
  const PixelArray shifted = {kRoxeFormatRGB24, 3, 2, 9, some_pixels + 3};
  std::vector<int32_t> counts;
  const auto note = [&](const uint8_t*, uint8_t*, int32_t count) { counts.push_back(count); };
  roxe::map_rows_24(a, a, note);
  EXPECT_EQ(counts, (std::vector<int32_t>{3, 3}));
  counts.clear();
  roxe::map_rows_24(a, shifted, note);
  EXPECT_EQ(counts, std::vector<int32_t>(6, 1));
}

}  // namespace
