// Baseline Huffman tables and coders: hand-worked streams with the T.81
// example tables, the writer's and reader's boundary cases, round trips
// through all three coder pairs and argument-check orders. Truncated and
// corrupt streams are the fuzz targets' work (fuzz/fuzz_huff*.cpp).
#include <gtest/gtest.h>
#include <vqcj.h>

#include <cstring>
#include <random>
#include <vector>

#include "jpeg/entropy/huff.h"
#include "support/jpeg_tables.h"

namespace {

using vqcjtest::kAcBits;
using vqcjtest::kAcVals;
using vqcjtest::kDcBits;
using vqcjtest::kDcVals;

// Every symbol coded: 255 codes of 8 bits and one of 9, symbol order.
struct FullTable {
    Vqc8u bits[16] = {0, 0, 0, 0, 0, 0, 0, 255, 1};
    Vqc8u vals[256];
    FullTable() {
        for (int i = 0; i < 256; ++i) vals[i] = static_cast<Vqc8u>(i);
    }
};

struct Coders {
    VqciEncodeHuffmanSpec encDc, encAc;
    VqciDecodeHuffmanSpec decDc, decAc;
    Coders(const Vqc8u* db, const Vqc8u* dv, const Vqc8u* ab, const Vqc8u* av) {
        EXPECT_EQ(vqciEncodeHuffmanSpecInit_JPEG_8u(db, dv, &encDc), 0);
        EXPECT_EQ(vqciEncodeHuffmanSpecInit_JPEG_8u(ab, av, &encAc), 0);
        EXPECT_EQ(vqciDecodeHuffmanSpecInit_JPEG_8u(db, dv, &decDc), 0);
        EXPECT_EQ(vqciDecodeHuffmanSpecInit_JPEG_8u(ab, av, &decAc), 0);
    }
};

// One block through the stateful encoder and a flush.
std::vector<Vqc8u> encode(const Coders& c, const Vqc16s* blk, Vqc16s dc = 0, VqcStatus want = 0) {
    std::vector<Vqc8u> out(1200);
    VqciEncodeHuffmanState st;
    vqciEncodeHuffmanStateInit_JPEG_8u(&st);
    int32_t pos = 0;
    EXPECT_EQ(vqciEncodeHuffman8x8_JPEG_16s1u_C1(blk, out.data(), 1200, &pos, &dc, &c.encDc, &c.encAc, &st, 0), want);
    EXPECT_EQ(vqciEncodeHuffman8x8_JPEG_16s1u_C1(nullptr, out.data(), 1200, &pos, nullptr, nullptr, nullptr, &st, 1),
              0);
    out.resize(pos);
    return out;
}

}  // namespace

TEST(EntropyTables, CountLimitsAndEncoderDecoderAsymmetry) {
    VqciEncodeHuffmanSpec enc;
    VqciDecodeHuffmanSpec dec;
    FullTable full;
    EXPECT_EQ(vqciEncodeHuffmanSpecInit_JPEG_8u(full.bits, full.vals, &enc), 0);  // exactly 256 codes
    EXPECT_EQ(enc.codeWord[255], (9u << 16) | 0x1FE);
    full.bits[9] = 1;  // 257
    EXPECT_EQ(vqciEncodeHuffmanSpecInit_JPEG_8u(full.bits, full.vals, &enc), vqcStatusBadHuffmanTable);
    EXPECT_EQ(vqciDecodeHuffmanSpecInit_JPEG_8u(full.bits, full.vals, &dec), vqcStatusBadHuffmanTable);

    // Two 1-bit codes: the second is all ones. Refused for encoding only;
    // eight 8-bit codes behind them end exactly on the word after the
    // lookahead (accepted, it lands on minCode), a ninth goes past it.
    Vqc8u bits[16] = {2, 0, 0, 0, 0, 0, 0, 1}, vals[4] = {7, 9, 0x42, 0x43};
    EXPECT_EQ(vqciEncodeHuffmanSpecInit_JPEG_8u(bits, vals, &enc), vqcStatusBadHuffmanTable);
    EXPECT_EQ(vqciDecodeHuffmanSpecInit_JPEG_8u(bits, vals, &dec), 0);
    EXPECT_EQ(dec.fastLookup[0x7F], (1u << 16) | 7);
    EXPECT_EQ(dec.fastLookup[0x80], (1u << 16) | 9);
    EXPECT_EQ(dec.minCode[0], 0x42);
    EXPECT_EQ(dec.minCode[1], 8);
    EXPECT_EQ(dec.maxCode[2], 0xFFFF);
    EXPECT_EQ(dec.maxCode[17], 0xFFFF);
    bits[7] = 2;
    EXPECT_EQ(vqciDecodeHuffmanSpecInit_JPEG_8u(bits, vals, &dec), vqcStatusBadHuffmanTable);

    // Empty lists build empty tables; a repeated symbol keeps its last code.
    const Vqc8u none[16] = {}, dup[16] = {0, 3}, dupVals[3] = {5, 6, 5};
    EXPECT_EQ(vqciEncodeHuffmanSpecInit_JPEG_8u(none, vals, &enc), 0);
    EXPECT_EQ(vqciDecodeHuffmanSpecInit_JPEG_8u(none, vals, &dec), 0);
    EXPECT_EQ(dec.maxCode[1], 0xFFFF);
    EXPECT_EQ(vqciEncodeHuffmanSpecInit_JPEG_8u(dup, dupVals, &enc), 0);
    EXPECT_EQ(enc.codeWord[5], (2u << 16) | 2);

    // InitAlloc hands out the block even when the build fails.
    VqciEncodeHuffmanSpec* p = nullptr;
    EXPECT_EQ(vqciEncodeHuffmanSpecInitAlloc_JPEG_8u(full.bits, full.vals, &p), vqcStatusBadHuffmanTable);
    ASSERT_NE(p, nullptr);
    EXPECT_EQ(vqciEncodeHuffmanSpecFree_JPEG_8u(p), 0);
    EXPECT_EQ(vqciDecodeHuffmanSpecFree_JPEG_8u(nullptr), vqcStatusNullPtr);
}

