// RGB and BGR to YCbCr or Y: the table forms (row-parallel, except the packed
// forms), the four-channel forms and the fused 422/411 forms (serial). One
// kernel source compiled for every SIMD target.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "jpeg/colour/colour_fwd.cpp"
#include <hwy/foreach_target.h>  // must come before highway.h
#include <hwy/highway.h>

#include "colour.h"
#include "frame/check.h"
#include "frame/simd.h"
#include "frame/simdops.h"

HWY_BEFORE_NAMESPACE();
namespace vqcj::HWY_NAMESPACE {
namespace {

// ownMid8 on 16-bit lanes: the same split sums, the same wrap.
template <uint32_t WA, uint32_t WB, uint32_t WC, uint32_t K>
V16 mid8(V16 a, V16 b, V16 c) {
    const V16 hi = AddTimes<(WC >> 8)>(AddTimes<(WB >> 8)>(AddTimes<(WA >> 8)>(hn::Set(D16(), K >> 8), a), b), c);
    const V16 lo = AddTimes<(WC & 255)>(AddTimes<(WB & 255)>(AddTimes<(WA & 255)>(hn::Set(D16(), K & 255), a), b), c);
    return hn::ShiftRight<8>(hn::Add(hi, hn::ShiftRight<8>(lo)));
}

template <class Arith>
V16 lumaOf(V16 r, V16 g, V16 b) {
    return mid8<kWeightYR, kWeightYG, kWeightYB, Arith::kYRound>(r, g, b);
}
template <class Arith>
void chromaOf(V16 r, V16 g, V16 b, V16& cb, V16& cr) {
    const V16 k255 = hn::Set(D16(), 255), ng = hn::Sub(k255, g);
    cb = mid8<kWeightChroma, kWeightCbG, kWeightCbR, Arith::kChroma>(b, ng, hn::Sub(k255, r));
    cr = mid8<kWeightChroma, kWeightCrG, kWeightCrB, Arith::kChroma>(r, ng, hn::Sub(k255, b));
}

// Lanes(DF8) pixels from column x of a source layout: R, G, B widened, as
// two halves, K as bytes. kStride: elements a pixel in each plane, for the
// plain tail. Templates, so that the baseline pass never instantiates them.
template <class Src>
struct VecSrc;

template <int Bpp, int RI, int GI, int BI, bool Ink>
struct VecSrc<SrcPix<Bpp, RI, GI, BI, Ink>> {
    static constexpr int kStride = Bpp;
    template <class D = DF8>
    static void load(const Vqc8u* const* row, int32_t x, V16 (&r)[2], V16 (&g)[2], V16 (&b)[2], VF8& k) {
        const D d8;
        VF8 v[4];
        if constexpr (Bpp == 3) hn::LoadInterleaved3(d8, row[0] + 3 * static_cast<ptrdiff_t>(x), v[0], v[1], v[2]);
        else hn::LoadInterleaved4(d8, row[0] + 4 * static_cast<ptrdiff_t>(x), v[0], v[1], v[2], v[3]);
        if constexpr (Ink) {
            for (int c = 0; c < 3; ++c) v[c] = hn::Not(v[c]);
            k = v[3];
        }
        WidenHalves(v[RI], r), WidenHalves(v[GI], g), WidenHalves(v[BI], b);
    }
};

template <bool Ink>
struct VecSrc<SrcPlanes<Ink>> {
    static constexpr int kStride = 1;
    template <class D = DF8>
    static void load(const Vqc8u* const* row, int32_t x, V16 (&r)[2], V16 (&g)[2], V16 (&b)[2], VF8& k) {
        const D d8;
        VF8 v[3];
        for (int c = 0; c < 3; ++c) {
            v[c] = hn::LoadU(d8, row[c] + x);
            if constexpr (Ink) v[c] = hn::Not(v[c]);
        }
        if constexpr (Ink) k = hn::LoadU(d8, row[3] + x);
        WidenHalves(v[0], r), WidenHalves(v[1], g), WidenHalves(v[2], b);
    }
};

template <bool Is565, bool RedHigh>
struct VecSrc<SrcPacked<Is565, RedHigh>> {
    static constexpr int kStride = 1;
    template <class D = D16>
    static void load(const Vqc16u* const* row, int32_t x, V16 (&r)[2], V16 (&g)[2], V16 (&b)[2], VF8&) {
        const D d;
        const V16 k31 = hn::Set(d, 31);
        for (int h = 0; h < 2; ++h) {
            const V16 w = hn::LoadU(d, row[0] + x + h * static_cast<int32_t>(hn::Lanes(d)));
            const V16 hi = hn::ShiftLeft<3>(hn::And(hn::ShiftRight<Is565 ? 11 : 10>(w), k31));
            const V16 lo = hn::ShiftLeft<3>(hn::And(w, k31));
            if constexpr (Is565) g[h] = hn::ShiftLeft<2>(hn::And(hn::ShiftRight<5>(w), hn::Set(d, 63)));
            else g[h] = hn::ShiftLeft<3>(hn::And(hn::ShiftRight<5>(w), k31));
            r[h] = RedHigh ? hi : lo;
            b[h] = RedHigh ? lo : hi;
        }
    }
};

// Row pointers moved on by x pixels.
template <int Stride, class T, int N>
RowPtrs<T, N> advance(RowPtrs<T, N> rows, int32_t x) {
    for (int k = 0; k < N; ++k) rows.p[k] += Stride * static_cast<ptrdiff_t>(x);
    return rows;
}

template <FwdForm F>
void fwdRow(RowPtrs<typename Fwd<F>::Src::Elem, Fwd<F>::Src::kPlanes> s, RowPtrs<Vqc8u, Fwd<F>::kOut> d,
            int32_t width) {
    using Src = typename Fwd<F>::Src;
    using Arith = typename Fwd<F>::Arith;
    constexpr int NOut = Fwd<F>::kOut;
    const DF8 d8;
    const int32_t n = static_cast<int32_t>(hn::Lanes(d8));
    int32_t x = 0;
    for (; x + n <= width; x += n) {
        V16 r[2], g[2], b[2], y[2], cb[2], cr[2];
        VF8 k;
        VecSrc<Src>::load(s.p, x, r, g, b, k);
        for (int h = 0; h < 2; ++h) {
            y[h] = lumaOf<Arith>(r[h], g[h], b[h]);
            if constexpr (NOut > 1) chromaOf<Arith>(r[h], g[h], b[h], cb[h], cr[h]);
        }
        hn::StoreU(NarrowHalves(y[0], y[1]), d8, d.p[0] + x);
        if constexpr (NOut > 1) {
            hn::StoreU(NarrowHalves(cb[0], cb[1]), d8, d.p[1] + x);
            hn::StoreU(NarrowHalves(cr[0], cr[1]), d8, d.p[2] + x);
        }
        if constexpr (NOut == 4) hn::StoreU(k, d8, d.p[3] + x);
    }
    if (x < width)
        ownFwdRow<Src, Arith, NOut>(advance<VecSrc<Src>::kStride>(s, x).p, advance<1>(d, x).p, width - x);
}

template <FwdForm F>
void fwdRows(const RowJob& j, int32_t first, int32_t last) {
    using Src = typename Fwd<F>::Src;
    for (int32_t r = first; r < last; ++r) {
        const auto s = ownSrcRows<typename Src::Elem, Src::kPlanes>(j, r);
        const auto d = ownDstRows<Vqc8u, Fwd<F>::kOut>(j, r);
        if constexpr (VQCJ_SIMD_BASELINE) ownFwdRow<Src, typename Fwd<F>::Arith, Fwd<F>::kOut>(s.p, d.p, j.width);
        else fwdRow<F>(s, d, j.width);
    }
}

// Fused rows: Y of every pixel through the table arithmetic; chroma from
// the sums of each 2 by V group, on 32-bit lanes with wrap.
template <FusedForm F>
void fusedRow(const Vqc8u* const* srow, Vqc8u* const* yrow, Vqc8u* cb, Vqc8u* cr, int32_t width) {
    using Src = typename Fused<F>::Src;
    constexpr int V = Fused<F>::kV;
    using Chroma = FusedChroma<V == 1 ? 17 : 18, Fused<F>::kK>;
    const DF8 d8;
    const hn::Repartition<uint32_t, D16> d32;
    const hn::Rebind<uint8_t, decltype(d32)> d32to8;
    const int32_t n = static_cast<int32_t>(hn::Lanes(d8)), quarter = n / 4;
    using V32 = hn::Vec<decltype(d32)>;
    // Adjacent 16-bit lanes summed into one 32-bit lane.
    const auto pairs = [&](V16 v) {
        const V32 w = hn::BitCast(d32, v);
        return hn::Add(hn::And(w, hn::Set(d32, 0xFFFF)), hn::ShiftRight<16>(w));
    };
    const auto store = [&](V32 v, Vqc8u* p) {
        const V32 bits = hn::And(hn::ShiftRight<Chroma::kShift>(v), hn::Set(d32, 255));
        hn::StoreU(hn::DemoteTo(d32to8, hn::BitCast(hn::RebindToSigned<decltype(d32)>(), bits)), d32to8, p);
    };
    const V32 kb = hn::Set(d32, kWeightChroma), kk = hn::Set(d32, Chroma::kK);
    int32_t x = 0;
    for (; x + n <= width; x += n) {
        V32 rs[2], gs[2], bs[2];
        for (int h = 0; h < 2; ++h) rs[h] = gs[h] = bs[h] = hn::Zero(d32);
        for (int v = 0; v < V; ++v) {
            V16 r[2], g[2], b[2];
            VF8 k;
            VecSrc<Src>::load(&srow[v], x, r, g, b, k);
            hn::StoreU(NarrowHalves(lumaOf<FwdTable>(r[0], g[0], b[0]), lumaOf<FwdTable>(r[1], g[1], b[1])), d8,
                       yrow[v] + x);
            for (int h = 0; h < 2; ++h)
                rs[h] = hn::Add(rs[h], pairs(r[h])), gs[h] = hn::Add(gs[h], pairs(g[h])),
                bs[h] = hn::Add(bs[h], pairs(b[h]));
        }
        for (int h = 0; h < 2; ++h) {
            const V32 vcb = hn::Sub(hn::Sub(hn::Sub(hn::Mul(bs[h], kb), hn::Mul(gs[h], hn::Set(d32, kWeightCbG))),
                                            hn::Mul(rs[h], hn::Set(d32, kWeightCbR))),
                                    kk);
            const V32 vcr = hn::Sub(hn::Sub(hn::Sub(hn::Mul(rs[h], kb), hn::Mul(gs[h], hn::Set(d32, kWeightCrG))),
                                            hn::Mul(bs[h], hn::Set(d32, kWeightCrB))),
                                    kk);
            store(vcb, cb + x / 2 + h * quarter);
            store(vcr, cr + x / 2 + h * quarter);
        }
    }
    if (x < width) {
        const Vqc8u* s[V];
        Vqc8u* y[V];
        for (int v = 0; v < V; ++v) s[v] = srow[v] + VecSrc<Src>::kStride * static_cast<ptrdiff_t>(x), y[v] = yrow[v] + x;
        ownFwdFusedRow<Src, V, Fused<F>::kK>(s, y, cb + x / 2, cr + x / 2, width - x);
    }
}

template <FusedForm F>
void fusedRows(const RowJob& j, int32_t first, int32_t last) {
    constexpr int V = Fused<F>::kV;
    for (int32_t i = first; i < last; ++i) {
        const Vqc8u* srow[V];
        Vqc8u* yrow[V];
        for (int v = 0; v < V; ++v) {
            srow[v] = rowAt(static_cast<const Vqc8u*>(j.src[0]), j.srcStep[0], V * i + v);
            yrow[v] = rowAt(static_cast<Vqc8u*>(j.dst[0]), j.dstStep[0], V * i + v);
        }
        Vqc8u* cb = rowAt(static_cast<Vqc8u*>(j.dst[1]), j.dstStep[1], i);
        Vqc8u* cr = rowAt(static_cast<Vqc8u*>(j.dst[2]), j.dstStep[2], i);
        if constexpr (VQCJ_SIMD_BASELINE) ownFwdFusedRow<typename Fused<F>::Src, V, Fused<F>::kK>(srow, yrow, cb, cr, j.width);
        else fusedRow<F>(srow, yrow, cb, cr, j.width);
    }
}

}  // namespace

void FwdRows(FwdForm form, const RowJob& j, int32_t first, int32_t last) {
    switch (form) {
#define VQCJ_FORM(f) \
    case FwdForm::f: return fwdRows<FwdForm::f>(j, first, last);
        VQCJ_FORM(Rgb3) VQCJ_FORM(Bgr3) VQCJ_FORM(Rgb4) VQCJ_FORM(Bgr4) VQCJ_FORM(Planes)
        VQCJ_FORM(Bgr555) VQCJ_FORM(Bgr565) VQCJ_FORM(Rgb555) VQCJ_FORM(Rgb565)
        VQCJ_FORM(Rgb3Luma) VQCJ_FORM(Bgr3Luma) VQCJ_FORM(PlanesLuma) VQCJ_FORM(CmykPix) VQCJ_FORM(CmykPlanes)
#undef VQCJ_FORM
    }
}

void FusedRows(FusedForm form, const RowJob& j, int32_t first, int32_t last) {
    switch (form) {
#define VQCJ_FORM(f) \
    case FusedForm::f: return fusedRows<FusedForm::f>(j, first, last);
        VQCJ_FORM(Rgb3V1) VQCJ_FORM(Bgr3V1) VQCJ_FORM(Rgb4V1) VQCJ_FORM(Bgr4V1)
        VQCJ_FORM(Rgb3V2) VQCJ_FORM(Bgr3V2) VQCJ_FORM(Rgb4V2) VQCJ_FORM(Bgr4V2)
#undef VQCJ_FORM
    }
}

}  // namespace vqcj::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace vqcj {

