// waitpid for children started with posix_spawn (spawn.h): the runtime's
// _cwait on the process handle. The status packs the exit code as POSIX does.
#pragma once

#include <errno.h>
#include <process.h>
#include <sys/types.h>

#define WIFEXITED(status) (((status)&0x7f) == 0)
#define WEXITSTATUS(status) (((status) >> 8) & 0xff)
#define WIFSIGNALED(status) 0
#define WTERMSIG(status) 0
#define WNOHANG 1
#ifndef SIGKILL
#define SIGKILL 9
#endif

inline pid_t waitpid(pid_t child, int* status, int /*options*/) {
  int code = 0;
  if (::_cwait(&code, static_cast<intptr_t>(child), 0) == -1) return -1;
  if (status != nullptr) *status = (code & 0xff) << 8;
  return child;
}

// No fork on Windows; the tests that need it are skipped there.
inline pid_t fork() {
  errno = ENOSYS;
  return -1;
}
inline int kill(pid_t, int) {
  errno = ENOSYS;
  return -1;
}