TEST(EntropyTables, Optimiser) {
    Vqc32s stats[257] = {};
    Vqc8u bits[16], vals[256];
    stats[256] = 12345;  // the word behind the counts has no effect
    ASSERT_EQ(vqciEncodeHuffmanRawTableInit_JPEG_8u(stats, bits, vals), 0);
    for (int l = 0; l < 16; ++l) EXPECT_EQ(bits[l], 0);
    stats[77] = 5;  // one symbol: one 1-bit code
    ASSERT_EQ(vqciEncodeHuffmanRawTableInit_JPEG_8u(stats, bits, vals), 0);
    EXPECT_EQ(bits[0], 1);
    EXPECT_EQ(vals[0], 77);
    // Equal counts: the larger symbol merges first and gets the longer code.
    stats[77] = 0, stats[3] = stats[4] = stats[5] = 10;
    ASSERT_EQ(vqciEncodeHuffmanRawTableInit_JPEG_8u(stats, bits, vals), 0);
    EXPECT_EQ(bits[0], 0);
    EXPECT_EQ(bits[1], 3);
    EXPECT_EQ(vals[0], 3);
    EXPECT_EQ(vals[1], 4);
    EXPECT_EQ(vals[2], 5);
    // Counts above 10^9 never merge: an incomplete set of lengths, still Ok.
    stats[3] = 2000000000, stats[4] = 1500000000;
    ASSERT_EQ(vqciEncodeHuffmanRawTableInit_JPEG_8u(stats, bits, vals), 0);
    EXPECT_EQ(bits[0], 1);
    EXPECT_EQ(vals[0], 5);
    // Fibonacci counts make a chain deeper than 32 bits.
    std::memset(stats, 0, sizeof stats);
    for (int i = 0, a = 1, b = 2; i < 40; ++i, b += a, a = b - a) stats[i] = a;
    EXPECT_EQ(vqciEncodeHuffmanRawTableInit_JPEG_8u(stats, bits, vals), vqcStatusBadHuffmanTable);
    // 24 of them: lengths up to 23, limited to 16.
    for (int i = 24; i < 40; ++i) stats[i] = 0;
    ASSERT_EQ(vqciEncodeHuffmanRawTableInit_JPEG_8u(stats, bits, vals), 0);
    int n = 0, kraft = 0;
    for (int l = 0; l < 16; ++l) n += bits[l], kraft += bits[l] << (15 - l);
    EXPECT_EQ(n, 24);
    EXPECT_LT(kraft, 1 << 16);  // room left for the reserved all-ones code
    EXPECT_EQ(vqciEncodeHuffmanRawTableInit_JPEG_8u(stats, bits, nullptr), vqcStatusNullPtr);
    // Length histograms that no complete code has (an odd count at the
    // longest length, nothing shorter to split) stop instead of looping.
    uint8_t odd[33] = {}, bare[33] = {}, fine[33] = {};
    odd[1] = 1, odd[20] = 3;
    bare[17] = 2;
    fine[1] = 1, fine[2] = 1, fine[3] = 1, fine[17] = 2;
    EXPECT_EQ(vqcj::ownHuffLimitLengths(odd), vqcStatusBadHuffmanTable);
    EXPECT_EQ(vqcj::ownHuffLimitLengths(bare), vqcStatusBadHuffmanTable);
    ASSERT_EQ(vqcj::ownHuffLimitLengths(fine), 0);
    EXPECT_EQ(fine[16], 1);
    EXPECT_EQ(fine[3], 0);
    EXPECT_EQ(fine[4], 2);
}

