// The fused block operations: level shift, DCT and quantisation in one call.
// Every form is one kernel source compiled for every SIMD target.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "jpeg/transform/dctquant.cpp"
#include <hwy/foreach_target.h>  // must come before highway.h
#include <hwy/highway.h>

#include <bit>
#include <climits>
#include <cstring>

#include "dct.h"
#include "frame/check.h"
#include "frame/rows.h"
#include "frame/simd.h"
#include "frame/simdblock.h"
#include "frame/wrap.h"
#include "quant.h"

#ifndef VQCJ_DCTQUANT_ONCE
#define VQCJ_DCTQUANT_ONCE
namespace vqcj {
namespace {

// Saturates v to lo..hi and rounds it to the nearest integer, ties to even,
// for integer limits below 2^21 in magnitude. Rounding first and limiting
// the integer after gives the same result as limiting first. Ties to even
// come from adding 1.5 * 2^23, which leaves no fraction bits, once the
// magnitude is at most 2^21; that bound is set on the bit pattern, since
// float comparisons would keep the loop from being vectorised. NaN goes to
// one of the limits.
inline int32_t roundSaturated(float v, int32_t lo, int32_t hi) {
    constexpr float kMagic = 12582912.0f;
    constexpr int32_t kBound = std::bit_cast<int32_t>(2097152.0f);
    const int32_t bits = std::bit_cast<int32_t>(v);
    int32_t mag = bits & 0x7FFFFFFF;
    mag = mag > kBound ? kBound : mag;
    const float r = (std::bit_cast<float>(mag | (bits & INT32_MIN)) + kMagic) - kMagic;
    const int32_t i = static_cast<int32_t>(r);
    return i < lo ? lo : (i > hi ? hi : i);
}

}  // namespace

// The plain routines: the baseline target and the tests' reference. The
// block's own level shift is the one of ownSub128, without its row frame.
void ownDCTQuantFwdLS8uPlain(const Vqc8u* pSrc, int32_t srcStep, Vqc16s* pDst, const Vqc16u* pTable) {
    for (int32_t r = 0; r < 8; ++r) {
        const Vqc8u* s = rowAt(pSrc, srcStep, r);
        for (int32_t c = 0; c < 8; ++c) pDst[8 * r + c] = static_cast<Vqc16s>(s[c] - 128);
    }
    ownDCT8x8Fwd16s(pDst, pDst);
    ownMulScale16u16s(pTable, pDst, pDst, 64, 15);
}

void ownDCTQuantFwd16sPlain(const Vqc16s* pSrc, Vqc16s* pDst, const Vqc16u* pTable) {
    ownDCT8x8Fwd16s(pSrc, pDst);
    ownMulScale16u16s(pTable, pDst, pDst, 64, 15);
}

void ownDCTQuantInvLS8uPlain(const Vqc16s* pSrc, Vqc8u* pDst, int32_t dstStep, const Vqc16u* pTable) {
    alignas(32) Vqc16s coef[64];
    ownMulSat16sTo(pSrc, pTable, coef, 64);
    ownDCT8x8InvLS16s8u(coef, pDst, dstStep);
}

void ownDCTQuantInv16sPlain(const Vqc16s* pSrc, Vqc16s* pDst, const Vqc16u* pTable) {
    ownMulSat16sTo(pSrc, pTable, pDst, 64);
    ownDCT8x8Inv16s(pDst, pDst);
}

void ownDCTQuantFwdLS16uPlain(const Vqc16u* pSrc, int32_t srcStep, Vqc16s* pDst, const Vqc32f* pTable) {
    // The step is in bytes and need not keep 16-bit alignment.
    Vqc16u px[64];
    for (int32_t r = 0; r < 8; ++r) std::memcpy(px + 8 * r, rowAt(pSrc, srcStep, r), 16);
    alignas(32) Vqc32f block[64];
    for (int32_t i = 0; i < 64; ++i) block[i] = static_cast<Vqc32f>(px[i]);
    for (int32_t i = 0; i < 64; ++i) block[i] -= 2048.0f;
    ownDCT8x8Fwd32f(block);
    for (int32_t i = 0; i < 64; ++i)
        pDst[i] = static_cast<Vqc16s>(roundSaturated(block[i] * pTable[i], -32768, 32767));
}

void ownDCTQuantInvLS16uPlain(const Vqc16s* pSrc, Vqc16u* pDst, int32_t dstStep, const Vqc32f* pTable) {
    alignas(32) Vqc32f block[64];
    for (int32_t i = 0; i < 64; ++i) block[i] = static_cast<Vqc32f>(pSrc[i]) * pTable[i];
    ownDCT8x8Inv32f(block);
    // Saturating to 0..65535, rounding and then limiting to 4095 is the same
    // as saturating to 0..4095 at once. The step is in bytes.
    Vqc16u px[64];
    for (int32_t i = 0; i < 64; ++i) px[i] = static_cast<Vqc16u>(roundSaturated(block[i] + 2048.0f, 0, 4095));
    for (int32_t r = 0; r < 8; ++r) std::memcpy(rowAt(pDst, dstStep, r), px + 8 * r, 16);
}

}  // namespace vqcj
#endif  // VQCJ_DCTQUANT_ONCE

HWY_BEFORE_NAMESPACE();
namespace vqcj::HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

#if !VQCJ_SIMD_BASELINE

// ---- Fixed point in 16-bit pairs -------------------------------------------
//
// A block is held as 16-bit values paired in 32-bit lanes: a vector of
// pairs holds, for each of eight lines (rows or columns), two of the
// line's elements, and MulAddPairs (pmaddwd) forms c1 x + c2 y for all
// eight lines in one step. The butterflies are regrouped into such pair
// products; arithmetic modulo 2^32 is a ring, so each sum keeps the 32-bit
// value of the plain routine as long as every 16-bit operand is exact, and
// the rounding shifts see the same operands.
//
// A part is one 256-bit vector (eight lines) or two of 128 bits (four lines
// each); the two 128-bit blocks of the eight lines hold lines 0-3 and 4-7.

using Pairs = BlockV16[kBlockParts][4];  // [part][pair]
using IntBlock = Block32<BlockD32>;      // [part][element], one line per lane

template <int Bits>
HWY_INLINE BlockV32 RoundShift(BlockV32 v) {
    return hn::ShiftRight<Bits>(hn::Add(v, hn::Set(BlockD32(), 1 << (Bits - 1))));
}

