#include <gtest/gtest.h>
#include <vqcj.h>

#include <random>

#include "support/mcu_ref.h"
#include "support/simd.h"
#include "support/testutil.h"

using vqcjtest::McuBlocks;
using vqcjtest::McuForm;
using vqcjtest::mcuForms;

namespace {

// Random MCUs, then the corners: flat extremes, pure blue and red (chroma
// +128), yellow and cyan (the negative ends), and alternating extremes.
std::vector<std::vector<uint8_t>> pixelCases(size_t bytes) {
    std::vector<std::vector<uint8_t>> cases;
    for (uint32_t s = 0; s < 40; ++s) cases.push_back(vqcjtest::randomBytes(bytes, 700 + s));
    const uint8_t colours[][3] = {{0, 0, 0}, {255, 255, 255}, {0, 0, 255}, {255, 0, 0}, {255, 255, 0}, {0, 255, 255}, {0, 255, 0}};
    for (const auto& c : colours) {
        std::vector<uint8_t> b(bytes);
        for (size_t i = 0; i < bytes; ++i) b[i] = c[i % 3];
        cases.push_back(b);
    }
    for (size_t period : {1, 3}) {  // bytes, then three-byte pixels, alternating 0 and 255
        std::vector<uint8_t> b(bytes);
        for (size_t i = 0; i < bytes; ++i) b[i] = i / period % 2 ? 255 : 0;
        cases.push_back(b);
    }
    return cases;
}

// Blocks for the inverse: wide random values (clamped on input), the ends of
// 16 bits in every combination of planes, and the forward result of the
// pixel cases.
std::vector<std::vector<Vqc16s>> blockCases(const McuForm& f) {
    std::vector<std::vector<Vqc16s>> cases;
    std::mt19937 rng(31);
    for (int s = 0; s < 40; ++s) {
        std::vector<Vqc16s> v(f.blockValues());
        std::uniform_int_distribution<int> d(s < 20 ? -140 : -32768, s < 20 ? 140 : 32767);
        for (auto& x : v) x = Vqc16s(d(rng));
        cases.push_back(v);
    }
    // Every corner of the 16-bit range in Y (and K), Cb and Cr.
    const size_t luma = size_t(64) * f.h * f.v;
    for (int bits = 0; bits < 8; ++bits) {
        std::vector<Vqc16s> v(f.blockValues());
        for (size_t i = 0; i < v.size(); ++i) {
            const int plane = i < luma || i >= luma + 128 ? 0 : i < luma + 64 ? 1 : 2;
            v[i] = Vqc16s(bits >> plane & 1 ? 32767 : -32768);
        }
        cases.push_back(v);
    }
    const int step = f.width() * f.bytesPerPixel();
    for (const auto& px : pixelCases(size_t(step) * f.height())) cases.push_back(vqcjtest::mcuFwdReference(f, px.data(), step));
    return cases;
}

}  // namespace

// Every form on every SIMD target against the rules written out pixel by
// pixel; the MCU sits in a larger image (step wider than its rows) whose
// other bytes must stay untouched.
TEST(Mcu, ForwardMatchesRulesOnEveryTarget) {
    for (const McuForm& f : mcuForms()) {
        const int row = f.width() * f.bytesPerPixel(), step = row + 14;  // 16-bit pixels stay aligned
        for (const auto& px : pixelCases(size_t(row) * f.height())) {
            std::vector<uint8_t> src(size_t(step) * f.height(), 0xEE);
            for (int y = 0; y < f.height(); ++y) std::memcpy(&src[size_t(y) * step], &px[size_t(y) * row], row);
            const auto want = vqcjtest::mcuFwdReference(f, src.data(), step);
            vqcjtest::forEachSimdTarget([&](const char* target) {
                McuBlocks out(f);
                ASSERT_EQ(f.fwd(src.data(), step, out.p), vqcStatusOk);
                ASSERT_EQ(out.v, want) << f.name << " on " << target;
            });
        }
    }
}

