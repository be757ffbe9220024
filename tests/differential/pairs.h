// Pairs of pictures to compare an operation of the library with its plain reference on, from the
// ordinary to the hostile.
#ifndef ROXE_TESTS_DIFFERENTIAL_PAIRS_H_
#define ROXE_TESTS_DIFFERENTIAL_PAIRS_H_

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <random>

#include "roxe.h"
#include "support/image.h"

namespace differential {

inline int32_t Below(std::mt19937& random, int32_t n) {
  return static_cast<int32_t>(random() % static_cast<uint32_t>(n));
}

// Mostly a number of the intended range, sometimes one just beyond it or an extreme.
inline int32_t Amount(std::mt19937& random, int32_t low, int32_t high) {
  constexpr int32_t kExtremes[] = {std::numeric_limits<int32_t>::min(),
                                   std::numeric_limits<int32_t>::min() + 1,
                                   -32768,
                                   -1,
                                   0,
                                   1,
                                   65535,
                                   std::numeric_limits<int32_t>::max() - 1,
                                   std::numeric_limits<int32_t>::max()};
  switch (Below(random, 8)) {
    case 0:
      return kExtremes[Below(random, 9)];
    case 1:
      return low - 5 + Below(random, 10);
    case 2:
      return high - 5 + Below(random, 10);
    default:
      return low + Below(random, high - low + 1);
  }
}

// Pixels that an operation tells apart: near a colour, grey, of extreme channels, or any.
inline void Paint(Image& image, std::mt19937& random, Pixel near) {
  const int32_t channels = image.record.format == kRoxeFormatGray8 ? 1 : 3;
  const uint8_t colour[3] = {near.blue, near.green, near.red};
  constexpr uint8_t kExtremes[] = {0, 1, 2, 127, 128, 254, 255};
  for (int32_t y = 0; y < image.record.height; ++y)
    for (int32_t x = 0; x < image.record.width; ++x) {
      const int32_t kind = Below(random, 6);
      const uint8_t grey = static_cast<uint8_t>(random() >> 24);
      const int32_t reach = 1 << Below(random, 7);
      for (int32_t c = 0; c < channels; ++c) {
        uint8_t& byte = image.pixel(x, y)[c];
        if (kind <= 2)
          byte = static_cast<uint8_t>(
              std::min(255, std::max(0, colour[c] - reach + Below(random, 2 * reach + 1))));
        else if (kind == 3)
          byte = grey;
        else if (kind == 4)
          byte = kExtremes[Below(random, 7)];
        else
          byte = static_cast<uint8_t>(random() >> 24);
      }
    }
}

// A record as a careless host might fill it in: what the memory holds is never less than what the
// record allows an operation to touch.
struct Spoiling {
  bool format = false, width = false, height = false, row_bytes = false, pixels = false;
  uint32_t new_format = 0;
  int32_t new_width = 0, new_height = 0, new_row_bytes = 0;

  void apply(PixelArray& record) const {
    if (format) record.format = new_format;
    if (width) record.width = new_width;
    if (height) record.height = new_height;
    if (row_bytes) record.rowBytes = new_row_bytes;
    if (pixels) record.pixels = nullptr;
  }

  static Spoiling Random(std::mt19937& random, const PixelArray& record) {
    constexpr int32_t kLow = std::numeric_limits<int32_t>::min();
    constexpr int32_t kHigh = std::numeric_limits<int32_t>::max();
    Spoiling s;
    switch (Below(random, 7)) {
      case 0: {  // another format for the same memory
        constexpr uint32_t kFormats[] = {1, 2, 3, 7, 0xFFFFFFFFu};
        s.format = true;
        s.new_format = kFormats[Below(random, 5)];
        break;
      }
      case 1: {  // a width that wraps or that the rows do not hold; needs packed rows
        if (record.rowBytes >= 3 * record.width + 3) break;
        constexpr int32_t kWidths[] = {kHigh, 715827883, 1431655766, 100000};
        s.format = Below(random, 2) != 0;
        s.new_format = 7;
        s.width = true;
        s.new_width = kWidths[Below(random, 4)];
        break;
      }
      case 2: {  // no columns
        constexpr int32_t kWidths[] = {0, -1, kLow};
        s.width = true;
        s.new_width = kWidths[Below(random, 3)];
        break;
      }
      case 3: {  // no rows
        constexpr int32_t kHeights[] = {0, -1, kLow};
        s.height = true;
        s.new_height = kHeights[Below(random, 3)];
        break;
      }
      case 4: {  // rows that overlap: shorter than the pixels, down to nothing
        constexpr int32_t kRowBytes[] = {0, 1, 2, 3, 4, -1, -300, kLow};
        s.format = Below(random, 2) != 0;
        s.new_format = 9;
        s.row_bytes = true;
        s.new_row_bytes = kRowBytes[Below(random, 8)];
        if (s.new_row_bytes > record.rowBytes) s.new_row_bytes = 0;
        break;
      }
      case 5:  // no memory behind a record that nobody examines
        s.format = s.pixels = true;
        s.new_format = 5;
        break;
      case 6:  // no memory
        s.pixels = true;
        break;
    }
    return s;
  }
};

// A source and a destination, or one picture for both.
class Pair {
 public:
  Pair(std::mt19937& random, Pixel near)
      : source_(RandomPicture(random)), target_(RandomPicture(random)) {
    in_place_ = Below(random, 4) == 0;
    if (Below(random, 8) == 0) spoil_source_ = Spoiling::Random(random, source_.record);
    if (Below(random, 8) == 0) spoil_target_ = Spoiling::Random(random, target_.record);
    Paint(source_, random, near);
  }

