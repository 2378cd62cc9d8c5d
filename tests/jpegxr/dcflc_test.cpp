// DC shapes and the fixed-length layer by hand-worked streams, the low-pass
// scan's pairs and residuals, and the argument checks of every coder.
#include <gtest/gtest.h>

#include <vqcj.h>

#include <vector>

#include "jxrtest.h"

using jxrtest::Stream;

namespace {
VqciVLCState fresh() { return jxrtest::freshState(); }
}  // namespace

TEST(JpegxrDc, HandWorked420And444) {
    VqciVLCState s = fresh();
    Stream a;
    const int32_t one[] = {5, 1};  // run 5 in class 2: symbol 4 (0001) and one extra bit 0
    ASSERT_EQ(vqciVLCEncodeDC420_JPEGXR_32s1u(one, 1, &a.p, &a.buf, &a.n, &s), 0);
    EXPECT_EQ(a.bits(), "0010" "0" "0001" "0");
    // Indices 0, 4 and 5: a later run of 3 by the unary code, the fixed code, two plain bits.
    const int32_t three[] = {0, 1, 3, 1, 0, -1};
    Stream b;
    vqciVLCEncodeDC420_JPEGXR_32s1u(three, 3, &b.p, &b.buf, &b.n, &s);
    EXPECT_EQ(b.bits(), "100" "0" "001" "10" "0" "01");
    Stream r = Stream::of(b.bits());
    VqciVLCState d = fresh();
    int32_t out[6] = {9, 9, 9, 9, 9, 9}, np = -1;
    // Decoding from a state that saw the first block too.
    Stream first = Stream::of(a.bits());
    vqciVLCDecodeDC420_JPEGXR_1u32s(&first.p, &first.buf, &first.n, out, &np, &d);
    EXPECT_EQ(np, 1);
    EXPECT_EQ(std::vector<int32_t>(out, out + 6), (std::vector<int32_t>{0, 0, 0, 0, 0, 1}));
    vqciVLCDecodeDC420_JPEGXR_1u32s(&r.p, &r.buf, &r.n, out, &np, &d);
    EXPECT_EQ(np, 3);
    EXPECT_EQ(std::vector<int32_t>(out, out + 6), (std::vector<int32_t>{1, 0, 0, 0, 1, -1}));
    EXPECT_EQ(std::memcmp(&s, &d, sizeof s), 0);
    // A first run of 6 lands past index 5: the walk stops and *pNumPairs stays.
    const int32_t past[] = {6, 1};
    Stream c;
    vqciVLCEncodeDC420_JPEGXR_32s1u(past, 1, &c.p, &c.buf, &c.n, &s);
    Stream rc = Stream::of(c.bits());
    np = 42;
    EXPECT_EQ(vqciVLCDecodeDC420_JPEGXR_1u32s(&rc.p, &rc.buf, &rc.n, out, &np, &d), 0);
    EXPECT_EQ(np, 42);
    EXPECT_EQ(rc.used(), c.bits().size());  // the stream variables are still stored
    // 444: pairs from the low-pass scan go to scan 2's numbers; pDst[0] untouched.
    int32_t blk[16] = {0, 5, 0, 0, -2, 0, 0, 0, 1}, res[16], rl[32], n = 0;
    std::memset(res, 0x55, sizeof res);
    ASSERT_EQ(vqciVLCScan4x4DC_JPEGXR_32s(blk, 1, res, rl, &n, &s), 0);
    ASSERT_EQ(n, 2);
    EXPECT_EQ(std::vector<int32_t>(rl, rl + 4), (std::vector<int32_t>{0, 2, 0, -1}));
    EXPECT_EQ(res[1], 2);  // (5 AND 1) times 2
    EXPECT_EQ(res[4], 0);
    EXPECT_EQ(res[8], 5);  // 1 times 4, plus 1
    EXPECT_EQ(res[2], 0);
    vqciVLCScan4x4DC_JPEGXR_32s(blk, 0, res, rl, &n, &s);
    EXPECT_EQ(n, 3);
    EXPECT_EQ(std::vector<int32_t>(rl, rl + 6), (std::vector<int32_t>{0, 5, 0, -2, 2, 1}));
}

