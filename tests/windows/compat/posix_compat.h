// The POSIX calls the unit tests use for their own scaffolding (temporary
// folders, environment variables, child processes, thread locales), written
// over the Windows C runtime so the same test sources build for Windows.
// Force-included into every test source of the Windows build; the library
// itself never sees this header.
//
// Deliberately absent: fork (a test that needs it is listed in
// tests/windows/skips.cmake), and <windows.h> (its A/W macros would rename
// the OS layer's functions in the tests).
#pragma once

#ifdef __cplusplus

#ifndef _FILE_OFFSET_BITS
#define _FILE_OFFSET_BITS 64  // 64-bit off_t, ftruncate and lseek, as on Linux
#endif
#ifndef _POSIX_THREAD_SAFE_FUNCTIONS
#define _POSIX_THREAD_SAFE_FUNCTIONS 200112L  // gmtime_r, localtime_r from <time.h>
#endif

#include <direct.h>
#include <fcntl.h>
#include <io.h>
#include <process.h>
#include <sys/stat.h>
#include <sys/types.h>
#include <sys/utime.h>

#include <atomic>
#include <cerrno>
#include <clocale>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <string>

#ifndef O_CLOEXEC
#define O_CLOEXEC _O_NOINHERIT
#endif
#ifndef AT_FDCWD
#define AT_FDCWD (-100)
#endif

// Files are bytes: open, fopen and the standard streams without an explicit
// mode translate no line ends, as on POSIX.
namespace {
[[maybe_unused]] const int kTovCompatBinaryFiles = (_fmode = _O_BINARY, 0);
}  // namespace

// Environment. The runtime cannot hold an empty value: setting "" removes
// the variable, as unsetenv does.
inline int setenv(const char* name, const char* value, int overwrite) {
  if (overwrite == 0 && std::getenv(name) != nullptr) return 0;
  return ::_putenv_s(name, value) == 0 ? 0 : -1;
}
inline int unsetenv(const char* name) { return ::_putenv_s(name, "") == 0 ? 0 : -1; }

// A fresh folder from a template ending in "XXXXXX".
inline char* mkdtemp(char* pattern) {
  static std::atomic<unsigned> counter{0};
  const std::size_t length = std::strlen(pattern);
  if (length < 6 || std::strcmp(pattern + length - 6, "XXXXXX") != 0) {
    errno = EINVAL;
    return nullptr;
  }
  static const char kLetters[] = "abcdefghijklmnopqrstuvwxyz0123456789";
  for (int attempt = 0; attempt < 1000; ++attempt) {
    unsigned value = static_cast<unsigned>(::_getpid()) * 2654435761u ^
                     static_cast<unsigned>(std::clock()) * 40503u ^ (counter++ * 977u);
    for (std::size_t i = length - 6; i < length; ++i) {
      pattern[i] = kLetters[value % 36];
      value = value / 36 + 7919u * static_cast<unsigned>(i);
    }
    if (::_mkdir(pattern) == 0) return pattern;
    if (errno != EEXIST) return nullptr;
  }
  return nullptr;
}

// Windows has no symbolic links the runtime can make or read.
inline int lstat(const char* path, struct stat* info) { return ::stat(path, info); }
inline int symlink(const char*, const char*) {
  errno = ENOSYS;
  return -1;
}
inline long readlink(const char*, char*, std::size_t) {
  errno = ENOSYS;
  return -1;
}
// Not an administrator's process: permission tests run, and those that cannot
// hold on Windows are listed in tests/windows/skips.cmake.
inline unsigned geteuid() { return 1000; }
inline unsigned getuid() { return 1000; }
inline unsigned getgid() { return 1000; }

