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
namespace hn = hwy::HWY_NAMESPACE;

// The index word of 16 texels from three channel planes: L1 distances to
// the four entries in 16-bit lanes, then the comparison mesh on masks.
uint32_t ColourIndicesV(const uint8_t (*ch)[16], const int32_t (*pal)[4]) {
    const hn::CappedTag<int16_t, 16> d;
    const hn::Rebind<uint8_t, decltype(d)> d8;
    const size_t n = hn::Lanes(d);
    alignas(16) uint8_t idx[16];
    for (size_t i0 = 0; i0 < 16; i0 += n) {
        auto d0 = hn::Zero(d), d1 = d0, d2 = d0, d3 = d0;
        for (int c = 0; c < 3; ++c) {
            const auto v = hn::PromoteTo(d, hn::LoadU(d8, ch[c] + i0));
            d0 = hn::Add(d0, hn::Abs(hn::Sub(v, hn::Set(d, int16_t(pal[c][0])))));
            d1 = hn::Add(d1, hn::Abs(hn::Sub(v, hn::Set(d, int16_t(pal[c][1])))));
            d2 = hn::Add(d2, hn::Abs(hn::Sub(v, hn::Set(d, int16_t(pal[c][2])))));
            d3 = hn::Add(d3, hn::Abs(hn::Sub(v, hn::Set(d, int16_t(pal[c][3])))));
        }
        const auto b0 = hn::And(hn::Gt(d0, d3), hn::Gt(d2, d3));
        const auto b1 = hn::Or(hn::And(hn::Gt(d0, d2), hn::Gt(d1, d2)), hn::And(hn::Gt(d0, d3), hn::Gt(d1, d3)));
        const auto v = hn::Or(hn::IfThenElseZero(b0, hn::Set(d, 1)), hn::IfThenElseZero(b1, hn::Set(d, 2)));
        hn::StoreU(hn::DemoteTo(d8, v), d8, idx + i0);
    }
    return uint32_t(ownPackIndices<2>(idx));
}

#if !VQCJ_SIMD_BASELINE
// Value indices of 16 bytes: the count of thresholds at or above each, in
// byte lanes, rotated so that counts 0 and 7 land on the endpoints.
void ValueIndicesV(const uint8_t* a, const uint8_t* t, uint8_t* idx) {
    const hn::FixedTag<uint8_t, 16> d8;
    const auto v = hn::Load(d8, a);
    auto count = hn::Zero(d8);
    for (int k = 0; k < 7; ++k) count = hn::Sub(count, hn::VecFromMask(d8, hn::Not(hn::Gt(v, hn::Set(d8, t[k])))));
    auto r = hn::And(hn::Add(count, hn::Set(d8, 1)), hn::Set(d8, 7));
    r = hn::Xor(r, hn::IfThenElseZero(hn::Lt(r, hn::Set(d8, 2)), hn::Set(d8, 1)));
    hn::Store(r, d8, idx);
}

// Four planes by one interleaved load.
void PlanesV(const uint8_t* px, uint8_t (*ch)[16]) {
    const hn::FixedTag<uint8_t, 16> d8;
    hn::Vec<decltype(d8)> r, g, b, a;
    hn::LoadInterleaved4(d8, px, r, g, b, a);
    hn::Store(r, d8, ch[0]), hn::Store(g, d8, ch[1]), hn::Store(b, d8, ch[2]), hn::Store(a, d8, ch[3]);
}
#endif

void EncodeDXT(int format, const uint8_t* src, uint32_t step, int32_t w, int32_t h, uint8_t* dst) {
#if VQCJ_SIMD_BASELINE
    ownEncodeDXT(
        format, src, step, w, h, dst, ownPlanes,
        [](const uint8_t(*ch)[16], const int32_t(*pal)[4]) { return ownColourIndices<3>(ch, pal); }, ownValueIndices);
#else
    ownEncodeDXT(
        format, src, step, w, h, dst, PlanesV,
        [](const uint8_t(*ch)[16], const int32_t(*pal)[4]) { return ColourIndicesV(ch, pal); }, ValueIndicesV);
#endif
}

}  // namespace vqcj::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace vqcj {

HWY_EXPORT(EncodeDXT);

// The encoders' checks, in the decoders' order, then one dispatch per image.
VqcStatus ownEncodeDXTImage(int format, const uint8_t* src, uint32_t step, VqciSize roi, uint8_t* dst) {
    if (VqcStatus st = Check().ptr(src).ptr(dst).fail(step == 0, vqcStatusBadStep).roi(roi)) return st;
    VQCJ_DISPATCH(EncodeDXT)(format, src, step, roi.width, roi.height, dst);
    return vqcStatusOk;
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