TEST(JpegxrFlc, HandWorkedFields) {
    int32_t blk[16] = {}, res[16] = {};
    Stream a;
    blk[2] = -4;  // (2, 0) goes first: a = 4, masked magnitude 0, sign still written
    ASSERT_EQ(vqciFLCEncode4x4_JPEGXR_32s1u_C1R(blk, 16, res, &a.p, &a.buf, &a.n, 2, 0, 0), 0);
    EXPECT_EQ(a.bits(), "001" + std::string(28, '0'));
    Stream b;
    blk[2] = -1, blk[1] = 1;  // numStream 0: the sign alone, zero gives no bits
    vqciFLCEncode4x4_JPEGXR_32s1u_C1R(blk, 16, res, &b.p, &b.buf, &b.n, 0, 0, 0);
    EXPECT_EQ(b.bits(), "10");
    Stream c;
    int16_t h[16] = {};
    h[2] = 13, h[1] = -2;  // trimStream 2: a of 3 and 0
    vqciFLCEncode4x4_JPEGXR_16s1u_C1R(h, 8, res, &c.p, &c.buf, &c.n, 1, 2, 0);
    EXPECT_EQ(c.bits(), "10" + std::string(14, '0'));
    // Residual words: the low bit says a sign follows.
    Stream d;
    res[5] = 3 * 4 + 1 + 2, res[1] = 2 * 2;
    vqciFLCEncode4x4_JPEGXR_32s1u_C1R(blk, 16, res, &d.p, &d.buf, &d.n, 2, 0, 1);
    EXPECT_EQ(d.bits(), "111" "10" + std::string(26, '0'));
    // Refining: x of -3 and 3 move away from zero by 2 with no sign read.
    Stream r = Stream::of("10" "10" "010" + std::string(24, '0'));
    int32_t x[16] = {};
    x[2] = -3, x[1] = 3;
    ASSERT_EQ(vqciFLCDecode4x4_JPEGXR_1u32s_C1IR(&r.p, &r.buf, &r.n, x, 16, 2, 1, 1), 0);
    EXPECT_EQ(x[2], -5);
    EXPECT_EQ(x[1], 5);
    EXPECT_EQ(x[7], 1);  // (3, 1) was zero: magnitude 1, then its sign 0
    // Plain: magnitude times quant with its sign; zero magnitude leaves the element.
    Stream p = Stream::of("101" "00" + std::string(26, '0'));
    int16_t y[16] = {7, 7, 7, 7, 7, 7, 7, 7, 7, 7, 7, 7, 7, 7, 7, 7};
    vqciFLCDecode4x4_JPEGXR_1u16s_C1IR(&p.p, &p.buf, &p.n, y, 8, 2, 3, 0);
    EXPECT_EQ(y[2], -6);
    EXPECT_EQ(y[1], 7);
    EXPECT_EQ(y[0], 7);
}

