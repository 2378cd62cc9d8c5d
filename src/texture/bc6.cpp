// BC6H decoders, signed and unsigned. Each of the 14 modes is its own
// instantiation over a table of bit runs (field, first field bit, first
// block bit, length), so endpoint extraction is straight-line shifts.
//
// The partial-block walk is kept as this library has always done it: the
// block goes to a local buffer 16 bytes a row although a row is 24 bytes,
// and the edge pixels are read back with the strides below. Callers that
// need exact edges pad to a multiple of 4.
#include <vqcj.h>

#include "frame/check.h"
#include "frame/wrap.h"
#include "texture/texture.h"

namespace vqcj {

namespace {

struct BC6Run {
    uint8_t field;  // rw gw bw rx gx bx ry gy by rz gz bz
    uint8_t bit;    // first bit of the field
    uint8_t at;     // first bit in the block
    uint8_t len;
};

// The published bit placement of every mode. Modes 11 and 12 store their
// base high bits after the delta in reverse order; mode 13 in straight order.
inline constexpr BC6Run kBC6Runs[14][22] = {
    {{7, 4, 2, 1}, {8, 4, 3, 1}, {11, 4, 4, 1}, {0, 0, 5, 10}, {1, 0, 15, 10}, {2, 0, 25, 10}, {3, 0, 35, 5}, {10, 4, 40, 1}, {7, 0, 41, 4}, {4, 0, 45, 5}, {11, 0, 50, 1}, {10, 0, 51, 4}, {5, 0, 55, 5}, {11, 1, 60, 1}, {8, 0, 61, 4}, {6, 0, 65, 5}, {11, 2, 70, 1}, {9, 0, 71, 5}, {11, 3, 76, 1}},
    {{7, 5, 2, 1}, {10, 4, 3, 2}, {0, 0, 5, 7}, {11, 0, 12, 2}, {8, 4, 14, 1}, {1, 0, 15, 7}, {8, 5, 22, 1}, {11, 2, 23, 1}, {7, 4, 24, 1}, {2, 0, 25, 7}, {11, 3, 32, 1}, {11, 5, 33, 1}, {11, 4, 34, 1}, {3, 0, 35, 6}, {7, 0, 41, 4}, {4, 0, 45, 6}, {10, 0, 51, 4}, {5, 0, 55, 6}, {8, 0, 61, 4}, {6, 0, 65, 6}, {9, 0, 71, 6}},
    {{0, 0, 5, 10}, {1, 0, 15, 10}, {2, 0, 25, 10}, {3, 0, 35, 5}, {0, 10, 40, 1}, {7, 0, 41, 4}, {4, 0, 45, 4}, {1, 10, 49, 1}, {11, 0, 50, 1}, {10, 0, 51, 4}, {5, 0, 55, 4}, {2, 10, 59, 1}, {11, 1, 60, 1}, {8, 0, 61, 4}, {6, 0, 65, 5}, {11, 2, 70, 1}, {9, 0, 71, 5}, {11, 3, 76, 1}},
    {{0, 0, 5, 10}, {1, 0, 15, 10}, {2, 0, 25, 10}, {3, 0, 35, 4}, {0, 10, 39, 1}, {10, 4, 40, 1}, {7, 0, 41, 4}, {4, 0, 45, 5}, {1, 10, 50, 1}, {10, 0, 51, 4}, {5, 0, 55, 4}, {2, 10, 59, 1}, {11, 1, 60, 1}, {8, 0, 61, 4}, {6, 0, 65, 4}, {11, 0, 69, 1}, {11, 2, 70, 1}, {9, 0, 71, 4}, {7, 4, 75, 1}, {11, 3, 76, 1}},
    {{0, 0, 5, 10}, {1, 0, 15, 10}, {2, 0, 25, 10}, {3, 0, 35, 4}, {0, 10, 39, 1}, {8, 4, 40, 1}, {7, 0, 41, 4}, {4, 0, 45, 4}, {1, 10, 49, 1}, {11, 0, 50, 1}, {10, 0, 51, 4}, {5, 0, 55, 5}, {2, 10, 60, 1}, {8, 0, 61, 4}, {6, 0, 65, 4}, {11, 1, 69, 2}, {9, 0, 71, 4}, {11, 4, 75, 1}, {11, 3, 76, 1}},
    {{0, 0, 5, 9}, {8, 4, 14, 1}, {1, 0, 15, 9}, {7, 4, 24, 1}, {2, 0, 25, 9}, {11, 4, 34, 1}, {3, 0, 35, 5}, {10, 4, 40, 1}, {7, 0, 41, 4}, {4, 0, 45, 5}, {11, 0, 50, 1}, {10, 0, 51, 4}, {5, 0, 55, 5}, {11, 1, 60, 1}, {8, 0, 61, 4}, {6, 0, 65, 5}, {11, 2, 70, 1}, {9, 0, 71, 5}, {11, 3, 76, 1}},
    {{0, 0, 5, 8}, {10, 4, 13, 1}, {8, 4, 14, 1}, {1, 0, 15, 8}, {11, 2, 23, 1}, {7, 4, 24, 1}, {2, 0, 25, 8}, {11, 3, 33, 2}, {3, 0, 35, 6}, {7, 0, 41, 4}, {4, 0, 45, 5}, {11, 0, 50, 1}, {10, 0, 51, 4}, {5, 0, 55, 5}, {11, 1, 60, 1}, {8, 0, 61, 4}, {6, 0, 65, 6}, {9, 0, 71, 6}},
    {{0, 0, 5, 8}, {11, 0, 13, 1}, {8, 4, 14, 1}, {1, 0, 15, 8}, {7, 5, 23, 1}, {7, 4, 24, 1}, {2, 0, 25, 8}, {10, 5, 33, 1}, {11, 4, 34, 1}, {3, 0, 35, 5}, {10, 4, 40, 1}, {7, 0, 41, 4}, {4, 0, 45, 6}, {10, 0, 51, 4}, {5, 0, 55, 5}, {11, 1, 60, 1}, {8, 0, 61, 4}, {6, 0, 65, 5}, {11, 2, 70, 1}, {9, 0, 71, 5}, {11, 3, 76, 1}},
    {{0, 0, 5, 8}, {11, 1, 13, 1}, {8, 4, 14, 1}, {1, 0, 15, 8}, {8, 5, 23, 1}, {7, 4, 24, 1}, {2, 0, 25, 8}, {11, 5, 33, 1}, {11, 4, 34, 1}, {3, 0, 35, 5}, {10, 4, 40, 1}, {7, 0, 41, 4}, {4, 0, 45, 5}, {11, 0, 50, 1}, {10, 0, 51, 4}, {5, 0, 55, 6}, {8, 0, 61, 4}, {6, 0, 65, 5}, {11, 2, 70, 1}, {9, 0, 71, 5}, {11, 3, 76, 1}},
    {{0, 0, 5, 6}, {10, 4, 11, 1}, {11, 0, 12, 2}, {8, 4, 14, 1}, {1, 0, 15, 6}, {7, 5, 21, 1}, {8, 5, 22, 1}, {11, 2, 23, 1}, {7, 4, 24, 1}, {2, 0, 25, 6}, {10, 5, 31, 1}, {11, 3, 32, 1}, {11, 5, 33, 1}, {11, 4, 34, 1}, {3, 0, 35, 6}, {7, 0, 41, 4}, {4, 0, 45, 6}, {10, 0, 51, 4}, {5, 0, 55, 6}, {8, 0, 61, 4}, {6, 0, 65, 6}, {9, 0, 71, 6}},
    {{0, 0, 5, 10}, {1, 0, 15, 10}, {2, 0, 25, 10}, {3, 0, 35, 10}, {4, 0, 45, 10}, {5, 0, 55, 10}},
    {{0, 0, 5, 10}, {1, 0, 15, 10}, {2, 0, 25, 10}, {3, 0, 35, 9}, {0, 10, 44, 1}, {4, 0, 45, 9}, {1, 10, 54, 1}, {5, 0, 55, 9}, {2, 10, 64, 1}},
    {{0, 0, 5, 10}, {1, 0, 15, 10}, {2, 0, 25, 10}, {3, 0, 35, 8}, {0, 11, 43, 1}, {0, 10, 44, 1}, {4, 0, 45, 8}, {1, 11, 53, 1}, {1, 10, 54, 1}, {5, 0, 55, 8}, {2, 11, 63, 1}, {2, 10, 64, 1}},
    {{0, 0, 5, 10}, {1, 0, 15, 10}, {2, 0, 25, 10}, {3, 0, 35, 4}, {0, 10, 39, 6}, {4, 0, 45, 4}, {1, 10, 49, 6}, {5, 0, 55, 4}, {2, 10, 59, 6}},
};
inline constexpr uint8_t kBC6RunCount[14] = {19, 21, 18, 20, 19, 19, 18, 21, 21, 22, 6, 9, 12, 9};

struct BC6Mode {
    int subsets, prec, delta[3];
    bool transformed;
};
inline constexpr BC6Mode kBC6Modes[14] = {
    {2, 10, {5, 5, 5}, true},   {2, 7, {6, 6, 6}, true},    {2, 11, {5, 4, 4}, true}, {2, 11, {4, 5, 4}, true},
    {2, 11, {4, 4, 5}, true},   {2, 9, {5, 5, 5}, true},    {2, 8, {6, 5, 5}, true},  {2, 8, {5, 6, 5}, true},
    {2, 8, {5, 5, 6}, true},    {2, 6, {6, 6, 6}, false},   {1, 10, {10, 10, 10}, false},
    {1, 11, {9, 9, 9}, true},   {1, 12, {8, 8, 8}, true},   {1, 16, {4, 4, 4}, true},
};

// Mode by byte 0: the low two bits where they are 00 or 01, else the low
// five; -1 for the four reserved codes.
constexpr int bc6ModeOf(int b) {
    if ((b & 3) < 2) return b & 3;
    constexpr int byLow5[32] = {-1, -1, 2, 10, -1, -1, 3, 11, -1, -1, 4, 12, -1, -1, 5, 13,
                                -1, -1, 6, -1, -1, -1, 7, -1, -1, -1, 8, -1, -1, -1, 9, -1};
    return byLow5[b & 31];
}
struct ModeTable {
    int8_t m[256];
};
constexpr ModeTable makeModeTable() {
    ModeTable t{};
    for (int b = 0; b < 256; ++b) t.m[b] = int8_t(bc6ModeOf(b));
    return t;
}
constexpr ModeTable kBC6ModeOf = makeModeTable();

constexpr int32_t signExtend(uint32_t v, int n) { return int32_t(v << (32 - n)) >> (32 - n); }

// A transformed endpoint: base plus delta, kept to prec bits when the sum is
// not negative, and left negative (with its sign bits set above prec)
// otherwise.
constexpr int32_t wrapSum(int32_t s, int prec) {
    return s < 0 ? int32_t(uint32_t(s) | (0u - (1u << (prec + 1)))) : s & ((1 << prec) - 1);
}

// Written as selects, not branches: endpoint signs are data.
inline int32_t ownBC6UnquantizeS(int32_t v, int prec) {
    if (prec >= 16) return v;
    const int32_t neg = v >> 31, m = (v ^ neg) - neg;
    int32_t q = int32_t((uint32_t(m) << 15) + 16384) >> (prec - 1);
    q = m == (1 << (prec - 1)) - 1 ? 32767 : q;
    q = m == 0 ? 0 : q;
    return (q ^ neg) - neg;
}

inline int32_t ownBC6UnquantizeU(int32_t v, int prec) {
    if (prec >= 15 || v == 0) return v;
    if (v == (1 << prec) - 1) return 65535;
    return addW(shlW(v, 16), 32768) >> prec;
}

// Endpoints stay within 18 bits, so none of these products can overflow.
void ownBC6PaletteS(int32_t e0, int32_t e1, const uint8_t* w, int n, uint16_t* pal) {
    for (int k = 0; k < n; ++k) {
        const int32_t t = ((e1 - e0) * w[k] + e0 * 64 + 32) >> 6;
        // Sign and magnitude without a branch: a magnitude that rounds to 0
        // carries no sign.
        const int32_t mag = ((t < 0 ? -t : t) * 31) >> 5;
        pal[k] = uint16_t(mag + (int32_t((t < 0) & (mag != 0)) << 15));
    }
}

void ownBC6PaletteU(int32_t e0, int32_t e1, const uint8_t* w, int n, uint16_t* pal) {
    for (int k = 0; k < n; ++k) {
        const uint32_t t = ((uint32_t(e1) - uint32_t(e0)) * w[k] + (uint32_t(e0) << 6) + 32) >> 6;
        pal[k] = uint16_t((t * 31) >> 6);
    }
}

template <bool Signed, int M>
void decodeMode(uint64_t lo, uint64_t hi, uint8_t* dst, size_t step) {
    constexpr BC6Mode m = kBC6Modes[M];
    constexpr int ns = m.subsets, ib = ns == 2 ? 3 : 4, entries = 1 << ib;
    uint32_t f[12] = {};
#pragma GCC unroll 22
    for (int r = 0; r < kBC6RunCount[M]; ++r) {
        const BC6Run run = kBC6Runs[M][r];
        f[run.field] |= uint32_t(ownBits128(lo, hi, run.at) & ((1u << run.len) - 1)) << run.bit;
    }
    uint16_t pal[ns][3][entries];
    uint64_t rgb[ns][entries];  // the three channels of an entry in one word
    for (int c = 0; c < 3; ++c) {
        int32_t e[4];
        e[0] = Signed ? signExtend(f[c], m.prec) : int32_t(f[c]);
        for (int j = 1; j < 2 * ns; ++j) {
            const uint32_t d = f[3 * j + c];
            e[j] = (Signed || m.transformed) ? signExtend(d, m.delta[c]) : int32_t(d);
            if (m.transformed) e[j] = wrapSum(addW(e[0], e[j]), m.prec);
        }
        for (int j = 0; j < 2 * ns; ++j) e[j] = Signed ? ownBC6UnquantizeS(e[j], m.prec) : ownBC6UnquantizeU(e[j], m.prec);
        for (int s = 0; s < ns; ++s) {
            if constexpr (Signed) ownBC6PaletteS(e[2 * s], e[2 * s + 1], kBC7Weights[ib], entries, pal[s][c]);
            else ownBC6PaletteU(e[2 * s], e[2 * s + 1], kBC7Weights[ib], entries, pal[s][c]);
        }
    }
    uint8_t idx[16];
    int part = 0;
    if constexpr (ns == 2) {
        part = int(ownBits128(lo, hi, 77) & 31);
        const uint64_t fi = ownBits128(lo, hi, 82);
        switch (kBC7Anchor2[part]) {
            case 2: ownUnpackIndices<3, 2, 0>(fi, idx); break;
            case 8: ownUnpackIndices<3, 8, 0>(fi, idx); break;
            default: ownUnpackIndices<3, 15, 0>(fi, idx); break;
        }
    } else {
        ownUnpackIndices<4, 0, 0>(ownBits128(lo, hi, 65), idx);
    }
    for (int s = 0; s < ns; ++s)
        for (int k = 0; k < entries; ++k)
            rgb[s][k] = uint64_t(pal[s][0][k]) | uint64_t(pal[s][1][k]) << 16 | uint64_t(pal[s][2][k]) << 32;
    const uint32_t mask = ns == 2 ? kBC7Part2[part] : 0;
    // Straight to the row: the first three texels as 8-byte stores, each
    // spilling 2 bytes into the next texel, which is written after it; the
    // last one exactly, so nothing beyond the row's 24 bytes is touched.
    for (int r = 0; r < 4; ++r) {
        uint8_t* d = dst + size_t(r) * step;
        for (int c = 0; c < 3; ++c) st64(d + 6 * c, rgb[(mask >> (4 * r + c)) & 1][idx[4 * r + c]]);
        const uint64_t last = rgb[(mask >> (4 * r + 3)) & 1][idx[4 * r + 3]];
        st32(d + 18, uint32_t(last)), st16(d + 22, uint32_t(last >> 32));
    }
}

template <bool Signed>
const uint8_t* decodeBlock(const uint8_t* b, uint8_t* dst, size_t step) {
    const uint64_t lo = ld64(b), hi = ld64(b + 8);
    switch (kBC6ModeOf.m[b[0]]) {
#define VQCJ_MODE(k) \
    case k: decodeMode<Signed, k>(lo, hi, dst, step); break;
        VQCJ_MODE(0) VQCJ_MODE(1) VQCJ_MODE(2) VQCJ_MODE(3) VQCJ_MODE(4) VQCJ_MODE(5) VQCJ_MODE(6)
        VQCJ_MODE(7) VQCJ_MODE(8) VQCJ_MODE(9) VQCJ_MODE(10) VQCJ_MODE(11) VQCJ_MODE(12) VQCJ_MODE(13)
#undef VQCJ_MODE
        default:
            for (int r = 0; r < 4; ++r) std::memset(dst + size_t(r) * step, 0, 24);
            break;
    }
    return b + 16;
}

const uint8_t* ownDecodeBlockBC6S(const uint8_t* b, uint8_t* dst, size_t step) { return decodeBlock<true>(b, dst, step); }
const uint8_t* ownDecodeBlockBC6U(const uint8_t* b, uint8_t* dst, size_t step) { return decodeBlock<false>(b, dst, step); }

template <class F>
void walk(const uint8_t* src, uint8_t* dst, size_t step, int32_t w, int32_t h, F block) {
    // Only 72 bytes are ever written; the rest reads back as this fill.
    uint8_t local[96] = {};
    auto right = [&](uint8_t* d, int32_t n, int32_t rows) {
        src = block(src, local, 16);
        for (int32_t r = 0; r < rows; ++r)
            for (int32_t c = 0; c < n; ++c)
                std::memcpy(d + size_t(r) * step + 6 * size_t(c), local + r * (6 * n + 8) + 6 * c, 6);
    };
    int32_t y = 0;
    for (; y < h - 3; y += 4) {
        uint8_t* row = dst + size_t(y) * step;
        int32_t x = 0;
        for (; x < w - 3; x += 4) src = block(src, row + 6 * size_t(x), step);
        if (x < w) right(row + 6 * size_t(x), w - x, 4);
    }
    if (y < h) {
        uint8_t* row = dst + size_t(y) * step;
        int32_t x = 0;
        for (; x < w - 3; x += 4) {
            src = block(src, local, 16);
            for (int32_t r = 0; r < h - y; ++r) std::memcpy(row + size_t(r) * step + 6 * size_t(x), local + 32 * r, 24);
        }
        if (x < w) right(row + 6 * size_t(x), w - x, h - y);
    }
}

}  // namespace

}  // namespace vqcj

