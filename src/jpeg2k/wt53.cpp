// Reversible 5/3 wavelet: line, column-step and 2D forms for 16-bit and
// 32-bit samples. One set of lifting steps serves every form; the 16-bit
// forms keep each stored value to its low 16 bits, nothing saturates.
#include "lift53.h"
#include "wavelet.h"

namespace vqcj {

namespace {

// Forward lifting of one line. `s` is the first sample at an even global
// position, read from s[-2] on; `nl` lows and `nh` highs are written, and at
// phase 1 the high left of s comes first. Only the predict and update run,
// in one pass, reading each sample once.
template <class T>
void ownFwdLine53(const T* s, ptrdiff_t ss, T* low, ptrdiff_t ls, T* high, ptrdiff_t hs, int nl, int nh, int p) {
    using L = Lift53<T>;
    auto S = [&](int k) -> int32_t { return *ownAt(s, k * ss); };
    int32_t dPrev = L::pred(S(-1), S(-2), S(0));
    if (p) {
        *high = static_cast<T>(dPrev);
        high = ownAt(high, hs);
    }
    // The last turn's high belongs to the band only when the counts match.
    const bool lastHigh = nh - p == nl;
    int i = 0;
    for (; i < nl - 1; ++i) {
        const int32_t d = L::pred(S(2 * i + 1), S(2 * i), S(2 * i + 2));
        *ownAt(low, i * ls) = static_cast<T>(L::upd(S(2 * i), dPrev, d));
        *ownAt(high, i * hs) = static_cast<T>(d);
        dPrev = d;
    }
    if (i < nl) {
        const int32_t d = L::pred(S(2 * i + 1), S(2 * i), S(2 * i + 2));
        *ownAt(low, i * ls) = static_cast<T>(L::upd(S(2 * i), dPrev, d));
        if (lastHigh) *ownAt(high, i * hs) = static_cast<T>(d);
    }
}

// Inverse lifting of one line of `n` outputs at phase `p`. low[j] is the
// even sample of pair j and high[j + p] the odd one after it; reads low[-p]
// and high[-1] on. Even values that are only held in a local (the ones
// before and after the line) stay wide unless `kNarrowEdge`.
template <class T, bool kNarrowEdge>
void ownInvLine53(const T* low, ptrdiff_t ls, const T* high, ptrdiff_t hs, T* dst, ptrdiff_t ds, int n, int p) {
    using L = Lift53<T>;
    const T* h = ownAt(high, p * hs);
    T* d = ownAt(dst, p * ds);
    auto H = [&](int j) -> int32_t { return *ownAt(h, j * hs); };
    auto E = [&](int j) -> int32_t { return L::unupd(*ownAt(low, j * ls), H(j - 1), H(j)); };
    const int m = n - 1 - p;  // last output index relative to d
    int j = -p;
    int32_t e = E(j);
    if (p == 0) {
        e = ownNarrow<T>(e);
        *d = static_cast<T>(e);
    } else if (kNarrowEdge) {
        e = ownNarrow<T>(e);
    }
    for (; 2 * j + 2 <= m; ++j) {
        const int32_t en = ownNarrow<T>(E(j + 1));
        *ownAt(d, (2 * j + 1) * ds) = static_cast<T>(L::unpred(H(j), e, en));
        *ownAt(d, (2 * j + 2) * ds) = static_cast<T>(en);
        e = en;
    }
    if (2 * j + 1 <= m) {
        int32_t en = E(j + 1);
        if (kNarrowEdge) en = ownNarrow<T>(en);
        *ownAt(d, (2 * j + 1) * ds) = static_cast<T>(L::unpred(H(j), e, en));
    }
}

// One forward step over a row triple: the high row from s1 and the low row
// from s0. The high before it is read from `hPrev`, or computed from rows
// m2, m1 and s0 at the top of a band; the new high is stored unless it lies
// past the band.
template <class T, bool kPrevFromSrc, bool kStoreHigh>
void ownFwdColStep53(const T* s0, const T* s1, const T* s2, T* low0, const T* hPrev, T* hOut, int width,
                     const T* m2 = nullptr, const T* m1 = nullptr) {
    using L = Lift53<T>;
    for (int c = 0; c < width; ++c) {
        const int32_t hp = kPrevFromSrc ? L::pred(m1[c], m2[c], s0[c]) : hPrev[c];
        const int32_t d = L::pred(s1[c], s0[c], s2[c]);
        if (kStoreHigh) hOut[c] = static_cast<T>(d);
        low0[c] = static_cast<T>(L::upd(s0[c], hp, d));
    }
}

// One inverse step: the even row from l0 between highs h0 and h1, and the
// odd row of h0 between it and the even row before, which is read from
// `even0` or rebuilt from rows lm and hm at the top of a band.
template <class T, bool kEvenFromSrc, bool kStoreEven>
void ownInvColStep53(const T* l0, const T* h0, const T* h1, const T* even0, T* dOdd, T* dEven, int width,
                     const T* lm = nullptr, const T* hm = nullptr) {
    using L = Lift53<T>;
    for (int c = 0; c < width; ++c) {
        const int32_t e0 = kEvenFromSrc ? L::unupd(lm[c], hm[c], h0[c]) : even0[c];
        int32_t e = L::unupd(l0[c], h0[c], h1[c]);
        if (kStoreEven) e = ownNarrow<T>(e);
        dOdd[c] = static_cast<T>(L::unpred(h0[c], e0, e));
        if (kStoreEven) dEven[c] = static_cast<T>(e);
    }
}

template <class T>
void ownFwdRow53(const T* pSrc, int32_t srcStep, T* pLow, int32_t lowStep, T* pHigh, int32_t highStep, VqciSize roi,
                 int p) {
    constexpr ptrdiff_t e = sizeof(T);
    for (int k = 0; k < roi.height; ++k)
        ownFwdLine53(ownAt(pSrc, k * ptrdiff_t(srcStep)) + p, e, ownAt(pLow, k * ptrdiff_t(lowStep)), e,
                     ownAt(pHigh, k * ptrdiff_t(highStep)), e, roi.width, roi.width, p);
}

template <class T>
void ownInvRow53(const T* pLow, int32_t lowStep, const T* pHigh, int32_t highStep, VqciSize roi, T* pDst,
                 int32_t dstStep, int p) {
    constexpr ptrdiff_t e = sizeof(T);
    for (int k = 0; k < roi.height; ++k)
        ownInvLine53<T, false>(ownAt(pLow, k * ptrdiff_t(lowStep)), e, ownAt(pHigh, k * ptrdiff_t(highStep)), e,
                               ownAt(pDst, k * ptrdiff_t(dstStep)), e, 2 * roi.width, p);
}

template <class T>
void ownFwdCol53(const T* pSrc, int32_t srcStep, T* pLow, int32_t lowStep, T* pHigh, int32_t highStep, VqciSize roi,
                 int p) {
    const int w = roi.width, h = roi.height;
    auto S = [&](int k) { return ownAt(pSrc, k * ptrdiff_t(srcStep)); };
    auto Lo = [&](int k) { return ownAt(pLow, k * ptrdiff_t(lowStep)); };
    auto Hi = [&](int k) { return ownAt(pHigh, k * ptrdiff_t(highStep)); };
    if (p == 0) {
        ownFwdColStep53<T, true, true>(S(0), S(1), S(2), Lo(0), nullptr, Hi(0), w, S(-2), S(-1));
        for (int i = 1; i < h; ++i)
            ownFwdColStep53<T, false, true>(S(2 * i), S(2 * i + 1), S(2 * i + 2), Lo(i), Hi(i - 1), Hi(i), w);
        return;
    }
    {
        const T *a = S(-1), *b = S(0), *c = S(1);
        T* h0 = Hi(0);
        for (int x = 0; x < w; ++x) h0[x] = static_cast<T>(Lift53<T>::pred(b[x], a[x], c[x]));
    }
    for (int i = 0; i < h - 1; ++i)
        ownFwdColStep53<T, false, true>(S(2 * i + 1), S(2 * i + 2), S(2 * i + 3), Lo(i), Hi(i), Hi(i + 1), w);
    ownFwdColStep53<T, false, false>(S(2 * h - 1), S(2 * h), S(2 * h + 1), Lo(h - 1), Hi(h - 1), nullptr, w);
}

template <class T>
void ownInvCol53(const T* pLow, int32_t lowStep, const T* pHigh, int32_t highStep, VqciSize roi, T* pDst,
                 int32_t dstStep, int p) {
    const int w = roi.width, h = roi.height;
    auto Lo = [&](int k) { return ownAt(pLow, k * ptrdiff_t(lowStep)); };
    auto Hi = [&](int k) { return ownAt(pHigh, k * ptrdiff_t(highStep)); };
    auto D = [&](int k) { return ownAt(pDst, k * ptrdiff_t(dstStep)); };
    if (p == 0) {
        {
            const T *l = Lo(0), *a = Hi(-1), *b = Hi(0);
            T* d0 = D(0);
            for (int x = 0; x < w; ++x) d0[x] = static_cast<T>(Lift53<T>::unupd(l[x], a[x], b[x]));
        }
        for (int i = 0; i < h - 1; ++i)
            ownInvColStep53<T, false, true>(Lo(i + 1), Hi(i), Hi(i + 1), D(2 * i), D(2 * i + 1), D(2 * i + 2), w);
        ownInvColStep53<T, false, false>(Lo(h), Hi(h - 1), Hi(h), D(2 * h - 2), D(2 * h - 1), nullptr, w);
        return;
    }
    ownInvColStep53<T, true, true>(Lo(0), Hi(0), Hi(1), nullptr, D(0), D(1), w, Lo(-1), Hi(-1));
    for (int i = 1; i < h; ++i)
        ownInvColStep53<T, false, true>(Lo(i), Hi(i), Hi(i + 1), D(2 * i - 1), D(2 * i), D(2 * i + 1), w);
}

// One line of a 2D form, in place, through the line buffer `buf` (which
// leaves two elements in front for the left extension).
template <class T>
void ownFwdLine2D53(T* x, ptrdiff_t step, int n, int p, T* buf) {
    if (n <= 1) {
        if (n == 1) *x = static_cast<T>(mulW(*x, p + 1));
        return;
    }
    if (n == 2) {
        const int32_t a = *ownAt(x, p * step), b = *ownAt(x, (1 - p) * step);
        const int32_t d = subW(b, a);  // full width: the store alone narrows it
        *ownAt(x, step) = static_cast<T>(d);
        *x = static_cast<T>(addW(a, addW(d, 1) >> 1));
        return;
    }
    T* l = buf + 2;
    ownGather(x, step, l, n);
    ownMirror(l, n, 2 - p, ((p + n) & 1) + 1);
    const int nl = (n + 1 - p) >> 1;
    ownFwdLine53(l + p, sizeof(T), x, step, ownAt(x, nl * step), step, nl, n - nl, p);
}

template <class T>
void ownInvLine2D53(T* x, ptrdiff_t step, int n, int p, T* buf) {
    if (n <= 1) {
        if (n == 1) *x = static_cast<T>(*x / (p + 1));
        return;
    }
    if (n == 2) {
        const int32_t s = *x, d = *ownAt(x, step);
        const int32_t t = addW(d, 1) >> 1;
        *ownAt(x, p * step) = static_cast<T>(subW(s, t));
        *ownAt(x, (1 - p) * step) = static_cast<T>(addW(subW(s, t), d));
        return;
    }
    T* l = buf + 2;
    const int nl = (n + 1 - p) >> 1;
    for (int j = 0; j < nl; ++j) l[p + 2 * j] = *ownAt(x, j * step);
    for (int j = 0; j < n - nl; ++j) l[1 - p + 2 * j] = *ownAt(x, (nl + j) * step);
    ownMirror(l, n, p + 1, 2 - ((p + n) & 1));
    ownInvLine53<T, true>(l + p, 2 * sizeof(T), l + 1 - p, 2 * sizeof(T), x, step, n, p);
}

// The vertical pass on whole rows: the lifting runs in place across the
// width, a row past either end being read as its mirror image (by the
// symmetry of the extension it holds the same values at every step), and
// then the rows are reordered lows first. Lines of one or two rows take
// their own rules.
template <class T>
void ownFwdCols53(T* img, ptrdiff_t step, int w, int n, int p, T* spare) {
    auto R = [&](int i) { return ownAt(img, ownMirrorIndex(i, n) * step); };
    if (n <= 2) {
        for (int c = 0; c < w; ++c) ownFwdLine2D53(img + c, step, n, p, spare);
        return;
    }
    auto predict = [&](int i) { ownLift53Row(Step53::Predict, R(i), R(i - 1), R(i + 1), w); };
    auto update = [&](int i) { ownLift53Row(Step53::Update, R(i), R(i - 1), R(i + 1), w); };
    if (p) predict(0);
    for (int q = p; q < n; q += 2) {
        if (q + 1 < n) predict(q + 1);
        update(q);
    }
    const BandOrder order(n, p);
    ownPermuteRows(
        img, step, w, n, [&](int j) { return order.indexOfSlot(j); }, spare);
}

template <class T>
void ownInvCols53(T* img, ptrdiff_t step, int w, int n, int p, T* spare) {
    auto R = [&](int i) { return ownAt(img, ownMirrorIndex(i, n) * step); };
    if (n <= 2) {
        for (int c = 0; c < w; ++c) ownInvLine2D53(img + c, step, n, p, spare);
        return;
    }
    const BandOrder order(n, p);
    ownPermuteRows(
        img, step, w, n, [&](int i) { return order.slotOfIndex(i); }, spare);
    auto unupdate = [&](int i) { ownLift53Row(Step53::Unupdate, R(i), R(i - 1), R(i + 1), w); };
    auto unpredict = [&](int i) { ownLift53Row(Step53::Unpredict, R(i), R(i - 1), R(i + 1), w); };
    if (p == 0) unupdate(0);
    for (int t = -p; t + 1 < n; t += 2) {
        if (t + 2 < n) unupdate(t + 2);
        unpredict(t + 1);
    }
}

template <class T>
void ownFwd2D53(T* img, int32_t step, const VqciRect& r, uint8_t* buf) {
    T* line = reinterpret_cast<T*>(buf);
    ownWT2D(
        img, step, r, true, [line](T* x, ptrdiff_t s, int n, int p) { ownFwdLine2D53(x, s, n, p, line); },
        [line](T* im, ptrdiff_t s, int w, int n, int p) { ownFwdCols53(im, s, w, n, p, line); });
}

template <class T>
void ownInv2D53(T* img, int32_t step, const VqciRect& r, uint8_t* buf) {
    T* line = reinterpret_cast<T*>(buf);
    ownWT2D(
        img, step, r, false, [line](T* x, ptrdiff_t s, int n, int p) { ownInvLine2D53(x, s, n, p, line); },
        [line](T* im, ptrdiff_t s, int w, int n, int p) { ownInvCols53(im, s, w, n, p, line); });
}

template <class T>
VqcStatus fwdLift(const T* s0, const T* s1, const T* s2, T* l0, const T* h0, T* h1, int32_t width) {
    if (VqcStatus st = Check().ptr(s0).ptr(s1).ptr(s2).ptr(l0).ptr(h0).ptr(h1).size(width)) return st;
    ownFwdColStep53<T, false, true>(s0, s1, s2, l0, h0, h1, width);
    return vqcStatusOk;
}
template <class T>
VqcStatus invLift(const T* l0, const T* h0, const T* h1, const T* e0, T* dOdd, T* dEven, int32_t width) {
    if (VqcStatus st = Check().ptr(l0).ptr(h0).ptr(h1).ptr(e0).ptr(dOdd).ptr(dEven).size(width)) return st;
    ownInvColStep53<T, false, true>(l0, h0, h1, e0, dOdd, dEven, width);
    return vqcStatusOk;
}
// A line needs no buffer below 3 samples; one line and two elements of
// extension on each side otherwise.
template <class T>
VqcStatus bufSize(const VqciRect* r, int32_t* pSize, bool bands) {
    return ownBufSizeForm<T>(r, pSize, bands, 3, 4);
}

}  // namespace

extern "C" {

VQCJ_API VqcStatus vqciWTFwdRow_B53_JPEG2K_16s_C1R(const Vqc16s* pSrc, int32_t srcStep, Vqc16s* pDstLow,
                                                   int32_t dstLowStep, Vqc16s* pDstHigh, int32_t dstHighStep,
                                                   VqciSize dstRoi, VqciWTPhase phase) {
    return ownFwdLineForm(pSrc, srcStep, pDstLow, dstLowStep, pDstHigh, dstHighStep, dstRoi, phase,
                          ownFwdRow53<Vqc16s>);
}
VQCJ_API VqcStatus vqciWTFwdRow_B53_JPEG2K_32s_C1R(const Vqc32s* pSrc, int32_t srcStep, Vqc32s* pDstLow,
                                                   int32_t dstLowStep, Vqc32s* pDstHigh, int32_t dstHighStep,
                                                   VqciSize dstRoi, VqciWTPhase phase) {
    return ownFwdLineForm(pSrc, srcStep, pDstLow, dstLowStep, pDstHigh, dstHighStep, dstRoi, phase,
                          ownFwdRow53<Vqc32s>);
}
VQCJ_API VqcStatus vqciWTFwdCol_B53_JPEG2K_16s_C1R(const Vqc16s* pSrc, int32_t srcStep, Vqc16s* pDstLow,
                                                   int32_t dstLowStep, Vqc16s* pDstHigh, int32_t dstHighStep,
                                                   VqciSize dstRoi, VqciWTPhase phase) {
    return ownFwdLineForm(pSrc, srcStep, pDstLow, dstLowStep, pDstHigh, dstHighStep, dstRoi, phase,
                          ownFwdCol53<Vqc16s>);
}
VQCJ_API VqcStatus vqciWTFwdCol_B53_JPEG2K_32s_C1R(const Vqc32s* pSrc, int32_t srcStep, Vqc32s* pDstLow,
                                                   int32_t dstLowStep, Vqc32s* pDstHigh, int32_t dstHighStep,
                                                   VqciSize dstRoi, VqciWTPhase phase) {
    return ownFwdLineForm(pSrc, srcStep, pDstLow, dstLowStep, pDstHigh, dstHighStep, dstRoi, phase,
                          ownFwdCol53<Vqc32s>);
}
VQCJ_API VqcStatus vqciWTInvRow_B53_JPEG2K_16s_C1R(const Vqc16s* pSrcLow, int32_t srcLowStep, const Vqc16s* pSrcHigh,
                                                   int32_t srcHighStep, VqciSize srcRoi, Vqc16s* pDst, int32_t dstStep,
                                                   VqciWTPhase phase) {
    return ownInvLineForm(pSrcLow, srcLowStep, pSrcHigh, srcHighStep, srcRoi, pDst, dstStep, phase,
                          ownInvRow53<Vqc16s>);
}
VQCJ_API VqcStatus vqciWTInvRow_B53_JPEG2K_32s_C1R(const Vqc32s* pSrcLow, int32_t srcLowStep, const Vqc32s* pSrcHigh,
                                                   int32_t srcHighStep, VqciSize srcRoi, Vqc32s* pDst, int32_t dstStep,
                                                   VqciWTPhase phase) {
    return ownInvLineForm(pSrcLow, srcLowStep, pSrcHigh, srcHighStep, srcRoi, pDst, dstStep, phase,
                          ownInvRow53<Vqc32s>);
}
VQCJ_API VqcStatus vqciWTInvCol_B53_JPEG2K_16s_C1R(const Vqc16s* pSrcLow, int32_t srcLowStep, const Vqc16s* pSrcHigh,
                                                   int32_t srcHighStep, VqciSize srcRoi, Vqc16s* pDst, int32_t dstStep,
                                                   VqciWTPhase phase) {
    return ownInvLineForm(pSrcLow, srcLowStep, pSrcHigh, srcHighStep, srcRoi, pDst, dstStep, phase,
                          ownInvCol53<Vqc16s>);
}
VQCJ_API VqcStatus vqciWTInvCol_B53_JPEG2K_32s_C1R(const Vqc32s* pSrcLow, int32_t srcLowStep, const Vqc32s* pSrcHigh,
                                                   int32_t srcHighStep, VqciSize srcRoi, Vqc32s* pDst, int32_t dstStep,
                                                   VqciWTPhase phase) {
    return ownInvLineForm(pSrcLow, srcLowStep, pSrcHigh, srcHighStep, srcRoi, pDst, dstStep, phase,
                          ownInvCol53<Vqc32s>);
}
VQCJ_API VqcStatus vqciWTFwdColLift_B53_JPEG2K_16s_C1(const Vqc16s* pSrc0, const Vqc16s* pSrc1, const Vqc16s* pSrc2,
                                                      Vqc16s* pDstLow0, const Vqc16s* pSrcHigh0, Vqc16s* pDstHigh1,
                                                      int32_t width) {
    return fwdLift(pSrc0, pSrc1, pSrc2, pDstLow0, pSrcHigh0, pDstHigh1, width);
}
VQCJ_API VqcStatus vqciWTFwdColLift_B53_JPEG2K_32s_C1(const Vqc32s* pSrc0, const Vqc32s* pSrc1, const Vqc32s* pSrc2,
                                                      Vqc32s* pDstLow0, const Vqc32s* pSrcHigh0, Vqc32s* pDstHigh1,
                                                      int32_t width) {
    return fwdLift(pSrc0, pSrc1, pSrc2, pDstLow0, pSrcHigh0, pDstHigh1, width);
}
VQCJ_API VqcStatus vqciWTInvColLift_B53_JPEG2K_16s_C1(const Vqc16s* pSrcLow0, const Vqc16s* pSrcHigh0,
                                                      const Vqc16s* pSrcHigh1, const Vqc16s* pSrcEven0, Vqc16s* pDstOdd,
                                                      Vqc16s* pDstEven, int32_t width) {
    return invLift(pSrcLow0, pSrcHigh0, pSrcHigh1, pSrcEven0, pDstOdd, pDstEven, width);
}
VQCJ_API VqcStatus vqciWTInvColLift_B53_JPEG2K_32s_C1(const Vqc32s* pSrcLow0, const Vqc32s* pSrcHigh0,
                                                      const Vqc32s* pSrcHigh1, const Vqc32s* pSrcEven0, Vqc32s* pDstOdd,
                                                      Vqc32s* pDstEven, int32_t width) {
    return invLift(pSrcLow0, pSrcHigh0, pSrcHigh1, pSrcEven0, pDstOdd, pDstEven, width);
}
VQCJ_API VqcStatus vqciWTFwd_B53_JPEG2K_16s_C1IR(Vqc16s* pSrcDst, int32_t srcDstStep, const VqciRect* pRect,
                                                 Vqc8u* pBuffer) {
    return ownInPlaceForm(pSrcDst, srcDstStep, pRect, pBuffer, ownFwd2D53<Vqc16s>);
}
VQCJ_API VqcStatus vqciWTFwd_B53_JPEG2K_32s_C1IR(Vqc32s* pSrcDst, int32_t srcDstStep, const VqciRect* pRect,
                                                 Vqc8u* pBuffer) {
    return ownInPlaceForm(pSrcDst, srcDstStep, pRect, pBuffer, ownFwd2D53<Vqc32s>);
}
VQCJ_API VqcStatus vqciWTInv_B53_JPEG2K_16s_C1IR(Vqc16s* pSrcDst, int32_t srcDstStep, const VqciRect* pRect,
                                                 Vqc8u* pBuffer) {
    return ownInPlaceForm(pSrcDst, srcDstStep, pRect, pBuffer, ownInv2D53<Vqc16s>);
}
VQCJ_API VqcStatus vqciWTInv_B53_JPEG2K_32s_C1IR(Vqc32s* pSrcDst, int32_t srcDstStep, const VqciRect* pRect,
                                                 Vqc8u* pBuffer) {
    return ownInPlaceForm(pSrcDst, srcDstStep, pRect, pBuffer, ownInv2D53<Vqc32s>);
}
VQCJ_API VqcStatus vqciWTFwd_B53_JPEG2K_16s_C1R(const Vqc16s* pSrc, int32_t srcStep, const VqciRect* pRect,
                                                Vqc16s* const pDst[4], const int32_t dstStep[4], Vqc8u* pBuffer) {
    return ownFwdBandForm(pSrc, srcStep, pRect, pDst, dstStep, pBuffer, ownFwd2D53<Vqc16s>);
}
VQCJ_API VqcStatus vqciWTFwd_B53_JPEG2K_32s_C1R(const Vqc32s* pSrc, int32_t srcStep, const VqciRect* pRect,
                                                Vqc32s* const pDst[4], const int32_t dstStep[4], Vqc8u* pBuffer) {
    return ownFwdBandForm(pSrc, srcStep, pRect, pDst, dstStep, pBuffer, ownFwd2D53<Vqc32s>);
}
VQCJ_API VqcStatus vqciWTInv_B53_JPEG2K_16s_C1R(const Vqc16s* const pSrc[4], const int32_t srcStep[4], Vqc16s* pDst,
                                                int32_t dstStep, const VqciRect* pRect, Vqc8u* pBuffer) {
    return ownInvBandForm(pSrc, srcStep, pDst, dstStep, pRect, pBuffer, ownInv2D53<Vqc16s>);
}
VQCJ_API VqcStatus vqciWTInv_B53_JPEG2K_32s_C1R(const Vqc32s* const pSrc[4], const int32_t srcStep[4], Vqc32s* pDst,
                                                int32_t dstStep, const VqciRect* pRect, Vqc8u* pBuffer) {
    return ownInvBandForm(pSrc, srcStep, pDst, dstStep, pRect, pBuffer, ownInv2D53<Vqc32s>);
}
VQCJ_API VqcStatus vqciWTGetBufSize_B53_JPEG2K_16s_C1IR(const VqciRect* pRect, int32_t* pSize) {
    return bufSize<Vqc16s>(pRect, pSize, false);
}
VQCJ_API VqcStatus vqciWTGetBufSize_B53_JPEG2K_32s_C1IR(const VqciRect* pRect, int32_t* pSize) {
    return bufSize<Vqc32s>(pRect, pSize, false);
}
VQCJ_API VqcStatus vqciWTGetBufSize_B53_JPEG2K_16s_C1R(const VqciRect* pRect, int32_t* pSize) {
    return bufSize<Vqc16s>(pRect, pSize, true);
}
VQCJ_API VqcStatus vqciWTGetBufSize_B53_JPEG2K_32s_C1R(const VqciRect* pRect, int32_t* pSize) {
    return bufSize<Vqc32s>(pRect, pSize, true);
}

}  // extern "C"

}  // namespace vqcj
