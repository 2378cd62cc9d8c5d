// The block coders' fast paths against the exact, byte-at-a-time paths
// they stand in for, over random tables (malformed ones included), blocks,
// starting states, room and damaged streams. After every call status,
// position, state, predictor, marker and every byte or coefficient must
// agree: what the fast paths may never change is exactly what the exact
// paths define.
#include <gtest/gtest.h>
#include <vqcj.h>

#include <algorithm>
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

// Decoder tables from skewed random counts, so that lengths reach 16, and
// random blocks coded with them, damaged in one of several ways, or noise.
std::vector<Vqc8u> makeStream(std::mt19937& rng, VqciDecodeHuffmanSpec dec[2]) {
    VqciEncodeHuffmanSpec enc[2];
    for (int i = 0; i < 2; ++i) {
        Vqc32s counts[257] = {};
        for (uint32_t sym = 0; sym < 256; ++sym)
            if (i == 0 ? sym < 12 : (sym & 15) <= 10)
                counts[sym] = static_cast<Vqc32s>(1 + rng() % (1u << (rng() % 20)));
        Vqc8u bits[16], vals[256];
        EXPECT_EQ(vqciEncodeHuffmanRawTableInit_JPEG_8u(counts, bits, vals), 0);
        vqciEncodeHuffmanSpecInit_JPEG_8u(bits, vals, &enc[i]);
        vqciDecodeHuffmanSpecInit_JPEG_8u(bits, vals, &dec[i]);
    }
    std::vector<Vqc8u> out(1 << 16);
    VqciEncodeHuffmanState st{};
    int32_t pos = 0;
    Vqc16s dc = 0, blk[64];
    const uint32_t blocks = 1 + rng() % 40, density = 1 + rng() % 64;
    for (uint32_t b = 0; b < blocks; ++b) {
        for (auto& c : blk) c = static_cast<Vqc16s>(rng() % 64 < density ? rng() % 2047 - 1023 : 0);
        blk[0] = static_cast<Vqc16s>(rng() % 2047 - 1023);
        vqciEncodeHuffman8x8_JPEG_16s1u_C1(blk, out.data(), 1 << 16, &pos, &dc, &enc[0], &enc[1], &st, 0);
    }
    vqciEncodeHuffman8x8_JPEG_16s1u_C1(nullptr, out.data(), 1 << 16, &pos, nullptr, nullptr, nullptr, &st, 1);
    out.resize(pos);
    for (int n = static_cast<int>(rng() % 4); n > 0; --n) {
        const auto at = out.begin() + static_cast<std::ptrdiff_t>(rng() % (out.size() + 1));
        switch (rng() % 5) {
            case 0: out.insert(at, {0xFF, static_cast<Vqc8u>(0xD0 + rng() % 8)}); break;
            case 1: out.insert(at, {0xFF, 0xFF, static_cast<Vqc8u>(rng() % 2 ? 0x00 : 0xC4)}); break;
            case 2: out.resize(static_cast<size_t>(at - out.begin())); break;
            case 3: if (at != out.end()) *at = static_cast<Vqc8u>(rng()); break;
            default: for (auto& c : out) c = rng() % 8 == 0 ? 0xFF : static_cast<Vqc8u>(rng() % 3 ? rng() : 0);
        }
    }
    return {out.begin(), out.end()};  // no spare capacity, for ASan
}

}  // namespace

