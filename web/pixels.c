/* Pictures between the browser's order of bytes (red, green, blue, alpha) and the library's (blue,
   green, red), inside the module's memory. All pixels are packed. */
#include <stddef.h>
#include <stdint.h>

#define EXPORTED __attribute__((visibility("default")))

/* Takes the colours of count pixels. */
EXPORTED void take_colours(const uint8_t* rgba, uint8_t* bgr, size_t count) {
  for (size_t i = 0; i < count; ++i) {
    bgr[3 * i] = rgba[4 * i + 2];
    bgr[3 * i + 1] = rgba[4 * i + 1];
    bgr[3 * i + 2] = rgba[4 * i];
  }
}

/* Whether all of count pixels are opaque. */
EXPORTED int is_opaque(const uint8_t* rgba, size_t count) {
  uint8_t all = 255;
  for (size_t i = 0; i < count; ++i) all &= rgba[4 * i + 3];
  return all == 255;
}

/* Takes the opacity of count pixels as grey pixels of three bytes, so that an operation can draw it
   as it draws the colours. */
EXPORTED void take_alpha(const uint8_t* rgba, uint8_t* bgr, size_t count) {
  for (size_t i = 0; i < count; ++i) bgr[3 * i] = bgr[3 * i + 1] = bgr[3 * i + 2] = rgba[4 * i + 3];
}

/* Writes count pixels in the browser's order; alpha is as taken above, or null: all opaque. */
EXPORTED void give(const uint8_t* bgr, const uint8_t* alpha, uint8_t* rgba, size_t count) {
  for (size_t i = 0; i < count; ++i) {
    rgba[4 * i] = bgr[3 * i + 2];
    rgba[4 * i + 1] = bgr[3 * i + 1];
    rgba[4 * i + 2] = bgr[3 * i];
    rgba[4 * i + 3] = alpha ? alpha[3 * i] : 255;
  }
}

/* Fills count pixels with one colour. */
EXPORTED void fill(uint8_t* bgr, size_t count, uint8_t blue, uint8_t green, uint8_t red) {
  for (size_t i = 0; i < count; ++i) {
    bgr[3 * i] = blue;
    bgr[3 * i + 1] = green;
    bgr[3 * i + 2] = red;
  }
}

/* Copies width * height pixels into (width + 2) * (height + 2), those at the edges repeated once
   around. */
EXPORTED void repeat_edges(const uint8_t* src, uint8_t* dst, size_t width, size_t height) {
  for (size_t y = 0; y < height + 2; ++y, dst += 3 * (width + 2)) {
    const size_t inner = y == 0 ? 0 : y > height ? height - 1 : y - 1;
    const uint8_t* row = src + 3 * width * inner;
    __builtin_memcpy(dst, row, 3);
    __builtin_memcpy(dst + 3, row, 3 * width);
    __builtin_memcpy(dst + 3 + 3 * width, row + 3 * (width - 1), 3);
  }
}

/* Turns by 1, 2 or 3 quarters clockwise; after 1 and 3 width and height have changed places. */
EXPORTED void turn_quarters(const uint8_t* src, uint8_t* dst, size_t width, size_t height,
                            int quarters) {
  for (size_t y = 0; y < height; ++y)
    for (size_t x = 0; x < width; ++x) {
      const size_t column = quarters == 1 ? height - 1 - y : quarters == 2 ? width - 1 - x : y;
      const size_t row = quarters == 1 ? x : quarters == 2 ? height - 1 - y : width - 1 - x;
      const size_t columns = quarters == 2 ? width : height;
      __builtin_memcpy(dst + 3 * (row * columns + column), src + 3 * (y * width + x), 3);
    }
}

/* The brightness of count pixels, a byte each; weights 77, 150 and 29 of 256 for red, green, blue. */
EXPORTED void take_brightness(const uint8_t* rgba, uint8_t* grey, size_t count) {
  for (size_t i = 0; i < count; ++i)
    grey[i] =
        (uint8_t)((77 * rgba[4 * i] + 150 * rgba[4 * i + 1] + 29 * rgba[4 * i + 2] + 128) >> 8);
}
