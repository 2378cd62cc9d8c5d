// YCbCr to RGB and BGR: the table forms (row-parallel, except the packed
// forms), the four-channel and planar 422/411 forms with the multiplication
// arithmetic (serial), and the interleaved 422 form (row-parallel). One
// kernel source compiled for every SIMD target.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "jpeg/colour/colour_inv.cpp"
#include <hwy/foreach_target.h>  // must come before highway.h
#include <hwy/highway.h>

#include "colour.h"
#include "frame/check.h"
#include "frame/simd.h"
#include "frame/simdops.h"

HWY_BEFORE_NAMESPACE();
namespace vqcj::HWY_NAMESPACE {
namespace {

// InvArith on 16-bit lanes. A product m c splits into its high half
// (MulHigh) and its low half; what the low halves and the rounding add to
// the high halves is their carry.
template <class Arith>
struct VecInv {
    template <int32_t M>
    static void split(VS16 c, VS16& hi, V16& lo) {
        const VS16 m = hn::Set(DS16(), static_cast<int16_t>(M));
        hi = hn::MulHigh(c, m);
        lo = hn::BitCast(D16(), hn::Mul(c, m));
    }
    template <int32_t M, int32_t K>
    static VS16 round16(VS16 c) {
        VS16 hi;
        V16 lo;
        split<M>(c, hi, lo);
        return AddCarry(hi, lo, hn::Set(D16(), static_cast<uint16_t>(K)));
    }

    // What Cb and Cr add to Y in each channel.
    struct Terms {
        VS16 r, g, b;
    };
    static Terms terms(V16 cb16, V16 cr16) {
        const DS16 d;
        const VS16 k128 = hn::Set(d, 128);
        const VS16 cb = hn::Sub(hn::BitCast(d, cb16), k128), cr = hn::Sub(hn::BitCast(d, cr16), k128);
        Terms t;
        t.r = AddTimes<Arith::kRq>(round16<Arith::kRm, Arith::kRRound>(cr), cr);
        t.b = AddTimes<Arith::kBq>(round16<Arith::kBm, Arith::kBRound>(cb), cb);
        VS16 hb, hr;
        V16 lb, lr;
        split<Arith::kGbm>(cb, hb, lb);
        split<Arith::kGrm>(cr, hr, lr);
        const V16 kg = hn::Set(D16(), static_cast<uint16_t>(Arith::kGRound));
        const VS16 sum = AddCarry(AddCarry(hn::Add(hb, hr), lb, lr), hn::Add(lb, lr), kg);
        t.g = AddTimes<Arith::kGrq>(AddTimes<Arith::kGbq>(sum, cb), cr);
        return t;
    }

