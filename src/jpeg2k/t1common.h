// Tier-1 code-block coding shared by the encoder and the decoder: the flag
// word layout, the 19 contexts, the context tables and the MQ state table.
//
// One 32-bit flag word holds two vertically adjacent coefficients, the even
// row in the low half and the odd row in the high half, so a stripe of four
// rows is two words high. The buffer has one spare word left and right and
// one spare row above and below, so neighbour updates need no border test.
#pragma once

#include <vqcj.h>

#include <array>
#include <cstdint>

namespace vqcj::t1 {

// Bits of one half word.
constexpr uint32_t kNW = 1u << 0;  // diagonal neighbours significant
constexpr uint32_t kNE = 1u << 1;
constexpr uint32_t kSW = 1u << 2;
constexpr uint32_t kSE = 1u << 3;
constexpr uint32_t kS = 1u << 4;  // neighbour below significant
constexpr uint32_t kN = 1u << 5;  // above
constexpr uint32_t kE = 1u << 6;  // right
constexpr uint32_t kW = 1u << 7;  // left
constexpr uint32_t kRefined = 1u << 8;
constexpr uint32_t kSgnS = 1u << 9;  // negative sign of the direct neighbours
constexpr uint32_t kSgnN = 1u << 10;
constexpr uint32_t kSgnE = 1u << 11;
constexpr uint32_t kSgnW = 1u << 12;
constexpr uint32_t kNbr = 1u << 13;  // some neighbour significant
constexpr uint32_t kVisit = 1u << 14;  // coded in this plane's significance pass
constexpr uint32_t kSig = 1u << 15;

constexpr uint32_t kTagEncode = 0x4C4D5344u;  // "DSML"
constexpr uint32_t kTagDecode = 0x434D4150u;  // "PAMC"

// codeStyleFlags
enum : int32_t {
    kVCausal = 1,
    kBypass = 2,
    kTermAll = 4,
    kReset = 8,
    kSegSym = 16,
    kLossless = 32,
};

constexpr int kCtxUni = 0, kCtxRun = 1;
constexpr int kNumCtx = 19;

// Flag rows: 4 * width + 8 bytes rounded up to 32, (height + 1) / 2 + 2 rows.
// Both in 64 bits, so that no width or height can overflow them.
constexpr int64_t flagStrideBytes(int64_t w) { return 4 * w + 8 + ((-8 - 4 * w) & 31); }
constexpr int64_t flagRows(int64_t h) { return (h + 1) / 2 + 2; }
constexpr int64_t flagBufferBytes(int64_t w, int64_t h) { return flagStrideBytes(w) * flagRows(h); }

// MQ probability states: Qe, next on MPS, next on LPS, switch.
constexpr uint32_t kMqStates[47][4] = {
    {0x5601, 1, 1, 1},   {0x3401, 2, 6, 0},   {0x1801, 3, 9, 0},   {0x0AC1, 4, 12, 0},
    {0x0521, 5, 29, 0},  {0x0221, 38, 33, 0}, {0x5601, 7, 6, 1},   {0x5401, 8, 14, 0},
    {0x4801, 9, 14, 0},  {0x3801, 10, 14, 0}, {0x3001, 11, 17, 0}, {0x2401, 12, 18, 0},
    {0x1C01, 13, 20, 0}, {0x1601, 29, 21, 0}, {0x5601, 15, 14, 1}, {0x5401, 16, 14, 0},
    {0x5101, 17, 15, 0}, {0x4801, 18, 16, 0}, {0x3801, 19, 17, 0}, {0x3401, 20, 18, 0},
    {0x3001, 21, 19, 0}, {0x2801, 22, 19, 0}, {0x2401, 23, 20, 0}, {0x2201, 24, 21, 0},
    {0x1C01, 25, 22, 0}, {0x1801, 26, 23, 0}, {0x1601, 27, 24, 0}, {0x1401, 28, 25, 0},
    {0x1201, 29, 26, 0}, {0x1101, 30, 27, 0}, {0x0AC1, 31, 28, 0}, {0x09C1, 32, 29, 0},
    {0x08A1, 33, 30, 0}, {0x0521, 34, 31, 0}, {0x0441, 35, 32, 0}, {0x02A1, 36, 33, 0},
    {0x0221, 37, 34, 0}, {0x0141, 38, 35, 0}, {0x0111, 39, 36, 0}, {0x0085, 40, 37, 0},
    {0x0049, 41, 38, 0}, {0x0025, 42, 39, 0}, {0x0015, 43, 40, 0}, {0x0009, 44, 41, 0},
    {0x0005, 45, 42, 0}, {0x0001, 45, 43, 0}, {0x5601, 46, 46, 0},
};

// The coders keep a context as one byte, state * 2 + MPS, and step through
// this expanded table so that a switch costs no branch.
struct MqStep {
    uint16_t qe;
    uint8_t nmps, nlps;  // next context byte after an MPS, after an LPS
};
constexpr std::array<MqStep, 94> makeMqSteps() {
    std::array<MqStep, 94> t{};
    for (uint32_t s = 0; s < 47; ++s)
        for (uint32_t mps = 0; mps < 2; ++mps) {
            const uint32_t lpsMps = kMqStates[s][3] ? 1 - mps : mps;
            t[s * 2 + mps] = {static_cast<uint16_t>(kMqStates[s][0]),
                              static_cast<uint8_t>(kMqStates[s][1] * 2 + mps),
                              static_cast<uint8_t>(kMqStates[s][2] * 2 + lpsMps)};
        }
    return t;
}
inline constexpr std::array<MqStep, 94> kMqSteps = makeMqSteps();

// Initial context bytes: uniform 46, run-length 3, first zero-coding 4.
inline void resetContexts(uint8_t* ctx) {
    for (int i = 0; i < kNumCtx; ++i) ctx[i] = 0;
    ctx[kCtxUni] = 46 * 2;
    ctx[kCtxRun] = 3 * 2;
    ctx[2] = 4 * 2;
}

// Zero coding contexts 2..10 from flag bits 0..7, for the default
// orientation, the one with horizontal and vertical swapped, and diagonal.
constexpr uint8_t zcContext(uint32_t f, int kind) {
    const int d = ((f & kNW) != 0) + ((f & kNE) != 0) + ((f & kSW) != 0) + ((f & kSE) != 0);
    int v = ((f & kS) != 0) + ((f & kN) != 0);
    int h = ((f & kE) != 0) + ((f & kW) != 0);
    int c = 0;
    if (kind == 1) {
        const int t = h;
        h = v;
        v = t;
    }
    if (kind == 2) {
        const int hv = h + v;
        if (d >= 3) c = 8;
        else if (d == 2) c = hv >= 1 ? 7 : 6;
        else if (d == 1) c = hv >= 2 ? 5 : (hv == 1 ? 4 : 3);
        else c = hv >= 2 ? 2 : hv;
    } else {
        if (h == 2) c = 8;
        else if (h == 1) c = v >= 1 ? 7 : (d >= 1 ? 6 : 5);
        else if (v >= 1) c = 2 + v;
        else c = d >= 2 ? 2 : d;
    }
    return static_cast<uint8_t>(c + 2);
}
constexpr std::array<uint8_t, 768> makeZc() {
    std::array<uint8_t, 768> t{};
    for (int k = 0; k < 3; ++k)
        for (uint32_t f = 0; f < 256; ++f) t[k * 256 + f] = zcContext(f, k);
    return t;
}
inline constexpr std::array<uint8_t, 768> kZc = makeZc();

// subband 2 swaps horizontal and vertical, 3 is diagonal, the rest default.
inline const uint8_t* zcTable(int32_t subband) {
    return kZc.data() + (subband == 2 ? 256 : subband == 3 ? 512 : 0);
}

// Sign coding from flag bits 4..12: context 11..15 in the low bits, the
// value XORed with the sign in bit 31.
constexpr std::array<uint32_t, 512> makeSc() {
    std::array<uint32_t, 512> t{};
    for (uint32_t j = 0; j < 511; ++j) {
        const uint32_t f = j << 4;
        auto contrib = [&](uint32_t sig, uint32_t neg) { return (f & sig) ? ((f & neg) ? -1 : 1) : 0; };
        int h = contrib(kE, kSgnE) + contrib(kW, kSgnW);
        int v = contrib(kS, kSgnS) + contrib(kN, kSgnN);
        h = h > 1 ? 1 : h < -1 ? -1 : h;
        v = v > 1 ? 1 : v < -1 ? -1 : v;
        uint32_t ctx = 0, x = 0;
        if (h == 0) {
            ctx = v == 0 ? 9 : 10;
            x = v < 0;
        } else {
            ctx = h * v == 0 ? 12 : (h * v > 0 ? 13 : 11);  // same signs 13, mixed 11
            x = h < 0;
        }
        t[j] = (ctx + 2) | (x << 31);
    }
    return t;
}
inline constexpr std::array<uint32_t, 512> kSc = makeSc();

// Magnitude refinement: 16 first refinement alone, 17 with a significant
// neighbour, 18 once refined.
constexpr std::array<uint8_t, 512> makeMr() {
    std::array<uint8_t, 512> t{};
    for (uint32_t f = 0; f < 512; ++f) t[f] = (f & kRefined) ? 18 : (f & 0xFF) ? 17 : 16;
    return t;
}
inline constexpr std::array<uint8_t, 512> kMr = makeMr();

// Neighbour updates when the coefficient at word p becomes significant,
// one OR per word. Even rows sit in the low half and touch the word row
// above; odd rows sit in the high half and touch the word row below.
inline void markSignificant(uint32_t* p, int32_t stride, int odd, uint32_t neg, bool skipAbove) {
    const uint32_t sE = neg ? kSgnE : 0, sW = neg ? kSgnW : 0, sN = neg ? kSgnN : 0, sS = neg ? kSgnS : 0;
    if (!odd) {
        p[-1] |= (kE | kNbr | sE) | ((kNE | kNbr) << 16);
        p[0] |= kSig | ((kN | kNbr | sN) << 16);
        p[1] |= (kW | kNbr | sW) | ((kNW | kNbr) << 16);
        if (!skipAbove) {
            uint32_t* a = p - stride;
            a[-1] |= (kSE | kNbr) << 16;
            a[0] |= (kS | kNbr | sS) << 16;
            a[1] |= (kSW | kNbr) << 16;
        }
    } else {
        p[-1] |= ((kE | kNbr | sE) << 16) | (kSE | kNbr);
        p[0] |= (kSig << 16) | (kS | kNbr | sS);
        p[1] |= ((kW | kNbr | sW) << 16) | (kSW | kNbr);
        uint32_t* b = p + stride;
        b[-1] |= kNE | kNbr;
        b[0] |= kN | kNbr | sN;
        b[1] |= kNW | kNbr;
    }
}

// Calls col(p0, rows, sample) for every stripe column in scan order: p0 the
// flag word of its first two rows, rows its height (4 but in the last
// stripe), sample the address of its first coefficient.
template <class Ptr, class Col>
[[gnu::always_inline]] inline void eachColumn(int w, int h, uint32_t* fl, int32_t fs, Ptr base, int32_t step,
                                              Col&& col) {
    for (int s = 0; s < h; s += 4) {
        const int rows = h - s < 4 ? h - s : 4;
        uint32_t* f0 = fl + (s >> 1) * fs;
        Ptr row0 = base + static_cast<intptr_t>(s) * step;
        for (int c = 0; c < w; ++c) col(f0 + c, rows, row0 + 4 * c);
    }
}

// Column tests on the two words of a stripe column: some insignificant
// coefficient with a significant neighbour; some significant coefficient.
constexpr bool hasSigCandidate(uint32_t a, uint32_t b) {
    return (((a & ~(a >> 2)) | (b & ~(b >> 2))) & ((kNbr << 16) | kNbr)) != 0;
}
constexpr bool hasSignificant(uint32_t a, uint32_t b) { return ((a | b) & ((kSig << 16) | kSig)) != 0; }
constexpr uint32_t kVisit2 = (kVisit << 16) | kVisit;

// After a cleanup column, nothing counts as coded in this plane any more.
inline void clearVisits(uint32_t* p0, int32_t fs) {
    if ((p0[0] | p0[fs]) & kVisit2) {
        p0[0] &= ~kVisit2;
        p0[fs] &= ~kVisit2;
    }
}

// Calls row(p, sh, sample, i) for rows `from` to `rows - 1` of one stripe
// column: p its flag word, sh the half (0 or 16), sample the coefficient's
// address. A full stripe is unrolled so that word and half are constants.
template <class Ptr, class Row>
[[gnu::always_inline]] inline void eachRow(int rows, int from, uint32_t* p0, int32_t fs, Ptr col, int32_t step,
                                           Row&& row) {
    const intptr_t st = step;
    if (rows == 4 && from == 0) {
        row(p0, 0, col, 0);
        row(p0, 16, col + st, 1);
        row(p0 + fs, 0, col + 2 * st, 2);
        row(p0 + fs, 16, col + 3 * st, 3);
    } else {
        for (int i = from; i < rows; ++i) row(p0 + (i >> 1) * fs, (i & 1) * 16, col + i * st, i);
    }
}

}  // namespace vqcj::t1
