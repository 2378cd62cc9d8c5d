// Huffman tables and the block, value and row coders on streams worked out
// by hand with the T.81 example tables, or with a table that codes every
// symbol: table limits, the writer's and reader's boundaries, progressive
// run and correction-bit limits, failure statuses and check orders, and the
// lossless predictors. Truncated and corrupt streams are the fuzz targets'
// work (fuzz/fuzz_huff*.cpp); the fast paths have differential tests.
#include <gtest/gtest.h>
#include <vqcj.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <random>
#include <vector>

#include "jpeg/entropy/huff.h"
#include "support/jpeg_tables.h"

using namespace vqcjtest;

namespace {

// Both forms of the table of a BITS and HUFFVAL list.
struct Table {
    VqciEncodeHuffmanSpec enc;
    VqciDecodeHuffmanSpec dec;
    Table(const Vqc8u* bits, const Vqc8u* vals) {
        EXPECT_EQ(vqciEncodeHuffmanSpecInit_JPEG_8u(bits, vals, &enc), 0);
        EXPECT_EQ(vqciDecodeHuffmanSpecInit_JPEG_8u(bits, vals, &dec), 0);
    }
};

// Every symbol coded: 255 codes of 8 bits and one of 9, in symbol order,
// so that symbol s below 255 has the code s.
constexpr Vqc8u kFullBits[16] = {0, 0, 0, 0, 0, 0, 0, 255, 1};
constexpr auto kFullVals = [] {
    std::array<Vqc8u, 256> v{};
    for (int i = 0; i < 256; ++i) v[i] = static_cast<Vqc8u>(i);
    return v;
}();

// One block through the stateful encoder and a flush, with room for the
// fast path and through the exact writer (less room than a block may
// need); both give the same.
std::vector<Vqc8u> encode(const Table& dc, const Table& ac, const Vqc16s* blk, Vqc16s lastDC = 0,
                          VqcStatus want = 0) {
    std::vector<Vqc8u> out[2];
    for (int32_t len : {1200, 599}) {
        auto& o = out[len < 600];
        o.resize(len);
        VqciEncodeHuffmanState st{};
        int32_t pos = 0;
        Vqc16s pred = lastDC;
        EXPECT_EQ(vqciEncodeHuffman8x8_JPEG_16s1u_C1(blk, o.data(), len, &pos, &pred, &dc.enc, &ac.enc, &st, 0), want);
        EXPECT_EQ(vqciEncodeHuffman8x8_JPEG_16s1u_C1(nullptr, o.data(), len, &pos, nullptr, nullptr, nullptr, &st, 1),
                  0);
        o.resize(pos);
    }
    EXPECT_EQ(out[0], out[1]);
    return out[0];
}

}  // namespace

TEST(EntropyTables, CountLimitsAndEncoderDecoderAsymmetry) {
    VqciEncodeHuffmanSpec enc;
    VqciDecodeHuffmanSpec dec;
    const Table full(kFullBits, kFullVals.data());  // exactly 256 codes build, 257 do not
    EXPECT_EQ(full.enc.codeWord[255], (9u << 16) | 0x1FE);
    const Vqc8u* vals256 = kFullVals.data();
    const Vqc8u bits257[16] = {0, 0, 0, 0, 0, 0, 0, 255, 1, 1};
    EXPECT_EQ(vqciEncodeHuffmanSpecInit_JPEG_8u(bits257, vals256, &enc), vqcStatusBadHuffmanTable);
    EXPECT_EQ(vqciDecodeHuffmanSpecInit_JPEG_8u(bits257, vals256, &dec), vqcStatusBadHuffmanTable);

    // An all-ones code is refused for encoding only: four 2-bit codes; two
    // 1-bit codes, behind which eight 8-bit codes end exactly on the word
    // after the lookahead (accepted, it lands on minCode) and a ninth goes
    // past it.
    const Vqc8u four[16] = {0, 4};
    EXPECT_EQ(vqciEncodeHuffmanSpecInit_JPEG_8u(four, vals256, &enc), vqcStatusBadHuffmanTable);
    Vqc8u bits[16] = {2, 0, 0, 0, 0, 0, 0, 1}, vals[4] = {7, 9, 0x42, 0x43};
    EXPECT_EQ(vqciEncodeHuffmanSpecInit_JPEG_8u(bits, vals, &enc), vqcStatusBadHuffmanTable);
    EXPECT_EQ(vqciDecodeHuffmanSpecInit_JPEG_8u(bits, vals, &dec), 0);
    EXPECT_EQ(dec.fastLookup[0x7F], (1u << 16) | 7);
    EXPECT_EQ(dec.fastLookup[0x80], (1u << 16) | 9);
    EXPECT_EQ((std::array{dec.minCode[0], dec.minCode[1], dec.maxCode[2], dec.maxCode[17]}),
              (std::array<uint16_t, 4>{0x42, 8, 0xFFFF, 0xFFFF}));
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
    EXPECT_EQ(vqciEncodeHuffmanSpecInitAlloc_JPEG_8u(bits257, vals256, &p), vqcStatusBadHuffmanTable);
    ASSERT_NE(p, nullptr);
    EXPECT_EQ(vqciEncodeHuffmanSpecFree_JPEG_8u(p), 0);
    EXPECT_EQ(vqciDecodeHuffmanSpecFree_JPEG_8u(nullptr), vqcStatusNullPtr);
}

