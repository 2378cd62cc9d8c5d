// Adaptive coding: the state rules, hand-worked bit streams, round trips with
// an encoder state and a decoder state kept in step, and the check orders.
#include <gtest/gtest.h>

#include <vqcj.h>

#include <random>

#include "jxrtest.h"

using jxrtest::freshState;
using jxrtest::Stream;

namespace {

// Bits of a block encoded from a fresh state with scan 0 (the block given by
// entries of scan 0: coefficient numbers 10 2 12 5 ...).
struct Coded {
    std::string bits;
    int32_t pairs;
};
Coded encodeEntries(std::initializer_list<std::pair<int, int32_t>> entries, uint32_t modelBits = 0) {
    static const int kNum[16] = {0, 10, 2, 12, 5, 9, 4, 8, 1, 13, 6, 15, 14, 3, 11, 7};
    static const int kCol[16] = {0, 1, 0, 1, 3, 2, 3, 2, 0, 1, 0, 1, 3, 2, 3, 2};
    static const int kRow[16] = {0, 0, 1, 1, 0, 0, 1, 1, 3, 3, 2, 2, 3, 3, 2, 2};
    int32_t blk[16] = {};
    for (auto [e, v] : entries) blk[kRow[kNum[e]] * 4 + kCol[kNum[e]]] = v;
    VqciVLCState s = freshState();
    Stream st;
    int32_t pairs = -1;
    EXPECT_EQ(vqciVLCEncode4x4_JPEGXR_32s1u_C1R(blk, 16, 0, modelBits, &st.p, &st.buf, &st.n, &pairs, &s), 0);
    return {st.bits(), pairs};
}

}  // namespace

TEST(JpegxrVlc, StateRules) {
    int32_t size = 0;
    ASSERT_EQ(vqciVLCGetStateSize_JPEGXR(&size), 0);
    EXPECT_EQ(size, 1780);
    VqciVLCState s = freshState(1);
    EXPECT_EQ(s.contexts[13].tableIndex, 1);
    EXPECT_EQ(s.contexts[14].tableIndex, 1);
    EXPECT_EQ(s.contexts[19].tableIndex, 0);
    EXPECT_EQ(s.scanTables[1][0].count, 32767u);
    EXPECT_EQ(s.scanTables[1][15].count, 4u);
    const uint32_t cur = s.currentScan;
    vqciVLCScanReset_JPEGXR(&s, 1);
    EXPECT_EQ(s.currentScan, cur);
    // Thresholds: -8 and 8 stay, -9 and 9 move; clamps at 64 either end.
    auto adapt = [&](int ctx, int32_t d1, int32_t d2) {
        s.discriminant1[ctx] = d1, s.discriminant2[ctx] = d2;
        vqciVLCAdapt_JPEGXR(&s, ctx < 13 ? 0 : 1);
        return s.contexts[ctx].tableIndex;
    };
    EXPECT_EQ(adapt(19, -100, 0), 0);
    EXPECT_EQ(s.discriminant1[19], -64);
    EXPECT_EQ(adapt(19, 8, 0), 0);
    EXPECT_EQ(adapt(19, 9, 0), 1);
    EXPECT_EQ(s.discriminant1[19], 0);
    EXPECT_EQ(adapt(19, 100, 0), 1);  // the last table
    EXPECT_EQ(s.discriminant1[19], 64);
    EXPECT_EQ(adapt(19, -8, 0), 1);
    EXPECT_EQ(adapt(19, -9, 0), 0);
    // Two discriminants: up by the second, down by the first.
    EXPECT_EQ(adapt(14, 9, 8), 1);
    EXPECT_EQ(adapt(14, 0, 9), 2);
    EXPECT_EQ(adapt(14, -9, 100), 1);
    EXPECT_EQ(adapt(0, -1000, 1000), 0);  // context 0 has one discriminant and stays at its first table
    VqciVLCState keep = s;
    EXPECT_EQ(vqciVLCAdapt_JPEGXR(&s, 2), vqcStatusBadRange);
    EXPECT_EQ(std::memcmp(&s, &keep, sizeof s), 0);
}

