#include "tone/shadow_highlight.h"

#include <gtest/gtest.h>

#include <vector>

#include "support/image.h"
#include "support/seams.h"

namespace {

using namespace roxe;

std::vector<float> Identity(size_t n) {
  std::vector<float> table(n);
  for (size_t i = 0; i < n; ++i) table[i] = static_cast<float>(i);
  return table;
}

template <class Amount>
std::vector<float> Curve(void (*make)(float*, int32_t, Amount), Amount amount) {
  std::vector<float> table(256);
  make(table.data(), 256, amount);
  return table;
}

// ---- curves. Expected levels: the curve's own point at t = 1/2, worked out by hand, and its
// tangent.

TEST(ShadowCurve, AmountZeroIsTheIdentity) {
  EXPECT_EQ(Curve(lighten_shadow, 0u), Identity(256));
  EXPECT_EQ(Curve(darken_highlight, 0u), Identity(256));
}

TEST(ShadowCurve, SmallAmount) {
  // 10: P1 (61.071, 103.821), P2 79.107; (78.817, 94.848) with slope 0.8125.
  const std::vector<float> table = Curve(lighten_shadow, 10u);
  EXPECT_EQ(table[0], 0.0f);
  EXPECT_NEAR(table[79], 94.997, 0.02);
  EXPECT_EQ(table[210], 210.0f);
  EXPECT_EQ(table[255], 255.0f);
}

TEST(ShadowCurve, AmountAboveTen) {
  // 50: P1 (35.071, 157.821), P2 104.107; (78.442, 124.473) with slope 0.5601.
  const std::vector<float> table = Curve(lighten_shadow, 50u);
  EXPECT_NEAR(table[78], 124.225, 0.02);
  EXPECT_GT(table[209], 209.0f);
  EXPECT_EQ(table[210], 210.0f);
}

TEST(HighlightCurve, IsTheShadowCurveTurnedRound) {
  const std::vector<float> table = Curve(darken_highlight, 50u);
  EXPECT_NEAR(table[177], 255 - 124.225, 0.02);
  EXPECT_EQ(table[0], 0.0f);
  EXPECT_EQ(table[45], 45.0f);
  EXPECT_LT(table[46], 46.0f);
  EXPECT_EQ(table[255], 255.0f);
}

TEST(MidtoneCurve, AmountZeroIsTheIdentity) {
  EXPECT_EQ(Curve(midtone_contrast, 0), Identity(256));
}

TEST(MidtoneCurve, NegativeAmountsFlattenAround127) {
  // -50: P1 (207.857, 179.732), P2 170.119; (188.179, 177.632) with slope 1.357.
  const std::vector<float> table = Curve(midtone_contrast, -50);
  EXPECT_NEAR(table[188], 177.389, 0.03);
  EXPECT_NEAR(table[67], 255 - 177.389, 0.03);
  EXPECT_EQ(table[244], 244.0f);
  EXPECT_EQ(table[11], 11.0f);
  EXPECT_LT(table[243], 243.0f);
}

TEST(MidtoneCurve, PositiveAmountsSteepen) {
  // 50: P1 (165.3, 212.55), P2 233.4; (195.45, 213.169) with slope 0.7384.
  const std::vector<float> table = Curve(midtone_contrast, 50);
  EXPECT_NEAR(table[195], 212.837, 0.03);
  EXPECT_EQ(table[60], 255.0f - table[195]);
  EXPECT_EQ(table[128], 255.0f - table[127]);
  EXPECT_EQ(table[240], 240.0f);
  EXPECT_EQ(table[15], 15.0f);
}

TEST(ToneCurvesOfTheOperation, AmountsOfAnySizeGiveNumbers) {
  for (const uint32_t amount : {1u, 11u, 100u, 1000u, 0x7fffffffu, UINT32_MAX}) {
    for (const float level : Curve(lighten_shadow, amount)) EXPECT_EQ(level, level);
    for (const float level : Curve(darken_highlight, amount)) EXPECT_EQ(level, level);
  }
  for (const int32_t amount : {INT32_MIN, -1000, -100, -1, 1, 100, 1000, INT32_MAX})
    for (const float level : Curve(midtone_contrast, amount)) EXPECT_EQ(level, level);
}

// ---- stages

TEST(GetIntensity, WeighsTheChannelsWithFusedSums) {
  const Image image =
      Bgr({{{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}, {{0, 0, 1}, {255, 255, 255}, {245, 124, 206}}});
  float plane[6];
  get_intensity(plane, image.record);
  EXPECT_EQ(plane[0], 0.0f);
  EXPECT_EQ(plane[1], 0.114f);
  EXPECT_EQ(plane[2], 0.587f);
  EXPECT_EQ(plane[3], 0.299f);
  EXPECT_EQ(plane[4], 255.0f);
  EXPECT_EQ(plane[5], 0x1.449fbep+7f);  // with each product rounded first 0x1.449fcp+7
}

TEST(GetIntensity, OfARecordWithoutPixelsIsNothing) {
  float plane[1] = {9};
  get_intensity(plane, {7, 1, 1, 3, nullptr});
  EXPECT_EQ(plane[0], 9);
}

TEST(UpdateIntensity, WeighsByTheBlurredIntensity) {
  const std::vector<float> combined = Identity(256), midtone = Identity(512);
  float plane[4] = {100, 100, 60, 0};
  const float blurred[4] = {100, 60, 100, 0};
  update_intensity(plane, blurred, 4, combined.data(), midtone.data());
  // Ratio 1; (6000 + 160^2) / (3600 + 160^2) * 100 = 108.2; (6000 + 160^2) / (10000 + 160^2) * 60 =
  // 53.3; and 0 / 0 is kept away by the 0.0001.
  EXPECT_EQ(plane[0], 0.0f);
  EXPECT_EQ(plane[1], 8.0f);
  EXPECT_EQ(plane[2], -7.0f);
  EXPECT_EQ(plane[3], 0.0f);
}

TEST(UpdateIntensity, LevelsOutsideTheTableAreClamped) {
  std::vector<float> combined = Identity(256), midtone(512, 255.0f);
  midtone[0] = 3.0f;
  combined[200] = 250.0f;
  combined[10] = 1e9f;
  combined[11] = -1e9f;
  float plane[3] = {200, 10, 11};
  const float blurred[3] = {100, 10, 11};
  update_intensity(plane, blurred, 3, combined.data(), midtone.data());
  EXPECT_EQ(plane[0], 55.0f);  // 250 * (20000 + 300^2) / (10000 + 300^2) = 275
  EXPECT_EQ(plane[1], 245.0f);
  EXPECT_EQ(plane[2], -8.0f);
}

TEST(UpdateIntensity, OnePlaneUsesTheMidtoneCurveAlone) {
  std::vector<float> combined(256, 1000.0f), midtone = Identity(512);
  midtone[60] = 70.0f;
  float plane[2] = {60.5f, 255.0f};
  update_intensity(plane, plane, 2, combined.data(), midtone.data());
  EXPECT_EQ(plane[0], 9.5f);
  EXPECT_EQ(plane[1], 0.0f);
}

TEST(AdjustHistogram, AddsTruncatesAndClamps) {
  const Image src = Bgr({{{0, 1, 200}, {10, 20, 30}}, {{255, 254, 253}, {100, 100, 100}}});
  Image dst(kRoxeFormatRGB24, 2, 2, 9);
  const float delta[4] = {-0.9f, 60.75f, 1.5f, -1000.0f};
  adjust_histogram(src.record, dst.record, delta);
  EXPECT_EQ(dst.pixels(), (std::vector<uint8_t>{0, 0, 199, 70, 80, 90,  //
                                                255, 255, 254, 0, 0, 0}));
}

// ---- the operation

TEST(ShadowHighlight, AmountsZeroLowerPixelsOfFractionalIntensity) {
  // Intensities 0, 11.4, 29.9, 21.85, a grey that comes out whole and one that does not (27).
  Image image =
      Bgr({{{0, 0, 0}, {100, 0, 0}, {0, 0, 100}}, {{10, 20, 30}, {26, 26, 26}, {27, 27, 27}}});
  EXPECT_EQ(roxeShadowHighlight(image, image, 0, 0, 0), kRoxeOK);
  EXPECT_EQ(image,
            Bgr({{{0, 0, 0}, {99, 0, 0}, {0, 0, 99}}, {{9, 19, 29}, {26, 26, 26}, {26, 26, 26}}}));
}

Image Red100(int32_t width, int32_t height) {
  Image image(kRoxeFormatRGB24, width, height);
  image.fill(0);
  for (int32_t y = 0; y < height; ++y)
    for (int32_t x = 0; x < width; ++x) image.pixel(x, y)[2] = 100;
  return image;
}

void ExpectAll(const Image& image, Pixel pixel) {
  for (int32_t y = 0; y < image.record.height; ++y)
    for (int32_t x = 0; x < image.record.width; ++x) {
      const uint8_t* p = image.pixel(x, y);
      EXPECT_EQ((std::vector<int>{p[0], p[1], p[2]}),
                (std::vector<int>{pixel.blue, pixel.green, pixel.red}))
          << x << ' ' << y;
    }
}

TEST(ShadowHighlight, UniformPictureMovesByItsCurve) {
  // Intensity 29.9; the shadow curve of 50 gives 78.8 at 29 (by hand, from its points at t = 0.22
  // and 0.23), so 78 - 29.9 = 48.1 is added.
  Image image = Red100(12, 11);
  EXPECT_EQ(roxeShadowHighlight(image, image, 50, 0, 0), kRoxeOK);
  ExpectAll(image, {48, 48, 148});
}

TEST(ShadowHighlight, EvenBlurLengthBrightensTheSurroundings) {
  // 9 pixels: length 8, surroundings 29.9 * 81 / 64 = 37.84, ratio (29.9 * 37.84 + 67.74^2) /
  // (37.84^2 + 67.74^2) = 0.9501; 78.8 * 0.9501 = 74.9, so 74 - 29.9 = 44.1 is added.
  Image image = Red100(9, 20);
  EXPECT_EQ(roxeShadowHighlight(image, image, 50, 0, 0), kRoxeOK);
  ExpectAll(image, {44, 44, 144});
}

TEST(ShadowHighlight, TwoPixelsBlurNothing) {
  Image image = Red100(2, 30);
  EXPECT_EQ(roxeShadowHighlight(image, image, 50, 0, 0), kRoxeOK);
  ExpectAll(image, {48, 48, 148});
}

TEST(ShadowHighlight, OnePixelSkipsTheBlurButNotTheShadows) {
  for (const auto& [width, height] : {std::pair{1, 1}, {1, 13}, {300, 1}}) {
    Image image = Red100(width, height);
    EXPECT_EQ(roxeShadowHighlight(image, image, 50, 0, 0), kRoxeOK);
    ExpectAll(image, {48, 48, 148});
  }
}

TEST(ShadowHighlight, BlurLengthIsThatOfTheCommonArea) {
  const Image src = Red100(30, 9);
  Image dst(kRoxeFormatRGB24, 20, 30);
  const Image before = dst;
  EXPECT_EQ(roxeShadowHighlight(src, dst, 50, 0, 0), kRoxeOK);
  for (int32_t y = 0; y < 30; ++y)
    for (int32_t i = 0; i < 60; ++i) {
      const int expected = y >= 9 ? before.pixel(0, y)[i] : (i % 3 == 2 ? 144 : 44);
      EXPECT_EQ(dst.pixel(0, y)[i], expected) << i << ' ' << y;
    }
}

TEST(ShadowHighlight, RecordsOfAnyFormatAreUsedAs24Bit) {
  Image image = Gray({{0, 0, 100, 7}});
  EXPECT_EQ(roxeShadowHighlight(image, image, 50, 0, 0), kRoxeOK);
  EXPECT_EQ(image, Gray({{48, 48, 148, 7}}));
}

TEST(ShadowHighlight, StreamedFormGivesTheBytesOfTheWholePlanes) {
  std::mt19937 random(4);
  const auto amount = [&](uint32_t n) { return random() % 3 == 0 ? 0 : random() % n; };
  for (int round = 0; round < 1500; ++round) {
    const int32_t largest = round % 10 == 0 ? 600 : 45;
    const int32_t width = 1 + static_cast<int32_t>(random() % static_cast<uint32_t>(largest));
    const int32_t height = 1 + static_cast<int32_t>(random() % 45);
    Image src(kRoxeFormatRGB24, width, height, 3 * width + static_cast<int32_t>(random() % 9));
    src.randomise(random);
    if (round % 4 == 0)  // dark pictures, down to black
      for (size_t i = 0; i < src.size(); ++i) src.bytes()[i] >>= random() % 9;
    Image streamed(kRoxeFormatRGB24, width, height), whole = streamed, in_place = src;
    const uint32_t shadow = amount(101), highlight = amount(101);
    const int32_t midtone = static_cast<int32_t>(amount(201)) - 100;
    shadow_highlight(src.record, whole.record, shadow, highlight, midtone);
    shadow_highlight_streamed(src.record, streamed.record, shadow, highlight, midtone);
    EXPECT_EQ(streamed, whole) << shadow << ' ' << highlight << ' ' << midtone;
    EXPECT_EQ(roxeShadowHighlight(in_place, in_place, shadow, highlight, midtone), kRoxeOK);
    EXPECT_EQ(in_place.pixels(), whole.pixels());
  }
}

// Rows are taken 1024 pixels at a time.
TEST(ShadowHighlight, LongRowsGiveTheBytesOfTheWholePlanes) {
  std::mt19937 random(24);
  for (const int32_t width : {1024, 1025, 2500})
    for (const int32_t height : {1, 12})
      for (const uint32_t shadow : {0u, 40u}) {
        Image src(kRoxeFormatRGB24, width, height), whole(kRoxeFormatRGB24, width, height);
        src.randomise(random);
        Image streamed = whole;
        shadow_highlight(src.record, whole.record, shadow, 0, 30);
        shadow_highlight_streamed(src.record, streamed.record, shadow, 0, 30);
        EXPECT_EQ(streamed, whole) << width << " x " << height << ' ' << shadow;
      }
}

TEST(ShadowHighlight, OverlappingPicturesUseTheIntensitiesFromBefore) {
  Image strip = Red100(3, 1);
  PixelArray src = strip.record, dst = strip.record;
  src.width = dst.width = 2;
  dst.pixels += 3;
  EXPECT_EQ(roxeShadowHighlight(&src, &dst, 50, 0, 0), kRoxeOK);
  // Both add 48.1; the second pixel is read after it became (48, 48, 148).
  EXPECT_EQ(strip, Bgr({{{0, 0, 100}, {48, 48, 148}, {96, 96, 196}}}));
}

TEST(ShadowHighlight, MissingRecordsAndPixelsAreLeftAlone) {
  Image image = Red100(3, 3);
  const Image before = image;
  PixelArray spoilt = image.record;
  EXPECT_EQ(roxeShadowHighlight(nullptr, image, 50, 0, 0), kRoxeOK);
  EXPECT_EQ(roxeShadowHighlight(image, nullptr, 50, 0, 0), kRoxeOK);
  EXPECT_EQ(roxeShadowHighlight(nullptr, nullptr, 50, 0, 0), kRoxeOK);
  spoilt.pixels = nullptr;
  EXPECT_EQ(roxeShadowHighlight(&spoilt, image, 50, 0, 0), kRoxeOK);
  EXPECT_EQ(roxeShadowHighlight(image, &spoilt, 50, 0, 0), kRoxeOK);
  spoilt = image.record, spoilt.height = 0;
  EXPECT_EQ(roxeShadowHighlight(image, &spoilt, 50, 0, 0), kRoxeOK);
  spoilt = image.record, spoilt.rowBytes = 2;
  EXPECT_EQ(roxeShadowHighlight(&spoilt, &spoilt, 50, 0, 0), kRoxeOK);
  EXPECT_EQ(image, before);
}

TEST(ShadowHighlight, PicturesTooLargeForTwoPlanesAreRefused) {
  // The record claims 40000 * 40000 pixels; nothing of them is touched, so one is enough.
  Image image = Red100(1, 1);
  PixelArray huge = {kRoxeFormatRGB24, 40000, 40000, 120000, image.record.pixels};
  for (const uint32_t shadow : {0u, 50u}) {
    AllocationWatch watch;
    EXPECT_EQ(roxeShadowHighlight(&huge, &huge, shadow, 0, 0), kRoxeOK);
    shadow_highlight(huge, huge, shadow, 0, 0);
    EXPECT_EQ(watch.allocations(), 0);
    EXPECT_EQ(image, Red100(1, 1));
  }
}

TEST(ShadowHighlight, WithoutMemoryNothingIsTouched) {
  for (const auto form : {shadow_highlight, shadow_highlight_streamed}) {
    Image image = Red100(12, 12);
    AllocationWatch watch(1);
    form(image.record, image.record, 50, 0, 0);
    EXPECT_EQ(watch.live_blocks(), 0);
    ExpectAll(image, {0, 0, 100});
  }
}

TEST(ShadowHighlight, OperationWithoutMemoryIsStillOk) {
  const Image before = Red100(12, 12);
  for (const int32_t rows_apart : {0, 1}) {  // row by row, and by whole planes
    Image image = Red100(12, 12);
    PixelArray src = image.record, dst = image.record;
    src.height = dst.height = 11;
    dst.pixels = image.pixel(0, rows_apart);
    const AllocationWatch watch(1);
    EXPECT_EQ(roxeShadowHighlight(&src, &dst, 50, 0, 0), kRoxeOK);
    EXPECT_EQ(watch.allocations(), 1);
    EXPECT_EQ(watch.live_blocks(), 0);
    EXPECT_EQ(image, before);
  }
}

TEST(ShadowHighlight, MemoryIsAHundredBytesAColumn) {
  Image image = Red100(17, 50);
  {
    AllocationWatch watch;
    roxeShadowHighlight(image, image, 50, 0, 0);
    EXPECT_EQ(watch.live_blocks(), 0);
    EXPECT_EQ(watch.peak_bytes(), 100u * 17);
  }
  {
    AllocationWatch watch;
    roxeShadowHighlight(image, image, 0, 0, 50);  // nothing to blur
    EXPECT_EQ(watch.allocations(), 0);
  }
  AllocationWatch watch;
  PixelArray shifted = image.record;
  shifted.pixels += image.record.rowBytes;
  shifted.height -= 1;
  roxeShadowHighlight(image, &shifted, 50, 0, 0);  // overlapping: two planes
  EXPECT_EQ(watch.live_blocks(), 0);
  EXPECT_EQ(watch.peak_bytes(), 8u * 17 * 49);
}

}  // namespace
