// RGB and BGR to YCbCr or Y: the table forms (row-parallel, except the packed
// forms), the four-channel forms and the fused 422/411 forms (serial).
#include "colour.h"
#include "frame/check.h"

using namespace vqcj;

namespace {

using SrcRgb3 = SrcPix<3, 0, 1, 2>;
using SrcBgr3 = SrcPix<3, 2, 1, 0>;
using SrcRgb4 = SrcPix<4, 0, 1, 2>;
using SrcBgr4 = SrcPix<4, 2, 1, 0>;

// Chroma constants of the fused forms: 0xFF0000 is 128 and one half modulo
// 2^25; 0xFFC000 (one member only) and 0x1FF8000 (411) round at one eighth.
constexpr uint32_t kK422 = 0xFF0000, kK422Rgb3 = 0xFFC000, kK411 = 0x1FF8000;

template <bool Parallel, class Src, class Arith>
VqcStatus fwdToPlanes(typename Src::Elem* pSrc, int32_t srcStep, Vqc8u* const pDst[3], int32_t dstStep,
                      VqciSize roiSize) {
    ownFwdImage<Parallel, Src, Arith, 3>(ownPlane(pSrc, srcStep), ownPlanes<Vqc8u, 3>(pDst, dstStep), roiSize);
    return vqcStatusOk;
}

// Checks of the table forms with one source plane: pSrc, pDst, pDst[0..2],
// srcStep, dstStep, width, height.
template <bool Parallel, class Src>
VqcStatus fwdTable(typename Src::Elem* pSrc, int32_t srcStep, Vqc8u* const pDst[3], int32_t dstStep,
                   VqciSize roiSize) {
    if (VqcStatus st = Check().ptr(pSrc).ptrs(pDst, 3).step(srcStep).step(dstStep).roi(roiSize)) return st;
    return fwdToPlanes<Parallel, Src, FwdTable>(pSrc, srcStep, pDst, dstStep, roiSize);
}

// Four channels: pointers and size only, the steps are taken on trust.
template <class Src, class Arith>
VqcStatus fwdFour(const Vqc8u* pSrc, int32_t srcStep, Vqc8u* const pDst[3], int32_t dstStep, VqciSize roiSize) {
    if (VqcStatus st = Check().ptr(pSrc).ptrs(pDst, 3).roi(roiSize)) return st;
    return fwdToPlanes<false, Src, Arith>(pSrc, srcStep, pDst, dstStep, roiSize);
}

// Fused: pointers, then width below 2 and height below V; no step, nor the
// step array, is examined.
template <class Src, int V, uint32_t K>
VqcStatus fwdFused(const Vqc8u* pSrc, int32_t srcStep, Vqc8u* const pDst[3], const int32_t dstStep[3],
                   VqciSize roiSize) {
    if (VqcStatus st = Check().ptr(pSrc).ptrs(pDst, 3).roi(roiSize, 2, V)) return st;
    return ownFwdFusedImage<Src, V, K>(ownPlane(pSrc, srcStep), ownPlanes<Vqc8u, 3>(pDst, dstStep), roiSize);
}

template <class Src>
VqcStatus fwdLuma(const Vqc8u* pSrc, int32_t srcStep, Vqc8u* pDst, int32_t dstStep, VqciSize roiSize) {
    if (VqcStatus st = Check().ptr(pSrc).ptr(pDst).step(srcStep).step(dstStep).roi(roiSize)) return st;
    ownFwdImage<true, Src, FwdTable, 1>(ownPlane(pSrc, srcStep), ownPlane(pDst, dstStep), roiSize);
    return vqcStatusOk;
}

}  // namespace