// Inverse butterfly on the pairs (i0, i4), (i1, i7), (i2, i6), (i3, i5).
// Every operand is an input, so the results are exact for any input. A and
// B are products of (i3, i5), C and D of (i1, i7). The row pass takes T + P
// as 2 (16384 (i0 + i4)) and T - P as that less 65536 i4, R as
// 2 (21407 i2 + 8867 i6) and S as 17734 i2 + 22723 i6 - 65536 i6, the 65536
// multiples taken from the 16-bit halves in place. The column pass keeps
// its values 16 times larger, so that the 16-bit cut of (y + 2048) >> 12
// is the upper half of 16 (y + 2048): it forms (T + P) / 2 + R / 2 and the
// like and shifts them by 5, adds 16 i6 where S is odd, and scales G, I, H
// and J by 16. The rounding bias of the outputs is folded into T + P. The
// row pass's results are 11 bits.
template <bool ColPass>
HWY_INLINE void InvLine16(const BlockV16 (&q)[4], BlockV32 (&y)[8]) {
    const BlockD32 d;
    BlockV32 U, V, W, X;
    if constexpr (ColPass) {
        const auto bias = hn::Set(d, 1 << 10);
        const auto tp = hn::Add(MulAddPairs<16384, 16384>(q[0]), bias), tm = hn::Add(MulAddPairs<16384, -16384>(q[0]), bias);
        const auto r = MulAddPairs<21407, 8867>(q[2]), s = MulAddPairs<8867, -21407>(q[2]);
        const auto i6 = MulAddPairs<0, 16>(q[2]);
        U = hn::ShiftLeft<5>(hn::Add(tp, r)), V = hn::ShiftLeft<5>(hn::Sub(tp, r));
        W = hn::Add(hn::ShiftLeft<5>(hn::Add(tm, s)), i6), X = hn::Sub(hn::ShiftLeft<5>(hn::Sub(tm, s)), i6);
    } else {
        const auto high = hn::Set(d, -65536);
        const auto q0 = hn::BitCast(d, q[0]), q2 = hn::BitCast(d, q[2]);  // 65536 i4, 65536 i6 in the high halves
        const auto tp = hn::Add(hn::ShiftLeft<1>(MulAddPairs<16384, 16384>(q[0])), hn::Set(d, 1 << 20));
        const auto tm = hn::Sub(tp, hn::And(q0, high));
        const auto r = hn::ShiftLeft<1>(MulAddPairs<21407, 8867>(q[2]));
        const auto s = hn::Sub(MulAddPairs<17734, 22723>(q[2]), hn::And(q2, high));
        U = hn::Add(tp, r), V = hn::Sub(tp, r), W = hn::Add(tm, s), X = hn::Sub(tm, s);
    }

    const auto A = MulAddPairs<27246, 18205>(q[3]), B = MulAddPairs<-18205, 27246>(q[3]);
    const auto C = MulAddPairs<32139, 6393>(q[1]), D = MulAddPairs<6393, -32138>(q[1]);
    const auto scale = [](BlockV32 v) HWY_ATTR { return ColPass ? hn::ShiftLeft<4>(v) : v; };
    const auto E = scale(hn::Sub(C, A)), F = scale(hn::Sub(D, B));
    const auto H = hn::Add(E, F), J = hn::Sub(E, F);
    const auto k5793 = hn::Set(d, ColPass ? 16 * 5793 : 5793);
    const auto G = hn::Mul(RoundShift<12>(hn::Add(A, C)), k5793), I = hn::Mul(RoundShift<12>(hn::Add(B, D)), k5793);

    // Results for PairUp: those of even index in the lower 16 bits, the
    // others in the upper, where the column pass already has them.
    const auto lo = [](BlockV32 v) HWY_ATTR { return ColPass ? hn::ShiftRight<16>(v) : hn::ShiftRight<21>(v); };
    const auto hi = [](BlockV32 v) HWY_ATTR { return ColPass ? v : hn::ShiftRight<5>(v); };
    y[0] = lo(hn::Add(U, G)), y[7] = hi(hn::Sub(U, G));
    y[1] = hi(hn::Add(W, H)), y[6] = lo(hn::Sub(W, H));
    y[2] = lo(hn::Add(X, J)), y[5] = hi(hn::Sub(X, J));
    y[3] = hi(hn::Add(V, I)), y[4] = lo(hn::Sub(V, I));
}

