// The 5/3 lifting steps, shared by the line forms and the vertical pass of
// the 2D forms, and the vertical pass's row kernel: one step of one row
// across the width.
#pragma once

#include <cstdint>

#include "wavelet.h"

namespace vqcj {

// Sums are formed at 32 bits and wrap; predict and update results are kept
// at the sample width, the undone update is left wide for the callers that
// use it only in a local.
template <class T>
struct Lift53 {
    static int32_t pred(int32_t odd, int32_t l, int32_t r) { return ownNarrow<T>(subW(odd, addW(l, r) >> 1)); }
    static int32_t upd(int32_t even, int32_t l, int32_t r) {
        return ownNarrow<T>(addW(even, addW(addW(l, r), 2) >> 2));
    }
    static int32_t unupd(int32_t low, int32_t l, int32_t r) { return subW(low, addW(addW(l, r), 2) >> 2); }
    static int32_t unpred(int32_t high, int32_t l, int32_t r) { return ownNarrow<T>(addW(high, addW(l, r) >> 1)); }
};

// The four steps on a row x between rows a and b.
enum class Step53 : int { Predict, Update, Unupdate, Unpredict };

template <class T>
inline void ownLift53RowPlain(Step53 op, T* x, const T* a, const T* b, int w) {
    using L = Lift53<T>;
    switch (op) {
        case Step53::Predict:
            for (int c = 0; c < w; ++c) x[c] = static_cast<T>(L::pred(x[c], a[c], b[c]));
            break;
        case Step53::Update:
            for (int c = 0; c < w; ++c) x[c] = static_cast<T>(L::upd(x[c], a[c], b[c]));
            break;
        case Step53::Unupdate:
            for (int c = 0; c < w; ++c) x[c] = static_cast<T>(L::unupd(x[c], a[c], b[c]));
            break;
        case Step53::Unpredict:
            for (int c = 0; c < w; ++c) x[c] = static_cast<T>(L::unpred(x[c], a[c], b[c]));
            break;
    }
}

// Dispatched to the best SIMD target; the same bits as the plain routine.
void ownLift53Row(Step53 op, int16_t* x, const int16_t* a, const int16_t* b, int w);
void ownLift53Row(Step53 op, int32_t* x, const int32_t* a, const int32_t* b, int w);

}  // namespace vqcj
