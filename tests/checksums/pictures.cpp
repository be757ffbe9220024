#include "checksums/pictures.h"

namespace {

// Integer-only content, so that the pictures themselves are the same everywhere.
struct Generator {
  uint32_t state;
  uint32_t next() {
    state = state * 1664525u + 1013904223u;
    return state >> 16;
  }
};

}  // namespace

Picture picture(const std::string& name, uint32_t format, int32_t width, int32_t height,
                int32_t padding, const Paint& paint) {
  const int32_t channels = format == kRoxeFormatGray8 ? 1 : 3;
  const int32_t row_bytes = channels * width + padding;
  Picture made = {name, {format, width, height, row_bytes, nullptr}, {}};
  made.bytes.assign(static_cast<size_t>(row_bytes) * static_cast<size_t>(height), 0xA5);
  for (int32_t y = 0; y < height; ++y)
    for (int32_t x = 0; x < width; ++x)
      for (int32_t c = 0; c < channels; ++c)
        made.bytes[static_cast<size_t>(y) * static_cast<size_t>(row_bytes) +
                   static_cast<size_t>(channels * x + c)] = paint(x, y, c);
  return made;
}

PixelArray record_of(Picture& picture) {
  picture.record.pixels = picture.bytes.data();
  return picture.record;
}

std::vector<Picture> pictures() {
  Generator noise = {1};
  const Paint random = [&](int32_t, int32_t, int32_t) {
    return static_cast<uint8_t>(noise.next());
  };
  const Paint slopes = [](int32_t x, int32_t y, int32_t c) {
    return static_cast<uint8_t>(c == 0 ? x : c == 1 ? y : (x + y) / 2);
  };
  // Blocks of colour with a little grain, closer to a photograph.
  const Paint scene = [&](int32_t x, int32_t y, int32_t c) {
    Generator block = {static_cast<uint32_t>(x / 23 * 977 + y / 17 * 131 + c * 7919)};
    block.next();
    return static_cast<uint8_t>(20 + block.next() % 200 + noise.next() % 16);
  };
  const Paint greys = [](int32_t x, int32_t y, int32_t) { return static_cast<uint8_t>(3 * x + y); };
  const Paint white = [](int32_t, int32_t, int32_t) { return static_cast<uint8_t>(255); };
  std::vector<Picture> all;
  all.push_back(picture("noise 61x47", kRoxeFormatRGB24, 61, 47, 0, random));
  all.push_back(picture("noise 130x21 padded", kRoxeFormatRGB24, 130, 21, 5, random));
  all.push_back(picture("slopes 100x90", kRoxeFormatRGB24, 100, 90, 0, slopes));
  all.push_back(picture("scene 200x150", kRoxeFormatRGB24, 200, 150, 8, scene));
  all.push_back(picture("scene 97x211 padded", kRoxeFormatRGB24, 97, 211, 1, scene));
  all.push_back(picture("greys 64x64", kRoxeFormatRGB24, 64, 64, 0, greys));
  all.push_back(picture("white 40x30", kRoxeFormatRGB24, 40, 30, 0, white));
  all.push_back(picture("noise 5x4", kRoxeFormatRGB24, 5, 4, 2, random));
  all.push_back(picture("noise 1x1", kRoxeFormatRGB24, 1, 1, 0, random));
  return all;
}
