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

// The sums of the plain routine, exactly, each as one pairwise multiply-add
// (pmaddwd) of u = G - B and v = G - R, whose weights then fit 16 bits:
//   Y = 65536 G - 7471 u - 19595 v + round
//   Cb = -32768 u + 11059 v + K, Cr = 5329 u - 32768 v + K
// (the chroma weights sum to zero). Only bits 16..23 are stored, so K
// counts modulo 2^24; so taken, every sum lies in [0, 2^24): the output is
// the sum shifted down by 16, with nothing above it.
template <class Arith>
struct Weights {
    static_assert(kWeightYR + kWeightYG + kWeightYB == 65536 && kWeightChroma == 32768 &&
                  kWeightCbG + kWeightCbR == kWeightChroma && kWeightCrG + kWeightCrB == kWeightChroma);
    static constexpr int16_t kYU = -int16_t(kWeightYB), kYV = -int16_t(kWeightYR);
    static constexpr int16_t kCbU = -32768, kCbV = int16_t(kWeightCbR);
    static constexpr int16_t kCrU = int16_t(kWeightCrB), kCrV = -32768;
    static constexpr int32_t kY = int32_t(Arith::kYRound);
    // The member's chroma constant (kChroma carries 255 times the weight of
    // the complemented sample).
    static constexpr int32_t kK = int32_t((Arith::kChroma + 255u * kWeightChroma) & 0xFFFFFFu);
    static_assert(kY >= 0 && kY < 65536 && kK >= 255 * 32768 && kK + 255 * 32768 < (1 << 24));
};

// Y, Cb and Cr of 16-bit lanes of R, G, B (0..255), in the same lanes;
// NOut 1: Y only. Templates, so that the baseline pass never instantiates
// them.
template <class Arith, int NOut>
void yccOf(V16 r, V16 g, V16 b, V16& y, V16& cb, V16& cr) {
    using W = Weights<Arith>;
    const D16 d;
    const Zip z = ZipOf(hn::BitCast(DS16(), hn::Sub(g, b)), hn::BitCast(DS16(), hn::Sub(g, r)));
    y = hn::Add(g, hn::BitCast(d, Dot<16, W::kYU, W::kYV, W::kY>(z)));
    if constexpr (NOut > 1) {
        cb = hn::BitCast(d, Dot<16, W::kCbU, W::kCbV, W::kK>(z));
        cr = hn::BitCast(d, Dot<16, W::kCrU, W::kCrV, W::kK>(z));
    }
}

// Lanes(DF8) pixels from column x, for the fused rows (pixels) and the
// packed words: R, G, B widened, as two halves, K as bytes. Templates, so
// that the baseline pass never instantiates them.
template <class Src>
struct VecSrc;

