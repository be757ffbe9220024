#ifndef ROXE_GEOMETRY_ROTATE_H_
#define ROXE_GEOMETRY_ROTATE_H_

#include "roxe.h"

namespace roxe {

// Samples src through an affine map from destination to source: destination column x, row y shows
// the source at column map[0] x + map[1] y + map[2], row map[3] x + map[4] y + map[5]. Both records
// are used as 24-bit. A map that is not finite writes nothing.
void RotateImage_RGB24(const PixelArray& src, PixelArray& dst, const float* map);

}  // namespace roxe

#endif  // ROXE_GEOMETRY_ROTATE_H_