TEST(Mcu, InverseMatchesRulesOnEveryTarget) {
    for (const McuForm& f : mcuForms()) {
        const int row = f.width() * f.bytesPerPixel(), step = row + 6;
        for (const auto& blocks : blockCases(f)) {
            McuBlocks in(f);
            in.v = blocks;
            const auto want = vqcjtest::mcuInvReference(f, in.p);
            vqcjtest::forEachSimdTarget([&](const char* target) {
                std::vector<uint8_t> out(size_t(step) * f.height(), 0xEE);
                ASSERT_EQ(f.inv(in.p, out.data(), step), vqcStatusOk);
                for (int y = 0; y < f.height(); ++y) {
                    ASSERT_EQ(std::memcmp(&out[size_t(y) * step], &want[size_t(y) * row], row), 0) << f.name << " row " << y << " on " << target;
                    for (int x = row; x < step; ++x) ASSERT_EQ(out[size_t(y) * step + x], 0xEE) << f.name;
                }
            });
        }
    }
}

// The same work done by the plain exports. Inverse: level shift of every
// block, then the planar 422/411 forms (or the four-channel form for 444,
// which shares their arithmetic). Forward 422: the fused four-channel form,
// whose chroma byte wraps to 0 where the unbiased value is +128.
TEST(Mcu, AgreesWithThePlainExports) {
    const auto unbiased = [](Vqc8u v) { return v == 0 ? 128 : v - 128; };
    for (int fi = 0; fi < 6; ++fi) {
        const McuForm& f = mcuForms()[fi];
        const bool bgr = fi >= 3;
        const int w = f.width(), h = f.height();
        for (const auto& blocks : blockCases(f)) {
            McuBlocks in(f);
            in.v = blocks;
            std::vector<Vqc8u> y(size_t(w) * h), cb(64), cr(64), want(size_t(w) * h * 4), got(size_t(w) * h * 3);
            for (int b = 0; b < f.h * f.v; ++b)
                ASSERT_EQ(vqciAdd128_JPEG_16s8u_C1R(in.p[0] + 64 * b, 16, &y[b / f.h * 8 * w + b % f.h * 8], w, {8, 8}), 0);
            ASSERT_EQ(vqciAdd128_JPEG_16s8u_C1R(in.p[1], 16, cb.data(), 8, {8, 8}), 0);
            ASSERT_EQ(vqciAdd128_JPEG_16s8u_C1R(in.p[2], 16, cr.data(), 8, {8, 8}), 0);
            const Vqc8u* planes[3] = {y.data(), cb.data(), cr.data()};
            const int32_t steps[3] = {w, 8, 8};
            const auto plain = f.h == 1 ? (bgr ? vqciYCbCrToBGR_JPEG_8u_P3C4R : vqciYCbCrToRGB_JPEG_8u_P3C4R)
                                        : nullptr;
            VqcStatus st;
            if (plain) st = plain(planes, w, want.data(), 4 * w, {w, h}, 0);
            else if (f.v == 1) st = (bgr ? vqciYCbCr422ToBGR_JPEG_8u_P3C4R : vqciYCbCr422ToRGB_JPEG_8u_P3C4R)(planes, steps, want.data(), 4 * w, {w, h}, 0);
            else st = (bgr ? vqciYCbCr411ToBGR_JPEG_8u_P3C4R : vqciYCbCr411ToRGB_JPEG_8u_P3C4R)(planes, steps, want.data(), 4 * w, {w, h}, 0);
            ASSERT_EQ(st, 0);
            ASSERT_EQ(f.inv(in.p, got.data(), 3 * w), 0);
            for (int i = 0; i < w * h * 3; ++i) ASSERT_EQ(got[i], want[i / 3 * 4 + i % 3]) << f.name << " byte " << i;
        }
        if (f.h != 2 || f.v != 1) continue;
        for (const auto& px : pixelCases(size_t(w) * h * 3)) {
            std::vector<Vqc8u> px4(size_t(w) * h * 4), y(size_t(w) * h), cb(64), cr(64);
            for (int i = 0; i < w * h; ++i) std::memcpy(&px4[4 * i], &px[3 * i], 3);
            Vqc8u* planes[3] = {y.data(), cb.data(), cr.data()};
            const int32_t steps[3] = {w, 8, 8};
            ASSERT_EQ((bgr ? vqciBGRToYCbCr422_JPEG_8u_C4P3R : vqciRGBToYCbCr422_JPEG_8u_C4P3R)(px4.data(), 4 * w, planes, steps, {w, h}), 0);
            McuBlocks out(f);
            ASSERT_EQ(f.fwd(px.data(), 3 * w, out.p), 0);
            for (int i = 0; i < w * h; ++i) ASSERT_EQ(out.p[0][i % w / 8 * 64 + i / w * 8 + i % 8], y[i] - 128) << f.name;
            for (int i = 0; i < 64; ++i) {
                ASSERT_EQ(out.p[1][i], unbiased(cb[i])) << f.name;
                ASSERT_EQ(out.p[2][i], unbiased(cr[i])) << f.name;
            }
        }
    }
}

