// Histogram of one channel.

// Four sets of counts in turn: neighbouring pixels are often equal, and a single counter would wait
// for its own last increment.
static void count_green(const uint8_t* src, int32_t count, uint32_t (*counts)[256]) {
  int32_t i = 0;
  for (; i + 4 <= count; i += 4, src += 12) {
    ++counts[0][src[1]];
    ++counts[1][src[4]];
    ++counts[2][src[7]];
    ++counts[3][src[10]];
  }
  for (; i < count; ++i, src += 3) ++counts[0][src[1]];
}
