// Accuracy of the kernels against a double-precision orthonormal DCT, on
// random blocks in the manner of IEEE 1180 and on 8x8 blocks cut from real
// photographs, and the forward-then-inverse round trip on the photographs.
// The tables printed give the peak error, the worst per-position and overall
// mean square error and the worst per-position and overall mean error.
#include <gtest/gtest.h>
#include <vqcj.h>

#include <array>
#include <cstdio>
#include <random>
#include <vector>

#include "photos.h"
#include "reference.h"

using namespace vqcjtest;

namespace {

using Pixels = std::array<Vqc8u, 64>;

const auto kUnitFwd = flatTable<Vqc16u>(32768);  // divisor 1
const auto kUnitInv = flatTable<Vqc16u>(1);

int32_t roundClamp(double v, int32_t lo, int32_t hi) {
    return static_cast<int32_t>(std::clamp(std::nearbyint(v), double(lo), double(hi)));
}

// Forward kernel against the rounded exact coefficients; inverse kernel, as
// IEEE 1180 has it, from those coefficients limited to 12 bits, against the
// exact inverse rounded and limited to -256..255.
void measureIntegerKernels(const std::vector<Block64d>& samples, ErrorStats& fwd, ErrorStats& inv) {
    for (const Block64d& x : samples) {
        const Block64d ref = referenceDct(x, false);
        alignas(16) Vqc16s in[64], out[64];
        int32_t got[64], want[64];
        Block64d coef;
        for (int i = 0; i < 64; ++i) in[i] = static_cast<Vqc16s>(x[i]);
        ASSERT_EQ(vqciDCTQuantFwd8x8_JPEG_16s_C1(in, out, kUnitFwd.data()), vqcStatusOk);
        for (int i = 0; i < 64; ++i) {
            got[i] = out[i], want[i] = static_cast<int32_t>(std::nearbyint(ref[i]));
            in[i] = static_cast<Vqc16s>(roundClamp(ref[i], -2048, 2047));
            coef[i] = in[i];
        }
        fwd.add(got, want);
        const Block64d back = referenceDct(coef, true);
        ASSERT_EQ(vqciDCTQuantInv8x8_JPEG_16s_C1(in, out, kUnitInv.data()), vqcStatusOk);
        for (int i = 0; i < 64; ++i)
            got[i] = std::clamp<int32_t>(out[i], -256, 255), want[i] = roundClamp(back[i], -256, 255);
        inv.add(got, want);
    }
}

// Up to `perPhoto` blocks from each photograph, spread over the image; for
// colour photographs each channel is a plane of its own.
std::vector<Pixels> photoBlocks(int perPhoto) {
    std::vector<Pixels> blocks;
    for (const auto& img : vqcjphoto::loadPhotos(VQCJ_PHOTO_DIR)) {
        const int bw = img.width / 8, bh = img.height / 8, total = bw * bh * img.channels;
        for (int n = 0; n < total; n += std::max(1, total / perPhoto)) {
            const int ch = n % img.channels, b = n / img.channels, x0 = (b % bw) * 8, y0 = (b / bw) * 8;
            Pixels p;
            for (int i = 0; i < 64; ++i)
                p[i] = img.pixels[(static_cast<size_t>(y0 + i / 8) * img.width + x0 + i % 8) * img.channels + ch];
            blocks.push_back(p);
        }
    }
    return blocks;
}

const std::vector<Pixels>& photos() {
    static const std::vector<Pixels> blocks = photoBlocks(3000);
    return blocks;
}

}  // namespace

TEST(DctAccuracy, RandomBlocksMeetIeee1180) {
    ErrorStats::printHeader("Integer kernels on random samples against double precision (IEEE 1180 procedure)");
    std::mt19937 rng(1180);
    for (const auto& [lo, hi] : {std::pair{-256, 255}, {-5, 5}, {-300, 300}}) {
        for (int sign : {1, -1}) {
            std::uniform_int_distribution<int> d(lo, hi);
            std::vector<Block64d> samples(10000);
            for (auto& b : samples)
                for (auto& v : b) v = sign * d(rng);
            ErrorStats fwd, inv;
            measureIntegerKernels(samples, fwd, inv);
            char range[48];
            std::snprintf(range, sizeof range, "[%d,%d]%s", lo, hi, sign < 0 ? " negated" : "");
            fwd.print(std::string("forward ") + range);
            inv.print(std::string("inverse ") + range);
            EXPECT_LE(inv.peak(), 1);
            EXPECT_LE(inv.worstPosMse(), 0.06);
            EXPECT_LE(inv.mse(), 0.02);
            EXPECT_LE(inv.worstPosMean(), 0.015);
            EXPECT_LE(std::fabs(inv.mean()), 0.0015);
            // The forward DC rounds halves up, so its mean error stays near 1/16.
            EXPECT_LE(fwd.peak(), 1);
            EXPECT_LE(fwd.mse(), 0.1);
            EXPECT_LE(std::fabs(fwd.mean()), 0.01);
        }
    }
}

