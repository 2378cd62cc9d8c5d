// Every member on random images against the reference arithmetic, through its
// own pixel layout: channel order, four channels, planes, packed words, inks,
// and the odd-size behaviour of the 422/411 forms.
#include <gtest/gtest.h>
#include <vqcj.h>

#include <functional>
#include <vector>

#include "colour_model.h"
#include "support/testutil.h"

namespace {

using vqcjtest::randomBytes;
using Bytes = std::vector<uint8_t>;

constexpr int W = 37, H = 7;  // odd both ways
constexpr uint8_t kFill = 0xA5;

// Four random planes of W x H, rows packed.
struct Img {
    Bytes p[4];
    explicit Img(uint32_t seed) {
        for (int k = 0; k < 4; ++k) p[k] = randomBytes(W * H, seed + k), planes[k] = p[k].data();
    }
    const Vqc8u* planes[4];
    uint8_t at(int k, int i) const { return p[k][i]; }
};

// Interleaves the planes named by order (-1: a constant byte) into pixels.
Bytes interleave(const Img& im, const std::vector<int>& order) {
    Bytes out;
    for (int i = 0; i < W * H; ++i)
        for (int k : order) out.push_back(k < 0 ? uint8_t(0x77) : im.at(k, i));
    return out;
}

struct Planes3 {
    Bytes p[4] = {Bytes(W * H, kFill), Bytes(W * H, kFill), Bytes(W * H, kFill), Bytes(W * H, kFill)};
    Vqc8u* planes[4] = {p[0].data(), p[1].data(), p[2].data(), p[3].data()};
};

// The RGB and BGR three-channel and planar forms are held against the peer
// (interop) and over every input (exhaustive); here the others.
TEST(ColourLayout, ForwardTableMembers) {
    const Img im(1);
    const Bytes bgr = interleave(im, {2, 1, 0}), cmyk = interleave(im, {0, 1, 2, 3});
    Planes3 d, e;
    Bytes y1(W * H), y2(W * H);
    const VqciSize sz{W, H};
    ASSERT_EQ(vqciBGRToY_JPEG_8u_C3C1R(bgr.data(), 3 * W, y1.data(), W, sz), 0);
    ASSERT_EQ(vqciRGBToY_JPEG_8u_P3C1R(im.planes, W, y2.data(), W, sz), 0);
    ASSERT_EQ(vqciCMYKToYCCK_JPEG_8u_C4P4R(cmyk.data(), 4 * W, d.planes, W, sz), 0);
    ASSERT_EQ(vqciCMYKToYCCK_JPEG_8u_P4R(im.planes, W, e.planes, W, sz), 0);
    for (int i = 0; i < W * H; ++i) {
        const int r = im.at(0, i), g = im.at(1, i), b = im.at(2, i);
        const model::Ycc ink = model::fwdTable(255 - r, 255 - g, 255 - b);
        for (const Planes3* o : {&d, &e}) {
            ASSERT_EQ((model::Ycc{o->p[0][i], o->p[1][i], o->p[2][i]}), ink) << i;
            ASSERT_EQ(o->p[3][i], im.at(3, i));
        }
        ASSERT_EQ(y1[i], model::fwdTable(r, g, b).y);
        ASSERT_EQ(y2[i], model::fwdTable(r, g, b).y);
    }
}

// Packed words: fields expanded by shifting, no bit replication; bit 15 of a
// 555 word is not read.
TEST(ColourLayout, ForwardPackedMembers) {
    const Bytes raw = randomBytes(2 * W * H, 9);
    std::vector<Vqc16u> px(W * H);
    for (int i = 0; i < W * H; ++i) px[i] = Vqc16u(raw[2 * i] | raw[2 * i + 1] << 8);
    using Fn = VqcStatus (*)(const Vqc16u*, int32_t, Vqc8u* const[3], int32_t, VqciSize);
    const struct {
        Fn fn;
        bool is565, redHigh;
    } members[] = {{vqciBGR555ToYCbCr_JPEG_16u8u_C3P3R, false, true},
                   {vqciBGR565ToYCbCr_JPEG_16u8u_C3P3R, true, true},
                   {vqciRGB555ToYCbCr_JPEG_16u8u_C3P3R, false, false},
                   {vqciRGB565ToYCbCr_JPEG_16u8u_C3P3R, true, false}};
    for (const auto& m : members) {
        Planes3 o;
        ASSERT_EQ(m.fn(px.data(), 2 * W, o.planes, W, {W, H}), 0);
        for (int i = 0; i < W * H; ++i) {
            const int hi = (px[i] >> (m.is565 ? 11 : 10) & 31) << 3, lo = (px[i] & 31) << 3;
            const int mid = m.is565 ? (px[i] >> 5 & 63) << 2 : (px[i] >> 5 & 31) << 3;
            const model::Ycc want = m.redHigh ? model::fwdTable(hi, mid, lo) : model::fwdTable(lo, mid, hi);
            ASSERT_EQ((model::Ycc{o.p[0][i], o.p[1][i], o.p[2][i]}), want) << m.is565 << m.redHigh << ' ' << i;
        }
    }
}

// Fused forms: Y per pixel, chroma from the pixel sums of each pair (422) or
// 2 x 2 group (411); the odd last column and row stay as they were.
TEST(ColourLayout, ForwardFusedMembers) {
    const Img im(3);
    using Fn = VqcStatus (*)(const Vqc8u*, int32_t, Vqc8u* const[3], const int32_t[3], VqciSize);
    const struct {
        Fn fn;
        int bpp;
        bool bgr;
        int v;
        uint32_t k;
    } members[] = {{vqciRGBToYCbCr422_JPEG_8u_C3P3R, 3, false, 1, 0xFFC000},
                   {vqciBGRToYCbCr422_JPEG_8u_C3P3R, 3, true, 1, 0xFF0000},
                   {vqciRGBToYCbCr422_JPEG_8u_C4P3R, 4, false, 1, 0xFF0000},
                   {vqciBGRToYCbCr422_JPEG_8u_C4P3R, 4, true, 1, 0xFF0000},
                   {vqciRGBToYCbCr411_JPEG_8u_C3P3R, 3, false, 2, 0x1FF8000},
                   {vqciBGRToYCbCr411_JPEG_8u_C3P3R, 3, true, 2, 0x1FF8000},
                   {vqciRGBToYCbCr411_JPEG_8u_C4P3R, 4, false, 2, 0x1FF8000},
                   {vqciBGRToYCbCr411_JPEG_8u_C4P3R, 4, true, 2, 0x1FF8000}};
    for (const auto& m : members) {
        std::vector<int> order = m.bgr ? std::vector<int>{2, 1, 0} : std::vector<int>{0, 1, 2};
        if (m.bpp == 4) order.push_back(-1);
        const Bytes src = interleave(im, order);
        Planes3 o;
        const int32_t steps[3] = {W, W, W};
        ASSERT_EQ(m.fn(src.data(), m.bpp * W, o.planes, steps, {W, H}), 35);
        for (int y = 0; y < H; ++y)
            for (int x = 0; x < W; ++x) {
                const int i = y * W + x;
                const bool done = x < W - 1 && y < H / m.v * m.v;
                const uint8_t want = done ? model::fwdTable(im.at(0, i), im.at(1, i), im.at(2, i)).y : kFill;
                ASSERT_EQ(o.p[0][i], want) << m.k << ' ' << x << ' ' << y;
            }
        for (int i = 0; i < H / m.v; ++i)
            for (int j = 0; j < W / 2 + 1; ++j) {
                uint32_t s[3] = {0, 0, 0};
                for (int v = 0; v < m.v; ++v)
                    for (int c = 0; c < 3; ++c)
                        s[c] += im.at(c, (m.v * i + v) * W + 2 * j) + (j < W / 2 ? im.at(c, (m.v * i + v) * W + 2 * j + 1) : 0);
                const model::Ycc want = j < W / 2 ? model::fusedChroma(s[0], s[1], s[2], m.k, m.v == 1 ? 17 : 18)
                                                  : model::Ycc{0, kFill, kFill};
                ASSERT_EQ(o.p[1][i * W + j], want.cb) << m.k << ' ' << i << ' ' << j;
                ASSERT_EQ(o.p[2][i * W + j], want.cr) << m.k << ' ' << i << ' ' << j;
            }
    }
}

}  // namespace

