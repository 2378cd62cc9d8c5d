// Worked vectors, the check order of the thirteen exports, and the
// fixed-point kernels and quantisers against their butterflies and exact
// arithmetic.
#include <gtest/gtest.h>
#include <vqcj.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <random>
#include <vector>

#include "support/simd.h"

namespace {

// A block of `rest` but for the leading values `head`.
template <class T>
std::array<T, 64> fill(double rest, const std::vector<double>& head = {}) {
    std::array<T, 64> a;
    for (size_t i = 0; i < 64; ++i) a[i] = static_cast<T>(i < head.size() ? head[i] : rest);
    return a;
}

// Arguments of any export: Ptr converts to any pointer type, so that one row
// type serves all thirteen.
struct Ptr { const void* p; template <class T> operator T*() const { return static_cast<T*>(const_cast<void*>(p)); } };
struct Args { Ptr s, d; int32_t step; Ptr t; int32_t q; };

// Each export with its checks in order: s, d, t a null source, destination or
// table (-8); z, n a step of 0 or -16 (-14); q quality 0 (-5).
enum { kRawInit, kFwdTable, kInvTable, kQuantFwd, kQuantInv, kFwdLS8, kFwdLS12, kFwd, kFwdI, kInvLS8, kInvLS12, kInv, kInvI };
const std::pair<VqcStatus (*)(const Args&), const char*> kExports[] = {
    {[](const Args& a) { return vqciQuantFwdRawTableInit_JPEG_8u(a.d, a.q); }, "dq"},
    {[](const Args& a) { return vqciQuantFwdTableInit_JPEG_8u16u(a.s, a.d); }, "sd"},
    {[](const Args& a) { return vqciQuantInvTableInit_JPEG_8u16u(a.s, a.d); }, "sd"},
    {[](const Args& a) { return vqciQuantFwd8x8_JPEG_16s_C1I(a.d, a.t); }, "td"},
    {[](const Args& a) { return vqciQuantInv8x8_JPEG_16s_C1I(a.d, a.t); }, "td"},
    {[](const Args& a) { return vqciDCTQuantFwd8x8LS_JPEG_8u16s_C1R(a.s, a.step, a.d, a.t); }, "sdzt"},
    {[](const Args& a) { return vqciDCTQuantFwd8x8LS_JPEG_16u16s_C1R(a.s, a.step, a.d, a.t); }, "sdnt"},
    {[](const Args& a) { return vqciDCTQuantFwd8x8_JPEG_16s_C1(a.s, a.d, a.t); }, "sdt"},
    {[](const Args& a) { return vqciDCTQuantFwd8x8_JPEG_16s_C1I(a.d, a.t); }, "dt"},
    {[](const Args& a) { return vqciDCTQuantInv8x8LS_JPEG_16s8u_C1R(a.s, a.d, a.step, a.t); }, "sdzt"},
    {[](const Args& a) { return vqciDCTQuantInv8x8LS_JPEG_16s16u_C1R(a.s, a.d, a.step, a.t); }, "sdnt"},
    {[](const Args& a) { return vqciDCTQuantInv8x8_JPEG_16s_C1(a.s, a.d, a.t); }, "sdt"},
    {[](const Args& a) { return vqciDCTQuantInv8x8_JPEG_16s_C1I(a.d, a.t); }, "dt"},
};

// Export e with source s, table t, a step and a quality, on a destination that
// starts as block b: its status, then the 64 values it leaves there.
template <class T>
std::vector<int> run(int e, const void* s, std::array<T, 64> b, const void* t, int32_t step = 16, int32_t q = 0) {
    std::vector<int> out{kExports[e].first(Args{{s}, {b.data()}, step, {t}, q})};
    out.insert(out.end(), b.begin(), b.end());
    return out;
}

// The butterflies as written, on 32-bit unsigned values, which wrap as the
// kernels must; sh rounds off n bits, reading the sum as signed.
using U = uint32_t;
U sh(U v, int n) { return static_cast<U>(static_cast<int32_t>(v + (1u << (n - 1))) >> n); }

void fwdLine(int16_t* v, int st, bool cols) {
    const U x[8] = {U(v[0]), U(v[st]), U(v[2 * st]), U(v[3 * st]), U(v[4 * st]), U(v[5 * st]), U(v[6 * st]), U(v[7 * st])};
    const U a = (x[0] + x[7]) + (x[3] + x[4]), b = (x[0] + x[7]) - (x[3] + x[4]);
    const U c = (x[1] + x[6]) + (x[2] + x[5]), d = (x[1] + x[6]) - (x[2] + x[5]), m = (b + d) * 17734;
    const U p = 8 * (x[1] - x[6]), q = 8 * (x[2] - x[5]), s = sh(46341 * (x[3] - x[4]), 12), t = sh(46341 * (x[0] - x[7]), 12);
    const U u = (p + q) + t, w = t - (p + q), y = (p - q) + s, z = s - (p - q), n1 = 799 * (u + y), n2 = 3406 * (w + z);
    const U o[8] = {a + c, n1 + 3218 * u, 25080 * b + m, n2 - 5681 * z, a - c, n2 - 1130 * w, m - 60547 * d, n1 - 4816 * y};
    // Results are cut to 16 bits; the row pass keeps 8 E0 and 8 E4 unshifted.
    for (int k = 0; k < 8; ++k) v[k * st] = static_cast<int16_t>(k % 4 ? sh(o[k], cols ? 21 : 12) : cols ? sh(o[k], 6) : 8 * o[k]);
}

void invLine(int16_t* v, int st, bool cols) {
    const U i[8] = {U(v[0]), U(v[st]), U(v[2 * st]), U(v[3 * st]), U(v[4 * st]), U(v[5 * st]), U(v[6 * st]), U(v[7 * st])};
    const U A = 27246 * (i[5] + i[3]) - 9041 * i[5], B = 27246 * (i[5] + i[3]) - 45451 * i[3];
    const U C = 6393 * (i[1] + i[7]) + 25746 * i[1], D = 6393 * (i[1] + i[7]) - 38531 * i[7];
    const U E = C - A, F = D - B, H = E + F, J = E - F, G = sh(A + C, 12) * 5793, I = sh(B + D, 12) * 5793;
    const U T = i[0] << 15, P = i[4] << 15, Q = 17734 * (i[2] + i[6]), R = 25080 * i[2] + Q, S = Q - 60547 * i[6];
    const U W = (T - P) + S, X = (T - P) - S, Y = (T + P) + R, V = (T + P) - R;
    const U o[8] = {Y + G, W + H, X + J, V + I, V - I, X - J, W - H, Y - G};
    for (int k = 0; k < 8; ++k) v[k * st] = static_cast<int16_t>(sh(o[k], cols ? 12 : 21));
}

// Block n of a series: extremes, sparse blocks, multiples of 2048 or noise,
// scaled down or not, so that many blocks wrap and many roundings meet ties;
// a random table of entries scaled down by n % 16 bits.
void randomBlock(std::mt19937& rng, int n, std::array<int16_t, 64>& in, std::array<int16_t, 64>& table) {
    for (int i = 0; i < 64; ++i) {
        const auto v = static_cast<int16_t>(static_cast<int16_t>(rng()) >> n % 12), sparse = static_cast<int16_t>(rng() % 8 ? 0 : v);
        in[i] = static_cast<int16_t>(n % 4 == 0 ? (v < 0 ? -32768 : 32767) : n % 4 == 1 ? sparse : n % 4 == 2 ? v & -2048 : v);
        table[i] = static_cast<int16_t>(rng() >> (16 + n % 16));
    }
}

}  // namespace

