// Argument checks. Every export tests its arguments in an order that belongs
// to its family and returns the first failure, before touching any output.
// The three idioms (group order, buffer order, reduced order) are all
// spelled with this one chain, in the order the family states:
//
//   if (VqcStatus st = Check().ptr(pSrc).step(srcStep).ptr(pDst)
//                             .step(dstStep).roi(roiSize)) return st;
//
// Once a check fails the later ones are not evaluated (an array given to
// ptrs() is not read when it is itself null).
#pragma once

#include <vqcj.h>

namespace vqcj {

class Check {
public:
    // Null pointer: -8.
    constexpr Check& ptr(const void* p) {
        if (st_ == 0 && p == nullptr) st_ = vqcStatusNullPtr;
        return *this;
    }
    // A pointer array: the array itself, then each element in index order.
    template <class T>
    constexpr Check& ptrs(T* const* arr, int n) {
        ptr(arr);
        for (int i = 0; i < n && st_ == 0; ++i) ptr(arr[i]);
        return *this;
    }
    // Only the elements, for families that do not test the array itself.
    template <class T>
    constexpr Check& elems(T* const* arr, int n) {
        for (int i = 0; i < n && st_ == 0; ++i) ptr(arr[i]);
        return *this;
    }
    // Row step below 1: -14.
    constexpr Check& step(int32_t s) {
        if (st_ == 0 && s < 1) st_ = vqcStatusBadStep;
        return *this;
    }
    // A width, height or length below its minimum: -6.
    constexpr Check& size(int32_t v, int32_t min = 1) {
        if (st_ == 0 && v < min) st_ = vqcStatusBadSize;
        return *this;
    }
    // Width before height.
    constexpr Check& roi(VqciSize s, int32_t minW = 1, int32_t minH = 1) {
        return size(s.width, minW).size(s.height, minH);
    }
    // Any other condition with its own status.
    constexpr Check& fail(bool bad, VqcStatus status) {
        if (st_ == 0 && bad) st_ = status;
        return *this;
    }
    constexpr operator VqcStatus() const { return st_; }

private:
    VqcStatus st_ = vqcStatusOk;
};

}  // namespace vqcj
