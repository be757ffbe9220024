// Runtime services: the only way to memory and to elementary functions.
#ifndef ROXE_FRAME_RUNTIME_H_
#define ROXE_FRAME_RUNTIME_H_

#include <cstddef>
#include <cstdint>
#include <memory>

namespace roxe {

// A zero-filled block of size bytes, or null when there is no memory. Size 0 gives a valid block.
void* XRMalloc(uint32_t size);

// Releases a block of XRMalloc; null is harmless.
void XRFree(void* block);

// Does nothing and returns block: blocks never change their size.
void* XRReAlloc(void* block, uint32_t size);

// memset and memcpy (regions of the copy must not overlap). Both return dst.
void* XRMemSet(void* dst, int value, size_t count);
void* XRMemCpy(void* dst, const void* src, size_t count);

// Does nothing and returns dst: no byte is moved.
void* XRMemMove(void* dst, const void* src, size_t count);

// The double-precision functions of the C library, rounded to single precision. No exported
// operation reaches XRTan, XRASin, XRACos and XRLog10, nor XRReAlloc and XRMemMove above.
float XRSin(double x);
float XRCos(double x);
float XRTan(double x);
float XRASin(double x);
float XRACos(double x);  // the arc sine, not the arc cosine; nothing calls it
float XRATan(double x);
float XRSqrt(double x);
float XRPow(double base, double exponent);
float XRLog(double x);
float XRLog10(double x);
float XRExp(double x);

struct BlockRelease {
  void operator()(void* block) const { XRFree(block); }
};

// Zero-filled memory that is released on every path.
template <class T>
using Block = std::unique_ptr<T[], BlockRelease>;

// A block of count elements; null when there is no memory or the size does not fit 32 bits.
template <class T>
Block<T> make_block(uint64_t count) {
  if (count > UINT32_MAX / sizeof(T)) return nullptr;
  return Block<T>(static_cast<T*>(XRMalloc(static_cast<uint32_t>(count * sizeof(T)))));
}

}  // namespace roxe

#endif  // ROXE_FRAME_RUNTIME_H_
