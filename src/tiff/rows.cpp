// TIFF rows. The 16-bit join and split are one kernel source compiled for
// every SIMD target; PackBits is scalar.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "tiff/rows.cpp"
#include <hwy/foreach_target.h>  // must come before highway.h
#include <hwy/highway.h>

#include "frame/check.h"
#include "frame/memory.h"
#include "frame/simd.h"
#include "frame/wrap.h"
#include "rows.h"

#ifndef VQCJ_TIFFROWS_ONCE
#define VQCJ_TIFFROWS_ONCE
namespace vqcj {

namespace {

constexpr int32_t kMaxPacket = 128;
// A fold needs the literal's header below this, so that the literal, the
// pair and at least one new byte still fit one packet of 128.
constexpr int32_t kFoldHeaderLimit = 125;

// Limits are compared in 64 bits: a count near the top of the 32-bit range
// must not wrap past its limit.
constexpr bool passes(int32_t at, int32_t add, int32_t limit) {
    return static_cast<int64_t>(at) + add > limit;
}

}  // namespace

// Every run of two or more goes out as a replicate packet first. A pair
// (header 0xFF) that sits right after a literal is folded back into that
// literal when the next packet turns out to be a literal too, so a lone pair
// between literals costs its two bytes and no header. The history keeps the
// kinds of the last two packets, 1 for a literal, newest in bit 0.
VqcStatus ownPackBitsRow(const Vqc8u* pSrc, int32_t srcLen, Vqc8u* pDst, int32_t* pDstCount, int32_t dstLenMax) {
    int32_t count = *pDstCount;
    // Every packet below is tested against the limit before it is written,
    // so only the entry count can already be past it.
    if (count > dstLenMax) return vqcStatusRowOverrun;

    int32_t pos = 0;
    Vqc8u* literal = nullptr;  // header of the last literal packet
    unsigned history = 0;
    bool lastWasPair = false;
    VqcStatus st = vqcStatusOk;
    while (pos != srcLen) {
        const Vqc8u* p = pSrc + pos;
        const int32_t left = srcLen - pos;
        const int32_t run = ownRunLength(p, left < kMaxPacket ? left : kMaxPacket);
        if (run >= 2) {
            if (passes(count, 2, dstLenMax)) {
                st = vqcStatusRowOverrun;
                break;
            }
            pDst[count] = static_cast<Vqc8u>(1 - run);
            pDst[count + 1] = p[0];
            pos += run;
            count += 2;
            history = (history << 1) & 3u;
            lastWasPair = run == 2;
            continue;
        }
        // Literal, then the pair: the pair and the new bytes join the literal.
        if (history == 2u && lastWasPair && *literal < kFoldHeaderLimit) {
            const int32_t h = *literal;
            const int32_t t = ownLiteralLength(p, left, kFoldHeaderLimit - h);
            if (passes(count, t, dstLenMax)) {
                st = vqcStatusRowOverrun;
                break;
            }
            pDst[count - 2] = pDst[count - 1];
            ownCopy8u(p, pDst + count, t);
            *literal = static_cast<Vqc8u>(h + 2 + t);
            pos += t;
            count += t;
            history = ((history << 1) | 1u) & 3u;
            continue;
        }
        const int32_t t = ownLiteralLength(p, left, kMaxPacket);
        if (passes(count, t + 1, dstLenMax)) {
            st = vqcStatusRowOverrun;
            break;
        }
        literal = pDst + count;
        *literal = static_cast<Vqc8u>(t - 1);
        ownCopy8u(p, literal + 1, t);
        pos += t;
        count += t + 1;
        history = ((history << 1) | 1u) & 3u;
    }
    *pDstCount = count;
    return st;
}

// Stops at the packet that completes the row and leaves *pSrcPos after it,
// so the caller walks from row to row with one position. A packet that would
// pass srcLen or the row is refused whole, after its header was read.
VqcStatus ownUnpackBitsRow(const Vqc8u* pSrc, int32_t* pSrcPos, int32_t srcLen, Vqc8u* pDst, int32_t dstLen) {
    const Vqc8u* const start = pSrc + *pSrcPos;
    const Vqc8u* const end = pSrc + srcLen;
    const Vqc8u* s = start;
    int32_t room = dstLen;
    VqcStatus st = vqcStatusRowOverrun;
    while (s < end) {
        const int32_t n = static_cast<int8_t>(*s++);
        if (n >= 0) {
            const int32_t m = n + 1;
            if (m > end - s || m > room) break;
            ownCopy8u(s, pDst, m);
            s += m;
            pDst += m;
            room -= m;
        } else if (n != -128) {
            // Only the row is tested: a header on the last byte of the limit
            // takes its value from the byte at srcLen.
            const int32_t m = 1 - n;
            if (m > room) break;
            ownFill8u(*s++, pDst, m);
            pDst += m;
            room -= m;
        } else {
            continue;  // no-op packet; the row is not yet full
        }
        if (room == 0) {
            st = vqcStatusOk;
            break;
        }
    }
    // Past a final replicate header the position may stand one beyond srcLen.
    *pSrcPos = addW(*pSrcPos, static_cast<int32_t>(s - start));
    return st;
}

void ownJoinRow16(const Vqc8u* __restrict hi, const Vqc8u* __restrict lo, Vqc8u* __restrict dst, int32_t len) {
    for (int32_t i = 0; i < len; ++i) {
        dst[2 * i] = lo[i];
        dst[2 * i + 1] = hi[i];
    }
}

void ownSplitRow16(const Vqc8u* __restrict src, Vqc8u* __restrict hi, Vqc8u* __restrict lo, int32_t len) {
    for (int32_t i = 0; i < len; ++i) {
        lo[i] = src[2 * i];
        hi[i] = src[2 * i + 1];
    }
}

}  // namespace vqcj
#endif  // VQCJ_TIFFROWS_ONCE

