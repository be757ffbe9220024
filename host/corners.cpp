#include "corners.h"

#include <array>
#include <string>

#include "errors.h"

namespace host {
namespace {

using Order = std::array<size_t, 4>;

// No picture reaches farther, and up to here cross() stays within 64 bits.
constexpr int32_t kFarthest = 1'000'000'000;

// Twice the area of a triangle; the sign tells the sense of turning.
int64_t cross(Point a, Point b, Point c) {
  return (int64_t{b.x} - a.x) * (int64_t{c.y} - a.y) - (int64_t{b.y} - a.y) * (int64_t{c.x} - a.x);
}

bool is_convex(const std::vector<Point>& corners, const Order& order) {
  int turns = 0;
  for (size_t i = 0; i < 4; ++i)
    turns += cross(corners[order[i]], corners[order[(i + 1) % 4]], corners[order[(i + 2) % 4]]) > 0;
  return turns == 0 || turns == 4;
}

std::string named(const std::vector<Point>& corners, size_t i) {
  return std::to_string(i + 1) + " " + to_text(corners[i]);
}

void refuse_distant(const std::vector<Point>& corners, const std::string& what) {
  const auto is_distant = [](int32_t v) { return v < -kFarthest || v > kFarthest; };
  for (size_t i = 0; i < 4; ++i)
    if (is_distant(corners[i].x) || is_distant(corners[i].y))
      throw UsageError(what + ": corner " + named(corners, i) + " lies far outside any picture");
}

void refuse_equal(const std::vector<Point>& corners, const std::string& what) {
  for (size_t i = 0; i < 4; ++i)
    for (size_t j = i + 1; j < 4; ++j)
      if (corners[i].x == corners[j].x && corners[i].y == corners[j].y)
        throw UsageError(what + ": corners " + std::to_string(i + 1) + " and " +
                         std::to_string(j + 1) + " are the same point " + to_text(corners[i]));
}

void refuse_flat(const std::vector<Point>& corners, const std::string& what) {
  for (size_t i = 0; i < 4; ++i)
    for (size_t j = i + 1; j < 4; ++j)
      for (size_t k = j + 1; k < 4; ++k)
        if (cross(corners[i], corners[j], corners[k]) == 0)
          throw UsageError(what + ": corners " + named(corners, i) + ", " + named(corners, j) +
                           " and " + named(corners, k) + " lie on one line");
}

void refuse_inside(const std::vector<Point>& corners, const std::string& what) {
  for (size_t i = 0; i < 4; ++i) {
    const Point p = corners[i], a = corners[(i + 1) % 4], b = corners[(i + 2) % 4],
                c = corners[(i + 3) % 4];
    const int left = (cross(a, b, p) > 0) + (cross(b, c, p) > 0) + (cross(c, a, p) > 0);
    if (left == 0 || left == 3)
      throw UsageError(what + ": corner " + named(corners, i) +
                       " lies inside the triangle of the other three");
  }
}

}  // namespace

Quad convex_quad(const std::vector<Point>& corners, CornerOrder order, std::string_view what) {
  const std::string option(what);
  refuse_distant(corners, option);
  refuse_equal(corners, option);
  refuse_flat(corners, option);
  refuse_inside(corners, option);
  // Exactly one of the three ways around four such points does not cross itself.
  Order around = {0, 1, 2, 3};
  if (order == CornerOrder::kAny)
    for (const Order& candidate : {Order{0, 1, 3, 2}, Order{0, 2, 1, 3}})
      if (is_convex(corners, candidate)) around = candidate;
  if (!is_convex(corners, around))
    throw UsageError(option +
                     ": the outline from corner 1 to 2 to 3 to 4 crosses itself; give the "
                     "corners in order around the outline");
  const auto at = [&](size_t i) { return corners[around[i]]; };
  return {at(0).x, at(0).y, at(1).x, at(1).y, at(2).x, at(2).y, at(3).x, at(3).y};
}

void require_near(const std::vector<Point>& corners, Size picture, std::string_view what) {
  const int64_t width = picture.width, height = picture.height;
  for (size_t i = 0; i < corners.size(); ++i)
    if (corners[i].x < -width || corners[i].x > 2 * width || corners[i].y < -height ||
        corners[i].y > 2 * height)
      throw UsageError(std::string(what) + ": corner " + named(corners, i) +
                       " lies far outside the picture of " + size_text(width, height) + " pixels");
}

Quad shifted(const Quad& quad, int32_t by) {
  return {quad.x0 + by, quad.y0 + by, quad.x1 + by, quad.y1 + by,
          quad.x2 + by, quad.y2 + by, quad.x3 + by, quad.y3 + by};
}

}  // namespace host
