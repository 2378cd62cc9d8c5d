// Chroma down- and up-sampling by two.
//
// Two sets live here and give different values on purpose. The image forms
// use one fixed rounding and take no care of borders: the up forms read one
// column beyond each end and one row above and below, which the caller
// provides. The row forms alternate the rounding of the box filters from
// output to output and close the triangle filters at both row ends by
// repeating the end sample.
//
// The plain kernels compute an even and an odd output as two lanes of one
// loop over k, which GCC turns into interleaved vector stores; the vector
// kernels hold every sum on 16-bit lanes and write the even and the odd
// output as the two bytes of one lane. Every sum fits in 16 bits. The plain
// kernels run on the baseline target and finish the vector kernels' rows.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "jpeg/colour/sampling.cpp"
#include <hwy/foreach_target.h>  // must come before highway.h
#include <hwy/highway.h>

#include <vqcj.h>

#include <cstddef>

#include "frame/check.h"
#include "frame/parallel.h"
#include "frame/rows.h"
#include "frame/simd.h"
#include "frame/simdops.h"

#ifndef VQCJ_SAMPLING_ONCE
#define VQCJ_SAMPLING_ONCE
namespace vqcj {
namespace {

// Two-to-one box average over Rows rows (1 or 2). Output j takes bias B0
// when j is even and B1 when odd; the image forms pass the same value twice.
// An odd count ends on one even-lane output.
template <int Rows, int B0, int B1>
void ownDownRow(const Vqc8u* a, const Vqc8u* b, Vqc8u* __restrict d, int32_t count) {
    constexpr int kShift = Rows;
    const auto pairSum = [=](ptrdiff_t i) {
        if constexpr (Rows == 1) return a[i] + a[i + 1];
        else return a[i] + a[i + 1] + b[i] + b[i + 1];
    };
    const ptrdiff_t pairs = count >> 1;
    for (ptrdiff_t k = 0; k < pairs; ++k) {
        d[2 * k] = static_cast<Vqc8u>((pairSum(4 * k) + B0) >> kShift);
        d[2 * k + 1] = static_cast<Vqc8u>((pairSum(4 * k + 2) + B1) >> kShift);
    }
    if (count & 1) d[2 * pairs] = static_cast<Vqc8u>((pairSum(4 * pairs) + B0) >> kShift);
}

// The triangle filter, 3/4 near and 1/4 far, across (Rows 1) or across and
// down (Rows 2). Down the columns it weighs the near row n three times the
// far row f; the column sums then go through the same 3:1 weighting across.
// The biases differ between the even and the odd lane.
template <int Rows>
struct Triangle {
    static constexpr int kShift = Rows == 1 ? 2 : 4;
    static constexpr int kBiasEven = Rows == 1 ? 1 : 8;
    static constexpr int kBiasOdd = Rows == 1 ? 2 : 7;

    static int32_t col(const Vqc8u* n, const Vqc8u* f, ptrdiff_t k) {
        if constexpr (Rows == 1) return n[k];
        else return 3 * n[k] + f[k];
    }
    // Output 2k, leaning towards column k-1.
    static Vqc8u even(const Vqc8u* n, const Vqc8u* f, ptrdiff_t k) {
        return static_cast<Vqc8u>((3 * col(n, f, k) + col(n, f, k - 1) + kBiasEven) >> kShift);
    }
    // Output 2k+1, leaning towards column k+1.
    static Vqc8u odd(const Vqc8u* n, const Vqc8u* f, ptrdiff_t k) {
        return static_cast<Vqc8u>((3 * col(n, f, k) + col(n, f, k + 1) + kBiasOdd) >> kShift);
    }
    // A row end: the missing neighbour is the end column itself.
    static Vqc8u edge(const Vqc8u* n, const Vqc8u* f, ptrdiff_t k, int bias) {
        return static_cast<Vqc8u>((4 * col(n, f, k) + bias) >> kShift);
    }

    // Outputs 2k and 2k+1 for k in [first, last), reading columns first-1
    // to last. This span is where the image and the row forms agree.
    static void span(const Vqc8u* n, const Vqc8u* f, Vqc8u* __restrict d, ptrdiff_t first, ptrdiff_t last) {
        for (ptrdiff_t k = first; k < last; ++k) {
            d[2 * k] = even(n, f, k);
            d[2 * k + 1] = odd(n, f, k);
        }
    }