HWY_BEFORE_NAMESPACE();
namespace vqcj::HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

void JoinRow16(const Vqc8u* hi, const Vqc8u* lo, Vqc8u* dst, int32_t len) {
    if constexpr (VQCJ_SIMD_BASELINE) {
        ownJoinRow16(hi, lo, dst, len);
    } else {
        const hn::ScalableTag<uint8_t> d;
        const int32_t n = static_cast<int32_t>(hn::Lanes(d));
        int32_t i = 0;
        for (; i + n <= len; i += n) hn::StoreInterleaved2(hn::LoadU(d, lo + i), hn::LoadU(d, hi + i), d, dst + 2 * i);
        ownJoinRow16(hi + i, lo + i, dst + 2 * i, len - i);
    }
}

void SplitRow16(const Vqc8u* src, Vqc8u* hi, Vqc8u* lo, int32_t len) {
    if constexpr (VQCJ_SIMD_BASELINE) {
        ownSplitRow16(src, hi, lo, len);
    } else {
        const hn::ScalableTag<uint8_t> d;
        const int32_t n = static_cast<int32_t>(hn::Lanes(d));
        int32_t i = 0;
        for (; i + n <= len; i += n) {
            hn::Vec<decltype(d)> l, h;
            hn::LoadInterleaved2(d, src + 2 * i, l, h);
            hn::StoreU(l, d, lo + i);
            hn::StoreU(h, d, hi + i);
        }
        ownSplitRow16(src + 2 * i, hi + i, lo + i, len - i);
    }
}

}  // namespace vqcj::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace vqcj {

HWY_EXPORT(JoinRow16);
HWY_EXPORT(SplitRow16);

}  // namespace vqcj

using namespace vqcj;

extern "C" {

VQCJ_API VqcStatus vqciPackBitsRow_TIFF_8u_C1(const Vqc8u* pSrc, int32_t srcLen, Vqc8u* pDst, int32_t* pDstCount,
                                               int32_t dstLenMax) {
    if (VqcStatus st = Check().ptr(pSrc).ptr(pDst).ptr(pDstCount).size(srcLen).size(dstLenMax)) return st;
    return ownPackBitsRow(pSrc, srcLen, pDst, pDstCount, dstLenMax);
}

VQCJ_API VqcStatus vqciUnpackBitsRow_TIFF_8u_C1(const Vqc8u* pSrc, int32_t* pSrcPos, int32_t srcLen, Vqc8u* pDst,
                                                 int32_t dstLen) {
    if (VqcStatus st = Check().ptr(pSrc).ptr(pSrcPos).ptr(pDst).size(srcLen).size(dstLen)) return st;
    return ownUnpackBitsRow(pSrc, pSrcPos, srcLen, pDst, dstLen);
}

// A length below 1 is reported as a bad step (-14), not a bad size: that is
// this pair's interface. The plane pointers inside the array are not tested.
VQCJ_API VqcStatus vqciJoinRow_TIFF_8u16u_C1(const Vqc8u* const ppSrc[2], Vqc8u* pDst, int32_t len) {
    if (VqcStatus st = Check().ptr(ppSrc).ptr(pDst).fail(len < 1, vqcStatusBadStep)) return st;
    VQCJ_DISPATCH(JoinRow16)(ppSrc[0], ppSrc[1], pDst, len);
    return vqcStatusOk;
}

VQCJ_API VqcStatus vqciSplitRow_TIFF_16u8u_C1(const Vqc8u* pSrc, Vqc8u* const ppDst[2], int32_t len) {
    if (VqcStatus st = Check().ptr(pSrc).ptr(ppDst).fail(len < 1, vqcStatusBadStep)) return st;
    VQCJ_DISPATCH(SplitRow16)(pSrc, ppDst[0], ppDst[1], len);
    return vqcStatusOk;
}

}  // extern "C"
#endif  // HWY_ONCE
