// Pixels in cyan, magenta, yellow and black through their colour profile.
#ifndef ROXE_HOST_CMYK_H_
#define ROXE_HOST_CMYK_H_

#include <memory>
#include <string>

#include "picture.h"

namespace host {

class CmykToSrgb {
 public:
  virtual ~CmykToSrgb() = default;
  // From four bytes a pixel to blue, green, red.
  virtual void convert(const uint8_t* from, uint8_t* to, int32_t count) const = 0;
};

// Nothing without a profile for these channels. Inverted: 255 is no ink.
std::unique_ptr<CmykToSrgb> make_cmyk_to_srgb(const Bytes& icc, bool inverted);

// With its version; empty if the tool was built without.
std::string colour_library();

}  // namespace host

#endif  // ROXE_HOST_CMYK_H_
