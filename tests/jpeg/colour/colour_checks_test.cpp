// The argument checks of every member, one row each: the checks in their
// order, each fault reported when it and every later check fail together, and
// a refusal writing nothing. Members that take steps on trust accept 0.
#include <gtest/gtest.h>
#include <vqcj.h>

#include <functional>
#include <sstream>
#include <string>
#include <vector>

namespace {

constexpr uint8_t kFill = 0xEE;

struct Env {
    std::vector<uint8_t> src = std::vector<uint8_t>(4096, 100);
    std::vector<uint8_t> out[4] = {std::vector<uint8_t>(4096, kFill), std::vector<uint8_t>(4096, kFill),
                                   std::vector<uint8_t>(4096, kFill), std::vector<uint8_t>(4096, kFill)};
    const Vqc8u* s = src.data();
    const Vqc16u* s16 = reinterpret_cast<const Vqc16u*>(src.data());
    const Vqc8u* sp[4] = {src.data(), src.data() + 1024, src.data() + 2048, src.data() + 3072};
    const Vqc8u* const* spa = sp;
    Vqc8u* d = out[0].data();
    Vqc16u* d16 = reinterpret_cast<Vqc16u*>(out[0].data());
    Vqc8u* dp[4] = {out[0].data(), out[1].data(), out[2].data(), out[3].data()};
    Vqc8u* const* dpa = dp;
    int32_t sStep = 64, dStep = 64, sSteps[3] = {64, 64, 64}, dSteps[3] = {64, 64, 64};
    VqciSize roi{4, 2};

