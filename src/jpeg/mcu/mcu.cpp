// MCU conversion exports: one kernel source compiled for every SIMD target.
// Each export names a form (layout, arithmetic, sampling); the dispatched
// entry points pick the form's routine from a table, once per MCU.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "jpeg/mcu/mcu.cpp"
#include <hwy/foreach_target.h>  // must come before highway.h
#include <hwy/highway.h>

#include "frame/check.h"
#include "frame/simd.h"
#include "jpeg/mcu/mcu.h"

#include <type_traits>
#include <utility>

#ifndef VQCJ_MCU_ONCE
#define VQCJ_MCU_ONCE
namespace vqcj {

using McuRgb = SrcPix<3, 0, 1, 2>;
using McuBgr = SrcPix<3, 2, 1, 0>;
using McuCmyk = SrcPix<4, 0, 1, 2, true>;
using McuBgr555 = SrcPacked<false, true>;
using McuBgr565 = SrcPacked<true, true>;
using McuToRgb = DstPix<3, 0, 1, 2>;
using McuToBgr = DstPix<3, 2, 1, 0>;
using McuToCmyk = DstPix<4, 0, 1, 2, true>;
using McuToBgr555 = DstPacked<false, true>;
using McuToBgr565 = DstPacked<true, true>;

// The forms, in the order of the routine tables below. 444, 422 and 411
// stand in that order within each group of three.
enum McuFwdForm {
    kFwdRgb,
    kFwdBgr = kFwdRgb + 3,
    kFwdBgr555 = kFwdBgr + 3,
    kFwdBgr565 = kFwdBgr555 + 3,
    kFwdCmyk = kFwdBgr565 + 3,
    kFwdSample = kFwdCmyk + 3,
    kFwdSplit422 = kFwdSample + 3,
};
enum McuInvForm {
    kInvRgb,
    kInvBgr = kInvRgb + 3,
    kInvBgr555 = kInvBgr + 3,
    kInvBgr565 = kInvBgr555 + 3,
    kInvCmyk = kInvBgr565 + 3,
    kInvSample = kInvCmyk + 3,
    kInvJoin422 = kInvSample + 3,
};

// Sampling of a form: 0, 1, 2 for 444, 422, 411.
constexpr int kMcuH[3] = {1, 2, 2}, kMcuV[3] = {1, 1, 2};

}  // namespace vqcj
#endif

HWY_BEFORE_NAMESPACE();
namespace vqcj::HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

#if VQCJ_SIMD_BASELINE
// The baseline target runs the plain routines.
template <class Src, class Arith, int S, bool Ink = false>
void mcuFwd(const void* pSrc, int32_t srcStep, Vqc16s* const* pDst) {
    ownMcuFwdPlain<Src, Arith, kMcuH[S], kMcuV[S], Ink>(static_cast<typename Src::Elem*>(pSrc), srcStep, pDst);
}
template <class Arith, class Dst, int S, bool Ink = false>
void mcuInv(const Vqc16s* const* pSrc, void* pDst, int32_t dstStep) {
    ownMcuInvPlain<Arith, Dst, kMcuH[S], kMcuV[S], Ink>(pSrc, static_cast<typename Dst::Elem*>(pDst), dstStep);
}
#else
// ---- Vector kernels ----------------------------------------------------------
//
// One block row (8 pixels, 8 values) is one vector of 8 16-bit lanes on every
// target; chroma sums and products that need more than 16 bits run on two
// vectors of 4 32-bit lanes, where the arithmetic is the documented one as
// it stands.

using D8 = hn::FixedTag<uint8_t, 8>;
using D16 = hn::FixedTag<int16_t, 8>;
using DU16 = hn::FixedTag<uint16_t, 8>;
using D32 = hn::FixedTag<int32_t, 4>;
using V16 = hn::Vec<D16>;
using V32 = hn::Vec<D32>;

HWY_INLINE V16 widen(hn::Vec<D8> v) { return hn::BitCast(D16(), hn::PromoteTo(DU16(), v)); }
HWY_INLINE V32 lowerHalf32(V16 v) { return hn::PromoteTo(D32(), hn::LowerHalf(v)); }
HWY_INLINE V32 upperHalf32(V16 v) { return hn::PromoteTo(D32(), hn::UpperHalf(hn::Half<D16>(), v)); }
HWY_INLINE V16 narrow(V32 lo, V32 hi) {
    const hn::Half<D16> dh;
    return hn::Combine(D16(), hn::DemoteTo(dh, hi), hn::DemoteTo(dh, lo));
}

