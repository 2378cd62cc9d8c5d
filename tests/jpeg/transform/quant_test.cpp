// Quantisation tables, the quantisers and their workers.
#include <gtest/gtest.h>
#include <vqcj.h>

#include <array>
#include <climits>
#include <vector>

#include "jpeg/transform/quant.h"
#include "reference.h"
#include "support/testutil.h"

using namespace vqcj;
using namespace vqcjtest;

namespace {

using Raw = std::array<Vqc8u, 64>;
using Table = std::array<Vqc16u, 64>;

// ITU T.81 Figure A.6: natural index of the k-th coefficient of the scan.
constexpr int kScan[64] = {0,  1,  8,  16, 9,  2,  3,  10, 17, 24, 32, 25, 18, 11, 4,  5,  12, 19, 26, 33, 40, 48,
                           41, 34, 27, 20, 13, 6,  7,  14, 21, 28, 35, 42, 49, 56, 57, 50, 43, 36, 29, 22, 15, 23,
                           30, 37, 44, 51, 58, 59, 52, 45, 38, 31, 39, 46, 53, 60, 61, 54, 47, 55, 62, 63};

Raw rawOf(std::initializer_list<int> head, int rest) {
    Raw r;
    r.fill(static_cast<Vqc8u>(rest));
    int i = 0;
    for (int v : head) r[i++] = static_cast<Vqc8u>(v);
    return r;
}

Raw scaled(Raw r, int32_t quality) {
    EXPECT_EQ(vqciQuantFwdRawTableInit_JPEG_8u(r.data(), quality), vqcStatusOk);
    return r;
}

// round(t * c / 32768) with ties to even, by floor division and remainder.
int32_t roundedProduct(int32_t t, int32_t c) {
    const int64_t p = static_cast<int64_t>(t) * c;
    int64_t q = p >= 0 ? p / 32768 : -((-p + 32767) / 32768);
    const int64_t rem = p - q * 32768;  // 0 .. 32767
    if (rem > 16384 || (rem == 16384 && (q & 1))) ++q;
    return static_cast<int32_t>(std::clamp<int64_t>(q, -32768, 32767));
}

}  // namespace

TEST(QuantTables, ZigzagPositionsInvertTheScan) {
    const int head[12] = {0, 1, 5, 6, 14, 15, 27, 28, 2, 4, 7, 13};
    for (int i = 0; i < 12; ++i) EXPECT_EQ(ownZigzagPos[i], head[i]);
    for (int k = 0; k < 64; ++k) EXPECT_EQ(ownZigzagPos[kScan[k]], k);
}

TEST(QuantTables, QualityScaling) {
    // 50 is scale 100: unchanged, but 0 becomes 1.
    Raw r = rawOf({16, 11, 0, 255, 1}, 99);
    EXPECT_EQ(scaled(r, 50), rawOf({16, 11, 1, 255, 1}, 99));
    // 100 is scale 0, and above 100 the scale is negative: all 1.
    EXPECT_EQ(scaled(r, 100), rawOf({}, 1));
    EXPECT_EQ(scaled(r, 1000), rawOf({}, 1));
    // 1 is scale 5000: (16 * 5000 + 50) / 100 = 800, limited to 255.
    EXPECT_EQ(scaled(r, 1), rawOf({255, 255, 1, 255, 50}, 255));
    // 75 is scale 50: (11 * 50 + 50) / 100 = 6, (1 * 50 + 50) / 100 = 1.
    EXPECT_EQ(scaled(r, 75), rawOf({8, 6, 1, 128, 1}, 50));
    // 30 is scale 166 (integer division): (11 * 166 + 50) / 100 = 18.
    EXPECT_EQ(scaled(r, 30), rawOf({27, 18, 1, 255, 2}, 164));
    // No upper limit: 2 * INT32_MAX wraps to -2, so the scale is 202.
    EXPECT_EQ(scaled(r, INT32_MAX), rawOf({32, 22, 1, 255, 2}, 200));
}

TEST(QuantTables, QualityBelowOneIsRefused) {
    for (int32_t q : {0, -1, INT32_MIN}) {
        Raw r = rawOf({16, 0}, 40);
        const Raw keep = r;
        EXPECT_EQ(vqciQuantFwdRawTableInit_JPEG_8u(r.data(), q), vqcStatusBadArg);
        EXPECT_EQ(r, keep);
    }
    EXPECT_EQ(vqciQuantFwdRawTableInit_JPEG_8u(nullptr, 0), vqcStatusNullPtr);
}

