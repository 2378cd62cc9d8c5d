// Run-level coding of one 4x4 high-pass block along the adaptive scan.
#include "frame/check.h"
#include "jpegxr/runlevel.h"

namespace vqcj::jxr {
namespace {

inline Shape blockShape(int32_t chroma) {
    const int c = chroma != 0;
    return Shape{13 + 3 * c, 14 + 3 * c, 19, 1};
}

// Forms the pairs along the scan, moves the scan, and codes the pairs. The
// plain encoders at modelBits 0 hold their swaps back to the end of the
// walk; the flexible ones swap at once and leave the low bits of every
// position in pResidual for the fixed-length layer.
template <bool kFlex, class E>
int32_t ownVLCEncodeBlock(const E* pSrc, int32_t step, int32_t chroma, uint32_t modelBits, uint32_t trimBits,
                          int32_t* pResidual, BitWriter& w, VqciVLCState* s) {
    VqciVLCScanEntry* scan = currentScan(s);
    const uint32_t m = (1u << modelBits) - 1;
    const bool deferred = !kFlex && modelBits == 0;
    // The block is read along the scan first, without branches, into values
    // and a mask of the entries that make pairs; the pair walk then visits
    // set bits only. A swap at entry e moves e and e-1 alone, so what was
    // read for the entries ahead stays valid.
    int32_t val[16];
    uint32_t mask = 0;
    for (uint32_t e = 1; e < 16; ++e) {
        const int32_t v = at(pSrc, step, scan[e].row, scan[e].column);
        const uint32_t a = absU(v);
        val[e] = v;
        mask |= static_cast<uint32_t>(a > m) << e;
        if constexpr (kFlex) {
            const uint32_t t = a >> trimBits;
            const uint32_t low = t << 2 | (t != 0) | ((t != 0) & (v < 0)) << 1;
            const uint32_t high = ((a & m) >> trimBits) << 1;
            pResidual[scan[e].index & 15] = static_cast<int32_t>(a > m ? high : low);
        }
    }
    int32_t rl[32];
    int32_t k = 0;
    uint32_t last = 0;
    bool swap = false;
    for (; mask != 0; mask &= mask - 1) {
        const uint32_t e = static_cast<uint32_t>(std::countr_zero(mask));
        const int32_t v = val[e];
        const uint32_t lev = absU(v) >> modelBits;
        rl[2 * k] = static_cast<int32_t>(e - last - 1);
        rl[2 * k + 1] = static_cast<int32_t>(v < 0 ? 0u - lev : lev);
        ++k;
        last = e;
        if (deferred) {
            const uint32_t c = ++scan[e].count;
            swap |= e >= 2 && c > scan[e - 1].count;
        } else {
            scanHit<2>(scan, e);
        }
    }
    if (swap)
        deferredSwaps(scan, [&](const VqciVLCScanEntry& en) { return at(pSrc, step, en.row, en.column) != 0; });
    if (k > 0) {
        BitPacker bp(w);
        PairEncoder{s, bp}.pairs(rl, k, blockShape(chroma));
        bp.drain();
    }
    return k;
}

template <bool kFlex, class E>
VqcStatus encodeBlock(const E* pSrc, int32_t srcStep, int32_t chroma, uint32_t modelBits, uint32_t trimBits,
                      int32_t* pResidual, Vqc8u** pp, uint32_t* pBitBuf, uint32_t* pNumBits, int32_t* pNumPairs,
                      VqciVLCState* pState) {
    Check c;
    c.ptr(pState).ptr(pSrc);
    if constexpr (kFlex) c.ptr(pResidual);
    c.ptr(pNumPairs);
    checkStream(c, pp, pBitBuf, pNumBits);
    if (c == vqcStatusOk) c.fail(*pNumBits > 32 || modelBits > 15 || (kFlex && trimBits > 15), vqcStatusBadRange);
    if (c != vqcStatusOk) return c;
    BitWriter w(pp, pBitBuf, pNumBits);
    w.enter();
    *pNumPairs = ownVLCEncodeBlock<kFlex>(pSrc, srcStep, chroma, modelBits, trimBits, pResidual, w, pState);
    w.store(pp, pBitBuf, pNumBits);
    return vqcStatusOk;
}

// Clears the block but its DC, then stores each coefficient dequantised at
// its scan entry; the 16-bit form keeps the low 16 bits of each product.
template <class E>
VqcStatus decodeBlock(Vqc8u** pp, uint32_t* pBitBuf, uint32_t* pNumBits, int32_t quant, E* pDst, int32_t dstStep,
                      int32_t chroma, int32_t* pNumCoded, VqciVLCState* pState) {
    Check c;
    c.ptr(pState).ptr(pDst).ptr(pNumCoded);
    checkStream(c, pp, pBitBuf, pNumBits);
    if (c == vqcStatusOk) c.fail(*pNumBits > 32, vqcStatusBadRange);
    if (c != vqcStatusOk) return c;
    for (uint32_t r = 0; r < 4; ++r)
        for (uint32_t x = r == 0; x < 4; ++x) at(pDst, dstStep, r, x) = 0;
    BitReader br(pp, pBitBuf, pNumBits);
    br.fill();
    VqciVLCScanEntry* scan = currentScan(pState);
    const int32_t n = PairDecoder{pState, br}.pairs<true>(
        blockShape(chroma), [&](int32_t, int32_t pos, bool neg, uint32_t a) {
            const uint32_t e = static_cast<uint32_t>(pos) & 15;
            int32_t v = a == 1 ? quant : mulW(quant, static_cast<int32_t>(a));
            v = neg ? subW(0, v) : v;
            at(pDst, dstStep, scan[e].row, scan[e].column) = static_cast<E>(v);
            scanHit<1>(scan, e);
        });
    *pNumCoded = n < 0 ? 16 : n;
    br.store(pp, pBitBuf, pNumBits);
    return vqcStatusOk;
}

}  // namespace
}  // namespace vqcj::jxr

