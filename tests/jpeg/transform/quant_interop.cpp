// Quality scaling against libjpeg: jpeg_quality_scaling and
// jpeg_add_quant_table with force_baseline give the same divisors as
// vqciQuantFwdRawTableInit_JPEG_8u for every quality from 1 to 100.
#include <gtest/gtest.h>
#include <vqcj.h>

#include <array>
#include <cstdio>

#include <jpeglib.h>

#include "jpeg/transform/quant.h"

namespace {

// ITU T.81 Annex K, tables K.1 and K.2, in natural order.
constexpr unsigned kLuminance[64] = {16, 11, 10, 16, 24,  40,  51,  61,  12, 12, 14, 19, 26,  58,  60,  55,
                                     14, 13, 16, 24, 40,  57,  69,  56,  14, 17, 22, 29, 51,  87,  80,  62,
                                     18, 22, 37, 56, 68,  109, 103, 77,  24, 35, 55, 64, 81,  104, 113, 92,
                                     49, 64, 78, 87, 103, 121, 120, 101, 72, 92, 95, 98, 112, 100, 103, 99};
constexpr unsigned kChrominance[64] = {17, 18, 24, 47, 99, 99, 99, 99, 18, 21, 26, 66, 99, 99, 99, 99,
                                       24, 26, 56, 99, 99, 99, 99, 99, 47, 66, 99, 99, 99, 99, 99, 99,
                                       99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99,
                                       99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99};

class LibjpegTables {
public:
    LibjpegTables() {
        cinfo_.err = jpeg_std_error(&err_);
        jpeg_create_compress(&cinfo_);
    }
    ~LibjpegTables() { jpeg_destroy_compress(&cinfo_); }
    // Natural-order divisors libjpeg builds from a base table at a quality.
    std::array<unsigned, 64> scaled(const unsigned* base, int quality) {
        jpeg_add_quant_table(&cinfo_, 0, base, jpeg_quality_scaling(quality), TRUE);
        std::array<unsigned, 64> out;
        for (int i = 0; i < 64; ++i) out[i] = cinfo_.quant_tbl_ptrs[0]->quantval[i];
        return out;
    }

private:
    jpeg_compress_struct cinfo_{};
    jpeg_error_mgr err_{};
};

}  // namespace

TEST(QuantInterop, QualityScalingMatchesLibjpeg) {
    LibjpegTables peer;
    for (const unsigned* base : {kLuminance, kChrominance}) {
        std::array<Vqc8u, 64> zigzag;
        for (int i = 0; i < 64; ++i) zigzag[vqcj::ownZigzagPos[i]] = static_cast<Vqc8u>(base[i]);
        for (int q = 1; q <= 100; ++q) {
            std::array<Vqc8u, 64> raw = zigzag;
            ASSERT_EQ(vqciQuantFwdRawTableInit_JPEG_8u(raw.data(), q), vqcStatusOk);
            std::array<Vqc16u, 64> natural;
            ASSERT_EQ(vqciQuantInvTableInit_JPEG_8u16u(raw.data(), natural.data()), vqcStatusOk);
            const auto want = peer.scaled(base, q);
            for (int i = 0; i < 64; ++i)
                ASSERT_EQ(natural[i], want[i]) << "quality " << q << ", natural index " << i;
        }
    }
}
