// Fast DXT1, DXT3 and DXT5 encoders: one bounding box inset by 1/16, one
// fixed four-colour palette from the truncated endpoints, one pass of L1
// distances. No search, no second candidate.
#include <vqcj.h>

#include "frame/check.h"
#include "texture/blockenc.h"

namespace vqcj {

namespace {

// Colour block over R, G, B of 16 RGBA pixels. color0 comes from the upper
// corner, so the block is in four-colour order unless the corners meet.
void colourBlock(const uint8_t* px, uint8_t* out) {
    uint32_t mn[3] = {255, 255, 255}, mx[3] = {0, 0, 0};
    for (int i = 0; i < 16; ++i)
        for (int c = 0; c < 3; ++c) {
            const uint32_t v = px[4 * i + c];
            mn[c] = v < mn[c] ? v : mn[c];
            mx[c] = v > mx[c] ? v : mx[c];
        }
    for (int c = 0; c < 3; ++c) {
        const uint32_t inset = (mx[c] - mn[c]) >> 4;
        mx[c] -= inset, mn[c] += inset;
    }
    const uint32_t c0 = ((mx[0] & 0xF8) << 8) | ((mx[1] & 0xFC) << 3) | (mx[2] >> 3);
    const uint32_t c1 = ((mn[0] & 0xF8) << 8) | ((mn[1] & 0xFC) << 3) | (mn[2] >> 3);
    // The palette a decoder will see, from the stored fields.
    int32_t pal[4][3];
    const uint32_t keep[3] = {0xF8, 0xFC, 0xF8}, down[3] = {5, 6, 5};
    for (int c = 0; c < 3; ++c) {
        const int32_t a = int32_t((mx[c] & keep[c]) | (mx[c] >> down[c]));
        const int32_t b = int32_t((mn[c] & keep[c]) | (mn[c] >> down[c]));
        pal[0][c] = a, pal[1][c] = b, pal[2][c] = (2 * a + b) / 3, pal[3][c] = (a + 2 * b) / 3;
    }
    uint32_t idx = 0;
    for (int i = 0; i < 16; ++i) {
        int32_t d[4];
        for (int k = 0; k < 4; ++k) {
            d[k] = 0;
            for (int c = 0; c < 3; ++c) {
                const int32_t e = int32_t(px[4 * i + c]) - pal[k][c];
                d[k] += e < 0 ? -e : e;
            }
        }
        idx |= ownColourIndex(d[0], d[1], d[2], d[3]) << (2 * i);
    }
    st16(out, c0), st16(out + 2, c1), st32(out + 4, idx);
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
    if (VqcStatus st = Check().ptr(pSrc).ptr(pDst).fail(srcStep == 0, vqcStatusBadStep).roi(srcRoi)) return st;
    ownEncodeWalk<8, 4>(pSrc, srcStep, srcRoi.width, srcRoi.height, pDst, ownEncodeBlockDXT1);
    return vqcStatusOk;
}

VQCJ_API VqcStatus vqciTextureEncodeBlockFromRGBA_DXT3_8u_C4C1R(const Vqc8u* pSrc, uint32_t srcStep, VqciSize srcRoi,
                                                                Vqc8u* pDst) {
    if (VqcStatus st = Check().ptr(pSrc).ptr(pDst).fail(srcStep == 0, vqcStatusBadStep).roi(srcRoi)) return st;
    ownEncodeWalk<16, 4>(pSrc, srcStep, srcRoi.width, srcRoi.height, pDst, ownEncodeBlockDXT3);
    return vqcStatusOk;
}

VQCJ_API VqcStatus vqciTextureEncodeBlockFromRGBA_DXT5_8u_C4C1R(const Vqc8u* pSrc, uint32_t srcStep, VqciSize srcRoi,
                                                                Vqc8u* pDst) {
    if (VqcStatus st = Check().ptr(pSrc).ptr(pDst).fail(srcStep == 0, vqcStatusBadStep).roi(srcRoi)) return st;
    ownEncodeWalk<16, 4>(pSrc, srcStep, srcRoi.width, srcRoi.height, pDst, ownEncodeBlockDXT5);
    return vqcStatusOk;
}

}  // extern "C"
