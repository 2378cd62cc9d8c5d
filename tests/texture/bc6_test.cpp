// BC6H: hand-built blocks for the mode bit layouts, the wrap, signed and
// unsigned unquantisation at their extremes, reserved modes, and the
// partial-block walk through the 16-byte-a-row local buffer.
#include <gtest/gtest.h>
#include <vqcj.h>

#include <cstring>
#include <vector>

#include "support/testutil.h"
#include "support/texture_blocks.h"

using vqcjtex::setBits;
using Words = std::vector<uint16_t>;

// Texels of one block as 48 words, unsigned or signed.
static Words decodeU(const uint8_t* b, bool sign = false) {
    Words w(48);
    EXPECT_EQ(sign ? vqciTextureDecodeBlockToRGB_BC6_16s_C1C3R(b, reinterpret_cast<Vqc16s*>(w.data()), 24, {4, 4})
                   : vqciTextureDecodeBlockToRGB_BC6_16u_C1C3R(b, w.data(), 24, {4, 4}),
              vqcStatusOk);
    return w;
}
static Words decodeS(const uint8_t* b) { return decodeU(b, true); }

// A one-subset block of `mode` (byte 0 low bits) with red base rw and red
// delta rx; texel 1 takes index 15, the others 0, so texel 0 shows endpoint
// 0 and texel 1 endpoint 1.
struct One {
    uint8_t b[16] = {};
    One(int low5, uint32_t rw, uint32_t rx, int rxBits) {
        b[0] = uint8_t(low5);
        setBits(b, 5, 10, rw), setBits(b, 35, rxBits, rx);
        setBits(b, 65 + 3, 4, 15);
    }
};

TEST(TextureBC6, BaseHighBitsOfModes12And13) {
    // Mode 13: bit 39 is rw bit 10 (straight order); prec 16 is never unquantised.
    One m13(0x0F, 0, 0, 4);
    setBits(m13.b, 39, 1, 1);
    EXPECT_EQ(decodeU(m13.b)[0], (1024 * 31) >> 6);
    // Mode 12: bit 44 is rw bit 10 and bit 43 rw bit 11 (reversed).
    One m12(0x0B, 0, 0, 8);
    setBits(m12.b, 44, 1, 1);
    EXPECT_EQ(decodeU(m12.b)[0], ((((1024u << 16) + 32768) >> 12) * 31) >> 6);
    setBits(m12.b, 44, 1, 0), setBits(m12.b, 43, 1, 1);
    EXPECT_EQ(decodeU(m12.b)[0], ((((2048u << 16) + 32768) >> 12) * 31) >> 6);
}

TEST(TextureBC6, UnquantisationExtremesAndWrap) {
    // Mode 10 (no transform, prec 10). Unsigned all ones is 65535 -> 31743.
    // Signed 1023 is -1 -> -96 -> 0x805D; 511 is 32767 -> 31743; -511
    // carries the sign: 0xFBFF.
    One m10(0x03, 1023, 511, 10);
    EXPECT_EQ(decodeU(m10.b)[0], 31743);
    EXPECT_EQ(decodeS(m10.b)[0], 0x805D);
    EXPECT_EQ(decodeS(m10.b)[3], 31743);
    One neg(0x03, 0, 0x201, 10);
    EXPECT_EQ(decodeS(neg.b)[3], 0xFBFF);
    // Mode 11 (prec 11, delta 9): 2040 + 8 is exactly 1 << 11 and wraps to 0.
    One wrap(0x07, 2040 & 1023, 8, 9);
    setBits(wrap.b, 44, 1, 1);
    EXPECT_EQ(decodeU(wrap.b)[3], 0);
    // A non-negative sum keeps its top bit and stays positive: 1100 is not
    // -948, its magnitude unquantises past 32767 and passes through.
    One big(0x07, 1000, 100, 9);
    EXPECT_EQ(decodeS(big.b)[3], uint16_t((((1100 << 15) + 16384) >> 10) * 31 >> 5));
    // A zero base with a delta of -1 stays -1: -48, and t -48 gives 0x802E.
    One minus(0x07, 0, 0x1FF, 9);
    EXPECT_EQ(decodeS(minus.b)[3], 0x802E);
    // Mode 9 adds nothing: its unsigned deltas are not sign-extended, its
    // signed ones are. Texel 1 is in subset 0 with index 7 (endpoint rx).
    uint8_t m9[16] = {0x1E};
    setBits(m9, 35, 6, 63), setBits(m9, 84, 3, 7);
    EXPECT_EQ(decodeU(m9)[3], 31743);
    EXPECT_EQ(decodeS(m9)[3], 0x85D0);
}

