// Fast DXT1, DXT3 and DXT5 encoders: one bounding box inset by 1/16, one
// fixed four-colour palette from the truncated endpoints, one pass of L1
// distances. No search, no second candidate. The distances and the index
// mesh run over Highway vectors; the image is dispatched once.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "texture/dxtenc.cpp"
#include <hwy/foreach_target.h>  // must come before highway.h
#include <hwy/highway.h>
#include <vqcj.h>

#include <algorithm>

#include "frame/check.h"
#include "frame/simd.h"
#include "texture/blockenc.h"
#include "texture/blockenc-inl.h"

#ifndef VQCJ_DXTENC_ONCE
#define VQCJ_DXTENC_ONCE
namespace vqcj {

namespace {

// The plain split of 16 RGBA pixels into four channel planes.
inline void ownPlanes(const uint8_t* px, uint8_t (*ch)[16]) {
    for (int i = 0; i < 16; ++i)
        for (int c = 0; c < 4; ++c) ch[c][i] = px[4 * i + c];
}

// Colour block over the R, G, B planes of 16 pixels. color0 comes from the
// upper corner, so the block is in four-colour order unless the corners
// meet. Every pass runs over 16 lanes with no branch.
template <class Indices>
void colourBlock(const uint8_t (*ch)[16], uint8_t* out, Indices indices) {
    int32_t pal[3][4];
    uint32_t hi[3], lo[3];
    const uint32_t keep[3] = {0xF8, 0xFC, 0xF8}, down[3] = {5, 6, 5};
    for (int c = 0; c < 3; ++c) {
        uint8_t mn = 255, mx = 0;
        for (int i = 0; i < 16; ++i) mn = std::min(mn, ch[c][i]), mx = std::max(mx, ch[c][i]);
        const uint32_t inset = uint32_t(mx - mn) >> 4;
        hi[c] = mx - inset, lo[c] = mn + inset;
        // The palette a decoder will see, from the stored fields.
        ownFourColour(int32_t((hi[c] & keep[c]) | (hi[c] >> down[c])), int32_t((lo[c] & keep[c]) | (lo[c] >> down[c])),
                      pal[c]);
    }
    const uint32_t c0 = ((hi[0] & 0xF8) << 8) | ((hi[1] & 0xFC) << 3) | (hi[2] >> 3);
    const uint32_t c1 = ((lo[0] & 0xF8) << 8) | ((lo[1] & 0xFC) << 3) | (lo[2] >> 3);
    st16(out, c0), st16(out + 2, c1), st32(out + 4, indices(ch, pal));
}

enum { kDXT1, kDXT3, kDXT5 };

// The image walk of one format: each block is split into planes by
// `planes`, its colour indices come from `indices` and its alpha indices
// from `values`.
template <class Planes, class Indices, class Values>
void ownEncodeDXT(int format, const uint8_t* src, uint32_t step, int32_t w, int32_t h, uint8_t* dst, Planes planes,
                  Indices indices, Values values) {
    if (format == kDXT1) {
        ownEncodeWalk<8, 4>(src, step, w, h, dst, [&](const uint8_t* px, uint8_t* out) {
            alignas(16) uint8_t ch[4][16];
            planes(px, ch);
            colourBlock(ch, out, indices);
        });
    } else if (format == kDXT3) {
        ownEncodeWalk<16, 4>(src, step, w, h, dst, [&](const uint8_t* px, uint8_t* out) {
            alignas(16) uint8_t ch[4][16];
            planes(px, ch);
            // Top nibble of alpha, truncated.
            alignas(16) uint8_t a[16];
            for (int i = 0; i < 16; ++i) a[i] = uint8_t(ch[3][i] >> 4);
            st64(out, ownPackIndices<4>(a));
            colourBlock(ch, out + 8, indices);
        });
    } else {
        ownEncodeWalk<16, 4>(src, step, w, h, dst, [&](const uint8_t* px, uint8_t* out) {
            alignas(16) uint8_t ch[4][16];
            planes(px, ch);
            ownEncodeValueBlock<1>(ch[3], out, values);
            colourBlock(ch, out + 8, indices);
        });
    }
}

}  // namespace

}  // namespace vqcj
#endif  // VQCJ_DXTENC_ONCE

HWY_BEFORE_NAMESPACE();
namespace vqcj::HWY_NAMESPACE {

void EncodeDXT(int format, const uint8_t* src, uint32_t step, int32_t w, int32_t h, uint8_t* dst) {
#if VQCJ_SIMD_BASELINE
    ownEncodeDXT(
        format, src, step, w, h, dst, ownPlanes,
        [](const uint8_t(*ch)[16], const int32_t(*pal)[4]) { return ownColourIndices<3>(ch, pal); }, ownValueIndices);
#else
    ownEncodeDXT(
        format, src, step, w, h, dst, PlanesV,
        [](const uint8_t(*ch)[16], const int32_t(*pal)[4]) { return ColourIndicesV<3>(ch, pal); }, ValueIndicesV);
#endif
}

}  // namespace vqcj::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace vqcj {

HWY_EXPORT(EncodeDXT);

// The encoders' checks, in the decoders' order, then one dispatch per image.
VqcStatus ownEncodeDXTImage(int format, const uint8_t* src, uint32_t step, VqciSize roi, uint8_t* dst) {
    return ownEncodeChecked(src, step, roi, dst,
                            [=](int32_t w, int32_t h) { VQCJ_DISPATCH(EncodeDXT)(format, src, step, w, h, dst); });
}

}  // namespace vqcj

using namespace vqcj;

extern "C" {

VQCJ_API VqcStatus vqciTextureEncodeBlockFromRGBA_DXT1_8u_C4C1R(const Vqc8u* pSrc, uint32_t srcStep, VqciSize srcRoi,
                                                                Vqc8u* pDst) {
    return ownEncodeDXTImage(kDXT1, pSrc, srcStep, srcRoi, pDst);
}

VQCJ_API VqcStatus vqciTextureEncodeBlockFromRGBA_DXT3_8u_C4C1R(const Vqc8u* pSrc, uint32_t srcStep, VqciSize srcRoi,
                                                                Vqc8u* pDst) {
    return ownEncodeDXTImage(kDXT3, pSrc, srcStep, srcRoi, pDst);
}

VQCJ_API VqcStatus vqciTextureEncodeBlockFromRGBA_DXT5_8u_C4C1R(const Vqc8u* pSrc, uint32_t srcStep, VqciSize srcRoi,
                                                                Vqc8u* pDst) {
    return ownEncodeDXTImage(kDXT5, pSrc, srcStep, srcRoi, pDst);
}

}  // extern "C"
#endif  // HWY_ONCE
