// What people type: numbers, points, sizes and colours. A value that makes no sense is a
// UsageError of one sentence.
#ifndef ROXE_HOST_TEXT_H_
#define ROXE_HOST_TEXT_H_

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "picture.h"

namespace host {

struct Point {
  int32_t x = 0, y = 0;
};
struct Size {
  int32_t width = 0, height = 0;
};
struct Area {
  Point origin;
  Size size;
};
inline Size size_of(const Picture& picture) { return {picture.width(), picture.height()}; }

// A place on one axis as it was typed: a pixel, or percent of the way from the first pixel, 0%, to
// the last, 100%.
struct Coordinate {
  double value = 0;
  bool is_percent = false;

  int32_t pixel(int32_t length) const;
  // The same for a number of pixels: 100% are all of them, and at least one is left.
  int32_t count(int32_t length) const;
};

// Points whose pixels are known once there is a picture.
class Places {
 public:
  Places() = default;
  // "10,20,50%,33.3%" for two; what names the option in the message.
  Places(std::string_view text, size_t count, std::string_view what);

  bool empty() const { return coordinates_.empty(); }
  bool need_a_picture() const;
  std::vector<Point> on(Size picture) const;

 private:
  std::vector<Coordinate> coordinates_;
};

int32_t whole_number(std::string_view text, int32_t low, int32_t high, std::string_view what);
double decimal_number(std::string_view text, int32_t low, int32_t high, std::string_view what);
std::vector<Coordinate> coordinates(std::string_view text, size_t count, std::string_view what);
// "800x600"
Size size(std::string_view text, std::string_view what);
// Of a file or folder. An empty one comes from a variable of the shell that is not set.
std::string file_name(const std::string& text, std::string_view what);
// One of several words: choices are "fit|free".
std::string choice(std::string_view text, std::string_view choices, std::string_view what);
// "#E07A2C", "#e72" or a name of CSS
Colour colour(std::string_view text, std::string_view what);

std::string to_text(Colour colour);  // "#E07A2C"
std::string to_text(Point point);    // "(12, 34)"
std::string degrees(double angle);   // two decimals: "2.45 degrees"
std::string shortest(double value);  // the fewest digits that mean this number: "0.1"
std::vector<std::string> words(
    std::string_view line);  // by white space; quotes hold words together

}  // namespace host

#endif  // ROXE_HOST_TEXT_H_
