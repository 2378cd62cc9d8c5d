// Every dispatched colour member on every SIMD target against the baseline:
// widths 1..70 (each vector width, its tails and the fused forms' odd
// columns), heights 1, 3 and 5, steps well beyond the rows, random bytes.
// The destination is compared whole, the bytes between rows included.
#include <gtest/gtest.h>
#include <vqcj.h>

#include <functional>
#include <string>
#include <vector>

#include "support/simd.h"
#include "support/testutil.h"

namespace {

using Bytes = std::vector<uint8_t>;

// Four source and four destination planes of `step` bytes a row; the
// interleaved layouts use plane 0 alone.
struct Shape {
    const Vqc8u* const* s;
    Vqc8u* const* d;
    int32_t step;
    VqciSize roi;
    const int32_t* steps() const {
        static thread_local int32_t st[3];
        st[0] = st[1] = st[2] = step;
        return st;
    }
    const Vqc16u* s16() const { return reinterpret_cast<const Vqc16u*>(s[0]); }
    Vqc16u* d16() const { return reinterpret_cast<Vqc16u*>(d[0]); }
};
using Op = std::function<VqcStatus(const Shape&)>;

struct Member {
    const char* name;
    Op op;
};

#define M(fn, ...) {#fn, [](const Shape& a) { return fn(__VA_ARGS__); }}
const Member kMembers[] = {
    M(vqciRGBToYCbCr_JPEG_8u_C3P3R, a.s[0], a.step, a.d, a.step, a.roi),
    M(vqciBGRToYCbCr_JPEG_8u_C3P3R, a.s[0], a.step, a.d, a.step, a.roi),
    M(vqciRGBToYCbCr_JPEG_8u_C4P3R, a.s[0], a.step, a.d, a.step, a.roi),
    M(vqciBGRToYCbCr_JPEG_8u_C4P3R, a.s[0], a.step, a.d, a.step, a.roi),
    M(vqciRGBToYCbCr_JPEG_8u_P3R, a.s, a.step, a.d, a.step, a.roi),
    M(vqciBGR555ToYCbCr_JPEG_16u8u_C3P3R, a.s16(), a.step, a.d, a.step, a.roi),
    M(vqciBGR565ToYCbCr_JPEG_16u8u_C3P3R, a.s16(), a.step, a.d, a.step, a.roi),
    M(vqciRGB555ToYCbCr_JPEG_16u8u_C3P3R, a.s16(), a.step, a.d, a.step, a.roi),
    M(vqciRGB565ToYCbCr_JPEG_16u8u_C3P3R, a.s16(), a.step, a.d, a.step, a.roi),
    M(vqciRGBToY_JPEG_8u_C3C1R, a.s[0], a.step, a.d[0], a.step, a.roi),
    M(vqciBGRToY_JPEG_8u_C3C1R, a.s[0], a.step, a.d[0], a.step, a.roi),
    M(vqciRGBToY_JPEG_8u_P3C1R, a.s, a.step, a.d[0], a.step, a.roi),
    M(vqciRGBToYCbCr422_JPEG_8u_C3P3R, a.s[0], a.step, a.d, a.steps(), a.roi),
    M(vqciBGRToYCbCr422_JPEG_8u_C3P3R, a.s[0], a.step, a.d, a.steps(), a.roi),
    M(vqciRGBToYCbCr422_JPEG_8u_C4P3R, a.s[0], a.step, a.d, a.steps(), a.roi),
    M(vqciBGRToYCbCr422_JPEG_8u_C4P3R, a.s[0], a.step, a.d, a.steps(), a.roi),
    M(vqciRGBToYCbCr411_JPEG_8u_C3P3R, a.s[0], a.step, a.d, a.steps(), a.roi),
    M(vqciBGRToYCbCr411_JPEG_8u_C3P3R, a.s[0], a.step, a.d, a.steps(), a.roi),
    M(vqciRGBToYCbCr411_JPEG_8u_C4P3R, a.s[0], a.step, a.d, a.steps(), a.roi),
    M(vqciBGRToYCbCr411_JPEG_8u_C4P3R, a.s[0], a.step, a.d, a.steps(), a.roi),
    M(vqciCMYKToYCCK_JPEG_8u_C4P4R, a.s[0], a.step, a.d, a.step, a.roi),
    M(vqciCMYKToYCCK_JPEG_8u_P4R, a.s, a.step, a.d, a.step, a.roi),
    M(vqciYCbCrToRGB_JPEG_8u_P3C3R, a.s, a.step, a.d[0], a.step, a.roi),
    M(vqciYCbCrToBGR_JPEG_8u_P3C3R, a.s, a.step, a.d[0], a.step, a.roi),
    M(vqciYCbCrToRGB_JPEG_8u_P3C4R, a.s, a.step, a.d[0], a.step, a.roi, 0x5A),
    M(vqciYCbCrToBGR_JPEG_8u_P3C4R, a.s, a.step, a.d[0], a.step, a.roi, 0x5A),
    M(vqciYCbCrToRGB_JPEG_8u_P3R, a.s, a.step, a.d, a.step, a.roi),
    M(vqciYCbCrToBGR555_JPEG_8u16u_P3C3R, a.s, a.step, a.d16(), a.step, a.roi),
    M(vqciYCbCrToBGR565_JPEG_8u16u_P3C3R, a.s, a.step, a.d16(), a.step, a.roi),
    M(vqciYCbCrToRGB555_JPEG_8u16u_P3C3R, a.s, a.step, a.d16(), a.step, a.roi),
    M(vqciYCbCrToRGB565_JPEG_8u16u_P3C3R, a.s, a.step, a.d16(), a.step, a.roi),
    M(vqciYCbCr422ToRGB_JPEG_8u_P3C3R, a.s, a.steps(), a.d[0], a.step, a.roi),
    M(vqciYCbCr422ToBGR_JPEG_8u_P3C3R, a.s, a.steps(), a.d[0], a.step, a.roi),
    M(vqciYCbCr422ToRGB_JPEG_8u_P3C4R, a.s, a.steps(), a.d[0], a.step, a.roi, 0x5A),
    M(vqciYCbCr422ToBGR_JPEG_8u_P3C4R, a.s, a.steps(), a.d[0], a.step, a.roi, 0x5A),
    M(vqciYCbCr411ToRGB_JPEG_8u_P3C3R, a.s, a.steps(), a.d[0], a.step, a.roi),
    M(vqciYCbCr411ToBGR_JPEG_8u_P3C3R, a.s, a.steps(), a.d[0], a.step, a.roi),
    M(vqciYCbCr411ToRGB_JPEG_8u_P3C4R, a.s, a.steps(), a.d[0], a.step, a.roi, 0x5A),
    M(vqciYCbCr411ToBGR_JPEG_8u_P3C4R, a.s, a.steps(), a.d[0], a.step, a.roi, 0x5A),
    M(vqciYCbCr422ToRGB_JPEG_8u_C2C3R, a.s[0], a.step, a.d[0], a.step, a.roi),
    M(vqciYCCKToCMYK_JPEG_8u_P4C4R, a.s, a.step, a.d[0], a.step, a.roi),
    M(vqciYCCKToCMYK_JPEG_8u_P4R, a.s, a.step, a.d, a.step, a.roi),
};
#undef M

TEST(ColourSimd, EveryMemberOnEveryTarget) {
    for (const Member& m : kMembers)
        for (int w = 1; w <= 70; ++w) {
            // Even steps keep the 16-bit layouts aligned.
            const int h = 1 + 2 * (w % 3), step = 4 * w + 10;
            const size_t plane = size_t(step) * (h + 1);
            const Bytes in = vqcjtest::randomBytes(4 * plane, 7 * w + 1);
            const Vqc8u* s[4];
            for (int k = 0; k < 4; ++k) s[k] = in.data() + k * plane;
            vqcjtest::expectSameOnEveryTarget(
                [&] {
                    Bytes out(4 * plane + 1, 0xEE);
                    Vqc8u* d[4];
                    for (int k = 0; k < 4; ++k) d[k] = out.data() + k * plane;
                    out.back() = static_cast<uint8_t>(m.op({s, d, step, {w, h}}));
                    return out;
                },
                std::string(m.name) + " width " + std::to_string(w));
        }
}

}  // namespace

