// Row-parallel members give the same bytes on one thread and on several,
// above the threshold (rows split unevenly) and at it; the serial members
// likewise, whatever the thread count.
#include <gtest/gtest.h>
#include <vqcj.h>

#include <functional>
#include <vector>

#include "support/testutil.h"

namespace {

using Bytes = std::vector<uint8_t>;

struct Io {
    static constexpr int32_t kStep = 4 * 320;
    static constexpr size_t kPlane = size_t(kStep) * 100;
    const Bytes& src = source();
    static const Bytes& source() {
        static const Bytes bytes = vqcjtest::randomBytes(4 * kPlane, 11);
        return bytes;
    }
    Bytes dst = Bytes(4 * kPlane, 0);
    const Vqc8u* s = src.data();
    const Vqc16u* s16 = reinterpret_cast<const Vqc16u*>(src.data());
    const Vqc8u* sp[4] = {s, s + kPlane, s + 2 * kPlane, s + 3 * kPlane};
    Vqc8u* d = dst.data();
    Vqc16u* d16 = reinterpret_cast<Vqc16u*>(dst.data());
    Vqc8u* dp[4] = {d, d + kPlane, d + 2 * kPlane, d + 3 * kPlane};
    const int32_t steps[3] = {kStep, kStep, kStep};
    VqciSize roi;
};

using Call = std::function<VqcStatus(Io&)>;
#define M(fn, ...) Call([](Io& e) { return fn(__VA_ARGS__); })
const Call kFrame[] = {
    M(vqciRGBToYCbCr_JPEG_8u_C3P3R, e.s, e.kStep, e.dp, e.kStep, e.roi),
    M(vqciBGRToYCbCr_JPEG_8u_C3P3R, e.s, e.kStep, e.dp, e.kStep, e.roi),
    M(vqciRGBToYCbCr_JPEG_8u_P3R, e.sp, e.kStep, e.dp, e.kStep, e.roi),
    M(vqciRGBToY_JPEG_8u_C3C1R, e.s, e.kStep, e.d, e.kStep, e.roi),
    M(vqciBGRToY_JPEG_8u_C3C1R, e.s, e.kStep, e.d, e.kStep, e.roi),
    M(vqciRGBToY_JPEG_8u_P3C1R, e.sp, e.kStep, e.d, e.kStep, e.roi),
    M(vqciYCbCrToRGB_JPEG_8u_P3C3R, e.sp, e.kStep, e.d, e.kStep, e.roi),
    M(vqciYCbCrToBGR_JPEG_8u_P3C3R, e.sp, e.kStep, e.d, e.kStep, e.roi),
    M(vqciYCbCrToRGB_JPEG_8u_P3R, e.sp, e.kStep, e.dp, e.kStep, e.roi),
    M(vqciYCbCr422ToRGB_JPEG_8u_C2C3R, e.s, e.kStep, e.d, e.kStep, e.roi),
    M(vqciCMYKToYCCK_JPEG_8u_C4P4R, e.s, e.kStep, e.dp, e.kStep, e.roi),
    M(vqciCMYKToYCCK_JPEG_8u_P4R, e.sp, e.kStep, e.dp, e.kStep, e.roi),
    M(vqciYCCKToCMYK_JPEG_8u_P4C4R, e.sp, e.kStep, e.d, e.kStep, e.roi),
    M(vqciYCCKToCMYK_JPEG_8u_P4R, e.sp, e.kStep, e.dp, e.kStep, e.roi),
};
const Call kSerial[] = {
    M(vqciRGBToYCbCr_JPEG_8u_C4P3R, e.s, e.kStep, e.dp, e.kStep, e.roi),
    M(vqciRGB565ToYCbCr_JPEG_16u8u_C3P3R, e.s16, e.kStep, e.dp, e.kStep, e.roi),
    M(vqciBGRToYCbCr411_JPEG_8u_C4P3R, e.s, e.kStep, e.dp, e.steps, e.roi),
    M(vqciYCbCrToBGR_JPEG_8u_P3C4R, e.sp, e.kStep, e.d, e.kStep, e.roi, 9),
    M(vqciYCbCrToBGR555_JPEG_8u16u_P3C3R, e.sp, e.kStep, e.d16, e.kStep, e.roi),
    M(vqciYCbCr411ToBGR_JPEG_8u_P3C3R, e.sp, e.steps, e.d, e.kStep, e.roi),
};
#undef M

Bytes runWith(int threads, const Call& call, VqciSize roi) {
    Io io;
    io.roi = roi;
    vqcjtest::withThreads(threads, [&] { EXPECT_GE(call(io), 0); });
    return io.dst;
}

TEST(ColourThreads, SameBytesOnAnyThreadCount) {
    // 97 rows split unevenly, 129 x 64 just above the threshold, 9000 x 1
    // leaves the second thread without a row.
    for (VqciSize roi : {VqciSize{301, 97}, VqciSize{129, 64}, VqciSize{9000, 1}}) {
        for (const Call& c : kFrame) {
            const Bytes one = runWith(1, c, roi);
            EXPECT_EQ(runWith(2, c, roi), one);
        }
        for (const Call& c : kSerial) {
            if (roi.height < 2) continue;  // below the 411 minimum
            EXPECT_EQ(runWith(2, c, roi), runWith(1, c, roi));
        }
    }
}

}  // namespace