TEST(EntropyEncoder, HandWorkedStreams) {
    Coders c(kDcBits, kDcVals, kAcBits, kAcVals);
    Vqc16s blk[64] = {};
    // DC symbol 0 "00", EOB "1010", two fill ones.
    EXPECT_EQ(encode(c, blk), (std::vector<Vqc8u>{0x2B}));
    // DC +5: "100" "101"; -1 at position 1: "00" "0"; EOB; fill "111".
    blk[0] = 5, blk[1] = -1;
    EXPECT_EQ(encode(c, blk), (std::vector<Vqc8u>{0x94, 0x57}));
    // Predictor equal to the DC: symbol 0; last coefficient set: three
    // 0xF0 runs, (14,1) and no EOB, so the decoder uses all 64 positions.
    std::memset(blk, 0, sizeof blk);
    blk[0] = 9, blk[63] = 1;
    const auto seg = encode(c, blk, 9);
    EXPECT_EQ(seg[0] >> 6, 0);
    VqciDecodeHuffmanState st;
    vqciDecodeHuffmanStateInit_JPEG_8u(&st);
    Vqc16s out[64], dc = 9;
    int32_t pos = 0, marker = 0;
    ASSERT_EQ(vqciDecodeHuffman8x8_JPEG_1u16s_C1(seg.data(), static_cast<int32_t>(seg.size()), &pos, out, &dc,
                                                 &marker, &c.decDc, &c.decAc, &st),
              0);
    EXPECT_EQ(st.coefCount, 64);
    EXPECT_EQ(std::memcmp(out, blk, sizeof blk), 0);
}

TEST(EntropyEncoder, WriterBoundaries) {
    VqciEncodeHuffmanState st;
    vqciEncodeHuffmanStateInit_JPEG_8u(&st);
    Vqc8u out[4] = {};
    int32_t pos = 0;
    // 0xFF as the last byte: stored, its 0x00 is not, the state stays.
    EXPECT_EQ(vqcj::ownHuffWriteBits(0xFF, 8, out, 1, &pos, &st), vqcStatusOutOfBuffer);
    EXPECT_EQ(out[0], 0xFF);
    EXPECT_EQ(pos, 1);
    EXPECT_EQ(st.bitCount, 0);
    EXPECT_EQ(vqcj::ownHuffWriteBits(5, 0, out, 4, &pos, &st), vqcStatusBadHuffmanTable);
    // Flush: nothing pending writes nothing; seven pending leave one byte;
    // no room still resets the state; no length is refused first.
    pos = 0;
    EXPECT_EQ(vqciEncodeHuffmanOne_JPEG_16s1u_C1(nullptr, out, 4, &pos, nullptr, &st, 1), 0);
    EXPECT_EQ(pos, 0);
    EXPECT_EQ(vqcj::ownHuffWriteBits(0x2A, 7, out, 4, &pos, &st), 0);
    EXPECT_EQ(st.bitBuffer, 0x2Au << 17);
    EXPECT_EQ(vqciEncodeHuffmanOne_JPEG_16s1u_C1(nullptr, out, 4, &pos, nullptr, &st, 1), 0);
    EXPECT_EQ(pos, 1);
    EXPECT_EQ(out[0], 0x55);
    EXPECT_EQ(vqcj::ownHuffWriteBits(1, 1, out, 4, &pos, &st), 0);
    EXPECT_EQ(vqciEncodeHuffmanOne_JPEG_16s1u_C1(nullptr, out, 1, &pos, nullptr, &st, 1), vqcStatusOutOfBuffer);
    EXPECT_EQ(st.bitCount, 0);
    EXPECT_EQ(vqciEncodeHuffman8x8_JPEG_16s1u_C1(nullptr, out, 0, &pos, nullptr, nullptr, nullptr, &st, 1),
              vqcStatusBadSize);
    EXPECT_EQ(vqciEncodeHuffman8x8_JPEG_16s1u_C1(nullptr, nullptr, 0, nullptr, nullptr, nullptr, nullptr, nullptr, 0),
              vqcStatusNullPtr);
    EXPECT_EQ(vqciEncodeHuffman8x8_JPEG_16s1u_C1(nullptr, out, 4, nullptr, nullptr, nullptr, nullptr, &st, 0),
              vqcStatusNullPtr);
}