    // R, G and B of two halves as whole byte vectors.
    static void apply(const V16 (&y)[2], const Terms (&t)[2], VF8& r, VF8& g, VF8& b) {
        const DS16 d;
        const VS16 y0 = hn::BitCast(d, y[0]), y1 = hn::BitCast(d, y[1]);
        r = NarrowSatHalves(hn::Add(y0, t[0].r), hn::Add(y1, t[1].r));
        g = NarrowSatHalves(hn::Add(y0, t[0].g), hn::Add(y1, t[1].g));
        b = NarrowSatHalves(hn::Add(y0, t[0].b), hn::Add(y1, t[1].b));
    }
};

// Lanes(DF8) pixels from column x as Y, Cb, Cr (two halves of 16-bit lanes)
// and K. kStride: elements a pixel in plane 0, for the plain tail. Templates,
// so that the baseline pass never instantiates them.
template <class In>
struct VecIn;

template <int N>
struct VecIn<InPlanes<N>> {
    static constexpr int kStride = 1;
    template <class D = DF8>
    static void load(const Vqc8u* const* row, int32_t x, V16 (&y)[2], V16 (&cb)[2], V16 (&cr)[2], VF8& k) {
        const D d8;
        WidenHalves(hn::LoadU(d8, row[0] + x), y);
        WidenHalves(hn::LoadU(d8, row[1] + x), cb);
        WidenHalves(hn::LoadU(d8, row[2] + x), cr);
        if constexpr (N == 4) k = hn::LoadU(d8, row[3] + x);
    }
};

// One chroma byte for each pair of pixels: invRow computes the terms once a
// pair and doubles them.
template <>
struct VecIn<In422Planes> {
    static constexpr int kStride = 1;
};

// Y0 Cb Y1 Cr: as 16-bit lanes, Y is the low byte of every lane and the
// chroma of a pair the high bytes of its two lanes.
template <>
struct VecIn<In422Pairs> {
    static constexpr int kStride = 2;
    template <class D = D16>
    static void load(const Vqc8u* const* row, int32_t x, V16 (&y)[2], V16 (&cb)[2], V16 (&cr)[2], VF8&) {
        const D d;
        const hn::Repartition<uint32_t, D> d32;
        for (int h = 0; h < 2; ++h) {
            const uint8_t* p = row[0] + 2 * (static_cast<ptrdiff_t>(x) + h * static_cast<ptrdiff_t>(hn::Lanes(d)));
            const V16 v = hn::LoadU(d, reinterpret_cast<const uint16_t*>(p));
            y[h] = LowBytes(v);
            const auto c = hn::BitCast(d32, HighBytes(v));  // Cb | Cr << 16 a pair
            const auto lo = hn::And(c, hn::Set(d32, 0xFFFF)), hi = hn::ShiftRight<16>(c);
            cb[h] = hn::BitCast(d, hn::Or(lo, hn::ShiftLeft<16>(lo)));
            cr[h] = hn::BitCast(d, hn::Or(hi, hn::ShiftLeft<16>(hi)));
        }
    }
};

// R, G, B bytes (and K or the alpha value) to column x of a layout.
template <class Dst>
struct VecDst;

template <int Bpp, int RI, int GI, int BI, bool Ink>
struct VecDst<DstPix<Bpp, RI, GI, BI, Ink>> {
    static constexpr int kStride = Bpp;
    template <class D = DF8>
    static void store(Vqc8u* const* row, int32_t x, VF8 r, VF8 g, VF8 b, VF8 k, Vqc8u aval) {
        const D d8;
        VF8 v[4];
        v[RI] = Ink ? hn::Not(r) : r;
        v[GI] = Ink ? hn::Not(g) : g;
        v[BI] = Ink ? hn::Not(b) : b;
        Vqc8u* p = row[0] + Bpp * static_cast<ptrdiff_t>(x);
        if constexpr (Bpp == 3) {
            (void)k, (void)aval;
            hn::StoreInterleaved3(v[0], v[1], v[2], d8, p);
        } else {
            hn::StoreInterleaved4(v[0], v[1], v[2], Ink ? k : hn::Set(d8, aval), d8, p);
        }
    }
};

template <bool Ink>
struct VecDst<DstPlanes<Ink>> {
    static constexpr int kStride = 1;
    template <class D = DF8>
    static void store(Vqc8u* const* row, int32_t x, VF8 r, VF8 g, VF8 b, VF8 k, Vqc8u) {
        const D d8;
        hn::StoreU(Ink ? hn::Not(r) : r, d8, row[0] + x);
        hn::StoreU(Ink ? hn::Not(g) : g, d8, row[1] + x);
        hn::StoreU(Ink ? hn::Not(b) : b, d8, row[2] + x);
        if constexpr (Ink) hn::StoreU(k, d8, row[3] + x);
    }
};

template <bool Is565, bool RedHigh>
struct VecDst<DstPacked<Is565, RedHigh>> {
    static constexpr int kStride = 1;
    template <class D = D16>
    static void store(Vqc16u* const* row, int32_t x, VF8 r, VF8 g, VF8 b, VF8, Vqc8u) {
        const D d;
        V16 hi[2], mid[2], lo[2];
        WidenHalves(RedHigh ? r : b, hi), WidenHalves(g, mid), WidenHalves(RedHigh ? b : r, lo);
        for (int k = 0; k < 2; ++k) {
            const V16 h = hn::ShiftLeft<Is565 ? 8 : 7>(hn::And(hi[k], hn::Set(d, 0xF8)));
            const V16 m = Is565 ? hn::ShiftLeft<3>(hn::And(mid[k], hn::Set(d, 0xFC)))
                                : hn::ShiftLeft<2>(hn::And(mid[k], hn::Set(d, 0xF8)));
            hn::StoreU(hn::Or(hn::Or(h, m), hn::ShiftRight<3>(lo[k])), d,
                       row[0] + x + k * static_cast<int32_t>(hn::Lanes(d)));
        }
    }
};

template <class T, int N>
RowPtrs<T, N> advance(RowPtrs<T, N> rows, int32_t x, int stride0, bool halfRest) {
    for (int k = 0; k < N; ++k)
        rows.p[k] += (k == 0 ? stride0 * static_cast<ptrdiff_t>(x) : halfRest ? x / 2 : x);
    return rows;
}

template <InvForm F>
void invRow(RowPtrs<const Vqc8u, Inv<F>::In::kPlanes> s, RowPtrs<typename Inv<F>::Dst::Elem, Inv<F>::Dst::kPlanes> d,
            int32_t width, Vqc8u aval) {
    using In = typename Inv<F>::In;
    using Dst = typename Inv<F>::Dst;
    using Vi = VecInv<typename Inv<F>::Arith>;
    constexpr bool kPairs = std::is_same_v<In, In422Planes>;
    const int32_t n = static_cast<int32_t>(hn::Lanes(DF8()));
    int32_t x = 0;
    for (; x + n <= width; x += n) {
        const VF8 k0 = hn::Zero(DF8());
        if constexpr (kPairs) {
            // Even and odd pixels as the low and high bytes of 16-bit lanes,
            // one chroma lane for both: saturated, they go back the same way.
            const V16 yv = hn::BitCast(D16(), hn::LoadU(DF8(), s.p[0] + x));
            const VS16 ye = hn::BitCast(DS16(), LowBytes(yv)), yo = hn::BitCast(DS16(), HighBytes(yv));
            const typename Vi::Terms c =
                Vi::terms(Widen(hn::LoadU(D8(), s.p[1] + x / 2)), Widen(hn::LoadU(D8(), s.p[2] + x / 2)));
            const auto both = [&](VS16 term) {
                return hn::BitCast(DF8(), hn::Or(Clamp8(hn::Add(ye, term)), hn::ShiftLeft<8>(Clamp8(hn::Add(yo, term)))));
            };
            VecDst<Dst>::store(d.p, x, both(c.r), both(c.g), both(c.b), k0, aval);
        } else {
            V16 y[2], cb[2], cr[2];
            typename Vi::Terms t[2];
            VF8 k = k0, r, g, b;
            VecIn<In>::load(s.p, x, y, cb, cr, k);
            for (int h = 0; h < 2; ++h) t[h] = Vi::terms(cb[h], cr[h]);
            Vi::apply(y, t, r, g, b);
            VecDst<Dst>::store(d.p, x, r, g, b, k, aval);
        }
    }
    if (x < width)
        ownInvRow<In, typename Inv<F>::Arith, Dst>(advance(s, x, VecIn<In>::kStride, kPairs).p,
                                                   advance(d, x, VecDst<Dst>::kStride, false).p, width - x, aval);
}

template <InvForm F>
void invRows(const RowJob& j, int32_t first, int32_t last) {
    using In = typename Inv<F>::In;
    using Dst = typename Inv<F>::Dst;
    for (int32_t r = first; r < last; ++r) {
        const auto s = ownSrcRows<const Vqc8u, In::kPlanes>(j, r);
        const auto d = ownDstRows<typename Dst::Elem, Dst::kPlanes>(j, r);
        if constexpr (VQCJ_SIMD_BASELINE) ownInvRow<In, typename Inv<F>::Arith, Dst>(s.p, d.p, j.width, j.aval);
        else invRow<F>(s, d, j.width, j.aval);
    }
}

}  // namespace

void InvRows(InvForm form, const RowJob& j, int32_t first, int32_t last) {
    switch (form) {
#define VQCJ_FORM(f) \
    case InvForm::f: return invRows<InvForm::f>(j, first, last);
        VQCJ_FORM(Rgb3) VQCJ_FORM(Bgr3) VQCJ_FORM(Planes) VQCJ_FORM(Rgb4) VQCJ_FORM(Bgr4)
        VQCJ_FORM(Bgr555) VQCJ_FORM(Bgr565) VQCJ_FORM(Rgb555) VQCJ_FORM(Rgb565)
        VQCJ_FORM(Sub422Rgb3) VQCJ_FORM(Sub422Bgr3) VQCJ_FORM(Sub422Rgb4) VQCJ_FORM(Sub422Bgr4)
        VQCJ_FORM(Pairs422Rgb3) VQCJ_FORM(CmykPix) VQCJ_FORM(CmykPlanes)
#undef VQCJ_FORM
    }
}

}  // namespace vqcj::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace vqcj {

