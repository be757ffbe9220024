// The one field of EXIF that the tool understands: the orientation tag of the first directory.
#ifndef ROXE_HOST_EXIF_H_
#define ROXE_HOST_EXIF_H_

#include "picture.h"

namespace host {

// 1 ... 8; 1 if the tag is absent or the block is malformed.
int exif_orientation(const Bytes& exif);

// Sets the tag to 1 in place, every other byte stays. Nothing happens if there is no such tag.
void reset_exif_orientation(Bytes& exif);

}  // namespace host

#endif  // ROXE_HOST_EXIF_H_