// Eight pixels of a row as R, G, B (or Y, Cb, Cr) and K, values 0..255.
struct Px8 {
    V16 a, b, c, k;
};

template <class Src>
HWY_INLINE Px8 loadPixels(typename Src::Elem* p) {
    const D8 d8;
    const DU16 du;
    hn::Vec<D8> v0, v1, v2, v3;
    if constexpr (std::is_same_v<Src, McuRgb> || std::is_same_v<Src, McuBgr>) {
        hn::LoadInterleaved3(d8, p, v0, v1, v2);
        if constexpr (std::is_same_v<Src, McuBgr>) std::swap(v0, v2);
        return {widen(v0), widen(v1), widen(v2), V16()};
    } else if constexpr (std::is_same_v<Src, McuCmyk>) {
        hn::LoadInterleaved4(d8, p, v0, v1, v2, v3);
        const auto ink = hn::Set(d8, 255);
        return {widen(hn::Sub(ink, v0)), widen(hn::Sub(ink, v1)), widen(hn::Sub(ink, v2)), widen(v3)};
    } else {
        constexpr bool is565 = std::is_same_v<Src, McuBgr565>;
        const auto w = hn::LoadU(du, p);
        const auto five = hn::Set(du, 31);
        const auto r = hn::ShiftLeft<3>(hn::And(hn::ShiftRight<is565 ? 11 : 10>(w), five));
        const auto g = is565 ? hn::ShiftLeft<2>(hn::And(hn::ShiftRight<5>(w), hn::Set(du, 63)))
                             : hn::ShiftLeft<3>(hn::And(hn::ShiftRight<5>(w), five));
        const auto b = hn::ShiftLeft<3>(hn::And(w, five));
        return {hn::BitCast(D16(), r), hn::BitCast(D16(), g), hn::BitCast(D16(), b), V16()};
    }
}

// Bits 16..23 of wa a + wb b + wc c + k, on 16-bit lanes: the weights split
// into their high and low bytes, as in the colour family's scalar form.
template <uint32_t WA, uint32_t WB, uint32_t WC, uint32_t K>
HWY_INLINE V16 mid8(V16 a16, V16 b16, V16 c16) {
    const DU16 du;
    const auto a = hn::BitCast(du, a16), b = hn::BitCast(du, b16), c = hn::BitCast(du, c16);
    const auto hi = hn::Add(hn::Add(hn::Mul(a, hn::Set(du, WA >> 8)), hn::Mul(b, hn::Set(du, WB >> 8))),
                            hn::Add(hn::Mul(c, hn::Set(du, WC >> 8)), hn::Set(du, K >> 8)));
    const auto lo = hn::Add(hn::Add(hn::Mul(a, hn::Set(du, WA & 255)), hn::Mul(b, hn::Set(du, WB & 255))),
                            hn::Add(hn::Mul(c, hn::Set(du, WC & 255)), hn::Set(du, K & 255)));
    return hn::BitCast(D16(), hn::ShiftRight<8>(hn::Add(hi, hn::ShiftRight<8>(lo))));
}

// Sums over the pixels of each chroma sample along a block row: the row
// itself for 444, pairs of lanes for 422/411 (4 sums from 8 pixels).
template <int H>
HWY_INLINE V32 pairSums(V16 v, bool upper) {
    if constexpr (H == 1) {
        return upper ? upperHalf32(v) : lowerHalf32(v);
    } else {
        (void)upper;
        const auto w = hn::BitCast(D32(), v);
        return hn::Add(hn::And(w, hn::Set(D32(), 0xFFFF)), hn::ShiftRight<16>(w));
    }
}

