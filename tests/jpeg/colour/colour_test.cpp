// The colour conversions, every member. First the arithmetic: all 2^24 inputs
// through the forward table form (from planes, three-byte pixels and inks),
// both four-channel forms (each with its own Y rounding), the inverse table
// form and the inverse multiplication form, against a plain model. The
// library computes without tables, from 16-bit lanes; the model sums the
// twelve tables, each term one table by its rule, on 32 bits.
//
// Then one table of members drives three tests. Each row calls a member on
// vectors worked out by hand: the corners of both arithmetics, the packed
// fields, the members that differ on purpose (fused chroma constants, odd
// widths and rows, the 411 members that process the last pair whole), and
// the inks; every destination plane is compared whole, with the bytes after
// it. The row's checks are then made to fail in their order, each reported
// when it and every later check fail together, with nothing written; steps a
// member does not check are used as given, 0 included. Last, the member runs
// on a large random image on one thread and on two.
#include <gtest/gtest.h>
#include <vqcj.h>

#include <array>
#include <cstring>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

#include "support/testutil.h"

namespace {

using Bytes = std::vector<uint8_t>;
using Px = std::array<uint8_t, 3>;
constexpr uint8_t bits(uint32_t v, int shift) { return static_cast<uint8_t>(v >> shift); }
constexpr uint8_t sat(int32_t v) { return static_cast<uint8_t>(v < 0 ? 0 : v > 255 ? 255 : v); }

// Y from R, G and B (the B table carries the rounding); Cb from R, G and the
// chroma table 32768 i + 0x807FFF; Cr from that table and G, B.
constexpr Px fwdTable(int r, int g, int b) {
    return {bits(19595 * r + 38470 * g + (7471 * b + 32768), 16),
            bits(-11059 * r - 21709 * g + (32768 * b + 0x807FFF), 16),
            bits((32768 * r + 0x807FFF) - 27439 * g - 5329 * b, 16)};
}
// The red and blue tables are shifted per entry, the two green ones summed
// first.
constexpr Px invTable(int y, int cb, int cr) {
    return {sat(y + ((91881 * (cr - 128) + 32768) >> 16)),
            sat(y + (((-22554 * (cb - 128) + 32768) - 46802 * (cr - 128)) >> 16)),
            sat(y + ((116130 * (cb - 128) + 32768) >> 16))};
}
// Multiplications wrapping on 32 bits: chroma K 0x7FC000, Y rounding per member.
constexpr Px fwdFour(uint32_t r, uint32_t g, uint32_t b, uint32_t yRound) {
    return {bits(19595 * r + 38470 * g + 7471 * b + yRound, 16), bits(32768 * b - 21709 * g - 11059 * r - 0x7FC000, 16),
            bits(32768 * r - 27439 * g - 5329 * b - 0x7FC000, 16)};
}
constexpr Px invMul(int32_t y, int32_t cb, int32_t cr) {
    return {sat((91880 * cr + 65536 * y - 11727880) >> 16), sat((65536 * y - 22553 * cb - 46801 * cr + 8910128) >> 16),
            sat((116128 * cb + 65536 * y - 14831618) >> 16)};
}

// One call covers a 256 x 256 image with the first component fixed: planes 0
// to 2 hold the input, then three planes for each member (CMYK: four). The
// forward table form also runs from three-byte pixels and from inks.
TEST(ColourExhaustive, TableFreeArithmeticMatchesTheModel) {
    constexpr int kN = 256 * 256;
    Bytes planes(22 * kN), px(4 * kN), px3(3 * kN), mul(4 * kN);
    Vqc8u* p[22];
    for (int k = 0; k < 22; ++k) p[k] = planes.data() + k * kN;
    const auto at = [&](int m, int i) { return Px{p[3 * m][i], p[3 * m + 1][i], p[3 * m + 2][i]}; };
    int miss[7] = {};
    // The sweeps test arithmetic, not threads: one thread keeps them quick.
    vqcjtest::withThreads(1, [&] {
        for (int a = 0; a < 256; ++a) {
            for (int i = 0; i < kN; ++i) {
                const uint8_t v[3] = {uint8_t(a), uint8_t(i >> 8), uint8_t(i)};
                for (int c = 0; c < 3; ++c) p[c][i] = px[4 * i + c] = px3[3 * i + c] = v[c];
            }
            ASSERT_EQ(vqciRGBToYCbCr_JPEG_8u_P3R(p, 256, p + 3, 256, {256, 256}), 0);
            ASSERT_EQ(vqciRGBToYCbCr_JPEG_8u_C4P3R(px.data(), 1024, p + 6, 256, {256, 256}), 0);
            ASSERT_EQ(vqciBGRToYCbCr_JPEG_8u_C4P3R(px.data(), 1024, p + 9, 256, {256, 256}), 0);
            ASSERT_EQ(vqciYCbCrToRGB_JPEG_8u_P3R(p, 256, p + 12, 256, {256, 256}), 0);
            ASSERT_EQ(vqciYCbCrToRGB_JPEG_8u_P3C4R(p, 256, mul.data(), 1024, {256, 256}, 0), 0);
            ASSERT_EQ(vqciRGBToYCbCr_JPEG_8u_C3P3R(px3.data(), 768, p + 15, 256, {256, 256}), 0);
            ASSERT_EQ(vqciCMYKToYCCK_JPEG_8u_C4P4R(px.data(), 1024, p + 18, 256, {256, 256}), 0);
            for (int i = 0; i < kN; ++i) {
                const int b = i >> 8, c = i & 255;
                miss[0] += at(1, i) != fwdTable(a, b, c);
                miss[1] += at(2, i) != fwdFour(a, b, c, 32768);
                miss[2] += at(3, i) != fwdFour(c, b, a, 16384);
                miss[3] += at(4, i) != invTable(a, b, c);
                miss[4] += Px{mul[4 * i], mul[4 * i + 1], mul[4 * i + 2]} != invMul(a, b, c);
                miss[5] += at(5, i) != fwdTable(a, b, c);
                miss[6] += at(6, i) != fwdTable(255 - a, 255 - b, 255 - c);
            }
        }
    });
    const char* names[7] = {"forward table", "forward RGB C4", "forward BGR C4", "inverse table",
                            "inverse mul",   "forward C3",     "forward CMYK"};
    for (int m = 0; m < 7; ++m) EXPECT_EQ(miss[m], 0) << names[m];
}

constexpr uint8_t E = 0xEE;            // a byte left as it was
const int32_t kAny[3] = {64, 64, 64};  // steps of one-row images
const int32_t k411[3] = {4, 2, 2};     // Y rows of 4, chroma rows of 2

// The arguments of one call: the row's own, but for the checks made to fail,
// and for the steps (all pitch) and size (big, unless empty) when told.
struct Args {
    const Vqc8u* sp[4] = {};
    Vqc8u* dp[4] = {};
    bool nullSrc = false, nullDst = false, noSrcStep = false, noDstStep = false, pitched = false;
    int32_t width = -1, height = -1;  // when not -1, the faulty size to pass
    VqciSize big{};
    int32_t pitch[3] = {};

