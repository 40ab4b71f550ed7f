// OS layer: compiling single functions for a processor level (x86-64).
//
// A kernel marked TOV_TARGET_AVX2 or TOV_TARGET_AVX512 is compiled for those
// instruction sets while the rest of its file keeps the library's ordinary
// flags, so nothing built for them can run unless the dispatch chose their
// level (platform/cpu.h). Include this header first, then <immintrin.h>, only
// in the files that hold such kernels, and only under __x86_64__.
#pragma once

#if defined(__x86_64__)

// GCC 12's AVX-512 intrinsics start from deliberately undefined vectors, which
// its -Wmaybe-uninitialized reports once they are inlined into a kernel. The
// pragma holds for the rest of the including file.
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#endif

#define TOV_TARGET_AVX2 __attribute__((target("avx2,bmi,bmi2,popcnt")))
#define TOV_TARGET_AVX512 \
  __attribute__((target("avx512f,avx512bw,avx512vl,avx512vbmi,avx2,bmi,bmi2,popcnt")))

#endif  // __x86_64__