template <class Arith, int L>
HWY_INLINE void chroma8(const V32 (&s)[3][2], Vqc16s* cb, Vqc16s* cr) {
    const D32 d;
    V32 vb[2], vr[2];
    for (int h = 0; h < 2; ++h) {
        if constexpr (std::is_same_v<Arith, McuFwdColour>) {
            const auto rnd = hn::Set(d, 1 << (15 + L));
            const auto r = s[0][h], g = s[1][h], b = s[2][h];
            vb[h] = hn::ShiftRight<16 + L>(hn::Add(hn::Sub(hn::ShiftLeft<15>(b), hn::Add(hn::Mul(g, hn::Set(d, kWeightCbG)),
                                                                                         hn::Mul(r, hn::Set(d, kWeightCbR)))),
                                                   rnd));
            vr[h] = hn::ShiftRight<16 + L>(hn::Add(hn::Sub(hn::ShiftLeft<15>(r), hn::Add(hn::Mul(g, hn::Set(d, kWeightCrG)),
                                                                                         hn::Mul(b, hn::Set(d, kWeightCrB)))),
                                                   rnd));
        } else {
            const auto rnd = hn::Set(d, 1 << L >> 1), k128 = hn::Set(d, 128);
            vb[h] = hn::Sub(hn::ShiftRight<L>(hn::Add(s[1][h], rnd)), k128);
            vr[h] = hn::Sub(hn::ShiftRight<L>(hn::Add(s[2][h], rnd)), k128);
        }
    }
    hn::StoreU(narrow(vb[0], vb[1]), D16(), cb);
    hn::StoreU(narrow(vr[0], vr[1]), D16(), cr);
}

template <class Src, class Arith, int S, bool Ink = false>
void mcuFwd(const void* pSrcV, int32_t srcStep, Vqc16s* const* pDst) {
    constexpr int H = kMcuH[S], V = kMcuV[S], L = (H - 1) + (V - 1);
    using Elem = typename Src::Elem;
    Elem* pSrc = static_cast<Elem*>(pSrcV);
    if constexpr (std::is_same_v<Src, McuSrcPairs>) {
        // Y0 Cb Y1 Cr: eight pairs a vector; the Y of a row re-interleaved.
        const D8 d8;
        const D16 d;
        const auto k128 = hn::Set(d, 128);
        for (int y = 0; y < 8; ++y) {
            hn::Vec<D8> y0, cb, y1, cr;
            hn::LoadInterleaved4(d8, rowAt(pSrc, srcStep, y), y0, cb, y1, cr);
            hn::StoreU(hn::Sub(widen(hn::InterleaveLower(d8, y0, y1)), k128), d, pDst[0] + 8 * y);
            hn::StoreU(hn::Sub(widen(hn::InterleaveUpper(d8, y0, y1)), k128), d, pDst[0] + 64 + 8 * y);
            hn::StoreU(hn::Sub(widen(cb), k128), d, pDst[1] + 8 * y);
            hn::StoreU(hn::Sub(widen(cr), k128), d, pDst[2] + 8 * y);
        }
    } else {
        const D16 d;
        const auto k128 = hn::Set(d, 128);
        constexpr int kBpp = sizeof(Elem) == 2 ? 1 : Ink ? 4 : 3;  // elements per pixel
        for (int cy = 0; cy < 8; ++cy) {
            V32 s[3][2];
            for (int dy = 0; dy < V; ++dy) {
                const int y = V * cy + dy;
                Elem* row = rowAt(pSrc, srcStep, y);
                for (int bx = 0; bx < H; ++bx) {
                    const Px8 p = loadPixels<Src>(row + 8 * kBpp * bx);
                    const int at = ownMcuLumaAt<H>(8 * bx, y);
                    if constexpr (std::is_same_v<Arith, McuFwdColour>)
                        hn::StoreU(hn::Sub(mid8<kWeightYR, kWeightYG, kWeightYB, 32768>(p.a, p.b, p.c), k128), d,
                                   pDst[0] + at);
                    else
                        hn::StoreU(hn::Sub(p.a, k128), d, pDst[0] + at);
                    if constexpr (Ink) hn::StoreU(hn::Sub(p.k, k128), d, pDst[3] + at);
                    // The half of the chroma row this block row feeds (422/411),
                    // or both halves (444).
                    const V16 ch[3] = {p.a, p.b, p.c};
                    for (int c = 0; c < 3; ++c)
                        for (int h = 0; h < 2; ++h) {
                            if (H == 2 && h != bx) continue;
                            const V32 v = pairSums<H>(ch[c], h == 1);
                            s[c][h] = dy == 0 ? v : hn::Add(s[c][h], v);
                        }
                }
            }
            chroma8<Arith, L>(s, pDst[1] + 8 * cy, pDst[2] + 8 * cy);
        }
    }
}

