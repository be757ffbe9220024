#include "xmp.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <functional>
#include <iterator>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

namespace host {
namespace {

constexpr std::string_view kSpace = " \t\r\n";
constexpr std::string_view kEndOfName = " \t\r\n=/>'\"<";

std::string_view text_of(const Bytes& xmp) {
  return {reinterpret_cast<const char*>(xmp.data()), xmp.size()};
}

// A property of the packet: where it is written, name and all, and where its value stands.
struct Property {
  std::string_view prefix, name;
  size_t begin, end, value_begin, value_end;
};

size_t skip(std::string_view text, size_t at, std::string_view characters) {
  return std::min(text.find_first_not_of(characters, at), text.size());
}

// What is written at a name: an attribute, an element without others inside, or nothing of use.
// Looks no further than the next < or quote, so that a whole packet takes linear time.
bool read_property(std::string_view text, size_t name_at, Property& property) {
  const size_t name_end = std::min(text.find_first_of(kEndOfName, name_at), text.size());
  const std::string_view whole = text.substr(name_at, name_end - name_at);
  const size_t colon = whole.find(':');
  if (colon == whole.npos) return false;
  property.prefix = whole.substr(0, colon);
  property.name = whole.substr(colon + 1);
  if (text[name_at - 1] == '<') {
    const size_t tag_end = text.find_first_of("<>", name_end);
    if (tag_end == text.npos || text[tag_end] == '<') return false;
    property.begin = name_at - 1;
    property.value_begin = property.value_end = property.end = tag_end + 1;
    if (text[tag_end - 1] == '/') return true;
    property.value_end = std::min(text.find('<', tag_end), text.size());
    if (!text.substr(property.value_end).starts_with("</" + std::string(whole))) return false;
    const size_t end = text.find('>', property.value_end);
    if (end == text.npos) return false;
    property.end = end + 1;
    return true;
  }
  const size_t equals = skip(text, name_end, kSpace);
  if (equals >= text.size() || text[equals] != '=') return false;
  const size_t quote = skip(text, equals + 1, kSpace);
  if (quote >= text.size() || (text[quote] != '"' && text[quote] != '\'')) return false;
  const size_t end = text.find(text[quote], quote + 1);
  if (end == text.npos) return false;
  property.begin = name_at;
  property.value_begin = quote + 1;
  property.value_end = end;
  property.end = end + 1;
  return true;
}

// Calls use for every property.
void for_each_property(const Bytes& xmp, const std::function<void(const Property&)>& use) {
  const std::string_view text = text_of(xmp);
  for (size_t colon = text.find(':'); colon != text.npos; colon = text.find(':', colon + 1)) {
    constexpr size_t kLongestPrefix = 64;
    const size_t window = colon - std::min(colon, kLongestPrefix);
    const size_t before = text.substr(window, colon - window).find_last_of(kEndOfName);
    if (before == text.npos || window + before + 1 == colon) continue;
    const size_t name_at = window + before + 1;
    const char mark = text[name_at - 1];
    Property property;
    if (mark != '<' && kSpace.find(mark) == kSpace.npos) continue;
    if (read_property(text, name_at, property)) use(property);
  }
}

// The names that the packet gives to a name space; the usual one also if it gives none.
std::vector<std::string> prefixes_of(const Bytes& xmp, std::string_view space,
                                     std::string_view usual) {
  std::vector<std::string> prefixes = {std::string(usual)};
  for_each_property(xmp, [&](const Property& property) {
    const std::string_view value =
        text_of(xmp).substr(property.value_begin, property.value_end - property.value_begin);
    if (property.prefix == "xmlns" && value == space) prefixes.emplace_back(property.name);
  });
  return prefixes;
}

constexpr std::string_view kTiffSpace = "http://ns.adobe.com/tiff/1.0/";
constexpr std::string_view kExifSpace = "http://ns.adobe.com/exif/1.0/";
constexpr std::string_view kPlaceSpace = "http://www.w3.org/2003/01/geo/wgs84_pos#";

// The values of a property without white space around them, in their order.
struct Value {
  size_t begin, end;
};
std::vector<Value> values_of(const Bytes& xmp, std::string_view space, std::string_view usual,
                             std::string_view name) {
  const auto prefixes = prefixes_of(xmp, space, usual);
  const std::string_view text = text_of(xmp);
  std::vector<Value> values;
  for_each_property(xmp, [&](const Property& property) {
    if (property.name != name) return;
    if (std::find(prefixes.begin(), prefixes.end(), property.prefix) == prefixes.end()) return;
    Value value = {property.value_begin, property.value_end};
    while (value.begin < value.end && kSpace.find(text[value.begin]) != kSpace.npos) ++value.begin;
    while (value.begin < value.end && kSpace.find(text[value.end - 1]) != kSpace.npos) --value.end;
    values.push_back(value);
  });
  return values;
}

// Puts a text in the place of each value. One inside another, as only a malformed packet has it,
// stays.
void replace(Bytes& xmp, const std::vector<Value>& values, std::string_view text) {
  if (values.empty()) return;
  Bytes changed;
  size_t copied = 0;
  const auto copy_up_to = [&](size_t end) {
    changed.insert(changed.end(), xmp.begin() + static_cast<ptrdiff_t>(copied),
                   xmp.begin() + static_cast<ptrdiff_t>(end));
  };
  for (const Value& value : values) {
    if (value.begin < copied) continue;
    copy_up_to(value.begin);
    changed.insert(changed.end(), text.begin(), text.end());
    copied = value.end;
  }
  copy_up_to(xmp.size());
  xmp = std::move(changed);
}

void set_number(Bytes& xmp, std::string_view space, std::string_view usual, std::string_view name,
                int32_t number) {
  std::vector<Value> values = values_of(xmp, space, usual, name);
  std::erase_if(values, [&](const Value& value) {
    int32_t known = 0;
    const char* text = text_of(xmp).data();
    const auto [end, error] = std::from_chars(text + value.begin, text + value.end, known);
    const bool is_number = error == std::errc() && end == text + value.end && known >= 0;
    return !is_number || known == number;
  });
  replace(xmp, values, std::to_string(number));
}

std::string lower_case(std::string_view text) {
  std::string lower(text);
  for (char& c : lower) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return lower;
}

bool names_place(std::string_view prefix, std::string_view name,
                 const std::vector<std::string>& place_prefixes) {
  if (prefix == "xmlns") return false;
  const std::string lower = lower_case(name);
  return lower.starts_with("gps") || lower == "latitude" || lower == "longitude" ||
         std::find(place_prefixes.begin(), place_prefixes.end(), prefix) != place_prefixes.end();
}

// Whether an element or attribute is still called a position: one with elements inside, or written
// in a way that read_property does not know.
bool still_names_places(const Bytes& xmp, const std::vector<std::string>& place_prefixes) {
  const std::string_view text = text_of(xmp);
  for (size_t at = skip(text, 0, kEndOfName), end; at < text.size();
       at = skip(text, end, kEndOfName)) {
    end = std::min(text.find_first_of(kEndOfName, at), text.size());
    const bool is_end = at > 1 && text.substr(at - 2, 2) == "</";
    const bool is_element = is_end || (at > 0 && text[at - 1] == '<');
    const size_t equals = skip(text, end, kSpace);
    if (!is_element && (equals == text.size() || text[equals] != '=')) continue;
    const std::string_view word = text.substr(at, end - at);
    const size_t colon = word.find(':');
    const bool has_prefix = colon != word.npos;
    if (names_place(has_prefix ? word.substr(0, colon) : "",
                    has_prefix ? word.substr(colon + 1) : word, place_prefixes))
      return true;
  }
  return false;
}

}  // namespace

void reset_xmp_orientation(Bytes& xmp) {
  const auto prefixes = prefixes_of(xmp, kTiffSpace, "tiff");
  for_each_property(xmp, [&](const Property& property) {
    if (property.name != "Orientation") return;
    if (std::find(prefixes.begin(), prefixes.end(), property.prefix) == prefixes.end()) return;
    const auto is_digit = [](uint8_t c) { return c >= '0' && c <= '9'; };
    const auto begin = xmp.begin() + static_cast<ptrdiff_t>(property.value_begin);
    const auto end = xmp.begin() + static_cast<ptrdiff_t>(property.value_end);
    const auto first = std::find_if(begin, end, is_digit);
    const auto last = std::find_if_not(first, end, is_digit);
    std::fill(first, last, static_cast<uint8_t>('0'));
    if (first != last) *(last - 1) = '1';
  });
}

void set_xmp_size(Bytes& xmp, int32_t width, int32_t height) {
  set_number(xmp, kExifSpace, "exif", "PixelXDimension", width);
  set_number(xmp, kExifSpace, "exif", "PixelYDimension", height);
  set_number(xmp, kTiffSpace, "tiff", "ImageWidth", width);
  set_number(xmp, kTiffSpace, "tiff", "ImageLength", height);
}

void swap_xmp_axes(Bytes& xmp) {
  const auto find = [&](std::string_view name) { return values_of(xmp, kTiffSpace, "tiff", name); };
  const auto x = find("XResolution"), y = find("YResolution");
  if (x.empty() || y.empty()) return;
  const auto text = [&](const Value& value) {
    return std::string(text_of(xmp).substr(value.begin, value.end - value.begin));
  };
  const std::string old_x = text(x[0]), old_y = text(y[0]);
  if (old_x == old_y) return;
  replace(xmp, x, old_y);
  replace(xmp, find("YResolution"), old_x);
}

bool remove_xmp_gps(Bytes& xmp) {
  if (holds(xmp, std::string_view("\0", 1))) {  // UTF-16 or UTF-32, where it is only searched
    Bytes letters;
    std::remove_copy(xmp.begin(), xmp.end(), std::back_inserter(letters), 0);
    return !still_names_places(letters, prefixes_of(letters, kPlaceSpace, "geo"));
  }
  const auto prefixes = prefixes_of(xmp, kPlaceSpace, "geo");
  for_each_property(xmp, [&](const Property& property) {
    if (!names_place(property.prefix, property.name, prefixes)) return;
    std::fill(xmp.begin() + static_cast<ptrdiff_t>(property.begin),
              xmp.begin() + static_cast<ptrdiff_t>(property.end), static_cast<uint8_t>(' '));
  });
  return !still_names_places(xmp, prefixes);
}

bool holds_xmp_regions(const Bytes& xmp) {
  // By the name spaces of the two forms in use, as a packet may choose its own prefixes.
  return holds(xmp, "http://www.metadataworkinggroup.com/schemas/regions/") ||
         holds(xmp, "http://ns.microsoft.com/photo/1.2/t/Region#");
}

bool holds(const Bytes& block, std::string_view words) {
  return text_of(block).find(words) != std::string_view::npos;
}

}  // namespace host
