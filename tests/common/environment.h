// Environment variables for the tests. The variable is set in the process's
// own environment, where both the C runtime (getenv) and the library's OS
// layer read it. One implementation per OS family: environment_posix.cpp
// (setenv, unsetenv), environment_win32.cpp (_putenv_s, which also sets the
// Windows environment block).
#pragma once

#include <string>

namespace tovtest {

// Sets `name` to `value`; a null `value` removes the variable. On Windows an
// empty value also removes it (the system keeps no empty variables).
void SetEnv(const char* name, const char* value);

// Sets (or, with nullptr, removes) an environment variable for the object's
// lifetime, then puts back what was there.
class ScopedEnv {
 public:
  ScopedEnv(const char* name, const char* value);
  ~ScopedEnv();
  ScopedEnv(const ScopedEnv&) = delete;
  ScopedEnv& operator=(const ScopedEnv&) = delete;

 private:
  std::string mName;
  bool mHad = false;
  std::string mOld;
};

}  // namespace tovtest
