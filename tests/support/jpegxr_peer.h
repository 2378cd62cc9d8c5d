// jxrlib's block transform and adaptive Huffman tables, declared by hand: its
// public headers do not carry them, but libjpegxr exports them.
#pragma once

#include <cstdint>

extern "C" {
// One 4x4 block of 16 ints; see kJxrPlace for where each element sits.
void strDCT4x4Stage1(int* p);
void strIDCT4x4Stage1(int* p);

struct JxrAdaptiveHuffman {
    int nSymbols;
    const int* table;   // symbol count, then code and length per symbol
    const int* delta;   // first discriminant's increments
    const int* delta1;  // second discriminant's increments
    int tableIndex;
    const short* decTable;
    int initialised;
    int discriminant;
    int discriminant1;
    int upperBound;
    int lowerBound;
};
JxrAdaptiveHuffman* Allocate(int nSymbols, int codingMode);
void Clean(JxrAdaptiveHuffman* p);
void AdaptDiscriminant(JxrAdaptiveHuffman* p);

extern const int grgiZigzagInv4x4H[16];
extern const int grgiZigzagInv4x4V[16];
extern const int grgiZigzagInv4x4_lowpass[16];
// Its high-pass scans name places through the first row of this table.
extern const int dctIndex[3][16];
}

namespace vqcjtest {

// Row-major block position (row * 4 + column) to jxrlib's storage place:
// a0..a3 at 0, 1, 5, 4; b0..b3 at 2, 3, 7, 6; c0..c3 at 10, 11, 15, 14;
// d0..d3 at 8, 9, 13, 12.
constexpr int kJxrPlace[16] = {0, 1, 5, 4, 2, 3, 7, 6, 10, 11, 15, 14, 8, 9, 13, 12};

// Decodes one symbol from the top bits of `bits` with a jxrlib decoding
// table (32 root entries by 5 bits, then a two-way tree); returns the
// symbol and the bits used.
inline int jxrDecodeSymbol(const short* t, uint32_t bits, int* used) {
    int w = t[bits >> 27];
    if (w >= 0) {
        *used = w & 7;
        return w >> 3;
    }
    int n = 5;
    do w = t[(w & 0x7FFF) + ((bits >> (31 - n++)) & 1)];
    while (w < 0);
    *used = n;
    return w;
}

}  // namespace vqcjtest
