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

template <class T, class F>
std::vector<T> onePixel(F f, T a, T b, T c) {
    T v[3] = {a, b, c}, *pl[3] = {v, v + 1, v + 2};
    EXPECT_EQ(f(pl, 4, VqciSize{1, 1}), vqcStatusOk);
    return {v[0], v[1], v[2]};
}

TEST(ComponentTransforms, HandWorkedPixels) {
    using V16 = std::vector<Vqc16s>;
    using V32 = std::vector<Vqc32s>;
    // RCT: Y = (10 + 40 + 40) >> 2, U = B - G, V = R - G; and back. Negative
    // sums shift arithmetically: -1 >> 2 = -1, G = -3 - ((-1 + 0) >> 2) = -2.
    EXPECT_EQ(onePixel<Vqc16s>(vqciRCTFwd_JPEG2K_16s_P3IR, 10, 20, 40), (V16{22, 20, -10}));
    EXPECT_EQ(onePixel<Vqc32s>(vqciRCTInv_JPEG2K_32s_P3IR, 22, 20, -10), (V32{10, 20, 40}));
    EXPECT_EQ(onePixel<Vqc32s>(vqciRCTFwd_JPEG2K_32s_P3IR, -1, 0, 0), (V32{-1, 0, -1}));
    EXPECT_EQ(onePixel<Vqc16s>(vqciRCTInv_JPEG2K_16s_P3IR, -3, -1, 0), (V16{-2, -2, -3}));
    // ICT: inputs of 16384 read the 14-bit constants back, forward (R, G, B)
    // and inverse (Y, Cb, Cr); 2 in R rounds 9798 / 16384 up to 1, -5530 / 16384 to 0.
    const int32_t unit[6][3] = {{4899, -2765, 8192}, {9617, -5427, -6860}, {1868, 8192, -1332},
                                {16384, 16384, 16384}, {0, -5638, 29032}, {22970, -11700, 0}};
    for (int k = 0; k < 6; ++k) {
        Vqc32s v[3] = {};
        v[k % 3] = 16384;
        const auto f = k < 3 ? vqciICTFwd_JPEG2K_32s_P3IR : vqciICTInv_JPEG2K_32s_P3IR;
        EXPECT_EQ(onePixel<Vqc32s>(f, v[0], v[1], v[2]), V32(unit[k], unit[k] + 3)) << k;
    }
    EXPECT_EQ(onePixel<Vqc16s>(vqciICTFwd_JPEG2K_16s_P3IR, 2, 0, 0), (V16{1, 0, 1}));
    // Grey keeps its value as Y and gives exact zero chroma.
    for (int g : {-3000, -1, 0, 1, 77, 3000}) EXPECT_EQ(onePixel<Vqc32s>(vqciICTFwd_JPEG2K_32s_P3IR, g, g, g), (V32{g, 0, 0}));
    // 32-bit products wrap: the low 32 bits of the exact sum, shifted.
    const int64_t big = int64_t(1) << 20;
    EXPECT_EQ(onePixel<Vqc32s>(vqciICTFwd_JPEG2K_32s_P3IR, int(big), 0, 0)[0], int32_t(uint32_t(4899 * big + 8192)) >> 14);
}

// RCT from interleaved pixels to planes (with a step of w + 1 samples) and
// back in place, then forward in place and back to interleaved: exact.
template <class T>
void rctRoundTrip(int lim, auto fwdIP, auto invIP, auto fwd, auto inv) {
    std::mt19937 rng(3);
    const int w = 19, h = 7, ps = (w + 1) * sizeof(T), is = 3 * w * sizeof(T);
    std::vector<T> planes[3], inter(3 * w * h + 5), back(3 * w * h + 5, T(9));
    for (auto& v : inter) v = T(std::uniform_int_distribution<int>(-lim, lim)(rng));
    for (auto& p : planes) p.resize((w + 1) * h);
    T* pl[3] = {planes[0].data(), planes[1].data(), planes[2].data()};
    ASSERT_TRUE(fwd(inter.data(), is, pl, ps, {w, h}) == vqcStatusOk && invIP(pl, ps, {w, h}) == vqcStatusOk);
    for (int k = 0; k < h; ++k)
        for (int i = 0; i < 3 * w; ++i) ASSERT_EQ(planes[i % 3][k * (w + 1) + i / 3], inter[3 * k * w + i]);
    ASSERT_TRUE(fwdIP(pl, ps, {w, h}) == vqcStatusOk && inv(pl, ps, back.data(), is, {w, h}) == vqcStatusOk);
    for (int i = 0; i < 3 * w * h; ++i) ASSERT_EQ(back[i], inter[i]);
    EXPECT_EQ(back[3 * w * h], T(9));
}
TEST(ComponentTransforms, RctRoundTrips) {
    rctRoundTrip<Vqc16s>(8000, vqciRCTFwd_JPEG2K_16s_P3IR, vqciRCTInv_JPEG2K_16s_P3IR, vqciRCTFwd_JPEG2K_16s_C3P3R,
                         vqciRCTInv_JPEG2K_16s_P3C3R);
    rctRoundTrip<Vqc32s>(1 << 28, vqciRCTFwd_JPEG2K_32s_P3IR, vqciRCTInv_JPEG2K_32s_P3IR, vqciRCTFwd_JPEG2K_32s_C3P3R,
                         vqciRCTInv_JPEG2K_32s_P3C3R);
}