// The sampling members on the same shapes: the image forms read one row and
// column beyond the source on every side, the row forms one sample.
namespace {

struct SampleArgs {
    const Vqc8u* s;  // inside a margin of one row and one column
    int32_t step;
    Vqc8u* d;
    int32_t w, h;
};

#define M(fn, ...) {#fn, [](const SampleArgs& a) { return fn(__VA_ARGS__); }}
const struct {
    const char* name;
    VqcStatus (*op)(const SampleArgs&);
} kSampling[] = {
    M(vqciSampleDownH2V1_JPEG_8u_C1R, a.s, a.step, {2 * a.w, a.h}, a.d, a.step, {a.w, a.h}),
    M(vqciSampleDownH2V2_JPEG_8u_C1R, a.s, a.step, {2 * a.w, 2 * a.h}, a.d, a.step, {a.w, a.h}),
    M(vqciSampleUpH2V1_JPEG_8u_C1R, a.s, a.step, {(a.w + 1) / 2, a.h}, a.d, a.step, {a.w, a.h}),
    M(vqciSampleUpH2V2_JPEG_8u_C1R, a.s, a.step, {(a.w + 1) / 2, (a.h + 1) / 2}, a.d, a.step, {a.w, a.h}),
    M(vqciSampleDownRowH2V1_Box_JPEG_8u_C1, a.s, a.w, a.d),
    M(vqciSampleDownRowH2V2_Box_JPEG_8u_C1, a.s, a.s + a.step, a.w, a.d),
    M(vqciSampleUpRowH2V1_Triangle_JPEG_8u_C1, a.s, a.w, a.d),
    M(vqciSampleUpRowH2V2_Triangle_JPEG_8u_C1, a.s, a.s + a.step, a.w, a.d),
};
#undef M

TEST(SamplingSimd, EveryMemberOnEveryTarget) {
    for (const auto& m : kSampling)
        for (int w = 1; w <= 70; ++w) {
            const int h = 1 + 2 * (w % 3), step = 2 * w + 9;
            const Bytes in = vqcjtest::randomBytes(size_t(step) * (2 * h + 3), 5 * w + 3);
            vqcjtest::expectSameOnEveryTarget(
                [&] {
                    Bytes out(size_t(step) * h + 1, 0xEE);
                    out.back() = uint8_t(m.op({in.data() + step + 1, step, out.data(), w, h}));
                    return out;
                },
                std::string(m.name) + " width " + std::to_string(w));
        }
}

}  // namespace
