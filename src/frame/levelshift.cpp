#include "levelshift.h"

#include "check.h"
#include "parallel.h"
#include "rows.h"
#include "wrap.h"

namespace vqcj {

void ownSub128(const Vqc8u* pSrc, int32_t srcStep, Vqc16s* pDst, int32_t dstStep, VqciSize roiSize) {
    const int32_t w = roiSize.width;
    ownParallelRows(w, roiSize.height, [=](int32_t first, int32_t last) {
        const Vqc8u* s = rowAt(pSrc, srcStep, first);
        Vqc16s* d = rowAt(pDst, dstStep, first);
        for (int32_t y = first; y < last; ++y) {
            for (int32_t x = 0; x < w; ++x) d[x] = static_cast<Vqc16s>(s[x] - 128);
            s = rowAt(s, srcStep, 1);
            d = rowAt(d, dstStep, 1);
        }
    });
}

void ownAdd128(const Vqc16s* pSrc, int32_t srcStep, Vqc8u* pDst, int32_t dstStep, VqciSize roiSize) {
    const int32_t w = roiSize.width;
    ownParallelRows(w, roiSize.height, [=](int32_t first, int32_t last) {
        const Vqc16s* s = rowAt(pSrc, srcStep, first);
        Vqc8u* d = rowAt(pDst, dstStep, first);
        for (int32_t y = first; y < last; ++y) {
            for (int32_t x = 0; x < w; ++x) d[x] = sat8u(s[x] + 128);
            s = rowAt(s, srcStep, 1);
            d = rowAt(d, dstStep, 1);
        }
    });
}

}  // namespace vqcj

using namespace vqcj;

extern "C" {

// Buffer order: each buffer followed at once by its step.
VQCJ_API VqcStatus vqciSub128_JPEG_8u16s_C1R(const Vqc8u* pSrc, int32_t srcStep, Vqc16s* pDst, int32_t dstStep,
                                              VqciSize roiSize) {
    if (VqcStatus st = Check().ptr(pSrc).step(srcStep).ptr(pDst).step(dstStep).roi(roiSize)) return st;
    ownSub128(pSrc, srcStep, pDst, dstStep, roiSize);
    return vqcStatusOk;
}

VQCJ_API VqcStatus vqciAdd128_JPEG_16s8u_C1R(const Vqc16s* pSrc, int32_t srcStep, Vqc8u* pDst, int32_t dstStep,
                                              VqciSize roiSize) {
    if (VqcStatus st = Check().ptr(pSrc).step(srcStep).ptr(pDst).step(dstStep).roi(roiSize)) return st;
    ownAdd128(pSrc, srcStep, pDst, dstStep, roiSize);
    return vqcStatusOk;
}

}  // extern "C"
