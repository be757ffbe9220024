#include "terminal.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <iostream>
#include <system_error>

#include "errors.h"

namespace host {
namespace {

struct Character {
  uint32_t code;
  size_t length;  // in bytes; 0 where no character begins
};

// The first character of a text that is not empty. Overlong forms, surrogates and what lies beyond
// U+10FFFF are no characters.
Character first_character(std::string_view text) {
  const auto byte = [&](size_t i) { return static_cast<uint8_t>(text[i]); };
  if (byte(0) < 0x80) return {byte(0), 1};
  const size_t length = byte(0) >= 0xF0 ? 4 : byte(0) >= 0xE0 ? 3 : 2;
  if (byte(0) < 0xC2 || byte(0) > 0xF4 || text.size() < length) return {0, 0};
  uint32_t code = byte(0) & (0xFF >> (length + 1));
  for (size_t i = 1; i < length; ++i) {
    if ((byte(i) & 0xC0) != 0x80) return {0, 0};
    code = code << 6 | (byte(i) & 0x3F);
  }
  const uint32_t least = length == 4 ? 0x10000 : length == 3 ? 0x800 : 0x80;
  if (code < least || code > 0x10FFFF || (code >= 0xD800 && code <= 0xDFFF)) return {0, 0};
  return {code, length};
}

bool is_harmless(uint32_t code) {
  const auto between = [code](uint32_t first, uint32_t last) {
    return code >= first && code <= last;
  };
  if ((code < 0x20 && code != '\t') || between(0x7F, 0x9F)) return false;  // controls
  if (between(0x2028, 0x2029)) return false;  // separators of lines, paragraphs
  if (between(0x202A, 0x202E) || between(0x2066, 0x2069)) return false;  // turn the direction
  return !between(0x200E, 0x200F) && code != 0x061C;                     // marks of a direction
}

}  // namespace

std::string printable(std::string_view text) {
  std::string result;
  while (!text.empty()) {
    const auto [code, length] = first_character(text);
    if (length > 0 && is_harmless(code))
      result += text.substr(0, length);
    else
      result += '?';
    text.remove_prefix(std::max<size_t>(length, 1));
  }
  return result;
}

void say(std::string_view lines) {
  while (!lines.empty()) {
    const size_t end = std::min(lines.find('\n'), lines.size());
    std::puts(printable(lines.substr(0, end)).c_str());
    lines.remove_prefix(std::min(end + 1, lines.size()));
  }
}

void expect_said() {
  // The parser prints its help by the stream.
  if (std::fflush(stdout) == 0 && !std::ferror(stdout) && std::cout.flush().good()) return;
  throw Failure("the answer cannot be printed (" + std::generic_category().message(errno) + ")");
}

void complain(std::string_view sentence) {
  const std::string line = "roxe: " + printable(sentence) + "\n";
  std::fputs(line.c_str(), stderr);  // one call, so that lines of several threads stay whole
}

}  // namespace host
