// What reading and writing a JPEG have in common: libjpeg's errors and the names of segments.
#ifndef ROXE_HOST_JPEG_SHARED_H_
#define ROXE_HOST_JPEG_SHARED_H_

#include <csetjmp>
#include <cstdio>
#include <string_view>

#include <jpeglib.h>

namespace host {

constexpr int kApp1 = JPEG_APP0 + 1, kApp2 = JPEG_APP0 + 2, kApp13 = JPEG_APP0 + 13;
constexpr size_t kMaxSegment = 65533;
constexpr std::string_view kXmpPrefix{"http://ns.adobe.com/xap/1.0/\0", 29};
constexpr std::string_view kExtendedXmpPrefix{"http://ns.adobe.com/xmp/extension/\0", 35};
constexpr std::string_view kPhotoshopPrefix{"Photoshop 3.0\0", 14};
constexpr std::string_view kIccPrefix{"ICC_PROFILE\0", 12};  // then number and count, a byte each
constexpr size_t kIccHeader = kIccPrefix.size() + 2;

// libjpeg's errors come back to the setjmp of the function that called it.
struct JpegErrors {
  jpeg_error_mgr base;
  std::jmp_buf jump;
  char message[JMSG_LENGTH_MAX] = "";
};

[[noreturn]] inline void stop_jpeg(j_common_ptr codec) {
  auto* errors = reinterpret_cast<JpegErrors*>(codec->err);
  codec->err->format_message(codec, errors->message);
  std::longjmp(errors->jump, 1);
}

}  // namespace host

#endif  // ROXE_HOST_JPEG_SHARED_H_
