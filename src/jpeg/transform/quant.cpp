#include "quant.h"

#include "frame/check.h"
#include "frame/rows.h"
#include "frame/wrap.h"

namespace vqcj {

VqcStatus ownConvert8u16u(const Vqc8u* pSrc, int32_t srcStep, Vqc16u* pDst, int32_t dstStep, int32_t width,
                          int32_t height) {
    if (VqcStatus st = Check().ptr(pSrc).ptr(pDst).size(width).size(height).step(srcStep).step(dstStep)) return st;
    if (dstStep == 2 * srcStep && srcStep == width) {
        width *= height;
        height = 1;
    }
    for (int32_t y = 0; y < height; ++y) {
        const Vqc8u* __restrict s = rowAt(pSrc, srcStep, y);
        Vqc16u* __restrict d = rowAt(pDst, dstStep, y);
        for (int32_t x = 0; x < width; ++x) d[x] = s[x];
    }
    return vqcStatusOk;
}

VqcStatus ownZigzagToNatural16u(const Vqc16u* pSrc, Vqc16u* pDst) {
    if (VqcStatus st = Check().ptr(pSrc).ptr(pDst)) return st;
    for (int32_t i = 0; i < 64; ++i) pDst[i] = pSrc[ownZigzagPos[i]];
    return vqcStatusOk;
}

VqcStatus ownRecip16u(Vqc16u value, Vqc16u* pTable, int32_t len) {
    if (VqcStatus st = Check().ptr(pTable).size(len)) return st;
    const uint32_t num = static_cast<uint32_t>(value) << 16;
    VqcStatus status = vqcStatusOk;
    for (int32_t i = 0; i < len; ++i) {
        const uint32_t e = pTable[i];
        if (e == 0) {
            pTable[i] = 65535;
            status = vqcStatusDivByZero;
            continue;
        }
        // Bit 16 of the quotient is the low bit of the integer part: an odd
        // part rounds up from 32767/65536 on, an even one only above a half.
        const uint32_t q = num / e;
        const uint32_t odd = (q >> 16) & 1;
        pTable[i] = static_cast<Vqc16u>((q + 2 * odd + 32767) >> 16);
    }
    return status;
}

namespace {

// 16-bit saturation of a 32-bit value by its halves: it fits when the high
// half is the sign extension of the low one. This form stays in 16-bit
// lanes when vectorised, where a clamp on 32 bits would not.
inline Vqc16s sat16sByHalves(int32_t v) {
    const Vqc16s lo = static_cast<Vqc16s>(v), hi = static_cast<Vqc16s>(v >> 16);
    return hi == static_cast<Vqc16s>(lo >> 15) ? lo : static_cast<Vqc16s>((hi >> 15) ^ 0x7FFF);
}

}  // namespace

VqcStatus ownMulScale16u16s(const Vqc16u* pTable, const Vqc16s* pSrc, Vqc16s* pDst, int32_t len, int32_t scale) {
    if (VqcStatus st = Check().ptr(pTable).ptr(pSrc).ptr(pDst).size(len)) return st;
    const int32_t bias = (1 << (scale - 1)) - 1;
    for (int32_t i = 0; i < len; ++i) {
        // The unsigned entry as (t - 32768) + 32768 keeps both factors of the
        // multiply signed 16-bit; the exact product fits in 32 bits.
        const int32_t c = pSrc[i];
        const int32_t p = static_cast<int32_t>(static_cast<Vqc16s>(pTable[i] ^ 0x8000)) * c + c * 32768;
        // Round half to even: adding bias plus the low bit k of the truncated
        // quotient carries exactly when the fraction is above one half, or
        // is one half and k is set. This is the same sum as (p >> 1) plus
        // ((p & 1) + bias + k) >> 1, shifted by scale - 1.
        const int32_t k = (p >> scale) & 1;
        pDst[i] = sat16sByHalves((p + bias + k) >> scale);
    }
    return vqcStatusOk;
}

VqcStatus ownMulSat16sTo(const Vqc16s* pSrc, const Vqc16u* pTable, Vqc16s* pDst, int32_t len) {
    if (VqcStatus st = Check().ptr(pSrc).ptr(pTable).ptr(pDst).size(len)) return st;
    for (int32_t i = 0; i < len; ++i)
        pDst[i] = sat16sByHalves(static_cast<int32_t>(static_cast<Vqc16s>(pTable[i])) * pSrc[i]);
    return vqcStatusOk;
}

VqcStatus ownMulSat16s(const Vqc16u* pTable, Vqc16s* pSrcDst, int32_t len) {
    if (VqcStatus st = Check().ptr(pTable).ptr(pSrcDst).size(len)) return st;
    return ownMulSat16sTo(pSrcDst, pTable, pSrcDst, len);
}

namespace {

// Raw table (zig-zag bytes) to natural-order 16-bit entries.
VqcStatus rawToNatural(const Vqc8u* pRaw, Vqc16u* pDst) {
    alignas(16) Vqc16u wide[64];
    if (VqcStatus st = ownConvert8u16u(pRaw, 8, wide, 16, 8, 8)) return st;
    return ownZigzagToNatural16u(wide, pDst);
}

}  // namespace

}  // namespace vqcj

using namespace vqcj;

extern "C" {

VQCJ_API VqcStatus vqciQuantFwdRawTableInit_JPEG_8u(Vqc8u* pQuantRawTable, int32_t qualityFactor) {
    if (VqcStatus st = Check().ptr(pQuantRawTable).fail(qualityFactor < 1, vqcStatusBadArg)) return st;
    const int32_t scale = qualityFactor < 50 ? 5000 / qualityFactor : subW(200, mulW(2, qualityFactor));
    for (int32_t i = 0; i < 64; ++i) {
        const int32_t v = addW(mulW(pQuantRawTable[i], scale), 50) / 100;
        pQuantRawTable[i] = static_cast<Vqc8u>(v >= 255 ? 255 : (v <= 0 ? 1 : v));
    }
    return vqcStatusOk;
}

VQCJ_API VqcStatus vqciQuantFwdTableInit_JPEG_8u16u(const Vqc8u* pQuantRawTable, Vqc16u* pQuantFwdTable) {
    if (VqcStatus st = Check().ptr(pQuantRawTable).ptr(pQuantFwdTable)) return st;
    if (VqcStatus st = rawToNatural(pQuantRawTable, pQuantFwdTable)) return st;
    return ownRecip16u(32768, pQuantFwdTable, 64);
}

VQCJ_API VqcStatus vqciQuantInvTableInit_JPEG_8u16u(const Vqc8u* pQuantRawTable, Vqc16u* pQuantInvTable) {
    if (VqcStatus st = Check().ptr(pQuantRawTable).ptr(pQuantInvTable)) return st;
    return rawToNatural(pQuantRawTable, pQuantInvTable);
}

VQCJ_API VqcStatus vqciQuantFwd8x8_JPEG_16s_C1I(Vqc16s* pSrcDst, const Vqc16u* pQuantFwdTable) {
    if (VqcStatus st = Check().ptr(pQuantFwdTable).ptr(pSrcDst)) return st;
    ownQuantFwd8x8(pSrcDst, pQuantFwdTable);
    return vqcStatusOk;
}

VQCJ_API VqcStatus vqciQuantInv8x8_JPEG_16s_C1I(Vqc16s* pSrcDst, const Vqc16u* pQuantInvTable) {
    if (VqcStatus st = Check().ptr(pQuantInvTable).ptr(pSrcDst)) return st;
    ownQuantInv8x8(pSrcDst, pQuantInvTable);
    return vqcStatusOk;
}

}  // extern "C"
