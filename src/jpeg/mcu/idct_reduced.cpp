// Reduced inverse DCTs: the full fixed-point inverse on blocks whose
// coefficients outside a top-left corner are zero (LS_1x1, 2x2, 4x4), and the
// 4x4 and 2x2 scaled outputs of the classic libjpeg reduced transforms.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "jpeg/mcu/idct_reduced.cpp"
#include <hwy/foreach_target.h>  // must come before highway.h
#include <hwy/highway.h>

#include <cstring>

#include "frame/check.h"
#include "frame/rows.h"
#include "frame/simd.h"
#include "frame/simdblock.h"
#include "frame/wrap.h"

#ifndef VQCJ_IDCT_REDUCED_ONCE
#define VQCJ_IDCT_REDUCED_ONCE
namespace vqcj {
namespace {

// ---- Corner-only blocks --------------------------------------------------

// The inverse butterfly of the 8x8 fixed-point kernel with the inputs from
// N on known to be zero, on Lanes lines side by side (in[k][l] is input k of
// line l). The terms the zero inputs feed drop out; arithmetic modulo 2^32 is
// a ring, so every sum keeps the full kernel's 32-bit value and the shifts
// see the same operands. One loop over the lines, which GCC vectorises.
template <int N, bool ColPass, int Lanes>
inline void cornerLines(const Vqc16s (&in)[N][Lanes], Vqc16s (&y)[8][Lanes]) {
    for (int l = 0; l < Lanes; ++l) {
        const auto at = [&](int k) -> int32_t { return k < N ? in[k < N ? k : 0][l] : 0; };
        const int32_t i0 = at(0), i1 = at(1), i2 = at(2), i3 = at(3);
        // Products of a 16-bit input and a 16-bit constant, as the vectoriser likes them.
        const int32_t A = i3 * 27246, B = i3 * -18205;
        const int32_t C = i1 * 32139, D = i1 * 6393;
        const int32_t E = subW(C, A), F = subW(D, B), H = addW(E, F), J = subW(E, F);
        const int32_t G = mulW(addW(addW(A, C), 2048) >> 12, 5793);
        const int32_t I = mulW(addW(addW(B, D), 2048) >> 12, 5793);
        const int32_t T = shlW(i0, 15);
        const int32_t S = i2 * 17734, R = addW(i2 * 25080, S);
        const int32_t U = addW(T, R), V = subW(T, R), W = addW(T, S), X = subW(T, S);
        const auto fin = [](int32_t v) { return cut16s(ColPass ? addW(v, 2048) >> 12 : addW(v, 1 << 20) >> 21); };
        y[0][l] = fin(addW(U, G)), y[7][l] = fin(subW(U, G));
        y[1][l] = fin(addW(W, H)), y[6][l] = fin(subW(W, H));
        y[2][l] = fin(addW(X, J)), y[5][l] = fin(subW(X, J));
        y[3][l] = fin(addW(V, I)), y[4][l] = fin(subW(V, I));
    }
}

// Dequantises the N x N corner (products saturated, both factors signed),
// runs the columns that hold it and then every row, each pass keeping its
// results in 16 bits as the full kernel does, and writes the level-shifted
// bytes.
template <int N>
void cornerBlock(const Vqc16s* pSrc, Vqc8u* pDst, int32_t dstStep, const Vqc16u* pTable) {
    Vqc16s coef[N][N], cols[8][N], rows[N][8], out[8][8];
    for (int r = 0; r < N; ++r)
        for (int c = 0; c < N; ++c) coef[r][c] = sat16s(int32_t(pSrc[8 * r + c]) * static_cast<Vqc16s>(pTable[8 * r + c]));
    cornerLines<N, true>(coef, cols);
    for (int k = 0; k < N; ++k)
        for (int r = 0; r < 8; ++r) rows[k][r] = cols[r][k];
    cornerLines<N, false>(rows, out);  // out[column][row]
    alignas(16) Vqc8u px[64];
    for (int r = 0; r < 8; ++r)
        for (int c = 0; c < 8; ++c) px[8 * r + c] = add128Sat8u(out[c][r]);
    for (int r = 0; r < 8; ++r) std::memcpy(rowAt(pDst, dstStep, r), px + 8 * r, 8);
}

// A DC-only block is flat: one value for all 64 samples.
void dcBlock(const Vqc16s* pSrc, Vqc8u* pDst, int32_t dstStep, const Vqc16u* pTable) {
    const Vqc16s dc = sat16s(int32_t(pSrc[0]) * static_cast<Vqc16s>(pTable[0]));
    const Vqc16s col = cut16s(addW(shlW(dc, 15), 2048) >> 12);
    const Vqc8u v = add128Sat8u(cut16s(addW(shlW(col, 15), 1 << 20) >> 21));
    for (int r = 0; r < 8; ++r) std::memset(rowAt(pDst, dstStep, r), v, 8);
}

// ---- Scaled outputs --------------------------------------------------------
//
// libjpeg's reduced transforms with 13 fraction bits in the constants and 2
// extra bits between the passes, on 32-bit integers with wrap-around. The
// results equal libjpeg's (which widens to 64 bits and cuts the first pass
// to 32) whenever no sum leaves 32 bits: for dequantised coefficients below
// 1500 in magnitude, which covers every block an 8-bit encoder produces.

inline int32_t descale(int32_t v, int n) { return addW(v, 1 << (n - 1)) >> n; }

// 4-point lines (input 4 unused; outputs 0..3) and 2-point lines (inputs
// 0, 1, 3, 5, 7; outputs 0, 1), on Lanes lines side by side as above.
template <int M, int Shift, int Lanes>
inline void scaledLines(const int32_t (&z)[8][Lanes], int32_t (&out)[M][Lanes]) {
    for (int l = 0; l < Lanes; ++l) {
        if constexpr (M == 4) {
            const int32_t t0 = shlW(z[0][l], 14);
            const int32_t t2 = addW(mulW(z[2][l], 15137), mulW(z[6][l], -6270));
            const int32_t t10 = addW(t0, t2), t12 = subW(t0, t2);
            const int32_t o0 = addW(addW(mulW(z[7][l], -1730), mulW(z[5][l], 11893)),
                                    addW(mulW(z[3][l], -17799), mulW(z[1][l], 8697)));
            const int32_t o2 = addW(addW(mulW(z[7][l], -4176), mulW(z[5][l], -4926)),
                                    addW(mulW(z[3][l], 7373), mulW(z[1][l], 20995)));
            out[0][l] = descale(addW(t10, o2), Shift), out[3][l] = descale(subW(t10, o2), Shift);
            out[1][l] = descale(addW(t12, o0), Shift), out[2][l] = descale(subW(t12, o0), Shift);
        } else {
            const int32_t t10 = shlW(z[0][l], 15);
            const int32_t o = addW(addW(mulW(z[7][l], -5906), mulW(z[5][l], 6967)),
                                   addW(mulW(z[3][l], -10426), mulW(z[1][l], 29692)));
            out[0][l] = descale(addW(t10, o), Shift), out[1][l] = descale(subW(t10, o), Shift);
        }
    }
}

// Columns first, one line at a time (scalar code beats the baseline's
// 32-bit vector multiplies), skipping those the second pass does not read;
// then the M rows. Each product coefficient times multiplier is exact in 32
// bits.
template <int M>
void scaledBlock(const Vqc16s* pSrc, Vqc8u* pDst, int32_t dstStep, const Vqc16u* pTable) {
    int32_t ws[M][8] = {}, z[8][1], out[M][1];
    for (int c = 0; c < 8; ++c) {
        if (M == 4 ? c == 4 : c % 2 == 0 && c != 0) continue;
        for (int k = 0; k < 8; ++k) z[k][0] = int32_t(pSrc[8 * k + c]) * static_cast<Vqc16s>(pTable[8 * k + c]);
        scaledLines<M, M == 4 ? 12 : 13>(z, out);
        for (int r = 0; r < M; ++r) ws[r][c] = out[r][0];
    }
    for (int r = 0; r < M; ++r) {
        for (int k = 0; k < 8; ++k) z[k][0] = ws[r][k];
        scaledLines<M, M == 4 ? 19 : 20>(z, out);
        Vqc8u px[M];
        for (int c = 0; c < M; ++c) px[c] = sat8u(addW(out[c][0], 128));
        std::memcpy(rowAt(pDst, dstStep, r), px, M);
    }
}

enum McuReducedKind { kCorner2, kCorner4, kScaled4, kScaled2 };

// The checks of the full inverse: pSrc, pDst, dstStep, then the table.
inline VqcStatus checkBlock(const Vqc16s* pSrc, const Vqc8u* pDst, int32_t dstStep, const Vqc16u* pTable) {
    return Check().ptr(pSrc).ptr(pDst).step(dstStep).ptr(pTable);
}

}  // namespace
}  // namespace vqcj
#endif

