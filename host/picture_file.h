// Pictures from and to files, with the names of the files in every message.
#ifndef ROXE_HOST_PICTURE_FILE_H_
#define ROXE_HOST_PICTURE_FILE_H_

#include <string>

#include "codecs.h"

namespace host {

struct LoadedPicture {
  Picture picture;          // upright
  std::string description;  // of the file's own form
  int orientation = 1;      // that the file had
  FileFormat format;
  Bytes file;  // as it was read
};

// The file as a whole. Throws Failure with a reason that follows the name of the file.
LoadedPicture decode_upright(const Bytes& file, const ReadSettings& settings, Notes& notes);
Bytes encode_picture(const Picture& picture, FileFormat format, const WriteSettings& settings,
                     Notes& notes);

LoadedPicture load_picture(const std::string& path, const ReadSettings& settings, Notes& notes);

// A place that a picture can be written to, and in which format.
class Target {
 public:
  // Throws UsageError for an extension that cannot be written, Failure for a place that cannot. The
  // format is "jpg", "png" ... or empty: by the extension.
  explicit Target(const std::string& path, const std::string& format = "");

  const std::string& path() const { return path_; }
  FileFormat format() const { return format_; }
  bool pgm() const { return pgm_; }  // of the portable formats, the grey one

 private:
  std::string path_;
  FileFormat format_;
  bool pgm_;
};

// The file that write_picture puts at the target. Throws Failure with a sentence that names it.
Bytes encode_for(const Target& target, const Picture& picture, WriteSettings settings,
                 Notes& notes);

// Whether the file as it was read would do: it has the format of the target and no option asks for
// another form.
bool can_be_copied(const LoadedPicture& loaded, const Target& target,
                   const WriteSettings& settings);

void write_picture(const Target& target, const Bytes& file, const Picture& picture,
                   const WriteSettings& settings);

}  // namespace host

#endif  // ROXE_HOST_PICTURE_FILE_H_
