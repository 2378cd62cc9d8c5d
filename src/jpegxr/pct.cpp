// The reversible 4x4 block transform of JPEG XR, forward and inverse, in place.
//
// One block is loaded into sixteen locals, transformed and stored, so the
// compiler keeps the whole lifting network in registers. The integer forms
// share one template: every assignment passes through the element's wrap
// (32-bit wrap for 32s, cut to 16 bits for 16s), which is what the stored
// element would hold. The float form takes the same steps with the rounding
// offsets dropped and the shifts turned into multiplications.
#include <vqcj.h>

#include "frame/check.h"
#include "frame/wrap.h"

#include <cstddef>
#include <cstdint>

namespace vqcj {
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

template <class O, class V = typename O::V>
inline void butterfly(V& p, V& q, V& r, V& s, int R) {
    p = O::add(p, s);
    q = O::sub(q, r);
    const V t = O::mid(p, q, R);
    const V u = r;
    r = O::sub(t, s);
    s = O::sub(t, u);
    p = O::sub(p, s);
    q = O::add(q, r);
}

template <class O, class V = typename O::V>
inline void oddFwd(V& p, V& q, V& r, V& s) {
    p = O::sub(p, r);
    q = O::add(q, s);
    r = O::add(r, O::halfUp(p));
    s = O::sub(O::halfUp(q), s);
    p = O::sub(p, O::m3o4s3(q));
    q = O::add(q, O::m3o4s3(p));
    s = O::sub(s, O::m3o4s3(r));
    r = O::add(r, O::m3o4s3(s));
    s = O::add(s, O::half(p));
    r = O::sub(r, O::halfUp(q));
    p = O::sub(p, s);
    q = O::add(q, r);
}

template <class O, class V = typename O::V>
inline void oddInv(V& p, V& q, V& r, V& s) {
    q = O::sub(q, r);
    p = O::add(p, s);
    s = O::sub(s, O::half(p));
    r = O::add(r, O::halfUp(q));
    q = O::sub(q, O::m3o4s3(p));
    p = O::add(p, O::m3o4s3(q));
    r = O::sub(r, O::m3o4s3(s));
    s = O::add(s, O::m3o4s3(r));
    r = O::sub(r, O::halfUp(p));
    s = O::sub(O::halfUp(q), s);
    p = O::add(p, r);
    q = O::sub(q, s);
}

// The rounding offsets of the two rotations below differ line by line on
// purpose: they are what makes the pair exactly reversible.
template <class O, class V = typename O::V>
inline void oddOddFwd(V& p, V& q, V& r, V& s) {
    q = O::neg(q);
    r = O::neg(r);
    s = O::add(s, p);
    r = O::sub(r, q);
    const V t = O::half(s);
    p = O::sub(p, t);
    const V u = O::half(r);
    q = O::add(q, u);
    p = O::add(p, O::m3o4s3(q));
    q = O::sub(q, O::m3o3s2(p));
    p = O::add(p, O::m3o3s3(q));
    q = O::sub(q, u);
    p = O::add(p, t);
    r = O::add(r, q);
    s = O::sub(s, p);
}

template <class O, class V = typename O::V>
inline void oddOddInv(V& p, V& q, V& r, V& s) {
    s = O::add(s, p);
    r = O::sub(r, q);
    const V t = O::half(s);
    p = O::sub(p, t);
    const V u = O::half(r);
    q = O::add(q, u);
    p = O::sub(p, O::m3o3s3(q));
    q = O::add(q, O::m3o3s2(p));
    p = O::sub(p, O::m3o4s3(q));
    q = O::sub(q, u);
    p = O::add(p, t);
    r = O::add(r, q);
    s = O::sub(s, p);
    q = O::neg(q);
    r = O::neg(r);
}

template <class O, bool kFwd, class E>
inline void block4x4(E* p0, size_t step) {
    using V = typename O::V;
    E* p1 = reinterpret_cast<E*>(reinterpret_cast<char*>(p0) + step);
    E* p2 = reinterpret_cast<E*>(reinterpret_cast<char*>(p1) + step);
    E* p3 = reinterpret_cast<E*>(reinterpret_cast<char*>(p2) + step);
    V a0 = p0[0], a1 = p0[1], a2 = p0[2], a3 = p0[3];
    V b0 = p1[0], b1 = p1[1], b2 = p1[2], b3 = p1[3];
    V c0 = p2[0], c1 = p2[1], c2 = p2[2], c3 = p2[3];
    V d0 = p3[0], d1 = p3[1], d2 = p3[2], d3 = p3[3];
    if constexpr (kFwd) {
        butterfly<O>(a0, a3, d0, d3, 0);
        butterfly<O>(a1, a2, d1, d2, 0);
        butterfly<O>(b0, b3, c0, c3, 0);
        butterfly<O>(b1, b2, c1, c2, 0);
        butterfly<O>(a0, a1, b0, b1, 1);
        oddFwd<O>(a3, a2, b2, b3);
        oddFwd<O>(d0, c0, c1, d1);
        oddOddFwd<O>(c2, c3, d2, d3);
    } else {
        oddInv<O>(a3, a2, b2, b3);
        oddInv<O>(d0, c0, c1, d1);
        oddOddInv<O>(c2, c3, d2, d3);
        butterfly<O>(a0, a1, b0, b1, 1);
        butterfly<O>(a0, a3, d0, d3, 0);
        butterfly<O>(a1, a2, d1, d2, 0);
        butterfly<O>(b0, b3, c0, c3, 0);
        butterfly<O>(b1, b2, c1, c2, 0);
    }
    p0[0] = static_cast<E>(a0), p0[1] = static_cast<E>(a1), p0[2] = static_cast<E>(a2), p0[3] = static_cast<E>(a3);
    p1[0] = static_cast<E>(b0), p1[1] = static_cast<E>(b1), p1[2] = static_cast<E>(b2), p1[3] = static_cast<E>(b3);
    p2[0] = static_cast<E>(c0), p2[1] = static_cast<E>(c1), p2[2] = static_cast<E>(c2), p2[3] = static_cast<E>(c3);
    p3[0] = static_cast<E>(d0), p3[1] = static_cast<E>(d1), p3[2] = static_cast<E>(d2), p3[3] = static_cast<E>(d3);
}

template <class E>
struct OpsFor;
template <>
struct OpsFor<int16_t> { using type = IntOps<int16_t>; };
template <>
struct OpsFor<int32_t> { using type = IntOps<int32_t>; };
template <>
struct OpsFor<float> { using type = FloatOps; };

// Stripes of four rows from the top, blocks of four columns from the left.
template <bool kFwd, class E>
void ownPCTArea(E* pSrcDst, int32_t step, int32_t width, int32_t height) {
    using O = typename OpsFor<E>::type;
    char* row = reinterpret_cast<char*>(pSrcDst);
    const ptrdiff_t stripe = static_cast<ptrdiff_t>(step) * 4;
    for (int32_t y = 0; y < height; y += 4, row += stripe) {
        E* p = reinterpret_cast<E*>(row);
        for (int32_t x = 0; x < width; x += 4) block4x4<O, kFwd>(p + x, static_cast<size_t>(static_cast<ptrdiff_t>(step)));
    }
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
}  // namespace vqcj

using vqcj::fixedArea;
using vqcj::region;

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
