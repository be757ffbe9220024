// Commands that look at a picture and write nothing.
#ifndef ROXE_HOST_INSPECT_H_
#define ROXE_HOST_INSPECT_H_

#include <string>

#include "picture_file.h"
#include "text.h"

namespace host {

// Lines of "name: value" about a file.
std::string info_text(const LoadedPicture& loaded, const std::string& path);

// The same as a JSON object in ASCII. What the file does not say is null.
std::string info_json(const LoadedPicture& loaded, const std::string& path);

// The colour of a pixel of the upright picture, or the mean of a square of area × area pixels around
// it, as far as they lie in the picture. Throws UsageError outside it.
std::string pick_text(const Picture& picture, Point point, int32_t area);

}  // namespace host

#endif  // ROXE_HOST_INSPECT_H_
