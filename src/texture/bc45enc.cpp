// BC4, BC5 and YCoCg-in-DXT5 encoders. BC4 and BC5 are the value block of
// the DXT5 encoder, per channel. The YCoCg block stretches its chroma by 1,
// 2 or 4 to use the whole 5:6:5 range, keeps that scale in the blue field,
// and turns the colour line onto the chroma box's other diagonal when most
// pixels lie across it.
//
// The value and colour indices run over the Highway kernels of the DXT
// encoders; the image is dispatched once.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "texture/bc45enc.cpp"
#include <hwy/foreach_target.h>  // must come before highway.h
#include <hwy/highway.h>
#include <vqcj.h>

#include "frame/check.h"
#include "frame/simd.h"
#include "texture/blockenc-inl.h"
#include "texture/blockenc.h"

#ifndef VQCJ_BC45ENC_ONCE
#define VQCJ_BC45ENC_ONCE
namespace vqcj {

namespace {

template <class Values>
void ownEncodeBlockBC4(const uint8_t* px, uint8_t* out, Values values) {
    ownEncodeValueBlock<1>(px, out, values);
}

template <class Values>
void ownEncodeBlockBC5(const uint8_t* px, uint8_t* out, Values values) {
    ownEncodeValueBlock<2>(px, out, values);
    ownEncodeValueBlock<2>(px + 1, out + 8, values);
}

template <class Values, class Indices>
void ownEncodeBlockYCoCg(const uint8_t* src, uint8_t* out, Values values, Indices indices) {
    uint8_t px[48];
    std::memcpy(px, src, 48);
    int32_t mn[3] = {255, 255, 255}, mx[3] = {0, 0, 0};
    for (int i = 0; i < 16; ++i)
        for (int c = 0; c < 3; ++c) {
            const int32_t v = px[3 * i + c];
            mn[c] = v < mn[c] ? v : mn[c];
            mx[c] = v > mx[c] ? v : mx[c];
        }
    int32_t m = 0;
    for (int c = 1; c < 3; ++c) {
        const int32_t a = mx[c] - 128 < 0 ? 128 - mx[c] : mx[c] - 128;
        const int32_t b = mn[c] - 128 < 0 ? 128 - mn[c] : mn[c] - 128;
        m = a > m ? a : m;
        m = b > m ? b : m;
    }
    const int32_t s = m < 32 ? 4 : m < 64 ? 2 : 1;
    auto scale = [s](int32_t v) { return (s * (v - 128) + 128) & 255; };
    for (int i = 0; i < 16; ++i)
        for (int c = 1; c < 3; ++c) px[3 * i + c] = uint8_t(scale(px[3 * i + c]));
    // Inset with four fractional bits; the low corner is not clamped at 0,
    // so a negative sum wraps and expands to 255.
    uint32_t hi[3], lo[3];
    const uint32_t keep[3] = {0, 0xF8, 0xFC}, down[3] = {0, 5, 6};
    for (int c = 1; c < 3; ++c) {
        const int32_t smx = scale(mx[c]), smn = scale(mn[c]);
        const int32_t inset = (smx - smn) - 7;
        int32_t h = ((smx << 4) - inset) >> 4;
        h = h > 255 ? 255 : h;
        const uint32_t l = (uint32_t(smn << 4) + uint32_t(inset)) >> 4 & 255;
        hi[c] = (uint32_t(h) & keep[c]) | (uint32_t(h) >> down[c]);
        lo[c] = (l & keep[c]) | (l >> down[c]);
    }
    const uint32_t midCo = (hi[1] + lo[1] + 1) >> 1, midCg = (hi[2] + lo[2] + 1) >> 1;
    int32_t across = 0;
    for (int i = 0; i < 16; ++i) across += (px[3 * i + 1] >= midCo) != (px[3 * i + 2] >= midCg);
    if (across > 8) {
        const uint32_t t = hi[2];
        hi[2] = lo[2], lo[2] = t;
    }
    // Luma keeps its exact extremes: no inset here.
    ownValueBlockWith<3>(uint32_t(mx[0]), uint32_t(mn[0]), px, out, values);
    const uint32_t c0 = ((hi[1] >> 3) << 11) | ((hi[2] >> 2) << 5) | uint32_t(s - 1);
    const uint32_t c1 = ((lo[1] >> 3) << 11) | ((lo[2] >> 2) << 5) | uint32_t(s - 1);
    int32_t pal[2][4];
    ownFourColour(int32_t(expand5(c0 >> 11)), int32_t(expand5(c1 >> 11)), pal[0]);
    ownFourColour(int32_t(expand6((c0 >> 5) & 63)), int32_t(expand6((c1 >> 5) & 63)), pal[1]);
    alignas(16) uint8_t ch[2][16];
    for (int i = 0; i < 16; ++i) ch[0][i] = px[3 * i + 1], ch[1][i] = px[3 * i + 2];
    st16(out + 8, c0), st16(out + 10, c1), st32(out + 12, indices(ch, pal));
}

enum { kBC4, kBC5, kYCoCg };

template <class Values, class Indices>
void ownEncodeBC45(int format, const uint8_t* src, uint32_t step, int32_t w, int32_t h, uint8_t* dst, Values values,
                   Indices indices) {
    if (format == kBC4)
        ownEncodeWalk<8, 1>(src, step, w, h, dst, [&](const uint8_t* px, uint8_t* o) { ownEncodeBlockBC4(px, o, values); });
    else if (format == kBC5)
        ownEncodeWalk<16, 2>(src, step, w, h, dst, [&](const uint8_t* px, uint8_t* o) { ownEncodeBlockBC5(px, o, values); });
    else
        ownEncodeWalk<16, 3>(src, step, w, h, dst,
                             [&](const uint8_t* px, uint8_t* o) { ownEncodeBlockYCoCg(px, o, values, indices); });
}

}  // namespace

}  // namespace vqcj
#endif  // VQCJ_BC45ENC_ONCE

