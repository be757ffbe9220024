// The rows of colour on every table against the plain ones: every count and several offsets, in
// place and apart, beside guard pages; and all colours there are.
#include <gtest/gtest.h>

#include <algorithm>
#include <cfenv>
#include <cstring>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "colour/colour_distance.h"
#include "colour/colour_temperature.h"
#include "colour/replace_colour.h"
#include "support/rows.h"

namespace {

using roxe::ColourMatrix;
using roxe::ColourSelection;
using roxe::ColourShift;
using roxe::RowKernels;

#include "rows/word_bounds.inl"

using RunRow = std::function<void(const RowKernels&, const uint8_t*, uint8_t*, int32_t)>;
struct Setting {
  std::string name;
  RunRow run;
};

Setting Mask(const ColourSelection& selection) {
  std::vector<int32_t> weight(256);
  roxe::create_blur_table(weight.data(), 256, selection.limit);
  const auto level = std::make_shared<Guarded<uint8_t>>(256);
  for (size_t i = 0; i < 256; ++i) (*level)[i] = static_cast<uint8_t>((weight[i] * 255) >> 16);
  return {"mask", [=](const RowKernels& rows, const uint8_t* src, uint8_t* dst, int32_t count) {
            rows.draw_selection(selection, level->data(), {src, 0, dst, 0, 1, count});
          }};
}

Setting Accent(const ColourSelection& selection) {
  return {"accent", [=](const RowKernels& rows, const uint8_t* src, uint8_t* dst, int32_t count) {
            rows.accent_colour(selection, {src, 0, dst, 0, 1, count});
          }};
}

Setting Replacement(const ColourSelection& selection, int32_t hue, int32_t saturation,
                    int32_t value) {
  ColourShift shift = {hue, saturation, value, {}};
  roxe::create_blur_table(shift.weight, 256, selection.limit);
  return {"replacement",
          [=](const RowKernels& rows, const uint8_t* src, uint8_t* dst, int32_t count) {
            rows.replace_colour(selection, shift, {src, 0, dst, 0, 1, count});
          }};
}

Setting Balance(const std::vector<float>& matrix) {
  const roxe::ColourMatrix fixed = roxe::fixed_point(matrix.data());
  return {"balance", [=](const RowKernels& rows, const uint8_t* src, uint8_t* dst, int32_t count) {
            rows.balance_white(fixed, {src, 0, dst, 0, 1, count});
          }};
}

Setting Balance(int32_t temperature, int32_t tint) {
  std::vector<float> matrix(9);
  roxe::GetStdColorTemperatureMatrix(temperature, tint, matrix.data());
  return Balance(matrix);
}

// Colours of all kinds: a limit of 1 and the largest one, greys, dark and pure references.
std::vector<Setting> Selections() {
  std::vector<Setting> settings;
  for (const uint32_t limit : {1u, 2u, 16u, 81u, 128u, 129u, 201u})
    for (const uint32_t colour : {0x3c5ab4u, 0x0000ffu, 0x00ff00u, 0x808080u, 0x030102u}) {
      const ColourSelection selection =
          roxe::colours_near(colour >> 16, (colour >> 8) & 255, colour & 255, limit);
      settings.push_back(Mask(selection));
      settings.push_back(Accent(selection));
      settings.push_back(Replacement(selection, 40, 25, 12));
      settings.push_back(Replacement(selection, 359, -255, -60));
    }
  // Saturation 217 and limit 74 are the only ones for which the table of cosines makes one of two
  // turns far that are equally far from the opposite of the reference: 43 degrees, not 317.
  const ColourSelection uneven = roxe::colours_near(38, 38, 255, 74);
  settings.push_back(Mask(uneven));
  settings.push_back(Accent(uneven));
  return settings;
}

std::vector<Setting> LargeShifts() {
  const ColourSelection selection = roxe::colours_near(60, 90, 180, 201);
  return {Replacement(selection, 0, 32767, -32767),
          Replacement(selection, 180, -32767, 32767),
          Replacement(selection, 0, 32768, 0),
          Replacement(selection, 0, 0, INT32_MIN),
          Replacement(selection, INT32_MAX, INT32_MAX, INT32_MAX),
          Replacement(selection, -1, INT32_MIN, 3),
          Replacement(selection, 359, 32767, 32767),
          Replacement(selection, 360, -32768, -32767)};
}

// Bytes of which some neighbours are alike, as in pictures: whole vectors inside and outside.
void MakeScene(std::mt19937& random, uint8_t* bytes, int32_t pixels) {
  uint32_t colour = random();
  for (int32_t i = 0; i < pixels; ++i) {
    if (random() % 24 == 0) colour = random();
    const uint32_t grain = random();
    for (int32_t c = 0; c < 3; ++c)
      bytes[3 * i + c] =
          static_cast<uint8_t>((colour >> (8 * c)) ^ ((grain >> (8 * c)) & (colour >> 28)));
  }
}

void ExpectSameOnEveryTable(const Setting& setting, int32_t count, std::mt19937& random) {
  const size_t size = 3 * static_cast<size_t>(count);
  const GuardedMemory src(size), expected(size);
  MakeScene(random, src.data(), count);
  setting.run(roxe::kPlainRows, src.data(), expected.data(), count);
  for (const RowKernels* rows : RunnableTables()) {
    const RandomBytes dst(random, size), in_place(random, size);
    setting.run(*rows, src.data(), dst.data(), count);
    ASSERT_EQ(Bytes(dst), Bytes(expected)) << setting.name << ' ' << rows->name << ' ' << count;
    if (count > 0) std::memcpy(in_place.data(), src.data(), size);
    setting.run(*rows, in_place.data(), in_place.data(), count);
    ASSERT_EQ(Bytes(in_place), Bytes(expected))
        << setting.name << ' ' << rows->name << " in place " << count;
  }
}

// Source and destination at every offset from the widest vector's alignment, each on its own way.
void ExpectSameAtEveryOffset(const Setting& setting, std::mt19937& random) {
  constexpr int32_t kCount = 130;
  constexpr size_t kOffsets = 64, kBytes = 3 * kCount + kOffsets;
  alignas(kOffsets) uint8_t src[kBytes], dst[kBytes], expected[kBytes];
  MakeScene(random, src, kCount + kOffsets / 3);
  for (size_t offset = 0; offset < kOffsets; ++offset) {
    const size_t dst_offset = offset * 29 % kOffsets;
    std::memset(expected, 77, kBytes);
    setting.run(roxe::kPlainRows, src + offset, expected + dst_offset, kCount);
    for (const RowKernels* rows : RunnableTables()) {
      std::memset(dst, 77, kBytes);
      setting.run(*rows, src + offset, dst + dst_offset, kCount);
      ASSERT_EQ(std::memcmp(dst, expected, kBytes), 0)
          << setting.name << ' ' << rows->name << ' ' << offset;
    }
  }
}

void ExpectSame(const std::vector<Setting>& settings) {
  std::mt19937 random(41);
  for (const Setting& setting : settings) {
    for (int32_t count = 0; count <= kLongestTestRow; ++count)
      ExpectSameOnEveryTable(setting, count, random);
    ExpectSameOnEveryTable(setting, 1000, random);
    ExpectSameAtEveryOffset(setting, random);
  }
}

// Every colour once, in an order in which neighbours are alike.
void ExpectSameForAllColours(const std::vector<Setting>& settings) {
  constexpr int32_t kCount = 1 << 16;
  std::vector<uint8_t> src(3 * kCount), expected(src.size()), actual(src.size());
  for (uint32_t blue = 0; blue < 256; ++blue) {
    for (uint32_t i = 0; i < kCount; ++i) {
      src[3 * i] = static_cast<uint8_t>(blue);
      src[3 * i + 1] = static_cast<uint8_t>(i >> 8);
      src[3 * i + 2] = static_cast<uint8_t>(i);
    }
    for (const Setting& setting : settings) {
      setting.run(roxe::kPlainRows, src.data(), expected.data(), kCount);
      for (const RowKernels* rows : RunnableTables()) {
        if (rows == &roxe::kPlainRows) continue;
        setting.run(*rows, src.data(), actual.data(), kCount);
        ASSERT_TRUE(actual == expected) << setting.name << ' ' << rows->name << ' ' << blue;
      }
    }
  }
}

TEST(ColourRows, SelectionsAreTheSameOnEveryTable) { ExpectSame(Selections()); }

// The cosine of 317 degrees is a unit above that of 43: 23965 / 32768. The reference has hue 340 and
// saturation 217, the pixels hue 23 and saturation 158, both value 255: the squared chord is 217 *
// 217 + 158 * 158 - ((217 * 158 * 23965) >> 14) = 21903, a quarter of it 5475, just below 74 * 74;
// the distance is (5475 * 221) >> 14 = 73. With 23964 it would be 21905, and the pixels outside.
TEST(ColourRows, TurnsOfBothSensesAreToldApart) {
  const ColourSelection selection = roxe::colours_near(111, 38, 255, 74);
  uint8_t level[256];
  for (int32_t i = 0; i < 256; ++i) level[i] = static_cast<uint8_t>(i);
  for (const RowKernels* rows : RunnableTables()) {
    const GuardedMemory pixels(3 * 128), grey(3 * 128);
    for (int32_t i = 0; i < 128; ++i) {
      pixels.data()[3 * i] = 97;
      pixels.data()[3 * i + 1] = 156;
      pixels.data()[3 * i + 2] = 255;
    }
    rows->draw_selection(selection, level, {pixels.data(), 0, grey.data(), 0, 1, 128});
    EXPECT_EQ(Bytes(grey), std::vector<uint8_t>(3 * 128, 73)) << rows->name;
  }
}

// Around the hues that are told to be outside by themselves, for references of hue 0.
TEST(ColourRows, RowsOfOneHueAreTheSameOnEveryTable) {
  constexpr int32_t kCount = 64;
  uint8_t level[256];
  for (int32_t i = 0; i < 256; ++i) level[i] = static_cast<uint8_t>(i);
  for (const uint32_t limit : {5u, 30u, 100u, 201u})
    for (const uint32_t low : {0u, 120u, 200u}) {
      const ColourSelection selection = roxe::colours_near(low, low, 240, limit);
      for (const uint32_t grey : {0u, 100u, 190u})
        for (uint32_t i = 0; i < 180; ++i) {  // from red to magenta, in steps of 2 degrees
          const uint32_t rise = grey + (240 - grey) * (i % 30) / 30, fall = 240 + grey - rise;
          const uint32_t red[] = {240, fall, grey, grey, rise, 240};
          uint8_t src[3 * kCount], expected[3 * kCount], dst[3 * kCount];
          for (int32_t k = 0; k < kCount; ++k)
            for (int32_t c = 0; c < 3; ++c)  // green is as far on as red was 120 degrees before
              src[3 * k + 2 - c] = static_cast<uint8_t>(red[(i / 30 + 6 - 2 * c) % 6]);
          roxe::kPlainRows.draw_selection(selection, level, {src, 0, expected, 0, 1, kCount});
          for (const RowKernels* rows : RunnableTables()) {
            rows->draw_selection(selection, level, {src, 0, dst, 0, 1, kCount});
            ASSERT_EQ(std::memcmp(dst, expected, sizeof dst), 0)
                << rows->name << ' ' << limit << ' ' << low << ' ' << grey << ' ' << i;
          }
        }
    }
}

TEST(ColourRows, LargeShiftsAreTheSameOnEveryTable) { ExpectSame(LargeShifts()); }

// What the wide rows take on and what they leave to the plain ones.
TEST(ColourRows, ShiftsInWords) {
  const auto fits = [](int32_t hue, int32_t saturation, int32_t value) {
    return fits_words(ColourShift{hue, saturation, value, {}});
  };
  EXPECT_TRUE(fits(0, -32767, -32767));
  EXPECT_TRUE(fits(359, 32767, 32767));
  EXPECT_FALSE(fits(-1, 0, 0));
  EXPECT_FALSE(fits(360, 0, 0));
  for (const int32_t step : {32768, -32768}) {
    EXPECT_FALSE(fits(0, step, 0));
    EXPECT_FALSE(fits(0, 0, step));
  }
}

TEST(ColourRows, GainsInWords) {
  const auto fits = [](int32_t red, int32_t green, int32_t blue) {
    return fits_words(roxe::ColourMatrix{{red, 0, 0, 0, green, 0, 0, 0, blue}});
  };
  EXPECT_TRUE(fits(128, 0, 0));
  EXPECT_TRUE(fits(12287, 12287, 65535));
  EXPECT_FALSE(fits(127, 0, 0));
  EXPECT_FALSE(fits(12288, 0, 0));
  EXPECT_FALSE(fits(128, -1, 0));
  EXPECT_FALSE(fits(128, 12288, 0));
  EXPECT_FALSE(fits(128, 0, -1));
  EXPECT_FALSE(fits(128, 0, 65536));
  for (const int i : {1, 2, 3, 5, 6, 7}) {
    roxe::ColourMatrix mixed = {{4096, 0, 0, 0, 4096, 0, 0, 0, 4096}};
    EXPECT_TRUE(fits_words(mixed));
    mixed.entry[i] = 1;
    EXPECT_FALSE(fits_words(mixed)) << i;
  }
}

TEST(ColourRows, BalancesAreTheSameOnEveryTable) {
  ExpectSame({Balance(0, 0), Balance(30, 0), Balance(-100, 0), Balance(-100, 100),
              Balance(100, -100), Balance(-19, 40)});
  // A mix of channels, and gains that words do not hold.
  ExpectSame({Balance({1, 0.5f, 0, 0, 1, 0, 0.25f, 0, 0.5f}), Balance({3, 0, 0, 0, 1, 0, 0, 0, 1}),
              Balance({0.02f, 0, 0, 0, 1, 0, 0, 0, 16}), Balance({1, 0, 0, 0, -1, 0, 0, 0, 2})});
  // The least and the largest gains in words, and those next to them.
  const float one = 1.0f / 4096.0f;
  ExpectSame({Balance({128 * one, 0, 0, 0, 0, 0, 0, 0, 16 - one}),
              Balance({127 * one, 0, 0, 0, 0, 0, 0, 0, 16 - one}),
              Balance({3 - one, 0, 0, 0, 3 - one, 0, 0, 0, 16 - one}),
              Balance({3, 0, 0, 0, 3, 0, 0, 0, 16}), Balance({1, 0, 0, 0, 1, 0, 0, 0, 4 - one}),
              Balance({1, 0, 0, 0, 1, 0, 0, 0, 4})});
}

#ifdef FE_DIVBYZERO  // WebAssembly tells nobody
// Not even where the quotient is discarded: it would end a host that traps exceptions.
TEST(ColourRows, NoLaneDividesByZero) {
  std::vector<Setting> settings = Selections();
  for (const int32_t tint : {-100, 0, 100})
    for (const int32_t temperature : {-100, 30, 100})
      settings.push_back(Balance(temperature, tint));
  // Black, and the darkest colours, whose luminance is 0 before or after a balance.
  std::vector<uint8_t> src(3 * 1000), dst(src.size());
  for (size_t i = 0; i < 375; ++i)
    for (size_t c = 0; c < 3; ++c) src[3 * i + c] = static_cast<uint8_t>((i >> c) % 5);
  for (const RowKernels* rows : RunnableTables())
    for (const Setting& setting : settings) {
      std::feclearexcept(FE_ALL_EXCEPT);
      setting.run(*rows, src.data(), dst.data(), 1000);
      ASSERT_FALSE(std::fetestexcept(FE_DIVBYZERO | FE_INVALID))
          << setting.name << ' ' << rows->name;
    }
}
#endif

TEST(ExhaustiveColourRows, BalanceOfAllColours) {
  ExpectSameForAllColours({Balance(30, 0), Balance(100, 100), Balance(100, -100),
                           Balance(-100, 100), Balance(-100, -100),
                           Balance({0.03125f, 0, 0, 0, 0.25f, 0, 0, 0, 15.9998f}),
                           Balance({2.9998f, 0, 0, 0, 2.9998f, 0, 0, 0, 3.9998f})});
}

TEST(ExhaustiveColourRows, SelectionsOfAllColours) {
  const ColourSelection orange = roxe::colours_near(60, 90, 180, 81);
  const ColourSelection sky = roxe::colours_near(230, 180, 90, 201);
  ExpectSameForAllColours({Mask(orange), Accent(orange), Replacement(orange, 40, 25, 12), Mask(sky),
                           Accent(sky), Replacement(sky, 300, -25, 30)});
}

}  // namespace
