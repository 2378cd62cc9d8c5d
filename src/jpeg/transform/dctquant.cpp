// The fused block operations: level shift, DCT and quantisation in one call.
#include <bit>
#include <climits>
#include <cstring>

#include "dct.h"
#include "frame/check.h"
#include "frame/levelshift.h"
#include "frame/rows.h"
#include "quant.h"

namespace vqcj {
namespace {

// Saturates v to lo..hi and rounds it to the nearest integer, ties to even,
// for integer limits below 2^21 in magnitude. Rounding first and limiting
// the integer after gives the same result as limiting first. Ties to even
// come from adding 1.5 * 2^23, which leaves no fraction bits, once the
// magnitude is at most 2^21; that bound is set on the bit pattern, since
// float comparisons would keep the loop from being vectorised. NaN goes to
// one of the limits.
inline int32_t roundSaturated(float v, int32_t lo, int32_t hi) {
    constexpr float kMagic = 12582912.0f;
    constexpr int32_t kBound = std::bit_cast<int32_t>(2097152.0f);
    const int32_t bits = std::bit_cast<int32_t>(v);
    int32_t mag = bits & 0x7FFFFFFF;
    mag = mag > kBound ? kBound : mag;
    const float r = (std::bit_cast<float>(mag | (bits & INT32_MIN)) + kMagic) - kMagic;
    const int32_t i = static_cast<int32_t>(r);
    return i < lo ? lo : (i > hi ? hi : i);
}

}  // namespace
}  // namespace vqcj

using namespace vqcj;

extern "C" {

VQCJ_API VqcStatus vqciDCTQuantFwd8x8LS_JPEG_8u16s_C1R(const Vqc8u* pSrc, int32_t srcStep, Vqc16s* pDst,
                                                        const Vqc16u* pQuantFwdTable) {
    if (VqcStatus st = Check().ptr(pSrc).ptr(pDst).step(srcStep).ptr(pQuantFwdTable)) return st;
    ownSub128(pSrc, srcStep, pDst, 16, VqciSize{8, 8});
    ownDCT8x8Fwd16s(pDst, pDst);
    ownMulScale16u16s(pQuantFwdTable, pDst, pDst, 64, 15);
    return vqcStatusOk;
}

VQCJ_API VqcStatus vqciDCTQuantFwd8x8LS_JPEG_16u16s_C1R(const Vqc16u* pSrc, int32_t srcStep, Vqc16s* pDst,
                                                         const Vqc32f* pQuantFwdTable) {
    if (VqcStatus st = Check().ptr(pSrc).ptr(pDst).step(srcStep).ptr(pQuantFwdTable)) return st;
    // The step is in bytes and need not keep 16-bit alignment.
    Vqc16u px[64];
    for (int32_t r = 0; r < 8; ++r) std::memcpy(px + 8 * r, rowAt(pSrc, srcStep, r), 16);
    alignas(32) Vqc32f block[64];
    for (int32_t i = 0; i < 64; ++i) block[i] = static_cast<Vqc32f>(px[i]);
    for (int32_t i = 0; i < 64; ++i) block[i] -= 2048.0f;
    ownDCT8x8Fwd32f(block);
    for (int32_t i = 0; i < 64; ++i)
        pDst[i] = static_cast<Vqc16s>(roundSaturated(block[i] * pQuantFwdTable[i], -32768, 32767));
    return vqcStatusOk;
}

VQCJ_API VqcStatus vqciDCTQuantFwd8x8_JPEG_16s_C1(const Vqc16s* pSrc, Vqc16s* pDst, const Vqc16u* pQuantFwdTable) {
    if (VqcStatus st = Check().ptr(pSrc).ptr(pDst).ptr(pQuantFwdTable)) return st;
    ownDCT8x8Fwd16s(pSrc, pDst);
    ownMulScale16u16s(pQuantFwdTable, pDst, pDst, 64, 15);
    return vqcStatusOk;
}

VQCJ_API VqcStatus vqciDCTQuantFwd8x8_JPEG_16s_C1I(Vqc16s* pSrcDst, const Vqc16u* pQuantFwdTable) {
    if (VqcStatus st = Check().ptr(pSrcDst).ptr(pQuantFwdTable)) return st;
    ownDCT8x8Fwd16s(pSrcDst, pSrcDst);
    ownMulScale16u16s(pQuantFwdTable, pSrcDst, pSrcDst, 64, 15);
    return vqcStatusOk;
}

VQCJ_API VqcStatus vqciDCTQuantInv8x8LS_JPEG_16s8u_C1R(const Vqc16s* pSrc, Vqc8u* pDst, int32_t dstStep,
                                                        const Vqc16u* pQuantInvTable) {
    if (VqcStatus st = Check().ptr(pSrc).ptr(pDst).step(dstStep).ptr(pQuantInvTable)) return st;
    alignas(32) Vqc16s coef[64];
    ownMulSat16sTo(pSrc, pQuantInvTable, coef, 64);
    ownDCT8x8InvLS16s8u(coef, pDst, dstStep);
    return vqcStatusOk;
}

VQCJ_API VqcStatus vqciDCTQuantInv8x8LS_JPEG_16s16u_C1R(const Vqc16s* pSrc, Vqc16u* pDst, int32_t dstStep,
                                                         const Vqc32f* pQuantInvTable) {
    if (VqcStatus st = Check().ptr(pSrc).ptr(pDst).step(dstStep).ptr(pQuantInvTable)) return st;
    alignas(32) Vqc32f block[64];
    for (int32_t i = 0; i < 64; ++i) block[i] = static_cast<Vqc32f>(pSrc[i]) * pQuantInvTable[i];
    ownDCT8x8Inv32f(block);
    // Saturating to 0..65535, rounding and then limiting to 4095 is the same
    // as saturating to 0..4095 at once. The step is in bytes.
    Vqc16u px[64];
    for (int32_t i = 0; i < 64; ++i) px[i] = static_cast<Vqc16u>(roundSaturated(block[i] + 2048.0f, 0, 4095));
    for (int32_t r = 0; r < 8; ++r) std::memcpy(rowAt(pDst, dstStep, r), px + 8 * r, 16);
    return vqcStatusOk;
}

VQCJ_API VqcStatus vqciDCTQuantInv8x8_JPEG_16s_C1(const Vqc16s* pSrc, Vqc16s* pDst, const Vqc16u* pQuantInvTable) {
    if (VqcStatus st = Check().ptr(pSrc).ptr(pDst).ptr(pQuantInvTable)) return st;
    ownMulSat16sTo(pSrc, pQuantInvTable, pDst, 64);
    ownDCT8x8Inv16s(pDst, pDst);
    return vqcStatusOk;
}

VQCJ_API VqcStatus vqciDCTQuantInv8x8_JPEG_16s_C1I(Vqc16s* pSrcDst, const Vqc16u* pQuantInvTable) {
    if (VqcStatus st = Check().ptr(pSrcDst).ptr(pQuantInvTable)) return st;
    ownMulSat16sTo(pSrcDst, pQuantInvTable, pSrcDst, 64);
    ownDCT8x8Inv16s(pSrcDst, pSrcDst);
    return vqcStatusOk;
}

}  // extern "C"