using namespace vqcj;

extern "C" {

VQCJ_API VqcStatus vqciTextureDecodeBlockToRGB_BC6_16s_C1C3R(const Vqc8u* pSrc, Vqc16s* pDst, uint32_t dstStep,
                                                             VqciSize dstRoi) {
    if (VqcStatus st = Check().ptr(pSrc).ptr(pDst).fail(dstStep == 0, vqcStatusBadStep).roi(dstRoi)) return st;
    walk(pSrc, reinterpret_cast<uint8_t*>(pDst), dstStep, dstRoi.width, dstRoi.height, ownDecodeBlockBC6S);
    return vqcStatusOk;
}

VQCJ_API VqcStatus vqciTextureDecodeBlockToRGB_BC6_16u_C1C3R(const Vqc8u* pSrc, Vqc16u* pDst, uint32_t dstStep,
                                                             VqciSize dstRoi) {
    if (VqcStatus st = Check().ptr(pSrc).ptr(pDst).fail(dstStep == 0, vqcStatusBadStep).roi(dstRoi)) return st;
    walk(pSrc, reinterpret_cast<uint8_t*>(pDst), dstStep, dstRoi.width, dstRoi.height, ownDecodeBlockBC6U);
    return vqcStatusOk;
}

}  // extern "C"
