// MCU conversion exports: one kernel source compiled for every SIMD target.
// Each export names a form (layout, arithmetic, sampling); the dispatched
// entry points pick the form's routine from a table, once per MCU.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "jpeg/mcu/mcu.cpp"
#include <hwy/foreach_target.h>  // must come before highway.h
#include <hwy/highway.h>

#include "frame/check.h"
#include "frame/simd.h"
#include "frame/simdops.h"
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

// 16-bit lanes of the kernels' vectors at most (512 bits).
constexpr int kMcuLanes = 32;

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
// Vectors hold kR = 1, 2 or 4 blocks of 128 bits (SSE, AVX2, AVX-512). The
// MCU is cut into runs of 8 pixels, one row of one block. A byte vector holds
// 16 pixels (two runs) in each of its blocks, so that interleaving and
// de-interleaving stay inside blocks (byte shuffles); a vector of 16-bit
// lanes holds one run in each block.
//
// Forward: 444 widens the bytes of the two runs of a block separately. 422
// and 411 take a row of 16 pixels a block and split each channel's bytes
// into even and odd pixels as 16-bit lanes: luma is computed on both and
// re-interleaved (the lower half of each block giving its first run, the
// upper half its second), and even plus odd is the sum over a pair, which
// 411 adds up over an even and an odd row; chroma then comes from the sums
// at its own rate.
//
// Inverse: the chroma terms of each pixel (422 and 411: of the whole MCU
// first, each sample's repeated over its pixels by interleaving), added to
// luma with saturation; the channels are paired into bytes and shuffled
// into pixels within blocks.
//
// The kernels' own tags, in a namespace of their own, hide the shared ones.
namespace {

using D16 = hn::CappedTag<int16_t, kMcuLanes>;
using DU16 = hn::RebindToUnsigned<D16>;
using D32 = hn::Repartition<int32_t, D16>;
using D8 = hn::Repartition<uint8_t, D16>;
using DB8 = hn::Full128<uint8_t>;  // one block of bytes
using V16 = hn::Vec<D16>;
using VU16 = hn::Vec<DU16>;
using V8 = hn::Vec<D8>;
using VB8 = hn::Vec<DB8>;
constexpr int kR = static_cast<int>(hn::MaxLanes(D16())) / 8;
static_assert(kR == 1 || kR == 2 || kR == 4);

// Runs of 8 values, run k at p + off(k); stored, one access where they are
// contiguous (Step 8).
template <class Off>
HWY_INLINE V16 loadRuns(const int16_t* p, Off off) {
    return FromBlocks(D16(), [&](auto db, int k) { return hn::LoadU(db, p + off(k)); });
}
template <int Step, class T>
HWY_INLINE void storeRuns(hn::Vec<hn::Repartition<T, D16>> v, T* p) {
    if constexpr (Step == 8 || kR == 1) {
        hn::StoreU(v, hn::Repartition<T, D16>(), p);
    } else {
        for (int k = 0; k < kR; ++k) hn::StoreU(BlockOf(v, k), hn::Full128<T>(), p + k * Step);
    }
}

// ---- Forward -------------------------------------------------------------

// Channels a, b, c, k (R, G, B, K or Y, Cb, Cr) of the pixels of a step,
// 0..255 in 16-bit lanes, as two sets: the even and the odd pixels (Pairs),
// or the first and the second run of each block.
struct Px {
    V16 s[2][4];
};

template <bool Pairs>
HWY_INLINE void splitBytes(V8 v, V16& first, V16& second) {
    const D8 d8;
    const DU16 du;
    if constexpr (Pairs) {
        const VU16 w = hn::BitCast(du, v);
        first = hn::BitCast(D16(), hn::And(w, hn::Set(DU16(), 255)));
        second = hn::BitCast(D16(), hn::ShiftRight<8>(w));
    } else {
        first = hn::BitCast(D16(), hn::InterleaveLower(d8, v, hn::Zero(d8)));
        second = hn::BitCast(D16(), hn::InterleaveUpper(d8, v, hn::Zero(d8)));
    }
}

// 48 bytes of 16 RGB pixels in each block (A, B, C hold bytes 0..15, 16..31,
// 32..47) to three byte vectors, within blocks.
HWY_INLINE void deinterleave3(V8 A, V8 B, V8 C, V8 (&v)[3]) {
    const D8 d;
    constexpr uint8_t Z = 0x80;
    static constexpr Table kIdx[3][3] = {
        {ownTable({0, 3, 6, 9, 12, 15, Z, Z, Z, Z, Z, Z, Z, Z, Z, Z}),
         ownTable({Z, Z, Z, Z, Z, Z, 2, 5, 8, 11, 14, Z, Z, Z, Z, Z}),
         ownTable({Z, Z, Z, Z, Z, Z, Z, Z, Z, Z, Z, 1, 4, 7, 10, 13})},
        {ownTable({1, 4, 7, 10, 13, Z, Z, Z, Z, Z, Z, Z, Z, Z, Z, Z}),
         ownTable({Z, Z, Z, Z, Z, 0, 3, 6, 9, 12, 15, Z, Z, Z, Z, Z}),
         ownTable({Z, Z, Z, Z, Z, Z, Z, Z, Z, Z, Z, 2, 5, 8, 11, 14})},
        {ownTable({2, 5, 8, 11, 14, Z, Z, Z, Z, Z, Z, Z, Z, Z, Z, Z}),
         ownTable({Z, Z, Z, Z, Z, 1, 4, 7, 10, 13, Z, Z, Z, Z, Z, Z}),
         ownTable({Z, Z, Z, Z, Z, Z, Z, Z, Z, Z, 0, 3, 6, 9, 12, 15})}};
    for (int c = 0; c < 3; ++c)
        v[c] = hn::Xor3(hn::TableLookupBytesOr0(A, hn::Load(d, kIdx[c][0].v)),
                        hn::TableLookupBytesOr0(B, hn::Load(d, kIdx[c][1].v)),
                        hn::TableLookupBytesOr0(C, hn::Load(d, kIdx[c][2].v)));
}

// Lanes of type T of v0 and v1, of v2 and v3 interleaved, and the results
// again in lanes twice as wide, within blocks: a 4 x 4 transpose of T lanes.
template <class T>
HWY_INLINE void transpose4(V8 v0, V8 v1, V8 v2, V8 v3, V8 (&out)[4]) {
    const hn::Repartition<T, D8> d;
    const hn::RepartitionToWide<decltype(d)> dw;
    const auto lo01 = hn::BitCast(dw, hn::InterleaveLower(d, hn::BitCast(d, v0), hn::BitCast(d, v1)));
    const auto hi01 = hn::BitCast(dw, hn::InterleaveUpper(d, hn::BitCast(d, v0), hn::BitCast(d, v1)));
    const auto lo23 = hn::BitCast(dw, hn::InterleaveLower(d, hn::BitCast(d, v2), hn::BitCast(d, v3)));
    const auto hi23 = hn::BitCast(dw, hn::InterleaveUpper(d, hn::BitCast(d, v2), hn::BitCast(d, v3)));
    out[0] = hn::BitCast(D8(), hn::InterleaveLower(dw, lo01, lo23));
    out[1] = hn::BitCast(D8(), hn::InterleaveUpper(dw, lo01, lo23));
    out[2] = hn::BitCast(D8(), hn::InterleaveLower(dw, hi01, hi23));
    out[3] = hn::BitCast(D8(), hn::InterleaveUpper(dw, hi01, hi23));
}

// 64 bytes of 16 four-byte pixels in each block (A..D: 4 pixels each) to
// four byte vectors: gather each channel into 32 bits, then transpose.
HWY_INLINE void deinterleave4(V8 A, V8 B, V8 C, V8 D, V8 (&v)[4]) {
    static constexpr Table kGather = ownTable({0, 4, 8, 12, 1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15});
    const V8 g = hn::Load(D8(), kGather.v);
    transpose4<uint32_t>(hn::TableLookupBytes(A, g), hn::TableLookupBytes(B, g), hn::TableLookupBytes(C, g),
                         hn::TableLookupBytes(D, g), v);
}

// The pixels of one step: block k holds the run at p + k * block, then the
// run `second` bytes after it. Pairs: the second run directly follows (a row
// of 16 pixels), and the sets are its even and odd pixels.
template <class Src, bool Pairs>
HWY_INLINE Px loadPx(const uint8_t* p, ptrdiff_t block, ptrdiff_t second) {
    const D8 d;
    Px px;
    const auto at = [&](auto db, int k, ptrdiff_t off) { return hn::LoadU(db, p + k * block + off); };
    if constexpr (std::is_same_v<Src, McuRgb> || std::is_same_v<Src, McuBgr>) {
        V8 v[3];
        const V8 B = FromBlocks(d, [&](auto db, int k) {
            if constexpr (Pairs) {
                return at(db, k, 16);
            } else {
                const hn::Half<decltype(db)> dq;
                return hn::Combine(db, at(dq, k, second), at(dq, k, 16));
            }
        });
        deinterleave3(FromBlocks(d, [&](auto db, int k) { return at(db, k, 0); }), B,
                      FromBlocks(d, [&](auto db, int k) { return at(db, k, second + 8); }), v);
        if constexpr (std::is_same_v<Src, McuBgr>) std::swap(v[0], v[2]);
        for (int c = 0; c < 3; ++c) splitBytes<Pairs>(v[c], px.s[0][c], px.s[1][c]);
    } else if constexpr (std::is_same_v<Src, McuCmyk>) {
        V8 v[4];
        deinterleave4(FromBlocks(d, [&](auto db, int k) { return at(db, k, 0); }),
                      FromBlocks(d, [&](auto db, int k) { return at(db, k, 16); }),
                      FromBlocks(d, [&](auto db, int k) { return at(db, k, second); }),
                      FromBlocks(d, [&](auto db, int k) { return at(db, k, second + 16); }), v);
        for (int c = 0; c < 3; ++c) v[c] = hn::Sub(hn::Set(D8(), 255), v[c]);
        for (int c = 0; c < 4; ++c) splitBytes<Pairs>(v[c], px.s[0][c], px.s[1][c]);
    } else {
        // Words: the fields of each run; even and odd pixels are the halves
        // of 32-bit lanes, packed back within blocks (first run's four, then
        // the second run's).
        constexpr bool is565 = std::is_same_v<Src, McuBgr565>;
        const DU16 du;
        const hn::Repartition<uint32_t, D16> du32;
        const D32 d32;
        VU16 f[2][3];
        for (int r = 0; r < 2; ++r) {
            const VU16 w = FromBlocks(du, [&](auto db, int k) {
                return hn::LoadU(db, reinterpret_cast<const uint16_t*>(p + k * block + (r ? second : 0)));
            });
            const VU16 five = hn::Set(du, 31);
            f[r][0] = hn::ShiftLeft<3>(hn::And(hn::ShiftRight<is565 ? 11 : 10>(w), five));
            f[r][1] = is565 ? hn::ShiftLeft<2>(hn::And(hn::ShiftRight<5>(w), hn::Set(du, 63)))
                            : hn::ShiftLeft<3>(hn::And(hn::ShiftRight<5>(w), five));
            f[r][2] = hn::ShiftLeft<3>(hn::And(w, five));
        }
        for (int c = 0; c < 3; ++c) {
            if constexpr (Pairs) {
                const auto w0 = hn::BitCast(du32, f[0][c]), w1 = hn::BitCast(du32, f[1][c]);
                const auto lo = hn::Set(du32, 0xFFFF);
                px.s[0][c] = hn::ReorderDemote2To(D16(), hn::BitCast(d32, hn::And(w0, lo)), hn::BitCast(d32, hn::And(w1, lo)));
                px.s[1][c] = hn::ReorderDemote2To(D16(), hn::BitCast(d32, hn::ShiftRight<16>(w0)),
                                                  hn::BitCast(d32, hn::ShiftRight<16>(w1)));
            } else {
                px.s[0][c] = hn::BitCast(D16(), f[0][c]), px.s[1][c] = hn::BitCast(D16(), f[1][c]);
            }
        }
    }
    return px;
}

// What chroma is computed from, which the colour luma shares: colour u = G -
// B and v = G - R (sums of which give Cb and Cr with weights that fit 16
// bits), samples Cb and Cr.
template <class Arith>
HWY_INLINE void chromaPair(const V16* ch, V16& x, V16& y) {
    if constexpr (std::is_same_v<Arith, McuFwdColour>) x = hn::Sub(ch[1], ch[2]), y = hn::Sub(ch[1], ch[0]);
    else x = ch[1], y = ch[2];
}

// Level-shifted luma of R, G, B with z = zip(u, v): 19595 R + 38470 G + 7471
// B = 65536 G - 7471 u - 19595 v, so Y = G + ((-7471 u - 19595 v + 32768 -
// 128 * 65536) >> 16) (|-7471 u - 19595 v| < 2^23).
template <class Arith>
HWY_INLINE V16 luma(const V16* ch, const Zip& z) {
    if constexpr (std::is_same_v<Arith, McuFwdColour>) {
        static_assert(kWeightYR + kWeightYG + kWeightYB == 65536);
        return hn::Add(ch[1], Dot<16, -int16_t(kWeightYB), -int16_t(kWeightYR), 32768 - (128 << 16)>(z));
    } else {
        (void)z;
        return hn::Sub(ch[0], hn::Set(D16(), 128));
    }
}

// Level-shifted chroma from x, y summed over 2^L pixels (at most 1020 in
// magnitude) and z = zip(x, y): Cb = 32768 B - 21709 G - 11059 R = -32768 u
// + 11059 v and Cr = 5329 u - 32768 v, or the average of the samples.
template <class Arith, int L>
HWY_INLINE void chroma(V16 x, V16 y, const Zip& z, V16& cb, V16& cr) {
    if constexpr (std::is_same_v<Arith, McuFwdColour>) {
        static_assert(kWeightChroma == 32768 && kWeightCbG == 32768 - 11059 && kWeightCrG == 32768 - 5329);
        (void)x, (void)y;
        cb = Dot<16 + L, -32768, int16_t(kWeightCbR), 1 << (15 + L)>(z);
        cr = Dot<16 + L, int16_t(kWeightCrB), -32768, 1 << (15 + L)>(z);
    } else {
        (void)z;
        const V16 rnd = hn::Set(D16(), (1 << L) / 2), k128 = hn::Set(D16(), 128);
        cb = hn::Sub(hn::ShiftRight<L>(hn::Add(x, rnd)), k128);
        cr = hn::Sub(hn::ShiftRight<L>(hn::Add(y, rnd)), k128);
    }
}

template <class Src, class Arith, int S, bool Ink = false>
void mcuFwd(const void* pSrcV, int32_t srcStep, Vqc16s* const* pDst) {
    constexpr int H = kMcuH[S], V = kMcuV[S], L = (H - 1) + (V - 1);
    const D16 d;
    if constexpr (std::is_same_v<Src, McuSrcPairs>) {
        // Y0 Cb Y1 Cr: eight pairs a vector; the Y of a row re-interleaved.
        const hn::FixedTag<uint8_t, 8> d8;
        const hn::FixedTag<int16_t, 8> d16;
        const hn::FixedTag<uint16_t, 8> du;
        const auto k128 = hn::Set(d16, 128);
        const auto widen = [&](auto v) { return hn::Sub(hn::BitCast(d16, hn::PromoteTo(du, v)), k128); };
        for (int y = 0; y < 8; ++y) {
            hn::Vec<decltype(d8)> y0, cb, y1, cr;
            hn::LoadInterleaved4(d8, rowAt(static_cast<const Vqc8u*>(pSrcV), srcStep, y), y0, cb, y1, cr);
            hn::StoreU(widen(hn::InterleaveLower(d8, y0, y1)), d16, pDst[0] + 8 * y);
            hn::StoreU(widen(hn::InterleaveUpper(d8, y0, y1)), d16, pDst[0] + 64 + 8 * y);
            hn::StoreU(widen(cb), d16, pDst[1] + 8 * y);
            hn::StoreU(widen(cr), d16, pDst[2] + 8 * y);
        }
    } else {
        const uint8_t* src = static_cast<const uint8_t*>(pSrcV);
        const ptrdiff_t step = srcStep;
        constexpr ptrdiff_t kRun = 8 * ptrdiff_t(sizeof(typename Src::Elem)) * (Ink ? 4 : sizeof(typename Src::Elem) == 2 ? 1 : 3);
        const V16 k128 = hn::Set(D16(), 128);
        if constexpr (H == 1) {
            // Block k: rows y0 + k and y0 + kR + k, kept as runs.
            for (int y0 = 0; y0 < 8; y0 += 2 * kR) {
                const Px px = loadPx<Src, false>(src + y0 * step, step, kR * step);
                for (int r = 0; r < 2; ++r) {
                    const V16* ch = px.s[r];
                    const int pos = 8 * (y0 + r * kR);
                    V16 x, y, cb, cr;
                    chromaPair<Arith>(ch, x, y);
                    const Zip z = ZipOf(x, y);
                    hn::StoreU(luma<Arith>(ch, z), d, pDst[0] + pos);
                    if constexpr (Ink) hn::StoreU(hn::Sub(ch[3], k128), d, pDst[3] + pos);
                    chroma<Arith, 0>(x, y, z, cb, cr);
                    hn::StoreU(cb, d, pDst[1] + pos);
                    hn::StoreU(cr, d, pDst[2] + pos);
                }
            }
        } else {
            // Chroma rows c .. c + kR - 1; block k: the 16 pixels of row V (c +
            // k) + v, which 411 takes as v = 0 and then v = 1. Even plus odd
            // is the sum over a pair.
            for (int c = 0; c < 8; c += kR) {
                V16 sx, sy;
                for (int v = 0; v < V; ++v) {
                    const int y0 = V * c + v;
                    const Px px = loadPx<Src, true>(src + y0 * step, V * step, kRun);
                    V16 x[2], y[2], lu[2];
                    for (int p = 0; p < 2; ++p) {
                        chromaPair<Arith>(px.s[p], x[p], y[p]);
                        lu[p] = luma<Arith>(px.s[p], ZipOf(x[p], y[p]));
                    }
                    const int left = ownMcuLumaAt<2>(0, y0), right = ownMcuLumaAt<2>(8, y0);
                    storeRuns<8 * V, int16_t>(hn::InterleaveLower(d, lu[0], lu[1]), pDst[0] + left);
                    storeRuns<8 * V, int16_t>(hn::InterleaveUpper(d, lu[0], lu[1]), pDst[0] + right);
                    if constexpr (Ink) {
                        const V16 k0 = hn::Sub(px.s[0][3], k128), k1 = hn::Sub(px.s[1][3], k128);
                        storeRuns<8 * V, int16_t>(hn::InterleaveLower(d, k0, k1), pDst[3] + left);
                        storeRuns<8 * V, int16_t>(hn::InterleaveUpper(d, k0, k1), pDst[3] + right);
                    }
                    const V16 px2 = hn::Add(x[0], x[1]), py2 = hn::Add(y[0], y[1]);
                    sx = v ? hn::Add(sx, px2) : px2;
                    sy = v ? hn::Add(sy, py2) : py2;
                }
                V16 cb, cr;
                chroma<Arith, L>(sx, sy, ZipOf(sx, sy), cb, cr);
                hn::StoreU(cb, d, pDst[1] + 8 * c);
                hn::StoreU(cr, d, pDst[2] + 8 * c);
            }
        }
    }
}

// ---- Inverse -------------------------------------------------------------

// Block values clamped to -128..127 (the byte less 128).
HWY_INLINE V16 clampS8(V16 v) {
    return hn::Min(hn::Max(v, hn::Set(D16(), -128)), hn::Set(D16(), 127));
}

// (w c + k) >> 16 equals (w c + 32768) >> 16 for every c in -128..127: the
// rounded fixed-point product (pmulhrsw) of m c and w / (2 m) then gives it.
constexpr bool ownRoundsAsFixedPoint(int32_t w, int32_t k) {
    for (int32_t c = -128; c < 128; ++c)
        if (((w * c + k) >> 16) != ((w * c + 32768) >> 16)) return false;
    return true;
}

// What each channel adds to Y, from cb, cr less 128, as in the colour
// family: R = Y + ((91880 cr + 32760) >> 16), G = Y + ((-22553 cb - 46801
// cr + 32816) >> 16), B = Y + ((116128 cb + 32766) >> 16). Red and blue are
// rounded fixed-point products of 2 cr and 22970, 4 cb and 14516. Green is a
// pair dot with -46801 split as -65536 + 18735, -cr added after the shift
// (exact, as it is a multiple of 65536 before). Samples: the bytes.
template <class Arith>
HWY_INLINE void terms(V16 cb, V16 cr, V16 (&t)[3]) {
    const D16 d;
    if constexpr (std::is_same_v<Arith, InvMul>) {
        static_assert(kInvMul.rCr == 4 * 22970 && kInvMul.bCb == 8 * 14516 && kInvMul.gCr == -65536 + 18735);
        static_assert(ownRoundsAsFixedPoint(kInvMul.rCr, kInvMul.rRound) &&
                      ownRoundsAsFixedPoint(kInvMul.bCb, kInvMul.bRound));
        t[0] = hn::MulFixedPoint15(hn::Add(cr, cr), hn::Set(d, 22970));
        t[1] = hn::Sub(Dot<16, int16_t(kInvMul.gCb), 18735, kInvMul.gRound>(ZipOf(cb, cr)), cr);
        t[2] = hn::MulFixedPoint15(hn::ShiftLeft<2>(cb), hn::Set(d, 14516));
    } else {
        const V16 k128 = hn::Set(d, 128);
        t[0] = hn::Zero(d), t[1] = hn::Add(cb, k128), t[2] = hn::Add(cr, k128);
    }
}

// The bias that makes a saturating signed addition clamp at 255: a byte plus
// kBias is at most 32767 exactly when the byte is at most 255.
constexpr int16_t kBias = 32767 - 255;

// A block value as a byte (clamped to -128..127, plus 128), plus kBias: the
// saturating addition clamps at the top, the maximum at the bottom.
HWY_INLINE V16 biasedByte(V16 v) {
    const D16 d;
    return hn::Max(hn::SaturatedAdd(v, hn::Set(d, int16_t(kBias + 128))), hn::Set(d, kBias));
}

// Channels of the pixels (0..255) from Y as a biased byte and the terms of
// their chroma: Y + t, at most 482 and at least -227, saturated at the top
// by the signed addition to the bias and at the bottom by the unsigned
// subtraction of it.
template <class Arith>
HWY_INLINE void pixels(V16 y, const V16 (&t)[3], V16* out) {
    const DU16 du;
    const VU16 bias = hn::Set(du, kBias);
    if constexpr (std::is_same_v<Arith, InvMul>) {
        for (int c = 0; c < 3; ++c) out[c] = hn::BitCast(D16(), hn::SaturatedSub(hn::BitCast(du, hn::SaturatedAdd(y, t[c])), bias));
    } else {
        out[0] = hn::BitCast(D16(), hn::Sub(hn::BitCast(du, y), bias)), out[1] = t[1], out[2] = t[2];
    }
}

// Two runs of 8 RGB pixels (48 bytes) come from three byte vectors, which
// hold in each block: the first and second channel of the first run's pixel
// j in bytes 2j and 2j + 1 (src 0), the same for the second run (src 1), and
// the third channel of pixel j of the first run in byte 2j, of the second in
// byte 2j + 1 (src 2). The shuffle of source src for piece `piece` (bytes 16
// piece .. 16 piece + 15 of the 48):
constexpr Table ownInterleaveTable(int piece, int src) {
    uint8_t t[16]{};
    for (int i = 0; i < 16; ++i) {
        const int o = 16 * piece + i, run = o / 24, q = o % 24, j = q / 3, c = q % 3;
        const bool here = c < 2 ? src == run : src == 2;
        t[i] = here ? static_cast<uint8_t>(c < 2 ? 2 * j + c : 2 * j + run) : 0x80;
    }
    return ownTable(t);
}

// 16-bit values (0..255) of x and y as the low and high bytes of each lane.
HWY_INLINE V8 pairBytes(V16 x, V16 y) {
    return hn::BitCast(D8(), hn::Or(x, hn::ShiftLeft<8>(y)));
}

// The three channels of runs a and b (a block holding one run of each) to
// the 48 bytes of the runs (out: bytes 0..15, 16..31, 32..47 of each
// block), within blocks: the first piece is all run a, the last all run b.
HWY_INLINE void interleave3(const V16* a, const V16* b, V8 (&out)[3]) {
    const D8 d;
    static constexpr Table kIdx[3][3] = {
        {ownInterleaveTable(0, 0), ownInterleaveTable(0, 1), ownInterleaveTable(0, 2)},
        {ownInterleaveTable(1, 0), ownInterleaveTable(1, 1), ownInterleaveTable(1, 2)},
        {ownInterleaveTable(2, 0), ownInterleaveTable(2, 1), ownInterleaveTable(2, 2)}};
    const V8 src[3] = {pairBytes(a[0], a[1]), pairBytes(b[0], b[1]), pairBytes(a[2], b[2])};
    const auto from = [&](int piece, int i) { return hn::TableLookupBytesOr0(src[i], hn::Load(d, kIdx[piece][i].v)); };
    out[0] = hn::Or(from(0, 0), from(0, 2));
    out[1] = hn::Or3(from(1, 0), from(1, 1), from(1, 2));
    out[2] = hn::Or(from(2, 1), from(2, 2));
}

// The pixels of one step into the destination: a and b hold channels R, G,
// B, K (0..255), one run a block each; the runs of a, then those of b, go to
// run(0) .. run(2 kR - 1).
template <class Dst, class Run>
HWY_INLINE void storePixels(const V16 (&a)[4], const V16 (&b)[4], Run run) {
    if constexpr (std::is_same_v<Dst, McuToBgr555> || std::is_same_v<Dst, McuToBgr565>) {
        constexpr bool is565 = std::is_same_v<Dst, McuToBgr565>;
        const DU16 du;
        for (int h = 0; h < 2; ++h) {
            const V16(&x)[4] = h ? b : a;
            const VU16 f8 = hn::Set(du, 0xF8);
            const VU16 hi = hn::ShiftLeft<is565 ? 8 : 7>(hn::And(hn::BitCast(du, x[0]), f8));
            const VU16 g = hn::BitCast(du, x[1]);
            const VU16 mid = is565 ? hn::ShiftLeft<3>(hn::And(g, hn::Set(du, 0xFC))) : hn::ShiftLeft<2>(hn::And(g, f8));
            const VU16 w = hn::Or(hn::Or(hi, mid), hn::ShiftRight<3>(hn::BitCast(du, x[2])));
            for (int k = 0; k < kR; ++k)
                hn::StoreU(BlockOf(w, k), hn::Full128<uint16_t>(), reinterpret_cast<uint16_t*>(run(h * kR + k)));
        }
    } else if constexpr (std::is_same_v<Dst, McuToCmyk>) {
        const D8 d;
        const hn::Rebind<uint8_t, D16> dh;
        V8 c[4], x[4];
        for (int i = 0; i < 4; ++i) c[i] = hn::Combine(d, hn::DemoteTo(dh, b[i]), hn::DemoteTo(dh, a[i]));
        for (int i = 0; i < 3; ++i) c[i] = hn::Sub(hn::Set(d, 255), c[i]);
        transpose4<uint8_t>(c[0], c[1], c[2], c[3], x);  // 4 pixels in each of x[0..3]
        for (int k = 0; k < kR; ++k) {
            uint8_t* p = run(2 * k);
            uint8_t* q = run(2 * k + 1);
            hn::StoreU(BlockOf(x[0], k), DB8(), p);
            hn::StoreU(BlockOf(x[1], k), DB8(), p + 16);
            hn::StoreU(BlockOf(x[2], k), DB8(), q);
            hn::StoreU(BlockOf(x[3], k), DB8(), q + 16);
        }
    } else {
        // Block k holds the runs a_k and b_k.
        V8 x[3];
        if constexpr (std::is_same_v<Dst, McuToBgr>) {
            const V16 ra[3] = {a[2], a[1], a[0]}, rb[3] = {b[2], b[1], b[0]};
            interleave3(ra, rb, x);
        } else {
            interleave3(a, b, x);
        }
        const hn::Half<DB8> dq;
        for (int k = 0; k < kR; ++k) {
            uint8_t* p = run(k);
            uint8_t* q = run(kR + k);
            const VB8 mid = BlockOf(x[1], k);
            hn::StoreU(BlockOf(x[0], k), DB8(), p);
            hn::StoreU(hn::LowerHalf(dq, mid), dq, p + 16);
            hn::StoreU(hn::UpperHalf(dq, mid), dq, q);
            hn::StoreU(BlockOf(x[2], k), DB8(), q + 8);
        }
    }
}

template <class Arith, class Dst, int S, bool Ink = false>
void mcuInv(const Vqc16s* const* pSrc, void* pDstV, int32_t dstStep) {
    constexpr int H = kMcuH[S], V = kMcuV[S];
    if constexpr (std::is_same_v<Dst, McuDstPairs>) {
        // The even and odd pixels of a row become Y0 and Y1 of the pairs.
        const hn::FixedTag<uint8_t, 8> d8;
        const hn::FixedTag<int16_t, 8> d16;
        const auto byte = [&](const Vqc16s* p) {
            const auto v = hn::LoadU(d16, p);
            return hn::Add(hn::Min(hn::Max(v, hn::Set(d16, -128)), hn::Set(d16, 127)), hn::Set(d16, 128));
        };
        for (int y = 0; y < 8; ++y) {
            const auto left = byte(pSrc[0] + 8 * y), right = byte(pSrc[0] + 64 + 8 * y);
            hn::StoreInterleaved4(hn::DemoteTo(d8, hn::ConcatEven(d16, right, left)), hn::DemoteTo(d8, byte(pSrc[1] + 8 * y)),
                                  hn::DemoteTo(d8, hn::ConcatOdd(d16, right, left)), hn::DemoteTo(d8, byte(pSrc[2] + 8 * y)),
                                  d8, rowAt(static_cast<Vqc8u*>(pDstV), dstStep, y));
        }
    } else {
        const D16 d;
        const auto termsAt = [&](int i, V16 (&v)[3]) {
            terms<Arith>(clampS8(hn::LoadU(d, pSrc[1] + i)), clampS8(hn::LoadU(d, pSrc[2] + i)), v);
        };
        uint8_t* dst = static_cast<uint8_t*>(pDstV);
        const ptrdiff_t step = dstStep;
        constexpr ptrdiff_t kRun = 8 * ptrdiff_t(sizeof(typename Dst::Elem)) * (Ink ? 4 : sizeof(typename Dst::Elem) == 2 ? 1 : 3);
        const V16 k128 = hn::Set(D16(), 128);
        // Y (and K) of the runs at pos, with the terms tv, to channels.
        const auto channels = [&](int pos, const V16 (&tv)[3], V16 (&x)[4]) {
            pixels<Arith>(biasedByte(hn::LoadU(d, pSrc[0] + pos)), tv, x);
            if constexpr (Ink) x[3] = hn::Add(clampS8(hn::LoadU(d, pSrc[3] + pos)), k128);
            else x[3] = hn::Zero(d);
        };
        if constexpr (H == 1) {
            // a: rows y0 .. y0 + kR - 1, b: the kR rows after them.
            for (int y0 = 0; y0 < 8; y0 += 2 * kR) {
                V16 a[4], b[4], ta[3], tb[3];
                termsAt(8 * y0, ta);
                termsAt(8 * (y0 + kR), tb);
                channels(8 * y0, ta, a);
                channels(8 * (y0 + kR), tb, b);
                storePixels<Dst>(a, b, [&](int i) { return dst + (y0 + i) * step; });
            }
        } else {
            // The terms of every chroma sample first, then rows y0 .. y0 + kR
            // - 1: a the left block's runs, b the right's.
            constexpr int kN = static_cast<int>(hn::MaxLanes(D16()));
            alignas(64) int16_t t[3][64];
            for (int i = 0; i < 64; i += kN) {
                V16 v[3];
                termsAt(i, v);
                for (int c = 0; c < 3; ++c) hn::Store(v[c], d, t[c] + i);
            }
            for (int y0 = 0; y0 < 8 * V; y0 += kR) {
                V16 a[4], b[4], ta[3], tb[3];
                for (int c = 0; c < 3; ++c) {
                    // Block k: row y0 + k, of chroma row (y0 + k) / V.
                    V16 tv;
                    if constexpr (V == 1) tv = hn::LoadU(d, t[c] + 8 * y0);
                    else tv = loadRuns(t[c], [y0](int k) { return 8 * ((y0 + k) / 2); });
                    ta[c] = hn::InterleaveLower(d, tv, tv);
                    tb[c] = hn::InterleaveUpper(d, tv, tv);
                }
                channels(ownMcuLumaAt<2>(0, y0), ta, a);
                channels(ownMcuLumaAt<2>(8, y0), tb, b);
                storePixels<Dst>(a, b, [&](int i) { return dst + (y0 + i % kR) * step + i / kR * kRun; });
            }
        }
    }
}

}  // namespace
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