TEST(EntropyFastPath, ReadersMatchTheExactReaders) {
    std::mt19937 rng(7);
    VqciDecodeHuffmanSpec dec[2];
    for (int iter = 0; iter < 4000; ++iter) {
        std::vector<Vqc8u> src = makeStream(rng, dec);
        if (rng() % 8 == 0) {
            // A decoder-only list: overfull lengths, all-ones codes.
            Vqc8u bits[16] = {}, vals[256];
            for (int n = 0, left = 256; n < 16; left -= bits[n++])
                bits[n] = static_cast<Vqc8u>(rng() % (1 + std::min(2 << n, left) / 2));
            for (auto& v : vals) v = static_cast<Vqc8u>(rng());
            if (vqciDecodeHuffmanSpecInit_JPEG_8u(bits, vals, &dec[1]) != 0) continue;
        }
        const uint64_t bitBuffer = (uint64_t{rng()} << 32 | rng()) >> (rng() % 2 ? 32 : 0);
        const int32_t count = static_cast<int32_t>(rng() % 33) - (rng() % 8 == 0 ? 8 : 0);
        const int32_t len = static_cast<int32_t>(src.size());
        VqciDecodeHuffmanState st[2] = {{bitBuffer, count, 0, 0}, {bitBuffer, count, 0, 0}};
        int32_t pos[2] = {}, marker[2] = {};
        Vqc16s dc[2] = {}, blk[2][64];
        for (int call = 0; call < 300; ++call) {
            VqcStatus s[2];
            for (int f = 0; f < 2; ++f)
                s[f] = vqcj::ownHuffDecode8x8(src.data(), len, &pos[f], blk[f], &dc[f], &marker[f], &dec[0], &dec[1],
                                              &st[f], f == 0);
            ASSERT_TRUE(s[0] == s[1] && pos[0] == pos[1] && marker[0] == marker[1] && dc[0] == dc[1] &&
                        !std::memcmp(&st[0], &st[1], sizeof st[0]) && !std::memcmp(blk[0], blk[1], sizeof blk[0]))
                << iter << " " << call;
            if (s[0] == vqcStatusOutOfBuffer) break;
            if (marker[0] != 0 || s[0] != 0) {
                marker[0] = marker[1] = 0;
                if (rng() % 2) st[0] = st[1] = VqciDecodeHuffmanState{};
            }
        }
        // The Direct form reads up to a marker, so the data closes with one.
        src.insert(src.end(), {0xFF, 0xD9});
        src.shrink_to_fit();
        const int32_t start = static_cast<int32_t>(rng() % 3 ? 0 : rng() % (8 * src.size() - 8));
        int32_t bitPos[2] = {start, start}, cnt[2] = {std::max(count, 0), std::max(count, 0)};
        uint32_t acc[2] = {static_cast<uint32_t>(bitBuffer), static_cast<uint32_t>(bitBuffer)};
        marker[0] = marker[1] = 0;
        for (int call = 0; call < 300; ++call) {
            VqcStatus s[2];
            for (int f = 0; f < 2; ++f)
                s[f] = vqcj::ownHuffDecode8x8Direct(src.data(), &bitPos[f], blk[f], &dc[f], &marker[f], &acc[f],
                                                    &cnt[f], &dec[0], &dec[1], f == 0);
            ASSERT_TRUE(s[0] == s[1] && bitPos[0] == bitPos[1] && marker[0] == marker[1] && dc[0] == dc[1] &&
                        acc[0] == acc[1] && cnt[0] == cnt[1] && !std::memcmp(blk[0], blk[1], sizeof blk[0]))
                << iter << " " << call;
            if (s[0] != 0 || (marker[0] != 0 && cnt[0] == 0)) break;
            if (marker[0] != 0 && marker[0] != 0xD9 && rng() % 2) marker[0] = marker[1] = 0;
        }
    }
}

TEST(EntropyFastPath, WritersMatchTheExactWriters) {
    // The largest block, all of it stuffed 0xFF, fits the room at which
    // the fast path starts.
    VqciEncodeHuffmanSpec dc, ac;
    for (uint32_t& w : dc.codeWord) w = 16u << 16 | 0xFFFF;
    Vqc16s blk[64], da = -32768, db = da;
    for (Vqc16s& v : blk) v = 32767;
    std::vector<Vqc8u> a(40000, 0xAA), b = a;
    VqciEncodeHuffmanState sa{}, sb{};
    int32_t pa = 100, pb = 100;
    ASSERT_EQ(vqciEncodeHuffman8x8_JPEG_16s1u_C1(blk, a.data(), 700, &pa, &da, &dc, &dc, &sa, 0), 0);
    ASSERT_EQ(vqcj::ownHuffEncodeBlockExact(blk, b.data(), 700, &pb, &db, &dc, &dc, &sb), 0);
    EXPECT_EQ(pa - 100, 2 * (32 + 63 * 31) / 8);
    EXPECT_TRUE(pa == pb && a == b);

    std::mt19937 rng(11);
    for (int seq = 0; seq < 400; ++seq) {
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
        // The progressive AC passes, with room and from 639 bytes before the
        // end, over runs of blocks so that EOB runs and correction bits carry.
        const int32_t Ss = 1 + static_cast<int32_t>(rng() % 63), Se = Ss + static_cast<int32_t>(rng() % (64 - Ss)),
                      Al = static_cast<int32_t>(rng() % 14);
        auto pass = seq % 2 ? vqciEncodeHuffman8x8_ACRefine_JPEG_16s1u_C1 : vqciEncodeHuffman8x8_ACFirst_JPEG_16s1u_C1;
        sa = {};
        sa.bitBuffer = uint64_t{rng()} << 32;  // ignored, and kept until a write
        sb = sa;
        pa = pb = 0;
        for (int i = 0; i < 40; ++i) {
            randomBlock(rng, blk);
            const VqcStatus ra = pass(blk, a.data(), 40000, &pa, Ss, Se, Al, &ac, &sa, i == 39);
            ASSERT_EQ(ra, pass(blk, b.data(), pb + 639, &pb, Ss, Se, Al, &ac, &sb, i == 39)) << seq;
            ASSERT_TRUE(pa == pb && std::memcmp(&sa, &sb, sizeof sa) == 0 && a == b) << seq << " " << i;
        }
    }
}
