// The state of the host's thread that computing depends on or disturbs: the floating-point
// environment and errno.
#ifndef ROXE_FRAME_DEFAULT_ENVIRONMENT_H_
#define ROXE_FRAME_DEFAULT_ENVIRONMENT_H_

#include <cerrno>

#if defined(__x86_64__)
#include <xmmintrin.h>
#else
#include <cfenv>
#endif

namespace roxe {

#if defined(__x86_64__)

// While one is alive, arithmetic rounds to nearest, keeps subnormal numbers and traps nothing.
// Everything computes in SSE registers: exchanging their control word takes 10 ns, what <cfenv>
// does for the x87 unit as well 200.
class DefaultArithmetic {
 public:
  DefaultArithmetic() : callers_(_mm_getcsr()) { _mm_setcsr(kDefault); }
  ~DefaultArithmetic() { _mm_setcsr(callers_); }
  DefaultArithmetic(const DefaultArithmetic&) = delete;
  DefaultArithmetic& operator=(const DefaultArithmetic&) = delete;

 private:
  static constexpr unsigned kDefault = 0x1f80;  // all exceptions masked, no flag raised
  const unsigned callers_;
};

#else

// The same for every other processor.
class DefaultArithmetic {
 public:
  DefaultArithmetic() {
    std::fegetenv(&callers_);
    std::fesetenv(FE_DFL_ENV);
  }
  ~DefaultArithmetic() { std::fesetenv(&callers_); }
  DefaultArithmetic(const DefaultArithmetic&) = delete;
  DefaultArithmetic& operator=(const DefaultArithmetic&) = delete;

 private:
  std::fenv_t callers_;
};

#endif

// Keeps errno, which memory and mathematics may set.
class KeptErrno {
 public:
  KeptErrno() : callers_(errno) {}
  ~KeptErrno() { errno = callers_; }
  KeptErrno(const KeptErrno&) = delete;
  KeptErrno& operator=(const KeptErrno&) = delete;

 private:
  const int callers_;
};

// A call of its own: compilers take the environment for constant and would otherwise be free to
// move arithmetic out of the lifetime of the guards.
template <class Work>
[[gnu::noinline]] auto called_apart(const Work& work) {
  return work();
}

// Gives the result of work(), which runs in the default environment and writes its results to
// memory. Rounding, masks, flags and errno of the host are afterwards what they were.
template <class Work>
auto in_default_environment(const Work& work) {
  const DefaultArithmetic arithmetic;
  const KeptErrno kept_errno;
  return called_apart(work);
}

}  // namespace roxe

#endif  // ROXE_FRAME_DEFAULT_ENVIRONMENT_H_