// The text's edge cases, and a few worked from its rules: the wrap of the
// quality scale, rounding ties, rows given by step.
TEST(TransformVectors, WorkedCases) {
    const auto raw = fill<Vqc8u>(99, {16, 0, 255});
    const auto zz = fill<Vqc8u>(16, {1, 2, 16, 16, 16, 3, 255, 16, 16, 16, 16, 16, 16, 16, 0});  // natural 1, 2, 3, 255, 0
    const auto div16 = fill<Vqc16u>(2048), unit = fill<Vqc16u>(1);
    const auto one = fill<Vqc32f>(1), sixteenth = fill<Vqc32f>(1.0 / 16);
    const auto dc = [](double v) { return fill<Vqc16s>(0, {v}); };
    // The status and leading values, then v up to the n-th value, then the rest.
    const auto want = [](std::vector<int> h, int v, size_t n = 64, int rest = 0) { h.resize(n + 1, v); h.resize(65, rest); return h; };
    const struct { const char* what; std::vector<int> got, want; } rows[] = {
        {"quality 2^31 - 1: no upper limit, scale 202", run(kRawInit, nullptr, raw, nullptr, 0, 2147483647), want({0, 32, 1, 255}, 200)},
        {"quality -1", run(kRawInit, nullptr, raw, nullptr, 0, -1), want({-5, 16, 0, 255}, 99)},
        {"forward table", run(kFwdTable, zz.data(), unit, nullptr), want({6, 32768, 16384, 10923, 129, 65535}, 2048)},
        {"ties", run(kQuantFwd, nullptr, fill<Vqc16s>(24, {40, -24, -40, 8, 56}), div16.data()), want({0, 2, -2, -2, 0, 4}, 2)},
        {"saturation", run(kQuantInv, nullptr, fill<Vqc16s>(200, {-200}), fill<Vqc16u>(255).data()), want({0, -32768}, 32767)},
        {"flat 228, divisor 16", run(kFwdLS8, fill<Vqc8u>(228).data(), dc(0), div16.data(), 8), want({0, 50}, 0)},
        {"12-bit 65535", run(kFwdLS12, fill<Vqc16u>(65535).data(), dc(0), one.data()), want({0, 32767}, 0)},
        // Rows 8 bytes apart overlap: the 16-bit forms read and write only elements 0 to 35.
        {"12-bit DC 2.5", run(kFwdLS12, fill<Vqc16u>(0, std::vector<double>(36, 2053)).data(), dc(0), sixteenth.data(), 8), want({0, 2}, 0)},
        {"DC -1024", run(kInvLS8, dc(-1024).data(), fill<Vqc8u>(7), unit.data(), 8), want({0}, 0)},
        {"DC 1016", run(kInvLS8, dc(1016).data(), fill<Vqc8u>(7), unit.data(), 8), want({0}, 255)},
        {"12-bit 5000", run(kInvLS12, dc(23616).data(), unit, one.data(), 8), want({0}, 4095, 36, 1)},
        {"12-bit -904", run(kInvLS12, dc(-23616).data(), unit, one.data(), 8), want({0}, 0, 36, 1)},
        {"12-bit 3.5", run(kInvLS12, dc(28).data(), unit, one.data(), 8), want({0}, 2052, 36, 1)},
    };
    for (const auto& r : rows) EXPECT_EQ(r.got, r.want) << r.what;
}