TEST(EntropyTables, Optimiser) {
    Vqc32s stats[257] = {};
    Vqc8u bits[16], vals[256];
    auto run = [&] { return vqciEncodeHuffmanRawTableInit_JPEG_8u(stats, bits, vals); };
    stats[256] = 12345;  // the word behind the counts has no effect
    ASSERT_EQ(run(), 0);
    EXPECT_EQ(std::count(bits, bits + 16, 0), 16);
    stats[77] = 5;  // one symbol: one 1-bit code
    ASSERT_EQ(run(), 0);
    EXPECT_TRUE(bits[0] == 1 && vals[0] == 77);
    // Equal counts: the larger symbol merges first and gets the longer code.
    stats[77] = 0, stats[3] = stats[4] = stats[5] = 10;
    ASSERT_EQ(run(), 0);
    EXPECT_TRUE(bits[0] == 0 && bits[1] == 3 && vals[0] == 3 && vals[1] == 4 && vals[2] == 5);
    // Counts above 10^9 never merge: an incomplete set of lengths, still Ok.
    stats[3] = 2000000000, stats[4] = 1500000000;
    ASSERT_EQ(run(), 0);
    EXPECT_TRUE(bits[0] == 1 && vals[0] == 5);
    // Fibonacci counts make a chain deeper than 32 bits; 24 of them lengths
    // up to 23, limited to 16 with room left for the reserved all-ones code.
    std::memset(stats, 0, sizeof stats);
    for (int i = 0, a = 1, b = 2; i < 40; ++i, b += a, a = b - a) stats[i] = a;
    EXPECT_EQ(run(), vqcStatusBadHuffmanTable);
    for (int i = 24; i < 40; ++i) stats[i] = 0;
    ASSERT_EQ(run(), 0);
    int n = 0, kraft = 0;
    for (int l = 0; l < 16; ++l) n += bits[l], kraft += bits[l] << (15 - l);
    EXPECT_EQ(n, 24);
    EXPECT_LT(kraft, 1 << 16);
    EXPECT_EQ(vqciEncodeHuffmanRawTableInit_JPEG_8u(stats, bits, nullptr), vqcStatusNullPtr);
    // Length histograms that no complete code has (an odd count at the
    // longest length, nothing shorter to split) stop instead of looping.
    uint8_t odd[33] = {}, bare[33] = {}, fine[33] = {};
    odd[1] = 1, odd[20] = 3;
    bare[17] = 2;
    fine[1] = fine[2] = fine[3] = 1, fine[17] = 2;
    EXPECT_EQ(vqcj::ownHuffLimitLengths(odd), vqcStatusBadHuffmanTable);
    EXPECT_EQ(vqcj::ownHuffLimitLengths(bare), vqcStatusBadHuffmanTable);
    ASSERT_EQ(vqcj::ownHuffLimitLengths(fine), 0);
    EXPECT_TRUE(fine[16] == 1 && fine[3] == 0 && fine[4] == 2);
}