// Forward butterfly on the pairs (x0, x3), (x7, x4), (x1, x2), (x6, x5),
// for blocks of samples within 0..255, the level shift left to the column
// pass's rounding of E0 in column 0 (dc0: 32 less 65536), the only result
// it changes. Bounds worked out over every extreme block (each result is monotonic in each sample): the first sums
// and differences stay within +-16384 and d16 +- d25 within +-32640 on
// either pass, no 32-bit value of the plain routine reaches 2^31, and every
// result fits 16 bits, so no cut is needed. Samples of 128 and -129
// already take d16 + d25 past 16 bits.
//
// E2 is 2 (21407 b + 8867 d), its rounding shift taken by one bit less;
// E6 is 17734 b - (32768 + 10045) d. t is 11 (x0 - x7) + R, R being
// (1285 (x0 - x7) + 2048) >> 12, which MulFixedPoint15 by 10280 gives, and
// s the same of x3 - x4. The row pass keeps u, v, w, z in 16 bits; the
// column pass, where they need 19, expands the odd outputs into products
// of (x0-x7, x3-x4), (R07, R34) and (d16 + d25, d16 - d25), with
// 65536 (x0 - x7) or 65536 (x3 - x4) taking the part of a constant beyond
// 16 bits.
template <bool RowPass>
HWY_INLINE void FwdLine16(const BlockV16 (&q)[4], BlockV32 (&y)[8], BlockV32 dc0 = BlockV32()) {
    const BlockD32 d;
    const auto s03 = hn::Add(q[0], q[1]), s12 = hn::Add(q[2], q[3]);  // (s07, s34), (s16, s25)
    const auto d03 = hn::Sub(q[0], q[1]), d12 = hn::Sub(q[2], q[3]);  // (d07, d34), (d16, d25)
    const auto e2h = hn::Add(MulAddPairs<21407, -21407>(s03), MulAddPairs<8867, -8867>(s12));
    const auto e6 = hn::Add(hn::Add(MulAddPairs<17734, -17734>(s03), MulAddPairs<-32768, 32767>(s12)),
                            MulAddPairs<-10045, 10046>(s12));
    const auto r = hn::MulFixedPoint15(d03, hn::Set(BlockD16(), 10280));  // (R07, R34)
    if constexpr (RowPass) {
        const auto a8 = MulAddPairs<8, 8>(s03), c8 = MulAddPairs<8, 8>(s12);
        // For PairUp: results of even index in the lower 16 bits, the others
        // in the upper.
        const auto hi = [](BlockV32 v) HWY_ATTR { return hn::ShiftLeft<4>(hn::Add(v, hn::Set(BlockD32(), 2048))); };
        y[0] = hn::Add(a8, c8), y[4] = hn::Sub(a8, c8);
        y[2] = RoundShift<11>(e2h), y[6] = RoundShift<12>(e6);
        const auto ts = hn::Add(hn::Mul(d03, hn::Set(BlockD16(), 11)), r);  // (t, s)
        const auto gh = hn::Add(hn::Mul(d12, PairConst<8, -8>()), hn::ShiftLeft<3>(SwapPairHalves(d12)));
        const auto uv = hn::Add(ts, gh), wz = hn::Sub(ts, gh);
        y[1] = hi(MulAddPairs<4017, 799>(uv)), y[7] = hi(MulAddPairs<799, -4017>(uv));
        y[3] = hi(MulAddPairs<3406, -2275>(wz)), y[5] = hi(MulAddPairs<2276, 3406>(wz));
    } else {
        const auto a = MulAddPairs<1, 1>(s03), c = MulAddPairs<1, 1>(s12);
        y[0] = hn::ShiftRight<6>(hn::Add(hn::Add(a, c), dc0)), y[4] = RoundShift<6>(hn::Sub(a, c));
        y[2] = RoundShift<20>(e2h), y[6] = RoundShift<21>(e6);
        const auto gh = hn::Add(hn::Mul(d12, PairConst<1, -1>()), SwapPairHalves(d12));
        // 65536 (x0 - x7) and 65536 (x3 - x4), from the halves in place.
        const auto w07 = hn::ShiftLeft<16>(hn::BitCast(d, d03)), w34 = hn::And(hn::BitCast(d, d03), hn::Set(d, -65536));
        const auto sum = [](BlockV32 pd, BlockV32 pr, BlockV32 pg) HWY_ATTR { return hn::Add(hn::Add(pd, pr), pg); };
        y[1] = RoundShift<21>(hn::Add(sum(MulAddPairs<-21349, 8789>(d03), MulAddPairs<4017, 799>(r), MulAddPairs<32136, 6392>(gh)), w07));
        y[7] = RoundShift<21>(hn::Sub(sum(MulAddPairs<8789, 21349>(d03), MulAddPairs<799, -4017>(r), MulAddPairs<6392, -32136>(gh)), w34));
        y[3] = RoundShift<21>(hn::Add(sum(MulAddPairs<-28070, -25025>(d03), MulAddPairs<3406, -2275>(r), MulAddPairs<-27248, 18200>(gh)), w07));
        y[5] = RoundShift<21>(hn::Add(sum(MulAddPairs<25036, -28070>(d03), MulAddPairs<2276, 3406>(r), MulAddPairs<-18208, -27248>(gh)), w34));
    }
}

// Eight results of eight lines, one line per 32-bit lane, those of even
// index in the lower 16 bits and the others in the upper: t[m] holds
// results 2m and 2m + 1 of each line, cut to 16 bits by the blend.
HWY_INLINE void PairUp(const BlockV32 (&y)[8], BlockV16 (&t)[4]) {
    const BlockD16 d16;
    for (int m = 0; m < 4; ++m) t[m] = hn::OddEven(hn::BitCast(d16, y[2 * m + 1]), hn::BitCast(d16, y[2 * m]));
}

// PairUp's results to pairs of lines for the other direction. The lines must
// come in the lanes as the pairs wanted, side by side: pair j is the lines
// in lanes 2j and 2j + 1, and holds element k in lane k. A 16-bit shuffle
// within each 64 bits makes those pairs; interleaving 64-bit halves and
// regrouping the 128-bit blocks puts them in place.
HWY_INLINE void LinesToPairs(const BlockV16 (&t)[kBlockParts][4], Pairs& q) {
    const BlockD16 d16;
    const hn::Repartition<uint8_t, BlockD16> d8;
    const hn::Repartition<uint64_t, BlockD16> d64;
    alignas(16) static constexpr uint8_t kTranspose2x2[16] = {0, 1, 4, 5, 2, 3, 6, 7, 8, 9, 12, 13, 10, 11, 14, 15};
    const auto order = hn::LoadDup128(d8, kTranspose2x2);
    // x: pair 2b (2b + 1 for y) of elements 0-3 in block b, z and w: of 4-7.
    hn::Vec<decltype(d64)> x[kBlockParts], yy[kBlockParts], z[kBlockParts], w[kBlockParts];
    for (size_t p = 0; p < kBlockParts; ++p) {
        hn::Vec<decltype(d64)> u[4];
        for (int m = 0; m < 4; ++m) u[m] = hn::BitCast(d64, hn::TableLookupBytes(hn::BitCast(d8, t[p][m]), order));
        x[p] = hn::InterleaveLower(d64, u[0], u[1]), yy[p] = hn::InterleaveUpper(d64, u[0], u[1]);
        z[p] = hn::InterleaveLower(d64, u[2], u[3]), w[p] = hn::InterleaveUpper(d64, u[2], u[3]);
    }
#if HWY_MAX_BYTES >= 32
    q[0][0] = hn::BitCast(d16, hn::ConcatLowerLower(d64, z[0], x[0]));
    q[0][1] = hn::BitCast(d16, hn::ConcatLowerLower(d64, w[0], yy[0]));
    q[0][2] = hn::BitCast(d16, hn::ConcatUpperUpper(d64, z[0], x[0]));
    q[0][3] = hn::BitCast(d16, hn::ConcatUpperUpper(d64, w[0], yy[0]));
#else
    for (size_t p = 0; p < 2; ++p) {
        q[p][0] = hn::BitCast(d16, p ? z[0] : x[0]), q[p][1] = hn::BitCast(d16, p ? w[0] : yy[0]);
        q[p][2] = hn::BitCast(d16, p ? z[1] : x[1]), q[p][3] = hn::BitCast(d16, p ? w[1] : yy[1]);
    }
#endif
}

// The products of coefficients and table entries, both read signed,
// saturated to 16 bits.
HWY_INLINE BlockV16 Dequant(BlockV16 c, BlockV16 t) {
    // The product fits when its high half is the sign of the low half;
    // otherwise it saturates to the sign of the high half.
    const BlockD16 d16;
    const auto lo = hn::Mul(c, t), hi = hn::MulHigh(c, t);
    const auto sat = hn::Xor(hn::ShiftRight<15>(hi), hn::Set(d16, 0x7FFF));
    return hn::IfThenElse(hn::Eq(hi, hn::ShiftRight<15>(lo)), lo, sat);
}

