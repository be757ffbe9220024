// The chunks of a PNG, as they lie in the file.
#ifndef ROXE_HOST_PNG_CHUNKS_H_
#define ROXE_HOST_PNG_CHUNKS_H_

#include <optional>
#include <string>
#include <vector>

#include "codecs.h"

namespace host {

struct PngFile {
  struct Range {
    size_t begin, end;
  };
  std::vector<Range> pictorial;  // bytes for libpng: signature, pixels and what they mean
  uint64_t pixel_bytes = 0;      // of the compressed pixels
  bool ended = false;            // by the chunk that ends every PNG
};

// Finds what libpng has to read and takes everything else into the metadata. Ends at
// a chunk that claims more bytes than the file has.
PngFile read_png_chunks(const Bytes& file, Metadata& metadata, Notes& notes);

// What a chunk holds as a text, unpacked where it is compressed (zTXt, iTXt). Nothing where that is
// damaged or takes more than so many bytes.
std::optional<Bytes> unpacked_text(const Metadata::Chunk& chunk, size_t most);

// The content of the chunk that holds an XMP packet.
Bytes xmp_chunk(const Bytes& xmp);

}  // namespace host

#endif  // ROXE_HOST_PNG_CHUNKS_H_
