#include "support/bench.h"

namespace {

const bench::Registration tone([] {
  bench::operation("auto gamma", [](const bench::Pictures& p) {
    PixelArray dst = p.dst;
    roxeAutoGamma(&p.src, &dst, nullptr);
  });
  bench::operation("shadow/highlight", [](const bench::Pictures& p) {
    PixelArray dst = p.dst;
    roxeShadowHighlight(&p.src, &dst, 40, 30, 20);
  });
  bench::operation("variations", [](const bench::Pictures& p) {
    PixelArray dst = p.dst;
    roxeVariations(&p.src, &dst, 1, -2, 3, 1, 2);
  });
});

}  // namespace
