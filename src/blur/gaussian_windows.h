// The windows of the three box blurs that approximate a Gaussian blur.
#ifndef ROXE_BLUR_GAUSSIAN_WINDOWS_H_
#define ROXE_BLUR_GAUSSIAN_WINDOWS_H_

#include <array>
#include <cstdint>

namespace roxe {

// The window of x holds x - before ... x + after, along rows and along columns alike.
struct BoxWindow {
  int32_t before, after;
};

// The first window of an even length reaches one pixel further before than after; the second one is
// its mirror image, so that the two together are centred. The third one is centred by itself, and
// one longer. length is at least 1.
inline std::array<BoxWindow, 3> gaussian_windows(uint32_t length) {
  const int32_t half = static_cast<int32_t>(length / 2);
  const int32_t shorter = length % 2 == 0 ? half - 1 : half;
  return {{{half, shorter}, {shorter, half}, {half, half}}};
}

}  // namespace roxe

#endif  // ROXE_BLUR_GAUSSIAN_WINDOWS_H_
