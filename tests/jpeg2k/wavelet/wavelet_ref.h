// Test-side references for the wavelet tests: a strided image with a
// watched margin, and the standard's one-dimensional 5/3 and 9/7 analysis
// written from its lifting equations (floor division, periodic symmetric
// extension), independent of the library's code.
#pragma once

#include <gtest/gtest.h>
#include <vqcj.h>

#include <cstdint>
#include <limits>
#include <random>
#include <vector>

#include "support/testutil.h"

namespace vqcjtest {

// w x h samples with `m` samples of margin on every side, filled with a
// marker that the code under test must not touch.
template <class T>
struct Img {
    int w, h, m, stride;
    std::vector<T> v;
    static constexpr T kMark = T(-12345);
    Img(int w_, int h_, int m_ = 2)
        : w(w_), h(h_), m(m_), stride(w_ + 2 * m_), v((h_ + 2 * m_) * (w_ + 2 * m_), kMark) {}
    T* data() { return &(*this)(0, 0); }
    const T* data() const { return &v[m * stride + m]; }
    int32_t step() const { return stride * int32_t(sizeof(T)); }
    T& operator()(int i, int k) { return v[(k + m) * stride + i + m]; }
    T operator()(int i, int k) const { return v[(k + m) * stride + i + m]; }
    template <class R>
    void random(R& rng, double lo, double hi) {
        std::uniform_real_distribution<double> d(lo, hi);
        for (int k = 0; k < h; ++k)
            for (int i = 0; i < w; ++i) (*this)(i, k) = T(d(rng));
    }
    bool same(const Img& o) const {
        for (int k = 0; k < h; ++k)
            for (int i = 0; i < w; ++i)
                if ((*this)(i, k) != o(i, k)) return false;
        return true;
    }
    bool marginIntact() const {
        for (int k = -m; k < h + m; ++k)
            for (int i = -m; i < w + m; ++i)
                if ((i < 0 || k < 0 || i >= w || k >= h) && (*this)(i, k) != kMark) return false;
        return true;
    }
};

// The band forms of a 2D pair of operations A: the forward gives the
// in-place result `fwd` cut at (n + 1) >> 1 whatever the phase, and the
// inverse of those bands gives `inv`; buffers as the size query says.
template <class T, class A>
void expectBandForms(const Img<T>& src, const VqciRect& r, const Img<T>& fwd, const Img<T>& inv) {
    const int w = r.width, h = r.height, wl = (w + 1) / 2, hl = (h + 1) / 2;
    int32_t sz = 0;
    ASSERT_EQ(A::sizeR(&r, &sz), vqcStatusOk);
    Guarded buf(sz);
    Img<T> b[4] = {Img<T>(wl, hl), Img<T>(wl, h - hl), Img<T>(w - wl, hl), Img<T>(w - wl, h - hl)};
    T* pd[4];
    const T* ps[4];
    int32_t sd[4];
    for (int i = 0; i < 4; ++i) pd[i] = b[i].data(), ps[i] = b[i].data(), sd[i] = b[i].step();
    ASSERT_EQ(A::fwdR(src.data(), src.step(), &r, pd, sd, buf.data()), vqcStatusOk);
    for (int q = 0; q < 4; ++q)
        for (int k = 0; k < b[q].h; ++k)
            for (int i = 0; i < b[q].w; ++i)
                ASSERT_EQ(b[q](i, k), fwd(i + (q >= 2 ? wl : 0), k + (q & 1 ? hl : 0))) << w << "x" << h;
    Img<T> back(w, h, 3);
    ASSERT_EQ(A::invR(ps, sd, back.data(), back.step(), &r, buf.data()), vqcStatusOk);
    EXPECT_TRUE(back.same(inv) && back.marginIntact() && buf.guardsIntact()) << w << "x" << h;
}

// Periodic symmetric extension of x[0, n): the index of sample i.
inline int pse(int i, int n) {
    if (n == 1) return 0;
    const int period = 2 * (n - 1);
    i %= period;
    if (i < 0) i += period;
    return i < n ? i : period - i;
}

// One 5/3 analysis of a line whose first sample stands at global position
// i0: lows (even positions) then highs.
inline std::vector<int64_t> ref53Line(const std::vector<int64_t>& x, int i0) {
    const int n = int(x.size());
    if (n == 1) return {(i0 & 1) ? 2 * x[0] : x[0]};
    auto X = [&](int i) { return x[pse(i - i0, n)]; };  // i global
    auto fl = [](int64_t a, int b) { return a >= 0 ? a / b : -((-a + b - 1) / b); };
    auto D = [&](int i) { return X(i) - fl(X(i - 1) + X(i + 1), 2); };  // i odd
    std::vector<int64_t> lo, hi;
    for (int i = i0; i < i0 + n; ++i) {
        if (i & 1)
            hi.push_back(D(i));
        else
            lo.push_back(X(i) + fl(D(i - 1) + D(i + 1) + 2, 4));
    }
    lo.insert(lo.end(), hi.begin(), hi.end());
    return lo;
}

}  // namespace vqcjtest

namespace vqcjtest {

// One 9/7 analysis in double precision: the four lifting steps with the
// irrational constants, then 1/K on the lows and K on the highs; lows then
// highs. A single sample at an odd position doubles.
inline std::vector<double> ref97Line(const std::vector<double>& x, int i0) {
    const int n = int(x.size());
    if (n == 1) return {(i0 & 1) ? 2 * x[0] : x[0]};
    const double a = -1.586134342059924, b = -0.052980118572961, g = 0.882911075530934, d = 0.443506852043971,
                 K = 1.230174104914001;
    const int m = 8;  // margin of the extended line
    std::vector<double> y(n + 2 * m);
    for (int k = 0; k < n + 2 * m; ++k) y[k] = x[pse(k - m, n)];
    auto odd = [&](int k) { return ((k - m + i0) & 1) != 0; };
    std::vector<double> y0 = y;
    // Each pass reads the previous pass only, as the lifting equations do.
    auto pass = [&](bool onOdd, double c) {
        y0 = y;
        for (int k = 1; k + 1 < n + 2 * m; ++k)
            if (odd(k) == onOdd) y[k] = y0[k] + c * (y0[k - 1] + y0[k + 1]);
    };
    pass(true, a);
    pass(false, b);
    pass(true, g);
    pass(false, d);
    std::vector<double> lo, hi;
    for (int k = m; k < m + n; ++k) (odd(k) ? hi : lo).push_back(odd(k) ? y[k] * K : y[k] / K);
    lo.insert(lo.end(), hi.begin(), hi.end());
    return lo;
}

}  // namespace vqcjtest
