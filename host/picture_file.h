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
};

LoadedPicture load_picture(const std::string& path, const ReadSettings& settings, Notes& notes);

// Throws UsageError for an extension that cannot be written, Failure for a place that cannot.
void check_target(const std::string& path);

void save_picture(const Picture& picture, const std::string& path, WriteSettings settings,
                  Notes& notes);

}  // namespace host

#endif  // ROXE_HOST_PICTURE_FILE_H_
