// A photograph in memory: packed pixels, blue, green, red, and what its file said about them.
#ifndef ROXE_HOST_PICTURE_H_
#define ROXE_HOST_PICTURE_H_

#include <array>
#include <cstddef>
#include <cstdint>
#include <ctime>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "roxe.h"

namespace host {

using Bytes = std::vector<uint8_t>;

struct Colour {
  uint8_t red = 0, green = 0, blue = 0;
};

// What is printed on paper of a given size: pixels along x and y per unit, or their ratio only.
struct Density {
  enum class Unit { kNone, kRatio, kInch, kMetre };
  Unit unit = Unit::kNone;
  uint32_t x = 0, y = 0;
};

// How a JPEG was compressed, component by component: Y, Cb and Cr, or grey alone.
struct JpegCoding {
  struct Component {
    std::array<uint16_t, 64> quantisation;  // row by row, by vertical frequency
    int horizontal_samples, vertical_samples;
  };
  std::vector<Component> components;
};

// Blocks that travel from the input to the output.
struct Metadata {
  // The segments of a JPEG that are kept, each content in the member of the same name.
  enum class SegmentKind { kExif, kXmp, kExtendedXmp, kIcc, kPhotoshop, kComment, kOther };
  struct Segment {
    int marker;
    Bytes bytes;
  };
  struct Chunk {
    std::string name;  // of four letters
    Bytes bytes;
    bool after_pixels;
  };

  Bytes exif;  // the TIFF structure, without a container's prefix
  Bytes xmp;   // the packet
  Bytes icc;   // the whole profile
  Density density;
  std::vector<Bytes> extended_xmp;      // JPEG APP1 segments that continue a long XMP packet
  std::vector<Bytes> photoshop;         // JPEG APP13 segments: IPTC and other resources
  std::vector<Bytes> comments;          // JPEG comments
  std::vector<Segment> other_segments;  // JPEG segments of other programs
  std::vector<SegmentKind> segment_order;
  std::vector<Chunk> chunks;  // PNG texts other than XMP, and chunks of other programs

  // How a PNG says what its numbers mean where it has no profile: rendering intent of sRGB, gamma
  // and the eight chromaticities in units of 1/100000.
  std::optional<int> srgb_intent;
  std::optional<int32_t> gamma;
  std::optional<std::array<int32_t, 8>> chromaticities;

  std::optional<JpegCoding> jpeg_coding;
  bool lossless = false;             // a WebP that keeps every pixel
  std::optional<timespec> modified;  // when the file was last changed
  bool pixels_moved = false;         // since then: places among them are others now
};

class Picture {
 public:
#ifdef FUZZING_BUILD_MODE_UNSAFE_FOR_PRODUCTION  // the usual name; large pictures only cost time
  static constexpr int64_t kMaxPixels = 50'000;
#else
  static constexpr int64_t kMaxPixels = 250'000'000;
#endif

  Picture() = default;
  // Pixels are not initialised. Throws Failure if the size is above the limit.
  Picture(int32_t width, int32_t height);
  // Pixels of one colour.
  Picture(int32_t width, int32_t height, Colour colour);

  int32_t width() const { return width_; }
  int32_t height() const { return height_; }
  uint8_t* row(int32_t y) { return pixels_.get() + 3 * static_cast<ptrdiff_t>(width_) * y; }
  const uint8_t* row(int32_t y) const {
    return pixels_.get() + 3 * static_cast<ptrdiff_t>(width_) * y;
  }
  ptrdiff_t row_bytes() const { return 3 * static_cast<ptrdiff_t>(width_); }
  // The library's view of the pixels. A source is never written through it.
  PixelArray record() const;

  Colour at(int32_t x, int32_t y) const;
  bool contains(int64_t x, int64_t y) const;
  bool is_grey() const;  // equal channels everywhere
  std::string size_text() const;

  // Takes over the pixels of another picture and keeps its own metadata.
  void replace_pixels(Picture&& other);

  Metadata metadata;
  bool one_channel = false;  // came from one channel; written so while is_grey()

 private:
  int32_t width_ = 0, height_ = 0;
  std::unique_ptr<uint8_t[]> pixels_;
};

// Turns and mirrors the pixels as EXIF orientation 1 ... 8 asks, so that 1 describes the result.
void make_upright(Picture& picture, int orientation);

std::string size_text(int64_t width, int64_t height);

}  // namespace host

#endif  // ROXE_HOST_PICTURE_H_
