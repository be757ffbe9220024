// The small numerical kit that geometry and colour share: angles, lengths, intersections, convexity
// and square matrices. Arithmetic is single precision unless a double is named; 32-bit integer
// differences and products wrap.
// No exported operation reaches the intersection, the two lengths in space and the matrices: beside
// the tests only the routines of dst_points.h and white_point.h use some of them.
#ifndef ROXE_GEOMETRY_XRML_H_
#define ROXE_GEOMETRY_XRML_H_

#include <cstdint>

#include "roxe.h"

namespace roxe {

// A pixel position: x to the right, y downwards.
struct Point {
  int32_t x, y;
};

struct Point3D {
  float x, y, z;
};

// The angle in radians, from -pi/4 to pi/4, that makes the line through two points horizontal or
// vertical, whichever is nearer; 0 for a line that is so already and for equal points.
float xrmlGetClosestAngleWithCoorAxis(int32_t x1, int32_t y1, int32_t x2, int32_t y2);

// Where the line through points 0 and 1 meets the line through points 2 and 3, truncated toward
// zero. Returns 1, or 0 without writing when the lines are (nearly) parallel or out is null.
int32_t xrmlGetIntersectOfLines(int32_t x0, int32_t y0, int32_t x1, int32_t y1, int32_t x2,
                                int32_t y2, int32_t x3, int32_t y3, Point* out);

float xrmlGetLength2D(int32_t x1, int32_t y1, int32_t x2, int32_t y2);
float xrmlGetLength3D(Point3D a, Point3D b);

// Distance of p3 from the plane through p0, p1 and p2; 0 when those lie (nearly) on one line.
float xrmlGetLengthPoint2Place(Point3D p0, Point3D p1, Point3D p2, Point3D p3);

// 1 if the corners, in boundary order of either sense, form a strictly convex quadrilateral, else
// 0.
int32_t xrmlIsConvexQuadrilateral(const Quad* quad);

// Inverts an n x n row-major matrix; dst may be src. Returns 1, or 0 if the matrix is singular (dst
// is then partly reduced) or there is no memory (dst is then the plain copy).
int32_t xrmlMatrixInverse(float* dst, const float* src, int32_t n);

// c = a * b for rows = n, row-major; c is apart from a and b. In general row k of b starts at
// k * rows (not k * n), and n columns of c are computed. Returns 1, or 0 for a null matrix or a
// size below 1.
int32_t xrmlMatrixMultiply(const float* a, const float* b, float* c, int32_t rows, int32_t n);

}  // namespace roxe

#endif  // ROXE_GEOMETRY_XRML_H_
