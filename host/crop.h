// The part of a turned picture that shows no background.
#ifndef ROXE_HOST_CROP_H_
#define ROXE_HOST_CROP_H_

#include "drawing.h"
#include "text.h"

namespace host {

// kFit: in the proportions of the picture. kFree: of the largest area.
enum class Crop { kNone, kFit, kFree };

Option& add_crop(Options& options, Crop& crop);

// The size of the largest upright picture that lies inside one turned by an angle about its centre
// pixel (width / 2, height / 2), which becomes the centre pixel of the result. crop is not kNone.
// Throws Failure where not even one pixel fits.
Size cropped(Size picture, double radians, Edges edges, Crop crop);

}  // namespace host

#endif  // ROXE_HOST_CROP_H_
