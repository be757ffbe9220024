#include <gtest/gtest.h>

#include <algorithm>
#include <limits>

#include "support/rows.h"

namespace {

using roxe::ProjectiveSource;
using roxe::ProjectiveSums;

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();

struct Mapping {
  float p[8];
};

ProjectiveSource SourceOf(const Image& src, const Mapping& m) {
  return {src.bytes(), src.record.rowBytes, src.record.width, src.record.height, m.p[0], m.p[3],
          m.p[6]};
}

// Draws a band of rows x count pixels with every table into rows beside a guard page, the last one
// without padding, and compares all bytes.
void ExpectAsPlain(const ProjectiveSource& source, const Mapping& m, int32_t rows, int32_t count,
                   ptrdiff_t padding, std::mt19937& random) {
  ProjectiveSums starts[roxe::kProjectiveBand];
  for (int32_t r = 0; r < rows; ++r) {
    const float v = static_cast<float>(r);
    starts[r] = {m.p[1] * v + m.p[2], m.p[4] * v + m.p[5], m.p[7] * v + 1};
  }
  const ptrdiff_t stride = 3 * count + padding;
  const RandomBytes before(random, static_cast<size_t>(stride * (rows - 1) + 3 * count));
  const GuardedMemory expected(before.size()), dst(before.size());
  std::copy_n(before.data(), before.size(), expected.data());
  roxe::kPlainRows.resample_band(source, starts, expected.data(), stride, rows, count);
  for (const roxe::RowKernels* table : RunnableTables()) {
    std::copy_n(before.data(), before.size(), dst.data());
    table->resample_band(source, starts, dst.data(), stride, rows, count);
    ASSERT_EQ(Bytes(dst), Bytes(expected)) << table->name << ' ' << rows << " x " << count;
  }
}

TEST(Rows, ProjectiveBandIsTheSameOnEveryTable) {
  std::mt19937 random(6);
  const Mapping mappings[] = {
      {{1, 0, 2, 0, 1, 2, 0, 0}},                               // all inside
      {{0.9f, 0.2f, 3.3f, -0.1f, 1.1f, 9.7f, 0.001f, 0.002f}},  // all inside for short rows
      {{1.3f, 0, -4.7f, 0, 1.3f, -2.2f, 0, 0}},                 // from before the first pixel on
      {{-1.1f, 0.3f, 70, 0.2f, -0.9f, 20, 0.01f, 0}},           // mirrored, out at the left
      {{0.4f, 3, 1, 5, 0.1f, 1, 0, 0.05f}},                     // steep, out at the bottom
      {{1, 0, 1, 0, 1, 1, -0.1f, 0}},                           // through a pole
  };
  for (int32_t count = 0; count <= 4 * 16 + 1; ++count) {
    Image src(kRoxeFormatRGB24, 64 + count % 5, 40 + count % 3, count % 2 ? 0 : 300);
    src.randomise(random);
    for (const Mapping& m : mappings)
      for (int32_t rows = 1; rows <= roxe::kProjectiveBand; ++rows)
        ExpectAsPlain(SourceOf(src, m), m, rows, count, count % 3 * 7, random);
  }
}

TEST(Rows, ProjectiveBandAlongTheBordersOfTheSource) {
  std::mt19937 random(7);
  for (const int32_t size : {1, 2, 3, 4, 5, 16, 17, 18, 19}) {
    Image src(kRoxeFormatRGB24, size, size);
    src.randomise(random);
    for (const float x : {-1.0f, -0.99f, -0.5f, 0.0f, 0.5f, 1.0f, 1.5f, 2.0f})
      for (const float y : {-1.0f, -0.5f, 0.0f, 0.75f, 1.0f, 2.5f}) {
        const Mapping m = {{1, 0, x, 0, 1, y, 0, 0}};
        ExpectAsPlain(SourceOf(src, m), m, 8, 24, 0, random);
        const Mapping turned = {{-1, 0, 16 + x, 0, -1, 8 + y, 0, 0}};
        ExpectAsPlain(SourceOf(src, turned), turned, 8, 24, 5, random);
        // All in one row or column of the source, which decides alone.
        const Mapping level = {{1, 0, x, 0, 0, 1.25f, 0, 0}};
        ExpectAsPlain(SourceOf(src, level), level, 8, 24, 0, random);
        const Mapping upright = {{0, 0, 1.25f, 0, 1, y, 0, 0}};
        ExpectAsPlain(SourceOf(src, upright), upright, 8, 24, 0, random);
      }
  }
}

TEST(Rows, ProjectiveBandOfNarrowSources) {
  std::mt19937 random(11);
  for (const int32_t narrow : {1, 2, 3})
    for (const bool upright : {false, true}) {
      Image src(kRoxeFormatRGB24, upright ? narrow : 40, upright ? 40 : narrow);
      src.randomise(random);
      for (const float across : {-0.5f, 0.5f, 1.5f}) {  // along a column or a row of the source
        const Mapping m = upright ? Mapping{{0, 0, across, 0, 1, 5, 0, 0}}
                                  : Mapping{{1, 0, 5, 0, 0, across, 0, 0}};
        ExpectAsPlain(SourceOf(src, m), m, 8, 24, 0, random);
      }
    }
}

TEST(Rows, ProjectiveBandOfPositionsThatAreNoNumbers) {
  std::mt19937 random(8);
  Image src(kRoxeFormatRGB24, 30, 30);
  src.randomise(random);
  for (const float bad : {kNan, 1e30f, -1e30f, 3e9f, -3e9f, 1e-40f}) {
    for (int k = 0; k < 8; ++k) {
      Mapping m = {{1, 0, 5, 0, 1, 5, 0, 0}};
      m.p[k] = bad;
      ExpectAsPlain(SourceOf(src, m), m, 8, 20, 0, random);
    }
  }
}

TEST(Rows, ProjectiveBandOverRowsOfManyMegabytes) {
  // Row 19 begins beyond 2 GB; only the ends of the rows are touched.
  std::mt19937 random(9);
  constexpr ptrdiff_t kStride = 120000000;
  const GuardedMemory memory(kStride * 19 + 90);
  for (ptrdiff_t y = 0; y < 20; ++y)
    for (int i = 0; i < 90; ++i) memory.data()[y * kStride + i] = static_cast<uint8_t>(random());
  const Mapping m = {{1, 0.1f, 2, 0.2f, 1.5f, 3, 0, 0}};
  ExpectAsPlain({memory.data(), kStride, 30, 20, m.p[0], m.p[3], m.p[6]}, m, 8, 20, 0, random);
}

}  // namespace
