// The small picture that EXIF shows beside the large one.
#ifndef ROXE_HOST_THUMBNAIL_H_
#define ROXE_HOST_THUMBNAIL_H_

#include "exif.h"
#include "picture.h"

namespace host {

// At most 160 pixels a side, in the picture's proportions, never larger than it; as fine a JPEG as
// the bytes allow.
Thumbnail make_thumbnail(const Picture& picture, size_t most_bytes);

}  // namespace host

#endif  // ROXE_HOST_THUMBNAIL_H_
