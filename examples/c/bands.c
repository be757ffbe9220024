// One picture on many cores: the operations by bands of rows, a thread each, and whether that gives
// the bytes of one call on the whole picture.
//
//   bands PHOTO.ppm [THREADS]
//
// Prints for each operation whether the bytes are the same and how many are not, and the times of
// both ways.
// Exit code 1 if an operation that can be cut into bands gives other bytes.

#define _POSIX_C_SOURCE 199309L

#include <pthread.h>
#include <roxe.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <time.h>

#include "ppm.h"

enum { kMostThreads = 64, kRadius = 21 };

// Rows top ... bottom - 1 of a picture, as a picture of its own. No pixel is copied.
static PixelArray band_of(const PixelArray* whole, int32_t top, int32_t bottom) {
  PixelArray band = *whole;
  band.height = bottom - top;
  band.pixels += (size_t)top * (size_t)whole->rowBytes;
  return band;
}

// ---- work on rows top ... bottom - 1; with the whole height it is the plain call

typedef void (*Work)(const PixelArray* src, PixelArray* dst, int32_t top, int32_t bottom);

// Each pixel depends on itself alone: a band of the source into the same band of the destination.
#define BY_PIXEL(name, ...)                                                         \
  static void name(const PixelArray* whole_src, PixelArray* whole_dst, int32_t top, \
                   int32_t bottom) {                                                \
    const PixelArray src = band_of(whole_src, top, bottom);                         \
    PixelArray dst = band_of(whole_dst, top, bottom);                               \
    __VA_ARGS__;                                                                    \
  }
BY_PIXEL(replace, roxeReplaceColor(&src, &dst, 0x3C, 0x68, 0xE8, 120, 190, 10, -5))
BY_PIXEL(mask, roxeReplaceColorMask(&src, &dst, 0x3C, 0x68, 0xE8, 120))
BY_PIXEL(tint, roxeColorTint(&src, &dst, 0x1E, 0x50, 0xC8, 120))
BY_PIXEL(temperature, roxeColorTemperature(&src, &dst, -10, -10))
BY_PIXEL(variations, roxeVariations(&src, &dst, 2, 0, -2, 0, 2))
BY_PIXEL(midtones, roxeShadowHighlight(&src, &dst, 0, 0, 40))
// These look further than a pixel, so a band of their own does not do.
BY_PIXEL(shadows, roxeShadowHighlight(&src, &dst, 40, 10, 0))
BY_PIXEL(auto_gamma, roxeAutoGamma(&src, &dst, NULL))

// Soft focus reads radius / 2 rows up and down in each of its three blurs. A band with that many rows
// more on both sides, or up to the edge of the picture, has every window that the whole has. The
// margin is thrown away, so the band is blurred into memory of its own.
static void soft_focus(const PixelArray* src, PixelArray* dst, int32_t top, int32_t bottom) {
  const int32_t margin = 3 * (kRadius / 2);
  const int32_t first = top > margin ? top - margin : 0;
  const int32_t end = src->height - bottom > margin ? bottom + margin : src->height;
  const PixelArray wide = band_of(src, first, end);
  PixelArray blurred = ppm_new(kRoxeFormatRGB24, src->width, end - first);
  roxeSoftFocus(&wide, &blurred, NULL, kRadius, 1);
  for (int32_t y = top; y < bottom; ++y)
    memcpy(dst->pixels + (size_t)y * (size_t)dst->rowBytes,
           blurred.pixels + (size_t)(y - first) * (size_t)blurred.rowBytes, 3 * (size_t)src->width);
  free(blurred.pixels);
}

// The destination's centre lies higher by as many rows as the band begins lower.
static void rotate(const PixelArray* src, PixelArray* dst, int32_t top, int32_t bottom) {
  PixelArray band = band_of(dst, top, bottom);
  const int32_t x = src->width / 2, y = src->height / 2;
  roxeRotateImage(src, x, y, 0.127f, &band, x, y - top);
}

// The corners go to the same places; the rectangle says which rows are drawn.
static void warp(const PixelArray* src, PixelArray* dst, int32_t top, int32_t bottom) {
  const int32_t w = src->width, h = src->height;
  Quad from = {w / 10, h / 10, w - w / 9, h / 8, w - w / 20, h - h / 11, w / 30, h - h / 7};
  const Quad to = {0, 0, w, 0, w, h, 0, h};
  const PixelRect rows = {0, top, w, bottom};
  roxeAffineTransform(src, dst, &from, &to, rows);
}