TEST(EntropyEncoder, SymbolsWithoutCode) {
    FullTable full;
    Coders c(kDcBits, kDcVals, full.bits, full.vals);
    Vqc16s blk[64] = {};
    // Category 16 after a run of 15 would be symbol 256: no code.
    blk[vqcj::ownZigzag[16]] = -32768;
    encode(c, blk, 0, vqcStatusBadHuffmanTable);
    blk[vqcj::ownZigzag[16]] = -16384;  // symbol 0xFF has one
    encode(c, blk);
    // No 0xF0 code: refused by the stateful coder, dropped by Direct.
    Coders std(kDcBits, kDcVals, kAcBits, kAcVals);
    std.encAc.codeWord[0xF0] = 0;
    std::memset(blk, 0, sizeof blk);
    blk[63] = 1;
    encode(std, blk, 0, vqcStatusBadHuffmanTable);
    Vqc8u out[16];
    int32_t bitPos = 0;
    Vqc16s dc = 0;
    EXPECT_EQ(vqciEncodeHuffman8x8_Direct_JPEG_16s1u_C1(blk, out, &bitPos, &dc, &std.encDc, &std.encAc), 0);
    EXPECT_EQ(bitPos, 2 + 16 + 1);  // DC, (14,1), its value bit
}

TEST(EntropyDecoder, ReaderBoundaries) {
    Coders c(kDcBits, kDcVals, kAcBits, kAcVals);
    VqciDecodeHuffmanState st;
    Vqc16s v = 7, blk[64];
    int32_t pos = 0, marker = 0;
    auto one = [&](std::vector<Vqc8u> src) {
        return vqciDecodeHuffmanOne_JPEG_1u16s_C1(src.data(), static_cast<int32_t>(src.size()), &pos, &v, &marker,
                                                  &c.decDc, &st);
    };
    // A 0xFF ending the source fails even with the symbol's bits at hand.
    vqciDecodeHuffmanStateInit_JPEG_8u(&st);
    EXPECT_EQ(one({0x00, 0xFF}), vqcStatusOutOfBuffer);
    EXPECT_EQ(pos, 2);
    EXPECT_EQ(v, 7);
    // A fill byte before a marker; the bits before it still decode.
    vqciDecodeHuffmanStateInit_JPEG_8u(&st), pos = 0;
    EXPECT_EQ(one({0x00, 0xFF, 0xFF, 0xD0}), 0);
    EXPECT_EQ(marker, 0xD0);
    EXPECT_EQ(pos, 4);
    EXPECT_EQ(v, 0);
    EXPECT_EQ(st.bitCount, 6);
    st.bitCount = 0;  // marker pending and nothing buffered
    EXPECT_EQ(one({0x00}), vqcStatusBadHuffmanCode);
    marker = 0, pos = 0;
    // "111111110": category 11, then eleven zeros: -2047; 0x00 unstuffs.
    EXPECT_EQ(one({0xFF, 0x00, 0x00, 0x00}), 0);
    EXPECT_EQ(v, -2047);
    EXPECT_EQ(vqciDecodeHuffmanOne_JPEG_1u16s_C1(kDcBits, 0, &pos, &v, &marker, &c.decDc, &st), vqcStatusBadSize);
    v = 7;
    // The 8x8 form accepts an empty source and runs out.
    vqciDecodeHuffmanStateInit_JPEG_8u(&st), pos = 0;
    EXPECT_EQ(vqciDecodeHuffman8x8_JPEG_1u16s_C1(kDcBits, 0, &pos, blk, &v, &marker, &c.decDc, &c.decAc, &st),
              vqcStatusOutOfBuffer);
    EXPECT_EQ(vqciDecodeHuffman8x8_JPEG_1u16s_C1(kDcBits, -1, nullptr, blk, &v, &marker, &c.decDc, &c.decAc, &st),
              vqcStatusBadArg);
    // DC 0 then EOB first: one position used. A marker behind the data does
    // not end a block whose bits are already fetched.
    const Vqc8u src[] = {0x28, 0xFF, 0xD7};
    vqciDecodeHuffmanStateInit_JPEG_8u(&st), pos = 0;
    EXPECT_EQ(vqciDecodeHuffman8x8_JPEG_1u16s_C1(src, 3, &pos, blk, &v, &marker, &c.decDc, &c.decAc, &st), 0);
    EXPECT_EQ(st.coefCount, 1);
    EXPECT_EQ(marker, 0xD7);
    EXPECT_EQ(blk[0], 7);
    // DC symbol 0x10 reads no bits and adds nothing.
    const Vqc8u dcBits[16] = {1}, dcVals[1] = {0x10};
    VqciDecodeHuffmanSpec odd;
    vqciDecodeHuffmanSpecInit_JPEG_8u(dcBits, dcVals, &odd);
    const Vqc8u src2[] = {0x57};  // "0" then EOB "1010"
    vqciDecodeHuffmanStateInit_JPEG_8u(&st), pos = 0, marker = 0;
    EXPECT_EQ(vqciDecodeHuffman8x8_JPEG_1u16s_C1(src2, 1, &pos, blk, &v, &marker, &odd, &c.decAc, &st), 0);
    EXPECT_EQ(blk[0], 7);
    EXPECT_EQ(st.bitCount, 3);
}

