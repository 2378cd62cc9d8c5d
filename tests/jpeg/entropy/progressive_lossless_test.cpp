// Progressive run and correction-bit limits worked out by hand, the
// lossless predictors against their definitions, and row-coding round trips.
#include <gtest/gtest.h>
#include <vqcj.h>

#include <array>
#include <cstring>
#include <random>
#include <vector>

namespace {

// Every symbol coded: 255 codes of 8 bits and one of 9, symbol order, so
// symbol s < 255 has the code s.
struct Full {
    VqciEncodeHuffmanSpec enc;
    VqciDecodeHuffmanSpec dec;
    Full() {
        Vqc8u bits[16] = {0, 0, 0, 0, 0, 0, 0, 255, 1}, vals[256];
        for (int i = 0; i < 256; ++i) vals[i] = static_cast<Vqc8u>(i);
        vqciEncodeHuffmanSpecInit_JPEG_8u(bits, vals, &enc);
        vqciDecodeHuffmanSpecInit_JPEG_8u(bits, vals, &dec);
    }
};

}  // namespace

TEST(EntropyProgressive, EobRunAndCorrectionLimits) {
    Full t;
    std::vector<Vqc8u> out(4096);
    int32_t pos = 0;
    VqciEncodeHuffmanState es, gs;
    Vqc32s stats[257] = {};
    const Vqc16s zero[64] = {};
    // 32766 empty blocks wait; the 32767th writes 0xE0 and fourteen ones.
    vqciEncodeHuffmanStateInit_JPEG_8u(&es);
    vqciEncodeHuffmanStateInit_JPEG_8u(&gs);
    for (int b = 0; b < 32767; ++b) {
        ASSERT_EQ(pos, 0);
        ASSERT_EQ(vqciEncodeHuffman8x8_ACFirst_JPEG_16s1u_C1(zero, out.data(), 4096, &pos, 1, 63, 0, &t.enc, &es, 0), 0);
        ASSERT_EQ(vqciGetHuffmanStatistics8x8_ACFirst_JPEG_16s_C1(zero, stats, 1, 63, 0, &gs, 0), 0);
    }
    EXPECT_EQ(pos, 3);
    EXPECT_EQ(out[0], 0xE0);
    EXPECT_EQ(out[1], 0xFF);
    EXPECT_EQ(out[2], 0x00);  // stuffing after the 0xFF
    EXPECT_EQ(es.bitCount, 6);
    EXPECT_EQ(es.eobRun, 0);
    EXPECT_EQ(stats[0xE0], 1);
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
            EXPECT_EQ(pos, 0);
            EXPECT_EQ(es.correctionCount, 937);
            EXPECT_EQ(gs.correctionCount, 937);
            EXPECT_EQ(stats[0x30], 0);
            continue;
        }
        EXPECT_EQ(es.correctionCount, 0);
        EXPECT_EQ(stats[0x30], 1);
        // 8 + 3 + 938 bits: 0x30, then "111" and ones; every 0xFF stuffed.
        EXPECT_EQ(out[0], 0x30);
        EXPECT_EQ(pos, 1 + 2 * 117);
        EXPECT_EQ(es.bitCount, 5);
    }
}

