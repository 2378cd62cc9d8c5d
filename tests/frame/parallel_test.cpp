#include <gtest/gtest.h>
#include <omp.h>

#include <algorithm>
#include <mutex>
#include <vector>

#include "frame/parallel.h"
#include "support/testutil.h"

using namespace vqcj;

namespace {

struct Run {
    int thread, first, last;
    bool inRegion;
};

// Which thread ran which run of rows, in thread order.
std::vector<Run> runsFor(int32_t w, int32_t h, int threads) {
    std::vector<Run> runs;
    std::mutex m;
    vqcjtest::withThreads(threads, [&] {
        ownParallelRows(w, h, [&](int32_t first, int32_t last) {
            std::lock_guard<std::mutex> lock(m);
            runs.push_back({omp_get_thread_num(), first, last, omp_in_parallel() != 0});
        });
    });
    std::sort(runs.begin(), runs.end(), [](const Run& a, const Run& b) { return a.thread < b.thread; });
    return runs;
}

}  // namespace

TEST(ParallelFrame, ThresholdWrapAndRuns) {
    const struct {
        int w, h, threads;
        std::vector<int> bounds;  // first row of each run, then the end
        bool inRegion;
    } cases[] = {
        {64, 128, 2, {0, 128}, false},        // 8192 elements: serial
        {64, 129, 2, {0, 65, 129}, true},     // 8256: two contiguous runs, the first one row longer
        {100, 100, 1, {0, 100}, false},       // a region of one thread is not an active one
        {9000, 1, 3, {0, 1}, true},           // the other threads receive no rows
        {65536, 65536, 2, {0, 65536}, false}, // the product wraps to 0
    };
    for (const auto& c : cases) {
        const auto runs = runsFor(c.w, c.h, c.threads);
        ASSERT_EQ(runs.size() + 1, c.bounds.size()) << c.w << "x" << c.h;
        for (size_t i = 0; i < runs.size(); ++i) {
            EXPECT_EQ(runs[i].first, c.bounds[i]);
            EXPECT_EQ(runs[i].last, c.bounds[i + 1]);
            EXPECT_EQ(runs[i].inRegion, c.inRegion);
        }
    }
    EXPECT_TRUE(ownRowsGoParallel(65537, 65537));  // wraps to 131073
}
