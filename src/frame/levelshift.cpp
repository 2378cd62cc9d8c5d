#include "levelshift.h"

#include "check.h"
#include "parallel.h"
#include "rows.h"
#include "wrap.h"

namespace vqcj {

void ownSub128(const Vqc8u* pSrc, int32_t srcStep, Vqc16s* pDst, int32_t dstStep, VqciSize roiSize) {
    ownParallelRows(roiSize.width, roiSize.height, [=](int32_t first, int32_t last) {
        const int32_t w = roiSize.width;
        for (int32_t y = first; y < last; ++y) {
            const Vqc8u* __restrict s = rowAt(pSrc, srcStep, y);
            Vqc16s* __restrict d = rowAt(pDst, dstStep, y);
            for (int32_t x = 0; x < w; ++x) d[x] = static_cast<Vqc16s>(s[x] - 128);
        }
    });
}

void ownAdd128(const Vqc16s* pSrc, int32_t srcStep, Vqc8u* pDst, int32_t dstStep, VqciSize roiSize) {
    ownParallelRows(roiSize.width, roiSize.height, [=](int32_t first, int32_t last) {
        // A local bound: byte stores could otherwise alias the captured width.
        const int32_t w = roiSize.width;
        for (int32_t y = first; y < last; ++y) {
            const Vqc16s* __restrict s = rowAt(pSrc, srcStep, y);
            Vqc8u* __restrict d = rowAt(pDst, dstStep, y);
            for (int32_t x = 0; x < w; ++x) d[x] = add128Sat8u(s[x]);
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