TEST(TransformChecks, EveryExportInItsOrder) {
    // Small positive values as bytes, 16-bit or float entries; every call has
    // a failing check.
    auto buf = fill<Vqc32f>(1);
    for (const auto& [call, order] : kExports)
        for (const char* k = order; *k; ++k) {
            Args a{{buf.data()}, {buf.data()}, 16, {buf.data()}, 50};  // check k and all later ones fail
            for (const char* c = k; *c; ++c) {
                if (*c == 's' || *c == 'd' || *c == 't') (*c == 's' ? a.s : *c == 'd' ? a.d : a.t) = {nullptr};
                a.step = *c == 'z' ? 0 : *c == 'n' ? -16 : a.step, a.q = *c == 'q' ? 0 : a.q;
            }
            EXPECT_EQ(call(a), *k == 'q' ? -5 : *k == 'z' || *k == 'n' ? -14 : -8) << order << ", check " << *k;
        }
}

TEST(TransformKernels, AgainstTheButterfliesAndExactQuantisation) {
    // Extremes, sparse blocks, multiples of 2048 and noise, scaled down or not:
    // many blocks wrap and many roundings meet ties. Random tables: the
    // forward one read unsigned with ties to even, the inverse one read signed
    // and saturating.
    std::mt19937 rng(16);
    for (int n = 0; n < 4000; ++n) {
        std::array<int16_t, 64> in, fwd, inv, wantFwd, wantInv, table;  // the table is handed over as unsigned
        randomBlock(rng, n, in, table);
        for (int i = 0; i < 64; ++i) wantInv[i] = static_cast<int16_t>(std::clamp(table[i] * in[i], -32768, 32767));
        fwd = inv = wantFwd = in;
        for (int l = 0; l < 8; ++l) fwdLine(&wantFwd[8 * l], 1, false), invLine(&wantInv[l], 8, true);
        for (int l = 0; l < 8; ++l) fwdLine(&wantFwd[l], 8, true), invLine(&wantInv[8 * l], 1, false);
        // The out-of-place and the in-place forms by turns.
        ASSERT_EQ(kExports[kFwd + n % 2].first({{in.data()}, {fwd.data()}, 0, {table.data()}, 0}), vqcStatusOk);
        for (int i = 0; i < 64; ++i)
            ASSERT_EQ(fwd[i], std::clamp(std::nearbyint((table[i] & 0xFFFF) * (wantFwd[i] / 32768.0)), -32768.0, 32767.0)) << "block " << n;
        ASSERT_EQ(kExports[kInv + n % 2].first({{in.data()}, {inv.data()}, 0, {table.data()}, 0}), vqcStatusOk);
        ASSERT_EQ(inv, wantInv) << "inverse, block " << n;
    }
}