HWY_EXPORT(FwdRows);
HWY_EXPORT(FusedRows);

void ownFwdRows(FwdForm form, const RowJob& job, int32_t first, int32_t last) {
    VQCJ_DISPATCH(FwdRows)(form, job, first, last);
}
void ownFusedRows(FusedForm form, const RowJob& job, int32_t first, int32_t last) {
    VQCJ_DISPATCH(FusedRows)(form, job, first, last);
}

}  // namespace vqcj

using namespace vqcj;

namespace {

template <bool Parallel, FwdForm F>
VqcStatus fwdToPlanes(typename Fwd<F>::Src::Elem* pSrc, int32_t srcStep, Vqc8u* const pDst[3], int32_t dstStep,
                      VqciSize roiSize) {
    ownFwdImage<Parallel, F>(ownPlane(pSrc, srcStep), ownPlanes<Vqc8u, 3>(pDst, dstStep), roiSize);
    return vqcStatusOk;
}

// Checks of the table forms with one source plane: pSrc, pDst, pDst[0..2],
// srcStep, dstStep, width, height.
template <bool Parallel, FwdForm F>
VqcStatus fwdTable(typename Fwd<F>::Src::Elem* pSrc, int32_t srcStep, Vqc8u* const pDst[3], int32_t dstStep,
                   VqciSize roiSize) {
    if (VqcStatus st = Check().ptr(pSrc).ptrs(pDst, 3).step(srcStep).step(dstStep).roi(roiSize)) return st;
    return fwdToPlanes<Parallel, F>(pSrc, srcStep, pDst, dstStep, roiSize);
}

// Four channels: pointers and size only, the steps are taken on trust.
template <FwdForm F>
VqcStatus fwdFour(const Vqc8u* pSrc, int32_t srcStep, Vqc8u* const pDst[3], int32_t dstStep, VqciSize roiSize) {
    if (VqcStatus st = Check().ptr(pSrc).ptrs(pDst, 3).roi(roiSize)) return st;
    return fwdToPlanes<false, F>(pSrc, srcStep, pDst, dstStep, roiSize);
}

// Fused: pointers, then width below 2 and height below V; no step, nor the
// step array, is examined.
template <FusedForm F>
VqcStatus fwdFused(const Vqc8u* pSrc, int32_t srcStep, Vqc8u* const pDst[3], const int32_t dstStep[3],
                   VqciSize roiSize) {
    if (VqcStatus st = Check().ptr(pSrc).ptrs(pDst, 3).roi(roiSize, 2, Fused<F>::kV)) return st;
    return ownFwdFusedImage<F>(ownPlane(pSrc, srcStep), ownPlanes<Vqc8u, 3>(pDst, dstStep), roiSize);
}

template <FwdForm F>
VqcStatus fwdLuma(const Vqc8u* pSrc, int32_t srcStep, Vqc8u* pDst, int32_t dstStep, VqciSize roiSize) {
    if (VqcStatus st = Check().ptr(pSrc).ptr(pDst).step(srcStep).step(dstStep).roi(roiSize)) return st;
    ownFwdImage<true, F>(ownPlane(pSrc, srcStep), ownPlane(pDst, dstStep), roiSize);
    return vqcStatusOk;
}

}  // namespace

