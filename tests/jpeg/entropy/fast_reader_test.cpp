// The block decoders' fast reader against the exact one alone, over random
// tables, blocks, starting states, truncations, markers, stuffed and fill
// bytes and noise: after every call status, position, marker, state and
// coefficients must agree.
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

// Codes from skewed random counts, so that lengths reach 16; then random
// blocks coded with them, damaged in one of several ways, or noise.
std::vector<Vqc8u> makeStream(std::mt19937& rng, Tables& t) {
    for (int i = 0; i < 2; ++i) {
        Vqc32s counts[257] = {};
        for (uint32_t sym = 0; sym < 256; ++sym)
            if (i == 0 ? sym < 12 : (sym & 15) <= 10)
                counts[sym] = static_cast<Vqc32s>(1 + rng() % (1u << (rng() % 20)));
        Vqc8u bits[16], vals[256];
        EXPECT_EQ(vqciEncodeHuffmanRawTableInit_JPEG_8u(counts, bits, vals), 0);
        vqciEncodeHuffmanSpecInit_JPEG_8u(bits, vals, &t.enc[i]);
        vqciDecodeHuffmanSpecInit_JPEG_8u(bits, vals, &t.dec[i]);
    }
    std::vector<Vqc8u> out(1 << 16);
    VqciEncodeHuffmanState st{};
    int32_t pos = 0;
    Vqc16s dc = 0, blk[64];
    const uint32_t blocks = 1 + rng() % 40, density = 1 + rng() % 64;
    for (uint32_t b = 0; b < blocks; ++b) {
        for (auto& c : blk) c = static_cast<Vqc16s>(rng() % 64 < density ? rng() % 2047 - 1023 : 0);
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
    return {out.begin(), out.end()};  // no spare capacity, for ASan
}

}  // namespace

TEST(EntropyDecoder, FastReaderMatchesExactReader) {
    std::mt19937 rng(7);
    Tables t;
    for (int iter = 0; iter < 4000; ++iter) {
        std::vector<Vqc8u> src = makeStream(rng, t);
        if (rng() % 8 == 0) {
            // A decoder-only list: overfull lengths, all-ones codes.
            Vqc8u bits[16] = {}, vals[256];
            for (int n = 0, left = 256; n < 16; left -= bits[n++])
                bits[n] = static_cast<Vqc8u>(rng() % (1 + std::min(2 << n, left) / 2));
            for (auto& v : vals) v = static_cast<Vqc8u>(rng());
            if (vqciDecodeHuffmanSpecInit_JPEG_8u(bits, vals, &t.dec[1]) != 0) continue;
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
                s[f] = vqcj::ownHuffDecode8x8(src.data(), len, &pos[f], blk[f], &dc[f], &marker[f], &t.dec[0],
                                              &t.dec[1], &st[f], f == 0);
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
                                                    &cnt[f], &t.dec[0], &t.dec[1], f == 0);
            ASSERT_TRUE(s[0] == s[1] && bitPos[0] == bitPos[1] && marker[0] == marker[1] && dc[0] == dc[1] &&
                        acc[0] == acc[1] && cnt[0] == cnt[1] && !std::memcmp(blk[0], blk[1], sizeof blk[0]))
                << iter << " " << call;
            if (s[0] != 0 || (marker[0] != 0 && cnt[0] == 0)) break;
            if (marker[0] != 0 && marker[0] != 0xD9 && rng() % 2) marker[0] = marker[1] = 0;
        }
    }
}