TEST(JpegxrVlc, ScanMovesOnePlacePerHit) {
    VqciVLCState s = freshState(0);
    int32_t blk[16] = {}, res[16], pairs;
    blk[1 * 4 + 1] = 5;  // number 3 sits at entry 13 of scan 0 (count 8, entry 12 has 10)
    Stream st;
    for (int hit = 1; hit <= 3; ++hit) {
        vqciVLCEncode4x4Flex_JPEGXR_32s1u_C1R(blk, 16, 0, 0, 0, res, &st.p, &st.buf, &st.n, &pairs, &s);
        EXPECT_EQ(s.scanTables[0][13].index, hit < 3 ? 3u : 14u) << hit;  // equal counts do not swap
    }
    EXPECT_EQ(s.scanTables[0][12].index, 3u);
    EXPECT_EQ(s.scanTables[0][12].count, 11u);
}

TEST(JpegxrVlc, HandWorkedBlockStreams) {
    // Entry 1, level -1: first symbol 1 (00010 in the first table of 12), sign.
    EXPECT_EQ(encodeEntries({{1, -1}}).bits, "000101");
    // |level| 17: symbol 3, sign, level symbol 5 (00000) and L - 12 = 3.
    EXPECT_EQ(encodeEntries({{1, 17}}).bits, "000001" "0" "00000" "11");
    // |level| 18: escape (00001), n = 4 as 0000, then four low bits of 16.
    EXPECT_EQ(encodeEntries({{1, 18}}).bits, "000001" "0" "00001" "0000" "0000");
    // L = 2^19: 1111, 00, then 19 bits.
    EXPECT_EQ(encodeEntries({{1, (1 << 19) + 2}}).bits, "000001" "0" "00001" "1111" "00" + std::string(19, '0'));
    // Entries 1 and 15: symbol 9 (100), sign, run 13 (0001 and 110), then two plain bits.
    EXPECT_EQ(encodeEntries({{1, 1}, {15, -1}}).bits, "100" "0" "0001" "110" "0" "1");
    // Entries 1 and 14: the fixed code 0 at 14.
    EXPECT_EQ(encodeEntries({{1, 1}, {14, 1}}).bits, "100" "0" "0001" "101" "0" "0");
    // A lone coefficient at entry 15: symbol 0 (0010), sign, first run 14 (0001 and 111).
    EXPECT_EQ(encodeEntries({{15, 1}}).bits, "0010" "0" "0001" "111");
    // modelBits above every magnitude: nothing coded.
    const Coded none = encodeEntries({{1, 3}, {7, -3}}, 2);
    EXPECT_EQ(none.pairs, 0);
    EXPECT_EQ(none.bits, "");

    // Position 14 and 15 change no discriminant; the first symbol does.
    VqciVLCState s = freshState(), before = s;
    Stream st;
    int32_t blk[16] = {}, pairs;
    blk[2 * 4 + 0] = 1, blk[2 * 4 + 1] = 1;  // numbers 10 and 11: entries 1 and 14
    vqciVLCEncode4x4_JPEGXR_32s1u_C1R(blk, 16, 0, 0, &st.p, &st.buf, &st.n, &pairs, &s);
    EXPECT_NE(s.discriminant1[13], before.discriminant1[13]);
    EXPECT_EQ(std::memcmp(s.discriminant1 + 14, before.discriminant1 + 14, 7 * 4), 0);

    // Decoding: the stream above from a fresh state, dequantised by -3.
    VqciVLCState d = freshState();
    st.rewind();
    int32_t out[16], coded = 0;
    std::fill(out, out + 16, 77);
    ASSERT_EQ(vqciVLCDecode4x4_JPEGXR_1u32s_C1R(&st.p, &st.buf, &st.n, -3, out, 16, 0, &coded, &d), 0);
    EXPECT_EQ(coded, 2);
    EXPECT_EQ(out[0], 77);  // the DC stays
    EXPECT_EQ(out[2 * 4 + 0], -3);
    EXPECT_EQ(out[2 * 4 + 1], -3);
    EXPECT_EQ(st.used(), 13u);
    EXPECT_EQ(std::memcmp(&s, &d, sizeof s), 0);
}

