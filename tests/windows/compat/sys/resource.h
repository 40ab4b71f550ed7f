// Resource limits do not exist on Windows; the tests that set them are
// skipped there (tests/windows/skips.cmake).
#pragma once

#include <errno.h>

typedef unsigned long long rlim_t;
struct rlimit {
  rlim_t rlim_cur;
  rlim_t rlim_max;
};
#define RLIMIT_FSIZE 1
#ifndef SIGXFSZ
#define SIGXFSZ 25
#endif
#define RLIMIT_NOFILE 7
#define RLIM_INFINITY (~0ull)

inline int getrlimit(int, struct rlimit*) {
  errno = ENOSYS;
  return -1;
}
inline int setrlimit(int, const struct rlimit*) {
  errno = ENOSYS;
  return -1;
}
