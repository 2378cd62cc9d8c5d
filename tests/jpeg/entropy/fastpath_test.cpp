// The block encoders' fast paths against the write-at-a-time paths they
// stand in for: random tables (malformed words included), blocks, states,
// bit positions and room, compared in every byte of the destination and
// in position, state, predictor and status.
#include <gtest/gtest.h>
#include <vqcj.h>

#include <cstring>
#include <random>
#include <vector>

#include "jpeg/entropy/huff.h"

namespace {

// Mostly well-formed words, some without a code, some with stray bits
// above the code, some all ones (runs of 0xFF in the output).
void randomTable(std::mt19937& rng, VqciEncodeHuffmanSpec* t, int flavour) {
    for (uint32_t& w : t->codeWord) {
        const uint32_t len = 1 + rng() % 16, pick = rng() % 32;
        w = len << 16 | (rng() & ((1u << len) - 1));
        if (flavour == 1) w = len << 16 | ((1u << len) - 1);
        if (pick == 0) w = 0;
        if (pick == 1) w = (17 + rng() % 70000) << 16 | (rng() & 0xFFFF);
        if (pick == 2) w |= rng() & 0xFFFF;
    }
}

void randomBlock(std::mt19937& rng, Vqc16s* blk) {
    const uint32_t density = rng() % 65, top = rng() % 17;
    for (int i = 0; i < 64; ++i) {
        const uint32_t r = rng();
        blk[i] = static_cast<Vqc16s>(rng() % 64 < density ? static_cast<int32_t>(r % (2u << top)) - (1 << top) : 0);
        if (r % 97 == 0) blk[i] = static_cast<Vqc16s>(r % 2 ? -32768 : 32767);
    }
}

TEST(EntropyEncoderFastPath, MatchesTheExactWriter) {
    std::mt19937 rng(11);
    VqciEncodeHuffmanSpec dc, ac;
    Vqc16s blk[64];
    for (int seq = 0; seq < 300; ++seq) {
        randomTable(rng, &dc, seq % 5 == 0);
        randomTable(rng, &ac, seq % 5 == 0);
        // Stateful: a run of blocks through both, with room at and near the
        // fast path's threshold now and then, and a pending state.
        std::vector<Vqc8u> a(4000), b;
        for (auto& x : a) x = static_cast<Vqc8u>(rng());
        b = a;
        VqciEncodeHuffmanState sa, sb;
        vqciEncodeHuffmanStateInit_JPEG_8u(&sa);
        const uint32_t pend = rng() % 8;
        sa.bitCount = static_cast<int32_t>(pend);
        sa.bitBuffer = uint64_t{rng()} << 32 | (rng() & 0xFF) << 24 | (rng() & ((1u << pend) - 1)) << (24 - pend);
        sb = sa;
        int32_t pa = static_cast<int32_t>(rng() % 8), pb = pa;
        Vqc16s da = static_cast<Vqc16s>(rng()), db = da;
        for (int i = 0; i < 6 && pa < 3300; ++i) {
            randomBlock(rng, blk);
            const int32_t len = i % 2 ? 4000 : pa + 590 + static_cast<int32_t>(rng() % 20);
            const VqcStatus ra = vqciEncodeHuffman8x8_JPEG_16s1u_C1(blk, a.data(), len, &pa, &da, &dc, &ac, &sa, 0);
            const VqcStatus rb = vqcj::ownHuffEncodeBlockExact(blk, b.data(), len, &pb, &db, &dc, &ac, &sb);
            ASSERT_EQ(ra, rb) << seq;
            ASSERT_EQ(pa, pb);
            ASSERT_EQ(da, db);
            ASSERT_EQ(std::memcmp(&sa, &sb, 16), 0) << seq;
            ASSERT_EQ(a, b) << seq;
            if (ra != 0) break;
        }
        // Direct: from any bit position over old contents.
        int32_t ba = static_cast<int32_t>(rng() % 64), bb = ba;
        for (int i = 0; i < 6; ++i) {
            randomBlock(rng, blk);
            vqciEncodeHuffman8x8_Direct_JPEG_16s1u_C1(blk, a.data(), &ba, &da, &dc, &ac);
            vqcj::ownHuffEncodeBlockDirectExact(blk, b.data(), &bb, &db, &dc, &ac);
            ASSERT_EQ(ba, bb) << seq;
            ASSERT_EQ(a, b) << seq;
        }
    }
}

// The progressive AC passes, fast writer (room) against exact writer (a
// destination 639 bytes from its end), over runs of blocks so that EOB
// runs and correction bits carry from block to block.
TEST(EntropyEncoderFastPath, ProgressivePassesMatchTheExactWriter) {
    std::mt19937 rng(12);
    VqciEncodeHuffmanSpec ac;
    Vqc16s blk[64];
    for (int seq = 0; seq < 400; ++seq) {
        randomTable(rng, &ac, seq % 5 == 0);
        const bool refine = seq % 2;
        const int32_t Ss = 1 + static_cast<int32_t>(rng() % 63), Se = Ss + static_cast<int32_t>(rng() % (64 - Ss)),
                      Al = static_cast<int32_t>(rng() % 14);
        auto pass = refine ? vqciEncodeHuffman8x8_ACRefine_JPEG_16s1u_C1 : vqciEncodeHuffman8x8_ACFirst_JPEG_16s1u_C1;
        std::vector<Vqc8u> a(40000), b(40000);
        VqciEncodeHuffmanState sa, sb;
        vqciEncodeHuffmanStateInit_JPEG_8u(&sa);
        sa.bitBuffer = uint64_t{rng()} << 32;  // ignored, and kept until a write
        sb = sa;
        int32_t pa = 0, pb = 0;
        for (int i = 0; i < 40; ++i) {
            randomBlock(rng, blk);
            if (rng() % 3 == 0) std::memset(blk, 0, sizeof blk);
            const int32_t flush = i == 39;
            const VqcStatus ra = pass(blk, a.data(), 40000, &pa, Ss, Se, Al, &ac, &sa, flush);
            const VqcStatus rb = pass(blk, b.data(), pb + 639, &pb, Ss, Se, Al, &ac, &sb, flush);
            ASSERT_EQ(ra, rb) << seq << " " << i;
            ASSERT_EQ(pa, pb);
            ASSERT_EQ(std::memcmp(&sa, &sb, sizeof sa), 0) << seq << " " << i;
            ASSERT_EQ(a, b) << seq << " " << i;
        }
    }
}

// The largest block: every coefficient and the DC 31 or 32 one bits, all
// stuffed; it must take the fast path at the threshold and still fit.
TEST(EntropyEncoderFastPath, WorstCaseBlockFitsTheRoom) {
    VqciEncodeHuffmanSpec t;
    for (uint32_t& w : t.codeWord) w = 16u << 16 | 0xFFFF;
    Vqc16s blk[64], dc = -32768, dcB = dc;
    for (Vqc16s& v : blk) v = 32767;
    std::vector<Vqc8u> a(700, 0xAA), b = a;
    VqciEncodeHuffmanState sa, sb;
    vqciEncodeHuffmanStateInit_JPEG_8u(&sa);
    sb = sa;
    int32_t pa = 100, pb = 100;
    ASSERT_EQ(vqciEncodeHuffman8x8_JPEG_16s1u_C1(blk, a.data(), 700, &pa, &dc, &t, &t, &sa, 0), 0);
    ASSERT_EQ(vqcj::ownHuffEncodeBlockExact(blk, b.data(), 700, &pb, &dcB, &t, &t, &sb), 0);
    EXPECT_EQ(pa, pb);
    EXPECT_EQ(pa - 100, 2 * (32 + 63 * 31) / 8);
    EXPECT_EQ(a, b);
}

}  // namespace
