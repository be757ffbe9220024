// The blur family against the plain reference: every byte and every bit, on random and hostile
// input. The reference itself is first held against literals.
#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

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

}  // namespace
