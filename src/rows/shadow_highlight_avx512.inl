// Replaces tone_shifts_avx2, whose look-ups load one entry after the other: GAINS

// 256 floats: a permute of two registers for each 32 of them, told apart by three bits of the index.
static inline __m512 look_up_16(const float* table, __m512i index) {
  const auto stretch = [&](int32_t at) {
    return _mm512_permutex2var_ps(_mm512_loadu_ps(table + at), index,
                                  _mm512_loadu_ps(table + at + 16));
  };
  const __mmask16 bit5 = _mm512_test_epi32_mask(index, _mm512_set1_epi32(32));
  const __mmask16 bit6 = _mm512_test_epi32_mask(index, _mm512_set1_epi32(64));
  const __mmask16 bit7 = _mm512_test_epi32_mask(index, _mm512_set1_epi32(128));
  const __m512 first = _mm512_mask_blend_ps(bit5, stretch(0), stretch(32));
  const __m512 second = _mm512_mask_blend_ps(bit5, stretch(64), stretch(96));
  const __m512 third = _mm512_mask_blend_ps(bit5, stretch(128), stretch(160));
  const __m512 fourth = _mm512_mask_blend_ps(bit5, stretch(192), stretch(224));
  return _mm512_mask_blend_ps(bit7, _mm512_mask_blend_ps(bit6, first, second),
                              _mm512_mask_blend_ps(bit6, third, fourth));
}

// As plus_a_little does with AVX2.
static inline __m512 plus_a_little_16(__m512 v) {
  const __mmask16 small = _mm512_cmp_ps_mask(v, _mm512_set1_ps(0.00015f), _CMP_NGE_UQ);
  const __mmask16 large = _mm512_cmp_ps_mask(v, _mm512_set1_ps(1024.0f), _CMP_GT_OQ);
  const __mmask16 not_zero = _mm512_cmp_ps_mask(v, _mm512_setzero_ps(), _CMP_NEQ_UQ);
  if (((small | large) & not_zero) == 0) [[likely]]
    return _mm512_add_ps(v, _mm512_set1_ps(0.0001f));
  const __m512d little = _mm512_set1_pd(0.0001);
  const __m512d low = _mm512_cvtps_pd(_mm512_castps512_ps256(v));
  const __m512d high = _mm512_cvtps_pd(_mm512_extractf32x8_ps(v, 1));
  return _mm512_insertf32x8(_mm512_castps256_ps512(_mm512_cvtpd_ps(_mm512_add_pd(low, little))),
                            _mm512_cvtpd_ps(_mm512_add_pd(high, little)), 1);
}

static void tone_shifts_avx512(const float* intensity, const float* blurred, const float* combined,
                               const float* midtone, float* shift, int32_t count) {
  const __m512i byte = _mm512_set1_epi32(255);
  const __m512 beyond = _mm512_set1_ps(midtone[256]);
  int32_t i = 0;
  for (; i + 16 <= count; i += 16) {
    const __m512 own = _mm512_loadu_ps(intensity + i), near = _mm512_loadu_ps(blurred + i);
    const __m512 sum = plus_a_little_16(_mm512_add_ps(own, near)), square = _mm512_mul_ps(sum, sum);
    const __m512 ratio = _mm512_div_ps(_mm512_add_ps(_mm512_mul_ps(own, near), square),
                                       _mm512_add_ps(_mm512_mul_ps(near, near), square));
    const __m512i level = _mm512_and_si512(_mm512_cvttps_epi32(own), byte);
    const __m512 target = _mm512_mul_ps(look_up_16(combined, level), ratio);
    const __m512i index = _mm512_cvttps_epi32(_mm512_min_ps(
        _mm512_max_ps(target, _mm512_setzero_ps()), _mm512_set1_ps(511.0f)));
    const __m512 entry = _mm512_mask_mov_ps(look_up_16(midtone, index),
                                            _mm512_cmpgt_epi32_mask(index, byte), beyond);
    _mm512_storeu_ps(shift + i, _mm512_sub_ps(entry, own));
  }
  tone_shifts(intensity + i, blurred + i, combined, midtone, shift + i, count - i);
}
