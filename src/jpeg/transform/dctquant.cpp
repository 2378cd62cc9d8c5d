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

// The fixed-point butterflies of dct.cpp over 32-bit lanes. Vector
// arithmetic wraps, and products are taken as a whole where the plain
// routine splits them for its vectoriser: modulo 2^32 they are equal.
template <int Bits>
HWY_INLINE BlockV32 RoundShift(BlockV32 v) {
    return hn::ShiftRight<Bits>(hn::Add(v, hn::Set(BlockD32(), 1 << (Bits - 1))));
}

// The same, cut to 16 bits and read with sign, for Bits up to 16: the bits
// kept are moved to the top and shifted back down.
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

template <bool ColPass>
HWY_INLINE void InvLine(const BlockV32 (&i)[8], BlockV32 (&y)[8]) {
    const auto A = hn::Add(MulK(i[5], 18205), MulK(i[3], 27246));
    const auto B = hn::Sub(MulK(i[5], 27246), MulK(i[3], 18205));
    const auto C = hn::Add(MulK(i[1], 32139), MulK(i[7], 6393));
    const auto D = hn::Sub(MulK(i[1], 6393), MulK(i[7], 32138));
    const auto E = hn::Sub(C, A), F = hn::Sub(D, B), H = hn::Add(E, F), J = hn::Sub(E, F);
    const auto G = MulK(RoundShift<12>(hn::Add(A, C)), 5793);
    const auto I = MulK(RoundShift<12>(hn::Add(B, D)), 5793);

    const auto T = hn::ShiftLeft<15>(i[0]), P = hn::ShiftLeft<15>(i[4]);
    const auto Q = MulK(hn::Add(i[2], i[6]), 17734);
    const auto R = hn::Add(MulK(i[2], 25080), Q);
    const auto S = hn::Sub(Q, MulK(i[6], 60547));
    const auto tp = hn::Add(T, P), tm = hn::Sub(T, P);
    const auto U = hn::Add(tp, R), V = hn::Sub(tp, R), W = hn::Add(tm, S), X = hn::Sub(tm, S);

    // Results cut to 16 bits; those shifted by 21 already fit.
    const auto fin = [](BlockV32 v) HWY_ATTR { return ColPass ? RoundShiftCut<12>(v) : RoundShift<21>(v); };
    y[0] = fin(hn::Add(U, G)), y[7] = fin(hn::Sub(U, G));
    y[1] = fin(hn::Add(W, H)), y[6] = fin(hn::Sub(W, H));
    y[2] = fin(hn::Add(X, J)), y[5] = fin(hn::Sub(X, J));
    y[3] = fin(hn::Add(V, I)), y[4] = fin(hn::Sub(V, I));
}

using IntBlock = Block32<BlockD32>;

// Runs a line function over the eight lines of each part.
template <class Line>
HWY_INLINE void Pass(IntBlock& v, Line line) {
    for (size_t p = 0; p < kBlockParts; ++p) {
        BlockV32 y[8];
        line(v[p], y);
        for (int k = 0; k < 8; ++k) v[p][k] = y[k];
    }
}

// Quantises a row of 16-bit values c held in 32-bit lanes into pDst: the
// product with the unsigned table entry is exact (below 2^31 in magnitude),
// then rounded half to even and saturated.
HWY_INLINE void QuantRow(const BlockV32 (&c)[kBlockParts], const Vqc16u* pTable, Vqc16s* pDst) {
    const BlockD32 d32;
    const auto bias = hn::Set(d32, 16383), one = hn::Set(d32, 1);
    BlockV32 t[kBlockParts], q[kBlockParts];
    LoadRow(d32, pTable, t);
    for (size_t p = 0; p < kBlockParts; ++p) {
        const auto prod = hn::Mul(c[p], t[p]);
        const auto odd = hn::And(hn::ShiftRight<15>(prod), one);
        q[p] = hn::ShiftRight<15>(hn::Add(hn::Add(prod, bias), odd));
    }
    StoreRowSat(q, pDst);
}

// Dequantises eight coefficients: the products saturated to 16 bits, both
// factors read signed, taken in 16-bit lanes by their halves as in the
// plain routine.
HWY_INLINE hn::Vec<hn::Full128<int16_t>> DequantRow(const Vqc16s* pSrc, const Vqc16u* pTable) {
    const hn::Full128<int16_t> d16;
    const auto c = hn::LoadU(d16, pSrc);
    const auto t = hn::LoadU(d16, reinterpret_cast<const Vqc16s*>(pTable));
    const auto lo = hn::Mul(c, t), hi = hn::MulHigh(c, t);
    const auto sat = hn::Xor(hn::ShiftRight<15>(hi), hn::Set(d16, 0x7FFF));
    return hn::IfThenElse(hn::Eq(hi, hn::ShiftRight<15>(lo)), lo, sat);
}

