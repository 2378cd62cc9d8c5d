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

// Records which thread ran which run of rows.
std::vector<Run> runsFor(int32_t w, int32_t h, int threads) {
    std::vector<Run> runs;
    std::mutex m;
    vqcjtest::withThreads(threads, [&] {
        ownParallelRows(w, h, [&](int32_t first, int32_t last) {
            std::lock_guard<std::mutex> lock(m);
            runs.push_back({omp_get_thread_num(), first, last, omp_in_parallel() != 0});
        });
    });
    return runs;
}

}  // namespace

TEST(ParallelFrame, ThresholdIsOnElementsNotBytes) {
    auto serial = runsFor(64, 128, 2);  // 8192: serial
    ASSERT_EQ(serial.size(), 1u);
    EXPECT_FALSE(serial[0].inRegion);
    EXPECT_EQ(serial[0].first, 0);
    EXPECT_EQ(serial[0].last, 128);

    auto region = runsFor(64, 129, 2);  // 8256: two contiguous runs, the first one row longer
    ASSERT_EQ(region.size(), 2u);
    std::sort(region.begin(), region.end(), [](auto& a, auto& b) { return a.thread < b.thread; });
    EXPECT_TRUE(region[0].inRegion);
    EXPECT_EQ(region[0].first, 0);
    EXPECT_EQ(region[0].last, 65);
    EXPECT_EQ(region[1].first, 65);
    EXPECT_EQ(region[1].last, 129);
}

TEST(ParallelFrame, OneThreadStillOpensTheRegionAndCoversAllRows) {
    auto runs = runsFor(100, 100, 1);
    ASSERT_EQ(runs.size(), 1u);
    EXPECT_EQ(runs[0].first, 0);
    EXPECT_EQ(runs[0].last, 100);
}

TEST(ParallelFrame, SingleWideRowGoesToOneThread) {
    auto runs = runsFor(9000, 1, 3);
    ASSERT_EQ(runs.size(), 1u);  // the others receive no rows
    EXPECT_TRUE(runs[0].inRegion);
    EXPECT_EQ(runs[0].first, 0);
    EXPECT_EQ(runs[0].last, 1);
}

TEST(ParallelFrame, WrappingProductTakesTheSerialBranchAndCoversAllRows) {
    EXPECT_FALSE(ownRowsGoParallel(65536, 65536));  // the product wraps to 0
    EXPECT_TRUE(ownRowsGoParallel(65537, 65537));   // wraps to 131073
    auto runs = runsFor(65536, 65536, 2);
    ASSERT_EQ(runs.size(), 1u);
    EXPECT_FALSE(runs[0].inRegion);
    EXPECT_EQ(runs[0].last, 65536);
}

TEST(ParallelFrame, RunsPartitionTheRowsForManyCounts) {
    for (int threads : {2, 3, 5, 8}) {
        for (int h : {3, 97, 1000}) {
            auto runs = runsFor(9000, h, threads);
            std::vector<int> hits(h, 0);
            for (const auto& r : runs)
                for (int y = r.first; y < r.last; ++y) ++hits[y];
            for (int y = 0; y < h; ++y) ASSERT_EQ(hits[y], 1) << threads << " threads, height " << h;
            EXPECT_LE(runs.size(), static_cast<size_t>(threads));
        }
    }
}
