// Tier-1 against OpenJPEG on crops of real photographs, lossless with no
// wavelet level so that one code-block holds the samples less 128: blocks
// that OpenJPEG codes decode with ours, and blocks that we code, wrapped in
// a minimal codestream, decode with OpenJPEG, under each code-block style.
#include "photos.h"
#include "support/j2k_openjpeg.h"
#include "support/j2k_tier1.h"

#include <gtest/gtest.h>

using namespace vqcjtest;

namespace {

// OpenJPEG's style bits against ours: bypass, reset, terminate all,
// vertically causal, predictable termination (ours reads any), segmentation.
int ourFlags(int mode) {
    return ((mode & 1) ? 2 : 0) | ((mode & 2) ? 8 : 0) | ((mode & 4) ? 4 : 0) | ((mode & 8) ? 1 : 0) |
           ((mode & 32) ? 16 : 0);
}

struct Crop {
    int w, h;
    std::vector<uint8_t> px;
};

std::vector<Crop> crops() {
    std::vector<Crop> out;
    const int sizes[][2] = {{64, 64}, {37, 50}, {64, 3}, {5, 64}, {1, 1}, {17, 9}};
    int k = 0;
    for (const auto& im : vqcjphoto::loadPhotos(VQCJ_PHOTO_DIR)) {
        for (const auto& s : sizes) {
            Crop c{s[0], s[1], {}};
            const int x0 = (k * 97) % (im.width - 64), y0 = (k * 53) % (im.height - 64);
            ++k;
            for (int y = 0; y < c.h; ++y)
                for (int x = 0; x < c.w; ++x)
                    c.px.push_back(im.pixels[((y0 + y) * im.width + x0 + x) * im.channels]);
            out.push_back(std::move(c));
        }
    }
    return out;
}

T1Block toBlock(const Crop& c) {
    T1Block blk{c.w, c.h, 0, {}};
    for (uint8_t p : c.px) {
        const int v = p - 128;
        blk.smag.push_back(v < 0 ? int32_t(0x80000000u | uint32_t(-v)) : v);
    }
    return blk;
}

const int kModes[] = {0, 1, 2, 4, 8, 16, 32, 5, 1 | 8 | 32, 63};

}  // namespace

// OpenJPEG's code-blocks decode with ours to the samples, and our encoder,
// with the standard flush (or the short one where OpenJPEG's predictable
// termination is on), writes the very same bytes.
TEST(Tier1Interop, OpenJpegBlocksDecodeWithOursAndMatchOurBytes) {
    const auto cs = crops();
    ASSERT_FALSE(cs.empty()) << "no photographs in " << VQCJ_PHOTO_DIR;
    VqciEncodeState_JPEG2K* enc = nullptr;
    ASSERT_EQ(vqciEncodeInitAlloc_JPEG2K(&enc, {64, 64}), vqcStatusOk);
    for (const Crop& c : cs)
        for (int mode : kModes) {
            SCOPED_TRACE(testing::Message() << c.w << "x" << c.h << " mode " << mode);
            const auto stream = opjEncodeOneBlock(c.px.data(), c.w, c.h, mode);
            J2kBlock b;
            ASSERT_TRUE(j2kParseOneBlock(stream, &b));
            std::vector<int32_t> got(c.w * c.h);
            int32_t size = 0;
            vqciDecodeGetBufSize_JPEG2K(c.w, c.h, &size);
            std::vector<uint8_t> mem(size);
            ASSERT_EQ(vqciDecodeCodeBlock_JPEG2K_1u32s_C1R(
                          b.data.data(), got.data(), 4 * c.w, c.w, c.h, 0, b.mb - b.zeroPlanes, b.nPasses,
                          b.segLens.data(), int32_t(b.segLens.size()), ourFlags(mode) | 0x40000, nullptr,
                          reinterpret_cast<VqciDecodeCBProgrState_JPEG2K*>(mem.data())),
                      vqcStatusOk);
            for (int i = 0; i < c.w * c.h; ++i) {
                const int32_t v = (got[i] & 0x7FFFFFFF) * (got[i] < 0 ? -1 : 1);
                ASSERT_EQ(v, c.px[i] - 128) << i;
            }
            const T1Coded ours = t1Encode(enc, toBlock(c), 31, ourFlags(mode), (mode & 16) ? 2 : 1);
            ASSERT_EQ(ours.nPasses, b.nPasses);
            // Raw segments end by each coder's own rule (OpenJPEG drops a
            // final 0xFF, or 0xFF 0x7F; we take it off the rate), so bytes
            // are compared where every segment is MQ-coded.
            if (mode & 1) continue;
            size_t diff = 0;
            while (diff < std::min(ours.bytes.size(), b.data.size()) && ours.bytes[diff] == b.data[diff]) ++diff;
            ASSERT_TRUE(ours.bytes == b.data) << "sizes " << ours.bytes.size() << " and " << b.data.size()
                                              << ", first difference at " << diff;
        }
    vqciEncodeFree_JPEG2K(enc);
}

TEST(Tier1Interop, OurBlocksDecodeWithOpenJpeg) {
    const auto cs = crops();
    ASSERT_FALSE(cs.empty());
    VqciEncodeState_JPEG2K* enc = nullptr;
    ASSERT_EQ(vqciEncodeInitAlloc_JPEG2K(&enc, {64, 64}), vqcStatusOk);
    int which = 0;
    for (const Crop& c : cs)
        for (int mode : kModes) {
            const int term = which++ % 3;
            SCOPED_TRACE(testing::Message() << c.w << "x" << c.h << " mode " << mode << " term " << term);
            const T1Coded coded = t1Encode(enc, toBlock(c), 31, ourFlags(mode), term);
            if (coded.nPasses == 0) continue;  // a flat crop: nothing to code
            const auto lens = t1SegmentsFor(coded, coded.nPasses);
            const auto stream =
                j2kWrapOneBlock(c.w, c.h, mode, 9 - coded.sfBits, coded.nPasses, lens, coded.bytes.data());
            int w = 0, h = 0;
            const auto got = opjDecode(stream, &w, &h);
            ASSERT_EQ(got.size(), c.px.size());
            for (size_t i = 0; i < got.size(); ++i) ASSERT_EQ(got[i], c.px[i]) << i;
        }
    vqciEncodeFree_JPEG2K(enc);
}
