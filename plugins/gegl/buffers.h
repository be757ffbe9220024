// Pixels between the buffers of GEGL and the layers of the operations.
#ifndef ROXE_GEGL_BUFFERS_H_
#define ROXE_GEGL_BUFFERS_H_

#include <gegl.h>

#include "shared/layers.h"

namespace roxe_gegl {

// 8 bits a channel, with opacity or without it, in a colour space.
const Babl* bytes_format(bool with_opacity, const Babl* space);

// A rectangle of a buffer; what lies outside the buffer is black and, where the format has opacity,
// transparent. Throws host::Failure for more pixels than a picture may have.
plugins::Layers read_layers(GeglBuffer* buffer, const GeglRectangle& area, const Babl* format);

// Writes layers with their top left corner at a place of the buffer. What lies outside is left out.
void write_layers(const plugins::Layers& layers, GeglBuffer* buffer, int x, int y,
                  const Babl* format);

// A rectangle of a buffer on black ground, as far as it is transparent.
host::Picture read_on_black(GeglBuffer* buffer, const GeglRectangle& area);

}  // namespace roxe_gegl

#endif  // ROXE_GEGL_BUFFERS_H_
