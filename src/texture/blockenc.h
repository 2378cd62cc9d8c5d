// The fast encoders' shared block pieces: the interpolated value block with
// its truncated thresholds, and the colour index by comparisons only.
#pragma once

#include <cstdint>

#include "texture/texture.h"

namespace vqcj {

// Index from the four L1 distances. This is not "the least distance": it is
// a fixed mesh of strict comparisons, which settles ties its own way and
// needs neither branch nor loop. Four equal distances give 0.
constexpr uint32_t ownColourIndex(int32_t d0, int32_t d1, int32_t d2, int32_t d3) {
    const uint32_t b0 = uint32_t(d0 > d3) & uint32_t(d2 > d3);
    const uint32_t b1 = (uint32_t(d0 > d2) & uint32_t(d1 > d2)) | (uint32_t(d0 > d3) & uint32_t(d1 > d3));
    return b0 | b1 << 1;
}

// Palette entries of one channel from its two expanded endpoints, truncated
// as the decoders compute them.
inline void ownFourColour(int32_t a, int32_t b, int32_t pal[4]) {
    pal[0] = a, pal[1] = b, pal[2] = (2 * a + b) / 3, pal[3] = (a + 2 * b) / 3;
}

// Index word of 16 texels given as C channel planes against a four-entry
// palette (pal[channel][entry]): L1 distances with equal weights, then the
// comparison mesh.
template <int C>
inline uint32_t ownColourIndices(const uint8_t (*ch)[16], const int32_t (*pal)[4]) {
    alignas(16) int16_t d[4][16];
    for (int k = 0; k < 4; ++k)
        for (int i = 0; i < 16; ++i) {
            int16_t sum = 0;
            for (int c = 0; c < C; ++c) {
                const int16_t e = int16_t(ch[c][i] - pal[c][k]);
                sum = int16_t(sum + (e < 0 ? -e : e));
            }
            d[k][i] = sum;
        }
    alignas(16) uint8_t idx[16];
    for (int i = 0; i < 16; ++i) idx[i] = uint8_t(ownColourIndex(d[0][i], d[1][i], d[2][i], d[3][i]));
    return uint32_t(ownPackIndices<2>(idx));
}

// Value block with the given endpoints (a0 = hi >= a1 = lo): the seven
// thresholds are truncated midpoints, not the decoder's rounded table, and
// each value's index is the number of thresholds at or above it, rotated so
// that 0 and 7 land on the endpoints.
// The plain index step of a value block: a[] the 16 values, t[] the seven
// thresholds.
inline void ownValueIndices(const uint8_t* a, const uint8_t* t, uint8_t* idx) {
    alignas(16) uint8_t count[16] = {};
    for (int k = 0; k < 7; ++k)
        for (int i = 0; i < 16; ++i) count[i] = uint8_t(count[i] + (a[i] <= t[k]));
    for (int i = 0; i < 16; ++i) {
        const uint8_t k = uint8_t((count[i] + 1) & 7);
        idx[i] = uint8_t(k ^ (k < 2));
    }
}

template <int Stride, class Indices = decltype(&ownValueIndices)>
inline void ownValueBlockWith(uint32_t hi, uint32_t lo, const uint8_t* v, uint8_t* out,
                              Indices indices = ownValueIndices) {
    const uint32_t mid = (hi - lo) / 14;
    uint8_t t[7];
    t[0] = uint8_t(lo + mid);
    for (uint32_t k = 1; k < 7; ++k) t[k] = uint8_t(((7 - k) * hi + k * lo) / 7 + mid);
    alignas(16) uint8_t a[16], idx[16];
    for (int i = 0; i < 16; ++i) a[i] = v[Stride * i];
    indices(a, t, idx);
    const uint64_t bits = ownPackIndices<3>(idx);
    out[0] = uint8_t(hi), out[1] = uint8_t(lo);
    for (int k = 0; k < 6; ++k) out[2 + k] = uint8_t(bits >> (8 * k));
}

// Value block of one channel of 16 pixels, with its range inset by 1/16.
template <int Stride, class Indices = decltype(&ownValueIndices)>
inline void ownEncodeValueBlock(const uint8_t* v, uint8_t* out, Indices indices = ownValueIndices) {
    uint8_t mn = 255, mx = 0;
    for (int i = 0; i < 16; ++i) {
        mn = v[Stride * i] < mn ? v[Stride * i] : mn;
        mx = v[Stride * i] > mx ? v[Stride * i] : mx;
    }
    const uint32_t inset = uint32_t(mx - mn) >> 4;
    ownValueBlockWith<Stride>(mx - inset, mn + inset, v, out, indices);
}

}  // namespace vqcj
