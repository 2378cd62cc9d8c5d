// Adaptive coding state: code tables, their adaptation, and the scan tables.
#include "jpegxr/vlcstate.h"

#include "frame/check.h"
#include "frame/wrap.h"

#include <algorithm>
#include <array>
#include <climits>

namespace vqcj::jxr {
namespace {

// Codes written as they are read, leftmost bit first; the encoding and
// decoding forms are both derived from these strings when the library is
// built, so the two can never disagree.
constexpr const char* kCodeText[kNumCodeTables + 1] = {
    "",
    "1 01 000 001",                                                              // 4
    "1 01 001 0000 0001",                                                        // 5
    "1 000 001 010 011",                                                         //
    "1 00000 001 00001 01 0001",                                                 // 6
    "01 0000 10 0001 11 001",                                                    //
    "0000 0001 01 10 11 001",                                                    //
    "00000 00001 01 1 0001 001",                                                 //
    "01 10 11 001 0001 00000 00001",                                             // 7
    "1 01 001 0001 00001 000000 000001",                                         //
    "10 001 00001 0001 11 010 00000 011",                                        // 8
    "010 00000 0010 00001 00010 1 011 00011 0011",                               // 9
    "1 001 010 0001 000001 011 00001 0000000 0000001",                           //
    "00001 000001 0000000 0000001 00100 010 00101 1 00110 0001 00111 011",       // 12
    "0010 00010 000000 000001 0011 010 00011 11 011 100 00001 101",              //
    "11 001 0000000 0000001 00001 010 0000010 011 100 101 0000011 0001",         //
    "001 11 0000000 00001 00010 010 0000001 011 00011 100 000001 101",           //
    "010 1 0000001 0001 0000010 011 00000000 0010 0000011 0011 00000001 00001",  //
};

constexpr CodeTable parseCodes(const char* s) {
    CodeTable t{};
    int n = 0;
    while (*s) {
        if (*s == ' ') {
            ++s;
            continue;
        }
        int32_t code = 0, len = 0;
        for (; *s == '0' || *s == '1'; ++s, ++len) code = code * 2 + (*s - '0');
        t.enc[1 + 2 * n] = code;
        t.enc[2 + 2 * n] = len;
        for (int b = 0; b < 256; ++b)
            if ((b >> (8 - len)) == code) t.dec[b] = static_cast<uint8_t>(n << 4 | len);
        ++n;
    }
    t.enc[0] = n;
    return t;
}

constexpr std::array<CodeTable, kNumCodeTables + 1> buildTables() {
    std::array<CodeTable, kNumCodeTables + 1> a{};
    for (int i = 1; i <= kNumCodeTables; ++i) a[i] = parseCodes(kCodeText[i]);
    return a;
}

constexpr auto kBuilt = buildTables();

}  // namespace

constexpr CodeTable kCodeTables[kNumCodeTables + 1] = {
    kBuilt[0],  kBuilt[1],  kBuilt[2],  kBuilt[3],  kBuilt[4],  kBuilt[5],  kBuilt[6],  kBuilt[7],  kBuilt[8],
    kBuilt[9],  kBuilt[10], kBuilt[11], kBuilt[12], kBuilt[13], kBuilt[14], kBuilt[15], kBuilt[16], kBuilt[17]};

constexpr int32_t kDeltaRows[kNumDeltaRows + 1][12] = {
    {},
    {0, -1, 0, 1, 1},                             // 5
    {1, 0, -1, -1, -1, -1, -1},                   // 7
    {2, 2, 1, 1, -1, -2, -2, -2, -3},             // 9
    {-1, 1, 1, 1, 0, 1},                          // 6, rows 1 to 3
    {-2, 0, 0, 2, 0, 0},                          //
    {-1, -1, 0, 1, -2, 0},                        //
    {1, 1, 1, 1, 1, 0, 0, -1, 2, 1, 0, 0},        // 12, rows 1 to 4
    {2, 2, -1, -1, -1, 0, -2, -1, 0, 0, -2, -1},  //
    {-1, 1, 0, 2, 0, 0, 0, 0, -2, 0, 1, 1},       //
    {0, 1, 0, 1, -2, 0, -1, -1, -2, -1, -2, -2},  //
};

namespace {

// Per alphabet size: first code table handle, tables that exist, tables the
// adaptation rule counts (8 counts 2 with one in existence, kept as it is),
// second discriminant, first table index, delta handles.
struct Alphabet {
    int8_t firstHandle, existing, tables, secondDisc, firstIndex;
    int8_t delta1[5], delta2[5];
};
constexpr Alphabet kNone{};
constexpr Alphabet kAlphabet[13] = {
    kNone, kNone, kNone, kNone,
    {1, 1, 1, 0, 0, {}, {}},                                  // 4
    {2, 2, 2, 0, 0, {1, 1}, {}},                              // 5
    {4, 4, 4, 1, 1, {4, 4, 5, 6}, {4, 5, 6, 6}},              // 6
    {8, 2, 2, 0, 0, {2, 2}, {}},                              // 7
    {10, 1, 2, 0, 0, {}, {}},                                 // 8
    {11, 2, 2, 0, 0, {3, 3}, {}},                             // 9
    kNone, kNone,
    {13, 5, 5, 1, 1, {7, 7, 8, 9, 10}, {7, 8, 9, 10, 10}},   // 12
};

constexpr int32_t kSymbolCount[kNumContexts] = {5, 4, 8, 7, 7, 12, 6, 6, 12, 6, 6, 7, 7, 12, 6, 6, 12, 6, 6, 7, 7};

constexpr uint8_t kScanOrder[3][16] = {
    {0, 10, 2, 12, 5, 9, 4, 8, 1, 13, 6, 15, 14, 3, 11, 7},
    {0, 5, 10, 12, 1, 2, 8, 4, 6, 9, 3, 14, 13, 7, 11, 15},
    {0, 1, 4, 5, 2, 8, 6, 9, 3, 12, 10, 7, 13, 11, 14, 15},
};
constexpr uint8_t kColumn[16] = {0, 1, 0, 1, 3, 2, 3, 2, 0, 1, 0, 1, 3, 2, 3, 2};
constexpr uint8_t kRow[16] = {0, 0, 1, 1, 0, 0, 1, 1, 3, 3, 2, 2, 3, 3, 2, 2};

constexpr int32_t kThreshold = 8;
constexpr int32_t kClamp = 64;

void ownVLCAdaptContext(VqciVLCState* s, int ctx) {
    VqciVLCContext& c = s->contexts[ctx];
    const int32_t sym = c.symbolCount;
    const bool known = sym >= 0 && sym <= 12;
    const Alphabet& a = known ? kAlphabet[sym] : kNone;
    int32_t& d1 = s->discriminant1[ctx];
    int32_t& d2 = s->discriminant2[ctx];
    if (c.initialised == 0) {
        c.tableIndex = a.firstIndex;
        c.initialised = 1;
        d1 = d2 = 0;
    }
    // Down is driven by the first discriminant, up by the second where the
    // alphabet has one.
    const int32_t up = a.secondDisc ? d2 : d1;
    if (d1 < c.lowerBound) {
        c.tableIndex -= 1;
        d1 = d2 = 0;
    } else if (up > c.upperBound) {
        c.tableIndex += 1;
        d1 = d2 = 0;
    } else {
        d1 = std::min(std::max(d1, -kClamp), kClamp);
        d2 = std::min(std::max(d2, -kClamp), kClamp);
    }
    const int32_t t = c.tableIndex;
    c.lowerBound = t == 0 ? INT32_MIN : -kThreshold;
    c.upperBound = t == a.tables - 1 ? (1 << 30) : kThreshold;
    if (a.firstHandle == 0) return;
    // Out-of-range indices (only reachable through a forged record) stay on
    // the nearest existing table.
    const int32_t ti = std::min(std::max(t, 0), a.existing - 1);
    const uint32_t h = static_cast<uint32_t>(a.firstHandle + ti);
    s->encodeTable[ctx] = h;
    s->decodeTable[ctx] = h;
    s->decodeTableAlt[ctx] = h;
    const int32_t di = std::min(ti, 4);
    s->delta1[ctx] = static_cast<uint32_t>(a.delta1[di]);
    s->delta2[ctx] = static_cast<uint32_t>(a.delta2[di]);
}

void ownVLCAdaptBand(VqciVLCState* s, int band) {
    if (band == 0) {
        ownVLCAdaptContext(s, 0);
        for (int k = 5; k <= 12; ++k) ownVLCAdaptContext(s, k);
    } else {
        for (int k = 13; k <= 20; ++k) ownVLCAdaptContext(s, k);
    }
}

// Walks scan 2 and turns a low-pass block into run-level pairs.
int32_t ownVLCScanDC(VqciVLCState* s, const int32_t* pSrc, uint32_t modelBits, int32_t* pResidual,
                     int32_t* pRunLevel) {
    s->currentScan = scanOffset(2);
    VqciVLCScanEntry* scan = s->scanTables[2];
    const uint32_t m = (1u << modelBits) - 1;
    int32_t pairs = 0, run = 0;
    if (modelBits != 0) {
        for (uint32_t e = 1; e < 16; ++e) {
            const uint32_t idx = scan[e].index & 15;
            const int32_t v = pSrc[idx];
            const uint32_t a = v < 0 ? 0u - static_cast<uint32_t>(v) : static_cast<uint32_t>(v);
            if (a > m) {
                pResidual[idx] = static_cast<int32_t>((a & m) << 1);
                const int32_t lev = static_cast<int32_t>(a >> modelBits);
                pRunLevel[2 * pairs] = run;
                pRunLevel[2 * pairs + 1] = v < 0 ? -lev : lev;
                ++pairs;
                run = 0;
                scanHit<2>(scan, e);
            } else {
                pResidual[idx] = static_cast<int32_t>(a << 2 | (a != 0) | (v < 0 ? 2u : 0u));
                ++run;
            }
        }
        return pairs;
    }
    bool swap = false;
    for (uint32_t e = 1; e < 16; ++e) {
        const int32_t v = pSrc[scan[e].index & 15];
        if (v != 0) {
            pRunLevel[2 * pairs] = run;
            pRunLevel[2 * pairs + 1] = v;
            ++pairs;
            run = 0;
            const uint32_t c = ++scan[e].count;
            swap |= e >= 2 && c > scan[e - 1].count;
        } else {
            ++run;
        }
    }
    if (swap) deferredSwaps(scan, [&](const VqciVLCScanEntry& en) { return pSrc[en.index & 15] != 0; });
    return pairs;
}

}  // namespace

}  // namespace vqcj::jxr

