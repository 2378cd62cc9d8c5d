// MCU conversions: the plain routines behind the fused exports, which move
// one minimum coded unit between image rows and its 8x8 level-shifted blocks.
//
// An MCU is 8H x 8V pixels (H, V in {1, 2}): H V luma blocks in raster
// order, one block of each chroma component (one sample for every H x V
// pixels), and for the ink layouts H V blocks of K. The row layouts are those
// of the colour family (colour.h), loaded and stored one MCU row at a time;
// the arithmetic here adds the level shift and works on whole sums, so that
// chroma carries no bias and can reach +128.
//
// These routines are the baseline of the dispatched kernels and the
// reference of their tests.
#pragma once

#include <vqcj.h>

#include <cstdint>
#include <type_traits>

#include "frame/rows.h"
#include "frame/wrap.h"
#include "jpeg/colour/colour.h"

namespace vqcj {

// Offset of pixel (x, y) of an MCU H blocks wide in its luma (or K) blocks.
template <int H>
constexpr int ownMcuLumaAt(int x, int y) {
    return (y / 8 * H + x / 8) * 64 + y % 8 * 8 + x % 8;
}

// ---- Forward -------------------------------------------------------------

// RGB to level-shifted YCbCr. L = log2 of the pixels per chroma sample; the
// chroma sums are exact in 32 bits (at most 4 x 255 x 32768).
struct McuFwdColour {
    static int16_t luma(int32_t r, int32_t g, int32_t b) {
        return static_cast<int16_t>(
            ((int32_t(kWeightYR) * r + int32_t(kWeightYG) * g + int32_t(kWeightYB) * b + 32768) >> 16) - 128);
    }
    template <int L>
    static int16_t cb(int32_t r, int32_t g, int32_t b) {
        const int32_t s = int32_t(kWeightChroma) * b - int32_t(kWeightCbG) * g - int32_t(kWeightCbR) * r;
        return static_cast<int16_t>((s + (1 << (15 + L))) >> (16 + L));
    }
    template <int L>
    static int16_t cr(int32_t r, int32_t g, int32_t b) {
        const int32_t s = int32_t(kWeightChroma) * r - int32_t(kWeightCrG) * g - int32_t(kWeightCrB) * b;
        return static_cast<int16_t>((s + (1 << (15 + L))) >> (16 + L));
    }
};

// Samples already YCbCr (a, b, c = Y, Cb, Cr): level shift, chroma averaged
// with rounding at one half.
struct McuFwdSample {
    static int16_t luma(int32_t y, int32_t, int32_t) { return static_cast<int16_t>(y - 128); }
    template <int L>
    static int16_t cb(int32_t, int32_t cb, int32_t) {
        return static_cast<int16_t>(((cb + (1 << L >> 1)) >> L) - 128);
    }
    template <int L>
    static int16_t cr(int32_t, int32_t, int32_t cr) {
        return static_cast<int16_t>(((cr + (1 << L >> 1)) >> L) - 128);
    }
};

// Interleaved Y0 Cb Y1 Cr pairs, each chroma sample given to both pixels of
// its pair (so that averaging over the pair returns it unchanged).
struct McuSrcPairs : In422Pairs {
    using Elem = const Vqc8u;
};

// One MCU from image rows into blocks. Ink sources also give K, stored
// level-shifted in pDst[3] in the layout of the luma blocks.
template <class Src, class Arith, int H, int V, bool Ink = false>
void ownMcuFwdPlain(typename Src::Elem* pSrc, int32_t srcStep, Vqc16s* const* pDst) {
    constexpr int W = 8 * H, L = (H - 1) + (V - 1);
    Vqc16s* __restrict yb = pDst[0];
    Block t[V];  // one per row: the two loads of a chroma row use separate buffers (faster)
    for (int cy = 0; cy < 8; ++cy) {
        int32_t sa[8] = {}, sb[8] = {}, sc[8] = {};
        for (int dy = 0; dy < V; ++dy) {
            const int y = V * cy + dy;
            typename Src::Elem* row = rowAt(pSrc, srcStep, y);
            const BlockPtrs p = Src::load(&row, 0, W, t[dy]);
            // Block by block, so that each run of 8 is contiguous.
            for (int bx = 0; bx < H; ++bx) {
                Vqc16s* __restrict yr = yb + ownMcuLumaAt<H>(8 * bx, y);
                for (int x = 0; x < 8; ++x) yr[x] = Arith::luma(p.a[8 * bx + x], p.b[8 * bx + x], p.c[8 * bx + x]);
                if constexpr (Ink)
                    for (int x = 0; x < 8; ++x)
                        pDst[3][ownMcuLumaAt<H>(8 * bx, y) + x] = static_cast<Vqc16s>(p.k[8 * bx + x] - 128);
            }
            for (int x = 0; x < W; ++x) sa[x / H] += p.a[x], sb[x / H] += p.b[x], sc[x / H] += p.c[x];
        }
        for (int cx = 0; cx < 8; ++cx) {
            pDst[1][cy * 8 + cx] = Arith::template cb<L>(sa[cx], sb[cx], sc[cx]);
            pDst[2][cy * 8 + cx] = Arith::template cr<L>(sa[cx], sb[cx], sc[cx]);
        }
    }
}

// ---- Inverse -------------------------------------------------------------

// Level-shifted block sample back to a byte.
inline uint8_t ownMcuByte(int16_t v) { return add128Sat8u(v); }

// YCbCr passed through as they are (sampling and interleaving only).
struct McuInvSample {
    static void pixel(int16_t y, int16_t cb, int16_t cr, uint8_t& a, uint8_t& b, uint8_t& c) {
        a = static_cast<uint8_t>(y), b = static_cast<uint8_t>(cb), c = static_cast<uint8_t>(cr);
    }
};

// Y0 Cb Y1 Cr pairs from Y, Cb, Cr of every pixel (the chroma of the first
// pixel of each pair, which is the replicated sample).
struct McuDstPairs {
    using Elem = Vqc8u;
    static void store(Vqc8u* const* row, int32_t x0, int32_t n, const Block& t, const Vqc8u*, Vqc8u) {
        Vqc8u* __restrict p = row[0] + 2 * static_cast<ptrdiff_t>(x0);
        for (int32_t j = 0; j < n / 2; ++j) {
            p[4 * j] = t.v[0][2 * j];
            p[4 * j + 1] = t.v[1][2 * j];
            p[4 * j + 2] = t.v[0][2 * j + 1];
            p[4 * j + 3] = t.v[2][2 * j];
        }
    }
};

// One MCU from blocks into image rows: every input saturated back to bytes,
// chroma replicated over its H x V pixels, then the arithmetic and the
// destination layout; ink layouts take K from pSrc[3].
template <class Arith, class Dst, int H, int V, bool Ink = false>
void ownMcuInvPlain(const Vqc16s* const* pSrc, typename Dst::Elem* pDst, int32_t dstStep) {
    constexpr int W = 8 * H;
    Block t;
    alignas(16) Vqc8u luma[W], cb[8], cr[8], k[W];
    for (int cy = 0; cy < 8; ++cy) {
        for (int c = 0; c < 8; ++c) cb[c] = ownMcuByte(pSrc[1][8 * cy + c]), cr[c] = ownMcuByte(pSrc[2][8 * cy + c]);
        for (int dy = 0; dy < V; ++dy) {
            const int y = V * cy + dy;
            for (int x = 0; x < W; ++x) luma[x] = ownMcuByte(pSrc[0][ownMcuLumaAt<H>(x, y)]);
            // The colour family's row kernels: chroma terms once per sample.
            if constexpr (std::is_same_v<Arith, InvMul> && H == 2)
                ownInvKernelPairs<Arith>(luma, cb, cr, t.v[0], t.v[1], t.v[2], 8);
            else if constexpr (std::is_same_v<Arith, InvMul>)
                ownInvKernel<Arith>(luma, cb, cr, t.v[0], t.v[1], t.v[2], 8);
            else
                for (int x = 0; x < W; ++x) Arith::pixel(luma[x], cb[x / H], cr[x / H], t.v[0][x], t.v[1][x], t.v[2][x]);
            if constexpr (Ink)
                for (int x = 0; x < W; ++x) k[x] = ownMcuByte(pSrc[3][ownMcuLumaAt<H>(x, y)]);
            typename Dst::Elem* row = rowAt(pDst, dstStep, y);
            Dst::store(&row, 0, W, t, k, 0);
        }
    }
}

}  // namespace vqcj
