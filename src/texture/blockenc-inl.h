// Highway kernels of the fast encoders, shared by their sources: included
// once per target from inside each source's target loop.
#if defined(VQCJ_TEXTURE_BLOCKENC_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef VQCJ_TEXTURE_BLOCKENC_INL_H_
#undef VQCJ_TEXTURE_BLOCKENC_INL_H_
#else
#define VQCJ_TEXTURE_BLOCKENC_INL_H_
#endif

#include <hwy/highway.h>

#include "frame/simd.h"
#include "texture/blockenc.h"

HWY_BEFORE_NAMESPACE();
namespace vqcj::HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

// The index word of 16 texels from C channel planes: L1 distances to
// the four entries in 16-bit lanes, then the comparison mesh on masks.
template <int C>
inline uint32_t ColourIndicesV(const uint8_t (*ch)[16], const int32_t (*pal)[4]) {
    const hn::CappedTag<int16_t, 16> d;
    const hn::Rebind<uint8_t, decltype(d)> d8;
    const size_t n = hn::Lanes(d);
    alignas(16) uint8_t idx[16];
    for (size_t i0 = 0; i0 < 16; i0 += n) {
        auto d0 = hn::Zero(d), d1 = d0, d2 = d0, d3 = d0;
        for (int c = 0; c < C; ++c) {
            const auto v = hn::PromoteTo(d, hn::LoadU(d8, ch[c] + i0));
            d0 = hn::Add(d0, hn::Abs(hn::Sub(v, hn::Set(d, int16_t(pal[c][0])))));
            d1 = hn::Add(d1, hn::Abs(hn::Sub(v, hn::Set(d, int16_t(pal[c][1])))));
            d2 = hn::Add(d2, hn::Abs(hn::Sub(v, hn::Set(d, int16_t(pal[c][2])))));
            d3 = hn::Add(d3, hn::Abs(hn::Sub(v, hn::Set(d, int16_t(pal[c][3])))));
        }
        const auto b0 = hn::And(hn::Gt(d0, d3), hn::Gt(d2, d3));
        const auto b1 = hn::Or(hn::And(hn::Gt(d0, d2), hn::Gt(d1, d2)), hn::And(hn::Gt(d0, d3), hn::Gt(d1, d3)));
        const auto v = hn::Or(hn::IfThenElseZero(b0, hn::Set(d, 1)), hn::IfThenElseZero(b1, hn::Set(d, 2)));
        hn::StoreU(hn::DemoteTo(d8, v), d8, idx + i0);
    }
    return uint32_t(ownPackIndices<2>(idx));
}

#if !VQCJ_SIMD_BASELINE
// Value indices of 16 bytes: the count of thresholds at or above each, in
// byte lanes, rotated so that counts 0 and 7 land on the endpoints.
inline void ValueIndicesV(const uint8_t* a, const uint8_t* t, uint8_t* idx) {
    const hn::FixedTag<uint8_t, 16> d8;
    const auto v = hn::Load(d8, a);
    auto count = hn::Zero(d8);
    for (int k = 0; k < 7; ++k) count = hn::Sub(count, hn::VecFromMask(d8, hn::Not(hn::Gt(v, hn::Set(d8, t[k])))));
    auto r = hn::And(hn::Add(count, hn::Set(d8, 1)), hn::Set(d8, 7));
    r = hn::Xor(r, hn::IfThenElseZero(hn::Lt(r, hn::Set(d8, 2)), hn::Set(d8, 1)));
    hn::Store(r, d8, idx);
}

// Four planes by one interleaved load.
inline void PlanesV(const uint8_t* px, uint8_t (*ch)[16]) {
    const hn::FixedTag<uint8_t, 16> d8;
    hn::Vec<decltype(d8)> r, g, b, a;
    hn::LoadInterleaved4(d8, px, r, g, b, a);
    hn::Store(r, d8, ch[0]), hn::Store(g, d8, ch[1]), hn::Store(b, d8, ch[2]), hn::Store(a, d8, ch[3]);
}
#endif

}  // namespace vqcj::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif  // VQCJ_TEXTURE_BLOCKENC_INL_H_
