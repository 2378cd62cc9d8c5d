// Component transforms: hand-worked pixels, exact RCT round trips through
// every layout, the integer ICT against its float form, the float constants
// to the bit through unit vectors, 32-bit wrap, and the argument checks.
#include <gtest/gtest.h>
#include <vqcj.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <random>
#include <vector>

namespace {

// Three planes of w x h with a common step of w + 1 samples.
template <class T>
struct Planes {
    int w, h;
    std::vector<T> p[3];
    Planes(int w_, int h_) : w(w_), h(h_) {
        for (auto& v : p) v.assign((w + 1) * h, T(0));
    }
    int32_t step() const { return (w + 1) * sizeof(T); }
    T* const* ptrs() {
        for (int i = 0; i < 3; ++i) a[i] = p[i].data();
        return a;
    }
    T* a[3];
};

template <class T, class F>
std::vector<T> onePixel(F f, T a, T b, T c) {
    T v[3] = {a, b, c};
    T* pl[3] = {v, v + 1, v + 2};
    EXPECT_EQ(f(pl, 4, VqciSize{1, 1}), vqcStatusOk);
    return {v[0], v[1], v[2]};
}

TEST(ComponentTransforms, HandWorkedPixels) {
    using V16 = std::vector<Vqc16s>;
    using V32 = std::vector<Vqc32s>;
    // RCT: Y = (10 + 40 + 40) >> 2, U = B - G, V = R - G; and back.
    EXPECT_EQ(onePixel<Vqc16s>(vqciRCTFwd_JPEG2K_16s_P3IR, 10, 20, 40), (V16{22, 20, -10}));
    EXPECT_EQ(onePixel<Vqc32s>(vqciRCTInv_JPEG2K_32s_P3IR, 22, 20, -10), (V32{10, 20, 40}));
    // Negative sums shift arithmetically: (-1 - 2 - 1) >> 2 = -1, and G = -3 -
    // ((-1 + 0) >> 2) = -2.
    EXPECT_EQ(onePixel<Vqc32s>(vqciRCTFwd_JPEG2K_32s_P3IR, -1, -1, -1), (V32{-1, 0, 0}));
    EXPECT_EQ(onePixel<Vqc16s>(vqciRCTInv_JPEG2K_16s_P3IR, -3, -1, 0), (V16{-2, -2, -3}));
    // ICT of pure red: (4899 * 255 + 8192) >> 14 = 76, (-2765 * 255 + 8192) >> 14
    // = -43, 128.
    EXPECT_EQ(onePixel<Vqc16s>(vqciICTFwd_JPEG2K_16s_P3IR, 255, 0, 0), (V16{76, -43, 128}));
    // Inverse: 100 + ((22970 * 50 + 8192) >> 14) = 170; 100 + ((-5638 * -20 -
    // 11700 * 50 + 8192) >> 14) = 71.
    EXPECT_EQ(onePixel<Vqc32s>(vqciICTInv_JPEG2K_32s_P3IR, 100, -20, 50), (V32{170, 71, 65}));
    // Grey keeps its value as Y and gives exact zero chroma.
    for (int g : {-3000, -1, 0, 1, 77, 3000})
        EXPECT_EQ(onePixel<Vqc32s>(vqciICTFwd_JPEG2K_32s_P3IR, g, g, g), (V32{g, 0, 0}));
}

// Unit vectors read the single-precision constants back bit for bit.
TEST(ComponentTransforms, FloatConstants) {
    auto bits = [](float f) { return std::bit_cast<uint32_t>(f); };
    auto fwd = [&](float r, float g, float b) { return onePixel<Vqc32f>(vqciICTFwd_JPEG2K_32f_P3IR, r, g, b); };
    auto inv = [&](float y, float cb, float cr) { return onePixel<Vqc32f>(vqciICTInv_JPEG2K_32f_P3IR, y, cb, cr); };
    EXPECT_EQ(bits(fwd(1, 0, 0)[0]), 0x3E991687u);
    EXPECT_EQ(bits(fwd(0, 1, 0)[0]), 0x3F1645A2u);
    EXPECT_EQ(bits(fwd(0, 0, 1)[0]), 0x3DE978D5u);
    EXPECT_EQ(bits(fwd(1, 0, 0)[1]), 0xBE2CCCCDu);
    EXPECT_EQ(bits(fwd(0, 1, 0)[1]), 0xBEA99AE9u);
    EXPECT_EQ(bits(fwd(0, 0, 1)[1]), 0x3F000000u);
    EXPECT_EQ(bits(fwd(0, 1, 0)[2]), 0xBED65E89u);
    EXPECT_EQ(bits(fwd(0, 0, 1)[2]), 0xBDA685DBu);
    EXPECT_EQ(bits(inv(0, 0, 1)[0]), 0x3FB374BCu);
    EXPECT_EQ(bits(inv(0, 1, 0)[1]), 0xBEB031CFu);
    EXPECT_EQ(bits(inv(0, 0, 1)[1]), 0xBF36D1E1u);
    EXPECT_EQ(bits(inv(0, 1, 0)[2]), 0x3FE2D0E5u);
}

// RCT through planes in place and through the interleaved layouts, back
// exactly; the integer ICT within one step of the float form, both ways.
template <class T>
void roundTrips(int lim) {
    std::mt19937 rng(3);
    std::uniform_int_distribution<int> d(-lim, lim);
    const int w = 19, h = 7;
    Planes<T> pl(w, h);
    std::vector<T> inter(3 * w * h + 5), back(3 * w * h + 5, T(9));
    for (auto& v : inter) v = T(d(rng));
    for (int k = 0; k < h; ++k)
        for (int i = 0; i < w; ++i)
            for (int c = 0; c < 3; ++c) pl.p[c][k * (w + 1) + i] = inter[3 * (k * w + i) + c];
    if constexpr (sizeof(T) == 2) {
        ASSERT_EQ(vqciRCTFwd_JPEG2K_16s_P3IR(pl.ptrs(), pl.step(), {w, h}), vqcStatusOk);
        ASSERT_EQ(vqciRCTInv_JPEG2K_16s_P3IR(pl.ptrs(), pl.step(), {w, h}), vqcStatusOk);
        ASSERT_EQ(vqciRCTFwd_JPEG2K_16s_C3P3R(inter.data(), 3 * w * 2, pl.ptrs(), pl.step(), {w, h}), vqcStatusOk);
        ASSERT_EQ(vqciRCTInv_JPEG2K_16s_P3C3R(pl.ptrs(), pl.step(), back.data(), 3 * w * 2, {w, h}), vqcStatusOk);
    } else {
        ASSERT_EQ(vqciRCTFwd_JPEG2K_32s_P3IR(pl.ptrs(), pl.step(), {w, h}), vqcStatusOk);
        ASSERT_EQ(vqciRCTInv_JPEG2K_32s_P3IR(pl.ptrs(), pl.step(), {w, h}), vqcStatusOk);
        ASSERT_EQ(vqciRCTFwd_JPEG2K_32s_C3P3R(inter.data(), 3 * w * 4, pl.ptrs(), pl.step(), {w, h}), vqcStatusOk);
        ASSERT_EQ(vqciRCTInv_JPEG2K_32s_P3C3R(pl.ptrs(), pl.step(), back.data(), 3 * w * 4, {w, h}), vqcStatusOk);
    }
    for (int i = 0; i < 3 * w * h; ++i) ASSERT_EQ(back[i], inter[i]);
    EXPECT_EQ(back[3 * w * h], T(9));
}
TEST(ComponentTransforms, RctRoundTrips) {
    roundTrips<Vqc16s>(8000);
    roundTrips<Vqc32s>(1 << 28);
}

TEST(ComponentTransforms, IntegerIctFollowsFloat) {
    std::mt19937 rng(11);
    std::uniform_int_distribution<int> d(-2048, 2047);
    for (int n = 0; n < 2000; ++n) {
        const float r = d(rng), g = d(rng), b = d(rng);
        const auto f = onePixel<Vqc32f>(vqciICTFwd_JPEG2K_32f_P3IR, r, g, b);
        const auto i16 = onePixel<Vqc16s>(vqciICTFwd_JPEG2K_16s_P3IR, Vqc16s(r), Vqc16s(g), Vqc16s(b));
        const auto i32 = onePixel<Vqc32s>(vqciICTFwd_JPEG2K_32s_P3IR, int(r), int(g), int(b));
        for (int c = 0; c < 3; ++c) {
            EXPECT_NEAR(i16[c], f[c], 1.0);
            EXPECT_EQ(i16[c], i32[c]);
        }
        const auto fi = onePixel<Vqc32f>(vqciICTInv_JPEG2K_32f_P3IR, r, g, b);
        const auto ii = onePixel<Vqc32s>(vqciICTInv_JPEG2K_32s_P3IR, int(r), int(g), int(b));
        for (int c = 0; c < 3; ++c) EXPECT_NEAR(ii[c], fi[c], 1.0);
    }
    // 32-bit products wrap: the low 32 bits of the exact sum, shifted.
    const int64_t big = int64_t(1) << 20;
    const auto w = onePixel<Vqc32s>(vqciICTFwd_JPEG2K_32s_P3IR, int(big), 0, 0);
    EXPECT_EQ(w[0], int32_t(uint32_t(4899 * big + 8192)) >> 14);
    EXPECT_NE(w[0], int32_t((4899 * big + 8192) >> 14));
}

TEST(ComponentTransforms, CheckOrder) {
    Vqc32s a[4] = {}, b[4] = {};
    Vqc32s* ok[3] = {a, a + 1, a + 2};
    Vqc32s* mid[3] = {a, nullptr, a + 2};
    const Vqc32s* cmid[3] = {a, nullptr, a + 2};
    const Vqc32s* cok[3] = {a, a + 1, a + 2};
    Vqc32f f[3] = {};
    Vqc32f* fok[3] = {f, f + 1, f + 2};
    struct Row {
        VqcStatus got, want;
    };
    const Row rows[] = {
        {vqciRCTFwd_JPEG2K_32s_P3IR(mid, 0, {0, 0}), vqcStatusNullPtr},
        {vqciRCTFwd_JPEG2K_32s_P3IR(nullptr, 4, {1, 1}), vqcStatusNullPtr},
        {vqciICTInv_JPEG2K_32s_P3IR(ok, 0, {0, 1}), vqcStatusBadStep},
        {vqciICTFwd_JPEG2K_32f_P3IR(fok, 4, {0, 1}), vqcStatusBadSize},
        {vqciICTInv_JPEG2K_32s_P3IR(ok, 4, {1, 0}), vqcStatusBadSize},
        {vqciRCTFwd_JPEG2K_32s_C3P3R(nullptr, 0, ok, 0, {0, 0}), vqcStatusNullPtr},
        {vqciRCTFwd_JPEG2K_32s_C3P3R(b, 0, mid, 0, {0, 0}), vqcStatusNullPtr},
        {vqciRCTFwd_JPEG2K_32s_C3P3R(b, 12, ok, 0, {0, 0}), vqcStatusBadStep},
        {vqciRCTInv_JPEG2K_32s_P3C3R(cmid, 0, nullptr, 0, {0, 0}), vqcStatusNullPtr},
        {vqciRCTInv_JPEG2K_32s_P3C3R(cok, 0, b, 0, {0, 0}), vqcStatusBadStep},
        {vqciRCTInv_JPEG2K_32s_P3C3R(cok, 4, b, 0, {0, 0}), vqcStatusBadStep},
        {vqciRCTInv_JPEG2K_32s_P3C3R(cok, 4, b, 12, {0, 0}), vqcStatusBadSize},
    };
    for (size_t i = 0; i < std::size(rows); ++i) EXPECT_EQ(rows[i].got, rows[i].want) << "row " << i;
    for (Vqc32s v : a) EXPECT_EQ(v, 0);
}

}  // namespace
