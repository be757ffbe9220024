#include "picture_file.h"

#include <utility>

#include "errors.h"
#include "exif.h"
#include "files.h"
#include "metadata.h"

namespace host {
namespace {

Decoded decode(const Bytes& file, const ReadSettings& settings, Notes& notes) {
  if (file.empty()) throw Failure("the file is empty");
  const auto format = format_of_content(file);
  if (!format) {
    const std::string_view stranger = known_stranger(file);
    if (stranger.empty()) throw Failure("is not a JPEG, PNG, TIFF, WebP, PPM or PGM picture");
    throw Failure("is " + std::string(stranger) +
                  "; only JPEG, PNG, TIFF, WebP, PPM and PGM can be read");
  }
  switch (*format) {
    case FileFormat::kJpeg:
      return decode_jpeg(file, settings, notes);
    case FileFormat::kPng:
      return decode_png(file, settings, notes);
    case FileFormat::kTiff:
      return decode_tiff(file, settings, notes);
    case FileFormat::kWebp:
      return decode_webp(file, settings, notes);
    default:
      return decode_pnm(file, notes);
  }
}

std::optional<timespec> time_to_keep(const Picture& picture, const WriteSettings& settings) {
  return settings.preserve_time ? picture.metadata.modified : std::nullopt;
}

// Which of .pgm and .ppm, in any case, a name of kPnm ends in.
bool ends_in_pgm(const std::string& name) {
  const char middle = name[name.size() - 2];
  return middle == 'g' || middle == 'G';
}

void name_the_file(Notes& notes, size_t first, const std::string& path) {
  for (size_t i = first; i < notes.size(); ++i) notes[i] = path + ": " + notes[i];
}

}  // namespace

LoadedPicture decode_upright(const Bytes& file, const ReadSettings& settings, Notes& notes) {
  Decoded decoded = decode(file, settings, notes);
  LoadedPicture loaded{
      std::move(decoded.picture), std::move(decoded.description), 1, decoded.format, {}};
  remove_exif_prefixes(loaded.picture.metadata.exif);
  loaded.orientation = exif_orientation(loaded.picture.metadata.exif);
  make_upright(loaded.picture, loaded.orientation);
  reset_orientation(loaded.picture.metadata);
  if (loaded.orientation >= 5) swap_axes(loaded.picture.metadata);
  loaded.picture.metadata.pixels_moved = loaded.orientation > 1;
  return loaded;
}

Bytes encode_picture(const Picture& picture, FileFormat format, const WriteSettings& settings,
                     Notes& notes) {
  const bool grey = picture.one_channel && picture.is_grey();
  const Metadata metadata = metadata_of_result(picture, settings, notes);
  switch (format) {
    case FileFormat::kJpeg:
      return encode_jpeg(picture, metadata, grey, settings, notes);
    case FileFormat::kPng:
      return encode_png(picture, metadata, grey, notes);
    case FileFormat::kWebp:
      return encode_webp(picture, metadata, settings, notes);
    default:
      return encode_pnm(picture, metadata, settings, notes);
  }
}

LoadedPicture load_picture(const std::string& path, const ReadSettings& settings, Notes& notes) {
  Bytes file = read_file(path);
  const std::string name = name_of_input(path);
  const size_t first_note = notes.size();
  try {
    LoadedPicture loaded = decode_upright(file, settings, notes);
    name_the_file(notes, first_note, name);
    loaded.picture.metadata.modified = modification_time(path);
    loaded.file = std::move(file);
    return loaded;
  } catch (const Failure& failure) {
    throw Failure(name + ": " + failure.what());
  }
}

Target::Target(const std::string& path, const std::string& format) : path_(path) {
  const std::string name = format.empty() ? path : "picture." + format;
  const auto known = format_of_name(name);
  if (!known)
    throw UsageError(path == kStandardStream
                         ? "--format must say what to write on standard output"
                         : path +
                               ": the extension must say what to write: .jpg, .jpeg, .png, .webp, "
                               ".ppm or .pgm");
  format_ = *known;
  pgm_ = format_ == FileFormat::kPnm && ends_in_pgm(name);
  check_writable(path);
}

Bytes encode_for(const Target& target, const Picture& picture, WriteSettings settings,
                 Notes& notes) {
  const size_t first_note = notes.size();
  const std::string name = name_of_output(target.path());
  settings.pgm = target.pgm();
  try {
    Bytes file = encode_picture(picture, target.format(), settings, notes);
    name_the_file(notes, first_note, name);
    return file;
  } catch (const Failure& failure) {
    throw Failure(name + ": " + failure.what());
  }
}

bool can_be_copied(const LoadedPicture& loaded, const Target& target,
                   const WriteSettings& settings) {
  const bool as_it_was = !settings.quality && settings.subsampling == Subsampling::kDefault &&
                         !settings.progressive && !settings.strip && !settings.strip_gps;
  if (!as_it_was || loaded.format != target.format()) return false;
  const auto is_pgm = [&] { return loaded.file[1] == '2' || loaded.file[1] == '5'; };
  return loaded.format != FileFormat::kPnm || is_pgm() == target.pgm();
}

void write_picture(const Target& target, const Bytes& file, const Picture& picture,
                   const WriteSettings& settings) {
  write_file(target.path(), file, settings.existing, time_to_keep(picture, settings));
}

}  // namespace host
