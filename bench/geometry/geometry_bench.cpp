#include "support/bench.h"

namespace {

void rotate(const bench::Pictures& p, float degrees) {
  PixelArray dst = p.dst;
  const int32_t x = dst.width / 2, y = dst.height / 2;
  roxeRotateImage(&p.src, x, y, degrees * 0.017453293f, &dst, x, y);
}

// A convex quadrilateral well inside the picture, in proportion to its size.
Quad slanted(const PixelArray& image) {
  const int32_t w = image.width, h = image.height;
  return {w * 3 / 40,  h / 12,      w * 37 / 40, h / 25,
          w * 77 / 80, h * 14 / 15, w * 3 / 80,  h * 29 / 30};
}

const bench::Registration geometry([] {
  bench::operation("rotate 7.3", [](const bench::Pictures& p) { rotate(p, 7.3f); });
  bench::operation("rotate 45", [](const bench::Pictures& p) { rotate(p, 45.0f); });
  bench::operation("rotate 85", [](const bench::Pictures& p) { rotate(p, 85.0f); });
  bench::operation("straighten 1", [](const bench::Pictures& p) {
    PixelArray dst = p.dst;  // a slope of 7 in 400 is one degree
    roxeuAutoStraightenImage(&p.src, 0, 0, 400, -7, &dst);
  });
  bench::operation("affine", [](const bench::Pictures& p) {
    PixelArray dst = p.dst;
    Quad quad = slanted(p.src);
    roxeAffineTransform(&p.src, &dst, &quad, nullptr, {0, 0, dst.width, dst.height});
  });
  // The rectangle has the proportions of the quadrilateral, so that the whole of it is drawn.
  bench::operation("perspective", [](const bench::Pictures& p) {
    PixelArray dst = p.dst;
    Quad quad = slanted(p.src);
    roxePerspectiveDistortionCorrection(&p.src, &dst, &quad, 0, 0, {0, 0, dst.width, dst.height});
  });
});

}  // namespace
