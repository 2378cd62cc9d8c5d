// The reversible 4x4 block transform of JPEG XR, forward and inverse, in place.
//
// The lifting network is written once (pctlift.h) over an arithmetic policy.
// The plain routine loads one block into sixteen locals; every integer
// assignment passes through the element's wrap (32-bit wrap for 32s, cut to
// 16 bits for 16s), which is what the stored element would hold. The float
// form takes the same steps with the rounding offsets dropped and the shifts
// turned into multiplications. The SIMD targets run the same network on
// vectors that hold the same position of several blocks side by side,
// de-interleaved from the rows as they are loaded.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "jpegxr/pct.cpp"
#include <hwy/foreach_target.h>  // must come before highway.h
#include <hwy/highway.h>

#include <vqcj.h>

#include "frame/check.h"
#include "frame/simd.h"
#include "frame/wrap.h"

#include <cstddef>
#include <cstdint>

#ifndef VQCJ_PCT_ONCE
#define VQCJ_PCT_ONCE
namespace vqcj::jxr {
namespace {

// Integer lifting on 32-bit values; S is the stored element type, whose
// width each result is cut to.
template <class S>
struct IntOps {
    using V = int32_t;
    static V w(uint32_t x) { return static_cast<S>(x); }
    static V add(V a, V b) { return w(static_cast<uint32_t>(a) + static_cast<uint32_t>(b)); }
    static V sub(V a, V b) { return w(static_cast<uint32_t>(a) - static_cast<uint32_t>(b)); }
    static V neg(V a) { return w(0u - static_cast<uint32_t>(a)); }
    static V half(V a) { return a >> 1; }
    static V halfUp(V a) { return addW(a, 1) >> 1; }
    // (p - q + R) >> 1 formed in 32 bits.
    static V mid(V p, V q, int r) { return addW(subW(p, q), r) >> 1; }
    static V m3o4s3(V a) { return addW(mulW(a, 3), 4) >> 3; }
    static V m3o3s3(V a) { return addW(mulW(a, 3), 3) >> 3; }
    static V m3o3s2(V a) { return addW(mulW(a, 3), 3) >> 2; }
};

struct FloatOps {
    using V = float;
    static V add(V a, V b) { return a + b; }
    static V sub(V a, V b) { return a - b; }
    static V neg(V a) { return -a; }
    static V half(V a) { return a * 0.5f; }
    static V halfUp(V a) { return a * 0.5f; }
    static V mid(V p, V q, int) { return (p - q) * 0.5f; }
    static V m3o4s3(V a) { return a * 0.375f; }
    static V m3o3s3(V a) { return a * 0.375f; }
    static V m3o3s2(V a) { return a * 0.75f; }
};

#include "jpegxr/pctlift.h"

template <class E>
inline E* rowAt(E* p, ptrdiff_t step, int32_t y) {
    return reinterpret_cast<E*>(reinterpret_cast<char*>(p) + step * y);
}

template <class O, bool kFwd, class E>
inline void block4x4(E* p0, ptrdiff_t step) {
    using V = typename O::V;
    E* p1 = rowAt(p0, step, 1);
    E* p2 = rowAt(p0, step, 2);
    E* p3 = rowAt(p0, step, 3);
    V a0 = p0[0], a1 = p0[1], a2 = p0[2], a3 = p0[3];
    V b0 = p1[0], b1 = p1[1], b2 = p1[2], b3 = p1[3];
    V c0 = p2[0], c1 = p2[1], c2 = p2[2], c3 = p2[3];
    V d0 = p3[0], d1 = p3[1], d2 = p3[2], d3 = p3[3];
    pctNetwork<O, kFwd>(a0, a1, a2, a3, b0, b1, b2, b3, c0, c1, c2, c3, d0, d1, d2, d3);
    p0[0] = static_cast<E>(a0), p0[1] = static_cast<E>(a1), p0[2] = static_cast<E>(a2), p0[3] = static_cast<E>(a3);
    p1[0] = static_cast<E>(b0), p1[1] = static_cast<E>(b1), p1[2] = static_cast<E>(b2), p1[3] = static_cast<E>(b3);
    p2[0] = static_cast<E>(c0), p2[1] = static_cast<E>(c1), p2[2] = static_cast<E>(c2), p2[3] = static_cast<E>(c3);
    p3[0] = static_cast<E>(d0), p3[1] = static_cast<E>(d1), p3[2] = static_cast<E>(d2), p3[3] = static_cast<E>(d3);
}

// Stripes of four rows from the top, blocks of four columns from the left.
template <class O, bool kFwd, class E>
void blocks(E* p, int32_t step, int32_t width, int32_t height) {
    for (int32_t y = 0; y < height; y += 4) {
        E* row = rowAt(p, step, y);
        for (int32_t x = 0; x < width; x += 4) block4x4<O, kFwd>(row + x, step);
    }
}

}  // namespace

// The plain routines: the baseline target, the SIMD targets' tail blocks,
// and the tests' reference.
void ownPCTPlain(int32_t* p, int32_t step, int32_t width, int32_t height, bool fwd) {
    fwd ? blocks<IntOps<int32_t>, true>(p, step, width, height) : blocks<IntOps<int32_t>, false>(p, step, width, height);
}
void ownPCTPlain(int16_t* p, int32_t step, int32_t width, int32_t height, bool fwd) {
    fwd ? blocks<IntOps<int16_t>, true>(p, step, width, height) : blocks<IntOps<int16_t>, false>(p, step, width, height);
}
void ownPCTPlain(float* p, int32_t step, int32_t width, int32_t height, bool fwd) {
    fwd ? blocks<FloatOps, true>(p, step, width, height) : blocks<FloatOps, false>(p, step, width, height);
}

}  // namespace vqcj::jxr
#endif  // VQCJ_PCT_ONCE

