// Core transform: exact reversibility, the flat block, the two 32s names as
// one function, the 16s form against the 32s one, the float form, checks.
#include <gtest/gtest.h>

#include <vqcj.h>

#include <random>
#include <string>
#include <vector>

#include "support/simd.h"

namespace {

struct Area {
    int w, h;
    VqcStatus (*fwd32)(Vqc32s*, int32_t), (*inv32)(Vqc32s*, int32_t), (*fwdHdp)(Vqc32s*, int32_t),
        (*invHdp)(Vqc32s*, int32_t), (*fwd16)(Vqc16s*, int32_t), (*inv16)(Vqc16s*, int32_t),
        (*fwdF)(Vqc32f*, int32_t), (*invF)(Vqc32f*, int32_t);
};
#define VQCJ_AREA(W, H)                                                                                      \
    {W, H, vqciPCTFwd##W##x##H##_JPEGXR_32s_C1IR, vqciPCTInv##W##x##H##_JPEGXR_32s_C1IR,                     \
     vqciPCTFwd##W##x##H##_HDP_32s_C1IR, vqciPCTInv##W##x##H##_HDP_32s_C1IR, vqciPCTFwd##W##x##H##_JPEGXR_16s_C1IR, \
     vqciPCTInv##W##x##H##_JPEGXR_16s_C1IR, vqciPCTFwd##W##x##H##_JPEGXR_32f_C1IR, vqciPCTInv##W##x##H##_JPEGXR_32f_C1IR}
const Area kAreas[] = {VQCJ_AREA(16, 16), VQCJ_AREA(8, 16), VQCJ_AREA(8, 8)};

// Rows of 20 elements so that a wrong step or a write past the area shows.
constexpr int kPitch = 20;

template <class T>
std::vector<T> randomPlane(std::mt19937& g, int32_t lo, int32_t hi) {
    std::vector<T> v(kPitch * 16);
    std::uniform_int_distribution<int32_t> d(lo, hi);
    for (auto& x : v) x = static_cast<T>(d(g));
    return v;
}

}  // namespace

TEST(JpegxrPct, FixedAreasRoundTripAndAgree) {
    std::mt19937 g(12);
    for (const Area& a : kAreas) {
        for (int it = 0; it < 300; ++it) {
            // Full 32-bit range: wrapping is exact both ways.
            auto v = randomPlane<int32_t>(g, INT32_MIN, INT32_MAX), hdp = v, orig = v;
            ASSERT_EQ(a.fwd32(v.data(), kPitch * 4), vqcStatusOk);
            ASSERT_EQ(a.fwdHdp(hdp.data(), kPitch * 4), vqcStatusOk);
            ASSERT_EQ(v, hdp);
            a.inv32(v.data(), kPitch * 4);
            a.invHdp(hdp.data(), kPitch * 4);
            ASSERT_EQ(v, orig);
            ASSERT_EQ(hdp, orig);
            // 16s: the 32s results where nothing overflows, exact inversion with wrap.
            for (int32_t lim : {2047, 32767}) {
                auto h = randomPlane<int16_t>(g, -lim - 1, lim), h0 = h;
                std::vector<int32_t> w(h.begin(), h.end());
                a.fwd16(h.data(), kPitch * 2);
                a.fwd32(w.data(), kPitch * 4);
                ASSERT_TRUE(lim == 32767 || std::vector<int32_t>(h.begin(), h.end()) == w);
                a.inv16(h.data(), kPitch * 2);
                ASSERT_EQ(h, h0);
            }
            // Float: the inverse undoes the forward within rounding.
            std::vector<float> f(orig.size());
            for (size_t i = 0; i < f.size(); ++i) f[i] = static_cast<float>(orig[i] >> 20);
            const auto f0 = f;
            a.fwdF(f.data(), kPitch * 4);
            a.invF(f.data(), kPitch * 4);
            for (size_t i = 0; i < f.size(); ++i) ASSERT_NEAR(f[i], f0[i], 2e-3) << i;
        }
    }
}

TEST(JpegxrPct, FlatBlockAndRegionOrder) {
    for (int32_t v : {0, 1, -1, 7, -300, 123456}) {
        std::vector<int32_t> b(16, v);
        ASSERT_EQ(vqciPCTFwd_JPEGXR_32s_C1IR(b.data(), 16, {4, 4}), vqcStatusOk);
        EXPECT_EQ(b[0], 4 * v);
        for (int i = 1; i < 16; ++i) EXPECT_EQ(b[i], 0);
        vqciPCTInv_JPEGXR_32s_C1IR(b.data(), 16, {4, 4});
        EXPECT_EQ(b, std::vector<int32_t>(16, v));
    }
    // A region is the fixed forms' block walk: 16x16 by region equals 16x16 fixed.
    std::mt19937 g(3);
    auto p = randomPlane<int16_t>(g, -999, 999), q = p;
    vqciPCTFwd_JPEGXR_16s_C1IR(p.data(), kPitch * 2, {16, 16});
    vqciPCTFwd16x16_JPEGXR_16s_C1IR(q.data(), kPitch * 2);
    EXPECT_EQ(p, q);
}

TEST(JpegxrPct, CheckOrder) {
    std::vector<int32_t> buf(16 * 16, 5);
    const auto keep = buf;
    int32_t* p = buf.data();
    struct Case { VqcStatus got, want; };
    const Case cases[] = {
        {vqciPCTFwd8x8_JPEGXR_32s_C1IR(nullptr, 0), vqcStatusNullPtr},
        {vqciPCTFwd8x8_JPEGXR_32s_C1IR(p, 31), vqcStatusBadStep},
        {vqciPCTInv16x16_JPEGXR_16s_C1IR(reinterpret_cast<Vqc16s*>(p), 31), vqcStatusBadStep},
        {vqciPCTFwd8x16_JPEGXR_32f_C1IR(reinterpret_cast<Vqc32f*>(p), 31), vqcStatusBadStep},
        {vqciPCTFwd_HDP_32s_C1IR(nullptr, 0, {0, 0}), vqcStatusNullPtr},
        {vqciPCTFwd_HDP_32s_C1IR(p, 0, {0, 4}), vqcStatusBadSize},
        {vqciPCTFwd_HDP_32s_C1IR(p, 19, {5, 5}), vqcStatusBadStep},  // the step before the multiple of 4
        {vqciPCTFwd_JPEGXR_32s_C1IR(p, 16, {4, 6}), vqcStatusBadSize},
        {vqciPCTInv_JPEGXR_16s_C1IR(reinterpret_cast<Vqc16s*>(p), 7, {4, 4}), vqcStatusBadStep},
    };
    for (const Case& c : cases) EXPECT_EQ(c.got, c.want);
    EXPECT_EQ(buf, keep);  // refusals write nothing
    // The step test is unsigned: a negative step walks upwards from the last row.
    EXPECT_EQ(vqciPCTFwd8x8_JPEGXR_32s_C1IR(p + 7 * 16, -64), vqcStatusOk);
    EXPECT_EQ(vqciPCTFwd_JPEGXR_32s_C1IR(p + 3 * 16, -64, {4, 4}), vqcStatusOk);
    EXPECT_EQ(vqciPCTFwd_JPEGXR_32s_C1IR(p, 16, {4, 4}), vqcStatusOk);  // smallest step
}

// Every SIMD target against the plain routine: region widths 4 to 100 cover
// full vectors, vectors of four blocks and the plain tail; full-range data
// exercises the wrap of 32s and the cut of 16s; the float form is bit-exact.
TEST(JpegxrPct, EveryTarget) {
    for (int w = 4; w <= 100; w += 4) {
        std::mt19937 g(w);
        const int h = 16, pitch = w + 4;
        std::vector<int32_t> src(size_t(pitch) * h);
        for (auto& v : src) v = static_cast<int32_t>(g());
        vqcjtest::expectSameOnEveryTarget(
            [&] {
                std::vector<int32_t> a = src;
                std::vector<int16_t> b(src.begin(), src.end());
                std::vector<float> f(src.size());
                for (size_t i = 0; i < f.size(); ++i) f[i] = static_cast<float>(src[i] % 100000);
                const VqciSize roi{w, h};
                vqciPCTFwd_JPEGXR_32s_C1IR(a.data(), pitch * 4, roi);
                vqciPCTFwd_JPEGXR_16s_C1IR(b.data(), pitch * 2, roi);
                vqciPCTFwd_JPEGXR_32f_C1IR(f.data(), pitch * 4, roi);
                std::vector<uint8_t> out;
                auto append = [&](const auto& v) {
                    const auto* b0 = reinterpret_cast<const uint8_t*>(v.data());
                    out.insert(out.end(), b0, b0 + v.size() * sizeof v[0]);
                };
                append(a), append(b), append(f);
                vqciPCTInv_JPEGXR_32s_C1IR(a.data(), pitch * 4, roi);
                vqciPCTInv_JPEGXR_16s_C1IR(b.data(), pitch * 2, roi);
                vqciPCTInv_JPEGXR_32f_C1IR(f.data(), pitch * 4, roi);
                EXPECT_EQ(a, src);
                append(b), append(f);
                return out;
            },
            "core transform, width " + std::to_string(w));
    }
}