// Chroma terms of a row of 8 samples (Cb, Cr as bytes 0..255): what each
// channel adds to Y, by the multiplication arithmetic, or the samples
// themselves.
template <class Arith>
HWY_INLINE void terms8(V16 cb, V16 cr, V16 (&t)[3]) {
    if constexpr (std::is_same_v<Arith, InvMul>) {
        const D32 d;
        V32 r[2], g[2], b[2];
        for (int h = 0; h < 2; ++h) {
            const V32 vb = h ? upperHalf32(cb) : lowerHalf32(cb), vr = h ? upperHalf32(cr) : lowerHalf32(cr);
            r[h] = hn::ShiftRight<16>(hn::Add(hn::Mul(vr, hn::Set(d, 91880)), hn::Set(d, -11727880)));
            g[h] = hn::ShiftRight<16>(hn::Add(hn::Add(hn::Mul(vb, hn::Set(d, -22553)), hn::Mul(vr, hn::Set(d, -46801))),
                                              hn::Set(d, 8910128)));
            b[h] = hn::ShiftRight<16>(hn::Add(hn::Mul(vb, hn::Set(d, 116128)), hn::Set(d, -14831618)));
        }
        t[0] = narrow(r[0], r[1]), t[1] = narrow(g[0], g[1]), t[2] = narrow(b[0], b[1]);
    } else {
        t[0] = hn::Zero(D16()), t[1] = cb, t[2] = cr;
    }
}

// Clamped to -128..127 and shifted to 0..255.
HWY_INLINE V16 loadByte(const Vqc16s* p) {
    const D16 d;
    return hn::Add(hn::Min(hn::Max(hn::LoadU(d, p), hn::Set(d, -128)), hn::Set(d, 127)), hn::Set(d, 128));
}

template <class Dst>
HWY_INLINE void storePixels(typename Dst::Elem* p, V16 r, V16 g, V16 b, V16 k) {
    const D8 d8;
    const DU16 du;
    if constexpr (std::is_same_v<Dst, McuToRgb> || std::is_same_v<Dst, McuToBgr>) {
        if constexpr (std::is_same_v<Dst, McuToBgr>) std::swap(r, b);
        hn::StoreInterleaved3(hn::DemoteTo(d8, r), hn::DemoteTo(d8, g), hn::DemoteTo(d8, b), d8, p);
    } else if constexpr (std::is_same_v<Dst, McuToCmyk>) {
        const auto ink = hn::Set(d8, 255);
        hn::StoreInterleaved4(hn::Sub(ink, hn::DemoteTo(d8, r)), hn::Sub(ink, hn::DemoteTo(d8, g)),
                              hn::Sub(ink, hn::DemoteTo(d8, b)), hn::DemoteTo(d8, k), d8, p);
    } else {
        constexpr bool is565 = std::is_same_v<Dst, McuToBgr565>;
        const auto sat = [du](V16 v) {
            return hn::BitCast(du, hn::Min(hn::Max(v, hn::Zero(D16())), hn::Set(D16(), 255)));
        };
        const auto f8 = hn::Set(du, 0xF8);
        const auto hi = hn::ShiftLeft<is565 ? 8 : 7>(hn::And(sat(r), f8));
        const auto mid = is565 ? hn::ShiftLeft<3>(hn::And(sat(g), hn::Set(du, 0xFC))) : hn::ShiftLeft<2>(hn::And(sat(g), f8));
        hn::StoreU(hn::Or(hn::Or(hi, mid), hn::ShiftRight<3>(sat(b))), du, p);
    }
}

