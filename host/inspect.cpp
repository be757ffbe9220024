#include "inspect.h"

#include <algorithm>
#include <array>

#include <nlohmann/json.hpp>

#include "errors.h"
#include "metadata.h"
#include "terminal.h"

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

namespace {

// Many cameras repeat the maker in the name of the model.
std::string joined(const std::string& make, const std::string& model) {
  if (make.empty() || model.starts_with(make)) return model;
  return model.empty() ? make : make + " " + model;
}

// "2026-11-21 20:15:00" of what EXIF writes with colons only.
std::string readable_date(std::string date) {
  if (date.size() == 19 && date[4] == ':' && date[7] == ':') date[4] = date[7] = '-';
  return date;
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
  const Description description = describe_metadata(metadata);
  const auto word = [&](const char* name, const std::string& value) {
    if (!value.empty()) text += std::string(name) + ": " + printable(value) + "\n";
  };
  word("camera", joined(description.make, description.model));
  word("taken", readable_date(description.date));
  const auto line = [&](const char* name, size_t size) {
    if (size > 0) text += std::string(name) + ": " + bytes(static_cast<int64_t>(size)) + "\n";
  };
  line("EXIF", metadata.exif.size());
  line("XMP", metadata.xmp.size() + total(metadata.extended_xmp));
  line("IPTC", total(metadata.photoshop));
  line("colour profile", metadata.icc.size());
  word("name of the profile", description.profile);
  const PixelArray record = picture.record();
  const bool accepted = roxeVerifyPixelArray(&record) == kRoxeOK;
  text += "in memory: " + std::to_string(record.height) + " rows of " + bytes(record.rowBytes) +
          (accepted ? ", accepted for editing\n" : ", not accepted for editing\n");
  return text;
}

std::string info_json(const LoadedPicture& loaded, const std::string& path) {
  using Json = nlohmann::ordered_json;
  const Picture& picture = loaded.picture;
  const Metadata& metadata = picture.metadata;
  const Description description = describe_metadata(metadata);
  const auto known = [](const std::string& text) { return text.empty() ? Json() : Json(text); };
  const Json json = {
      {"file", path},
      {"format", loaded.description},
      {"width", picture.width()},
      {"height", picture.height()},
      {"orientation", loaded.orientation},
      {"make", known(description.make)},
      {"model", known(description.model)},
      {"date", known(readable_date(description.date))},
      {"profile", known(description.profile)},
      {"bytes",
       {{"exif", metadata.exif.size()},
        {"xmp", metadata.xmp.size() + total(metadata.extended_xmp)},
        {"iptc", total(metadata.photoshop)},
        {"profile", metadata.icc.size()}}},
  };
  // Texts that are no UTF-8 get U+FFFD for what cannot be read.
  return json.dump(2, ' ', true, Json::error_handler_t::replace) + "\n";
}

std::string pick_text(const Picture& picture, Point point, int32_t area) {
  if (!picture.contains(point.x, point.y))
    throw UsageError("the point " + to_text(point) + " lies outside the picture of " +
                     picture.size_text() + " pixels");
  const int32_t left = point.x - area / 2, top = point.y - area / 2;
  std::array<int64_t, 3> sums = {};
  int64_t count = 0;
  for (int32_t y = std::max(top, 0); y < std::min(top + area, picture.height()); ++y)
    for (int32_t x = std::max(left, 0); x < std::min(left + area, picture.width()); ++x) {
      const Colour colour = picture.at(x, y);
      sums[0] += colour.red;
      sums[1] += colour.green;
      sums[2] += colour.blue;
      ++count;
    }
  const auto mean = [&](int64_t sum) { return static_cast<uint8_t>((sum + count / 2) / count); };
  const Colour colour = {mean(sums[0]), mean(sums[1]), mean(sums[2])};
  std::string text = to_text(colour) + " (red " + std::to_string(colour.red) + ", green " +
                     std::to_string(colour.green) + ", blue " + std::to_string(colour.blue) + ")";
  if (count > 1) text += ", the mean of " + std::to_string(count) + " pixels";
  return text + "\n";
}

}  // namespace host
