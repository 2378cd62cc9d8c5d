// Quality scaling against libjpeg; the kernels against a double-precision DCT
// on photographs and noise, in a round trip at quality 100.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>

#include <jpeglib.h>

#include "jpeg/transform/dct.h"  // also the public header and <array>
#include "photos.h"
#include "support/testutil.h"  // also <vector>

extern "C" const int jpeg_natural_order[];  // libjpeg's zig-zag scan, exported though not in its header

namespace {

// Orthonormal 8x8 DCT-II, or its inverse, in double precision.
template <class T>
std::array<double, 64> referenceDct(const std::array<T, 64>& in, bool inverse) {
    std::array<double, 64> c, out{};  // c[k * 8 + n] = C(k) / 2 cos((2n + 1) k pi / 16)
    for (int i = 0; i < 64; ++i) c[i] = (i < 8 ? std::sqrt(0.125) : 0.5) * std::cos((i % 8 * 2 + 1) * (i / 8) * M_PI / 16);
    for (int o = 0; o < 64; ++o)
        for (int i = 0; i < 64; ++i)  // the basis at frequency o and sample i, or the other way round
            out[o] += in[i] * (inverse ? c[i / 8 * 8 + o / 8] * c[i % 8 * 8 + o % 8] : c[o / 8 * 8 + i / 8] * c[o % 8 * 8 + i % 8]);
    return out;
}

struct Stats { double peak = 0, sum = 0, n = 0; void add(double e) { peak = std::max(peak, std::fabs(e)), sum += e, ++n; } };

}  // namespace

TEST(TransformInterop, QualityScalingMatchesLibjpeg) {
    jpeg_compress_struct cinfo{};
    jpeg_error_mgr err{};
    cinfo.err = jpeg_std_error(&err);
    jpeg_create_compress(&cinfo);
    unsigned base[64];  // natural order, 0 to 255; raw gets them in zig-zag order
    for (int q = 1; q <= 100; ++q) {
        std::array<Vqc8u, 64> raw;
        std::array<Vqc16u, 64> natural;
        for (int k = 0; k < 64; ++k) base[k] = k * 255 / 63, raw[k] = static_cast<Vqc8u>(jpeg_natural_order[k] * 255 / 63);
        ASSERT_EQ(vqciQuantFwdRawTableInit_JPEG_8u(raw.data(), q), vqcStatusOk);
        ASSERT_EQ(vqciQuantInvTableInit_JPEG_8u16u(raw.data(), natural.data()), vqcStatusOk);
        jpeg_add_quant_table(&cinfo, 0, base, jpeg_quality_scaling(q), TRUE);
        for (int i = 0; i < 64; ++i) ASSERT_EQ(natural[i], cinfo.quant_tbl_ptrs[0]->quantval[i]) << q << ", " << i;
    }
    jpeg_destroy_compress(&cinfo);
}

TEST(TransformInterop, RoundTripAtQuality100AgainstDoublePrecision) {
    const std::vector<Vqc16u> fwdT(64, 32768), invT(64, 1);  // quality 100: every divisor 1
    auto photos = vqcjphoto::loadPhotos(VQCJ_PHOTO_DIR);
    ASSERT_GE(photos.size(), 4u) << "no photographs in " << VQCJ_PHOTO_DIR;
    photos.push_back({"noise", 2048, 2048, 1, vqcjtest::randomBytes(2048 * 2048, 1180)});
    Stats err, flt, trip;  // integer kernels, floating kernels, round trip
    // For the floating kernels, per position, the error against the exact coefficient regressed on that coefficient:
    // a wrong constant shows as a bias. The inverse is taken back by the exact forward transform.
    std::array<double, 64> num{}, den{};
    const auto at = [](int i, int step) { return i / 8 * step + i % 8; };  // element i of a block with rows step apart
    for (const auto& img : photos)
        for (int ch = 0; ch < img.channels; ++ch)
            for (int y = 0; y + 8 <= img.height; y += 24)
                for (int x = 0; x + 8 <= img.width; x += 24) {
                    // One block of a channel in rows 11 bytes apart, and its round trip in rows 9 apart.
                    Vqc8u px[8 * 11], back[8 * 9];
                    std::array<Vqc16s, 64> coef;
                    std::array<float, 64> z, zi;  // the samples centred, then their floating forward and inverse
                    for (int i = 0; i < 64; ++i)
                        z[i] = (px[at(i, 11)] = img.pixels[(size_t(y + i / 8) * img.width + x + i % 8) * img.channels + ch]) - 128.0f;
                    ASSERT_EQ(vqciDCTQuantFwd8x8LS_JPEG_8u16s_C1R(px, 11, coef.data(), fwdT.data()), vqcStatusOk);
                    ASSERT_EQ(vqciDCTQuantInv8x8LS_JPEG_16s8u_C1R(coef.data(), back, 9, invT.data()), vqcStatusOk);
                    const auto ref = referenceDct(z, false), refInv = referenceDct(coef, true);
                    ASSERT_EQ(vqcj::ownDCT8x8Fwd32f(z.data()), vqcStatusOk);
                    vqcj::ownDCT8x8Inv32f((zi = z).data());
                    const auto zBack = referenceDct(zi, false);
                    for (int i = 0; i < 64; ++i) {
                        err.add(coef[i] - std::nearbyint(ref[i])), trip.add(back[at(i, 9)] - px[at(i, 11)]);
                        err.add(back[at(i, 9)] - std::clamp(std::nearbyint(refInv[i]) + 128, 0.0, 255.0));
                        flt.add(z[i] - ref[i]), flt.add(zi[i] + 128 - px[at(i, 11)]);
                        num[i] += (z[i] - ref[i]) * ref[i] + (zBack[i] - z[i]) * z[i], den[i] += ref[i] * ref[i] + z[i] * z[i];
                    }
                }
    double bias = 0;
    for (int i = 0; i < 64; ++i) bias = std::max(bias, std::fabs(num[i] / den[i]));
    std::printf("%g blocks: round trip peak %g mean %+.4f; against double precision, integer kernels peak %g mean %+.4f, floating "
                "kernels peak %.5f relative bias %.2g\n", trip.n / 64, trip.peak, trip.sum / trip.n, err.peak, err.sum / err.n, flt.peak, bias);
    EXPECT_TRUE(trip.peak <= 2 && err.peak <= 1 && flt.peak <= 2.5e-4 && bias < 1.5e-7);  // the values are printed above
}