  // Calls both versions on a copy of their own; their results, every byte of the destination with
  // its padding, and the source must be the same.
  template <class Library, class Reference>
  void ExpectSame(const Library& library, const Reference& reference) const {
    Image source(source_), target(target_), plain_source(source_), plain_target(target_);
    for (Image* image : {&source, &plain_source}) spoil_source_.apply(image->record);
    for (Image* image : {&target, &plain_target}) spoil_target_.apply(image->record);
    Image& dst = in_place_ ? source : target;
    Image& plain_dst = in_place_ ? plain_source : plain_target;
    const PixelArray src_before = source.record, dst_before = dst.record;

    EXPECT_EQ(library(&source.record, &dst.record),
              reference(&plain_source.record, &plain_dst.record));
    EXPECT_TRUE(SameRecord(source.record, src_before));
    EXPECT_TRUE(SameRecord(dst.record, dst_before));
    EXPECT_EQ(source, plain_source);
    EXPECT_EQ(target, plain_target);
    if (!in_place_) {
      EXPECT_EQ(source, source_);
    }
  }

  bool in_place() const { return in_place_; }
  const Image& source() const { return source_; }

 private:
  static Image RandomPicture(std::mt19937& random) {
    constexpr int32_t kLargest[] = {1, 3, 12, 40, 150};
    const int32_t largest = kLargest[Below(random, 5)];
    const int32_t width = 1 + Below(random, largest);
    const int32_t height = 1 + Below(random, std::min(largest, 40));
    // 8-bit pictures are packed: used as 24-bit, their rows hold a third of the width.
    if (Below(random, 10) == 0) return Image(kRoxeFormatGray8, width, height);
    const int32_t padding = Below(random, 2) != 0 ? Below(random, 70) : 0;
    return Image(kRoxeFormatRGB24, width, height, 3 * width + padding);
  }

  static bool SameRecord(const PixelArray& a, const PixelArray& b) {
    return a.format == b.format && a.width == b.width && a.height == b.height &&
           a.rowBytes == b.rowBytes && a.pixels == b.pixels;
  }

  Image source_, target_;
  bool in_place_;
  Spoiling spoil_source_, spoil_target_;
};

// Two pictures that share memory, whole pixels apart or not: later pixels see what earlier ones
// wrote.
template <class Library, class Reference>
void ExpectSameOverlapping(std::mt19937& random, Pixel near, const Library& library,
                           const Reference& reference) {
  const int32_t width = 1 + Below(random, 40), height = 1 + Below(random, 12);
  Image memory(kRoxeFormatRGB24, 2 * width + 40, 2 * height + 6);
  Paint(memory, random, near);
  Image plain_memory(memory);
  const int32_t src_x = Below(random, 40), src_y = Below(random, 6);
  const int32_t dst_x = Below(random, 2) == 0 ? src_x : Below(random, 40);
  const int32_t dst_y = Below(random, 2) == 0 ? src_y : Below(random, 6);
  const int32_t dst_bytes = Below(random, 2) == 0 ? 0 : Below(random, 3);
  const auto record = [&](Image& image, int32_t x, int32_t y, int32_t bytes) {
    return PixelArray{kRoxeFormatRGB24, width, height, image.record.rowBytes,
                      image.pixel(x, y) + bytes};
  };
  PixelArray src = record(memory, src_x, src_y, 0);
  PixelArray dst = record(memory, dst_x, dst_y, dst_bytes);
  PixelArray plain_src = record(plain_memory, src_x, src_y, 0);
  PixelArray plain_dst = record(plain_memory, dst_x, dst_y, dst_bytes);
  EXPECT_EQ(library(&src, &dst), reference(&plain_src, &plain_dst));
  EXPECT_EQ(memory, plain_memory) << width << " x " << height << " from " << src_x << ", " << src_y
                                  << " to " << dst_x << ", " << dst_y << " and " << dst_bytes
                                  << " bytes";
}

}  // namespace differential

#endif  // ROXE_TESTS_DIFFERENTIAL_PAIRS_H_