    // Makes the named check fail; returns the status it must give.
    VqcStatus fault(const std::string& t) {
        if (t == "pSrc") return s = nullptr, s16 = nullptr, spa = nullptr, vqcStatusNullPtr;
        if (t == "pDst") return d = nullptr, d16 = nullptr, dpa = nullptr, vqcStatusNullPtr;
        if (t.rfind("pSrc", 0) == 0) return sp[t[4] - '0'] = nullptr, vqcStatusNullPtr;
        if (t.rfind("pDst", 0) == 0) return dp[t[4] - '0'] = nullptr, vqcStatusNullPtr;
        if (t == "srcStep") return sStep = 0, vqcStatusBadStep;
        if (t == "dstStep") return dStep = 0, vqcStatusBadStep;
        if (t.rfind("width", 0) == 0) return roi.width = t == "width" ? 0 : 1, vqcStatusBadSize;
        return roi.height = t == "height" ? 0 : 1, vqcStatusBadSize;
    }
    bool untouched() const {
        for (const auto& o : out)
            for (uint8_t b : o)
                if (b != kFill) return false;
        return true;
    }
};

struct Member {
    const char* name;
    std::function<VqcStatus(Env&)> call;
    const char* checks;
};

const char* const kFwdC3 = "pSrc pDst pDst0 pDst1 pDst2 srcStep dstStep width height";
const char* const kFwdFour = "pSrc pDst pDst0 pDst1 pDst2 width height";
const char* const kFwd422 = "pSrc pDst pDst0 pDst1 pDst2 width2 height";
const char* const kFwd411 = "pSrc pDst pDst0 pDst1 pDst2 width2 height2";
const char* const kInvC3 = "pSrc pDst pSrc0 pSrc1 pSrc2 srcStep dstStep width height";
const char* const kInvFour = "pDst pSrc pSrc0 pSrc1 pSrc2 width height";
const char* const kInv422 = "pDst pSrc pSrc0 pSrc1 pSrc2 width2 height";
const char* const kInv411 = "pDst pSrc pSrc0 pSrc1 pSrc2 width2 height2";
const char* const kP3 = "pSrc pDst pSrc0 pSrc1 pSrc2 pDst0 pDst1 pDst2 srcStep dstStep width height";
const char* const kP4 = "pSrc pDst pSrc0 pSrc1 pSrc2 pSrc3 pDst0 pDst1 pDst2 pDst3 srcStep dstStep width height";

#define M(fn, checks, ...) Member{#fn, [](Env& e) { return fn(__VA_ARGS__); }, checks}
const Member kMembers[] = {
    M(vqciRGBToYCbCr_JPEG_8u_C3P3R, kFwdC3, e.s, e.sStep, e.dpa, e.dStep, e.roi),
    M(vqciBGRToYCbCr_JPEG_8u_C3P3R, kFwdC3, e.s, e.sStep, e.dpa, e.dStep, e.roi),
    M(vqciBGR555ToYCbCr_JPEG_16u8u_C3P3R, kFwdC3, e.s16, e.sStep, e.dpa, e.dStep, e.roi),
    M(vqciBGR565ToYCbCr_JPEG_16u8u_C3P3R, kFwdC3, e.s16, e.sStep, e.dpa, e.dStep, e.roi),
    M(vqciRGB555ToYCbCr_JPEG_16u8u_C3P3R, kFwdC3, e.s16, e.sStep, e.dpa, e.dStep, e.roi),
    M(vqciRGB565ToYCbCr_JPEG_16u8u_C3P3R, kFwdC3, e.s16, e.sStep, e.dpa, e.dStep, e.roi),
    M(vqciRGBToYCbCr_JPEG_8u_P3R, kP3, e.spa, e.sStep, e.dpa, e.dStep, e.roi),
    M(vqciRGBToY_JPEG_8u_C3C1R, "pSrc pDst srcStep dstStep width height", e.s, e.sStep, e.d, e.dStep, e.roi),
    M(vqciBGRToY_JPEG_8u_C3C1R, "pSrc pDst srcStep dstStep width height", e.s, e.sStep, e.d, e.dStep, e.roi),
    M(vqciRGBToY_JPEG_8u_P3C1R, "pSrc pSrc0 pSrc1 pSrc2 pDst srcStep dstStep width height", e.spa, e.sStep, e.d,
      e.dStep, e.roi),
    M(vqciRGBToYCbCr_JPEG_8u_C4P3R, kFwdFour, e.s, e.sStep, e.dpa, e.dStep, e.roi),
    M(vqciBGRToYCbCr_JPEG_8u_C4P3R, kFwdFour, e.s, e.sStep, e.dpa, e.dStep, e.roi),
    M(vqciRGBToYCbCr422_JPEG_8u_C3P3R, kFwd422, e.s, e.sStep, e.dpa, e.dSteps, e.roi),
    M(vqciBGRToYCbCr422_JPEG_8u_C3P3R, kFwd422, e.s, e.sStep, e.dpa, e.dSteps, e.roi),
    M(vqciRGBToYCbCr422_JPEG_8u_C4P3R, kFwd422, e.s, e.sStep, e.dpa, e.dSteps, e.roi),
    M(vqciBGRToYCbCr422_JPEG_8u_C4P3R, kFwd422, e.s, e.sStep, e.dpa, e.dSteps, e.roi),
    M(vqciRGBToYCbCr411_JPEG_8u_C3P3R, kFwd411, e.s, e.sStep, e.dpa, e.dSteps, e.roi),
    M(vqciBGRToYCbCr411_JPEG_8u_C3P3R, kFwd411, e.s, e.sStep, e.dpa, e.dSteps, e.roi),
    M(vqciRGBToYCbCr411_JPEG_8u_C4P3R, kFwd411, e.s, e.sStep, e.dpa, e.dSteps, e.roi),
    M(vqciBGRToYCbCr411_JPEG_8u_C4P3R, kFwd411, e.s, e.sStep, e.dpa, e.dSteps, e.roi),
    M(vqciYCbCrToRGB_JPEG_8u_P3C3R, kInvC3, e.spa, e.sStep, e.d, e.dStep, e.roi),
    M(vqciYCbCrToBGR_JPEG_8u_P3C3R, kInvC3, e.spa, e.sStep, e.d, e.dStep, e.roi),
    M(vqciYCbCrToBGR555_JPEG_8u16u_P3C3R, kInvC3, e.spa, e.sStep, e.d16, e.dStep, e.roi),
    M(vqciYCbCrToBGR565_JPEG_8u16u_P3C3R, kInvC3, e.spa, e.sStep, e.d16, e.dStep, e.roi),
    M(vqciYCbCrToRGB555_JPEG_8u16u_P3C3R, kInvC3, e.spa, e.sStep, e.d16, e.dStep, e.roi),
    M(vqciYCbCrToRGB565_JPEG_8u16u_P3C3R, kInvC3, e.spa, e.sStep, e.d16, e.dStep, e.roi),
    M(vqciYCbCrToRGB_JPEG_8u_P3R, kP3, e.spa, e.sStep, e.dpa, e.dStep, e.roi),
    M(vqciYCbCrToRGB_JPEG_8u_P3C4R, kInvFour, e.spa, e.sStep, e.d, e.dStep, e.roi, 7),
    M(vqciYCbCrToBGR_JPEG_8u_P3C4R, kInvFour, e.spa, e.sStep, e.d, e.dStep, e.roi, 7),
    M(vqciYCbCr422ToRGB_JPEG_8u_P3C3R, kInv422, e.spa, e.sSteps, e.d, e.dStep, e.roi),
    M(vqciYCbCr422ToBGR_JPEG_8u_P3C3R, kInv422, e.spa, e.sSteps, e.d, e.dStep, e.roi),
    M(vqciYCbCr422ToRGB_JPEG_8u_P3C4R, kInv422, e.spa, e.sSteps, e.d, e.dStep, e.roi, 7),
    M(vqciYCbCr422ToBGR_JPEG_8u_P3C4R, kInv422, e.spa, e.sSteps, e.d, e.dStep, e.roi, 7),
    M(vqciYCbCr411ToRGB_JPEG_8u_P3C3R, kInv411, e.spa, e.sSteps, e.d, e.dStep, e.roi),
    M(vqciYCbCr411ToBGR_JPEG_8u_P3C3R, kInv411, e.spa, e.sSteps, e.d, e.dStep, e.roi),
    M(vqciYCbCr411ToRGB_JPEG_8u_P3C4R, kInv411, e.spa, e.sSteps, e.d, e.dStep, e.roi, 7),
    M(vqciYCbCr411ToBGR_JPEG_8u_P3C4R, kInv411, e.spa, e.sSteps, e.d, e.dStep, e.roi, 7),
    M(vqciYCbCr422ToRGB_JPEG_8u_C2C3R, "pSrc pDst width height", e.s, e.sStep, e.d, e.dStep, e.roi),
    M(vqciCMYKToYCCK_JPEG_8u_C4P4R, "pSrc pDst pDst0 pDst1 pDst2 pDst3 srcStep dstStep width height", e.s, e.sStep,
      e.dpa, e.dStep, e.roi),
    M(vqciCMYKToYCCK_JPEG_8u_P4R, kP4, e.spa, e.sStep, e.dpa, e.dStep, e.roi),
    M(vqciYCCKToCMYK_JPEG_8u_P4C4R, "pSrc pDst pSrc0 pSrc1 pSrc2 pSrc3 srcStep dstStep width height", e.spa, e.sStep,
      e.d, e.dStep, e.roi),
    M(vqciYCCKToCMYK_JPEG_8u_P4R, kP4, e.spa, e.sStep, e.dpa, e.dStep, e.roi),
};
#undef M

std::vector<std::string> words(const char* s) {
    std::istringstream in(s);
    std::vector<std::string> w;
    for (std::string t; in >> t;) w.push_back(t);
    return w;
}

TEST(ColourChecks, EveryMemberInItsOrder) {
    for (const Member& m : kMembers) {
        SCOPED_TRACE(m.name);
        const std::vector<std::string> checks = words(m.checks);
        for (size_t t = 0; t < checks.size(); ++t) {
            Env e;
            const VqcStatus want = e.fault(checks[t]);
            for (size_t later = t + 1; later < checks.size(); ++later) e.fault(checks[later]);
            EXPECT_EQ(m.call(e), want) << checks[t];
            EXPECT_TRUE(e.untouched()) << checks[t];
        }
        Env ok;
        EXPECT_EQ(m.call(ok), vqcStatusOk);
        EXPECT_FALSE(ok.untouched());
    }
}

// Steps the member does not check are used as given: 0 repeats one row.
TEST(ColourChecks, StepsOnTrustAcceptZero) {
    int trusting = 0;
    for (const Member& m : kMembers) {
        if (std::string(m.checks).find("Step") != std::string::npos) continue;
        SCOPED_TRACE(m.name);
        Env e;
        e.sStep = e.dStep = 0;
        for (int k = 0; k < 3; ++k) e.sSteps[k] = e.dSteps[k] = 0;
        EXPECT_EQ(m.call(e), vqcStatusOk);
        ++trusting;
    }
    EXPECT_EQ(trusting, 2 + 8 + 2 + 8 + 1);
}

}  // namespace
