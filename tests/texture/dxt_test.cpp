// DXT1/3/5, BC4 and BC5: the palette rules worked by hand, the partial-block
// walks, the check order, and the fast encoders' endpoints, thresholds and
// YCoCg scale and diagonal rules.
#include <gtest/gtest.h>
#include <vqcj.h>

#include <cstring>
#include <algorithm>
#include <functional>
#include <string>
#include <vector>

#include "support/simd.h"
#include "support/testutil.h"

using Bytes = std::vector<uint8_t>;
using Dec = VqcStatus (*)(const Vqc8u*, Vqc8u*, uint32_t, VqciSize);
using Enc = VqcStatus (*)(const Vqc8u*, uint32_t, VqciSize, Vqc8u*);

static Bytes decode1(Dec f, const Bytes& block, int bpp) {
    Bytes out(16 * size_t(bpp));
    EXPECT_EQ(f(block.data(), out.data(), 4u * uint32_t(bpp), {4, 4}), vqcStatusOk);
    return out;
}

TEST(TextureDxtDecode, PaletteRules) {
    // color0 == color1 (8,8,8): DXT1 takes three colours, entry 3 opaque white.
    Bytes b = {0x41, 0x08, 0x41, 0x08, 0xE4, 0, 0, 0};  // texels 0..3: indices 0,1,2,3
    Bytes px = decode1(vqciTextureDecodeBlockToRGBA_DXT1_8u_C1C4R, b, 4);
    EXPECT_EQ(Bytes(px.begin(), px.begin() + 16), Bytes({8, 8, 8, 255, 8, 8, 8, 255, 8, 8, 8, 255, 255, 255, 255, 255}));
    // Four colours (color0 8,8,8 > color1 0): entries truncate, 16/3 = 5, 8/3 = 2.
    b[2] = b[3] = 0;
    px = decode1(vqciTextureDecodeBlockToRGBA_DXT1_8u_C1C4R, b, 4);
    EXPECT_EQ(Bytes(px.begin() + 8, px.begin() + 16), Bytes({5, 5, 5, 255, 2, 2, 2, 255}));
    // The same equal endpoints in DXT3 and DXT5 give four colours; DXT3
    // alpha 15 is 240 and 1 is 16; DXT5 a0 == a1 gives 0 and 255 at 6 and 7.
    Bytes d3 = {0x1F, 0, 0, 0, 0, 0, 0, 0, 0x41, 0x08, 0x41, 0x08, 0xE4, 0, 0, 0};
    px = decode1(vqciTextureDecodeBlockToRGBA_DXT3_8u_C1C4R, d3, 4);
    EXPECT_EQ(Bytes(px.begin(), px.begin() + 16), Bytes({8, 8, 8, 240, 8, 8, 8, 16, 8, 8, 8, 0, 8, 8, 8, 0}));
    Bytes d5 = d3;
    d5[0] = d5[1] = 100;
    d5[2] = 6 | 7 << 3 | 2 << 6, d5[3] = 0;  // texels 0..2: indices 6, 7, 2
    px = decode1(vqciTextureDecodeBlockToRGBA_DXT5_8u_C1C4R, d5, 4);
    EXPECT_EQ(Bytes({px[3], px[7], px[11], px[15]}), Bytes({0, 255, 100, 100}));
    // Value tables: 200 > 100 rounds by sevenths, 100 < 200 by fifths.
    Bytes v = {200, 100, 2 | 2 << 3, 0, 0, 0, 0, 0, 100, 200, 2, 0, 0, 0, 0, 0};
    px = decode1(vqciTextureDecodeBlockToRG_BC5_8u_C1C2R, v, 2);
    EXPECT_EQ(Bytes({px[0], px[1], px[2], px[3]}), Bytes({186, 120, 186, 100}));
    px = decode1(vqciTextureDecodeBlock_BC4_8u_C1R, Bytes(v.begin() + 8, v.end()), 1);
    EXPECT_EQ(px[0], 120);
}

