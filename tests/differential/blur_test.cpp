// The blur family against the plain reference: every byte and every bit, on random and hostile
// input. The reference itself is first held against literals.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

#include "blur/box_blur.h"
#include "blur/plane_blur.h"
#include "blur/soft_focus.h"
#include "differential/twins.h"
#include "reference/blur.h"
#include "support/image.h"

namespace {

// ------------------------------------------------------------------- the reference by literals

TEST(ReferenceBlur, MeansAreRoundedDown) {
  // Windows of 2 x 2 in the corners; 2 x 3 and 3 x 3 elsewhere, where 255 becomes 254.
  const Image src = Gray({{255, 255, 255}, {255, 255, 255}, {255, 255, 255}});
  Image dst = Gray({{0, 0, 0}, {0, 0, 0}, {0, 0, 0}});
  EXPECT_EQ(reference::BoxBlurA(src, dst, 1, 1, 1, 1), 1);
  EXPECT_EQ(dst, Gray({{255, 254, 255}, {254, 254, 254}, {255, 254, 255}}));
}

TEST(ReferenceBlur, WindowsAreClippedOnEverySide) {
  // One column and one row to the left and above, none to the right and below.
  const Image src = Gray({{8, 16, 40}, {24, 32, 64}});
  Image dst = Gray({{0, 0, 0}, {0, 0, 0}});
  EXPECT_EQ(reference::BoxBlurA(src, dst, 1, 1, 0, 0), 1);
  EXPECT_EQ(dst, Gray({{8, 12, 28}, {16, 20, 38}}));
}

TEST(ReferenceBlur, BothAxesMustHaveAnExtent) {
  const Image src = Gray({{8, 16}});
  Image dst = Gray({{1, 2}});
  EXPECT_EQ(reference::BoxBlurA(src, dst, 1, 0, 1, 0), 0);
  EXPECT_EQ(reference::BoxBlurA(src, dst, 0, 1, 0, 1), 0);
  EXPECT_EQ(reference::BoxBlurA(src, dst, 1, -1, 1, 1), 0);
  EXPECT_EQ(dst, Gray({{1, 2}}));
}

TEST(ReferenceBlur, LengthsOfAWindowAlongAnAxis) {
  // [i - 1, i + 2] in 5: lengths 3, 4, 4, 3, 2.
  const reference::LengthRange inside = reference::BoxBlurGetModLengthRange(1, 2, 5);
  EXPECT_EQ(inside.min, 2);
  EXPECT_EQ(inside.end, 5);
  // [i - 9, i + 9] in 4: always the whole row.
  const reference::LengthRange beyond = reference::BoxBlurGetModLengthRange(9, 9, 4);
  EXPECT_EQ(beyond.min, 4);
  EXPECT_EQ(beyond.end, 5);
}

TEST(ReferenceBlur, RowsOverwrittenInTheWindowLeaveItAsTheyAreByThen) {
  // dst begins one row below src in the same memory; windows of a row and the next one. 200 + 0
  // halved is 100 and overwrites row 1; 0 + 0 is 0. Row 1, which entered as 0, leaves as 100: -100
  // halved is -50, 206 as a byte, and the last row alone keeps -100, 156 as a byte.
  Image memory = Gray({{200}, {0}, {0}, {0}, {9}});
  PixelArray src = memory.record, dst = memory.record;
  src.height = dst.height = 4;
  dst.pixels = memory.pixel(0, 1);
  EXPECT_EQ(reference::BoxBlurA(&src, &dst, 1, 0, 1, 1), 1);
  EXPECT_EQ(memory, Gray({{200}, {100}, {0}, {206}, {156}}));
}

TEST(ReferenceBlur, InPlaceRowsLeaveAsTheyWereBeforeTheyWereOverwritten) {
  // The same windows and the same first byte for both, but rows 2 bytes apart become rows 1 byte
  // apart: (200 + 40) / 2 = 120, (40 + 10) / 2 = 25, then 10 alone.
  Image memory = Gray({{200, 1, 40, 2, 10, 3}});
  PixelArray src = {kRoxeFormatGray8, 1, 3, 2, memory.bytes()}, dst = src;
  dst.rowBytes = 1;
  EXPECT_EQ(reference::BoxBlurA(&src, &dst, 1, 0, 1, 1), 1);
  EXPECT_EQ(memory, Gray({{120, 25, 10, 2, 10, 3}}));
}

TEST(ReferenceBlur, WhiteMaskGivesTheSourceUpToOneLevel) {
  std::mt19937 random(1);
  Image src(kRoxeFormatRGB24, 6, 5), dst(kRoxeFormatRGB24, 6, 5), mask(kRoxeFormatGray8, 6, 5);
  src.randomise(random);
  mask.fill(255);
  EXPECT_EQ(reference::roxeSoftFocus(src, dst, mask, 3, 1), 0);
  for (size_t i = 0; i < src.size(); ++i) {
    EXPECT_LE(dst.bytes()[i], src.bytes()[i]);
    EXPECT_GE(dst.bytes()[i] + 1, src.bytes()[i]);
  }
}

TEST(ReferenceBlur, TransposesTheSumsOfAWindow) {
  // Rows 1 2 3 and 10 20 40, one value before: with the edge repeated 1 + 1, 1 + 2, 2 + 3.
  const float in[6] = {1, 2, 3, 10, 20, 40};
  float out[6];
  reference::ProcessRow2Column(out, in, 3, 2, 1, 0);
  EXPECT_EQ(std::vector<float>(out, out + 6), (std::vector<float>{2, 20, 3, 30, 5, 60}));
  reference::ProcessRow2Column(out, in, 3, 2, 0, 2);
  EXPECT_EQ(std::vector<float>(out, out + 6), (std::vector<float>{6, 70, 8, 100, 9, 120}));
}

TEST(ReferenceBlur, EvenLengthsBrighten) {
  std::vector<float> data(12, 4.0f), temp(12);
  reference::BoxBlur(data.data(), temp.data(), 4, 3, 2);  // 3 x 3 values over 2 x 2
  EXPECT_EQ(data, std::vector<float>(12, 9.0f));
}

// --------------------------------------------------------------------------------- random input

constexpr size_t kBlock = 2600;  // the shapes below fit

// A sound record: mostly up to 24 x 24, sometimes a few long rows.
Shape BlurShape(Dice& dice, uint32_t format) {
  const bool long_rows = dice.one_in(16);
  const int32_t width = dice.between(1, long_rows ? 110 : 24);
  const int32_t height = dice.between(1, long_rows ? 6 : 24);
  const int32_t packed = format == 0 ? 3 * width : width;
  return {format, width, height, packed + (dice.one_in(2) ? 0 : dice.between(1, 13)), true};
}

int32_t AnyExtent(Dice& dice) {
  if (dice.one_in(20)) return dice.hostile_integer();
  return dice.between(0, dice.one_in(2) ? 4 : 40);
}

TEST(DifferentialBlur, BoxBlursLikeTheDefinition) {
  Dice dice(72);
  Twins first(kBlock), second(kBlock);
  int blurred = 0;
  for (int i = 0; i < 120000; ++i) {
    const uint32_t format = dice.one_in(2) ? 0 : 3;
    const int32_t bytes = format == 0 ? 3 : 1;
    const Shape src = BlurShape(dice, format);
    Shape dst = src;
    dst.row_bytes = bytes * dst.width + (dice.one_in(2) ? 0 : dice.between(1, 13));
    const bool in_place = dice.one_in(3);
    first.randomise(dice);
    if (!in_place) second.randomise(dice);
    const size_t src_at = first.place(dice, src.size(bytes));
    const size_t dst_at = second.place(dice, dst.size(bytes));
    PixelArray library_src = first.library(src, src_at);
    PixelArray library_dst = in_place ? library_src : second.library(dst, dst_at);
    PixelArray reference_src = first.reference(src, src_at);
    PixelArray reference_dst = in_place ? reference_src : second.reference(dst, dst_at);
    if (dice.one_in(50)) {  // records that do not belong together
      switch (dice.bits() % 3) {
        case 0:
          library_dst.format = reference_dst.format = format == 0 ? 3 : 0;
          break;
        case 1:
          library_dst.width = --reference_dst.width;
          break;
        default:
          library_dst.height = --reference_dst.height;
      }
    }
    const int32_t left = AnyExtent(dice), top = AnyExtent(dice);
    const int32_t right = AnyExtent(dice), bottom = AnyExtent(dice);
    const int32_t expected =
        reference::BoxBlurA(&reference_src, &reference_dst, left, top, right, bottom);
    const int32_t actual = roxe::BoxBlurA(&library_src, &library_dst, left, top, right, bottom);
    blurred += expected;
    ASSERT_EQ(actual, expected) << i;
    ASSERT_TRUE(first.same() && second.same())
        << i << ": format " << format << ", " << src.width << " x " << src.height << ", extents "
        << left << ' ' << top << ' ' << right << ' ' << bottom << (in_place ? ", in place" : "");
  }
  EXPECT_GE(blurred, 100000);
}

TEST(DifferentialBlur, BoxBlurRefusesWhatTheReferenceRefuses) {
  Image image = Gray({{8, 16}, {24, 32}}), other = Gray({{1, 2}, {3, 4}});
  const Image before = other;
  PixelArray unknown = image.record, unknown_dst = other.record;
  unknown.format = unknown_dst.format = 7;
  EXPECT_EQ(roxe::BoxBlurA(nullptr, other, 1, 1, 1, 1), 0);
  EXPECT_EQ(roxe::BoxBlurA(image, nullptr, 1, 1, 1, 1), 0);
  EXPECT_EQ(roxe::BoxBlurA(&unknown, &unknown_dst, 1, 1, 1, 1), 0);
  for (const int32_t negative : {-1, INT32_MIN}) {
    EXPECT_EQ(roxe::BoxBlurA(image, other, negative, 1, 1, 1), 0);
    EXPECT_EQ(roxe::BoxBlurA(image, other, 1, negative, 1, 1), 0);
    EXPECT_EQ(roxe::BoxBlurA(image, other, 1, 1, negative, 1), 0);
    EXPECT_EQ(roxe::BoxBlurA(image, other, 1, 1, 1, negative), 0);
  }
  EXPECT_EQ(roxe::BoxBlurA(image, other, 0, 1, 0, 1), 0);
  EXPECT_EQ(roxe::BoxBlurA(image, other, 1, 0, 1, 0), 0);
  EXPECT_EQ(other, before);
}

TEST(DifferentialBlur, FindsTheLengthsOfTheReference) {
  Dice dice(73);
  for (int i = 0; i < 100000; ++i) {
    const auto extent = [&] { return dice.hostile_integer() & INT32_MAX; };
    const bool small = dice.one_in(2);
    const int32_t before = small ? dice.between(0, 12) : extent();
    const int32_t after = small ? dice.between(0, 12) : extent();
    const int32_t n = 1 + (small ? dice.between(0, 12) : dice.between(0, INT32_MAX - 2));
    roxe::LengthRange actual;
    roxe::BoxBlurGetModLengthRange(&actual, before, after, n);
    const reference::LengthRange expected = reference::BoxBlurGetModLengthRange(before, after, n);
    ASSERT_EQ(actual.min, expected.min) << before << ' ' << after << ' ' << n;
    ASSERT_EQ(actual.end, expected.end) << before << ' ' << after << ' ' << n;
  }
}

TEST(DifferentialBlur, DividesLikeTheReference) {
  Dice dice(74);
  for (int i = 0; i < 2000; ++i) {
    const int32_t largest = 1 << dice.between(0, 24);
    const int32_t h_min = dice.between(1, largest), h_end = h_min + dice.between(1, 20);
    const int32_t v_min = dice.between(1, largest), v_end = v_min + dice.between(1, 20);
    const auto actual = roxe::BoxBlurCreateModDivBuffer(h_min, h_end, v_min, v_end);
    ASSERT_NE(actual, nullptr);
    const std::vector<uint32_t> expected =
        reference::BoxBlurCreateModDivBuffer(h_min, h_end, v_min, v_end);
    for (size_t k = 0; k < expected.size(); ++k) ASSERT_EQ(actual[k], expected[k]) << i << ' ' << k;
  }
}

TEST(DifferentialBlur, SumsAndDividesRowsLikeTheReference) {
  Dice dice(75);
  for (int i = 0; i < 20000; ++i) {
    const bool colour = dice.one_in(2);
    const int32_t width = dice.between(1, dice.one_in(4) ? 90 : 12);
    const size_t entries = static_cast<size_t>(width) * (colour ? 3 : 1);
    const int32_t rows = dice.between(1, 5);
    GuardedMemory row(entries), acc_memory(4 * entries), actual(entries);
    uint32_t* const acc = reinterpret_cast<uint32_t*>(acc_memory.data());
    std::vector<uint32_t> expected_acc(entries);
    for (size_t k = 0; k < entries; ++k) acc[k] = 0;
    int32_t inside = 0;
    for (int32_t r = 0; r < rows; ++r) {
      for (size_t k = 0; k < entries; ++k) row.data()[k] = static_cast<uint8_t>(dice.bits());
      // A row is taken out again now and then, right after it came in.
      const bool out_again = dice.one_in(4);
      for (int32_t add = 1; add >= (out_again ? 0 : 1); --add) {
        const int32_t flag = add ? (dice.one_in(2) ? 1 : -5) : 0;
        if (colour) {
          ASSERT_EQ(roxe::BoxBlurSumLine24(row.data(), width, acc, flag), 1);
          reference::BoxBlurSumLine24(row.data(), width, expected_acc.data(), flag);
        } else {
          ASSERT_EQ(roxe::BoxBlurSumLine8(row.data(), width, acc, flag), 1);
          reference::BoxBlurSumLine8(row.data(), width, expected_acc.data(), flag);
        }
      }
      inside += out_again ? 0 : 1;
    }
    for (size_t k = 0; k < entries; ++k) ASSERT_EQ(acc[k], expected_acc[k]) << i << ' ' << k;

    std::vector<uint32_t> reciprocals(static_cast<size_t>(width) + 1);
    for (int32_t w = 1; w <= width; ++w)
      reciprocals[static_cast<size_t>(w)] =
          static_cast<uint32_t>(8388608 / (w * (inside > 0 ? inside : 1)));
    const roxe::DivRow div_row = {reciprocals.data(), 0};
    const auto extent = [&] {
      return dice.one_in(20) ? dice.hostile_integer() & INT32_MAX : dice.between(0, width + 3);
    };
    const int32_t left = extent(), right = extent();
    std::vector<uint8_t> expected(entries);
    if (colour) {
      roxe::BoxBlurProcessRow24(acc, actual.data(), width, left, right, div_row);
      reference::BoxBlurProcessRow24(acc, expected.data(), width, left, right, reciprocals.data());
    } else {
      roxe::BoxBlurProcessRow8(acc, actual.data(), width, left, right, div_row);
      reference::BoxBlurProcessRow8(acc, expected.data(), width, left, right, reciprocals.data());
    }
    ASSERT_EQ(std::memcmp(actual.data(), expected.data(), entries), 0)
        << i << ": width " << width << ", " << left << ' ' << right;
  }
}

TEST(DifferentialBlur, BlursThreeTimesLikeTheReference) {
  Dice dice(76);
  Twins first(kBlock), second(kBlock);
  for (int i = 0; i < 10000; ++i) {
    const uint32_t format = dice.one_in(2) ? 0 : 3;
    const int32_t bytes = format == 0 ? 3 : 1;
    const Shape src = BlurShape(dice, format);
    Shape dst = src;
    dst.row_bytes = bytes * dst.width + (dice.one_in(2) ? 0 : dice.between(1, 13));
    const bool in_place = dice.one_in(3);
    first.randomise(dice);
    second.randomise(dice);
    const size_t src_at = first.place(dice, src.size(bytes));
    const size_t dst_at = second.place(dice, dst.size(bytes));
    PixelArray library_src = first.library(src, src_at);
    PixelArray library_dst = in_place ? library_src : second.library(dst, dst_at);
    PixelArray reference_src = first.reference(src, src_at);
    PixelArray reference_dst = in_place ? reference_src : second.reference(dst, dst_at);
    if (dice.one_in(50)) library_dst.height = --reference_dst.height;
    const int32_t radius = dice.one_in(20) ? dice.hostile_integer() : dice.between(-1, 40);
    const int32_t expected = reference::GaussianBlurA(&reference_src, &reference_dst, radius);
    ASSERT_EQ(roxe::GaussianBlurA(&library_src, &library_dst, radius), expected) << i;
    ASSERT_TRUE(first.same() && second.same()) << i << ": radius " << radius;
  }
  EXPECT_EQ(roxe::GaussianBlurA(nullptr, nullptr, 3), 0);
}

TEST(ExhaustiveBlur, BoxBlursLikeTheDefinitionAtEverySmallSize) {
  Dice dice(77);
  constexpr int32_t kLargest = 5;
  Twins first(kLargest * kLargest * 3), second(kLargest * kLargest * 3);
  for (const uint32_t format : {0u, 3u}) {
    const int32_t bytes = format == 0 ? 3 : 1;
    for (int32_t size = 0; size < kLargest * kLargest; ++size) {
      const int32_t width = 1 + size % kLargest, height = 1 + size / kLargest;
      const Shape shape = {format, width, height, bytes * width, true};
      const size_t at = first.size() - shape.size(bytes);
      first.randomise(dice);
      second.randomise(dice);
      for (int32_t extents = 0; extents < 7 * 7 * 7 * 7; ++extents) {
        const int32_t left = extents % 7, right = extents / 7 % 7;
        const int32_t top = extents / 49 % 7, bottom = extents / 343;
        const PixelArray library_src = first.library(shape, at);
        PixelArray library_dst = second.library(shape, at);
        const PixelArray reference_src = first.reference(shape, at);
        PixelArray reference_dst = second.reference(shape, at);
        const int32_t expected =
            reference::BoxBlurA(&reference_src, &reference_dst, left, top, right, bottom);
        ASSERT_EQ(roxe::BoxBlurA(&library_src, &library_dst, left, top, right, bottom), expected);
        ASSERT_TRUE(second.same()) << width << " x " << height << ": " << left << ' ' << top << ' '
                                   << right << ' ' << bottom;
        // In place, the result replaces a copy of the source.
        std::memcpy(library_dst.pixels, library_src.pixels, shape.size(bytes));
        ASSERT_EQ(roxe::BoxBlurA(&library_dst, &library_dst, left, top, right, bottom), expected);
        if (expected == 1) {
          ASSERT_TRUE(second.same()) << "in place, " << width << " x " << height << ": " << left
                                     << ' ' << top << ' ' << right << ' ' << bottom;
        } else {
          std::memcpy(library_dst.pixels, reference_dst.pixels, shape.size(bytes));
        }
      }
    }
  }
}

TEST(DifferentialBlur, SoftensLikeTheReference) {
  Dice dice(70);
  Twins first(2600), second(2600), third(900);
  for (int i = 0; i < 8000; ++i) {
    const int32_t width = dice.between(1, 24), height = dice.between(1, 24);
    const auto stride = [&](int32_t packed) {
      return packed + (dice.one_in(2) ? 0 : dice.between(1, 13));
    };
    Shape src = {0, width, height, stride(3 * width), true};
    Shape dst = {0, width, height, stride(3 * width), true};
    Shape mask = {3, width, height, stride(width), true};
    if (dice.one_in(16)) {  // one thing wrong
      Shape* const spoilt = dice.pick({&src, &dst, &mask});
      switch (dice.bits() % 5) {
        case 0:
          spoilt->format = static_cast<uint32_t>(dice.pick({0, 3, 7}));
          break;
        case 1:
          spoilt->width -= 1;
          break;
        case 2:
          spoilt->height -= 1;
          break;
        case 3:
          spoilt->row_bytes = width - 1;
          break;
        default:
          spoilt->has_pixels = false;
      }
    }
    first.randomise(dice);
    second.randomise(dice);
    third.randomise(dice);
    const bool in_place = dice.one_in(5);
    const bool masked = !dice.one_in(4);
    const size_t src_at = first.place(dice, src.size(3));
    const size_t dst_at = second.place(dice, dst.size(3));
    const size_t mask_at = third.place(dice, mask.size(1));
    PixelArray library_src = first.library(src, src_at);
    PixelArray library_dst = second.library(dst, dst_at);
    const PixelArray library_mask = third.library(mask, mask_at);
    PixelArray reference_src = first.reference(src, src_at);
    PixelArray reference_dst = second.reference(dst, dst_at);
    const PixelArray reference_mask = third.reference(mask, mask_at);
    const auto radius = [&] {
      return dice.one_in(16) ? dice.hostile_integer() : dice.between(-1, dice.one_in(2) ? 6 : 60);
    };
    const int32_t image_radius = radius(), mask_radius = radius();
    const int32_t expected =
        reference::roxeSoftFocus(&reference_src, in_place ? &reference_src : &reference_dst,
                                 masked ? &reference_mask : nullptr, image_radius, mask_radius);
    const int32_t actual =
        ::roxeSoftFocus(&library_src, in_place ? &library_src : &library_dst,
                        masked ? &library_mask : nullptr, image_radius, mask_radius);
    ASSERT_EQ(actual, expected) << i;
    ASSERT_TRUE(first.same() && second.same() && third.same())
        << i << ": " << width << " x " << height << ", " << image_radius << ", " << mask_radius;
  }
}

TEST(DifferentialBlur, SoftensRowsTooShortForTheirWidthLikeTheReference) {
  Dice dice(71);
  Twins first(2600), second(2600);
  for (int i = 0; i < 3000; ++i) {
    // 3 * width wraps to 2, 5, 8 ...: the record passes although few columns fit into its rows.
    const int32_t beyond = dice.between(0, 12), height = dice.between(1, 20);
    const int32_t width = 1431655766 + beyond;
    const Shape src = {0, width, height, 2 + 3 * beyond + dice.between(0, 30), true};
    const Shape dst = {0, width, height, 2 + 3 * beyond + dice.between(0, 30), true};
    first.randomise(dice);
    second.randomise(dice);
    const size_t src_at = first.place(dice, src.size(3));
    const size_t dst_at = second.place(dice, dst.size(3));
    PixelArray library_src = first.library(src, src_at);
    PixelArray library_dst = second.library(dst, dst_at);
    PixelArray reference_src = first.reference(src, src_at);
    PixelArray reference_dst = second.reference(dst, dst_at);
    const bool in_place = dice.one_in(4);
    const int32_t radius = dice.between(-1, 30);
    const int32_t expected = reference::roxeSoftFocus(
        &reference_src, in_place ? &reference_src : &reference_dst, nullptr, radius, 0);
    const int32_t actual =
        ::roxeSoftFocus(&library_src, in_place ? &library_src : &library_dst, nullptr, radius, 0);
    ASSERT_EQ(actual, expected) << i;
    ASSERT_TRUE(first.same() && second.same()) << i;
  }
}

// Two records in one block: the same rows, rows of another length from the same byte on, or a few
// pixels, rows or bytes apart. The extents reach from far smaller than the pictures to far larger.
struct OverlappingShapes {
  Shape src, dst;
  size_t src_at, dst_at;

