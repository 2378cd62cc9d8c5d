// Tier-1 against OpenJPEG on crops of real photographs, lossless with no
// wavelet level so that one code-block holds the samples less 128, under
// each code-block style: OpenJPEG's blocks decode with ours and match our
// bytes, and ours, wrapped in a minimal codestream, decode with OpenJPEG.
#include "photos.h"
#include "support/j2k_openjpeg.h"
#include "support/j2k_tier1.h"

#include <gtest/gtest.h>

using namespace vqcjtest;

TEST(Tier1Interop, BlocksDecodeBothWays) {
    // OpenJPEG's style bits against ours: bypass, reset, terminate all,
    // vertically causal, predictable termination (ours reads any), segmentation.
    auto ourFlags = [](int m) {
        return ((m & 1) ? 2 : 0) | ((m & 2) ? 8 : 0) | ((m & 4) ? 4 : 0) | ((m & 8) ? 1 : 0) | ((m & 32) ? 16 : 0);
    };
    const int sizes[][2] = {{64, 64}, {37, 50}, {64, 3}, {5, 64}, {1, 1}, {17, 9}};
    VqciEncodeState_JPEG2K* enc = nullptr;
    ASSERT_EQ(vqciEncodeInitAlloc_JPEG2K(&enc, {64, 64}), vqcStatusOk);
    int k = 0;
    const auto photos = vqcjphoto::loadPhotos(VQCJ_PHOTO_DIR);
    ASSERT_FALSE(photos.empty()) << "no photographs in " << VQCJ_PHOTO_DIR;
    for (const auto& im : photos)
        for (const auto& s : sizes) {
            const int w = s[0], h = s[1], x0 = (k * 97) % (im.width - 64), y0 = (k * 53) % (im.height - 64);
            std::vector<uint8_t> px;
            T1Block blk{w, h, 0, {}};
            for (int y = 0; y < h; ++y)
                for (int x = 0; x < w; ++x) {
                    px.push_back(im.pixels[((y0 + y) * im.width + x0 + x) * im.channels]);
                    const int v = px.back() - 128;
                    blk.smag.push_back(v < 0 ? int32_t(0x80000000u | uint32_t(-v)) : v);
                }
            for (int mode : {0, 1, 2, 4, 8, 16, 32, 5, 1 | 8 | 32, 63}) {
                const int term = k++ % 3;
                SCOPED_TRACE(testing::Message() << w << "x" << h << " mode " << mode << " term " << term);
                J2kBlock b;
                ASSERT_TRUE(j2kParseOneBlock(opjEncodeOneBlock(px.data(), w, h, mode), &b));
                std::vector<int32_t> got(w * h);
                int32_t size = 0;
                vqciDecodeGetBufSize_JPEG2K(w, h, &size);
                std::vector<uint8_t> mem(size);
                ASSERT_EQ(vqciDecodeCodeBlock_JPEG2K_1u32s_C1R(
                              b.data.data(), got.data(), 4 * w, w, h, 0, b.mb - b.zeroPlanes, b.nPasses,
                              b.segLens.data(), int32_t(b.segLens.size()), ourFlags(mode) | 0x40000, nullptr,
                              reinterpret_cast<VqciDecodeCBProgrState_JPEG2K*>(mem.data())), vqcStatusOk);
                for (int i = 0; i < w * h; ++i) ASSERT_EQ((got[i] & 0x7FFFFFFF) * (got[i] < 0 ? -1 : 1), px[i] - 128);
                // With the standard flush (the short one where OpenJPEG's
                // predictable termination is on) our bytes are OpenJPEG's,
                // but for raw segments, which each coder ends by its own rule.
                const T1Coded same = t1Encode(enc, blk, 31, ourFlags(mode), (mode & 16) ? 2 : 1);
                ASSERT_EQ(same.nPasses, b.nPasses);
                ASSERT_TRUE((mode & 1) || same.bytes == b.data);
                const T1Coded c = t1Encode(enc, blk, 31, ourFlags(mode), term);
                if (c.nPasses == 0) continue;  // a flat crop: nothing to code
                int ow = 0, oh = 0;
                const auto back = opjDecode(j2kWrapOneBlock(w, h, mode, 9 - c.sfBits, c.nPasses,
                                                            t1SegmentsFor(c, c.nPasses), c.bytes.data()), &ow, &oh);
                ASSERT_EQ(back.size(), px.size());
                for (size_t i = 0; i < px.size(); ++i) ASSERT_EQ(back[i], px[i]) << i;
            }
        }
    vqciEncodeFree_JPEG2K(enc);
}
