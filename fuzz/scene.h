// The pictures of one call: records as a careless host may fill them in, and memory that is never
// less than what such records allow an operation to touch, nor more.
#ifndef ROXE_FUZZ_SCENE_H_
#define ROXE_FUZZ_SCENE_H_

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "fuzz/call.h"
#include "fuzz/input.h"
#include "roxe.h"

namespace fuzz {

// A block whose ends a sanitizer knows exactly; without one, bytes that are compared.
struct Memory {
  explicit Memory(size_t size) : bytes(new uint8_t[size]), size(size) {}
  Memory(const Memory& other);
  bool operator==(const Memory& other) const;

  std::unique_ptr<uint8_t[]> bytes;
  size_t size;
};

// What a record says, without its memory.
struct Shape {
  uint32_t format;
  int32_t width, height, row_bytes;
  bool has_pixels;

  // Of the rows used as 24-bit or 8-bit.
  int32_t columns(int32_t bytes_per_pixel) const;
  // Bytes from the first pixel to the end of the last one.
  size_t bytes(int32_t bytes_per_pixel) const;
  // The same with the padding of the last row.
  size_t padded_bytes() const;
};

enum Picture { kSource, kDestination, kMask, kPictures };

// A call with its pictures. src, dst and mask lie in blocks of their own, or dst is src, or the two
// overlap in one block.
class Scene {
 public:
  // Pictures take no more memory than 24 rows of largest pixels.
  Scene(Input& input, Operation operation, int32_t largest);
  Scene(const Scene& other) = default;  // with memory of its own

  Result run(const Operations& operations);

  bool same_bytes(const Scene& other) const;
  // Whether only pixels of dst differ from before.
  bool only_dst_differs(const Scene& before) const;
  const Call& call() const { return call_; }

 private:
  PixelArray record(Picture picture);
  const Memory& memory_of(Picture picture) const {
    return memory_[picture == kDestination && shared_ ? kSource : picture];
  }

  Shape shapes_[kPictures];
  size_t offsets_[kPictures] = {};
  bool shared_ = false, same_record_ = false, missing_[kPictures] = {};
  std::vector<Memory> memory_;
  Call call_;
};

}  // namespace fuzz

#endif  // ROXE_FUZZ_SCENE_H_
