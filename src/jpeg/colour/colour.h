// JPEG colour conversion: the shared arithmetic, the pixel layouts and the
// generic row routines behind the forward, inverse and CMYK/YCCK exports.
//
// Every export is one instantiation of a row routine over a source layout,
// an arithmetic and a destination layout. A row is cut into blocks of
// kBlock pixels; interleaved and packed sides are unpacked into (or packed
// from) small planar scratch arrays, planar sides are used in place, and the
// arithmetic runs on planar arrays, where GCC vectorises it. These plain
// routines serve the baseline target; the other SIMD targets compute the
// same bits on Highway vectors (colour_fwd.cpp, colour_inv.cpp), a whole
// byte vector a step, and finish each row with the plain routine.
#pragma once

#include <vqcj.h>

#include <cstdint>
#include <type_traits>

#include "frame/check.h"
#include "frame/parallel.h"
#include "frame/rows.h"
#include "frame/wrap.h"

namespace vqcj {

inline constexpr int32_t kBlock = 256;

// ---- Forward arithmetic ------------------------------------------------------
//
// Y, Cb and Cr are bits 16..23 of a weighted sum scaled by 65536. The weights
// of Y are 19595, 38470, 7471 (R, G, B); Cb is 32768 B - 21709 G - 11059 R and
// Cr 32768 R - 27439 G - 5329 B. Only the rounding constants differ between
// members. The negative weights are turned positive by complementing the
// sample (-w x = w (255 - x) - 255 w); as both chroma weight sets sum to zero,
// the 255 w terms cancel against 255 * 32768 in the constant.

inline constexpr uint32_t kWeightYR = 19595, kWeightYG = 38470, kWeightYB = 7471;
inline constexpr uint32_t kWeightCbG = 21709, kWeightCbR = 11059;  // negated
inline constexpr uint32_t kWeightCrG = 27439, kWeightCrB = 5329;   // negated
inline constexpr uint32_t kWeightChroma = 32768;  // Cb from B, Cr from R

// Bits 16..23 of wa a + wb b + wc c + k for bytes a, b, c, in 16-bit
// arithmetic: the sum is split into its part above and below byte 8,
// S = 256 hi + lo, so bits 16..23 of S are bits 8..15 of hi + (lo >> 8). hi
// may wrap at 16 bits without harm; lo must not, hence the bound on the low
// bytes of the weights. Everything fits 16-bit vector lanes.
template <uint32_t WA, uint32_t WB, uint32_t WC, uint32_t K>
inline uint8_t ownMid8(uint16_t a, uint16_t b, uint16_t c) {
    static_assert(((WA & 255) + (WB & 255) + (WC & 255)) * 255 + (K & 255) <= 65535);
    const uint16_t hi = static_cast<uint16_t>((WA >> 8) * a + (WB >> 8) * b + (WC >> 8) * c + (K >> 8));
    const uint16_t lo = static_cast<uint16_t>((WA & 255) * a + (WB & 255) * b + (WC & 255) * c + (K & 255));
    return static_cast<uint8_t>(static_cast<uint16_t>(hi + (lo >> 8)) >> 8);
}

// Full-rate arithmetic with the Y rounding and the chroma constant of a
// member; only bits 16..23 are stored, so the chroma constant counts modulo
// 2^24 (-0x7FC000 stands as 0x804000).
template <uint32_t YRound, uint32_t ChromaConst>
struct FwdArith {
    static constexpr uint32_t kYRound = YRound;
    static constexpr uint32_t kChroma = (ChromaConst - 255u * kWeightChroma) & 0xFFFFFFu;
    static uint8_t y(uint16_t r, uint16_t g, uint16_t b) {
        return ownMid8<kWeightYR, kWeightYG, kWeightYB, YRound>(r, g, b);
    }
    static uint8_t cb(uint16_t r, uint16_t g, uint16_t b) {
        return ownMid8<kWeightChroma, kWeightCbG, kWeightCbR, kChroma>(b, 255 - g, 255 - r);
    }
    static uint8_t cr(uint16_t r, uint16_t g, uint16_t b) {
        return ownMid8<kWeightChroma, kWeightCrG, kWeightCrB, kChroma>(r, 255 - g, 255 - b);
    }
};

// Table forms: Y rounds at one half, chroma carries 0x807FFF (128 and one
// unit short of one half).
using FwdTable = FwdArith<32768, 0x807FFF>;
// Four-channel forms: chroma -0x7FC000 (128 and one quarter), Y per member.
inline constexpr uint32_t kFwdC4Chroma = static_cast<uint32_t>(-0x7FC000);
using FwdC4Rgb = FwdArith<32768, kFwdC4Chroma>;
using FwdC4Bgr = FwdArith<16384, kFwdC4Chroma>;

// Fused 422/411 chroma from the sum of 2 or 4 pixels, on 32 bits with wrap:
// bits Shift..Shift+7 of the weighted sum less K.
template <int Shift, uint32_t K>
struct FusedChroma {
    static constexpr int kShift = Shift;
    static constexpr uint32_t kK = K;
    static uint8_t cb(uint32_t r, uint32_t g, uint32_t b) {
        return static_cast<uint8_t>((kWeightChroma * b - kWeightCbG * g - kWeightCbR * r - K) >> Shift);
    }
    static uint8_t cr(uint32_t r, uint32_t g, uint32_t b) {
        return static_cast<uint8_t>((kWeightChroma * r - kWeightCrG * g - kWeightCrB * b - K) >> Shift);
    }
};

// ---- Inverse arithmetic ------------------------------------------------------
//
// Both arithmetics have the shape
//   R = Y + ((wRCr (Cr-128) + rR) >> 16)
//   G = Y + ((wGCb (Cb-128) + wGCr (Cr-128) + rG) >> 16)
//   B = Y + ((wBCb (Cb-128) + rB) >> 16)
// with arithmetic shifts and saturation, and differ only in the constants.
// A weight w is split as 65536 q + m with m in 16 bits, so that the product
// is q c + (m c >> 16) and the multiplications fit 16-bit lanes.

struct InvWeights {
    int32_t rCr, rRound, gCb, gCr, gRound, bCb, bRound;
};

// Table arithmetic (the 91881/22554/46802/116130 tables, rounding 32768).
inline constexpr InvWeights kInvTable{91881, 32768, -22554, -46802, 32768, 116130, 32768};

// Multiplication arithmetic, R = (91880 Cr + 65536 Y - 11727880) >> 16 and so
// on: the constants re-centred on Cb = Cr = 128.
inline constexpr InvWeights kInvMul{91880,  91880 * 128 - 11727880,
                                    -22553, -46801,
                                    8910128 - (22553 + 46801) * 128,
                                    116128, 116128 * 128 - 14831618};

constexpr int32_t ownHighPart(int32_t w) { return (w + 32768) >> 16; }
constexpr int32_t ownLowPart(int32_t w) { return w - ownHighPart(w) * 65536; }

template <const InvWeights& W>
struct InvArith {
    static constexpr int32_t kRq = ownHighPart(W.rCr), kRm = ownLowPart(W.rCr);
    static constexpr int32_t kGbq = ownHighPart(W.gCb), kGbm = ownLowPart(W.gCb);
    static constexpr int32_t kGrq = ownHighPart(W.gCr), kGrm = ownLowPart(W.gCr);
    static constexpr int32_t kBq = ownHighPart(W.bCb), kBm = ownLowPart(W.bCb);
    static constexpr int32_t kRRound = W.rRound, kGRound = W.gRound, kBRound = W.bRound;
    static_assert(kRm >= -32768 && kRm < 32768 && kGbm >= -32768 && kGbm < 32768 && kGrm >= -32768 &&
                  kGrm < 32768 && kBm >= -32768 && kBm < 32768);

