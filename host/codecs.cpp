#include "codecs.h"

#include <algorithm>
#include <cctype>
#include <filesystem>

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
  const bool portable =
      file.size() > 2 && file[0] == 'P' && (std::isspace(file[2]) || file[2] == '#');
  if (portable && (file[1] == '2' || file[1] == '3' || file[1] == '5' || file[1] == '6'))
    return FileFormat::kPnm;
  return {};
}

std::string_view known_stranger(const Bytes& file) {
  using namespace std::string_view_literals;
  if (starts_with(file, "GIF8")) return "a GIF picture";
  if (starts_with(file, "II*\0"sv) || starts_with(file, "MM\0*"sv)) return "a TIFF or raw picture";
  if (starts_with(file, "RIFF") && starts_with(file, "WEBP", 8)) return "a WebP picture";
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
  if (extension == ".ppm" || extension == ".pgm") return FileFormat::kPnm;
  return {};
}

bool profile_fits(const Bytes& icc, bool grey, Notes& notes) {
  if (icc.empty()) return false;
  if (starts_with(icc, grey ? "GRAY" : "RGB ", 16)) return true;
  notes.push_back("its colour profile is for other channels than the output has and is left out");
  return false;
}

}  // namespace host