template <int Bpp, int RI, int GI, int BI, bool Ink>
struct VecSrc<SrcPix<Bpp, RI, GI, BI, Ink>> {
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

template <bool Is565, bool RedHigh>
struct VecSrc<SrcPacked<Is565, RedHigh>> {
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

// Elements a pixel takes in plane 0 of a source layout.
template <class Src>
constexpr int kPixelElems = 1;
template <int Bpp, int RI, int GI, int BI, bool Ink>
constexpr int kPixelElems<SrcPix<Bpp, RI, GI, BI, Ink>> = Bpp;

// Row pointers moved on by x pixels.
template <int Stride, class T, int N>
RowPtrs<T, N> advance(RowPtrs<T, N> rows, int32_t x) {
    for (int k = 0; k < N; ++k) rows.p[k] += Stride * static_cast<ptrdiff_t>(x);
    return rows;
}

// Vector steps over a row, Lanes(DF8) pixels a step: the column reached.
// Packed words: R, G, B widened into two halves.
template <class Src, class Arith, int NOut>
struct FwdSteps {
    static int32_t run(typename Src::Elem* const* s, Vqc8u* const* d, int32_t width) {
        const DF8 d8;
        const int32_t n = static_cast<int32_t>(hn::Lanes(d8));
        int32_t x = 0;
        for (; x + n <= width; x += n) {
            V16 r[2], g[2], b[2], y[2], cb[2], cr[2];
            VF8 k;
            VecSrc<Src>::load(s, x, r, g, b, k);
            for (int h = 0; h < 2; ++h) yccOf<Arith, NOut>(r[h], g[h], b[h], y[h], cb[h], cr[h]);
            hn::StoreU(NarrowHalves(y[0], y[1]), d8, d[0] + x);
            if constexpr (NOut > 1) {
                hn::StoreU(NarrowHalves(cb[0], cb[1]), d8, d[1] + x);
                hn::StoreU(NarrowHalves(cr[0], cr[1]), d8, d[2] + x);
            }
        }
        return x;
    }
};

// Planes: the even and the odd pixels as 16-bit lanes, which need no
// shuffle either way.
template <bool Ink, class Arith, int NOut>
struct FwdSteps<SrcPlanes<Ink>, Arith, NOut> {
    static int32_t run(const Vqc8u* const* s, Vqc8u* const* d, int32_t width) {
        const DF8 d8;
        const int32_t n = static_cast<int32_t>(hn::Lanes(d8));
        int32_t x = 0;
        for (; x + n <= width; x += n) {
            V16 ch[3][2], y[2], cb[2], cr[2];
            for (int c = 0; c < 3; ++c) {
                VF8 v = hn::LoadU(d8, s[c] + x);
                if constexpr (Ink) v = hn::Not(v);
                ch[c][0] = LowBytes(hn::BitCast(D16(), v));
                ch[c][1] = HighBytes(hn::BitCast(D16(), v));
            }
            for (int h = 0; h < 2; ++h) yccOf<Arith, NOut>(ch[0][h], ch[1][h], ch[2][h], y[h], cb[h], cr[h]);
            const auto bytes = [&](const V16 (&v)[2]) { return hn::BitCast(d8, hn::Or(v[0], hn::ShiftLeft<8>(v[1]))); };
            hn::StoreU(bytes(y), d8, d[0] + x);
            if constexpr (NOut > 1) {
                hn::StoreU(bytes(cb), d8, d[1] + x);
                hn::StoreU(bytes(cr), d8, d[2] + x);
            }
            if constexpr (NOut == 4) hn::StoreU(hn::LoadU(d8, s[3] + x), d8, d[3] + x);
        }
        return x;
    }
};

// Interleaved bytes: one pixel a 32-bit lane. A step is four vectors of
// lanes; block k of vector j holds pixels 16k + 4j .. 16k + 4j + 3, each
// block loaded on its own, so that no shuffle crosses blocks. A lane holds u
// and v as its 16-bit halves, and each sum is one multiply-add of the lane;
// Y adds 65536 G from a lane that holds G in both halves.
using DI16 = hn::Repartition<int16_t, DF8>;
using DU32 = hn::Repartition<uint32_t, DF8>;
using VI16 = hn::Vec<DI16>;
using VU32 = hn::Vec<DU32>;

// Bytes lo and hi of pixel i of a block, the pixels Bpp bytes apart from
// byte `at`, as the 16-bit halves of lane i.
constexpr Table ownLaneTable(int bpp, int at, int lo, int hi) {
    uint8_t t[16]{};
    for (int i = 0; i < 4; ++i) {
        t[4 * i] = static_cast<uint8_t>(at + bpp * i + lo);
        t[4 * i + 2] = static_cast<uint8_t>(at + bpp * i + hi);
        t[4 * i + 1] = t[4 * i + 3] = 0x80;
    }
    return ownTable(t);
}

// The output bytes of a step from its four vectors of sums, the bytes in
// bits 16..23 and nothing above them: lane i of a block of vector j first
// goes to byte 4i + j of the block, then each block's 4 x 4 bytes are
// transposed into pixel order.
HWY_INLINE VF8 bytesOf(const VU32 (&s)[4]) {
    const DU32 d;
    VU32 v = hn::OrAnd(hn::ShiftRight<16>(s[0]), hn::ShiftRight<8>(s[1]), hn::Set(d, 0xFF00u));
    v = hn::OrAnd(v, s[2], hn::Set(d, 0xFF0000u));
    v = hn::OrAnd(v, hn::ShiftLeft<8>(s[3]), hn::Set(d, 0xFF000000u));
    static constexpr Table kOrder = ownTable({0, 4, 8, 12, 1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15});
    return hn::TableLookupBytes(hn::BitCast(DF8(), v), hn::Load(DF8(), kOrder.v));
}

template <int Bpp, int RI, int GI, int BI, bool Ink, class Arith, int NOut>
struct FwdSteps<SrcPix<Bpp, RI, GI, BI, Ink>, Arith, NOut> {
    using W = Weights<Arith>;
    // Ink bytes are complemented channels: u is then B - G, and 65536 G
    // is 255 * 65536 less 65536 times the byte.
    static constexpr int32_t kY = W::kY + (Ink ? 255 << 16 : 0);
    // Three-byte pixels: the last vector's blocks are loaded 4 bytes early,
    // so that a step reads nothing beyond its own pixels.
    static constexpr int kBack = Bpp == 3 ? 4 : 0;