// Forward quantisation of 16-bit coefficients z by the unsigned entries t:
// t z / 32768 rounded half to even and saturated. With t = ts + 32768 h,
// the product divided by 32768 is h z plus ts z / 32768, which
// MulFixedPoint15 rounds half up exactly; a tie whose quotient is even is
// the one case to take back, and it is exactly a product ending in the 16
// bits 0x4000.
HWY_INLINE BlockV16 QuantFwd(BlockV16 z, BlockV16 t) {
    const BlockD16 d;
    const auto hz = hn::And(hn::ShiftRight<15>(t), z);
    const auto up = hn::MulFixedPoint15(hn::And(t, hn::Set(d, 0x7FFF)), z);
    const auto tie = hn::VecFromMask(d, hn::Eq(hn::Mul(t, z), hn::Set(d, 0x4000)));
    return hn::SaturatedAdd(hz, hn::Add(up, tie));
}

// 16-bit vectors in memory order over a block of 64.
constexpr size_t kRowLanes = 16 / kBlockParts;
constexpr size_t kRowVecs = 64 / kRowLanes;

// The i-th of them, read 16 bytes at a time: a block its caller has just
// written in pieces of 16 bytes or less is then forwarded from the stores.
HWY_INLINE BlockV16 LoadRows(const int16_t* p, size_t i) {
#if HWY_MAX_BYTES >= 32
    const hn::Half<BlockD16> dh;
    return hn::Combine(BlockD16(), hn::LoadU(dh, p + 16 * i + 8), hn::LoadU(dh, p + 16 * i));
#else
    return hn::LoadU(BlockD16(), p + 8 * i);
#endif
}

// Quantises the rows of y (element k of the column lines = row k) into pDst.
HWY_INLINE void QuantRows(const IntBlock& y, const Vqc16u* pTable, Vqc16s* pDst) {
    const BlockD16 d16;
    const auto* table = reinterpret_cast<const Vqc16s*>(pTable);
    for (size_t i = 0; i < kRowVecs; ++i) {
#if HWY_MAX_BYTES >= 32
        // Rows 2i and 2i + 1 packed by 128-bit blocks, then put in order.
        const BlockD32 d32;
        alignas(32) static constexpr int32_t kOrder[8] = {0, 1, 4, 5, 2, 3, 6, 7};
        const auto packed = hn::BitCast(d32, hn::ReorderDemote2To(d16, y[0][2 * i], y[0][2 * i + 1]));
        const auto z = hn::BitCast(d16, hn::TableLookupLanes(packed, hn::SetTableIndices(d32, kOrder)));
#else
        const auto z = hn::ReorderDemote2To(d16, y[0][i], y[1][i]);
#endif
        hn::StoreU(QuantFwd(z, hn::LoadU(d16, table + kRowLanes * i)), d16, pDst + kRowLanes * i);
    }
}

// Forward DCT and quantisation of sample pairs: rows (0, 1), (3, 2), (7, 6),
// (4, 5) of the block in the two 128-bit blocks of the four vectors, each
// row's columns in the order 0, 3, 7, 4, 1, 2, 6, 5. The transpose of the
// 32-bit lanes gives the pairs of columns for the row pass, whose lines are
// then the rows 0, 3, 7, 4, 1, 2, 6, 5, side by side as the column pass
// pairs them; its lines are the columns in order.
HWY_INLINE void FwdQuantPairs(BlockV16 (&rows)[4][kBlockParts], const Vqc16u* pTable, Vqc16s* pDst) {
    const BlockD16 d16;
    const BlockD32 d32;
    Pairs q;
    IntBlock y;
    BlockV16 t[kBlockParts][4];
    for (size_t p = 0; p < kBlockParts; ++p) {
        BlockV32 e[4];
        for (int j = 0; j < 4; ++j) e[j] = hn::BitCast(d32, rows[j][p]);
        Transpose4x4(d32, e[0], e[1], e[2], e[3]);
        for (int j = 0; j < 4; ++j) q[p][j] = hn::BitCast(d16, e[j]);
        FwdLine16<true>(q[p], y[p]);
        PairUp(y[p], t[p]);
    }
    LinesToPairs(t, q);
    alignas(32) static constexpr int32_t kDc[8] = {32 - 65536, 32, 32, 32, 32, 32, 32, 32};
    for (size_t p = 0; p < kBlockParts; ++p)
        FwdLine16<false>(q[p], y[p], hn::Load(d32, kDc + hn::Lanes(d32) * p));
    QuantRows(y, pTable, pDst);
}

// Rows of the forward kernel's input, in FwdQuantPairs' order.
constexpr int kFwdRows[4][2] = {{0, 1}, {3, 2}, {7, 6}, {4, 5}};

// ---- Fixed point in 32-bit lanes: the forms of 16-bit samples -----------------

// The forward butterfly of dct.cpp over 32-bit lanes. Vector arithmetic
// wraps, and products are taken as a whole where the plain routine splits
// them for its vectoriser: modulo 2^32 they are equal.
template <int Bits>
HWY_INLINE BlockV32 RoundShiftCut(BlockV32 v) {
    return hn::ShiftRight<16>(hn::ShiftLeft<16 - Bits>(hn::Add(v, hn::Set(BlockD32(), 1 << (Bits - 1)))));
}

HWY_INLINE BlockV32 MulK(BlockV32 v, int32_t k) { return hn::Mul(v, hn::Set(BlockD32(), k)); }

template <bool RowPass>
HWY_INLINE void FwdLine(const BlockV32 (&x)[8], BlockV32 (&y)[8]) {
    const auto s07 = hn::Add(x[0], x[7]), s16 = hn::Add(x[1], x[6]);
    const auto s25 = hn::Add(x[2], x[5]), s34 = hn::Add(x[3], x[4]);
    const auto a = hn::Add(s07, s34), b = hn::Sub(s07, s34);
    const auto c = hn::Add(s16, s25), d = hn::Sub(s16, s25);
    const auto m = MulK(hn::Add(b, d), 17734);
    const auto e0 = hn::Add(a, c), e4 = hn::Sub(a, c);
    const auto e2 = hn::Add(MulK(b, 25080), m), e6 = hn::Sub(m, MulK(d, 60547));

    const auto p = hn::ShiftLeft<3>(hn::Sub(x[1], x[6])), q = hn::ShiftLeft<3>(hn::Sub(x[2], x[5]));
    const auto s = RoundShift<12>(MulK(hn::Sub(x[3], x[4]), 46341));
    const auto t = RoundShift<12>(MulK(hn::Sub(x[0], x[7]), 46341));
    const auto pq = hn::Add(p, q), pmq = hn::Sub(p, q);
    const auto u = hn::Add(pq, t), v = hn::Add(pmq, s), w = hn::Sub(t, pq), z = hn::Sub(s, pmq);
    const auto n1 = MulK(hn::Add(u, v), 799), n2 = MulK(hn::Add(w, z), 3406);
    const auto o1 = hn::Add(n1, MulK(u, 3218)), o7 = hn::Sub(n1, MulK(v, 4816));
    const auto o3 = hn::Sub(n2, MulK(z, 5681)), o5 = hn::Sub(n2, MulK(w, 1130));

    // Results cut to 16 bits; those shifted by 21 already fit.
    if constexpr (RowPass) {
        y[0] = hn::ShiftRight<16>(hn::ShiftLeft<19>(e0)), y[4] = hn::ShiftRight<16>(hn::ShiftLeft<19>(e4));
        y[1] = RoundShiftCut<12>(o1), y[2] = RoundShiftCut<12>(e2), y[3] = RoundShiftCut<12>(o3);
        y[5] = RoundShiftCut<12>(o5), y[6] = RoundShiftCut<12>(e6), y[7] = RoundShiftCut<12>(o7);
    } else {
        y[0] = RoundShiftCut<6>(e0), y[4] = RoundShiftCut<6>(e4);
        y[1] = RoundShift<21>(o1), y[2] = RoundShift<21>(e2), y[3] = RoundShift<21>(o3);
        y[5] = RoundShift<21>(o5), y[6] = RoundShift<21>(e6), y[7] = RoundShift<21>(o7);
    }
}

