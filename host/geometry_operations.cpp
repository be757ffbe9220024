#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>
#include <utility>

#include "corners.h"
#include "crop.h"
#include "drawing.h"
#include "errors.h"
#include "operation.h"
#include "option_table.h"
#include "status.h"
#include "text.h"

namespace host {
namespace {

std::string turned(double angle) {
  if (std::remainder(angle, 360.0) == 0) return "not turned";
  return "turned " + degrees(angle) + (angle > 0 ? " clockwise" : " anticlockwise");
}

void require_inside(Size picture, Point point, std::string_view what) {
  if (point.x < 0 || point.x >= picture.width || point.y < 0 || point.y >= picture.height)
    throw UsageError(std::string(what) + " " + to_text(point) + " lies outside the picture of " +
                     size_text(picture.width, picture.height) + " pixels");
}

Point centre_of(Size size) { return {size.width / 2, size.height / 2}; }

// Where a result lies if one of its points is a point of the picture.
Area placed(Size size, Point point, Point of_picture) {
  return {{of_picture.x - point.x, of_picture.y - point.y}, size};
}

// ------------------------------------------------------------------------------------------ rotate

class Geometric : public Operation {
 public:
  bool moves_pixels() const final { return true; }
};

class Rotate : public Geometric {
 public:
  void add_options(Options& options) override {
    Option& angle =
        options.decimal_number("--angle", angle_, -3600, 3600,
                               "degrees; positive turns clockwise, negative anticlockwise");
    angle.required = true;
    angle.form = "DEG";
    options.text("--about", "X,Y", "the point that stays in place (default: the centre)",
                 [this](const std::string& text) { about_ = Places(text, 1, "--about"); });
    options.flag("--expand", expand_, "make the picture larger, so that nothing is cut off");
    add_crop(options, crop_).excludes = {"--about", "--expand"};
    add_edges(options, edges_);
  }

  Outcome apply(Picture& picture, Colour background) const override {
    const double quarters = angle() / 90;
    if (is_exact()) {
      // The EXIF orientations that ask for 0, 90, 180 and 270 degrees clockwise.
      constexpr int kOrientations[] = {1, 6, 3, 8};
      make_upright(picture, kOrientations[static_cast<int>(quarters + 4) % 4]);
      return {turned(angle_), quarters != 0, "", std::abs(quarters) == 1};
    }

    const Point centre = centre_on(size_of(picture));
    const Canvas canvas = canvas_for(size_of(picture), centre);
    const int32_t shift = shift_of(edges_);
    const auto rotate = [&](const PixelArray* from, PixelArray* to) {
      return roxeRotateImage(from, centre.x + shift, centre.y + shift,
                             static_cast<float>(radians()), to, canvas.centre.x, canvas.centre.y);
    };
    const bool changed = draw_into(picture, canvas.size, background, rotate, edges_);
    return {turned(angle_) + " about " + to_text(centre), changed};
  }

  Area result_area(Size picture) const override {
    const Point centre = centre_on(picture);
    if (is_exact()) {
      const bool sideways = std::abs(angle()) == 90;
      const Size size = sideways ? Size{picture.height, picture.width} : picture;
      return placed(size, centre_of(size), centre);
    }
    const Canvas canvas = canvas_for(picture, centre);
    return placed(canvas.size, canvas.centre, centre);
  }

 private:
  struct Canvas {
    Size size;
    Point centre;
  };

  double angle() const { return std::remainder(angle_, 360.0); }
  double radians() const { return angle() * std::numbers::pi / 180; }

  // Whether every pixel moves to a place of its own and none is reckoned.
  bool is_exact() const {
    return edges_ == Edges::kRepeat && about_.empty() && std::remainder(angle_, 90.0) == 0;
  }

  Point centre_on(Size picture) const {
    if (about_.empty()) return centre_of(picture);
    const Point centre = about_.on(picture)[0];
    require_inside(picture, centre, "--about");
    return centre;
  }

