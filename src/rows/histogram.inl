// Histogram of one channel.

// Eight sets of counts in turn: neighbouring pixels are often equal, and a single counter would
// wait for its own last increment.
static void count_green(const uint8_t* src, int32_t count, uint32_t (*counts)[256]) {
  int32_t i = 0;
  for (; i + 8 <= count; i += 8, src += 24)
    for (int32_t k = 0; k < 8; ++k) ++counts[k][src[3 * k + 1]];
  for (; i < count; ++i, src += 3) ++counts[0][src[1]];
}