HWY_BEFORE_NAMESPACE();
namespace vqcj::jxr::HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

#include "jpegxr/pctlift.h"

// 32-bit lanes wrap as the scalar 32s form does.
template <class D>
struct VOps32 {
    using V = hn::Vec<D>;
    static V add(V a, V b) { return hn::Add(a, b); }
    static V sub(V a, V b) { return hn::Sub(a, b); }
    static V neg(V a) { return hn::Neg(a); }
    static V half(V a) { return hn::ShiftRight<1>(a); }
    static V halfUp(V a) { return hn::ShiftRight<1>(hn::Add(a, hn::Set(D(), 1))); }
    static V mid(V p, V q, int r) { return hn::ShiftRight<1>(hn::Add(hn::Sub(p, q), hn::Set(D(), r))); }
    static V times3(V a) { return hn::Add(a, hn::Add(a, a)); }
    static V m3o4s3(V a) { return hn::ShiftRight<3>(hn::Add(times3(a), hn::Set(D(), 4))); }
    static V m3o3s3(V a) { return hn::ShiftRight<3>(hn::Add(times3(a), hn::Set(D(), 3))); }
    static V m3o3s2(V a) { return hn::ShiftRight<2>(hn::Add(times3(a), hn::Set(D(), 3))); }
};

// 16-bit lanes. Sums and differences wrap as the cut does; the terms that
// the scalar form widens to 32 bits are split so that no lane overflows:
// (a + 1) >> 1 is (a >> 1) + (a AND 1); (p - q + R) >> 1 is the difference
// of the halves with the carry of the low bits; (3a + c) >> s is
// 3 (a >> s) + ((3 (a AND m) + c) >> s), since 3a splits at multiples of 2^s.
template <class D>
struct VOps16 {
    using V = hn::Vec<D>;
    static V k(int v) { return hn::Set(D(), static_cast<int16_t>(v)); }
    static V add(V a, V b) { return hn::Add(a, b); }
    static V sub(V a, V b) { return hn::Sub(a, b); }
    static V neg(V a) { return hn::Neg(a); }
    static V half(V a) { return hn::ShiftRight<1>(a); }
    static V halfUp(V a) { return hn::Add(hn::ShiftRight<1>(a), hn::And(a, k(1))); }
    static V mid(V p, V q, int r) {
        const V base = hn::Sub(hn::ShiftRight<1>(p), hn::ShiftRight<1>(q));
        const V pb = hn::And(p, k(1)), qb = hn::And(q, k(1));
        return r ? hn::Add(base, hn::AndNot(qb, pb)) : hn::Sub(base, hn::AndNot(pb, qb));
    }
    static V times3(V a) { return hn::Add(a, hn::Add(a, a)); }
    template <int kShift>
    static V scaled(V a, int c) {
        const V lo = hn::And(a, k((1 << kShift) - 1));
        return hn::Add(times3(hn::ShiftRight<kShift>(a)), hn::ShiftRight<kShift>(hn::Add(times3(lo), k(c))));
    }
    static V m3o4s3(V a) { return scaled<3>(a, 4); }
    static V m3o3s3(V a) { return scaled<3>(a, 3); }
    static V m3o3s2(V a) { return scaled<2>(a, 3); }
};