TEST(JpegxrVlc, BitStreamEdges) {
    VqciVLCState s = freshState();
    int32_t zero[16] = {}, pairs;
    for (uint32_t n : {16u, 17u, 32u}) {
        Stream st;
        st.n = n, st.buf = 0xABCD1234u;
        ASSERT_EQ(vqciVLCEncode4x4_JPEGXR_32s1u_C1R(zero, 16, 0, 0, &st.p, &st.buf, &st.n, &pairs, &s), 0);
        EXPECT_EQ(st.n, n > 16 ? n - 16 : n);
        EXPECT_EQ(st.p - st.mem.data(), n > 16 ? 2 : 0);
    }
    Stream st;
    st.n = 33;
    EXPECT_EQ(vqciVLCEncode4x4_JPEGXR_32s1u_C1R(zero, 16, 0, 0, &st.p, &st.buf, &st.n, &pairs, &s), vqcStatusBadRange);
    // The 16-bit decoder keeps the low 16 bits of the product.
    Stream in = Stream::of(encodeEntries({{1, 2}}).bits);
    int16_t out[16];
    int32_t coded;
    VqciVLCState d = freshState();
    ASSERT_EQ(vqciVLCDecode4x4_JPEGXR_1u16s_C1R(&in.p, &in.buf, &in.n, 16384, out, 8, 0, &coded, &d), 0);
    EXPECT_EQ(out[2 * 4], -32768);
}

