// Against OpenJPEG's own DWT: the 5/3 forms bit for bit at every origin
// parity (bands in the same places), the 9/7 forms at even origins within
// the rounding of two single-precision implementations.
#include <gtest/gtest.h>
#include <vqcj.h>

#include <cmath>
#include <random>
#include <vector>

#include "support/jpeg2k_wavelet_peer.h"

namespace {

TEST(WaveletInterop, Reversible53MatchesOpenJpeg) {
    std::mt19937 rng(2000);
    std::vector<std::pair<int, int>> sizes;
    for (int w = 1; w <= 9; ++w)
        for (int h = 1; h <= 9; ++h) sizes.push_back({w, h});
    sizes.insert(sizes.end(), {{64, 33}, {37, 50}});
    for (auto [w, h] : sizes)
        for (int org = 0; org < 4; ++org) {
            const int x0 = 10 + (org & 1), y0 = 4 + (org >> 1);
            std::vector<int32_t> img(w * h);
            for (auto& v : img) v = std::uniform_int_distribution<int>(-70000, 70000)(rng);
            std::vector<int32_t> ours = img, peer = img;
            const VqciRect r{x0, y0, w, h};
            int32_t sz = 0;
            vqciWTGetBufSize_B53_JPEG2K_32s_C1IR(&r, &sz);
            std::vector<uint8_t> buf(sz + 1);
            ASSERT_EQ(vqciWTFwd_B53_JPEG2K_32s_C1IR(ours.data(), 4 * w, &r, buf.data()), vqcStatusOk);
            ASSERT_TRUE(vqcjtest::opjDwt53Forward(peer.data(), x0, y0, w, h));
            ASSERT_EQ(ours, peer) << w << "x" << h << " at " << x0 << "," << y0;
            ASSERT_EQ(vqciWTInv_B53_JPEG2K_32s_C1IR(ours.data(), 4 * w, &r, buf.data()), vqcStatusOk);
            ASSERT_TRUE(vqcjtest::opjDwt53Inverse(peer.data(), x0, y0, w, h));
            ASSERT_EQ(ours, img);
            ASSERT_EQ(peer, img);
        }
}

TEST(WaveletInterop, Irreversible97NearOpenJpeg) {
    std::mt19937 rng(97);
    for (auto [w, h] : std::vector<std::pair<int, int>>{{8, 8}, {17, 12}, {64, 40}, {5, 30}}) {
        std::vector<int32_t> img(w * h);
        for (auto& v : img) v = std::uniform_int_distribution<int>(-2000, 2000)(rng);
        std::vector<int32_t> ours = img;
        std::vector<float> peer(img.begin(), img.end());
        const VqciRect r{6, 2, w, h};
        int32_t sz = 0;
        vqciWTGetBufSize_D97_JPEG2K_32s_C1IR(&r, &sz);
        std::vector<uint8_t> buf(sz + 1);
        ASSERT_EQ(vqciWTFwd_D97_JPEG2K_32s_C1IR(ours.data(), 4 * w, &r, buf.data()), vqcStatusOk);
        ASSERT_TRUE(vqcjtest::opjDwt97Forward(peer.data(), r.x, r.y, w, h));
        double worst = 0;
        for (int i = 0; i < w * h; ++i) worst = std::max(worst, std::fabs(ours[i] - double(peer[i])));
        // Ours truncates to integers between the passes, the peer keeps floats.
        EXPECT_LT(worst, 4.0) << w << "x" << h;
    }
}

}  // namespace
