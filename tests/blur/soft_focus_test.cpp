#include "blur/soft_focus.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <utility>
#include <vector>

#include "blur/box_blur.h"
#include "blur/gaussian_stream.h"
#include "support/image.h"
#include "support/seams.h"

namespace {

Image Gaussian(const Image& image, int32_t radius) {
  Image src = image, dst = image, in_place = image;
  dst.fill(7);
  EXPECT_EQ(roxe::GaussianBlurA(src, dst, radius), 1);
  EXPECT_EQ(roxe::GaussianBlurA(in_place, in_place, radius), 1);
  EXPECT_EQ(src, image);
  EXPECT_EQ(in_place, dst);
  return dst;
}

TEST(GaussianBlur, OddRadiusIsThreeEqualBoxes) {
  // 0 79 79 120, then 39 52 92 99: thirds are truncated
  EXPECT_EQ(Gaussian(Gray({{0, 0, 240, 0}}), 3), Gray({{45, 60, 80, 95}}));
}

TEST(GaussianBlur, EvenRadiusIsTwoMirroredBoxesAndALongerOne) {
  // extents 1, 0: 0 0 120 120; extents 0, 1: 0 60 120 120; extents 1, 1
  EXPECT_EQ(Gaussian(Gray({{0, 0, 240, 0}}), 2), Gray({{30, 59, 99, 120}}));
  EXPECT_EQ(Gaussian(Gray({{0}, {0}, {240}, {0}}), 2), Gray({{30}, {59}, {99}, {120}}));
}

TEST(GaussianBlur, SmallRadiusCopiesThePixels) {
  Image src(kRoxeFormatRGB24, 2, 3, 9), dst(kRoxeFormatRGB24, 2, 3, 7);
  src.fill(50);
  Image expected = dst;
  expected.fill(50);
  for (const int32_t radius : {1, 0, -1, INT_MIN}) {
    dst.fill(3);
    EXPECT_EQ(roxe::GaussianBlurA(src, dst, radius), 1);
    EXPECT_EQ(dst, expected);
    EXPECT_EQ(roxe::GaussianBlurA(dst, dst, radius), 1);
    EXPECT_EQ(dst, expected);
  }
}

TEST(GaussianBlur, RejectsDifferentRecords) {
  Image src = Gray({{1, 2}}), dst = Gray({{3, 4}});
  const Image untouched = dst;
  EXPECT_EQ(roxe::GaussianBlurA(nullptr, dst, 3), 0);
  EXPECT_EQ(roxe::GaussianBlurA(src, nullptr, 3), 0);
  PixelArray other = src.record;
  other.format = kRoxeFormatRGB24;
  EXPECT_EQ(roxe::GaussianBlurA(&other, dst, 3), 0);
  other = src.record;
  other.width = 1;
  EXPECT_EQ(roxe::GaussianBlurA(&other, dst, 3), 0);
  other = src.record;
  other.height = 2;
  EXPECT_EQ(roxe::GaussianBlurA(&other, dst, 1), 0);
  EXPECT_EQ(dst, untouched);
}

TEST(GaussianBlur, DoesNotReportFailedPasses) {
  Image src = Gray({{0, 0, 240, 0}}), dst = Gray({{1, 2, 3, 4}});
  const Image before = dst;
  src.record.format = dst.record.format = 7;  // no pass knows this format
  EXPECT_EQ(roxe::GaussianBlurA(src, dst, 3), 1);
  EXPECT_EQ(dst.pixels(), before.pixels());
  src.record.format = dst.record.format = kRoxeFormatGray8;

  // Without the first pass the others blur what dst held: 240 0 0 0 gives 120 79 0 0, then
  // 99 66 26 0 (199 / 2, 199 / 3, 79 / 3, 0).
  Image held = Gray({{240, 0, 0, 0}});
  const AllocationWatch watch(1);
  EXPECT_EQ(roxe::GaussianBlurA(src, held, 3), 1);
  EXPECT_EQ(held, Gray({{99, 66, 26, 0}}));
  EXPECT_EQ(watch.live_blocks(), 0);
}

Image Scene() {  // blue a line, green even, red black
  return Bgr({{{0, 8, 0}, {0, 8, 0}, {240, 8, 0}, {0, 8, 0}}});
}
Image BlurredScene() {  // by radius 3; green: 8 7 7 8, 7 7 7 7, 7 6 6 7
  return Bgr({{{45, 7, 0}, {60, 6, 0}, {80, 6, 0}, {95, 7, 0}}});
}

TEST(SoftFocus, WithoutAMaskIsTheBlur) {
  Image src = Scene(), dst = Scene();
  EXPECT_EQ(roxeSoftFocus(src, dst, nullptr, 3, 3), kRoxeOK);
  EXPECT_EQ(dst, BlurredScene());
  EXPECT_EQ(src, Scene());
}

TEST(SoftFocus, MaskPullsBackTowardsTheSource) {
  Image src = Scene(), dst = Scene(), mask = Gray({{0, 255, 128, 64}});
  EXPECT_EQ(roxeSoftFocus(src, dst, mask, 3, 1), kRoxeOK);
  // blue: 60 + (-60 * 255 >> 8), 80 + (160 * 128 >> 8), 95 + (-95 * 64 >> 8), rounded down
  EXPECT_EQ(dst, Bgr({{{45, 7, 0}, {0, 7, 0}, {160, 7, 0}, {71, 7, 0}}}));
  EXPECT_EQ(mask, Gray({{0, 255, 128, 64}}));
}

TEST(SoftFocus, MaskIsBlurredFirst) {
  Image src = Scene(), dst = Scene(), mask = Gray({{0, 0, 240, 0}});
  EXPECT_EQ(roxeSoftFocus(src, dst, mask, 3, 3), kRoxeOK);
  // The mask becomes 45 60 80 95: 45 + (-2025 >> 8), 60 + (-3600 >> 8), 80 + (12800 >> 8),
  // 95 + (-9025 >> 8).
  EXPECT_EQ(dst, Bgr({{{37, 7, 0}, {45, 6, 0}, {130, 6, 0}, {59, 7, 0}}}));
}

TEST(SoftFocus, BlackMaskIsNoMask) {
  Image src = Scene(), dst = Scene(), mask = Gray({{0, 0, 0, 0}});
  EXPECT_EQ(roxeSoftFocus(src, dst, mask, 3, 9), kRoxeOK);
  EXPECT_EQ(dst, BlurredScene());
}

TEST(SoftFocus, WhiteMaskGivesTheSourceWithinOneLevel) {
  Image src = Scene(), dst = Scene(), mask = Gray({{255, 255, 255, 255}});
  EXPECT_EQ(roxeSoftFocus(src, dst, mask, 3, 0), kRoxeOK);
  // One below where the source is the brighter: 80 + (160 * 255 >> 8) = 239, 7 + (255 >> 8) = 7.
  EXPECT_EQ(dst, Bgr({{{0, 7, 0}, {0, 7, 0}, {239, 7, 0}, {0, 7, 0}}}));
}

TEST(SoftFocus, SmallRadiusLeavesTheSource) {
  for (const int32_t radius : {1, 0, -5, INT_MIN}) {
    Image src = Scene(), dst = BlurredScene(), mask = Gray({{0, 255, 128, 64}});
    EXPECT_EQ(roxeSoftFocus(src, dst, mask, radius, 3), kRoxeOK);
    EXPECT_EQ(dst, Scene());
    EXPECT_EQ(roxeSoftFocus(src, src, mask, radius, 3), kRoxeOK);
    EXPECT_EQ(src, Scene());
  }
}

TEST(SoftFocus, InPlaceTheMaskHasNoEffect) {
  Image image = Scene(), mask = Gray({{255, 255, 255, 255}});
  EXPECT_EQ(roxeSoftFocus(image, image, mask, 3, 1), kRoxeOK);
  EXPECT_EQ(image, BlurredScene());
}

TEST(SoftFocus, EveryRecordHasItsOwnPadding) {
  // One column: windows of 2, 3 and 2 rows, as in the scene turned by a quarter.
  Image src(kRoxeFormatRGB24, 1, 4, 5), dst(kRoxeFormatRGB24, 1, 4, 8),
      mask(kRoxeFormatGray8, 1, 4, 3);
  const uint8_t lines[4] = {0, 0, 240, 0}, blurred[4] = {37, 45, 130, 59};
  Image expected = dst;
  for (int32_t y = 0; y < 4; ++y)
    for (int32_t c = 0; c < 3; ++c) {
      src.pixel(0, y)[c] = lines[y];
      *mask.pixel(0, y) = lines[y];
      expected.pixel(0, y)[c] = blurred[y];
    }
  EXPECT_EQ(roxeSoftFocus(src, dst, mask, 3, 3), kRoxeOK);
  EXPECT_EQ(dst, expected);
}

TEST(SoftFocus, ChecksInOrder) {
  Image src = Scene(), dst = BlurredScene(), mask = Gray({{0, 255, 128, 64}});
  const Image untouched = dst;
  EXPECT_EQ(roxeSoftFocus(nullptr, dst, mask, 3, 3), kRoxeErrNull);
  EXPECT_EQ(roxeSoftFocus(src, nullptr, mask, 3, 3), kRoxeErrNull);

  PixelArray bad = src.record;
  bad.rowBytes = 11;  // malformed counts as missing
  EXPECT_EQ(roxeSoftFocus(&bad, dst, mask, 3, 3), kRoxeErrNull);
  bad = dst.record;
  bad.pixels = nullptr;
  EXPECT_EQ(roxeSoftFocus(src, &bad, mask, 3, 3), kRoxeErrNull);

  EXPECT_EQ(roxeSoftFocus(mask, dst, mask, 3, 3), kRoxeErrParam);
  EXPECT_EQ(roxeSoftFocus(src, mask, mask, 3, 3), kRoxeErrParam);
  bad = src.record;
  bad.format = 7;
  bad.pixels = nullptr;
  EXPECT_EQ(roxeSoftFocus(&bad, dst, mask, 3, 3), kRoxeErrParam);
  bad = src.record;
  bad.width = 3;
  EXPECT_EQ(roxeSoftFocus(&bad, dst, mask, 3, 3), kRoxeErrParam);
  bad = src.record;
  bad.height = 2;
  EXPECT_EQ(roxeSoftFocus(&bad, dst, mask, 3, 3), kRoxeErrParam);

  bad = mask.record;
  bad.width = 0;
  EXPECT_EQ(roxeSoftFocus(src, dst, &bad, 3, 3), kRoxeErrNull);
  EXPECT_EQ(roxeSoftFocus(src, dst, src, 3, 3), kRoxeErrParam);  // a mask of 24 bits
  bad = mask.record;
  bad.width = 3;
  EXPECT_EQ(roxeSoftFocus(src, dst, &bad, 3, 3), kRoxeErrParam);
  bad = mask.record;
  bad.height = 2;
  EXPECT_EQ(roxeSoftFocus(src, dst, &bad, 3, 3), kRoxeErrParam);
  EXPECT_EQ(dst, untouched);
}

TEST(SoftFocus, EarlierChecksAnswerForLaterOnes) {
  const Image src = Scene(), grey = Gray({{1, 2, 3, 4}});
  Image dst = Scene();
  PixelArray missing = dst.record, bad_mask = grey.record;
  missing.pixels = nullptr;
  bad_mask.rowBytes = 3;
  PixelArray narrow = src.record;
  narrow.width = 3;
  const Image low(kRoxeFormatRGB24, 4, 2);

  // The destination's verification before the source's format.
  EXPECT_EQ(roxeSoftFocus(grey, &missing, nullptr, 3, 3), kRoxeErrNull);
  // Formats and sizes before the mask, each alone and with a mask that is malformed.
  const PixelArray* const masks[] = {nullptr, &bad_mask};
  for (const PixelArray* mask : masks) {
    EXPECT_EQ(roxeSoftFocus(grey, dst, mask, 3, 3), kRoxeErrParam);
    Image grey_dst = grey;
    EXPECT_EQ(roxeSoftFocus(src, grey_dst, mask, 3, 3), kRoxeErrParam);
    EXPECT_EQ(grey_dst, grey);
    EXPECT_EQ(roxeSoftFocus(&narrow, dst, mask, 3, 3), kRoxeErrParam);
    EXPECT_EQ(roxeSoftFocus(low, dst, mask, 3, 3), kRoxeErrParam);
  }
  // The mask's verification before its format.
  PixelArray colour_mask = src.record;
  colour_mask.rowBytes = 11;
  EXPECT_EQ(roxeSoftFocus(src, dst, &colour_mask, 3, 3), kRoxeErrNull);
  EXPECT_EQ(dst, Scene());
}

// The same with whole pictures, one pass after the other.
Image SoftFocusWhole(const Image& src, const Image& mask, int32_t radius, int32_t mask_radius) {
  Image in = src, weights = mask, out = src, blurred = mask;
  EXPECT_EQ(roxe::GaussianBlurA(in, out, radius), 1);
  EXPECT_EQ(roxe::GaussianBlurA(weights, blurred, mask_radius), 1);
  for (int32_t y = 0; y < src.record.height; ++y)
    for (int32_t x = 0; x < src.record.width; ++x)
      for (int32_t c = 0; c < 3; ++c) {
        const int32_t b = out.pixel(x, y)[c], o = src.pixel(x, y)[c], m = *blurred.pixel(x, y);
        out.pixel(x, y)[c] = static_cast<uint8_t>(b + (((o - b) * m) >> 8));
      }
  return out;
}

void CompareWithWholePictures(const Image& src, const Image& mask, int32_t radius,
                              int32_t mask_radius) {
  SCOPED_TRACE(testing::Message() << src.record.width << " x " << src.record.height << " radius "
                                  << radius << ", " << mask_radius);
  Image in = src, weights = mask, dst = src, in_place = src;
  dst.fill(77);
  ASSERT_EQ(roxeSoftFocus(in, dst, weights, radius, mask_radius), kRoxeOK);
  ASSERT_EQ(dst, SoftFocusWhole(src, mask, radius, mask_radius));
  ASSERT_EQ(in, src);
  ASSERT_EQ(weights, mask);

  Image black = mask;
  black.fill(0);
  const Image blurred = SoftFocusWhole(src, black, radius, 1);
  ASSERT_EQ(roxeSoftFocus(in, dst, nullptr, radius, mask_radius), kRoxeOK);
  ASSERT_EQ(dst, blurred);
  ASSERT_EQ(roxeSoftFocus(in_place, in_place, weights, radius, mask_radius), kRoxeOK);
  ASSERT_EQ(in_place, blurred);
}

TEST(SoftFocus, RowByRowIsTheSameAsInWholePictures) {
  std::mt19937 random(6);
  for (int32_t i = 0; i < 300; ++i) {
    const Image src = RandomImage(random, kRoxeFormatRGB24, i % 3 == 0 ? 150 : 25);
    Image mask(kRoxeFormatGray8, src.record.width, src.record.height,
               src.record.width + static_cast<int32_t>(random() % 3));
    mask.randomise(random);
    const auto radius = [&] { return static_cast<int32_t>(random() % (i % 2 == 0 ? 9 : 60)); };
    CompareWithWholePictures(src, mask, radius(), radius());
  }
}

TEST(SoftFocus, LongRowsAndTallWindowsAreTheSameAsInWholePictures) {
  struct {
    int32_t width, height, radius;
  } const cases[] = {{4200, 4, 3},    // stretches of more than 128 columns
                     {5, 700, 256},   // windows of 257 rows, the last that 16 bits hold
                     {7, 700, 257},   // the first that take 32 bits in the last pass only
                     {40, 600, 400},  // windows of more rows, longer than the rows
                     {33, 9, 5000},  {64, 20, INT_MAX}};
  std::mt19937 random(7);
  for (const auto& c : cases) {
    Image src(kRoxeFormatRGB24, c.width, c.height), mask(kRoxeFormatGray8, c.width, c.height);
    src.randomise(random);
    mask.randomise(random);
    src.pixel(0, 0)[0] = 255;
    CompareWithWholePictures(src, mask, c.radius, c.radius - 1);
    src.fill(255);  // the largest sums
    CompareWithWholePictures(src, mask, c.radius, 1);
  }
}

TEST(SoftFocus, OverlappingPicturesAreBlurredWhole) {
  // dst begins one row below src in the same memory. No pass is in place: each row that leaves the
  // window of the first one has been overwritten meanwhile.
  Image memory(kRoxeFormatRGB24, 6, 9);
  std::mt19937 random(8);
  memory.randomise(random);
  Image expected = memory;
  const auto overlap = [](Image& image, PixelArray* src, PixelArray* dst) {
    *src = *dst = image.record;
    src->height = dst->height = 8;
    dst->pixels = image.pixel(0, 1);
  };
  PixelArray src, dst;
  overlap(expected, &src, &dst);
  ASSERT_EQ(roxe::GaussianBlurA(&src, &dst, 3), 1);
  overlap(memory, &src, &dst);
  ASSERT_EQ(roxeSoftFocus(&src, &dst, nullptr, 3, 3), kRoxeOK);
  EXPECT_EQ(memory, expected);
}

TEST(SoftFocus, SumsWrapWhereOverlappingPicturesMakeThemNegative) {
  // One column, dst one row below src. The first pass takes the rows y - 10 ... y + 9: row 0 of dst
  // is 255 / 10 = 25, which overwrites row 1 of src. Rows 1 and 2, which entered as 0, leave as 25
  // and 23 from windows of 12 and 11 rows: -25 / 12 is -3 and -48 / 11 is -5, 253 and 251 as bytes.
  // Rows of dst after the first pass (blue): 25 23 21 19 18 18 18 18 18 18 18 0 253 251.
  std::vector<std::vector<Pixel>> rows(15, {{0, 0, 0}});
  rows[0] = {{255, 120, 0}};
  for (uint8_t y = 1; y < 14; ++y) rows[y] = {{0, 0, static_cast<uint8_t>(10 * y)}};
  Image memory = Bgr(rows);
  PixelArray src = memory.record, dst = memory.record;
  src.height = dst.height = 14;
  dst.pixels = memory.pixel(0, 1);
  ASSERT_EQ(roxeSoftFocus(&src, &dst, nullptr, 20, 0), kRoxeOK);
  EXPECT_EQ(memory, Bgr({{{255, 120, 0}},
                         {{43, 35, 61}},
                         {{44, 36, 61}},
                         {{45, 37, 61}},
                         {{46, 38, 62}},
                         {{46, 38, 62}},
                         {{46, 38, 62}},
                         {{46, 38, 62}},
                         {{46, 38, 62}},
                         {{46, 38, 62}},
                         {{46, 38, 62}},
                         {{46, 38, 62}},
                         {{48, 41, 62}},
                         {{51, 43, 62}},
                         {{53, 45, 62}}}));
}

TEST(SoftFocus, OverlappingPicturesAreBlendedPixelByPixel) {
  // dst begins one pixel after src in the same row. 0 0 240 becomes 0 79 120, 39 66 99, then
  // 52 67 82; blended half with the source as it then is: 0 stays, 52 - 26 = 26, 67 + (26 - 67 =
  // -41 halved: -21) = 46, 82 + (46 - 82 = -36 halved: -18) = 64.
  Image strip = Bgr({{{0, 0, 0}, {0, 0, 0}, {240, 240, 240}, {9, 9, 9}}});
  const Image mask = Gray({{128, 128, 128}});
  PixelArray src = strip.record, dst = strip.record;
  src.width = dst.width = 3;
  dst.pixels += 3;
  ASSERT_EQ(roxeSoftFocus(&src, &dst, mask, 3, 1), kRoxeOK);
  EXPECT_EQ(strip, Bgr({{{0, 0, 0}, {26, 26, 26}, {46, 46, 46}, {64, 64, 64}}}));
}

TEST(SoftFocus, OverlappingLongRowsAreBlendedPixelByPixel) {
  std::mt19937 random(9);
  for (const int32_t shift : {1, 2, 3, 20}) {
    Image memory(kRoxeFormatRGB24, 200, 4), mask(kRoxeFormatGray8, 170, 4, 173);
    memory.randomise(random);
    mask.randomise(random);
    Image expected = memory;
    const auto overlap = [&](Image& image, PixelArray* src, PixelArray* dst) {
      *src = *dst = image.record;
      src->width = dst->width = 170;
      dst->pixels = image.pixel(0, 0) + shift;  // whole pixels, or between them
    };
    PixelArray src, dst;
    overlap(expected, &src, &dst);
    ASSERT_EQ(roxe::GaussianBlurA(&src, &dst, 5), 1);
    for (int32_t y = 0; y < 4; ++y)
      for (int32_t x = 0; x < 170; ++x)
        for (int32_t c = 0; c < 3; ++c) {
          uint8_t& out = dst.pixels[y * 600 + 3 * x + c];
          const int32_t from = src.pixels[y * 600 + 3 * x + c];
          out = static_cast<uint8_t>(out + (((from - out) * *mask.pixel(x, y)) >> 8));
        }
    overlap(memory, &src, &dst);
    ASSERT_EQ(roxeSoftFocus(&src, &dst, mask, 5, 1), kRoxeOK);
    EXPECT_EQ(memory, expected) << shift;
  }
}

// The one level of a white picture of one channel, blurred by windows that hold all of it.
int WhiteAfterOneWindow(int32_t width, int32_t height) {
  Image white(kRoxeFormatGray8, width, height), whole = white;
  white.fill(255);
  const int32_t all = std::max(width, height);
  EXPECT_EQ(roxe::BoxBlurA(white, whole, all, all, all, all), 1);
  const int level = *whole.pixel(0, 0);
  for (const uint8_t byte : whole.pixels()) {
    if (byte == level) continue;
    ADD_FAILURE() << "not of one level";
    break;
  }
  return level;
}

TEST(ExhaustiveSoftFocus, WindowsOfMoreThanTwoToThe23PixelsAreBlack) {
  EXPECT_EQ(WhiteAfterOneWindow(4096, 2048), 255);  // 2^23: exact
  EXPECT_EQ(WhiteAfterOneWindow(4097, 2048), 0);
  EXPECT_EQ(WhiteAfterOneWindow(2896, 2896), 254);  // 8386816, reciprocal 1

  // The same row by row: three windows, each of the whole picture.
  for (const auto& [width, level] : {std::pair{4096, 255}, {4097, 0}, {2896, 252}}) {
    Image picture(kRoxeFormatGray8, width, width == 2896 ? 2896 : 2048);
    picture.fill(255);
    roxe::GaussianStream stream(picture.record, 8201);
    ASSERT_TRUE(stream.allocate());
    for (int32_t y = 0; y < picture.record.height; ++y) {
      const uint8_t* row = stream.next_row(picture.pixel(0, y));
      ASSERT_EQ(std::vector<uint8_t>(row, row + width),
                std::vector<uint8_t>(static_cast<size_t>(width), static_cast<uint8_t>(level)))
          << width << ", row " << y;
    }
  }
}

TEST(SoftFocus, WhiteLosesALevelABlurUnlessWindowsArePowersOfTwo) {
  const auto white = [](int32_t radius, int32_t x, int32_t y) {
    Image picture(kRoxeFormatRGB24, 3 * radius + 9, 3 * radius + 9);
    picture.fill(255);
    EXPECT_EQ(roxeSoftFocus(picture, picture, nullptr, radius, 0), kRoxeOK);
    return int{*picture.pixel(x, y)};
  };
  // 255 * 9 * 932067 >> 23 = 254, then 253 and 252.
  EXPECT_EQ(white(3, 9, 9), 252);
  EXPECT_EQ(white(20, 34, 34), 252);
  // Windows of 4 and 4 keep 255, the one of 9 gives 254.
  EXPECT_EQ(white(2, 7, 7), 254);
  EXPECT_EQ(white(16, 28, 28), 254);
  EXPECT_EQ(white(2, 0, 0), 255);  // windows of 1, 4 and 4
  // 90000 pixels: 8388608 / 90000 = 93.2, 93 * 90000 / 2^23 = 0.9978: 254 and 253; 301 * 301
  // pixels: 92 * 90601 / 2^23 = 0.9936.
  EXPECT_EQ(white(300, 454, 454), 251);
}

TEST(SoftFocus, EveryAllocationMayFail) {
  const Image scene = Scene();
  for (int64_t n = 1; n <= 2; ++n) {
    Image src = scene, dst = scene, mask = Gray({{0, 0, 240, 0}});
    dst.fill(1);
    const Image before = dst, blurred = SoftFocusWhole(scene, mask, 3, 3);
    const AllocationWatch watch(n);
    // Without the mask's rings nothing is written; without the picture's the passes run one after
    // the other.
    EXPECT_EQ(roxeSoftFocus(src, dst, mask, 3, 3), n == 1 ? kRoxeErrInvalid : kRoxeOK);
    EXPECT_EQ(dst, n == 1 ? before : blurred);
    EXPECT_EQ(watch.live_blocks(), 0);
  }
  {
    Image src = scene, dst = scene;
    const AllocationWatch watch;
    EXPECT_EQ(roxeSoftFocus(src, dst, nullptr, 3, 3), kRoxeOK);
    EXPECT_EQ(watch.allocations(), 1);
    EXPECT_EQ(watch.live_blocks(), 0);
  }
  // Where pictures overlap, the mask is blurred into a block of its own size.
  for (int64_t n = 1; n <= 12; ++n) {
    Image dst = scene;
    PixelArray mask = {kRoxeFormatGray8, 4, 1, 4, dst.bytes()};
    const AllocationWatch watch(n);
    EXPECT_EQ(roxeSoftFocus(scene, dst, &mask, 3, 3), n == 1 ? kRoxeErrInvalid : kRoxeOK);
    EXPECT_EQ(watch.live_blocks(), 0);
    if (n == 1) {
      EXPECT_EQ(dst, scene);
    }
  }
}

size_t PeakBytes(int32_t width, int32_t height, bool masked, int32_t radius, int32_t mask_radius) {
  Image src(kRoxeFormatRGB24, width, height), dst = src;
  Image mask(kRoxeFormatGray8, width, height);
  const AllocationWatch watch;
  EXPECT_EQ(roxeSoftFocus(src, dst, masked ? &mask.record : nullptr, radius, mask_radius), kRoxeOK);
  EXPECT_EQ(watch.live_blocks(), 0);
  return watch.peak_bytes();
}

TEST(SoftFocus, TakesTheMemoryThatTheHeaderStates) {
  const size_t picture = 447 + 576 * 3 + 24 * 64;  // 33 columns round up to 64
  const size_t mask = 447 + 576 + 24 * 64;
  EXPECT_EQ(PeakBytes(33, 40, false, 7, 0), picture + 3 * 64 * (15 + 8 + 8 + 8));
  EXPECT_EQ(PeakBytes(33, 40, false, 8, 0), picture + 3 * 64 * (15 + 9 + 9 + 10));
  EXPECT_EQ(PeakBytes(33, 9, false, 8, 0), picture + 3 * 64 * (15 + 9 + 9 + 9));
  EXPECT_EQ(PeakBytes(33, 40, true, 7, 4),
            picture + 3 * 64 * (15 + 8 + 8 + 8) + mask + 64 * (15 + 5 + 5 + 6));
  EXPECT_EQ(PeakBytes(33, 40, true, 7, 1), picture + 3 * 64 * (15 + 8 + 8 + 8));
  EXPECT_EQ(PeakBytes(33, 40, true, 1, 9), 0u);
  // Windows of 257, 257 and 257 rows, then of 258, 258 and 259.
  EXPECT_EQ(PeakBytes(33, 300, false, 257, 0), picture + 3 * 64 * (15 + 3 * 258));
  EXPECT_EQ(PeakBytes(33, 300, false, 258, 0),
            picture + 3 * 64 * (15 + 259 + 259 + 260) + 3 * (64 * 3 + 4 * 3 * 64));
}

TEST(SoftFocus, PicturesThatTouchInMemoryDoNotOverlap) {
  const size_t apart = PeakBytes(33, 40, true, 7, 4);  // overlapping ones take other memory
  std::vector<uint8_t> memory(7 * 33 * 40);
  const PixelArray mask = {kRoxeFormatGray8, 33, 40, 33, memory.data()};
  PixelArray dst = {kRoxeFormatRGB24, 33, 40, 3 * 33, memory.data() + 33 * 40};
  const PixelArray src = {kRoxeFormatRGB24, 33, 40, 3 * 33, memory.data() + 4 * 33 * 40};
  const AllocationWatch watch;
  EXPECT_EQ(roxeSoftFocus(&src, &dst, &mask, 7, 4), kRoxeOK);
  EXPECT_EQ(watch.peak_bytes(), apart);
}

TEST(SoftFocus, MaskOfMoreThan32BitsIsNoMemory) {
  // Records whose rows claim far more memory than there is; they are refused before it is touched.
  uint8_t pixel[3] = {1, 2, 3};
  PixelArray image = {kRoxeFormatRGB24, 65536, 65536, 3 * 65536, pixel};
  PixelArray mask = {kRoxeFormatGray8, 65536, 65536, 65536, pixel};
  EXPECT_EQ(roxeSoftFocus(&image, &image, &mask, 3, 3), kRoxeErrInvalid);
  EXPECT_EQ(pixel[0], 1);
}

}  // namespace
