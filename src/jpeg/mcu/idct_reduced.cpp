// Reduced inverse DCTs: the full fixed-point inverse on blocks whose
// coefficients outside a top-left corner are zero (LS_1x1, 2x2, 4x4), and the
// 4x4 and 2x2 scaled outputs of the classic libjpeg reduced transforms.
#include <cstring>

#include "frame/check.h"
#include "frame/rows.h"
#include "frame/wrap.h"

namespace vqcj {
namespace {

// ---- Corner-only blocks --------------------------------------------------

// The inverse butterfly of the 8x8 fixed-point kernel with the inputs from
// N on known to be zero. The terms they feed drop out; arithmetic modulo
// 2^32 is a ring, so every sum keeps the full kernel's 32-bit value and the
// shifts see the same operands.
template <int N, bool ColPass>
inline void cornerLine(const Vqc16s* in, int32_t* y) {
    const auto at = [in](int k) -> int32_t { return k < N ? in[k] : 0; };
    const int32_t i0 = at(0), i1 = at(1), i2 = at(2), i3 = at(3);
    const int32_t A = mulW(i3, 27246), B = mulW(i3, -18205);
    const int32_t C = mulW(i1, 32139), D = mulW(i1, 6393);
    const int32_t E = subW(C, A), F = subW(D, B), H = addW(E, F), J = subW(E, F);
    const int32_t G = mulW(addW(addW(A, C), 2048) >> 12, 5793);
    const int32_t I = mulW(addW(addW(B, D), 2048) >> 12, 5793);
    const int32_t T = shlW(i0, 15);
    const int32_t R = mulW(i2, 25080 + 17734), S = mulW(i2, 17734);
    const int32_t U = addW(T, R), V = subW(T, R), W = addW(T, S), X = subW(T, S);
    const auto fin = [](int32_t v) { return ColPass ? addW(v, 2048) >> 12 : addW(v, 1 << 20) >> 21; };
    y[0] = fin(addW(U, G)), y[7] = fin(subW(U, G));
    y[1] = fin(addW(W, H)), y[6] = fin(subW(W, H));
    y[2] = fin(addW(X, J)), y[5] = fin(subW(X, J));
    y[3] = fin(addW(V, I)), y[4] = fin(subW(V, I));
}

// Dequantises the N x N corner (products saturated, both factors signed),
// runs the columns that hold it and then every row, each pass keeping its
// results in 16 bits as the full kernel does, and writes the level-shifted
// bytes.
template <int N>
void cornerBlock(const Vqc16s* pSrc, Vqc8u* pDst, int32_t dstStep, const Vqc16u* pTable) {
    Vqc16s col[N][N], cols[8][N];  // [row][column]
    for (int r = 0; r < N; ++r)
        for (int c = 0; c < N; ++c)
            col[c][r] = sat16s(int32_t(pSrc[8 * r + c]) * static_cast<Vqc16s>(pTable[8 * r + c]));
    for (int c = 0; c < N; ++c) {
        int32_t y[8];
        cornerLine<N, true>(col[c], y);
        for (int r = 0; r < 8; ++r) cols[r][c] = cut16s(y[r]);
    }
    for (int r = 0; r < 8; ++r) {
        int32_t y[8];
        cornerLine<N, false>(cols[r], y);
        Vqc8u px[8];
        for (int c = 0; c < 8; ++c) px[c] = add128Sat8u(cut16s(y[c]));
        std::memcpy(rowAt(pDst, dstStep, r), px, 8);
    }
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

// 4-point line from the eight inputs at stride `s` (input 4 is not used):
// outputs 0..3.
template <int Shift, class Get>
inline void line4(Get z, int32_t* out) {
    const int32_t t0 = shlW(z(0), 14);
    const int32_t t2 = addW(mulW(z(2), 15137), mulW(z(6), -6270));
    const int32_t t10 = addW(t0, t2), t12 = subW(t0, t2);
    const int32_t o0 = addW(addW(mulW(z(7), -1730), mulW(z(5), 11893)), addW(mulW(z(3), -17799), mulW(z(1), 8697)));
    const int32_t o2 = addW(addW(mulW(z(7), -4176), mulW(z(5), -4926)), addW(mulW(z(3), 7373), mulW(z(1), 20995)));
    out[0] = descale(addW(t10, o2), Shift), out[3] = descale(subW(t10, o2), Shift);
    out[1] = descale(addW(t12, o0), Shift), out[2] = descale(subW(t12, o0), Shift);
}

// 2-point line: inputs 0, 1, 3, 5, 7; outputs 0, 1.
template <int Shift, class Get>
inline void line2(Get z, int32_t* out) {
    const int32_t t10 = shlW(z(0), 15);
    const int32_t o = addW(addW(mulW(z(7), -5906), mulW(z(5), 6967)), addW(mulW(z(3), -10426), mulW(z(1), 29692)));
    out[0] = descale(addW(t10, o), Shift), out[1] = descale(subW(t10, o), Shift);
}

// Column pass over the columns a reduced line reads, then rows; each product
// coefficient times multiplier is exact in 32 bits.
template <int M>
void scaledBlock(const Vqc16s* pSrc, Vqc8u* pDst, int32_t dstStep, const Vqc16u* pTable) {
    int32_t ws[M][8] = {};
    for (int c = 0; c < 8; ++c) {
        const auto z = [&](int k) { return int32_t(pSrc[8 * k + c]) * static_cast<Vqc16s>(pTable[8 * k + c]); };
        int32_t out[M];
        if constexpr (M == 4) line4<12>(z, out);
        else line2<13>(z, out);
        for (int r = 0; r < M; ++r) ws[r][c] = out[r];
    }
    for (int r = 0; r < M; ++r) {
        const auto z = [&](int k) { return ws[r][k]; };
        int32_t out[M];
        if constexpr (M == 4) line4<19>(z, out);
        else line2<20>(z, out);
        Vqc8u px[M];
        for (int c = 0; c < M; ++c) px[c] = sat8u(addW(out[c], 128));
        std::memcpy(rowAt(pDst, dstStep, r), px, M);
    }
}

// The checks of the full inverse: pSrc, pDst, dstStep, then the table.
inline VqcStatus checkBlock(const Vqc16s* pSrc, const Vqc8u* pDst, int32_t dstStep, const Vqc16u* pTable) {
    return Check().ptr(pSrc).ptr(pDst).step(dstStep).ptr(pTable);
}

}  // namespace
}  // namespace vqcj

using namespace vqcj;

extern "C" {

VQCJ_API VqcStatus vqciDCTQuantInv8x8LS_1x1_JPEG_16s8u_C1R(const Vqc16s* pSrc, Vqc8u* pDst, int32_t dstStep,
                                                            const Vqc16u* pQuantInvTable) {
    if (VqcStatus st = checkBlock(pSrc, pDst, dstStep, pQuantInvTable)) return st;
    dcBlock(pSrc, pDst, dstStep, pQuantInvTable);
    return vqcStatusOk;
}

VQCJ_API VqcStatus vqciDCTQuantInv8x8LS_2x2_JPEG_16s8u_C1R(const Vqc16s* pSrc, Vqc8u* pDst, int32_t dstStep,
                                                            const Vqc16u* pQuantInvTable) {
    if (VqcStatus st = checkBlock(pSrc, pDst, dstStep, pQuantInvTable)) return st;
    cornerBlock<2>(pSrc, pDst, dstStep, pQuantInvTable);
    return vqcStatusOk;
}

VQCJ_API VqcStatus vqciDCTQuantInv8x8LS_4x4_JPEG_16s8u_C1R(const Vqc16s* pSrc, Vqc8u* pDst, int32_t dstStep,
                                                            const Vqc16u* pQuantInvTable) {
    if (VqcStatus st = checkBlock(pSrc, pDst, dstStep, pQuantInvTable)) return st;
    cornerBlock<4>(pSrc, pDst, dstStep, pQuantInvTable);
    return vqcStatusOk;
}

VQCJ_API VqcStatus vqciDCTQuantInv8x8To4x4LS_JPEG_16s8u_C1R(const Vqc16s* pSrc, Vqc8u* pDst, int32_t dstStep,
                                                             const Vqc16u* pQuantInvTable) {
    if (VqcStatus st = checkBlock(pSrc, pDst, dstStep, pQuantInvTable)) return st;
    scaledBlock<4>(pSrc, pDst, dstStep, pQuantInvTable);
    return vqcStatusOk;
}

VQCJ_API VqcStatus vqciDCTQuantInv8x8To2x2LS_JPEG_16s8u_C1R(const Vqc16s* pSrc, Vqc8u* pDst, int32_t dstStep,
                                                             const Vqc16u* pQuantInvTable) {
    if (VqcStatus st = checkBlock(pSrc, pDst, dstStep, pQuantInvTable)) return st;
    scaledBlock<2>(pSrc, pDst, dstStep, pQuantInvTable);
    return vqcStatusOk;
}

}  // extern "C"