TEST(EntropyCoders, RoundTripsOfRandomBlocks) {
    FullTable full;
    Coders c(full.bits, full.vals, full.bits, full.vals);
    std::mt19937 rng(5);
    std::vector<Vqc16s> blocks(64 * 400);
    for (size_t b = 0; b < blocks.size() / 64; ++b) {
        const int density = static_cast<int>(rng() % 64), mag = static_cast<int>(rng() % 15);
        for (int k = 0; k < 64; ++k)
            if (static_cast<int>(rng() % 64) < density)
                blocks[b * 64 + k] = static_cast<Vqc16s>(static_cast<int>(rng() % (2u << mag)) - (1 << mag));
        if (b % 7 == 0) blocks[b * 64 + 63] = -16384;
    }
    std::vector<Vqc8u> seg(blocks.size() * 8 + 16), direct(seg.size());
    VqciEncodeHuffmanState es;
    vqciEncodeHuffmanStateInit_JPEG_8u(&es);
    int32_t pos = 0, bitPos = 0;
    Vqc16s dc = 0, dcD = 0;
    const int32_t len = static_cast<int32_t>(seg.size());
    for (size_t b = 0; b < blocks.size() / 64; ++b) {
        // Shrink the room now and then so both writer paths take part.
        const int32_t room = b % 3 ? len : pos + 300;
        ASSERT_EQ(vqciEncodeHuffman8x8_JPEG_16s1u_C1(&blocks[b * 64], seg.data(), room, &pos, &dc, &c.encDc,
                                                     &c.encAc, &es, 0),
                  0);
        vqciEncodeHuffman8x8_Direct_JPEG_16s1u_C1(&blocks[b * 64], direct.data(), &bitPos, &dcD, &c.encDc, &c.encAc);
    }
    for (Vqc16s v : {0, 1, -1, 255, -256, 32767, -32768})
        ASSERT_EQ(vqciEncodeHuffmanOne_JPEG_16s1u_C1(&v, seg.data(), len, &pos, &c.encDc, &es, 0), 0);
    vqciEncodeHuffmanOne_JPEG_16s1u_C1(nullptr, seg.data(), len, &pos, nullptr, &es, 1);
    ASSERT_EQ(std::memcmp(seg.data(), direct.data(), static_cast<size_t>(bitPos) / 8), 0);
    seg.resize(pos);
    seg.insert(seg.end(), {0xFF, 0xD9});

    VqciDecodeHuffmanState ds;
    vqciDecodeHuffmanStateInit_JPEG_8u(&ds);
    int32_t rpos = 0, marker = 0, dbits = 0, count = 0, mD = 0;
    uint32_t pre = 0;
    dc = dcD = 0;
    Vqc16s out[64], outD[64];
    for (size_t b = 0; b < blocks.size() / 64; ++b) {
        ASSERT_EQ(vqciDecodeHuffman8x8_JPEG_1u16s_C1(seg.data(), pos, &rpos, out, &dc, &marker, &c.decDc, &c.decAc,
                                                     &ds),
                  0);
        ASSERT_EQ(vqciDecodeHuffman8x8_Direct_JPEG_1u16s_C1(seg.data(), &dbits, outD, &dcD, &mD, &pre, &count,
                                                            &c.decDc, &c.decAc),
                  0);
        ASSERT_EQ(std::memcmp(out, &blocks[b * 64], 128), 0) << b;
        ASSERT_EQ(std::memcmp(outD, &blocks[b * 64], 128), 0) << b;
    }
    for (Vqc16s v : {0, 1, -1, 255, -256, 32767, -32768}) {
        Vqc16s got;
        ASSERT_EQ(vqciDecodeHuffmanOne_JPEG_1u16s_C1(seg.data(), pos, &rpos, &got, &marker, &c.decDc, &ds), 0);
        EXPECT_EQ(got, v);
    }
}