using namespace vqcj::jxr;

extern "C" {

VQCJ_API VqcStatus vqciVLCEncode4x4_JPEGXR_16s1u_C1R(const Vqc16s* pSrc, int32_t srcStep, int32_t chroma,
                                                     uint32_t modelBits, Vqc8u** ppBitStream, uint32_t* pBitBuf,
                                                     uint32_t* pNumBits, int32_t* pNumPairs, VqciVLCState* pState) {
    return encodeBlock<false>(pSrc, srcStep, chroma, modelBits, 0, nullptr, ppBitStream, pBitBuf, pNumBits,
                              pNumPairs, pState);
}

VQCJ_API VqcStatus vqciVLCEncode4x4_JPEGXR_32s1u_C1R(const Vqc32s* pSrc, int32_t srcStep, int32_t chroma,
                                                     uint32_t modelBits, Vqc8u** ppBitStream, uint32_t* pBitBuf,
                                                     uint32_t* pNumBits, int32_t* pNumPairs, VqciVLCState* pState) {
    return encodeBlock<false>(pSrc, srcStep, chroma, modelBits, 0, nullptr, ppBitStream, pBitBuf, pNumBits,
                              pNumPairs, pState);
}

VQCJ_API VqcStatus vqciVLCEncode4x4Flex_JPEGXR_16s1u_C1R(const Vqc16s* pSrc, int32_t srcStep, int32_t chroma,
                                                         uint32_t modelBits, uint32_t trimBits, Vqc32s* pResidual,
                                                         Vqc8u** ppBitStream, uint32_t* pBitBuf, uint32_t* pNumBits,
                                                         int32_t* pNumPairs, VqciVLCState* pState) {
    return encodeBlock<true>(pSrc, srcStep, chroma, modelBits, trimBits, pResidual, ppBitStream, pBitBuf, pNumBits,
                             pNumPairs, pState);
}

VQCJ_API VqcStatus vqciVLCEncode4x4Flex_JPEGXR_32s1u_C1R(const Vqc32s* pSrc, int32_t srcStep, int32_t chroma,
                                                         uint32_t modelBits, uint32_t trimBits, Vqc32s* pResidual,
                                                         Vqc8u** ppBitStream, uint32_t* pBitBuf, uint32_t* pNumBits,
                                                         int32_t* pNumPairs, VqciVLCState* pState) {
    return encodeBlock<true>(pSrc, srcStep, chroma, modelBits, trimBits, pResidual, ppBitStream, pBitBuf, pNumBits,
                             pNumPairs, pState);
}

VQCJ_API VqcStatus vqciVLCDecode4x4_JPEGXR_1u16s_C1R(Vqc8u** ppBitStream, uint32_t* pBitBuf, uint32_t* pNumBits,
                                                     Vqc16s quant, Vqc16s* pDst, int32_t dstStep, int32_t chroma,
                                                     int32_t* pNumCoded, VqciVLCState* pState) {
    return decodeBlock(ppBitStream, pBitBuf, pNumBits, quant, pDst, dstStep, chroma, pNumCoded, pState);
}

VQCJ_API VqcStatus vqciVLCDecode4x4_JPEGXR_1u32s_C1R(Vqc8u** ppBitStream, uint32_t* pBitBuf, uint32_t* pNumBits,
                                                     Vqc32s quant, Vqc32s* pDst, int32_t dstStep, int32_t chroma,
                                                     int32_t* pNumCoded, VqciVLCState* pState) {
    return decodeBlock(ppBitStream, pBitBuf, pNumBits, quant, pDst, dstStep, chroma, pNumCoded, pState);
}

}  // extern "C"
