#include "inspect.h"

#include "errors.h"

namespace host {
namespace {

// How a viewer has to turn the stored pixels, by EXIF orientation.
constexpr std::string_view kTurns[] = {
    "",
    "upright",
    "mirrored left to right",
    "upside down",
    "mirrored top to bottom",
    "mirrored and on its side",
    "on its side, to be turned clockwise",
    "mirrored and on its side the other way",
    "on its side, to be turned anticlockwise",
};

std::string bytes(int64_t count) { return std::to_string(count) + " bytes"; }

size_t total(const std::vector<Bytes>& blocks) {
  size_t sum = 0;
  for (const Bytes& block : blocks) sum += block.size();
  return sum;
}

}  // namespace

std::string info_text(const LoadedPicture& loaded, const std::string& path) {
  const Picture& picture = loaded.picture;
  const Metadata& metadata = picture.metadata;
  std::string text = "file: " + path + "\n";
  text += "format: " + loaded.description + "\n";
  text += "size: " + picture.size_text() + " pixels, upright\n";
  text += "orientation: " + std::to_string(loaded.orientation) + " (stored " +
          std::string(kTurns[loaded.orientation]) + ")\n";
  const auto line = [&](const char* name, size_t size) {
    if (size > 0) text += std::string(name) + ": " + bytes(static_cast<int64_t>(size)) + "\n";
  };
  line("EXIF", metadata.exif.size());
  line("XMP", metadata.xmp.size() + total(metadata.extended_xmp));
  line("IPTC", total(metadata.photoshop));
  line("colour profile", metadata.icc.size());
  const PixelArray record = picture.record();
  const bool accepted = roxeVerifyPixelArray(&record) == kRoxeOK;
  text += "in memory: " + std::to_string(record.height) + " rows of " + bytes(record.rowBytes) +
          (accepted ? ", accepted for editing\n" : ", not accepted for editing\n");
  return text;
}

std::string pick_text(const Picture& picture, Point point) {
  if (!picture.contains(point.x, point.y))
    throw UsageError("the point " + to_text(point) + " lies outside the picture of " +
                     picture.size_text() + " pixels");
  const Colour colour = picture.at(point.x, point.y);
  return to_text(colour) + " (red " + std::to_string(colour.red) + ", green " +
         std::to_string(colour.green) + ", blue " + std::to_string(colour.blue) + ")\n";
}

}  // namespace host
