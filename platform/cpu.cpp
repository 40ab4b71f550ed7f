// OS layer: vector instruction-set detection for the text conversions.
// Portable: the compiler's processor-model builtins do the CPUID and XGETBV
// work on every x86-64 target, so there is no backend file.
#include "platform/cpu.h"

#include <cstdlib>
#include <cstring>

namespace tovimpl::platform {

namespace {

SimdLevel DetectProcessor() {
#if defined(__x86_64__) && (defined(__GNUC__) || defined(__clang__))
  __builtin_cpu_init();
  if (__builtin_cpu_supports("avx512bw") && __builtin_cpu_supports("avx512vl") &&
      __builtin_cpu_supports("avx512vbmi")) {
    return SimdLevel::kAvx512;
  }
  if (__builtin_cpu_supports("avx2")) return SimdLevel::kAvx2;
#endif
  return SimdLevel::kScalar;
}

bool ScalarForced() {
#if defined(TOV_FORCE_SCALAR)
  return true;
#else
  // std::getenv rather than GetEnvVar: that one converts UTF-8 through basalt,
  // whose conversions ask for the level, and this runs inside their first call.
  const char* value = std::getenv("TOV_FORCE_SCALAR");
  return value != nullptr && value[0] != '\0' && std::strcmp(value, "0") != 0;
#endif
}

}  // namespace

SimdLevel ProcessorSimdLevel() {
  static const SimdLevel level = DetectProcessor();
  return level;
}

SimdLevel TextSimdLevel() {
  static const SimdLevel level = ScalarForced() ? SimdLevel::kScalar : ProcessorSimdLevel();
  return level;
}

const char* SimdLevelName(SimdLevel level) {
  switch (level) {
    case SimdLevel::kAvx512:
      return "avx512";
    case SimdLevel::kAvx2:
      return "avx2";
    case SimdLevel::kScalar:
      break;
  }
  return "scalar";
}

}  // namespace tovimpl::platform
