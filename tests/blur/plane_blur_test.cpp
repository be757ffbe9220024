#include "blur/plane_blur.h"

#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <vector>

namespace {

using namespace roxe;
using Plane = std::vector<float>;

using Pass = void (*)(float*, const float*, int32_t, int32_t, uint32_t, uint32_t);
constexpr Pass kPasses[] = {ProcessRow2Column, ProcessRow2ColumnUnrollingLoop};

Plane Sums(Pass pass, const Plane& in, int32_t n, int32_t m, uint32_t before, uint32_t after) {
  Plane out(in.size(), -1.0f);
  pass(out.data(), in.data(), n, m, before, after);
  return out;
}

Plane RandomPlane(std::mt19937& random, int32_t count) {
  Plane plane(static_cast<size_t>(count));
  for (float& value : plane) value = static_cast<float>(random() % 100000) / 391.0f;
  return plane;
}

bool SameBits(const Plane& a, const Plane& b) {
  return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size() * sizeof(float)) == 0;
}

// ---- one pass

TEST(PlanePass, SumsRowsIntoColumnsAndRepeatsTheEdges) {
  const Plane in = {1, 2, 3, 4, 5, 10, 20, 40, 80, 160};
  // 1 + 1 + 2, 1 + 2 + 3, 2 + 3 + 4, 3 + 4 + 5, 4 + 5 + 5 beside the same of the second row
  for (const Pass pass : kPasses)
    EXPECT_EQ(Sums(pass, in, 5, 2, 1, 1), (Plane{4, 40, 6, 70, 9, 140, 12, 280, 14, 400}));
}

TEST(PlanePass, WindowsMayLeanToOneSide) {
  const Plane in = {1, 2, 3, 4, 5};
  for (const Pass pass : kPasses) {
    EXPECT_EQ(Sums(pass, in, 5, 1, 2, 1), (Plane{5, 7, 10, 14, 17}));
    EXPECT_EQ(Sums(pass, in, 5, 1, 0, 2), (Plane{6, 9, 12, 14, 15}));
    EXPECT_EQ(Sums(pass, in, 5, 1, 2, 0), (Plane{3, 4, 6, 9, 12}));
    EXPECT_EQ(Sums(pass, in, 5, 1, 0, 0), (Plane{1, 2, 3, 4, 5}));
  }
}

TEST(PlanePass, SubtractsBeforeItAdds) {
  // Adding first would lose the 1 beside 2^24 and give 0.
  for (const Pass pass : kPasses)
    EXPECT_EQ(Sums(pass, {16777216, 1, 3}, 3, 1, 0, 0), (Plane{16777216, 1, 3}));
}

TEST(PlanePass, RoundingStaysInTheRunningSum) {
  // 2^25, then (2^25 - 2^24) + 1 rounded to 2^24, then (2^24 - 2^24) + 1 where the window holds 2.
  for (const Pass pass : kPasses)
    EXPECT_EQ(Sums(pass, {16777216, 1, 1, 1}, 4, 1, 1, 0), (Plane{33554432, 16777216, 1, 1}));
}

TEST(PlanePass, WindowLongerThanTheRowWritesNothing) {
  const Plane in = {1, 2, 3};
  for (const Pass pass : kPasses) {
    EXPECT_EQ(Sums(pass, in, 3, 1, 1, 1), (Plane{4, 6, 8}));  // the longest that fits
    EXPECT_EQ(Sums(pass, in, 3, 1, 2, 1), (Plane{-1, -1, -1}));
    EXPECT_EQ(Sums(pass, in, 3, 1, UINT32_MAX, 2), (Plane{-1, -1, -1}));
    EXPECT_EQ(Sums(pass, in, 3, 1, 0x80000000u, 0x80000000u), (Plane{-1, -1, -1}));
  }
}

TEST(PlanePass, EmptyPlanesDoNothing) {
  const Plane in = {1, 2, 3};
  for (const Pass pass : kPasses) {
    EXPECT_EQ(Sums(pass, in, 3, 0, 1, 1), (Plane{-1, -1, -1}));
    EXPECT_EQ(Sums(pass, in, 0, 3, 0, 0), (Plane{-1, -1, -1}));
    EXPECT_EQ(Sums(pass, in, -3, 3, 0, 0), (Plane{-1, -1, -1}));
    EXPECT_EQ(Sums(pass, in, 3, -3, 1, 1), (Plane{-1, -1, -1}));
  }
}

TEST(PlanePass, EightRowsAtATimeGiveTheSameBits) {
  std::mt19937 random(1);
  for (int32_t m = 1; m <= 25; ++m)
    for (int32_t n = 1; n <= 12; ++n) {
      const Plane in = RandomPlane(random, n * m);
      for (uint32_t before = 0; before < 5; ++before)
        for (uint32_t after = 0; after < 5; ++after)
          EXPECT_TRUE(SameBits(Sums(ProcessRow2Column, in, n, m, before, after),
                               Sums(ProcessRow2ColumnUnrollingLoop, in, n, m, before, after)))
              << n << ' ' << m << ' ' << before << ' ' << after;
    }
}

// ---- both ways

