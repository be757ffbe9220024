// Four corners as people give them, and sentences about what is wrong with them.
#ifndef ROXE_HOST_CORNERS_H_
#define ROXE_HOST_CORNERS_H_

#include <string_view>
#include <vector>

#include "roxe.h"
#include "text.h"

namespace host {

enum class CornerOrder { kAny, kAroundTheOutline };

// A convex quadrilateral in the order of its outline. Throws UsageError, naming the corners that
// are the trouble, counted from 1: equal ones, three on a line, one inside the others' triangle,
// or (where the order matters) an outline that crosses itself.
Quad convex_quad(const std::vector<Point>& corners, CornerOrder order, std::string_view what);

// Corners a little outside a picture are useful, corners beyond its next neighbours a mistake.
void require_near(const std::vector<Point>& corners, Size picture, std::string_view what);

Quad shifted(const Quad& quad, int32_t by);  // to the right and down

}  // namespace host

#endif  // ROXE_HOST_CORNERS_H_
