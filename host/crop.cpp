#include "crop.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <string>

#include "errors.h"

namespace host {
namespace {

// Whether a size fits: the sources of its four corner pixels lie inside the picture. A smaller size
// that is no larger either way fits too.
class Turned {
 public:
  Turned(Size picture, double radians, Edges edges)
      : centre_x_(picture.width / 2),
        centre_y_(picture.height / 2),
        cosine_(std::cos(radians)),
        sine_(std::sin(radians)),
        // Half a pixel inside what the library draws, which computes in single precision.
        least_(edges == Edges::kRepeat ? 0.5 : 1.5),
        most_x_(picture.width - 0.5 - least_),
        most_y_(picture.height - 0.5 - least_) {}

  bool holds(int32_t width, int32_t height) const {
    const int32_t left = -(width / 2), top = -(height / 2);
    for (const double x : {left, left + width - 1})
      for (const double y : {top, top + height - 1}) {
        const double source_x = centre_x_ + cosine_ * x + sine_ * y;
        const double source_y = centre_y_ + cosine_ * y - sine_ * x;
        if (!(least_ <= source_x && source_x <= most_x_)) return false;
        if (!(least_ <= source_y && source_y <= most_y_)) return false;
      }
    return true;
  }

 private:
  double centre_x_, centre_y_, cosine_, sine_, least_, most_x_, most_y_;
};

// The largest of 1 ... most for which fits holds, given that it holds for all below it; 0: none.
template <typename Fits>
int32_t largest(int32_t most, const Fits& fits) {
  int32_t good = 0, bad = most + 1;
  while (bad - good > 1) {
    const int32_t middle = good + (bad - good) / 2;
    (fits(middle) ? good : bad) = middle;
  }
  return good;
}

Size largest_in_proportion(const Turned& turned, Size picture) {
  const auto height_for = [&](int32_t width) {
    const double height = static_cast<double>(width) * picture.height / picture.width;
    return std::max(1, static_cast<int32_t>(std::floor(height + 0.5)));
  };
  const auto fits = [&](int32_t width) { return turned.holds(width, height_for(width)); };
  const int32_t width = largest(picture.width, fits);
  return {width, width > 0 ? height_for(width) : 0};
}

Size largest_area(const Turned& turned, Size picture) {
  // No side is longer than the diagonal. Every length of the side that can be shorter is tried.
  const int32_t diagonal = picture.width + picture.height;
  const int32_t shorter = std::min(picture.width, picture.height);
  Size best;
  const auto consider = [&](Size size) {
    const int64_t area = int64_t{size.width} * size.height;
    const int64_t best_area = int64_t{best.width} * best.height;
    if (area > best_area || (area == best_area && size.width > best.width)) best = size;
  };
  for (int32_t side = 1; side <= shorter; ++side) {
    consider({side, largest(diagonal, [&](int32_t height) { return turned.holds(side, height); })});
    consider({largest(diagonal, [&](int32_t width) { return turned.holds(width, side); }), side});
  }
  return best;
}

}  // namespace

Option& add_crop(Options& options, Crop& crop) {
  const auto store = [&crop](const std::string& text) {
    if (text.empty() || text == "fit")
      crop = Crop::kFit;
    else if (text == "free")
      crop = Crop::kFree;
    else
      throw UsageError("--crop needs free, fit or nothing, not '" + text +
                       "' (before the name of a file write --crop=fit)");
  };
  Option& option = options.text(
      "--crop", "fit|free",
      "cut the largest picture that shows no background, of the same proportions (fit) or of any "
      "(free); without this option nothing is cut",
      store);
  option.value_optional = true;
  option.otherwise = "fit";
  return option;
}

Size cropped(Size picture, double radians, Edges edges, Crop crop) {
  const Turned turned(picture, radians, edges);
  const Size size =
      crop == Crop::kFit ? largest_in_proportion(turned, picture) : largest_area(turned, picture);
  if (size.width < 1 || size.height < 1)
    throw Failure("the picture is too small to crop at this angle");
  return size;
}

}  // namespace host