    void fault(const std::string& t) {
        if (t == "pSrc" || t == "pDst") (t == "pSrc" ? nullSrc : nullDst) = true;
        else if (t.starts_with("pSrc")) sp[t[4] - '0'] = nullptr;
        else if (t.starts_with("pDst")) dp[t[4] - '0'] = nullptr;
        else if (t.ends_with("Step")) (t == "srcStep" ? noSrcStep : noDstStep) = true;
        else (t[0] == 'w' ? width : height) = t.ends_with("2") ? 1 : 0;  // "width2": below 2
    }
    const Vqc8u* s() const { return nullSrc ? nullptr : sp[0]; }
    const Vqc8u* const* sps() const { return nullSrc ? nullptr : sp; }
    Vqc8u* d() const { return nullDst ? nullptr : dp[0]; }
    Vqc8u* const* dps() const { return nullDst ? nullptr : dp; }
    int32_t ss(int32_t v = 64) const { return noSrcStep ? 0 : pitched ? pitch[0] : v; }
    int32_t ds(int32_t v = 64) const { return noDstStep ? 0 : pitched ? pitch[0] : v; }
    const int32_t* steps(const int32_t* v = kAny) const { return pitched ? pitch : v; }
    VqciSize roi(int32_t w, int32_t h = 1) const {
        const VqciSize r = big.width ? big : VqciSize{w, h};
        return {width < 0 ? r.width : width, height < 0 ? r.height : height};
    }
};

struct Vector {
    const char* call;
    VqcStatus (*run)(const Args& a);
    const char* checks;
    std::vector<Bytes> in;
    VqcStatus status;
    std::vector<Bytes> out;
};

const char* const kFwdC3 = "pSrc pDst pDst0 pDst1 pDst2 srcStep dstStep width height";
const char* const kFwd422 = "pSrc pDst pDst0 pDst1 pDst2 width2 height";
const char* const kInvC3 = "pSrc pDst pSrc0 pSrc1 pSrc2 srcStep dstStep width height";
const char* const kInv411 = "pDst pSrc pSrc0 pSrc1 pSrc2 width2 height2";
const char* const kP3 = "pSrc pDst pSrc0 pSrc1 pSrc2 pDst0 pDst1 pDst2 srcStep dstStep width height";
const char* const kP4 = "pSrc pDst pSrc0 pSrc1 pSrc2 pSrc3 pDst0 pDst1 pDst2 pDst3 srcStep dstStep width height";

// Y, Cb, Cr planes: grey 128, the saturating corners (green 135 and 121), and
// Cr 255 (red saturates, green 37); for the packed forms white and Cr 255,
// or grey 7, which the fields cut to 0 (but 1 in the 565 green field).
const std::vector<Bytes> kCorners = {{128, 0, 255, 128}, {128, 0, 255, 128}, {128, 0, 255, 255}};
const std::vector<Bytes> kPacked = {{255, 128}, {128, 128}, {128, 255}};
const std::vector<Bytes> kPacked7 = {{7, 128}, {128, 128}, {128, 255}};
// Two rows of Y, two of chroma: the second chroma row must not be read.
const std::vector<Bytes> k411In = {{1, 2, 3, 4, 5, 6, 7, 8}, {128, 128, 9, 9}, {128, 255, 9, 9}};
// No ink, cyan, full ink, with K, as pixels and as planes; and their YCCK.
const Bytes kCmyk = {0, 0, 0, 0x5B, 255, 0, 0, 0xA4, 255, 255, 255, 7};
const std::vector<Bytes> kInks = {{0, 255, 255}, {0, 0, 255}, {0, 0, 255}, {0x5B, 0xA4, 7}};
const std::vector<Bytes> kYcck = {{255, 179, 0}, {128, 171, 128}, {128, 0, 128}, {0x5B, 0xA4, 7}};

#define V(call) #call, [](const Args& a) { return call; }
// Call shapes; the arguments are the size of the image.
#define FWD(fn, ...) V(fn(a.s(), a.ss(), a.dps(), a.ds(), a.roi(__VA_ARGS__)))
#define FWD16(fn, ...) V(fn(reinterpret_cast<const Vqc16u*>(a.s()), a.ss(), a.dps(), a.ds(), a.roi(__VA_ARGS__)))
#define FUSED(fn, ...) V(fn(a.s(), a.ss(), a.dps(), a.steps(), a.roi(__VA_ARGS__)))
#define ONE(fn, ...) V(fn(a.s(), a.ss(), a.d(), a.ds(), a.roi(__VA_ARGS__)))
#define PLANES(fn, ...) V(fn(a.sps(), a.ss(), a.dps(), a.ds(), a.roi(__VA_ARGS__)))
#define INV(fn, ...) V(fn(a.sps(), a.ss(), a.d(), a.ds(), a.roi(__VA_ARGS__)))
#define INV16(fn, ...) V(fn(a.sps(), a.ss(), reinterpret_cast<Vqc16u*>(a.d()), a.ds(), a.roi(__VA_ARGS__)))
#define INV411(fn, ...) V(fn(a.sps(), a.steps(k411), a.d(), a.ds(0), a.roi(3, 2) __VA_OPT__(, ) __VA_ARGS__))
// Luma of red 76, of green 150 (252: 148), of blue 29; Cr of red 255 and of
// cyan 0: the chroma constant is one unit short of wrapping. Packed words
// little-endian.
const Vector kVectors[] = {
    {FWD(vqciRGBToYCbCr_JPEG_8u_C3P3R, 1), kFwdC3, {{255, 255, 255}}, 0, {{255}, {128}, {128}}},
    {FWD(vqciBGRToYCbCr_JPEG_8u_C3P3R, 1), kFwdC3, {{0, 0, 255}}, 0, {{76}, {85}, {255}}},
    {PLANES(vqciRGBToYCbCr_JPEG_8u_P3R, 1), kP3, {{255}, {0}, {0}}, 0, {{76}, {85}, {255}}},
    {FWD(vqciBGRToYCbCr_JPEG_8u_C4P3R, 1), "pSrc pDst pDst0 pDst1 pDst2 width height", {{0, 0, 0, 9}}, 0,
     {{0}, {128}, {128}}},
    {FWD16(vqciBGR555ToYCbCr_JPEG_16u8u_C3P3R, 1), kFwdC3, {{0xFF, 0x7F}}, 0, {{248}, {128}, {128}}},
    {FWD16(vqciBGR565ToYCbCr_JPEG_16u8u_C3P3R, 1), kFwdC3, {{0x00, 0xF8}}, 0, {{74}, {86}, {252}}},
    {FWD16(vqciRGB555ToYCbCr_JPEG_16u8u_C3P3R, 1), kFwdC3, {{0x1F, 0x80}}, 0, {{74}, {86}, {252}}},
    {FWD16(vqciRGB565ToYCbCr_JPEG_16u8u_C3P3R, 1), kFwdC3, {{0xE0, 0x07}}, 0, {{148}, {45}, {22}}},
    {ONE(vqciRGBToY_JPEG_8u_C3C1R, 1), "pSrc pDst srcStep dstStep width height", {{0, 255, 0}}, 0, {{150}}},
    {ONE(vqciBGRToY_JPEG_8u_C3C1R, 1), "pSrc pDst srcStep dstStep width height", {{255, 0, 0}}, 0, {{29}}},
    {INV(vqciRGBToY_JPEG_8u_P3C1R, 1), "pSrc pSrc0 pSrc1 pSrc2 pDst srcStep dstStep width height", {{0}, {0}, {255}}, 0,
     {{29}}},
    // Fused: a blue pair wraps Cb to 0 under K 0xFF0000, a red pair Cr; the
    // RGB three-channel 422 member's 0xFFC000 keeps 255. The 411 constant
    // rounds at one eighth: Cr of magenta, 234.77, gives 234, a half 235.
    {FUSED(vqciBGRToYCbCr422_JPEG_8u_C3P3R, 3), kFwd422, {{255, 0, 0, 255, 0, 0, 9, 9, 9}}, 35,
     {{29, 29, E}, {0, E}, {107, E}}},
    {FUSED(vqciRGBToYCbCr422_JPEG_8u_C3P3R, 2), kFwd422, {{0, 0, 255, 0, 0, 255}}, 0, {{29, 29}, {255}, {107}}},
    {FUSED(vqciRGBToYCbCr422_JPEG_8u_C4P3R, 2), kFwd422, {{255, 0, 0, 0, 255, 0, 0, 0}}, 0, {{76, 76}, {85}, {0}}},
    {V(vqciBGRToYCbCr411_JPEG_8u_C3P3R(a.s(), a.ss(6), a.dps(), a.steps(k411), a.roi(2, 3))),
     "pSrc pDst pDst0 pDst1 pDst2 width2 height2", {{255, 0, 255, 255, 0, 255, 255, 0, 255, 255, 0, 255}}, 35,
     {{105, 105, E, E, 105, 105, E, E, E, E}, {212}, {234}}},
    // Both inverse arithmetics, aval unchanged.
    {INV(vqciYCbCrToRGB_JPEG_8u_P3C3R, 4), kInvC3, kCorners, 0,
     {{128, 128, 128, 0, 135, 0, 255, 121, 255, 255, 37, 128}}},
    {INV(vqciYCbCrToBGR_JPEG_8u_P3C3R, 4), kInvC3, kCorners, 0,
     {{128, 128, 128, 0, 135, 0, 255, 121, 255, 128, 37, 255}}},
    {V(vqciYCbCrToBGR_JPEG_8u_P3C4R(a.sps(), a.ss(), a.d(), a.ds(), a.roi(4), 0x11)),
     "pDst pSrc pSrc0 pSrc1 pSrc2 width height", kCorners, 0,
     {{128, 128, 128, 0x11, 0, 135, 0, 0x11, 255, 121, 255, 0x11, 128, 37, 255, 0x11}}},
    {PLANES(vqciYCbCrToRGB_JPEG_8u_P3R, 1), kP3, {{128}, {128}, {255}}, 0, {{255}, {37}, {128}}},
    {INV16(vqciYCbCrToBGR555_JPEG_8u16u_P3C3R, 2), kInvC3, kPacked, 0, {{0xFF, 0x7F, 0x90, 0x7C}}},
    {INV16(vqciYCbCrToBGR565_JPEG_8u16u_P3C3R, 2), kInvC3, kPacked, 0, {{0xFF, 0xFF, 0x30, 0xF9}}},
    {INV16(vqciYCbCrToRGB555_JPEG_8u16u_P3C3R, 2), kInvC3, kPacked7, 0, {{0, 0, 0x9F, 0x40}}},
    {INV16(vqciYCbCrToRGB565_JPEG_8u16u_P3C3R, 2), kInvC3, kPacked7, 0, {{0x20, 0, 0x3F, 0x81}}},
    // Subsampled, width 3: Y 10, 20, 30 with Cr 255 gives red 188, 198.
    {V(vqciYCbCr422ToBGR_JPEG_8u_P3C3R(a.sps(), a.steps(), a.d(), a.ds(), a.roi(3))),
     "pDst pSrc pSrc0 pSrc1 pSrc2 width2 height", {{10, 20, 30}, {128}, {255}}, 35,
     {{10, 0, 188, 20, 0, 198, E, E, E}}},
    {ONE(vqciYCbCr422ToRGB_JPEG_8u_C2C3R, 3), "pSrc pDst width height", {{10, 128, 20, 255, 30, 128, 40, 128}}, 0,
     {{188, 0, 10, 198, 0, 20, 30, 30, 30, 40, 40, 40}}},
    // 411 over two rows into one (dstStep 0): row 1, Y 5 to 8, under chroma
    // row 0; Cr 255 turns Y 7, 8 into red 185, 186. All but the RGB
    // three-channel member process the last pair whole.
    {INV411(vqciYCbCr411ToRGB_JPEG_8u_P3C3R), kInv411, k411In, 35, {{5, 5, 5, 6, 6, 6, E, E, E, E, E, E}}},
    {INV411(vqciYCbCr411ToBGR_JPEG_8u_P3C3R), kInv411, k411In, 35, {{5, 5, 5, 6, 6, 6, 7, 0, 185, 8, 0, 186}}},
    {INV411(vqciYCbCr411ToRGB_JPEG_8u_P3C4R, 1), kInv411, k411In, 35,
     {{5, 5, 5, 1, 6, 6, 6, 1, 185, 0, 7, 1, 186, 0, 8, 1}}},
    {INV411(vqciYCbCr411ToBGR_JPEG_8u_P3C4R, 1), kInv411, k411In, 35,
     {{5, 5, 5, 1, 6, 6, 6, 1, 7, 0, 185, 1, 8, 0, 186, 1}}},
    // Inks: none is white, cyan is R 0 (Cr 0), full ink black; K passes.
    {FWD(vqciCMYKToYCCK_JPEG_8u_C4P4R, 3), "pSrc pDst pDst0 pDst1 pDst2 pDst3 srcStep dstStep width height", {kCmyk}, 0,
     kYcck},
    {PLANES(vqciCMYKToYCCK_JPEG_8u_P4R, 3), kP4, kInks, 0, kYcck},
    {INV(vqciYCCKToCMYK_JPEG_8u_P4C4R, 3), "pSrc pDst pSrc0 pSrc1 pSrc2 pSrc3 srcStep dstStep width height", kYcck, 0,
     {kCmyk}},
    {PLANES(vqciYCCKToCMYK_JPEG_8u_P4R, 3), kP4, kYcck, 0, kInks},
};

// Runs a row's member with the given checks made to fail: on the row's own
// planes (32 bytes for each destination), with all steps 0 (zeroSteps), or on
// a large random image (big), with rows for four channels and a whole last
// pair.
VqcStatus run(const Vector& v, std::vector<Bytes>& got, const std::vector<std::string>& faults = {},
              bool zeroSteps = false, VqciSize big = {}) {
    static const Bytes random = vqcjtest::randomBytes(1 << 19, 11);
    const int32_t pitch = big.width ? 4 * (big.width + 2) : 0;
    Args a{.pitched = zeroSteps || big.width > 0, .big = big, .pitch = {pitch, pitch, pitch}};
    const size_t n = big.width ? size_t(pitch) * big.height : 32;
    got.assign(v.out.size(), Bytes(n, E));
    for (size_t k = 0; k < v.in.size(); ++k) a.sp[k] = big.width ? random.data() + k * n : v.in[k].data();
    for (size_t k = 0; k < got.size(); ++k) a.dp[k] = got[k].data();
    for (const std::string& t : faults) a.fault(t);
    return v.run(a);
}

TEST(ColourMembers, HandVectorsAndChecks) {
    for (const Vector& v : kVectors) {
        std::vector<Bytes> got, want = v.out;
        for (Bytes& w : want) w.resize(32, E);
        EXPECT_EQ(run(v, got), v.status) << v.call;
        EXPECT_EQ(got, want) << v.call;

        std::istringstream words(v.checks);
        const std::vector<std::string> checks{std::istream_iterator<std::string>(words), {}};
        for (size_t t = 0; t < checks.size(); ++t) {
            const std::string& c = checks[t];
            const VqcStatus status = c[0] == 'p'           ? vqcStatusNullPtr
                                     : c.ends_with("Step") ? vqcStatusBadStep
                                                           : vqcStatusBadSize;
            EXPECT_EQ(run(v, got, {checks.begin() + t, checks.end()}), status) << v.call << ": " << c;
            EXPECT_EQ(got, std::vector<Bytes>(got.size(), Bytes(32, E))) << v.call << ": " << c;
        }
        if (!std::strstr(v.checks, "Step")) {
            EXPECT_EQ(run(v, got, {}, true), v.status) << v.call << ": steps 0";
        }
    }
}

// 97 rows split unevenly; one long row leaves the second thread without one.
TEST(ColourMembers, SameBytesOnAnyThreadCount) {
    for (const Vector& v : kVectors)
        for (VqciSize roi : {VqciSize{301, 97}, VqciSize{9000, 1}}) {
            std::vector<Bytes> one, two;
            vqcjtest::withThreads(1, [&] { run(v, one, {}, false, roi); });
            vqcjtest::withThreads(2, [&] { run(v, two, {}, false, roi); });
            EXPECT_TRUE(one == two) << v.call;
        }
}

}  // namespace