HWY_BEFORE_NAMESPACE();
namespace vqcj::HWY_NAMESPACE {

void EncodeBC45(int format, const uint8_t* src, uint32_t step, int32_t w, int32_t h, uint8_t* dst) {
#if VQCJ_SIMD_BASELINE
    ownEncodeBC45(format, src, step, w, h, dst, ownValueIndices,
                  [](const uint8_t(*ch)[16], const int32_t(*pal)[4]) { return ownColourIndices<2>(ch, pal); });
#else
    ownEncodeBC45(format, src, step, w, h, dst, ValueIndicesV,
                  [](const uint8_t(*ch)[16], const int32_t(*pal)[4]) { return ColourIndicesV<2>(ch, pal); });
#endif
}

}  // namespace vqcj::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace vqcj {

HWY_EXPORT(EncodeBC45);

VqcStatus ownEncodeBC45Image(int format, const uint8_t* src, uint32_t step, VqciSize roi, uint8_t* dst) {
    return ownEncodeChecked(src, step, roi, dst,
                            [=](int32_t w, int32_t h) { VQCJ_DISPATCH(EncodeBC45)(format, src, step, w, h, dst); });
}

}  // namespace vqcj

using namespace vqcj;

extern "C" {

VQCJ_API VqcStatus vqciTextureEncodeBlock_BC4_8u_C1R(const Vqc8u* pSrc, uint32_t srcStep, VqciSize srcRoi,
                                                     Vqc8u* pDst) {
    return ownEncodeBC45Image(kBC4, pSrc, srcStep, srcRoi, pDst);
}

VQCJ_API VqcStatus vqciTextureEncodeBlockFromRG_BC5_8u_C2C1R(const Vqc8u* pSrc, uint32_t srcStep, VqciSize srcRoi,
                                                             Vqc8u* pDst) {
    return ownEncodeBC45Image(kBC5, pSrc, srcStep, srcRoi, pDst);
}

VQCJ_API VqcStatus vqciTextureEncodeBlockFromYCoCg_DXT5_8u_C3C1R(const Vqc8u* pSrc, uint32_t srcStep,
                                                                 VqciSize srcRoi, Vqc8u* pDst) {
    return ownEncodeBC45Image(kYCoCg, pSrc, srcStep, srcRoi, pDst);
}

}  // extern "C"
#endif  // HWY_ONCE
