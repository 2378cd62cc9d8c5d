// Vectors worked out by hand at the boundaries of the arithmetic.
#include <gtest/gtest.h>
#include <vqcj.h>

#include <vector>

namespace {

using Bytes = std::vector<uint8_t>;

struct Ycc3 {
    Bytes p[3] = {Bytes(4, 0xEE), Bytes(4, 0xEE), Bytes(4, 0xEE)};
    Vqc8u* planes[3] = {p[0].data(), p[1].data(), p[2].data()};
    const int32_t steps[3] = {4, 4, 4};
};

TEST(ColourVectors, ForwardWhiteBlackAndPacked) {
    const Bytes white(8, 255), black(8, 0);
    Ycc3 a, b, c;
    ASSERT_EQ(vqciRGBToYCbCr_JPEG_8u_C3P3R(white.data(), 6, a.planes, 4, {2, 1}), 0);
    EXPECT_EQ(a.p[0][0], 255);
    EXPECT_EQ(a.p[1][0], 128);
    EXPECT_EQ(a.p[2][1], 128);
    // Black in the BGR four-channel form: Y 0, and the one-quarter rounding
    // still leaves the chroma at 128.
    ASSERT_EQ(vqciBGRToYCbCr_JPEG_8u_C4P3R(black.data(), 8, b.planes, 4, {2, 1}), 0);
    EXPECT_EQ(b.p[0][0], 0);
    EXPECT_EQ(b.p[1][0], 128);
    EXPECT_EQ(b.p[2][0], 128);
    // 0x7FFF in 555 is 248 in every component: Y 248, never 255.
    const Vqc16u word = 0x7FFF;
    ASSERT_EQ(vqciBGR555ToYCbCr_JPEG_16u8u_C3P3R(&word, 2, c.planes, 4, {1, 1}), 0);
    EXPECT_EQ(c.p[0][0], 248);
}

// Two pure blue pixels sum to 256 in the chroma with K = 0xFF0000 and wrap to
// 0; the RGB three-channel member's K = 0xFFC000 keeps 255.
TEST(ColourVectors, Fused422BluePairWraps) {
    const Bytes blueBgr = {255, 0, 0, 255, 0, 0}, blueRgb = {0, 0, 255, 0, 0, 255}, redBgr = {0, 0, 255, 0, 0, 255};
    Ycc3 a, b, c;
    ASSERT_EQ(vqciBGRToYCbCr422_JPEG_8u_C3P3R(blueBgr.data(), 6, a.planes, a.steps, {2, 1}), 0);
    ASSERT_EQ(vqciRGBToYCbCr422_JPEG_8u_C3P3R(blueRgb.data(), 6, b.planes, b.steps, {2, 1}), 0);
    ASSERT_EQ(vqciBGRToYCbCr422_JPEG_8u_C3P3R(redBgr.data(), 6, c.planes, c.steps, {2, 1}), 0);
    EXPECT_EQ(a.p[1][0], 0);
    EXPECT_EQ(b.p[1][0], 255);
    EXPECT_EQ(c.p[2][0], 0);
    EXPECT_EQ(a.p[0][0], 29);  // (7471 * 255 + 32768) >> 16
    EXPECT_EQ(a.p[1][1], 0xEE);
}

TEST(ColourVectors, InverseGreyGreenAndPacked) {
    for (uint8_t v : {0, 128, 255}) {
        const Bytes plane(2, v);
        const Vqc8u* src[3] = {plane.data(), plane.data(), plane.data()};
        Bytes table(6), mul(8);
        Vqc16u w555 = 0, w565 = 0;
        ASSERT_EQ(vqciYCbCrToRGB_JPEG_8u_P3C3R(src, 2, table.data(), 6, {2, 1}), 0);
        ASSERT_EQ(vqciYCbCrToRGB_JPEG_8u_P3C4R(src, 2, mul.data(), 8, {2, 1}, 0x11), 0);
        ASSERT_EQ(vqciYCbCrToBGR555_JPEG_8u16u_P3C3R(src, 2, &w555, 2, {1, 1}), 0);
        ASSERT_EQ(vqciYCbCrToBGR565_JPEG_8u16u_P3C3R(src, 2, &w565, 2, {1, 1}), 0);
        // Grey stays grey; all-zero gives green 135 and all-255 saturates red
        // and blue, in both arithmetics.
        const Bytes want = v == 128 ? Bytes{128, 128, 128} : v == 0 ? Bytes{0, 135, 0} : Bytes{255, 121, 255};
        EXPECT_EQ(Bytes(table.begin(), table.begin() + 3), want);
        EXPECT_EQ(Bytes(mul.begin(), mul.begin() + 3), want);
        EXPECT_EQ(mul[3], 0x11);
        if (v == 255) {
            EXPECT_EQ(w555, 0x7C00 | 15 << 5 | 0x1F);  // green 121 is cut to 15, not rounded
            EXPECT_EQ(w565, 0xF800 | 30 << 5 | 0x1F);
        }
    }
    // White by its own planes: 0x7FFF and 0xFFFF.
    const Bytes y(1, 255), c(1, 128);
    const Vqc8u* white[3] = {y.data(), c.data(), c.data()};
    Vqc16u w555 = 0, w565 = 0;
    ASSERT_EQ(vqciYCbCrToBGR555_JPEG_8u16u_P3C3R(white, 1, &w555, 2, {1, 1}), 0);
    ASSERT_EQ(vqciYCbCrToBGR565_JPEG_8u16u_P3C3R(white, 1, &w565, 2, {1, 1}), 0);
    EXPECT_EQ(w555, 0x7FFF);
    EXPECT_EQ(w565, 0xFFFF);
}

// No ink is white, full ink black, whatever K holds; both survive a round trip.
TEST(ColourVectors, CmykExtremes) {
    for (uint8_t ink : {0, 255}) {
        const Bytes cmyk = {ink, ink, ink, 0x5B};
        Bytes p[4] = {Bytes(1), Bytes(1), Bytes(1), Bytes(1)};
        Vqc8u* ycck[4] = {p[0].data(), p[1].data(), p[2].data(), p[3].data()};
        ASSERT_EQ(vqciCMYKToYCCK_JPEG_8u_C4P4R(cmyk.data(), 4, ycck, 1, {1, 1}), 0);
        EXPECT_EQ((Bytes{p[0][0], p[1][0], p[2][0], p[3][0]}), (Bytes{uint8_t(255 - ink), 128, 128, 0x5B}));
        Bytes back(4);
        const Vqc8u* in[4] = {p[0].data(), p[1].data(), p[2].data(), p[3].data()};
        ASSERT_EQ(vqciYCCKToCMYK_JPEG_8u_P4C4R(in, 1, back.data(), 4, {1, 1}), 0);
        EXPECT_EQ(back, cmyk);
    }
}

}  // namespace