  Canvas canvas_for(Size picture, Point centre) const {
    if (expand_) return expanded(picture, centre, radians());
    if (crop_ == Crop::kNone) return {picture, centre};
    const Size size = cropped(picture, radians(), edges_, crop_);
    return {size, centre_of(size)};
  }

  // The smallest canvas that holds every corner of the turned picture.
  static Canvas expanded(Size picture, Point centre, double radians) {
    double left = 0, right = 0, top = 0, bottom = 0;
    for (const double x : {0 - centre.x, picture.width - 1 - centre.x})
      for (const double y : {0 - centre.y, picture.height - 1 - centre.y}) {
        const double turned_x = x * std::cos(radians) - y * std::sin(radians);
        const double turned_y = x * std::sin(radians) + y * std::cos(radians);
        left = std::min(left, turned_x);
        right = std::max(right, turned_x);
        top = std::min(top, turned_y);
        bottom = std::max(bottom, turned_y);
      }
    // A hair of rounding must not cost a whole column.
    constexpr double kHair = 1e-6;
    const auto floor = [](double v) { return static_cast<int32_t>(std::floor(v + kHair)); };
    const auto ceil = [](double v) { return static_cast<int32_t>(std::ceil(v - kHair)); };
    return {{ceil(right) - floor(left) + 1, ceil(bottom) - floor(top) + 1},
            {-floor(left), -floor(top)}};
  }

  double angle_ = 0;
  Places about_;
  bool expand_ = false;
  Crop crop_ = Crop::kNone;
  Edges edges_ = Edges::kRepeat;
};

// -------------------------------------------------------------------------------------- straighten

class Straighten : public Geometric {
 public:
  void add_options(Options& options) override {
    options
        .text("--line", "X1,Y1,X2,Y2",
              "two points of a line that should be level or upright, such as the horizon",
              [this](const std::string& text) { line_ = Places(text, 2, "--line"); })
        .required = true;
    add_crop(options, crop_);
    add_edges(options, edges_);
  }

  void check(const LoadPicture&) override {
    if (!line_.need_a_picture()) require_different(line_.on({}));
  }

  Outcome apply(Picture& picture, Colour background) const override {
    const auto line = line_on(size_of(picture));
    const Point first = line.first, second = line.second;  // clang 14 captures no binding
    const bool upright = std::abs(second.y - first.y) > std::abs(second.x - first.x);
    const std::string way = upright ? "upright" : "level";
    if (!turns(first, second)) return {"not turned: the line is already " + way, false};

    const Size drawn = drawn_size(size_of(picture), first, second);
    const int32_t shift = shift_of(edges_);
    const auto straighten = [&](const PixelArray* from, PixelArray* to) {
      return roxeuAutoStraightenImage(from, first.x + shift, first.y + shift, second.x + shift,
                                      second.y + shift, to);
    };
    const bool changed = draw_into(picture, drawn, background, straighten, edges_);
    const double angle = angle_to_axis(first, second) * 180 / std::numbers::pi;
    return {turned(angle) + ", so that the line is " + way, changed};
  }

  Area result_area(Size picture) const override {
    const auto [first, second] = line_on(picture);
    const Size size = turns(first, second) ? drawn_size(picture, first, second) : picture;
    return placed(size, centre_of(size), centre_of(picture));
  }

 private:
  std::pair<Point, Point> line_on(Size picture) const {
    const std::vector<Point> line = line_.on(picture);
    require_different(line);
    for (const Point point : line) require_inside(picture, point, "the point");
    return {line[0], line[1]};
  }

  Size drawn_size(Size picture, Point first, Point second) const {
    if (crop_ == Crop::kNone) return picture;
    return cropped(picture, angle_to_axis(first, second), edges_, crop_);
  }

