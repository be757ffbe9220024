// SSSE3 and SSE4.1: one block.
constexpr int32_t kBytes = 16;
#include "rows/simd/types.inl"
#include "rows/simd/vector_masks.inl"

#define ROXE_X86(name) _mm_##name
// Vectors and their halves as the intrinsics name them.
using I = __m128i;
using F = __m128;
using D = __m128d;
using HalfI = __m128i;
using HalfF = __m128;
static HalfI first_half(I v) { return v; }
static HalfI last_half(I v) { return _mm_unpackhi_epi64(v, v); }
static I joined(HalfI first, HalfI last) { return _mm_unpacklo_epi64(first, last); }

#include "rows/simd/one_block.inl"
#include "rows/simd/x86.inl"
#include "rows/simd/x86_vector_masks.inl"
#include "rows/simd/byte_shuffles.inl"
#include "rows/simd/loaded_bytes.inl"
constexpr bool kWideTables = false, kQuickTables = false, kPlainSimpleRows = false;
#include "rows/simd/planes.inl"
#include "rows/simd/loaded_floats.inl"
#include "rows/simd/mixes_exact.inl"
#include "rows/simd/block_stores.inl"
#include "rows/simd/lane_columns.inl"
#include "rows/simd/vocabulary.inl"
#undef ROXE_X86
