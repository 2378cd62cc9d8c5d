// Against OpenJPEG's own DWT: the 5/3 forms bit for bit at every origin
// parity (bands in the same places), forward and back; the 9/7 forward at
// even origins within the rounding of two single-precision implementations
// (ours truncates to integers between the passes, the peer keeps floats).
#include <gtest/gtest.h>
#include <vqcj.h>

#include <cmath>
#include <random>
#include <vector>

#include "support/jpeg2k_wavelet_peer.h"

namespace {

TEST(WaveletInterop, AgainstOpenJpeg) {
    std::mt19937 rng(2000);
    std::vector<std::pair<int, int>> sizes = {{64, 33}, {37, 50}, {17, 12}, {5, 30}};
    for (int w = 1; w <= 9; ++w)
        for (int h = 1; h <= 9; ++h) sizes.push_back({w, h});
    for (auto [w, h] : sizes)
        for (int org = 0; org < 4; ++org) {
            const VqciRect r{10 + (org & 1), 4 + (org >> 1), w, h};
            std::vector<int32_t> img(w * h), ours, peer;
            for (auto& v : img) v = std::uniform_int_distribution<int>(-70000, 70000)(rng);
            std::vector<uint8_t> buf(4 * (w + h) + 64);
            ours = peer = img;
            ASSERT_EQ(vqciWTFwd_B53_JPEG2K_32s_C1IR(ours.data(), 4 * w, &r, buf.data()), vqcStatusOk);
            ASSERT_TRUE(vqcjtest::opjDwt53Forward(peer.data(), r.x, r.y, w, h));
            ASSERT_EQ(ours, peer) << w << "x" << h << " at " << r.x << "," << r.y;
            ASSERT_EQ(vqciWTInv_B53_JPEG2K_32s_C1IR(ours.data(), 4 * w, &r, buf.data()), vqcStatusOk);
            ASSERT_TRUE(vqcjtest::opjDwt53Inverse(peer.data(), r.x, r.y, w, h));
            ASSERT_TRUE(ours == img && peer == img);
            if (org != 0 || w * h < 36) continue;
            for (auto& v : img) v /= 35;
            std::vector<float> fpeer(img.begin(), img.end());
            ASSERT_EQ(vqciWTFwd_D97_JPEG2K_32s_C1IR(img.data(), 4 * w, &r, buf.data()), vqcStatusOk);
            ASSERT_TRUE(vqcjtest::opjDwt97Forward(fpeer.data(), r.x, r.y, w, h));
            for (int i = 0; i < w * h; ++i) ASSERT_LT(std::fabs(img[i] - fpeer[i]), 4.0) << w << "x" << h << " at " << i;
        }
}

}  // namespace