static const struct {
  const char* name;
  Work work;
  int is_exact;  // bands give the same bytes
} kOperations[] = {
    {"replace colour", replace, 1},
    {"colour mask", mask, 1},
    {"tint", tint, 1},
    {"temperature", temperature, 1},
    {"variations", variations, 1},
    {"midtones alone", midtones, 1},
    {"soft focus", soft_focus, 1},
    {"shadows and highlights", shadows, 0},
    {"auto gamma", auto_gamma, 0},
    {"rotate", rotate, 0},
    {"warp", warp, 0},
};

// ---- a thread for each band

typedef struct {
  Work work;
  const PixelArray* src;
  PixelArray* dst;
  int32_t top, bottom;
} Band;

static void* run_band(void* argument) {
  const Band* band = (const Band*)argument;
  band->work(band->src, band->dst, band->top, band->bottom);
  return NULL;
}

static void run(Work work, const PixelArray* src, PixelArray* dst, int threads) {
  pthread_t ids[kMostThreads];
  Band bands[kMostThreads];
  for (int i = 0; i < threads; ++i) {
    const Band band = {work, src, dst, (int32_t)((int64_t)src->height * i / threads),
                       (int32_t)((int64_t)src->height * (i + 1) / threads)};
    bands[i] = band;
    if (pthread_create(&ids[i], NULL, run_band, &bands[i]) != 0) exit(2);
  }
  for (int i = 0; i < threads; ++i) pthread_join(ids[i], NULL);
}

// How many bytes of two pictures differ, and by how much at most.
static size_t differing(const uint8_t* a, const uint8_t* b, size_t bytes, int* most) {
  size_t count = 0;
  *most = 0;
  for (size_t i = 0; i < bytes; ++i) {
    const int difference = abs(a[i] - b[i]);
    count += difference > 0;
    if (difference > *most) *most = difference;
  }
  return count;
}

static double milliseconds(void) {
  struct timespec now;
  clock_gettime(CLOCK_MONOTONIC, &now);
  return 1e3 * (double)now.tv_sec + 1e-6 * (double)now.tv_nsec;
}

// The least of five runs.
static double time_of(Work work, const PixelArray* src, PixelArray* dst, int threads) {
  double least = 1e9;
  for (int i = 0; i < 5; ++i) {
    const double start = milliseconds();
    if (threads == 1)
      work(src, dst, 0, src->height);
    else
      run(work, src, dst, threads);
    const double taken = milliseconds() - start;
    if (taken < least) least = taken;
  }
  return least;
}

int main(int argc, char** argv) {
  if (argc < 2) {
    fprintf(stderr, "bands PHOTO.ppm [THREADS]\n");
    return 2;
  }
  const PixelArray photo = ppm_read(argv[1]);
  int threads = argc > 2 ? atoi(argv[2]) : 2;
  if (threads > photo.height) threads = photo.height;
  if (threads < 2 || threads > kMostThreads) {
    fprintf(stderr, "THREADS is 2 ... %d, and at most the rows of the picture\n", kMostThreads);
    return 2;
  }
  PixelArray whole = ppm_new(kRoxeFormatRGB24, photo.width, photo.height);
  PixelArray banded = ppm_new(kRoxeFormatRGB24, photo.width, photo.height);
  const size_t bytes = (size_t)photo.rowBytes * (size_t)photo.height;
  int wrong = 0;
  printf("%-24s %-29s %9s %4d bands\n", "", "bytes", "whole", threads);
  for (size_t i = 0; i < sizeof kOperations / sizeof *kOperations; ++i) {
    memset(whole.pixels, 0, bytes);
    memset(banded.pixels, 0, bytes);
    const double one = time_of(kOperations[i].work, &photo, &whole, 1);
    const double many = time_of(kOperations[i].work, &photo, &banded, threads);
    int most;
    const size_t count = differing(whole.pixels, banded.pixels, bytes, &most);
    char found[40] = "same";
    if (count > 0)
      snprintf(found, sizeof found, "%.2g %% differ by up to %d",
               100.0 * (double)count / (double)bytes, most);
    printf("%-24s %-29s %6.1f ms %6.1f ms\n", kOperations[i].name, found, one, many);
    if (kOperations[i].is_exact && count > 0) wrong = 1;
  }
  free(photo.pixels);
  free(whole.pixels);
  free(banded.pixels);
  return wrong;
}
