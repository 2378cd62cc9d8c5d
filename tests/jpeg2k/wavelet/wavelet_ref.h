// Test-side references for the wavelet tests: the exports under common
// names, an image with a watched margin, the harnesses of the 2D and line
// forms, and one level of lifting written pass by pass from the standard's
// equations, apart from the library's code.
#pragma once

#include <gtest/gtest.h>
#include <vqcj.h>

#include <cmath>
#include <cstdint>
#include <functional>
#include <random>
#include <utility>
#include <vector>

#include "support/testutil.h"

namespace vqcjtest {

#define VQCJ_WT_LINES(f, t)                                                                                 \
    static constexpr auto fwdRow = vqciWTFwdRow_##f##_JPEG2K_##t##_C1R;                                       \
    static constexpr auto invRow = vqciWTInvRow_##f##_JPEG2K_##t##_C1R;                                       \
    static constexpr auto fwdLift = vqciWTFwdColLift_##f##_JPEG2K_##t##_C1;                                   \
    static constexpr auto invLift = vqciWTInvColLift_##f##_JPEG2K_##t##_C1;
#define VQCJ_WT_COLS(f, t)                                                                                  \
    static constexpr auto fwdCol = vqciWTFwdCol_##f##_JPEG2K_##t##_C1R;                                       \
    static constexpr auto invCol = vqciWTInvCol_##f##_JPEG2K_##t##_C1R;
#define VQCJ_WT_2D(f, t)                                                                                    \
    static constexpr auto fwdIR = vqciWTFwd_##f##_JPEG2K_##t##_C1IR, invIR = vqciWTInv_##f##_JPEG2K_##t##_C1IR; \
    static constexpr auto fwdR = vqciWTFwd_##f##_JPEG2K_##t##_C1R;                                            \
    static constexpr auto invR = vqciWTInv_##f##_JPEG2K_##t##_C1R;                                            \
    static constexpr auto sizeIR = vqciWTGetBufSize_##f##_JPEG2K_##t##_C1IR;                                  \
    static constexpr auto sizeR = vqciWTGetBufSize_##f##_JPEG2K_##t##_C1R;
// clang-format off
template <class T> struct B53;
template <class T> struct D97;
template <> struct B53<Vqc16s> { VQCJ_WT_LINES(B53, 16s) VQCJ_WT_COLS(B53, 16s) VQCJ_WT_2D(B53, 16s) };
template <> struct B53<Vqc32s> { VQCJ_WT_LINES(B53, 32s) VQCJ_WT_COLS(B53, 32s) VQCJ_WT_2D(B53, 32s) };
template <> struct D97<Vqc16s> { VQCJ_WT_LINES(D97, 16s) VQCJ_WT_2D(D97, 16s) };
template <> struct D97<Vqc32s> { VQCJ_WT_LINES(D97, 32s) VQCJ_WT_2D(D97, 32s) };
template <> struct D97<Vqc32f> { VQCJ_WT_LINES(D97, 32f) VQCJ_WT_COLS(D97, 32f) };
// clang-format on

// w x h samples inside a margin of two that the code under test must not
// touch: equal vectors mean equal samples and intact margins.
template <class T>
struct Img {
    int w, h, stride;
    std::vector<T> v;
    Img(int w_, int h_) : w(w_), h(h_), stride(w_ + 4), v((h_ + 4) * stride, T(-12345)) {}
    T& operator()(int i, int k) { return v[(k + 2) * stride + i + 2]; }
    T* data() { return &(*this)(0, 0); }
    int32_t step() const { return stride * int32_t(sizeof(T)); }
};

// Every size up to 12 by 12 and a few larger at every origin parity, on
// samples drawn from [lo, hi): the in-place forward runs line(true) down
// every column, then along every row (the inverse line(false), rows first);
// the band forms give the forward cut at (n + 1) >> 1 whatever the phase,
// and both inverses the same; buffers as the size queries say.
template <class T, class A, class Line>
void sweep2D(double lo, double hi, Line line) {
    std::mt19937 rng(2);
    std::uniform_real_distribution<double> d(lo, hi);
    auto byLines = [&](Img<T> a, const VqciRect& r, bool fwd) {
        std::vector<T> l;
        for (bool cols : {fwd, !fwd})
            for (int j = 0; j < (cols ? a.w : a.h); ++j) {
                auto at = [&](int i) -> T& { return cols ? a(j, i) : a(i, j); };
                l.resize(cols ? a.h : a.w);
                for (size_t i = 0; i < l.size(); ++i) l[i] = at(int(i));
                line(fwd)(l, cols ? r.y : r.x);
                for (size_t i = 0; i < l.size(); ++i) at(int(i)) = l[i];
            }
        return a;
    };
    std::vector<std::pair<int, int>> sizes = {{33, 17}, {40, 40}, {64, 5}, {1, 37}};
    for (int w = 1; w <= 12; ++w)
        for (int h = 1; h <= 12; ++h) sizes.push_back({w, h});
    for (auto [w, h] : sizes)
        for (int org = 0; org < 4; ++org) {
            const VqciRect r{(org & 1) + 6, (org >> 1) - 3, w, h};
            const int wl = (w + 1) / 2, hl = (h + 1) / 2;
            Img<T> src(w, h), back(w, h), b[4] = {{wl, hl}, {wl, h - hl}, {w - wl, hl}, {w - wl, h - hl}};
            for (int k = 0; k < h; ++k)
                for (int i = 0; i < w; ++i) src(i, k) = T(d(rng));
            const Img<T> fwd = byLines(src, r, true), inv = byLines(fwd, r, false);
            int32_t szIR = -1, szR = -1;
            ASSERT_TRUE(A::sizeIR(&r, &szIR) == vqcStatusOk && A::sizeR(&r, &szR) == vqcStatusOk);
            Guarded bufIR(szIR), bufR(szR);
            Img<T> ip = src;
            ASSERT_EQ(A::fwdIR(ip.data(), ip.step(), &r, bufIR.data()), vqcStatusOk);
            ASSERT_TRUE(ip.v == fwd.v) << w << "x" << h << " at " << r.x << "," << r.y;
            T* pd[4];
            int32_t sd[4];
            for (int q = 0; q < 4; ++q) pd[q] = b[q].data(), sd[q] = b[q].step();
            ASSERT_EQ(A::fwdR(src.data(), src.step(), &r, pd, sd, bufR.data()), vqcStatusOk);
            for (int q = 0; q < 4; ++q)
                for (int k = 0; k < b[q].h; ++k)
                    for (int i = 0; i < b[q].w; ++i) ASSERT_EQ(b[q](i, k), ip(i + (q >> 1) * wl, k + (q & 1) * hl));
            ASSERT_EQ(A::invR(pd, sd, back.data(), back.step(), &r, bufR.data()), vqcStatusOk);
            ASSERT_EQ(A::invIR(ip.data(), ip.step(), &r, bufIR.data()), vqcStatusOk);
            EXPECT_TRUE(ip.v == inv.v && back.v == inv.v && bufIR.guardsIntact() && bufR.guardsIntact())
                << w << "x" << h << " at " << r.x << "," << r.y;
        }
}

// A lifting pass gives the samples at odd (or even) global positions
// f(sample, left, right, index), from the values the pass before left.
template <class V>
using Pass = std::pair<bool, std::function<V(V, V, V, int)>>;

// The passes over x, whose index 0 stands at global position i0. The ends
// are never updated, so each pass leaves one more sample stale at either
// end: callers give a border wider than the number of passes.
template <class V>
std::vector<V> lift(std::vector<V> x, int i0, const std::vector<Pass<V>>& passes) {
    for (const auto& [odd, f] : passes) {
        const std::vector<V> y = x;
        for (int i = 1; i + 1 < int(x.size()); ++i)
            if (((i + i0) & 1) == int(odd)) x[i] = f(y[i], y[i - 1], y[i + 1], i);
    }
    return x;
}

// One level over a line at global position i0, extended by periodic
// symmetry: the analysis gives lows (even positions) then highs, the
// synthesis takes them so. A lone sample at an odd position doubles, and
// halves going back.
template <class V>
std::vector<V> level(const std::vector<V>& in, int i0, const std::vector<Pass<V>>& passes, bool fwd) {
    const int n = int(in.size()), m = 8, nl = (n + 1 - (i0 & 1)) / 2, period = 2 * n - 2;
    if (n == 1) return {fwd ? in[0] * ((i0 & 1) + 1) : in[0] / ((i0 & 1) + 1)};
    std::vector<V> line = in, x(n + 2 * m), out;
    if (!fwd)
        for (int i = 0, lo = 0, hi = nl; i < n; ++i) line[i] = in[((i + i0) & 1) ? hi++ : lo++];
    for (int i = 0; i < n + 2 * m; ++i) {
        const int k = ((i - m) % period + period) % period;
        x[i] = line[k < n ? k : period - k];
    }
    x = lift(x, i0 - m, passes);
    if (!fwd) return std::vector<V>(x.begin() + m, x.begin() + m + n);
    for (int odd : {0, 1})
        for (int i = 0; i < n; ++i)
            if (((i + i0) & 1) == odd) out.push_back(x[i + m]);
    return out;
}

// The reversible 5/3 steps with floor division, or their inverse.
inline std::vector<Pass<int64_t>> passes53(bool fwd) {
    auto fl = [](int64_t a, int64_t b) { return (a - ((a % b) + b) % b) / b; };
    auto predict = [=](int s) { return [=](int64_t x, int64_t l, int64_t r, int) { return x - s * fl(l + r, 2); }; };
    auto update = [=](int s) { return [=](int64_t x, int64_t l, int64_t r, int) { return x + s * fl(l + r + 2, 4); }; };
    if (fwd) return {{true, predict(1)}, {false, update(1)}};
    return {{false, update(-1)}, {true, predict(-1)}};
}

// The irreversible 9/7 steps in double precision, then 1/K on the lows and
// K on the highs; or their inverse.
inline std::vector<Pass<double>> passes97(bool fwd) {
    const double a = -1.586134342059924, b = -0.052980118572961, g = 0.882911075530934, d = 0.443506852043971,
                 K = 1.230174104914001;
    auto step = [](double c) { return [c](double x, double l, double r, int) { return x + c * (l + r); }; };
    if (fwd)
        return {{true, step(a)}, {false, step(b)}, {true, step(g)},
                {false, [=](double x, double l, double r, int) { return (x + d * (l + r)) / K; }},
                {true, [=](double x, double, double, int) { return x * K; }}};
    return {{false, [=](double x, double l, double r, int) { return x * K - d * (l + r) / K; }},
            {true, [=](double x, double l, double r, int) { return x / K - g * (l + r); }},
            {false, step(-b)}, {true, step(-a)}};
}

// Line forms of A inside a long random signal, their border taken from it:
// the forward on w pairs against the model's values at the pairs'
// positions, the inverse on random bands with two pairs of border against
// the model's samples, within `tol`; rows, and with kCols also columns as
// the middle one of three. model(fwd) gives the passes.
template <class T, class A, bool kCols, class V, class Model>
void lineForms(int w, int phase, int64_t lim, double tol, Model model, std::mt19937& rng) {
    const int p = phase != 0, m = 6, len = 2 * w + 2 * m;
    std::uniform_int_distribution<int64_t> d(-lim, lim - 1);
    auto near = [&](T got, V want) { return tol == 0 ? got == T(want) : std::fabs(double(got) - double(want)) <= tol; };
    for (int e = 1; e <= (kCols ? 3 : 1); e += 2) {
        auto fwd = [&](auto... a) {
            if constexpr (kCols)
                if (e == 3) return A::fwdCol(a...);
            return A::fwdRow(a...);
        };
        auto inv = [&](auto... a) {
            if constexpr (kCols)
                if (e == 3) return A::invCol(a...);
            return A::invRow(a...);
        };
        const int c = e / 2, st = int(sizeof(T)) * e;
        const VqciSize roi = e == 1 ? VqciSize{w, 1} : VqciSize{1, w};
        std::vector<V> x(len), y(len, V(0));
        std::vector<T> s(len * e), lo(w * e), hi(w * e), bl((w + 4) * e), bh((w + 4) * e), out(2 * w * e + e, T(77));
        for (auto& v : s) v = T(d(rng));
        for (int i = 0; i < len; ++i) x[i] = s[i * e + c];
        const auto f = lift(x, p, model(true));  // s[m] stands at parity p
        ASSERT_EQ(fwd(&s[m * e + c], st, &lo[c], st, &hi[c], st, roi, phase), vqcStatusOk);
        for (int j = 0; j < w; ++j)
            ASSERT_TRUE(near(lo[j * e + c], f[m + 2 * j + p]) && near(hi[j * e + c], f[m + 2 * j + 1 - p]))
                << "w " << w << " phase " << phase << " step " << e << " pair " << j;
        for (int j = -2; j < w + 2; ++j) {
            bl[(j + 2) * e + c] = T(y[m + 2 * j + p] = V(d(rng)));
            bh[(j + 2) * e + c] = T(y[m + 2 * j + 1 - p] = V(d(rng)));
        }
        const auto g = lift(y, p, model(false));
        ASSERT_EQ(inv(&bl[2 * e + c], st, &bh[2 * e + c], st, roi, &out[c], st, phase), vqcStatusOk);
        for (int i = 0; i < 2 * w; ++i)
            ASSERT_TRUE(near(out[i * e + c], g[m + i])) << "w " << w << " phase " << phase << " step " << e << " at " << i;
        EXPECT_EQ(out[2 * w * e + c], T(77));
    }
}

}  // namespace vqcjtest
