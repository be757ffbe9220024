#include "doors/literal_table.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <numbers>
#include <optional>
#include <vector>

#include "checksums/digest.h"
#include "checksums/pictures.h"

namespace {

struct Image {  // packed rows of blue, green, red
  int32_t width, height;
  std::vector<uint8_t> bytes;

  Image(int32_t w, int32_t h, uint32_t colour = 0) : width(w), height(h) {  // 0xRRGGBB
    for (int32_t i = 0; i < w * h; ++i)
      for (const int shift : {0, 8, 16}) bytes.push_back(static_cast<uint8_t>(colour >> shift));
  }
  uint8_t* at(int32_t x, int32_t y) { return &bytes[static_cast<size_t>(3 * (y * width + x))]; }
  const uint8_t* at(int32_t x, int32_t y) const { return const_cast<Image*>(this)->at(x, y); }
  void set(int32_t x, int32_t y, const uint8_t* colour) { std::copy_n(colour, 3, at(x, y)); }
  PixelArray record() const {
    return {kRoxeFormatRGB24, width, height, 3 * width, const_cast<uint8_t*>(bytes.data())};
  }
};

using Drawn = std::optional<Image>;  // none: refused

struct Size {
  int32_t width, height;
};

Image packed(const Picture& picture) {
  const PixelArray& record = picture.record;
  Image image(record.width, record.height);
  for (int32_t y = 0; y < image.height; ++y)
    for (int32_t x = 0; x < image.width; ++x)
      image.set(x, y, &picture.bytes[static_cast<size_t>(y * record.rowBytes + 3 * x)]);
  return image;
}

Image with_repeated_edges(const Image& image) {
  Image around(image.width + 2, image.height + 2);
  for (int32_t y = 0; y < around.height; ++y)
    for (int32_t x = 0; x < around.width; ++x)
      around.set(
          x, y,
          image.at(std::clamp(x - 1, 0, image.width - 1), std::clamp(y - 1, 0, image.height - 1)));
  return around;
}

Image turned_clockwise(const Image& image) {
  Image turned(image.height, image.width);
  for (int32_t y = 0; y < image.height; ++y)
    for (int32_t x = 0; x < image.width; ++x) turned.set(image.height - 1 - y, x, image.at(x, y));
  return turned;
}

// ---- sizes of rotated pictures

// Whether the sources of the four corner pixels keep their distance from the outermost pixels.
bool fits(const Image& image, double angle, double margin, Size size) {
  for (const double x : {-(size.width / 2), size.width - 1 - size.width / 2})
    for (const double y : {-(size.height / 2), size.height - 1 - size.height / 2}) {
      const double source_x = image.width / 2 + std::cos(angle) * x + std::sin(angle) * y;
      const double source_y = image.height / 2 + std::cos(angle) * y - std::sin(angle) * x;
      if (source_x < margin || source_x > image.width - margin - 0.5) return false;
      if (source_y < margin || source_y > image.height - margin - 0.5) return false;
    }
  return true;
}

std::optional<Size> crop_fit(const Image& image, double angle, double margin) {
  for (int32_t width = image.width; width >= 1; --width) {
    const double height = static_cast<double>(width) * image.height / image.width;
    const Size size = {width, std::max(1, static_cast<int32_t>(std::floor(height + 0.5)))};
    if (fits(image, angle, margin, size)) return size;
  }
  return {};
}

std::optional<Size> crop_free(const Image& image, double angle, double margin) {
  std::optional<Size> best;
  const int32_t longest = image.width + image.height;
  for (int32_t width = 1; width <= longest; ++width)  // a later one of the same area is wider
    for (int32_t height = 1; height <= longest; ++height)
      if (fits(image, angle, margin, {width, height}) &&
          (!best || width * height >= best->width * best->height))
        best = {width, height};
  return best;
}

// ---- the operations with their options

enum class Canvas { kSame, kExpand, kFit, kFree };

struct Turn {
  bool repeat = true;
  Canvas canvas = Canvas::kSame;
  std::optional<Size> about = {};
  uint32_t background = 0;
};

std::optional<Size> cropped(const Image& image, double angle, const Turn& turn) {
  const double margin = turn.repeat ? 0.5 : 1.5;
  return turn.canvas == Canvas::kFit ? crop_fit(image, angle, margin)
                                     : crop_free(image, angle, margin);
}

Drawn rotate(const Operations& op, const Image& image, double degrees, const Turn& turn = {}) {
  if (turn.about && (turn.about->width >= image.width || turn.about->height >= image.height))
    return {};
  if (turn.repeat && !turn.about && std::fmod(degrees, 90) == 0) {
    Image turned = image;
    for (int quarters = static_cast<int>(degrees / 90); quarters % 4 != 0; --quarters)
      turned = turned_clockwise(turned);
    return turned;
  }
  const double angle = std::remainder(degrees, 360.0) * std::numbers::pi / 180;
  const Size centre = turn.about ? *turn.about : Size{image.width / 2, image.height / 2};
  Size size = {image.width, image.height}, to = centre;
  if (turn.canvas == Canvas::kExpand) {
    std::vector<double> xs, ys;
    for (const double x : {-centre.width, image.width - 1 - centre.width})
      for (const double y : {-centre.height, image.height - 1 - centre.height}) {
        xs.push_back(x * std::cos(angle) - y * std::sin(angle));
        ys.push_back(x * std::sin(angle) + y * std::cos(angle));
      }
    const auto first = [](const std::vector<double>& values) {
      return static_cast<int32_t>(
          std::floor(*std::min_element(values.begin(), values.end()) + 1e-6));
    };
    const auto last = [](const std::vector<double>& values) {
      return static_cast<int32_t>(
          std::ceil(*std::max_element(values.begin(), values.end()) - 1e-6));
    };
    size = {last(xs) - first(xs) + 1, last(ys) - first(ys) + 1};
    to = {-first(xs), -first(ys)};
  } else if (turn.canvas != Canvas::kSame) {
    const std::optional<Size> crop = cropped(image, angle, turn);
    if (!crop) return {};
    size = *crop;
    to = {size.width / 2, size.height / 2};
  }
  const Image source = turn.repeat ? with_repeated_edges(image) : image;
  Image drawn(size.width, size.height, turn.background);
  const PixelArray src = source.record();
  PixelArray dst = drawn.record();
  if (op.rotate(&src, centre.width + turn.repeat, centre.height + turn.repeat,
                static_cast<float>(angle), &dst, to.width, to.height) != kRoxeOK)
    return {};
  return drawn;
}

Drawn straighten(const Operations& op, const Image& image, const Quad& line,
                 const Turn& turn = {}) {
  if (std::max(line.x0, line.x1) >= image.width || std::max(line.y0, line.y1) >= image.height)
    return {};
  const double dx = line.x1 - line.x0, dy = line.y1 - line.y0;
  if (dx == 0 || dy == 0) return image;
  const double angle = std::abs(dy) > std::abs(dx) ? std::atan(dx / dy) : std::atan(-dy / dx);
  Size size = {image.width, image.height};
  if (turn.canvas != Canvas::kSame) {
    const std::optional<Size> crop = cropped(image, angle, turn);
    if (!crop) return {};
    size = *crop;
  }
  const Image source = turn.repeat ? with_repeated_edges(image) : image;
  Image drawn(size.width, size.height, turn.background);
  const PixelArray src = source.record();
  PixelArray dst = drawn.record();
  if (op.straighten(&src, line.x0, line.y0, line.x1, line.y1, &dst) != kRoxeOK) return {};
  return drawn;
}

Quad shifted(Quad quad, int32_t by) {
  for (int32_t* value :
       {&quad.x0, &quad.y0, &quad.x1, &quad.y1, &quad.x2, &quad.y2, &quad.x3, &quad.y3})
    *value += by;
  return quad;
}

// onto: where the corners go; null: they are drawn upright.
Drawn affine(const Operations& op, const Image& image, const Quad& corners, const Quad* onto,
             Size size, bool repeat) {
  const Image source = repeat ? with_repeated_edges(image) : image;
  Image drawn(size.width, size.height);
  const PixelArray src = source.record();
  PixelArray dst = drawn.record();
  Quad quad = shifted(corners, repeat);
  if (op.affine(&src, &dst, &quad, onto, {0, 0, size.width, size.height}) != kRoxeOK) return {};
  return drawn;
}

Drawn natural_perspective(const Operations& op, const Image& image, const Quad& corners,
                          bool repeat) {
  Size size;
  Quad quad = corners;
  if (!roxeGetPerspectiveDistortionCorrectionSize(&quad, 0, 0, 0, &size.width, &size.height))
    return {};
  const Image source = repeat ? with_repeated_edges(image) : image;
  Image drawn(size.width, size.height);
  const PixelArray src = source.record();
  PixelArray dst = drawn.record();
  quad = shifted(corners, repeat);
  if (op.perspective(&src, &dst, &quad, 0, 0, {0, 0, size.width, size.height}) != 2) return {};
  return drawn;
}

template <typename Call>
Drawn in_place(Image image, const Call& call) {
  PixelArray record = image.record();
  if (call(&record) != kRoxeOK) return {};
  return image;
}

// ---- the table

class Table {
 public:
  void add(const std::string& typed, const std::string& picture, const Drawn& drawn) {
    char result[64] = "refused";
    if (drawn)
      std::snprintf(result, sizeof result, "%dx%d, %016llx", drawn->width, drawn->height,
                    static_cast<unsigned long long>(fnv1a(drawn->bytes)));
    text += typed + "; " + picture + "; " + result + "\n";
  }
  std::string text;
};

std::string joined(const Quad& quad) {
  std::string text;
  for (const int32_t value :
       {quad.x0, quad.y0, quad.x1, quad.y1, quad.x2, quad.y2, quad.x3, quad.y3})
    text += (text.empty() ? "" : ",") + std::to_string(value);
  return text;
}

void add_turns(Table& table, const Operations& op, const std::string& name, const Image& image) {
  const auto add = [&](const std::string& typed, const Drawn& drawn) {
    table.add(typed, name, drawn);
  };
  for (const int degrees : {0, 90, 180, 270, 360, 450})
    add("rotate --angle " + std::to_string(degrees), rotate(op, image, degrees));
  add("rotate --angle=-90", rotate(op, image, 270));
  add("rotate --angle 90 --expand", rotate(op, image, 90));
  add("rotate --angle 180 --crop", rotate(op, image, 180));
  add("rotate --angle 180 --edges keep", rotate(op, image, 180, {.repeat = false}));
  add("rotate --angle 90 --about 2,1", rotate(op, image, 90, {.about = Size{2, 1}}));
  add("rotate --angle 7.3", rotate(op, image, 7.3));
  add("rotate --angle=-30", rotate(op, image, -30));
  add("rotate --angle 100.5 --about 2,1", rotate(op, image, 100.5, {.about = Size{2, 1}}));
  add("rotate --angle 400 --background '#E07A2C'",
      rotate(op, image, 400, {.background = 0xE07A2C}));
  add("rotate --angle 20 --expand --background white",
      rotate(op, image, 20, {.canvas = Canvas::kExpand, .background = 0xFFFFFF}));
  add("rotate --angle 20 --expand --edges keep",
      rotate(op, image, 20, {.repeat = false, .canvas = Canvas::kExpand}));
  add("rotate --angle 5 --crop", rotate(op, image, 5, {.canvas = Canvas::kFit}));
  add("rotate --angle=-130 --crop free", rotate(op, image, -130, {.canvas = Canvas::kFree}));
  add("rotate --angle 85 --crop --edges keep",
      rotate(op, image, 85, {.repeat = false, .canvas = Canvas::kFit}));
  add("rotate --angle 12 --crop free --edges keep",
      rotate(op, image, 12, {.repeat = false, .canvas = Canvas::kFree}));

  for (const Quad& line : {Quad{0, 0, 4, 1, 0, 0, 0, 0}, Quad{3, 3, 2, 0, 0, 0, 0, 0},
                           Quad{0, 2, 2, 0, 0, 0, 0, 0}, Quad{0, 2, 4, 2, 0, 0, 0, 0}}) {
    const std::string typed = "straighten --line " + std::to_string(line.x0) + "," +
                              std::to_string(line.y0) + "," + std::to_string(line.x1) + "," +
                              std::to_string(line.y1);
    add(typed, straighten(op, image, line));
    add(typed + " --edges keep", straighten(op, image, line, {.repeat = false}));
    add(typed + " --crop", straighten(op, image, line, {.canvas = Canvas::kFit}));
    add(typed + " --crop free", straighten(op, image, line, {.canvas = Canvas::kFree}));
  }
}

void add_mappings(Table& table, const Operations& op, const std::string& name, const Image& image) {
  const int32_t w = image.width, h = image.height;
  if (w < 5) return;  // too small for four corners
  const Quad inner = {w / 5, 0, w - 1, h / 4, w - 2, h - 1, 0, h - 2};
  const Quad outer = {-1, -2, w + 1, 0, w, h + 1, 1, h};
  const Quad places = {0, h - 1, 1, 0, w, 1, w - 1, h};
  for (const bool repeat : {true, false}) {
    const std::string edges = repeat ? "" : " --edges keep";
    for (const Quad& corners : {inner, outer}) {
      const std::string typed = "perspective --corners=" + joined(corners);
      table.add(typed + edges, name, natural_perspective(op, image, corners, repeat));
      table.add(typed + " --size 33x20" + edges, name,
                affine(op, image, corners, nullptr, {33, 20}, repeat));
      table.add("warp --from=" + joined(corners) + " --to=" + joined(places) + edges, name,
                affine(op, image, corners, &places, {w, h}, repeat));
      table.add("warp --from=" + joined(corners) + " --to=" + joined(places) + " --size " +
                    std::to_string(w + 9) + "x" + std::to_string(h) + edges,
                name, affine(op, image, corners, &places, {w + 9, h}, repeat));
    }
  }
}

void add_colours_and_tones(Table& table, const Operations& op, const std::string& name,
                           const Image& image) {
  const auto add = [&](const std::string& typed, const auto& call) {
    table.add(typed, name, in_place(image, call));
  };
  // Orange is 255, 165, 0 and sky blue 135, 206, 235; given as blue, green, red.
  add("replace-colour --colour skyblue --tolerance 120 --hue 90",
      [&](PixelArray* p) { return op.replace_colour(p, p, 235, 206, 135, 120, 90, 0, 0); });
  add("replace-colour --colour orange --tolerance 150 --mask-only",
      [&](PixelArray* p) { return op.replace_colour_mask(p, p, 0, 165, 255, 150); });
  add("tint --colour orange --tolerance 150",
      [&](PixelArray* p) { return op.tint(p, p, 0, 165, 255, 150); });
  add("temperature --temperature 20", [&](PixelArray* p) { return op.temperature(p, p, 20, 0); });
  add("temperature --tint=-15", [&](PixelArray* p) { return op.temperature(p, p, 0, -15); });
  add("auto-gamma", [&](PixelArray* p) { return op.auto_gamma(p, p, nullptr); });
  add("shadow-highlight --shadow 40",
      [&](PixelArray* p) { return op.shadow_highlight(p, p, 40, 0, 0); });
  add("shadow-highlight --midtone 30",
      [&](PixelArray* p) { return op.shadow_highlight(p, p, 0, 0, 30); });
  add("variations --red 2 --dark=-1",
      [&](PixelArray* p) { return op.variations(p, p, 2, 0, 0, -1, 2); });

  Image blurred(image.width, image.height);
  const PixelArray src = image.record();
  PixelArray dst = blurred.record();
  const int32_t status = op.soft_focus(&src, &dst, nullptr, 9, 1);
  table.add("soft-focus --radius 9", name, status == kRoxeOK ? Drawn(blurred) : Drawn());
}

}  // namespace

std::string LiteralTable(const Operations& operations) {
  Table table;
  for (const Picture& picture : pictures()) {
    const Image image = packed(picture);
    add_turns(table, operations, picture.name, image);
    add_mappings(table, operations, picture.name, image);
    add_colours_and_tones(table, operations, picture.name, image);
  }
  return table.text;
}