// Macroblock-like runs through every coder with two states kept in step,
// Adapt and ScanReset called at the same points; values come back exactly
// and the two states end identical.
TEST(JpegxrVlc, RoundTripKeepsStatesInStep) {
    std::mt19937 g(2024);
    VqciVLCState enc = freshState(), dec = freshState();
    Stream st(1 << 21);
    struct Rec {
        int kind, chroma;
        uint32_t mb, scan;
        bool w16;
        int32_t blk[16];
        int32_t n;
    };
    std::vector<Rec> recs;
    auto value = [&](int spread) {
        const int k = static_cast<int>(g() % 8);
        if (k < 4) return 0;
        int32_t v = static_cast<int32_t>(g() % spread) + 1;
        if (k == 7) v <<= g() % 18;
        return g() & 1 ? -v : v;
    };
    for (int i = 0; i < 6000; ++i) {
        Rec r{static_cast<int>(g() % 6), static_cast<int>(g() & 1), static_cast<uint32_t>(g() % 4), 0, false, {}, 0};
        for (int32_t& v : r.blk) v = value(r.kind == 4 ? 40 : 6);
        int32_t res[16], rl[32], pairs = 0;
        if (r.kind <= 1) vqciVLCScanSet_JPEGXR(&enc, r.scan = g() % 3);
        // Blocks that fit 16 bits go through the 16-bit members.
        int16_t h[16];
        r.w16 = true;
        for (int k = 0; k < 16; ++k) h[k] = static_cast<int16_t>(r.blk[k]), r.w16 &= h[k] == r.blk[k];
        if (r.kind == 0 && r.w16) vqciVLCEncode4x4_JPEGXR_16s1u_C1R(h, 8, r.chroma, 0, &st.p, &st.buf, &st.n, &pairs, &enc);
        if (r.kind == 0 && !r.w16) vqciVLCEncode4x4_JPEGXR_32s1u_C1R(r.blk, 16, r.chroma, 0, &st.p, &st.buf, &st.n, &pairs, &enc);
        if (r.kind == 1 && r.w16) {
            vqciVLCEncode4x4Flex_JPEGXR_16s1u_C1R(h, 8, r.chroma, r.mb, 0, res, &st.p, &st.buf, &st.n, &pairs, &enc);
            vqciFLCEncode4x4_JPEGXR_16s1u_C1R(h, 8, res, &st.p, &st.buf, &st.n, r.mb, 0, 1);
        }
        if (r.kind == 1 && !r.w16) {
            vqciVLCEncode4x4Flex_JPEGXR_32s1u_C1R(r.blk, 16, r.chroma, r.mb, 0, res, &st.p, &st.buf, &st.n, &pairs, &enc);
            vqciFLCEncode4x4_JPEGXR_32s1u_C1R(r.blk, 16, res, &st.p, &st.buf, &st.n, r.mb, 0, 1);
        }
        if (r.kind == 2) {
            vqciVLCScan4x4DC_JPEGXR_32s(r.blk, 0, res, rl, &pairs, &enc);
            if (pairs) vqciVLCEncodeDC444_JPEGXR_32s1u(rl, pairs, r.chroma, &st.p, &st.buf, &st.n, &enc);
        }
        if (r.kind >= 3) {  // caller-formed pairs in index order
            const int32_t n = r.kind == 3 ? 14 : 6;
            for (int32_t k = 0, run = 0; k < n; ++k, ++run)
                if (r.blk[k]) rl[2 * pairs] = run, rl[2 * pairs + 1] = r.blk[k], ++pairs, run = -1;
            if (pairs && r.kind == 3) vqciVLCEncodeDC422_JPEGXR_32s1u(rl, pairs, &st.p, &st.buf, &st.n, &enc);
            if (pairs && r.kind >= 4) vqciVLCEncodeDC420_JPEGXR_32s1u(rl, pairs, &st.p, &st.buf, &st.n, &enc);
        }
        r.n = pairs;
        recs.push_back(r);
        if (i % 16 == 15) vqciVLCAdapt_JPEGXR(&enc, i / 16 % 2);
        if (i % 100 == 99) vqciVLCScanReset_JPEGXR(&enc, i / 100 % 3);
    }
    st.rewind();
    for (size_t i = 0; i < recs.size(); ++i) {
        const Rec& r = recs[i];
        int32_t out[16], coded = 0, pairs = -1;
        std::fill(out, out + 16, 0);
        vqciVLCScanSet_JPEGXR(&dec, r.kind <= 1 ? r.scan : 2);
        const int32_t q = 1 << (r.kind ? r.mb : 0);
        int16_t h[16] = {};
        if (r.kind <= 1 && r.n && r.w16)
            vqciVLCDecode4x4_JPEGXR_1u16s_C1R(&st.p, &st.buf, &st.n, static_cast<int16_t>(q), h, 8, r.chroma, &coded, &dec);
        if (r.kind <= 1 && r.n && !r.w16)
            vqciVLCDecode4x4_JPEGXR_1u32s_C1R(&st.p, &st.buf, &st.n, q, out, 16, r.chroma, &coded, &dec);
        ASSERT_EQ(coded, r.kind <= 1 ? r.n : 0) << i;
        if (r.kind == 1 && r.w16) vqciFLCDecode4x4_JPEGXR_1u16s_C1IR(&st.p, &st.buf, &st.n, h, 8, r.mb, 1, 1);
        if (r.kind == 1 && !r.w16) vqciFLCDecode4x4_JPEGXR_1u32s_C1IR(&st.p, &st.buf, &st.n, out, 16, r.mb, 1, 1);
        if (r.kind <= 1 && r.w16) std::copy(h, h + 16, out);
        if (r.kind == 2 && r.n) {
            vqciVLCDecodeDC444_JPEGXR_1u32s(&st.p, &st.buf, &st.n, out, r.chroma, &pairs, &dec);
            ASSERT_EQ(pairs, r.n);
        }
        if (r.kind >= 3 && r.n) {
            if (r.kind == 3) vqciVLCDecodeDC422_JPEGXR_1u32s(&st.p, &st.buf, &st.n, out, &pairs, &dec);
            if (r.kind >= 4) vqciVLCDecodeDC420_JPEGXR_1u32s(&st.p, &st.buf, &st.n, out, &pairs, &dec);
            ASSERT_EQ(pairs, r.n);
        }
        const int n = r.kind == 3 ? 14 : r.kind >= 4 ? 6 : 16;
        for (int k = r.kind <= 2 ? 1 : 0; k < n; ++k) ASSERT_EQ(out[k], r.blk[k]) << i << " " << k;
        if (i % 16 == 15) vqciVLCAdapt_JPEGXR(&dec, static_cast<int32_t>(i / 16 % 2));
        if (i % 100 == 99) vqciVLCScanReset_JPEGXR(&dec, static_cast<int32_t>(i / 100 % 3));
    }
    EXPECT_EQ(std::memcmp(&enc, &dec, sizeof enc), 0);
}
