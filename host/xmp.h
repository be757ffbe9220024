// What the tool changes in an XMP packet: the characters of a few values, and nothing around them.
#ifndef ROXE_HOST_XMP_H_
#define ROXE_HOST_XMP_H_

#include <string_view>

#include "picture.h"

namespace host {

// Sets tiff:Orientation to 1, written as an attribute or as an element.
void reset_xmp_orientation(Bytes& xmp);

// Sets exif:PixelXDimension and tiff:ImageWidth to the width, exif:PixelYDimension and tiff:ImageLength
// to the height, where these are whole numbers.
void set_xmp_size(Bytes& xmp, int32_t width, int32_t height);

// Exchanges tiff:XResolution and tiff:YResolution.
void swap_xmp_axes(Bytes& xmp);

// Puts spaces in the place of every property whose name begins with GPS, in any name space and
// case, of what the camera's maker calls latitude and longitude, and of the name space of places on
// Earth. False where one is left: it has elements inside, or the packet is in another code than UTF-8.
bool remove_xmp_gps(Bytes& xmp);

// Whether it marks regions of the picture: faces and the names of people, as a rule.
bool holds_xmp_regions(const Bytes& xmp);

bool holds(const Bytes& block, std::string_view words);

}  // namespace host

#endif  // ROXE_HOST_XMP_H_