// Each block flat in its own colour: pixel (x, y) must come from block
// (x/4, y/4), and nothing outside the image may change.
TEST(TextureDxtDecode, PartialBlocksCropAndLeaveTheRestAlone) {
    for (auto [w, h] : {std::pair{6, 5}, {1, 1}, {9, 4}, {4, 7}}) {
        const int bw = (w + 3) / 4, bh = (h + 3) / 4;
        Bytes blocks;
        for (int k = 0; k < bw * bh; ++k) {
            const uint8_t c = uint8_t(0x21 * (k + 1));
            blocks.insert(blocks.end(), {c, 0, c, 0, 0, 0, 0, 0});
        }
        const uint32_t step = uint32_t(4 * w + 12);
        vqcjtest::Guarded dst(step * uint32_t(h));
        ASSERT_EQ(vqciTextureDecodeBlockToRGBA_DXT1_8u_C1C4R(blocks.data(), dst.data(), step, {w, h}), vqcStatusOk);
        for (int y = 0; y < h; ++y)
            for (uint32_t x = 0; x < step; ++x) {
                const uint8_t got = dst.data()[uint32_t(y) * step + x];
                if (x >= uint32_t(4 * w)) {
                    ASSERT_EQ(got, 0xA5) << w << "x" << h;
                } else if (x % 4 == 2) {
                    const int k = (y / 4) * bw + int(x / 16);
                    const int b5 = (0x21 * (k + 1)) & 31;
                    ASSERT_EQ(got, (b5 << 3) | (b5 >> 2)) << w << "x" << h << " at " << x << "," << y;
                }
            }
        EXPECT_TRUE(dst.guardsIntact());
    }
}

// Pointers first, then a zero step (the only step refused), then the size.
TEST(TextureChecks, OrderPointerStepSize) {
    uint8_t buf[64] = {};
    for (Dec f : {vqciTextureDecodeBlockToRGBA_DXT1_8u_C1C4R, vqciTextureDecodeBlockToRGBA_DXT3_8u_C1C4R,
                  vqciTextureDecodeBlockToRGBA_DXT5_8u_C1C4R, vqciTextureDecodeBlock_BC4_8u_C1R,
                  vqciTextureDecodeBlockToRG_BC5_8u_C1C2R, vqciTextureDecodeBlockToRGBA_BC7_8u_C1C4R})
        EXPECT_EQ(Bytes({uint8_t(-f(nullptr, buf, 0, {0, 0})), uint8_t(-f(buf, buf, 0, {0, 1})), uint8_t(-f(buf, buf, 1, {1, 0})),
                         uint8_t(f(buf, buf, 0xFFFFFFFFu, {1, 1}))}),
                  Bytes({8, 14, 6, 0}));
    for (Enc f : {vqciTextureEncodeBlockFromRGBA_DXT1_8u_C4C1R, vqciTextureEncodeBlockFromRGBA_DXT3_8u_C4C1R,
                  vqciTextureEncodeBlockFromRGBA_DXT5_8u_C4C1R, vqciTextureEncodeBlock_BC4_8u_C1R,
                  vqciTextureEncodeBlockFromRG_BC5_8u_C2C1R, vqciTextureEncodeBlockFromYCoCg_DXT5_8u_C3C1R})
        EXPECT_EQ(Bytes({uint8_t(-f(buf, 0, {0, 0}, nullptr)), uint8_t(-f(buf, 0, {-1, 0}, buf)), uint8_t(-f(buf, 4, {0, 1}, buf))}),
                  Bytes({8, 14, 6}));
    auto* d16 = reinterpret_cast<Vqc16s*>(buf);
    EXPECT_EQ(vqciTextureDecodeBlockToRGB_BC6_16s_C1C3R(buf, nullptr, 0, {0, 0}), vqcStatusNullPtr);
    EXPECT_EQ(vqciTextureDecodeBlockToRGB_BC6_16s_C1C3R(buf, d16, 0, {0, 0}), vqcStatusBadStep);
    EXPECT_EQ(vqciTextureDecodeBlockToRGB_BC6_16u_C1C3R(buf, reinterpret_cast<Vqc16u*>(buf), 8, {1, 0}), vqcStatusBadSize);
    int32_t err = 0;
    EXPECT_EQ(vqciTextureEncodeBlock4x4FromRGBA_BC7_8u_C4C1R(buf, 0, buf, nullptr, 8), vqcStatusNullPtr);
    EXPECT_EQ(vqciTextureEncodeBlock4x4FromRGBA_BC7_8u_C4C1R(buf, 0, buf, &err, 8), vqcStatusBadStep);
    EXPECT_EQ(vqciTextureEncodeBlock4x4FromRGBA_BC7_8u_C4C1R(buf, 1, buf, &err, 8), vqcStatusBadMode);
}

static Bytes encode(Enc f, const Bytes& px, int bpp, int w, int h, int blockBytes) {
    Bytes out(size_t((w + 3) / 4) * size_t((h + 3) / 4) * size_t(blockBytes), 0xEE);
    EXPECT_EQ(f(px.data(), uint32_t(w * bpp), {w, h}, out.data()), vqcStatusOk);
    return out;
}