// Pointer, pointer array, each entry, then the step; nothing is written on refusal.
TEST(Mcu, CheckOrder) {
    for (const McuForm& f : mcuForms()) {
        McuBlocks blocks(f);
        std::vector<uint8_t> px(size_t(f.width()) * f.bytesPerPixel() * f.height(), 0x33);
        const int step = f.width() * f.bytesPerPixel();
        EXPECT_EQ(f.fwd(nullptr, 0, nullptr), -8) << f.name;
        EXPECT_EQ(f.fwd(px.data(), 0, nullptr), -8) << f.name;
        EXPECT_EQ(f.inv(nullptr, nullptr, 0), -8) << f.name;
        EXPECT_EQ(f.inv(blocks.p, nullptr, 0), -8) << f.name;
        EXPECT_EQ(f.inv(nullptr, px.data(), 0), -8) << f.name;
        for (int k = 0; k < f.planes(); ++k) {
            Vqc16s* saved = blocks.p[k];
            blocks.p[k] = nullptr;
            EXPECT_EQ(f.fwd(px.data(), 0, blocks.p), -8) << f.name << " entry " << k;
            EXPECT_EQ(f.inv(blocks.p, px.data(), 0), -8) << f.name << " entry " << k;
            blocks.p[k] = saved;
        }
        EXPECT_EQ(f.fwd(px.data(), 0, blocks.p), -14) << f.name;
        EXPECT_EQ(f.fwd(px.data(), -step, blocks.p), -14) << f.name;
        EXPECT_EQ(f.inv(blocks.p, px.data(), 0), -14) << f.name;
        EXPECT_EQ(blocks.v, McuBlocks(f).v) << f.name;
        EXPECT_EQ(px, std::vector<uint8_t>(px.size(), 0x33)) << f.name;
    }
}

// ---- Reduced inverse DCTs ---------------------------------------------------

namespace {

using Idct = VqcStatus (*)(const Vqc16s*, Vqc8u*, int32_t, const Vqc16u*);

// The corner form against the full inverse on the block zeroed outside the
// n x n corner; the corner form gets the block with noise outside it.
void expectCorner(Idct corner, int n, const Vqc16s* block, const Vqc16u* table) {
    Vqc16s zeroed[64] = {};
    for (int i = 0; i < 64; ++i) zeroed[i] = i / 8 < n && i % 8 < n ? block[i] : 0;
    Vqc8u want[8 * 9], got[8 * 9];
    std::memset(want, 0xEE, sizeof want), std::memset(got, 0xEE, sizeof got);
    ASSERT_EQ(vqciDCTQuantInv8x8LS_JPEG_16s8u_C1R(zeroed, want, 9, table), 0);
    ASSERT_EQ(corner(block, got, 9, table), 0);
    ASSERT_EQ(std::memcmp(want, got, sizeof want), 0) << n << "x" << n << " block from DC " << block[0];
}

}  // namespace

