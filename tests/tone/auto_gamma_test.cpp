#include "tone/auto_gamma.h"

#include <gtest/gtest.h>

#include "support/image.h"
#include "support/rows.h"
#include "support/seams.h"

namespace {

using namespace roxe;

// The counts that differ from zero, as pairs of level and count.
std::vector<std::pair<int, uint32_t>> Levels(const Block<uint32_t>& histogram) {
  std::vector<std::pair<int, uint32_t>> levels;
  for (int v = 0; v < 256; ++v)
    if (histogram[static_cast<size_t>(v)] != 0)
      levels.push_back({v, histogram[static_cast<size_t>(v)]});
  return levels;
}

double GammaOfOneLevel(int level, uint32_t count = 1) {
  uint32_t histogram[256] = {};
  histogram[level] = count;
  return GetMaximumEntropyEstimateGamma(histogram);
}

TEST(AutoGamma, BlackGreenBrightensAllChannelsBySmallestGamma) {
  Image src = Bgr({{{64, 0, 128}, {1, 0, 255}}});
  Image dst = Bgr({{{9, 9, 9}, {9, 9, 9}}});
  EXPECT_EQ(roxeAutoGamma(src, dst, nullptr), kRoxeOK);
  // 255 (v / 255)^0.65: 1 -> 6.95, 64 -> 103.83, 128 -> 162.92
  EXPECT_EQ(dst, Bgr({{{103, 0, 162}, {6, 0, 255}}}));
}

TEST(AutoGamma, WhiteGreenDarkensByLargestGamma) {
  Image image = Bgr({{{64, 255, 128}, {1, 255, 0}}});
  EXPECT_EQ(roxeAutoGamma(image, image, nullptr), kRoxeOK);
  // 255 (v / 255)^1.2: 1 -> 0.33, 64 -> 48.55, 128 -> 111.52
  EXPECT_EQ(image, Bgr({{{48, 255, 111}, {0, 255, 0}}}));
}

TEST(AutoGamma, DestinationBeyondTheSourceKeepsItsContent) {
  Image src = Bgr({{{64, 0, 128}}, {{128, 0, 64}}});
  Image dst = Bgr({{{1, 2, 3}, {4, 5, 6}}, {{7, 8, 9}, {1, 2, 3}}, {{4, 5, 6}, {7, 8, 9}}});
  EXPECT_EQ(roxeAutoGamma(src, dst, nullptr), kRoxeOK);
  EXPECT_EQ(dst,
            Bgr({{{103, 0, 162}, {4, 5, 6}}, {{162, 0, 103}, {1, 2, 3}}, {{4, 5, 6}, {7, 8, 9}}}));
}

TEST(AutoGamma, SmallerDestinationTakesItsCorner) {
  Image src = Bgr({{{64, 0, 128}, {1, 0, 1}}, {{2, 0, 2}, {3, 0, 3}}});
  Image dst = Bgr({{{9, 9, 9}}});
  EXPECT_EQ(roxeAutoGamma(src, dst, nullptr), kRoxeOK);
  EXPECT_EQ(dst, Bgr({{{103, 0, 162}}}));
}

TEST(AutoGamma, EightBitDestinationIsWrittenAsFarAsItsRowsReach) {
  Image src(kRoxeFormatRGB24, 5, 2);
  src.fill(0);
  Image dst = Gray({{7, 7, 7, 7, 7}, {7, 7, 7, 7, 7}});
  EXPECT_EQ(roxeAutoGamma(src, dst, nullptr), kRoxeOK);
  EXPECT_EQ(dst, Gray({{0, 0, 0, 7, 7}, {0, 0, 0, 7, 7}}));  // one pixel of three bytes a row
}

TEST(AutoGamma, RowPaddingIsNeitherCountedNorWritten) {
  Image src(kRoxeFormatRGB24, 3, 2, 14), dst(kRoxeFormatRGB24, 3, 2, 11);
  src.fill(0);  // the padding holds other values, which would move the estimate
  Image expected = dst;
  expected.fill(0);
  EXPECT_EQ(Levels(GetHistogram_RGB24(src.record, nullptr)),
            (std::vector<std::pair<int, uint32_t>>{{0, 6}}));
  EXPECT_EQ(roxeAutoGamma(src, dst, nullptr), kRoxeOK);
  EXPECT_EQ(dst, expected);
}

TEST(AutoGamma, ChecksComeInOrder) {
  Image good(kRoxeFormatRGB24, 2, 2), bad(kRoxeFormatRGB24, 2, 2), gray(kRoxeFormatGray8, 2, 2);
  bad.record.rowBytes = 5;
  const PixelRect empty = {1, 0, 1, 2};
  const Image before = good, gray_before = gray;
  EXPECT_EQ(roxeAutoGamma(nullptr, bad, &empty), kRoxeErrNull);
  EXPECT_EQ(roxeAutoGamma(bad, nullptr, &empty), kRoxeErrInvalid);
  EXPECT_EQ(roxeAutoGamma(good, nullptr, &empty), kRoxeErrNull);
  EXPECT_EQ(roxeAutoGamma(gray, bad, &empty), kRoxeErrInvalid);
  EXPECT_EQ(roxeAutoGamma(gray, good, &empty), kRoxeOK);  // an 8-bit source: no work
  EXPECT_EQ(roxeAutoGamma(good, gray, &empty), kRoxeErrInvalid);
  EXPECT_EQ(good, before);
  EXPECT_EQ(gray, gray_before);
}

TEST(AutoGamma, UnknownFormatsPassWithoutWork) {
  Image good(kRoxeFormatRGB24, 2, 2);
  const Image before = good;
  PixelArray unknown = {7, 2, 2, 6, nullptr};
  EXPECT_EQ(roxeAutoGamma(&unknown, good, nullptr), kRoxeOK);
  EXPECT_EQ(roxeAutoGamma(good, &unknown, nullptr), kRoxeOK);
  EXPECT_EQ(good, before);
}

TEST(AutoGamma, WidthThatWrapsIsCutToTheRow) {
  Image image = Bgr({{{64, 0, 128}, {1, 0, 255}}});
  image.record.width = 1431655766;  // three times that is 2 in 32 bits
  EXPECT_EQ(roxeAutoGamma(image, image, nullptr), kRoxeOK);
  EXPECT_EQ(image.pixels(), (std::vector<uint8_t>{103, 0, 162, 6, 0, 255}));
}

TEST(AutoGamma, RegionDecidesTheGammaForTheWholePicture) {
  Image src = Bgr({{{64, 255, 64}, {64, 0, 64}}, {{64, 255, 64}, {64, 255, 64}}});
  Image dst = src;
  const PixelRect black = {1, 0, 2, 1};
  EXPECT_EQ(roxeAutoGamma(src, dst, &black), kRoxeOK);
  EXPECT_EQ(dst, Bgr({{{103, 255, 103}, {103, 0, 103}}, {{103, 255, 103}, {103, 255, 103}}}));
}

TEST(AutoGamma, NoAllocationThatFailsIsLeakedOrWrites) {
  const Image src = Bgr({{{64, 0, 128}}});
  for (int64_t fail_at = 1; fail_at <= 2; ++fail_at) {
    Image dst = Bgr({{{9, 9, 9}}});
    AllocationWatch watch(fail_at);
    EXPECT_EQ(roxeAutoGamma(src, dst, nullptr), kRoxeErrInvalid);
    EXPECT_EQ(watch.live_blocks(), 0);
    EXPECT_EQ(dst, Bgr({{{9, 9, 9}}}));
  }
  Image dst = Bgr({{{9, 9, 9}}});
  AllocationWatch watch;
  EXPECT_EQ(roxeAutoGamma(src, dst, nullptr), kRoxeOK);
  EXPECT_EQ(watch.allocations(), 2);
  EXPECT_EQ(watch.live_blocks(), 0);
  EXPECT_EQ(watch.peak_bytes(), 1024u);  // the histogram is gone before the curve is made
}

TEST(AutoGamma, OverlappingPicturesAreCorrectedInPixelOrder) {
  Image strip = Bgr({{{64, 0, 64}, {128, 0, 128}, {1, 0, 1}}});
  PixelArray src = strip.record, dst = strip.record;
  src.width = dst.width = 2;
  dst.pixels += 3;
  const PixelRect first = {0, 0, 1, 1};
  EXPECT_EQ(roxeAutoGamma(&src, &dst, &first), kRoxeOK);
  // The second pixel is read after it became 103: 255 (103 / 255)^0.65 = 141.46.
  EXPECT_EQ(strip, Bgr({{{64, 0, 64}, {103, 0, 103}, {141, 0, 141}}}));
}

// ---- histogram

TEST(Histogram, CountsGreen) {
  const Image image = Bgr({{{1, 5, 2}, {5, 7, 5}, {5, 5, 7}}, {{0, 0, 0}, {9, 255, 9}, {9, 5, 9}}});
  EXPECT_EQ(Levels(GetHistogram_RGB24(image.record, nullptr)),
            (std::vector<std::pair<int, uint32_t>>{{0, 1}, {5, 3}, {7, 1}, {255, 1}}));
}

TEST(Histogram, NegativeSidesCountAsZero) {
  const Image image = Bgr({{{0, 1, 0}, {0, 2, 0}}, {{0, 3, 0}, {0, 4, 0}}});
  const PixelRect region = {-5, INT32_MIN, 1, 1};
  EXPECT_EQ(Levels(GetHistogram_RGB24(image.record, &region)),
            (std::vector<std::pair<int, uint32_t>>{{1, 1}}));
  const PixelRect left_of_it = {-5, 0, -2, 1};
  EXPECT_EQ(GetHistogram_RGB24(image.record, &left_of_it), nullptr);
}

TEST(Histogram, EmptyRegionsGiveNone) {
  const Image image = Bgr({{{0, 1, 0}, {0, 2, 0}}});
  for (const PixelRect region :
       {PixelRect{1, 0, 1, 1}, PixelRect{2, 0, 1, 1}, PixelRect{0, 1, 2, 1}, PixelRect{0, 1, 2, 0}})
    EXPECT_EQ(GetHistogram_RGB24(image.record, &region), nullptr);
}

TEST(Histogram, RegionPastTheRightEdgeGoesOnInTheNextRow) {
  const Image image = Bgr({{{0, 1, 0}, {0, 2, 0}}, {{0, 3, 0}, {0, 4, 0}}});
  const PixelRect region = {1, 0, 3, 1};
  EXPECT_EQ(Levels(GetHistogram_RGB24(image.record, &region)),
            (std::vector<std::pair<int, uint32_t>>{{2, 1}, {3, 1}}));
}

TEST(Histogram, RegionIsNeverReadPastTheBytesOfThePicture) {
  const Image image = Bgr({{{0, 1, 0}, {0, 2, 0}}, {{0, 3, 0}, {0, 4, 0}}});
  const PixelRect all = {0, 0, INT32_MAX, INT32_MAX};
  EXPECT_EQ(Levels(GetHistogram_RGB24(image.record, &all)),  // four from row 0, two from row 1
            (std::vector<std::pair<int, uint32_t>>{{1, 1}, {2, 1}, {3, 2}, {4, 2}}));
  const PixelRect below = {0, 2, 1, 3}, right = {4, 0, 9, 9};
  EXPECT_TRUE(Levels(GetHistogram_RGB24(image.record, &below)).empty());
  EXPECT_TRUE(Levels(GetHistogram_RGB24(image.record, &right)).empty());
}

TEST(Histogram, RowsThatGoOnInLaterOnesCountTwice) {
  // Row 0 is 1 2 3, row 1 is 4 5 6, row 2 is 7 8 9. From column 1 on, five pixels a row:
  // 2 3 4 5 6, 5 6 7 8 9, 8 9.
  const Image image = Bgr({{{0, 1, 0}, {0, 2, 0}, {0, 3, 0}},
                           {{0, 4, 0}, {0, 5, 0}, {0, 6, 0}},
                           {{0, 7, 0}, {0, 8, 0}, {0, 9, 0}}});
  const PixelRect region = {1, 0, 6, 3};
  EXPECT_EQ(Levels(GetHistogram_RGB24(image.record, &region)),
            (std::vector<std::pair<int, uint32_t>>{
                {2, 1}, {3, 1}, {4, 1}, {5, 2}, {6, 2}, {7, 1}, {8, 2}, {9, 2}}));
}

TEST(Histogram, RowsOfBrokenPixelsAreInStepWithEveryThird) {
  // Four rows of four bytes: row 3 starts four pixels after row 0, the others between pixels.
  Image image(kRoxeFormatGray8, 16, 1);
  for (int32_t i = 0; i < 16; ++i) image.bytes()[i] = static_cast<uint8_t>(i);
  const PixelArray record = {kRoxeFormatRGB24, 1, 4, 4, image.record.pixels};
  const PixelRect region = {0, 0, 16, 4};
  // Row 0: 1 4 7 10 13; row 1: 5 8 11 14; row 2: 9 12 15; row 3: 13.
  EXPECT_EQ(Levels(GetHistogram_RGB24(record, &region)),
            (std::vector<std::pair<int, uint32_t>>{{1, 1},
                                                   {4, 1},
                                                   {5, 1},
                                                   {7, 1},
                                                   {8, 1},
                                                   {9, 1},
                                                   {10, 1},
                                                   {11, 1},
                                                   {12, 1},
                                                   {13, 2},
                                                   {14, 1},
                                                   {15, 1}}));
}

int64_t pixels_counted;
void CountGreenAndPixels(const uint8_t* src, int32_t count, uint32_t (*counts)[256]) {
  pixels_counted += count;
  kPlainRows.count_green(src, count, counts);
}

TEST(Histogram, RegionFarPastTheRightEdgeIsReadOnce) {
  RowKernels rows = Rows();
  rows.count_green = CountGreenAndPixels;
  const RowsInstead instead(rows);
  Image image(kRoxeFormatRGB24, 2000, 100);
  image.fill(7);
  const PixelRect far = {0, 0, INT32_MAX, INT32_MAX};
  pixels_counted = 0;
  // Each row and all that follow it: 2000 * (1 + 2 + ... + 100).
  EXPECT_EQ(Levels(GetHistogram_RGB24(image.record, &far)),
            (std::vector<std::pair<int, uint32_t>>{{7, 10100000}}));
  EXPECT_EQ(pixels_counted, 200000);

  // Rows of 6001 bytes: each byte is green for one row in three.
  Image broken(kRoxeFormatGray8, 6001, 99);
  broken.fill(7);
  broken.record.format = kRoxeFormatRGB24;
  broken.record.width = 2000;
  pixels_counted = 0;
  GetHistogram_RGB24(broken.record, &far);
  EXPECT_GT(pixels_counted, 6001 * 97);
  EXPECT_LE(pixels_counted, 6001 * 99);
}

TEST(Histogram, LastPixelMayEndWithItsGreenByte) {
  Image image(kRoxeFormatRGB24, 3, 1);
  PixelArray cut = {kRoxeFormatRGB24, 2, 1, 8, image.record.pixels + 1};
  image.bytes()[2] = 10, image.bytes()[5] = 20, image.bytes()[8] = 30;
  const PixelRect region = {0, 0, 3, 1};
  EXPECT_EQ(Levels(GetHistogram_RGB24(cut, &region)),
            (std::vector<std::pair<int, uint32_t>>{{10, 1}, {20, 1}, {30, 1}}));
}

TEST(Histogram, MalformedRecordsGiveNone) {
  const Image image(kRoxeFormatRGB24, 2, 2);
  PixelArray bad = image.record;
  bad.pixels = nullptr;
  EXPECT_EQ(GetHistogram_RGB24(bad, nullptr), nullptr);
  bad = image.record, bad.width = 0;
  EXPECT_EQ(GetHistogram_RGB24(bad, nullptr), nullptr);
  bad = image.record, bad.height = 0;
  EXPECT_EQ(GetHistogram_RGB24(bad, nullptr), nullptr);
  bad = image.record, bad.rowBytes = 0;
  EXPECT_EQ(GetHistogram_RGB24(bad, nullptr), nullptr);
}

// ---- estimate

TEST(GammaEstimate, ExtremesWinAtTheEnds) {
  EXPECT_EQ(GammaOfOneLevel(0), 0.65f);
  EXPECT_EQ(GammaOfOneLevel(255), 0x1.33332ap+0);  // the 56th and last candidate, 1.1999995
}

TEST(GammaEstimate, OneLevelWinsWhereItsSlopeIsLargest) {
  // The slope g x^(g - 1) is largest at g = -1 / ln x: 0.697 for 61 / 256, 0.998 for 94 / 256.
  // The steps of 0.01 miss both by their rounding.
  EXPECT_EQ(GammaOfOneLevel(60), 0x1.666664p-1);  // 0.70 less 7e-8, after 5 steps
  EXPECT_EQ(GammaOfOneLevel(93), 0x1.fffff4p-1);  // 1.00 less 4e-7, after 35
}

TEST(GammaEstimate, HistogramWeighsTheSlopes) {
  // Equal weights of 1 / 16 and 1: the slopes sum to 0.65 + 0.65 * 16^0.35 = 2.37 at the lower end
  // and 1.2 + 1.2 * 16^-0.2 = 1.89 at the upper one, less between. Twice the weight of the bright
  // level turns it round: 3.02 against 3.09.
  uint32_t histogram[256] = {};
  histogram[15] = histogram[255] = 1000;
  EXPECT_EQ(GetMaximumEntropyEstimateGamma(histogram), 0.65f);
  histogram[255] = 2000;
  EXPECT_EQ(GetMaximumEntropyEstimateGamma(histogram), 0x1.33332ap+0);
}

TEST(GammaEstimate, SmallestOfEqualsWins) {
  // Searched for: the scores at both ends are 0x1.d8e242p+12, and none between is larger.
  uint32_t histogram[256] = {};
  histogram[15] = 2584;
  histogram[255] = 4821;
  EXPECT_EQ(GetMaximumEntropyEstimateGamma(histogram), 0.65f);
}

TEST(GammaEstimate, EmptyHistogramGivesOne) { EXPECT_EQ(GammaOfOneLevel(0, 0), 1.0); }

TEST(GammaEstimate, CountsAreSigned) { EXPECT_EQ(GammaOfOneLevel(0, 0x80000000u), 1.0); }

// ---- the curve

TEST(ApplyGamma, GammaOneIsTheIdentityUpToTruncation) {
  Image image(kRoxeFormatRGB24, 256, 1);
  for (int v = 0; v < 256; ++v)
    for (int c = 0; c < 3; ++c) image.pixel(v, 0)[c] = static_cast<uint8_t>(v);
  EXPECT_EQ(ApplyGamma_RGB24(image.record, image.record, 1.0), 1);
  for (int v = 0; v < 256; ++v) {
    const float level = static_cast<float>(v) / 255.0f * 255.0f;  // may fall just short of v
    EXPECT_EQ(image.pixel(v, 0)[1], v - (level < static_cast<float>(v))) << v;
  }
}

TEST(ApplyGamma, ReportsThatThereIsNoMemory) {
  Image image = Bgr({{{64, 0, 128}}});
  AllocationWatch watch(1);
  EXPECT_EQ(ApplyGamma_RGB24(image.record, image.record, 0.65), 0);
  EXPECT_EQ(image, Bgr({{{64, 0, 128}}}));
}

}  // namespace
