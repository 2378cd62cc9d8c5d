// Irreversible 9/7 wavelet in its three precisions: 16-bit fractions with
// 64-bit products for the line and column-step forms (saturating in 16s,
// wrapping in 32s), 14-bit fractions wrapping at 16 bits for the 2D 16s
// form, and single precision for the 2D 32s form and every 32f form. One
// lifting pipeline per direction runs every form; the precision is a policy.
#include <bit>
#include <cmath>
#include <cstdint>
#include <type_traits>

#include "wavelet.h"

namespace vqcj {

namespace {

// Lifting constants: 16-bit fractions, 14-bit fractions, single precision.
namespace k16 {
constexpr int64_t alpha = -103949, beta = -3472, gamma = 57862, delta = 29066;
constexpr int64_t kLow = 53274, kHigh = 80621, deltaLow = 23627;
}  // namespace k16
namespace k14 {
constexpr int32_t alpha = -25987, beta = -868, gamma = 14466, delta = 7266, kLow = 13318, kHigh = 20155;
}  // namespace k14
namespace kf {
constexpr float alpha = -1.5861343f, beta = -0.052980117f, gamma = 0.8829111f, delta = 0.44350687f;
constexpr float kLow = 0.8128931f, kHigh = 1.2301741f, deltaLow = 0.36052364f;
}  // namespace kf

constexpr int64_t r16(int64_t v) { return (v + 32768) >> 16; }
constexpr int32_t r14(int32_t v) { return addW(v, 8192) >> 14; }

// A step result at the sample width: 16-bit results saturate, 32-bit ones
// keep their low 32 bits.
template <class T>
constexpr int32_t fin(int64_t v) {
    if constexpr (sizeof(T) == 2)
        return v < -32768 ? -32768 : v > 32767 ? 32767 : static_cast<int32_t>(v);
    else
        return static_cast<int32_t>(v);
}

// Line and column-step forms, 16-bit fractions. Pair sums are formed at
// 32 bits; beta and delta products stay at 32 bits in 16s (they cannot
// leave them there), all others are 64-bit.
template <class T>
struct Fix16 {
    using V = int32_t;
    static constexpr bool k16s = sizeof(T) == 2;
    static V load(T v) { return v; }
    static T store(V v) { return static_cast<T>(v); }
    static int64_t mul32(int64_t c, int32_t s) {
        return k16s ? static_cast<int64_t>(mulW(static_cast<int32_t>(c), s)) : c * s;
    }
    static V A(V s, V l, V r) { return fin<T>(s + r16(k16::alpha * addW(l, r))); }
    static V B(V s, V l, V r) { return fin<T>(s + r16(mul32(k16::beta, addW(l, r)))); }
    static V D(V a, V l, V r) { return fin<T>(a + r16(k16::gamma * addW(l, r))); }
    // The high left of a 16s low-first row: its product wraps at 32 bits.
    static V Dfirst(V a, V l, V r) {
        if constexpr (k16s)
            return fin<T>(a + (addW(mulW(static_cast<int32_t>(k16::gamma), addW(l, r)), 32768) >> 16));
        else
            return D(a, l, r);
    }
    static V lowFused(V b, V dl, V dr) { return fin<T>(r16(k16::kLow * b + k16::deltaLow * addW(dl, dr))); }
    static V lowTail(V b, V dl, V dr) {
        const int32_t t = fin<T>(b + r16(mul32(k16::delta, addW(dl, dr))));
        return fin<T>(addW(mulW(t, static_cast<int32_t>(k16::kLow)), 32768) >> 16);
    }
    static V high(V d) { return fin<T>(r16(k16::kHigh * d)); }
    static V E1(V low, V hl, V hr) { return fin<T>(r16(k16::kHigh * low - k16::deltaLow * addW(hl, hr))); }
    static V O1(V high, V el, V er) { return fin<T>(r16(k16::kLow * high - k16::gamma * addW(el, er))); }
    static V E2(V e1, V ol, V orr) { return fin<T>(e1 - r16(mul32(k16::beta, addW(ol, orr)))); }
    static V O2(V o1, V el, V er) { return fin<T>(o1 - r16(k16::alpha * addW(el, er))); }
};

// 2D 16s: 14-bit fractions, products at 32 bits, every value wraps to 16
// bits. The low is always the two-step form; the inverse scales first.
struct Fix14 {
    using V = int32_t;
    static constexpr int32_t n(int32_t v) { return ownNarrow<int16_t>(v); }
    static V load(int16_t v) { return v; }
    static int16_t store(V v) { return static_cast<int16_t>(v); }
    // Intermediates held in image rows are samples like any other.
    static V loadHeld(int16_t v) { return v; }
    static int16_t hold(V v) { return static_cast<int16_t>(v); }
    static V A(V s, V l, V r) { return n(addW(s, r14(mulW(k14::alpha, addW(l, r))))); }
    static V B(V s, V l, V r) { return n(addW(s, r14(mulW(k14::beta, addW(l, r))))); }
    static V D(V a, V l, V r) { return n(addW(a, r14(mulW(k14::gamma, addW(l, r))))); }
    static V Dfirst(V a, V l, V r) { return D(a, l, r); }
    static V lowTail(V b, V dl, V dr) {
        const int32_t t = n(addW(b, r14(mulW(k14::delta, addW(dl, dr)))));
        return n(r14(mulW(t, k14::kLow)));
    }
    static V lowFused(V b, V dl, V dr) { return lowTail(b, dl, dr); }
    static V high(V d) { return n(r14(mulW(d, k14::kHigh))); }
    static V Ls(V v) { return n(r14(mulW(v, k14::kHigh))); }
    static V Hs(V v) { return n(r14(mulW(v, k14::kLow))); }
    static V E1(V low, V hl, V hr) { return n(subW(Ls(low), r14(mulW(k14::delta, addW(Hs(hl), Hs(hr)))))); }
    static V O1(V high, V el, V er) { return n(subW(Hs(high), r14(mulW(k14::gamma, addW(el, er))))); }
    static V E2(V e1, V ol, V orr) { return n(subW(e1, r14(mulW(k14::beta, addW(ol, orr))))); }
    static V O2(V o1, V el, V er) { return n(subW(o1, r14(mulW(k14::alpha, addW(el, er))))); }
};

// Truncation towards zero; beyond 2^31 the result saturates, and what has
// no 32-bit value (exactly 2^31, NaN) gives the integer minimum.
inline int32_t ownTruncSat(float v) {
    if (v > 2147483648.0f) return 2147483647;
    if (!(v < 2147483648.0f) || v < -2147483648.0f) return static_cast<int32_t>(0x80000000u);
    return static_cast<int32_t>(v);
}

// Single precision, in the text's order of operations. The forward has no
// fusion; `kFusedInverse` picks the line forms' inverse, which folds the
// scaling into the first two steps, against the 2D form's separate scaling.
template <class T, bool kFusedInverse>
struct Flt {
    using V = float;
    static V load(T v) { return static_cast<float>(v); }
    static T store(V v) {
        if constexpr (std::is_same_v<T, float>)
            return v;
        else
            return ownTruncSat(v);
    }
    // Intermediates held in 32-bit image rows keep their float bits until
    // the last step converts them.
    static V loadHeld(T v) { return std::bit_cast<float>(v); }
    static T hold(V v) { return std::bit_cast<T>(v); }
    static V A(V s, V l, V r) { return s + kf::alpha * (l + r); }
    static V B(V s, V l, V r) { return s + kf::beta * (l + r); }
    static V D(V a, V l, V r) { return a + kf::gamma * (l + r); }
    static V Dfirst(V a, V l, V r) { return D(a, l, r); }
    static V lowTail(V b, V dl, V dr) { return (b + kf::delta * (dl + dr)) * kf::kLow; }
    static V lowFused(V b, V dl, V dr) { return lowTail(b, dl, dr); }
    static V high(V d) { return d * kf::kHigh; }
    static V E1(V low, V hl, V hr) {
        if constexpr (kFusedInverse)
            return kf::kHigh * low - kf::deltaLow * (hl + hr);
        else
            return low * kf::kHigh - kf::delta * (hl * kf::kLow + hr * kf::kLow);
    }
    static V O1(V high, V el, V er) {
        if constexpr (kFusedInverse)
            return kf::kLow * high - kf::gamma * (el + er);
        else
            return high * kf::kLow - kf::gamma * (el + er);
    }
    static V E2(V e1, V ol, V orr) { return e1 - kf::beta * (ol + orr); }
    static V O2(V o1, V el, V er) { return o1 - kf::alpha * (el + er); }
};

// Forward pipeline over one line. `s` is the first sample at an even
// position (read from s[-4] on); A, B and D roll in locals so each sample
// is read once and each result written once. `nl` lows go to `low`; the
// high left of s goes first at phase 1, then one high per pair while
// `hCount` lasts. The last `tail` lows take the two-step path.
template <class P, class T>
void ownFwdLine97(const T* s, ptrdiff_t ss, T* low, ptrdiff_t ls, T* high, ptrdiff_t hs, int nl, int hCount, int p,
                  int tail, bool firstWraps) {
    using V = typename P::V;
    auto S = [&](int k) -> V { return P::load(*ownAt(s, k * ss)); };
    V a3 = P::A(S(-3), S(-4), S(-2)), a1 = P::A(S(-1), S(-2), S(0)), a = P::A(S(1), S(0), S(2));
    V bm = P::B(S(-2), a3, a1), b = P::B(S(0), a1, a);
    V dm = firstWraps ? P::Dfirst(a1, bm, b) : P::D(a1, bm, b);
    if (p) {
        *high = P::store(P::high(dm));
        high = ownAt(high, hs);
    }
    const int fused = nl - tail;
    for (int j = 0; j < nl; ++j) {
        const V an = P::A(S(2 * j + 3), S(2 * j + 2), S(2 * j + 4));
        const V bn = P::B(S(2 * j + 2), a, an);
        const V d = P::D(a, b, bn);
        *ownAt(low, j * ls) = P::store(j < fused ? P::lowFused(b, dm, d) : P::lowTail(b, dm, d));
        if (j < hCount) *ownAt(high, j * hs) = P::store(P::high(d));
        a = an;
        b = bn;
        dm = d;
    }
}

// Inverse pipeline over one line: low[j] is the even sample of pair j and
// high[j + p] the odd one after it. Turn j makes E2 of pair j and O2 of the
// odd sample before it; `nl` evens and `nh` odds are written, the first odd
// ahead of the first even at phase 1.
template <class P, class T>
void ownInvLine97(const T* low, ptrdiff_t ls, const T* high, ptrdiff_t hs, T* dst, ptrdiff_t ds, int nl, int nh,
                  int p) {
    using V = typename P::V;
    const T* h = ownAt(high, p * hs);
    T* d = ownAt(dst, p * ds);
    auto L = [&](int j) -> V { return P::load(*ownAt(low, j * ls)); };
    auto H = [&](int j) -> V { return P::load(*ownAt(h, j * hs)); };
    const int j0 = -p;
    V e1m = P::E1(L(j0 - 1), H(j0 - 2), H(j0 - 1));
    V e1 = P::E1(L(j0), H(j0 - 1), H(j0));
    V o1m = P::O1(H(j0 - 1), e1m, e1);
    V e2m = 0;
    const int jEnd = nl - 1 > nh - p ? nl - 1 : nh - p;
    for (int j = j0; j <= jEnd; ++j) {
        const V e1n = P::E1(L(j + 1), H(j), H(j + 1));
        const V o1 = P::O1(H(j), e1, e1n);
        const V e2 = P::E2(e1, o1m, o1);
        if (j > j0 && j - 1 < nh - p) *ownAt(d, (2 * j - 1) * ds) = P::store(P::O2(o1m, e2m, e2));
        if (j >= 0 && j < nl) *ownAt(d, 2 * j * ds) = P::store(e2);
        e1 = e1n;
        o1m = o1;
        e2m = e2;
    }
}

// Lines of one output pair: the direct nine- and seven-tap filters centred
// on sample c (analysis) or on pair c (synthesis), 16-bit fractions or
// single precision.
template <class T>
struct Direct {
    static constexpr bool kFloat = std::is_same_v<T, float>;
    using Acc = std::conditional_t<kFloat, float, int64_t>;
    static Acc pairSum(T a, T b) {
        if constexpr (kFloat)
            return a + b;
        else
            return addW(a, b);
    }
    static T done(Acc v) {
        if constexpr (kFloat)
            return v;
        else
            return static_cast<T>(fin<T>(r16(v)));
    }
    template <class F>
    static T low(F x) {
        if constexpr (kFloat)
            return 0.602949f * x(0) + 0.26686412f * pairSum(x(-1), x(1)) + -0.078223266f * pairSum(x(-2), x(2)) +
                   -0.01686412f * pairSum(x(-3), x(3)) + 0.026748758f * pairSum(x(-4), x(4));
        else
            return done(39515 * Acc(x(0)) + 17489 * pairSum(x(-1), x(1)) - 5126 * pairSum(x(-2), x(2)) -
                        1105 * pairSum(x(-3), x(3)) + 1753 * pairSum(x(-4), x(4)));
    }
    template <class F>
    static T high(F x) {
        if constexpr (kFloat)
            return 1.115087f * x(0) + -0.59127176f * pairSum(x(-1), x(1)) + -0.057543527f * pairSum(x(-2), x(2)) +
                   0.091271766f * pairSum(x(-3), x(3));
        else
            return done(73078 * Acc(x(0)) - 38749 * pairSum(x(-1), x(1)) - 3771 * pairSum(x(-2), x(2)) +
                        5982 * pairSum(x(-3), x(3)));
    }
    // Even output from the low at l(0) with highs h(-1), h(0) beside it.
    template <class FL, class FH>
    static T even(FL l, FH h) {
        if constexpr (kFloat)
            return 1.115087f * l(0) - 0.057543527f * pairSum(l(-1), l(1)) - 0.26686412f * pairSum(h(-1), h(0)) +
                   0.01686412f * pairSum(h(-2), h(1));
        else
            return done(73078 * Acc(l(0)) - 3771 * pairSum(l(-1), l(1)) - 17489 * pairSum(h(-1), h(0)) +
                        1105 * pairSum(h(-2), h(1)));
    }
    // Odd output from the high at h(0) with lows l(0), l(1) beside it.
    template <class FL, class FH>
    static T odd(FL l, FH h) {
        if constexpr (kFloat)
            return 0.602949f * h(0) + 0.59127176f * pairSum(l(0), l(1)) - 0.091271766f * pairSum(l(-1), l(2)) -
                   0.078223266f * pairSum(h(-1), h(1)) + 0.026748758f * pairSum(h(-2), h(2));
        else
            return done(39515 * Acc(h(0)) + 38750 * pairSum(l(0), l(1)) - 5981 * pairSum(l(-1), l(2)) -
                        5126 * pairSum(h(-1), h(1)) + 1753 * pairSum(h(-2), h(2)));
    }
};

template <class T>
void ownFwdDirect97(const T* s, ptrdiff_t ss, T* low, T* high, int p) {
    auto at = [&](int c) { return [=](int k) { return *ownAt(s, (c + k) * ss); }; };
    *low = Direct<T>::low(at(p));
    *high = Direct<T>::high(at(1 - p));
}

template <class T>
void ownInvDirect97(const T* low, ptrdiff_t ls, const T* high, ptrdiff_t hs, T* dst, ptrdiff_t ds, int p) {
    // Phase 1: the high pair sits one place later against the lows.
    auto Hs = [&](int c) { return [=](int k) { return *ownAt(high, (c + k) * hs); }; };
    auto Ls = [&](int c) { return [=](int k) { return *ownAt(low, (c + k) * ls); }; };
    if (p == 0) {
        *dst = Direct<T>::even(Ls(0), Hs(0));
        *ownAt(dst, ds) = Direct<T>::odd(Ls(0), Hs(0));
    } else {
        *dst = Direct<T>::odd(Ls(-1), Hs(0));
        *ownAt(dst, ds) = Direct<T>::even(Ls(0), Hs(1));
    }
}

// Policy of the line forms for each sample type.
template <class T>
using LinePolicy = std::conditional_t<std::is_same_v<T, float>, Flt<float, true>, Fix16<T>>;

// One line of a Row or Col form: the caller's border is in place.
template <class T>
void ownFwdLineForm97(const T* src, ptrdiff_t ss, T* low, ptrdiff_t ls, T* high, ptrdiff_t hs, int w, int p) {
    if (w == 1) {
        ownFwdDirect97(src, ss, low, high, p);
        return;
    }
    ownFwdLine97<LinePolicy<T>>(ownAt(src, p * ss), ss, low, ls, high, hs, w, w - p, p, p ? 2 : 1, p == 0);
}

template <class T>
void ownInvLineForm97(const T* low, ptrdiff_t ls, const T* high, ptrdiff_t hs, T* dst, ptrdiff_t ds, int w, int p) {
    if (w == 1) {
        ownInvDirect97(low, ls, high, hs, dst, ds, p);
        return;
    }
    ownInvLine97<LinePolicy<T>>(low, ls, high, hs, dst, ds, w, w, p);
}

// Policy of the 2D forms.
template <class T>
using Policy2D = std::conditional_t<sizeof(T) == 2, Fix14, Flt<int32_t, false>>;

// The sample of a 2D line at index i past its ends. Lines of 5 or more are
// mirrored; lines of 2 to 4 repeat with whole-sample symmetry,
// x0 ... x[n-1], x[n-2] ... x1, x0, x1 ..., and within the four samples
// that a line reads beyond each end the two rules agree.
inline int ownExtIndex(int i, int n) {
    if (i >= 0 && i < n) return i;
    const int period = 2 * (n - 1);
    const int m = ((i % period) + period) % period;
    return m < n ? m : period - m;
}

// One line of a 2D form, lifted in passes over its even and odd samples
// held apart in the line buffer, each pass a plain loop over one array:
// the same values as the pipeline, step for step. Forward places the lows
// from slot 0 at phase 0 and from slot n >> 1 at phase 1, highs first then;
// at phase 1 with an odd n the last high lands on the first low (lows are
// written first) and slot n - 1 keeps its sample.
template <class T>
void ownFwdLine2D97(T* x, ptrdiff_t step, int n, int p, T* buf) {
    using P = Policy2D<T>;
    if (n < 2) {
        if (n == 1) *x = static_cast<T>(mulW(*x, p + 1));
        return;
    }
    const int nl = (n + 1 - p) >> 1, nh = n - nl;
    auto X = [&](int i) -> T& { return *ownAt(x, i * step); };
    T* E = buf + 2;       // E[k] = x[p + 2k], k from -2 to nl + 1
    T* O = E + nl + 4;    // O[k] = x[p + 2k + 1], k from -2 to nl
    for (int k = -2; k <= nl + 1; ++k) E[k] = X(ownExtIndex(p + 2 * k, n));
    for (int k = -2; k <= nl; ++k) O[k] = X(ownExtIndex(p + 2 * k + 1, n));
    for (int k = -2; k <= nl; ++k) O[k] = P::hold(P::A(P::load(O[k]), P::load(E[k]), P::load(E[k + 1])));
    for (int k = -1; k <= nl; ++k) E[k] = P::hold(P::B(P::load(E[k]), P::loadHeld(O[k - 1]), P::loadHeld(O[k])));
    for (int k = -1; k < nl; ++k) O[k] = P::hold(P::D(P::loadHeld(O[k]), P::loadHeld(E[k]), P::loadHeld(E[k + 1])));
    const int lowAt = p ? n >> 1 : 0, highAt = p ? 0 : (n + 1) >> 1;
    for (int j = 0; j < nl; ++j)
        X(lowAt + j) = P::store(P::lowTail(P::loadHeld(E[j]), P::loadHeld(O[j - 1]), P::loadHeld(O[j])));
    for (int j = 0; j < nh; ++j) X(highAt + j) = P::store(P::high(P::loadHeld(O[j - p])));
}

// Inverse: lows always from slot 0, as the 5/3 form takes them. E holds the
// even positions p + 2k and O the odd ones after them.
template <class T>
void ownInvLine2D97(T* x, ptrdiff_t step, int n, int p, T* buf) {
    using P = Policy2D<T>;
    if (n < 2) {
        if (n == 1) *x = static_cast<T>(*x / (p + 1));
        return;
    }
    const int nl = (n + 1 - p) >> 1, nh = n - nl;
    const int last = nl - 1 > nh - p ? nl - 1 : nh - p;
    auto X = [&](int i) -> T& { return *ownAt(x, i * step); };
    const BandOrder order(n, p);
    auto Y = [&](int i) { return X(order.slotOfIndex(ownExtIndex(i, n))); };  // the interleaved line
    T* E = buf + p + 1;         // k from -p - 1 to last + 1
    T* O = E + last + 4 + p;  // k from -p - 2 to last + 1, right after E
    // Inside the line the evens are the lows in order and the odds the highs;
    // only the ends go through the extension.
    for (int k = -p - 1; k <= last + 1; ++k) E[k] = (k >= 0 && k < nl) ? X(k) : Y(p + 2 * k);
    for (int k = -p - 2; k <= last + 1; ++k) O[k] = (k >= -p && k < nh - p) ? X(nl + k + p) : Y(p + 2 * k + 1);
    for (int k = -p - 1; k <= last + 1; ++k) E[k] = P::hold(P::E1(P::load(E[k]), P::load(O[k - 1]), P::load(O[k])));
    for (int k = -p - 1; k <= last; ++k)
        O[k] = P::hold(P::O1(P::load(O[k]), P::loadHeld(E[k]), P::loadHeld(E[k + 1])));
    for (int k = -p; k <= last; ++k)
        E[k] = P::hold(P::E2(P::loadHeld(E[k]), P::loadHeld(O[k - 1]), P::loadHeld(O[k])));
    for (int k = 0; k < nl; ++k) X(p + 2 * k) = P::store(P::loadHeld(E[k]));
    for (int k = -p; k < nh - p; ++k)
        X(p + 2 * k + 1) = P::store(P::O2(P::loadHeld(O[k]), P::loadHeld(E[k]), P::loadHeld(E[k + 1])));
}

// The vertical pass on whole rows for columns of 5 or more: the pipeline
// of the line routine, one lifting step of one row at a time across the
// width, in place. A row past either end is read as its mirror image,
// which by the symmetry of the extension holds the same stage whenever it
// is read; intermediates stay in the rows (float bits in 32s) and each
// high is scaled only after both lows beside it have used its D. The rows
// are then reordered into bands.
template <class T>
void ownFwdCols97(T* img, ptrdiff_t step, int w, int n, int p, T* spare) {
    using P = Policy2D<T>;
    auto R = [&](int i) { return ownAt(img, ownMirrorIndex(i, n) * step); };
    auto op = [&](int i, auto f) {
        if (i < 0 || i >= n) return;
        T* x = R(i);
        const T *a = R(i - 1), *b = R(i + 1);
        for (int c = 0; c < w; ++c) x[c] = f(x[c], a[c], b[c]);
    };
    const int last = n - 1;
    for (int q = p - 4; q <= last; q += 2) {
        op(q + 3, [](T s, T l, T r) { return P::hold(P::A(P::load(s), P::load(l), P::load(r))); });
        op(q + 2, [](T s, T l, T r) { return P::hold(P::B(P::load(s), P::loadHeld(l), P::loadHeld(r))); });
        op(q + 1, [](T a, T l, T r) { return P::hold(P::D(P::loadHeld(a), P::loadHeld(l), P::loadHeld(r))); });
        op(q, [](T b, T l, T r) { return P::store(P::lowTail(P::loadHeld(b), P::loadHeld(l), P::loadHeld(r))); });
        op(q - 1, [](T d, T, T) { return P::store(P::high(P::loadHeld(d))); });
    }
    if (((last + p) & 1) != 0) op(last, [](T d, T, T) { return P::store(P::high(P::loadHeld(d))); });
    const BandOrder order(n, p);
    const int nh = n - order.nl;
    if (p == 0)
        ownPermuteRows(
            img, step, w, n, [&](int j) { return order.indexOfSlot(j); }, spare);
    else
        ownPermuteRows(
            img, step, w, n, [&](int j) { return j < nh ? 2 * j : 1 + 2 * (j - nh); }, spare);
}

template <class T>
void ownInvCols97(T* img, ptrdiff_t step, int w, int n, int p, T* spare) {
    using P = Policy2D<T>;
    const BandOrder order(n, p);
    ownPermuteRows(
        img, step, w, n, [&](int i) { return order.slotOfIndex(i); }, spare);
    auto R = [&](int i) { return ownAt(img, ownMirrorIndex(i, n) * step); };
    auto op = [&](int i, auto f) {
        if (i < 0 || i >= n) return;
        T* x = R(i);
        const T *a = R(i - 1), *b = R(i + 1);
        for (int c = 0; c < w; ++c) x[c] = f(x[c], a[c], b[c]);
    };
    auto done = [](T e, T, T) { return P::store(P::loadHeld(e)); };
    const int last = n - 1;
    for (int e = p - 2; e <= last + 1; e += 2) {
        op(e + 2, [](T y, T l, T r) { return P::hold(P::E1(P::load(y), P::load(l), P::load(r))); });
        op(e + 1, [](T y, T l, T r) { return P::hold(P::O1(P::load(y), P::loadHeld(l), P::loadHeld(r))); });
        op(e, [](T e1, T l, T r) { return P::hold(P::E2(P::loadHeld(e1), P::loadHeld(l), P::loadHeld(r))); });
        op(e - 1, [](T o1, T l, T r) { return P::store(P::O2(P::loadHeld(o1), P::loadHeld(l), P::loadHeld(r))); });
        op(e - 2, done);  // both odd neighbours of this even row are final now
    }
    // An even last row has no turn after it to convert it.
    if (((last + p) & 1) == 0) op(last, done);
}

// Columns of 5 or more go by rows, except a phase-1 column of odd length,
// whose forward leaves its last slot as it was: that one goes by lines.
template <class T>
void ownFwd2D97(T* img, int32_t step, const VqciRect& r, uint8_t* buf) {
    T* line = reinterpret_cast<T*>(buf);
    auto fwd = [line](T* x, ptrdiff_t s, int n, int p) { ownFwdLine2D97(x, s, n, p, line); };
    ownWT2D(img, step, r, true, fwd, [line, fwd](T* im, ptrdiff_t s, int w, int n, int p) {
        if (n < 5 || (p && (n & 1)))
            ownColumnsByLine<T>(fwd)(im, s, w, n, p);
        else
            ownFwdCols97(im, s, w, n, p, line);
    });
}
template <class T>
void ownInv2D97(T* img, int32_t step, const VqciRect& r, uint8_t* buf) {
    T* line = reinterpret_cast<T*>(buf);
    auto inv = [line](T* x, ptrdiff_t s, int n, int p) { ownInvLine2D97(x, s, n, p, line); };
    ownWT2D(img, step, r, false, inv, [line, inv](T* im, ptrdiff_t s, int w, int n, int p) {
        if (n < 5)
            ownColumnsByLine<T>(inv)(im, s, w, n, p);
        else
            ownInvCols97(im, s, w, n, p, line);
    });
}

// Column steps: each of the lifting lines over the whole width before the
// next, so that a pipeline may pass the same row in two roles.
template <class T>
void ownFwdColLift97(const T* s0, const T* s1, const T* s2, T* low0, T* low1, T* high0, T* high1, T* high2, int w) {
    using P = LinePolicy<T>;
    for (int c = 0; c < w; ++c) high2[c] = P::store(P::A(s1[c], s0[c], s2[c]));
    for (int c = 0; c < w; ++c) low1[c] = P::store(P::B(s0[c], high1[c], high2[c]));
    for (int c = 0; c < w; ++c) high1[c] = P::store(P::D(high1[c], low0[c], low1[c]));
    if constexpr (std::is_same_v<T, float>) {
        for (int c = 0; c < w; ++c) low0[c] += kf::delta * (high0[c] + high1[c]);
        for (int c = 0; c < w; ++c) low0[c] = low0[c] * kf::kLow;
    } else {
        for (int c = 0; c < w; ++c) low0[c] = P::store(P::lowFused(low0[c], high0[c], high1[c]));
    }
    for (int c = 0; c < w; ++c) high0[c] = P::store(P::high(high0[c]));
}

template <class T>
void ownInvColLift97(const T* low0, const T* high0, const T* high1, const T* s0, T* d1, T* d2, T* d3, T* d4, int w) {
    using P = LinePolicy<T>;
    for (int c = 0; c < w; ++c) d4[c] = P::store(P::E1(low0[c], high0[c], high1[c]));
    for (int c = 0; c < w; ++c) d3[c] = P::store(P::O1(high0[c], d2[c], d4[c]));
    for (int c = 0; c < w; ++c) d2[c] = P::store(P::E2(d2[c], d1[c], d3[c]));
    for (int c = 0; c < w; ++c) d1[c] = P::store(P::O2(d1[c], s0[c], d2[c]));
}

// Row and column forms: the line routine over every row, or down every
// column with the row step as the sample stride.
template <class T>
void ownFwdRow97(const T* s, int32_t ss, T* l, int32_t ls, T* h, int32_t hs, VqciSize roi, int p) {
    constexpr ptrdiff_t e = sizeof(T);
    for (int k = 0; k < roi.height; ++k)
        ownFwdLineForm97(ownAt(s, k * ptrdiff_t(ss)), e, ownAt(l, k * ptrdiff_t(ls)), e, ownAt(h, k * ptrdiff_t(hs)), e,
                         roi.width, p);
}
template <class T>
void ownInvRow97(const T* l, int32_t ls, const T* h, int32_t hs, VqciSize roi, T* d, int32_t ds, int p) {
    constexpr ptrdiff_t e = sizeof(T);
    for (int k = 0; k < roi.height; ++k)
        ownInvLineForm97(ownAt(l, k * ptrdiff_t(ls)), e, ownAt(h, k * ptrdiff_t(hs)), e, ownAt(d, k * ptrdiff_t(ds)), e,
                         roi.width, p);
}
template <class T>
void ownFwdCol97(const T* s, int32_t ss, T* l, int32_t ls, T* h, int32_t hs, VqciSize roi, int p) {
    for (int c = 0; c < roi.width; ++c) ownFwdLineForm97(s + c, ss, l + c, ls, h + c, hs, roi.height, p);
}
template <class T>
void ownInvCol97(const T* l, int32_t ls, const T* h, int32_t hs, VqciSize roi, T* d, int32_t ds, int p) {
    for (int c = 0; c < roi.width; ++c) ownInvLineForm97(l + c, ls, h + c, hs, d + c, ds, roi.height, p);
}
template <class T>
VqcStatus fwdLift(const T* s0, const T* s1, const T* s2, T* l0, T* l1, T* h0, T* h1, T* h2, int32_t w) {
    if (VqcStatus st = Check().ptr(s0).ptr(s1).ptr(s2).ptr(l0).ptr(l1).ptr(h0).ptr(h1).ptr(h2).size(w)) return st;
    ownFwdColLift97(s0, s1, s2, l0, l1, h0, h1, h2, w);
    return vqcStatusOk;
}
template <class T>
VqcStatus invLift(const T* l0, const T* h0, const T* h1, const T* s0, T* d1, T* d2, T* d3, T* d4, int32_t w) {
    if (VqcStatus st = Check().ptr(l0).ptr(h0).ptr(h1).ptr(s0).ptr(d1).ptr(d2).ptr(d3).ptr(d4).size(w)) return st;
    ownInvColLift97(l0, h0, h1, s0, d1, d2, d3, d4, w);
    return vqcStatusOk;
}
}  // namespace

extern "C" {

#define VQCJ_D97_LINES(t, T)                                                                                           \
    VQCJ_API VqcStatus vqciWTFwdRow_D97_JPEG2K_##t##_C1R(const T* pSrc, int32_t srcStep, T* pDstLow,                   \
                                                         int32_t dstLowStep, T* pDstHigh, int32_t dstHighStep,         \
                                                         VqciSize dstRoi, VqciWTPhase phase) {                         \
        return ownFwdLineForm(pSrc, srcStep, pDstLow, dstLowStep, pDstHigh, dstHighStep, dstRoi, phase,                \
                              ownFwdRow97<T>);                                                                         \
    }                                                                                                                  \
    VQCJ_API VqcStatus vqciWTInvRow_D97_JPEG2K_##t##_C1R(const T* pSrcLow, int32_t srcLowStep, const T* pSrcHigh,      \
                                                         int32_t srcHighStep, VqciSize srcRoi, T* pDst,                \
                                                         int32_t dstStep, VqciWTPhase phase) {                         \
        return ownInvLineForm(pSrcLow, srcLowStep, pSrcHigh, srcHighStep, srcRoi, pDst, dstStep, phase,                \
                              ownInvRow97<T>);                                                                         \
    }                                                                                                                  \
    VQCJ_API VqcStatus vqciWTFwdColLift_D97_JPEG2K_##t##_C1(const T* pSrc0, const T* pSrc1, const T* pSrc2,            \
                                                            T* pSrcDstLow0, T* pDstLow1, T* pSrcDstHigh0,              \
                                                            T* pSrcDstHigh1, T* pDstHigh2, int32_t width) {            \
        return fwdLift(pSrc0, pSrc1, pSrc2, pSrcDstLow0, pDstLow1, pSrcDstHigh0, pSrcDstHigh1, pDstHigh2, width);      \
    }                                                                                                                  \
    VQCJ_API VqcStatus vqciWTInvColLift_D97_JPEG2K_##t##_C1(const T* pSrcLow0, const T* pSrcHigh0, const T* pSrcHigh1, \
                                                            const T* pSrc0, T* pSrcDst1, T* pSrcDst2, T* pDst3,        \
                                                            T* pDst4, int32_t width) {                                 \
        return invLift(pSrcLow0, pSrcHigh0, pSrcHigh1, pSrc0, pSrcDst1, pSrcDst2, pDst3, pDst4, width);                \
    }

