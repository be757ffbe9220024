// Replaces the tables of white_balance_avx2.inl by byte permutes, 64 pixels at a time.

// Linear light in two bytes: low, and high with what makes it four times the value.
struct LinearPermutes {
  PermuteTable low, high;
};

static inline LinearPermutes linear_permutes(const int32_t* linear) {
  uint8_t low[256], high[256];
  for (int32_t i = 0; i < 256; ++i) {
    low[i] = static_cast<uint8_t>(4 * linear[i]);
    high[i] = static_cast<uint8_t>(linear[i] >> 6);
  }
  return {permute_table(low), permute_table(high)};
}

// Words keep the order that unpacking gives them; packing undoes it.
static inline void linearise_64(const LinearPermutes& table, const uint8_t* src, LightBlock& block,
                                int32_t i) {
  const Planes512 planes = load_planes_512(src);
  uint16_t* const channels[3] = {block.blue + i, block.green + i, block.red + i};
  for (int32_t c = 0; c < 3; ++c) {
    const __m512i low = look_up_64(table.low, planes.channel[c]);
    const __m512i high = look_up_64(table.high, planes.channel[c]);
    _mm512_storeu_si512(channels[c], _mm512_unpacklo_epi8(low, high));
    _mm512_storeu_si512(channels[c] + 32, _mm512_unpackhi_epi8(low, high));
  }
}

struct EncodedPermutes {
  PermuteTable base, step[4];
  __m512i first[2];  // entries 0 ... 127
};

static inline EncodedPermutes encoded_permutes(const WhiteBalance& balance) {
  return {permute_table(balance.base),
          {permute_table(balance.step[0]), permute_table(balance.step[1]),
           permute_table(balance.step[2]), permute_table(balance.step[3])},
          {_mm512_loadu_si512(balance.encoded), _mm512_loadu_si512(balance.encoded + 64)}};
}

// 64 words of linear light, 0 ... 4096, to bytes.
static inline __m512i encode_64(const EncodedPermutes& table, const uint16_t* light) {
  const __m512i low = _mm512_loadu_si512(light), high = _mm512_loadu_si512(light + 32);
  // 4096 becomes the first entry of the last stretch, which is the same.
  const __m512i stretch =
      _mm512_packus_epi16(_mm512_srli_epi16(low, 4), _mm512_srli_epi16(high, 4));
  const __m512i low_bits = _mm512_set1_epi16(15);
  const __m512i within =
      _mm512_packus_epi16(_mm512_and_si512(low, low_bits), _mm512_and_si512(high, low_bits));
  __m512i byte = look_up_64(table.base, stretch);
  for (int32_t j = 0; j < 4; ++j)
    byte = _mm512_mask_add_epi8(byte,
                                _mm512_cmpge_epu8_mask(within, look_up_64(table.step[j], stretch)),
                                byte, _mm512_set1_epi8(1));
  const __mmask64 direct = _mm512_cmplt_epu8_mask(stretch, _mm512_set1_epi8(8));
  const __m512i index = _mm512_packus_epi16(low, high);
  return _mm512_mask_blend_epi8(direct, byte,
                                _mm512_permutex2var_epi8(table.first[0], index, table.first[1]));
}

static inline void balance_64_multiple(const WhiteBalance& balance, const LinearPermutes& linear,
                                       const EncodedPermutes& encoded, const uint8_t* src,
                                       uint8_t* dst, int32_t count) {
  LightBlock block;
  for (int32_t i = 0; i < count; i += 64) linearise_64(linear, src + 3 * i, block, i);
  for (int32_t i = 0; i < count; i += 16) balance_words(balance, block, i);
  for (int32_t i = 0; i < count; i += 64)
    store_planes_512(dst + 3 * i,
                     {{encode_64(encoded, block.blue + i), encode_64(encoded, block.green + i),
                       encode_64(encoded, block.red + i)}});
}

static void balance_white_avx512(const WhiteBalance& balance, const uint8_t* src, uint8_t* dst,
                                 int32_t count) {
  if (count < 16 || !balance.has_steps || !fits_words(balance)) {
    balance_white_avx2(balance, src, dst, count);
    return;
  }
  const LinearPermutes linear = linear_permutes(balance.linear);
  const EncodedPermutes encoded = encoded_permutes(balance);
  while (count >= 64) {
    const int32_t part = count < kLightBlock ? count & ~63 : kLightBlock;
    balance_64_multiple(balance, linear, encoded, src, dst, part);
    src += 3 * part;
    dst += 3 * part;
    count -= part;
  }
  if (count > 0) {  // the rest, filled up with black
    const size_t bytes = 3 * static_cast<size_t>(count);
    uint8_t pixels[192] = {};
    __builtin_memcpy(pixels, src, bytes);
    balance_64_multiple(balance, linear, encoded, pixels, pixels, 64);
    __builtin_memcpy(dst, pixels, bytes);
  }
}