template <class D>
struct VOpsF {
    using V = hn::Vec<D>;
    static V add(V a, V b) { return hn::Add(a, b); }
    static V sub(V a, V b) { return hn::Sub(a, b); }
    static V neg(V a) { return hn::Neg(a); }
    static V half(V a) { return hn::Mul(a, hn::Set(D(), 0.5f)); }
    static V halfUp(V a) { return half(a); }
    static V mid(V p, V q, int) { return half(hn::Sub(p, q)); }
    static V m3o4s3(V a) { return hn::Mul(a, hn::Set(D(), 0.375f)); }
    static V m3o3s3(V a) { return m3o4s3(a); }
    static V m3o3s2(V a) { return hn::Mul(a, hn::Set(D(), 0.75f)); }
};

template <class E, class D>
struct VOpsFor;
template <class D>
struct VOpsFor<int32_t, D> { using type = VOps32<D>; };
template <class D>
struct VOpsFor<int16_t, D> { using type = VOps16<D>; };
template <class D>
struct VOpsFor<float, D> { using type = VOpsF<D>; };

// Lanes(d) blocks side by side: each row de-interleaves into its four
// columns, so lane i of a0 is a0 of the i-th block.
template <bool kFwd, class D, class E>
HWY_INLINE void chunk(D d, E* r0, ptrdiff_t step) {
    using O = typename VOpsFor<E, D>::type;
    E* r1 = reinterpret_cast<E*>(reinterpret_cast<char*>(r0) + step);
    E* r2 = reinterpret_cast<E*>(reinterpret_cast<char*>(r1) + step);
    E* r3 = reinterpret_cast<E*>(reinterpret_cast<char*>(r2) + step);
    hn::Vec<D> a0, a1, a2, a3, b0, b1, b2, b3, c0, c1, c2, c3, d0, d1, d2, d3;
    hn::LoadInterleaved4(d, r0, a0, a1, a2, a3);
    hn::LoadInterleaved4(d, r1, b0, b1, b2, b3);
    hn::LoadInterleaved4(d, r2, c0, c1, c2, c3);
    hn::LoadInterleaved4(d, r3, d0, d1, d2, d3);
    pctNetwork<O, kFwd>(a0, a1, a2, a3, b0, b1, b2, b3, c0, c1, c2, c3, d0, d1, d2, d3);
    hn::StoreInterleaved4(a0, a1, a2, a3, d, r0);
    hn::StoreInterleaved4(b0, b1, b2, b3, d, r1);
    hn::StoreInterleaved4(c0, c1, c2, c3, d, r2);
    hn::StoreInterleaved4(d0, d1, d2, d3, d, r3);
}

// Full vectors of blocks, then vectors of four blocks (a 16-wide area), then
// the last one to three blocks of a stripe by the plain routine.
template <bool kFwd, class E>
HWY_INLINE void area(E* p, int32_t step, int32_t width, int32_t height) {
    if constexpr (VQCJ_SIMD_BASELINE) {
        ownPCTPlain(p, step, width, height, kFwd);
    } else {
        const hn::ScalableTag<E> d;
        const hn::CappedTag<E, 4> d4;
        const int32_t span = 4 * static_cast<int32_t>(hn::Lanes(d));
        const int32_t span4 = 4 * static_cast<int32_t>(hn::Lanes(d4));
        for (int32_t y = 0; y < height; y += 4) {
            E* row = reinterpret_cast<E*>(reinterpret_cast<char*>(p) + static_cast<ptrdiff_t>(step) * y);
            int32_t x = 0;
            for (; x + span <= width; x += span) chunk<kFwd>(d, row + x, step);
            for (; x + span4 <= width; x += span4) chunk<kFwd>(d4, row + x, step);
            if (x < width) ownPCTPlain(row + x, step, width - x, 4, kFwd);
        }
    }
}

void PCTFwd32s(int32_t* p, int32_t step, int32_t w, int32_t h) { area<true>(p, step, w, h); }
void PCTInv32s(int32_t* p, int32_t step, int32_t w, int32_t h) { area<false>(p, step, w, h); }
void PCTFwd16s(int16_t* p, int32_t step, int32_t w, int32_t h) { area<true>(p, step, w, h); }
void PCTInv16s(int16_t* p, int32_t step, int32_t w, int32_t h) { area<false>(p, step, w, h); }
void PCTFwd32f(float* p, int32_t step, int32_t w, int32_t h) { area<true>(p, step, w, h); }
void PCTInv32f(float* p, int32_t step, int32_t w, int32_t h) { area<false>(p, step, w, h); }

}  // namespace vqcj::jxr::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace vqcj::jxr {