TEST(JpegxrCoding, CheckOrders) {
    VqciVLCState s = fresh();
    int32_t blk[16] = {}, res[16] = {}, rl[32] = {}, n = 0;
    int16_t h[16] = {};
    uint8_t mem[64];
    Vqc8u *p = mem, *nul = nullptr;
    uint32_t buf = 0, bits = 0, big = 33;
    struct Case { VqcStatus got, want; };
    const Case cases[] = {
        {vqciVLCGetStateSize_JPEGXR(nullptr), -8},
        {vqciVLCInit_JPEGXR(nullptr), -8},
        {vqciVLCAdapt_JPEGXR(nullptr, 5), -8},
        {vqciVLCScanReset_JPEGXR(&s, 3), -7},
        {vqciVLCScanReset_JPEGXR(&s, -1), -7},
        {vqciVLCScanSet_JPEGXR(&s, 3), -7},
        {vqciVLCScan4x4DC_JPEGXR_32s(blk, 16, res, rl, nullptr, &s), -8},
        {vqciVLCScan4x4DC_JPEGXR_32s(blk, 16, res, rl, &n, &s), -7},
        {vqciVLCScan4x4DC_JPEGXR_32s(nullptr, 15, res, rl, &n, nullptr), -8},
        {vqciVLCEncode4x4_JPEGXR_32s1u_C1R(blk, 16, 0, 16, &nul, &buf, &big, nullptr, &s), -8},
        {vqciVLCEncode4x4_JPEGXR_32s1u_C1R(blk, 16, 0, 16, &nul, &buf, &big, &n, &s), -8},
        {vqciVLCEncode4x4_JPEGXR_16s1u_C1R(h, 8, 0, 16, &p, &buf, &bits, &n, &s), -7},
        {vqciVLCEncode4x4Flex_JPEGXR_32s1u_C1R(blk, 16, 0, 0, 16, res, &p, &buf, &bits, &n, &s), -7},
        {vqciVLCEncode4x4Flex_JPEGXR_16s1u_C1R(h, 8, 0, 99, 99, nullptr, &p, &buf, &big, &n, &s), -8},
        {vqciVLCDecode4x4_JPEGXR_1u32s_C1R(&p, &buf, &big, 1, blk, 16, 0, nullptr, &s), -8},
        {vqciVLCDecode4x4_JPEGXR_1u16s_C1R(&nul, &buf, &big, 1, h, 8, 0, &n, &s), -8},
        {vqciVLCDecode4x4_JPEGXR_1u16s_C1R(&p, &buf, &big, 1, h, 8, 0, &n, &s), -7},
        {vqciVLCEncodeDC422_JPEGXR_32s1u(rl, 15, &p, &buf, &bits, &s), -7},
        {vqciVLCEncodeDC422_JPEGXR_32s1u(rl, -1, &p, &buf, &bits, &s), -7},
        {vqciVLCEncodeDC420_JPEGXR_32s1u(rl, 7, &p, &buf, &bits, &s), -7},
        {vqciVLCEncodeDC444_JPEGXR_32s1u(rl, 17, 0, &p, &buf, &bits, &s), -7},
        {vqciVLCEncodeDC444_JPEGXR_32s1u(nullptr, 17, 0, &p, &buf, &big, &s), -8},
        {vqciVLCDecodeDC444_JPEGXR_1u32s(&nul, &buf, &big, blk, 0, &n, &s), -8},
        {vqciVLCDecodeDC422_JPEGXR_1u32s(&p, &buf, &big, blk, &n, &s), -7},
        {vqciFLCEncode4x4_JPEGXR_32s1u_C1R(blk, 16, nullptr, &p, &buf, &bits, 1, 1, 1), -8},
        {vqciFLCEncode4x4_JPEGXR_32s1u_C1R(blk, 16, res, &p, &buf, &bits, 16, 0, 1), -7},
        {vqciFLCEncode4x4_JPEGXR_16s1u_C1R(h, 8, res, &p, &buf, &bits, 0, 16, 1), -7},
        {vqciFLCDecode4x4_JPEGXR_1u32s_C1IR(&nul, &buf, &big, blk, 16, 16, 1, 0), -8},
        {vqciFLCDecode4x4_JPEGXR_1u16s_C1IR(&p, &buf, &bits, h, 8, 16, 1, 0), -7},
    };
    for (size_t i = 0; i < sizeof cases / sizeof cases[0]; ++i) EXPECT_EQ(cases[i].got, cases[i].want) << i;
    EXPECT_EQ(p, mem);
    // The limits themselves pass; the 444 encoder does not test *ppBitStream
    // and takes a negative count, coding one pair.
    rl[1] = 1;
    EXPECT_EQ(vqciVLCEncodeDC444_JPEGXR_32s1u(rl, -3, 0, &nul, &buf, &bits, &s), 0);
    EXPECT_EQ(vqciVLCEncodeDC420_JPEGXR_32s1u(rl, 6, &p, &buf, &bits, &s), 0);
    EXPECT_EQ(vqciVLCEncodeDC422_JPEGXR_32s1u(rl, 14, &p, &buf, &bits, &s), 0);
    EXPECT_EQ(vqciVLCScan4x4DC_JPEGXR_32s(blk, 15, res, rl, &n, &s), 0);
    EXPECT_EQ(vqciFLCEncode4x4_JPEGXR_16s1u_C1R(h, 8, res, &p, &buf, &bits, 15, 15, 0), 0);
}
