// A host's picture, taken apart into what the operations work on, and put together again.
#ifndef ROXE_PLUGINS_SHARED_LAYERS_H_
#define ROXE_PLUGINS_SHARED_LAYERS_H_

#include <cstddef>
#include <cstdint>

#include "picture.h"

namespace plugins {

// Where a host holds samples of eight bits: 1 channel is grey, 2 are grey and opacity, 3 are red,
// green and blue, 4 those and opacity. Opacity is not multiplied into the colours.
template <typename Byte>
struct Samples {
  Byte* first;
  ptrdiff_t row_bytes;
  int32_t width, height, channels;
};

struct Layers {
  host::Picture colours;
  host::Picture opacity;  // equal channels; 0 × 0 pixels where a picture has none

  bool has_opacity() const { return opacity.width() > 0; }
};

// Throws Failure if the size is above the limit.
Layers take_apart(const Samples<const uint8_t>& samples);

// How many channels hold the picture: grey stays grey as long as its channels are equal.
int32_t channels_of(const Layers& layers);

// Writes as many channels as there are in samples, whose size is that of the layers. What is opaque
// has an opacity of 255.
void put_together(const Layers& layers, const Samples<uint8_t>& samples);

// Makes colours what they are over a black ground, rounded to nearest.
void darken_transparent(Layers& layers);

}  // namespace plugins

#endif  // ROXE_PLUGINS_SHARED_LAYERS_H_