template <class Arith, class Dst, int S, bool Ink = false>
void mcuInv(const Vqc16s* const* pSrc, void* pDstV, int32_t dstStep) {
    constexpr int H = kMcuH[S], V = kMcuV[S];
    using Elem = typename Dst::Elem;
    Elem* pDst = static_cast<Elem*>(pDstV);
    if constexpr (std::is_same_v<Dst, McuDstPairs>) {
        // The even and odd pixels of a row become Y0 and Y1 of the pairs.
        const D8 d8;
        const D16 d;
        for (int y = 0; y < 8; ++y) {
            const V16 left = loadByte(pSrc[0] + 8 * y), right = loadByte(pSrc[0] + 64 + 8 * y);
            hn::StoreInterleaved4(hn::DemoteTo(d8, hn::ConcatEven(d, right, left)), hn::DemoteTo(d8, loadByte(pSrc[1] + 8 * y)),
                                  hn::DemoteTo(d8, hn::ConcatOdd(d, right, left)), hn::DemoteTo(d8, loadByte(pSrc[2] + 8 * y)),
                                  d8, rowAt(pDst, dstStep, y));
        }
    } else {
        const D16 d;
        constexpr int kBpp = sizeof(Elem) == 2 ? 1 : Ink ? 4 : 3;
        for (int cy = 0; cy < 8; ++cy) {
            V16 t[3];
            terms8<Arith>(loadByte(pSrc[1] + 8 * cy), loadByte(pSrc[2] + 8 * cy), t);
            V16 tb[2][3];  // the terms of each block row's 8 pixels
            for (int c = 0; c < 3; ++c) {
                if constexpr (H == 1) {
                    tb[0][c] = t[c];
                } else {
                    tb[0][c] = hn::InterleaveLower(d, t[c], t[c]);
                    tb[1][c] = hn::InterleaveUpper(d, t[c], t[c]);
                }
            }
            for (int dy = 0; dy < V; ++dy) {
                const int y = V * cy + dy;
                Elem* row = rowAt(pDst, dstStep, y);
                for (int bx = 0; bx < H; ++bx) {
                    const int at = ownMcuLumaAt<H>(8 * bx, y);
                    const V16 luma = loadByte(pSrc[0] + at);
                    const V16 k = Ink ? loadByte(pSrc[3] + at) : V16();
                    const auto& tt = tb[bx];
                    if constexpr (std::is_same_v<Arith, InvMul>)
                        storePixels<Dst>(row + 8 * kBpp * bx, hn::Add(luma, tt[0]), hn::Add(luma, tt[1]),
                                         hn::Add(luma, tt[2]), k);
                    else
                        storePixels<Dst>(row + 8 * kBpp * bx, luma, tt[1], tt[2], k);
                }
            }
        }
    }
}

#endif  // VQCJ_SIMD_BASELINE

using FwdFn = void (*)(const void*, int32_t, Vqc16s* const*);
using InvFn = void (*)(const Vqc16s* const*, void*, int32_t);

#define VQCJ_MCU_THREE(f, ...) f<__VA_ARGS__, 0>, f<__VA_ARGS__, 1>, f<__VA_ARGS__, 2>
constexpr FwdFn kFwdTable[] = {
    VQCJ_MCU_THREE(mcuFwd, McuRgb, McuFwdColour),    VQCJ_MCU_THREE(mcuFwd, McuBgr, McuFwdColour),
    VQCJ_MCU_THREE(mcuFwd, McuBgr555, McuFwdColour), VQCJ_MCU_THREE(mcuFwd, McuBgr565, McuFwdColour),
    mcuFwd<McuCmyk, McuFwdColour, 0, true>,           mcuFwd<McuCmyk, McuFwdColour, 1, true>,
    mcuFwd<McuCmyk, McuFwdColour, 2, true>,           VQCJ_MCU_THREE(mcuFwd, McuRgb, McuFwdSample),
    mcuFwd<McuSrcPairs, McuFwdSample, 1>,
};
constexpr InvFn kInvTable[] = {
    VQCJ_MCU_THREE(mcuInv, InvMul, McuToRgb),    VQCJ_MCU_THREE(mcuInv, InvMul, McuToBgr),
    VQCJ_MCU_THREE(mcuInv, InvMul, McuToBgr555), VQCJ_MCU_THREE(mcuInv, InvMul, McuToBgr565),
    mcuInv<InvMul, McuToCmyk, 0, true>,           mcuInv<InvMul, McuToCmyk, 1, true>,
    mcuInv<InvMul, McuToCmyk, 2, true>,           VQCJ_MCU_THREE(mcuInv, McuInvSample, McuToRgb),
    mcuInv<McuInvSample, McuDstPairs, 1>,
};
#undef VQCJ_MCU_THREE
static_assert(sizeof kFwdTable / sizeof kFwdTable[0] == kFwdSplit422 + 1);
static_assert(sizeof kInvTable / sizeof kInvTable[0] == kInvJoin422 + 1);