  static void require_different(const std::vector<Point>& line) {
    if (line[0].x == line[1].x && line[0].y == line[1].y)
      throw UsageError("--line needs two different points, and both are " + to_text(line[0]));
  }

  // The library draws nothing at all where nothing is to be done. The source of the one pixel here
  // is the centre of three by three.
  static bool turns(Point first, Point second) {
    Picture white(3, 3, {255, 255, 255}), pixel(1, 1, {0, 0, 0});
    const PixelArray from = white.record();
    PixelArray to = pixel.record();
    expect_ok(roxeuAutoStraightenImage(&from, first.x, first.y, second.x, second.y, &to));
    return pixel.at(0, 0).red > 0;
  }

  // By how much a line is turned to become level or upright, whichever is nearer.
  static double angle_to_axis(Point first, Point second) {
    const double dx = second.x - first.x, dy = second.y - first.y;
    return std::abs(dy) > std::abs(dx) ? std::atan(dx / dy) : std::atan(-dy / dx);
  }

  Places line_;
  Crop crop_ = Crop::kNone;
  Edges edges_ = Edges::kRepeat;
};

// ------------------------------------------------------------------------------------- perspective

class Perspective : public Geometric {
 public:
  void add_options(Options& options) override {
    options
        .text("--corners", "X1,Y1,...,X4,Y4",
              "the corners of something rectangular, in any order; it is drawn upright",
              [this](const std::string& text) { corners_ = Places(text, 4, "--corners"); })
        .required = true;
    options
        .text("--size", "WxH", "draw it at exactly this size",
              [this](const std::string& text) { size_ = size(text, "--size"); })
        .otherwise = "its natural size";
    options
        .text("--fit", "WxH",
              "draw it as large as fits, in its natural proportions (default: its natural size)",
              [this](const std::string& text) { fit_ = size(text, "--fit"); })
        .excludes = {"--size"};
    options.flag("--dry-run", dry_run_, "print the natural size and write nothing");
    add_edges(options, edges_);
  }

  void check(const LoadPicture&) override {
    if (!corners_.need_a_picture()) plan(corners_.on({}));
  }

  bool only_reports() const override { return dry_run_; }

  Outcome apply(Picture& picture, Colour background) const override {
    const Plan planned = plan_for(size_of(picture));
    const Size drawn = planned.drawn;
    if (dry_run_)
      return {
          "natural size: " + size_text(planned.natural.width, planned.natural.height) + " pixels",
          false};

    // At its natural size the library leaves nothing of the rectangle out.
    const bool natural = size_.width == 0 && fit_.width == 0;
    const PixelRect rect = {0, 0, drawn.width, drawn.height};
    const auto draw = [&](const PixelArray* from, PixelArray* to) -> int32_t {
      Quad quad = shifted(planned.quad, shift_of(edges_));
      if (!natural) return roxeAffineTransform(from, to, &quad, nullptr, rect);
      constexpr int32_t kDrawn = 2;  // this operation's own word for success
      const int32_t status = roxePerspectiveDistortionCorrection(from, to, &quad, 0, 0, rect);
      return status == kDrawn ? kRoxeOK : kRoxeErrFailed;
    };
    const bool changed = draw_into(picture, drawn, background, draw, edges_);
    return {"drew the corners upright", changed};
  }

  Area result_area(Size picture) const override { return {{}, plan_for(picture).drawn}; }

 private:
  struct Plan {
    Quad quad;
    Size natural, drawn;
  };

  Plan plan_for(Size picture) const {
    const std::vector<Point> corners = corners_.on(picture);
    const Plan planned = plan(corners);
    require_near(corners, picture, "--corners");
    return planned;
  }