#define VQCJ_D97_2D(t, T)                                                                                           \
    VQCJ_API VqcStatus vqciWTFwd_D97_JPEG2K_##t##_C1IR(T* pSrcDst, int32_t srcDstStep, const VqciRect* pRect,       \
                                                       Vqc8u* pBuffer) {                                            \
        return ownInPlaceForm(pSrcDst, srcDstStep, pRect, pBuffer, ownFwd2D97<T>);                                  \
    }                                                                                                               \
    VQCJ_API VqcStatus vqciWTInv_D97_JPEG2K_##t##_C1IR(T* pSrcDst, int32_t srcDstStep, const VqciRect* pRect,       \
                                                       Vqc8u* pBuffer) {                                            \
        return ownInPlaceForm(pSrcDst, srcDstStep, pRect, pBuffer, ownInv2D97<T>);                                  \
    }                                                                                                               \
    VQCJ_API VqcStatus vqciWTFwd_D97_JPEG2K_##t##_C1R(const T* pSrc, int32_t srcStep, const VqciRect* pRect,        \
                                                      T* const pDst[4], const int32_t dstStep[4], Vqc8u* pBuffer) { \
        return ownFwdBandForm(pSrc, srcStep, pRect, pDst, dstStep, pBuffer, ownFwd2D97<T>);                         \
    }                                                                                                               \
    VQCJ_API VqcStatus vqciWTInv_D97_JPEG2K_##t##_C1R(const T* const pSrc[4], const int32_t srcStep[4], T* pDst,    \
                                                      int32_t dstStep, const VqciRect* pRect, Vqc8u* pBuffer) {     \
        return ownInvBandForm(pSrc, srcStep, pDst, dstStep, pRect, pBuffer, ownInv2D97<T>);                         \
    }                                                                                                               \
    VQCJ_API VqcStatus vqciWTGetBufSize_D97_JPEG2K_##t##_C1IR(const VqciRect* pRect, int32_t* pSize) {              \
        return ownBufSizeForm<T>(pRect, pSize, false, 2, 8);                                                        \
    }                                                                                                               \
    VQCJ_API VqcStatus vqciWTGetBufSize_D97_JPEG2K_##t##_C1R(const VqciRect* pRect, int32_t* pSize) {               \
        return ownBufSizeForm<T>(pRect, pSize, true, 2, 8);                                                         \
    }