void McuFwd(int form, const void* pSrc, int32_t srcStep, Vqc16s* const* pDst) {
    kFwdTable[form](pSrc, srcStep, pDst);
}
void McuInv(int form, const Vqc16s* const* pSrc, void* pDst, int32_t dstStep) {
    kInvTable[form](pSrc, pDst, dstStep);
}

}  // namespace vqcj::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace vqcj {

HWY_EXPORT(McuFwd);
HWY_EXPORT(McuInv);

namespace {

// The pixel pointer, the block pointer array and each entry, then the step.
template <int N, class T>
VqcStatus checkedFwd(int form, const T* pSrc, int32_t srcStep, Vqc16s* const* pDstMCU) {
    if (VqcStatus st = Check().ptr(pSrc).ptrs(pDstMCU, N).step(srcStep)) return st;
    VQCJ_DISPATCH(McuFwd)(form, pSrc, srcStep, pDstMCU);
    return vqcStatusOk;
}

template <int N, class T>
VqcStatus checkedInv(int form, const Vqc16s* const* pSrcMCU, T* pDst, int32_t dstStep) {
    if (VqcStatus st = Check().ptr(pDst).ptrs(pSrcMCU, N).step(dstStep)) return st;
    VQCJ_DISPATCH(McuInv)(form, pSrcMCU, pDst, dstStep);
    return vqcStatusOk;
}

}  // namespace
}  // namespace vqcj

using namespace vqcj;

#define VQCJ_MCU_FWD(name, T, N, form)                                                          \
    VQCJ_API VqcStatus name(const T* pSrc, int32_t srcStep, Vqc16s* const pDstMCU[N]) {         \
        return checkedFwd<N>(form, pSrc, srcStep, pDstMCU);                                         \
    }
#define VQCJ_MCU_INV(name, T, N, form)                                                          \
    VQCJ_API VqcStatus name(const Vqc16s* const pSrcMCU[N], T* pDst, int32_t dstStep) {         \
        return checkedInv<N>(form, pSrcMCU, pDst, dstStep);                                         \
    }