  Plan plan(const std::vector<Point>& corners) const {
    Plan plan = {convex_quad(corners, CornerOrder::kAny, "--corners"), {}, size_};
    Quad sorted = plan.quad;
    if (!roxeGetPerspectiveDistortionCorrectionSize(&sorted, 0, 0, 1, &plan.natural.width,
                                                    &plan.natural.height))
      throw UsageError("--corners: no rectangle seen in perspective has these corners");
    if (fit_.width > 0)
      plan.drawn = fitted(plan.natural);
    else if (size_.width == 0)
      plan.drawn = plan.natural;
    return plan;
  }

  // The largest size of the natural proportions within --fit.
  Size fitted(Size natural) const {
    const int64_t across = int64_t{natural.height} * fit_.width;
    const int64_t down = int64_t{natural.width} * fit_.height;
    const Size fitted = down > across
                            ? Size{fit_.width, static_cast<int32_t>(across / natural.width)}
                            : Size{static_cast<int32_t>(down / natural.height), fit_.height};
    if (fitted.width < 1 || fitted.height < 1)
      throw UsageError("--fit is too narrow for the natural size of these corners, " +
                       size_text(natural.width, natural.height) + " pixels");
    return fitted;
  }

  bool dry_run_ = false;
  Places corners_;
  Size size_, fit_;
  Edges edges_ = Edges::kRepeat;
};

// -------------------------------------------------------------------------------------------- warp

class Warp : public Geometric {
 public:
  void add_options(Options& options) override {
    options
        .text("--from", "X1,Y1,...,X4,Y4", "four points of the picture, around their outline",
              [this](const std::string& text) { from_ = Places(text, 4, "--from"); })
        .required = true;
    options
        .text("--to", "X1,Y1,...,X4,Y4", "where these four come to lie, in the same order",
              [this](const std::string& text) { to_ = Places(text, 4, "--to"); })
        .required = true;
    options.text("--size", "WxH", "size of the result (default: that of the picture)",
                 [this](const std::string& text) { size_ = size(text, "--size"); });
    add_edges(options, edges_);
  }

  void check(const LoadPicture&) override {
    for (const auto& [places, name] : {std::pair(&from_, "--from"), std::pair(&to_, "--to")})
      if (!places->need_a_picture())
        convex_quad(places->on({}), CornerOrder::kAroundTheOutline, name);
  }

  Outcome apply(Picture& picture, Colour background) const override {
    const Size drawn = drawn_size(size_of(picture));
    const Quad from_quad = quad(from_, size_of(picture), "--from");
    const Quad to_quad = quad(to_, drawn, "--to");
    const auto warp = [&](const PixelArray* from, PixelArray* to) {
      Quad source = shifted(from_quad, shift_of(edges_));
      return roxeAffineTransform(from, to, &source, &to_quad, {0, 0, drawn.width, drawn.height});
    };
    const bool changed = draw_into(picture, drawn, background, warp, edges_);
    return {"warped", changed};
  }

  Area result_area(Size picture) const override {
    const Size drawn = drawn_size(picture);
    quad(from_, picture, "--from");
    quad(to_, drawn, "--to");
    return {{}, drawn};
  }

 private:
  Size drawn_size(Size picture) const { return size_.width > 0 ? size_ : picture; }

  static Quad quad(const Places& places, Size picture, std::string_view name) {
    const std::vector<Point> corners = places.on(picture);
    const Quad quad = convex_quad(corners, CornerOrder::kAroundTheOutline, name);
    require_near(corners, picture, name);
    return quad;
  }

  Places from_, to_;
  Size size_;
  Edges edges_ = Edges::kRepeat;
};

}  // namespace

std::vector<OperationEntry> geometry_operations() {
  return {
      {"rotate", "Turn a picture by any angle; positive angles turn clockwise",
       make_operation<Rotate>},
      {"straighten", "Level a picture along a line drawn on it", make_operation<Straighten>},
      {"perspective", "Draw something rectangular, seen at a slant, upright",
       make_operation<Perspective>},
      {"warp", "Move four points of a picture to four other places", make_operation<Warp>},
  };
}

}  // namespace host