TEST(TextureBC6, ReservedModesAreBlack) {
    for (int low : {0x13, 0x17, 0x1B, 0x1F}) {
        uint8_t two[32];
        std::memset(two, 0xFF, 32);
        two[0] = uint8_t(low), two[16] = 0x03;  // then a mode-10 block of all ones
        Words w(2 * 4 * 12, 0x5555);
        ASSERT_EQ(vqciTextureDecodeBlockToRGB_BC6_16u_C1C3R(two, w.data(), 48, {8, 4}), vqcStatusOk);
        for (int r = 0; r < 4; ++r)
            for (int k = 0; k < 24; ++k) EXPECT_EQ(w[size_t(r * 24 + k)], k < 12 ? 0 : decodeU(two + 16)[size_t(r * 12 + k - 12)]);
    }
}

// Partial blocks: the block is written to a 96-byte local buffer (zeros),
// 16 bytes a row although a row is 24; a right-edge block of n columns is
// read back r*(6n+8) + 6c, a bottom-edge block 32 bytes a row.
TEST(TextureBC6, PartialBlocksReadThroughTheNarrowBuffer) {
    for (auto [w, h] : {std::pair{9, 6}, {7, 7}, {5, 4}, {3, 2}}) {
        const int bw = (w + 3) / 4, bh = (h + 3) / 4;
        std::vector<uint8_t> blocks = vqcjtest::randomBytes(size_t(16 * bw * bh), uint32_t(w * 16 + h));
        for (int k = 0; k < bw * bh; ++k) blocks[size_t(16 * k)] = uint8_t(k % 2 ? 0x03 : 0x00);  // modes 10 and 0
        const uint32_t step = uint32_t(6 * w + 10);
        vqcjtest::Guarded out(step * uint32_t(h));
        ASSERT_EQ(vqciTextureDecodeBlockToRGB_BC6_16u_C1C3R(blocks.data(), reinterpret_cast<Vqc16u*>(out.data()), step,
                                                            {w, h}),
                  vqcStatusOk);
        for (int by = 0; by < bh; ++by)
            for (int bx = 0; bx < bw; ++bx) {
                const Words whole = decodeU(&blocks[size_t(16 * (by * bw + bx))]);
                uint8_t local[96] = {};
                for (int r = 0; r < 4; ++r) std::memcpy(local + 16 * r, &whole[size_t(12 * r)], 24);
                const int n = std::min(4, w - 4 * bx), rows = std::min(4, h - 4 * by);
                for (int r = 0; r < rows; ++r)
                    for (int c = 0; c < n; ++c) {
                        const uint8_t* want = n == 4 && rows == 4 ? reinterpret_cast<const uint8_t*>(&whole[size_t(12 * r + 3 * c)])
                                              : n == 4           ? local + 32 * r + 6 * c
                                                                 : local + r * (6 * n + 8) + 6 * c;
                        const uint8_t* got = out.data() + size_t(4 * by + r) * step + size_t(6 * (4 * bx + c));
                        ASSERT_EQ(std::memcmp(want, got, 6), 0) << w << "x" << h << " block " << bx << "," << by
                                                                << " pixel " << c << "," << r;
                    }
            }
        EXPECT_TRUE(out.guardsIntact());
        for (int y = 0; y < h; ++y)  // the bytes between rows are left alone
            for (uint32_t x = uint32_t(6 * w); x < step; ++x) EXPECT_EQ(out.data()[uint32_t(y) * step + x], 0xA5);
    }
}
