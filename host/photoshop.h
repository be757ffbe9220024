// What the tool changes among Photoshop's resources, which also carry IPTC.
#ifndef ROXE_HOST_PHOTOSHOP_H_
#define ROXE_HOST_PHOTOSHOP_H_

#include <vector>

#include "picture.h"

namespace host {

// Takes the thumbnails out of the resources, which several segments may continue. Every other byte
// stays; without a thumbnail so do the segments.
void remove_photoshop_thumbnails(std::vector<Bytes>& segments);

// The same for copies of EXIF and XMP; whether there were any.
bool remove_photoshop_copies(std::vector<Bytes>& segments);

}  // namespace host

#endif  // ROXE_HOST_PHOTOSHOP_H_
