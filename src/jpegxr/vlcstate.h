// Private view of the adaptive coding state: the constant code, decoding and
// delta tables that the state's handles name, and the scan update that every
// coder applies.
#pragma once

#include <vqcj.h>

#include <cstddef>
#include <cstdint>

namespace vqcj::jxr {

constexpr int kNumContexts = 21;
constexpr int kNumCodeTables = 17;
constexpr int kNumDeltaRows = 10;

// One code table: the encoding form (symbol count, then code and length per
// symbol) and a decoding form indexed by the next 8 bits, the longest code,
// holding symbol << 4 | length.
struct CodeTable {
    int32_t enc[1 + 2 * 12];
    uint8_t dec[256];
};

// Handle h names entry h; entry 0 stands for "not set".
extern const CodeTable kCodeTables[kNumCodeTables + 1];
extern const int32_t kDeltaRows[kNumDeltaRows + 1][12];

inline const CodeTable& codeTable(uint32_t h) { return kCodeTables[h]; }
inline const int32_t* deltaRow(uint32_t h) { return kDeltaRows[h]; }

inline uint32_t scanOffset(uint32_t scan) {
    return static_cast<uint32_t>(offsetof(VqciVLCState, scanTables) + scan * sizeof(VqciVLCScanEntry[16]));
}
// The scan in force; an offset that names no table (a forged record) falls
// on the last one rather than outside the record.
inline VqciVLCScanEntry* currentScan(VqciVLCState* s) {
    const uint32_t k = (s->currentScan - scanOffset(0)) / static_cast<uint32_t>(sizeof(VqciVLCScanEntry[16]));
    return s->scanTables[k < 2 ? k : 2];
}

// A hit at entry e; one place up at most when it has overtaken its neighbour.
// Callers that must not move entry 1 (it sits under the fixed head) pass
// kMinSwap 2.
template <uint32_t kMinSwap>
inline void scanHit(VqciVLCScanEntry* scan, uint32_t e) {
    const uint32_t c = ++scan[e].count;
    if (e >= kMinSwap && c > scan[e - 1].count) {
        const VqciVLCScanEntry t = scan[e];
        scan[e] = scan[e - 1];
        scan[e - 1] = t;
    }
}

// Swaps held back to the end of a walk: entries 2 to 15 in rising order,
// where the entry's coefficient is non-zero and its count has overtaken the
// entry before.
template <class NonZero>
inline void deferredSwaps(VqciVLCScanEntry* scan, NonZero nz) {
    for (uint32_t e = 2; e < 16; ++e) {
        if (nz(scan[e]) && scan[e].count > scan[e - 1].count) {
            const VqciVLCScanEntry t = scan[e];
            scan[e] = scan[e - 1];
            scan[e - 1] = t;
        }
    }
}

// Symbols, levels and runs of the run-level stream, shared by the block and
// DC coders. A shape has its first position at firstPos so that its last is
// always 15; the run class of its first run follows from 15 - firstPos.
struct Shape {
    int firstCtx;
    int laterCtx;  // plus cont
    int levelCtx;  // plus cont
    int firstPos;
};

}  // namespace vqcj::jxr