TEST(EntropyEncoder, HandWorkedStreams) {
    const Table dc(kDcBits, kDcVals), ac(kAcBits, kAcVals);
    Vqc16s blk[64] = {};
    // DC symbol 0 "00", EOB "1010", two fill ones.
    EXPECT_EQ(encode(dc, ac, blk), (std::vector<Vqc8u>{0x2B}));
    // DC +5: "100" "101"; -1 at position 1: "00" "0"; EOB; fill "111".
    blk[0] = 5, blk[1] = -1;
    EXPECT_EQ(encode(dc, ac, blk), (std::vector<Vqc8u>{0x94, 0x57}));
    // Predictor equal to the DC: symbol 0; last coefficient set: three
    // 0xF0 runs, (14,1) and no EOB, so the decoder uses all 64 positions.
    std::memset(blk, 0, sizeof blk);
    blk[0] = 9, blk[63] = 1;
    const auto seg = encode(dc, ac, blk, 9);
    EXPECT_EQ(seg[0] >> 6, 0);
    VqciDecodeHuffmanState st{};
    Vqc16s out[64], pred = 9;
    int32_t pos = 0, marker = 0;
    ASSERT_EQ(vqciDecodeHuffman8x8_JPEG_1u16s_C1(seg.data(), static_cast<int32_t>(seg.size()), &pos, out, &pred,
                                                 &marker, &dc.dec, &ac.dec, &st),
              0);
    EXPECT_EQ(st.coefCount, 64);
    EXPECT_EQ(std::memcmp(out, blk, sizeof blk), 0);
}