TEST(QuantTables, ForwardAndInverseTablesInNaturalOrder) {
    // Raw entry at scan position k is k + 1, so natural entry i is pos[i] + 1;
    // the forward entry is 32768 / d rounded, for every byte divisor d.
    Raw r;
    Table fwd, inv;
    for (int base = 0; base < 256; base += 64) {
        for (int k = 0; k < 64; ++k) r[k] = static_cast<Vqc8u>(std::min(base + k + 1, 255));
        ASSERT_EQ(vqciQuantFwdTableInit_JPEG_8u16u(r.data(), fwd.data()), vqcStatusOk);
        ASSERT_EQ(vqciQuantInvTableInit_JPEG_8u16u(r.data(), inv.data()), vqcStatusOk);
        for (int i = 0; i < 64; ++i) {
            const int d = r[ownZigzagPos[i]];
            EXPECT_EQ(inv[i], d);
            EXPECT_EQ(fwd[i], static_cast<int>(32768.0 / d + 0.5)) << "divisor " << d;
        }
    }
    r = rawOf({1, 2, 3, 255}, 16);
    ASSERT_EQ(vqciQuantFwdTableInit_JPEG_8u16u(r.data(), fwd.data()), vqcStatusOk);
    EXPECT_EQ(fwd[0], 32768);
    EXPECT_EQ(fwd[1], 16384);
    EXPECT_EQ(fwd[8], 10923);  // natural (1,0) is the third in the scan
    EXPECT_EQ(fwd[16], 129);
}

TEST(QuantTables, ZeroDivisorWarnsButCompletes) {
    Raw r = rawOf({4, 0, 2}, 1);
    r[63] = 0;
    Table fwd, inv;
    EXPECT_EQ(vqciQuantFwdTableInit_JPEG_8u16u(r.data(), fwd.data()), vqcStatusDivByZero);
    EXPECT_EQ(fwd[0], 8192);
    EXPECT_EQ(fwd[1], 65535);
    EXPECT_EQ(fwd[8], 16384);
    EXPECT_EQ(fwd[63], 65535);
    EXPECT_EQ(fwd[9], 32768);
    EXPECT_EQ(vqciQuantInvTableInit_JPEG_8u16u(r.data(), inv.data()), vqcStatusOk);
    EXPECT_EQ(inv[1], 0);
    EXPECT_EQ(inv[63], 0);
}

TEST(QuantTables, ReciprocalTiesGoToEven) {
    // 3/2 = 1.5 and 5/2 = 2.5 in 16.16 fixed point: both give 2.
    Vqc16u t[2] = {2, 2};
    ASSERT_EQ(ownRecip16u(3, t, 1), vqcStatusOk);
    ASSERT_EQ(ownRecip16u(5, t + 1, 1), vqcStatusOk);
    EXPECT_EQ(t[0], 2);
    EXPECT_EQ(t[1], 2);
    Vqc16u odd[1] = {4};  // 7/4 = 1.75
    ASSERT_EQ(ownRecip16u(7, odd, 1), vqcStatusOk);
    EXPECT_EQ(odd[0], 2);
}

TEST(Quantisers, ForwardRoundsHalfToEven) {
    Table div16;
    div16.fill(2048);
    std::array<Vqc16s, 64> b{};
    const int in[] = {24, 40, -24, -40, 8, -8, 56, -56, 25, -25, 7, 9};
    const int out[] = {2, 2, -2, -2, 0, 0, 4, -4, 2, -2, 0, 1};
    for (int i = 0; i < 12; ++i) b[i] = static_cast<Vqc16s>(in[i]);
    ASSERT_EQ(vqciQuantFwd8x8_JPEG_16s_C1I(b.data(), div16.data()), vqcStatusOk);
    for (int i = 0; i < 12; ++i) EXPECT_EQ(b[i], out[i]) << in[i];

    Table unit = flatTable<Vqc16u>(32768), big = flatTable<Vqc16u>(65535);
    b[0] = 32767, b[1] = -32768;
    std::array<Vqc16s, 64> c = b;
    ASSERT_EQ(vqciQuantFwd8x8_JPEG_16s_C1I(b.data(), unit.data()), vqcStatusOk);
    EXPECT_EQ(b[0], 32767);
    EXPECT_EQ(b[1], -32768);
    // The table is unsigned: 65535 * 32767 / 32768 saturates.
    ASSERT_EQ(vqciQuantFwd8x8_JPEG_16s_C1I(c.data(), big.data()), vqcStatusOk);
    EXPECT_EQ(c[0], 32767);
    EXPECT_EQ(c[1], -32768);
}

TEST(Quantisers, ForwardMatchesExactRoundingEverywhere) {
    // Every 16-bit coefficient against a spread of table entries.
    for (int32_t t : {1, 129, 2048, 3277, 10923, 16384, 32767, 32768, 40000, 65535}) {
        const Table table = flatTable<Vqc16u>(static_cast<Vqc16u>(t));
        for (int32_t base = -32768; base < 32768; base += 64) {
            std::array<Vqc16s, 64> b;
            for (int i = 0; i < 64; ++i) b[i] = static_cast<Vqc16s>(base + i);
            ASSERT_EQ(vqciQuantFwd8x8_JPEG_16s_C1I(b.data(), table.data()), vqcStatusOk);
            for (int i = 0; i < 64; ++i) ASSERT_EQ(b[i], roundedProduct(t, base + i)) << t << " * " << base + i;
        }
    }
}

