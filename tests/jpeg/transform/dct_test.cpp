// Worked vectors of the fused forward and inverse transforms.
#include <gtest/gtest.h>
#include <vqcj.h>

#include <array>
#include <cstring>
#include <vector>

#include "reference.h"
#include "support/testutil.h"

using namespace vqcjtest;

namespace {

using Block16s = std::array<Vqc16s, 64>;

const auto kUnitFwd = flatTable<Vqc16u>(32768);  // divisor 1
const auto kUnitInv = flatTable<Vqc16u>(1);

Block16s dcOnly(Vqc16s dc) {
    Block16s b{};
    b[0] = dc;
    return b;
}

Block16s fwdLS8u(Vqc8u flat, const Vqc16u* table) {
    std::array<Vqc8u, 64> px;
    px.fill(flat);
    Block16s out;
    EXPECT_EQ(vqciDCTQuantFwd8x8LS_JPEG_8u16s_C1R(px.data(), 8, out.data(), table), vqcStatusOk);
    return out;
}

Block16s fwd16u(Vqc16u flat, float q, int32_t step = 16) {
    std::vector<Vqc8u> buf(static_cast<size_t>(step) * 8 + 16);
    for (int r = 0; r < 8; ++r)
        for (int c = 0; c < 8; ++c) std::memcpy(&buf[r * step + 2 * c], &flat, 2);
    const auto table = flatTable<Vqc32f>(q);
    Block16s out;
    EXPECT_EQ(vqciDCTQuantFwd8x8LS_JPEG_16u16s_C1R(reinterpret_cast<const Vqc16u*>(buf.data()), step, out.data(),
                                                   table.data()),
              vqcStatusOk);
    return out;
}

std::array<Vqc8u, 64> invLS8u(const Block16s& coef, const Vqc16u* table) {
    std::array<Vqc8u, 64> px;
    EXPECT_EQ(vqciDCTQuantInv8x8LS_JPEG_16s8u_C1R(coef.data(), px.data(), 8, table), vqcStatusOk);
    return px;
}

std::array<Vqc16u, 64> inv16u(const Block16s& coef, float q) {
    const auto table = flatTable<Vqc32f>(q);
    std::array<Vqc16u, 64> px;
    EXPECT_EQ(vqciDCTQuantInv8x8LS_JPEG_16s16u_C1R(coef.data(), px.data(), 16, table.data()), vqcStatusOk);
    return px;
}

template <class T, size_t N>
void expectFlat(const std::array<T, N>& a, int value) {
    for (size_t i = 0; i < N; ++i) ASSERT_EQ(a[i], value) << "at " << i;
}

void expectDcOnly(const Block16s& b, int dc) {
    EXPECT_EQ(b[0], dc);
    for (int i = 1; i < 64; ++i) ASSERT_EQ(b[i], 0) << "at " << i;
}

}  // namespace

TEST(DctForward, FlatBlocksGiveOnlyDc) {
    std::array<Vqc8u, 64> raw16;
    raw16.fill(16);
    std::array<Vqc16u, 64> div16;
    ASSERT_EQ(vqciQuantFwdTableInit_JPEG_8u16u(raw16.data(), div16.data()), vqcStatusOk);
    ASSERT_EQ(div16[0], 2048);
    expectDcOnly(fwdLS8u(228, div16.data()), 50);
    expectDcOnly(fwdLS8u(128, kUnitFwd.data()), 0);
    expectDcOnly(fwdLS8u(0, kUnitFwd.data()), -1024);

    Block16s centred;
    centred.fill(100);
    ASSERT_EQ(vqciDCTQuantFwd8x8_JPEG_16s_C1I(centred.data(), kUnitFwd.data()), vqcStatusOk);
    expectDcOnly(centred, 800);
}

TEST(DctForward, RowResultsWrapInSixteenBits) {
    // Row DC 8 * 8 * 32767 = 0x1FFFC0 keeps -64; the column gives
    // (8 * -64 + 32) >> 6 = -8. Saturation between the passes would give 4095.
    Block16s b;
    b.fill(32767);
    ASSERT_EQ(vqciDCTQuantFwd8x8_JPEG_16s_C1I(b.data(), kUnitFwd.data()), vqcStatusOk);
    expectDcOnly(b, -8);
    // 8 * 8 * -32768 = -0x200000 has no low bits at all.
    b.fill(-32768);
    ASSERT_EQ(vqciDCTQuantFwd8x8_JPEG_16s_C1I(b.data(), kUnitFwd.data()), vqcStatusOk);
    expectDcOnly(b, 0);
}

