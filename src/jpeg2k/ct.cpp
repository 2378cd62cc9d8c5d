// Component transforms: the reversible (RCT) and irreversible (ICT) colour
// transforms on three planes, in place or between interleaved and planar
// layouts. Every pixel is independent; integer forms wrap, nothing saturates.
#include <vqcj.h>

#include <cstddef>
#include <cstdint>

#include "frame/check.h"
#include "frame/wrap.h"

namespace vqcj {

namespace {

// Each transform maps three values to three, formed at 32 bits (or in
// single precision) from the inputs and stored at the sample width.
struct RctFwd {
    template <class V>
    static void run(V a, V b, V c, V& o0, V& o1, V& o2) {
        const int32_t r = a, g = b, bl = c;
        o0 = static_cast<V>(addW(addW(r, shlW(g, 1)), bl) >> 2);
        o1 = static_cast<V>(subW(bl, g));
        o2 = static_cast<V>(subW(r, g));
    }
};
struct RctInv {
    template <class V>
    static void run(V a, V b, V c, V& o0, V& o1, V& o2) {
        const int32_t y = a, u = b, v = c;
        const int32_t g = subW(y, addW(u, v) >> 2);
        o0 = static_cast<V>(addW(v, g));
        o1 = static_cast<V>(g);
        o2 = static_cast<V>(addW(u, g));
    }
};

// 14-bit fixed point rounded by 8192; the constants are the float ones
// scaled by 16384.
constexpr int32_t r14(int32_t v) { return addW(v, 8192) >> 14; }
constexpr int32_t dot3(int32_t a, int32_t x, int32_t b, int32_t y, int32_t c, int32_t z) {
    return addW(addW(mulW(a, x), mulW(b, y)), mulW(c, z));
}

struct IctFwd {
    template <class V>
    static void run(V a, V b, V c, V& o0, V& o1, V& o2) {
        const int32_t r = a, g = b, bl = c;
        o0 = static_cast<V>(r14(dot3(4899, r, 9617, g, 1868, bl)));
        o1 = static_cast<V>(r14(dot3(-2765, r, -5427, g, 8192, bl)));
        o2 = static_cast<V>(r14(dot3(8192, r, -6860, g, -1332, bl)));
    }
    static void run(float r, float g, float b, float& y, float& cb, float& cr) {
        y = 0.299f * r + 0.587f * g + 0.114f * b;
        cb = -0.16875f * r - 0.33126f * g + 0.5f * b;
        cr = 0.5f * r - 0.41869f * g - 0.08131f * b;
    }
};
struct IctInv {
    template <class V>
    static void run(V a, V b, V c, V& o0, V& o1, V& o2) {
        const int32_t y = a, cb = b, cr = c;
        o0 = static_cast<V>(addW(y, r14(mulW(22970, cr))));
        o1 = static_cast<V>(addW(y, r14(addW(mulW(-5638, cb), mulW(-11700, cr)))));
        o2 = static_cast<V>(addW(y, r14(mulW(29032, cb))));
    }
    static void run(float y, float cb, float cr, float& r, float& g, float& b) {
        r = y + 1.402f * cr;
        g = y - 0.34413f * cb - 0.71414f * cr;
        b = y + 1.772f * cb;
    }
};

template <class T>
T* rowOf(T* p, int32_t step, int k) {
    return reinterpret_cast<T*>(reinterpret_cast<char*>(p) + static_cast<ptrdiff_t>(step) * k);
}
template <class T>
const T* rowOf(const T* p, int32_t step, int k) {
    return reinterpret_cast<const T*>(reinterpret_cast<const char*>(p) + static_cast<ptrdiff_t>(step) * k);
}

// The three walkers. In place, the old values are read before any store.
template <class F, class T>
VqcStatus planesInPlace(T* const p[3], int32_t step, VqciSize roi) {
    if (VqcStatus st = Check().ptrs(p, 3).step(step).roi(roi)) return st;
    for (int k = 0; k < roi.height; ++k) {
        T *a = rowOf(p[0], step, k), *b = rowOf(p[1], step, k), *c = rowOf(p[2], step, k);
        for (int i = 0; i < roi.width; ++i) F::run(T(a[i]), T(b[i]), T(c[i]), a[i], b[i], c[i]);
    }
    return vqcStatusOk;
}

template <class F, class T>
VqcStatus toPlanes(const T* pSrc, int32_t srcStep, T* const pDst[3], int32_t dstStep, VqciSize roi) {
    if (VqcStatus st = Check().ptr(pSrc).ptrs(pDst, 3).step(srcStep).step(dstStep).roi(roi)) return st;
    for (int k = 0; k < roi.height; ++k) {
        const T* s = rowOf(pSrc, srcStep, k);
        T *a = rowOf(pDst[0], dstStep, k), *b = rowOf(pDst[1], dstStep, k), *c = rowOf(pDst[2], dstStep, k);
        for (int i = 0; i < roi.width; ++i) F::run(s[3 * i], s[3 * i + 1], s[3 * i + 2], a[i], b[i], c[i]);
    }
    return vqcStatusOk;
}

template <class F, class T>
VqcStatus fromPlanes(const T* const pSrc[3], int32_t srcStep, T* pDst, int32_t dstStep, VqciSize roi) {
    if (VqcStatus st = Check().ptrs(pSrc, 3).ptr(pDst).step(srcStep).step(dstStep).roi(roi)) return st;
    for (int k = 0; k < roi.height; ++k) {
        const T *a = rowOf(pSrc[0], srcStep, k), *b = rowOf(pSrc[1], srcStep, k), *c = rowOf(pSrc[2], srcStep, k);
        T* d = rowOf(pDst, dstStep, k);
        for (int i = 0; i < roi.width; ++i) F::run(a[i], b[i], c[i], d[3 * i], d[3 * i + 1], d[3 * i + 2]);
    }
    return vqcStatusOk;
}

}  // namespace

extern "C" {

VQCJ_API VqcStatus vqciRCTFwd_JPEG2K_16s_P3IR(Vqc16s* const pSrcDst[3], int32_t srcDstStep, VqciSize roiSize) {
    return planesInPlace<RctFwd>(pSrcDst, srcDstStep, roiSize);
}
VQCJ_API VqcStatus vqciRCTFwd_JPEG2K_32s_P3IR(Vqc32s* const pSrcDst[3], int32_t srcDstStep, VqciSize roiSize) {
    return planesInPlace<RctFwd>(pSrcDst, srcDstStep, roiSize);
}
VQCJ_API VqcStatus vqciRCTInv_JPEG2K_16s_P3IR(Vqc16s* const pSrcDst[3], int32_t srcDstStep, VqciSize roiSize) {
    return planesInPlace<RctInv>(pSrcDst, srcDstStep, roiSize);
}
VQCJ_API VqcStatus vqciRCTInv_JPEG2K_32s_P3IR(Vqc32s* const pSrcDst[3], int32_t srcDstStep, VqciSize roiSize) {
    return planesInPlace<RctInv>(pSrcDst, srcDstStep, roiSize);
}
VQCJ_API VqcStatus vqciICTFwd_JPEG2K_16s_P3IR(Vqc16s* const pSrcDst[3], int32_t srcDstStep, VqciSize roiSize) {
    return planesInPlace<IctFwd>(pSrcDst, srcDstStep, roiSize);
}
VQCJ_API VqcStatus vqciICTFwd_JPEG2K_32s_P3IR(Vqc32s* const pSrcDst[3], int32_t srcDstStep, VqciSize roiSize) {
    return planesInPlace<IctFwd>(pSrcDst, srcDstStep, roiSize);
}
VQCJ_API VqcStatus vqciICTFwd_JPEG2K_32f_P3IR(Vqc32f* const pSrcDst[3], int32_t srcDstStep, VqciSize roiSize) {
    return planesInPlace<IctFwd>(pSrcDst, srcDstStep, roiSize);
}
VQCJ_API VqcStatus vqciICTInv_JPEG2K_16s_P3IR(Vqc16s* const pSrcDst[3], int32_t srcDstStep, VqciSize roiSize) {
    return planesInPlace<IctInv>(pSrcDst, srcDstStep, roiSize);
}
VQCJ_API VqcStatus vqciICTInv_JPEG2K_32s_P3IR(Vqc32s* const pSrcDst[3], int32_t srcDstStep, VqciSize roiSize) {
    return planesInPlace<IctInv>(pSrcDst, srcDstStep, roiSize);
}
VQCJ_API VqcStatus vqciICTInv_JPEG2K_32f_P3IR(Vqc32f* const pSrcDst[3], int32_t srcDstStep, VqciSize roiSize) {
    return planesInPlace<IctInv>(pSrcDst, srcDstStep, roiSize);
}
VQCJ_API VqcStatus vqciRCTFwd_JPEG2K_16s_C3P3R(const Vqc16s* pSrc, int32_t srcStep, Vqc16s* const pDst[3],
                                               int32_t dstStep, VqciSize roiSize) {
    return toPlanes<RctFwd>(pSrc, srcStep, pDst, dstStep, roiSize);
}
VQCJ_API VqcStatus vqciRCTFwd_JPEG2K_32s_C3P3R(const Vqc32s* pSrc, int32_t srcStep, Vqc32s* const pDst[3],
                                               int32_t dstStep, VqciSize roiSize) {
    return toPlanes<RctFwd>(pSrc, srcStep, pDst, dstStep, roiSize);
}
VQCJ_API VqcStatus vqciICTFwd_JPEG2K_32f_C3P3R(const Vqc32f* pSrc, int32_t srcStep, Vqc32f* const pDst[3],
                                               int32_t dstStep, VqciSize roiSize) {
    return toPlanes<IctFwd>(pSrc, srcStep, pDst, dstStep, roiSize);
}
VQCJ_API VqcStatus vqciRCTInv_JPEG2K_16s_P3C3R(const Vqc16s* const pSrc[3], int32_t srcStep, Vqc16s* pDst,
                                               int32_t dstStep, VqciSize roiSize) {
    return fromPlanes<RctInv>(pSrc, srcStep, pDst, dstStep, roiSize);
}
VQCJ_API VqcStatus vqciRCTInv_JPEG2K_32s_P3C3R(const Vqc32s* const pSrc[3], int32_t srcStep, Vqc32s* pDst,
                                               int32_t dstStep, VqciSize roiSize) {
    return fromPlanes<RctInv>(pSrc, srcStep, pDst, dstStep, roiSize);
}
VQCJ_API VqcStatus vqciICTInv_JPEG2K_32f_P3C3R(const Vqc32f* const pSrc[3], int32_t srcStep, Vqc32f* pDst,
                                               int32_t dstStep, VqciSize roiSize) {
    return fromPlanes<IctInv>(pSrc, srcStep, pDst, dstStep, roiSize);
}

}  // extern "C"

}  // namespace vqcj
