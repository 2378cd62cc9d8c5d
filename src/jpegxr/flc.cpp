// The fixed-length layer: the low bits of the 15 high-pass coefficients of a
// 4x4 block, in a fixed order, each as numBits of magnitude and a sign bit
// where one is due. The DC position is never touched.
#include "frame/check.h"
#include "frame/wrap.h"
#include "jpegxr/bitio.h"

#include <cstddef>
#include <cstdint>

namespace vqcj::jxr {
namespace {

// Coefficient numbers in layer order, and their places in the block.
constexpr uint8_t kFlcNumber[15] = {5, 1, 6, 10, 12, 8, 14, 2, 4, 3, 7, 9, 13, 11, 15};
constexpr uint8_t kFlcColumn[15] = {2, 1, 3, 0, 3, 0, 3, 0, 3, 1, 2, 1, 2, 1, 2};
constexpr uint8_t kFlcRow[15] = {0, 0, 1, 2, 3, 3, 2, 1, 0, 1, 1, 3, 3, 2, 2};

// Direct mode writes a sign for any non-zero a = |v| >> trimBits, even when
// the masked magnitude is 0: the residual mode is the one that agrees with
// the decoder, and a direct caller must see to the agreement.
template <class E>
VqcStatus encodeFLC(const E* pSrc, int32_t srcStep, const int32_t* pResidual, Vqc8u** pp, uint32_t* pBitBuf,
                    uint32_t* pNumBits, uint32_t numBits, uint32_t trimBits, int32_t useResidual) {
    Check c;
    c.ptr(pSrc).ptr(pResidual);
    checkStream(c, pp, pBitBuf, pNumBits);
    if (c == vqcStatusOk) c.fail(*pNumBits > 32 || numBits > 15 || trimBits > 15, vqcStatusBadRange);
    if (c != vqcStatusOk) return c;
    BitWriter w(pp, pBitBuf, pNumBits);
    w.enter();
    BitPacker bp(w);
    if (useResidual != 0) {
        for (int i = 0; i < 15; ++i) {
            const int32_t r = pResidual[kFlcNumber[i]];
            bp.put(static_cast<uint32_t>(r >> 1), numBits + (r & 1));
        }
    } else {
        const uint32_t mask = (1u << numBits) - 1;
        for (int i = 0; i < 15; ++i) {
            const int32_t v = at(pSrc, srcStep, kFlcRow[i], kFlcColumn[i]);
            const uint32_t a = (v < 0 ? 0u - static_cast<uint32_t>(v) : static_cast<uint32_t>(v)) >> trimBits;
            if (a == 0)
                bp.put(0, numBits);
            else
                bp.put((a & mask) << 1 | (v < 0), numBits + 1);
        }
    }
    bp.drain();
    w.store(pp, pBitBuf, pNumBits);
    return vqcStatusOk;
}

// Four loops, one per pair of refine and quant-is-one, keep the tests out of
// the loop body; the product by a quant of 1 is the magnitude itself.
template <bool kRefine, bool kUnit, class E>
void decodeLoop(BitReader& br, E* p, int32_t step, uint32_t numBits, int32_t quant) {
    const uint32_t k = numBits + 1;
    for (int i = 0; i < 15; ++i) {
        E& x = at(p, step, kFlcRow[i], kFlcColumn[i]);
        const uint32_t top = br.peek(k);
        const uint32_t mag = top >> 1;
        if (mag == 0) {
            br.skip(numBits);
            continue;
        }
        const int32_t mq = kUnit ? static_cast<int32_t>(mag) : mulW(static_cast<int32_t>(mag), quant);
        if (kRefine && x != 0) {
            br.skip(numBits);
            x = static_cast<E>(x > 0 ? addW(x, mq) : subW(x, mq));
        } else {
            br.skip(k);
            x = static_cast<E>((top & 1) ? subW(0, mq) : mq);
        }
    }
}

template <class E>
VqcStatus decodeFLC(Vqc8u** pp, uint32_t* pBitBuf, uint32_t* pNumBits, E* pSrcDst, int32_t step, uint32_t numBits,
                    int32_t quant, int32_t refine) {
    Check c;
    c.ptr(pSrcDst);
    checkStream(c, pp, pBitBuf, pNumBits);
    if (c == vqcStatusOk) c.fail(*pNumBits > 32 || numBits > 15, vqcStatusBadRange);
    if (c != vqcStatusOk) return c;
    BitReader br(pp, pBitBuf, pNumBits);
    br.fill();
    if (refine != 0) {
        if (quant == 1)
            decodeLoop<true, true>(br, pSrcDst, step, numBits, quant);
        else
            decodeLoop<true, false>(br, pSrcDst, step, numBits, quant);
    } else {
        if (quant == 1)
            decodeLoop<false, true>(br, pSrcDst, step, numBits, quant);
        else
            decodeLoop<false, false>(br, pSrcDst, step, numBits, quant);
    }
    br.store(pp, pBitBuf, pNumBits);
    return vqcStatusOk;
}

}  // namespace
}  // namespace vqcj::jxr

using namespace vqcj::jxr;

extern "C" {

VQCJ_API VqcStatus vqciFLCEncode4x4_JPEGXR_16s1u_C1R(const Vqc16s* pSrc, int32_t srcStep, const Vqc32s* pResidual,
                                                     Vqc8u** ppBitStream, uint32_t* pBitBuf, uint32_t* pNumBits,
                                                     uint32_t numBits, uint32_t trimBits, int32_t useResidual) {
    return encodeFLC(pSrc, srcStep, pResidual, ppBitStream, pBitBuf, pNumBits, numBits, trimBits, useResidual);
}

VQCJ_API VqcStatus vqciFLCEncode4x4_JPEGXR_32s1u_C1R(const Vqc32s* pSrc, int32_t srcStep, const Vqc32s* pResidual,
                                                     Vqc8u** ppBitStream, uint32_t* pBitBuf, uint32_t* pNumBits,
                                                     uint32_t numBits, uint32_t trimBits, int32_t useResidual) {
    return encodeFLC(pSrc, srcStep, pResidual, ppBitStream, pBitBuf, pNumBits, numBits, trimBits, useResidual);
}

VQCJ_API VqcStatus vqciFLCDecode4x4_JPEGXR_1u16s_C1IR(Vqc8u** ppBitStream, uint32_t* pBitBuf, uint32_t* pNumBits,
                                                      Vqc16s* pSrcDst, int32_t srcDstStep, uint32_t numBits,
                                                      Vqc16s quant, int32_t refine) {
    return decodeFLC(ppBitStream, pBitBuf, pNumBits, pSrcDst, srcDstStep, numBits, quant, refine);
}

VQCJ_API VqcStatus vqciFLCDecode4x4_JPEGXR_1u32s_C1IR(Vqc8u** ppBitStream, uint32_t* pBitBuf, uint32_t* pNumBits,
                                                      Vqc32s* pSrcDst, int32_t srcDstStep, uint32_t numBits,
                                                      Vqc32s quant, int32_t refine) {
    return decodeFLC(ppBitStream, pBitBuf, pNumBits, pSrcDst, srcDstStep, numBits, quant, refine);
}

}  // extern "C"
