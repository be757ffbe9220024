#include "xmp.h"

#include <algorithm>
#include <cctype>
#include <functional>
#include <string>
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

std::string lower_case(std::string_view text) {
  std::string lower(text);
  for (char& c : lower) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return lower;
}

}  // namespace

void reset_xmp_orientation(Bytes& xmp) {
  const auto prefixes = prefixes_of(xmp, "http://ns.adobe.com/tiff/1.0/", "tiff");
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

void remove_xmp_gps(Bytes& xmp) {
  for_each_property(xmp, [&](const Property& property) {
    const std::string name = lower_case(property.name);
    if (property.prefix == "xmlns") return;
    if (!name.starts_with("gps") && name != "latitude" && name != "longitude") return;
    std::fill(xmp.begin() + static_cast<ptrdiff_t>(property.begin),
              xmp.begin() + static_cast<ptrdiff_t>(property.end), static_cast<uint8_t>(' '));
  });
}

bool holds(const Bytes& block, std::string_view words) {
  return text_of(block).find(words) != std::string_view::npos;
}

}  // namespace host
