// The block decoders' fast reader against the exact one alone: random
// tables (long codes included), blocks, starting states, truncations,
// inserted markers, stuffed and fill bytes and plain noise. After every call
// both must agree on status, position, marker, state and coefficients.
#include <gtest/gtest.h>
#include <vqcj.h>

#include <algorithm>
#include <cstring>
#include <random>
#include <vector>

#include "jpeg/entropy/huff.h"

namespace {

struct Tables {
    VqciEncodeHuffmanSpec enc[2];
    VqciDecodeHuffmanSpec dec[2];
};

// Codes from skewed random counts, so that lengths reach 16.
void makeTables(std::mt19937& rng, Tables& t) {
    for (int i = 0; i < 2; ++i) {
        Vqc32s counts[257] = {};
        for (int sym = 0; sym < 256; ++sym)
            if (i == 0 ? sym < 12 : (sym & 15) <= 10) counts[sym] = 1 + static_cast<int32_t>(rng() % (1u << (rng() % 20)));
        Vqc8u bits[16], vals[256];
        ASSERT_EQ(vqciEncodeHuffmanRawTableInit_JPEG_8u(counts, bits, vals), 0);
        ASSERT_EQ(vqciEncodeHuffmanSpecInit_JPEG_8u(bits, vals, &t.enc[i]), 0);
        ASSERT_EQ(vqciDecodeHuffmanSpecInit_JPEG_8u(bits, vals, &t.dec[i]), 0);
    }
}

// Encoded random blocks, then damaged in one of several ways, or noise.
std::vector<Vqc8u> makeStream(std::mt19937& rng, const Tables& t) {
    std::vector<Vqc8u> out(1 << 16);
    VqciEncodeHuffmanState st;
    vqciEncodeHuffmanStateInit_JPEG_8u(&st);
    int32_t pos = 0;
    Vqc16s dc = 0, blk[64];
    const int blocks = 1 + static_cast<int>(rng() % 40), density = 1 + static_cast<int>(rng() % 64);
    for (int b = 0; b < blocks; ++b) {
        for (auto& c : blk) c = rng() % 64 < static_cast<uint32_t>(density) ? static_cast<Vqc16s>(rng() % 2047 - 1023) : 0;
        blk[0] = static_cast<Vqc16s>(rng() % 2047 - 1023);
        vqciEncodeHuffman8x8_JPEG_16s1u_C1(blk, out.data(), 1 << 16, &pos, &dc, &t.enc[0], &t.enc[1], &st, 0);
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
    return out;
}

}  // namespace

TEST(EntropyDecoder, FastReaderMatchesExactReader) {
    std::mt19937 rng(7);
    Tables t;
    for (int iter = 0; iter < 4000; ++iter) {
        makeTables(rng, t);
        const std::vector<Vqc8u> data = makeStream(rng, t);
        if (rng() % 8 == 0) {
            // A decoder-only list: overfull lengths, all-ones codes.
            Vqc8u bits[16] = {}, vals[256];
            for (int n = 0, total = 0; n < 16; total += bits[n++]) bits[n] = static_cast<Vqc8u>(rng() % (1 + std::min(2 << n, 256 - total) / 2));
            for (auto& v : vals) v = static_cast<Vqc8u>(rng());
            if (vqciDecodeHuffmanSpecInit_JPEG_8u(bits, vals, &t.dec[1]) != 0) continue;
        }
        const uint64_t bitBuffer = (uint64_t{rng()} << 32 | rng()) >> (rng() % 2 ? 32 : 0);
        const int32_t count = static_cast<int32_t>(rng() % 33) - (rng() % 8 == 0 ? 8 : 0);

        std::vector<Vqc8u> src(data);  // exact size, so that ASan sees a read past it
        const int32_t len = static_cast<int32_t>(src.size());
        VqciDecodeHuffmanState st[2] = {{bitBuffer, count, 0, 0}, {bitBuffer, count, 0, 0}};
        int32_t pos[2] = {}, marker[2] = {};
        Vqc16s dc[2] = {}, blk[2][64];
        for (int call = 0; call < 300; ++call) {
            VqcStatus s[2];
            for (int f = 0; f < 2; ++f)
                s[f] = vqcj::ownHuffDecode8x8(src.data(), len, &pos[f], blk[f], &dc[f], &marker[f], &t.dec[0],
                                              &t.dec[1], &st[f], f == 0);
            ASSERT_EQ(s[0], s[1]) << iter << " " << call;
            ASSERT_TRUE(pos[0] == pos[1] && marker[0] == marker[1] && dc[0] == dc[1]) << iter << " " << call;
            ASSERT_EQ(std::memcmp(&st[0], &st[1], sizeof st[0]), 0) << iter << " " << call;
            ASSERT_EQ(std::memcmp(blk[0], blk[1], sizeof blk[0]), 0) << iter << " " << call;
            if (s[0] == vqcStatusOutOfBuffer) break;
            if (marker[0] != 0 || s[0] != 0) {
                marker[0] = marker[1] = 0;
                if (rng() % 2) st[0] = st[1] = VqciDecodeHuffmanState{};
            }
        }

        // The Direct form reads up to a marker, so the data closes with one.
        src.insert(src.end(), {0xFF, 0xD9});
        int32_t bitPos[2], cnt[2];
        uint32_t acc[2];
        bitPos[0] = bitPos[1] = static_cast<int32_t>(rng() % 3 ? 0 : rng() % (8 * data.size() + 8));
        cnt[0] = cnt[1] = std::max(count, 0);
        acc[0] = acc[1] = static_cast<uint32_t>(bitBuffer);
        marker[0] = marker[1] = 0;
        for (int call = 0; call < 300; ++call) {
            VqcStatus s[2];
            for (int f = 0; f < 2; ++f)
                s[f] = vqcj::ownHuffDecode8x8Direct(src.data(), &bitPos[f], blk[f], &dc[f], &marker[f], &acc[f],
                                                    &cnt[f], &t.dec[0], &t.dec[1], f == 0);
            ASSERT_EQ(s[0], s[1]) << iter << " " << call;
            ASSERT_TRUE(bitPos[0] == bitPos[1] && marker[0] == marker[1] && dc[0] == dc[1]) << iter << " " << call;
            ASSERT_TRUE(acc[0] == acc[1] && cnt[0] == cnt[1]) << iter << " " << call;
            ASSERT_EQ(std::memcmp(blk[0], blk[1], sizeof blk[0]), 0) << iter << " " << call;
            if (s[0] != 0 || (marker[0] != 0 && cnt[0] == 0)) break;
            if (marker[0] != 0 && marker[0] != 0xD9 && rng() % 2) marker[0] = marker[1] = 0;
        }
    }
}
