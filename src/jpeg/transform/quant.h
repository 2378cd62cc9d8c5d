// Quantisation workers shared by the table builders, the quantisers and the
// fused transforms. Tables: raw (64 bytes, zig-zag order), forward (64
// reciprocals scaled by 32768, natural order) and inverse (64 divisors,
// natural order). Each worker checks its own pointers and length.
#pragma once

#include <vqcj.h>

#include <array>

namespace vqcj {

namespace detail {
// Walks the anti-diagonals of the 8x8 block: even ones upwards, odd ones
// downwards, numbering the positions as the scan meets them.
constexpr std::array<int32_t, 64> zigzagPositions() {
    std::array<int32_t, 64> pos{};
    int32_t k = 0;
    for (int32_t s = 0; s < 15; ++s) {
        const int32_t lo = s < 8 ? 0 : s - 7, hi = s < 8 ? s : 7;
        for (int32_t i = 0; i <= hi - lo; ++i) {
            const int32_t r = (s % 2 == 0) ? hi - i : lo + i;
            pos[r * 8 + (s - r)] = k++;
        }
    }
    return pos;
}
}  // namespace detail

// Entry i: position in the zig-zag scan of natural index i.
inline constexpr std::array<int32_t, 64> ownZigzagPos = detail::zigzagPositions();

// Widens bytes to 16 bits, row by row; rows that form one run are done as one.
VqcStatus ownConvert8u16u(const Vqc8u* pSrc, int32_t srcStep, Vqc16u* pDst, int32_t dstStep, int32_t width,
                          int32_t height);

// pDst[i] = pSrc[ownZigzagPos[i]] for 64 entries.
VqcStatus ownZigzagToNatural16u(const Vqc16u* pSrc, Vqc16u* pDst);

// Each entry e becomes value/e in 16.16 fixed point rounded half to even;
// e == 0 gives 65535 and the warning 6.
VqcStatus ownRecip16u(Vqc16u value, Vqc16u* pTable, int32_t len);

// pDst[i] = pTable[i] * pSrc[i] / 2^scale, rounded half to even and
// saturated. The table is read unsigned. pSrc and pDst may be the same.
VqcStatus ownMulScale16u16s(const Vqc16u* pTable, const Vqc16s* pSrc, Vqc16s* pDst, int32_t len, int32_t scale);

// Products saturated to 16 bits, both factors read as signed 16-bit values.
VqcStatus ownMulSat16s(const Vqc16u* pTable, Vqc16s* pSrcDst, int32_t len);
VqcStatus ownMulSat16sTo(const Vqc16s* pSrc, const Vqc16u* pTable, Vqc16s* pDst, int32_t len);

// The 8x8 quantisers of the exports, dispatched: ownMulScale16u16s with
// scale 15 and ownMulSat16s on 64 values, no checks.
void ownQuantFwd8x8(Vqc16s* pSrcDst, const Vqc16u* pTable);
void ownQuantInv8x8(Vqc16s* pSrcDst, const Vqc16u* pTable);

}  // namespace vqcj
