// Run-time dispatch of the SIMD kernels.
//
// A kernel is written once over Highway vectors in a source file that
// includes itself once per instruction-set target through foreach_target.h.
// On the baseline target (plain x86-64) the kernel calls the plain C++
// routine, which GCC vectorises for SSE2 and which the tests use as the
// reference; on SSSE3, SSE4, AVX2 and AVX-512 the vector body runs. Every
// target computes the same bits: integer kernels by construction, float
// kernels by keeping the order of operations (no fused multiply-add).
//
// The pattern, as in levelshift.cpp:
//
//   #undef HWY_TARGET_INCLUDE
//   #define HWY_TARGET_INCLUDE "frame/levelshift.cpp"
//   #include <hwy/foreach_target.h>
//   #include <hwy/highway.h>
//   #include "frame/simd.h"
//   HWY_BEFORE_NAMESPACE();
//   namespace vqcj::HWY_NAMESPACE {
//   void Sub128Rows(...) {
//       if constexpr (VQCJ_SIMD_BASELINE) return ownSub128RowsPlain(...);
//       ... vector body ...
//   }
//   }
//   HWY_AFTER_NAMESPACE();
//   #if HWY_ONCE
//   namespace vqcj { HWY_EXPORT(Sub128Rows); }
//   ... VQCJ_DISPATCH(Sub128Rows)(...) ...
//   #endif
//
// Dispatch happens per run of rows or per block, never per pixel.
//
// VQCJ_SIMD in the environment (scalar, sse2, ssse3, sse4, avx2, avx512),
// read once at the first dispatch, caps the target for benchmarks and bug
// reports; sse2 and scalar both name the plain routine. Results never depend
// on it.
#pragma once

#include <hwy/targets.h>

#include <cstdint>

// True while compiling the baseline pass of a kernel source.
#define VQCJ_SIMD_BASELINE (HWY_TARGET == HWY_SCALAR || HWY_TARGET == HWY_EMU128)

namespace vqcj {

// Applies VQCJ_SIMD; returns true. Called through ownSimdReady only.
bool ownSimdApplyEnvironment();

inline void ownSimdReady() {
    static const bool ready = ownSimdApplyEnvironment();
    (void)ready;
}

}  // namespace vqcj

#define VQCJ_DISPATCH(fn) (::vqcj::ownSimdReady(), HWY_DYNAMIC_DISPATCH(fn))