HWY_EXPORT(InvRows);

void ownInvRows(InvForm form, const RowJob& job, int32_t first, int32_t last) {
    VQCJ_DISPATCH(InvRows)(form, job, first, last);
}

}  // namespace vqcj

using namespace vqcj;

namespace {

// Full rate to one interleaved or packed plane: pSrc, pDst, pSrc[0..2],
// srcStep, dstStep, width, height.
template <bool Parallel, InvForm F>
VqcStatus invTable(const Vqc8u* const pSrc[3], int32_t srcStep, typename Inv<F>::Dst::Elem* pDst, int32_t dstStep,
                   VqciSize roiSize) {
    if (VqcStatus st = Check().ptr(pSrc).ptr(pDst).elems(pSrc, 3).step(srcStep).step(dstStep).roi(roiSize)) return st;
    ownInvImage<Parallel, F>(ownPlanes<const Vqc8u, 3>(pSrc, srcStep),
                                                      ownPlane(pDst, dstStep), roiSize, roiSize.width);
    return vqcStatusOk;
}

// Four channels: pDst, pSrc, pSrc[0..2], width, height; steps on trust.
template <InvForm F>
VqcStatus invFour(const Vqc8u* const pSrc[3], int32_t srcStep, Vqc8u* pDst, int32_t dstStep, VqciSize roiSize,
                  Vqc8u aval) {
    if (VqcStatus st = Check().ptr(pDst).ptrs(pSrc, 3).roi(roiSize)) return st;
    ownInvImage<false, F>(ownPlanes<const Vqc8u, 3>(pSrc, srcStep), ownPlane(pDst, dstStep),
                                                 roiSize, roiSize.width, aval);
    return vqcStatusOk;
}

// Planar 422 (V = 1) and 411 (V = 2): pDst, pSrc, pSrc[0..2], width below 2,
// height below V; neither the steps nor their array are examined. LastPair:
// an odd width processes its last pair whole, one pixel beyond the width.
template <int V, bool LastPair, InvForm F>
VqcStatus invSub(const Vqc8u* const pSrc[3], const int32_t srcStep[3], Vqc8u* pDst, int32_t dstStep,
                 VqciSize roiSize, Vqc8u aval) {
    if (VqcStatus st = Check().ptr(pDst).ptrs(pSrc, 3).roi(roiSize, 2, V)) return st;
    const int32_t width = LastPair ? addW(roiSize.width, 1) & ~1 : roiSize.width & ~1;
    return ownInvSubImage<V, F>(ownPlanes<const Vqc8u, 3>(pSrc, srcStep), ownPlane(pDst, dstStep), roiSize, width,
                                  aval);
}

}  // namespace