TEST(Quantisers, InverseSaturatesAndReadsTheTableSigned) {
    Table t = flatTable<Vqc16u>(255);
    t[4] = 40000;  // -25536 as a signed factor
    t[5] = 40000;
    std::array<Vqc16s, 64> b{};
    b[0] = 200, b[1] = -200, b[2] = 128, b[3] = -129, b[4] = 1, b[5] = 2;
    ASSERT_EQ(vqciQuantInv8x8_JPEG_16s_C1I(b.data(), t.data()), vqcStatusOk);
    EXPECT_EQ(b[0], 32767);
    EXPECT_EQ(b[1], -32768);
    EXPECT_EQ(b[2], 32640);
    EXPECT_EQ(b[3], -32768);
    EXPECT_EQ(b[4], -25536);
    EXPECT_EQ(b[5], -32768);
    EXPECT_EQ(b[6], 0);
}

TEST(QuantWorkers, OwnChecksInOrder) {
    Vqc8u src[64] = {};
    Vqc16u dst[64] = {}, tab[64] = {};
    Vqc16s blk[64] = {};
    // Widening: pointers, then width and height, then the steps.
    EXPECT_EQ(ownConvert8u16u(nullptr, 0, dst, 0, 0, 0), vqcStatusNullPtr);
    EXPECT_EQ(ownConvert8u16u(src, 0, nullptr, 0, 0, 0), vqcStatusNullPtr);
    EXPECT_EQ(ownConvert8u16u(src, 0, dst, 0, 0, 8), vqcStatusBadSize);
    EXPECT_EQ(ownConvert8u16u(src, 0, dst, 0, 8, 0), vqcStatusBadSize);
    EXPECT_EQ(ownConvert8u16u(src, 0, dst, 0, 8, 8), vqcStatusBadStep);
    EXPECT_EQ(ownConvert8u16u(src, 8, dst, 0, 8, 8), vqcStatusBadStep);
    EXPECT_EQ(ownZigzagToNatural16u(nullptr, dst), vqcStatusNullPtr);
    EXPECT_EQ(ownZigzagToNatural16u(tab, nullptr), vqcStatusNullPtr);
    EXPECT_EQ(ownRecip16u(1, nullptr, 0), vqcStatusNullPtr);
    EXPECT_EQ(ownRecip16u(1, tab, 0), vqcStatusBadSize);
    EXPECT_EQ(ownMulScale16u16s(nullptr, blk, blk, 0, 15), vqcStatusNullPtr);
    EXPECT_EQ(ownMulScale16u16s(tab, nullptr, blk, 0, 15), vqcStatusNullPtr);
    EXPECT_EQ(ownMulScale16u16s(tab, blk, nullptr, 0, 15), vqcStatusNullPtr);
    EXPECT_EQ(ownMulScale16u16s(tab, blk, blk, 0, 15), vqcStatusBadSize);
    EXPECT_EQ(ownMulSat16s(nullptr, blk, 0), vqcStatusNullPtr);
    EXPECT_EQ(ownMulSat16s(tab, nullptr, 0), vqcStatusNullPtr);
    EXPECT_EQ(ownMulSat16s(tab, blk, 0), vqcStatusBadSize);
    EXPECT_EQ(ownMulSat16sTo(nullptr, tab, blk, 0), vqcStatusNullPtr);
    EXPECT_EQ(ownMulSat16sTo(blk, nullptr, blk, 0), vqcStatusNullPtr);
    EXPECT_EQ(ownMulSat16sTo(blk, tab, nullptr, 0), vqcStatusNullPtr);
    EXPECT_EQ(ownMulSat16sTo(blk, tab, blk, 0), vqcStatusBadSize);
}

TEST(QuantWorkers, WideningKeepsRowGaps) {
    // Rows with gaps on both sides take the row loop; the one-run case must
    // give the same values.
    const auto bytes = randomBytes(10 * 8, 2);
    std::vector<Vqc16u> gapped(12 * 8, 0xBEEF), run(64);
    ASSERT_EQ(ownConvert8u16u(bytes.data(), 10, gapped.data(), 24, 8, 8), vqcStatusOk);
    for (int r = 0; r < 8; ++r) {
        for (int c = 0; c < 8; ++c) EXPECT_EQ(gapped[r * 12 + c], bytes[r * 10 + c]);
        for (int c = 8; c < 12; ++c) EXPECT_EQ(gapped[r * 12 + c], 0xBEEF);
    }
    ASSERT_EQ(ownConvert8u16u(bytes.data(), 8, run.data(), 16, 8, 8), vqcStatusOk);
    for (int i = 0; i < 64; ++i) EXPECT_EQ(run[i], bytes[i]);
}