// Forward DCT of the rows v and quantisation into pDst.
HWY_INLINE void FwdQuantRows(IntBlock& v, Vqc16s* pDst, const Vqc16u* pTable) {
    const BlockD32 d32;
    Transpose8x8(d32, v);
    Pass(v, FwdLine<true>);
    Transpose8x8(d32, v);
    Pass(v, FwdLine<false>);
    for (int k = 0; k < 8; ++k) {
        BlockV32 c[kBlockParts];
        for (size_t p = 0; p < kBlockParts; ++p) c[p] = v[p][k];
        QuantRow(c, pTable + 8 * k, pDst + 8 * k);
    }
}

// Dequantisation and inverse DCT of pSrc, leaving the output rows in v,
// each value the 16-bit result read with sign.
HWY_INLINE void DequantInvRows(const Vqc16s* pSrc, const Vqc16u* pTable, IntBlock& v) {
    const BlockD32 d32;
    for (int k = 0; k < 8; ++k) {
        BlockV32 x[kBlockParts];
        WidenRow(d32, DequantRow(pSrc + 8 * k, pTable + 8 * k), x);
        for (size_t p = 0; p < kBlockParts; ++p) v[p][k] = x[p];
    }
    Pass(v, InvLine<true>);
    Transpose8x8(d32, v);
    Pass(v, InvLine<false>);
    Transpose8x8(d32, v);
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
    for (int k = 0; k < 8; ++k) {
        BlockV32 c[kBlockParts];
        LoadRow(BlockD32(), pSrcDst + 8 * k, c);
        QuantRow(c, pTable + 8 * k, pSrcDst + 8 * k);
    }
#endif
}

void QuantInv8x8(Vqc16s* pSrcDst, const Vqc16u* pTable) {
#if VQCJ_SIMD_BASELINE
    ownMulSat16s(pTable, pSrcDst, 64);
#else
    for (int k = 0; k < 8; ++k) hn::StoreU(DequantRow(pSrcDst + 8 * k, pTable + 8 * k), hn::Full128<int16_t>(), pSrcDst + 8 * k);
#endif
}

void DCTQuantFwdLS8u(const Vqc8u* pSrc, int32_t srcStep, Vqc16s* pDst, const Vqc16u* pTable) {
#if VQCJ_SIMD_BASELINE
    ownDCTQuantFwdLS8uPlain(pSrc, srcStep, pDst, pTable);
#else
    const BlockD32 d32;
    const auto k128 = hn::Set(d32, 128);
    IntBlock v;
    for (int32_t r = 0; r < 8; ++r) {
        BlockV32 x[kBlockParts];
        LoadRow(d32, rowAt(pSrc, srcStep, r), x);
        for (size_t p = 0; p < kBlockParts; ++p) v[p][r] = hn::Sub(x[p], k128);
    }
    FwdQuantRows(v, pDst, pTable);
#endif
}

void DCTQuantFwd16s(const Vqc16s* pSrc, Vqc16s* pDst, const Vqc16u* pTable) {
#if VQCJ_SIMD_BASELINE
    ownDCTQuantFwd16sPlain(pSrc, pDst, pTable);
#else
    const BlockD32 d32;
    IntBlock v;
    for (int r = 0; r < 8; ++r) {
        BlockV32 x[kBlockParts];
        LoadRow(d32, pSrc + 8 * r, x);
        for (size_t p = 0; p < kBlockParts; ++p) v[p][r] = x[p];
    }
    FwdQuantRows(v, pDst, pTable);
#endif
}

void DCTQuantInvLS8u(const Vqc16s* pSrc, Vqc8u* pDst, int32_t dstStep, const Vqc16u* pTable) {
#if VQCJ_SIMD_BASELINE
    ownDCTQuantInvLS8uPlain(pSrc, pDst, dstStep, pTable);
#else
    const BlockD32 d32;
    const hn::Rebind<uint8_t, BlockD32> d8;
    IntBlock v;
    DequantInvRows(pSrc, pTable, v);
    // Clamped first, the +128 stays in 0..255 and the narrowing is exact.
    const auto lo = hn::Set(d32, -128), hi = hn::Set(d32, 127), k128 = hn::Set(d32, 128);
    for (int32_t r = 0; r < 8; ++r)
        for (size_t p = 0; p < kBlockParts; ++p)
            hn::StoreU(hn::DemoteTo(d8, hn::Add(hn::Min(hn::Max(v[p][r], lo), hi), k128)), d8,
                       rowAt(pDst, dstStep, r) + 4 * p);
#endif
}

void DCTQuantInv16s(const Vqc16s* pSrc, Vqc16s* pDst, const Vqc16u* pTable) {
#if VQCJ_SIMD_BASELINE
    ownDCTQuantInv16sPlain(pSrc, pDst, pTable);
#else
    IntBlock v;
    DequantInvRows(pSrc, pTable, v);
    for (int r = 0; r < 8; ++r) {
        BlockV32 y[kBlockParts];
        for (size_t p = 0; p < kBlockParts; ++p) y[p] = v[p][r];
        StoreRowSat(y, pDst + 8 * r);
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
