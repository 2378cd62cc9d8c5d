// Highway pieces shared by the kernels: byte lanes widened and narrowed,
// bytes paired without regard to 128-bit blocks, the carry of a 16-bit
// addition, which lets fixed-point products whose sums need more than 16
// bits stay on 16-bit lanes, and vectors built and taken apart block by
// block, for kernels that keep their shuffles inside 128-bit blocks.
// Included inside each kernel source's per-target pass (it re-includes
// itself with the target).
#if defined(VQCJ_FRAME_SIMDOPS_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef VQCJ_FRAME_SIMDOPS_H_
#undef VQCJ_FRAME_SIMDOPS_H_
#else
#define VQCJ_FRAME_SIMDOPS_H_
#endif

#include <hwy/highway.h>

#include <bit>
#include <cstdint>

HWY_BEFORE_NAMESPACE();
namespace vqcj::HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

// 16-bit lanes and the bytes that fill them one to one.
using D16 = hn::ScalableTag<uint16_t>;
using DS16 = hn::ScalableTag<int16_t>;
using D8 = hn::Rebind<uint8_t, D16>;
using V16 = hn::Vec<D16>;
using VS16 = hn::Vec<DS16>;
using V8 = hn::Vec<D8>;
// Whole byte vectors: two 16-bit vectors' worth of bytes.
using DF8 = hn::ScalableTag<uint8_t>;
using VF8 = hn::Vec<DF8>;

// acc + W x for a constant W, the multiplication left out where W makes it
// trivial.
template <int32_t W, class V>
V AddTimes(V acc, V x) {
    if constexpr (W == 0) return acc;
    else if constexpr (W == 1) return hn::Add(acc, x);
    else if constexpr (W == -1) return hn::Sub(acc, x);
    else if constexpr (W > 0 && (W & (W - 1)) == 0)
        return hn::Add(acc, hn::ShiftLeft<std::countr_zero(static_cast<uint32_t>(W))>(x));
    else return hn::Add(acc, hn::Mul(x, hn::Set(hn::DFromV<V>(), static_cast<hn::TFromV<V>>(W))));
}

inline V16 Widen(V8 v) { return hn::PromoteTo(D16(), v); }

// Saturates signed 16-bit lanes to bytes.
inline V8 NarrowSat(VS16 v) { return hn::DemoteTo(D8(), v); }

// Signed 16-bit lanes saturated to 0..255, still 16 bits wide.
inline V16 Clamp8(VS16 v) {
    const DS16 d;
    return hn::BitCast(D16(), hn::Min(hn::Max(v, hn::Zero(d)), hn::Set(d, 255)));
}

// Lanes known to hold 0..255.
inline V8 Narrow(V16 v) { return hn::DemoteTo(D8(), hn::BitCast(DS16(), v)); }

// acc plus the carry out of the 16-bit sum a + b: it carries exactly when
// a > ~b, and a true lane of the mask is -1.
inline VS16 AddCarry(VS16 acc, V16 a, V16 b) {
    return hn::Sub(acc, hn::BitCast(DS16(), hn::VecFromMask(D16(), hn::Gt(a, hn::Not(b)))));
}

#if HWY_TARGET != HWY_SCALAR
// A whole byte vector as two 16-bit vectors, and back.
inline void WidenHalves(VF8 v, V16 (&out)[2]) {
    out[0] = Widen(hn::LowerHalf(D8(), v));
    out[1] = Widen(hn::UpperHalf(D8(), v));
}
inline VF8 NarrowHalves(V16 lo, V16 hi) { return hn::Combine(DF8(), Narrow(hi), Narrow(lo)); }
inline VF8 NarrowSatHalves(VS16 lo, VS16 hi) { return hn::Combine(DF8(), NarrowSat(hi), NarrowSat(lo)); }
#else
// The baseline runs the plain routines; its kernels only name these.
void WidenHalves(VF8 v, V16 (&out)[2]);
VF8 NarrowHalves(V16 lo, V16 hi);
VF8 NarrowSatHalves(VS16 lo, VS16 hi);
#endif

// Per 16-bit lane: the low and the high byte of a pair of bytes.
inline V16 LowBytes(V16 v) { return hn::And(v, hn::Set(D16(), 255)); }
inline V16 HighBytes(V16 v) { return hn::ShiftRight<8>(v); }

