// YCbCr to RGB and BGR: the table forms (row-parallel, except the packed
// forms), the four-channel and planar 422/411 forms with the multiplication
// arithmetic (serial), and the interleaved 422 form (row-parallel).
#include "colour.h"
#include "frame/check.h"

using namespace vqcj;

namespace {

using DstRgb3 = DstPix<3, 0, 1, 2>;
using DstBgr3 = DstPix<3, 2, 1, 0>;
using DstRgb4 = DstPix<4, 0, 1, 2>;
using DstBgr4 = DstPix<4, 2, 1, 0>;

// Full rate to one interleaved or packed plane: pSrc, pDst, pSrc[0..2],
// srcStep, dstStep, width, height.
template <bool Parallel, class Dst>
VqcStatus invTable(const Vqc8u* const pSrc[3], int32_t srcStep, typename Dst::Elem* pDst, int32_t dstStep,
                   VqciSize roiSize) {
    if (VqcStatus st = Check().ptr(pSrc).ptr(pDst).elems(pSrc, 3).step(srcStep).step(dstStep).roi(roiSize)) return st;
    ownInvImage<Parallel, InPlanes<3>, InvTable, Dst>(ownPlanes<const Vqc8u, 3>(pSrc, srcStep),
                                                      ownPlane(pDst, dstStep), roiSize, roiSize.width);
    return vqcStatusOk;
}

// Four channels: pDst, pSrc, pSrc[0..2], width, height; steps on trust.
template <class Dst>
VqcStatus invFour(const Vqc8u* const pSrc[3], int32_t srcStep, Vqc8u* pDst, int32_t dstStep, VqciSize roiSize,
                  Vqc8u aval) {
    if (VqcStatus st = Check().ptr(pDst).ptrs(pSrc, 3).roi(roiSize)) return st;
    ownInvImage<false, InPlanes<3>, InvMul, Dst>(ownPlanes<const Vqc8u, 3>(pSrc, srcStep), ownPlane(pDst, dstStep),
                                                 roiSize, roiSize.width, aval);
    return vqcStatusOk;
}

// Planar 422 (V = 1) and 411 (V = 2): pDst, pSrc, pSrc[0..2], width below 2,
// height below V; neither the steps nor their array are examined. LastPair:
// an odd width processes its last pair whole, one pixel beyond the width.
template <int V, bool LastPair, class Dst>
VqcStatus invSub(const Vqc8u* const pSrc[3], const int32_t srcStep[3], Vqc8u* pDst, int32_t dstStep,
                 VqciSize roiSize, Vqc8u aval) {
    if (VqcStatus st = Check().ptr(pDst).ptrs(pSrc, 3).roi(roiSize, 2, V)) return st;
    const int32_t width = LastPair ? addW(roiSize.width, 1) & ~1 : roiSize.width & ~1;
    return ownInvSubImage<V, Dst>(ownPlanes<const Vqc8u, 3>(pSrc, srcStep), ownPlane(pDst, dstStep), roiSize, width,
                                  aval);
}

}  // namespace

