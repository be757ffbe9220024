// In the place of webp.cpp where libwebp was not found.
#include "codecs.h"
#include "errors.h"

namespace host {

std::string webp_library() { return ""; }

Decoded decode_webp(const Bytes&, const ReadSettings&, Notes&) {
  throw Failure("is a WebP picture, and this roxe was built without libwebp");
}

Bytes encode_webp(const Picture&, const Metadata&, const WriteSettings&, Notes&) {
  throw Failure("a WebP cannot be written, as this roxe was built without libwebp");
}

}  // namespace host
