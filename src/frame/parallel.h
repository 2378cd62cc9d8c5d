// The row-parallel frame shared by the nineteen row operations.
//
// After its checks an operation hands its row routine to ownParallelRows.
// The thread count is asked on every call; width times height is taken as a
// wrapping 32-bit product, and up to 8192 elements the rows run in order on
// the calling thread. Above that an OpenMP region of that many threads runs
// with a static schedule, so each thread receives one contiguous run of rows.
// The row routine is the same in both branches, so results never depend on
// the thread count.
#pragma once

#include <omp.h>
#include <vqcj.h>

#include "../core/vqccore.h"
#include "wrap.h"

namespace vqcj {

inline constexpr int32_t kParallelThreshold = 8192;

// True when a region would be opened for this size.
constexpr bool ownRowsGoParallel(int32_t width, int32_t height) {
    return mulW(width, height) > kParallelThreshold;
}

// rows(first, last) processes rows first..last-1; it derives its pointers as
// base plus first row times step and walks on by the step.
template <class Rows>
void ownParallelRows(int32_t width, int32_t height, const Rows& rows) {
    const int32_t threads = ownGetNumThreads();
    if (!ownRowsGoParallel(width, height)) {
        rows(0, height);
        return;
    }
#pragma omp parallel num_threads(threads)
    {
        // The runtime's static schedule, spelled out: one contiguous run per
        // thread, the first height % n threads taking one row more.
        const int n = omp_get_num_threads();
        const int t = omp_get_thread_num();
        const int32_t base = height / n, extra = height % n;
        const int32_t first = t * base + (t < extra ? t : extra);
        const int32_t last = first + base + (t < extra ? 1 : 0);
        if (first < last) rows(first, last);
    }
}

}  // namespace vqcj
