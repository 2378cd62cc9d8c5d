// Core transform: the fixed forms and the HDP names as the region forms, the
// 16s form against the 32s one, the flat block, the checks, and every SIMD
// target against the plain routine with exact inversion.
#include <gtest/gtest.h>

#include <vqcj.h>

#include <random>
#include <string>
#include <vector>

#include "support/simd.h"

namespace {

// Rows of 20 elements so that a wrong step or a write past the area shows.
constexpr int kPitch = 20;

template <class T, class Fixed, class Region>
void sameAsRegion(int w, int h, Fixed fixed, Region region) {
    std::mt19937 g(w + h);
    std::vector<T> a(kPitch * 16);
    for (auto& x : a) x = static_cast<T>(static_cast<int32_t>(g()) >> 21);
    auto b = a;
    ASSERT_EQ(fixed(a.data(), kPitch * sizeof(T)), vqcStatusOk);
    ASSERT_EQ(region(b.data(), kPitch * sizeof(T), VqciSize{w, h}), vqcStatusOk);
    EXPECT_EQ(a, b) << w << "x" << h;
}

}  // namespace

TEST(JpegxrPct, FixedFormsAndNames) {
#define VQCJ_FIXED(D, W, H)                                                                              \
    sameAsRegion<Vqc32s>(W, H, vqciPCT##D##W##x##H##_JPEGXR_32s_C1IR, vqciPCT##D##_JPEGXR_32s_C1IR);   \
    sameAsRegion<Vqc32s>(W, H, vqciPCT##D##W##x##H##_HDP_32s_C1IR, vqciPCT##D##_JPEGXR_32s_C1IR);      \
    sameAsRegion<Vqc16s>(W, H, vqciPCT##D##W##x##H##_JPEGXR_16s_C1IR, vqciPCT##D##_JPEGXR_16s_C1IR);   \
    sameAsRegion<Vqc32f>(W, H, vqciPCT##D##W##x##H##_JPEGXR_32f_C1IR, vqciPCT##D##_JPEGXR_32f_C1IR);   \
    sameAsRegion<Vqc32s>(W, H, [](Vqc32s* p, int32_t s) { return vqciPCT##D##_HDP_32s_C1IR(p, s, {W, H}); }, \
                         vqciPCT##D##_JPEGXR_32s_C1IR);
#define VQCJ_SIZES(D) VQCJ_FIXED(D, 16, 16) VQCJ_FIXED(D, 8, 16) VQCJ_FIXED(D, 8, 8)
    VQCJ_SIZES(Fwd)
    VQCJ_SIZES(Inv)
#undef VQCJ_SIZES
#undef VQCJ_FIXED
    // 16s gives the 32s results where nothing overflows.
    std::mt19937 g(1);
    std::vector<int32_t> w(kPitch * 16);
    for (auto& x : w) x = static_cast<int32_t>(g() % 4096) - 2048;
    std::vector<int16_t> h(w.begin(), w.end());
    vqciPCTFwd16x16_JPEGXR_32s_C1IR(w.data(), kPitch * 4);
    vqciPCTFwd16x16_JPEGXR_16s_C1IR(h.data(), kPitch * 2);
    EXPECT_EQ(std::vector<int32_t>(h.begin(), h.end()), w);
    // A flat block keeps four times its value at DC and nothing else.
    for (int32_t v : {1, -300, 123456}) {
        std::vector<int32_t> b(16, v), want(16, 0);
        want[0] = 4 * v;
        vqciPCTFwd_JPEGXR_32s_C1IR(b.data(), 16, {4, 4});
        EXPECT_EQ(b, want);
    }
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
    // The smallest steps pass.
    EXPECT_EQ(vqciPCTFwd_JPEGXR_32s_C1IR(p, 16, {4, 4}), vqcStatusOk);
    EXPECT_EQ(vqciPCTFwd8x8_JPEGXR_32s_C1IR(p, 32), vqcStatusOk);
}

// Every SIMD target against the plain routine: region widths 4 to 100 cover
// full vectors, vectors of four blocks and the plain tail; full-range data
// exercises the wrap of 32s and the cut of 16s, both inverted exactly; the
// float form is bit-exact across targets and inverts within rounding.
TEST(JpegxrPct, EveryTarget) {
    for (int w = 4; w <= 100; w += 4) {
        std::mt19937 g(w);
        const int h = 16, pitch = w + 4;
        std::vector<int32_t> src(size_t(pitch) * h);
        for (auto& v : src) v = static_cast<int32_t>(g());
        const std::vector<int16_t> src16(src.begin(), src.end());
        vqcjtest::expectSameOnEveryTarget(
            [&] {
                std::vector<int32_t> a = src;
                std::vector<int16_t> b = src16;
                std::vector<float> f(src.size()), f0;
                for (size_t i = 0; i < f.size(); ++i) f[i] = static_cast<float>(src[i] % 2048);
                f0 = f;
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
                EXPECT_EQ(b, src16);
                for (size_t i = 0; i < f.size(); ++i) EXPECT_NEAR(f[i], f0[i], 2e-3) << i;
                append(f);
                return out;
            },
            "core transform, width " + std::to_string(w));
    }
}
