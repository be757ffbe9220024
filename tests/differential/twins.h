// Random pictures in twice the same memory: the library works in one block, the reference in the
// other, and afterwards every byte of the blocks must be equal, between and around the pictures
// too.
#ifndef ROXE_TESTS_DIFFERENTIAL_TWINS_H_
#define ROXE_TESTS_DIFFERENTIAL_TWINS_H_

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <random>

#include "support/image.h"

// Random numbers with a bias towards the values that break things.
class Dice {
 public:
  explicit Dice(uint32_t seed) : random_(seed) {}

  uint32_t bits() { return static_cast<uint32_t>(random_()); }
  // low ... high, both inclusive.
  int32_t between(int32_t low, int32_t high) {
    const uint64_t values = static_cast<uint64_t>(int64_t{high} - low) + 1;
    return static_cast<int32_t>(low + static_cast<int64_t>(bits() % values));
  }
  bool one_in(uint32_t n) { return bits() % n == 0; }
  template <class T, size_t n>
  T pick(const T (&values)[n]) {
    return values[bits() % n];
  }

  float real(float low, float high) {
    return low + (high - low) * (static_cast<float>(bits() >> 8) / 16777216.0f);
  }

  // Extremes of 32 bits and their neighbourhood, powers of two, anything.
  int32_t hostile_integer() {
    static constexpr int32_t kValues[] = {
        INT32_MIN, INT32_MIN + 1, INT32_MAX, INT32_MAX - 1, 0,          1,         -1, 46340, 46341,
        -46341,    65536,         16777217,  -0x40000000,   0x40000000, 0x7FFFFF80};
    switch (bits() % 3) {
      case 0:
        return pick(kValues);
      case 1:
        return static_cast<int32_t>(bits() >> between(0, 31));
      default:
        return static_cast<int32_t>(bits());
    }
  }

  // Values that are not numbers or barely are, and any pattern of bits.
  float hostile_real() {
    using Limits = std::numeric_limits<float>;
    static constexpr float kValues[] = {0.0f,
                                        -0.0f,
                                        1.0f,
                                        -1.0f,
                                        Limits::quiet_NaN(),
                                        Limits::infinity(),
                                        -Limits::infinity(),
                                        Limits::max(),
                                        Limits::lowest(),
                                        Limits::min(),
                                        Limits::denorm_min(),
                                        2147483648.0f,
                                        -2147483648.0f,
                                        32768.0f,
                                        1e-30f,
                                        1e30f};
    if (one_in(2)) return pick(kValues);
    const uint32_t pattern = bits();
    float value;
    std::memcpy(&value, &pattern, sizeof value);
    return value;
  }

 private:
  std::mt19937 random_;
};

// A record without its memory, and what an operation may touch when it reads the record with
// bytes_per_pixel bytes a pixel.
struct Shape {
  uint32_t format;
  int32_t width, height, row_bytes;
  bool has_pixels;

  int32_t columns(int32_t bytes_per_pixel) const {
    if (!has_pixels || width <= 0 || row_bytes <= 0) return 0;
    const int32_t fitting = row_bytes / bytes_per_pixel;
    return width < fitting ? width : fitting;
  }
  size_t size(int32_t bytes_per_pixel) const {
    const int32_t row = columns(bytes_per_pixel) * bytes_per_pixel;
    if (row == 0 || height <= 0) return 0;
    return static_cast<size_t>(height - 1) * static_cast<size_t>(row_bytes) +
           static_cast<size_t>(row);
  }
};

// Two guarded blocks of equal content.
class Twins {
 public:
  explicit Twins(size_t size) : library_(size), reference_(size) {}

  size_t size() const { return library_.size(); }

  void randomise(Dice& dice) {
    for (size_t i = 0; i < size(); i += 4) {
      const uint32_t word = dice.bits();
      std::memcpy(library_.data() + i, &word, size() - i < 4 ? size() - i : 4);
    }
    std::memcpy(reference_.data(), library_.data(), size());
  }

  // An offset for bytes of memory: mostly against the guard page after the block, else at its
  // start.
  size_t place(Dice& dice, size_t bytes) const {
    if (bytes > size()) std::abort();
    return dice.one_in(4) ? 0 : size() - bytes;
  }

  PixelArray library(const Shape& shape, size_t offset) const {
    return record(library_, shape, offset);
  }
  PixelArray reference(const Shape& shape, size_t offset) const {
    return record(reference_, shape, offset);
  }

  bool same() const { return std::memcmp(library_.data(), reference_.data(), size()) == 0; }

 private:
  static PixelArray record(const GuardedMemory& memory, const Shape& shape, size_t offset) {
    return {shape.format, shape.width, shape.height, shape.row_bytes,
            shape.has_pixels ? memory.data() + offset : nullptr};
  }

  GuardedMemory library_, reference_;
};

// The records of one call, twice: a source and a destination in blocks of their own, as one and the
// same record, or overlapping in one block.
struct CallRecords {
  PixelArray library_src, library_dst, reference_src, reference_dst;
  bool same_record;

  CallRecords(Dice& dice, Twins& first, Twins& second, const Shape& src, Shape dst,
              int32_t bytes_per_pixel) {
    const uint32_t relation = dice.bits() % 8;
    same_record = relation == 0;
    if (same_record) dst = src;
    const bool overlapping = relation == 1;
    const size_t src_size = src.size(bytes_per_pixel), dst_size = dst.size(bytes_per_pixel);
    first.randomise(dice);
    second.randomise(dice);
    const Twins& dst_block = same_record || overlapping ? first : second;
    const size_t src_at = first.place(dice, src_size);
    size_t dst_at = same_record ? src_at : dst_block.place(dice, dst_size);
    if (overlapping) {  // a few bytes or rows apart, as far as the block allows
      const int32_t apart = dice.one_in(2) ? dice.between(-7, 7) : dice.between(-200, 200);
      const int64_t wanted = static_cast<int64_t>(src_at) + apart;
      const int64_t last = static_cast<int64_t>(dst_block.size() - dst_size);
      dst_at = static_cast<size_t>(wanted < 0 ? 0 : (wanted > last ? last : wanted));
    }
    library_src = first.library(src, src_at);
    reference_src = first.reference(src, src_at);
    library_dst = dst_block.library(dst, dst_at);
    reference_dst = dst_block.reference(dst, dst_at);
  }

  PixelArray* library_dst_pointer() { return same_record ? &library_src : &library_dst; }
  PixelArray* reference_dst_pointer() { return same_record ? &reference_src : &reference_dst; }
};

#endif  // ROXE_TESTS_DIFFERENTIAL_TWINS_H_