TEST(TextureDxtEncode, EndpointsIndicesAndValueBlocks) {
    // White, black and mid-grey: box 0..255 inset to 15..240, stored as
    // 0xF79E / 0x0861; palette 247/243, 8/12, 167/166, 87/89 gives the
    // indices 0, 1 and 2 by the comparison mesh.
    Bytes px(64);
    for (int i = 0; i < 16; ++i) {
        const uint8_t v = i % 3 == 0 ? 255 : i % 3 == 1 ? 0 : 128;
        px[4 * i] = px[4 * i + 1] = px[4 * i + 2] = v;
        px[4 * i + 3] = uint8_t(i * 17);
    }
    uint32_t idx = 0;
    for (int i = 0; i < 16; ++i) idx |= uint32_t(i % 3) << (2 * i);
    const Bytes colour = {0x9E, 0xF7, 0x61, 0x08, uint8_t(idx), uint8_t(idx >> 8), uint8_t(idx >> 16), uint8_t(idx >> 24)};
    EXPECT_EQ(encode(vqciTextureEncodeBlockFromRGBA_DXT1_8u_C4C1R, px, 4, 4, 4, 8), colour);
    // DXT3 keeps the top nibble of alpha; DXT5 stores the full range as 240, 15.
    Bytes d3 = encode(vqciTextureEncodeBlockFromRGBA_DXT3_8u_C4C1R, px, 4, 4, 4, 16);
    EXPECT_EQ(d3[0], 0x10);
    EXPECT_EQ(d3[7], 0xFE);
    EXPECT_EQ(Bytes(d3.begin() + 8, d3.end()), colour);
    Bytes d5 = encode(vqciTextureEncodeBlockFromRGBA_DXT5_8u_C4C1R, px, 4, 4, 4, 16);
    EXPECT_EQ(Bytes({d5[0], d5[1]}), Bytes({240, 15}));
    Bytes back(64);
    ASSERT_EQ(vqciTextureDecodeBlockToRGBA_DXT5_8u_C1C4R(d5.data(), back.data(), 16, {4, 4}), vqcStatusOk);
    for (int i = 0; i < 16; ++i) EXPECT_LE(std::abs(back[4 * i + 3] - i * 17), 18) << i;
    // Flat values: a0 == a1 and every index 1; a range of 15 keeps its ends.
    Bytes flat(16, 77), narrow(16, 100);
    narrow[5] = 115;
    EXPECT_EQ(encode(vqciTextureEncodeBlock_BC4_8u_C1R, flat, 1, 4, 4, 8), Bytes({77, 77, 0x49, 0x92, 0x24, 0x49, 0x92, 0x24}));
    const Bytes n4 = encode(vqciTextureEncodeBlock_BC4_8u_C1R, narrow, 1, 4, 4, 8);
    EXPECT_EQ(Bytes({n4[0], n4[1]}), Bytes({115, 100}));
}

// A partial image encodes exactly as the image padded by repeating the last
// pixel of each row and then the last row.
TEST(TextureDxtEncode, PartialBlocksReplicate) {
    const Bytes src = vqcjtest::randomBytes(5 * 7 * 4, 5);
    const struct {
        Enc f;
        int bpp, block;
    } cases[] = {{vqciTextureEncodeBlockFromRGBA_DXT1_8u_C4C1R, 4, 8}, {vqciTextureEncodeBlockFromRGBA_DXT3_8u_C4C1R, 4, 16},
                 {vqciTextureEncodeBlockFromRGBA_DXT5_8u_C4C1R, 4, 16}, {vqciTextureEncodeBlock_BC4_8u_C1R, 1, 8},
                 {vqciTextureEncodeBlockFromRG_BC5_8u_C2C1R, 2, 16}, {vqciTextureEncodeBlockFromYCoCg_DXT5_8u_C3C1R, 3, 16}};
    for (const auto& c : cases)
        for (auto [w, h] : {std::pair{5, 5}, {7, 3}, {1, 1}}) {
            // The same image padded to 8x8 by hand: pixel (x, y) repeats the
            // last valid pixel and row of its own block.
            Bytes padded(size_t(64 * c.bpp));
            for (int y = 0; y < 8; ++y)
                for (int x = 0; x < 8; ++x) {
                    const int sx = std::min(x, std::min(w - 1, x / 4 * 4 + 3)), sy = std::min(y, std::min(h - 1, y / 4 * 4 + 3));
                    std::memcpy(&padded[size_t((y * 8 + x) * c.bpp)], &src[size_t((sy * w + sx) * c.bpp)], size_t(c.bpp));
                }
            const Bytes all = encode(c.f, padded, c.bpp, 8, 8, c.block);
            const int bw = (w + 3) / 4, bh = (h + 3) / 4;
            Bytes want;
            for (int r = 0; r < bh; ++r) want.insert(want.end(), all.begin() + 2 * r * c.block, all.begin() + (2 * r + bw) * c.block);
            EXPECT_EQ(encode(c.f, Bytes(src.begin(), src.begin() + w * h * c.bpp), c.bpp, w, h, c.block), want)
                << c.bpp << "/" << c.block << " " << w << "x" << h;
        }
}

