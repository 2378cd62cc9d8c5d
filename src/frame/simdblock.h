// Vector pieces for 8x8 blocks, shared by the block kernels: a block held
// in 32-bit lanes (integer or float), its transpose, and the moves between
// rows of narrower values and those lanes.
//
// A row of eight lanes is one vector of eight (AVX2, AVX-512) or two of
// four. A one-dimensional pass runs lane-wise: vector k holds element k of
// eight lines, so the columns are lines as loaded and the rows are lines
// after a transpose.
//
// Included once per target from a kernel source, after highway.h.
#if defined(VQCJ_FRAME_SIMDBLOCK_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef VQCJ_FRAME_SIMDBLOCK_H_
#undef VQCJ_FRAME_SIMDBLOCK_H_
#else
#define VQCJ_FRAME_SIMDBLOCK_H_
#endif

#include <hwy/highway.h>

#include <utility>

#include "frame/simd.h"

HWY_BEFORE_NAMESPACE();
namespace vqcj::HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

// The baseline target runs the plain routines and has no 128-bit vectors.
#if !VQCJ_SIMD_BASELINE

using BlockD32 = hn::CappedTag<int32_t, 8>;
using BlockV32 = hn::Vec<BlockD32>;
using BlockDF = hn::CappedTag<float, 8>;
using BlockVF = hn::Vec<BlockDF>;
// 32-bit vectors that make up one row of eight lanes.
#if HWY_MAX_BYTES >= 32
#define VQCJ_BLOCK_PARTS 1
#else
#define VQCJ_BLOCK_PARTS 2
#endif
inline constexpr size_t kBlockParts = VQCJ_BLOCK_PARTS;
static_assert(kBlockParts * hn::MaxLanes(BlockD32()) == 8);

// A block in 32-bit lanes: v[p][k] holds row k, columns 4p.. (two parts of
// four lanes) or all eight columns (one part of eight).
template <class D>
using Block32 = hn::Vec<D>[kBlockParts][8];

// Transposes four rows of four 32-bit lanes within each 128-bit block.
template <class D>
HWY_INLINE void Transpose4x4(D d, hn::Vec<D>& r0, hn::Vec<D>& r1, hn::Vec<D>& r2, hn::Vec<D>& r3) {
    const hn::Repartition<uint64_t, D> d64;
    const auto a0 = hn::BitCast(d64, hn::InterleaveLower(d, r0, r1));
    const auto a1 = hn::BitCast(d64, hn::InterleaveUpper(d, r0, r1));
    const auto a2 = hn::BitCast(d64, hn::InterleaveLower(d, r2, r3));
    const auto a3 = hn::BitCast(d64, hn::InterleaveUpper(d, r2, r3));
    r0 = hn::BitCast(d, hn::InterleaveLower(d64, a0, a2));
    r1 = hn::BitCast(d, hn::InterleaveUpper(d64, a0, a2));
    r2 = hn::BitCast(d, hn::InterleaveLower(d64, a1, a3));
    r3 = hn::BitCast(d, hn::InterleaveUpper(d64, a1, a3));
}

// Transposes a block of 32-bit lanes in place.
template <class D>
HWY_INLINE void Transpose8x8(D d, Block32<D>& v) {
#if VQCJ_BLOCK_PARTS == 1
    auto* r = v[0];
    Transpose4x4(d, r[0], r[1], r[2], r[3]);
    Transpose4x4(d, r[4], r[5], r[6], r[7]);
    for (int j = 0; j < 4; ++j) {
        const auto top = r[j], bottom = r[j + 4];
        r[j] = hn::ConcatLowerLower(d, bottom, top);
        r[j + 4] = hn::ConcatUpperUpper(d, bottom, top);
    }
#else
    for (int p = 0; p < 2; ++p)
        for (int h = 0; h < 2; ++h) Transpose4x4(d, v[p][4 * h], v[p][4 * h + 1], v[p][4 * h + 2], v[p][4 * h + 3]);
    for (int j = 0; j < 4; ++j) std::swap(v[0][4 + j], v[1][j]);
#endif
}

// Row k of a block, lanes reversed, as parts.
template <class D>
HWY_INLINE void ReverseRow(D d, const Block32<D>& v, int k, hn::Vec<D> (&rev)[kBlockParts]) {
    for (size_t p = 0; p < kBlockParts; ++p) rev[p] = hn::Reverse(d, v[kBlockParts - 1 - p][k]);
}

