// MCU conversion exports: one kernel source compiled for every SIMD target.
// Each export names a form (layout, arithmetic, sampling); the dispatched
// entry points pick the form's routine from a table, once per MCU.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "jpeg/mcu/mcu.cpp"
#include <hwy/foreach_target.h>  // must come before highway.h
#include <hwy/highway.h>

#include "frame/check.h"
#include "frame/simd.h"
#include "jpeg/mcu/mcu.h"

#ifndef VQCJ_MCU_ONCE
#define VQCJ_MCU_ONCE
namespace vqcj {

using McuRgb = SrcPix<3, 0, 1, 2>;
using McuBgr = SrcPix<3, 2, 1, 0>;
using McuCmyk = SrcPix<4, 0, 1, 2, true>;
using McuBgr555 = SrcPacked<false, true>;
using McuBgr565 = SrcPacked<true, true>;
using McuToRgb = DstPix<3, 0, 1, 2>;
using McuToBgr = DstPix<3, 2, 1, 0>;
using McuToCmyk = DstPix<4, 0, 1, 2, true>;
using McuToBgr555 = DstPacked<false, true>;
using McuToBgr565 = DstPacked<true, true>;

// The forms, in the order of the routine tables below. 444, 422 and 411
// stand in that order within each group of three.
enum McuFwdForm {
    kFwdRgb,
    kFwdBgr = kFwdRgb + 3,
    kFwdBgr555 = kFwdBgr + 3,
    kFwdBgr565 = kFwdBgr555 + 3,
    kFwdCmyk = kFwdBgr565 + 3,
    kFwdSample = kFwdCmyk + 3,
    kFwdSplit422 = kFwdSample + 3,
};
enum McuInvForm {
    kInvRgb,
    kInvBgr = kInvRgb + 3,
    kInvBgr555 = kInvBgr + 3,
    kInvBgr565 = kInvBgr555 + 3,
    kInvCmyk = kInvBgr565 + 3,
    kInvSample = kInvCmyk + 3,
    kInvJoin422 = kInvSample + 3,
};

// Sampling of a form: 0, 1, 2 for 444, 422, 411.
constexpr int kMcuH[3] = {1, 2, 2}, kMcuV[3] = {1, 1, 2};

}  // namespace vqcj
#endif

HWY_BEFORE_NAMESPACE();
namespace vqcj::HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

template <class Src, class Arith, int S, bool Ink = false>
void mcuFwd(const void* pSrc, int32_t srcStep, Vqc16s* const* pDst) {
    ownMcuFwdPlain<Src, Arith, kMcuH[S], kMcuV[S], Ink>(static_cast<typename Src::Elem*>(pSrc), srcStep, pDst);
}

template <class Arith, class Dst, int S, bool Ink = false>
void mcuInv(const Vqc16s* const* pSrc, void* pDst, int32_t dstStep) {
    ownMcuInvPlain<Arith, Dst, kMcuH[S], kMcuV[S], Ink>(pSrc, static_cast<typename Dst::Elem*>(pDst), dstStep);
}

using FwdFn = void (*)(const void*, int32_t, Vqc16s* const*);
using InvFn = void (*)(const Vqc16s* const*, void*, int32_t);

#define VQCJ_MCU_THREE(f, ...) f<__VA_ARGS__, 0>, f<__VA_ARGS__, 1>, f<__VA_ARGS__, 2>
constexpr FwdFn kFwdTable[] = {
    VQCJ_MCU_THREE(mcuFwd, McuRgb, McuFwdColour),    VQCJ_MCU_THREE(mcuFwd, McuBgr, McuFwdColour),
    VQCJ_MCU_THREE(mcuFwd, McuBgr555, McuFwdColour), VQCJ_MCU_THREE(mcuFwd, McuBgr565, McuFwdColour),
    mcuFwd<McuCmyk, McuFwdColour, 0, true>,           mcuFwd<McuCmyk, McuFwdColour, 1, true>,
    mcuFwd<McuCmyk, McuFwdColour, 2, true>,           VQCJ_MCU_THREE(mcuFwd, McuRgb, McuFwdSample),
    mcuFwd<McuSrcPairs, McuFwdSample, 1>,
};
constexpr InvFn kInvTable[] = {
    VQCJ_MCU_THREE(mcuInv, InvMul, McuToRgb),    VQCJ_MCU_THREE(mcuInv, InvMul, McuToBgr),
    VQCJ_MCU_THREE(mcuInv, InvMul, McuToBgr555), VQCJ_MCU_THREE(mcuInv, InvMul, McuToBgr565),
    mcuInv<InvMul, McuToCmyk, 0, true>,           mcuInv<InvMul, McuToCmyk, 1, true>,
    mcuInv<InvMul, McuToCmyk, 2, true>,           VQCJ_MCU_THREE(mcuInv, McuInvSample, McuToRgb),
    mcuInv<McuInvSample, McuDstPairs, 1>,
};
#undef VQCJ_MCU_THREE
static_assert(sizeof kFwdTable / sizeof kFwdTable[0] == kFwdSplit422 + 1);
static_assert(sizeof kInvTable / sizeof kInvTable[0] == kInvJoin422 + 1);