// Sums of adjacent bytes: lane j is p[2j] + p[2j+1].
inline V16 PairSums(const uint8_t* p) {
    const V16 v = hn::LoadU(D16(), reinterpret_cast<const uint16_t*>(p));
    return hn::Add(LowBytes(v), HighBytes(v));
}

// ---- Block-wise pieces --------------------------------------------------------

#if HWY_TARGET != HWY_SCALAR
// A vector from its blocks, block k = piece(block tag, k), and back.
template <class D, class F>
HWY_INLINE hn::Vec<D> FromBlocks(D d, F piece, int first = 0) {
    if constexpr (hn::MaxLanes(D()) * sizeof(hn::TFromD<D>) == 16) {
        return piece(d, first);
    } else {
        const hn::Half<D> dh;
        constexpr int kHalf = static_cast<int>(hn::MaxLanes(dh) * sizeof(hn::TFromD<D>) / 16);
        return hn::Combine(d, FromBlocks(dh, piece, first + kHalf), FromBlocks(dh, piece, first));
    }
}
template <class V>
HWY_INLINE hn::Vec<hn::Full128<hn::TFromV<V>>> BlockOf(V v, int k) {
    using D = hn::DFromV<V>;
    if constexpr (hn::MaxLanes(D()) * sizeof(hn::TFromV<V>) == 16) {
        return v;
    } else {
        const hn::Half<D> dh;
        constexpr int kHalf = static_cast<int>(hn::MaxLanes(dh) * sizeof(hn::TFromV<V>) / 16);
        return k < kHalf ? BlockOf(hn::LowerHalf(dh, v), k) : BlockOf(hn::UpperHalf(dh, v), k - kHalf);
    }
}
#endif

// A byte-shuffle table of one block, repeated over the widest vector's
// blocks (a full load, so that it can stay a memory operand).
struct Table {
    alignas(64) uint8_t v[64];
};
constexpr Table ownTable(const uint8_t (&t)[16]) {
    Table r{};
    for (int i = 0; i < 64; ++i) r.v[i] = t[i % 16];
    return r;
}

// ---- Pairwise products ---------------------------------------------------------

using DS32 = hn::Repartition<int32_t, DS16>;
using VS32 = hn::Vec<DS32>;

// x and y interleaved into pairs, in each block: the lower and the upper
// halves of the block.
struct Zip {
    VS16 lo, hi;
};

#if HWY_TARGET != HWY_SCALAR
// K + Wx x + Wy y in each 32-bit lane, x and y its lower and upper 16 bits:
// exact 32-bit sums of 16-bit products (pmaddwd).
template <int16_t Wx, int16_t Wy, int32_t K>
HWY_INLINE VS32 PairDot(VS16 xy) {
    const DS32 d32;
    const uint32_t w = static_cast<uint16_t>(Wx) | uint32_t{static_cast<uint16_t>(Wy)} << 16;
    VS32 odd = hn::Zero(d32);
    const VS32 sum = hn::ReorderWidenMulAccumulate(d32, xy, hn::BitCast(DS16(), hn::Set(d32, static_cast<int32_t>(w))),
                                                   hn::Set(d32, K), odd);
    return hn::RearrangeToOddPlusEven(sum, odd);
}

HWY_INLINE Zip ZipOf(VS16 x, VS16 y) {
    const DS16 d;
    return {hn::InterleaveLower(d, x, y), hn::InterleaveUpper(d, x, y)};
}

// (Wx x + Wy y + K) >> Shift for each lane of the pairs z = zip(x, y), back
// in the lanes of x (the pack undoes the interleave within each block): each
// result is the exact one whenever it fits 16 bits.
template <int Shift, int16_t Wx, int16_t Wy, int32_t K>
HWY_INLINE VS16 Dot(const Zip& z) {
    return hn::ReorderDemote2To(DS16(), hn::ShiftRight<Shift>(PairDot<Wx, Wy, K>(z.lo)),
                                hn::ShiftRight<Shift>(PairDot<Wx, Wy, K>(z.hi)));
}
#else
// The baseline runs the plain routines; its kernels only name these.
template <int16_t Wx, int16_t Wy, int32_t K>
VS32 PairDot(VS16 xy);
Zip ZipOf(VS16 x, VS16 y);
template <int Shift, int16_t Wx, int16_t Wy, int32_t K>
VS16 Dot(const Zip& z);
#endif

}  // namespace vqcj::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