// Every SIMD target against the baseline's plain routines: each block export
// on the series above, with odd steps, and the 8-bit forms on bytes that
// reach 0 and 255. Every third table holds powers of two, whose quotients
// meet ties.
TEST(TransformKernels, EveryTarget) {
    std::mt19937 rng(61);
    for (int n = 0; n < 240; ++n) {
        std::array<int16_t, 64> in, table;
        randomBlock(rng, n, in, table);
        if (n % 3 == 0)
            for (int i = 0; i < 64; ++i) table[i] = static_cast<int16_t>(1 << (i + n) % 16);
        const int32_t step = 8 + n % 7 * 5;  // bytes, odd or even, in rows of 8 bytes or of 8 16-bit values
        std::vector<uint8_t> src(size_t(step) * 7 + 16);  // read as bytes or 16-bit values
        for (size_t i = 0; i < src.size(); ++i) src[i] = static_cast<uint8_t>(in[i % 64] >> (n % 2 ? 8 : 0));
        // Float tables: powers of two, whose products meet ties, or the
        // integer table scaled, with an overflow to infinity now and then.
        std::array<float, 64> ftable;
        for (int i = 0; i < 64; ++i)
            ftable[i] = n % 3 == 0 ? std::ldexp(1.0f, i % 8 - 4) : i == n % 64 && n % 5 == 0 ? 1e38f : (table[i] & 0xFFF) / 64.0f;
        const auto run = [&] {
            std::vector<int16_t> out(10 * 64);
            std::vector<uint8_t> px(size_t(step + 8) * 8 + 16, 0xA5);
            int16_t* o = out.data();
            auto each = [&](int e, const void* s, int32_t st, const void* t, bool toPx = false) {
                std::copy(in.begin(), in.end(), o);
                EXPECT_EQ(kExports[e].first({{s}, {toPx ? static_cast<void*>(px.data()) : o}, st, {t}, 0}), 0) << e;
                o += 64;
            };
            each(kFwdLS8, src.data(), step, table.data()), each(kFwd, in.data(), 0, table.data());
            each(kFwdI, nullptr, 0, table.data()), each(kInvLS8, in.data(), step, table.data(), true);
            each(kInv, in.data(), 0, table.data()), each(kInvI, nullptr, 0, table.data());
            each(kFwdLS12, src.data(), step, ftable.data());
            each(kQuantFwd, nullptr, 0, table.data()), each(kQuantInv, nullptr, 0, table.data());
            std::vector<uint8_t> bytes(reinterpret_cast<uint8_t*>(out.data()), reinterpret_cast<uint8_t*>(out.data() + out.size()));
            bytes.insert(bytes.end(), px.begin(), px.end());
            std::fill(px.begin(), px.end(), 0xA5);
            each(kInvLS12, in.data(), step + 8, ftable.data(), true);
            bytes.insert(bytes.end(), px.begin(), px.end());
            return bytes;
        };
        vqcjtest::expectSameOnEveryTarget(run, "block " + std::to_string(n));
    }
}

