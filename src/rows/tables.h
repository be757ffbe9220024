// The one list of tables, best last: for the library's choice, the tests and the benchmarks.
#ifndef ROXE_ROWS_TABLES_H_
#define ROXE_ROWS_TABLES_H_

#include "rows/rows.h"

namespace roxe {

#if defined(__x86_64__)
extern const RowKernels kSse4Rows;    // SSSE3 and SSE4.1
extern const RowKernels kAvx2Rows;    // AVX2, FMA, BMI1 and BMI2
extern const RowKernels kAvx512Rows;  // besides those: AVX-512 F, BW, VL, DQ and VBMI
#elif defined(__aarch64__)
extern const RowKernels kNeonRows;
#elif defined(__wasm__)
extern const RowKernels kWasmRows;  // 128-bit vectors, nothing relaxed
#endif

struct RowTable {
  const RowKernels* rows;
  bool (*is_runnable)();  // by what the processor and the operating system can do
};

// The compiler's own run-time support answers (it knows before any code of the library runs):
// asking the processor each time would cost several microseconds a call on a virtual machine.
static constexpr RowTable kRowTables[] = {
    {&kPlainRows, [] { return true; }},
#if defined(__x86_64__)
    {&kSse4Rows,
     [] { return __builtin_cpu_supports("ssse3") && __builtin_cpu_supports("sse4.1"); }},
    {&kAvx2Rows,
     [] {
       return __builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma") &&
              __builtin_cpu_supports("bmi") && __builtin_cpu_supports("bmi2");
     }},
    {&kAvx512Rows,
     [] {
       return __builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma") &&
              __builtin_cpu_supports("bmi") && __builtin_cpu_supports("bmi2") &&
              __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw") &&
              __builtin_cpu_supports("avx512vl") && __builtin_cpu_supports("avx512dq") &&
              __builtin_cpu_supports("avx512vbmi");
     }},
#elif defined(__aarch64__)
    {&kNeonRows, [] { return true; }},
#elif defined(__wasm__)
    {&kWasmRows, [] { return true; }},
#endif
};

}  // namespace roxe

#endif  // ROXE_ROWS_TABLES_H_