extern "C" {

VQCJ_API VqcStatus vqciYCbCrToRGB_JPEG_8u_P3C3R(const Vqc8u* const pSrc[3], int32_t srcStep, Vqc8u* pDst,
                                                 int32_t dstStep, VqciSize roiSize) {
    return invTable<true, DstRgb3>(pSrc, srcStep, pDst, dstStep, roiSize);
}
VQCJ_API VqcStatus vqciYCbCrToBGR_JPEG_8u_P3C3R(const Vqc8u* const pSrc[3], int32_t srcStep, Vqc8u* pDst,
                                                 int32_t dstStep, VqciSize roiSize) {
    return invTable<true, DstBgr3>(pSrc, srcStep, pDst, dstStep, roiSize);
}

VQCJ_API VqcStatus vqciYCbCrToRGB_JPEG_8u_P3C4R(const Vqc8u* const pSrc[3], int32_t srcStep, Vqc8u* pDst,
                                                 int32_t dstStep, VqciSize roiSize, Vqc8u aval) {
    return invFour<DstRgb4>(pSrc, srcStep, pDst, dstStep, roiSize, aval);
}
VQCJ_API VqcStatus vqciYCbCrToBGR_JPEG_8u_P3C4R(const Vqc8u* const pSrc[3], int32_t srcStep, Vqc8u* pDst,
                                                 int32_t dstStep, VqciSize roiSize, Vqc8u aval) {
    return invFour<DstBgr4>(pSrc, srcStep, pDst, dstStep, roiSize, aval);
}

VQCJ_API VqcStatus vqciYCbCrToRGB_JPEG_8u_P3R(const Vqc8u* const pSrc[3], int32_t srcStep, Vqc8u* const pDst[3],
                                               int32_t dstStep, VqciSize roiSize) {
    if (VqcStatus st = ownCheckPlanes<3>(pSrc, srcStep, pDst, dstStep, roiSize)) return st;
    ownInvImage<true, InPlanes<3>, InvTable, DstPlanes<>>(ownPlanes<const Vqc8u, 3>(pSrc, srcStep),
                                                          ownPlanes<Vqc8u, 3>(pDst, dstStep), roiSize, roiSize.width);
    return vqcStatusOk;
}

VQCJ_API VqcStatus vqciYCbCrToBGR555_JPEG_8u16u_P3C3R(const Vqc8u* const pSrc[3], int32_t srcStep, Vqc16u* pDst,
                                                       int32_t dstStep, VqciSize roiSize) {
    return invTable<false, DstPacked<false, true>>(pSrc, srcStep, pDst, dstStep, roiSize);
}
VQCJ_API VqcStatus vqciYCbCrToBGR565_JPEG_8u16u_P3C3R(const Vqc8u* const pSrc[3], int32_t srcStep, Vqc16u* pDst,
                                                       int32_t dstStep, VqciSize roiSize) {
    return invTable<false, DstPacked<true, true>>(pSrc, srcStep, pDst, dstStep, roiSize);
}
VQCJ_API VqcStatus vqciYCbCrToRGB555_JPEG_8u16u_P3C3R(const Vqc8u* const pSrc[3], int32_t srcStep, Vqc16u* pDst,
                                                       int32_t dstStep, VqciSize roiSize) {
    return invTable<false, DstPacked<false, false>>(pSrc, srcStep, pDst, dstStep, roiSize);
}
VQCJ_API VqcStatus vqciYCbCrToRGB565_JPEG_8u16u_P3C3R(const Vqc8u* const pSrc[3], int32_t srcStep, Vqc16u* pDst,
                                                       int32_t dstStep, VqciSize roiSize) {
    return invTable<false, DstPacked<true, false>>(pSrc, srcStep, pDst, dstStep, roiSize);
}

VQCJ_API VqcStatus vqciYCbCr422ToRGB_JPEG_8u_P3C3R(const Vqc8u* const pSrc[3], const int32_t srcStep[3],
                                                    Vqc8u* pDst, int32_t dstStep, VqciSize roiSize) {
    return invSub<1, false, DstRgb3>(pSrc, srcStep, pDst, dstStep, roiSize, 0);
}
VQCJ_API VqcStatus vqciYCbCr422ToBGR_JPEG_8u_P3C3R(const Vqc8u* const pSrc[3], const int32_t srcStep[3],
                                                    Vqc8u* pDst, int32_t dstStep, VqciSize roiSize) {
    return invSub<1, false, DstBgr3>(pSrc, srcStep, pDst, dstStep, roiSize, 0);
}
VQCJ_API VqcStatus vqciYCbCr422ToRGB_JPEG_8u_P3C4R(const Vqc8u* const pSrc[3], const int32_t srcStep[3],
                                                    Vqc8u* pDst, int32_t dstStep, VqciSize roiSize, Vqc8u aval) {
    return invSub<1, false, DstRgb4>(pSrc, srcStep, pDst, dstStep, roiSize, aval);
}
VQCJ_API VqcStatus vqciYCbCr422ToBGR_JPEG_8u_P3C4R(const Vqc8u* const pSrc[3], const int32_t srcStep[3],
                                                    Vqc8u* pDst, int32_t dstStep, VqciSize roiSize, Vqc8u aval) {
    return invSub<1, false, DstBgr4>(pSrc, srcStep, pDst, dstStep, roiSize, aval);
}

// Only the three-channel RGB member stops at the even width; the other three
// process an odd last pair whole.
VQCJ_API VqcStatus vqciYCbCr411ToRGB_JPEG_8u_P3C3R(const Vqc8u* const pSrc[3], const int32_t srcStep[3],
                                                    Vqc8u* pDst, int32_t dstStep, VqciSize roiSize) {
    return invSub<2, false, DstRgb3>(pSrc, srcStep, pDst, dstStep, roiSize, 0);
}
VQCJ_API VqcStatus vqciYCbCr411ToBGR_JPEG_8u_P3C3R(const Vqc8u* const pSrc[3], const int32_t srcStep[3],
                                                    Vqc8u* pDst, int32_t dstStep, VqciSize roiSize) {
    return invSub<2, true, DstBgr3>(pSrc, srcStep, pDst, dstStep, roiSize, 0);
}
VQCJ_API VqcStatus vqciYCbCr411ToRGB_JPEG_8u_P3C4R(const Vqc8u* const pSrc[3], const int32_t srcStep[3],
                                                    Vqc8u* pDst, int32_t dstStep, VqciSize roiSize, Vqc8u aval) {
    return invSub<2, true, DstRgb4>(pSrc, srcStep, pDst, dstStep, roiSize, aval);
}
VQCJ_API VqcStatus vqciYCbCr411ToBGR_JPEG_8u_P3C4R(const Vqc8u* const pSrc[3], const int32_t srcStep[3],
                                                    Vqc8u* pDst, int32_t dstStep, VqciSize roiSize, Vqc8u aval) {
    return invSub<2, true, DstBgr4>(pSrc, srcStep, pDst, dstStep, roiSize, aval);
}

// Pairs while the column is below the width: an odd width processes its last
// pair whole, and there is no warning. Steps on trust.
VQCJ_API VqcStatus vqciYCbCr422ToRGB_JPEG_8u_C2C3R(const Vqc8u* pSrc, int32_t srcStep, Vqc8u* pDst,
                                                    int32_t dstStep, VqciSize roiSize) {
    if (VqcStatus st = Check().ptr(pSrc).ptr(pDst).roi(roiSize)) return st;
    ownInvImage<true, In422Pairs, InvTable, DstRgb3>(ownPlane(pSrc, srcStep), ownPlane(pDst, dstStep), roiSize,
                                                     addW(roiSize.width, 1) & ~1);
    return vqcStatusOk;
}

}  // extern "C"