// Blocks at the extremes, on every target against the baseline: each DCT
// basis pattern as full-scale samples (the largest value its coefficient
// takes), as 16-bit samples at -128 and 127 (the 16-bit path), at -129 and
// 128 (just outside it) and at full range, and as coefficients of +-32767
// and -32768; tables of divisors 1 and 255, of the extreme reciprocals and
// of dequantisers that saturate or read negative. A value overflowing its
// 16-bit lane on some target would change some output.
TEST(TransformKernels, ExtremeBlocksOnEveryTarget) {
    const uint16_t fwdTables[] = {32768, 129, 65535, 1}, invTables[] = {1, 255, 32767, 65535, 32768};
    for (int n = 0; n < 128; ++n) {
        std::array<uint8_t, 64> px;
        std::array<int16_t, 64> in8, in9, full;
        for (int i = 0; i < 64; ++i) {
            const double b = std::cos((2 * (i / 8) + 1) * (n / 16) * M_PI / 16) * std::cos((2 * (i % 8) + 1) * (n / 2 % 8) * M_PI / 16);
            const bool up = (b >= 0) != (n % 2 == 1);
            px[i] = up ? 255 : 0, in8[i] = up ? 127 : -128, in9[i] = up ? 128 : -129, full[i] = up ? 32767 : -32768;
        }
        std::array<uint16_t, 64> fwd, inv;
        fwd.fill(fwdTables[n % 4]), inv.fill(invTables[n % 5]);
        fwd[n % 64] = 32768, inv[n % 64] = 1;  // one exact coefficient in each
        const auto run = [&] {
            std::vector<int16_t> out;
            const auto add = [&](auto call) { std::array<int16_t, 64> o{}; EXPECT_EQ(call(o.data()), 0); out.insert(out.end(), o.begin(), o.end()); };
            add([&](int16_t* o) { return vqciDCTQuantFwd8x8LS_JPEG_8u16s_C1R(px.data(), 8, o, fwd.data()); });
            for (const auto* src : {&in8, &in9, &full}) {
                add([&](int16_t* o) { return vqciDCTQuantFwd8x8_JPEG_16s_C1(src->data(), o, fwd.data()); });
                add([&](int16_t* o) { return vqciDCTQuantInv8x8_JPEG_16s_C1(src->data(), o, inv.data()); });
                add([&](int16_t* o) { return vqciDCTQuantInv8x8LS_JPEG_16s8u_C1R(src->data(), reinterpret_cast<uint8_t*>(o), 8, inv.data()); });
                add([&](int16_t* o) { std::copy(src->begin(), src->end(), o); return vqciQuantFwd8x8_JPEG_16s_C1I(o, fwd.data()); });
                add([&](int16_t* o) { std::copy(src->begin(), src->end(), o); return vqciQuantInv8x8_JPEG_16s_C1I(o, inv.data()); });
            }
            return std::vector<uint8_t>(reinterpret_cast<uint8_t*>(out.data()), reinterpret_cast<uint8_t*>(out.data() + out.size()));
        };
        vqcjtest::expectSameOnEveryTarget(run, "extreme block " + std::to_string(n));
    }
}