// Runs a line function over the eight lines of each part.
template <class Line>
HWY_INLINE void Pass(IntBlock& v, Line line) {
    for (size_t p = 0; p < kBlockParts; ++p) {
        BlockV32 y[8];
        line(v[p], y);
        for (int k = 0; k < 8; ++k) v[p][k] = y[k];
    }
}

// Forward DCT and quantisation of any 16-bit block.
HWY_INLINE void FwdQuantWide(const Vqc16s* pSrc, const Vqc16u* pTable, Vqc16s* pDst) {
    const BlockD32 d32;
    IntBlock v;
    for (int r = 0; r < 8; ++r) {
        BlockV32 x[kBlockParts];
        LoadRow(d32, pSrc + 8 * r, x);
        for (size_t p = 0; p < kBlockParts; ++p) v[p][r] = x[p];
    }
    Transpose8x8(d32, v);
    Pass(v, FwdLine<true>);
    Transpose8x8(d32, v);
    Pass(v, FwdLine<false>);
    QuantRows(v, pTable, pDst);
}

// Dequantisation and inverse DCT of pSrc into rows: r[p][j] holds row j of
// the output in its lower 128-bit block and row j + 4 in the upper (or row
// 4p + j in part p), each value the 16-bit result. The column pass takes
// the rows as pairs (0, 4), (1, 7), (2, 6), (3, 5), its lines the columns in
// the order 0, 4, 1, 7, 2, 6, 3, 5, so that LinesToPairs gives the row pass
// the columns paired the same way; its lines are the rows in order, and a
// 4x4 transpose of the paired results in each block gives the rows.
HWY_INLINE void DequantInvRows(const Vqc16s* pSrc, const Vqc16u* pTable, BlockV16 (&r)[kBlockParts][4]) {
    const BlockD16 d16;
    const BlockD32 d32;
    const hn::Repartition<uint8_t, BlockD16> d8;
    alignas(16) static constexpr uint8_t kColumns[16] = {0, 1, 8, 9, 2, 3, 14, 15, 4, 5, 12, 13, 6, 7, 10, 11};
    const auto columns = hn::LoadDup128(d8, kColumns);
    const auto* table = reinterpret_cast<const Vqc16s*>(pTable);
    BlockV16 rows[kRowVecs];
    for (size_t i = 0; i < kRowVecs; ++i) {
        const auto c = Dequant(LoadRows(pSrc, i), hn::LoadU(d16, table + kRowLanes * i));
        rows[i] = hn::BitCast(d16, hn::TableLookupBytes(hn::BitCast(d8, c), columns));
    }
    Pairs q;
#if HWY_MAX_BYTES >= 32
    // Rows 2i and 2i + 1 regrouped by halves: columns 0, 4, 1, 7 of both in
    // the lower block, the others in the upper, so that interleaving pairs
    // them.
    alignas(32) static constexpr int32_t kHalves[8] = {0, 1, 4, 5, 2, 3, 6, 7};
    for (size_t i = 0; i < 4; ++i)
        rows[i] = hn::BitCast(d16, hn::TableLookupLanes(hn::BitCast(d32, rows[i]), hn::SetTableIndices(d32, kHalves)));
    q[0][0] = hn::InterleaveLower(d16, rows[0], rows[2]), q[0][1] = hn::InterleaveUpper(d16, rows[0], rows[3]);
    q[0][2] = hn::InterleaveLower(d16, rows[1], rows[3]), q[0][3] = hn::InterleaveUpper(d16, rows[1], rows[2]);
#else
    constexpr int kPartner[4] = {4, 7, 6, 5};
    for (int j = 0; j < 4; ++j)
        q[0][j] = hn::InterleaveLower(d16, rows[j], rows[kPartner[j]]),
        q[1][j] = hn::InterleaveUpper(d16, rows[j], rows[kPartner[j]]);
#endif
    BlockV16 t[kBlockParts][4];
    for (size_t p = 0; p < kBlockParts; ++p) {
        BlockV32 y[8];
        InvLine16<true>(q[p], y);
        PairUp(y, t[p]);
    }
    LinesToPairs(t, q);
    for (size_t p = 0; p < kBlockParts; ++p) {
        BlockV32 y[8];
        InvLine16<false>(q[p], y);
        PairUp(y, t[p]);
        BlockV32 e[4];
        for (int m = 0; m < 4; ++m) e[m] = hn::BitCast(d32, t[p][m]);
        Transpose4x4(d32, e[0], e[1], e[2], e[3]);
        for (int j = 0; j < 4; ++j) r[p][j] = hn::BitCast(d16, e[j]);
    }
}

// w's sixteen values saturated to bytes: the lower 128-bit block's eight,
// then the upper's.
HWY_INLINE hn::Vec<hn::Full128<uint8_t>> Bytes16(const BlockV16 (&w)[kBlockParts]) {
#if HWY_MAX_BYTES >= 32
    return hn::DemoteTo(hn::Full128<uint8_t>(), w[0]);
#else
    const hn::Full64<uint8_t> d8;
    return hn::Combine(hn::Full128<uint8_t>(), hn::DemoteTo(d8, w[1]), hn::DemoteTo(d8, w[0]));
#endif
}

#endif  // !VQCJ_SIMD_BASELINE

#if !VQCJ_SIMD_BASELINE
// ---- Single precision ------------------------------------------------------

using FloatBlock = Block32<BlockDF>;

HWY_INLINE BlockVF MulC(float k, BlockVF v) { return hn::Mul(hn::Set(BlockDF(), k), v); }