    // (m c + k) >> 16 for a 16-bit product on 16-bit lanes: the high half of
    // the product, plus the carry of its low half and k (pmulhw, pmullw).
    template <int32_t M, int32_t K>
    static int16_t round16(int16_t c) {
        static_assert(K >= 0 && K < 65536);
        const int16_t hi = static_cast<int16_t>((M * c) >> 16);
        const uint16_t lo = static_cast<uint16_t>(M * c);
        return static_cast<int16_t>(hi + (((lo >> 1) + (K >> 1) + (lo & K & 1)) >> 15));
    }

    // What the chroma adds to Y in each channel. Y enters every sum as a
    // multiple of 65536, so adding it after the shift changes nothing.
    static void terms(int16_t cb, int16_t cr, int32_t& dr, int32_t& dg, int32_t& db) {
        cb = static_cast<int16_t>(cb - 128);
        cr = static_cast<int16_t>(cr - 128);
        dr = kRq * cr + round16<kRm, W.rRound>(cr);
        // Two products: their sum needs 32 bits.
        dg = kGbq * cb + kGrq * cr + ((kGbm * cb + kGrm * cr + W.gRound) >> 16);
        db = kBq * cb + round16<kBm, W.bRound>(cb);
    }

    static void pixel(int16_t y, int16_t cb, int16_t cr, uint8_t& r, uint8_t& g, uint8_t& b) {
        int32_t dr, dg, db;
        terms(cb, cr, dr, dg, db);
        r = sat8u(y + dr);
        g = sat8u(y + dg);
        b = sat8u(y + db);
    }
};

using InvTable = InvArith<kInvTable>;
using InvMul = InvArith<kInvMul>;

// ---- Planes and scratch ------------------------------------------------------

// N planes of one side with their row steps in bytes.
template <class T, int N>
struct Planes {
    T* p[N];
    int32_t step[N];