    // Image form: width outputs, the same rule up to both ends. K: the
    // kernels, plain or vector.
    template <class K>
    static void imageRow(const Vqc8u* n, const Vqc8u* f, Vqc8u* __restrict d, int32_t width) {
        const ptrdiff_t pairs = width >> 1;
        K::template span<Rows>(n, f, d, 0, pairs);
        if (width & 1) d[2 * pairs] = even(n, f, pairs);
    }

    // Row form: 2*width outputs, the ends closed by repeating the end column.
    // The steps run in this order, so a width of 1 ends with what the last
    // step writes.
    template <class K>
    static void triangleRow(const Vqc8u* n, const Vqc8u* f, Vqc8u* __restrict d, int32_t width) {
        const ptrdiff_t last = width - 1;
        d[0] = edge(n, f, 0, kBiasEven);
        d[1] = odd(n, f, 0);
        K::template span<Rows>(n, f, d, 1, last);
        d[2 * last] = even(n, f, last);
        d[2 * last + 1] = edge(n, f, last, kBiasOdd);
    }
};

// The plain kernels; the vector targets have their own with these names.
struct PlainKernels {
    template <int Rows, int B0, int B1>
    static void down(const Vqc8u* a, const Vqc8u* b, Vqc8u* __restrict d, int32_t count) {
        ownDownRow<Rows, B0, B1>(a, b, d, count);
    }
    template <int Rows>
    static void span(const Vqc8u* n, const Vqc8u* f, Vqc8u* __restrict d, ptrdiff_t first, ptrdiff_t last) {
        Triangle<Rows>::span(n, f, d, first, last);
    }
};

enum class ImageForm { DownH2V1, DownH2V2, UpH2V1, UpH2V2 };

// Destination row y of an image form, its source rows found from the base.
template <ImageForm F, class K>
void ownImageRow(const Vqc8u* pSrc, int32_t srcStep, int32_t y, Vqc8u* d, int32_t width) {
    if constexpr (F == ImageForm::DownH2V1) {
        K::template down<1, 1, 1>(rowAt(pSrc, srcStep, y), nullptr, d, width);
    } else if constexpr (F == ImageForm::DownH2V2) {
        // Source row 2y, reached in two hops so the row index cannot wrap.
        const Vqc8u* a = rowAt(rowAt(pSrc, srcStep, y), srcStep, y);
        K::template down<2, 3, 3>(a, rowAt(a, srcStep, 1), d, width);
    } else if constexpr (F == ImageForm::UpH2V1) {
        const Vqc8u* s = rowAt(pSrc, srcStep, y);
        Triangle<1>::imageRow<K>(s, s, d, width);
    } else {
        // Even rows lean on the row above, odd rows on the row below; row 0
        // reads the row before pSrc.
        const Vqc8u* near = rowAt(pSrc, srcStep, y >> 1);
        Triangle<2>::imageRow<K>(near, rowAt(near, srcStep, (y & 1) ? 1 : -1), d, width);
    }
}

// Rows [first, last) of an image form.
template <ImageForm F, class K>
void ownImageRows(const Vqc8u* pSrc, int32_t srcStep, Vqc8u* pDst, int32_t dstStep, int32_t width, int32_t first,
                  int32_t last) {
    Vqc8u* d = rowAt(pDst, dstStep, first);
    for (int32_t y = first; y < last; ++y) {
        ownImageRow<F, K>(pSrc, srcStep, y, d, width);
        d = rowAt(d, dstStep, 1);
    }
}

}  // namespace
}  // namespace vqcj
#endif  // VQCJ_SAMPLING_ONCE

HWY_BEFORE_NAMESPACE();
namespace vqcj::HWY_NAMESPACE {
namespace {

// The vector kernels: whole vectors from the start of a span, the rest plain.
struct VecKernels {
    // Lanes(D16) outputs a step, each from the pair sum of one or two rows;
    // the bias alternates from lane to lane.
    template <int Rows, int B0, int B1>
    static void down(const Vqc8u* a, const Vqc8u* b, Vqc8u* __restrict d, int32_t count) {
        const D16 d16;
        const hn::Repartition<uint32_t, D16> d32;
        const V16 bias = hn::BitCast(d16, hn::Set(d32, static_cast<uint32_t>(B0) | static_cast<uint32_t>(B1) << 16));
        const int32_t n = static_cast<int32_t>(hn::Lanes(d16));
        int32_t x = 0;
        for (; x + n <= count; x += n) {
            V16 sum = PairSums(a + 2 * static_cast<ptrdiff_t>(x));
            if constexpr (Rows == 2) sum = hn::Add(sum, PairSums(b + 2 * static_cast<ptrdiff_t>(x)));
            hn::StoreU(Narrow(hn::ShiftRight<Rows>(hn::Add(sum, bias))), D8(), d + x);
        }
        // x is even: the plain kernel's bias lanes line up.
        if (x < count)
            ownDownRow<Rows, B0, B1>(a + 2 * static_cast<ptrdiff_t>(x), Rows == 2 ? b + 2 * static_cast<ptrdiff_t>(x) : b,
                                     d + x, count - x);
    }

