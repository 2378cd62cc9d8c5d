// Vector pieces for 8x8 blocks, shared by the block kernels: an 8x8
// transpose and the move between a row of eight 16-bit lanes and 32-bit
// vectors of the target (one of eight lanes, or two of four).
//
// A block lives in eight 128-bit vectors, one row each. A one-dimensional
// pass runs lane-wise: vector k holds element k of eight lines, so the
// columns are lines as loaded and the rows are lines after a transpose.
//
// Included once per target from a kernel source, after highway.h.
#if defined(VQCJ_FRAME_SIMDBLOCK_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef VQCJ_FRAME_SIMDBLOCK_H_
#undef VQCJ_FRAME_SIMDBLOCK_H_
#else
#define VQCJ_FRAME_SIMDBLOCK_H_
#endif

#include <hwy/highway.h>

#include "frame/simd.h"

HWY_BEFORE_NAMESPACE();
namespace vqcj::HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

// The baseline target runs the plain routines and has no 128-bit vectors.
#if !VQCJ_SIMD_BASELINE

using BlockD16 = hn::Full128<int16_t>;
using BlockV16 = hn::Vec<BlockD16>;
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

// Transposes eight rows of eight 16-bit lanes in place.
HWY_INLINE void Transpose8x8(BlockV16 (&v)[8]) {
    const BlockD16 d16;
    const hn::Repartition<int32_t, BlockD16> d32;
    const hn::Repartition<int64_t, BlockD16> d64;
    BlockV16 a[8];
    for (int i = 0; i < 4; ++i) {
        a[2 * i] = hn::InterleaveLower(d16, v[2 * i], v[2 * i + 1]);
        a[2 * i + 1] = hn::InterleaveUpper(d16, v[2 * i], v[2 * i + 1]);
    }
    // b[0..3]: columns 0-1, 2-3, 4-5, 6-7 of rows 0-3; b[4..7] of rows 4-7.
    hn::Vec<decltype(d32)> b[8];
    for (int h = 0; h < 2; ++h)
        for (int i = 0; i < 2; ++i) {
            const auto lo = hn::BitCast(d32, a[4 * h + i]), hi = hn::BitCast(d32, a[4 * h + i + 2]);
            b[4 * h + 2 * i] = hn::InterleaveLower(d32, lo, hi);
            b[4 * h + 2 * i + 1] = hn::InterleaveUpper(d32, lo, hi);
        }
    for (int i = 0; i < 4; ++i) {
        const auto top = hn::BitCast(d64, b[i]), bottom = hn::BitCast(d64, b[i + 4]);
        v[2 * i] = hn::BitCast(d16, hn::InterleaveLower(d64, top, bottom));
        v[2 * i + 1] = hn::BitCast(d16, hn::InterleaveUpper(d64, top, bottom));
    }
}

// Row of eight 16-bit lanes, signed or not, to 32-bit parts, lanes in order.
template <class T>
HWY_INLINE void WidenRow(hn::Vec<hn::Full128<T>> v, BlockV32 (&x)[kBlockParts]) {
    const BlockD32 d32;
#if VQCJ_BLOCK_PARTS == 1
    x[0] = hn::PromoteTo(d32, v);
#else
    x[0] = hn::PromoteTo(d32, hn::LowerHalf(v));
    x[1] = hn::PromoteTo(d32, hn::UpperHalf(hn::Half<hn::Full128<T>>(), v));
#endif
}

// 32-bit parts to a row of 16-bit lanes, each cut to its low 16 bits.
HWY_INLINE BlockV16 TruncateRow(const BlockV32 (&y)[kBlockParts]) {
    const BlockD16 d16;
    const hn::RebindToUnsigned<BlockD32> du32;
    const hn::Rebind<uint16_t, BlockD32> du16;
#if VQCJ_BLOCK_PARTS == 1
    return hn::BitCast(d16, hn::TruncateTo(du16, hn::BitCast(du32, y[0])));
#else
    const hn::Half<BlockD16> dh;
    return hn::Combine(d16, hn::BitCast(dh, hn::TruncateTo(du16, hn::BitCast(du32, y[1]))),
                       hn::BitCast(dh, hn::TruncateTo(du16, hn::BitCast(du32, y[0]))));
#endif
}

// 32-bit parts to a row of 16-bit lanes, saturated.
HWY_INLINE BlockV16 SaturateRow(const BlockV32 (&y)[kBlockParts]) {
    const BlockD16 d16;
#if VQCJ_BLOCK_PARTS == 1
    return hn::DemoteTo(d16, y[0]);
#else
    const hn::Half<BlockD16> dh;
    return hn::Combine(d16, hn::DemoteTo(dh, y[1]), hn::DemoteTo(dh, y[0]));
#endif
}

// Runs line(x, y) on the eight lines of v in 32-bit lanes, part by part,
// and leaves its results in v cut to 16 bits: the fixed-point passes keep
// 32 bits within a pass and 16 between passes.
template <class Line>
HWY_INLINE void LinesIn32(BlockV16 (&v)[8], Line line) {
    BlockV32 x[kBlockParts][8], y[kBlockParts][8];
    for (int k = 0; k < 8; ++k) {
        BlockV32 parts[kBlockParts];
        WidenRow<int16_t>(v[k], parts);
        for (size_t p = 0; p < kBlockParts; ++p) x[p][k] = parts[p];
    }
    for (size_t p = 0; p < kBlockParts; ++p) line(x[p], y[p]);
    for (int k = 0; k < 8; ++k) {
        BlockV32 parts[kBlockParts];
        for (size_t p = 0; p < kBlockParts; ++p) parts[p] = y[p][k];
        v[k] = TruncateRow(parts);
    }
}

#undef VQCJ_BLOCK_PARTS
#endif  // !VQCJ_SIMD_BASELINE

}  // namespace vqcj::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif  // VQCJ_FRAME_SIMDBLOCK_H_
