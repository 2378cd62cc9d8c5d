// BC7 decoder. Each mode is its own instantiation, so field positions are
// constants, and each anchor class has its own straight-line index unpack.
#include <vqcj.h>

#include "frame/check.h"
#include "texture/bc7.h"
#include "texture/texture.h"

namespace vqcj {

namespace {

template <int Bits>
inline void unpackTwo(uint64_t f, int a, uint8_t idx[16]) {
    switch (a) {
        case 2: ownUnpackIndices<Bits, 2, 0>(f, idx); break;
        case 6: ownUnpackIndices<Bits, 6, 0>(f, idx); break;
        case 8: ownUnpackIndices<Bits, 8, 0>(f, idx); break;
        default: ownUnpackIndices<Bits, 15, 0>(f, idx); break;
    }
}

template <int Bits>
inline void unpackThree(uint64_t f, int a, int b, uint8_t idx[16]) {
    const int lo = a < b ? a : b, hi = a < b ? b : a;
    switch (lo * 16 + hi) {
#define VQCJ_PAIR(x, y) \
    case x * 16 + y: ownUnpackIndices<Bits, x, y>(f, idx); break;
        VQCJ_PAIR(3, 5) VQCJ_PAIR(3, 8) VQCJ_PAIR(3, 15) VQCJ_PAIR(5, 10) VQCJ_PAIR(5, 15) VQCJ_PAIR(6, 8)
        VQCJ_PAIR(6, 10) VQCJ_PAIR(6, 15) VQCJ_PAIR(8, 9) VQCJ_PAIR(8, 10) VQCJ_PAIR(8, 15) VQCJ_PAIR(10, 15)
        VQCJ_PAIR(12, 15)
        default: ownUnpackIndices<Bits, 13, 15>(f, idx); break;
#undef VQCJ_PAIR
    }
}

constexpr uint32_t widen(uint32_t v, int n) { return n >= 8 ? v : (v << (8 - n)) | (v >> (2 * n - 8)); }

inline uint32_t lerp(uint32_t e0, uint32_t e1, uint32_t w) { return ((64 - w) * e0 + w * e1 + 32) >> 6; }

template <int M>
void decodeMode(uint64_t lo, uint64_t hi, uint32_t px[16]) {
    constexpr BC7Mode m = kBC7Modes[M];
    constexpr int ns = m.subsets, ends = 2 * ns;
    constexpr int chans = m.alphaPrec ? 4 : 3;
    int at = M + 1;
    auto take = [&](int n) {
        const uint32_t v = uint32_t(ownBits128(lo, hi, at) & ((uint64_t(1) << n) - 1));
        at += n;
        return v;
    };
    const int part = int(take(m.partBits));
    const int rot = int(take(m.rotBits));
    const int sel = int(take(m.selBits));
    uint32_t ep[ends][4];
#pragma GCC unroll 4
    for (int c = 0; c < chans; ++c)
#pragma GCC unroll 6
        for (int j = 0; j < ends; ++j) ep[j][c] = take(c < 3 ? m.colorPrec : m.alphaPrec);
    if constexpr (m.pBits > 0) {
        uint32_t p[6];
        for (int k = 0; k < m.pBits; ++k) p[k] = take(1);
        for (int j = 0; j < ends; ++j)
            for (int c = 0; c < chans; ++c)
                ep[j][c] = widen(ep[j][c] << 1 | p[ownBC7PBitOf(m, j)], (c < 3 ? m.colorPrec : m.alphaPrec) + 1);
    } else {
        for (int j = 0; j < ends; ++j)
            for (int c = 0; c < chans; ++c) ep[j][c] = widen(ep[j][c], c < 3 ? m.colorPrec : m.alphaPrec);
    }
    if constexpr (chans == 3)
        for (int j = 0; j < ends; ++j) ep[j][3] = 255;

    uint8_t idx[16];
    const uint64_t f = ownBits128(lo, hi, at);
    if constexpr (ns == 1) ownUnpackIndices<m.idxBits, 0, 0>(f, idx);
    else if constexpr (ns == 2) unpackTwo<m.idxBits>(f, kBC7Anchor2[part], idx);
    else unpackThree<m.idxBits>(f, kBC7Anchor3a[part], kBC7Anchor3b[part], idx);

    if constexpr (m.idx2Bits == 0) {
        // One index for all four channels: a palette per subset, then lookups.
        constexpr int entries = 1 << m.idxBits;
        const uint8_t* w = kBC7Weights[m.idxBits];
        uint32_t pal[ns][entries];
        for (int s = 0; s < ns; ++s)
            for (int k = 0; k < entries; ++k) {
                uint32_t v = 0;
                for (int c = 0; c < 4; ++c) v |= lerp(ep[2 * s][c], ep[2 * s + 1][c], w[k]) << (8 * c);
                pal[s][k] = v;
            }
        for (int i = 0; i < 16; ++i) px[i] = pal[ownSubset(ns, part, i)][idx[i]];
    } else {
        // Separate colour and alpha indices, then the rotation exchanges A
        // with the named channel.
        uint8_t idx2[16];
        ownUnpackIndices<m.idx2Bits, 0, 0>(ownBits128(lo, hi, at + 16 * m.idxBits - 1), idx2);
        const uint8_t* ci = sel ? idx2 : idx;
        const uint8_t* ai = sel ? idx : idx2;
        const int cb = sel ? m.idx2Bits : m.idxBits, ab = sel ? m.idxBits : m.idx2Bits;
        const uint8_t *cw = kBC7Weights[cb], *aw = kBC7Weights[ab];
        uint32_t cpal[8], apal[8];
        for (int k = 0; k < (1 << cb); ++k)
            cpal[k] = lerp(ep[0][0], ep[1][0], cw[k]) | lerp(ep[0][1], ep[1][1], cw[k]) << 8 |
                      lerp(ep[0][2], ep[1][2], cw[k]) << 16;
        for (int k = 0; k < (1 << ab); ++k) apal[k] = lerp(ep[0][3], ep[1][3], aw[k]);
        const int sh = 8 * (rot - 1);
        for (int i = 0; i < 16; ++i) {
            uint32_t v = cpal[ci[i]], a = apal[ai[i]];
            if (rot) {
                const uint32_t c = (v >> sh) & 255;
                v = (v & ~(255u << sh)) | a << sh;
                a = c;
            }
            px[i] = v | a << 24;
        }
    }
}

// A block whose first byte is 0 has no mode and decodes to transparent black.
void ownDecodeBlockBC7(const uint8_t* b, uint8_t* out) {
    alignas(16) uint32_t px[16];
    const uint64_t lo = ld64(b), hi = ld64(b + 8);
    switch (b[0] ? __builtin_ctz(b[0]) : 8) {
        case 0: decodeMode<0>(lo, hi, px); break;
        case 1: decodeMode<1>(lo, hi, px); break;
        case 2: decodeMode<2>(lo, hi, px); break;
        case 3: decodeMode<3>(lo, hi, px); break;
        case 4: decodeMode<4>(lo, hi, px); break;
        case 5: decodeMode<5>(lo, hi, px); break;
        case 6: decodeMode<6>(lo, hi, px); break;
        case 7: decodeMode<7>(lo, hi, px); break;
        default: std::memset(px, 0, sizeof px); break;
    }
    std::memcpy(out, px, 64);
}

}  // namespace

}  // namespace vqcj

using namespace vqcj;

extern "C" VQCJ_API VqcStatus vqciTextureDecodeBlockToRGBA_BC7_8u_C1C4R(const Vqc8u* pSrc, Vqc8u* pDst,
                                                                        uint32_t dstStep, VqciSize dstRoi) {
    return ownDecodeImage<16, 4>(pSrc, pDst, dstStep, dstRoi, [](const uint8_t* b, uint8_t* o) { ownDecodeBlockBC7(b, o); });
}
