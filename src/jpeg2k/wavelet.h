// Shared frame of the wavelet families: strided access, line extension, the
// 2D pass order, the temporary image of the band forms and the size queries.
// The lifting arithmetic itself lives with each filter.
#pragma once

#include <vqcj.h>

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "frame/check.h"
#include "frame/wrap.h"

namespace vqcj {

// Steps are byte counts for every element type.
template <class T>
inline T* ownAt(T* p, ptrdiff_t bytes) {
    return reinterpret_cast<T*>(reinterpret_cast<char*>(p) + bytes);
}
template <class T>
inline const T* ownAt(const T* p, ptrdiff_t bytes) {
    return reinterpret_cast<const T*>(reinterpret_cast<const char*>(p) + bytes);
}

// A value kept at the sample's width: 16-bit lines keep the low 16 bits of
// every stored step, 32-bit ones wrap.
template <class T>
constexpr int32_t ownNarrow(int32_t v) {
    return static_cast<int32_t>(static_cast<T>(v));
}

// Whole-sample mirror of a line held at x[0, n): x[-k] = x[k], x[n-1+k] =
// x[n-1-k].
template <class T>
inline void ownMirror(T* x, int n, int left, int right) {
    for (int k = 1; k <= left; ++k) x[-k] = x[k];
    for (int k = 1; k <= right; ++k) x[n - 1 + k] = x[n - 1 - k];
}

// A line of samples strided by `step` bytes, copied to x[0, n).
template <class T>
inline void ownGather(const T* src, ptrdiff_t step, T* x, int n) {
    if (step == static_cast<ptrdiff_t>(sizeof(T))) {
        std::memcpy(x, src, sizeof(T) * static_cast<size_t>(n));
        return;
    }
    for (int i = 0; i < n; ++i) x[i] = *ownAt(src, i * step);
}

// The order of the 2D passes: forward runs the columns, then every row;
// inverse the rows, then the columns. `line(ptr, step, n, phase)` does one
// row in place; `cols(img, step, width, height, phase)` the whole vertical
// pass.
template <class T, class Line, class Cols>
inline void ownWT2D(T* img, ptrdiff_t step, const VqciRect& r, bool forward, Line&& line, Cols&& cols) {
    const int px = r.x & 1, py = r.y & 1;
    auto rows = [&] {
        for (int k = 0; k < r.height; ++k) line(ownAt(img, k * step), static_cast<ptrdiff_t>(sizeof(T)), r.width, px);
    };
    if (r.width <= 0) return;
    if (forward) {
        cols(img, step, r.width, r.height, py);
        rows();
    } else {
        rows();
        cols(img, step, r.width, r.height, py);
    }
}

// A vertical pass that runs the line routine down each column.
template <class T, class Line>
inline auto ownColumnsByLine(Line&& line) {
    return [line](T* img, ptrdiff_t step, int width, int n, int p) {
        for (int c = 0; c < width; ++c) line(img + c, step, n, p);
    };
}

// Whole-sample mirror of a row index into [0, n).
constexpr int ownMirrorIndex(int i, int n) { return i < 0 ? -i : i > n - 1 ? 2 * (n - 1) - i : i; }

// Moves the n rows of an image so that row j receives the row that stood at
// srcOf(j), following each cycle of the permutation once with `spare` (one
// row) as the free place. A cycle is taken from its smallest row.
template <class T, class SrcOf>
void ownPermuteRows(T* img, ptrdiff_t step, int width, int n, SrcOf srcOf, T* spare) {
    const size_t bytes = sizeof(T) * static_cast<size_t>(width);
    auto row = [&](int i) { return ownAt(img, i * step); };
    for (int s = 0; s < n; ++s) {
        int k = srcOf(s);
        if (k == s) continue;
        while (k > s) k = srcOf(k);
        if (k != s) continue;  // the cycle has a smaller row: done already
        std::memcpy(spare, row(s), bytes);
        int j = s;
        for (k = srcOf(j); k != s; j = k, k = srcOf(k)) std::memcpy(row(j), row(k), bytes);
        std::memcpy(row(j), spare, bytes);
    }
}

// Lows first: the slot of each row of a line of n at phase p, and back.
struct BandOrder {
    int n, p, nl;
    BandOrder(int n_, int p_) : n(n_), p(p_), nl((n_ + 1 - p_) >> 1) {}
    int indexOfSlot(int j) const { return j < nl ? p + 2 * j : 1 - p + 2 * (j - nl); }
    int slotOfIndex(int i) const { return ((i + p) & 1) ? nl + (i - 1 + p) / 2 : (i - p) / 2; }
};

// Row step of the temporary image of the band forms: a multiple of 32 bytes.
template <class T>
constexpr int32_t ownTempStep(int32_t width) {
    return static_cast<int32_t>((static_cast<uint32_t>(mulW(static_cast<int32_t>(sizeof(T)), width)) + 31u) & ~31u);
}

template <class T>
inline void ownCopyRect(const T* src, ptrdiff_t srcStep, T* dst, ptrdiff_t dstStep, int w, int h) {
    if (w <= 0) return;
    for (int k = 0; k < h; ++k)
        std::memcpy(ownAt(dst, k * dstStep), ownAt(src, k * srcStep), sizeof(T) * static_cast<size_t>(w));
}

// The four bands sit in the working image at the top left, bottom left, top
// right and bottom right, cut at (n + 1) >> 1 whatever the phase.
struct BandCut {
    int wl, hl, wh, hh;
    explicit BandCut(const VqciRect& r)
        : wl((r.width + 1) >> 1), hl((r.height + 1) >> 1), wh(r.width >> 1), hh(r.height >> 1) {}
    int col(int b) const { return b >= 2 ? wl : 0; }
    int row(int b) const { return (b & 1) ? hl : 0; }
    int w(int b) const { return b >= 2 ? wh : wl; }
    int h(int b) const { return (b & 1) ? hh : hl; }
};

// Forward band form: the source goes to a temporary image at the start of
// the buffer, the line buffer follows it, and the bands are cut out after
// the in-place pass.
template <class T, class InPlace>
inline void ownFwdBands(const T* pSrc, int32_t srcStep, const VqciRect& r, T* const pDst[4], const int32_t dstStep[4],
                        uint8_t* pBuffer, InPlace&& inPlace) {
    const int32_t tstep = ownTempStep<T>(r.width);
    T* tmp = reinterpret_cast<T*>(pBuffer);
    ownCopyRect(pSrc, srcStep, tmp, tstep, r.width, r.height);
    inPlace(tmp, tstep, r, pBuffer + static_cast<ptrdiff_t>(tstep) * r.height);
    const BandCut cut(r);
    for (int b = 0; b < 4; ++b)
        ownCopyRect(ownAt(tmp, cut.row(b) * static_cast<ptrdiff_t>(tstep)) + cut.col(b), tstep, pDst[b], dstStep[b],
                    cut.w(b), cut.h(b));
}

template <class T, class InPlace>
inline void ownInvBands(const T* const pSrc[4], const int32_t srcStep[4], T* pDst, int32_t dstStep, const VqciRect& r,
                        uint8_t* pBuffer, InPlace&& inPlace) {
    const int32_t tstep = ownTempStep<T>(r.width);
    T* tmp = reinterpret_cast<T*>(pBuffer);
    const BandCut cut(r);
    for (int b = 0; b < 4; ++b)
        ownCopyRect(pSrc[b], srcStep[b], ownAt(tmp, cut.row(b) * static_cast<ptrdiff_t>(tstep)) + cut.col(b), tstep,
                    cut.w(b), cut.h(b));
    inPlace(tmp, tstep, r, pBuffer + static_cast<ptrdiff_t>(tstep) * r.height);
    ownCopyRect(tmp, tstep, pDst, dstStep, r.width, r.height);
}

// Size queries: the in-place forms need one line plus `ext` elements of
// extension, none when both sides are below `minSide`; the band forms add
// the temporary image. Arithmetic wraps as 32-bit byte counts.
template <class T>
constexpr int32_t ownBufSizeIR(const VqciRect& r, int minSide, int ext) {
    if (r.width < minSide && r.height < minSide) return 0;
    const int32_t es = static_cast<int32_t>(sizeof(T));
    const uint32_t a = static_cast<uint32_t>(addW(mulW(es, r.width), es * ext));
    const uint32_t b = static_cast<uint32_t>(addW(mulW(es, r.height), es * ext));
    return static_cast<int32_t>(a > b ? a : b);
}
template <class T>
constexpr int32_t ownBufSizeR(const VqciRect& r, int minSide, int ext) {
    return addW(mulW(ownTempStep<T>(r.width), r.height), ownBufSizeIR<T>(r, minSide, ext));
}

// Argument checks shared by both filters.
template <class T>
inline VqcStatus ownCheckLineFwd(const T* s, int32_t ss, const T* l, int32_t ls, const T* h, int32_t hs, VqciSize roi) {
    return Check().ptr(s).ptr(l).ptr(h).step(ss).step(ls).step(hs).size(roi.height).size(roi.width);
}
template <class T>
inline VqcStatus ownCheckLineInv(const T* l, int32_t ls, const T* h, int32_t hs, VqciSize roi, const T* d, int32_t ds) {
    return Check().ptr(l).ptr(h).ptr(d).step(ls).step(hs).step(ds).size(roi.height).size(roi.width);
}
template <class T>
inline VqcStatus ownCheckInPlace(const T* p, int32_t step, const VqciRect* r, const uint8_t* buf) {
    return Check().ptr(p).step(step).ptr(r).ptr(buf);
}
template <class T>
inline VqcStatus ownCheckFwdBands(const T* s, int32_t ss, const VqciRect* r, T* const* d, const int32_t* ds,
                                  const uint8_t* buf) {
    Check c;
    c.ptr(s).ptr(d).ptr(ds).ptr(r).ptr(buf).step(ss).elems(d, 4);
    for (int b = 0; b < 4; ++b) c.step(c == vqcStatusOk ? ds[b] : 1);
    if (c == vqcStatusOk) c.size(r->width).size(r->height);
    return c;
}
template <class T>
inline VqcStatus ownCheckInvBands(const T* const* s, const int32_t* ss, const T* d, int32_t ds, const VqciRect* r,
                                  const uint8_t* buf) {
    Check c;
    c.ptr(s).ptr(d).ptr(ss).ptr(r).ptr(buf).step(ds).elems(s, 4);
    for (int b = 0; b < 4; ++b) c.step(c == vqcStatusOk ? ss[b] : 1);
    if (c == vqcStatusOk) c.size(r->width).size(r->height);
    return c;
}

// Exported bodies shared by both filters and all sample types: the checks
// in the family's order, then the worker.
template <class T, class Work>
inline VqcStatus ownFwdLineForm(const T* s, int32_t ss, T* l, int32_t ls, T* h, int32_t hs, VqciSize roi,
                                VqciWTPhase ph, Work work) {
    if (VqcStatus st = ownCheckLineFwd(s, ss, l, ls, h, hs, roi)) return st;
    work(s, ss, l, ls, h, hs, roi, ph != 0);
    return vqcStatusOk;
}
template <class T, class Work>
inline VqcStatus ownInvLineForm(const T* l, int32_t ls, const T* h, int32_t hs, VqciSize roi, T* d, int32_t ds,
                                VqciWTPhase ph, Work work) {
    if (VqcStatus st = ownCheckLineInv(l, ls, h, hs, roi, d, ds)) return st;
    work(l, ls, h, hs, roi, d, ds, ph != 0);
    return vqcStatusOk;
}
template <class T, class Work>
inline VqcStatus ownInPlaceForm(T* p, int32_t step, const VqciRect* r, uint8_t* buf, Work work) {
    if (VqcStatus st = ownCheckInPlace(p, step, r, buf)) return st;
    work(p, step, *r, buf);
    return vqcStatusOk;
}
template <class T, class Work>
inline VqcStatus ownFwdBandForm(const T* s, int32_t ss, const VqciRect* r, T* const d[4], const int32_t ds[4],
                                uint8_t* buf, Work work) {
    if (VqcStatus st = ownCheckFwdBands(s, ss, r, d, ds, buf)) return st;
    ownFwdBands(s, ss, *r, d, ds, buf, work);
    return vqcStatusOk;
}
template <class T, class Work>
inline VqcStatus ownInvBandForm(const T* const s[4], const int32_t ss[4], T* d, int32_t ds, const VqciRect* r,
                                uint8_t* buf, Work work) {
    if (VqcStatus st = ownCheckInvBands(s, ss, d, ds, r, buf)) return st;
    ownInvBands(s, ss, d, ds, *r, buf, work);
    return vqcStatusOk;
}
template <class T>
inline VqcStatus ownBufSizeForm(const VqciRect* r, int32_t* pSize, bool bands, int minSide, int ext) {
    if (VqcStatus st = Check().ptr(r).ptr(pSize)) return st;
    *pSize = bands ? ownBufSizeR<T>(*r, minSide, ext) : ownBufSizeIR<T>(*r, minSide, ext);
    return vqcStatusOk;
}

}  // namespace vqcj
