// Irreversible 9/7 wavelet: the fixed-point forms to the bit against a
// pass-by-pass model of their arithmetic, the float and 2D 32s forms against
// a double reference, the 2D forms against their own lines, the column steps
// chained against the line forms, the direct filters of one-pair lines,
// buffer sizes of both filters and the argument checks.
#include <gtest/gtest.h>
#include <vqcj.h>

#include <algorithm>
#include <bit>
#include <climits>
#include <cmath>
#include <cstdint>
#include <random>
#include <vector>

#include "wavelet_ref.h"

namespace {

using vqcjtest::D97;
using I64 = int64_t;
using Passes = std::vector<vqcjtest::Pass<I64>>;

I64 w16(I64 v) { return int16_t(uint16_t(v)); }
I64 w32(I64 v) { return int32_t(uint32_t(v)); }

// The line forms: 16-bit fractions, pair sums at 32 bits, saturating in 16s
// and wrapping in 32s. Lows from index `tailFrom` on take the two-step path
// with its 32-bit product; the 16s high at `firstD` has its product wrap at
// 32 bits.
Passes fix16(bool s16, bool fwd, int firstD = -1, int tailFrom = 0) {
    auto f = [s16](I64 v) { return s16 ? std::clamp<I64>(v, -32768, 32767) : w32(v); };
    auto r = [](I64 v) { return (v + 32768) >> 16; };
    auto add = [=](I64 c) { return [=](I64 x, I64 l, I64 rr, int) { return f(x + r(c * w32(l + rr))); }; };
    auto sub = [=](I64 c) { return [=](I64 x, I64 l, I64 rr, int) { return f(x - r(c * w32(l + rr))); }; };
    if (!fwd)
        return {{false, [=](I64 x, I64 l, I64 rr, int) { return f(r(80621 * x - 23627 * w32(l + rr))); }},
                {true, [=](I64 x, I64 l, I64 rr, int) { return f(r(53274 * x - 57862 * w32(l + rr))); }},
                {false, sub(-3472)}, {true, sub(-103949)}};
    auto D = [=](I64 x, I64 l, I64 rr, int i) {
        return s16 && i == firstD ? f(x + (w32(w32(57862 * (l + rr)) + 32768) >> 16)) : add(57862)(x, l, rr, i);
    };
    auto low = [=](I64 b, I64 l, I64 rr, int i) {
        if (i < tailFrom) return f(r(53274 * b + 23627 * w32(l + rr)));
        return f(w32(w32(f(b + r(29066 * w32(l + rr))) * 53274) + 32768) >> 16);
    };
    return {{true, add(-103949)}, {false, add(-3472)}, {true, D}, {false, low},
            {true, [=](I64 d, I64, I64, int) { return f(r(80621 * d)); }}};
}

// The 2D 16s form: 14-bit fractions, every value wrapping at 16 bits; the
// low always two-step, the inverse scaling first.
Passes fix14(bool fwd) {
    auto r = [](I64 v) { return w32(v + 8192) >> 14; };
    auto add = [=](I64 c) { return [=](I64 x, I64 l, I64 rr, int) { return w16(x + r(c * (l + rr))); }; };
    auto sub = [=](I64 c) { return [=](I64 x, I64 l, I64 rr, int) { return w16(x - r(c * (l + rr))); }; };
    auto Ls = [=](I64 v) { return w16(r(v * 20155)); };
    auto Hs = [=](I64 v) { return w16(r(v * 13318)); };
    if (!fwd)
        return {{false, [=](I64 x, I64 l, I64 rr, int) { return w16(Ls(x) - r(7266 * (Hs(l) + Hs(rr)))); }},
                {true, [=](I64 x, I64 l, I64 rr, int) { return w16(Hs(x) - r(14466 * (l + rr))); }},
                {false, sub(-868)}, {true, sub(-25987)}};
    return {{true, add(-25987)}, {false, add(-868)}, {true, add(14466)},
            {false, [=](I64 b, I64 l, I64 rr, int) { return Hs(add(7266)(b, l, rr, 0)); }},
            {true, [=](I64 d, I64, I64, int) { return Ls(d); }}};
}

// The line forms against models of their arithmetic: 16s and 32s to the
// bit at full range (16s saturating, 32s wrapping) and at moderate values,
// widths 2..24; 32f rows and columns within float rounding of the double
// reference, widths 2..40. The last low of a row (two at phase 1) is
// two-step; at phase 0 the 16s high before the first pair wraps.
TEST(Wt97Lines, LineFormsFollowTheirModels) {
    std::mt19937 rng(16);
    for (int w = 2; w <= 40; ++w)
        for (int p : {0, 1}) {
            for (int round = 0; round < 4 && w <= 24; ++round)
                for (bool s16 : {true, false}) {
                    auto model = [&](bool fwd) { return fix16(s16, fwd, p ? -1 : 5, 2 * w + 4 - p); };
                    const I64 lim = round < 2 ? (s16 ? 32768 : I64(1) << 31) : (s16 ? 2000 : 2000000);
                    if (s16)
                        vqcjtest::lineForms<Vqc16s, D97<Vqc16s>, false, I64>(w, p, lim, 0, model, rng);
                    else
                        vqcjtest::lineForms<Vqc32s, D97<Vqc32s>, false, I64>(w, p, lim, 0, model, rng);
                }
            auto ref = [](bool fwd) { return vqcjtest::passes97(fwd); };
            vqcjtest::lineForms<Vqc32f, D97<Vqc32f>, true, double>(w, p, 2000, 0.02, ref, rng);
        }
}

// A 2D forward line's slots: lows first at phase 0; highs first at phase
// 1, where with an odd length the last high overwrites the first low and
// the last slot keeps its sample. The inverse takes lows from slot 0.
template <class V>
std::vector<V> place(const std::vector<V>& y, std::vector<V> line, int p, bool fwd) {
    const int n = int(y.size()), nl = (n + 1 - p) / 2;
    for (int j = 0; j < n; ++j) line[!fwd ? j : j < nl ? (p ? n / 2 : 0) + j : (p ? 0 : nl) + j - nl] = y[j];
    return line;
}

template <class T>
class Wt97 : public ::testing::Test {};
using Types2D = ::testing::Types<Vqc16s, Vqc32s>;
TYPED_TEST_SUITE(Wt97, Types2D);

// The 2D forms at every origin parity and size: 16s to the bit against the
// 14-bit model on full-range samples; 32s against its own lines laid out as
// rows, at large values, for its vertical pass runs on whole rows instead.
TYPED_TEST(Wt97, TwoDimensionalForms) {
    using T = TypeParam;
    using A = D97<T>;
    std::vector<uint8_t> buf(1024);
    const double lim = sizeof(T) == 2 ? 32768 : 1e9;
    vqcjtest::sweep2D<T, A>(-lim, lim, [&](bool fwd) {
        return [&, fwd](std::vector<T>& l, int origin) {
            const int n = int(l.size());
            if constexpr (sizeof(T) == 2) {
                const std::vector<I64> x(l.begin(), l.end());
                const auto y = place(vqcjtest::level(x, origin, fix14(fwd), fwd), x, origin & 1, fwd);
                for (int i = 0; i < n; ++i) l[i] = T(y[i]);
            } else {
                const VqciRect r{origin, 0, n, 1};
                ASSERT_EQ((fwd ? A::fwdIR : A::invIR)(l.data(), 4 * n, &r, buf.data()), vqcStatusOk);
            }
        };
    });
}

// 2D 32s lines (one row at an even y) of 1..30 samples at both phases
// against the double reference, truncated: off by one only where the
// reference lies within rounding noise of an integer. Beyond the 32-bit
// range the result saturates: a full-scale alternation whose sign flips
// halfway gives highs far past both ends.
TEST(Wt97Boundaries, TwoDimensional32sLines) {
    std::mt19937 rng(14);
    uint8_t buf[512];
    auto run = [&](std::vector<double> x, int p, bool fwd) {
        const int n = int(x.size());
        const auto want = place(vqcjtest::level(x, p, vqcjtest::passes97(fwd), fwd), x, p, fwd);
        std::vector<int32_t> got(x.begin(), x.end());
        const VqciRect r{p, 2, n, 1};
        EXPECT_EQ((fwd ? vqciWTFwd_D97_JPEG2K_32s_C1IR : vqciWTInv_D97_JPEG2K_32s_C1IR)(got.data(), 4 * n, &r, buf), vqcStatusOk);
        return std::pair(got, want);
    };
    for (int n = 1; n <= 30; ++n)
        for (int p : {0, 1})
            for (bool fwd : {true, false}) {
                std::vector<double> x(n);
                for (auto& v : x) v = std::uniform_int_distribution<int>(-3000, 3000)(rng);
                const auto [got, want] = run(x, p, fwd);
                for (int i = 0; i < n; ++i)
                    ASSERT_TRUE(got[i] == std::trunc(want[i]) ||
                                (std::fabs(want[i] - std::round(want[i])) < 0.01 && std::fabs(got[i] - want[i]) < 1.01))
                        << n << " p " << p << " fwd " << fwd << " at " << i << ": " << got[i] << " " << want[i];
            }
    std::vector<double> x(10);
    for (int i = 0; i < 10; ++i) x[i] = (i & 1) == (i < 5) ? -1.6e9 - 7 * i : 1.6e9 + 5 * i;
    const auto [got, want] = run(x, 0, true);
    int saturated = 0;
    for (int i = 0; i < 10; ++i) {
        const bool hi = want[i] > 2147483648.0, lo = want[i] < -2147483648.0;
        saturated += hi || lo;
        EXPECT_NEAR(got[i], hi ? INT_MAX : lo ? INT_MIN : want[i], hi || lo ? 0.0 : 2000.0) << i;  // floats near 2^31
    }
    EXPECT_GE(saturated, 4);
}

// Column steps chained down three columns give the row form's pairs (the
// fused low, away from the row's last pair) and the inverse row's samples
// once the pipeline is full: after the step of pair k, pair k - 1's even
// and the odd before it are final. Every row of the chain has its own
// storage.
template <class T>
void chainColumnSteps() {
    using A = D97<T>;
    std::mt19937 rng(12);
    const int K = 16, len = 2 * K + 4, w = 3, W = K - 2;
    std::vector<T> x(len * w), col(len), lo(W), hi(W), back(2 * W - 12);
    for (auto& v : x) v = T(std::uniform_int_distribution<int>(-1500, 1500)(rng));
    std::vector<std::vector<T>> B(K + 1, std::vector<T>(w)), H(K + 2, std::vector<T>(w)), E(W + 2, {0}), O(W + 2, {0});
    auto Bk = [&](int k) { return B[k + 1].data(); };
    auto Hk = [&](int k) { return H[k + 2].data(); };
    auto Ek = [&](int k) { return E[k + 2].data(); };
    auto Ok = [&](int k) { return O[k + 1].data(); };
    for (int k = 0; k < K; ++k)
        ASSERT_EQ(A::fwdLift(&x[2 * k * w], &x[(2 * k + 1) * w], &x[(2 * k + 2) * w], Bk(k - 1), Bk(k), Hk(k - 2), Hk(k - 1), Hk(k), w),
                  vqcStatusOk);
    for (int c = 0; c < w; ++c) {
        for (int k = 0; k < len; ++k) col[k] = x[k * w + c];
        ASSERT_EQ(A::fwdRow(&col[4], 4096, lo.data(), 4096, hi.data(), 4096, VqciSize{W, 1}, 0), vqcStatusOk);
        for (int j = 0; j + 1 < W; ++j) ASSERT_EQ(Bk(j + 2)[c], lo[j]) << "low " << j;   // row 4 + 2j
        for (int j = 0; j + 4 < K; ++j) ASSERT_EQ(Hk(j + 2)[c], hi[j]) << "high " << j;  // row 5 + 2j
        ASSERT_EQ(A::invRow(&lo[3], 4096, &hi[3], 4096, VqciSize{W - 6, 1}, back.data(), 4096, 0), vqcStatusOk);
        for (int k = 1; k < W; ++k)
            ASSERT_EQ(A::invLift(&lo[k], &hi[k - 1], &hi[k], Ek(k - 2), Ok(k - 1), Ek(k - 1), Ok(k), Ek(k), 1), vqcStatusOk);
        for (int i = 0; i < 2 * W - 12; ++i) ASSERT_EQ(i & 1 ? Ok(4 + i / 2)[0] : Ek(3 + i / 2)[0], back[i]) << i;
    }
}
TEST(Wt97Lines, ColumnStepsChainIntoTheLineForms) {
    chainColumnSteps<Vqc16s>();
    chainColumnSteps<Vqc32s>();
    chainColumnSteps<Vqc32f>();
}

// One-pair lines use the direct filters: the middle pair of a long line
// alone gives the lifted values (32f within float rounding, 32s within its
// own), and back; they saturate in 16s where 32s does not. The synthesis
// constants are not the exact negatives of the analysis ones: lows of 32768
// at pairs 0 and 1 give (73078 - 3771) / 2, rounded, and 38750, not 38749.
TEST(Wt97Boundaries, DirectFilters) {
    std::mt19937 rng(5);
    for (int phase : {0, 1}) {
        std::vector<float> sig(30), lo(11), hi(11), out(2);
        std::vector<Vqc32s> s32(30), l(11), h(11), o(2);
        float l1, h1;
        Vqc32s l32, h32;
        for (int i = 0; i < 30; ++i) s32[i] = int(sig[i] = std::uniform_int_distribution<int>(-3000, 3000)(rng));
        ASSERT_EQ(vqciWTFwdRow_D97_JPEG2K_32f_C1R(&sig[4], 120, lo.data(), 44, hi.data(), 44, {11, 1}, phase), vqcStatusOk);
        ASSERT_EQ(vqciWTFwdRow_D97_JPEG2K_32f_C1R(&sig[14], 4, &l1, 4, &h1, 4, {1, 1}, phase), vqcStatusOk);
        ASSERT_EQ(vqciWTFwdRow_D97_JPEG2K_32s_C1R(&s32[14], 4, &l32, 4, &h32, 4, {1, 1}, phase), vqcStatusOk);
        EXPECT_TRUE(std::fabs(l1 - lo[5]) < 0.03 && std::fabs(h1 - hi[5]) < 0.03) << phase;
        EXPECT_TRUE(std::fabs(l32 - lo[5]) < 1.01 && std::fabs(h32 - hi[5]) < 1.01) << phase;
        ASSERT_EQ(vqciWTInvRow_D97_JPEG2K_32f_C1R(&lo[5], 44, &hi[5], 44, {1, 1}, out.data(), 8, phase), vqcStatusOk);
        for (int j = 0; j < 11; ++j) l[j] = std::lround(lo[j]), h[j] = std::lround(hi[j]);
        ASSERT_EQ(vqciWTInvRow_D97_JPEG2K_32s_C1R(&l[5], 44, &h[5], 44, {1, 1}, o.data(), 8, phase), vqcStatusOk);
        for (int i : {0, 1}) EXPECT_TRUE(std::fabs(out[i] - sig[14 + i]) < 0.05 && std::fabs(o[i] - sig[14 + i]) <= 2);
        Vqc16s a16[12], l16, h16;
        for (int i = 0; i < 12; ++i) a16[i] = Vqc16s(s32[i] = (i & 1) ? -32768 : 32767);
        ASSERT_EQ(vqciWTFwdRow_D97_JPEG2K_16s_C1R(&a16[5], 24, &l16, 2, &h16, 2, {1, 1}, phase), vqcStatusOk);
        ASSERT_EQ(vqciWTFwdRow_D97_JPEG2K_32s_C1R(&s32[5], 48, &l32, 4, &h32, 4, {1, 1}, phase), vqcStatusOk);
        EXPECT_TRUE(l16 == std::clamp(l32, -32768, 32767) && h16 == std::clamp(h32, -32768, 32767) && (h32 > 32767 || h32 < -32768));
    }
    Vqc32s lo[4] = {0, 32768, 32768, 0}, hi[5] = {}, out[2];
    ASSERT_EQ(vqciWTInvRow_D97_JPEG2K_32s_C1R(&lo[1], 16, &hi[2], 20, {1, 1}, out, 8, 0), vqcStatusOk);
    EXPECT_TRUE(out[0] == 34654 && out[1] == 38750) << out[0] << " " << out[1];
}

// Unit inputs to the 32f column steps read constants back bit for bit:
// {forward, row set to 1, row read, bits} for alpha, the high-pass gain
// both ways, and delta times the low-pass gain.
TEST(Wt97Boundaries, FloatConstants) {
    const uint32_t cases[][4] = {{1, 0, 7, 0xBFCB0673u}, {1, 5, 5, 0x3F9D7658u}, {0, 0, 7, 0x3F9D7658u}, {0, 2, 7, 0xBEB8968Eu}};
    for (const auto& c : cases) {
        float r[8][1] = {};
        r[c[1]][0] = 1;
        if (c[0])
            vqciWTFwdColLift_D97_JPEG2K_32f_C1(r[0], r[1], r[2], r[3], r[4], r[5], r[6], r[7], 1);
        else
            vqciWTInvColLift_D97_JPEG2K_32f_C1(r[0], r[1], r[2], r[3], r[4], r[5], r[6], r[7], 1);
        EXPECT_EQ(std::bit_cast<uint32_t>(r[c[2]][0]), c[3]) << c[0] << " " << c[1];
    }
}

// Both filters: one line and its extension, none for regions that need no
// line (5/3 below 3 on both sides, 9/7 below 2); the band forms add the
// temporary image with its 32-byte row step.
TEST(WaveletSizes, BufferSizes) {
    const struct {
        VqcStatus (*fn)(const VqciRect*, int32_t*);
        int w, h, want;
    } cases[] = {
        {vqciWTGetBufSize_B53_JPEG2K_16s_C1IR, 2, 2, 0},   {vqciWTGetBufSize_B53_JPEG2K_16s_C1IR, 3, 1, 14},
        {vqciWTGetBufSize_B53_JPEG2K_32s_C1IR, 1, 3, 28},  {vqciWTGetBufSize_B53_JPEG2K_16s_C1IR, 5, 9, 26},
        {vqciWTGetBufSize_B53_JPEG2K_16s_C1R, 2, 1, 32},   {vqciWTGetBufSize_B53_JPEG2K_32s_C1R, 5, 9, 32 * 9 + 52},
        {vqciWTGetBufSize_B53_JPEG2K_16s_C1R, 17, 2, 170}, {vqciWTGetBufSize_D97_JPEG2K_16s_C1IR, 1, 1, 0},
        {vqciWTGetBufSize_D97_JPEG2K_16s_C1IR, 2, 1, 20},  {vqciWTGetBufSize_D97_JPEG2K_32s_C1IR, 2, 7, 60},
        {vqciWTGetBufSize_D97_JPEG2K_32s_C1R, 9, 3, 260},  {vqciWTGetBufSize_D97_JPEG2K_16s_C1R, 1, 1, 32},
    };
    for (const auto& c : cases) {
        const VqciRect r{3, 1, c.w, c.h};
        int32_t s = -1;
        EXPECT_TRUE(c.fn(&r, &s) == vqcStatusOk && s == c.want) << c.w << "x" << c.h << ": " << s;
    }
}

TEST(Wt97Boundaries, CheckOrder) {
    Vqc32f f[64] = {}, *p = f + 8;
    Vqc16s s[64] = {}, *q = s + 8;
    const VqcStatus N = vqcStatusNullPtr, S = vqcStatusBadStep, Z = vqcStatusBadSize;
    const VqcStatus rows[][2] = {
        {vqciWTFwdColLift_D97_JPEG2K_32f_C1(p, p, p, p, p, p, p, nullptr, 0), N},
        {vqciWTFwdColLift_D97_JPEG2K_16s_C1(q, q, q, q, q, q, q, q, 0), Z},
        {vqciWTInvColLift_D97_JPEG2K_16s_C1(q, q, q, nullptr, q, q, q, q, -1), N},
        {vqciWTInvColLift_D97_JPEG2K_32f_C1(p, p, p, p, p, p, p, p, 0), Z},
        {vqciWTFwdRow_D97_JPEG2K_32f_C1R(p, 0, p, 4, nullptr, 4, {0, 0}, 0), N},
        {vqciWTFwdCol_D97_JPEG2K_32f_C1R(p, 4, p, 4, p, 0, {0, 0}, 0), S},
        {vqciWTInvCol_D97_JPEG2K_32f_C1R(p, 4, p, 4, {1, 0}, p, 4, 0), Z},
        {vqciWTInvRow_D97_JPEG2K_16s_C1R(q, 4, q, 4, {1, 1}, q, 0, 0), S},
        {vqciWTFwd_D97_JPEG2K_16s_C1IR(q, 0, nullptr, nullptr), S},
        {vqciWTInv_D97_JPEG2K_16s_C1IR(q, 4, nullptr, nullptr), N},
        {vqciWTGetBufSize_D97_JPEG2K_32s_C1R(nullptr, nullptr), N},
    };
    for (size_t i = 0; i < std::size(rows); ++i) EXPECT_EQ(rows[i][0], rows[i][1]) << "row " << i;
    for (float v : f) EXPECT_EQ(v, 0.0f);
    for (Vqc16s v : s) EXPECT_EQ(v, 0);
}

}  // namespace