TEST(EntropyProgressive, ChecksAndSingleBands) {
    Full t;
    Vqc8u out[64];
    int32_t pos = 0, marker = 0;
    VqciEncodeHuffmanState es;
    VqciDecodeHuffmanState ds;
    vqciEncodeHuffmanStateInit_JPEG_8u(&es);
    vqciDecodeHuffmanStateInit_JPEG_8u(&ds);
    Vqc16s blk[64] = {};
    // One range test with one status; Ss 0 is refused for AC; the table
    // comes before the flush.
    for (auto [ss, se, al] : {std::array{0, 5, 0}, {64, 64, 0}, {5, 4, 0}, {1, 64, 0}, {1, 5, -1}, {1, 5, 14}})
        EXPECT_EQ(vqciEncodeHuffman8x8_ACFirst_JPEG_16s1u_C1(blk, out, 64, &pos, ss, se, al, &t.enc, &es, 0),
                  vqcStatusBadArg);
    EXPECT_EQ(vqciEncodeHuffman8x8_ACFirst_JPEG_16s1u_C1(blk, out, 64, &pos, 1, 5, 0, nullptr, &es, 1),
              vqcStatusNullPtr);
    // Ss equal to Se codes one position: 12 at position 7 with Al 2 is 3,
    // symbol 0x02 and "11"; decoded back as 12 at that position.
    blk[10] = 12;  // zig-zag 7 is natural 10
    ASSERT_EQ(vqciEncodeHuffman8x8_ACFirst_JPEG_16s1u_C1(blk, out, 64, &pos, 7, 7, 2, &t.enc, &es, 0), 0);
    ASSERT_EQ(vqciEncodeHuffman8x8_ACFirst_JPEG_16s1u_C1(nullptr, out, 64, &pos, 0, 0, 0, &t.enc, &es, 1), 0);
    EXPECT_EQ(pos, 3);
    EXPECT_EQ(out[0], 0x02);
    EXPECT_EQ(out[1], 0xFF);  // "11" and the padding
    EXPECT_EQ(out[2], 0x00);
    Vqc16s back[64] = {};
    int32_t rpos = 0;
    ASSERT_EQ(vqciDecodeHuffman8x8_ACFirst_JPEG_1u16s_C1(out, pos, &rpos, back, &marker, 7, 7, 2, &t.dec, &ds), 0);
    EXPECT_EQ(std::memcmp(back, blk, sizeof blk), 0);
    // A refinement decoder leaves a coefficient whose p1 bit is set alone,
    // and with a run pending still reads a bit per non-zero coefficient.
    const Vqc8u ones[2] = {0xFF, 0x00};
    back[1] = 6, back[8] = -4;  // zig-zag 1 and 2
    vqciDecodeHuffmanStateInit_JPEG_8u(&ds);
    ds.eobRun = 1, rpos = 0;
    ASSERT_EQ(vqciDecodeHuffman8x8_ACRefine_JPEG_1u16s_C1(ones, 2, &rpos, back, &marker, 1, 2, 1, &t.dec, &ds), 0);
    EXPECT_EQ(back[1], 6);
    EXPECT_EQ(back[8], -6);
    EXPECT_EQ(ds.eobRun, 0);
    EXPECT_EQ(ds.bitCount, 6);
}

TEST(EntropyLossless, PredictorsByHand) {
    // P 2, Pt 1: term 1; P 16, Pt 0: 0x8000; Pt of P or more: 0.
    const Vqc16s s[3] = {5, 7, 4};
    Vqc16s d[3], r[3];
    ASSERT_EQ(vqciDiffPredFirstRow_JPEG_16s_C1(s, d, 3, 2, 1), 0);
    EXPECT_EQ(d[0], 4);
    EXPECT_EQ(d[1], 2);
    EXPECT_EQ(d[2], -3);
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
    EXPECT_EQ(d[0], static_cast<Vqc16s>(0x8000));
    EXPECT_EQ(d[1], 2);
    ASSERT_EQ(vqciReconstructPredRow_JPEG_16s_C1(d, prev, r, 2, 7), 0);
    EXPECT_EQ(std::memcmp(r, curA, 4), 0);
}

