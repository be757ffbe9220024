#include "frame/runtime.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>

#include "frame/numbers.h"
#include "support/seams.h"

namespace {

using namespace roxe;

TEST(Memory, BlocksAreZeroFilled) {
  uint8_t* block = static_cast<uint8_t*>(XRMalloc(16));
  ASSERT_NE(block, nullptr);
  for (int i = 0; i < 16; ++i) EXPECT_EQ(block[i], 0);
  XRFree(block);
}

TEST(Memory, SizeZeroGivesABlockAndNullIsFreedHarmlessly) {
  AllocationWatch watch;
  void* block = XRMalloc(0);
  EXPECT_NE(block, nullptr);
  EXPECT_EQ(watch.live_blocks(), 1);
  EXPECT_EQ(watch.peak_bytes(), 1u);  // not 0, for which the platform may give null
  XRFree(block);
  EXPECT_EQ(watch.live_blocks(), 0);
  XRFree(nullptr);
}

TEST(Memory, ReAllocAndMemMoveDoNothing) {
  uint8_t block[4] = {1, 2, 3, 4};
  const uint8_t other[4] = {9, 9, 9, 9};
  EXPECT_EQ(XRReAlloc(block, 100), block);
  EXPECT_EQ(XRMemMove(block, other, 4), block);
  const uint8_t untouched[4] = {1, 2, 3, 4};
  EXPECT_EQ(std::memcmp(block, untouched, 4), 0);
}

TEST(Memory, SetAndCopy) {
  uint8_t block[4] = {1, 2, 3, 4};
  EXPECT_EQ(XRMemSet(block, 7, 2), block);
  const uint8_t other[1] = {9};
  EXPECT_EQ(XRMemCpy(block + 3, other, 1), block + 3);
  const uint8_t expected[4] = {7, 7, 3, 9};
  EXPECT_EQ(std::memcmp(block, expected, 4), 0);
}

TEST(Memory, BlocksOfAnySizeThatFits32BitsAreAskedFor) {
  AllocationWatch watch(1);  // there is no memory, in case the machine would have it
  EXPECT_FALSE(make_block<uint32_t>((uint64_t{1} << 30) - 1));
  EXPECT_EQ(watch.allocations(), 1);
}

TEST(Memory, BlocksThatDoNotFit32BitsAreNotHad) {
  AllocationWatch watch;
  EXPECT_FALSE(make_block<uint32_t>(uint64_t{1} << 30));
  EXPECT_FALSE(make_block<uint32_t>(UINT64_MAX));
  EXPECT_EQ(watch.allocations(), 0);
  EXPECT_TRUE(make_block<uint32_t>(4));
  EXPECT_EQ(watch.allocations(), 1);
  EXPECT_EQ(watch.peak_bytes(), 16u);
  EXPECT_EQ(watch.live_blocks(), 0);
}

TEST(Memory, ChosenAllocationFails) {
  AllocationWatch watch(2);
  EXPECT_TRUE(make_block<uint8_t>(1));
  EXPECT_FALSE(make_block<uint8_t>(1));
  EXPECT_TRUE(make_block<uint8_t>(1));
}

TEST(Mathematics, ResultsAreRoundedToSingle) {
  EXPECT_EQ(XRPow(0.5, 2.0), 0.25f);
  EXPECT_EQ(XRSin(1.0), 0.8414709848f);
  EXPECT_EQ(XRCos(1.0), 0.5403023059f);
  EXPECT_EQ(XRTan(1.0), 1.557407725f);
  EXPECT_EQ(XRASin(1.0), 1.570796327f);
  EXPECT_EQ(XRATan(-1.0), -0.7853981634f);
  EXPECT_EQ(XRSqrt(2.0), 1.414213562f);
  EXPECT_EQ(XRLog(10.0), 2.302585093f);
  EXPECT_EQ(XRLog10(1000.0), 3.0f);
  EXPECT_EQ(XRExp(1.0), 2.718281828f);
  EXPECT_TRUE(std::isnan(XRSqrt(-1.0)));
}

TEST(Mathematics, ArcCosineIsTheArcSine) { EXPECT_EQ(XRACos(0.5), 0.5235988f); }

// By the processor: the compiler itself saturates where a plain cast is undefined.
template <class T>
int32_t truncated(T literal) {
  const volatile T unknown = literal;
  const T value = unknown;
  return truncate_to_int32(value);
}

TEST(Numbers, TruncationSaturatesAndDefinesNan) {
  EXPECT_EQ(truncated(-0.99f), 0);
  EXPECT_EQ(truncated(2.99f), 2);
  EXPECT_EQ(truncated(2147483520.0f), 2147483520);
  EXPECT_EQ(truncated(2147483648.0f), INT32_MAX);
  EXPECT_EQ(truncated(-2147483648.0f), INT32_MIN);
  EXPECT_EQ(truncated(-3e9f), INT32_MIN);
  EXPECT_EQ(truncated(std::numeric_limits<float>::infinity()), INT32_MAX);
  EXPECT_EQ(truncated(std::numeric_limits<float>::quiet_NaN()), INT32_MIN);
  EXPECT_EQ(truncated(2147483647.5), INT32_MAX);
  EXPECT_EQ(truncated(-2147483648.5), INT32_MIN);
  EXPECT_EQ(truncated(-1e300), INT32_MIN);
  EXPECT_EQ(truncated(std::numeric_limits<double>::quiet_NaN()), INT32_MIN);
}

TEST(Numbers, IntegersWrap) {
  EXPECT_EQ(wrap_add(INT32_MAX, 1), INT32_MIN);
  EXPECT_EQ(wrap_sub(INT32_MIN, 1), INT32_MAX);
  EXPECT_EQ(wrap_mul(46341, 46341), -2147479015);  // 2147488281 - 2^32
}

}  // namespace