namespace {

model::Rgb pixelAt(const uint8_t* px, int bpp, int i, bool bgr) {
    const uint8_t* p = px + size_t(bpp) * i;
    return bgr ? model::Rgb{p[2], p[1], p[0]} : model::Rgb{p[0], p[1], p[2]};
}

TEST(ColourLayout, InverseFullRateMembers) {
    const Img im(5);
    const VqciSize sz{W, H};
    Bytes bgra(4 * W * H), cmyk(4 * W * H);
    Planes3 inks;
    ASSERT_EQ(vqciYCbCrToBGR_JPEG_8u_P3C4R(im.planes, W, bgra.data(), 4 * W, sz, 0x3C), 0);
    ASSERT_EQ(vqciYCCKToCMYK_JPEG_8u_P4C4R(im.planes, W, cmyk.data(), 4 * W, sz), 0);
    ASSERT_EQ(vqciYCCKToCMYK_JPEG_8u_P4R(im.planes, W, inks.planes, W, sz), 0);
    for (int i = 0; i < W * H; ++i) {
        const model::Rgb want = model::invTable(im.at(0, i), im.at(1, i), im.at(2, i));
        const model::Rgb ink{uint8_t(255 - want.r), uint8_t(255 - want.g), uint8_t(255 - want.b)};
        ASSERT_EQ(pixelAt(bgra.data(), 4, i, true), model::invMul(im.at(0, i), im.at(1, i), im.at(2, i))) << i;
        ASSERT_EQ(bgra[4 * i + 3], 0x3C);
        ASSERT_EQ(pixelAt(cmyk.data(), 4, i, false), ink) << i;
        ASSERT_EQ((model::Rgb{inks.p[0][i], inks.p[1][i], inks.p[2][i]}), ink) << i;
        ASSERT_EQ(cmyk[4 * i + 3], im.at(3, i));
        ASSERT_EQ(inks.p[3][i], im.at(3, i));
    }
}

// Packed words: the top bits of each saturated byte, cut, not rounded.
TEST(ColourLayout, InversePackedMembers) {
    const Img im(6);
    using Fn = VqcStatus (*)(const Vqc8u* const[3], int32_t, Vqc16u*, int32_t, VqciSize);
    const struct {
        Fn fn;
        bool is565, redHigh;
    } members[] = {{vqciYCbCrToBGR555_JPEG_8u16u_P3C3R, false, true},
                   {vqciYCbCrToBGR565_JPEG_8u16u_P3C3R, true, true},
                   {vqciYCbCrToRGB555_JPEG_8u16u_P3C3R, false, false},
                   {vqciYCbCrToRGB565_JPEG_8u16u_P3C3R, true, false}};
    for (const auto& m : members) {
        std::vector<Vqc16u> px(W * H);
        ASSERT_EQ(m.fn(im.planes, W, px.data(), 2 * W, {W, H}), 0);
        for (int i = 0; i < W * H; ++i) {
            const model::Rgb c = model::invTable(im.at(0, i), im.at(1, i), im.at(2, i));
            const int hi = m.redHigh ? c.r : c.b, lo = m.redHigh ? c.b : c.r;
            const int want = m.is565 ? (hi >> 3) << 11 | (c.g >> 2) << 5 | lo >> 3 : (hi >> 3) << 10 | (c.g >> 3) << 5 | lo >> 3;
            ASSERT_EQ(px[i], want) << m.is565 << m.redHigh << ' ' << i;
        }
    }
}

// Subsampled sources: chroma sample j serves pixels 2j and 2j+1 (and, in 411,
// rows 2i and 2i+1). Columns written: the even width, or the last pair whole.
TEST(ColourLayout, InverseSubsampledMembers) {
    const Img im(7);
    using Fn3 = VqcStatus (*)(const Vqc8u* const[3], const int32_t[3], Vqc8u*, int32_t, VqciSize);
    using Fn4 = VqcStatus (*)(const Vqc8u* const[3], const int32_t[3], Vqc8u*, int32_t, VqciSize, Vqc8u);
    const struct {
        Fn3 fn3;
        Fn4 fn4;
        bool bgr;
        int v, columns;
    } members[] = {{vqciYCbCr422ToRGB_JPEG_8u_P3C3R, nullptr, false, 1, W - 1},
                   {vqciYCbCr422ToBGR_JPEG_8u_P3C3R, nullptr, true, 1, W - 1},
                   {nullptr, vqciYCbCr422ToRGB_JPEG_8u_P3C4R, false, 1, W - 1},
                   {nullptr, vqciYCbCr422ToBGR_JPEG_8u_P3C4R, true, 1, W - 1},
                   {vqciYCbCr411ToRGB_JPEG_8u_P3C3R, nullptr, false, 2, W - 1},
                   {vqciYCbCr411ToBGR_JPEG_8u_P3C3R, nullptr, true, 2, W + 1},
                   {nullptr, vqciYCbCr411ToRGB_JPEG_8u_P3C4R, false, 2, W + 1},
                   {nullptr, vqciYCbCr411ToBGR_JPEG_8u_P3C4R, true, 2, W + 1}};
    const int32_t steps[3] = {W, W, W};  // Y rows of W, chroma rows padded to W
    for (const auto& m : members) {
        const int bpp = m.fn3 ? 3 : 4, stride = bpp * (W + 1);
        Bytes px(size_t(stride) * H, kFill);
        const VqcStatus st = m.fn3 ? m.fn3(im.planes, steps, px.data(), stride, {W, H})
                                   : m.fn4(im.planes, steps, px.data(), stride, {W, H}, 0x42);
        ASSERT_EQ(st, 35);
        for (int y = 0; y < H; ++y)
            for (int x = 0; x < W + 1; ++x) {
                const bool done = x < m.columns && y < H / m.v * m.v;
                const int c = (y / m.v) * W + x / 2, i = y * W + x;  // i may reach into the next row: read, as allowed
                const model::Rgb want = done ? model::invMul(im.at(0, i), im.at(1, c), im.at(2, c)) : model::Rgb{kFill, kFill, kFill};
                ASSERT_EQ(pixelAt(&px[y * stride], bpp, x, m.bgr), want) << m.v << ' ' << x << ' ' << y;
                if (bpp == 4) {
                    ASSERT_EQ(px[y * stride + 4 * x + 3], done ? 0x42 : kFill);
                }
            }
    }
}

// Y0, Cb, Y1, Cr: pairs while the column is below the width, no warning.
TEST(ColourLayout, InverseInterleaved422) {
    const Bytes src = randomBytes(2 * (W + 1) * H, 8);
    Bytes px(3 * (W + 1) * H, kFill);
    ASSERT_EQ(vqciYCbCr422ToRGB_JPEG_8u_C2C3R(src.data(), 2 * (W + 1), px.data(), 3 * (W + 1), {W, H}), 0);
    for (int y = 0; y < H; ++y)
        for (int x = 0; x < W + 1; ++x) {
            const uint8_t* s = &src[2 * (W + 1) * y + 4 * (x / 2)];
            const model::Rgb want = model::invTable(s[2 * (x & 1)], s[1], s[3]);
            ASSERT_EQ(pixelAt(px.data(), 3, y * (W + 1) + x, false), want) << x << ' ' << y;
        }
}

}  // namespace