// Row of eight lanes (8- or 16-bit, signed or not) to 32-bit parts.
template <class D, class V>
HWY_INLINE void WidenRow(D d, V v, hn::Vec<D> (&x)[kBlockParts]) {
#if VQCJ_BLOCK_PARTS == 1
    x[0] = hn::PromoteTo(d, v);
#else
    x[0] = hn::PromoteTo(d, hn::LowerHalf(v));
    x[1] = hn::PromoteTo(d, hn::UpperHalf(hn::Half<hn::DFromV<V>>(), v));
#endif
}

// Eight values from p to 32-bit parts.
template <class D, class T>
HWY_INLINE void LoadRow(D d, const T* p, hn::Vec<D> (&x)[kBlockParts]) {
    WidenRow(d, hn::LoadU(hn::CappedTag<T, 8>(), p), x);
}

// 32-bit parts to eight 16-bit values at p, saturated.
HWY_INLINE void StoreRowSat(const BlockV32 (&y)[kBlockParts], int16_t* p) {
    const hn::Rebind<int16_t, BlockD32> d16;
    for (size_t i = 0; i < kBlockParts; ++i) hn::StoreU(hn::DemoteTo(d16, y[i]), d16, p + 4 * i);
}

// The same part as pairs of 16-bit lanes: each 32-bit lane of a part holds
// two 16-bit values, the first in its low half.
using BlockD16 = hn::Repartition<int16_t, BlockD32>;
using BlockV16 = hn::Vec<BlockD16>;

// Per 32-bit lane, a.lo * b.lo + a.hi * b.hi of the 16-bit halves, wrapping
// (only -32768 * -32768 twice reaches 2^31): one pmaddwd on x86.
HWY_INLINE BlockV32 MulAddPairs(BlockV16 a, BlockV16 b) {
    const BlockD32 d32;
#if HWY_ARCH_X86
    BlockV32 unused;
    return hn::ReorderWidenMulAccumulate(d32, a, b, hn::Zero(d32), unused);
#else
    // Elsewhere the lane order of that op differs: the halves taken apart.
    const auto a32 = hn::BitCast(d32, a), b32 = hn::BitCast(d32, b);
    const auto lo = hn::Mul(hn::ShiftRight<16>(hn::ShiftLeft<16>(a32)), hn::ShiftRight<16>(hn::ShiftLeft<16>(b32)));
    return hn::Add(lo, hn::Mul(hn::ShiftRight<16>(a32), hn::ShiftRight<16>(b32)));
#endif
}

// Per 32-bit lane the pair (Lo, Hi) of 16-bit constants.
template <int Lo, int Hi>
HWY_INLINE BlockV16 PairConst() {
    static_assert(Lo >= -32768 && Lo <= 32767 && Hi >= -32768 && Hi <= 32767);
    constexpr uint32_t bits = static_cast<uint16_t>(Lo) | static_cast<uint32_t>(static_cast<uint16_t>(Hi)) << 16;
    return hn::BitCast(BlockD16(), hn::Set(BlockD32(), static_cast<int32_t>(bits)));
}

// Lo * a.lo + Hi * a.hi per 32-bit lane.
template <int Lo, int Hi>
HWY_INLINE BlockV32 MulAddPairs(BlockV16 a) {
    return MulAddPairs(a, PairConst<Lo, Hi>());
}

// Swaps the two 16-bit halves of each 32-bit lane.
HWY_INLINE BlockV16 SwapPairHalves(BlockV16 v) {
    const hn::Repartition<uint8_t, BlockD16> d8;
    alignas(16) static constexpr uint8_t kSwap[16] = {2, 3, 0, 1, 6, 7, 4, 5, 10, 11, 8, 9, 14, 15, 12, 13};
    return hn::BitCast(BlockD16(), hn::TableLookupBytes(hn::BitCast(d8, v), hn::LoadDup128(d8, kSwap)));
}

#undef VQCJ_BLOCK_PARTS
#endif  // !VQCJ_SIMD_BASELINE

}  // namespace vqcj::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif  // VQCJ_FRAME_SIMDBLOCK_H_