using namespace vqcj;
using namespace vqcj::jxr;

extern "C" {

VQCJ_API VqcStatus vqciVLCGetStateSize_JPEGXR(int32_t* size) {
    if (VqcStatus st = Check().ptr(size)) return st;
    *size = static_cast<int32_t>(sizeof(VqciVLCState));
    return vqcStatusOk;
}

VQCJ_API VqcStatus vqciVLCInit_JPEGXR(VqciVLCState* pState) {
    if (VqcStatus st = Check().ptr(pState)) return st;
    for (int k = 0; k < kNumContexts; ++k) {
        pState->contexts[k] = VqciVLCContext{kSymbolCount[k], 0, 0, 0, 0};
        pState->discriminant1[k] = 0;
    }
    ownVLCAdaptBand(pState, 0);
    ownVLCAdaptBand(pState, 1);
    pState->currentScan = scanOffset(2);
    for (int k = 0; k < kNumContexts; ++k) pState->contexts[k].initialised = 0;
    ownVLCAdaptBand(pState, 0);
    ownVLCAdaptBand(pState, 1);
    for (int t = 0; t < 3; ++t) {
        for (int e = 0; e < 16; ++e) {
            VqciVLCScanEntry& en = pState->scanTables[t][e];
            const uint32_t idx = kScanOrder[t][e];
            en.index = idx;
            en.column = kColumn[idx];
            en.row = kRow[idx];
        }
    }
    return vqcStatusOk;
}

VQCJ_API VqcStatus vqciVLCAdapt_JPEGXR(VqciVLCState* pState, int32_t band) {
    if (VqcStatus st = Check().ptr(pState).fail(band != 0 && band != 1, vqcStatusBadRange)) return st;
    ownVLCAdaptBand(pState, band);
    return vqcStatusOk;
}

VQCJ_API VqcStatus vqciVLCScanReset_JPEGXR(VqciVLCState* pState, int32_t scan) {
    if (VqcStatus st = Check().ptr(pState).fail(scan < 0 || scan > 2, vqcStatusBadRange)) return st;
    VqciVLCScanEntry* t = pState->scanTables[scan];
    t[0].count = 32767;
    for (uint32_t e = 1; e < 16; ++e) t[e].count = 34 - 2 * e;
    return vqcStatusOk;
}

VQCJ_API VqcStatus vqciVLCScanSet_JPEGXR(VqciVLCState* pState, uint32_t scan) {
    if (VqcStatus st = Check().ptr(pState).fail(scan > 2, vqcStatusBadRange)) return st;
    pState->currentScan = scanOffset(scan);
    return vqcStatusOk;
}

VQCJ_API VqcStatus vqciVLCScan4x4DC_JPEGXR_32s(const Vqc32s* pSrc, uint32_t modelBits, Vqc32s* pResidual,
                                               Vqc32s* pRunLevel, int32_t* pNumPairs, VqciVLCState* pState) {
    if (VqcStatus st = Check()
                           .ptr(pState)
                           .ptr(pSrc)
                           .ptr(pResidual)
                           .ptr(pRunLevel)
                           .ptr(pNumPairs)
                           .fail(modelBits > 15, vqcStatusBadRange))
        return st;
    *pNumPairs = ownVLCScanDC(pState, pSrc, modelBits, pResidual, pRunLevel);
    return vqcStatusOk;
}

}  // extern "C"

static_assert(sizeof(VqciVLCState) == 1780, "the record keeps one size on every target");
