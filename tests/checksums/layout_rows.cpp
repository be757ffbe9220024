#include "checksums/layout_rows.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <functional>
#include <limits>
#include <vector>

#include "checksums/digest.h"

namespace {

constexpr int32_t kLow = std::numeric_limits<int32_t>::min();
constexpr int32_t kHigh = std::numeric_limits<int32_t>::max();
constexpr uint32_t kUnknown =
    1;  // a record of this format passes unexamined: here four bytes a pixel
constexpr uint32_t k24 = kRoxeFormatRGB24, k8 = kRoxeFormatGray8;

struct Shape {
  int32_t width, height, padding;
  uint32_t format = k24;

  int32_t row_bytes() const { return (format == k24 ? 3 : format == k8 ? 1 : 4) * width + padding; }
  int32_t size() const { return row_bytes() * height; }
  std::string name() const {
    return std::to_string(width) + "x" + std::to_string(height) +
           (padding ? "+" + std::to_string(padding) : "") +
           (format == k24  ? ""
            : format == k8 ? " of 8 bits"
                           : " of 32 bits");
  }
  PixelArray record(uint8_t* pixels) const { return {format, width, height, row_bytes(), pixels}; }
};

// Where source and destination lie: in memory of their own, or the destination so many bytes on in
// the memory of the source.
constexpr int32_t kApart = kLow;
struct Layout {
  Shape src, dst;
  int32_t distance = kApart;

  Layout(Shape both, int32_t bytes_on = kApart) : src(both), dst(both), distance(bytes_on) {
    if (bytes_on == kApart) dst.padding = (both.padding + 5) % 11;
  }
  Layout(Shape from, Shape onto) : src(from), dst(onto) {}

  std::string name() const {
    if (distance == 0) return src.name() + " in place";
    if (distance != kApart) return src.name() + " moved by" + Joined(distance);
    return src.name() + " onto " + dst.name();
  }
};

const std::vector<Layout> kSizes = {
    // From a single pixel to two vectors of the widest set and a pixel more; thin and odd ones.
    {{1, 1, 0}},
    {{1, 1, 9}},
    {{2, 1, 1}},
    {{1, 2, 0}},
    {{2, 2, 3}},
    {{3, 3, 0}},
    {{1, 129, 2}},
    {{2, 97, 0}},
    {{257, 1, 0}},
    {{255, 2, 7}},
    {{5, 4, 0}},
    {{7, 13, 1}},
    {{15, 17, 0}},
    {{16, 16, 16}},
    {{17, 15, 13}},
    {{31, 9, 2}},
    {{33, 40, 29}},
    {{63, 12, 0}},
    {{65, 31, 5}},
    {{127, 5, 1}},
    {{129, 8, 0}},
    {{257, 129, 1}},
    // Different sizes, formats and lengths of rows.
    {{50, 40, 0}, {33, 57, 4}},
    {{9, 9, 2}, {65, 20, 0}},
    {{90, 11, 1}, {1, 1, 0}},
    {{40, 30, 0, k8}, {40, 30, 0}},
    {{40, 30, 90, k8}, {40, 30, 2}},
    {{37, 30, 0}, {37, 30, 0, k8}},
    {{37, 30, 80}, {37, 30, 80, k8}},
    {{35, 28, 0, kUnknown}, {35, 28, 0, kUnknown}},
    {{35, 28, 3, kUnknown}, {35, 28, 0}},
    {{36, 28, 0}, {36, 28, 1, kUnknown}},
    // In place, and pictures that share memory otherwise.
    {{61, 23, 4}, 0},
    {{35, 28, 0, kUnknown}, 0},
    {{45, 17, 0}, 3},
    {{45, 17, 0}, -3},
    {{45, 17, 2}, 1},
    {{45, 17, 2}, 137},
    {{45, 17, 2}, -274},
};
// What every parameter is tried on: blocks of colour and noise.
const std::vector<Layout> kPictures = {{{47, 33, 2}}, {{29, 50, 6}, {41, 37, 3}}};

struct Call {
  std::string name;
  std::function<int32_t(PixelArray* src, PixelArray* dst, Digest* numbers)> run;
};

using Four = std::array<int32_t, 4>;

// A mask of the size of a picture, with rows longer than needed.
class Mask {
 public:
  Mask(const PixelArray& like, int32_t padding, uint32_t format = k8)
      : shape_{like.width, like.height, padding, format},
        bytes_(static_cast<size_t>(shape_.size())) {
    for (size_t i = 0; i < bytes_.size(); ++i)
      bytes_[i] = static_cast<uint8_t>(i / 11 % 3 == 0 ? 255 : i / 11 % 3 == 1 ? 0 : 7 * i);
  }
  PixelArray record() { return shape_.record(bytes_.data()); }

