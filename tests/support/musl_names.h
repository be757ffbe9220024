// Names of glibc that g++'s headers mention, also where nothing uses them: included first of all.
#ifndef ROXE_TESTS_SUPPORT_MUSL_NAMES_H_
#define ROXE_TESTS_SUPPORT_MUSL_NAMES_H_

#include <pthread.h>

#define __GLIBC_PREREQ(major, minor) 0
#define __locale_t locale_t

enum {
  _ISupper = 1,
  _ISlower = 2,
  _ISalpha = 4,
  _ISdigit = 8,
  _ISxdigit = 16,
  _ISspace = 32,
  _ISprint = 64,
  _ISblank = 128,
  _IScntrl = 256,
  _ISpunct = 512
};

extern "C" int pthread_cond_clockwait(pthread_cond_t*, pthread_mutex_t*, clockid_t,
                                      const struct timespec*);

#endif  // ROXE_TESTS_SUPPORT_MUSL_NAMES_H_
