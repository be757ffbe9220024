// Decoders and encoders: whole files in memory on one side, pictures on the other.
//
// They throw Failure with a reason that follows the name of the file ("photo.jpg: " + reason).
#ifndef ROXE_HOST_CODECS_H_
#define ROXE_HOST_CODECS_H_

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "files.h"
#include "picture.h"

namespace host {

enum class FileFormat { kJpeg, kPng, kPnm, kTiff, kWebp };
inline constexpr char kFormats[] = "jpg|png|webp|ppm|pgm";  // that can be asked for

// What was read besides the pixels.
struct Decoded {
  Picture picture;  // as stored, not yet turned upright
  FileFormat format;
  std::string description;  // of the stored form: "8 bits, 3 channels"
};

struct ReadSettings {
  ReadSettings(Colour background = {}) : background(background) {}

  Colour background;     // shows through transparent pixels
  bool damaged = false;  // what can be read of a damaged JPEG is better than nothing
};

enum class Subsampling { kDefault, k444, k422, k420 };

struct WriteSettings {
  std::optional<int> quality;  // 1 ... 100; without one as an input of the same format, 95 else
  Subsampling subsampling = Subsampling::kDefault;  // as quality: kept, 4:4:4 else
  bool progressive = false;                         // of a JPEG
  bool strip = false;                               // writes no metadata but what colours mean
  bool strip_gps = false;                           // nor where the picture was taken
  bool preserve_time = false;                       // the file seems as old as the input
  bool pgm = false;                                 // of the portable formats, the grey one
  std::string format;  // "jpg", "png" ...; empty: by the extension of the output
  Existing existing = Existing::kReplace;
};

using Notes = std::vector<std::string>;  // what a person may want to know, a sentence each

// What travels only between two files of the same format.
void note_jpeg_blocks(const Metadata& metadata, std::string_view format, Notes& notes);
void note_png_chunks(const Metadata& metadata, std::string_view format, Notes& notes);

std::optional<FileFormat> format_of_content(const Bytes& file);
// What else a file may be, for the message of refusal: "a TIFF picture", or empty.
std::string_view known_stranger(const Bytes& file);
// By the extension, any case; nothing for an extension that cannot be written.
std::optional<FileFormat> format_of_name(std::string_view path);

// Whether there is a profile for the channels that are written; a note if there is another one.
bool profile_fits(const Bytes& icc, bool grey, Notes& notes);

Decoded decode_jpeg(const Bytes& file, const ReadSettings& settings, Notes& notes);
Decoded decode_png(const Bytes& file, const ReadSettings& settings, Notes& notes);
Decoded decode_pnm(const Bytes& file, Notes& notes);
Decoded decode_tiff(const Bytes& file, const ReadSettings& settings, Notes& notes);
Decoded decode_webp(const Bytes& file, const ReadSettings& settings, Notes& notes);

// The metadata is what is written, not the picture's own. Grey is written as one channel where the
// format has it.
Bytes encode_jpeg(const Picture& picture, const Metadata& metadata, bool grey,
                  const WriteSettings& settings, Notes& notes);
Bytes encode_png(const Picture& picture, const Metadata& metadata, bool grey, Notes& notes);
Bytes encode_webp(const Picture& picture, const Metadata& metadata, const WriteSettings& settings,
                  Notes& notes);
Bytes encode_pnm(const Picture& picture, const Metadata& metadata, const WriteSettings& settings,
                 Notes& notes);

// The libraries behind formats that a build may lack, with their versions; empty if it lacks them.
std::string tiff_library();
std::string webp_library();

// What --version prints.
std::string version_text();

}  // namespace host

#endif  // ROXE_HOST_CODECS_H_
