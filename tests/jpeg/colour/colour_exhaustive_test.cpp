// Every input of the base members against the reference arithmetic: all 2^24
// RGB triples forward, all 2^24 Y, Cb, Cr triples inverse. One call covers a
// 256 x 256 image with the first component fixed.
#include <gtest/gtest.h>
#include <vqcj.h>

#include <omp.h>

#include <vector>

#include "colour_model.h"

namespace {

// A plain comparison: gtest's assertion per pixel would dominate the run time.
#define EXPECT_SAME(got, want, where)                            \
    if (!((got) == (want))) {                                  \
        ADD_FAILURE() << "mismatch at " << where;              \
        return;                                                \
    }

constexpr int kN = 256 * 256;

// The sweeps test arithmetic, not threads: one thread keeps them quick on a
// busy machine.
class ColourExhaustive : public ::testing::Test {
protected:
    void SetUp() override { old_ = omp_get_max_threads(), omp_set_num_threads(1); }
    void TearDown() override { omp_set_num_threads(old_); }
    int old_ = 1;
};

constexpr VqciSize kSize{256, 256};

// Planes a (fixed), b (row) and c (column) of the sweep for value a.
struct Sweep {
    std::vector<uint8_t> p[3] = {std::vector<uint8_t>(kN), std::vector<uint8_t>(kN), std::vector<uint8_t>(kN)};
    void set(int a) {
        for (int i = 0; i < kN; ++i) p[0][i] = static_cast<uint8_t>(a), p[1][i] = uint8_t(i >> 8), p[2][i] = uint8_t(i);
    }
    const Vqc8u* planes[3] = {p[0].data(), p[1].data(), p[2].data()};
};

struct Out {
    std::vector<uint8_t> p[3] = {std::vector<uint8_t>(kN), std::vector<uint8_t>(kN), std::vector<uint8_t>(kN)};
    Vqc8u* planes[3] = {p[0].data(), p[1].data(), p[2].data()};
    model::Ycc ycc(int i) const { return {p[0][i], p[1][i], p[2][i]}; }
};

TEST_F(ColourExhaustive, ForwardTableFormsMatchTheTables) {
    Sweep s;
    Out o;
    for (int r = 0; r < 256; ++r) {
        s.set(r);
        ASSERT_EQ(vqciRGBToYCbCr_JPEG_8u_P3R(s.planes, 256, o.planes, 256, kSize), 0);
        for (int i = 0; i < kN; ++i) EXPECT_SAME(o.ycc(i), model::fwdTable(r, i >> 8, i & 255), r << ' ' << i);
    }
}

// The four-channel forms differ from each other in the Y rounding only.
TEST_F(ColourExhaustive, ForwardFourChannelFormsMatchTheirFormulas) {
    std::vector<uint8_t> px(4 * kN);
    Out rgb, bgr;
    for (int r = 0; r < 256; ++r) {
        for (int i = 0; i < kN; ++i) {
            const uint8_t v[4] = {uint8_t(r), uint8_t(i >> 8), uint8_t(i), uint8_t(i * 7)};
            for (int c = 0; c < 4; ++c) px[4 * i + c] = v[c];
        }
        ASSERT_EQ(vqciRGBToYCbCr_JPEG_8u_C4P3R(px.data(), 4 * 256, rgb.planes, 256, kSize), 0);
        ASSERT_EQ(vqciBGRToYCbCr_JPEG_8u_C4P3R(px.data(), 4 * 256, bgr.planes, 256, kSize), 0);
        for (int i = 0; i < kN; ++i) {
            EXPECT_SAME(rgb.ycc(i), model::fwdFour(r, i >> 8, i & 255, 32768), r << ' ' << i);
            EXPECT_SAME(bgr.ycc(i), model::fwdFour(i & 255, i >> 8, r, 16384), r << ' ' << i);
        }
    }
}

TEST_F(ColourExhaustive, InverseTableAndMultiplicationForms) {
    Sweep s;
    Out o;
    std::vector<uint8_t> px(4 * kN);
    for (int y = 0; y < 256; ++y) {
        s.set(y);
        ASSERT_EQ(vqciYCbCrToRGB_JPEG_8u_P3R(s.planes, 256, o.planes, 256, kSize), 0);
        ASSERT_EQ(vqciYCbCrToRGB_JPEG_8u_P3C4R(s.planes, 256, px.data(), 4 * 256, kSize, 0), 0);
        for (int i = 0; i < kN; ++i) {
            const model::Rgb mul = model::invMul(y, i >> 8, i & 255);
            EXPECT_SAME((model::Rgb{o.p[0][i], o.p[1][i], o.p[2][i]}), model::invTable(y, i >> 8, i & 255), y << ' ' << i);
            EXPECT_SAME((model::Rgb{px[4 * i], px[4 * i + 1], px[4 * i + 2]}), mul, y << ' ' << i);
        }
    }
}

}  // namespace