// Positioned transfers: seek, then transfer (the descriptor's position moves).
inline long pwrite(int fd, const void* buffer, std::size_t count, long long offset) {
  if (::_lseeki64(fd, offset, SEEK_SET) < 0) return -1;
  return ::_write(fd, buffer, static_cast<unsigned>(count));
}
inline long pread(int fd, void* buffer, std::size_t count, long long offset) {
  if (::_lseeki64(fd, offset, SEEK_SET) < 0) return -1;
  return ::_read(fd, buffer, static_cast<unsigned>(count));
}

// Folders have no permission bits on Windows.
inline int mkdir(const char* path, int /*mode*/) { return ::_mkdir(path); }

// File times, to the second.
inline int utimensat(int, const char* path, const struct timespec times[2], int) {
  struct __utimbuf64 value {};
  value.actime = times[0].tv_sec;
  value.modtime = times[1].tv_sec;
  return ::_utime64(path, &value);
}

// Thread locales: a per-thread runtime locale, switched with setlocale on
// that thread only. A locale the runtime does not know (every "*.UTF-8"
// name with this runtime) is refused, as newlocale refuses it.
#define LC_CTYPE_MASK (1 << LC_CTYPE)
#define LC_NUMERIC_MASK (1 << LC_NUMERIC)
#define LC_TIME_MASK (1 << LC_TIME)
#define LC_COLLATE_MASK (1 << LC_COLLATE)
#define LC_MONETARY_MASK (1 << LC_MONETARY)
#define LC_ALL_MASK \
  (LC_CTYPE_MASK | LC_NUMERIC_MASK | LC_TIME_MASK | LC_COLLATE_MASK | LC_MONETARY_MASK)
struct tov_compat_locale {
  int mask;
  std::string name;
};
using locale_t = tov_compat_locale*;
#define LC_GLOBAL_LOCALE (reinterpret_cast<locale_t>(-1))

inline locale_t tov_compat_current_locale() {
  static thread_local tov_compat_locale current{LC_ALL_MASK, ""};
  return &current;
}

inline locale_t newlocale(int mask, const char* name, locale_t base) {
  if (name == nullptr) {
    errno = EINVAL;
    return nullptr;
  }
  // Probe the name on this thread, then put the thread's locale back.
  ::_configthreadlocale(_ENABLE_PER_THREAD_LOCALE);
  const char* before = std::setlocale(LC_ALL, nullptr);
  const std::string saved = before != nullptr ? before : "C";
  const bool known = std::setlocale(LC_ALL, name) != nullptr;
  std::setlocale(LC_ALL, saved.c_str());
  if (!known) {
    errno = ENOENT;
    return nullptr;
  }
  if (base != nullptr && base != LC_GLOBAL_LOCALE) delete base;
  return new tov_compat_locale{mask, name};
}

inline void freelocale(locale_t locale) {
  if (locale != nullptr && locale != LC_GLOBAL_LOCALE && locale != tov_compat_current_locale()) {
    delete locale;
  }
}

// Makes `locale` the calling thread's and answers the previous one (a copy
// the caller may hand back to uselocale; freelocale ignores it).
inline locale_t uselocale(locale_t locale) {
  ::_configthreadlocale(_ENABLE_PER_THREAD_LOCALE);
  locale_t current = tov_compat_current_locale();
  static thread_local tov_compat_locale previous;
  const char* now = std::setlocale(LC_ALL, nullptr);
  previous = tov_compat_locale{LC_ALL_MASK, now != nullptr ? now : "C"};
  if (locale == nullptr) return &previous;
  const std::string name = locale == LC_GLOBAL_LOCALE ? std::string("C") : locale->name;
  const int mask = locale == LC_GLOBAL_LOCALE ? LC_ALL_MASK : locale->mask;
  static const int kCategories[] = {LC_CTYPE, LC_NUMERIC, LC_TIME, LC_COLLATE, LC_MONETARY};
  for (int category : kCategories) {
    if ((mask & (1 << category)) != 0) std::setlocale(category, name.c_str());
  }
  *current = tov_compat_locale{mask, name};
  return &previous;
}

#endif  // __cplusplus
