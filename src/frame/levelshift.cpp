// Level shift: one kernel source compiled for every SIMD target.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "frame/levelshift.cpp"
#include <hwy/foreach_target.h>  // must come before highway.h
#include <hwy/highway.h>

#include "check.h"
#include "levelshift.h"
#include "parallel.h"
#include "rows.h"
#include "simd.h"
#include "wrap.h"

#ifndef VQCJ_LEVELSHIFT_ONCE
#define VQCJ_LEVELSHIFT_ONCE
namespace vqcj {

// The plain routines: the baseline target and the tests' reference.
void ownSub128RowsPlain(const Vqc8u* pSrc, int32_t srcStep, Vqc16s* pDst, int32_t dstStep, int32_t width,
                        int32_t first, int32_t last) {
    for (int32_t y = first; y < last; ++y) {
        const Vqc8u* __restrict s = rowAt(pSrc, srcStep, y);
        Vqc16s* __restrict d = rowAt(pDst, dstStep, y);
        for (int32_t x = 0; x < width; ++x) d[x] = static_cast<Vqc16s>(s[x] - 128);
    }
}

void ownAdd128RowsPlain(const Vqc16s* pSrc, int32_t srcStep, Vqc8u* pDst, int32_t dstStep, int32_t width,
                        int32_t first, int32_t last) {
    for (int32_t y = first; y < last; ++y) {
        const Vqc16s* __restrict s = rowAt(pSrc, srcStep, y);
        Vqc8u* __restrict d = rowAt(pDst, dstStep, y);
        for (int32_t x = 0; x < width; ++x) d[x] = add128Sat8u(s[x]);
    }
}

}  // namespace vqcj
#endif

HWY_BEFORE_NAMESPACE();
namespace vqcj::HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

void Sub128Rows(const Vqc8u* pSrc, int32_t srcStep, Vqc16s* pDst, int32_t dstStep, int32_t width, int32_t first,
                int32_t last) {
    if constexpr (VQCJ_SIMD_BASELINE) {
        ownSub128RowsPlain(pSrc, srcStep, pDst, dstStep, width, first, last);
    } else {
        const hn::ScalableTag<int16_t> d16;
        const hn::Rebind<uint8_t, decltype(d16)> d8;
        const int32_t n = static_cast<int32_t>(hn::Lanes(d16));
        const auto k128 = hn::Set(d16, 128);
        for (int32_t y = first; y < last; ++y) {
            const Vqc8u* s = rowAt(pSrc, srcStep, y);
            Vqc16s* d = rowAt(pDst, dstStep, y);
            int32_t x = 0;
            for (; x + n <= width; x += n)
                hn::StoreU(hn::Sub(hn::BitCast(d16, hn::PromoteTo(hn::Rebind<uint16_t, decltype(d8)>(),
                                                                    hn::LoadU(d8, s + x))),
                                   k128),
                           d16, d + x);
            for (; x < width; ++x) d[x] = static_cast<Vqc16s>(s[x] - 128);
        }
    }
}

void Add128Rows(const Vqc16s* pSrc, int32_t srcStep, Vqc8u* pDst, int32_t dstStep, int32_t width, int32_t first,
                int32_t last) {
    if constexpr (VQCJ_SIMD_BASELINE) {
        ownAdd128RowsPlain(pSrc, srcStep, pDst, dstStep, width, first, last);
    } else {
        const hn::ScalableTag<int16_t> d16;
        const hn::Rebind<uint8_t, decltype(d16)> d8;
        const int32_t n = static_cast<int32_t>(hn::Lanes(d16));
        const auto lo = hn::Set(d16, -128), hi = hn::Set(d16, 127), k128 = hn::Set(d16, 128);
        for (int32_t y = first; y < last; ++y) {
            const Vqc16s* s = rowAt(pSrc, srcStep, y);
            Vqc8u* d = rowAt(pDst, dstStep, y);
            int32_t x = 0;
            // Clamp in 16 bits, then the +128 cannot leave 0..255 and the
            // narrowing is exact.
            for (; x + n <= width; x += n) {
                const auto v = hn::Add(hn::Min(hn::Max(hn::LoadU(d16, s + x), lo), hi), k128);
                hn::StoreU(hn::DemoteTo(d8, v), d8, d + x);
            }
            for (; x < width; ++x) d[x] = add128Sat8u(s[x]);
        }
    }
}

}  // namespace vqcj::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace vqcj {

HWY_EXPORT(Sub128Rows);
HWY_EXPORT(Add128Rows);

void ownSub128(const Vqc8u* pSrc, int32_t srcStep, Vqc16s* pDst, int32_t dstStep, VqciSize roiSize) {
    ownParallelRows(roiSize.width, roiSize.height, [=](int32_t first, int32_t last) {
        VQCJ_DISPATCH(Sub128Rows)(pSrc, srcStep, pDst, dstStep, roiSize.width, first, last);
    });
}

void ownAdd128(const Vqc16s* pSrc, int32_t srcStep, Vqc8u* pDst, int32_t dstStep, VqciSize roiSize) {
    ownParallelRows(roiSize.width, roiSize.height, [=](int32_t first, int32_t last) {
        VQCJ_DISPATCH(Add128Rows)(pSrc, srcStep, pDst, dstStep, roiSize.width, first, last);
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
#endif  // HWY_ONCE