    // Outputs 2k and 2k+1 as the low and high byte of lane k.
    template <int Rows>
    static void span(const Vqc8u* n, const Vqc8u* f, Vqc8u* __restrict d, ptrdiff_t first, ptrdiff_t last) {
        using T = Triangle<Rows>;
        const D8 d8;
        const D16 d16;
        const ptrdiff_t m = static_cast<ptrdiff_t>(hn::Lanes(d16));
        const auto col = [&](ptrdiff_t k) {
            const V16 v = Widen(hn::LoadU(d8, n + k));
            if constexpr (Rows == 1) return v;
            else return hn::Add(hn::Mul(v, hn::Set(d16, 3)), Widen(hn::LoadU(d8, f + k)));
        };
        const V16 k3 = hn::Set(d16, 3), be = hn::Set(d16, T::kBiasEven), bo = hn::Set(d16, T::kBiasOdd);
        ptrdiff_t k = first;
        for (; k + m <= last; k += m) {
            const V16 c3 = hn::Mul(col(k), k3);
            const V16 even = hn::ShiftRight<T::kShift>(hn::Add(hn::Add(c3, col(k - 1)), be));
            const V16 odd = hn::ShiftRight<T::kShift>(hn::Add(hn::Add(c3, col(k + 1)), bo));
            hn::StoreU(hn::Or(even, hn::ShiftLeft<8>(odd)), d16, reinterpret_cast<uint16_t*>(d + 2 * k));
        }
        T::span(n, f, d, k, last);
    }
};

#if VQCJ_SIMD_BASELINE
using Kernels = PlainKernels;
#else
using Kernels = VecKernels;
#endif

}  // namespace

void ImageRows(ImageForm form, const Vqc8u* pSrc, int32_t srcStep, Vqc8u* pDst, int32_t dstStep, int32_t width,
               int32_t first, int32_t last) {
    switch (form) {
        case ImageForm::DownH2V1: return ownImageRows<ImageForm::DownH2V1, Kernels>(pSrc, srcStep, pDst, dstStep, width, first, last);
        case ImageForm::DownH2V2: return ownImageRows<ImageForm::DownH2V2, Kernels>(pSrc, srcStep, pDst, dstStep, width, first, last);
        case ImageForm::UpH2V1: return ownImageRows<ImageForm::UpH2V1, Kernels>(pSrc, srcStep, pDst, dstStep, width, first, last);
        case ImageForm::UpH2V2: return ownImageRows<ImageForm::UpH2V2, Kernels>(pSrc, srcStep, pDst, dstStep, width, first, last);
    }
}

// The row forms: box rows (Rows 1 or 2, alternating bias) and triangle rows.
void BoxRow(int rows, const Vqc8u* a, const Vqc8u* b, Vqc8u* d, int32_t count) {
    if (rows == 1) Kernels::down<1, 0, 1>(a, b, d, count);
    else Kernels::down<2, 1, 2>(a, b, d, count);
}
void TriangleRow(int rows, const Vqc8u* n, const Vqc8u* f, Vqc8u* d, int32_t width) {
    if (rows == 1) Triangle<1>::triangleRow<Kernels>(n, f, d, width);
    else Triangle<2>::triangleRow<Kernels>(n, f, d, width);
}

}  // namespace vqcj::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace vqcj {

HWY_EXPORT(ImageRows);
HWY_EXPORT(BoxRow);
HWY_EXPORT(TriangleRow);

namespace {

// Checks in buffer order (each buffer with its own step and size), then the
// destination rows: through the row-parallel frame, or serially in order.
template <ImageForm F, bool Framed>
VqcStatus ownSampleImage(const Vqc8u* pSrc, int32_t srcStep, VqciSize srcRoiSize, Vqc8u* pDst, int32_t dstStep,
                         VqciSize dstRoiSize) {
    if (VqcStatus st = Check().ptr(pSrc).step(srcStep).roi(srcRoiSize).ptr(pDst).step(dstStep).roi(dstRoiSize))
        return st;
    const int32_t w = dstRoiSize.width;
    const auto rows = [=](int32_t first, int32_t last) {
        VQCJ_DISPATCH(ImageRows)(F, pSrc, srcStep, pDst, dstStep, w, first, last);
    };
    if constexpr (Framed) ownParallelRows(w, dstRoiSize.height, rows);
    else rows(0, dstRoiSize.height);
    return vqcStatusOk;
}

}  // namespace
}  // namespace vqcj

