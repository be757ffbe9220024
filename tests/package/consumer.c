/* The least a host does: a picture of its own, one operation, one status. */
#include <roxe.h>

int main(void) {
  uint8_t pixels[2 * 3] = {0, 0, 0, 255, 255, 255};
  PixelArray image = {kRoxeFormatRGB24, 2, 1, 6, pixels};
  const int32_t status = roxeVariations(&image, &image, 0, 0, 0, 1, 0);
  /* Two units darker: white becomes 254. */
  return status == kRoxeOK && pixels[0] == 0 && pixels[3] == 254 ? 0 : 1;
}