// The float lines of dct.cpp, lane-wise, in the same order of operations.
HWY_INLINE void FwdLine32f(BlockVF (&z)[8]) {
    const auto e0 = z[0], e1 = z[1], e2 = z[2], e3 = z[3];
    const auto d0 = z[7], d1 = z[6], d2 = z[5], d3 = z[4];
    const auto a = hn::Add(e0, e3), b = hn::Add(e1, e2), c = hn::Sub(e0, e3), m = hn::Sub(e1, e2);
    const auto w = MulC(0.70710677f, hn::Add(m, c));
    z[0] = hn::Add(a, b), z[4] = hn::Sub(a, b), z[2] = hn::Add(c, w), z[6] = hn::Sub(c, w);
    const auto d12 = hn::Add(d1, d2), d23 = hn::Add(d2, d3), d01 = hn::Add(d0, d1);
    const auto p = hn::Add(MulC(0.76536685f, d12), MulC(1.0823922f, d0));
    const auto q = hn::Sub(MulC(1.0823922f, d0), MulC(0.76536685f, d12));
    const auto r = hn::Add(MulC(0.41421357f, d23), d01);
    const auto s = hn::Sub(d23, MulC(0.41421357f, d01));
    z[1] = hn::Add(p, r), z[7] = hn::Sub(p, r), z[5] = hn::Add(q, s), z[3] = hn::Sub(q, s);
}

HWY_INLINE void InvLine32f(BlockVF (&a)[8]) {
    const auto s04 = hn::Add(a[0], a[4]), d04 = hn::Sub(a[0], a[4]);
    const auto s26 = hn::Add(a[2], a[6]), d26 = hn::Sub(a[2], a[6]);
    const auto s35 = hn::Add(a[3], a[5]), s17 = hn::Add(a[1], a[7]);
    const auto d53 = hn::Sub(a[5], a[3]), d17 = hn::Sub(a[1], a[7]);
    BlockVF t[8];
    t[0] = hn::Add(s04, s26), t[4] = hn::Sub(s04, s26);
    const auto e = hn::Sub(MulC(1.4142135f, d26), s26);
    t[6] = hn::Add(d04, e), t[2] = hn::Sub(d04, e);
    t[7] = MulC(0.5411961f, hn::Add(s35, s17));
    t[1] = hn::Sub(hn::Sub(d17, MulC(0.41421357f, d53)), t[7]);
    t[5] = hn::Sub(MulC(0.76536685f, hn::Sub(s17, s35)), t[1]);
    t[3] = hn::Sub(hn::Add(d53, MulC(0.41421357f, d17)), t[5]);
    for (int k = 0; k < 8; ++k) a[k] = t[k];
}

// Butterflies of the elements k and 7 - k within each row, on the row and
// its reverse: sums at 0..3, and at 4..7 the differences z[7-j] - z[j] or,
// where `alternate` and the lane is even, z[j] - z[7-j], as the inverse
// transform's output stage has them.
HWY_INLINE void RowButterflies(FloatBlock& v, bool alternate) {
    const BlockDF df;
    const hn::RebindToSigned<BlockDF> di;
    for (int k = 0; k < 8; ++k) {
        BlockVF rev[kBlockParts];
        ReverseRow(df, v, k, rev);
        for (size_t p = 0; p < kBlockParts; ++p) {
            const auto lane = hn::Add(hn::Iota(di, 0), hn::Set(di, static_cast<int32_t>(4 * p)));
            const auto low = hn::RebindMask(df, hn::Lt(lane, hn::Set(di, 4)));
            const auto even = hn::RebindMask(df, hn::Eq(hn::And(lane, hn::Set(di, 1)), hn::Zero(di)));
            const auto x = v[p][k], r = rev[p];
            const auto diff = alternate ? hn::IfThenElse(even, hn::Sub(x, r), hn::Sub(r, x)) : hn::Sub(r, x);
            v[p][k] = hn::IfThenElse(low, hn::Add(x, r), diff);
        }
    }
}

// The same butterflies between rows k and 7 - k.
HWY_INLINE void ColumnButterflies(FloatBlock& v, bool alternate) {
    for (size_t p = 0; p < kBlockParts; ++p)
        for (int k = 0; k < 4; ++k) {
            const auto x = v[p][k], y = v[p][7 - k];
            v[p][k] = hn::Add(x, y);
            v[p][7 - k] = alternate && (k & 1) ? hn::Sub(y, x) : hn::Sub(x, y);
        }
}

HWY_INLINE void EachPart(FloatBlock& v, void (*line)(BlockVF (&)[8])) {
    for (size_t p = 0; p < kBlockParts; ++p) line(v[p]);
}

// v * table, rounded half to even and saturated to lo..hi as roundSaturated
// does: the magnitude is limited on the bit pattern, then 1.5 * 2^23 added
// and taken away.
HWY_INLINE hn::Vec<hn::RebindToSigned<BlockDF>> RoundSaturated(BlockVF v, int32_t lo, int32_t hi) {
    const BlockDF df;
    const hn::RebindToSigned<BlockDF> di;
    const auto bits = hn::BitCast(di, v);
    const auto sign = hn::And(bits, hn::Set(di, INT32_MIN));
    const auto mag = hn::Min(hn::And(bits, hn::Set(di, 0x7FFFFFFF)), hn::Set(di, std::bit_cast<int32_t>(2097152.0f)));
    const auto magic = hn::Set(df, 12582912.0f);
    const auto r = hn::Sub(hn::Add(hn::BitCast(df, hn::Or(mag, sign)), magic), magic);
    return hn::Min(hn::Max(hn::ConvertTo(di, r), hn::Set(di, lo)), hn::Set(di, hi));
}

#endif  // !VQCJ_SIMD_BASELINE

void DCTQuantFwdLS16u(const Vqc16u* pSrc, int32_t srcStep, Vqc16s* pDst, const Vqc32f* pTable) {
#if VQCJ_SIMD_BASELINE
    ownDCTQuantFwdLS16uPlain(pSrc, srcStep, pDst, pTable);
#else
    const BlockDF df;
    const hn::RebindToSigned<BlockDF> di;
    const hn::Rebind<int16_t, BlockDF> d16;
    const size_t n = hn::Lanes(df);
    FloatBlock v;
    for (int32_t r = 0; r < 8; ++r) {
        hn::Vec<decltype(di)> x[kBlockParts];
        LoadRow(di, rowAt(pSrc, srcStep, r), x);
        for (size_t p = 0; p < kBlockParts; ++p) v[p][r] = hn::Sub(hn::ConvertTo(df, x[p]), hn::Set(df, 2048.0f));
    }
    // Both first butterflies, the pairs within a row first; the columns'
    // lines, then the rows' lines on the transpose.
    RowButterflies(v, false);
    ColumnButterflies(v, false);
    EachPart(v, FwdLine32f);
    Transpose8x8(df, v);
    EachPart(v, FwdLine32f);
    Transpose8x8(df, v);
    for (int r = 0; r < 8; ++r)
        for (size_t p = 0; p < kBlockParts; ++p) {
            const size_t i = 8 * r + n * p;
            const auto scaled = hn::Mul(v[p][r], hn::LoadU(df, ownDctFwdScale32f.data() + i));
            hn::StoreU(hn::DemoteTo(d16, RoundSaturated(hn::Mul(scaled, hn::LoadU(df, pTable + i)), -32768, 32767)),
                       d16, pDst + i);
        }
#endif
}

