// Reversible 5/3 wavelet: every 2D form against the standard's lifting
// equations written out below (periodic symmetric extension, floor
// division, bands by global parity), exact round trips of all forms at every
// phase and size, the line forms against the same reference inside a longer
// signal, and the argument checks.
#include <gtest/gtest.h>
#include <vqcj.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <random>
#include <vector>

#include "support/simd.h"
#include "support/testutil.h"
#include "wavelet_ref.h"

namespace {

using vqcjtest::Img;
using vqcjtest::ref53Line;

template <class T>
struct Api53;
template <>
struct Api53<Vqc16s> {
    static constexpr auto fwdRow = vqciWTFwdRow_B53_JPEG2K_16s_C1R, fwdCol = vqciWTFwdCol_B53_JPEG2K_16s_C1R;
    static constexpr auto invRow = vqciWTInvRow_B53_JPEG2K_16s_C1R, invCol = vqciWTInvCol_B53_JPEG2K_16s_C1R;
    static constexpr auto fwdLift = vqciWTFwdColLift_B53_JPEG2K_16s_C1;
    static constexpr auto invLift = vqciWTInvColLift_B53_JPEG2K_16s_C1;
    static constexpr auto fwdIR = vqciWTFwd_B53_JPEG2K_16s_C1IR, invIR = vqciWTInv_B53_JPEG2K_16s_C1IR;
    static constexpr auto fwdR = vqciWTFwd_B53_JPEG2K_16s_C1R;
    static constexpr auto invR = vqciWTInv_B53_JPEG2K_16s_C1R;
    static constexpr auto sizeIR = vqciWTGetBufSize_B53_JPEG2K_16s_C1IR, sizeR = vqciWTGetBufSize_B53_JPEG2K_16s_C1R;
};
template <>
struct Api53<Vqc32s> {
    static constexpr auto fwdRow = vqciWTFwdRow_B53_JPEG2K_32s_C1R, fwdCol = vqciWTFwdCol_B53_JPEG2K_32s_C1R;
    static constexpr auto invRow = vqciWTInvRow_B53_JPEG2K_32s_C1R, invCol = vqciWTInvCol_B53_JPEG2K_32s_C1R;
    static constexpr auto fwdLift = vqciWTFwdColLift_B53_JPEG2K_32s_C1;
    static constexpr auto invLift = vqciWTInvColLift_B53_JPEG2K_32s_C1;
    static constexpr auto fwdIR = vqciWTFwd_B53_JPEG2K_32s_C1IR, invIR = vqciWTInv_B53_JPEG2K_32s_C1IR;
    static constexpr auto fwdR = vqciWTFwd_B53_JPEG2K_32s_C1R;
    static constexpr auto invR = vqciWTInv_B53_JPEG2K_32s_C1R;
    static constexpr auto sizeIR = vqciWTGetBufSize_B53_JPEG2K_32s_C1IR, sizeR = vqciWTGetBufSize_B53_JPEG2K_32s_C1R;
};

template <class T>
class Wt53 : public ::testing::Test {};
using Types = ::testing::Types<Vqc16s, Vqc32s>;
TYPED_TEST_SUITE(Wt53, Types);

// The standard's one-level 2D DWT of a region (columns, then rows), each
// line placed as lows then highs, cut by the phase.
std::vector<int64_t> ref2D(const std::vector<int64_t>& in, int w, int h, int x0, int y0) {
    std::vector<int64_t> a = in, line;
    for (int c = 0; c < w; ++c) {
        line.resize(h);
        for (int k = 0; k < h; ++k) line[k] = a[k * w + c];
        line = ref53Line(line, y0);
        for (int k = 0; k < h; ++k) a[k * w + c] = line[k];
    }
    for (int k = 0; k < h; ++k) {
        line.assign(a.begin() + k * w, a.begin() + (k + 1) * w);
        line = ref53Line(line, x0);
        std::copy(line.begin(), line.end(), a.begin() + k * w);
    }
    return a;
}

// Every origin parity and every size up to 12 by 12, and a few larger: the
// in-place forward equals the reference, the band forms equal the in-place
// result cut at (n + 1) >> 1, and both inverses restore the input.
TYPED_TEST(Wt53, TwoDimensionalFormsMatchTheStandard) {
    using T = TypeParam;
    using A = Api53<T>;
    std::mt19937 rng(53);
    std::vector<std::pair<int, int>> sizes;
    for (int w = 1; w <= 12; ++w)
        for (int h = 1; h <= 12; ++h) sizes.push_back({w, h});
    sizes.insert(sizes.end(), {{33, 17}, {40, 40}, {64, 3}, {1, 37}});
    for (auto [w, h] : sizes)
        for (int org = 0; org < 4; ++org) {
            const VqciRect r{(org & 1) + 6, (org >> 1) - 3, w, h};
            Img<T> src(w, h, 3);
            src.random(rng, -2000, 2000);
            std::vector<int64_t> in(w * h);
            for (int k = 0; k < h; ++k)
                for (int i = 0; i < w; ++i) in[k * w + i] = src(i, k);
            const auto want = ref2D(in, w, h, r.x, r.y);

            int32_t szIR = -1;
            ASSERT_EQ(A::sizeIR(&r, &szIR), vqcStatusOk);
            vqcjtest::Guarded bufIR(szIR);
            Img<T> ip = src;
            ASSERT_EQ(A::fwdIR(ip.data(), ip.step(), &r, bufIR.data()), vqcStatusOk);
            for (int k = 0; k < h; ++k)
                for (int i = 0; i < w; ++i)
                    ASSERT_EQ(ip(i, k), T(want[k * w + i]))
                        << w << "x" << h << " org " << org << " at " << i << "," << k;
            EXPECT_TRUE(ip.marginIntact());
            vqcjtest::expectBandForms<T, A>(src, r, ip, src);
            ASSERT_EQ(A::invIR(ip.data(), ip.step(), &r, bufIR.data()), vqcStatusOk);
            EXPECT_TRUE(ip.same(src) && bufIR.guardsIntact()) << w << "x" << h << " org " << org;
        }
}

// Row and column forms: a long random signal is transformed by the
// reference; the form, given its border from the signal, must give the
// reference's values for its pairs, and the inverse over those pairs (with
// one band value of border on each side) must give the samples back. Every
// width 1..40 at phase 0, 1 and the "other" values 2 and -1.
TYPED_TEST(Wt53, LineFormsMatchTheStandardAndRoundTrip) {
    using T = TypeParam;
    using A = Api53<T>;
    std::mt19937 rng(35);
    for (int w = 1; w <= 40; ++w)
        for (int phase : {0, 1, 2, -1}) {
            const int p = phase != 0;
            const int len = 2 * w + 16, at = 8;  // the form's src[0] is sig[at]
            std::vector<int64_t> sig(len);
            for (auto& v : sig) v = std::uniform_int_distribution<int>(-3000, 3000)(rng);
            const auto y = ref53Line(sig, at + p);  // global parity of sig[at] is p
            const int nl = (len + 1 - ((at + p) & 1)) >> 1;
            std::vector<int64_t> full(len);  // reference interleaved back in signal order
            {
                int li = 0, hi = nl;
                for (int i = 0; i < len; ++i) full[i] = (((i + at + p) & 1) == 0) ? y[li++] : y[hi++];
            }
            // Rows: one row, columns: the same signal down one column of a 3-wide
            // image.
            for (bool col : {false, true}) {
                const int cols = col ? 3 : 1;
                const int32_t sstep = col ? 3 * sizeof(T) : len * sizeof(T);
                std::vector<T> s(len * cols);
                for (int i = 0; i < len; ++i) s[col ? i * 3 + 1 : i] = T(sig[i]);
                // Bands of w + 2 pairs starting one pair early, so the inverse has its
                // border.
                const int W = w + 2;
                std::vector<T> lo(W * cols), hi(W * cols);
                const T* s0 = s.data() + (col ? (at - 2) * 3 + 1 : at - 2);
                const VqciSize roi = col ? VqciSize{1, W} : VqciSize{W, 1};
                const int32_t bstep = col ? 3 * sizeof(T) : W * sizeof(T);
                T* l0 = lo.data() + (col ? 1 : 0);
                T* h0 = hi.data() + (col ? 1 : 0);
                ASSERT_EQ((col ? A::fwdCol : A::fwdRow)(s0, sstep, l0, bstep, h0, bstep, roi, phase), vqcStatusOk);
                const int e = col ? 3 : 1;
                for (int j = 1; j <= w; ++j) {
                    // Pair j of the wide call is pair j - 1 of the form at src = sig +
                    // at.
                    const int even = at + 2 * (j - 1) + p, odd = p ? even - 1 : even + 1;
                    ASSERT_EQ(l0[j * e], T(full[even])) << "w " << w << " phase " << phase << " col " << col;
                    ASSERT_EQ(h0[j * e], T(full[odd])) << "w " << w << " phase " << phase << " col " << col;
                }
                std::vector<T> d(2 * w * cols + 8, T(77));
                T* d0 = d.data() + (col ? 1 : 0);
                const VqciSize sroi = col ? VqciSize{1, w} : VqciSize{w, 1};
                const int32_t dstep = col ? 3 * sizeof(T) : 2 * w * sizeof(T);
                ASSERT_EQ((col ? A::invCol : A::invRow)(l0 + e, bstep, h0 + e, bstep, sroi, d0, dstep, phase),
                          vqcStatusOk);
                for (int i = 0; i < 2 * w; ++i) ASSERT_EQ(d0[i * e], T(sig[at + i])) << w << " " << phase << " " << col;
                EXPECT_EQ(d[2 * w * cols], T(77));
            }
        }
}

// The column steps, chained the way a line pipeline would, give the column
// form's bands and its inverse's rows (phase 0, rows 2i .. 2i + 2 per step).
TYPED_TEST(Wt53, ColumnStepsChainIntoTheColumnForm) {
    using T = TypeParam;
    using A = Api53<T>;
    std::mt19937 rng(9);
    const int w = 13, h = 9;
    Img<T> src(w, 2 * h + 4);
    src.random(rng, -5000, 5000);
    Img<T> lo(w, h), hi(w, h + 1), lo2(w, h), hi2(w, h + 1);
    const T* s = &src(0, 2);
    ASSERT_EQ(A::fwdCol(s, src.step(), lo.data(), lo.step(), &hi(0, 1), hi.step(), VqciSize{w, h}, 0), vqcStatusOk);
    // The high row above the first pair, from the two rows before.
    for (int i = 0; i < w; ++i) hi2(i, 0) = T(int(src(i, 1)) - ((int(src(i, 0)) + int(src(i, 2))) >> 1));
    for (int k = 0; k < h; ++k)
        ASSERT_EQ(A::fwdLift(&src(0, 2 + 2 * k), &src(0, 3 + 2 * k), &src(0, 4 + 2 * k), &lo2(0, k), &hi2(0, k),
                             &hi2(0, k + 1), w),
                  vqcStatusOk);
    for (int k = 0; k < h; ++k)
        for (int i = 0; i < w; ++i) ASSERT_EQ(lo2(i, k), lo(i, k)) << i << "," << k;
    for (int k = 1; k <= h; ++k)
        for (int i = 0; i < w; ++i) ASSERT_EQ(hi2(i, k), hi(i, k));

    // Inverse: even row 0 from the first low, then one step per pair.
    Img<T> out(w, 2 * h - 1);
    for (int i = 0; i < w; ++i) out(i, 0) = T(int(lo(i, 0)) - ((int(hi2(i, 0)) + int(hi2(i, 1)) + 2) >> 2));
    for (int k = 0; k + 1 < h; ++k)
        ASSERT_EQ(A::invLift(&lo(0, k + 1), &hi2(0, k + 1), &hi2(0, k + 2), &out(0, 2 * k), &out(0, 2 * k + 1),
                             &out(0, 2 * k + 2), w),
                  vqcStatusOk);
    for (int k = 0; k < 2 * h - 1; ++k)
        for (int i = 0; i < w; ++i) ASSERT_EQ(out(i, k), src(i, 2 + k)) << i << "," << k;
}

// Small regions: identity, doubling and halving of single samples, the
// two-sample rule, and the buffer sizes that go with them.
TYPED_TEST(Wt53, SmallRegions) {
    using T = TypeParam;
    using A = Api53<T>;
    auto one = [](int x, int y, int w, int h, std::vector<T> v, bool fwd) {
        const VqciRect r{x, y, w, h};
        T px[4];
        std::copy(v.begin(), v.end(), px);
        uint8_t buf[1];
        EXPECT_EQ((fwd ? A::fwdIR : A::invIR)(px, w * sizeof(T), &r, buf), vqcStatusOk);
        return std::vector<T>(px, px + v.size());
    };
    using V = std::vector<T>;
    // (Lines of one and two samples otherwise follow the reference above.)
    EXPECT_EQ(one(1, 1, 1, 1, {-29}, false), V{-7});  // -29 / 2 = -14, / 2 = -7, truncating
    if constexpr (sizeof(T) == 2) {
        // The two-sample difference is used wide; only its store wraps.
        EXPECT_EQ(one(0, 0, 2, 1, {-32768, 32767}, true), (V{0, -1}));
    }
    for (auto [w, h, ir] :
         std::vector<std::tuple<int, int, int>>{{1, 1, 0}, {2, 2, 0}, {2, 1, 0}, {3, 1, 14}, {1, 3, 14}, {5, 9, 26}}) {
        const VqciRect r{0, 0, w, h};
        int32_t a = -1, b = -1;
        A::sizeIR(&r, &a);
        A::sizeR(&r, &b);
        const int e = sizeof(T);
        EXPECT_EQ(a, ir * e / 2) << w << "x" << h;
        EXPECT_EQ(b, ((e * w + 31) & ~31) * h + a);
    }
    // An empty region is not refused in place, but it is by the band form.
    const VqciRect r0{0, 0, 0, 5};
    T px[1] = {3};
    uint8_t buf[64];
    T* pd[4] = {px, px, px, px};
    int32_t sd[4] = {4, 4, 4, 4};
    EXPECT_EQ(A::fwdIR(px, 4, &r0, buf), vqcStatusOk);
    EXPECT_EQ(A::fwdR(px, 4, &r0, pd, sd, buf), vqcStatusBadSize);
    EXPECT_EQ(px[0], T(3));
}

// The vertical pass runs a dispatched row kernel: every SIMD target writes
// the baseline's bytes, forward and inverse, on full-range samples and
// widths that leave a tail after the last vector.
TYPED_TEST(Wt53, SameOnEverySimdTarget) {
    using T = TypeParam;
    using A = Api53<T>;
    for (auto [w, h, org] : std::vector<std::tuple<int, int, int>>{{37, 29, 0}, {101, 7, 3}, {64, 12, 2}}) {
        const VqciRect r{org & 1, org >> 1, w, h};
        Img<T> src(w, h);
        std::mt19937 rng(w);
        src.random(rng, std::numeric_limits<T>::min(), std::numeric_limits<T>::max());
        int32_t sz = 0;
        A::sizeIR(&r, &sz);
        vqcjtest::expectSameOnEveryTarget(
            [&] {
                std::vector<uint8_t> buf(sz);
                Img<T> im = src;
                A::fwdIR(im.data(), im.step(), &r, buf.data());
                std::vector<uint8_t> out(reinterpret_cast<const uint8_t*>(im.v.data()),
                                         reinterpret_cast<const uint8_t*>(im.v.data() + im.v.size()));
                A::invIR(im.data(), im.step(), &r, buf.data());
                EXPECT_TRUE(im.same(src));
                return out;
            },
            "5/3 2D");
    }
}

// Argument checks: each row has two faults and must report the first.
TYPED_TEST(Wt53, CheckOrder) {
    using T = TypeParam;
    using A = Api53<T>;
    T s[64] = {};
    T* p = s + 8;
    uint8_t buf[256];
    const VqciSize ok{2, 2}, bad{0, 2};
    const VqciRect r{0, 0, 2, 2}, r0{0, 0, 2, 0};
    T* pd[4] = {p, p, p, p};
    T* pdn[4] = {p, nullptr, p, p};
    const T* ps[4] = {p, p, p, p};
    const T* psn[4] = {p, p, p, nullptr};
    int32_t st[4] = {8, 8, 8, 8}, stb[4] = {8, 8, 0, 8};
    int32_t sz;
    struct Row {
        VqcStatus got, want;
    };
    const Row rows[] = {
        {A::fwdRow(nullptr, 0, p, 8, p, 8, bad, 0), vqcStatusNullPtr},
        {A::fwdRow(p, 8, p, 8, nullptr, 0, ok, 0), vqcStatusNullPtr},
        {A::fwdRow(p, 8, p, 0, p, 8, bad, 0), vqcStatusBadStep},
        {A::fwdCol(p, 8, p, 8, p, -1, bad, 0), vqcStatusBadStep},
        {A::fwdCol(p, 8, p, 8, p, 8, VqciSize{2, 0}, 0), vqcStatusBadSize},
        {A::invRow(p, 8, p, 8, bad, nullptr, 0, 0), vqcStatusNullPtr},
        {A::invCol(p, 8, p, 8, bad, p, 0, 0), vqcStatusBadStep},
        {A::invRow(p, 8, p, 8, VqciSize{0, 1}, p, 8, 0), vqcStatusBadSize},
        {A::fwdLift(p, p, p, p, p, nullptr, 0), vqcStatusNullPtr},
        {A::fwdLift(p, p, p, p, p, p, 0), vqcStatusBadSize},
        {A::invLift(p, p, p, nullptr, p, p, -3), vqcStatusNullPtr},
        {A::invLift(p, p, p, p, p, p, 0), vqcStatusBadSize},
        {A::fwdIR(nullptr, 0, nullptr, nullptr), vqcStatusNullPtr},
        {A::fwdIR(p, 0, nullptr, buf), vqcStatusBadStep},
        {A::invIR(p, 8, &r, nullptr), vqcStatusNullPtr},
        {A::fwdR(p, 0, nullptr, pd, st, buf), vqcStatusNullPtr},
        {A::fwdR(p, 0, &r, pdn, st, buf), vqcStatusBadStep},
        {A::fwdR(p, 8, &r, pdn, stb, buf), vqcStatusNullPtr},
        {A::fwdR(p, 8, &r0, pd, stb, buf), vqcStatusBadStep},
        {A::fwdR(p, 8, &r0, pd, st, buf), vqcStatusBadSize},
        {A::invR(ps, st, p, 0, &r, nullptr), vqcStatusNullPtr},
        {A::invR(psn, st, p, 0, &r, buf), vqcStatusBadStep},
        {A::invR(psn, stb, p, 8, &r, buf), vqcStatusNullPtr},
        {A::invR(ps, stb, p, 8, &r0, buf), vqcStatusBadStep},
        {A::invR(ps, st, p, 8, &r0, buf), vqcStatusBadSize},
        {A::sizeIR(nullptr, &sz), vqcStatusNullPtr},
        {A::sizeR(&r, nullptr), vqcStatusNullPtr},
    };
    for (size_t i = 0; i < std::size(rows); ++i) EXPECT_EQ(rows[i].got, rows[i].want) << "row " << i;
    for (T v : s) EXPECT_EQ(v, T(0));
}

}  // namespace
