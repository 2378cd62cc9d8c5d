// TIFF row workers: PackBits on one row and the 16-bit join and split. The
// workers carry no checks; the exports in rows.cpp check and call them.
//
// The two byte scans of the encoder read a word at a time where eight or more
// bytes of the row remain and a byte at a time at the tail, so they never
// read beyond the row.
#pragma once

#include <vqcj.h>

#include "frame/bytes.h"

#include <bit>
#include <cstdint>
#include <cstring>

namespace vqcj {

namespace tiffdetail {

inline uint64_t load64(const Vqc8u* p) {
    uint64_t v;
    std::memcpy(&v, p, 8);
    if constexpr (std::endian::native == std::endian::big) v = __builtin_bswap64(v);
    return v;
}

// Index of the lowest zero byte of v, or 8 when there is none. Borrows of the
// classic test only spill above a true zero byte, so the lowest flag is exact.
inline int32_t lowestZeroByte(uint64_t v) {
    const uint64_t flags = ownZeroByteFlags(v);
    return flags == 0 ? 8 : std::countr_zero(flags) >> 3;
}

}  // namespace tiffdetail

// Length of the run of bytes equal to p[0] among the first `limit` bytes
// (limit >= 1, all inside the row).
inline int32_t ownRunLength(const Vqc8u* p, int32_t limit) {
    const uint64_t pattern = p[0] * 0x0101010101010101u;
    int32_t k = 1;
    for (; k + 8 <= limit; k += 8) {
        const uint64_t diff = tiffdetail::load64(p + k) ^ pattern;
        if (diff != 0) return k + (std::countr_zero(diff) >> 3);
    }
    while (k < limit && p[k] == p[0]) ++k;
    return k;
}

// Bytes of a literal starting at p[0], of the `left` bytes that remain in the
// row: p[0] and then each byte that does not open a pair of equal neighbours
// inside the row, at most `limit` (1 <= limit, 1 <= left). The last byte of
// the row has no neighbour and is always taken.
inline int32_t ownLiteralLength(const Vqc8u* p, int32_t left, int32_t limit) {
    const int32_t end = limit < left ? limit : left;
    // Only bytes before the row's last one can open a pair.
    const int32_t pairEnd = end < left - 1 ? end : left - 1;
    int32_t j = 1;
    // Byte j + k opens a pair where the row and the row moved by one agree.
    for (; j < pairEnd && j + 9 <= left; j += 8) {
        const int32_t k = tiffdetail::lowestZeroByte(tiffdetail::load64(p + j) ^ tiffdetail::load64(p + j + 1));
        if (k < 8) return j + k < end ? j + k : end;
    }
    for (; j < pairEnd; ++j)
        if (p[j] == p[j + 1]) return j;
    return end;
}

VqcStatus ownPackBitsRow(const Vqc8u* pSrc, int32_t srcLen, Vqc8u* pDst, int32_t* pDstCount, int32_t dstLenMax);
VqcStatus ownUnpackBitsRow(const Vqc8u* pSrc, int32_t* pSrcPos, int32_t srcLen, Vqc8u* pDst, int32_t dstLen);

// Plane 0 holds the high bytes, plane 1 the low bytes of little-endian samples.
void ownJoinRow16(const Vqc8u* __restrict hi, const Vqc8u* __restrict lo, Vqc8u* __restrict dst, int32_t len);
void ownSplitRow16(const Vqc8u* __restrict src, Vqc8u* __restrict hi, Vqc8u* __restrict lo, int32_t len);

}  // namespace vqcj
