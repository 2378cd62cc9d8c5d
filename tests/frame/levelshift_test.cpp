#include <gtest/gtest.h>
#include <vqcj.h>

#include <cstring>
#include <vector>

#include "support/simd.h"
#include "support/testutil.h"

TEST(LevelShift, Values) {
    const Vqc16s in[] = {127, 128, -128, -129, -32768, 32767, 0, -1};
    const Vqc8u want[] = {255, 255, 0, 0, 0, 255, 128, 127};
    Vqc8u out[8] = {};
    ASSERT_EQ(vqciAdd128_JPEG_16s8u_C1R(in, sizeof in, out, sizeof out, {8, 1}), vqcStatusOk);
    EXPECT_EQ(std::vector<Vqc8u>(out, out + 8), std::vector<Vqc8u>(want, want + 8));
    Vqc8u all[256];
    Vqc16s down[256];
    for (int i = 0; i < 256; ++i) all[i] = static_cast<Vqc8u>(i);
    ASSERT_EQ(vqciSub128_JPEG_8u16s_C1R(all, 256, down, 512, {256, 1}), vqcStatusOk);
    for (int i = 0; i < 256; ++i) ASSERT_EQ(down[i], i - 128);
}

// Steps are bytes; padding between rows is left alone. Above the threshold
// the result does not depend on the thread count.
TEST(LevelShift, StepsRegionAndThreads) {
    const int w = 301, h = 97, sstep = 305, dstep = 2 * w + 6;
    const auto src = vqcjtest::randomBytes(size_t(sstep) * h, 1);
    std::vector<uint8_t> ref;
    for (int threads : {1, 2, 3}) {
        std::vector<uint8_t> mid(size_t(dstep) * h, 0xA5), back(src.size(), 0xA5);
        vqcjtest::withThreads(threads, [&] {
            ASSERT_EQ(vqciSub128_JPEG_8u16s_C1R(src.data(), sstep, reinterpret_cast<Vqc16s*>(mid.data()), dstep, {w, h}), 0);
            ASSERT_EQ(vqciAdd128_JPEG_16s8u_C1R(reinterpret_cast<Vqc16s*>(mid.data()), dstep, back.data(), sstep, {w, h}), 0);
        });
        for (int y = 0; y < h; ++y)
            for (int x = 0; x < sstep; ++x) ASSERT_EQ(back[y * sstep + x], x < w ? src[y * sstep + x] : 0xA5);
        if (threads == 1) ref = mid;
        EXPECT_EQ(mid, ref) << threads << " threads";
        EXPECT_EQ(mid[2 * w], 0xA5);
    }
}

// Buffer order: each buffer is followed at once by its own step.
TEST(LevelShift, CheckOrder) {
    Vqc8u b8[4] = {1, 2, 3, 4};
    Vqc16s b16[4] = {5, 6, 7, 8};
    const struct {
        bool src;
        int srcStep;
        bool dst;
        int dstStep, w, h;
        VqcStatus want;
    } cases[] = {
        {false, 0, false, 0, 0, 0, -8},  {true, 0, false, 0, 0, 0, -14}, {true, 4, false, 0, 0, 0, -8},
        {true, 4, true, 0, 0, 0, -14},   {true, 4, true, -8, 4, 1, -14}, {true, 4, true, 8, 0, 0, -6},
        {true, 4, true, 8, 4, 0, -6},    {true, 4, true, 8, -1, 1, -6},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(vqciSub128_JPEG_8u16s_C1R(c.src ? b8 : nullptr, c.srcStep, c.dst ? b16 : nullptr, c.dstStep, {c.w, c.h}), c.want);
        EXPECT_EQ(vqciAdd128_JPEG_16s8u_C1R(c.src ? b16 : nullptr, c.srcStep, c.dst ? b8 : nullptr, c.dstStep, {c.w, c.h}), c.want);
    }
    EXPECT_EQ(b8[0], 1);
    EXPECT_EQ(b16[0], 5);
}

// Every SIMD target against the baseline's plain routine: widths 1..70 cover
// each vector length with every tail, odd heights, steps wider than rows.
TEST(LevelShift, EveryTarget) {
    for (int w = 1; w <= 70; ++w) {
        // Odd byte steps for the bytes; 16-bit rows keep even ones.
        const int h = 1 + w % 5, sstep = 2 * w + 3, dstep = 4 * w + 2, wstep = 2 * w + 4;
        auto src = vqcjtest::randomBytes(size_t(wstep) * h, w);
        // Extremes of the 16-bit input in the return direction.
        for (size_t i = 0; i + 1 < src.size(); i += 7) src[i + 1] = (i & 8) ? 0x80 : 0x7F;
        vqcjtest::expectSameOnEveryTarget(
            [&] {
                std::vector<uint8_t> out(size_t(dstep) * h + size_t(wstep) * h, 0xA5);
                auto* mid = reinterpret_cast<Vqc16s*>(out.data());
                EXPECT_EQ(vqciSub128_JPEG_8u16s_C1R(src.data(), sstep, mid, dstep, {w, h}), 0);
                EXPECT_EQ(vqciAdd128_JPEG_16s8u_C1R(reinterpret_cast<const Vqc16s*>(src.data()), wstep,
                                                    out.data() + size_t(dstep) * h, wstep, {w, h}),
                          0);
                return out;
            },
            "level shift width " + std::to_string(w));
    }
}
