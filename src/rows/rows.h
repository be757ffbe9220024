// The hot loops of all operations, in one table for each instruction set.
//
// A row is a function over pointers and counts: no image record, no status, no allocation. All tables
// give the same bytes; the comment of an entry is the contract of all its bodies. Unless an entry
// says otherwise, any two of the rows that it is given are the same row or disjoint, and exactly
// count elements are read and written.
#ifndef ROXE_ROWS_ROWS_H_
#define ROXE_ROWS_ROWS_H_

#include <cstddef>
#include <cstdint>

namespace roxe {

struct RowKernels {
  const char* name;  // "plain", "avx2", "avx512", "neon"

  // ---- byte tables (byte_table.inl)

  // dst[i] = table[src[i]] for count bytes; table has 256 entries.
  void (*look_up)(const uint8_t* table, const uint8_t* src, uint8_t* dst, int32_t count);

  // The same for count pixels of three bytes, with one table for each byte of a pixel.
  void (*look_up_bgr)(const uint8_t* blue, const uint8_t* green, const uint8_t* red,
                      const uint8_t* src, uint8_t* dst, int32_t count);

  // ---- geometry

  // ---- blur

  // ---- colour

  // ---- tone
};

extern const RowKernels kPlainRows;
#if defined(__x86_64__)
extern const RowKernels kAvx2Rows;    // AVX2, FMA, BMI1 and BMI2
extern const RowKernels kAvx512Rows;  // besides those: AVX-512 F, BW, VL, DQ and VBMI
#elif defined(__aarch64__)
extern const RowKernels kNeonRows;
#endif

// The best table that this processor can run. Nothing is remembered between calls.
const RowKernels& Rows();

}  // namespace roxe

#endif  // ROXE_ROWS_ROWS_H_
