#include "text.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cmath>
#include <cstdio>

#include "colour_names.h"
#include "errors.h"

namespace host {
namespace {

std::string quoted(std::string_view text) { return "'" + std::string(text) + "'"; }

template <typename Number>
bool parse(std::string_view text, Number& value) {
  while (!text.empty() && text.front() == ' ') text.remove_prefix(1);
  while (!text.empty() && text.back() == ' ') text.remove_suffix(1);
  if (text.size() > 1 && text.front() == '+' && text[1] != '-') text.remove_prefix(1);
  const char* end = text.data() + text.size();
  const auto result = std::from_chars(text.data(), end, value);
  return !text.empty() && result.ec == std::errc() && result.ptr == end;
}

}  // namespace

int32_t whole_number(std::string_view text, int32_t low, int32_t high, std::string_view what) {
  int32_t value = 0;
  if (!parse(text, value) || value < low || value > high)
    throw UsageError(std::string(what) + " needs a whole number from " + std::to_string(low) +
                     " to " + std::to_string(high) + ", not " + quoted(text));
  return value;
}

double decimal_number(std::string_view text, int32_t low, int32_t high, std::string_view what) {
  double value = 0;
  if (!parse(text, value) || !(value >= low && value <= high))  // not a number: refused as well
    throw UsageError(std::string(what) + " needs a number from " + std::to_string(low) + " to " +
                     std::to_string(high) + ", not " + quoted(text));
  return value;
}

namespace {

bool parse(std::string_view text, Coordinate& coordinate) {
  coordinate.is_percent = text.ends_with('%');
  if (coordinate.is_percent) {
    // Farther than these lies no picture's neighbour, and what follows stays within 32 bits.
    constexpr double kFarthest = 500;
    return parse(text.substr(0, text.size() - 1), coordinate.value) &&
           std::abs(coordinate.value) <= kFarthest;
  }
  int32_t pixel = 0;
  const bool good = parse(text, pixel);
  coordinate.value = pixel;
  return good;
}

int32_t rounded(double value) { return static_cast<int32_t>(std::floor(value + 0.5)); }

}  // namespace

int32_t Coordinate::pixel(int32_t length) const {
  return rounded(is_percent ? value * (length - 1) / 100 : value);
}

int32_t Coordinate::count(int32_t length) const {
  return is_percent ? std::max(1, rounded(value * length / 100)) : rounded(value);
}

std::vector<Coordinate> coordinates(std::string_view text, size_t count, std::string_view what) {
  std::vector<Coordinate> values;
  std::string_view rest = text;
  bool good = true;
  for (;;) {
    const size_t comma = rest.find(',');
    good = parse(rest.substr(0, comma), values.emplace_back()) && good;
    if (comma == std::string_view::npos) break;
    rest.remove_prefix(comma + 1);
  }
  if (!good || values.size() != count)
    throw UsageError(std::string(what) + " needs " + std::to_string(count) +
                     " whole numbers or percentages separated by commas, not " + quoted(text));
  return values;
}

Places::Places(std::string_view text, size_t count, std::string_view what)
    : coordinates_(coordinates(text, 2 * count, what)) {}

bool Places::need_a_picture() const {
  return std::ranges::any_of(coordinates_, &Coordinate::is_percent);
}

std::vector<Point> Places::on(Size picture) const {
  std::vector<Point> points;
  for (size_t i = 0; i < coordinates_.size(); i += 2)
    points.push_back(
        {coordinates_[i].pixel(picture.width), coordinates_[i + 1].pixel(picture.height)});
  return points;
}

Size size(std::string_view text, std::string_view what) {
  const size_t cross = text.find_first_of("xX");
  Size result;
  if (cross == std::string_view::npos || !parse(text.substr(0, cross), result.width) ||
      !parse(text.substr(cross + 1), result.height) || result.width < 1 || result.height < 1)
    throw UsageError(std::string(what) + " needs a size such as 800x600, not " + quoted(text));
  if (int64_t{result.width} * result.height > Picture::kMaxPixels)
    throw UsageError(std::string(what) + " " + std::string(text) + " is above the limit of " +
                     std::to_string(Picture::kMaxPixels / 1'000'000) + " megapixels");
  return result;
}

std::string file_name(const std::string& text, std::string_view what) {
  if (text.empty()) throw UsageError(std::string(what) + " needs a name, not ''");
  return text;
}

std::string choice(std::string_view text, std::string_view choices, std::string_view what) {
  std::string listed;
  for (std::string_view rest = choices; !rest.empty();) {
    const size_t end = std::min(rest.find('|'), rest.size());
    const std::string_view one = rest.substr(0, end);
    if (one == text) return std::string(text);
    rest.remove_prefix(std::min(end + 1, rest.size()));
    listed += listed.empty() ? "" : rest.empty() ? " or " : ", ";
    listed += one;
  }
  throw UsageError(std::string(what) + " needs " + listed + ", not " + quoted(text));
}

Colour colour(std::string_view text, std::string_view what) {
  std::string name(text);
  std::transform(name.begin(), name.end(), name.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  for (const NamedColour& known : kColourNames)
    if (known.name == name) return known.colour;

  if (name.size() == 4 && name[0] == '#')
    name = {'#', name[1], name[1], name[2], name[2], name[3], name[3]};
  uint32_t value = 0;
  const char* end = name.data() + name.size();
  if (name.size() == 7 && name[0] == '#') {
    const auto result = std::from_chars(name.data() + 1, end, value, 16);
    if (result.ec == std::errc() && result.ptr == end)
      return {static_cast<uint8_t>(value >> 16), static_cast<uint8_t>(value >> 8),
              static_cast<uint8_t>(value)};
  }
  throw UsageError(std::string(what) + " needs a colour such as '#E07A2C' or orange, not " +
                   quoted(text));
}

std::string to_text(Colour colour) {
  char text[8];
  std::snprintf(text, sizeof(text), "#%02X%02X%02X", colour.red, colour.green, colour.blue);
  return text;
}

std::string to_text(Point point) {
  return "(" + std::to_string(point.x) + ", " + std::to_string(point.y) + ")";
}

std::string degrees(double angle) {
  char text[64];
  std::snprintf(text, sizeof(text), "%.2f degrees", std::abs(angle));
  return text;
}

std::string shortest(double value) {
  char text[32];
  return {text, std::to_chars(text, text + sizeof(text), value).ptr};
}

std::vector<std::string> words(std::string_view line) {
  std::vector<std::string> result;
  bool inside = false;
  char quote = 0;
  for (const char c : line) {
    const bool space = std::isspace(static_cast<unsigned char>(c)) != 0;
    if (!quote && space) {
      inside = false;
      continue;
    }
    if (!inside) result.emplace_back();
    inside = true;
    if (quote == c)
      quote = 0;
    else if (!quote && (c == '"' || c == '\''))
      quote = c;
    else
      result.back() += c;
  }
  if (quote) throw UsageError("a quotation mark is not closed");
  return result;
}

}  // namespace host