 private:
  Shape shape_;
  std::vector<uint8_t> bytes_;
};

Quad inset(const PixelArray& image, int32_t by) {
  const int32_t right = image.width - 1, bottom = image.height - 1;
  return {by, by / 2, right, by, right - by / 2, bottom - by, by / 3, bottom};
}

void add_quad(Digest* numbers, const Quad& quad) {
  numbers->add({quad.x0, quad.y0, quad.x1, quad.y1, quad.x2, quad.y2, quad.x3, quad.y3});
}

// Every operation once or twice.
std::vector<Call> calls_on_every_layout(const Operations& op) {
  return {
      {"verify",
       [=](PixelArray* src, PixelArray* dst, Digest* numbers) {
         numbers->add({op.verify(dst)});
         return op.verify(src);
       }},
      {"rotate",
       [=](PixelArray* src, PixelArray* dst, Digest*) {
         return op.rotate(src, src->width / 2, src->height / 3, 0.2f, dst, dst->width / 2,
                          dst->height / 2);
       }},
      {"rotate by about a quarter",
       [=](PixelArray* src, PixelArray* dst, Digest*) {
         return op.rotate(src, src->width / 2, src->height / 2, 1.6f, dst, dst->width / 2,
                          dst->height / 2);
       }},
      {"straighten", [=](PixelArray* src, PixelArray* dst,
                         Digest*) { return op.straighten(src, 1, 2, 60, -1, dst); }},
      {"affine",
       [=](PixelArray* src, PixelArray* dst, Digest* numbers) {
         Quad quad = inset(*src, 2);
         const int32_t status =
             op.affine(src, dst, &quad, nullptr, {-1, 0, dst->width, dst->height + 1});
         add_quad(numbers, quad);
         return status;
       }},
      {"affine onto corners",
       [=](PixelArray* src, PixelArray* dst, Digest*) {
         Quad quad = inset(*src, 0);
         const Quad onto = {1, 0, dst->width, -1, dst->width - 1, dst->height, -1, dst->height + 1};
         return op.affine(src, dst, &quad, &onto, {0, 0, dst->width, dst->height});
       }},
      {"perspective",
       [=](PixelArray* src, PixelArray* dst, Digest* numbers) {
         Quad quad = inset(*src, 1);
         const int32_t status =
             op.perspective(src, dst, &quad, 0, 0, {0, 0, dst->width, dst->height});
         add_quad(numbers, quad);
         return status;
       }},
      {"size",
       [=](PixelArray* src, PixelArray*, Digest* numbers) {
         Quad quad = inset(*src, 3);
         int32_t width = -1, height = -1;
         const int32_t status = op.correction_size(&quad, 0, 0, 0, &width, &height);
         add_quad(numbers, quad);
         numbers->add({width, height});
         return status;
       }},
      {"soft focus", [=](PixelArray* src, PixelArray* dst,
                         Digest*) { return op.soft_focus(src, dst, nullptr, 6, 0); }},
      {"soft focus masked",
       [=](PixelArray* src, PixelArray* dst, Digest*) {
         Mask mask(*src, 13);
         const PixelArray record = mask.record();
         return op.soft_focus(src, dst, &record, 5, 4);
       }},
      {"soft focus under a sharp mask",
       [=](PixelArray* src, PixelArray* dst, Digest*) {
         Mask mask(*src, 0);
         const PixelArray record = mask.record();
         return op.soft_focus(src, dst, &record, 40, 1);
       }},
      {"replace colour",
       [=](PixelArray* src, PixelArray* dst, Digest*) {
         return op.replace_colour(src, dst, 60, 90, 180, 120, -75, 35, -10);
       }},
      {"replace colour mask",
       [=](PixelArray* src, PixelArray* dst, Digest*) {
         return op.replace_colour_mask(src, dst, 60, 90, 180, 120);
       }},
      {"tint", [=](PixelArray* src, PixelArray* dst,
                   Digest*) { return op.tint(src, dst, 60, 90, 180, 90); }},
      {"tint mask", [=](PixelArray* src, PixelArray* dst,
                        Digest*) { return op.tint_mask(src, dst, 200, 30, 10, 160); }},
      {"temperature", [=](PixelArray* src, PixelArray* dst,
                          Digest*) { return op.temperature(src, dst, 41, -13); }},
      {"auto gamma",
       [=](PixelArray* src, PixelArray* dst, Digest*) { return op.auto_gamma(src, dst, nullptr); }},
      {"auto gamma past the edge",
       [=](PixelArray* src, PixelArray* dst, Digest*) {
         const PixelRect region = {src->width / 2, src->height / 2, src->width + 3,
                                   src->height + 2};
         return op.auto_gamma(src, dst, &region);
       }},
      {"shadow highlight", [=](PixelArray* src, PixelArray* dst,
                               Digest*) { return op.shadow_highlight(src, dst, 35, 25, 15); }},
      {"variations", [=](PixelArray* src, PixelArray* dst,
                         Digest*) { return op.variations(src, dst, 3, -2, 1, -1, 2); }},
  };
}

// Every parameter over its range and beyond it.
std::vector<Call> calls_with_every_parameter(const Operations& op) {
  std::vector<Call> all;
  const auto add = [&](const std::string& name, const auto& run) { all.push_back({name, run}); };

  for (const float angle : {-0.0f, 1e-30f, 1e-4f, -0.3f, 0.7853982f, 1.5707964f, 1.58f, 3.1415927f,
                            -2.2f, 4.712389f, 6.3f, 1e4f, -1e9f})
    add("rotate" + Joined(angle), [=](PixelArray* src, PixelArray* dst, Digest*) {
      return op.rotate(src, src->width / 2, src->height / 2, angle, dst, dst->width / 2,
                       dst->height / 2);
    });
  for (const float angle :
       {std::numeric_limits<float>::infinity(), std::numeric_limits<float>::quiet_NaN()})
    add(angle > 0 ? "rotate infinity" : "rotate nan",
        [=](PixelArray* src, PixelArray* dst, Digest*) {
          return op.rotate(src, 9, 9, angle, dst, 9, 9);
        });
  for (const Four& centres :
       {Four{0, 0, 0, 0}, Four{-20, 60, 13, -4}, Four{40, 1, 40, 1}, Four{40000, 9, 40000, 9},
        Four{kHigh, 5, kHigh, 5}, Four{5, kLow, 5, kLow}, Four{kLow, kHigh, kHigh, kLow}})
    add("rotate about" + Joined(centres[0], centres[1], centres[2], centres[3]),
        [=](PixelArray* src, PixelArray* dst, Digest*) {
          return op.rotate(src, centres[0], centres[1], 0.1f, dst, centres[2], centres[3]);
        });
  for (const Four& line : {Four{0, 0, 9, 0}, Four{4, 9, 4, -9}, Four{3, 3, 3, 3}, Four{0, 0, 7, 7},
                           Four{0, 0, 7, -7}, Four{9, 0, 0, 1}, Four{0, 9, 1, 0},
                           Four{-5, 2, 60, 30}, Four{kLow, 0, kHigh, 1}, Four{0, kLow, 1, kHigh}})
    add("straighten" + Joined(line[0], line[1], line[2], line[3]),
        [=](PixelArray* src, PixelArray* dst, Digest*) {
          return op.straighten(src, line[0], line[1], line[2], line[3], dst);
        });

  const Quad quads[] = {
      {0, 0, 28, 0, 28, 32, 0, 32},            // a rectangle
      {28, 32, 0, 32, 0, 0, 28, 0},            // the same from another corner
      {0, 32, 28, 32, 28, 0, 0, 0},            // and the other way round
      {14, 0, 28, 16, 14, 32, 0, 16},          // a diamond
      {10, 1, 20, 3, 28, 30, 2, 27},           // a road
      {-9, -7, 40, 2, 33, 45, -12, 39},        // past the picture
      {3, 3, 4, 3, 4, 4, 3, 4},                // one pixel
      {0, 0, 20, 20, 20, 0, 0, 20},            // crossed
      {0, 0, 10, 10, 20, 20, 0, 20},           // three on a line
      {5, 5, 5, 5, 20, 5, 20, 20},             // two the same
      {0, 0, 20, 0, 4, 4, 0, 20},              // a dart
      {0, 0, 30000, 0, 30000, 30000, 0, 999},  // large
      {kLow, kLow, kHigh, kLow, kHigh, kHigh, kLow, kHigh},
  };
  for (const Quad& corners : quads) {
    const std::string name = Joined(corners.x0, corners.y0, corners.x1, corners.y1, corners.x2,
                                    corners.y2, corners.x3, corners.y3);
    add("affine" + name, [=](PixelArray* src, PixelArray* dst, Digest* numbers) {
      Quad quad = corners;
      const int32_t status = op.affine(src, dst, &quad, nullptr, {2, 1, 31, 30});
      add_quad(numbers, quad);
      return status;
    });
    add("affine onto" + name, [=](PixelArray* src, PixelArray* dst, Digest* numbers) {
      Quad quad = {1, 1, 27, 3, 26, 31, 2, 29};
      const int32_t status = op.affine(src, dst, &quad, &corners, {-3, -3, 35, 35});
      add_quad(numbers, quad);
      return status;
    });
    add("perspective" + name, [=](PixelArray* src, PixelArray* dst, Digest* numbers) {
      Quad quad = corners;
      const int32_t status = op.perspective(src, dst, &quad, 7, -7, {-2, 3, 30, 33});
      add_quad(numbers, quad);
      return status;
    });
    add("size" + name, [=](PixelArray*, PixelArray*, Digest* numbers) {
      Quad quad = corners;
      int32_t width = -1, height = -1;
      const int32_t status = op.correction_size(&quad, 0, 0, 0, &width, &height);
      add_quad(numbers, quad);
      numbers->add({width, height});
      return status;
    });
  }
  for (const PixelRect& rect :
       {PixelRect{0, 0, 0, 9}, PixelRect{9, 9, 3, 12}, PixelRect{3, 9, 12, 5},
        PixelRect{-9, -9, 0, 0}, PixelRect{90, 0, 99, 9}, PixelRect{-90, -80, 90, 95},
        PixelRect{5, 6, 6, 7}, PixelRect{kLow, kLow, kHigh, kHigh}, PixelRect{kHigh, 0, kLow, 9}})
    add("affine into" + Joined(rect.left, rect.top, rect.right, rect.bottom),
        [=](PixelArray* src, PixelArray* dst, Digest*) {
          Quad quad = {2, 1, 27, 4, 24, 30, 0, 28};
          return op.affine(src, dst, &quad, nullptr, rect);
        });

  for (const int32_t radius : {-5, 1, 2, 7, 16, 31, 64, 257, 258, 900})
    for (const int32_t mask_radius : {-1, 2, 9, 33})
      add("soft focus masked" + Joined(radius, mask_radius),
          [=](PixelArray* src, PixelArray* dst, Digest*) {
            Mask mask(*src, 3);
            const PixelArray record = mask.record();
            return op.soft_focus(src, dst, &record, radius, mask_radius);
          });
  add("soft focus under a mask of 24 bits", [=](PixelArray* src, PixelArray* dst, Digest*) {
    Mask mask(*src, 0, k24);
    const PixelArray record = mask.record();
    return op.soft_focus(src, dst, &record, 3, 3);
  });
  add("soft focus under a mask that is too wide", [=](PixelArray* src, PixelArray* dst, Digest*) {
    PixelArray wider = *src;
    ++wider.width;
    Mask mask(wider, 0);
    const PixelArray record = mask.record();
    return op.soft_focus(src, dst, &record, 3, 3);
  });

  const uint32_t colours[][3] = {{0, 0, 0},    {255, 255, 255}, {0, 255, 255}, {255, 255, 0},
                                 {90, 60, 10}, {100, 99, 101},  {300, 0, 7},   {20, 200, 20}};
  for (const auto& colour : colours) {
    const uint32_t blue = colour[0], green = colour[1], red = colour[2];
    for (const uint32_t tolerance : {1u, 25u, 130u, 4000000000u}) {
      const std::string name = Joined(blue, green, red, tolerance);
      add("replace colour mask" + name, [=](PixelArray* src, PixelArray* dst, Digest*) {
        return op.replace_colour_mask(src, dst, blue, green, red, tolerance);
      });
      add("tint" + name, [=](PixelArray* src, PixelArray* dst, Digest*) {
        return op.tint(src, dst, blue, green, red, tolerance);
      });
    }
  }
  for (const int32_t hue : {-360, -181, -1, 60, 400, 16777216, kLow})
    for (const int32_t saturation : {-100, 0, 55, 2000})
      for (const int32_t value : {-100, 0, 30})
        add("replace colour by" + Joined(hue, saturation, value),
            [=](PixelArray* src, PixelArray* dst, Digest*) {
              return op.replace_colour(src, dst, 90, 110, 170, 200, hue, saturation, value);
            });
  for (const int32_t temperature : {-1000, -75, -1, 1, 9, 62, 99})
    for (const int32_t tint : {-100, -7, 3, 88, kHigh})
      add("temperature" + Joined(temperature, tint),
          [=](PixelArray* src, PixelArray* dst, Digest*) {
            return op.temperature(src, dst, temperature, tint);
          });
  for (const PixelRect& region :
       {PixelRect{0, 0, 1, 1}, PixelRect{3, 4, 20, 9}, PixelRect{-7, -7, 11, 13},
        PixelRect{40, 20, 60, 31}, PixelRect{5, 5, 5, 9}, PixelRect{9, 9, 2, 2},
        PixelRect{0, 30, 100, 99}, PixelRect{kLow, kLow, kHigh, kHigh}})
    add("auto gamma in" + Joined(region.left, region.top, region.right, region.bottom),
        [=](PixelArray* src, PixelArray* dst, Digest*) {
          return op.auto_gamma(src, dst, &region);
        });
  for (const uint32_t shadow : {1u, 50u, 100u, 4000000000u})
    for (const uint32_t highlight : {0u, 7u, 80u, 101u})
      for (const int32_t midtone : {-100, 3, 100, kLow})
        add("shadow highlight" + Joined(shadow, highlight, midtone),
            [=](PixelArray* src, PixelArray* dst, Digest*) {
              return op.shadow_highlight(src, dst, shadow, highlight, midtone);
            });
  for (const int32_t red : {-60, -3, 0, 5})
    for (const int32_t dark : {-9, 0, 2})
      for (const int32_t level : {-4, 1, 5, 99})
        add("variations" + Joined(red, dark, level),
            [=](PixelArray* src, PixelArray* dst, Digest*) {
              return op.variations(src, dst, red, 2 * red, -3, dark, level);
            });
  add("variations of extremes", [=](PixelArray* src, PixelArray* dst, Digest*) {
    return op.variations(src, dst, kLow, kHigh, kLow, kHigh, 6);
  });
  return all;
}

// Blocks of colour, every third with grain, and some bytes at the ends of the range.
void paint(const PixelArray& image, int32_t bytes_a_pixel) {
  uint32_t noise = static_cast<uint32_t>(7 * image.width + image.height);
  for (int32_t y = 0; y < image.height; ++y)
    for (int32_t x = 0; x < image.width * bytes_a_pixel; ++x) {
      noise = noise * 1664525u + 1013904223u;
      const uint32_t column = static_cast<uint32_t>(x / bytes_a_pixel / 7);
      const uint32_t place = column * 977 + static_cast<uint32_t>(y / 5) * 131;
      uint32_t value = place * (3 + 2 * static_cast<uint32_t>(x % bytes_a_pixel));
      if (place % 3 == 0) value += noise >> 26;
      if (noise >> 27 == 0) value = noise & 0x8000 ? 255 : 0;
      image.pixels[y * image.rowBytes + x] = static_cast<uint8_t>(value);
    }
}

std::string rows(const std::vector<Layout>& layouts, const std::vector<Call>& calls) {
  std::string table;
  for (const Layout& layout : layouts) {
    const bool apart = layout.distance == kApart;
    const int32_t from = apart ? 0 : std::max(0, -layout.distance);
    const int32_t onto = apart ? 0 : std::max(0, layout.distance);
    std::vector<uint8_t> src_bytes(static_cast<size_t>(layout.src.size() + from + onto), 0xA5);
    paint(layout.src.record(src_bytes.data() + from), layout.src.row_bytes() / layout.src.width);
    std::vector<uint8_t> dst_bytes(static_cast<size_t>(apart ? layout.dst.size() : 0));
    for (size_t i = 0; i < dst_bytes.size(); ++i) dst_bytes[i] = static_cast<uint8_t>(37 * i);

    for (const Call& call : calls) {
      std::vector<uint8_t> of_src = src_bytes, of_dst = dst_bytes;
      PixelArray src = layout.src.record(of_src.data() + from);
      PixelArray dst = layout.dst.record(apart ? of_dst.data() : of_src.data() + onto);
      Digest digest;
      const int32_t status = call.run(&src, &dst, &digest);
      digest.add(of_src);
      digest.add(of_dst);
      table += ChecksumLine(call.name, layout.name(), status, digest);
    }
  }
  return table;
}

}  // namespace

std::string LayoutRows(const Operations& operations) {
  return rows(kSizes, calls_on_every_layout(operations)) +
         rows(kPictures, calls_with_every_parameter(operations));
}
