// DXT1, DXT3, DXT5, BC4 and BC5 decoders. The palettes truncate where other
// decoders round, DXT1's three-colour entry 3 is opaque white, and DXT3
// alpha keeps its low nibble clear: the pairing with this library's
// encoders, which keep the top four bits of alpha, depends on it.
#include <vqcj.h>

#include "frame/check.h"
#include "texture/texture.h"

namespace vqcj {

namespace {

inline uint32_t rgbaOf(uint32_t c) {
    return expand5(c >> 11) | expand6((c >> 5) & 63) << 8 | expand5(c & 31) << 16 | 0xFF000000u;
}

// Colour palette as RGBA words; `allowThree` is DXT1's choice by the order
// of the endpoints, DXT3 and DXT5 always take four colours.
inline void colourPalette(const uint8_t* b, bool allowThree, uint32_t pal[4]) {
    const uint32_t c0 = ld16(b), c1 = ld16(b + 2);
    const uint32_t p0 = rgbaOf(c0), p1 = rgbaOf(c1);
    pal[0] = p0, pal[1] = p1;
    uint32_t p2 = 0xFF000000u, p3 = 0xFF000000u;
    if (allowThree && c1 >= c0) {
        for (int s = 0; s < 24; s += 8) p2 |= ((((p0 >> s) & 255) + ((p1 >> s) & 255)) >> 1) << s;
        p3 = 0xFFFFFFFFu;
    } else {
        for (int s = 0; s < 24; s += 8) {
            const uint32_t a = (p0 >> s) & 255, c = (p1 >> s) & 255;
            p2 |= ((2 * a + c) / 3) << s;
            p3 |= ((a + 2 * c) / 3) << s;
        }
    }
    pal[2] = p2, pal[3] = p3;
}

inline void colourTexels(const uint8_t* b, const uint32_t pal[4], uint32_t px[16]) {
    const uint32_t idx = ld32(b + 4);
    for (int i = 0; i < 16; ++i) px[i] = pal[(idx >> (2 * i)) & 3];
}

// One interpolated value block, `stride` bytes apart in the output.
template <int Stride>
inline void valueBlock(const uint8_t* b, uint8_t* out) {
    uint8_t t[8];
    ownValueTable(b[0], b[1], t);
    const uint64_t idx = ld64(b) >> 16;
    for (int i = 0; i < 16; ++i) out[Stride * i] = t[(idx >> (3 * i)) & 7];
}

void ownDecodeBlockDXT1(const uint8_t* b, uint8_t* out) {
    uint32_t pal[4], px[16];
    colourPalette(b, true, pal);
    colourTexels(b, pal, px);
    std::memcpy(out, px, 64);
}

void ownDecodeBlockDXT3(const uint8_t* b, uint8_t* out) {
    uint32_t pal[4], px[16];
    colourPalette(b + 8, false, pal);
    colourTexels(b + 8, pal, px);
    for (int j = 0; j < 8; ++j) {
        px[2 * j] = (px[2 * j] & 0x00FFFFFFu) | uint32_t(b[j] & 15) << 28;
        px[2 * j + 1] = (px[2 * j + 1] & 0x00FFFFFFu) | uint32_t(b[j] >> 4) << 28;
    }
    std::memcpy(out, px, 64);
}

void ownDecodeBlockDXT5(const uint8_t* b, uint8_t* out) {
    uint32_t pal[4], px[16];
    colourPalette(b + 8, false, pal);
    colourTexels(b + 8, pal, px);
    std::memcpy(out, px, 64);
    valueBlock<4>(b, out + 3);
}

void ownDecodeBlockBC4(const uint8_t* b, uint8_t* out) { valueBlock<1>(b, out); }

void ownDecodeBlockBC5(const uint8_t* b, uint8_t* out) {
    valueBlock<2>(b, out);
    valueBlock<2>(b + 8, out + 1);
}

}  // namespace

}  // namespace vqcj

using namespace vqcj;

extern "C" {

VQCJ_API VqcStatus vqciTextureDecodeBlockToRGBA_DXT1_8u_C1C4R(const Vqc8u* pSrc, Vqc8u* pDst, uint32_t dstStep,
                                                              VqciSize dstRoi) {
    return ownDecodeImage<8, 4>(pSrc, pDst, dstStep, dstRoi, [](const uint8_t* b, uint8_t* o) { ownDecodeBlockDXT1(b, o); });
}

VQCJ_API VqcStatus vqciTextureDecodeBlockToRGBA_DXT3_8u_C1C4R(const Vqc8u* pSrc, Vqc8u* pDst, uint32_t dstStep,
                                                              VqciSize dstRoi) {
    return ownDecodeImage<16, 4>(pSrc, pDst, dstStep, dstRoi, [](const uint8_t* b, uint8_t* o) { ownDecodeBlockDXT3(b, o); });
}

VQCJ_API VqcStatus vqciTextureDecodeBlockToRGBA_DXT5_8u_C1C4R(const Vqc8u* pSrc, Vqc8u* pDst, uint32_t dstStep,
                                                              VqciSize dstRoi) {
    return ownDecodeImage<16, 4>(pSrc, pDst, dstStep, dstRoi, [](const uint8_t* b, uint8_t* o) { ownDecodeBlockDXT5(b, o); });
}

VQCJ_API VqcStatus vqciTextureDecodeBlock_BC4_8u_C1R(const Vqc8u* pSrc, Vqc8u* pDst, uint32_t dstStep,
                                                     VqciSize dstRoi) {
    return ownDecodeImage<8, 1>(pSrc, pDst, dstStep, dstRoi, [](const uint8_t* b, uint8_t* o) { ownDecodeBlockBC4(b, o); });
}

VQCJ_API VqcStatus vqciTextureDecodeBlockToRG_BC5_8u_C1C2R(const Vqc8u* pSrc, Vqc8u* pDst, uint32_t dstStep,
                                                           VqciSize dstRoi) {
    return ownDecodeImage<16, 2>(pSrc, pDst, dstStep, dstRoi, [](const uint8_t* b, uint8_t* o) { ownDecodeBlockBC5(b, o); });
}

}  // extern "C"