TEST(DctAccuracy, PhotographBlocks) {
    ASSERT_GE(photos().size(), 1000u) << "no photographs in " << VQCJ_PHOTO_DIR;
    std::vector<Block64d> samples;
    for (const Pixels& p : photos()) {
        Block64d x;
        for (int i = 0; i < 64; ++i) x[i] = p[i] - 128.0;
        samples.push_back(x);
    }
    ErrorStats fwd, inv;
    measureIntegerKernels(samples, fwd, inv);
    ErrorStats::printHeader("Integer kernels on photograph blocks against double precision");
    fwd.print("forward");
    inv.print("inverse");
    EXPECT_LE(fwd.peak(), 1);
    EXPECT_LE(inv.peak(), 1);
    EXPECT_LE(fwd.mse(), 0.1);
    EXPECT_LE(inv.mse(), 0.02);
}

TEST(DctAccuracy, FloatKernelsOn12BitSamples) {
    std::mt19937 rng(12);
    std::uniform_int_distribution<int> sample(0, 4095);
    const auto unit = flatTable<Vqc32f>(1.0f);
    ErrorStats fwd, inv;
    for (int b = 0; b < 10000; ++b) {
        Vqc16u px[64], back[64];
        Vqc16s coef[64];
        Block64d x, coefD;
        for (int i = 0; i < 64; ++i) px[i] = static_cast<Vqc16u>(sample(rng)), x[i] = px[i] - 2048.0;
        ASSERT_EQ(vqciDCTQuantFwd8x8LS_JPEG_16u16s_C1R(px, 16, coef, unit.data()), vqcStatusOk);
        ASSERT_EQ(vqciDCTQuantInv8x8LS_JPEG_16s16u_C1R(coef, back, 16, unit.data()), vqcStatusOk);
        const Block64d ref = referenceDct(x, false);
        int32_t got[64], want[64];
        for (int i = 0; i < 64; ++i)
            got[i] = coef[i], want[i] = static_cast<int32_t>(std::nearbyint(ref[i])), coefD[i] = coef[i];
        fwd.add(got, want);
        const Block64d refBack = referenceDct(coefD, true);
        for (int i = 0; i < 64; ++i) got[i] = back[i], want[i] = roundClamp(refBack[i] + 2048.0, 0, 4095);
        inv.add(got, want);
    }
    ErrorStats::printHeader("Single-precision kernels against double precision, 12-bit samples");
    fwd.print("forward");
    inv.print("inverse");
    EXPECT_LE(fwd.peak(), 1);
    EXPECT_LE(inv.peak(), 1);
    EXPECT_LE(fwd.mse(), 0.01);  // exact ties are split by the reference's own rounding
    EXPECT_LE(inv.mse(), 0.001);
}

TEST(DctAccuracy, PhotographRoundTrip) {
    ASSERT_GE(photos().size(), 1000u) << "no photographs in " << VQCJ_PHOTO_DIR;
    std::printf("Round trip on %zu photograph blocks, flat base table 16\n  %-10s %6s %10s %10s\n", photos().size(),
                "quality", "peak", "mean |e|", "mse");
    for (int quality : {100, 90, 50}) {
        std::array<Vqc8u, 64> raw;
        raw.fill(16);
        ASSERT_EQ(vqciQuantFwdRawTableInit_JPEG_8u(raw.data(), quality), vqcStatusOk);
        std::array<Vqc16u, 64> fwdT, invT;
        ASSERT_EQ(vqciQuantFwdTableInit_JPEG_8u16u(raw.data(), fwdT.data()), vqcStatusOk);
        ASSERT_EQ(vqciQuantInvTableInit_JPEG_8u16u(raw.data(), invT.data()), vqcStatusOk);
        int peak = 0;
        double sumAbs = 0, sumSq = 0;
        for (const Pixels& p : photos()) {
            alignas(16) Vqc16s coef[64];
            Vqc8u back[64];
            ASSERT_EQ(vqciDCTQuantFwd8x8LS_JPEG_8u16s_C1R(p.data(), 8, coef, fwdT.data()), vqcStatusOk);
            ASSERT_EQ(vqciDCTQuantInv8x8LS_JPEG_16s8u_C1R(coef, back, 8, invT.data()), vqcStatusOk);
            for (int i = 0; i < 64; ++i) {
                const int e = std::abs(back[i] - p[i]);
                peak = std::max(peak, e), sumAbs += e, sumSq += e * e;
            }
        }
        const double n = 64.0 * photos().size();
        std::printf("  %-10d %6d %10.4f %10.4f\n", quality, peak, sumAbs / n, sumSq / n);
        if (quality == 100) {
            EXPECT_LE(peak, 2);
            EXPECT_LE(sumAbs / n, 0.3);
        }
        EXPECT_LE(sumSq / n, quality == 50 ? 25.0 : 5.0);
    }
}
