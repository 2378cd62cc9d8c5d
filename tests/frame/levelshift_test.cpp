#include <gtest/gtest.h>
#include <omp.h>
#include <vqcj.h>

#include <cstring>
#include <vector>

#include "support/testutil.h"

using vqcjtest::Guarded;

TEST(LevelShift, SaturatesUpAndWrapsNothingDown) {
    const Vqc16s in[] = {127, 128, -128, -129, -32768, 32767, 0, -1, 100};
    const Vqc8u want[] = {255, 255, 0, 0, 0, 255, 128, 127, 228};
    Vqc8u out[9] = {};
    ASSERT_EQ(vqciAdd128_JPEG_16s8u_C1R(in, sizeof in, out, sizeof out, {9, 1}), vqcStatusOk);
    for (int i = 0; i < 9; ++i) EXPECT_EQ(out[i], want[i]) << in[i];

    Vqc8u all[256];
    for (int i = 0; i < 256; ++i) all[i] = static_cast<Vqc8u>(i);
    Vqc16s down[256];
    ASSERT_EQ(vqciSub128_JPEG_8u16s_C1R(all, 256, down, 512, {256, 1}), vqcStatusOk);
    for (int i = 0; i < 256; ++i) ASSERT_EQ(down[i], i - 128);
}

// Steps are bytes; the bytes between rows and around the region stay put.
TEST(LevelShift, RespectsStepsAndRegion) {
    const int w = 13, h = 7, sstep = 17, dstep = 2 * w + 6;
    const auto src = vqcjtest::randomBytes(sstep * h, 1);
    Guarded dst(dstep * h);
    ASSERT_EQ(vqciSub128_JPEG_8u16s_C1R(src.data(), sstep, reinterpret_cast<Vqc16s*>(dst.data()), dstep, {w, h}),
              vqcStatusOk);
    for (int y = 0; y < h; ++y) {
        const uint8_t* row = dst.data() + y * dstep;
        for (int x = 0; x < w; ++x) {
            Vqc16s v;
            std::memcpy(&v, row + 2 * x, 2);
            ASSERT_EQ(v, src[y * sstep + x] - 128);
        }
        for (int b = 2 * w; b < dstep; ++b) ASSERT_EQ(row[b], 0xA5);
    }
    EXPECT_TRUE(dst.guardsIntact());

    std::vector<Vqc8u> back(sstep * h, 0xA5);
    ASSERT_EQ(vqciAdd128_JPEG_16s8u_C1R(reinterpret_cast<Vqc16s*>(dst.data()), dstep, back.data(), sstep, {w, h}),
              vqcStatusOk);
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < sstep; ++x) ASSERT_EQ(back[y * sstep + x], x < w ? src[y * sstep + x] : 0xA5);
}

// Buffer order: each buffer is followed at once by its own step.
TEST(LevelShift, CheckOrder) {
    Vqc8u b8[4] = {1, 2, 3, 4};
    Vqc16s b16[4] = {5, 6, 7, 8};
    struct Case {
        bool srcNull;
        int srcStep;
        bool dstNull;
        int dstStep;
        VqciSize roi;
        VqcStatus want;
    } cases[] = {
        {true, 0, true, 0, {0, 0}, vqcStatusNullPtr},    // null source with step 0: pointer first
        {false, 0, true, 0, {0, 0}, vqcStatusBadStep},   // source step before the later pointer
        {false, 4, true, 0, {0, 0}, vqcStatusNullPtr},
        {false, 4, false, 0, {0, 0}, vqcStatusBadStep},
        {false, 4, false, -8, {4, 1}, vqcStatusBadStep},  // negative steps refused too
        {false, 4, false, 8, {0, 0}, vqcStatusBadSize},
        {false, 4, false, 8, {4, 0}, vqcStatusBadSize},
        {false, 4, false, 8, {-1, 1}, vqcStatusBadSize},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(vqciSub128_JPEG_8u16s_C1R(c.srcNull ? nullptr : b8, c.srcStep, c.dstNull ? nullptr : b16,
                                            c.dstStep, c.roi),
                  c.want);
        EXPECT_EQ(vqciAdd128_JPEG_16s8u_C1R(c.srcNull ? nullptr : b16, c.srcStep, c.dstNull ? nullptr : b8,
                                            c.dstStep, c.roi),
                  c.want);
    }
    EXPECT_EQ(b8[0], 1);
    EXPECT_EQ(b16[0], 5);
}

// Above the threshold the rows are divided among threads; the result must
// not depend on how many.
TEST(LevelShift, SameResultForAnyThreadCount) {
    const int w = 301, h = 97;  // 29197 elements, well above the threshold
    const auto src = vqcjtest::randomBytes(w * h, 2);
    std::vector<Vqc16s> ref(w * h), out(w * h);
    std::vector<Vqc8u> back(w * h);
    vqcjtest::withThreads(1, [&] { vqciSub128_JPEG_8u16s_C1R(src.data(), w, ref.data(), 2 * w, {w, h}); });
    for (int n : {2, 3, 7}) {
        std::fill(out.begin(), out.end(), 0);
        vqcjtest::withThreads(n, [&] {
            ASSERT_EQ(vqciSub128_JPEG_8u16s_C1R(src.data(), w, out.data(), 2 * w, {w, h}), vqcStatusOk);
            ASSERT_EQ(vqciAdd128_JPEG_16s8u_C1R(out.data(), 2 * w, back.data(), w, {w, h}), vqcStatusOk);
        });
        EXPECT_EQ(out, ref) << n << " threads";
        EXPECT_EQ(back, src) << n << " threads";
    }
}