HWY_BEFORE_NAMESPACE();
namespace vqcj::HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

#if !VQCJ_SIMD_BASELINE
using D32 = hn::FixedTag<int32_t, 4>;
using D16 = hn::FixedTag<int16_t, 8>;
using V32 = hn::Vec<D32>;
using V16 = hn::Vec<D16>;

HWY_INLINE V32 mulC(V32 v, int32_t c) { return hn::Mul(v, hn::Set(D32(), c)); }
template <int Shift>
HWY_INLINE V32 descaleV(V32 v) {
    return hn::ShiftRight<Shift>(hn::Add(v, hn::Set(D32(), 1 << (Shift - 1))));
}

// Row r of the result is lane r of the eight vectors (one per column):
// transposed to rows, level-shifted and saturated to bytes.
HWY_INLINE void storeColumns(const V16 (&y)[8], Vqc8u* pDst, int32_t dstStep) {
    const D16 d;
    const hn::Repartition<int32_t, D16> d32;
    const hn::Repartition<int64_t, D16> d64;
    const hn::Rebind<uint8_t, D16> d8;
    for (int s = 0; s < 2; ++s) {  // rows 0-3, then 4-7
        V16 t[4];
        for (int j = 0; j < 4; ++j)
            t[j] = s ? hn::InterleaveUpper(d, y[2 * j], y[2 * j + 1]) : hn::InterleaveLower(d, y[2 * j], y[2 * j + 1]);
        const auto u0 = hn::BitCast(d64, hn::InterleaveLower(d32, hn::BitCast(d32, t[0]), hn::BitCast(d32, t[1])));
        const auto u1 = hn::BitCast(d64, hn::InterleaveUpper(d32, hn::BitCast(d32, t[0]), hn::BitCast(d32, t[1])));
        const auto u2 = hn::BitCast(d64, hn::InterleaveLower(d32, hn::BitCast(d32, t[2]), hn::BitCast(d32, t[3])));
        const auto u3 = hn::BitCast(d64, hn::InterleaveUpper(d32, hn::BitCast(d32, t[2]), hn::BitCast(d32, t[3])));
        const V16 rows[4] = {hn::BitCast(d, hn::InterleaveLower(d64, u0, u2)), hn::BitCast(d, hn::InterleaveUpper(d64, u0, u2)),
                             hn::BitCast(d, hn::InterleaveLower(d64, u1, u3)), hn::BitCast(d, hn::InterleaveUpper(d64, u1, u3))};
        for (int r = 0; r < 4; ++r)
            hn::StoreU(hn::DemoteTo(d8, hn::Add(rows[r], hn::Set(d, 128))), d8, rowAt(pDst, dstStep, 4 * s + r));
    }
}

