// The fused block operations: level shift, DCT and quantisation in one call.
#include <cstring>

#include "dct.h"
#include "frame/check.h"
#include "frame/levelshift.h"
#include "frame/rows.h"
#include "quant.h"

namespace vqcj {
namespace {

// Ties to even without a library call or a rounding-mode dependence:
// adding 1.5 * 2^23 leaves no fraction bits, for |v| below 2^22.
inline float roundEven(float v) {
    constexpr float kMagic = 12582912.0f;
    return (v + kMagic) - kMagic;
}

// Clamps with NaN going to the lower bound.
inline float clampf(float v, float lo, float hi) {
    v = v > lo ? v : lo;
    return v < hi ? v : hi;
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
    for (int32_t i = 0; i < 64; ++i) {
        const float v = roundEven(clampf(block[i] * pQuantFwdTable[i], -32768.0f, 32767.0f));
        pDst[i] = static_cast<Vqc16s>(static_cast<int32_t>(v));
    }
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
    // Rounded to 16 bits first, then limited to 12; the step is in bytes.
    Vqc16u px[64];
    for (int32_t i = 0; i < 64; ++i) {
        const int32_t v = static_cast<int32_t>(roundEven(clampf(block[i] + 2048.0f, 0.0f, 65535.0f)));
        px[i] = static_cast<Vqc16u>(v > 4095 ? 4095 : v);
    }
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
