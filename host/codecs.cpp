#include "codecs.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <set>
#include <utility>

#include "cmyk.h"

namespace host {
namespace {

bool starts_with(const Bytes& file, std::string_view magic, size_t at = 0) {
  return file.size() >= at + magic.size() &&
         std::equal(magic.begin(), magic.end(), file.begin() + static_cast<ptrdiff_t>(at),
                    [](char a, uint8_t b) { return static_cast<uint8_t>(a) == b; });
}

}  // namespace

std::optional<FileFormat> format_of_content(const Bytes& file) {
  if (starts_with(file, "\xFF\xD8\xFF")) return FileFormat::kJpeg;
  if (starts_with(file, "\x89PNG\r\n\x1A\n")) return FileFormat::kPng;
  using namespace std::string_view_literals;
  if (starts_with(file, "II*\0"sv) || starts_with(file, "MM\0*"sv)) return FileFormat::kTiff;
  if (starts_with(file, "RIFF") && starts_with(file, "WEBP", 8)) return FileFormat::kWebp;
  const bool portable =
      file.size() > 2 && file[0] == 'P' && (std::isspace(file[2]) || file[2] == '#');
  if (portable && (file[1] == '2' || file[1] == '3' || file[1] == '5' || file[1] == '6'))
    return FileFormat::kPnm;
  return {};
}

std::string_view known_stranger(const Bytes& file) {
  if (starts_with(file, "GIF8")) return "a GIF picture";
  if (starts_with(file, "ftyp", 4)) return "a HEIF, AVIF or video file";
  if (starts_with(file, "BM")) return "a BMP picture";
  if (starts_with(file, "%PDF")) return "a PDF document";
  return "";
}

std::optional<FileFormat> format_of_name(std::string_view path) {
  std::string extension = std::filesystem::path(path).extension().string();
  for (char& c : extension) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  if (extension == ".jpg" || extension == ".jpeg") return FileFormat::kJpeg;
  if (extension == ".png") return FileFormat::kPng;
  if (extension == ".webp") return FileFormat::kWebp;
  if (extension == ".ppm" || extension == ".pgm") return FileFormat::kPnm;
  return {};
}

std::string version_text() {
  std::string with, without;
  for (const auto& [library, name] :
       {std::pair{tiff_library(), "libtiff (TIFF)"}, std::pair{webp_library(), "libwebp (WebP)"},
        std::pair{colour_library(), "lcms2 (CMYK)"}})
    if (library.empty())
      without += (without.empty() ? "; without " : ", ") + std::string(name);
    else
      with += ", " + library;
  return "roxe " ROXE_VERSION ", with libjpeg, libpng" + with + without;
}

void note_jpeg_blocks(const Metadata& metadata, std::string_view format, Notes& notes) {
  const auto note = [&](const std::string& what, const char* verb) {
    notes.push_back(what + " no place in " + std::string(format) + " and " + verb + " left out");
  };
  if (!metadata.photoshop.empty()) note("its IPTC block has", "is");
  if (!metadata.extended_xmp.empty()) note("the continuation of its XMP packet has", "is");
  if (!metadata.comments.empty()) note("its JPEG comments have", "are");
  if (metadata.other_segments.empty()) return;
  std::set<int> numbers;
  for (const auto& segment : metadata.other_segments) numbers.insert(segment.marker & 15);
  std::string names;
  for (const int number : numbers) names += " APP" + std::to_string(number);
  note("its segments" + names + " have", "are");
}

void note_png_chunks(const Metadata& metadata, std::string_view format, Notes& notes) {
  std::set<std::string> names;
  for (const auto& chunk : metadata.chunks) names.insert(chunk.name);
  const auto note = [&](const std::string& what) {
    notes.push_back(what + " have no place in " + std::string(format) + " and are left out");
  };
  if (names.erase("tEXt") + names.erase("zTXt") + names.erase("iTXt") > 0) note("its PNG texts");
  if (names.empty()) return;
  std::string list;
  for (const std::string& name : names) list += " " + name;
  note("its PNG chunks" + list);
}

bool profile_fits(const Bytes& icc, bool grey, Notes& notes) {
  if (icc.empty()) return false;
  if (starts_with(icc, grey ? "GRAY" : "RGB ", 16)) return true;
  notes.push_back("its colour profile is for other channels than the output has and is left out");
  return false;
}

}  // namespace host
