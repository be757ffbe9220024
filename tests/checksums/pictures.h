// The synthetic pictures of the tables of checksums.
#ifndef ROXE_TESTS_CHECKSUMS_PICTURES_H_
#define ROXE_TESTS_CHECKSUMS_PICTURES_H_

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "roxe.h"

struct Picture {
  std::string name;
  PixelArray record;
  std::vector<uint8_t> bytes;
};

using Paint = std::function<uint8_t(int32_t x, int32_t y, int32_t channel)>;

// padding: bytes between the end of a row and the next; they hold 0xA5.
Picture picture(const std::string& name, uint32_t format, int32_t width, int32_t height,
                int32_t padding, const Paint& paint);

// The record with its pixels, wherever the picture lies by now.
PixelArray record_of(Picture& picture);

std::vector<Picture> pictures();

#endif  // ROXE_TESTS_CHECKSUMS_PICTURES_H_