    T* row(int k, int32_t r) const { return rowAt(p[k], step[k], r); }
};

template <class T, int N>
constexpr Planes<T, N> ownPlanes(T* const* p, int32_t step) {
    Planes<T, N> s{};
    for (int k = 0; k < N; ++k) s.p[k] = p[k], s.step[k] = step;
    return s;
}
template <class T, int N>
constexpr Planes<T, N> ownPlanes(T* const* p, const int32_t* step) {
    Planes<T, N> s{};
    for (int k = 0; k < N; ++k) s.p[k] = p[k], s.step[k] = step[k];
    return s;
}
template <class T>
constexpr Planes<T, 1> ownPlane(T* p, int32_t step) {
    return Planes<T, 1>{{p}, {step}};
}

// Four planar blocks of one row: R, G, B, K or Y, Cb, Cr, K.
struct Block {
    alignas(16) Vqc8u v[4][kBlock];
};
struct BlockPtrs {
    const Vqc8u* a;
    const Vqc8u* b;
    const Vqc8u* c;
    const Vqc8u* k;
};

constexpr uint8_t ownInk(bool ink, uint8_t v) { return ink ? static_cast<uint8_t>(255 - v) : v; }

// Copies n bytes into d, complemented for the ink layouts.
template <bool Ink>
inline void ownCopyInk(const Vqc8u* __restrict s, Vqc8u* __restrict d, int32_t n) {
    for (int32_t x = 0; x < n; ++x) d[x] = ownInk(Ink, s[x]);
}

// ---- Forward source layouts: n pixels from column x0 into R, G, B (, K) ----

// Interleaved bytes, Bpp a pixel, red, green and blue at bytes RI, GI, BI.
// Ink: C, M, Y, K in bytes 0..3, read as complemented R, G, B and K.
template <int Bpp, int RI, int GI, int BI, bool Ink = false>
struct SrcPix {
    using Elem = const Vqc8u;
    static constexpr int kPlanes = 1;
    static BlockPtrs load(const Vqc8u* const* row, int32_t x0, int32_t n, Block& t) {
        const Vqc8u* __restrict p = row[0] + static_cast<ptrdiff_t>(Bpp) * x0;
        Vqc8u* __restrict r = t.v[0];
        Vqc8u* __restrict g = t.v[1];
        Vqc8u* __restrict b = t.v[2];
        Vqc8u* __restrict k = t.v[3];
        for (int32_t x = 0; x < n; ++x) {
            r[x] = ownInk(Ink, p[Bpp * x + RI]);
            g[x] = ownInk(Ink, p[Bpp * x + GI]);
            b[x] = ownInk(Ink, p[Bpp * x + BI]);
            if constexpr (Ink) k[x] = p[Bpp * x + 3];
        }
        return {r, g, b, k};
    }
};

// Separate planes R, G, B, or C, M, Y, K (complemented, K as is).
template <bool Ink = false>
struct SrcPlanes {
    using Elem = const Vqc8u;
    static constexpr int kPlanes = Ink ? 4 : 3;
    static BlockPtrs load(const Vqc8u* const* row, int32_t x0, int32_t n, Block& t) {
        if constexpr (!Ink) {
            (void)n, (void)t;
            return {row[0] + x0, row[1] + x0, row[2] + x0, nullptr};
        } else {
            for (int k = 0; k < 3; ++k) ownCopyInk<true>(row[k] + x0, t.v[k], n);
            return {t.v[0], t.v[1], t.v[2], row[3] + x0};
        }
    }
};

// Packed 16-bit pixels, each field shifted up to 8 bits without replication.
// RedHigh: red in the high field (the BGR forms), else blue.
template <bool Is565, bool RedHigh>
struct SrcPacked {
    using Elem = const Vqc16u;
    static constexpr int kPlanes = 1;
    static BlockPtrs load(const Vqc16u* const* row, int32_t x0, int32_t n, Block& t) {
        const Vqc16u* __restrict p = row[0] + x0;
        Vqc8u* __restrict hi = t.v[RedHigh ? 0 : 2];
        Vqc8u* __restrict mid = t.v[1];
        Vqc8u* __restrict lo = t.v[RedHigh ? 2 : 0];
        for (int32_t x = 0; x < n; ++x) {
            const uint16_t w = p[x];
            hi[x] = static_cast<uint8_t>(((w >> (Is565 ? 11 : 10)) & 31) << 3);
            mid[x] = static_cast<uint8_t>(Is565 ? ((w >> 5) & 63) << 2 : ((w >> 5) & 31) << 3);
            lo[x] = static_cast<uint8_t>((w & 31) << 3);
        }
        return {t.v[0], t.v[1], t.v[2], nullptr};
    }
};

// ---- Forward row routines ----------------------------------------------------

// Full rate: NOut 1 writes Y only, 3 writes Y, Cb, Cr, 4 also copies K. The
// planes are restrict parameters, so that GCC vectorises without alias checks.
template <class Arith, int NOut>
[[gnu::noinline]] void ownFwdKernel(const Vqc8u* __restrict r, const Vqc8u* __restrict g, const Vqc8u* __restrict b,
                         Vqc8u* __restrict y, Vqc8u* __restrict cb, Vqc8u* __restrict cr, int32_t n) {
    for (int32_t x = 0; x < n; ++x) {
        y[x] = Arith::y(r[x], g[x], b[x]);
        if constexpr (NOut > 1) {
            cb[x] = Arith::cb(r[x], g[x], b[x]);
            cr[x] = Arith::cr(r[x], g[x], b[x]);
        }
    }
}

template <class Arith, int NOut>
inline void ownFwdPixels(const BlockPtrs& s, Vqc8u* const* drow, int32_t x0, int32_t n) {
    if constexpr (NOut == 1) {
        ownFwdKernel<Arith, 1>(s.a, s.b, s.c, drow[0] + x0, nullptr, nullptr, n);
    } else {
        ownFwdKernel<Arith, 3>(s.a, s.b, s.c, drow[0] + x0, drow[1] + x0, drow[2] + x0, n);
        if constexpr (NOut == 4) ownCopyInk<false>(s.k, drow[3] + x0, n);
    }
}

template <class Src, class Arith, int NOut>
void ownFwdRow(typename Src::Elem* const* srow, Vqc8u* const* drow, int32_t width) {
    Block t;
    for (int32_t x0 = 0; x0 < width; x0 += kBlock) {
        const int32_t n = width - x0 < kBlock ? width - x0 : kBlock;
        ownFwdPixels<Arith, NOut>(Src::load(srow, x0, n, t), drow, x0, n);
    }
}

// Fused 422 (V = 1) and 411 (V = 2): Y of every pixel of V rows, chroma from
// each 2 by V group into one chroma row. width is even.
template <class Src, int V, uint32_t K>
void ownFwdFusedRow(const Vqc8u* const* srow, Vqc8u* const* yrow, Vqc8u* __restrict cb, Vqc8u* __restrict cr,
                    int32_t width) {
    using Chroma = FusedChroma<V == 1 ? 17 : 18, K>;
    Block t[V];
    for (int32_t x0 = 0; x0 < width; x0 += kBlock) {
        const int32_t n = width - x0 < kBlock ? width - x0 : kBlock;
        BlockPtrs s[V];
        for (int v = 0; v < V; ++v) {
            s[v] = Src::load(&srow[v], x0, n, t[v]);
            ownFwdPixels<FwdTable, 1>(s[v], &yrow[v], x0, n);
        }
        Vqc8u* __restrict pcb = cb + x0 / 2;
        Vqc8u* __restrict pcr = cr + x0 / 2;
        const BlockPtrs s0 = s[0], s1 = s[V - 1];
        for (int32_t j = 0; j < n / 2; ++j) {
            uint32_t r = s0.a[2 * j] + s0.a[2 * j + 1];
            uint32_t g = s0.b[2 * j] + s0.b[2 * j + 1];
            uint32_t b = s0.c[2 * j] + s0.c[2 * j + 1];
            if constexpr (V == 2) {
                r += s1.a[2 * j] + s1.a[2 * j + 1];
                g += s1.b[2 * j] + s1.b[2 * j + 1];
                b += s1.c[2 * j] + s1.c[2 * j + 1];
            }
            pcb[j] = Chroma::cb(r, g, b);
            pcr[j] = Chroma::cr(r, g, b);
        }
    }
}

// ---- Inverse source layouts: n pixels from column x0 as Y, Cb, Cr (, K) ----

// Full-rate planes Y, Cb, Cr (, K), used in place.
template <int N>
struct InPlanes {
    static constexpr int kPlanes = N;
    static BlockPtrs load(const Vqc8u* const* row, int32_t x0, int32_t, Block&) {
        return {row[0] + x0, row[1] + x0, row[2] + x0, N == 4 ? row[3] + x0 : nullptr};
    }
};

// Planar 422: one Cb and Cr for each pair of pixels. ownInvRow gives it the
// pair kernel, which computes the chroma terms once per pair. x0 and n are even.
struct In422Planes {
    static constexpr int kPlanes = 3;
};

// Interleaved 422: Y0, Cb, Y1, Cr for each pair of pixels. x0 and n are even.
struct In422Pairs {
    static constexpr int kPlanes = 1;
    static BlockPtrs load(const Vqc8u* const* row, int32_t x0, int32_t n, Block& t) {
        const Vqc8u* __restrict s = row[0] + 2 * static_cast<ptrdiff_t>(x0);
        Vqc8u* __restrict y = t.v[0];
        Vqc8u* __restrict cb = t.v[1];
        Vqc8u* __restrict cr = t.v[2];
        for (int32_t j = 0; j < n / 2; ++j) {
            y[2 * j] = s[4 * j];
            y[2 * j + 1] = s[4 * j + 2];
            cb[2 * j] = cb[2 * j + 1] = s[4 * j + 1];
            cr[2 * j] = cr[2 * j + 1] = s[4 * j + 3];
        }
        return {y, cb, cr, nullptr};
    }
};

// ---- Inverse destination layouts: n pixels from R, G, B (, K) to column x0 --

// Interleaved bytes; a fourth byte takes aval, or K for the ink layout, which
// also complements R, G, B into C, M, Y.
template <int Bpp, int RI, int GI, int BI, bool Ink = false>
struct DstPix {
    using Elem = Vqc8u;
    static constexpr int kPlanes = 1;
    static constexpr bool kInPlace = false;
    static void store(Vqc8u* const* row, int32_t x0, int32_t n, const Block& t, const Vqc8u* __restrict k,
                      Vqc8u aval) {
        Vqc8u* __restrict p = row[0] + static_cast<ptrdiff_t>(Bpp) * x0;
        const Vqc8u* __restrict r = t.v[0];
        const Vqc8u* __restrict g = t.v[1];
        const Vqc8u* __restrict b = t.v[2];
        for (int32_t x = 0; x < n; ++x) {
            p[Bpp * x + RI] = ownInk(Ink, r[x]);
            p[Bpp * x + GI] = ownInk(Ink, g[x]);
            p[Bpp * x + BI] = ownInk(Ink, b[x]);
            if constexpr (Bpp == 4) p[Bpp * x + 3] = Ink ? k[x] : aval;
        }
    }
};

// Separate planes R, G, B (written in place by the arithmetic), or C, M, Y, K.
template <bool Ink = false>
struct DstPlanes {
    using Elem = Vqc8u;
    static constexpr int kPlanes = Ink ? 4 : 3;
    static constexpr bool kInPlace = !Ink;
    static void store(Vqc8u* const* row, int32_t x0, int32_t n, const Block& t, const Vqc8u* k, Vqc8u) {
        if constexpr (Ink) {
            for (int c = 0; c < 3; ++c) ownCopyInk<true>(t.v[c], row[c] + x0, n);
            ownCopyInk<false>(k, row[3] + x0, n);
        }
    }
};

// Packed 16-bit pixels: each field the top bits of its saturated byte.
template <bool Is565, bool RedHigh>
struct DstPacked {
    using Elem = Vqc16u;
    static constexpr int kPlanes = 1;
    static constexpr bool kInPlace = false;
    static void store(Vqc16u* const* row, int32_t x0, int32_t n, const Block& t, const Vqc8u*, Vqc8u) {
        Vqc16u* __restrict p = row[0] + x0;
        const Vqc8u* __restrict hi = t.v[RedHigh ? 0 : 2];
        const Vqc8u* __restrict mid = t.v[1];
        const Vqc8u* __restrict lo = t.v[RedHigh ? 2 : 0];
        for (int32_t x = 0; x < n; ++x) {
            const uint16_t h = static_cast<uint16_t>((hi[x] & 0xF8) << (Is565 ? 8 : 7));
            const uint16_t m = static_cast<uint16_t>(Is565 ? (mid[x] & 0xFC) << 3 : (mid[x] & 0xF8) << 2);
            p[x] = static_cast<Vqc16u>(h | m | (lo[x] >> 3));
        }
    }
};

// ---- Inverse row routine -----------------------------------------------------

template <class Arith>
[[gnu::noinline]] void ownInvKernel(const Vqc8u* __restrict y, const Vqc8u* __restrict cb, const Vqc8u* __restrict cr,
                         Vqc8u* __restrict r, Vqc8u* __restrict g, Vqc8u* __restrict b, int32_t n) {
    for (int32_t x = 0; x < n; ++x) Arith::pixel(y[x], cb[x], cr[x], r[x], g[x], b[x]);
}

// Planar 422 rows: each chroma pair feeds two pixels.
template <class Arith>
[[gnu::noinline]] void ownInvKernelPairs(const Vqc8u* __restrict y, const Vqc8u* __restrict cb,
                                         const Vqc8u* __restrict cr, Vqc8u* __restrict r, Vqc8u* __restrict g,
                                         Vqc8u* __restrict b, int32_t pairs) {
    for (int32_t j = 0; j < pairs; ++j) {
        int32_t dr, dg, db;
        Arith::terms(cb[j], cr[j], dr, dg, db);
        r[2 * j] = sat8u(y[2 * j] + dr);
        r[2 * j + 1] = sat8u(y[2 * j + 1] + dr);
        g[2 * j] = sat8u(y[2 * j] + dg);
        g[2 * j + 1] = sat8u(y[2 * j + 1] + dg);
        b[2 * j] = sat8u(y[2 * j] + db);
        b[2 * j + 1] = sat8u(y[2 * j + 1] + db);
    }
}

// width pixels of one row; the 422 sources want it even.
template <class In, class Arith, class Dst>
void ownInvRow(const Vqc8u* const* srow, typename Dst::Elem* const* drow, int32_t width, Vqc8u aval) {
    Block in, out;
    for (int32_t x0 = 0; x0 < width; x0 += kBlock) {
        const int32_t n = width - x0 < kBlock ? width - x0 : kBlock;
        if constexpr (std::is_same_v<In, In422Planes>) {
            static_assert(!Dst::kInPlace);
            ownInvKernelPairs<Arith>(srow[0] + x0, srow[1] + x0 / 2, srow[2] + x0 / 2, out.v[0], out.v[1], out.v[2],
                                     n / 2);
            Dst::store(drow, x0, n, out, nullptr, aval);
        } else {
            const BlockPtrs s = In::load(srow, x0, n, in);
            if constexpr (Dst::kInPlace) {
                ownInvKernel<Arith>(s.a, s.b, s.c, drow[0] + x0, drow[1] + x0, drow[2] + x0, n);
            } else {
                ownInvKernel<Arith>(s.a, s.b, s.c, out.v[0], out.v[1], out.v[2], n);
                Dst::store(drow, x0, n, out, s.k, aval);
            }
        }
    }
}

// ---- Dispatched forms --------------------------------------------------------
//
// Every member is one form: its layouts and arithmetic. The row runs of a
// form go through one dispatched kernel (colour_fwd.cpp, colour_inv.cpp),
// whose baseline target runs the row routines above and whose other targets
// compute the same bits on Highway vectors.

using SrcRgb3 = SrcPix<3, 0, 1, 2>;
using SrcBgr3 = SrcPix<3, 2, 1, 0>;
using SrcRgb4 = SrcPix<4, 0, 1, 2>;
using SrcBgr4 = SrcPix<4, 2, 1, 0>;
using SrcCmyk = SrcPix<4, 0, 1, 2, true>;
using DstRgb3 = DstPix<3, 0, 1, 2>;
using DstBgr3 = DstPix<3, 2, 1, 0>;
using DstRgb4 = DstPix<4, 0, 1, 2>;
using DstBgr4 = DstPix<4, 2, 1, 0>;
using DstCmyk = DstPix<4, 0, 1, 2, true>;

enum class FwdForm {
    Rgb3, Bgr3, Rgb4, Bgr4, Planes, Bgr555, Bgr565, Rgb555, Rgb565,
    Rgb3Luma, Bgr3Luma, PlanesLuma, CmykPix, CmykPlanes,
};
enum class InvForm {
    Rgb3, Bgr3, Planes, Rgb4, Bgr4, Bgr555, Bgr565, Rgb555, Rgb565,
    Sub422Rgb3, Sub422Bgr3, Sub422Rgb4, Sub422Bgr4, Pairs422Rgb3, CmykPix, CmykPlanes,
};
// The fused forms: the source layout, 422 (V = 1) or 411 (V = 2).
enum class FusedForm { Rgb3V1, Bgr3V1, Rgb4V1, Bgr4V1, Rgb3V2, Bgr3V2, Rgb4V2, Bgr4V2 };

template <class S, class A, int N>
struct FwdFormOf {
    using Src = S;
    using Arith = A;
    static constexpr int kOut = N;
};
template <FwdForm F>
struct Fwd;
template <> struct Fwd<FwdForm::Rgb3> : FwdFormOf<SrcRgb3, FwdTable, 3> {};
template <> struct Fwd<FwdForm::Bgr3> : FwdFormOf<SrcBgr3, FwdTable, 3> {};
template <> struct Fwd<FwdForm::Rgb4> : FwdFormOf<SrcRgb4, FwdC4Rgb, 3> {};
template <> struct Fwd<FwdForm::Bgr4> : FwdFormOf<SrcBgr4, FwdC4Bgr, 3> {};
template <> struct Fwd<FwdForm::Planes> : FwdFormOf<SrcPlanes<>, FwdTable, 3> {};
template <> struct Fwd<FwdForm::Bgr555> : FwdFormOf<SrcPacked<false, true>, FwdTable, 3> {};
template <> struct Fwd<FwdForm::Bgr565> : FwdFormOf<SrcPacked<true, true>, FwdTable, 3> {};
template <> struct Fwd<FwdForm::Rgb555> : FwdFormOf<SrcPacked<false, false>, FwdTable, 3> {};
template <> struct Fwd<FwdForm::Rgb565> : FwdFormOf<SrcPacked<true, false>, FwdTable, 3> {};
template <> struct Fwd<FwdForm::Rgb3Luma> : FwdFormOf<SrcRgb3, FwdTable, 1> {};
template <> struct Fwd<FwdForm::Bgr3Luma> : FwdFormOf<SrcBgr3, FwdTable, 1> {};
template <> struct Fwd<FwdForm::PlanesLuma> : FwdFormOf<SrcPlanes<>, FwdTable, 1> {};
template <> struct Fwd<FwdForm::CmykPix> : FwdFormOf<SrcCmyk, FwdTable, 4> {};
template <> struct Fwd<FwdForm::CmykPlanes> : FwdFormOf<SrcPlanes<true>, FwdTable, 4> {};

template <class I, class A, class D>
struct InvFormOf {
    using In = I;
    using Arith = A;
    using Dst = D;
};
template <InvForm F>
struct Inv;
template <> struct Inv<InvForm::Rgb3> : InvFormOf<InPlanes<3>, InvTable, DstRgb3> {};
template <> struct Inv<InvForm::Bgr3> : InvFormOf<InPlanes<3>, InvTable, DstBgr3> {};
template <> struct Inv<InvForm::Planes> : InvFormOf<InPlanes<3>, InvTable, DstPlanes<>> {};
template <> struct Inv<InvForm::Rgb4> : InvFormOf<InPlanes<3>, InvMul, DstRgb4> {};
template <> struct Inv<InvForm::Bgr4> : InvFormOf<InPlanes<3>, InvMul, DstBgr4> {};
template <> struct Inv<InvForm::Bgr555> : InvFormOf<InPlanes<3>, InvTable, DstPacked<false, true>> {};
template <> struct Inv<InvForm::Bgr565> : InvFormOf<InPlanes<3>, InvTable, DstPacked<true, true>> {};
template <> struct Inv<InvForm::Rgb555> : InvFormOf<InPlanes<3>, InvTable, DstPacked<false, false>> {};
template <> struct Inv<InvForm::Rgb565> : InvFormOf<InPlanes<3>, InvTable, DstPacked<true, false>> {};
template <> struct Inv<InvForm::Sub422Rgb3> : InvFormOf<In422Planes, InvMul, DstRgb3> {};
template <> struct Inv<InvForm::Sub422Bgr3> : InvFormOf<In422Planes, InvMul, DstBgr3> {};
template <> struct Inv<InvForm::Sub422Rgb4> : InvFormOf<In422Planes, InvMul, DstRgb4> {};
template <> struct Inv<InvForm::Sub422Bgr4> : InvFormOf<In422Planes, InvMul, DstBgr4> {};
template <> struct Inv<InvForm::Pairs422Rgb3> : InvFormOf<In422Pairs, InvTable, DstRgb3> {};
template <> struct Inv<InvForm::CmykPix> : InvFormOf<InPlanes<4>, InvTable, DstCmyk> {};
template <> struct Inv<InvForm::CmykPlanes> : InvFormOf<InPlanes<4>, InvTable, DstPlanes<true>> {};

// Chroma constants of the fused forms: 0xFF0000 is 128 and one half modulo
// 2^25; 0xFFC000 (one member only) and 0x1FF8000 (411) round at one eighth.
inline constexpr uint32_t kK422 = 0xFF0000, kK422Rgb3 = 0xFFC000, kK411 = 0x1FF8000;

template <class S, int VRows, uint32_t K>
struct FusedFormOf {
    using Src = S;
    static constexpr int kV = VRows;
    static constexpr uint32_t kK = K;
};
template <FusedForm F>
struct Fused;
template <> struct Fused<FusedForm::Rgb3V1> : FusedFormOf<SrcRgb3, 1, kK422Rgb3> {};
template <> struct Fused<FusedForm::Bgr3V1> : FusedFormOf<SrcBgr3, 1, kK422> {};
template <> struct Fused<FusedForm::Rgb4V1> : FusedFormOf<SrcRgb4, 1, kK422> {};
template <> struct Fused<FusedForm::Bgr4V1> : FusedFormOf<SrcBgr4, 1, kK422> {};
template <> struct Fused<FusedForm::Rgb3V2> : FusedFormOf<SrcRgb3, 2, kK411> {};
template <> struct Fused<FusedForm::Bgr3V2> : FusedFormOf<SrcBgr3, 2, kK411> {};
template <> struct Fused<FusedForm::Rgb4V2> : FusedFormOf<SrcRgb4, 2, kK411> {};
template <> struct Fused<FusedForm::Bgr4V2> : FusedFormOf<SrcBgr4, 2, kK411> {};

// The planes of one conversion, untyped so that one kernel signature serves
// every form. Source planes 1 and 2 advance one row every 2^chromaShift rows
// (the planar 411 forms). Fused forms count rows in groups of V.
struct RowJob {
    const void* src[4];
    int32_t srcStep[4];
    void* dst[4];
    int32_t dstStep[4];
    int32_t width;
    int32_t chromaShift;
    Vqc8u aval;
};

template <class S, int NS, class D, int ND>
RowJob ownJob(const Planes<S, NS>& s, const Planes<D, ND>& d, int32_t width, Vqc8u aval = 0,
              int32_t chromaShift = 0) {
    RowJob j{};
    for (int k = 0; k < NS; ++k) j.src[k] = s.p[k], j.srcStep[k] = s.step[k];
    for (int k = 0; k < ND; ++k) j.dst[k] = d.p[k], j.dstStep[k] = d.step[k];
    j.width = width, j.chromaShift = chromaShift, j.aval = aval;
    return j;
}

// Row pointers of row r of every plane, into an array for the row routines.
template <class T, int N>
struct RowPtrs {
    T* p[N];
};
template <class T, int N>
RowPtrs<T, N> ownSrcRows(const RowJob& j, int32_t r) {
    RowPtrs<T, N> q;
    for (int k = 0; k < N; ++k)
        q.p[k] = rowAt(static_cast<T*>(j.src[k]), j.srcStep[k], k == 0 ? r : r >> j.chromaShift);
    return q;
}
template <class T, int N>
RowPtrs<T, N> ownDstRows(const RowJob& j, int32_t r) {
    RowPtrs<T, N> q;
    for (int k = 0; k < N; ++k) q.p[k] = rowAt(static_cast<T*>(j.dst[k]), j.dstStep[k], r);
    return q;
}

// Rows [first, last) of a form (groups of rows for the fused forms).
void ownFwdRows(FwdForm form, const RowJob& job, int32_t first, int32_t last);
void ownInvRows(InvForm form, const RowJob& job, int32_t first, int32_t last);
void ownFusedRows(FusedForm form, const RowJob& job, int32_t first, int32_t last);

// ---- Checks and drivers -----------------------------------------------------------------

// Planes to planes (P3R, P4R): pSrc, pDst, every source plane, every
// destination plane, srcStep, dstStep, width, height.
template <int N>
VqcStatus ownCheckPlanes(const Vqc8u* const* pSrc, int32_t srcStep, Vqc8u* const* pDst, int32_t dstStep,
                         VqciSize roiSize) {
    return Check().ptr(pSrc).ptr(pDst).elems(pSrc, N).elems(pDst, N).step(srcStep).step(dstStep).roi(roiSize);
}

// runs(first, last) over [0, height): through the row-parallel frame for its
// members, else on the caller's thread. The row routine is the same either way.
template <bool Parallel, class Runs>
void ownRunRows(int32_t width, int32_t height, const Runs& runs) {
    if constexpr (Parallel) {
        ownParallelRows(width, height, runs);
    } else {
        (void)width;
        runs(0, height);
    }
}

// Full-rate forward conversion of a whole image.
template <bool Parallel, FwdForm F>
void ownFwdImage(const Planes<typename Fwd<F>::Src::Elem, Fwd<F>::Src::kPlanes>& src,
                 const Planes<Vqc8u, Fwd<F>::kOut>& dst, VqciSize size) {
    const RowJob job = ownJob(src, dst, size.width);
    ownRunRows<Parallel>(size.width, size.height, [&](int32_t first, int32_t last) {
        ownFwdRows(F, job, first, last);
    });
}

// Fused 422/411 of a whole image: 35 when an odd last column or row stays
// unwritten. Serial.
template <FusedForm F>
VqcStatus ownFwdFusedImage(const Planes<const Vqc8u, 1>& src, const Planes<Vqc8u, 3>& dst, VqciSize size) {
    constexpr int V = Fused<F>::kV;
    ownFusedRows(F, ownJob(src, dst, size.width & ~1), 0, size.height / V);
    return ((size.width | (V == 2 ? size.height : 0)) & 1) ? vqcStatusOddSize : vqcStatusOk;
}

// Full-rate inverse conversion of a whole image; width is the number of
// pixels each row processes.
template <bool Parallel, InvForm F>
void ownInvImage(const Planes<const Vqc8u, Inv<F>::In::kPlanes>& src,
                 const Planes<typename Inv<F>::Dst::Elem, Inv<F>::Dst::kPlanes>& dst, VqciSize size, int32_t width,
                 Vqc8u aval = 0) {
    const RowJob job = ownJob(src, dst, width, aval);
    ownRunRows<Parallel>(size.width, size.height, [&](int32_t first, int32_t last) {
        ownInvRows(F, job, first, last);
    });
}

// Planar 422 (V = 1) and 411 (V = 2) to pixels, multiplication arithmetic:
// output row r reads Y row r and chroma row r / V. Only whole groups of V rows
// are written; the columns are the caller's (rounded down, or the last pair
// whole). 35 when the width or (411) the height is odd. Serial.
template <int V, InvForm F>
VqcStatus ownInvSubImage(const Planes<const Vqc8u, 3>& src, const Planes<Vqc8u, 1>& dst, VqciSize size,
                         int32_t width, Vqc8u aval) {
    ownInvRows(F, ownJob(src, dst, width, aval, V == 2 ? 1 : 0), 0, size.height / V * V);
    return ((size.width | (V == 2 ? size.height : 0)) & 1) ? vqcStatusOddSize : vqcStatusOk;
}

}  // namespace vqcj
