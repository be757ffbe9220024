#include <string>

#include "support/bench.h"

namespace {

const bench::Registration soft_focus([] {
  for (const int32_t radius : {3, 21, 101, 256, 601})
    bench::operation("soft focus " + std::to_string(radius), [radius](const bench::Pictures& p) {
      PixelArray dst = p.dst;
      roxeSoftFocus(&p.src, &dst, nullptr, radius, 0);
    });
  bench::operation("soft focus 21 masked", [](const bench::Pictures& p) {
    PixelArray dst = p.dst;
    roxeSoftFocus(&p.src, &dst, &p.mask, 21, 21);
  });
});

}  // namespace
