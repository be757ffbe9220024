#include "thumbnail.h"

#include <algorithm>

#include "codecs.h"

namespace host {
namespace {

constexpr int32_t kLongestSide = 160;

// The mean of the pixels that each small one covers; they share none.
Picture shrunk(const Picture& picture, int32_t width, int32_t height) {
  Picture small(width, height);
  const auto edge = [](int32_t i, int32_t from, int32_t to) {
    return static_cast<int32_t>(int64_t{i} * from / to);
  };
  for (int32_t y = 0; y < height; ++y) {
    const int32_t top = edge(y, picture.height(), height);
    const int32_t bottom = edge(y + 1, picture.height(), height);
    for (int32_t x = 0; x < width; ++x) {
      const int32_t left = edge(x, picture.width(), width);
      const int32_t right = edge(x + 1, picture.width(), width);
      int64_t sums[3] = {};
      for (int32_t row = top; row < bottom; ++row) {
        const uint8_t* pixel = picture.row(row) + 3 * static_cast<ptrdiff_t>(left);
        for (int32_t column = left; column < right; ++column, pixel += 3)
          for (int c = 0; c < 3; ++c) sums[c] += pixel[c];
      }
      const int64_t count = int64_t{bottom - top} * (right - left);
      for (int c = 0; c < 3; ++c)
        small.row(y)[3 * x + c] = static_cast<uint8_t>((sums[c] + count / 2) / count);
    }
  }
  return small;
}

}  // namespace

Thumbnail make_thumbnail(const Picture& picture, size_t most_bytes) {
  const int32_t longest = std::max(picture.width(), picture.height());
  const auto side = [&](int32_t length) {
    if (longest <= kLongestSide) return length;
    const int64_t scaled = (int64_t{length} * kLongestSide + longest / 2) / longest;
    return std::max(static_cast<int32_t>(scaled), 1);
  };
  const Picture small = shrunk(picture, side(picture.width()), side(picture.height()));
  WriteSettings settings;
  settings.subsampling = Subsampling::k420;
  for (const int quality : {85, 70, 50, 30, 15, 5}) {
    settings.quality = quality;
    Notes none;
    Bytes jpeg = encode_jpeg(small, {}, false, settings, none);
    if (jpeg.size() <= most_bytes) return {std::move(jpeg), small.width(), small.height()};
  }
  return {};
}

}  // namespace host