extern "C" {

VQCJ_API VqcStatus vqciYCbCrToRGB_JPEG_8u_P3C3R(const Vqc8u* const pSrc[3], int32_t srcStep, Vqc8u* pDst,
                                                 int32_t dstStep, VqciSize roiSize) {
    return invTable<true, InvForm::Rgb3>(pSrc, srcStep, pDst, dstStep, roiSize);
}
VQCJ_API VqcStatus vqciYCbCrToBGR_JPEG_8u_P3C3R(const Vqc8u* const pSrc[3], int32_t srcStep, Vqc8u* pDst,
                                                 int32_t dstStep, VqciSize roiSize) {
    return invTable<true, InvForm::Bgr3>(pSrc, srcStep, pDst, dstStep, roiSize);
}

VQCJ_API VqcStatus vqciYCbCrToRGB_JPEG_8u_P3C4R(const Vqc8u* const pSrc[3], int32_t srcStep, Vqc8u* pDst,
                                                 int32_t dstStep, VqciSize roiSize, Vqc8u aval) {
    return invFour<InvForm::Rgb4>(pSrc, srcStep, pDst, dstStep, roiSize, aval);
}
VQCJ_API VqcStatus vqciYCbCrToBGR_JPEG_8u_P3C4R(const Vqc8u* const pSrc[3], int32_t srcStep, Vqc8u* pDst,
                                                 int32_t dstStep, VqciSize roiSize, Vqc8u aval) {
    return invFour<InvForm::Bgr4>(pSrc, srcStep, pDst, dstStep, roiSize, aval);
}

VQCJ_API VqcStatus vqciYCbCrToRGB_JPEG_8u_P3R(const Vqc8u* const pSrc[3], int32_t srcStep, Vqc8u* const pDst[3],
                                               int32_t dstStep, VqciSize roiSize) {
    if (VqcStatus st = ownCheckPlanes<3>(pSrc, srcStep, pDst, dstStep, roiSize)) return st;
    ownInvImage<true, InvForm::Planes>(ownPlanes<const Vqc8u, 3>(pSrc, srcStep),
                                                          ownPlanes<Vqc8u, 3>(pDst, dstStep), roiSize, roiSize.width);
    return vqcStatusOk;
}

VQCJ_API VqcStatus vqciYCbCrToBGR555_JPEG_8u16u_P3C3R(const Vqc8u* const pSrc[3], int32_t srcStep, Vqc16u* pDst,
                                                       int32_t dstStep, VqciSize roiSize) {
    return invTable<false, InvForm::Bgr555>(pSrc, srcStep, pDst, dstStep, roiSize);
}
VQCJ_API VqcStatus vqciYCbCrToBGR565_JPEG_8u16u_P3C3R(const Vqc8u* const pSrc[3], int32_t srcStep, Vqc16u* pDst,
                                                       int32_t dstStep, VqciSize roiSize) {
    return invTable<false, InvForm::Bgr565>(pSrc, srcStep, pDst, dstStep, roiSize);
}
VQCJ_API VqcStatus vqciYCbCrToRGB555_JPEG_8u16u_P3C3R(const Vqc8u* const pSrc[3], int32_t srcStep, Vqc16u* pDst,
                                                       int32_t dstStep, VqciSize roiSize) {
    return invTable<false, InvForm::Rgb555>(pSrc, srcStep, pDst, dstStep, roiSize);
}
VQCJ_API VqcStatus vqciYCbCrToRGB565_JPEG_8u16u_P3C3R(const Vqc8u* const pSrc[3], int32_t srcStep, Vqc16u* pDst,
                                                       int32_t dstStep, VqciSize roiSize) {
    return invTable<false, InvForm::Rgb565>(pSrc, srcStep, pDst, dstStep, roiSize);
}

VQCJ_API VqcStatus vqciYCbCr422ToRGB_JPEG_8u_P3C3R(const Vqc8u* const pSrc[3], const int32_t srcStep[3],
                                                    Vqc8u* pDst, int32_t dstStep, VqciSize roiSize) {
    return invSub<1, false, InvForm::Sub422Rgb3>(pSrc, srcStep, pDst, dstStep, roiSize, 0);
}
VQCJ_API VqcStatus vqciYCbCr422ToBGR_JPEG_8u_P3C3R(const Vqc8u* const pSrc[3], const int32_t srcStep[3],
                                                    Vqc8u* pDst, int32_t dstStep, VqciSize roiSize) {
    return invSub<1, false, InvForm::Sub422Bgr3>(pSrc, srcStep, pDst, dstStep, roiSize, 0);
}
VQCJ_API VqcStatus vqciYCbCr422ToRGB_JPEG_8u_P3C4R(const Vqc8u* const pSrc[3], const int32_t srcStep[3],
                                                    Vqc8u* pDst, int32_t dstStep, VqciSize roiSize, Vqc8u aval) {
    return invSub<1, false, InvForm::Sub422Rgb4>(pSrc, srcStep, pDst, dstStep, roiSize, aval);
}
VQCJ_API VqcStatus vqciYCbCr422ToBGR_JPEG_8u_P3C4R(const Vqc8u* const pSrc[3], const int32_t srcStep[3],
                                                    Vqc8u* pDst, int32_t dstStep, VqciSize roiSize, Vqc8u aval) {
    return invSub<1, false, InvForm::Sub422Bgr4>(pSrc, srcStep, pDst, dstStep, roiSize, aval);
}

// Only the three-channel RGB member stops at the even width; the other three
// process an odd last pair whole.
VQCJ_API VqcStatus vqciYCbCr411ToRGB_JPEG_8u_P3C3R(const Vqc8u* const pSrc[3], const int32_t srcStep[3],
                                                    Vqc8u* pDst, int32_t dstStep, VqciSize roiSize) {
    return invSub<2, false, InvForm::Sub422Rgb3>(pSrc, srcStep, pDst, dstStep, roiSize, 0);
}
VQCJ_API VqcStatus vqciYCbCr411ToBGR_JPEG_8u_P3C3R(const Vqc8u* const pSrc[3], const int32_t srcStep[3],
                                                    Vqc8u* pDst, int32_t dstStep, VqciSize roiSize) {
    return invSub<2, true, InvForm::Sub422Bgr3>(pSrc, srcStep, pDst, dstStep, roiSize, 0);
}
VQCJ_API VqcStatus vqciYCbCr411ToRGB_JPEG_8u_P3C4R(const Vqc8u* const pSrc[3], const int32_t srcStep[3],
                                                    Vqc8u* pDst, int32_t dstStep, VqciSize roiSize, Vqc8u aval) {
    return invSub<2, true, InvForm::Sub422Rgb4>(pSrc, srcStep, pDst, dstStep, roiSize, aval);
}
VQCJ_API VqcStatus vqciYCbCr411ToBGR_JPEG_8u_P3C4R(const Vqc8u* const pSrc[3], const int32_t srcStep[3],
                                                    Vqc8u* pDst, int32_t dstStep, VqciSize roiSize, Vqc8u aval) {
    return invSub<2, true, InvForm::Sub422Bgr4>(pSrc, srcStep, pDst, dstStep, roiSize, aval);
}

// Pairs while the column is below the width: an odd width processes its last
// pair whole, and there is no warning. Steps on trust.
VQCJ_API VqcStatus vqciYCbCr422ToRGB_JPEG_8u_C2C3R(const Vqc8u* pSrc, int32_t srcStep, Vqc8u* pDst,
                                                    int32_t dstStep, VqciSize roiSize) {
    if (VqcStatus st = Check().ptr(pSrc).ptr(pDst).roi(roiSize)) return st;
    ownInvImage<true, InvForm::Pairs422Rgb3>(ownPlane(pSrc, srcStep), ownPlane(pDst, dstStep), roiSize,
                                                     addW(roiSize.width, 1) & ~1);
    return vqcStatusOk;
}

}  // extern "C"
#endif  // HWY_ONCE
