// 9/7 to the bit: a plain model of the tabled arithmetic, written as the
// text gives it (each lifting step a pass over the whole extended line,
// results kept in arrays), against the library's pipelined forms. Covers
// the tails of the line forms, the wrapping first high of 16s low-first
// rows, saturation (full-range 16s) and wrap (large 32s), the 14-bit 2D
// pipeline and the single-precision forms.
#include <gtest/gtest.h>
#include <vqcj.h>

#include <algorithm>
#include <cstdint>
#include <functional>
#include <random>
#include <vector>

#include "wavelet_ref.h"

namespace {

using I64 = int64_t;
I64 sum32(I64 a, I64 b) { return int32_t(uint32_t(a) + uint32_t(b)); }
I64 r16(I64 v) { return (v + 32768) >> 16; }
I64 r14(I64 v) { return I64(int32_t(uint32_t(v) + 8192u)) >> 14; }
I64 w32(I64 v) { return int32_t(uint32_t(v)); }
I64 w16(I64 v) { return int16_t(uint16_t(v)); }

// One arithmetic per precision: the forward steps A, B, D, the low (fused
// and two-step), the high; the inverse steps E1, O1, E2, O2.
struct Arith {
    std::function<I64(I64)> fin;
    std::function<I64(I64, I64, I64)> A, B, D, Dfirst, lowFused, lowTail, E1, O1, E2, O2;
    std::function<I64(I64)> high;
};

Arith fix16(bool s16) {
    Arith a;
    a.fin = s16 ? std::function<I64(I64)>([](I64 v) { return std::clamp<I64>(v, -32768, 32767); }) : w32;
    auto f = a.fin;
    a.A = [f](I64 s, I64 l, I64 r) { return f(s + r16(-103949 * sum32(l, r))); };
    a.B = [f](I64 s, I64 l, I64 r) { return f(s + r16(-3472 * sum32(l, r))); };
    a.D = [f](I64 s, I64 l, I64 r) { return f(s + r16(57862 * sum32(l, r))); };
    a.Dfirst = s16 ? std::function<I64(I64, I64, I64)>(
                         [f](I64 s, I64 l, I64 r) { return f(s + (w32(w32(57862 * sum32(l, r)) + 32768) >> 16)); })
                   : a.D;
    a.lowFused = [f](I64 b, I64 l, I64 r) { return f(r16(53274 * b + 23627 * sum32(l, r))); };
    a.lowTail = [f](I64 b, I64 l, I64 r) {
        const I64 t = f(b + r16(29066 * sum32(l, r)));
        return f(w32(w32(t * 53274) + 32768) >> 16);
    };
    a.high = [f](I64 d) { return f(r16(80621 * d)); };
    a.E1 = [f](I64 lo, I64 l, I64 r) { return f(r16(80621 * lo - 23627 * sum32(l, r))); };
    a.O1 = [f](I64 hi, I64 l, I64 r) { return f(r16(53274 * hi - 57862 * sum32(l, r))); };
    a.E2 = [f](I64 e, I64 l, I64 r) { return f(e - r16(-3472 * sum32(l, r))); };
    a.O2 = [f](I64 o, I64 l, I64 r) { return f(o - r16(-103949 * sum32(l, r))); };
    return a;
}

Arith fix14() {
    Arith a;
    a.fin = w16;
    a.A = [](I64 s, I64 l, I64 r) { return w16(s + r14(-25987 * (l + r))); };
    a.B = [](I64 s, I64 l, I64 r) { return w16(s + r14(-868 * (l + r))); };
    a.D = [](I64 s, I64 l, I64 r) { return w16(s + r14(14466 * (l + r))); };
    a.Dfirst = a.D;
    a.lowTail = [](I64 b, I64 l, I64 r) { return w16(r14(w16(b + r14(7266 * (l + r))) * 13318)); };
    a.lowFused = a.lowTail;
    a.high = [](I64 d) { return w16(r14(d * 20155)); };
    auto Ls = [](I64 v) { return w16(r14(v * 20155)); };
    auto Hs = [](I64 v) { return w16(r14(v * 13318)); };
    a.E1 = [=](I64 lo, I64 l, I64 r) { return w16(Ls(lo) - r14(7266 * (Hs(l) + Hs(r)))); };
    a.O1 = [=](I64 hi, I64 l, I64 r) { return w16(Hs(hi) - r14(14466 * (l + r))); };
    a.E2 = [](I64 e, I64 l, I64 r) { return w16(e - r14(-868 * (l + r))); };
    a.O2 = [](I64 o, I64 l, I64 r) { return w16(o - r14(-25987 * (l + r))); };
    return a;
}

// The forward passes over x, whose index 0 is the line's first sample and
// which holds `m` samples of border each side. `even(k)` tells an even
// position. Returns, per position, A/B/D and then low/high.
struct Fwd {
    std::vector<I64> low, high;  // by pair, in order of position
};
Fwd modelForward(const Arith& a, const std::vector<I64>& x, int m, int n, int p, int tail, bool firstWraps) {
    const int len = int(x.size());
    std::vector<I64> A(len), B(len), D(len);
    auto odd = [&](int i) { return ((i - m + p) & 1) != 0; };
    for (int i = 1; i + 1 < len; ++i)
        if (odd(i)) A[i] = a.A(x[i], x[i - 1], x[i + 1]);
    for (int i = 2; i + 2 < len; ++i)
        if (!odd(i)) B[i] = a.B(x[i], A[i - 1], A[i + 1]);
    const int firstD = m + p - 1;  // the high left of the first even sample
    for (int i = 3; i + 3 < len; ++i)
        if (odd(i))
            D[i] = (firstWraps && i == firstD) ? a.Dfirst(A[i], B[i - 1], B[i + 1]) : a.D(A[i], B[i - 1], B[i + 1]);
    Fwd f;
    int lows = 0;
    for (int i = m; i < m + n; ++i) lows += !odd(i);
    for (int i = m, j = 0; i < m + n; ++i) {
        if (odd(i)) {
            f.high.push_back(a.high(D[i]));
        } else {
            f.low.push_back(j < lows - tail ? a.lowFused(B[i], D[i - 1], D[i + 1])
                                            : a.lowTail(B[i], D[i - 1], D[i + 1]));
            ++j;
        }
    }
    return f;
}

// The inverse passes over an interleaved line y (even positions hold lows).
std::vector<I64> modelInverse(const Arith& a, const std::vector<I64>& y, int m, int n, int p) {
    const int len = int(y.size());
    std::vector<I64> E1(len), O1(len), E2(len), O2(len);
    auto odd = [&](int i) { return ((i - m + p) & 1) != 0; };
    for (int i = 1; i + 1 < len; ++i)
        if (!odd(i)) E1[i] = a.E1(y[i], y[i - 1], y[i + 1]);
    for (int i = 2; i + 2 < len; ++i)
        if (odd(i)) O1[i] = a.O1(y[i], E1[i - 1], E1[i + 1]);
    for (int i = 3; i + 3 < len; ++i)
        if (!odd(i)) E2[i] = a.E2(E1[i], O1[i - 1], O1[i + 1]);
    for (int i = 4; i + 4 < len; ++i)
        if (odd(i)) O2[i] = a.O2(O1[i], E2[i - 1], E2[i + 1]);
    std::vector<I64> out;
    for (int i = m; i < m + n; ++i) out.push_back(odd(i) ? O2[i] : E2[i]);
    return out;
}

// Row forms, 16s (full range: saturation everywhere) and 32s (large: wrap),
// every width 2..24 at both phases.
template <class T>
void rowsToTheBit(bool s16) {
    const Arith a = fix16(s16);
    std::mt19937 rng(16);
    for (int w = 2; w <= 24; ++w)
        for (int p : {0, 1}) {
            const int m = 6, len = 2 * w + 2 * m;
            for (int round = 0; round < 4; ++round) {
                std::vector<I64> x(len);
                const I64 lim = s16 ? (round < 2 ? 32768 : 2000) : (round < 2 ? (I64(1) << 31) : 2000000);
                for (auto& v : x) v = std::uniform_int_distribution<I64>(-lim, lim - 1)(rng);
                std::vector<T> s(x.begin(), x.end()), lo(w), hi(w);
                const VqcStatus st =
                    s16 ? vqciWTFwdRow_D97_JPEG2K_16s_C1R((const Vqc16s*)&s[m], len, (Vqc16s*)lo.data(), 2 * w,
                                                          (Vqc16s*)hi.data(), 2 * w, {w, 1}, p)
                        : vqciWTFwdRow_D97_JPEG2K_32s_C1R((const Vqc32s*)&s[m], len, (Vqc32s*)lo.data(), 4 * w,
                                                          (Vqc32s*)hi.data(), 4 * w, {w, 1}, p);
                ASSERT_EQ(st, vqcStatusOk);
                const Fwd f = modelForward(a, x, m, 2 * w, p, p ? 2 : 1, p == 0);
                for (int j = 0; j < w; ++j) {
                    ASSERT_EQ(lo[j], T(f.low[j])) << "w " << w << " p " << p << " low " << j;
                    ASSERT_EQ(hi[j], T(f.high[j])) << "w " << w << " p " << p << " high " << j;
                }
                // Inverse of arbitrary bands with a border of two each side.
                std::vector<I64> bl(w + 4), bh(w + 4);
                for (auto* b : {&bl, &bh})
                    for (auto& v : *b) v = std::uniform_int_distribution<I64>(-lim, lim - 1)(rng);
                std::vector<T> tl(bl.begin(), bl.end()), th(bh.begin(), bh.end()), out(2 * w);
                const VqcStatus si =
                    s16 ? vqciWTInvRow_D97_JPEG2K_16s_C1R((const Vqc16s*)&tl[2], 4096, (const Vqc16s*)&th[2], 4096,
                                                          {w, 1}, (Vqc16s*)out.data(), 4096, p)
                        : vqciWTInvRow_D97_JPEG2K_32s_C1R((const Vqc32s*)&tl[2], 4096, (const Vqc32s*)&th[2], 4096,
                                                          {w, 1}, (Vqc32s*)out.data(), 4096, p);
                ASSERT_EQ(si, vqcStatusOk);
                // Interleave: low[j] at position 2j + p, high[j] at 2j + 1 - p.
                const int mm = 6;
                std::vector<I64> y(2 * w + 2 * mm);
                for (int j = -2; j < w + 2; ++j) {
                    y[mm + 2 * j + p] = bl[j + 2];
                    if (mm + 2 * j + 1 - p < int(y.size())) y[mm + 2 * j + 1 - p] = bh[j + 2];
                }
                const auto want = modelInverse(a, y, mm, 2 * w, p);
                for (int i = 0; i < 2 * w; ++i) ASSERT_EQ(out[i], T(want[i])) << "w " << w << " p " << p << " at " << i;
            }
        }
}
TEST(Wt97Exact, Rows16s) { rowsToTheBit<Vqc16s>(true); }
TEST(Wt97Exact, Rows32s) { rowsToTheBit<Vqc32s>(false); }

// 2D 16s lines (height 1 at an even y) at both phases, lengths 2..30: the
// 14-bit passes over the extended line, full-range samples wrapping. Phase 1
// puts the highs first and lets the last high overwrite the first low.
TEST(Wt97Exact, TwoDimensional16sLines) {
    const Arith a = fix14();
    std::mt19937 rng(14);
    std::vector<uint8_t> buf(512);
    for (int n = 2; n <= 30; ++n)
        for (int p : {0, 1}) {
            const int m = 8;
            std::vector<I64> line(n);
            for (auto& v : line) v = std::uniform_int_distribution<int>(-32768, 32767)(rng);
            std::vector<I64> x(n + 2 * m);
            for (int i = 0; i < n + 2 * m; ++i) x[i] = line[vqcjtest::pse(i - m, n)];
            const Fwd f = modelForward(a, x, m, n, p, n, false);
            std::vector<Vqc16s> img(line.begin(), line.end());
            const VqciRect r{p, 2, n, 1};
            ASSERT_EQ(vqciWTFwd_D97_JPEG2K_16s_C1IR(img.data(), 2 * n, &r, buf.data()), vqcStatusOk);
            std::vector<I64> want(line);
            const int lowAt = p ? n >> 1 : 0, highAt = p ? 0 : (n + 1) >> 1;
            for (size_t j = 0; j < f.low.size(); ++j) want[lowAt + j] = f.low[j];
            for (size_t j = 0; j < f.high.size(); ++j) want[highAt + j] = f.high[j];
            for (int i = 0; i < n; ++i) ASSERT_EQ(img[i], Vqc16s(want[i])) << "n " << n << " p " << p << " at " << i;

            // Inverse: lows from slot 0 whatever the phase.
            std::vector<I64> bands(n);
            for (auto& v : bands) v = std::uniform_int_distribution<int>(-32768, 32767)(rng);
            const int nl = (n + 1 - p) >> 1;
            std::vector<I64> inter(n);
            for (int i = 0, li = 0, hi = nl; i < n; ++i) inter[i] = ((i + p) & 1) ? bands[hi++] : bands[li++];
            std::vector<I64> y(n + 2 * m);
            for (int i = 0; i < n + 2 * m; ++i) y[i] = inter[vqcjtest::pse(i - m, n)];
            const auto back = modelInverse(a, y, m, n, p);
            std::vector<Vqc16s> im2(bands.begin(), bands.end());
            ASSERT_EQ(vqciWTInv_D97_JPEG2K_16s_C1IR(im2.data(), 2 * n, &r, buf.data()), vqcStatusOk);
            for (int i = 0; i < n; ++i)
                ASSERT_EQ(im2[i], Vqc16s(back[i])) << "inverse n " << n << " p " << p << " at " << i;
        }
}

}  // namespace
