// What the tool changes in an XMP packet: characters in place, so that its length stays.
#ifndef ROXE_HOST_XMP_H_
#define ROXE_HOST_XMP_H_

#include <string_view>

#include "picture.h"

namespace host {

// Sets tiff:Orientation to 1, written as an attribute or as an element.
void reset_xmp_orientation(Bytes& xmp);

// Puts spaces in the place of every property whose name begins with GPS, in any name space and
// case, and of what the camera's maker calls latitude and longitude.
void remove_xmp_gps(Bytes& xmp);

bool holds(const Bytes& block, std::string_view words);

}  // namespace host

#endif  // ROXE_HOST_XMP_H_