using namespace vqcj;

extern "C" {

VQCJ_API VqcStatus vqciSampleDownH2V1_JPEG_8u_C1R(const Vqc8u* pSrc, int32_t srcStep, VqciSize srcRoiSize,
                                                   Vqc8u* pDst, int32_t dstStep, VqciSize dstRoiSize) {
    return ownSampleImage<ImageForm::DownH2V1, true>(pSrc, srcStep, srcRoiSize, pDst, dstStep, dstRoiSize);
}

VQCJ_API VqcStatus vqciSampleDownH2V2_JPEG_8u_C1R(const Vqc8u* pSrc, int32_t srcStep, VqciSize srcRoiSize,
                                                   Vqc8u* pDst, int32_t dstStep, VqciSize dstRoiSize) {
    return ownSampleImage<ImageForm::DownH2V2, true>(pSrc, srcStep, srcRoiSize, pDst, dstStep, dstRoiSize);
}

// Serial whatever the size.
VQCJ_API VqcStatus vqciSampleUpH2V1_JPEG_8u_C1R(const Vqc8u* pSrc, int32_t srcStep, VqciSize srcRoiSize,
                                                 Vqc8u* pDst, int32_t dstStep, VqciSize dstRoiSize) {
    return ownSampleImage<ImageForm::UpH2V1, false>(pSrc, srcStep, srcRoiSize, pDst, dstStep, dstRoiSize);
}

VQCJ_API VqcStatus vqciSampleUpH2V2_JPEG_8u_C1R(const Vqc8u* pSrc, int32_t srcStep, VqciSize srcRoiSize,
                                                 Vqc8u* pDst, int32_t dstStep, VqciSize dstRoiSize) {
    return ownSampleImage<ImageForm::UpH2V2, true>(pSrc, srcStep, srcRoiSize, pDst, dstStep, dstRoiSize);
}

// Box rows: ceil(srcWidth / 2) outputs; an odd width reads pSrc[srcWidth].
VQCJ_API VqcStatus vqciSampleDownRowH2V1_Box_JPEG_8u_C1(const Vqc8u* pSrc, int32_t srcWidth, Vqc8u* pDst) {
    if (VqcStatus st = Check().ptr(pSrc).ptr(pDst).size(srcWidth)) return st;
    VQCJ_DISPATCH(BoxRow)(1, pSrc, nullptr, pDst, srcWidth / 2 + (srcWidth & 1));
    return vqcStatusOk;
}

VQCJ_API VqcStatus vqciSampleDownRowH2V2_Box_JPEG_8u_C1(const Vqc8u* pSrc1, const Vqc8u* pSrc2, int32_t srcWidth,
                                                         Vqc8u* pDst) {
    if (VqcStatus st = Check().ptr(pSrc1).ptr(pSrc2).ptr(pDst).size(srcWidth)) return st;
    VQCJ_DISPATCH(BoxRow)(2, pSrc1, pSrc2, pDst, srcWidth / 2 + (srcWidth & 1));
    return vqcStatusOk;
}

// Triangle rows: 2*srcWidth outputs; a width of 1 passes the checks but
// reads one sample on either side of the row.
VQCJ_API VqcStatus vqciSampleUpRowH2V1_Triangle_JPEG_8u_C1(const Vqc8u* pSrc, int32_t srcWidth, Vqc8u* pDst) {
    if (VqcStatus st = Check().ptr(pSrc).ptr(pDst).size(srcWidth)) return st;
    VQCJ_DISPATCH(TriangleRow)(1, pSrc, pSrc, pDst, srcWidth);
    return vqcStatusOk;
}

// pSrc1 is the near row, pSrc2 the far one.
VQCJ_API VqcStatus vqciSampleUpRowH2V2_Triangle_JPEG_8u_C1(const Vqc8u* pSrc1, const Vqc8u* pSrc2,
                                                            int32_t srcWidth, Vqc8u* pDst) {
    if (VqcStatus st = Check().ptr(pSrc1).ptr(pSrc2).ptr(pDst).size(srcWidth)) return st;
    VQCJ_DISPATCH(TriangleRow)(2, pSrc1, pSrc2, pDst, srcWidth);
    return vqcStatusOk;
}

}  // extern "C"
#endif  // HWY_ONCE