TEST(EntropyEncoder, WriterBoundaries) {
    VqciEncodeHuffmanState st;
    vqciEncodeHuffmanStateInit_JPEG_8u(&st);
    Vqc8u out[4] = {};
    int32_t pos = 0;
    // 0xFF as the last byte: stored, its 0x00 is not; no room for a byte
    // at all. Either way the state stays.
    EXPECT_EQ(vqcj::ownHuffWriteBits(0xFF, 8, out, 1, &pos, &st), vqcStatusOutOfBuffer);
    EXPECT_TRUE(out[0] == 0xFF && pos == 1);
    EXPECT_EQ(vqcj::ownHuffWriteBits(0x1AB, 9, out, 1, &pos, &st), vqcStatusOutOfBuffer);
    EXPECT_TRUE(pos == 1 && st.bitCount == 0 && st.bitBuffer == 0);
    EXPECT_EQ(vqcj::ownHuffWriteBits(5, 0, out, 4, &pos, &st), vqcStatusBadHuffmanTable);
    // Flush: nothing pending writes nothing; seven pending leave one byte;
    // no room still resets the state; no length is refused first.
    pos = 0;
    EXPECT_EQ(vqciEncodeHuffmanOne_JPEG_16s1u_C1(nullptr, out, 4, &pos, nullptr, &st, 1), 0);
    EXPECT_EQ(pos, 0);
    EXPECT_EQ(vqcj::ownHuffWriteBits(0x2A, 7, out, 4, &pos, &st), 0);
    EXPECT_EQ(st.bitBuffer, 0x2Au << 17);
    EXPECT_EQ(vqciEncodeHuffmanOne_JPEG_16s1u_C1(nullptr, out, 4, &pos, nullptr, &st, 1), 0);
    EXPECT_TRUE(pos == 1 && out[0] == 0x55);
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

TEST(EntropyEncoder, SymbolsWithoutCodeAndStatisticsLimits) {
    const Table full(kFullBits, kFullVals.data());
    Table dc(kDcBits, kDcVals), ac(kAcBits, kAcVals);
    Vqc16s blk[64] = {}, pred = 0;
    Vqc32s dcStats[257] = {}, acStats[257] = {};
    // Category 16 after a run of 15 would be symbol 256: no code. Category
    // 15 has one, but the statistics stop above 14.
    blk[vqcj::ownZigzag[16]] = -32768;
    encode(dc, full, blk, 0, vqcStatusBadHuffmanTable);
    blk[vqcj::ownZigzag[16]] = -16384;
    encode(dc, full, blk);
    EXPECT_EQ(vqciGetHuffmanStatistics8x8_JPEG_16s_C1(blk, dcStats, acStats, &pred), vqcStatusBadHuffmanCode);
    // The single-value statistics count category 16 (lossless JPEG's -32768).
    const Vqc16s lowest = -32768;
    EXPECT_EQ(vqciGetHuffmanStatisticsOne_JPEG_16s_C1(&lowest, dcStats), 0);
    EXPECT_EQ(dcStats[16], 1);
    // No 0xF0 code: refused by the stateful coder, dropped by Direct.
    ac.enc.codeWord[0xF0] = 0;
    std::memset(blk, 0, sizeof blk);
    blk[63] = 1;
    encode(dc, ac, blk, 0, vqcStatusBadHuffmanTable);
    Vqc8u out[16];
    int32_t bitPos = 0;
    EXPECT_EQ(vqciEncodeHuffman8x8_Direct_JPEG_16s1u_C1(blk, out, &bitPos, &pred, &dc.enc, &ac.enc), 0);
    EXPECT_EQ(bitPos, 2 + 16 + 1);  // DC, (14,1), its value bit
}

TEST(EntropyDecoder, ReaderBoundaries) {
    const Table dc(kDcBits, kDcVals), ac(kAcBits, kAcVals);
    VqciDecodeHuffmanState st;
    Vqc16s v = 7, blk[64];
    int32_t pos = 0, marker = 0;
    auto one = [&](std::vector<Vqc8u> src) {
        return vqciDecodeHuffmanOne_JPEG_1u16s_C1(src.data(), static_cast<int32_t>(src.size()), &pos, &v, &marker,
                                                  &dc.dec, &st);
    };
    // A 0xFF ending the source fails even with the symbol's bits at hand.
    vqciDecodeHuffmanStateInit_JPEG_8u(&st);
    EXPECT_EQ(one({0x00, 0xFF}), vqcStatusOutOfBuffer);
    EXPECT_TRUE(pos == 2 && v == 7);
    // A fill byte before a marker; the bits before it still decode.
    vqciDecodeHuffmanStateInit_JPEG_8u(&st), pos = 0;
    EXPECT_EQ(one({0x00, 0xFF, 0xFF, 0xD0}), 0);
    EXPECT_TRUE(marker == 0xD0 && pos == 4 && v == 0 && st.bitCount == 6);
    st.bitCount = 0;  // marker pending and nothing buffered
    EXPECT_EQ(one({0x00}), vqcStatusBadHuffmanCode);
    marker = 0, pos = 0;
    // "111111110": category 11, then eleven zeros: -2047; 0x00 unstuffs.
    EXPECT_EQ(one({0xFF, 0x00, 0x00, 0x00}), 0);
    EXPECT_EQ(v, -2047);
    EXPECT_EQ(vqciDecodeHuffmanOne_JPEG_1u16s_C1(kDcBits, 0, &pos, &v, &marker, &dc.dec, &st), vqcStatusBadSize);
    v = 7;
    // The 8x8 form accepts an empty source and runs out.
    vqciDecodeHuffmanStateInit_JPEG_8u(&st), pos = 0;
    EXPECT_EQ(vqciDecodeHuffman8x8_JPEG_1u16s_C1(kDcBits, 0, &pos, blk, &v, &marker, &dc.dec, &ac.dec, &st),
              vqcStatusOutOfBuffer);
    EXPECT_EQ(vqciDecodeHuffman8x8_JPEG_1u16s_C1(kDcBits, -1, nullptr, blk, &v, &marker, &dc.dec, &ac.dec, &st),
              vqcStatusBadArg);
    // DC 0 then EOB first: one position used. A marker behind the data does
    // not end a block whose bits are already fetched.
    const Vqc8u src[] = {0x28, 0xFF, 0xD7};
    vqciDecodeHuffmanStateInit_JPEG_8u(&st), pos = 0;
    EXPECT_EQ(vqciDecodeHuffman8x8_JPEG_1u16s_C1(src, 3, &pos, blk, &v, &marker, &dc.dec, &ac.dec, &st), 0);
    EXPECT_TRUE(st.coefCount == 1 && marker == 0xD7 && blk[0] == 7);
    // DC symbol 0x10 reads no bits and adds nothing.
    const Vqc8u dcBits[16] = {1}, dcVals[1] = {0x10};
    VqciDecodeHuffmanSpec odd;
    vqciDecodeHuffmanSpecInit_JPEG_8u(dcBits, dcVals, &odd);
    const Vqc8u src2[] = {0x57};  // "0" then EOB "1010"
    vqciDecodeHuffmanStateInit_JPEG_8u(&st), pos = 0, marker = 0;
    EXPECT_EQ(vqciDecodeHuffman8x8_JPEG_1u16s_C1(src2, 1, &pos, blk, &v, &marker, &odd, &ac.dec, &st), 0);
    EXPECT_TRUE(blk[0] == 7 && st.bitCount == 3);
    // Direct: a marker cuts the eleven bits of DC category 11 after eight;
    // they are padded with zeros (0xB3 << 3) and the block ends silently
    // with the position behind the marker.
    const Table full(kFullBits, kFullVals.data());
    const Vqc8u cut[] = {0x0B, 0xB3, 0xFF, 0xD9};
    uint32_t bits = 0;
    int32_t bitPos = 0, count = 0;
    marker = 0, v = 0;
    EXPECT_EQ(vqciDecodeHuffman8x8_Direct_JPEG_1u16s_C1(cut, &bitPos, blk, &v, &marker, &bits, &count, &full.dec,
                                                        &full.dec),
              0);
    EXPECT_TRUE(blk[0] == 0x598 && v == 0x598 && bitPos == 32 && marker == 0xD9 && count == 0);
}

TEST(EntropyProgressive, EobRunAndCorrectionLimits) {
    const Table t(kFullBits, kFullVals.data());
    std::vector<Vqc8u> out(4096), ref(4096);
    int32_t pos = 0, rpos = 0;
    VqciEncodeHuffmanState es{}, gs{}, rs{};
    Vqc32s stats[257] = {};
    const Vqc16s zero[64] = {};
    // 32766 empty blocks wait; the 32767th writes 0xE0 and fourteen ones,
    // in the first and in the refinement pass.
    for (int b = 0; b < 32767; ++b) {
        ASSERT_EQ(pos, 0);
        ASSERT_EQ(vqciEncodeHuffman8x8_ACFirst_JPEG_16s1u_C1(zero, out.data(), 4096, &pos, 1, 63, 0, &t.enc, &es, 0), 0);
        ASSERT_EQ(vqciGetHuffmanStatistics8x8_ACFirst_JPEG_16s_C1(zero, stats, 1, 63, 0, &gs, 0), 0);
        ASSERT_EQ(vqciEncodeHuffman8x8_ACRefine_JPEG_16s1u_C1(zero, ref.data(), 4096, &rpos, 1, 63, 0, &t.enc, &rs, 0),
                  0);
    }
    EXPECT_EQ(pos, 3);
    EXPECT_EQ(std::vector<Vqc8u>(out.begin(), out.begin() + 3), (std::vector<Vqc8u>{0xE0, 0xFF, 0x00}));
    EXPECT_TRUE(es.bitCount == 6 && es.eobRun == 0 && stats[0xE0] == 1);
    EXPECT_TRUE(rpos == 3 && out == ref && rs.bitCount == 6 && rs.eobRun == 0);
    // Runs of 1, 2 and 3: symbol 0; 0x10 and the bit below the top one.
    for (int run = 1; run <= 3; ++run) {
        vqciEncodeHuffmanStateInit_JPEG_8u(&es), pos = 0;
        for (int b = 0; b < run; ++b)
            vqciEncodeHuffman8x8_ACFirst_JPEG_16s1u_C1(zero, out.data(), 4096, &pos, 5, 5, 0, &t.enc, &es, 0);
        ASSERT_EQ(vqciEncodeHuffman8x8_ACFirst_JPEG_16s1u_C1(nullptr, out.data(), 4096, &pos, 0, 0, 0, &t.enc, &es, 1),
                  0);
        EXPECT_EQ(out[0], run == 1 ? 0x00 : 0x10);
        EXPECT_EQ(out[1], run == 1 ? 0xFF : run == 2 ? 0x7F : 0xFF);
    }

    // Refinement: every coefficient 3 gives 63 correction bits a block and
    // no new coefficient. 14 blocks and 55 more bits wait (937); 56 force
    // the run (15 blocks: 0x30 and "111") and the 938 bits out.
    for (int extra : {55, 56}) {
        vqciEncodeHuffmanStateInit_JPEG_8u(&es), vqciEncodeHuffmanStateInit_JPEG_8u(&gs), pos = 0;
        std::memset(stats, 0, sizeof stats);
        Vqc16s blk[64];
        for (int b = 0; b < 15; ++b) {
            for (int k = 0; k < 64; ++k) blk[k] = static_cast<Vqc16s>(b < 14 || k <= extra ? -3 : 0);
            ASSERT_EQ(vqciEncodeHuffman8x8_ACRefine_JPEG_16s1u_C1(blk, out.data(), 4096, &pos, 1, 63, 0, &t.enc, &es, 0),
                      0);
            ASSERT_EQ(vqciGetHuffmanStatistics8x8_ACRefine_JPEG_16s_C1(blk, stats, 1, 63, 0, &gs, 0), 0);
        }
        if (extra == 55) {
            EXPECT_TRUE(pos == 0 && es.correctionCount == 937 && gs.correctionCount == 937 && stats[0x30] == 0);
            continue;
        }
        EXPECT_TRUE(es.correctionCount == 0 && stats[0x30] == 1);
        // 8 + 3 + 938 bits: 0x30, then "111" and ones; every 0xFF stuffed.
        EXPECT_TRUE(out[0] == 0x30 && pos == 1 + 2 * 117 && es.bitCount == 5);
    }
}

TEST(EntropyProgressive, ChecksFlushesAndSingleBands) {
    const Table t(kFullBits, kFullVals.data());
    Vqc8u out[64];
    int32_t pos = 0, marker = 0;
    VqciEncodeHuffmanState es{}, gs{};
    VqciDecodeHuffmanState ds{};
    Vqc16s blk[64] = {};
    // One range test with one status; Ss 0 is refused for AC; the table
    // comes before the flush.
    for (auto [ss, se, al] : {std::array{0, 5, 0}, {64, 64, 0}, {5, 4, 0}, {1, 64, 0}, {1, 5, -1}, {1, 5, 14}})
        EXPECT_EQ(vqciEncodeHuffman8x8_ACFirst_JPEG_16s1u_C1(blk, out, 64, &pos, ss, se, al, &t.enc, &es, 0),
                  vqcStatusBadArg);
    EXPECT_EQ(vqciEncodeHuffman8x8_ACFirst_JPEG_16s1u_C1(blk, out, 64, &pos, 1, 5, 0, nullptr, &es, 1),
              vqcStatusNullPtr);
    // Flushes with a run of 1 pending and the destination full. Symbol 0
    // without a code fails the run; one pending bit fails the padding too.
    // ACFirst reports only the padding, ACRefine the padding or else the run.
    VqciEncodeHuffmanSpec noEob = t.enc;
    noEob.codeWord[0] = 0;
    for (int pending : {0, 1})
        for (auto pass : {vqciEncodeHuffman8x8_ACFirst_JPEG_16s1u_C1, vqciEncodeHuffman8x8_ACRefine_JPEG_16s1u_C1}) {
            vqciEncodeHuffmanStateInit_JPEG_8u(&es);
            es.eobRun = 1, es.bitCount = pending, es.bitBuffer = pending << 23, pos = 1;
            const bool first = pass == vqciEncodeHuffman8x8_ACFirst_JPEG_16s1u_C1;
            EXPECT_EQ(pass(nullptr, out, 1, &pos, 0, 0, 0, &noEob, &es, 1),
                      pending ? vqcStatusOutOfBuffer : first ? 0 : vqcStatusBadHuffmanTable);
            EXPECT_EQ(es.eobRun, 0);
        }
    // A new coefficient whose pending run finds the destination full: the
    // run and its three correction bits stay waiting, and the flush writes
    // them (0x00, "010", padding).
    vqciEncodeHuffmanStateInit_JPEG_8u(&es);
    es.eobRun = 1, es.correctionCount = 3, pos = 1;
    es.correctionBits[0] = 0, es.correctionBits[1] = 1, es.correctionBits[2] = 0;
    blk[1] = 1;
    EXPECT_EQ(vqciEncodeHuffman8x8_ACRefine_JPEG_16s1u_C1(blk, out, 1, &pos, 1, 1, 0, &t.enc, &es, 0),
              vqcStatusOutOfBuffer);
    EXPECT_TRUE(es.eobRun == 1 && es.correctionCount == 3);
    pos = 0;
    ASSERT_EQ(vqciEncodeHuffman8x8_ACRefine_JPEG_16s1u_C1(nullptr, out, 64, &pos, 0, 0, 0, &t.enc, &es, 1), 0);
    EXPECT_EQ(std::vector<Vqc8u>(out, out + pos), (std::vector<Vqc8u>{0x00, 0x5F}));
    blk[1] = 0;
    // Ss equal to Se codes one position: 12 at position 7 with Al 2 is 3,
    // symbol 0x02 and "11"; decoded back as 12 at that position. Category
    // 11 codes, but the statistics stop above 10.
    vqciEncodeHuffmanStateInit_JPEG_8u(&es), pos = 0;
    blk[10] = 12;  // zig-zag 7 is natural 10
    ASSERT_EQ(vqciEncodeHuffman8x8_ACFirst_JPEG_16s1u_C1(blk, out, 64, &pos, 7, 7, 2, &t.enc, &es, 0), 0);
    ASSERT_EQ(vqciEncodeHuffman8x8_ACFirst_JPEG_16s1u_C1(nullptr, out, 64, &pos, 0, 0, 0, &t.enc, &es, 1), 0);
    EXPECT_EQ(std::vector<Vqc8u>(out, out + pos), (std::vector<Vqc8u>{0x02, 0xFF, 0x00}));  // "11", padding
    Vqc16s back[64] = {};
    int32_t rpos = 0;
    ASSERT_EQ(vqciDecodeHuffman8x8_ACFirst_JPEG_1u16s_C1(out, pos, &rpos, back, &marker, 7, 7, 2, &t.dec, &ds), 0);
    EXPECT_EQ(std::memcmp(back, blk, sizeof blk), 0);
    Vqc32s stats[257] = {};
    blk[10] = 2047 << 2;
    EXPECT_EQ(vqciEncodeHuffman8x8_ACFirst_JPEG_16s1u_C1(blk, out, 64, &pos, 7, 7, 2, &t.enc, &es, 0), 0);
    EXPECT_EQ(vqciGetHuffmanStatistics8x8_ACFirst_JPEG_16s_C1(blk, stats, 7, 7, 2, &gs, 0), vqcStatusBadHuffmanCode);
    // A refinement decoder leaves a coefficient whose p1 bit is set alone,
    // and with a run pending still reads a bit per non-zero coefficient.
    const Vqc8u ones[2] = {0xFF, 0x00};
    back[1] = 6, back[8] = -4;  // zig-zag 1 and 2
    vqciDecodeHuffmanStateInit_JPEG_8u(&ds);
    ds.eobRun = 1, rpos = 0;
    ASSERT_EQ(vqciDecodeHuffman8x8_ACRefine_JPEG_1u16s_C1(ones, 2, &rpos, back, &marker, 1, 2, 1, &t.dec, &ds), 0);
    EXPECT_TRUE(back[1] == 6 && back[8] == -6 && ds.eobRun == 0 && ds.bitCount == 6);
}

TEST(EntropyLossless, PredictorsByHand) {
    // P 2, Pt 1: term 1; P 16, Pt 0: 0x8000; Pt of P or more: 0.
    const Vqc16s s[3] = {5, 7, 4};
    Vqc16s d[3], r[3];
    ASSERT_EQ(vqciDiffPredFirstRow_JPEG_16s_C1(s, d, 3, 2, 1), 0);
    EXPECT_TRUE(d[0] == 4 && d[1] == 2 && d[2] == -3);
    ASSERT_EQ(vqciDiffPredFirstRow_JPEG_16s_C1(s, d, 1, 16, 0), 0);
    EXPECT_EQ(d[0], static_cast<Vqc16s>(5 - 0x8000));
    EXPECT_EQ(d[1], 2);  // width 1 writes sample 0 only
    ASSERT_EQ(vqciDiffPredFirstRow_JPEG_16s_C1(s, d, 1, 8, 8), 0);
    EXPECT_EQ(d[0], 5);
    EXPECT_EQ(vqciDiffPredFirstRow_JPEG_16s_C1(s, d, 1, 17, 0), vqcStatusBadArg);
    EXPECT_EQ(vqciDiffPredFirstRow_JPEG_16s_C1(s, d, 0, 1, 0), vqcStatusBadSize);
    EXPECT_EQ(vqciDiffPredRow_JPEG_16s_C1(s, s, d, 3, 0), vqcStatusBadArg);
    EXPECT_EQ(vqciReconstructPredRow_JPEG_16s_C1(s, s, d, 3, 8), vqcStatusBadArg);
    // Predictor 7 halves sign-extended samples: 0x8000 and 0x7FFF give
    // 0xFFFF, so a sample 0x0001 leaves the difference 2.
    const Vqc16s prev[2] = {0, 0x7FFF};
    const Vqc16s curA[2] = {static_cast<Vqc16s>(0x8000), 1};
    ASSERT_EQ(vqciDiffPredRow_JPEG_16s_C1(curA, prev, d, 2, 7), 0);
    EXPECT_TRUE(d[0] == static_cast<Vqc16s>(0x8000) && d[1] == 2);
    ASSERT_EQ(vqciReconstructPredRow_JPEG_16s_C1(d, prev, r, 2, 7), 0);
    EXPECT_EQ(std::memcmp(r, curA, 4), 0);
}

TEST(EntropyLossless, RoundTripsOfRowsAndRowCoding) {
    std::mt19937 rng(3);
    for (int width : {1, 2, 7, 64}) {
        for (int P = 2; P <= 16; ++P) {
            std::vector<Vqc16s> prev(width), cur(width), d(width), back(width);
            const uint32_t mask = P == 16 ? 0xFFFF : (1u << P) - 1;
            for (int x = 0; x < width; ++x) prev[x] = static_cast<Vqc16s>(rng() & mask);
            for (int x = 0; x < width; ++x) cur[x] = static_cast<Vqc16s>(rng() & mask);
            for (int Pt : {0, 1, P - 1, P + 3}) {
                ASSERT_EQ(vqciDiffPredFirstRow_JPEG_16s_C1(prev.data(), d.data(), width, P, Pt), 0);
                ASSERT_EQ(vqciReconstructPredFirstRow_JPEG_16s_C1(d.data(), back.data(), width, P, Pt), 0);
                ASSERT_EQ(back, prev);
            }
            for (int pred = 1; pred <= 7; ++pred) {
                ASSERT_EQ(vqciDiffPredRow_JPEG_16s_C1(cur.data(), prev.data(), d.data(), width, pred), 0);
                ASSERT_EQ(vqciReconstructPredRow_JPEG_16s_C1(d.data(), prev.data(), back.data(), width, pred), 0);
                ASSERT_EQ(back, cur) << "P " << P << " predictor " << pred << " width " << width;
            }
        }
    }
    // Row coding, 1 to 5 components (5 counts as 4, its null fifth row is
    // not looked at), with -32768 as category 16. One component also through the
    // single-value coders, which must give the same stream.
    const Table t(kFullBits, kFullVals.data());
    for (int comps = 1; comps <= 5; ++comps) {
        const int n = comps < 4 ? comps : 4, cols = 37;
        std::vector<std::vector<Vqc16s>> rows(4, std::vector<Vqc16s>(cols)), back = rows;
        for (auto& row : rows)
            for (auto& v : row) v = static_cast<Vqc16s>(static_cast<int>(rng() % 65536) >> (rng() % 16));
        rows[0][3] = -32768, rows[n - 1][cols - 1] = -32768;
        const Vqc16s* src[5] = {};  // null beyond the components coded
        Vqc16s* dst[5] = {};
        for (int i = 0; i < n; ++i) src[i] = rows[i].data(), dst[i] = back[i].data();
        const VqciEncodeHuffmanSpec* et[4] = {&t.enc, &t.enc, &t.enc, &t.enc};
        const VqciDecodeHuffmanSpec* dt[4] = {&t.dec, &t.dec, &t.dec, &t.dec};
        std::vector<Vqc8u> seg(4096), one(4096);
        VqciEncodeHuffmanState es{};
        int32_t pos = 0, rpos = 0, marker = 0;
        ASSERT_EQ(vqciEncodeHuffmanRow_JPEG_16s1u_P4C1(src, cols, comps, seg.data(), 4096, &pos, et, &es, 0), 0);
        ASSERT_EQ(vqciEncodeHuffmanRow_JPEG_16s1u_P4C1(nullptr, 0, 0, seg.data(), 4096, &pos, nullptr, &es, 1), 0);
        VqciDecodeHuffmanState ds{};
        ASSERT_EQ(vqciDecodeHuffmanRow_JPEG_1u16s_C1P4(seg.data(), pos, &rpos, dst, cols, comps, &marker, dt, &ds), 0);
        for (int i = 0; i < n; ++i) EXPECT_EQ(back[i], rows[i]) << comps << " components, row " << i;
        if (comps > 1) continue;
        int32_t opos = 0;
        for (Vqc16s v : rows[0])
            ASSERT_EQ(vqciEncodeHuffmanOne_JPEG_16s1u_C1(&v, one.data(), 4096, &opos, &t.enc, &es, 0), 0);
        ASSERT_EQ(vqciEncodeHuffmanOne_JPEG_16s1u_C1(nullptr, one.data(), 4096, &opos, nullptr, &es, 1), 0);
        EXPECT_TRUE(opos == pos && seg == one);
    }
}