void McuFwd(int form, const void* pSrc, int32_t srcStep, Vqc16s* const* pDst) {
    kFwdTable[form](pSrc, srcStep, pDst);
}
void McuInv(int form, const Vqc16s* const* pSrc, void* pDst, int32_t dstStep) {
    kInvTable[form](pSrc, pDst, dstStep);
}

}  // namespace vqcj::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace vqcj {

HWY_EXPORT(McuFwd);
HWY_EXPORT(McuInv);

namespace {

// The pixel pointer, the block pointer array and each entry, then the step.
template <int N, class T>
VqcStatus checkedFwd(int form, const T* pSrc, int32_t srcStep, Vqc16s* const* pDstMCU) {
    if (VqcStatus st = Check().ptr(pSrc).ptrs(pDstMCU, N).step(srcStep)) return st;
    VQCJ_DISPATCH(McuFwd)(form, pSrc, srcStep, pDstMCU);
    return vqcStatusOk;
}

template <int N, class T>
VqcStatus checkedInv(int form, const Vqc16s* const* pSrcMCU, T* pDst, int32_t dstStep) {
    if (VqcStatus st = Check().ptr(pDst).ptrs(pSrcMCU, N).step(dstStep)) return st;
    VQCJ_DISPATCH(McuInv)(form, pSrcMCU, pDst, dstStep);
    return vqcStatusOk;
}

}  // namespace
}  // namespace vqcj

using namespace vqcj;

#define VQCJ_MCU_FWD(name, T, N, form)                                                          \
    VQCJ_API VqcStatus name(const T* pSrc, int32_t srcStep, Vqc16s* const pDstMCU[N]) {         \
        return checkedFwd<N>(form, pSrc, srcStep, pDstMCU);                                         \
    }
#define VQCJ_MCU_INV(name, T, N, form)                                                          \
    VQCJ_API VqcStatus name(const Vqc16s* const pSrcMCU[N], T* pDst, int32_t dstStep) {         \
        return checkedInv<N>(form, pSrcMCU, pDst, dstStep);                                         \
    }

