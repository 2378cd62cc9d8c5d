// Fast DXT1, DXT3 and DXT5 encoders: one bounding box inset by 1/16, one
// fixed four-colour palette from the truncated endpoints, one pass of L1
// distances. No search, no second candidate.
#include <vqcj.h>

#include <algorithm>

#include "frame/check.h"
#include "texture/blockenc.h"

namespace vqcj {

namespace {

// Colour block over R, G, B of 16 RGBA pixels. color0 comes from the upper
// corner, so the block is in four-colour order unless the corners meet. The
// channels are split into planes first so that every pass below runs over
// 16 lanes with no branch.
void colourBlock(const uint8_t* px, uint8_t* out) {
    alignas(16) uint8_t ch[3][16];
    for (int i = 0; i < 16; ++i) ch[0][i] = px[4 * i], ch[1][i] = px[4 * i + 1], ch[2][i] = px[4 * i + 2];
    // Extremes on the interleaved bytes, a row of four pixels at a time.
    alignas(16) uint8_t mn4[16], mx4[16];
    std::memcpy(mn4, px, 16), std::memcpy(mx4, px, 16);
    for (int q = 16; q < 64; q += 16)
        for (int j = 0; j < 16; ++j) {
            mn4[j] = std::min(mn4[j], px[q + j]);
            mx4[j] = std::max(mx4[j], px[q + j]);
        }
    int32_t pal[3][4];
    uint32_t hi[3], lo[3];
    const uint32_t keep[3] = {0xF8, 0xFC, 0xF8}, down[3] = {5, 6, 5};
    for (int c = 0; c < 3; ++c) {
        const uint32_t mn = std::min(std::min(mn4[c], mn4[4 + c]), std::min(mn4[8 + c], mn4[12 + c]));
        const uint32_t mx = std::max(std::max(mx4[c], mx4[4 + c]), std::max(mx4[8 + c], mx4[12 + c]));
        const uint32_t inset = (mx - mn) >> 4;
        hi[c] = mx - inset, lo[c] = mn + inset;
        // The palette a decoder will see, from the stored fields.
        ownFourColour(int32_t((hi[c] & keep[c]) | (hi[c] >> down[c])), int32_t((lo[c] & keep[c]) | (lo[c] >> down[c])),
                      pal[c]);
    }
    const uint32_t c0 = ((hi[0] & 0xF8) << 8) | ((hi[1] & 0xFC) << 3) | (hi[2] >> 3);
    const uint32_t c1 = ((lo[0] & 0xF8) << 8) | ((lo[1] & 0xFC) << 3) | (lo[2] >> 3);
    st16(out, c0), st16(out + 2, c1), st32(out + 4, ownColourIndices<3>(ch, pal));
}

void ownEncodeBlockDXT1(const uint8_t* px, uint8_t* out) { colourBlock(px, out); }

void ownEncodeBlockDXT3(const uint8_t* px, uint8_t* out) {
    uint64_t a = 0;
    for (int i = 0; i < 16; ++i) a |= uint64_t(px[4 * i + 3] >> 4) << (4 * i);
    st64(out, a);
    colourBlock(px, out + 8);
}

void ownEncodeBlockDXT5(const uint8_t* px, uint8_t* out) {
    ownEncodeValueBlock(px + 3, 4, out);
    colourBlock(px, out + 8);
}

}  // namespace

}  // namespace vqcj

using namespace vqcj;

extern "C" {

VQCJ_API VqcStatus vqciTextureEncodeBlockFromRGBA_DXT1_8u_C4C1R(const Vqc8u* pSrc, uint32_t srcStep, VqciSize srcRoi,
                                                                Vqc8u* pDst) {
    return ownEncodeImage<8, 4>(pSrc, srcStep, srcRoi, pDst, [](const uint8_t* px, uint8_t* o) { ownEncodeBlockDXT1(px, o); });
}

VQCJ_API VqcStatus vqciTextureEncodeBlockFromRGBA_DXT3_8u_C4C1R(const Vqc8u* pSrc, uint32_t srcStep, VqciSize srcRoi,
                                                                Vqc8u* pDst) {
    return ownEncodeImage<16, 4>(pSrc, srcStep, srcRoi, pDst, [](const uint8_t* px, uint8_t* o) { ownEncodeBlockDXT3(px, o); });
}

VQCJ_API VqcStatus vqciTextureEncodeBlockFromRGBA_DXT5_8u_C4C1R(const Vqc8u* pSrc, uint32_t srcStep, VqciSize srcRoi,
                                                                Vqc8u* pDst) {
    return ownEncodeImage<16, 4>(pSrc, srcStep, srcRoi, pDst, [](const uint8_t* px, uint8_t* o) { ownEncodeBlockDXT5(px, o); });
}

}  // extern "C"