TEST(ReducedIdct, CornerFormsEqualTheFullInverseOnEveryTarget) {
  vqcjtest::forEachSimdTarget([&](const char*) {
    std::mt19937 rng(5);
    Vqc16s block[64];
    for (auto& v : block) v = Vqc16s(rng());
    std::vector<Vqc16u> ones(64, 1), tables[3] = {ones, ones, ones};
    for (int i = 0; i < 64; ++i) tables[1][i] = Vqc16u(1 + i * 7 % 120), tables[2][i] = Vqc16u(rng());
    tables[2][0] = 0xFFFF;  // read as -1
    // Every DC value with three tables: wraps between the passes, saturation.
    for (const auto& t : tables)
        for (int dc = -32768; dc < 32768; ++dc) {
            block[0] = Vqc16s(dc);
            expectCorner(vqciDCTQuantInv8x8LS_1x1_JPEG_16s8u_C1R, 1, block, t.data());
            if (HasFailure()) return;
        }
    // Every 2x2 corner of values -8..7 under the first two tables.
    for (int t = 0; t < 2; ++t)
        for (int bits = 0; bits < 65536; ++bits) {
            for (int k = 0; k < 4; ++k) block[k / 2 * 8 + k % 2] = Vqc16s((bits >> (4 * k) & 15) - 8);
            expectCorner(vqciDCTQuantInv8x8LS_2x2_JPEG_16s8u_C1R, 2, block, tables[t].data());
            if (HasFailure()) return;
        }
    // 4x4 at random, from small to full-range values.
    for (int s = 0; s < 60000; ++s) {
        const int range = 1 << (4 + s % 12);
        for (int k = 0; k < 16; ++k) block[k / 4 * 8 + k % 4] = Vqc16s(int(rng() % (2 * range)) - range);
        expectCorner(vqciDCTQuantInv8x8LS_4x4_JPEG_16s8u_C1R, 4, block, tables[s % 3].data());
        if (HasFailure()) return;
    }
  });
}

// Flat blocks by hand: DC d with divisor 1 is d / 8 in every 4x4 and 2x2
// sample, plus 128, saturated; checks as the full inverse.
TEST(ReducedIdct, ScaledFormsByHandAndChecks) {
    const std::vector<Vqc16u> ones(64, 1);
    for (Idct f : {vqciDCTQuantInv8x8To4x4LS_JPEG_16s8u_C1R, vqciDCTQuantInv8x8To2x2LS_JPEG_16s8u_C1R}) {
        for (int dc : {0, 800, -1024, 1016, 2000, -3000}) {
            Vqc16s block[64] = {Vqc16s(dc)};
            Vqc8u out[4 * 5];
            std::memset(out, 0xEE, sizeof out);
            ASSERT_EQ(f(block, out, 5, ones.data()), 0);
            const int n = f == vqciDCTQuantInv8x8To4x4LS_JPEG_16s8u_C1R ? 4 : 2;
            for (int i = 0; i < 20; ++i)
                EXPECT_EQ(out[i], i / 5 < n && i % 5 < n ? std::clamp(dc / 8 + 128, 0, 255) : 0xEE) << dc << " at " << i;
        }
    }
    for (Idct f : {vqciDCTQuantInv8x8LS_1x1_JPEG_16s8u_C1R, vqciDCTQuantInv8x8LS_2x2_JPEG_16s8u_C1R,
                   vqciDCTQuantInv8x8LS_4x4_JPEG_16s8u_C1R, vqciDCTQuantInv8x8To4x4LS_JPEG_16s8u_C1R,
                   vqciDCTQuantInv8x8To2x2LS_JPEG_16s8u_C1R}) {
        Vqc16s b[64] = {};
        Vqc8u d[64];
        const Vqc16u t[64] = {};
        EXPECT_EQ(f(nullptr, nullptr, 0, nullptr), -8);
        EXPECT_EQ(f(b, nullptr, 0, nullptr), -8);
        EXPECT_EQ(f(b, d, 0, nullptr), -14);
        EXPECT_EQ(f(b, d, 8, nullptr), -8);
        EXPECT_EQ(f(b, d, 8, t), 0);
    }
}