HWY_EXPORT(PCTFwd32s);
HWY_EXPORT(PCTInv32s);
HWY_EXPORT(PCTFwd16s);
HWY_EXPORT(PCTInv16s);
HWY_EXPORT(PCTFwd32f);
HWY_EXPORT(PCTInv32f);

namespace {

template <bool kFwd>
void ownPCTArea(int32_t* p, int32_t step, int32_t w, int32_t h) {
    kFwd ? VQCJ_DISPATCH(PCTFwd32s)(p, step, w, h) : VQCJ_DISPATCH(PCTInv32s)(p, step, w, h);
}
template <bool kFwd>
void ownPCTArea(int16_t* p, int32_t step, int32_t w, int32_t h) {
    kFwd ? VQCJ_DISPATCH(PCTFwd16s)(p, step, w, h) : VQCJ_DISPATCH(PCTInv16s)(p, step, w, h);
}
template <bool kFwd>
void ownPCTArea(float* p, int32_t step, int32_t w, int32_t h) {
    kFwd ? VQCJ_DISPATCH(PCTFwd32f)(p, step, w, h) : VQCJ_DISPATCH(PCTInv32f)(p, step, w, h);
}

template <bool kFwd, int W, int H, class E>
VqcStatus fixedArea(E* pSrcDst, int32_t step) {
    if (VqcStatus st = Check().ptr(pSrcDst).fail(static_cast<uint32_t>(step) < W * sizeof(E), vqcStatusBadStep))
        return st;
    ownPCTArea<kFwd>(pSrcDst, step, W, H);
    return vqcStatusOk;
}

// The size is tested on both sides of the step test; the order is kept.
template <bool kFwd, class E>
VqcStatus region(E* pSrcDst, int32_t step, VqciSize roi) {
    if (VqcStatus st = Check()
                           .ptr(pSrcDst)
                           .roi(roi)
                           .fail(static_cast<uint32_t>(step) < static_cast<uint32_t>(roi.width) * sizeof(E),
                                 vqcStatusBadStep)
                           .fail((roi.width & 3) != 0 || (roi.height & 3) != 0, vqcStatusBadSize))
        return st;
    ownPCTArea<kFwd>(pSrcDst, step, roi.width, roi.height);
    return vqcStatusOk;
}

}  // namespace
}  // namespace vqcj::jxr

using vqcj::jxr::fixedArea;
using vqcj::jxr::region;

#define VQCJ_PCT_FIXED(dir, fwd, w, h, std, t, E)                                                   \
    extern "C" VQCJ_API VqcStatus vqciPCT##dir##w##x##h##_##std##_##t##_C1IR(E* p, int32_t step) { \
        return fixedArea<fwd, w, h>(p, step);                                                      \
    }
#define VQCJ_PCT_REGION(dir, fwd, std, t, E)                                                              \
    extern "C" VQCJ_API VqcStatus vqciPCT##dir##_##std##_##t##_C1IR(E* p, int32_t step, VqciSize roi) { \
        return region<fwd>(p, step, roi);                                                                \
    }
#define VQCJ_PCT_ALL(dir, fwd, std, t, E)      \
    VQCJ_PCT_FIXED(dir, fwd, 16, 16, std, t, E) \
    VQCJ_PCT_FIXED(dir, fwd, 8, 16, std, t, E)  \
    VQCJ_PCT_FIXED(dir, fwd, 8, 8, std, t, E)   \
    VQCJ_PCT_REGION(dir, fwd, std, t, E)

// HDP and JPEGXR 32s are one function under two names.
VQCJ_PCT_ALL(Fwd, true, HDP, 32s, Vqc32s)
VQCJ_PCT_ALL(Fwd, true, JPEGXR, 32s, Vqc32s)
VQCJ_PCT_ALL(Fwd, true, JPEGXR, 16s, Vqc16s)
VQCJ_PCT_ALL(Fwd, true, JPEGXR, 32f, Vqc32f)
VQCJ_PCT_ALL(Inv, false, HDP, 32s, Vqc32s)
VQCJ_PCT_ALL(Inv, false, JPEGXR, 32s, Vqc32s)
VQCJ_PCT_ALL(Inv, false, JPEGXR, 16s, Vqc16s)
VQCJ_PCT_ALL(Inv, false, JPEGXR, 32f, Vqc32f)
#endif  // HWY_ONCE