void DCTQuantInvLS16u(const Vqc16s* pSrc, Vqc16u* pDst, int32_t dstStep, const Vqc32f* pTable) {
#if VQCJ_SIMD_BASELINE
    ownDCTQuantInvLS16uPlain(pSrc, pDst, dstStep, pTable);
#else
    const BlockDF df;
    const hn::RebindToSigned<BlockDF> di;
    const hn::Rebind<uint16_t, BlockDF> du16;
    const size_t n = hn::Lanes(df);
    FloatBlock v;
    for (int r = 0; r < 8; ++r) {
        hn::Vec<decltype(di)> x[kBlockParts];
        LoadRow(di, pSrc + 8 * r, x);
        for (size_t p = 0; p < kBlockParts; ++p) {
            const size_t i = 8 * r + n * p;
            const auto dq = hn::Mul(hn::ConvertTo(df, x[p]), hn::LoadU(df, pTable + i));
            v[p][r] = hn::Mul(dq, hn::LoadU(df, ownDctInvScale32f.data() + i));
        }
    }
    // The rows' lines on the transpose, the columns' lines, then the output
    // butterflies, those within a row first.
    Transpose8x8(df, v);
    EachPart(v, InvLine32f);
    Transpose8x8(df, v);
    EachPart(v, InvLine32f);
    RowButterflies(v, true);
    ColumnButterflies(v, true);
    for (int r = 0; r < 8; ++r)
        for (size_t p = 0; p < kBlockParts; ++p)
            hn::StoreU(hn::DemoteTo(du16, RoundSaturated(hn::Add(v[p][r], hn::Set(df, 2048.0f)), 0, 4095)), du16,
                       rowAt(pDst, dstStep, r) + n * p);
#endif
}


void QuantFwd8x8(Vqc16s* pSrcDst, const Vqc16u* pTable) {
#if VQCJ_SIMD_BASELINE
    ownMulScale16u16s(pTable, pSrcDst, pSrcDst, 64, 15);
#else
    const BlockD16 d16;
    const auto* table = reinterpret_cast<const Vqc16s*>(pTable);
    for (size_t i = 0; i < kRowVecs; ++i) {
        Vqc16s* p = pSrcDst + kRowLanes * i;
        hn::StoreU(QuantFwd(LoadRows(pSrcDst, i), hn::LoadU(d16, table + kRowLanes * i)), d16, p);
    }
#endif
}

void QuantInv8x8(Vqc16s* pSrcDst, const Vqc16u* pTable) {
#if VQCJ_SIMD_BASELINE
    ownMulSat16s(pTable, pSrcDst, 64);
#else
    const BlockD16 d16;
    const auto* table = reinterpret_cast<const Vqc16s*>(pTable);
    for (size_t i = 0; i < kRowVecs; ++i) {
        Vqc16s* p = pSrcDst + kRowLanes * i;
        hn::StoreU(Dequant(LoadRows(pSrcDst, i), hn::LoadU(d16, table + kRowLanes * i)), d16, p);
    }
#endif
}

void DCTQuantFwdLS8u(const Vqc8u* pSrc, int32_t srcStep, Vqc16s* pDst, const Vqc16u* pTable) {
#if VQCJ_SIMD_BASELINE
    ownDCTQuantFwdLS8uPlain(pSrc, srcStep, pDst, pTable);
#else
    // Each row's eight bytes, in every 64-bit lane, widened and reordered by
    // one byte shuffle; the level shift is left to the column pass.
    const BlockD16 d16;
    const hn::Repartition<uint64_t, BlockD16> d64;
    const hn::Repartition<uint8_t, BlockD16> d8;
    alignas(16) static constexpr uint8_t kWiden[16] = {0, 0x80, 3, 0x80, 7, 0x80, 4, 0x80,
                                                      1, 0x80, 2, 0x80, 6, 0x80, 5, 0x80};
    const auto widen = hn::LoadDup128(d8, kWiden);
    const auto row = [&](int r) HWY_ATTR {
        uint64_t bytes;
        std::memcpy(&bytes, rowAt(pSrc, srcStep, r), 8);
        return hn::Set(d64, bytes);
    };
    BlockV16 rows[4][kBlockParts];
    for (int j = 0; j < 4; ++j) {
#if HWY_MAX_BYTES >= 32
        const auto both = hn::ConcatUpperLower(d64, row(kFwdRows[j][1]), row(kFwdRows[j][0]));
        rows[j][0] = hn::BitCast(d16, hn::TableLookupBytesOr0(hn::BitCast(d8, both), widen));
#else
        for (int p = 0; p < 2; ++p)
            rows[j][p] = hn::BitCast(d16, hn::TableLookupBytesOr0(hn::BitCast(d8, row(kFwdRows[j][p])), widen));
#endif
    }
    FwdQuantPairs(rows, pTable, pDst);
#endif
}

void DCTQuantFwd16s(const Vqc16s* pSrc, Vqc16s* pDst, const Vqc16u* pTable) {
#if VQCJ_SIMD_BASELINE
    ownDCTQuantFwd16sPlain(pSrc, pDst, pTable);
#else
    // The whole 16-bit range needs 32-bit lanes, and the time per block
    // stays the same whatever the samples: no test picks the 16-bit path.
    FwdQuantWide(pSrc, pTable, pDst);
#endif
}