VQCJ_D97_LINES(16s, Vqc16s)
VQCJ_D97_LINES(32s, Vqc32s)
VQCJ_D97_LINES(32f, Vqc32f)
VQCJ_D97_2D(16s, Vqc16s)
VQCJ_D97_2D(32s, Vqc32s)

VQCJ_API VqcStatus vqciWTFwdCol_D97_JPEG2K_32f_C1R(const Vqc32f* pSrc, int32_t srcStep, Vqc32f* pDstLow,
                                                   int32_t dstLowStep, Vqc32f* pDstHigh, int32_t dstHighStep,
                                                   VqciSize dstRoi, VqciWTPhase phase) {
    return ownFwdLineForm(pSrc, srcStep, pDstLow, dstLowStep, pDstHigh, dstHighStep, dstRoi, phase,
                          ownFwdCol97<Vqc32f>);
}
VQCJ_API VqcStatus vqciWTInvCol_D97_JPEG2K_32f_C1R(const Vqc32f* pSrcLow, int32_t srcLowStep, const Vqc32f* pSrcHigh,
                                                   int32_t srcHighStep, VqciSize srcRoi, Vqc32f* pDst, int32_t dstStep,
                                                   VqciWTPhase phase) {
    return ownInvLineForm(pSrcLow, srcLowStep, pSrcHigh, srcHighStep, srcRoi, pDst, dstStep, phase,
                          ownInvCol97<Vqc32f>);
}

#undef VQCJ_D97_LINES
#undef VQCJ_D97_2D

}  // extern "C"

}  // namespace vqcj