extern "C" {

VQCJ_MCU_FWD(vqciRGBToYCbCr444LS_MCU_8u16s_C3P3R, Vqc8u, 3, kFwdRgb)
VQCJ_MCU_FWD(vqciRGBToYCbCr422LS_MCU_8u16s_C3P3R, Vqc8u, 3, kFwdRgb + 1)
VQCJ_MCU_FWD(vqciRGBToYCbCr411LS_MCU_8u16s_C3P3R, Vqc8u, 3, kFwdRgb + 2)
VQCJ_MCU_FWD(vqciBGRToYCbCr444LS_MCU_8u16s_C3P3R, Vqc8u, 3, kFwdBgr)
VQCJ_MCU_FWD(vqciBGRToYCbCr422LS_MCU_8u16s_C3P3R, Vqc8u, 3, kFwdBgr + 1)
VQCJ_MCU_FWD(vqciBGRToYCbCr411LS_MCU_8u16s_C3P3R, Vqc8u, 3, kFwdBgr + 2)
VQCJ_MCU_FWD(vqciBGR555ToYCbCr444LS_MCU_16u16s_C3P3R, Vqc16u, 3, kFwdBgr555)
VQCJ_MCU_FWD(vqciBGR555ToYCbCr422LS_MCU_16u16s_C3P3R, Vqc16u, 3, kFwdBgr555 + 1)
VQCJ_MCU_FWD(vqciBGR555ToYCbCr411LS_MCU_16u16s_C3P3R, Vqc16u, 3, kFwdBgr555 + 2)
VQCJ_MCU_FWD(vqciBGR565ToYCbCr444LS_MCU_16u16s_C3P3R, Vqc16u, 3, kFwdBgr565)
VQCJ_MCU_FWD(vqciBGR565ToYCbCr422LS_MCU_16u16s_C3P3R, Vqc16u, 3, kFwdBgr565 + 1)
VQCJ_MCU_FWD(vqciBGR565ToYCbCr411LS_MCU_16u16s_C3P3R, Vqc16u, 3, kFwdBgr565 + 2)
VQCJ_MCU_FWD(vqciCMYKToYCCK444LS_MCU_8u16s_C4P4R, Vqc8u, 4, kFwdCmyk)
VQCJ_MCU_FWD(vqciCMYKToYCCK422LS_MCU_8u16s_C4P4R, Vqc8u, 4, kFwdCmyk + 1)
VQCJ_MCU_FWD(vqciCMYKToYCCK411LS_MCU_8u16s_C4P4R, Vqc8u, 4, kFwdCmyk + 2)
VQCJ_MCU_FWD(vqciSampleDown444LS_MCU_8u16s_C3P3R, Vqc8u, 3, kFwdSample)
VQCJ_MCU_FWD(vqciSampleDown422LS_MCU_8u16s_C3P3R, Vqc8u, 3, kFwdSample + 1)
VQCJ_MCU_FWD(vqciSampleDown411LS_MCU_8u16s_C3P3R, Vqc8u, 3, kFwdSample + 2)
VQCJ_MCU_FWD(vqciSplit422LS_MCU_8u16s_C2P3R, Vqc8u, 3, kFwdSplit422)

VQCJ_MCU_INV(vqciYCbCr444ToRGBLS_MCU_16s8u_P3C3R, Vqc8u, 3, kInvRgb)
VQCJ_MCU_INV(vqciYCbCr422ToRGBLS_MCU_16s8u_P3C3R, Vqc8u, 3, kInvRgb + 1)
VQCJ_MCU_INV(vqciYCbCr411ToRGBLS_MCU_16s8u_P3C3R, Vqc8u, 3, kInvRgb + 2)
VQCJ_MCU_INV(vqciYCbCr444ToBGRLS_MCU_16s8u_P3C3R, Vqc8u, 3, kInvBgr)
VQCJ_MCU_INV(vqciYCbCr422ToBGRLS_MCU_16s8u_P3C3R, Vqc8u, 3, kInvBgr + 1)
VQCJ_MCU_INV(vqciYCbCr411ToBGRLS_MCU_16s8u_P3C3R, Vqc8u, 3, kInvBgr + 2)
VQCJ_MCU_INV(vqciYCbCr444ToBGR555LS_MCU_16s16u_P3C3R, Vqc16u, 3, kInvBgr555)
VQCJ_MCU_INV(vqciYCbCr422ToBGR555LS_MCU_16s16u_P3C3R, Vqc16u, 3, kInvBgr555 + 1)
VQCJ_MCU_INV(vqciYCbCr411ToBGR555LS_MCU_16s16u_P3C3R, Vqc16u, 3, kInvBgr555 + 2)
VQCJ_MCU_INV(vqciYCbCr444ToBGR565LS_MCU_16s16u_P3C3R, Vqc16u, 3, kInvBgr565)
VQCJ_MCU_INV(vqciYCbCr422ToBGR565LS_MCU_16s16u_P3C3R, Vqc16u, 3, kInvBgr565 + 1)
VQCJ_MCU_INV(vqciYCbCr411ToBGR565LS_MCU_16s16u_P3C3R, Vqc16u, 3, kInvBgr565 + 2)
VQCJ_MCU_INV(vqciYCCK444ToCMYKLS_MCU_16s8u_P4C4R, Vqc8u, 4, kInvCmyk)
VQCJ_MCU_INV(vqciYCCK422ToCMYKLS_MCU_16s8u_P4C4R, Vqc8u, 4, kInvCmyk + 1)
VQCJ_MCU_INV(vqciYCCK411ToCMYKLS_MCU_16s8u_P4C4R, Vqc8u, 4, kInvCmyk + 2)
VQCJ_MCU_INV(vqciSampleUp444LS_MCU_16s8u_P3C3R, Vqc8u, 3, kInvSample)
VQCJ_MCU_INV(vqciSampleUp422LS_MCU_16s8u_P3C3R, Vqc8u, 3, kInvSample + 1)
VQCJ_MCU_INV(vqciSampleUp411LS_MCU_16s8u_P3C3R, Vqc8u, 3, kInvSample + 2)
VQCJ_MCU_INV(vqciJoin422LS_MCU_16s8u_P3C2R, Vqc8u, 3, kInvJoin422)

}  // extern "C"
#endif  // HWY_ONCE
