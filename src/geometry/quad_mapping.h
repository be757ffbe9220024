// The projective mapping (homography) that carries four destination points onto four source points.
//
// A destination point (u, v) shows the source point
//   D = p[6] u + p[7] v + 1,  x = (p[0] u + p[1] v + p[2]) / D,  y = (p[3] u + p[4] v + p[5]) / D.
//
// No exported operation maps backwards: none reaches PointSrcToDst, RectSrcToDst and GetOrigin.
#ifndef ROXE_GEOMETRY_QUAD_MAPPING_H_
#define ROXE_GEOMETRY_QUAD_MAPPING_H_

#include <cstdint>

#include "frame/runtime.h"
#include "geometry/xrml.h"
#include "roxe.h"

namespace roxe {

// The eight coefficients p of a mapping.
using AffineParameters = Block<float>;

// Reorders the corners: top left, top right, bottom right, bottom left as seen on screen, which is
// clockwise there (anticlockwise if y pointed up). Where both upper corners lie to the same side of
// their diagonal partners and the edge between them is steeper than 45 degrees, the labels turn by
// one place. Sorting twice is not always sorting once.
void SortToAntiClockwise(Quad* quad);

// The eight linear equations, 8 rows of 9 floats (the right-hand side last), as a table of row
// pointers. Entry 0 is also the address of the block that holds all rows, which the caller releases
// as well. Null for a missing argument or without memory.
Block<float*> CreateAffineMatrix(const Quad* src, const Quad* dst);

// Solves the equations in place; rows may be exchanged in the table. Unknowns without a pivot
// become 0. Null for a missing table or without memory.
AffineParameters CalcParameters(float** rows);

// The mapping that carries the points of dst onto those of src; null without memory.
AffineParameters GetAffineParameters(const Quad* src, const Quad* dst);

// The mapping backwards, truncated toward zero: from a source point to the destination.
Point PointSrcToDst(int32_t x, int32_t y, const float* p);

// The bounding box of the four corners carried backwards; right and bottom are the largest
// coordinates themselves.
PixelRect RectSrcToDst(int32_t left, int32_t top, int32_t right, int32_t bottom, const float* p);

// (x / scale - ox, y / scale - oy), truncated toward zero.
Point GetOrigin(int32_t x, int32_t y, int32_t ox, int32_t oy, float scale);

}  // namespace roxe

#endif  // ROXE_GEOMETRY_QUAD_MAPPING_H_
