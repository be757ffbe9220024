#include "support/bench.h"

namespace {

// A reference colour in the middle of the scene's, and a tolerance that selects much of it.
constexpr uint32_t kBlue = 60, kGreen = 90, kRed = 180, kTolerance = 80;

const bench::Registration colour([] {
  bench::operation("replace colour", [](const bench::Pictures& p) {
    PixelArray dst = p.dst;
    roxeReplaceColor(&p.src, &dst, kBlue, kGreen, kRed, kTolerance, 40, 10, 5);
  });
  bench::operation("mask", [](const bench::Pictures& p) {
    PixelArray dst = p.dst;
    roxeReplaceColorMask(&p.src, &dst, kBlue, kGreen, kRed, kTolerance);
  });
  bench::operation("tint", [](const bench::Pictures& p) {
    PixelArray dst = p.dst;
    roxeColorTint(&p.src, &dst, kBlue, kGreen, kRed, kTolerance);
  });
  bench::operation("temperature", [](const bench::Pictures& p) {
    PixelArray dst = p.dst;
    roxeColorTemperature(&p.src, &dst, 30, 0);
  });
});

}  // namespace
