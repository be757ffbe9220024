// Reads and writes pictures as binary PPM and PGM files of 255 levels, for examples: every tool knows
// these formats, and a few lines of C do. A file that cannot be read ends the program with a sentence.
#ifndef ROXE_EXAMPLES_PPM_H_
#define ROXE_EXAMPLES_PPM_H_

#include <roxe.h>
#include <stdio.h>
#include <stdlib.h>

// Files hold red, green, blue; pictures blue, green, red.
static inline void ppm_swap(const PixelArray* image) {
  if (image->format != kRoxeFormatRGB24) return;
  for (int32_t y = 0; y < image->height; ++y) {
    uint8_t* pixel = image->pixels + (size_t)y * (size_t)image->rowBytes;
    for (int32_t x = 0; x < image->width; ++x, pixel += 3) {
      const uint8_t first = pixel[0];
      pixel[0] = pixel[2];
      pixel[2] = first;
    }
  }
}

// A black picture; its pixels are to be freed.
static inline PixelArray ppm_new(uint32_t format, int32_t width, int32_t height) {
  const int32_t row_bytes = width * (format == kRoxeFormatRGB24 ? 3 : 1);
  PixelArray image = {format, width, height, row_bytes,
                      (uint8_t*)calloc((size_t)height, (size_t)row_bytes)};
  if (!image.pixels) {
    fprintf(stderr, "no memory for %d x %d pixels\n", width, height);
    exit(1);
  }
  return image;
}

// A picture from a file: RGB24 from PPM (P6), Gray8 from PGM (P5). Its pixels are to be freed.
static inline PixelArray ppm_read(const char* path) {
  FILE* file = fopen(path, "rb");
  int kind = 0, width = 0, height = 0;
  if (!file || fscanf(file, "P%d %d %d 255%*1[ \n]", &kind, &width, &height) != 3 || width < 1 ||
      height < 1 || (kind != 5 && kind != 6)) {
    fprintf(stderr, "%s is not a PPM or PGM file of 255 levels\n", path);
    exit(1);
  }
  const PixelArray image = ppm_new(kind == 6 ? kRoxeFormatRGB24 : kRoxeFormatGray8, width, height);
  if (fread(image.pixels, (size_t)image.rowBytes, (size_t)height, file) != (size_t)height) {
    fprintf(stderr, "%s ends too early\n", path);
    exit(1);
  }
  fclose(file);
  ppm_swap(&image);
  return image;
}

// Writes a picture with packed rows; returns 1, or 0 if that fails.
static inline int ppm_write(const char* path, const PixelArray* image) {
  FILE* file = fopen(path, "wb");
  if (!file) return 0;
  fprintf(file, "P%d\n%d %d\n255\n", image->format == kRoxeFormatRGB24 ? 6 : 5, image->width,
          image->height);
  ppm_swap(image);
  const size_t rows = fwrite(image->pixels, (size_t)image->rowBytes, (size_t)image->height, file);
  ppm_swap(image);
  return fclose(file) == 0 && rows == (size_t)image->height;
}

#endif  // ROXE_EXAMPLES_PPM_H_