// The float ICT: unit vectors read its constants back bit for bit. The
// integer ICT within one step of it on random pixels, both ways, 16s and
// 32s alike.
TEST(ComponentTransforms, IctForms) {
    // {forward, input set to 1, output read, bits}
    const uint32_t cases[][4] = {{1, 0, 0, 0x3E991687u}, {1, 1, 0, 0x3F1645A2u}, {1, 2, 0, 0x3DE978D5u}, {1, 0, 1, 0xBE2CCCCDu},
                                 {1, 1, 1, 0xBEA99AE9u}, {1, 2, 1, 0x3F000000u}, {1, 1, 2, 0xBED65E89u}, {1, 2, 2, 0xBDA685DBu},
                                 {0, 2, 0, 0x3FB374BCu}, {0, 1, 1, 0xBEB031CFu}, {0, 2, 1, 0xBF36D1E1u}, {0, 1, 2, 0x3FE2D0E5u}};
    for (const auto& c : cases) {
        float v[3] = {};
        v[c[1]] = 1;
        const auto o = onePixel<Vqc32f>(c[0] ? vqciICTFwd_JPEG2K_32f_P3IR : vqciICTInv_JPEG2K_32f_P3IR, v[0], v[1], v[2]);
        EXPECT_EQ(std::bit_cast<uint32_t>(o[c[2]]), c[3]) << c[0] << " " << c[1] << " " << c[2];
    }
    std::mt19937 rng(11);
    std::uniform_int_distribution<int> d(-2048, 2047);
    for (int n = 0; n < 2000; ++n) {
        const int r = d(rng), g = d(rng), b = d(rng);
        const auto f = onePixel<Vqc32f>(vqciICTFwd_JPEG2K_32f_P3IR, r, g, b), fi = onePixel<Vqc32f>(vqciICTInv_JPEG2K_32f_P3IR, r, g, b);
        const auto i16 = onePixel<Vqc16s>(vqciICTFwd_JPEG2K_16s_P3IR, r, g, b), ii16 = onePixel<Vqc16s>(vqciICTInv_JPEG2K_16s_P3IR, r, g, b);
        const auto i32 = onePixel<Vqc32s>(vqciICTFwd_JPEG2K_32s_P3IR, r, g, b), ii32 = onePixel<Vqc32s>(vqciICTInv_JPEG2K_32s_P3IR, r, g, b);
        for (int c = 0; c < 3; ++c)
            ASSERT_TRUE(std::fabs(i16[c] - f[c]) <= 1 && i16[c] == i32[c] && std::fabs(ii32[c] - fi[c]) <= 1 && ii16[c] == ii32[c])
                << r << " " << g << " " << b << " component " << c;
    }
}

TEST(ComponentTransforms, CheckOrder) {
    Vqc32s a[4] = {}, b[4] = {}, *ok[3] = {a, a + 1, a + 2}, *mid[3] = {a, nullptr, a + 2};
    const Vqc32s *cmid[3] = {a, nullptr, a + 2}, *cok[3] = {a, a + 1, a + 2};
    Vqc32f f[3] = {}, *fok[3] = {f, f + 1, f + 2};
    const VqcStatus N = vqcStatusNullPtr, S = vqcStatusBadStep, Z = vqcStatusBadSize;
    const VqcStatus rows[][2] = {
        {vqciRCTFwd_JPEG2K_32s_P3IR(mid, 0, {0, 0}), N},           {vqciRCTFwd_JPEG2K_32s_P3IR(nullptr, 4, {1, 1}), N},
        {vqciICTInv_JPEG2K_32s_P3IR(ok, 0, {0, 1}), S},            {vqciICTFwd_JPEG2K_32f_P3IR(fok, 4, {0, 1}), Z},
        {vqciICTInv_JPEG2K_32s_P3IR(ok, 4, {1, 0}), Z},            {vqciRCTFwd_JPEG2K_32s_C3P3R(nullptr, 0, ok, 0, {0, 0}), N},
        {vqciRCTFwd_JPEG2K_32s_C3P3R(b, 0, mid, 0, {0, 0}), N},    {vqciRCTFwd_JPEG2K_32s_C3P3R(b, 12, ok, 0, {0, 0}), S},
        {vqciRCTInv_JPEG2K_32s_P3C3R(cmid, 0, nullptr, 0, {0, 0}), N}, {vqciRCTInv_JPEG2K_32s_P3C3R(cok, 0, b, 0, {0, 0}), S},
        {vqciRCTInv_JPEG2K_32s_P3C3R(cok, 4, b, 0, {0, 0}), S},    {vqciRCTInv_JPEG2K_32s_P3C3R(cok, 4, b, 12, {0, 0}), Z},
    };
    for (size_t i = 0; i < std::size(rows); ++i) EXPECT_EQ(rows[i][0], rows[i][1]) << "row " << i;
    for (Vqc32s v : a) EXPECT_EQ(v, 0);
}

}  // namespace
