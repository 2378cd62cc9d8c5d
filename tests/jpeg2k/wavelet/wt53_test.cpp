// Reversible 5/3 wavelet: the 2D and line forms against the standard's
// lifting at every origin parity and phase, the column steps chained as a
// pipeline, every SIMD target, and the argument checks.
#include <gtest/gtest.h>
#include <vqcj.h>

#include <array>
#include <cstdint>
#include <limits>
#include <random>
#include <vector>

#include "support/simd.h"
#include "wavelet_ref.h"

namespace {

using vqcjtest::Img;

template <class T>
class Wt53 : public ::testing::Test {};
using Types = ::testing::Types<Vqc16s, Vqc32s>;
TYPED_TEST_SUITE(Wt53, Types);

// The 2D forms give the standard's DWT of the region, each line lows then
// highs, and their inverses the input back. A lone sample at odd x and y
// goes back divided by 2 twice, truncating; a 16s pair's difference is used
// at full width, only its store wraps. The line forms inside a longer
// signal at widths 1..40; phase values 2 and -1 mean 1.
TYPED_TEST(Wt53, FormsMatchTheStandard) {
    using T = TypeParam;
    using A = vqcjtest::B53<T>;
    vqcjtest::sweep2D<T, A>(-2000, 2000, [](bool fwd) {
        return [fwd](std::vector<T>& line, int origin) {
            const auto y = vqcjtest::level(std::vector<int64_t>(line.begin(), line.end()), origin, vqcjtest::passes53(fwd), fwd);
            for (size_t i = 0; i < y.size(); ++i) line[i] = T(y[i]);
        };
    });
    T px[1] = {T(-29)}, pair[2] = {T(-32768), T(32767)};
    uint8_t one[1];
    const VqciRect r1{1, 1, 1, 1}, r2{0, 0, 2, 1};
    ASSERT_TRUE(A::invIR(px, 8, &r1, one) == vqcStatusOk && A::fwdIR(pair, 4, &r2, one) == vqcStatusOk);
    EXPECT_EQ(px[0], T(-7));
    EXPECT_TRUE(sizeof(T) == 4 || (pair[0] == 0 && pair[1] == -1));
    std::mt19937 rng(35);
    for (int w = 1; w <= 40; ++w)
        for (int phase : {0, 1, 2, -1})
            vqcjtest::lineForms<T, A, true, int64_t>(w, phase, 3000, 0, [](bool fwd) { return vqcjtest::passes53(fwd); }, rng);
}

// The column steps chained as a pipeline that keeps one high row (read as
// the old high, overwritten with the new) give the column form's bands; the
// inverse steps give the rows back.
TYPED_TEST(Wt53, ColumnStepsChainIntoTheColumnForm) {
    using T = TypeParam;
    using A = vqcjtest::B53<T>;
    const int w = 13, h = 9;
    Img<T> src(w, 2 * h + 3), lo(w, h), hi(w, h + 1), out(w, 2 * h - 1);
    std::mt19937 rng(9);
    for (auto& v : src.v) v = T(std::uniform_int_distribution<int>(-5000, 5000)(rng));
    ASSERT_EQ(A::fwdCol(&src(0, 2), src.step(), lo.data(), lo.step(), &hi(0, 1), hi.step(), VqciSize{w, h}, 0), vqcStatusOk);
    for (int i = 0; i < w; ++i) hi(i, 0) = T(src(i, 1) - ((src(i, 0) + src(i, 2)) >> 1));  // the high above
    std::vector<T> hrow(&hi(0, 0), &hi(0, 0) + w), lrow(w);
    for (int k = 0; k < h; ++k) {
        ASSERT_EQ(A::fwdLift(&src(0, 2 + 2 * k), &src(0, 3 + 2 * k), &src(0, 4 + 2 * k), lrow.data(), hrow.data(), hrow.data(), w),
                  vqcStatusOk);
        for (int i = 0; i < w; ++i) ASSERT_TRUE(lrow[i] == lo(i, k) && hrow[i] == hi(i, k + 1)) << i << "," << k;
    }
    for (int i = 0; i < w; ++i) out(i, 0) = T(lo(i, 0) - ((hi(i, 0) + hi(i, 1) + 2) >> 2));
    for (int k = 0; k + 1 < h; ++k)
        ASSERT_EQ(A::invLift(&lo(0, k + 1), &hi(0, k + 1), &hi(0, k + 2), &out(0, 2 * k), &out(0, 2 * k + 1), &out(0, 2 * k + 2), w),
                  vqcStatusOk);
    for (int k = 0; k < 2 * h - 1; ++k)
        for (int i = 0; i < w; ++i) ASSERT_EQ(out(i, k), src(i, 2 + k)) << i << "," << k;
}

// The vertical pass runs a dispatched row kernel: every SIMD target writes
// the baseline's bytes, on full-range samples and widths that leave a tail
// after the last vector, and the inverse restores them.
TYPED_TEST(Wt53, SameOnEverySimdTarget) {
    using T = TypeParam;
    using A = vqcjtest::B53<T>;
    for (auto [w, h, org] : {std::array{37, 29, 0}, std::array{101, 7, 3}, std::array{64, 12, 2}}) {
        const VqciRect r{org & 1, org >> 1, w, h};
        Img<T> src(w, h);
        std::mt19937 rng(w);
        std::uniform_int_distribution<int> d(std::numeric_limits<T>::min(), std::numeric_limits<T>::max());
        for (auto& v : src.v) v = T(d(rng));
        int32_t sz = 0;
        A::sizeIR(&r, &sz);
        std::vector<uint8_t> buf(sz);
        auto run = [&] {
            Img<T> im = src;
            A::fwdIR(im.data(), im.step(), &r, buf.data());
            const auto* b = reinterpret_cast<const uint8_t*>(im.v.data());
            std::vector<uint8_t> out(b, b + im.v.size() * sizeof(T));
            A::invIR(im.data(), im.step(), &r, buf.data());
            EXPECT_TRUE(im.v == src.v);
            return out;
        };
        vqcjtest::expectSameOnEveryTarget(run, "5/3 2D");
    }
}

// Argument checks: each row has two faults and must report the first; an
// empty region is no fault in place.
TYPED_TEST(Wt53, CheckOrder) {
    using T = TypeParam;
    using A = vqcjtest::B53<T>;
    T s[64] = {}, *p = s + 8, *pd[4] = {p, p, p, p}, *pdn[4] = {p, nullptr, p, p};
    const T *ps[4] = {p, p, p, p}, *psn[4] = {p, p, p, nullptr};
    uint8_t buf[256];
    const VqciSize ok{2, 2}, bad{0, 2};
    const VqciRect r{0, 0, 2, 2}, r0{0, 0, 2, 0}, rw0{0, 0, 0, 5};
    int32_t st[4] = {8, 8, 8, 8}, stb[4] = {8, 8, 0, 8}, sz;
    const VqcStatus N = vqcStatusNullPtr, S = vqcStatusBadStep, Z = vqcStatusBadSize;
    const VqcStatus rows[][2] = {
        {A::fwdRow(nullptr, 0, p, 8, p, 8, bad, 0), N},      {A::fwdRow(p, 8, p, 8, nullptr, 0, ok, 0), N},
        {A::fwdRow(p, 8, p, 0, p, 8, bad, 0), S},            {A::fwdCol(p, 8, p, 8, p, -1, bad, 0), S},
        {A::fwdCol(p, 8, p, 8, p, 8, VqciSize{2, 0}, 0), Z}, {A::invRow(p, 8, p, 8, bad, nullptr, 0, 0), N},
        {A::invCol(p, 8, p, 8, bad, p, 0, 0), S},            {A::invRow(p, 8, p, 8, VqciSize{0, 1}, p, 8, 0), Z},
        {A::fwdLift(p, p, p, p, p, nullptr, 0), N},          {A::fwdLift(p, p, p, p, p, p, 0), Z},
        {A::invLift(p, p, p, nullptr, p, p, -3), N},         {A::invLift(p, p, p, p, p, p, 0), Z},
        {A::fwdIR(nullptr, 0, nullptr, nullptr), N},         {A::fwdIR(p, 0, nullptr, buf), S},
        {A::invIR(p, 8, &r, nullptr), N},                    {A::fwdIR(p, 8, &rw0, buf), vqcStatusOk},
        {A::fwdR(p, 0, nullptr, pd, st, buf), N},            {A::fwdR(p, 0, &r, pdn, st, buf), S},
        {A::fwdR(p, 8, &r, pdn, stb, buf), N},               {A::fwdR(p, 8, &r0, pd, stb, buf), S},
        {A::fwdR(p, 8, &r0, pd, st, buf), Z},                {A::invR(ps, st, p, 0, &r, nullptr), N},
        {A::invR(psn, st, p, 0, &r, buf), S},                {A::invR(psn, stb, p, 8, &r, buf), N},
        {A::invR(ps, stb, p, 8, &r0, buf), S},               {A::invR(ps, st, p, 8, &r0, buf), Z},
        {A::sizeIR(nullptr, &sz), N},                        {A::sizeR(&r, nullptr), N},
    };
    for (size_t i = 0; i < std::size(rows); ++i) EXPECT_EQ(rows[i][0], rows[i][1]) << "row " << i;
    for (T v : s) EXPECT_EQ(v, T(0));
}

}  // namespace