TEST(PlaneBlur, TwoPassesRestoreTheOrientation) {
  Plane data = {1, 2, 3, 4, 5, 6}, temp(6);
  BoxBlurImp(data.data(), temp.data(), 3, 2, 1, 0, 2.0);
  // Row sums 2 3 5 and 8 9 11; the first row doubled, then the two added; all times 2.
  EXPECT_EQ(data, (Plane{8, 12, 20, 20, 24, 32}));
}

TEST(PlaneBlur, ScaleIsRoundedToSinglePrecision) {
  Plane data = {3}, temp(1);
  BoxBlurImp(data.data(), temp.data(), 1, 1, 0, 0, 0.1);
  EXPECT_EQ(data, Plane{3.0f * 0.1f});
}

TEST(PlaneBlur, WindowThatFitsOneWayOnlyLeavesThePlane) {
  const Plane before = {1, 2, 3, 4, 5, 6};
  Plane data = before, temp(6);
  BoxBlurImp(data.data(), temp.data(), 3, 2, 1, 1, 2.0);
  EXPECT_EQ(data, before);
  BoxBlurImp(data.data(), temp.data(), 2, 3, 1, 1, 2.0);
  EXPECT_EQ(data, before);
}

TEST(PlaneBlur, SameAsTheRowByRowPassOnAnyHeight) {
  std::mt19937 random(2);
  for (int32_t height = 4; height <= 20; ++height) {
    Plane data = RandomPlane(random, 9 * height), temp(data.size());
    Plane expected =
        Sums(ProcessRow2Column, Sums(ProcessRow2Column, data, 9, height, 2, 1), height, 9, 2, 1);
    for (float& value : expected) value *= 0.0625f;
    BoxBlurImp(data.data(), temp.data(), 9, height, 2, 1, 0.0625);
    EXPECT_TRUE(SameBits(data, expected)) << height;
  }
}

TEST(PlaneBlur, OddLengthKeepsAConstantPlane) {
  for (const uint32_t length : {1u, 3u, 5u, 7u, 9u}) {
    Plane data(10 * 11, 7.0f), temp(data.size());
    BoxBlur(data.data(), temp.data(), 10, 11, length);
    for (const float value : data) EXPECT_EQ(value, 7.0f) << length;
  }
}

TEST(PlaneBlur, EvenLengthBrightens) {
  Plane data(4 * 3, 4.0f), temp(data.size());
  BoxBlur(data.data(), temp.data(), 4, 3, 2);
  EXPECT_EQ(data, Plane(12, 9.0f));  // nine values of 4, divided by four
}

TEST(PlaneBlur, LengthThreeIsTheMeanOfNine) {
  Plane data = {0, 0, 0, 0, 9, 0, 0, 0, 0}, temp(9);
  BoxBlur(data.data(), temp.data(), 3, 3, 3);
  EXPECT_EQ(data, Plane(9, 1.0f));
}

TEST(PlaneBlur, LengthThatIsZeroOrTooLongLeavesThePlane) {
  const Plane before = {1, 2, 3, 4};
  Plane data = before, temp(4);
  for (const uint32_t length : {0u, 2u, 3u, 65536u, UINT32_MAX}) {
    BoxBlur(data.data(), temp.data(), 2, 2, length);
    EXPECT_EQ(data, before) << length;
  }
}

TEST(PlaneBlur, GaussianOfOddLengthIsThreeEqualPasses) {
  std::mt19937 random(3);
  const Plane src = RandomPlane(random, 11 * 9), kept = src;
  Plane dst(src.size()), expected = src, temp(src.size());
  for (int pass = 0; pass < 3; ++pass) BoxBlur(expected.data(), temp.data(), 11, 9, 3);
  GaussianBlur(dst.data(), src.data(), temp.data(), 11, 9, 3);
  EXPECT_TRUE(SameBits(dst, expected));
  EXPECT_TRUE(SameBits(src, kept));
  dst = src;
  GaussianBlur(dst.data(), dst.data(), temp.data(), 11, 9, 3);
  EXPECT_TRUE(SameBits(dst, expected));
}

TEST(PlaneBlur, GaussianOfEvenLengthIsCentred) {
  // Along each axis (1 1) * (1 1) * (1 1 1) = 1 3 4 3 1, over 12.
  const float weights[5] = {1, 3, 4, 3, 1};
  Plane src(25), dst(25), temp(25), expected(25);
  src[12] = 144;
  for (size_t y = 0; y < 5; ++y)
    for (size_t x = 0; x < 5; ++x) expected[5 * y + x] = weights[y] * weights[x];
  GaussianBlur(dst.data(), src.data(), temp.data(), 5, 5, 2);
  EXPECT_EQ(dst, expected);
}

TEST(PlaneBlur, GaussianOfLengthZeroCopies) {
  const Plane src = {1, 2, 3, 4};
  Plane dst(4), temp(4);
  GaussianBlur(dst.data(), src.data(), temp.data(), 2, 2, 0);
  EXPECT_EQ(dst, src);
  GaussianBlur(dst.data(), dst.data(), temp.data(), -1, 2, 3);
  EXPECT_EQ(dst, src);
}

}  // namespace
