// Internal: picks one of a unit's kernel sets (scalar, AVX2, AVX-512) for the
// level the text conversions run at; shared by the UTF and base64 units.
#pragma once

#include "platform/cpu.h"

namespace basalt {

// The set for `level`: `avx512` at kAvx512, `avx2` at kAvx2, `scalar`
// otherwise. The sets are the caller's (static storage); the reference stays
// valid as long as they do.
template <typename Kernels>
constexpr const Kernels& ChooseKernels(tovimpl::platform::SimdLevel level, const Kernels& scalar,
                                       const Kernels& avx2, const Kernels& avx512) {
  switch (level) {
    case tovimpl::platform::SimdLevel::kAvx512:
      return avx512;
    case tovimpl::platform::SimdLevel::kAvx2:
      return avx2;
    case tovimpl::platform::SimdLevel::kScalar:
      break;
  }
  return scalar;
}

}  // namespace basalt