// The planar 422 and 411 forms compute each chroma pair's terms once for its
// pixels. With the chroma repeated over each pair, and over each pair of rows,
// they must equal the full-rate four-channel form, which shares their
// arithmetic, for every Y, Cb and Cr: Y runs j and 255 - j along a row of 256
// pairs, Cb is the row number halved, and Cr moves along the row and from
// image to image.
TEST(ColourExhaustive, SubsampledFormsEqualFullRateOnRepeatedChroma) {
    constexpr int w = 512, h = 512, cw = w / 2;
    Bytes y(w * h), cbFull(w * h), crFull(w * h), cb422(cw * h), cb411(cw * h / 2), cr(cw * h), want(4 * w * h),
        got(4 * w * h);
    for (int r = 0; r < h; ++r) {
        for (int x = 0; x < w; ++x) y[r * w + x] = Vqc8u(x & 1 ? 255 - x / 2 : x / 2), cbFull[r * w + x] = Vqc8u(r / 2);
        std::fill_n(&cb422[r * cw], cw, Vqc8u(r / 2));  // 422 reads chroma row r, 411 row r / 2
        if (r < h / 2) std::fill_n(&cb411[r * cw], cw, Vqc8u(r));
    }
    const Vqc8u* full[3] = {y.data(), cbFull.data(), crFull.data()};
    const Vqc8u* sub422[3] = {y.data(), cb422.data(), cr.data()};
    const Vqc8u* sub411[3] = {y.data(), cb411.data(), cr.data()};
    const int32_t steps[3] = {w, cw, cw};
    vqcjtest::withThreads(1, [&] {
        for (int c = 0; c < 256; ++c) {
            for (int r = 0; r < h; ++r)
                for (int j = 0; j < cw; ++j)
                    cr[r * cw + j] = crFull[r * w + 2 * j] = crFull[r * w + 2 * j + 1] = Vqc8u(c + j);
            ASSERT_EQ(vqciYCbCrToRGB_JPEG_8u_P3C4R(full, w, want.data(), 4 * w, {w, h}, 7), 0);
            ASSERT_EQ(vqciYCbCr422ToRGB_JPEG_8u_P3C4R(sub422, steps, got.data(), 4 * w, {w, h}, 7), 0);
            ASSERT_EQ(got, want) << "422, image " << c;
            std::fill(got.begin(), got.end(), 0);
            ASSERT_EQ(vqciYCbCr411ToRGB_JPEG_8u_P3C4R(sub411, steps, got.data(), 4 * w, {w, h}, 7), 0);
            ASSERT_EQ(got, want) << "411, image " << c;
        }
    });
}