void DCTQuantInvLS8u(const Vqc16s* pSrc, Vqc8u* pDst, int32_t dstStep, const Vqc16u* pTable) {
#if VQCJ_SIMD_BASELINE
    ownDCTQuantInvLS8uPlain(pSrc, pDst, dstStep, pTable);
#else
    BlockV16 r[kBlockParts][4];
    DequantInvRows(pSrc, pTable, r);
    // Level shift and saturation to bytes: rows j and j + 4 in 16 bytes.
    alignas(16) Vqc8u px[64];
    for (int j = 0; j < 4; ++j) {
        BlockV16 w[kBlockParts];
        for (size_t p = 0; p < kBlockParts; ++p) w[p] = hn::Add(r[p][j], hn::Set(BlockD16(), 128));
        const auto bytes = Bytes16(w);
        hn::StoreU(hn::LowerHalf(bytes), hn::Full64<uint8_t>(), px + 8 * j);
        hn::StoreU(hn::UpperHalf(hn::Full64<uint8_t>(), bytes), hn::Full64<uint8_t>(), px + 8 * (j + 4));
    }
    for (int32_t k = 0; k < 8; ++k) std::memcpy(rowAt(pDst, dstStep, k), px + 8 * k, 8);
#endif
}

void DCTQuantInv16s(const Vqc16s* pSrc, Vqc16s* pDst, const Vqc16u* pTable) {
#if VQCJ_SIMD_BASELINE
    ownDCTQuantInv16sPlain(pSrc, pDst, pTable);
#else
    BlockV16 r[kBlockParts][4];
    DequantInvRows(pSrc, pTable, r);
    for (int j = 0; j < 4; ++j) {
#if HWY_MAX_BYTES >= 32
        const hn::Half<BlockD16> dh;
        hn::StoreU(hn::LowerHalf(dh, r[0][j]), dh, pDst + 8 * j);
        hn::StoreU(hn::UpperHalf(dh, r[0][j]), dh, pDst + 8 * (j + 4));
#else
        for (size_t p = 0; p < 2; ++p) hn::StoreU(r[p][j], BlockD16(), pDst + 8 * (4 * p + j));
#endif
    }
#endif
}

}  // namespace vqcj::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace vqcj {

HWY_EXPORT(DCTQuantFwdLS8u);
HWY_EXPORT(DCTQuantFwd16s);
HWY_EXPORT(DCTQuantInvLS8u);
HWY_EXPORT(DCTQuantInv16s);
HWY_EXPORT(DCTQuantFwdLS16u);
HWY_EXPORT(DCTQuantInvLS16u);
HWY_EXPORT(QuantFwd8x8);
HWY_EXPORT(QuantInv8x8);

void ownQuantFwd8x8(Vqc16s* pSrcDst, const Vqc16u* pTable) { VQCJ_DISPATCH(QuantFwd8x8)(pSrcDst, pTable); }
void ownQuantInv8x8(Vqc16s* pSrcDst, const Vqc16u* pTable) { VQCJ_DISPATCH(QuantInv8x8)(pSrcDst, pTable); }

}  // namespace vqcj

using namespace vqcj;

extern "C" {

VQCJ_API VqcStatus vqciDCTQuantFwd8x8LS_JPEG_8u16s_C1R(const Vqc8u* pSrc, int32_t srcStep, Vqc16s* pDst,
                                                        const Vqc16u* pQuantFwdTable) {
    if (VqcStatus st = Check().ptr(pSrc).ptr(pDst).step(srcStep).ptr(pQuantFwdTable)) return st;
    VQCJ_DISPATCH(DCTQuantFwdLS8u)(pSrc, srcStep, pDst, pQuantFwdTable);
    return vqcStatusOk;
}

VQCJ_API VqcStatus vqciDCTQuantFwd8x8LS_JPEG_16u16s_C1R(const Vqc16u* pSrc, int32_t srcStep, Vqc16s* pDst,
                                                         const Vqc32f* pQuantFwdTable) {
    if (VqcStatus st = Check().ptr(pSrc).ptr(pDst).step(srcStep).ptr(pQuantFwdTable)) return st;
    VQCJ_DISPATCH(DCTQuantFwdLS16u)(pSrc, srcStep, pDst, pQuantFwdTable);
    return vqcStatusOk;
}

VQCJ_API VqcStatus vqciDCTQuantFwd8x8_JPEG_16s_C1(const Vqc16s* pSrc, Vqc16s* pDst, const Vqc16u* pQuantFwdTable) {
    if (VqcStatus st = Check().ptr(pSrc).ptr(pDst).ptr(pQuantFwdTable)) return st;
    VQCJ_DISPATCH(DCTQuantFwd16s)(pSrc, pDst, pQuantFwdTable);
    return vqcStatusOk;
}

VQCJ_API VqcStatus vqciDCTQuantFwd8x8_JPEG_16s_C1I(Vqc16s* pSrcDst, const Vqc16u* pQuantFwdTable) {
    if (VqcStatus st = Check().ptr(pSrcDst).ptr(pQuantFwdTable)) return st;
    VQCJ_DISPATCH(DCTQuantFwd16s)(pSrcDst, pSrcDst, pQuantFwdTable);
    return vqcStatusOk;
}

VQCJ_API VqcStatus vqciDCTQuantInv8x8LS_JPEG_16s8u_C1R(const Vqc16s* pSrc, Vqc8u* pDst, int32_t dstStep,
                                                        const Vqc16u* pQuantInvTable) {
    if (VqcStatus st = Check().ptr(pSrc).ptr(pDst).step(dstStep).ptr(pQuantInvTable)) return st;
    VQCJ_DISPATCH(DCTQuantInvLS8u)(pSrc, pDst, dstStep, pQuantInvTable);
    return vqcStatusOk;
}

VQCJ_API VqcStatus vqciDCTQuantInv8x8LS_JPEG_16s16u_C1R(const Vqc16s* pSrc, Vqc16u* pDst, int32_t dstStep,
                                                         const Vqc32f* pQuantInvTable) {
    if (VqcStatus st = Check().ptr(pSrc).ptr(pDst).step(dstStep).ptr(pQuantInvTable)) return st;
    VQCJ_DISPATCH(DCTQuantInvLS16u)(pSrc, pDst, dstStep, pQuantInvTable);
    return vqcStatusOk;
}

VQCJ_API VqcStatus vqciDCTQuantInv8x8_JPEG_16s_C1(const Vqc16s* pSrc, Vqc16s* pDst, const Vqc16u* pQuantInvTable) {
    if (VqcStatus st = Check().ptr(pSrc).ptr(pDst).ptr(pQuantInvTable)) return st;
    VQCJ_DISPATCH(DCTQuantInv16s)(pSrc, pDst, pQuantInvTable);
    return vqcStatusOk;
}

VQCJ_API VqcStatus vqciDCTQuantInv8x8_JPEG_16s_C1I(Vqc16s* pSrcDst, const Vqc16u* pQuantInvTable) {
    if (VqcStatus st = Check().ptr(pSrcDst).ptr(pQuantInvTable)) return st;
    VQCJ_DISPATCH(DCTQuantInv16s)(pSrcDst, pSrcDst, pQuantInvTable);
    return vqcStatusOk;
}

}  // extern "C"
#endif  // HWY_ONCE
