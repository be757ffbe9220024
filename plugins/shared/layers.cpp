#include "shared/layers.h"

namespace plugins {

using host::Picture;

Layers take_apart(const Samples<const uint8_t>& samples) {
  const int32_t width = samples.width, height = samples.height, channels = samples.channels;
  const bool is_grey = channels < 3, has_opacity = channels % 2 == 0;
  Layers layers{Picture(width, height), has_opacity ? Picture(width, height) : Picture()};
  layers.colours.one_channel = is_grey;
  const ptrdiff_t green = is_grey ? 0 : 1, blue = is_grey ? 0 : 2;
  for (int32_t y = 0; y < height; ++y) {
    const uint8_t* from = samples.first + y * samples.row_bytes;
    uint8_t* to = layers.colours.row(y);
    for (int32_t x = 0; x < width; ++x, from += channels, to += 3) {
      to[0] = from[blue];
      to[1] = from[green];
      to[2] = from[0];
    }
    if (!has_opacity) continue;
    from = samples.first + y * samples.row_bytes + channels - 1;
    to = layers.opacity.row(y);
    for (int32_t x = 0; x < width; ++x, from += channels, to += 3) to[0] = to[1] = to[2] = *from;
  }
  return layers;
}

int32_t channels_of(const Layers& layers) {
  const bool is_grey = layers.colours.one_channel && layers.colours.is_grey();
  return (is_grey ? 1 : 3) + (layers.has_opacity() ? 1 : 0);
}

void put_together(const Layers& layers, const Samples<uint8_t>& samples) {
  const int32_t channels = samples.channels;
  for (int32_t y = 0; y < samples.height; ++y) {
    const uint8_t* from = layers.colours.row(y);
    uint8_t* to = samples.first + y * samples.row_bytes;
    for (int32_t x = 0; x < samples.width; ++x, from += 3, to += channels) {
      to[0] = from[2];
      if (channels < 3) continue;
      to[1] = from[1];
      to[2] = from[0];
    }
    if (channels % 2 != 0) continue;
    to = samples.first + y * samples.row_bytes + channels - 1;
    for (int32_t x = 0; x < samples.width; ++x, to += channels)
      *to = layers.has_opacity() ? layers.opacity.row(y)[3 * x] : 255;
  }
}

void darken_transparent(Layers& layers) {
  if (!layers.has_opacity()) return;
  for (int32_t y = 0; y < layers.colours.height(); ++y)
    for (ptrdiff_t i = 0; i < layers.colours.row_bytes(); ++i) {
      uint8_t& sample = layers.colours.row(y)[i];
      sample = static_cast<uint8_t>((sample * layers.opacity.row(y)[i] + 127) / 255);
    }
}

}  // namespace plugins
