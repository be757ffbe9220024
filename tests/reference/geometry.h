// Plain versions of the geometry family, one pixel and one step at a time.
#ifndef ROXE_TESTS_REFERENCE_GEOMETRY_H_
#define ROXE_TESTS_REFERENCE_GEOMETRY_H_

#include <array>
#include <cstdint>

#include "roxe.h"

namespace reference {

struct Point {
  int32_t x, y;
};

struct Point3D {
  float x, y, z;
};

// Vectors and matrices.
float xrmlGetClosestAngleWithCoorAxis(int32_t x1, int32_t y1, int32_t x2, int32_t y2);
int32_t xrmlGetIntersectOfLines(int32_t x0, int32_t y0, int32_t x1, int32_t y1, int32_t x2,
                                int32_t y2, int32_t x3, int32_t y3, Point* out);
float xrmlGetLength2D(int32_t x1, int32_t y1, int32_t x2, int32_t y2);
float xrmlGetLength3D(Point3D a, Point3D b);
float xrmlGetLengthPoint2Place(Point3D p0, Point3D p1, Point3D p2, Point3D p3);
int32_t xrmlIsConvexQuadrilateral(const Quad* quad);
int32_t xrmlMatrixInverse(float* dst, const float* src, int32_t n);
int32_t xrmlMatrixMultiply(const float* a, const float* b, float* c, int32_t rows, int32_t n);

// Rotation and straightening.
int32_t roxeRotateImage(const PixelArray* src, int32_t srcCentreX, int32_t srcCentreY, float angle,
                        PixelArray* dst, int32_t dstCentreX, int32_t dstCentreY);
void RotateImage_RGB24(const PixelArray& src, const PixelArray& dst, const float* map);
int32_t roxeuAutoStraightenImage(const PixelArray* src, int32_t x1, int32_t y1, int32_t x2,
                                 int32_t y2, PixelArray* dst);

// Quadrilateral mapping. A system is eight rows of nine floats, exchanged as whole rows.
using System = std::array<std::array<float, 9>, 8>;
using AffineParameters = std::array<float, 8>;

void SortToAntiClockwise(Quad* quad);
System CreateAffineMatrix(const Quad& src, const Quad& dst);
AffineParameters CalcParameters(System system);
AffineParameters GetAffineParameters(const Quad& src, const Quad& dst);
Point PointSrcToDst(int32_t x, int32_t y, const float* p);
PixelRect RectSrcToDst(int32_t left, int32_t top, int32_t right, int32_t bottom, const float* p);
Point GetOrigin(int32_t x, int32_t y, int32_t ox, int32_t oy, float scale);

// Quadrilateral resampling.
int32_t roxeAffineTransform(const PixelArray* src, PixelArray* dst, Quad* quad, const Quad* dstQuad,
                            PixelRect rect);
int32_t ApplyParameters(const PixelArray& src, const PixelArray& dst, const float* p,
                        int32_t offsetX, int32_t offsetY, int32_t left, int32_t top, int32_t right,
                        int32_t bottom);

// Perspective distortion correction.
int32_t roxeGetPerspectiveDistortionCorrectionSize(Quad* quad, int32_t unused1, int32_t unused2,
                                                   int32_t unused3, int32_t* outWidth,
                                                   int32_t* outHeight);
int32_t roxePerspectiveDistortionCorrection(const PixelArray* src, PixelArray* dst, Quad* quad,
                                            int32_t unused1, int32_t unused2, PixelRect rect);

// Destination-point estimation.
int32_t GetProjection(int32_t ax, int32_t ay, int32_t bx, int32_t by, int32_t px, int32_t py,
                      Point* result);
void GetAdjustCenter(Point* result, int32_t ax, int32_t ay, int32_t bx, int32_t by);
int32_t GetDstPoints(Quad* quad, int32_t cx, int32_t cy, Point3D* points, float* camera);

}  // namespace reference

#endif  // ROXE_TESTS_REFERENCE_GEOMETRY_H_
