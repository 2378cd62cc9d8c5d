// The integer kernels on 8x8 blocks cut from real photographs: accuracy
// against a double-precision DCT, and the forward-then-inverse round trip
// at quality 100 and 50.
#include <gtest/gtest.h>
#include <vqcj.h>

#include <array>
#include <cstdio>
#include <vector>

#include "photos.h"
#include "reference.h"

using namespace vqcjtest;

namespace {

using Pixels = std::array<Vqc8u, 64>;

// Up to `perPhoto` blocks from each photograph, spread over the image; for
// colour photographs each channel is a plane of its own.
std::vector<Pixels> photoBlocks(int perPhoto) {
    std::vector<Pixels> blocks;
    for (const auto& img : vqcjphoto::loadPhotos(VQCJ_PHOTO_DIR)) {
        const int bw = img.width / 8, bh = img.height / 8;
        const int total = bw * bh * img.channels;
        const int stride = std::max(1, total / perPhoto);
        for (int n = 0; n < total; n += stride) {
            const int ch = n % img.channels, b = n / img.channels;
            const int x0 = (b % bw) * 8, y0 = (b / bw) * 8;
            Pixels p;
            for (int r = 0; r < 8; ++r)
                for (int c = 0; c < 8; ++c)
                    p[r * 8 + c] = img.pixels[(static_cast<size_t>(y0 + r) * img.width + x0 + c) * img.channels + ch];
            blocks.push_back(p);
        }
    }
    return blocks;
}

std::array<Vqc16u, 64> tableAt(int quality, bool inverse) {
    std::array<Vqc8u, 64> raw;
    raw.fill(16);  // a flat base: divisor 16 at quality 50, 1 at 100
    EXPECT_EQ(vqciQuantFwdRawTableInit_JPEG_8u(raw.data(), quality), vqcStatusOk);
    std::array<Vqc16u, 64> t;
    EXPECT_GE(inverse ? vqciQuantInvTableInit_JPEG_8u16u(raw.data(), t.data())
                      : vqciQuantFwdTableInit_JPEG_8u16u(raw.data(), t.data()),
              0);
    return t;
}

}  // namespace

TEST(DctPhotoInterop, KernelsAgainstDoublePrecision) {
    const auto blocks = photoBlocks(3000);
    ASSERT_GE(blocks.size(), 1000u) << "no photographs in " << VQCJ_PHOTO_DIR;
    const auto fwdUnit = flatTable<Vqc16u>(32768), invUnit = flatTable<Vqc16u>(1);
    ErrorStats fwd, inv;
    for (const Pixels& p : blocks) {
        Block64d x;
        for (int i = 0; i < 64; ++i) x[i] = p[i] - 128.0;
        const Block64d ref = referenceDct(x, false);
        alignas(16) Vqc16s coef[64];
        ASSERT_EQ(vqciDCTQuantFwd8x8LS_JPEG_8u16s_C1R(p.data(), 8, coef, fwdUnit.data()), vqcStatusOk);
        int32_t got[64], want[64];
        Block64d rounded;
        for (int i = 0; i < 64; ++i) {
            got[i] = coef[i];
            want[i] = static_cast<int32_t>(std::nearbyint(ref[i]));
            rounded[i] = want[i];
            coef[i] = static_cast<Vqc16s>(want[i]);
        }
        fwd.add(got, want);

        // The inverse starts from the exactly rounded coefficients.
        const Block64d back = referenceDct(rounded, true);
        Vqc8u px[64];
        ASSERT_EQ(vqciDCTQuantInv8x8LS_JPEG_16s8u_C1R(coef, px, 8, invUnit.data()), vqcStatusOk);
        for (int i = 0; i < 64; ++i) {
            got[i] = px[i];
            want[i] = static_cast<int32_t>(std::clamp(std::nearbyint(back[i] + 128.0), 0.0, 255.0));
        }
        inv.add(got, want);
    }
    ErrorStats::printHeader("Integer kernels on photograph blocks against double precision");
    fwd.print("forward, 8-bit samples");
    inv.print("inverse, rounded exact coefficients");
    EXPECT_LE(fwd.peak(), 1);
    EXPECT_LE(inv.peak(), 1);
    EXPECT_LE(fwd.mse(), 0.1);
    EXPECT_LE(inv.mse(), 0.02);
}

TEST(DctPhotoInterop, ForwardThenInverseRoundTrip) {
    const auto blocks = photoBlocks(3000);
    ASSERT_GE(blocks.size(), 1000u) << "no photographs in " << VQCJ_PHOTO_DIR;
    std::printf("Round trip on %zu photograph blocks\n  %-10s %6s %10s %10s\n", blocks.size(), "quality", "peak",
                "mean |e|", "mse");
    for (int quality : {100, 90, 50}) {
        const auto fwdT = tableAt(quality, false), invT = tableAt(quality, true);
        int peak = 0;
        double sumAbs = 0, sumSq = 0;
        for (const Pixels& p : blocks) {
            alignas(16) Vqc16s coef[64];
            Vqc8u back[64];
            ASSERT_EQ(vqciDCTQuantFwd8x8LS_JPEG_8u16s_C1R(p.data(), 8, coef, fwdT.data()), vqcStatusOk);
            ASSERT_EQ(vqciDCTQuantInv8x8LS_JPEG_16s8u_C1R(coef, back, 8, invT.data()), vqcStatusOk);
            for (int i = 0; i < 64; ++i) {
                const int e = std::abs(back[i] - p[i]);
                peak = std::max(peak, e);
                sumAbs += e;
                sumSq += e * e;
            }
        }
        const double n = 64.0 * blocks.size();
        std::printf("  %-10d %6d %10.4f %10.4f\n", quality, peak, sumAbs / n, sumSq / n);
        if (quality == 100) {
            EXPECT_LE(peak, 2);
            EXPECT_LE(sumAbs / n, 0.3);
        }
        // Divisor d costs at most d/2 per coefficient; the mean stays small.
        EXPECT_LE(sumSq / n, quality == 50 ? 25.0 : 5.0);
    }
}
