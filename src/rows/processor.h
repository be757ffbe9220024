// What the processor and the operating system can run. The compiler's own run-time support answers
// (it knows before any code of the library runs): asking the processor each time would cost several
// microseconds a call on a virtual machine.
#ifndef ROXE_ROWS_PROCESSOR_H_
#define ROXE_ROWS_PROCESSOR_H_

namespace roxe {

#if defined(__x86_64__)
inline bool processor_has_avx2() {
  return __builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma") &&
         __builtin_cpu_supports("bmi") && __builtin_cpu_supports("bmi2");
}

inline bool processor_has_avx512() {
  return processor_has_avx2() && __builtin_cpu_supports("avx512f") &&
         __builtin_cpu_supports("avx512bw") && __builtin_cpu_supports("avx512vl") &&
         __builtin_cpu_supports("avx512dq") && __builtin_cpu_supports("avx512vbmi");
}
#endif

}  // namespace roxe

#endif  // ROXE_ROWS_PROCESSOR_H_
