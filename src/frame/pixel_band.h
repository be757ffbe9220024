// The part of two pictures that a pixel-by-pixel row walks in one call.
#ifndef ROXE_FRAME_PIXEL_BAND_H_
#define ROXE_FRAME_PIXEL_BAND_H_

#include <cstddef>
#include <cstdint>

namespace roxe {

// Rows of count packed pixels of three bytes in two pictures, the first at src and dst and the next
// ones so many bytes on. The pictures are the same or share no memory; but in a band of a single
// pixel dst may begin a byte or two before or after src.
struct PixelBand {
  const uint8_t* src;
  ptrdiff_t src_step;
  uint8_t* dst;
  ptrdiff_t dst_step;
  int32_t rows, count;
};

}  // namespace roxe

#endif  // ROXE_FRAME_PIXEL_BAND_H_