extern "C" {

VQCJ_API VqcStatus vqciRGBToYCbCr_JPEG_8u_C3P3R(const Vqc8u* pSrc, int32_t srcStep, Vqc8u* const pDst[3],
                                                 int32_t dstStep, VqciSize roiSize) {
    return fwdTable<true, SrcRgb3>(pSrc, srcStep, pDst, dstStep, roiSize);
}
VQCJ_API VqcStatus vqciBGRToYCbCr_JPEG_8u_C3P3R(const Vqc8u* pSrc, int32_t srcStep, Vqc8u* const pDst[3],
                                                 int32_t dstStep, VqciSize roiSize) {
    return fwdTable<true, SrcBgr3>(pSrc, srcStep, pDst, dstStep, roiSize);
}

VQCJ_API VqcStatus vqciRGBToYCbCr_JPEG_8u_C4P3R(const Vqc8u* pSrc, int32_t srcStep, Vqc8u* const pDst[3],
                                                 int32_t dstStep, VqciSize roiSize) {
    return fwdFour<SrcRgb4, FwdC4Rgb>(pSrc, srcStep, pDst, dstStep, roiSize);
}
VQCJ_API VqcStatus vqciBGRToYCbCr_JPEG_8u_C4P3R(const Vqc8u* pSrc, int32_t srcStep, Vqc8u* const pDst[3],
                                                 int32_t dstStep, VqciSize roiSize) {
    return fwdFour<SrcBgr4, FwdC4Bgr>(pSrc, srcStep, pDst, dstStep, roiSize);
}

VQCJ_API VqcStatus vqciRGBToYCbCr_JPEG_8u_P3R(const Vqc8u* const pSrc[3], int32_t srcStep, Vqc8u* const pDst[3],
                                               int32_t dstStep, VqciSize roiSize) {
    if (VqcStatus st = ownCheckPlanes<3>(pSrc, srcStep, pDst, dstStep, roiSize)) return st;
    ownFwdImage<true, SrcPlanes<>, FwdTable, 3>(ownPlanes<const Vqc8u, 3>(pSrc, srcStep),
                                                ownPlanes<Vqc8u, 3>(pDst, dstStep), roiSize);
    return vqcStatusOk;
}

VQCJ_API VqcStatus vqciBGR555ToYCbCr_JPEG_16u8u_C3P3R(const Vqc16u* pSrc, int32_t srcStep, Vqc8u* const pDst[3],
                                                       int32_t dstStep, VqciSize roiSize) {
    return fwdTable<false, SrcPacked<false, true>>(pSrc, srcStep, pDst, dstStep, roiSize);
}
VQCJ_API VqcStatus vqciBGR565ToYCbCr_JPEG_16u8u_C3P3R(const Vqc16u* pSrc, int32_t srcStep, Vqc8u* const pDst[3],
                                                       int32_t dstStep, VqciSize roiSize) {
    return fwdTable<false, SrcPacked<true, true>>(pSrc, srcStep, pDst, dstStep, roiSize);
}
VQCJ_API VqcStatus vqciRGB555ToYCbCr_JPEG_16u8u_C3P3R(const Vqc16u* pSrc, int32_t srcStep, Vqc8u* const pDst[3],
                                                       int32_t dstStep, VqciSize roiSize) {
    return fwdTable<false, SrcPacked<false, false>>(pSrc, srcStep, pDst, dstStep, roiSize);
}
VQCJ_API VqcStatus vqciRGB565ToYCbCr_JPEG_16u8u_C3P3R(const Vqc16u* pSrc, int32_t srcStep, Vqc8u* const pDst[3],
                                                       int32_t dstStep, VqciSize roiSize) {
    return fwdTable<false, SrcPacked<true, false>>(pSrc, srcStep, pDst, dstStep, roiSize);
}

VQCJ_API VqcStatus vqciRGBToY_JPEG_8u_C3C1R(const Vqc8u* pSrc, int32_t srcStep, Vqc8u* pDst, int32_t dstStep,
                                             VqciSize roiSize) {
    return fwdLuma<SrcRgb3>(pSrc, srcStep, pDst, dstStep, roiSize);
}
VQCJ_API VqcStatus vqciBGRToY_JPEG_8u_C3C1R(const Vqc8u* pSrc, int32_t srcStep, Vqc8u* pDst, int32_t dstStep,
                                             VqciSize roiSize) {
    return fwdLuma<SrcBgr3>(pSrc, srcStep, pDst, dstStep, roiSize);
}
VQCJ_API VqcStatus vqciRGBToY_JPEG_8u_P3C1R(const Vqc8u* const pSrc[3], int32_t srcStep, Vqc8u* pDst,
                                             int32_t dstStep, VqciSize roiSize) {
    if (VqcStatus st = Check().ptrs(pSrc, 3).ptr(pDst).step(srcStep).step(dstStep).roi(roiSize)) return st;
    ownFwdImage<true, SrcPlanes<>, FwdTable, 1>(ownPlanes<const Vqc8u, 3>(pSrc, srcStep), ownPlane(pDst, dstStep),
                                                roiSize);
    return vqcStatusOk;
}

VQCJ_API VqcStatus vqciRGBToYCbCr422_JPEG_8u_C3P3R(const Vqc8u* pSrc, int32_t srcStep, Vqc8u* const pDst[3],
                                                    const int32_t dstStep[3], VqciSize roiSize) {
    return fwdFused<SrcRgb3, 1, kK422Rgb3>(pSrc, srcStep, pDst, dstStep, roiSize);
}
VQCJ_API VqcStatus vqciBGRToYCbCr422_JPEG_8u_C3P3R(const Vqc8u* pSrc, int32_t srcStep, Vqc8u* const pDst[3],
                                                    const int32_t dstStep[3], VqciSize roiSize) {
    return fwdFused<SrcBgr3, 1, kK422>(pSrc, srcStep, pDst, dstStep, roiSize);
}
VQCJ_API VqcStatus vqciRGBToYCbCr422_JPEG_8u_C4P3R(const Vqc8u* pSrc, int32_t srcStep, Vqc8u* const pDst[3],
                                                    const int32_t dstStep[3], VqciSize roiSize) {
    return fwdFused<SrcRgb4, 1, kK422>(pSrc, srcStep, pDst, dstStep, roiSize);
}
VQCJ_API VqcStatus vqciBGRToYCbCr422_JPEG_8u_C4P3R(const Vqc8u* pSrc, int32_t srcStep, Vqc8u* const pDst[3],
                                                    const int32_t dstStep[3], VqciSize roiSize) {
    return fwdFused<SrcBgr4, 1, kK422>(pSrc, srcStep, pDst, dstStep, roiSize);
}

VQCJ_API VqcStatus vqciRGBToYCbCr411_JPEG_8u_C3P3R(const Vqc8u* pSrc, int32_t srcStep, Vqc8u* const pDst[3],
                                                    const int32_t dstStep[3], VqciSize roiSize) {
    return fwdFused<SrcRgb3, 2, kK411>(pSrc, srcStep, pDst, dstStep, roiSize);
}
VQCJ_API VqcStatus vqciBGRToYCbCr411_JPEG_8u_C3P3R(const Vqc8u* pSrc, int32_t srcStep, Vqc8u* const pDst[3],
                                                    const int32_t dstStep[3], VqciSize roiSize) {
    return fwdFused<SrcBgr3, 2, kK411>(pSrc, srcStep, pDst, dstStep, roiSize);
}
VQCJ_API VqcStatus vqciRGBToYCbCr411_JPEG_8u_C4P3R(const Vqc8u* pSrc, int32_t srcStep, Vqc8u* const pDst[3],
                                                    const int32_t dstStep[3], VqciSize roiSize) {
    return fwdFused<SrcRgb4, 2, kK411>(pSrc, srcStep, pDst, dstStep, roiSize);
}
VQCJ_API VqcStatus vqciBGRToYCbCr411_JPEG_8u_C4P3R(const Vqc8u* pSrc, int32_t srcStep, Vqc8u* const pDst[3],
                                                    const int32_t dstStep[3], VqciSize roiSize) {
    return fwdFused<SrcBgr4, 2, kK411>(pSrc, srcStep, pDst, dstStep, roiSize);
}

}  // extern "C"