TEST(EntropyLossless, RoundTripsOfRowsAndRowCoding) {
    std::mt19937 rng(3);
    for (int width : {1, 2, 7, 64}) {
        for (int P = 2; P <= 16; ++P) {
            std::vector<Vqc16s> prev(width), cur(width), d(width), back(width), first(width);
            const uint32_t mask = P == 16 ? 0xFFFF : (1u << P) - 1;
            for (int x = 0; x < width; ++x) prev[x] = static_cast<Vqc16s>(rng() & mask);
            for (int x = 0; x < width; ++x) cur[x] = static_cast<Vqc16s>(rng() & mask);
            for (int Pt : {0, 1, P - 1, P + 3}) {
                ASSERT_EQ(vqciDiffPredFirstRow_JPEG_16s_C1(prev.data(), d.data(), width, P, Pt), 0);
                ASSERT_EQ(vqciReconstructPredFirstRow_JPEG_16s_C1(d.data(), first.data(), width, P, Pt), 0);
                ASSERT_EQ(first, prev);
            }
            for (int pred = 1; pred <= 7; ++pred) {
                ASSERT_EQ(vqciDiffPredRow_JPEG_16s_C1(cur.data(), prev.data(), d.data(), width, pred), 0);
                ASSERT_EQ(vqciReconstructPredRow_JPEG_16s_C1(d.data(), prev.data(), back.data(), width, pred), 0);
                ASSERT_EQ(back, cur) << "P " << P << " predictor " << pred << " width " << width;
            }
        }
    }
    // Row coding, 1 to 5 components (5 counts as 4, a null fifth row is fine),
    // with -32768 as category 16.
    Full t;
    for (int comps = 1; comps <= 5; ++comps) {
        const int n = comps < 4 ? comps : 4, cols = 37;
        std::vector<std::vector<Vqc16s>> rows(4, std::vector<Vqc16s>(cols)), back = rows;
        for (auto& row : rows)
            for (auto& v : row) v = static_cast<Vqc16s>(static_cast<int>(rng() % 65536) >> (rng() % 16));
        rows[0][3] = -32768, rows[n - 1][cols - 1] = -32768;
        const Vqc16s* src[4] = {rows[0].data(), rows[1].data(), rows[2].data(), rows[3].data()};
        Vqc16s* dst[4] = {back[0].data(), back[1].data(), back[2].data(), back[3].data()};
        if (comps < 4) src[3] = nullptr, dst[3] = nullptr;
        const VqciEncodeHuffmanSpec* et[4] = {&t.enc, &t.enc, &t.enc, &t.enc};
        const VqciDecodeHuffmanSpec* dt[4] = {&t.dec, &t.dec, &t.dec, &t.dec};
        std::vector<Vqc8u> seg(4096);
        VqciEncodeHuffmanState es;
        vqciEncodeHuffmanStateInit_JPEG_8u(&es);
        int32_t pos = 0;
        ASSERT_EQ(vqciEncodeHuffmanRow_JPEG_16s1u_P4C1(src, cols, comps, seg.data(), 4096, &pos, et, &es, 0), 0);
        ASSERT_EQ(vqciEncodeHuffmanRow_JPEG_16s1u_P4C1(nullptr, 0, 0, seg.data(), 4096, &pos, nullptr, &es, 1), 0);
        VqciDecodeHuffmanState ds;
        vqciDecodeHuffmanStateInit_JPEG_8u(&ds);
        int32_t rpos = 0, marker = 0;
        ASSERT_EQ(vqciDecodeHuffmanRow_JPEG_1u16s_C1P4(seg.data(), pos, &rpos, dst, cols, comps, &marker, dt, &ds), 0);
        for (int i = 0; i < n; ++i) EXPECT_EQ(back[i], rows[i]) << comps << " components, row " << i;
    }
    // Category 16 alone: the 8-bit code of symbol 16 and nothing else.
    const Vqc16s v = -32768, *one[4] = {&v};
    const VqciEncodeHuffmanSpec* et[4] = {&t.enc};
    Vqc8u seg[4];
    VqciEncodeHuffmanState es;
    vqciEncodeHuffmanStateInit_JPEG_8u(&es);
    int32_t pos = 0;
    ASSERT_EQ(vqciEncodeHuffmanRow_JPEG_16s1u_P4C1(one, 1, 1, seg, 4, &pos, et, &es, 0), 0);
    EXPECT_EQ(pos, 1);
    EXPECT_EQ(seg[0], 16);
    EXPECT_EQ(es.bitCount, 0);
}
