// OS layer: the vector instruction sets the text conversions may use.
//
// The text subsystem's Base64 and UTF conversions have vector paths for two
// instruction-set levels and a scalar path that is the reference for both:
//
//   switch (tovimpl::platform::TextSimdLevel()) {
//     case tovimpl::platform::SimdLevel::kAvx512: ...   // AVX-512 BW, VL and VBMI
//     case tovimpl::platform::SimdLevel::kAvx2: ...     // AVX2 (and SSSE3 below it)
//     case tovimpl::platform::SimdLevel::kScalar: ...
//   }
//
// The level is what the processor reports and the operating system has
// enabled (the compiler's processor-model query checks both the CPUID feature
// bits and the register state the OS saves), lowered to kScalar when the
// library is built with TOV_FORCE_SCALAR or when the environment variable
// TOV_FORCE_SCALAR is set to anything but "" or "0" when the level is first
// asked for. It is decided once per process; later changes of the environment
// are not seen. Portable code: GCC and clang answer the query the same way on
// every x86-64 target, Windows included; other processors get kScalar.
#pragma once

namespace tovimpl::platform {

enum class SimdLevel { kScalar = 0, kAvx2 = 1, kAvx512 = 2 };

// The level the text conversions use in this process. Thread-safe; the first
// call decides.
SimdLevel TextSimdLevel();

// The level the processor supports, ignoring the build switch and the
// environment (the tests use it to know which vector paths they can run).
SimdLevel ProcessorSimdLevel();

// "scalar", "avx2" or "avx512".
const char* SimdLevelName(SimdLevel level);

}  // namespace tovimpl::platform