extern "C" {

VQCJ_API VqcStatus vqciRGBToYCbCr_JPEG_8u_C3P3R(const Vqc8u* pSrc, int32_t srcStep, Vqc8u* const pDst[3],
                                                 int32_t dstStep, VqciSize roiSize) {
    return fwdTable<true, FwdForm::Rgb3>(pSrc, srcStep, pDst, dstStep, roiSize);
}
VQCJ_API VqcStatus vqciBGRToYCbCr_JPEG_8u_C3P3R(const Vqc8u* pSrc, int32_t srcStep, Vqc8u* const pDst[3],
                                                 int32_t dstStep, VqciSize roiSize) {
    return fwdTable<true, FwdForm::Bgr3>(pSrc, srcStep, pDst, dstStep, roiSize);
}

VQCJ_API VqcStatus vqciRGBToYCbCr_JPEG_8u_C4P3R(const Vqc8u* pSrc, int32_t srcStep, Vqc8u* const pDst[3],
                                                 int32_t dstStep, VqciSize roiSize) {
    return fwdFour<FwdForm::Rgb4>(pSrc, srcStep, pDst, dstStep, roiSize);
}
VQCJ_API VqcStatus vqciBGRToYCbCr_JPEG_8u_C4P3R(const Vqc8u* pSrc, int32_t srcStep, Vqc8u* const pDst[3],
                                                 int32_t dstStep, VqciSize roiSize) {
    return fwdFour<FwdForm::Bgr4>(pSrc, srcStep, pDst, dstStep, roiSize);
}

VQCJ_API VqcStatus vqciRGBToYCbCr_JPEG_8u_P3R(const Vqc8u* const pSrc[3], int32_t srcStep, Vqc8u* const pDst[3],
                                               int32_t dstStep, VqciSize roiSize) {
    if (VqcStatus st = ownCheckPlanes<3>(pSrc, srcStep, pDst, dstStep, roiSize)) return st;
    ownFwdImage<true, FwdForm::Planes>(ownPlanes<const Vqc8u, 3>(pSrc, srcStep),
                                                ownPlanes<Vqc8u, 3>(pDst, dstStep), roiSize);
    return vqcStatusOk;
}

VQCJ_API VqcStatus vqciBGR555ToYCbCr_JPEG_16u8u_C3P3R(const Vqc16u* pSrc, int32_t srcStep, Vqc8u* const pDst[3],
                                                       int32_t dstStep, VqciSize roiSize) {
    return fwdTable<false, FwdForm::Bgr555>(pSrc, srcStep, pDst, dstStep, roiSize);
}
VQCJ_API VqcStatus vqciBGR565ToYCbCr_JPEG_16u8u_C3P3R(const Vqc16u* pSrc, int32_t srcStep, Vqc8u* const pDst[3],
                                                       int32_t dstStep, VqciSize roiSize) {
    return fwdTable<false, FwdForm::Bgr565>(pSrc, srcStep, pDst, dstStep, roiSize);
}
VQCJ_API VqcStatus vqciRGB555ToYCbCr_JPEG_16u8u_C3P3R(const Vqc16u* pSrc, int32_t srcStep, Vqc8u* const pDst[3],
                                                       int32_t dstStep, VqciSize roiSize) {
    return fwdTable<false, FwdForm::Rgb555>(pSrc, srcStep, pDst, dstStep, roiSize);
}
VQCJ_API VqcStatus vqciRGB565ToYCbCr_JPEG_16u8u_C3P3R(const Vqc16u* pSrc, int32_t srcStep, Vqc8u* const pDst[3],
                                                       int32_t dstStep, VqciSize roiSize) {
    return fwdTable<false, FwdForm::Rgb565>(pSrc, srcStep, pDst, dstStep, roiSize);
}

VQCJ_API VqcStatus vqciRGBToY_JPEG_8u_C3C1R(const Vqc8u* pSrc, int32_t srcStep, Vqc8u* pDst, int32_t dstStep,
                                             VqciSize roiSize) {
    return fwdLuma<FwdForm::Rgb3Luma>(pSrc, srcStep, pDst, dstStep, roiSize);
}
VQCJ_API VqcStatus vqciBGRToY_JPEG_8u_C3C1R(const Vqc8u* pSrc, int32_t srcStep, Vqc8u* pDst, int32_t dstStep,
                                             VqciSize roiSize) {
    return fwdLuma<FwdForm::Bgr3Luma>(pSrc, srcStep, pDst, dstStep, roiSize);
}
VQCJ_API VqcStatus vqciRGBToY_JPEG_8u_P3C1R(const Vqc8u* const pSrc[3], int32_t srcStep, Vqc8u* pDst,
                                             int32_t dstStep, VqciSize roiSize) {
    if (VqcStatus st = Check().ptrs(pSrc, 3).ptr(pDst).step(srcStep).step(dstStep).roi(roiSize)) return st;
    ownFwdImage<true, FwdForm::PlanesLuma>(ownPlanes<const Vqc8u, 3>(pSrc, srcStep), ownPlane(pDst, dstStep),
                                                roiSize);
    return vqcStatusOk;
}

VQCJ_API VqcStatus vqciRGBToYCbCr422_JPEG_8u_C3P3R(const Vqc8u* pSrc, int32_t srcStep, Vqc8u* const pDst[3],
                                                    const int32_t dstStep[3], VqciSize roiSize) {
    return fwdFused<FusedForm::Rgb3V1>(pSrc, srcStep, pDst, dstStep, roiSize);
}
VQCJ_API VqcStatus vqciBGRToYCbCr422_JPEG_8u_C3P3R(const Vqc8u* pSrc, int32_t srcStep, Vqc8u* const pDst[3],
                                                    const int32_t dstStep[3], VqciSize roiSize) {
    return fwdFused<FusedForm::Bgr3V1>(pSrc, srcStep, pDst, dstStep, roiSize);
}
VQCJ_API VqcStatus vqciRGBToYCbCr422_JPEG_8u_C4P3R(const Vqc8u* pSrc, int32_t srcStep, Vqc8u* const pDst[3],
                                                    const int32_t dstStep[3], VqciSize roiSize) {
    return fwdFused<FusedForm::Rgb4V1>(pSrc, srcStep, pDst, dstStep, roiSize);
}
VQCJ_API VqcStatus vqciBGRToYCbCr422_JPEG_8u_C4P3R(const Vqc8u* pSrc, int32_t srcStep, Vqc8u* const pDst[3],
                                                    const int32_t dstStep[3], VqciSize roiSize) {
    return fwdFused<FusedForm::Bgr4V1>(pSrc, srcStep, pDst, dstStep, roiSize);
}

VQCJ_API VqcStatus vqciRGBToYCbCr411_JPEG_8u_C3P3R(const Vqc8u* pSrc, int32_t srcStep, Vqc8u* const pDst[3],
                                                    const int32_t dstStep[3], VqciSize roiSize) {
    return fwdFused<FusedForm::Rgb3V2>(pSrc, srcStep, pDst, dstStep, roiSize);
}
VQCJ_API VqcStatus vqciBGRToYCbCr411_JPEG_8u_C3P3R(const Vqc8u* pSrc, int32_t srcStep, Vqc8u* const pDst[3],
                                                    const int32_t dstStep[3], VqciSize roiSize) {
    return fwdFused<FusedForm::Bgr3V2>(pSrc, srcStep, pDst, dstStep, roiSize);
}
VQCJ_API VqcStatus vqciRGBToYCbCr411_JPEG_8u_C4P3R(const Vqc8u* pSrc, int32_t srcStep, Vqc8u* const pDst[3],
                                                    const int32_t dstStep[3], VqciSize roiSize) {
    return fwdFused<FusedForm::Rgb4V2>(pSrc, srcStep, pDst, dstStep, roiSize);
}
VQCJ_API VqcStatus vqciBGRToYCbCr411_JPEG_8u_C4P3R(const Vqc8u* pSrc, int32_t srcStep, Vqc8u* const pDst[3],
                                                    const int32_t dstStep[3], VqciSize roiSize) {
    return fwdFused<FusedForm::Bgr4V2>(pSrc, srcStep, pDst, dstStep, roiSize);
}

}  // extern "C"
#endif  // HWY_ONCE