// The inverse butterfly on four lines at once with the inputs from N on
// zero, before the final rounding of its pass.
template <int N>
HWY_INLINE void cornerButterfly(const V32 (&in)[N], V32 (&y)[8]) {
    const D32 d;
    const V32 T = hn::ShiftLeft<15>(in[0]), zero = hn::Zero(d);
    V32 U = T, V = T, W = T, X = T, G = zero, I = zero, H = zero, J = zero;
    if constexpr (N >= 2) {
        V32 A = zero, B = zero;
        if constexpr (N >= 4) A = mulC(in[N - 1], 27246), B = mulC(in[N - 1], -18205);
        const V32 C = mulC(in[1], 32139), D = mulC(in[1], 6393);
        const V32 E = hn::Sub(C, A), F = hn::Sub(D, B);
        H = hn::Add(E, F), J = hn::Sub(E, F);
        G = mulC(hn::ShiftRight<12>(hn::Add(hn::Add(A, C), hn::Set(d, 2048))), 5793);
        I = mulC(hn::ShiftRight<12>(hn::Add(hn::Add(B, D), hn::Set(d, 2048))), 5793);
    }
    if constexpr (N >= 4) {
        const V32 S = mulC(in[N - 2], 17734), R = hn::Add(mulC(in[N - 2], 25080), S);
        U = hn::Add(T, R), V = hn::Sub(T, R), W = hn::Add(T, S), X = hn::Sub(T, S);
    }
    y[0] = hn::Add(U, G), y[1] = hn::Add(W, H), y[2] = hn::Add(X, J), y[3] = hn::Add(V, I);
    y[4] = hn::Sub(V, I), y[5] = hn::Sub(X, J), y[6] = hn::Sub(W, H), y[7] = hn::Sub(U, G);
}