    static int32_t run(const Vqc8u* const* s, Vqc8u* const* d, int32_t width) {
        const DF8 d8;
        const DU32 du32;
        const DI16 d16;
        static constexpr Table kG[2] = {ownLaneTable(Bpp, 0, GI, GI), ownLaneTable(Bpp, kBack, GI, GI)};
        static constexpr Table kBR[2] = {ownLaneTable(Bpp, 0, BI, RI), ownLaneTable(Bpp, kBack, BI, RI)};
        const int32_t n = static_cast<int32_t>(hn::Lanes(d8));
        int32_t x = 0;
        for (; x + n <= width; x += n) {
            const Vqc8u* p = s[0] + Bpp * static_cast<ptrdiff_t>(x);
            VU32 y[4], cb[4], cr[4], k[4];
            for (int j = 0; j < 4; ++j) {
                const int t = j == 3;
                const VF8 px = FromBlocks(d8, [&](auto db, int blk) {
                    return hn::LoadU(db, p + Bpp * (16 * blk + 4 * j) - t * kBack);
                });
                const VI16 gg = hn::BitCast(d16, hn::TableLookupBytesOr0(px, hn::Load(d8, kG[t].v)));
                const VI16 br = hn::BitCast(d16, hn::TableLookupBytesOr0(px, hn::Load(d8, kBR[t].v)));
                const VI16 uv = Ink ? hn::Sub(br, gg) : hn::Sub(gg, br);
                const VU32 g16 = hn::And(hn::BitCast(du32, gg), hn::Set(du32, 0xFFFF0000u));
                const VU32 sy = hn::BitCast(du32, PairDot<W::kYU, W::kYV, kY>(uv));
                y[j] = Ink ? hn::Sub(sy, g16) : hn::Add(sy, g16);
                if constexpr (NOut > 1) {
                    cb[j] = hn::BitCast(du32, PairDot<W::kCbU, W::kCbV, W::kK>(uv));
                    cr[j] = hn::BitCast(du32, PairDot<W::kCrU, W::kCrV, W::kK>(uv));
                }
                if constexpr (NOut == 4) k[j] = hn::ShiftRight<8>(hn::BitCast(du32, px));
            }
            hn::StoreU(bytesOf(y), d8, d[0] + x);
            if constexpr (NOut > 1) {
                hn::StoreU(bytesOf(cb), d8, d[1] + x);
                hn::StoreU(bytesOf(cr), d8, d[2] + x);
            }
            if constexpr (NOut == 4) hn::StoreU(bytesOf(k), d8, d[3] + x);
        }
        return x;
    }
};

template <FwdForm F>
void fwdRow(RowPtrs<typename Fwd<F>::Src::Elem, Fwd<F>::Src::kPlanes> s, RowPtrs<Vqc8u, Fwd<F>::kOut> d,
            int32_t width) {
    using Src = typename Fwd<F>::Src;
    using Arith = typename Fwd<F>::Arith;
    constexpr int NOut = Fwd<F>::kOut;
    const int32_t x = FwdSteps<Src, Arith, NOut>::run(s.p, d.p, width);
    if (x < width) ownFwdRow<Src, Arith, NOut>(advance<kPixelElems<Src>>(s, x).p, advance<1>(d, x).p, width - x);
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
            V16 y[2], unused;
            for (int h = 0; h < 2; ++h) yccOf<FwdTable, 1>(r[h], g[h], b[h], y[h], unused, unused);
            hn::StoreU(NarrowHalves(y[0], y[1]), d8, yrow[v] + x);
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
        for (int v = 0; v < V; ++v) s[v] = srow[v] + kPixelElems<Src> * static_cast<ptrdiff_t>(x), y[v] = yrow[v] + x;
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
