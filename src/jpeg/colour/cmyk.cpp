// CMYK and YCCK: the inks as complemented R, G, B through the table
// arithmetic, K unchanged. All four are row-parallel.
#include "colour.h"
#include "frame/check.h"

using namespace vqcj;

extern "C" {

VQCJ_API VqcStatus vqciCMYKToYCCK_JPEG_8u_C4P4R(const Vqc8u* pSrc, int32_t srcStep, Vqc8u* const pDst[4],
                                                 int32_t dstStep, VqciSize roiSize) {
    if (VqcStatus st = Check().ptr(pSrc).ptrs(pDst, 4).step(srcStep).step(dstStep).roi(roiSize)) return st;
    ownFwdImage<true, FwdForm::CmykPix>(ownPlane(pSrc, srcStep),
                                                             ownPlanes<Vqc8u, 4>(pDst, dstStep), roiSize);
    return vqcStatusOk;
}

VQCJ_API VqcStatus vqciCMYKToYCCK_JPEG_8u_P4R(const Vqc8u* const pSrc[4], int32_t srcStep, Vqc8u* const pDst[4],
                                               int32_t dstStep, VqciSize roiSize) {
    if (VqcStatus st = ownCheckPlanes<4>(pSrc, srcStep, pDst, dstStep, roiSize)) return st;
    ownFwdImage<true, FwdForm::CmykPlanes>(ownPlanes<const Vqc8u, 4>(pSrc, srcStep),
                                                    ownPlanes<Vqc8u, 4>(pDst, dstStep), roiSize);
    return vqcStatusOk;
}

VQCJ_API VqcStatus vqciYCCKToCMYK_JPEG_8u_P4C4R(const Vqc8u* const pSrc[4], int32_t srcStep, Vqc8u* pDst,
                                                 int32_t dstStep, VqciSize roiSize) {
    if (VqcStatus st = Check().ptr(pSrc).ptr(pDst).elems(pSrc, 4).step(srcStep).step(dstStep).roi(roiSize)) return st;
    ownInvImage<true, InvForm::CmykPix>(ownPlanes<const Vqc8u, 4>(pSrc, srcStep),
                                                                       ownPlane(pDst, dstStep), roiSize, roiSize.width);
    return vqcStatusOk;
}

VQCJ_API VqcStatus vqciYCCKToCMYK_JPEG_8u_P4R(const Vqc8u* const pSrc[4], int32_t srcStep, Vqc8u* const pDst[4],
                                               int32_t dstStep, VqciSize roiSize) {
    if (VqcStatus st = ownCheckPlanes<4>(pSrc, srcStep, pDst, dstStep, roiSize)) return st;
    ownInvImage<true, InvForm::CmykPlanes>(ownPlanes<const Vqc8u, 4>(pSrc, srcStep),
                                                              ownPlanes<Vqc8u, 4>(pDst, dstStep), roiSize,
                                                              roiSize.width);
    return vqcStatusOk;
}

}  // extern "C"