extern "C" {

VQCJ_MCU_FWD(vqciRGBToYCbCr444LS_MCU_8u16s_C3P3R, Vqc8u, 3, kFwdRgb)
VQCJ_MCU_FWD(vqciRGBToYCbCr422LS_MCU_8u16s_C3P3R, Vqc8u, 3, kFwdRgb + 1)
VQCJ_MCU_FWD(vqciRGBToYCbCr411LS_MCU_8u16s_C3P3R, Vqc8u, 3, kFwdRgb + 2)
VQCJ_MCU_FWD(vqciBGRToYCbCr444LS_MCU_8u16s_C3P3R, Vqc8u, 3, kFwdBgr)
VQCJ_MCU_FWD(vqciBGRToYCbCr422LS_MCU_8u16s_C3P3R, Vqc8u, 3, kFwdBgr + 1)
VQCJ_MCU_FWD(vqciBGRToYCbCr411LS_MCU_8u16s_C3P3R, Vqc8u, 3, kFwdBgr + 2)
VQCJ_MCU_FWD(vqciBGR555ToYCbCr444LS_MCU_16u16s_C3P3R, Vqc16u, 3, kFwdBgr555)
VQCJ_MCU_FWD(vqciBGR555ToYCbCr422LS_MCU_16u16s_C3P3R, Vqc16u, 3, kFwdBgr555 + 1)
VQCJ_MCU_FWD(vqciBGR555ToYCbCr411LS_MCU_16u16s_C3P3R, Vqc16u, 3, kFwdBgr555 + 2)
VQCJ_MCU_FWD(vqciBGR565ToYCbCr444LS_MCU_16u16s_C3P3R, Vqc16u, 3, kFwdBgr565)
VQCJ_MCU_FWD(vqciBGR565ToYCbCr422LS_MCU_16u16s_C3P3R, Vqc16u, 3, kFwdBgr565 + 1)
VQCJ_MCU_FWD(vqciBGR565ToYCbCr411LS_MCU_16u16s_C3P3R, Vqc16u, 3, kFwdBgr565 + 2)
VQCJ_MCU_FWD(vqciCMYKToYCCK444LS_MCU_8u16s_C4P4R, Vqc8u, 4, kFwdCmyk)
VQCJ_MCU_FWD(vqciCMYKToYCCK422LS_MCU_8u16s_C4P4R, Vqc8u, 4, kFwdCmyk + 1)
VQCJ_MCU_FWD(vqciCMYKToYCCK411LS_MCU_8u16s_C4P4R, Vqc8u, 4, kFwdCmyk + 2)
VQCJ_MCU_FWD(vqciSampleDown444LS_MCU_8u16s_C3P3R, Vqc8u, 3, kFwdSample)
VQCJ_MCU_FWD(vqciSampleDown422LS_MCU_8u16s_C3P3R, Vqc8u, 3, kFwdSample + 1)
VQCJ_MCU_FWD(vqciSampleDown411LS_MCU_8u16s_C3P3R, Vqc8u, 3, kFwdSample + 2)
VQCJ_MCU_FWD(vqciSplit422LS_MCU_8u16s_C2P3R, Vqc8u, 3, kFwdSplit422)

VQCJ_MCU_INV(vqciYCbCr444ToRGBLS_MCU_16s8u_P3C3R, Vqc8u, 3, kInvRgb)
VQCJ_MCU_INV(vqciYCbCr422ToRGBLS_MCU_16s8u_P3C3R, Vqc8u, 3, kInvRgb + 1)
VQCJ_MCU_INV(vqciYCbCr411ToRGBLS_MCU_16s8u_P3C3R, Vqc8u, 3, kInvRgb + 2)
VQCJ_MCU_INV(vqciYCbCr444ToBGRLS_MCU_16s8u_P3C3R, Vqc8u, 3, kInvBgr)
VQCJ_MCU_INV(vqciYCbCr422ToBGRLS_MCU_16s8u_P3C3R, Vqc8u, 3, kInvBgr + 1)
VQCJ_MCU_INV(vqciYCbCr411ToBGRLS_MCU_16s8u_P3C3R, Vqc8u, 3, kInvBgr + 2)
VQCJ_MCU_INV(vqciYCbCr444ToBGR555LS_MCU_16s16u_P3C3R, Vqc16u, 3, kInvBgr555)
VQCJ_MCU_INV(vqciYCbCr422ToBGR555LS_MCU_16s16u_P3C3R, Vqc16u, 3, kInvBgr555 + 1)
VQCJ_MCU_INV(vqciYCbCr411ToBGR555LS_MCU_16s16u_P3C3R, Vqc16u, 3, kInvBgr555 + 2)
VQCJ_MCU_INV(vqciYCbCr444ToBGR565LS_MCU_16s16u_P3C3R, Vqc16u, 3, kInvBgr565)
VQCJ_MCU_INV(vqciYCbCr422ToBGR565LS_MCU_16s16u_P3C3R, Vqc16u, 3, kInvBgr565 + 1)
VQCJ_MCU_INV(vqciYCbCr411ToBGR565LS_MCU_16s16u_P3C3R, Vqc16u, 3, kInvBgr565 + 2)
VQCJ_MCU_INV(vqciYCCK444ToCMYKLS_MCU_16s8u_P4C4R, Vqc8u, 4, kInvCmyk)
VQCJ_MCU_INV(vqciYCCK422ToCMYKLS_MCU_16s8u_P4C4R, Vqc8u, 4, kInvCmyk + 1)
VQCJ_MCU_INV(vqciYCCK411ToCMYKLS_MCU_16s8u_P4C4R, Vqc8u, 4, kInvCmyk + 2)
VQCJ_MCU_INV(vqciSampleUp444LS_MCU_16s8u_P3C3R, Vqc8u, 3, kInvSample)
VQCJ_MCU_INV(vqciSampleUp422LS_MCU_16s8u_P3C3R, Vqc8u, 3, kInvSample + 1)
VQCJ_MCU_INV(vqciSampleUp411LS_MCU_16s8u_P3C3R, Vqc8u, 3, kInvSample + 2)
VQCJ_MCU_INV(vqciJoin422LS_MCU_16s8u_P3C2R, Vqc8u, 3, kInvJoin422)

}  // extern "C"
#endif  // HWY_ONCE
