// The intrinsics of the processor that is compiled for.
#ifndef ROXE_ROWS_SIMD_INTRINSICS_H_
#define ROXE_ROWS_SIMD_INTRINSICS_H_

#if defined(__x86_64__)
#include <immintrin.h>
#elif defined(__aarch64__)
#include <arm_neon.h>
#elif defined(__wasm__)
#include <wasm_simd128.h>
#endif

#endif  // ROXE_ROWS_SIMD_INTRINSICS_H_
