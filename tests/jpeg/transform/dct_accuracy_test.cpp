// Accuracy of the four kernels against a double-precision orthonormal DCT,
// on random blocks in the manner of IEEE 1180: for each input range, 10000
// blocks, the peak error, the worst per-position and the overall mean square
// error and mean error.
#include <gtest/gtest.h>
#include <vqcj.h>

#include <random>

#include "reference.h"

using namespace vqcjtest;

namespace {

constexpr int kBlocks = 10000;

const auto kUnitFwd = flatTable<Vqc16u>(32768);  // divisor 1
const auto kUnitInv = flatTable<Vqc16u>(1);

int32_t roundClamp(double v, int32_t lo, int32_t hi) {
    return static_cast<int32_t>(std::clamp(std::nearbyint(v), double(lo), double(hi)));
}

struct Range {
    int lo, hi;
    int sign;
};
constexpr Range kRanges[] = {{-256, 255, 1}, {-5, 5, 1}, {-300, 300, 1}, {-256, 255, -1}, {-5, 5, -1}, {-300, 300, -1}};

// IEEE 1180 random samples: uniform in [lo, hi], optionally negated.
Block64d randomSamples(std::mt19937& rng, const Range& r) {
    std::uniform_int_distribution<int> d(r.lo, r.hi);
    Block64d b;
    for (auto& v : b) v = r.sign * d(rng);
    return b;
}

std::string label(const char* what, const Range& r) {
    return std::string(what) + " [" + std::to_string(r.lo) + "," + std::to_string(r.hi) + "]" +
           (r.sign < 0 ? " negated" : "");
}

}  // namespace

TEST(DctAccuracy, InverseIntegerKernelMeetsIeee1180) {
    ErrorStats::printHeader("Inverse fixed-point kernel against double precision (IEEE 1180 procedure)");
    std::mt19937 rng(1180);
    for (const Range& r : kRanges) {
        ErrorStats stats;
        for (int b = 0; b < kBlocks; ++b) {
            const Block64d coef = referenceDct(randomSamples(rng, r), false);
            alignas(16) Vqc16s in[64], out[64];
            Block64d coefInt;
            for (int i = 0; i < 64; ++i) {
                in[i] = static_cast<Vqc16s>(roundClamp(coef[i], -2048, 2047));
                coefInt[i] = in[i];
            }
            const Block64d ref = referenceDct(coefInt, true);
            ASSERT_EQ(vqciDCTQuantInv8x8_JPEG_16s_C1(in, out, kUnitInv.data()), vqcStatusOk);
            int32_t got[64], want[64];
            for (int i = 0; i < 64; ++i) {
                got[i] = std::clamp<int32_t>(out[i], -256, 255);
                want[i] = roundClamp(ref[i], -256, 255);
            }
            stats.add(got, want);
        }
        stats.print(label("samples", r));
        EXPECT_LE(stats.peak(), 1);
        EXPECT_LE(stats.worstPosMse(), 0.06);
        EXPECT_LE(stats.mse(), 0.02);
        EXPECT_LE(stats.worstPosMean(), 0.015);
        EXPECT_LE(std::fabs(stats.mean()), 0.0015);
    }
}

TEST(DctAccuracy, ForwardIntegerKernelWithinOneUnit) {
    ErrorStats::printHeader("Forward fixed-point kernel against double precision, rounded coefficients");
    std::mt19937 rng(8);
    for (const Range& r : kRanges) {
        ErrorStats stats;
        for (int b = 0; b < kBlocks; ++b) {
            const Block64d x = randomSamples(rng, r);
            const Block64d ref = referenceDct(x, false);
            alignas(16) Vqc16s in[64], out[64];
            for (int i = 0; i < 64; ++i) in[i] = static_cast<Vqc16s>(x[i]);
            ASSERT_EQ(vqciDCTQuantFwd8x8_JPEG_16s_C1(in, out, kUnitFwd.data()), vqcStatusOk);
            int32_t got[64], want[64];
            for (int i = 0; i < 64; ++i) got[i] = out[i], want[i] = static_cast<int32_t>(std::nearbyint(ref[i]));
            stats.add(got, want);
        }
        stats.print(label("samples", r));
        EXPECT_LE(stats.peak(), 1);
        EXPECT_LE(stats.mse(), 0.1);
        EXPECT_LE(std::fabs(stats.mean()), 0.01);
    }
}

TEST(DctAccuracy, FloatKernelsOn12BitSamples) {
    ErrorStats::printHeader("Single-precision kernels against double precision, 12-bit samples");
    std::mt19937 rng(12);
    std::uniform_int_distribution<int> sample(0, 4095);
    const auto unit = flatTable<Vqc32f>(1.0f);
    ErrorStats fwd, inv;
    for (int b = 0; b < kBlocks; ++b) {
        Vqc16u px[64];
        Block64d x;
        for (int i = 0; i < 64; ++i) px[i] = static_cast<Vqc16u>(sample(rng)), x[i] = px[i] - 2048.0;
        Vqc16s coef[64];
        ASSERT_EQ(vqciDCTQuantFwd8x8LS_JPEG_16u16s_C1R(px, 16, coef, unit.data()), vqcStatusOk);
        const Block64d ref = referenceDct(x, false);
        int32_t got[64], want[64];
        Block64d coefD;
        for (int i = 0; i < 64; ++i) {
            got[i] = coef[i], want[i] = static_cast<int32_t>(std::nearbyint(ref[i]));
            coefD[i] = coef[i];
        }
        fwd.add(got, want);

        Vqc16u back[64];
        ASSERT_EQ(vqciDCTQuantInv8x8LS_JPEG_16s16u_C1R(coef, back, 16, unit.data()), vqcStatusOk);
        const Block64d refBack = referenceDct(coefD, true);
        for (int i = 0; i < 64; ++i) got[i] = back[i], want[i] = roundClamp(refBack[i] + 2048.0, 0, 4095);
        inv.add(got, want);
    }
    fwd.print("forward, 12-bit samples");
    inv.print("inverse, coefficients of 12-bit samples");
    EXPECT_LE(fwd.peak(), 1);
    EXPECT_LE(inv.peak(), 1);
    EXPECT_LE(fwd.mse(), 0.01);  // exact ties are split by the reference's own rounding
    EXPECT_LE(inv.mse(), 0.001);
}
