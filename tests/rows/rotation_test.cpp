#include <gtest/gtest.h>

#include <cmath>
#include <utility>

#include "support/rows.h"

namespace {

using roxe::RotationWalk;

// A walk of count pixels in the direction of angle, through the middle of the source.
RotationWalk WalkThrough(const Image& src, float angle, int32_t count) {
  RotationWalk walk = {};
  walk.src = src.bytes();
  walk.src_stride = src.record.rowBytes;
  walk.src_columns = src.record.width;
  walk.src_rows = src.record.height;
  walk.step_x = static_cast<int32_t>(std::cos(angle) * 65536);
  walk.step_y = static_cast<int32_t>(std::sin(angle) * 65536);
  walk.row_step_x = -walk.step_y;
  walk.row_step_y = walk.step_x;
  const auto start = [&](int32_t size, int32_t step) {
    const int32_t at = size * 32768 + 12345 - count / 2 * step;
    return roxe::FixedCoordinate{at >> 16, at & 65535};
  };
  walk.x = start(src.record.width, walk.step_x);
  walk.y = start(src.record.height, walk.step_y);
  return walk;
}

// Three rows of count pixels, with bytes between them that must stay.
void ExpectAsPlain(const RotationWalk& walk, int32_t count, std::mt19937& random) {
  constexpr int32_t kRows = 3;
  const ptrdiff_t stride = 3 * ptrdiff_t{count} + 5;
  const RandomBytes before(random, static_cast<size_t>(kRows * stride - 5));
  const GuardedMemory expected(before.size()), dst(before.size());
  std::copy_n(before.data(), before.size(), expected.data());
  roxe::kPlainRows.rotate(walk, expected.data(), stride, kRows, count);
  for (const roxe::RowKernels* rows : RunnableTables()) {
    std::copy_n(before.data(), before.size(), dst.data());
    rows->rotate(walk, dst.data(), stride, kRows, count);
    ASSERT_EQ(Bytes(dst), Bytes(expected))
        << rows->name << ' ' << count << " steps " << walk.step_x << ' ' << walk.step_y;
  }
}

TEST(Rows, RotationIsTheSameOnEveryTableInAllDirections) {
  std::mt19937 random(2);
  for (int32_t count = 0; count <= kLongestTestRow; ++count) {
    // Small enough that long walks leave it at both ends; packed rows lie beside a guard page.
    Image src(kRoxeFormatRGB24, 60 + count % 7, 50 + count % 5, count % 2 ? 0 : 260);
    src.randomise(random);
    for (int degrees = 0; degrees < 360; degrees += 15)
      for (const float away : {0.0f, 0.01f, -0.04f})
        ExpectAsPlain(WalkThrough(src, static_cast<float>(degrees) * 0.0174533f + away, count),
                      count, random);
  }
}

TEST(Rows, RotationAlongTheEdgesStaysInside) {
  std::mt19937 random(3);
  for (const int32_t size : {3, 4, 9, 40}) {
    Image src(kRoxeFormatRGB24, size, size);
    src.randomise(random);
    for (const float angle : {0.0f, 3.1415927f, 1.5707964f, -1.5707964f, 0.02f, 0.8f}) {
      for (int32_t at = -1; at <= size; ++at) {
        RotationWalk walk = WalkThrough(src, angle, 64);
        walk.y.whole = at;
        ExpectAsPlain(walk, 64, random);
        walk = WalkThrough(src, angle, 64);
        walk.x.whole = at;
        ExpectAsPlain(walk, 64, random);
      }
    }
  }
}

TEST(Rows, RotationFromTheFirstAndLastPositionsInside) {
  std::mt19937 random(10);
  constexpr int32_t kSize = 40;
  Image src(kRoxeFormatRGB24, kSize, kSize);
  src.randomise(random);
  const roxe::FixedCoordinate ends[] = {{0, 65535}, {1, 0}, {kSize - 2, 65535}, {kSize - 1, 0}};
  for (const roxe::FixedCoordinate& end : ends)
    for (const int32_t step : {-65536, -60001, -3, 3, 60001, 65536}) {
      RotationWalk walk = WalkThrough(src, 0, 64);
      walk.row_step_x = walk.row_step_y = 0;
      walk.x = end;
      walk.step_x = step;
      ExpectAsPlain(walk, 64, random);
      std::swap(walk.x, walk.y);
      std::swap(walk.step_x, walk.step_y);
      ExpectAsPlain(walk, 64, random);
    }
}

TEST(Rows, RotationFarOutsideAndOverLongRows) {
  std::mt19937 random(4);
  Image wide(kRoxeFormatRGB24, 3000, 40);
  wide.randomise(random);
  for (const float angle : {0.0f, 0.005f, 0.3f})
    ExpectAsPlain(WalkThrough(wide, angle, 2500), 2500, random);
  RotationWalk walk = WalkThrough(wide, 0.3f, 64);
  for (const int32_t far :
       {INT32_MIN, INT32_MIN + 30, -100000, 100000, INT32_MAX - 30, INT32_MAX}) {
    walk.x.whole = far;
    ExpectAsPlain(walk, 64, random);
    walk.y.whole = far;
    ExpectAsPlain(walk, 64, random);
  }
}

TEST(Rows, RotationOverRowsOfManyMegabytes) {
  // Rows 40 MB apart, of which only the ends are touched: pages without content.
  std::mt19937 random(5);
  constexpr ptrdiff_t kStride = 40000000;
  const GuardedMemory memory(kStride * 19 + 90);
  for (ptrdiff_t y = 0; y < 20; ++y)
    for (int i = 0; i < 90; ++i) memory.data()[y * kStride + i] = static_cast<uint8_t>(random());
  for (const float angle : {0.3f, 1.5f}) {
    Image shape(kRoxeFormatRGB24, 30, 20);
    RotationWalk walk = WalkThrough(shape, angle, 24);
    walk.src = memory.data();
    walk.src_stride = kStride;
    ExpectAsPlain(walk, 24, random);
  }
}

TEST(Rows, WalksAdvanceByManyStepsAtOnce) {
  const roxe::FixedCoordinate at = roxe::advanced({-1, 65535}, -65536, 3);
  EXPECT_EQ(at.whole, -4);
  EXPECT_EQ(at.fraction, 65535);
  const roxe::FixedCoordinate far = roxe::advanced({5, 1}, 65535, 1000000);
  EXPECT_EQ(far.whole, 999989);    // 1000005 less 1000000 / 65536 = 15.26, rounded down
  EXPECT_EQ(far.fraction, 48577);  // 1 - 1000000 + 16 * 65536
}

}  // namespace
