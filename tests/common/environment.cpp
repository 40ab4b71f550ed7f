#include "common/environment.h"

#include <cstdlib>

namespace tovtest {

ScopedEnv::ScopedEnv(const char* name, const char* value) : mName(name) {
  if (const char* old = std::getenv(name)) {
    mHad = true;
    mOld = old;
  }
  SetEnv(name, value);
}

ScopedEnv::~ScopedEnv() { SetEnv(mName.c_str(), mHad ? mOld.c_str() : nullptr); }

}  // namespace tovtest
