// In the place of tiff.cpp where libtiff was not found.
#include "codecs.h"
#include "errors.h"

namespace host {

std::string tiff_library() { return ""; }

Decoded decode_tiff(const Bytes&, const ReadSettings&, Notes&) {
  throw Failure("is a TIFF or raw picture, and this roxe was built without libtiff");
}

}  // namespace host
