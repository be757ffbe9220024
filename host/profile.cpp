#include "profile.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <optional>
#include <string_view>

namespace host {
namespace {

constexpr size_t kHeader = 128;

// Big-endian; positions past the end read as nothing.
std::optional<uint32_t> number(const Bytes& icc, size_t position, size_t count) {
  if (position > icc.size() || count > icc.size() - position) return {};
  uint32_t value = 0;
  for (size_t i = 0; i < count; ++i) value = value << 8 | icc[position + i];
  return value;
}

constexpr uint32_t signature(std::string_view four) {
  uint32_t value = 0;
  for (const char c : four) value = value << 8 | static_cast<uint8_t>(c);
  return value;
}

// Where the content of a tag begins.
std::optional<size_t> find(const Bytes& icc, std::string_view name) {
  const uint32_t count = number(icc, kHeader, 4).value_or(0);
  for (size_t i = 0; i < count && i < 100; ++i) {
    const size_t entry = kHeader + 4 + 12 * i;
    if (number(icc, entry, 4) == signature(name)) return number(icc, entry + 4, 4);
  }
  return {};
}

// Characters beyond ASCII become question marks: names of profiles hardly have any.
std::string ascii(const Bytes& icc, size_t position, size_t count, size_t bytes_each) {
  std::string text;
  for (size_t i = 0; i < count; ++i) {
    const auto code = number(icc, position + i * bytes_each, bytes_each);
    if (!code || *code == 0) break;
    text += *code < 128 ? static_cast<char>(*code) : '?';
  }
  return text;
}

bool has_srgb_primaries(const Bytes& icc) {
  struct Primary {
    const char* tag;
    double x, y, z;  // relative to the white D50
  };
  constexpr Primary kPrimaries[] = {{"rXYZ", 0.4361, 0.2225, 0.0139},
                                    {"gXYZ", 0.3851, 0.7169, 0.0971},
                                    {"bXYZ", 0.1431, 0.0606, 0.7141}};
  for (const Primary& primary : kPrimaries) {
    const auto tag = find(icc, primary.tag);
    if (!tag) return false;
    size_t at = *tag + 8;
    for (const double expected : {primary.x, primary.y, primary.z}) {
      const auto fixed = number(icc, at, 4);  // 16.16
      if (!fixed || std::abs(static_cast<int32_t>(*fixed) / 65536.0 - expected) > 0.004)
        return false;
      at += 4;
    }
  }
  return true;
}

// Code points of ITU-T H.273: the primaries of BT.709 and the transfer function of sRGB.
bool is_code_of_srgb(const Bytes& cicp) {
  return cicp.size() == 4 && cicp[0] == 1 && cicp[1] == 13;
}

// Numbers of a PNG in units of 1/100000, which programs round differently.
bool near(int32_t value, int32_t expected) { return std::abs(int64_t{value} - expected) <= 1000; }

bool are_of_srgb(const std::array<int32_t, 8>& chromaticities) {  // of white, red, green and blue
  constexpr std::array kOfSrgb = {31270, 32900, 64000, 33000, 30000, 60000, 15000, 6000};
  return std::ranges::equal(chromaticities, kOfSrgb, near);
}

}  // namespace

std::string profile_name(const Bytes& icc) {
  const auto tag = find(icc, "desc");
  if (!tag) return "";
  if (number(icc, *tag, 4) == signature("desc"))
    return ascii(icc, *tag + 12, number(icc, *tag + 8, 4).value_or(0), 1);
  if (number(icc, *tag, 4) != signature("mluc")) return "";
  // The first of several languages, in UTF-16.
  const auto length = number(icc, *tag + 20, 4), offset = number(icc, *tag + 24, 4);
  return length && offset ? ascii(icc, *tag + *offset, *length / 2, 2) : "";
}

std::string what_differs_from_srgb(const Metadata& metadata) {
  for (const Metadata::Chunk& chunk : metadata.chunks)
    if (chunk.name == "cICP") return is_code_of_srgb(chunk.bytes) ? "" : "its cICP chunk";
  if (!metadata.icc.empty()) {
    if (has_srgb_primaries(metadata.icc)) return "";
    const std::string name = profile_name(metadata.icc);
    return "its colour profile" + (name.empty() ? "" : " (" + name + ")");
  }
  if (metadata.srgb_intent) return "";
  const bool gamma = metadata.gamma && !near(*metadata.gamma, 45455);
  const bool primaries = metadata.chromaticities && !are_of_srgb(*metadata.chromaticities);
  if (gamma) return primaries ? "its gAMA and cHRM chunks" : "its gAMA chunk";
  return primaries ? "its cHRM chunk" : "";
}

}  // namespace host