TEST(DctForward, OutOfPlaceMatchesInPlaceAndKeepsSource) {
    const auto bytes = randomBytes(128, 5);
    Block16s src, inPlace, aliased, out;
    for (int i = 0; i < 64; ++i) src[i] = static_cast<Vqc16s>((bytes[2 * i] << 8 | bytes[2 * i + 1]) % 600 - 300);
    std::array<Vqc16u, 64> table;
    for (int i = 0; i < 64; ++i) table[i] = static_cast<Vqc16u>(1000 + 500 * i);
    inPlace = aliased = src;
    const Block16s keep = src;
    ASSERT_EQ(vqciDCTQuantFwd8x8_JPEG_16s_C1(src.data(), out.data(), table.data()), vqcStatusOk);
    EXPECT_EQ(src, keep);
    ASSERT_EQ(vqciDCTQuantFwd8x8_JPEG_16s_C1I(inPlace.data(), table.data()), vqcStatusOk);
    ASSERT_EQ(vqciDCTQuantFwd8x8_JPEG_16s_C1(aliased.data(), aliased.data(), table.data()), vqcStatusOk);
    EXPECT_EQ(out, inPlace);
    EXPECT_EQ(out, aliased);
}

TEST(DctForward, LevelShiftFormReadsRowsByStep) {
    // A wide step, and a step of 1 that reads overlapping rows: row r is
    // bytes r to r + 7. Both must equal the centred block through the 16s form.
    const auto bytes = randomBytes(8 * 40, 9);
    for (int32_t step : {40, 8, 1}) {
        Block16s centred, viaShift, direct;
        for (int r = 0; r < 8; ++r)
            for (int c = 0; c < 8; ++c) centred[r * 8 + c] = static_cast<Vqc16s>(bytes[r * step + c] - 128);
        ASSERT_EQ(vqciDCTQuantFwd8x8LS_JPEG_8u16s_C1R(bytes.data(), step, viaShift.data(), kUnitFwd.data()),
                  vqcStatusOk);
        ASSERT_EQ(vqciDCTQuantFwd8x8_JPEG_16s_C1(centred.data(), direct.data(), kUnitFwd.data()), vqcStatusOk);
        EXPECT_EQ(viaShift, direct) << "step " << step;
    }
}

TEST(DctForward, FloatFormShiftsBy2048AndRoundsTiesToEven) {
    expectDcOnly(fwd16u(2048, 1.0f), 0);
    expectDcOnly(fwd16u(2148, 1.0f), 800);
    expectDcOnly(fwd16u(2148, 1.0f / 16), 50);
    // DC is 8 times the offset from 2048; halved, odd offsets are ties.
    expectDcOnly(fwd16u(2053, 0.5f / 8), 2);   // 2.5
    expectDcOnly(fwd16u(2055, 0.5f / 8), 4);   // 3.5
    expectDcOnly(fwd16u(2043, 0.5f / 8), -2);  // -2.5
    expectDcOnly(fwd16u(2041, 0.5f / 8), -4);  // -3.5
    // Samples above 12 bits are not refused; the conversion saturates.
    expectDcOnly(fwd16u(65535, 1.0f), 32767);
    expectDcOnly(fwd16u(0, 4.0f), -32768);
    // Saturation before the rounding, also for multipliers far out of range.
    expectDcOnly(fwd16u(2148, 1e30f), 32767);
    expectDcOnly(fwd16u(1948, 1e30f), -32768);
    expectDcOnly(fwd16u(2048 + 4096, 8.0f), 32767);  // 262144
    // An odd byte step.
    expectDcOnly(fwd16u(2148, 1.0f, 17), 800);
}

TEST(DctInverse, ZeroBlocks) {
    const Block16s zero{};
    expectFlat(invLS8u(zero, kUnitInv.data()), 128);
    expectFlat(inv16u(zero, 1.0f), 2048);
    Block16s out;
    out.fill(7);
    ASSERT_EQ(vqciDCTQuantInv8x8_JPEG_16s_C1(zero.data(), out.data(), kUnitInv.data()), vqcStatusOk);
    expectFlat(out, 0);
}

