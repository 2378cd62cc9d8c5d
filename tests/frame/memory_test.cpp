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
}

// Zero, fill and the element forms write exactly their range, at any
// alignment, and the checked forms test the pointer before the length.
TEST(Memory, ZeroAndFillWriteExactlyTheRange) {
    std::vector<uint8_t> buf(512);
    for (int off = 0; off < 4; ++off)
        for (int len = -1; len <= 70; ++len)
            for (int kind = 0; kind < (off == 0 ? 4 : 2); ++kind) {  // elements only where aligned
                std::fill(buf.begin(), buf.end(), 0xEE);
                uint8_t* p = buf.data() + 64 + off;
                const int value = kind == 1 ? 0x5C : 0, bytes = kind == 2 ? 2 * len : kind == 3 ? 4 * len : len;
                if (kind == 0) ownZeroBytes(p, len);
                if (kind == 1) ownFillBytes(0x5C, p, len);
                if (kind == 2) {
                    EXPECT_EQ(ownZero16s(reinterpret_cast<Vqc16s*>(p), len), len < 1 ? -6 : 0);
                }
                if (kind == 3) ownFill32s(0, reinterpret_cast<Vqc32s*>(p), len);
                for (int i = 0; i < 512; ++i)
                    ASSERT_EQ(buf[i], i >= 64 + off && i < 64 + off + bytes ? value : 0xEE) << kind << " " << len;
            }
    Vqc8u b[4] = {1, 1, 1, 1};
    EXPECT_EQ(ownZero8u(nullptr, 0), vqcStatusNullPtr);
    EXPECT_EQ(ownZero32s(nullptr, -1), vqcStatusNullPtr);
    EXPECT_EQ(ownFill8u(7, b, 0), vqcStatusBadSize);
    EXPECT_EQ(ownCopy8u(b, nullptr, 4), vqcStatusNullPtr);
    EXPECT_EQ(ownCopy8u(b, b + 1, 0), vqcStatusBadSize);
    EXPECT_EQ(b[1], 1);
}

// The copy is a forward byte copy: just above an overlapping source it
// replicates the leading pattern, which a memmove would not.
TEST(Memory, CopyIsForward) {
    EXPECT_FALSE(ownRangesOverlap(0x10000, 0x10000 + 97, 97));  // touching ranges share no byte
    EXPECT_TRUE(ownRangesOverlap(0x10000 + 96, 0x10000, 97));
    EXPECT_FALSE(ownRangesOverlap(0x10000, 0x10000 + (uintptr_t{1} << 32), 200));
    std::vector<uint8_t> b(400);
    for (int shift : {1, 3}) {
        std::iota(b.begin(), b.end(), 0);
        ownCopyBytes(b.data(), b.data() + shift, shift == 1 ? 10 : 200);
        for (int i = 0; i < (shift == 1 ? 11 : 203); ++i) ASSERT_EQ(b[i], i % shift) << shift;
    }
    for (int len = 0; len <= 40; ++len)  // separate ranges, every short length and alignment
        for (int off = 0; off < 8; ++off) {
            std::iota(b.begin(), b.end(), 0);
            ownCopyBytes(b.data() + off, b.data() + 200, len);
            for (int i = 192; i < 256; ++i) ASSERT_EQ(b[i], i >= 200 && i < 200 + len ? off + i - 200 : i) << len;
        }
    std::iota(b.begin(), b.end(), 0);  // below the source, and far apart
    ownCopyBytes(b.data() + 5, b.data(), 100);
    ASSERT_EQ(ownCopy8u(b.data(), b.data() + 200, 150), vqcStatusOk);
    for (int i = 0; i < 100; ++i) ASSERT_EQ(b[i], i + 5);
    for (int i = 0; i < 150; ++i) ASSERT_EQ(b[200 + i], i < 100 ? i + 5 : i);
}
