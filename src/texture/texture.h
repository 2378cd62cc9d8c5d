// Shared pieces of the texture block codecs: little-endian field access,
// the palette rules, the image walks with partial blocks, and the BC6/BC7
// partition, anchor and weight tables.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "frame/check.h"

namespace vqcj {

inline uint32_t ld16(const uint8_t* p) { return uint32_t(p[0]) | uint32_t(p[1]) << 8; }
inline uint32_t ld32(const uint8_t* p) {
    uint32_t v;
    std::memcpy(&v, p, 4);
    return v;
}
inline uint64_t ld64(const uint8_t* p) {
    uint64_t v;
    std::memcpy(&v, p, 8);
    return v;
}
inline void st16(uint8_t* p, uint32_t v) { p[0] = uint8_t(v), p[1] = uint8_t(v >> 8); }
inline void st32(uint8_t* p, uint32_t v) { std::memcpy(p, &v, 4); }
inline void st64(uint8_t* p, uint64_t v) { std::memcpy(p, &v, 8); }

// 5:6:5 field widened by repeating its top bits, as every decoder and the
// encoders' palettes see it.
constexpr uint32_t expand5(uint32_t f) { return (f << 3) | (f >> 2); }
constexpr uint32_t expand6(uint32_t f) { return (f << 2) | (f >> 4); }

// Sixteen B-bit indices, one a byte, packed texel 0 lowest: the fields are
// merged pairwise inside 64-bit words instead of one at a time.
template <int B>
inline uint64_t ownPackIndices(const uint8_t idx[16]) {
    constexpr uint64_t m1 = ((1ull << (2 * B)) - 1) * 0x0001000100010001ull;
    constexpr uint64_t m2 = ((1ull << (4 * B)) - 1) * 0x0000000100000001ull;
    uint64_t out = 0;
    for (int h = 0; h < 2; ++h) {
        uint64_t x = ld64(idx + 8 * h);
        x = (x | (x >> (8 - B))) & m1;
        x = (x | (x >> (16 - 2 * B))) & m2;
        x = (x | (x >> (32 - 4 * B))) & ((1ull << (8 * B)) - 1);
        out |= x << (8 * B * h);
    }
    return out;
}

// The 8-entry value table of DXT5 alpha, BC4 and each half of BC5. Entries
// are rounded here, unlike the encoder's thresholds.
inline void ownValueTable(uint32_t a0, uint32_t a1, uint8_t t[8]) {
    t[0] = uint8_t(a0), t[1] = uint8_t(a1);
    if (a0 > a1) {
        for (uint32_t k = 1; k < 7; ++k) t[k + 1] = uint8_t(((7 - k) * a0 + k * a1 + 3) / 7);
    } else {
        for (uint32_t k = 1; k < 5; ++k) t[k + 1] = uint8_t(((5 - k) * a0 + k * a1 + 2) / 5);
        t[6] = 0, t[7] = 255;
    }
}

// Whole-image decode into a plain crop: every block goes through a local
// 4x4 buffer of its own pixel format (4*Bpp bytes a row), and the part of it
// inside the image is copied out row by row.
template <int BlockBytes, int Bpp, class F>
inline void ownDecodeWalk(const uint8_t* src, uint8_t* dst, uint32_t step, int32_t w, int32_t h, F block) {
    const int32_t blocksW = (w + 3) / 4, blocksH = (h + 3) / 4;
    const int32_t lastCols = w - 4 * (blocksW - 1), lastRows = h - 4 * (blocksH - 1);
    alignas(16) uint8_t local[16 * Bpp];
    for (int32_t by = 0; by < blocksH; ++by) {
        const int32_t rows = by == blocksH - 1 ? lastRows : 4;
        uint8_t* drow = dst + size_t(4 * by) * step;
        // Whole blocks need no column test.
        const int32_t whole = rows < 4 ? 0 : lastCols < 4 ? blocksW - 1 : blocksW;
        int32_t bx = 0;
        for (; bx < whole; ++bx, src += BlockBytes) {
            block(src, local);
            uint8_t* d = drow + size_t(4 * Bpp) * size_t(bx);
            for (int r = 0; r < 4; ++r) std::memcpy(d + size_t(r) * step, local + 4 * Bpp * r, 4 * Bpp);
        }
        for (; bx < blocksW; ++bx, src += BlockBytes) {
            const int32_t cols = bx == blocksW - 1 ? lastCols : 4;
            block(src, local);
            uint8_t* d = drow + size_t(4 * Bpp) * size_t(bx);
            for (int r = 0; r < rows; ++r) std::memcpy(d + size_t(r) * step, local + 4 * Bpp * r, size_t(cols) * Bpp);
        }
    }
}

// The decoders' checks (pointers, a zero step: the step is unsigned, so
// nothing else is refused; then the size) and their crop walk.
template <int BlockBytes, int Bpp, class F>
inline VqcStatus ownDecodeImage(const uint8_t* src, uint8_t* dst, uint32_t step, VqciSize roi, F block) {
    if (VqcStatus st = Check().ptr(src).ptr(dst).fail(step == 0, vqcStatusBadStep).roi(roi)) return st;
    ownDecodeWalk<BlockBytes, Bpp>(src, dst, step, roi.width, roi.height, block);
    return vqcStatusOk;
}

// Whole-image encode: each block reads a local 4x4 buffer (4*Bpp bytes a
// row); a partial block repeats the last valid pixel of each row and then
// the last valid row, so replicated pixels weigh like real ones.
template <int BlockBytes, int Bpp, class F>
inline void ownEncodeWalk(const uint8_t* src, uint32_t step, int32_t w, int32_t h, uint8_t* dst, F block) {
    const int32_t blocksW = (w + 3) / 4, blocksH = (h + 3) / 4;
    const int32_t lastCols = w - 4 * (blocksW - 1), lastRows = h - 4 * (blocksH - 1);
    alignas(16) uint8_t local[16 * Bpp];
    for (int32_t by = 0; by < blocksH; ++by) {
        const int32_t rows = by == blocksH - 1 ? lastRows : 4;
        const uint8_t* srow = src + size_t(4 * by) * step;
        for (int32_t bx = 0; bx < blocksW; ++bx, dst += BlockBytes) {
            const int32_t cols = bx == blocksW - 1 ? lastCols : 4;
            const uint8_t* s = srow + size_t(4 * Bpp) * size_t(bx);
            if ((rows & cols) == 4) {
                for (int r = 0; r < 4; ++r) std::memcpy(local + 4 * Bpp * r, s + size_t(r) * step, 4 * Bpp);
            } else {
                for (int r = 0; r < rows; ++r) {
                    uint8_t* l = local + 4 * Bpp * r;
                    std::memcpy(l, s + size_t(r) * step, size_t(cols) * Bpp);
                    // A forward byte copy repeats the last pixel across the rest.
                    for (int k = Bpp * cols; k < 4 * Bpp; ++k) l[k] = l[k - Bpp];
                }
                for (int r = rows; r < 4; ++r) std::memcpy(local + 4 * Bpp * r, local + 4 * Bpp * (r - 1), 4 * Bpp);
            }
            block(local, dst);
        }
    }
}

// The encoders' checks, in the decoders' order; then `run(width, height)`.
template <class F>
inline VqcStatus ownEncodeChecked(const uint8_t* src, uint32_t step, VqciSize roi, const uint8_t* dst, F run) {
    if (VqcStatus st = Check().ptr(src).ptr(dst).fail(step == 0, vqcStatusBadStep).roi(roi)) return st;
    run(roi.width, roi.height);
    return vqcStatusOk;
}

// ---- BC6H and BC7 tables ----------------------------------------------------

inline constexpr uint8_t kBC7Weights2[4] = {0, 21, 43, 64};
inline constexpr uint8_t kBC7Weights3[8] = {0, 9, 18, 27, 37, 46, 55, 64};
inline constexpr uint8_t kBC7Weights4[16] = {0, 4, 9, 13, 17, 21, 26, 30, 34, 38, 43, 47, 51, 55, 60, 64};
inline constexpr const uint8_t* kBC7Weights[5] = {nullptr, nullptr, kBC7Weights2, kBC7Weights3, kBC7Weights4};

// Two-subset partitions: bit i set where texel i is in subset 1.
inline constexpr uint16_t kBC7Part2[64] = {
    0xCCCC, 0x8888, 0xEEEE, 0xECC8, 0xC880, 0xFEEC, 0xFEC8, 0xEC80,
    0xC800, 0xFFEC, 0xFE80, 0xE800, 0xFFE8, 0xFF00, 0xFFF0, 0xF000,
    0xF710, 0x008E, 0x7100, 0x08CE, 0x008C, 0x7310, 0x3100, 0x8CCE,
    0x088C, 0x3110, 0x6666, 0x366C, 0x17E8, 0x0FF0, 0x718E, 0x399C,
    0xAAAA, 0xF0F0, 0x5A5A, 0x33CC, 0x3C3C, 0x55AA, 0x9696, 0xA55A,
    0x73CE, 0x13C8, 0x324C, 0x3BDC, 0x6996, 0xC33C, 0x9966, 0x0660,
    0x0272, 0x04E4, 0x4E40, 0x2720, 0xC936, 0x936C, 0x39C6, 0x639C,
    0x9336, 0x9CC6, 0x817E, 0xE718, 0xCCF0, 0x0FCC, 0x7744, 0xEE22,
};
// Three-subset partitions: texel i's subset in bits 2i+1..2i.
inline constexpr uint32_t kBC7Part3[64] = {
    0xAA685050u, 0x6A5A5040u, 0x5A5A4200u, 0x5450A0A8u, 0xA5A50000u, 0xA0A05050u,
    0x5555A0A0u, 0x5A5A5050u, 0xAA550000u, 0xAA555500u, 0xAAAA5500u, 0x90909090u,
    0x94949494u, 0xA4A4A4A4u, 0xA9A59450u, 0x2A0A4250u, 0xA5945040u, 0x0A425054u,
    0xA5A5A500u, 0x55A0A0A0u, 0xA8A85454u, 0x6A6A4040u, 0xA4A45000u, 0x1A1A0500u,
    0x0050A4A4u, 0xAAA59090u, 0x14696914u, 0x69691400u, 0xA08585A0u, 0xAA821414u,
    0x50A4A450u, 0x6A5A0200u, 0xA9A58000u, 0x5090A0A8u, 0xA8A09050u, 0x24242424u,
    0x00AA5500u, 0x24924924u, 0x24499224u, 0x50A50A50u, 0x500AA550u, 0xAAAA4444u,
    0x66660000u, 0xA5A0A5A0u, 0x50A050A0u, 0x69286928u, 0x44AAAA44u, 0x66666600u,
    0xAA444444u, 0x54A854A8u, 0x95809580u, 0x96969600u, 0xA85454A8u, 0x80959580u,
    0xAA141414u, 0x96960000u, 0xAAAA1414u, 0xA05050A0u, 0xA0A5A5A0u, 0x96000000u,
    0x40804080u, 0xA9A8A9A8u, 0xAAAAAA44u, 0x2A4A5254u,
};
// Anchor texel of subset 1 in the two-subset partitions.
inline constexpr uint8_t kBC7Anchor2[64] = {
    15, 15, 15, 15, 15, 15, 15, 15, 15, 15, 15, 15, 15, 15, 15, 15,
    15, 2, 8, 2, 2, 8, 8, 15, 2, 8, 2, 2, 8, 8, 2, 2,
    15, 15, 6, 8, 2, 8, 15, 15, 2, 8, 2, 2, 2, 15, 15, 6,
    6, 2, 6, 8, 15, 15, 2, 2, 15, 15, 15, 15, 15, 2, 2, 15,
};
// Anchor texels of subsets 1 and 2 in the three-subset partitions.
inline constexpr uint8_t kBC7Anchor3a[64] = {
    3, 3, 15, 15, 8, 3, 15, 15, 8, 8, 6, 6, 6, 5, 3, 3,
    3, 3, 8, 15, 3, 3, 6, 10, 5, 8, 8, 6, 8, 5, 15, 15,
    8, 15, 3, 5, 6, 10, 8, 15, 15, 3, 15, 5, 15, 15, 15, 15,
    3, 15, 5, 5, 5, 8, 5, 10, 5, 10, 8, 13, 15, 12, 3, 3,
};
inline constexpr uint8_t kBC7Anchor3b[64] = {
    15, 8, 8, 3, 15, 15, 3, 8, 15, 15, 15, 15, 15, 15, 15, 8,
    15, 8, 15, 3, 15, 8, 15, 8, 3, 15, 6, 10, 15, 15, 10, 8,
    15, 3, 15, 10, 10, 8, 9, 10, 6, 15, 8, 15, 3, 6, 6, 8,
    15, 3, 15, 15, 15, 15, 15, 15, 15, 15, 15, 15, 3, 15, 15, 8,
};

// Subset of texel i under partition p for 1, 2 or 3 subsets.
constexpr int ownSubset(int subsets, int p, int i) {
    return subsets == 1 ? 0 : subsets == 2 ? (kBC7Part2[p] >> i) & 1 : int(kBC7Part3[p] >> (2 * i)) & 3;
}
// Anchor texel of subset s under partition p.
constexpr int ownAnchor(int subsets, int p, int s) {
    return s == 0 ? 0 : subsets == 2 ? kBC7Anchor2[p] : s == 1 ? kBC7Anchor3a[p] : kBC7Anchor3b[p];
}

// A 64-bit window of a 128-bit little-endian block starting at bit `at`.
inline uint64_t ownBits128(uint64_t lo, uint64_t hi, int at) {
    return at >= 64 ? hi >> (at - 64) : at == 0 ? lo : (lo >> at) | (hi << (64 - at));
}

// Index field unpacking with the anchors' implied top bit: texel 0 and the
// texels A1, A2 (0 where absent) read one bit less. Straight-line once the
// template is instantiated for an anchor class.
template <int Bits, int A1, int A2>
inline void ownUnpackIndices(uint64_t f, uint8_t idx[16]) {
    int at = 0;
#pragma GCC unroll 16
    for (int i = 0; i < 16; ++i) {
        const int n = (i == 0 || i == A1 || i == A2) ? Bits - 1 : Bits;
        idx[i] = uint8_t((f >> at) & ((1u << n) - 1));
        at += n;
    }
}

}  // namespace vqcj
