#include "buffers.h"

#include <cstddef>
#include <memory>
#include <utility>

namespace roxe_gegl {
namespace {

using plugins::Layers;

// Pixels in the order of a format of 3 or 4 channels.
struct Block {
  Block(int32_t width, int32_t height, const Babl* format)
      : channels(babl_format_get_n_components(format)),
        row_bytes(static_cast<ptrdiff_t>(width) * channels),
        bytes(std::make_unique_for_overwrite<uint8_t[]>(static_cast<size_t>(row_bytes) *
                                                        static_cast<size_t>(height))) {}

  int32_t channels;
  ptrdiff_t row_bytes;
  std::unique_ptr<uint8_t[]> bytes;
};

}  // namespace

const Babl* bytes_format(bool with_opacity, const Babl* space) {
  return babl_format_with_space(with_opacity ? "R'G'B'A u8" : "R'G'B' u8", space);
}

Layers read_layers(GeglBuffer* buffer, const GeglRectangle& area, const Babl* format) {
  const Block block(area.width, area.height, format);
  gegl_buffer_get(buffer, &area, 1.0, format, block.bytes.get(), GEGL_AUTO_ROWSTRIDE,
                  GEGL_ABYSS_NONE);
  return plugins::take_apart(
      {block.bytes.get(), block.row_bytes, area.width, area.height, block.channels});
}

void write_layers(const Layers& layers, GeglBuffer* buffer, int x, int y, const Babl* format) {
  const GeglRectangle area = {x, y, layers.colours.width(), layers.colours.height()};
  const Block block(area.width, area.height, format);
  plugins::put_together(
      layers, {block.bytes.get(), block.row_bytes, area.width, area.height, block.channels});
  gegl_buffer_set(buffer, &area, 0, format, block.bytes.get(), GEGL_AUTO_ROWSTRIDE);
}

host::Picture read_on_black(GeglBuffer* buffer, const GeglRectangle& area) {
  const Babl* space = babl_format_get_space(gegl_buffer_get_format(buffer));
  Layers layers = read_layers(buffer, area, bytes_format(true, space));
  plugins::darken_transparent(layers);
  return std::move(layers.colours);
}

}  // namespace roxe_gegl
