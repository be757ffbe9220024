// What a picture's metadata says, and what an edit makes of it.
#ifndef ROXE_HOST_METADATA_H_
#define ROXE_HOST_METADATA_H_

#include <string>

#include "codecs.h"
#include "picture.h"

namespace host {

// Each empty where nothing is known. As they are in the file: they may hold control characters.
struct Description {
  std::string make, model;  // of the camera
  std::string date;         // YYYY:MM:DD hh:mm:ss, when the picture was taken
  std::string profile;      // the name of the colour profile
};
Description describe_metadata(const Metadata& metadata);

// The picture was made upright: nothing is to be turned any more.
void reset_orientation(Metadata& metadata);

// The picture was turned by a quarter: what concerns rows concerns columns now.
void swap_axes(Metadata& metadata);

// What is written with a result: sizes are those of the picture, thumbnails show it, and what the
// person does not want is gone, as are places in a picture whose pixels have moved. What still shows
// or describes the picture as it was gets a note.
Metadata metadata_of_result(const Picture& picture, const WriteSettings& settings, Notes& notes);

}  // namespace host

#endif  // ROXE_HOST_METADATA_H_
