#include <gtest/gtest.h>

#include <cstdint>
#include <numeric>
#include <vector>

#include "frame/memory.h"

using namespace vqcj;

TEST(Memory, MallocRefusesEmptyAndAligns) {
    EXPECT_EQ(ownMalloc(0), nullptr);
    EXPECT_EQ(ownMalloc(-5), nullptr);
    void* p = ownMalloc(1000);
    ASSERT_NE(p, nullptr);
    EXPECT_EQ(reinterpret_cast<uintptr_t>(p) % 64, 0u);
    ownFree(p);
    ownFree(nullptr);
}

// Zero and fill must write exactly [p, p + length) whatever the alignment of
// p and the split between head bytes, 32-byte groups and tail.
TEST(Memory, ZeroAndFillWriteExactlyTheRange) {
    std::vector<uint8_t> buf(256);
    for (int off = 0; off < 4; ++off) {
        for (int len = -1; len <= 100; ++len) {
            for (int value : {0, 0x5C}) {
                std::fill(buf.begin(), buf.end(), 0xEE);
                uint8_t* p = buf.data() + 64 + off;
                if (value == 0) ownZeroBytes(p, len); else ownFillBytes(static_cast<Vqc8u>(value), p, len);
                for (int i = 0; i < 256; ++i) {
                    const bool inside = i >= 64 + off && i < 64 + off + len;
                    ASSERT_EQ(buf[i], inside ? value : 0xEE) << "off " << off << " len " << len << " at " << i;
                }
            }
        }
    }
}

TEST(Memory, ZeroAtOddAddressStopsAfterTwoBytes) {
    alignas(8) uint8_t b[8] = {9, 9, 9, 9, 9, 9, 9, 9};
    ownZeroBytes(b + 1, 2);
    EXPECT_EQ(std::vector<uint8_t>(b, b + 8), (std::vector<uint8_t>{9, 0, 0, 9, 9, 9, 9, 9}));
}

TEST(Memory, CheckedFormsReportPointerBeforeLength) {
    Vqc8u b8[4] = {1, 1, 1, 1};
    Vqc16s b16[4] = {1, 1, 1, 1};
    Vqc32s b32[4] = {1, 1, 1, 1};
    EXPECT_EQ(ownZero8u(nullptr, 0), vqcStatusNullPtr);
    EXPECT_EQ(ownZero8u(b8, 0), vqcStatusBadSize);
    EXPECT_EQ(ownZero16s(nullptr, -1), vqcStatusNullPtr);
    EXPECT_EQ(ownZero16s(b16, 0), vqcStatusBadSize);
    EXPECT_EQ(ownZero32s(nullptr, 0), vqcStatusNullPtr);
    EXPECT_EQ(ownZero32s(b32, -3), vqcStatusBadSize);
    EXPECT_EQ(ownFill8u(7, nullptr, 0), vqcStatusNullPtr);
    EXPECT_EQ(ownFill8u(7, b8, 0), vqcStatusBadSize);
    EXPECT_EQ(ownCopy8u(nullptr, b8, 0), vqcStatusNullPtr);
    EXPECT_EQ(ownCopy8u(b8, nullptr, 4), vqcStatusNullPtr);
    EXPECT_EQ(ownCopy8u(b8, b8 + 1, 0), vqcStatusBadSize);
    EXPECT_EQ(b8[0], 1);  // nothing written by the refusals

    EXPECT_EQ(ownZero16s(b16 + 1, 2), vqcStatusOk);  // element counts, not bytes
    EXPECT_EQ(std::vector<Vqc16s>(b16, b16 + 4), (std::vector<Vqc16s>{1, 0, 0, 1}));
    EXPECT_EQ(ownZero32s(b32 + 1, 2), vqcStatusOk);
    EXPECT_EQ(std::vector<Vqc32s>(b32, b32 + 4), (std::vector<Vqc32s>{1, 0, 0, 1}));
    EXPECT_EQ(ownFill8u(3, b8 + 1, 3), vqcStatusOk);
    EXPECT_EQ(std::vector<Vqc8u>(b8, b8 + 4), (std::vector<Vqc8u>{1, 3, 3, 3}));
}

TEST(Memory, Fill32sGroupsAndTail) {
    for (int len = -1; len <= 19; ++len) {
        std::vector<Vqc32s> v(24, -1);
        EXPECT_EQ(ownFill32s(0x12345678, v.data() + 2, len), v.data() + 2);
        for (int i = 0; i < 24; ++i) ASSERT_EQ(v[i], (i >= 2 && i < 2 + len) ? 0x12345678 : -1) << len;
    }
}

TEST(Memory, OverlapIsDecidedOnRealDistances) {
    const uintptr_t s = 0x10000;
    EXPECT_FALSE(ownRangesOverlap(s, s + 97, 97));  // touching ranges share no byte
    EXPECT_TRUE(ownRangesOverlap(s, s + 96, 97));
    EXPECT_TRUE(ownRangesOverlap(s + 96, s, 97));
    EXPECT_TRUE(ownRangesOverlap(s, s, 1));
    EXPECT_FALSE(ownRangesOverlap(s, s + (uintptr_t{1} << 32), 200));  // 4 GiB apart is far apart
}

// A forward byte copy into an overlapping range just above the source
// replicates the leading pattern; a memmove would not.
TEST(Memory, OverlappingForwardCopyReplicates) {
    std::vector<uint8_t> b(400);
    std::iota(b.begin(), b.end(), 0);
    ownCopyBytes(b.data(), b.data() + 1, 10);
    for (int i = 0; i <= 10; ++i) EXPECT_EQ(b[i], 0) << i;
    EXPECT_EQ(b[11], 11);

    std::iota(b.begin(), b.end(), 0);  // longer than 96, still overlapping
    EXPECT_EQ(ownCopyBytes(b.data(), b.data() + 3, 200), b.data() + 3);
    for (int i = 0; i < 203; ++i) ASSERT_EQ(b[i], i % 3) << i;

    std::iota(b.begin(), b.end(), 0);  // destination below the source: an ordinary copy
    ownCopyBytes(b.data() + 5, b.data(), 100);
    for (int i = 0; i < 100; ++i) ASSERT_EQ(b[i], i + 5) << i;

    std::iota(b.begin(), b.end(), 0);  // far apart: plain copy
    ASSERT_EQ(ownCopy8u(b.data(), b.data() + 200, 150), vqcStatusOk);
    for (int i = 0; i < 150; ++i) ASSERT_EQ(b[200 + i], static_cast<uint8_t>(i));
}
