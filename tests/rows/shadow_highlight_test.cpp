#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstring>
#include <functional>
#include <limits>

#include "support/rows.h"

namespace {

struct Floats : Guarded<float> {
  explicit Floats(int32_t count) : Guarded(static_cast<size_t>(count)) {}
  Floats(std::mt19937& random, int32_t count, float low, float high) : Floats(count) {
    for (int32_t i = 0; i < count; ++i)
      of()[i] = low + (high - low) * static_cast<float>(random() % 100003) / 100003.0f;
  }
};

struct ToneTables {
  std::mt19937 random{7};
  Floats combined{random, 256, -20, 300}, midtone{random, 512, -10, 265};
  ToneTables() { std::fill_n(midtone.of() + 256, 256, 255.0f); }
};

constexpr int32_t kLongest = kLongestTestRow;

void ForEachTableAndCount(const std::function<void(const roxe::RowKernels&, int32_t)>& compare) {
  for (const roxe::RowKernels* rows : RunnableTables())
    for (int32_t count = 0; count <= kLongest; ++count) {
      SCOPED_TRACE(std::string(rows->name) + ' ' + std::to_string(count));
      compare(*rows, count);
    }
}

TEST(Rows, IntensitiesAreTheSameOnEveryTable) {
  std::mt19937 random(1);
  ForEachTableAndCount([&](const roxe::RowKernels& rows, int32_t count) {
    const RandomBytes src(random, 3 * static_cast<size_t>(count));
    const Floats expected(count), dst(count);
    roxe::kPlainRows.intensities(src.data(), expected.of(), count);
    rows.intensities(src.data(), dst.of(), count);
    EXPECT_EQ(Bytes(dst), Bytes(expected));
  });
}

TEST(ExhaustiveRows, IntensitiesOfAllColours) {
  const Guarded<uint8_t> src(3 * 256);
  const Floats expected(256), dst(256);
  for (int blue = 0; blue < 256; ++blue)
    for (int green = 0; green < 256; ++green) {
      for (size_t red = 0; red < 256; ++red) {
        src[3 * red] = static_cast<uint8_t>(blue);
        src[3 * red + 1] = static_cast<uint8_t>(green);
        src[3 * red + 2] = static_cast<uint8_t>(red);
      }
      roxe::kPlainRows.intensities(src.of(), expected.of(), 256);
      roxe::Rows().intensities(src.of(), dst.of(), 256);
      ASSERT_EQ(std::memcmp(dst.of(), expected.of(), dst.size()), 0) << blue << ' ' << green;
    }
}

TEST(Rows, IntensitySumsRepeatTheEdges) {
  // Green 10, 20, 40 and 80: intensities 5.87, 11.74, 23.48 and 46.96.
  const uint8_t src[] = {0, 10, 0, 0, 20, 0, 0, 40, 0, 0, 80, 0};
  float sums[4];
  roxe::Rows().intensity_sums(src, 12, 1, 4, 1, sums, 4);
  EXPECT_NEAR(sums[0], 23.48, 1e-4);
  EXPECT_NEAR(sums[1], 41.09, 1e-4);
  EXPECT_NEAR(sums[2], 82.18, 1e-4);
  EXPECT_NEAR(sums[3], 117.4, 1e-4);
}

TEST(Rows, IntensitySumsAreTheSameOnEveryTable) {
  std::mt19937 random(2);
  for (const roxe::RowKernels* table : RunnableTables())
    for (int32_t half = 0; half <= 4; ++half)
      for (int32_t rows = 1; rows <= 9; ++rows)  // wide rows take at most 8 at once
        for (int32_t count = 2 * half + 1; count <= kLongest; ++count) {
          const int32_t step = 3 * count + static_cast<int32_t>(random() % 3);
          const RandomBytes src(random, static_cast<size_t>((rows - 1) * step + 3 * count));
          const int32_t sums_step = count + static_cast<int32_t>(random() % 2);
          const Floats expected((rows - 1) * sums_step + count);
          const Floats sums((rows - 1) * sums_step + count);
          roxe::kPlainRows.intensity_sums(src.data(), step, rows, count, half, expected.of(),
                                          sums_step);
          table->intensity_sums(src.data(), step, rows, count, half, sums.of(), sums_step);
          ASSERT_EQ(Bytes(sums), Bytes(expected))
              << table->name << ' ' << half << ' ' << rows << ' ' << count;
        }
}

TEST(Rows, SlideSumsSubtractsBeforeItAdds) {
  float sums[2] = {16777216, 10}, blurred[2];
  const float leave[2] = {16777216, 3}, enter[2] = {1, 5};
  roxe::Rows().slide_sums(sums, leave, enter, 0.5f, blurred, 2);
  EXPECT_EQ(sums[0], 1.0f);
  EXPECT_EQ(sums[1], 12.0f);
  EXPECT_EQ(blurred[0], 0.5f);
  EXPECT_EQ(blurred[1], 6.0f);
}

TEST(Rows, SlideSumsAreTheSameOnEveryTable) {
  std::mt19937 random(3);
  ForEachTableAndCount([&](const roxe::RowKernels& rows, int32_t count) {
    const Floats sums(random, count, 0, 3000), leave(random, count, 0, 2300);
    const Floats enter(random, count, 0, 2300), blurred(count), expected_blurred(count);
    const Floats expected(count);
    std::memcpy(expected.data(), sums.data(), sums.size());
    roxe::kPlainRows.slide_sums(expected.of(), leave.of(), enter.of(), 1.0f / 81,
                                expected_blurred.of(), count);
    rows.slide_sums(sums.of(), leave.of(), enter.of(), 1.0f / 81, blurred.of(), count);
    EXPECT_EQ(Bytes(sums), Bytes(expected));
    EXPECT_EQ(Bytes(blurred), Bytes(expected_blurred));
  });
}

TEST(Rows, ToneShiftsAreTheSameOnEveryTable) {
  std::mt19937 random(4);
  const ToneTables tables;
  ForEachTableAndCount([&](const roxe::RowKernels& rows, int32_t count) {
    // The last range holds sums so small that 0.0001 is added in double precision for good reason.
    for (const auto& [low, high] : {std::pair{0.0f, 255.0f}, {0.0f, 10.0f}, {-2e-5f, 2e-4f}}) {
      const Floats intensity(random, count, std::max(low, 0.0f), high);
      const Floats blurred(random, count, low, high);
      const Floats expected(count), shift(count);
      roxe::kPlainRows.tone_shifts(intensity.of(), blurred.of(), tables.combined.of(),
                                   tables.midtone.of(), expected.of(), count);
      rows.tone_shifts(intensity.of(), blurred.of(), tables.combined.of(), tables.midtone.of(),
                       shift.of(), count);
      EXPECT_EQ(Bytes(shift), Bytes(expected));
      rows.tone_shifts(intensity.of(), blurred.of(), tables.combined.of(), tables.midtone.of(),
                       intensity.of(), count);
      EXPECT_EQ(Bytes(intensity), Bytes(expected));
    }
  });
}

TEST(Rows, ToneShiftsOfExtremeCurvesAreTheSameOnEveryTable) {
  std::mt19937 random(5);
  const Floats combined(random, 256, -1e11f, 1e11f), midtone(random, 512, -1e11f, 1e11f);
  std::fill_n(midtone.of() + 256, 256, 1e11f);
  ForEachTableAndCount([&](const roxe::RowKernels& rows, int32_t count) {
    const Floats intensity(random, count, 0, 255), blurred(random, count, 0, 400);
    const Floats expected(count), shift(count);
    roxe::kPlainRows.tone_shifts(intensity.of(), blurred.of(), combined.of(), midtone.of(),
                                 expected.of(), count);
    rows.tone_shifts(intensity.of(), blurred.of(), combined.of(), midtone.of(), shift.of(), count);
    EXPECT_EQ(Bytes(shift), Bytes(expected));
  });
}

TEST(Rows, ToneShiftsOfLongRowsAreTheSameOnEveryTable) {
  std::mt19937 random(10);
  const ToneTables tables;
  const int32_t count = 2500;
  const Floats intensity(random, count, 0, 255), blurred(random, count, 0, 255), expected(count);
  roxe::kPlainRows.tone_shifts(intensity.of(), blurred.of(), tables.combined.of(),
                               tables.midtone.of(), expected.of(), count);
  for (const roxe::RowKernels* rows : RunnableTables()) {
    const Floats shift(count);
    rows->tone_shifts(intensity.of(), blurred.of(), tables.combined.of(), tables.midtone.of(),
                      shift.of(), count);
    EXPECT_EQ(Bytes(shift), Bytes(expected)) << rows->name;
  }
}

TEST(ExhaustiveRows, LittleMayBeAddedInSinglePrecision) {
  const auto differs = [](float v) {
    return v + 0.0001f != static_cast<float>(static_cast<double>(v) + 0.0001);
  };
  EXPECT_FALSE(differs(0));
  EXPECT_TRUE(differs(std::nextafterf(roxe::kSingleSumFrom, 0)));
  const uint32_t end = std::bit_cast<uint32_t>(std::numeric_limits<float>::infinity());
  uint32_t differences = 0;
  for (uint32_t bits = std::bit_cast<uint32_t>(roxe::kSingleSumFrom); bits <= end; ++bits)
    differences += differs(std::bit_cast<float>(bits));
  EXPECT_EQ(differences, 0u);
}

TEST(Rows, ToneShiftsAddLittleInDoublePrecisionWhereItMatters) {
  // Next to 0.000144 the two precisions give sums one last place apart: times this target, 99 and
  // a little or 100.
  const float sum = std::nextafterf(roxe::kSingleSumFrom, 0);
  Floats intensity(kLongest), blurred(kLongest), combined(256), midtone(512), shift(kLongest);
  std::fill_n(blurred.of(), kLongest, sum);
  std::fill_n(combined.of(), 256, 0x1.0db6e4p+7f);
  for (size_t i = 0; i < 512; ++i) midtone[i] = static_cast<float>(std::min<size_t>(i, 256));
  midtone[99] = 7;
  for (const roxe::RowKernels* rows : RunnableTables()) {
    rows->tone_shifts(intensity.of(), blurred.of(), combined.of(), midtone.of(), shift.of(),
                      kLongest);
    for (size_t i = 0; i < kLongest; ++i) ASSERT_EQ(shift[i], 7.0f) << rows->name << ' ' << i;
  }
}

TEST(Rows, MidtoneShiftsAreTheSameOnEveryTable) {
  std::mt19937 random(6);
  const ToneTables tables;
  ForEachTableAndCount([&](const roxe::RowKernels& rows, int32_t count) {
    const Floats intensity(random, count, 0, 255), expected(count);
    roxe::kPlainRows.midtone_shifts(intensity.of(), tables.midtone.of(), expected.of(), count);
    rows.midtone_shifts(intensity.of(), tables.midtone.of(), intensity.of(), count);
    EXPECT_EQ(Bytes(intensity), Bytes(expected));
  });
}

TEST(Rows, ShiftPixelsTruncatesAndClamps) {
  const uint8_t src[] = {0, 1, 255, 10, 20, 30, 0, 128, 255, 0, 128, 255};
  const float shift[] = {-0.9f, 0.99f, 3e10f, -3e10f};
  uint8_t dst[12];
  roxe::Rows().shift_pixels(src, shift, dst, 4);
  EXPECT_EQ(std::vector<uint8_t>(dst, dst + 12),
            (std::vector<uint8_t>{0, 0, 254, 10, 20, 30, 255, 255, 255, 0, 0, 0}));
}

TEST(Rows, ShiftPixelsRoundsSumsThatAlmostReachAWholeNumber) {
  // 200 - 2^-19 is nearer to 200 than to the next smaller float, 27 - 2^-19 is a float itself.
  std::mt19937 random(9);
  ForEachTableAndCount([&](const roxe::RowKernels& rows, int32_t count) {
    const GuardedMemory src(3 * static_cast<size_t>(count)), dst(src.size());
    const Floats shift(count);
    std::vector<uint8_t> expected;
    for (int32_t i = 0; i < count; ++i) {
      const bool almost = random() % 4 == 0;
      shift.of()[i] = almost ? -0x1p-19f : 0.0f;
      for (const uint8_t value : {200, 27, 0})
        src.data()[expected.size()] = value, expected.push_back(value);
      if (almost) expected[expected.size() - 2] = 26;
    }
    rows.shift_pixels(src.data(), shift.of(), dst.data(), count);
    EXPECT_EQ(Bytes(dst), expected);
  });
}

TEST(Rows, ShiftPixelsIsTheSameOnEveryTable) {
  std::mt19937 random(8);
  ForEachTableAndCount([&](const roxe::RowKernels& rows, int32_t count) {
    for (const float reach : {1e-4f, 3.0f, 300.0f, 1e10f}) {
      const RandomBytes src(random, 3 * static_cast<size_t>(count)), dst(random, src.size());
      const GuardedMemory expected(src.size());
      const Floats shift(random, count, -reach, reach);
      roxe::kPlainRows.shift_pixels(src.data(), shift.of(), expected.data(), count);
      rows.shift_pixels(src.data(), shift.of(), dst.data(), count);
      EXPECT_EQ(Bytes(dst), Bytes(expected));
      rows.shift_pixels(src.data(), shift.of(), src.data(), count);
      EXPECT_EQ(Bytes(src), Bytes(expected));
    }
  });
}

}  // namespace
