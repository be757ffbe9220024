// Pictures for tests. They lie against an unmapped page, so that a read or write past it ends the
// program: with their last byte, or, in a run with --pages=start, with their first. Row padding
// holds a pattern that must survive.
#ifndef ROXE_TESTS_SUPPORT_IMAGE_H_
#define ROXE_TESTS_SUPPORT_IMAGE_H_

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <memory>
#include <random>
#include <vector>

#include "roxe.h"

// Memory between two unmapped pages, as close as it gets to one of them. (Under WebAssembly, which
// has none: between bytes that must not change.)
class GuardedMemory {
 public:
  // Whether data() is the end of the first unmapped page; else data() + size() is the start of the
  // second. For the whole run: every comparison is made in one of each kind.
  static inline bool starts_at_page = false;

  explicit GuardedMemory(size_t size);
  ~GuardedMemory();
  GuardedMemory(const GuardedMemory&) = delete;
  GuardedMemory& operator=(const GuardedMemory&) = delete;
  uint8_t* data() const { return data_; }
  size_t size() const { return size_; }

 private:
  void* mapping_;
  size_t mapped_;
  uint8_t* data_;
  size_t size_;
};

// An image that owns its guarded pixels. record is what an operation is given; a test may spoil it.
// All bytes, padding included, start as a pattern that depends on the position.
class Image {
 public:
  // The last row has no padding. row_bytes 0: packed.
  Image(uint32_t format, int32_t width, int32_t height, int32_t row_bytes = 0);
  Image(const Image& other);
  Image& operator=(const Image&) = delete;

  PixelArray record;
  operator PixelArray*() { return &record; }
  operator const PixelArray*() const { return &record; }

  uint8_t* pixel(int32_t x, int32_t y);  // first byte of a pixel
  const uint8_t* pixel(int32_t x, int32_t y) const;
  size_t size() const { return memory_->size(); }
  uint8_t* bytes() const { return memory_->data(); }

  // All pixel bytes, row by row without padding.
  std::vector<uint8_t> pixels() const;
  // Fills the pixels (not the padding).
  void fill(uint8_t value);
  void randomise(std::mt19937& random);

  // Same geometry and every byte equal, padding included.
  bool operator==(const Image& other) const;

 private:
  int32_t channels_, width_, height_, row_bytes_;
  std::shared_ptr<GuardedMemory> memory_;
};

// A packed RGB24 picture of literal rows of (blue, green, red) pixels.
struct Pixel {
  uint8_t blue, green, red;
};
Image Bgr(const std::vector<std::vector<Pixel>>& rows);

// A packed Gray8 picture of literal rows.
Image Gray(const std::vector<std::vector<uint8_t>>& rows);

// An RGB24 or Gray8 image of random content; sides 1 ... largest, a random stride.
Image RandomImage(std::mt19937& random, uint32_t format, int32_t largest);

void PrintTo(const Image& image, std::ostream* out);

#endif  // ROXE_TESTS_SUPPORT_IMAGE_H_
