#include "dct.h"

#include <cstring>

#include "frame/check.h"
#include "frame/rows.h"
#include "frame/wrap.h"

namespace vqcj {

namespace {

// Runs the one-dimensional transform `line` on each of the eight rows
// (Rows) or columns of a block, reading `in` and writing `out`, which may be
// the same block. The lines are independent, so the loop over them is
// vectorised: the lanes are rows or columns, and with columns every load and
// store is contiguous. Storing narrows to the output type, which for 16-bit
// blocks is the plain truncation the fixed-point passes ask for.
template <bool Rows, class X, class Y, class In, class Out, class Line>
inline void eachLine(const In* in, Out* out, Line line) {
    constexpr int lane = Rows ? 8 : 1, elem = Rows ? 1 : 8;
    X x[8][8];  // [element][lane]
    Y y[8][8];
    for (int l = 0; l < 8; ++l)
        for (int k = 0; k < 8; ++k) x[k][l] = static_cast<X>(in[l * lane + k * elem]);
    for (int l = 0; l < 8; ++l) {
        X xl[8];
        Y yl[8];
        for (int k = 0; k < 8; ++k) xl[k] = x[k][l];
        line(xl, yl);
        for (int k = 0; k < 8; ++k) y[k][l] = yl[k];
    }
    for (int l = 0; l < 8; ++l)
        for (int k = 0; k < 8; ++k) out[l * lane + k * elem] = static_cast<Out>(y[k][l]);
}

// ---- Fixed point -----------------------------------------------------------

// Product of a 16-bit input and a constant that fits in 16 bits: exact in
// 32 bits, and the form the vectoriser turns into 16-bit multiplies.
inline int32_t mul16(Vqc16s x, int32_t c) { return static_cast<int32_t>(x) * c; }

// Forward butterfly. The row pass leaves its results eight times the
// orthonormal scale (times 8 for the even terms 0 and 4, 12 fraction bits
// dropped for the others); the column pass removes the remaining scale.
// 46341 (x3 - x4) is taken as 65536 (x3 - x4) - 19195 x3 + 19195 x4, which
// wraps to the same 32 bits and multiplies 16-bit inputs only.
template <bool RowPass>
inline void fwdLine16s(const Vqc16s* x, int32_t* y) {
    const int32_t s07 = addW(x[0], x[7]), s16 = addW(x[1], x[6]);
    const int32_t s25 = addW(x[2], x[5]), s34 = addW(x[3], x[4]);
    const int32_t a = addW(s07, s34), b = subW(s07, s34);
    const int32_t c = addW(s16, s25), d = subW(s16, s25);
    const int32_t m = mulW(addW(b, d), 17734);
    const int32_t e0 = addW(a, c), e4 = subW(a, c);
    const int32_t e2 = addW(mulW(25080, b), m), e6 = subW(m, mulW(60547, d));

    const int32_t p = shlW(subW(x[1], x[6]), 3), q = shlW(subW(x[2], x[5]), 3);
    const auto k46341 = [](Vqc16s hi, Vqc16s lo) {
        return addW(subW(shlW(subW(hi, lo), 16), mul16(hi, 19195)), mul16(lo, 19195));
    };
    const int32_t s = addW(k46341(x[3], x[4]), 2048) >> 12;
    const int32_t t = addW(k46341(x[0], x[7]), 2048) >> 12;
    const int32_t pq = addW(p, q), pmq = subW(p, q);
    const int32_t u = addW(pq, t), v = addW(pmq, s), w = subW(t, pq), z = subW(s, pmq);
    const int32_t n1 = mulW(799, addW(u, v)), n2 = mulW(3406, addW(w, z));
    const int32_t o1 = addW(n1, mulW(3218, u)), o7 = subW(n1, mulW(4816, v));
    const int32_t o3 = subW(n2, mulW(5681, z)), o5 = subW(n2, mulW(1130, w));

    if constexpr (RowPass) {
        const auto odd = [](int32_t val) { return addW(val, 2048) >> 12; };
        y[0] = shlW(e0, 3), y[4] = shlW(e4, 3);
        y[1] = odd(o1), y[2] = odd(e2), y[3] = odd(o3), y[5] = odd(o5), y[6] = odd(e6), y[7] = odd(o7);
    } else {
        const auto odd = [](int32_t val) { return addW(val, 1 << 20) >> 21; };
        y[0] = addW(e0, 32) >> 6, y[4] = addW(e4, 32) >> 6;
        y[1] = odd(o1), y[2] = odd(e2), y[3] = odd(o3), y[5] = odd(o5), y[6] = odd(e6), y[7] = odd(o7);
    }
}

// Inverse butterfly; the first (column) pass keeps 3 more bits than the
// samples, the second (row) pass drops them with the rest of the scale.
// Products are regrouped so that each multiplies one 16-bit input by a
// 16-bit constant: 27246 (i5 + i3) - 9041 i5 is 18205 i5 + 27246 i3, and
// -60547 i6 is 4989 i6 - 65536 i6. Arithmetic modulo 2^32 is a ring, so the
// regrouped sums wrap to exactly the same 32-bit values.
template <bool ColPass>
inline void invLine16s(const Vqc16s* i, int32_t* y) {
    const int32_t A = addW(mul16(i[5], 18205), mul16(i[3], 27246));
    const int32_t B = subW(mul16(i[5], 27246), mul16(i[3], 18205));
    const int32_t C = addW(mul16(i[1], 32139), mul16(i[7], 6393));
    const int32_t D = subW(mul16(i[1], 6393), mul16(i[7], 32138));
    const int32_t E = subW(C, A), F = subW(D, B), H = addW(E, F), J = subW(E, F);
    const int32_t G = mulW(addW(addW(A, C), 2048) >> 12, 5793);
    const int32_t I = mulW(addW(addW(B, D), 2048) >> 12, 5793);

    const int32_t T = shlW(i[0], 15), P = shlW(i[4], 15);
    const int32_t Q = addW(mul16(i[2], 17734), mul16(i[6], 17734));
    const int32_t R = addW(mul16(i[2], 25080), Q);
    const int32_t S = subW(addW(Q, mul16(i[6], 4989)), shlW(i[6], 16));
    const int32_t tp = addW(T, P), tm = subW(T, P);
    const int32_t U = addW(tp, R), V = subW(tp, R), W = addW(tm, S), X = subW(tm, S);

    const auto fin = [](int32_t val) { return ColPass ? addW(val, 2048) >> 12 : addW(val, 1 << 20) >> 21; };
    y[0] = fin(addW(U, G)), y[7] = fin(subW(U, G));
    y[1] = fin(addW(W, H)), y[6] = fin(subW(W, H));
    y[2] = fin(addW(X, J)), y[5] = fin(subW(X, J));
    y[3] = fin(addW(V, I)), y[4] = fin(subW(V, I));
}

// ---- Single precision --------------------------------------------------------

// Forward line after the first butterfly: E_k at position k, D_k at 7-k.
inline void fwdLine32f(const float* z, float* out) {
    const float e0 = z[0], e1 = z[1], e2 = z[2], e3 = z[3];
    const float d0 = z[7], d1 = z[6], d2 = z[5], d3 = z[4];
    const float a = e0 + e3, b = e1 + e2, c = e0 - e3, m = e1 - e2;
    const float w = 0.70710677f * (m + c);
    out[0] = a + b, out[4] = a - b, out[2] = c + w, out[6] = c - w;
    const float d12 = d1 + d2, d23 = d2 + d3, d01 = d0 + d1;
    const float p = 0.76536685f * d12 + 1.0823922f * d0;
    const float q = 1.0823922f * d0 - 0.76536685f * d12;
    const float r = 0.41421357f * d23 + d01;
    const float s = d23 - 0.41421357f * d01;
    out[1] = p + r, out[7] = p - r, out[5] = q + s, out[3] = q - s;
}

// Inverse line up to, not including, the output butterfly.
inline void invLine32f(const float* a, float* t) {
    const float s04 = a[0] + a[4], d04 = a[0] - a[4];
    const float s26 = a[2] + a[6], d26 = a[2] - a[6];
    const float s35 = a[3] + a[5], s17 = a[1] + a[7];
    const float d53 = a[5] - a[3], d17 = a[1] - a[7];
    t[0] = s04 + s26, t[4] = s04 - s26;
    const float e = 1.4142135f * d26 - s26;
    t[6] = d04 + e, t[2] = d04 - e;
    t[7] = 0.5411961f * (s35 + s17);
    t[1] = d17 - 0.41421357f * d53 - t[7];
    t[5] = 0.76536685f * (s17 - s35) - t[1];
    t[3] = d53 + 0.41421357f * d17 - t[5];
}

// First butterfly of the forward transform, in place along one line: sums
// at 0..3, differences z[k] - z[7-k] at 7-k.
inline void fwdSplit32f(const float* z, float* out) {
    for (int k = 0; k < 4; ++k) out[k] = z[k] + z[7 - k], out[7 - k] = z[k] - z[7 - k];
}

// Output butterfly of the inverse transform along one line.
inline void invJoin32f(const float* t, float* y) {
    y[0] = t[0] + t[7], y[7] = t[0] - t[7];
    y[1] = t[6] + t[1], y[6] = t[6] - t[1];
    y[2] = t[2] + t[5], y[5] = t[2] - t[5];
    y[3] = t[4] + t[3], y[4] = t[4] - t[3];
}

// Runs a float line function over the rows, then over the columns.
template <class Line>
inline void rowsThenColumns32f(float* z, Line line) {
    eachLine<true, float, float>(z, z, line);
    eachLine<false, float, float>(z, z, line);
}

}  // namespace

VqcStatus ownDCT8x8Fwd16s(const Vqc16s* pSrc, Vqc16s* pDst) {
    if (VqcStatus st = Check().ptr(pSrc).ptr(pDst)) return st;
    alignas(32) Vqc16s rows[64];
    eachLine<true, Vqc16s, int32_t>(pSrc, rows, fwdLine16s<true>);
    eachLine<false, Vqc16s, int32_t>(rows, pDst, fwdLine16s<false>);
    return vqcStatusOk;
}

void ownDCT8x8Inv16s(const Vqc16s* pSrc, Vqc16s* pDst) {
    alignas(32) Vqc16s cols[64];
    eachLine<false, Vqc16s, int32_t>(pSrc, cols, invLine16s<true>);
    eachLine<true, Vqc16s, int32_t>(cols, pDst, invLine16s<false>);
}

void ownDCT8x8InvLS16s8u(const Vqc16s* pSrc, Vqc8u* pDst, int32_t dstStep) {
    alignas(32) Vqc16s block[64];
    ownDCT8x8Inv16s(pSrc, block);
    alignas(16) Vqc8u px[64];
    for (int32_t i = 0; i < 64; ++i) px[i] = add128Sat8u(block[i]);
    for (int32_t r = 0; r < 8; ++r) std::memcpy(rowAt(pDst, dstStep, r), px + 8 * r, 8);
}

VqcStatus ownDCT8x8Fwd32f(Vqc32f* z) {
    if (VqcStatus st = Check().ptr(z)) return st;
    // The first butterfly along rows and columns at once: each of the four
    // samples (r, c), (r, 7-c), (7-r, c), (7-r, 7-c) becomes a sum or
    // difference of all four, the pairs within a row taken first.
    rowsThenColumns32f(z, [](const float* a, float* b) { fwdSplit32f(a, b); });
    eachLine<false, float, float>(z, z, [](const float* a, float* b) { fwdLine32f(a, b); });
    eachLine<true, float, float>(z, z, [](const float* a, float* b) { fwdLine32f(a, b); });
    for (int i = 0; i < 64; ++i) z[i] *= ownDctFwdScale32f[i];
    return vqcStatusOk;
}

void ownDCT8x8Inv32f(Vqc32f* z) {
    for (int i = 0; i < 64; ++i) z[i] *= ownDctInvScale32f[i];
    eachLine<true, float, float>(z, z, [](const float* a, float* b) { invLine32f(a, b); });
    eachLine<false, float, float>(z, z, [](const float* a, float* b) { invLine32f(a, b); });
    // The output butterfly of both directions in one stage: each output is
    // a sum or difference of four values, the pairs within a row first.
    rowsThenColumns32f(z, [](const float* a, float* b) { invJoin32f(a, b); });
}

}  // namespace vqcj
