// Joining two byte planes into little-endian 16-bit samples and splitting
// them again.
#include <gtest/gtest.h>
#include <vqcj.h>

#include <cstring>
#include <vector>

#include "support/testutil.h"

namespace {

using Bytes = std::vector<uint8_t>;

TEST(JoinSplitRow, PlaneZeroHoldsTheHighBytes) {
    const Bytes hi = {0x12, 0xAB, 0x00}, lo = {0x34, 0xCD, 0xFF};
    const Vqc8u* planes[2] = {hi.data(), lo.data()};
    Bytes row(6);
    ASSERT_EQ(vqciJoinRow_TIFF_8u16u_C1(planes, row.data(), 3), vqcStatusOk);
    const uint16_t want[3] = {0x1234, 0xABCD, 0x00FF};
    EXPECT_EQ(std::memcmp(row.data(), want, 6), 0);  // the samples as a little-endian machine reads them
    EXPECT_EQ(row, Bytes({0x34, 0x12, 0xCD, 0xAB, 0xFF, 0x00}));

    Bytes h2(3), l2(3);
    Vqc8u* out[2] = {h2.data(), l2.data()};
    ASSERT_EQ(vqciSplitRow_TIFF_16u8u_C1(row.data(), out, 3), vqcStatusOk);
    EXPECT_EQ(h2, hi);
    EXPECT_EQ(l2, lo);
}

// Lengths around the vector widths, each with guards on all three buffers.
TEST(JoinSplitRow, RoundTripAtEveryLength) {
    for (int len = 1; len <= 70; ++len) {
        const auto n = static_cast<size_t>(len);
        const Bytes row = vqcjtest::randomBytes(2 * n, static_cast<uint32_t>(len));
        vqcjtest::Guarded hi(n), lo(n), joined(2 * n);
        Vqc8u* planes[2] = {hi.data(), lo.data()};
        ASSERT_EQ(vqciSplitRow_TIFF_16u8u_C1(row.data(), planes, len), vqcStatusOk);
        for (size_t i = 0; i < n; ++i) {
            ASSERT_EQ(hi.data()[i], row[2 * i + 1]);
            ASSERT_EQ(lo.data()[i], row[2 * i]);
        }
        const Vqc8u* in[2] = {hi.data(), lo.data()};
        ASSERT_EQ(vqciJoinRow_TIFF_8u16u_C1(in, joined.data(), len), vqcStatusOk);
        ASSERT_EQ(Bytes(joined.data(), joined.data() + 2 * n), row);
        ASSERT_TRUE(hi.guardsIntact() && lo.guardsIntact() && joined.guardsIntact());
    }
}

// Outer pointers, then the length, which is refused as a bad step; the
// plane pointers inside the array are never examined.
TEST(JoinSplitRow, CheckOrder) {
    uint8_t a[2] = {}, b[2] = {}, row[4] = {};
    const Vqc8u* in[2] = {a, b};
    const Vqc8u* nullIn[2] = {nullptr, nullptr};
    Vqc8u* out[2] = {a, b};
    Vqc8u* nullOut[2] = {nullptr, nullptr};
    const struct {
        const Vqc8u* const* planes;
        uint8_t* dst;
        int32_t len;
        VqcStatus want;
    } join[] = {
        {nullptr, nullptr, 0, vqcStatusNullPtr}, {in, nullptr, 0, vqcStatusNullPtr}, {nullptr, row, 2, vqcStatusNullPtr},
        {in, row, 0, vqcStatusBadStep},          {in, row, -5, vqcStatusBadStep},    {nullIn, row, 0, vqcStatusBadStep},
    };
    for (const auto& c : join) EXPECT_EQ(vqciJoinRow_TIFF_8u16u_C1(c.planes, c.dst, c.len), c.want);
    const struct {
        const uint8_t* src;
        Vqc8u* const* planes;
        int32_t len;
        VqcStatus want;
    } split[] = {
        {nullptr, nullptr, 0, vqcStatusNullPtr}, {row, nullptr, 0, vqcStatusNullPtr}, {nullptr, out, 2, vqcStatusNullPtr},
        {row, out, 0, vqcStatusBadStep},         {row, out, -1, vqcStatusBadStep},    {row, nullOut, 0, vqcStatusBadStep},
    };
    for (const auto& c : split) EXPECT_EQ(vqciSplitRow_TIFF_16u8u_C1(c.src, c.planes, c.len), c.want);
    EXPECT_EQ(row[0] | row[1] | a[0] | b[0], 0);  // refusals write nothing
}

}  // namespace