// The corner kernel: the column pass on the first four columns as lanes
// (the others are zero throughout), cut to 16 bits, transposed, and the row
// pass on the rows as lanes, four at a time; its results fit 16 bits, so
// narrowing them is exact.
template <int N>
void cornerVector(const Vqc16s* pSrc, Vqc8u* pDst, int32_t dstStep, const Vqc16u* pTable) {
    const D32 d;
    const hn::Rebind<int16_t, D32> d16;
    const Vqc16s* table = reinterpret_cast<const Vqc16s*>(pTable);  // read as signed
    const V32 lo = hn::Set(d, -32768), hi = hn::Set(d, 32767);
    V32 coef[N], y[8];
    for (int k = 0; k < N; ++k) {
        const V32 p = hn::Mul(hn::PromoteTo(d, hn::LoadU(d16, pSrc + 8 * k)), hn::PromoteTo(d, hn::LoadU(d16, table + 8 * k)));
        coef[k] = hn::Min(hn::Max(p, lo), hi);  // columns beyond N are never read back
    }
    cornerButterfly<N>(coef, y);
    for (auto& v : y) v = hn::ShiftRight<16>(hn::ShiftLeft<16>(descaleV<12>(v)));
    Transpose4x4(D32(), y[0], y[1], y[2], y[3]);  // y[c]: column c, rows 0-3
    Transpose4x4(D32(), y[4], y[5], y[6], y[7]);  // rows 4-7
    V32 out[2][8];
    for (int h = 0; h < 2; ++h) {
        V32 in[N];
        for (int k = 0; k < N; ++k) in[k] = y[4 * h + k];
        cornerButterfly<N>(in, out[h]);
    }
    V16 cols[8];
    const hn::Half<D16> dh;
    for (int c = 0; c < 8; ++c)
        cols[c] = hn::Combine(D16(), hn::DemoteTo(dh, descaleV<21>(out[1][c])), hn::DemoteTo(dh, descaleV<21>(out[0][c])));
    storeColumns(cols, pDst, dstStep);
}

// One reduced line on vectors: z[k] is input k of four lines.
template <int M, int Shift>
HWY_INLINE void scaledLine(const V32 (&z)[8], V32 (&out)[M]) {
    if constexpr (M == 4) {
        const V32 t0 = hn::ShiftLeft<14>(z[0]);
        const V32 t2 = hn::Add(mulC(z[2], 15137), mulC(z[6], -6270));
        const V32 t10 = hn::Add(t0, t2), t12 = hn::Sub(t0, t2);
        const V32 o0 = hn::Add(hn::Add(mulC(z[7], -1730), mulC(z[5], 11893)), hn::Add(mulC(z[3], -17799), mulC(z[1], 8697)));
        const V32 o2 = hn::Add(hn::Add(mulC(z[7], -4176), mulC(z[5], -4926)), hn::Add(mulC(z[3], 7373), mulC(z[1], 20995)));
        out[0] = descaleV<Shift>(hn::Add(t10, o2)), out[3] = descaleV<Shift>(hn::Sub(t10, o2));
        out[1] = descaleV<Shift>(hn::Add(t12, o0)), out[2] = descaleV<Shift>(hn::Sub(t12, o0));
    } else {
        const V32 t10 = hn::ShiftLeft<15>(z[0]);
        const V32 o = hn::Add(hn::Add(mulC(z[7], -5906), mulC(z[5], 6967)), hn::Add(mulC(z[3], -10426), mulC(z[1], 29692)));
        out[0] = descaleV<Shift>(hn::Add(t10, o)), out[1] = descaleV<Shift>(hn::Sub(t10, o));
    }
}

