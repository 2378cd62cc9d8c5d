// The 5/3 vertical-pass row kernel over Highway vectors, one source for
// every SIMD target. 32-bit rows wrap like the plain code; 16-bit rows form
// the 32-bit sums' shifted values exactly in 16-bit lanes:
// (a + b) >> 1 is (a >> 1) + (b >> 1) + (a & b & 1), and (a + b + 2) >> 2
// is (h >> 1) + (h & 1) for that h, so nothing leaves 16 bits before the
// final wrapping add.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "jpeg2k/lift53simd.cpp"
#include <hwy/foreach_target.h>  // must come before highway.h
#include <hwy/highway.h>

#include "frame/simd.h"
#include "lift53.h"

HWY_BEFORE_NAMESPACE();
namespace vqcj::HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

template <class T>
void Lift53RowT(Step53 op, T* x, const T* a, const T* b, int w) {
    if constexpr (VQCJ_SIMD_BASELINE) {
        ownLift53RowPlain(op, x, a, b, w);
    } else {
        const hn::ScalableTag<T> d;
        const int n = static_cast<int>(hn::Lanes(d));
        const auto one = hn::Set(d, T(1));
        auto half = [&](auto va, auto vb) {  // (a + b) >> 1
            if constexpr (sizeof(T) == 4) return hn::ShiftRight<1>(hn::Add(va, vb));
            else
                return hn::Add(hn::Add(hn::ShiftRight<1>(va), hn::ShiftRight<1>(vb)), hn::And(hn::And(va, vb), one));
        };
        auto quarter = [&](auto va, auto vb) {  // (a + b + 2) >> 2
            if constexpr (sizeof(T) == 4) return hn::ShiftRight<2>(hn::Add(hn::Add(va, vb), hn::Set(d, T(2))));
            else {
                const auto h = half(va, vb);
                return hn::Add(hn::ShiftRight<1>(h), hn::And(h, one));
            }
        };
        int c = 0;
        for (; c + n <= w; c += n) {
            const auto vx = hn::LoadU(d, x + c), va = hn::LoadU(d, a + c), vb = hn::LoadU(d, b + c);
            switch (op) {
                case Step53::Predict: hn::StoreU(hn::Sub(vx, half(va, vb)), d, x + c); break;
                case Step53::Update: hn::StoreU(hn::Add(vx, quarter(va, vb)), d, x + c); break;
                case Step53::Unupdate: hn::StoreU(hn::Sub(vx, quarter(va, vb)), d, x + c); break;
                case Step53::Unpredict: hn::StoreU(hn::Add(vx, half(va, vb)), d, x + c); break;
            }
        }
        ownLift53RowPlain(op, x + c, a + c, b + c, w - c);
    }
}

void Lift53Row16(Step53 op, int16_t* x, const int16_t* a, const int16_t* b, int w) { Lift53RowT(op, x, a, b, w); }
void Lift53Row32(Step53 op, int32_t* x, const int32_t* a, const int32_t* b, int w) { Lift53RowT(op, x, a, b, w); }

}  // namespace vqcj::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace vqcj {

HWY_EXPORT(Lift53Row16);
HWY_EXPORT(Lift53Row32);

void ownLift53Row(Step53 op, int16_t* x, const int16_t* a, const int16_t* b, int w) {
    VQCJ_DISPATCH(Lift53Row16)(op, x, a, b, w);
}
void ownLift53Row(Step53 op, int32_t* x, const int32_t* a, const int32_t* b, int w) {
    VQCJ_DISPATCH(Lift53Row32)(op, x, a, b, w);
}

}  // namespace vqcj
#endif  // HWY_ONCE