  OverlappingShapes(Dice& dice, const Twins& block, uint32_t format) {
    const int32_t bytes = format == 0 ? 3 : 1;
    const int32_t width = dice.between(1, dice.one_in(3) ? 2 : 9), height = dice.between(1, 20);
    const auto row_bytes = [&] {
      return bytes * width + (dice.one_in(2) ? 0 : dice.between(1, 5));
    };
    src = {format, width, height, row_bytes(), true};
    dst = src;
    if (dice.one_in(3)) dst.row_bytes = row_bytes();
    const int32_t unit = dice.pick({1, bytes, src.row_bytes, dst.row_bytes});
    const int64_t apart = int64_t{unit} * dice.between(-12, 12);
    src_at = (block.size() - src.size(bytes)) / 2;
    const int64_t last = static_cast<int64_t>(block.size() - dst.size(bytes));
    dst_at =
        static_cast<size_t>(std::clamp<int64_t>(static_cast<int64_t>(src_at) + apart, 0, last));
  }
};

TEST(DifferentialBlur, BlursOverlappingPicturesLikeTheReference) {
  Dice dice(60);
  Twins block(1500), mask_block(200);
  for (int i = 0; i < 60000; ++i) {
    const uint32_t format = dice.one_in(2) ? 0 : 3;
    const OverlappingShapes shapes(dice, block, format);
    block.randomise(dice);
    const PixelArray library_src = block.library(shapes.src, shapes.src_at);
    const PixelArray reference_src = block.reference(shapes.src, shapes.src_at);
    PixelArray library_dst = block.library(shapes.dst, shapes.dst_at);
    PixelArray reference_dst = block.reference(shapes.dst, shapes.dst_at);
    const int32_t radius = dice.between(1, 40);
    int32_t expected, actual;
    if (dice.one_in(3)) {
      const auto extent = [&] { return dice.between(0, dice.one_in(2) ? 4 : 20); };
      const int32_t left = extent(), top = extent(), right = extent(), bottom = extent();
      expected = reference::BoxBlurA(&reference_src, &reference_dst, left, top, right, bottom);
      actual = roxe::BoxBlurA(&library_src, &library_dst, left, top, right, bottom);
    } else if (format != 0) {
      expected = reference::GaussianBlurA(&reference_src, &reference_dst, radius);
      actual = roxe::GaussianBlurA(&library_src, &library_dst, radius);
    } else {
      // The mask lies in a block of its own or among the pictures.
      const Shape shape = {3, shapes.src.width, shapes.src.height, shapes.src.width, true};
      const Twins& masks = dice.one_in(2) ? block : mask_block;
      mask_block.randomise(dice);
      const size_t mask_at =
          static_cast<size_t>(dice.between(0, static_cast<int32_t>(masks.size() - shape.size(1))));
      const PixelArray library_mask = masks.library(shape, mask_at);
      const PixelArray reference_mask = masks.reference(shape, mask_at);
      const bool masked = dice.one_in(2);
      const int32_t mask_radius = dice.between(1, 40);
      expected = reference::roxeSoftFocus(&reference_src, &reference_dst,
                                          masked ? &reference_mask : nullptr, radius, mask_radius);
      actual = ::roxeSoftFocus(&library_src, &library_dst, masked ? &library_mask : nullptr, radius,
                               mask_radius);
    }
    ASSERT_EQ(actual, expected) << i;
    ASSERT_TRUE(block.same() && mask_block.same())
        << i << ": format " << format << ", " << shapes.src.width << " x " << shapes.src.height
        << ", rows of " << shapes.src.row_bytes << " and " << shapes.dst.row_bytes << " bytes from "
        << shapes.src_at << " and " << shapes.dst_at << ", radius " << radius;
  }
}

TEST(DifferentialBlur, BlursLargerPicturesLikeTheReference) {
  Dice dice(78);
  constexpr int32_t kSizes[][2] = {{1500, 2}, {700, 5}, {300, 20}, {65, 65}, {20, 300}, {3, 900}};
  Twins first(45000), second(45000);
  for (int i = 0; i < 60; ++i) {
    const auto& size = kSizes[i % 6];
    const uint32_t format = dice.one_in(3) ? 0 : 3;
    const int32_t bytes = format == 0 ? 3 : 1;
    const Shape shape = {format, size[0], size[1],
                         bytes * size[0] + (dice.one_in(2) ? 0 : dice.between(1, 13)), true};
    const int32_t longest = size[0] > size[1] ? size[0] : size[1];
    const int32_t radius = dice.between(2, dice.one_in(2) ? 50 : longest + 50);
    const bool in_place = dice.one_in(3);
    first.randomise(dice);
    second.randomise(dice);
    const size_t src_at = first.place(dice, shape.size(bytes));
    const size_t dst_at = second.place(dice, shape.size(bytes));
    PixelArray library_src = first.library(shape, src_at);
    PixelArray library_dst = in_place ? library_src : second.library(shape, dst_at);
    PixelArray reference_src = first.reference(shape, src_at);
    PixelArray reference_dst = in_place ? reference_src : second.reference(shape, dst_at);
    if (dice.one_in(3)) {  // white: the largest sums
      std::memset(library_src.pixels, 255, shape.size(bytes));
      std::memset(reference_src.pixels, 255, shape.size(bytes));
    }
    const int32_t expected = reference::GaussianBlurA(&reference_src, &reference_dst, radius);
    ASSERT_EQ(roxe::GaussianBlurA(&library_src, &library_dst, radius), expected) << i;
    ASSERT_TRUE(first.same() && second.same())
        << i << ": format " << format << ", " << size[0] << " x " << size[1] << ", radius "
        << radius << (in_place ? ", in place" : "");
    if (format != 0) continue;
    // Once more through the exported operation, which need not go the same way.
    ASSERT_EQ(::roxeSoftFocus(&library_src, &library_dst, nullptr, radius, 0),
              reference::roxeSoftFocus(&reference_src, &reference_dst, nullptr, radius, 0));
    ASSERT_TRUE(first.same() && second.same()) << i << ": radius " << radius;
  }
}

// -------------------------------------------------------------------------------------- planes

// Floats that end at a guard page.
struct GuardedPlane : GuardedMemory {
  explicit GuardedPlane(size_t count) : GuardedMemory(count * sizeof(float)) {}
  float* floats() const { return reinterpret_cast<float*>(data()); }
};

// A NaN may be any NaN; everything else by its bits.
void ExpectSameFloats(const float* actual, const std::vector<float>& expected, const char* what,
                      int number) {
  for (size_t k = 0; k < expected.size(); ++k) {
    if (std::isnan(expected[k]) && std::isnan(actual[k])) continue;
    ASSERT_EQ(std::memcmp(&actual[k], &expected[k], sizeof(float)), 0)
        << what << ' ' << number << ", value " << k << ": " << actual[k] << ", expected "
        << expected[k];
  }
}

TEST(DifferentialBlur, BlursPlanesLikeTheReference) {
  Dice dice(79);
  for (int i = 0; i < 8000; ++i) {
    const bool long_rows = dice.one_in(16);
    const int32_t width = dice.between(1, long_rows ? 150 : 30);
    const int32_t height = dice.between(dice.one_in(16) ? 0 : 1, 30);
    const uint32_t w = static_cast<uint32_t>(width), h = static_cast<uint32_t>(height);
    const size_t count = static_cast<size_t>(width) * static_cast<size_t>(height);
    const GuardedPlane data(count), temp(count), other(count);
    std::vector<float> expected(count), expected_temp(count), source(count);
    const bool hostile = dice.one_in(10), whole = dice.one_in(4);
    for (size_t k = 0; k < count; ++k) {
      float value = whole ? static_cast<float>(dice.between(0, 255)) : dice.real(0.0f, 255.0f);
      if (hostile && dice.one_in(20)) value = dice.hostile_real();
      source[k] = value;
    }
    const auto start = [&] {
      for (size_t k = 0; k < count; ++k) {
        data.floats()[k] = expected[k] = source[k];
        temp.floats()[k] = expected_temp[k] = static_cast<float>(k);
        other.floats()[k] = -1.0f;
      }
    };
    const auto extent = [&]() -> uint32_t {
      if (dice.one_in(20)) return dice.bits();
      return static_cast<uint32_t>(dice.between(0, dice.one_in(2) ? 5 : width + 2));
    };
    const uint32_t before = extent(), after = extent();

    start();
    reference::ProcessRow2Column(expected_temp.data(), expected.data(), w, h, before, after);
    roxe::ProcessRow2Column(temp.floats(), data.floats(), width, height, before, after);
    ExpectSameFloats(temp.floats(), expected_temp, "one row", i);
    start();
    reference::ProcessRow2Column(expected_temp.data(), expected.data(), w, h, before, after);
    roxe::ProcessRow2ColumnUnrollingLoop(temp.floats(), data.floats(), width, height, before,
                                         after);
    ExpectSameFloats(temp.floats(), expected_temp, "eight rows", i);
    ExpectSameFloats(data.floats(), expected, "input", i);

    const double scale = dice.one_in(8) ? static_cast<double>(dice.hostile_real())
                                        : 1.0 / static_cast<double>(dice.between(1, 99));
    start();
    reference::BoxBlurImp(expected.data(), expected_temp.data(), w, h, before, after, scale);
    roxe::BoxBlurImp(data.floats(), temp.floats(), width, height, before, after, scale);
    ExpectSameFloats(data.floats(), expected, "both ways", i);

    const uint32_t length = dice.one_in(20)
                                ? dice.bits()
                                : static_cast<uint32_t>(dice.between(0, dice.one_in(2) ? 7 : 40));
    start();
    reference::BoxBlur(expected.data(), expected_temp.data(), w, h, length);
    roxe::BoxBlur(data.floats(), temp.floats(), width, height, length);
    ExpectSameFloats(data.floats(), expected, "box", i);

    start();
    const bool in_place = dice.one_in(3);
    reference::GaussianBlur(expected.data(), source.data(), expected_temp.data(), w, h, length);
    roxe::GaussianBlur(in_place ? data.floats() : other.floats(), data.floats(), temp.floats(),
                       width, height, length);
    ExpectSameFloats(in_place ? data.floats() : other.floats(), expected, "three boxes", i);
    if (HasFatalFailure()) return;
  }
}

}  // namespace
