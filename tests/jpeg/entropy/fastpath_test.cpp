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
// above the code; all ones in flavour 1 (runs of 0xFF in the output).
void randomTable(std::mt19937& rng, VqciEncodeHuffmanSpec* t, bool ones) {
    for (uint32_t& w : t->codeWord) {
        const uint32_t len = 1 + rng() % 16, pick = rng() % 32;
        w = len << 16 | ((ones ? ~0u : rng()) & ((1u << len) - 1));
        if (pick == 0) w = 0;
        if (pick == 1) w = (17 + rng() % 70000) << 16 | (rng() & 0xFFFF);
        if (pick == 2) w |= rng() & 0xFFFF;
    }
}

void randomBlock(std::mt19937& rng, Vqc16s* blk) {
    const uint32_t density = rng() % 65, top = rng() % 17, zero = rng() % 3 == 0;
    for (int i = 0; i < 64; ++i) {
        const uint32_t r = rng();
        blk[i] = static_cast<Vqc16s>(rng() % 64 < density ? static_cast<int32_t>(r % (2u << top)) - (1 << top) : 0);
        if (r % 97 == 0) blk[i] = static_cast<Vqc16s>(r % 2 ? -32768 : 32767);
        if (zero) blk[i] = 0;
    }
}

TEST(EntropyEncoderFastPath, BaselineMatchesTheExactWriter) {
    // The largest block, all of it stuffed 0xFF, fits the room at which
    // the fast path starts.
    VqciEncodeHuffmanSpec dc, ac;
    for (uint32_t& w : dc.codeWord) w = 16u << 16 | 0xFFFF;
    Vqc16s blk[64], da = -32768, db = da;
    for (Vqc16s& v : blk) v = 32767;
    std::vector<Vqc8u> a(4000, 0xAA), b = a;
    VqciEncodeHuffmanState sa, sb;
    vqciEncodeHuffmanStateInit_JPEG_8u(&sa);
    sb = sa;
    int32_t pa = 100, pb = 100;
    ASSERT_EQ(vqciEncodeHuffman8x8_JPEG_16s1u_C1(blk, a.data(), 700, &pa, &da, &dc, &dc, &sa, 0), 0);
    ASSERT_EQ(vqcj::ownHuffEncodeBlockExact(blk, b.data(), 700, &pb, &db, &dc, &dc, &sb), 0);
    EXPECT_EQ(pa - 100, 2 * (32 + 63 * 31) / 8);
    EXPECT_TRUE(pa == pb && a == b);

    std::mt19937 rng(11);
    for (int seq = 0; seq < 300; ++seq) {
        randomTable(rng, &dc, seq % 5 == 0);
        randomTable(rng, &ac, seq % 5 == 0);
        // Stateful: blocks in a row, with room at and near the fast path's
        // threshold, from a state with bits pending.
        for (auto& x : a) x = static_cast<Vqc8u>(rng());
        b = a;
        const uint32_t pend = rng() % 8;
        sa.bitCount = static_cast<int32_t>(pend);
        sa.bitBuffer = uint64_t{rng()} << 32 | (rng() & 0xFF) << 24 | (rng() & ((1u << pend) - 1)) << (24 - pend);
        sb = sa;
        pa = pb = static_cast<int32_t>(rng() % 8);
        for (int i = 0; i < 6 && pa < 3300; ++i) {
            randomBlock(rng, blk);
            const int32_t len = i % 2 ? pa + 590 + static_cast<int32_t>(rng() % 20) : 4000;
            const VqcStatus ra = vqciEncodeHuffman8x8_JPEG_16s1u_C1(blk, a.data(), len, &pa, &da, &dc, &ac, &sa, 0);
            ASSERT_EQ(ra, vqcj::ownHuffEncodeBlockExact(blk, b.data(), len, &pb, &db, &dc, &ac, &sb)) << seq;
            ASSERT_TRUE(pa == pb && da == db && std::memcmp(&sa, &sb, 16) == 0 && a == b) << seq;
            if (ra != 0) break;
        }
        // Direct: from any bit position over old contents.
        pa = pb = static_cast<int32_t>(rng() % 64);
        for (int i = 0; i < 6; ++i) {
            randomBlock(rng, blk);
            vqciEncodeHuffman8x8_Direct_JPEG_16s1u_C1(blk, a.data(), &pa, &da, &dc, &ac);
            vqcj::ownHuffEncodeBlockDirectExact(blk, b.data(), &pb, &db, &dc, &ac);
            ASSERT_TRUE(pa == pb && da == db && a == b) << seq;
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
    std::vector<Vqc8u> a(40000), b(40000);
    for (int seq = 0; seq < 400; ++seq) {
        randomTable(rng, &ac, seq % 5 == 0);
        const int32_t Ss = 1 + static_cast<int32_t>(rng() % 63), Se = Ss + static_cast<int32_t>(rng() % (64 - Ss)),
                      Al = static_cast<int32_t>(rng() % 14);
        auto pass = seq % 2 ? vqciEncodeHuffman8x8_ACRefine_JPEG_16s1u_C1 : vqciEncodeHuffman8x8_ACFirst_JPEG_16s1u_C1;
        VqciEncodeHuffmanState sa, sb;
        vqciEncodeHuffmanStateInit_JPEG_8u(&sa);
        sa.bitBuffer = uint64_t{rng()} << 32;  // ignored, and kept until a write
        sb = sa;
        int32_t pa = 0, pb = 0;
        for (int i = 0; i < 40; ++i) {
            randomBlock(rng, blk);
            const VqcStatus ra = pass(blk, a.data(), 40000, &pa, Ss, Se, Al, &ac, &sa, i == 39);
            ASSERT_EQ(ra, pass(blk, b.data(), pb + 639, &pb, Ss, Se, Al, &ac, &sb, i == 39)) << seq;
            ASSERT_TRUE(pa == pb && std::memcmp(&sa, &sb, sizeof sa) == 0 && a == b) << seq << " " << i;
        }
    }
}

}  // namespace