TEST(DctInverse, DcOnlyBlocks) {
    expectFlat(invLS8u(dcOnly(800), kUnitInv.data()), 228);
    expectFlat(invLS8u(dcOnly(-1024), kUnitInv.data()), 0);
    expectFlat(invLS8u(dcOnly(1016), kUnitInv.data()), 255);
    Block16s b = dcOnly(800);
    ASSERT_EQ(vqciDCTQuantInv8x8_JPEG_16s_C1I(b.data(), kUnitInv.data()), vqcStatusOk);
    expectFlat(b, 100);
    // DC 100 times divisor 8.
    const auto div8 = flatTable<Vqc16u>(8);
    expectFlat(invLS8u(dcOnly(100), div8.data()), 228);
}

TEST(DctInverse, ProductSaturatesThenColumnPassWraps) {
    // 200 * 255 saturates to 32767; the column pass gives 32767 * 8 = 262136,
    // whose low 16 bits are -8, and the row pass rounds -8 / 64 to 0. Without
    // the saturation the product would wrap to -14536 and give 231.
    const auto div255 = flatTable<Vqc16u>(255);
    expectFlat(invLS8u(dcOnly(200), div255.data()), 128);
    Block16s b = dcOnly(200);
    ASSERT_EQ(vqciDCTQuantInv8x8_JPEG_16s_C1I(b.data(), div255.data()), vqcStatusOk);
    expectFlat(b, 0);
}

TEST(DctInverse, DivisorsAreReadSigned) {
    // 65535 is -1: DC -800 becomes 800.
    const auto minusOne = flatTable<Vqc16u>(65535);
    expectFlat(invLS8u(dcOnly(-800), minusOne.data()), 228);
    Block16s b = dcOnly(-800), out;
    ASSERT_EQ(vqciDCTQuantInv8x8_JPEG_16s_C1(b.data(), out.data(), minusOne.data()), vqcStatusOk);
    expectFlat(out, 100);
}

TEST(DctInverse, OverlappingRowsAreWrittenInOrder) {
    // With a step of 1, row r covers bytes r to r + 7 and the later row wins.
    const auto bytes = randomBytes(128, 3);
    Block16s coef;
    for (int i = 0; i < 64; ++i) coef[i] = static_cast<Vqc16s>(static_cast<int8_t>(bytes[i]) * (i < 8 ? 4 : 1));
    const auto full = invLS8u(coef, kUnitInv.data());
    Guarded out(15);
    ASSERT_EQ(vqciDCTQuantInv8x8LS_JPEG_16s8u_C1R(coef.data(), out.data(), 1, kUnitInv.data()), vqcStatusOk);
    for (int j = 0; j < 15; ++j) {
        const int r = std::min(j, 7);
        EXPECT_EQ(out.data()[j], full[r * 8 + j - r]) << "byte " << j;
    }
    EXPECT_TRUE(out.guardsIntact());
}

TEST(DctInverse, FloatFormLimitsTo12Bits) {
    // DC alone comes out as DC * 0.125 in every sample: 23616 gives 2952
    // above 2048, that is 5000, limited to 4095; its negation gives 0.
    expectFlat(inv16u(dcOnly(23616), 1.0f), 4095);
    expectFlat(inv16u(dcOnly(-23616), 1.0f), 0);
    expectFlat(inv16u(dcOnly(800), 1e30f), 4095);
    expectFlat(inv16u(dcOnly(-800), 1e30f), 0);
    expectFlat(inv16u(dcOnly(800), 1.0f), 2148);
    expectFlat(inv16u(dcOnly(100), 8.0f), 2148);
    // Ties to even on the way out: 2048 + 2.5 and 2048 + 3.5.
    expectFlat(inv16u(dcOnly(20), 1.0f), 2050);
    expectFlat(inv16u(dcOnly(28), 1.0f), 2052);
    // An odd byte step writes rows 17 bytes apart and nothing in between.
    Guarded out(17 * 7 + 16);
    const auto unit = flatTable<Vqc32f>(1.0f);
    const Block16s dc = dcOnly(800);
    std::memset(out.data(), 0xEE, out.size());
    ASSERT_EQ(vqciDCTQuantInv8x8LS_JPEG_16s16u_C1R(dc.data(), reinterpret_cast<Vqc16u*>(out.data()), 17,
                                                    unit.data()),
              vqcStatusOk);
    for (int r = 0; r < 8; ++r) {
        for (int c = 0; c < 8; ++c) {
            Vqc16u v;
            std::memcpy(&v, out.data() + r * 17 + 2 * c, 2);
            ASSERT_EQ(v, 2148);
        }
        if (r < 7) {
            EXPECT_EQ(out.data()[r * 17 + 16], 0xEE);
        }
    }
    EXPECT_TRUE(out.guardsIntact());
}