// Columns four at a time, then (4x4) the four rows as lanes after a
// transpose, or (2x2) the two rows in scalar code.
template <int M>
void scaledVector(const Vqc16s* pSrc, Vqc8u* pDst, int32_t dstStep, const Vqc16u* pTable) {
    const D32 d;
    const hn::Rebind<int16_t, D32> d16;
    const Vqc16s* table = reinterpret_cast<const Vqc16s*>(pTable);  // read as signed
    V32 ws[2][M];  // [columns 0-3 or 4-7][row]
    for (int h = 0; h < 2; ++h) {
        V32 z[8];
        for (int k = 0; k < 8; ++k)
            z[k] = hn::Mul(hn::PromoteTo(d, hn::LoadU(d16, pSrc + 8 * k + 4 * h)), hn::PromoteTo(d, hn::LoadU(d16, table + 8 * k + 4 * h)));
        scaledLine<M, M == 4 ? 12 : 13>(z, ws[h]);
    }
    if constexpr (M == 4) {
        // Input k of row r is column k of ws: transpose both 4x4 halves.
        V32 z[8] = {ws[0][0], ws[0][1], ws[0][2], ws[0][3], ws[1][0], ws[1][1], ws[1][2], ws[1][3]};
        Transpose4x4(D32(), z[0], z[1], z[2], z[3]);
        Transpose4x4(D32(), z[4], z[5], z[6], z[7]);
        V32 out[4];
        scaledLine<4, 19>(z, out);  // out[c]: column c of the four rows
        Transpose4x4(D32(), out[0], out[1], out[2], out[3]);
        const hn::Rebind<uint8_t, D32> d8;
        for (int r = 0; r < 4; ++r)
            hn::StoreU(hn::DemoteTo(d8, hn::Add(out[r], hn::Set(d, 128))), d8, rowAt(pDst, dstStep, r));
    } else {
        alignas(16) int32_t w[2][8];
        for (int h = 0; h < 2; ++h)
            for (int r = 0; r < 2; ++r) hn::Store(ws[h][r], d, w[r] + 4 * h);
        for (int r = 0; r < 2; ++r) {
            int32_t z[8][1], out[2][1];
            for (int k = 0; k < 8; ++k) z[k][0] = w[r][k];
            scaledLines<2, 20>(z, out);
            Vqc8u* row = rowAt(pDst, dstStep, r);
            row[0] = sat8u(addW(out[0][0], 128)), row[1] = sat8u(addW(out[1][0], 128));
        }
    }
}
#endif

// The reduced forms in the order of McuReducedKind.
using ReducedFn = void (*)(const Vqc16s*, Vqc8u*, int32_t, const Vqc16u*);
#if VQCJ_SIMD_BASELINE
constexpr ReducedFn kReduced[] = {cornerBlock<2>, cornerBlock<4>, scaledBlock<4>, scaledBlock<2>};
#else
constexpr ReducedFn kReduced[] = {cornerVector<2>, cornerVector<4>, scaledVector<4>, scaledVector<2>};
#endif

void ReducedBlock(int kind, const Vqc16s* pSrc, Vqc8u* pDst, int32_t dstStep, const Vqc16u* pTable) {
    kReduced[kind](pSrc, pDst, dstStep, pTable);
}

}  // namespace vqcj::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace vqcj {
HWY_EXPORT(ReducedBlock);
}  // namespace vqcj

using namespace vqcj;

namespace {

// The checks, then the kernel; the DC-only form needs no dispatch.
VqcStatus reduced(int kind, const Vqc16s* pSrc, Vqc8u* pDst, int32_t dstStep, const Vqc16u* pTable) {
    if (VqcStatus st = checkBlock(pSrc, pDst, dstStep, pTable)) return st;
    if (kind < 0) dcBlock(pSrc, pDst, dstStep, pTable);
    else VQCJ_DISPATCH(ReducedBlock)(kind, pSrc, pDst, dstStep, pTable);
    return vqcStatusOk;
}

}  // namespace

#define VQCJ_REDUCED(name, kind)                                                                        \
    VQCJ_API VqcStatus name(const Vqc16s* pSrc, Vqc8u* pDst, int32_t dstStep, const Vqc16u* pQuantInvTable) { \
        return reduced(kind, pSrc, pDst, dstStep, pQuantInvTable);                                      \
    }

extern "C" {

VQCJ_REDUCED(vqciDCTQuantInv8x8LS_1x1_JPEG_16s8u_C1R, -1)
VQCJ_REDUCED(vqciDCTQuantInv8x8LS_2x2_JPEG_16s8u_C1R, kCorner2)
VQCJ_REDUCED(vqciDCTQuantInv8x8LS_4x4_JPEG_16s8u_C1R, kCorner4)
VQCJ_REDUCED(vqciDCTQuantInv8x8To4x4LS_JPEG_16s8u_C1R, kScaled4)
VQCJ_REDUCED(vqciDCTQuantInv8x8To2x2LS_JPEG_16s8u_C1R, kScaled2)

}  // extern "C"
#endif  // HWY_ONCE
