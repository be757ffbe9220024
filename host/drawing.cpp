#include "drawing.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <string>
#include <utility>

#include "errors.h"
#include "status.h"

namespace host {
namespace {

// A copy of (width + 2) × (height + 2) pixels. No picture: it may pass the limit of pixels.
class RepeatedEdges {
 public:
  explicit RepeatedEdges(const Picture& picture)
      : width_(picture.width() + 2), height_(picture.height() + 2) {
    const size_t inner_bytes = static_cast<size_t>(picture.row_bytes());
    const size_t row_bytes = inner_bytes + 6;
    pixels_ = std::make_unique_for_overwrite<uint8_t[]>(row_bytes * static_cast<size_t>(height_));
    uint8_t* row = pixels_.get();
    for (int32_t y = -1; y <= picture.height(); ++y, row += row_bytes) {
      const uint8_t* inner = picture.row(std::clamp(y, 0, picture.height() - 1));
      std::memcpy(row, inner, 3);
      std::memcpy(row + 3, inner, inner_bytes);
      std::memcpy(row + 3 + inner_bytes, inner + inner_bytes - 3, 3);
    }
  }

  PixelArray record() const {
    return {kRoxeFormatRGB24, width_, height_, 3 * width_, pixels_.get()};
  }

 private:
  int32_t width_, height_;
  std::unique_ptr<uint8_t[]> pixels_;
};

bool equal(const Picture& a, const Picture& b) {
  return a.width() == b.width() && a.height() == b.height() &&
         std::memcmp(a.row(0), b.row(0),
                     static_cast<size_t>(a.row_bytes()) * static_cast<size_t>(a.height())) == 0;
}

}  // namespace

void add_edges(Options& options, Edges& edges) {
  const auto store = [&edges](const std::string& text) {
    edges = choice(text, "repeat|keep", "--edges") == "repeat" ? Edges::kRepeat : Edges::kKeep;
  };
  options
      .text("--edges", "repeat|keep",
            "repeat the pixels at the edges, so that no seam is lost, or keep the picture as it is",
            store)
      .otherwise = "repeat";
}

bool draw_into(Picture& picture, Size size, Colour background, const Call& call, Edges edges) {
  Picture result(size.width, size.height, background);
  PixelArray to = result.record();
  if (edges == Edges::kRepeat) {
    const RepeatedEdges source(picture);
    const PixelArray from = source.record();
    expect_ok(call(&from, &to));
  } else {
    const PixelArray from = picture.record();
    expect_ok(call(&from, &to));
  }
  const bool changed = !equal(picture, result);
  picture.replace_pixels(std::move(result));
  return changed;
}

bool draw_in_place(Picture& picture, const Call& call) {
  Picture before(picture.width(), picture.height());
  std::memcpy(before.row(0), picture.row(0),
              static_cast<size_t>(picture.row_bytes()) * static_cast<size_t>(picture.height()));
  PixelArray pixels = picture.record();
  expect_ok(call(&pixels, &pixels));
  return !equal(picture, before);
}

}  // namespace host
