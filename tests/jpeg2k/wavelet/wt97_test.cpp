// Irreversible 9/7 wavelet: the 2D forms against a double-precision
// reference of the standard's lifting at even origins (and the odd-origin
// band placement), the three precisions of the line forms against each
// other and the reference, the column steps chained against the line
// forms, the direct filters of one-pair lines, saturation, buffer sizes and
// the argument checks.
#include <gtest/gtest.h>
#include <vqcj.h>

#include <algorithm>
#include <bit>
#include <climits>
#include <cmath>
#include <cstdint>
#include <random>
#include <vector>

#include "support/testutil.h"
#include "wavelet_ref.h"

namespace {

using vqcjtest::Img;
using vqcjtest::ref97Line;

template <class T>
struct Api97;
template <>
struct Api97<Vqc16s> {
    static constexpr auto fwdIR = vqciWTFwd_D97_JPEG2K_16s_C1IR, invIR = vqciWTInv_D97_JPEG2K_16s_C1IR;
    static constexpr auto fwdR = vqciWTFwd_D97_JPEG2K_16s_C1R;
    static constexpr auto invR = vqciWTInv_D97_JPEG2K_16s_C1R;
    static constexpr auto sizeIR = vqciWTGetBufSize_D97_JPEG2K_16s_C1IR, sizeR = vqciWTGetBufSize_D97_JPEG2K_16s_C1R;
    static constexpr auto fwdRow = vqciWTFwdRow_D97_JPEG2K_16s_C1R, invRow = vqciWTInvRow_D97_JPEG2K_16s_C1R;
    static constexpr auto fwdLift = vqciWTFwdColLift_D97_JPEG2K_16s_C1;
    static constexpr auto invLift = vqciWTInvColLift_D97_JPEG2K_16s_C1;
};
template <>
struct Api97<Vqc32s> {
    static constexpr auto fwdIR = vqciWTFwd_D97_JPEG2K_32s_C1IR, invIR = vqciWTInv_D97_JPEG2K_32s_C1IR;
    static constexpr auto fwdR = vqciWTFwd_D97_JPEG2K_32s_C1R;
    static constexpr auto invR = vqciWTInv_D97_JPEG2K_32s_C1R;
    static constexpr auto sizeIR = vqciWTGetBufSize_D97_JPEG2K_32s_C1IR, sizeR = vqciWTGetBufSize_D97_JPEG2K_32s_C1R;
    static constexpr auto fwdRow = vqciWTFwdRow_D97_JPEG2K_32s_C1R, invRow = vqciWTInvRow_D97_JPEG2K_32s_C1R;
    static constexpr auto fwdLift = vqciWTFwdColLift_D97_JPEG2K_32s_C1;
    static constexpr auto invLift = vqciWTInvColLift_D97_JPEG2K_32s_C1;
};
template <>
struct Api97<Vqc32f> {
    static constexpr auto fwdRow = vqciWTFwdRow_D97_JPEG2K_32f_C1R, invRow = vqciWTInvRow_D97_JPEG2K_32f_C1R;
    static constexpr auto fwdCol = vqciWTFwdCol_D97_JPEG2K_32f_C1R, invCol = vqciWTInvCol_D97_JPEG2K_32f_C1R;
    static constexpr auto fwdLift = vqciWTFwdColLift_D97_JPEG2K_32f_C1;
    static constexpr auto invLift = vqciWTInvColLift_D97_JPEG2K_32f_C1;
};

template <class T>
class Wt97 : public ::testing::Test {};
using Types2D = ::testing::Types<Vqc16s, Vqc32s>;
TYPED_TEST_SUITE(Wt97, Types2D);

// A 2D call is its column pass, then its row pass (inverse: rows, then
// columns), bit for bit, at every origin parity and every size to 12 x 12;
// the band forms are the in-place forms cut at (n + 1) >> 1.
TYPED_TEST(Wt97, TwoDimensionalFormsAreTheirPasses) {
    using T = TypeParam;
    using A = Api97<T>;
    std::mt19937 rng(79);
    std::vector<std::pair<int, int>> sizes;
    for (int w = 1; w <= 12; ++w)
        for (int h = 1; h <= 12; ++h) sizes.push_back({w, h});
    sizes.insert(sizes.end(), {{33, 17}, {64, 5}});
    std::vector<uint8_t> line(1024);
    for (auto [w, h] : sizes)
        for (int org = 0; org < 4; ++org) {
            const VqciRect r{(org & 1) + 4, (org >> 1) - 2, w, h};
            Img<T> src(w, h, 3);
            src.random(rng, -1000, 1000);
            // One pass at a time: a column at an even x, a row at an even y.
            auto passes = [&](Img<T> im, bool fwd) {
                auto cols = [&] {
                    for (int c = 0; c < w; ++c) {
                        const VqciRect rc{0, r.y, 1, h};
                        (fwd ? A::fwdIR : A::invIR)(&im(c, 0), im.step(), &rc, line.data());
                    }
                };
                auto rows = [&] {
                    for (int k = 0; k < h; ++k) {
                        const VqciRect rr{r.x, 0, w, 1};
                        (fwd ? A::fwdIR : A::invIR)(&im(0, k), im.step(), &rr, line.data());
                    }
                };
                if (fwd)
                    cols(), rows();
                else
                    rows(), cols();
                return im;
            };
            int32_t szIR = 0;
            A::sizeIR(&r, &szIR);
            vqcjtest::Guarded bufIR(szIR);
            Img<T> ip = src;
            ASSERT_EQ(A::fwdIR(ip.data(), ip.step(), &r, bufIR.data()), vqcStatusOk);
            ASSERT_TRUE(ip.same(passes(src, true))) << w << "x" << h << " org " << org;
            EXPECT_TRUE(ip.marginIntact() && bufIR.guardsIntact());
            // The band form's cut includes, at phase 1 with an odd n, the slot
            // the forward leaves as the source had it.
            const Img<T> want = passes(ip, false);
            vqcjtest::expectBandForms<T, A>(src, r, ip, want);
            ASSERT_EQ(A::invIR(ip.data(), ip.step(), &r, bufIR.data()), vqcStatusOk);
            ASSERT_TRUE(ip.same(want) && bufIR.guardsIntact()) << w << "x" << h << " org " << org;
        }
}

// The vertical pass runs on whole rows, the horizontal one line by line:
// a column must come out as the same line laid as a row, bit for bit, in
// both directions, at both phases, full-range samples included.
TYPED_TEST(Wt97, ColumnsEqualTransposedRows) {
    using T = TypeParam;
    using A = Api97<T>;
    std::mt19937 rng(31);
    std::vector<uint8_t> buf(4096);
    for (int n = 1; n <= 41; ++n)
        for (int p : {0, 1})
            for (bool fwd : {true, false}) {
                const double lim = sizeof(T) == 2 ? 32767 : 1e9;
                Img<T> row(n, 1), col(1,
                                      n);  // one column: its rows are lines of one sample at an even x
                row.random(rng, -lim, lim);
                for (int k = 0; k < n; ++k) col(0, k) = row(k, 0);
                const VqciRect rr{p, 0, n, 1}, rc{0, p, 1, n};
                ASSERT_EQ((fwd ? A::fwdIR : A::invIR)(row.data(), row.step(), &rr, buf.data()), vqcStatusOk);
                ASSERT_EQ((fwd ? A::fwdIR : A::invIR)(col.data(), col.step(), &rc, buf.data()), vqcStatusOk);
                for (int k = 0; k < n; ++k)
                    ASSERT_EQ(col(0, k), row(k, 0)) << "n " << n << " p " << p << " fwd " << fwd << " at " << k;
            }
}

// At an odd origin the forward puts the highs first and the lows from slot
// n >> 1; with an odd n the last high lands on the first low and the last
// slot keeps what it held. One row at an even y, so the columns are lines
// of one sample and stay as they are.
TYPED_TEST(Wt97, OddOriginPlacesHighsFirst) {
    using T = TypeParam;
    using A = Api97<T>;
    std::mt19937 rng(1);
    for (int n : {5, 6, 9, 12}) {
        Img<T> row(n, 1);
        row.random(rng, -900, 900);
        std::vector<double> x(n);
        for (int i = 0; i < n; ++i) x[i] = row(i, 0);
        const auto y = ref97Line(x, 1);  // lows then highs
        const int nl = n / 2, nh = n - nl;
        std::vector<uint8_t> buf(1024);
        const VqciRect r{1, 0, n, 1};
        Img<T> out = row;
        ASSERT_EQ(A::fwdIR(out.data(), out.step(), &r, buf.data()), vqcStatusOk);
        std::vector<double> want(n);
        std::vector<bool> set(n, false);
        for (int j = 0; j < nl; ++j) want[(n >> 1) + j] = y[j], set[(n >> 1) + j] = true;
        for (int j = 0; j < nh; ++j) want[j] = y[nl + j], set[j] = true;  // highs written last win
        for (int i = 0; i < n; ++i) {
            if (set[i])
                EXPECT_NEAR(out(i, 0), want[i], sizeof(T) == 2 ? 3.0 : 1.0) << n << " slot " << i;
            else
                EXPECT_EQ(out(i, 0), row(i, 0)) << n << " slot " << i;
        }
    }
}

// Beyond the 32-bit range the 2D 32s result saturates; inside it truncates.
TEST(Wt97Boundaries, TwoDimensional32sSaturates) {
    Img<Vqc32s> row(10, 1);
    // Full-scale alternation whose sign flips halfway: highs far past both ends.
    for (int i = 0; i < 10; ++i) row(i, 0) = ((i & 1) == (i < 5) ? -1600000000 - 7 * i : 1600000000 + 5 * i);
    std::vector<double> x(10);
    for (int i = 0; i < 10; ++i) x[i] = row(i, 0);
    const auto y = ref97Line(x, 0);
    std::vector<uint8_t> buf(256);
    const VqciRect r{0, 0, 10, 1};
    ASSERT_EQ(vqciWTFwd_D97_JPEG2K_32s_C1IR(row.data(), row.step(), &r, buf.data()), vqcStatusOk);
    int saturated = 0;
    for (int i = 0; i < 10; ++i) {
        if (y[i] > 2147483648.0) {
            EXPECT_EQ(row(i, 0), INT_MAX);
            ++saturated;
        } else if (y[i] < -2147483648.0) {
            EXPECT_EQ(row(i, 0), INT_MIN);
            ++saturated;
        } else
            EXPECT_NEAR(row(i, 0), y[i],
                        2000.0);  // single precision on inputs near 2^31
    }
    EXPECT_GE(saturated, 4);
}

// Line forms over a long signal with their border in place: 32f within
// float rounding of the reference at every width 1..40 and phase (width 1
// is the direct filter, for 32s too, within its rounding), and the 32f
// inverse gives the signal back. The fixed-point lifting is checked to the
// bit in the exact tests.
TEST(Wt97Lines, FloatLinesFollowTheReference) {
    std::mt19937 rng(4);
    for (int w = 1; w <= 40; ++w)
        for (int phase : {0, 1, 7}) {
            const int p = phase != 0, len = 2 * w + 24, at = 12;
            std::vector<double> sig(len);
            for (auto& v : sig) v = std::uniform_int_distribution<int>(-2000, 2000)(rng);
            const auto y = ref97Line(sig, p + at);  // sig[at] has global parity p
            const int nl = (len + 1 - p) / 2;
            std::vector<double> full(len);
            for (int i = 0, li = 0, hi = nl; i < len; ++i) full[i] = ((i + p) & 1) ? y[hi++] : y[li++];
            // w + 4 pairs from two pairs early, so the inverse has its border;
            // a one-pair line is called alone.
            const int W = w == 1 ? 1 : w + 4, s0 = w == 1 ? at : at - 4;
            std::vector<float> sf(sig.begin(), sig.end()), lf(W), hf(W), df(2 * w);
            std::vector<Vqc32s> s32(sig.begin(), sig.end()), l32(W), h32(W);
            ASSERT_EQ(vqciWTFwdRow_D97_JPEG2K_32f_C1R(&sf[s0], 4 * len, lf.data(), 4 * W, hf.data(), 4 * W, {W, 1}, phase),
                      vqcStatusOk);
            ASSERT_EQ(vqciWTFwdRow_D97_JPEG2K_32s_C1R(&s32[s0], 4 * len, l32.data(), 4 * W, h32.data(), 4 * W, {W, 1}, phase),
                      vqcStatusOk);
            for (int j = 0; j < W; ++j) {
                const int even = s0 + 2 * j + p, odd = p ? even - 1 : even + 1;
                ASSERT_NEAR(lf[j], full[even], 0.02) << w << " " << phase << " pair " << j;
                ASSERT_NEAR(hf[j], full[odd], 0.02) << w << " " << phase << " pair " << j;
                if (w == 1) {
                    ASSERT_NEAR(l32[j], full[even], 1.0);
                    ASSERT_NEAR(h32[j], full[odd], 1.0);
                }
            }
            if (w == 1) continue;  // a one-pair inverse: see DirectFilters
            ASSERT_EQ(vqciWTInvRow_D97_JPEG2K_32f_C1R(&lf[2], 4 * W, &hf[2], 4 * W, {w, 1}, df.data(), 8 * w, phase),
                      vqcStatusOk);
            for (int i = 0; i < 2 * w; ++i) ASSERT_NEAR(df[i], sig[at + i], 0.02) << w << " " << phase << " " << i;
        }
}

// The 32f column forms are the row forms down the columns.
TEST(Wt97Lines, ColumnsAreTransposedRows) {
    std::mt19937 rng(8);
    const int h = 9, rows = 2 * h + 10, cols = 5;
    for (int phase : {0, 1}) {
        std::vector<float> img(rows * cols), tr(rows * cols);
        for (auto& v : img) v = std::uniform_real_distribution<float>(-500, 500)(rng);
        for (int k = 0; k < rows; ++k)
            for (int c = 0; c < cols; ++c) tr[c * rows + k] = img[k * cols + c];
        std::vector<float> lo(h * cols), hi(h * cols), lr(h), hr(h);
        ASSERT_EQ(vqciWTFwdCol_D97_JPEG2K_32f_C1R(img.data() + 5 * cols, cols * 4, lo.data(), cols * 4, hi.data(),
                                                  cols * 4, {cols, h}, phase),
                  vqcStatusOk);
        for (int c = 0; c < cols; ++c) {
            ASSERT_EQ(vqciWTFwdRow_D97_JPEG2K_32f_C1R(tr.data() + c * rows + 5, rows * 4, lr.data(), h * 4, hr.data(),
                                                      h * 4, {h, 1}, phase),
                      vqcStatusOk);
            for (int j = 0; j < h; ++j) {
                ASSERT_EQ(lo[j * cols + c], lr[j]);
                ASSERT_EQ(hi[j * cols + c], hr[j]);
            }
        }
        // Inverse over the inner pairs, against the row inverse.
        std::vector<float> d(2 * (h - 4) * cols), dr(2 * (h - 4));
        ASSERT_EQ(vqciWTInvCol_D97_JPEG2K_32f_C1R(lo.data() + 2 * cols, cols * 4, hi.data() + 2 * cols, cols * 4,
                                                  {cols, h - 4}, d.data(), cols * 4, phase),
                  vqcStatusOk);
        for (int c = 0; c < cols; ++c) {
            std::vector<float> lc(h), hc(h);
            for (int j = 0; j < h; ++j) lc[j] = lo[j * cols + c], hc[j] = hi[j * cols + c];
            ASSERT_EQ(vqciWTInvRow_D97_JPEG2K_32f_C1R(lc.data() + 2, h * 4, hc.data() + 2, h * 4, {h - 4, 1}, dr.data(),
                                                      4 * 2 * (h - 4), phase),
                      vqcStatusOk);
            for (int k = 0; k < 2 * (h - 4); ++k) ASSERT_EQ(d[k * cols + c], dr[k]);
        }
    }
}

// Column steps chained down a column give the row form's pairs (the fused
// low, away from the row's last pair) and the inverse row's samples, once
// the pipeline is full. Every row of the chain has its own storage.
template <class T>
void chainColumnSteps() {
    using A = Api97<T>;
    std::mt19937 rng(12);
    const int K = 16, len = 2 * K + 4, w = 3;
    std::vector<T> x(len * w);
    for (auto& v : x) v = T(std::uniform_int_distribution<int>(-1500, 1500)(rng));
    std::vector<std::vector<T>> B(K + 1, std::vector<T>(w)), H(K + 2, std::vector<T>(w));
    auto Bk = [&](int k) { return B[k + 1].data(); };
    auto Hk = [&](int k) { return H[k + 2].data(); };
    for (int k = 0; k < K; ++k)
        ASSERT_EQ(A::fwdLift(&x[2 * k * w], &x[(2 * k + 1) * w], &x[(2 * k + 2) * w], Bk(k - 1), Bk(k), Hk(k - 2),
                             Hk(k - 1), Hk(k), w),
                  vqcStatusOk);
    const int W = K - 2;
    std::vector<T> col(len), lo(W), hi(W), back(2 * (W - 6));
    for (int c = 0; c < w; ++c) {
        for (int k = 0; k < len; ++k) col[k] = x[k * w + c];
        ASSERT_EQ(A::fwdRow(&col[4], len * sizeof(T), lo.data(), W * sizeof(T), hi.data(), W * sizeof(T), {W, 1}, 0),
                  vqcStatusOk);
        for (int j = 0; j + 1 < W; ++j) ASSERT_EQ(Bk(j + 2)[c], lo[j]) << "low " << j;   // row 4 + 2j
        for (int j = 0; j + 4 < K; ++j) ASSERT_EQ(Hk(j + 2)[c], hi[j]) << "high " << j;  // row 5 + 2j
        // The row inverse of pairs 3 .. W - 4 against the inverse chain below.
        ASSERT_EQ(A::invRow(&lo[3], W * sizeof(T), &hi[3], W * sizeof(T), {W - 6, 1}, back.data(),
                            2 * (W - 6) * sizeof(T), 0),
                  vqcStatusOk);
        std::vector<std::vector<T>> E(W + 2, std::vector<T>(1)), O(W + 2, std::vector<T>(1));
        auto Ek = [&](int k) { return E[k + 2].data(); };
        auto Ok = [&](int k) { return O[k + 1].data(); };
        for (int k = 1; k < W; ++k)
            ASSERT_EQ(A::invLift(&lo[k], &hi[k - 1], &hi[k], Ek(k - 2), Ok(k - 1), Ek(k - 1), Ok(k), Ek(k), 1),
                      vqcStatusOk);
        // After the step of pair k, pair k - 1's even and the odd before it are
        // final.
        for (int i = 0; i < 2 * (W - 6); ++i) {
            const int pair = 3 + i / 2;
            ASSERT_EQ(i & 1 ? Ok(pair + 1)[0] : Ek(pair)[0], back[i]) << "sample " << i;
        }
    }
}
TEST(Wt97Lines, ColumnStepsChainIntoTheLineForms) {
    chainColumnSteps<Vqc16s>();
    chainColumnSteps<Vqc32s>();
    chainColumnSteps<Vqc32f>();
}

// One-pair lines use the direct filters: they saturate in 16s where 32s
// does not, and their inverse restores the pair.
TEST(Wt97Boundaries, DirectFilters) {
    std::mt19937 rng(5);
    // Their values against the reference are checked with the other widths
    // in ThreePrecisionsAgree.
    for (int phase : {0, 1}) {
        Vqc32s lo, hi;
        // Saturation: an alternating full-scale line.
        std::vector<Vqc16s> a16(12);
        std::vector<Vqc32s> a32(12);
        for (int i = 0; i < 12; ++i) a16[i] = a32[i] = (i & 1) ? -32768 : 32767;
        Vqc16s l16, h16;
        ASSERT_EQ(vqciWTFwdRow_D97_JPEG2K_16s_C1R(&a16[5], 24, &l16, 2, &h16, 2, {1, 1}, phase), vqcStatusOk);
        ASSERT_EQ(vqciWTFwdRow_D97_JPEG2K_32s_C1R(&a32[5], 48, &lo, 4, &hi, 4, {1, 1}, phase), vqcStatusOk);
        EXPECT_EQ(l16, std::clamp(lo, -32768, 32767));
        EXPECT_EQ(h16, std::clamp(hi, -32768, 32767));
        EXPECT_TRUE(hi > 32767 || hi < -32768);
    }
    // Synthesis of one pair: bands from a long line's forward, then the
    // inverse of the middle pair with its neighbours as border.
    for (int phase : {0, 1}) {
        std::vector<float> sig(30), lo(11), hi(11), out(2);
        for (auto& v : sig) v = std::uniform_int_distribution<int>(-3000, 3000)(rng);
        ASSERT_EQ(vqciWTFwdRow_D97_JPEG2K_32f_C1R(&sig[4], 120, lo.data(), 44, hi.data(), 44, {11, 1}, phase),
                  vqcStatusOk);
        ASSERT_EQ(vqciWTInvRow_D97_JPEG2K_32f_C1R(&lo[5], 44, &hi[5], 44, {1, 1}, out.data(), 8, phase), vqcStatusOk);
        EXPECT_NEAR(out[0], sig[14], 0.05);
        EXPECT_NEAR(out[1], sig[15], 0.05);
        std::vector<Vqc32s> l32(lo.begin(), lo.end()), h32(hi.begin(), hi.end()), o32(2);
        for (int j = 0; j < 11; ++j) l32[j] = std::lround(lo[j]), h32[j] = std::lround(hi[j]);
        ASSERT_EQ(vqciWTInvRow_D97_JPEG2K_32s_C1R(&l32[5], 44, &h32[5], 44, {1, 1}, o32.data(), 8, phase), vqcStatusOk);
        EXPECT_NEAR(o32[0], sig[14], 2.0);
        EXPECT_NEAR(o32[1], sig[15], 2.0);
    }
}

// Unit inputs to the 32f column steps read constants back bit for bit.
TEST(Wt97Boundaries, FloatConstants) {
    auto bits = [](float f) { return std::bit_cast<uint32_t>(f); };
    float r[9][1];
    auto fwd = [&](int one) {
        for (auto& v : r) v[0] = 0;
        r[one][0] = 1;
        vqciWTFwdColLift_D97_JPEG2K_32f_C1(r[0], r[1], r[2], r[3], r[4], r[5], r[6], r[7], 1);
    };
    fwd(0);  // high2 = alpha * pSrc0
    EXPECT_EQ(bits(r[7][0]), 0xBFCB0673u);
    fwd(5);  // high0 alone: scaled by the high-pass gain
    EXPECT_EQ(bits(r[5][0]), 0x3F9D7658u);
    auto inv = [&](int one) {
        for (auto& v : r) v[0] = 0;
        r[one][0] = 1;
        vqciWTInvColLift_D97_JPEG2K_32f_C1(r[0], r[1], r[2], r[3], r[4], r[5], r[6], r[7], 1);
    };
    inv(0);  // dst4 = 1.2301741 * low0
    EXPECT_EQ(bits(r[7][0]), 0x3F9D7658u);
    inv(2);  // dst4 = -0.36052364 * high1
    EXPECT_EQ(bits(r[7][0]), 0xBEB8968Eu);
}

TEST(Wt97Boundaries, BufferSizes) {
    auto q = [](auto fn, int w, int h) {
        const VqciRect r{3, 1, w, h};
        int32_t s = -1;
        EXPECT_EQ(fn(&r, &s), vqcStatusOk);
        return s;
    };
    EXPECT_EQ(q(vqciWTGetBufSize_D97_JPEG2K_16s_C1IR, 1, 1), 0);
    EXPECT_EQ(q(vqciWTGetBufSize_D97_JPEG2K_16s_C1IR, 2, 1), 2 * 2 + 16);
    EXPECT_EQ(q(vqciWTGetBufSize_B53_JPEG2K_16s_C1IR, 2, 1), 0);
    EXPECT_EQ(q(vqciWTGetBufSize_D97_JPEG2K_32s_C1IR, 2, 7), 4 * 7 + 32);
    EXPECT_EQ(q(vqciWTGetBufSize_D97_JPEG2K_32s_C1R, 9, 3), 64 * 3 + 4 * 9 + 32);
    EXPECT_EQ(q(vqciWTGetBufSize_D97_JPEG2K_16s_C1R, 1, 1), 32);
}

TEST(Wt97Boundaries, CheckOrder) {
    Vqc32f f[64] = {};
    Vqc32f* p = f + 8;
    Vqc16s s[64] = {};
    Vqc16s* q = s + 8;
    struct Row {
        VqcStatus got, want;
    };
    const Row rows[] = {
        {vqciWTFwdColLift_D97_JPEG2K_32f_C1(p, p, p, p, p, p, p, nullptr, 0), vqcStatusNullPtr},
        {vqciWTFwdColLift_D97_JPEG2K_16s_C1(q, q, q, q, q, q, q, q, 0), vqcStatusBadSize},
        {vqciWTInvColLift_D97_JPEG2K_16s_C1(q, q, q, nullptr, q, q, q, q, -1), vqcStatusNullPtr},
        {vqciWTInvColLift_D97_JPEG2K_32f_C1(p, p, p, p, p, p, p, p, 0), vqcStatusBadSize},
        {vqciWTFwdRow_D97_JPEG2K_32f_C1R(p, 0, p, 4, nullptr, 4, {0, 0}, 0), vqcStatusNullPtr},
        {vqciWTFwdCol_D97_JPEG2K_32f_C1R(p, 4, p, 4, p, 0, {0, 0}, 0), vqcStatusBadStep},
        {vqciWTInvCol_D97_JPEG2K_32f_C1R(p, 4, p, 4, {1, 0}, p, 4, 0), vqcStatusBadSize},
        {vqciWTInvRow_D97_JPEG2K_16s_C1R(q, 4, q, 4, {1, 1}, q, 0, 0), vqcStatusBadStep},
        {vqciWTFwd_D97_JPEG2K_16s_C1IR(q, 0, nullptr, nullptr), vqcStatusBadStep},
        {vqciWTInv_D97_JPEG2K_16s_C1IR(q, 4, nullptr, nullptr), vqcStatusNullPtr},
        {vqciWTGetBufSize_D97_JPEG2K_32s_C1R(nullptr, nullptr), vqcStatusNullPtr},
    };
    for (size_t i = 0; i < std::size(rows); ++i) EXPECT_EQ(rows[i].got, rows[i].want) << "row " << i;
    for (float v : f) EXPECT_EQ(v, 0.0f);
    for (Vqc16s v : s) EXPECT_EQ(v, 0);
}

}  // namespace