static Bytes ycocg(std::function<void(int i, uint8_t* p)> fill) {
    Bytes px(48);
    for (int i = 0; i < 16; ++i) fill(i, &px[size_t(3 * i)]);
    return encode(vqciTextureEncodeBlockFromYCoCg_DXT5_8u_C3C1R, px, 3, 4, 4, 16);
}

TEST(TextureYCoCg, ScaleInsetAndDiagonal) {
    // Flat at 128: scale 4 (blue field 3), inset -7 widens the box to
    // 128/127, expanded to Co 132/123 and Cg 130/125; luma 90 stored exactly.
    Bytes b = ycocg([](int, uint8_t* p) { p[0] = 90, p[1] = 128, p[2] = 128; });
    EXPECT_EQ(b, Bytes({90, 90, 0x49, 0x92, 0x24, 0x49, 0x92, 0x24, 0x03, 0x84, 0xE3, 0x7B, 0xAA, 0xAA, 0xAA, 0xAA}));
    // Scale from the largest chroma distance: 31 -> 4, 32 -> 2, 64 -> 1.
    for (auto [lo, field] : {std::pair{97, 3}, {96, 1}, {64, 0}}) {
        const int l = lo;
        b = ycocg([l](int i, uint8_t* p) { p[0] = 9, p[1] = uint8_t(i ? 128 : l), p[2] = 128; });
        EXPECT_EQ(b[8] & 31, field) << lo;
        EXPECT_EQ(b[10] & 31, field) << lo;
    }
    // Co in 0..3 at scale 1: the low inset sum is negative and wraps to a
    // field of all ones.
    b = ycocg([](int i, uint8_t* p) { p[0] = 9, p[1] = uint8_t(i & 3), p[2] = 128; });
    EXPECT_EQ(b[9] >> 3, 0);
    EXPECT_EQ(b[11] >> 3, 31);
    // More than 8 pixels across the diagonal exchange the Cg extremes; 8 do not.
    for (int across : {9, 8}) {
        b = ycocg([across](int i, uint8_t* p) {
            p[0] = 9, p[1] = i % 2 ? 156 : 100;
            p[2] = uint8_t((i < across) == (i % 2 == 1) ? 100 : 156);
        });
        const int cg0 = ((b[8] | b[9] << 8) >> 5) & 63, cg1 = ((b[10] | b[11] << 8) >> 5) & 63;
        EXPECT_EQ(cg0 < cg1, across > 8) << across;
    }
}

// The vector colour and value indices on every SIMD target write the plain
// routines' blocks, on noise and on grey noise (many equal distances).
TEST(TextureDxtEncode, EveryTargetWritesTheBaselineBlocks) {
    Bytes img = vqcjtest::randomBytes(64 * 32 * 4, 9);
    for (size_t i = 0; i < img.size() / 2; i += 4) img[i + 1] = img[i + 2] = img[i];  // grey half: many equal distances
    const std::pair<Enc, int> encs[] = {{vqciTextureEncodeBlockFromRGBA_DXT1_8u_C4C1R, 4},
                                        {vqciTextureEncodeBlockFromRGBA_DXT3_8u_C4C1R, 4},
                                        {vqciTextureEncodeBlockFromRGBA_DXT5_8u_C4C1R, 4},
                                        {vqciTextureEncodeBlock_BC4_8u_C1R, 1},
                                        {vqciTextureEncodeBlockFromRG_BC5_8u_C2C1R, 2},
                                        {vqciTextureEncodeBlockFromYCoCg_DXT5_8u_C3C1R, 3}};
    for (auto [f, bpp] : encs)
        vqcjtest::expectSameOnEveryTarget([&] { return encode(f, img, bpp, 63, 31, 16); }, "encoder " + std::to_string(bpp));
}
