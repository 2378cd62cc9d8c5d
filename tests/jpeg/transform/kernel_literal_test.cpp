// The kernels against their butterflies written out term by term. The
// fixed-point kernels regroup their products for 16-bit multiplies, so they
// are checked with 32-bit wrap on blocks that use the whole 16-bit range,
// where every pass overflows. The single-precision kernels run their stages
// as line passes, so they are checked bit for bit on non-integer data,
// where any other order of the additions would round differently.
#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <cstring>
#include <random>

#include "jpeg/transform/dct.h"

namespace {

using Block = std::array<int16_t, 64>;

// 32-bit wrapping arithmetic spelled with unsigned values.
struct Wr {
    uint32_t v;
    Wr(int64_t x) : v(static_cast<uint32_t>(x)) {}
    friend Wr operator+(Wr a, Wr b) { return Wr(int64_t{0} + a.v + b.v); }
    friend Wr operator-(Wr a, Wr b) { return Wr(int64_t{a.v} - b.v); }
    friend Wr operator*(int64_t c, Wr a) { return Wr(static_cast<int64_t>(static_cast<uint64_t>(c) * a.v)); }
    Wr operator>>(int n) const { return Wr(static_cast<int32_t>(v) >> n); }
    int16_t cut() const { return static_cast<int16_t>(v); }
};

void fwdLine(const int16_t* in, int stride, int16_t* out, bool rowPass) {
    Wr x[8] = {in[0], in[stride], in[2 * stride], in[3 * stride], in[4 * stride], in[5 * stride], in[6 * stride],
               in[7 * stride]};
    Wr a = (x[0] + x[7]) + (x[3] + x[4]), b = (x[0] + x[7]) - (x[3] + x[4]);
    Wr c = (x[1] + x[6]) + (x[2] + x[5]), d = (x[1] + x[6]) - (x[2] + x[5]);
    Wr m = 17734 * (b + d);
    Wr e0 = a + c, e4 = a - c, e2 = 25080 * b + m, e6 = m - 60547 * d;
    Wr p = 8 * (x[1] - x[6]), q = 8 * (x[2] - x[5]);
    Wr s = (46341 * (x[3] - x[4]) + 2048) >> 12, t = (46341 * (x[0] - x[7]) + 2048) >> 12;
    Wr u = (p + q) + t, v = (p - q) + s, w = t - (p + q), z = s - (p - q);
    Wr n1 = 799 * (u + v), n2 = 3406 * (w + z);
    Wr o1 = n1 + 3218 * u, o7 = n1 - 4816 * v, o3 = n2 - 5681 * z, o5 = n2 - 1130 * w;
    Wr res[8] = {e0, o1, e2, o3, e4, o5, e6, o7};
    for (int k = 0; k < 8; ++k) {
        Wr r = k % 4 == 0 ? (rowPass ? 8 * res[k] : (res[k] + 32) >> 6)
                          : (rowPass ? (res[k] + 2048) >> 12 : (res[k] + 1048576) >> 21);
        out[k * stride] = r.cut();
    }
}

void invLine(const int16_t* in, int stride, int16_t* out, bool colPass) {
    Wr i[8] = {in[0], in[stride], in[2 * stride], in[3 * stride], in[4 * stride], in[5 * stride], in[6 * stride],
               in[7 * stride]};
    Wr A = 27246 * (i[5] + i[3]) - 9041 * i[5], B = 27246 * (i[5] + i[3]) - 45451 * i[3];
    Wr C = 6393 * (i[1] + i[7]) + 25746 * i[1], D = 6393 * (i[1] + i[7]) - 38531 * i[7];
    Wr E = C - A, F = D - B, H = E + F, J = E - F;
    Wr G = 5793 * ((A + C + 2048) >> 12), I = 5793 * ((B + D + 2048) >> 12);
    Wr T = 32768 * i[0], P = 32768 * i[4], Q = 17734 * (i[2] + i[6]);
    Wr R = 25080 * i[2] + Q, S = Q - 60547 * i[6];
    Wr U = (T + P) + R, V = (T + P) - R, W = (T - P) + S, X = (T - P) - S;
    Wr y[8] = {U + G, W + H, X + J, V + I, V - I, X - J, W - H, U - G};
    for (int k = 0; k < 8; ++k) out[k * stride] = (colPass ? (y[k] + 2048) >> 12 : (y[k] + 1048576) >> 21).cut();
}

Block literalForward(const Block& in) {
    Block tmp, out;
    for (int r = 0; r < 8; ++r) fwdLine(&in[r * 8], 1, &tmp[r * 8], true);
    for (int c = 0; c < 8; ++c) fwdLine(&tmp[c], 8, &out[c], false);
    return out;
}

Block literalInverse(const Block& in) {
    Block tmp, out;
    for (int c = 0; c < 8; ++c) invLine(&in[c], 8, &tmp[c], true);
    for (int r = 0; r < 8; ++r) invLine(&tmp[r * 8], 1, &out[r * 8], false);
    return out;
}

// Full-range noise, extremes, and noise scaled down so that some blocks
// stay in range.
Block testBlock(std::mt19937& rng, int n) {
    std::uniform_int_distribution<int> full(-32768, 32767);
    Block b;
    for (auto& v : b) {
        const int x = full(rng);
        v = static_cast<int16_t>(n % 4 == 0 ? x : n % 4 == 1 ? (x < 0 ? -32768 : 32767) : x >> (n % 12));
    }
    return b;
}

}  // namespace

TEST(KernelLiteral, FixedForwardWrapsLikeTheButterfly) {
    std::mt19937 rng(16);
    for (int n = 0; n < 4000; ++n) {
        const Block in = testBlock(rng, n);
        Block out;
        ASSERT_EQ(vqcj::ownDCT8x8Fwd16s(in.data(), out.data()), vqcStatusOk);
        ASSERT_EQ(out, literalForward(in)) << "block " << n;
    }
}

TEST(KernelLiteral, FixedInverseWrapsLikeTheButterfly) {
    std::mt19937 rng(61);
    for (int n = 0; n < 4000; ++n) {
        const Block in = testBlock(rng, n);
        Block out;
        vqcj::ownDCT8x8Inv16s(in.data(), out.data());
        ASSERT_EQ(out, literalInverse(in)) << "block " << n;
    }
}

namespace {

using Block32f = std::array<float, 64>;

void literalForward32f(Block32f& z) {
    // Four samples at once: pairs within a row first, then across rows.
    for (int r = 0; r < 4; ++r) {
        for (int c = 0; c < 4; ++c) {
            float& a = z[r * 8 + c];
            float& b = z[r * 8 + 7 - c];
            float& e = z[(7 - r) * 8 + c];
            float& f = z[(7 - r) * 8 + 7 - c];
            const float s1 = a + b, d1 = a - b, s2 = e + f, d2 = e - f;
            a = s1 + s2, e = s1 - s2, b = d1 + d2, f = d1 - d2;
        }
    }
    const auto line = [](float* v, int st) {
        const float E0 = v[0], E1 = v[st], E2 = v[2 * st], E3 = v[3 * st];
        const float D0 = v[7 * st], D1 = v[6 * st], D2 = v[5 * st], D3 = v[4 * st];
        const float A = E0 + E3, B = E1 + E2, C = E0 - E3, M = E1 - E2, w = 0.70710677f * (M + C);
        const float P = 0.76536685f * (D1 + D2) + 1.0823922f * D0, Q = 1.0823922f * D0 - 0.76536685f * (D1 + D2);
        const float R = 0.41421357f * (D2 + D3) + (D0 + D1), S = (D2 + D3) - 0.41421357f * (D0 + D1);
        const float out[8] = {A + B, P + R, C + w, Q - S, A - B, Q + S, C - w, P - R};
        for (int k = 0; k < 8; ++k) v[k * st] = out[k];
    };
    for (int c = 0; c < 8; ++c) line(&z[c], 8);
    for (int r = 0; r < 8; ++r) line(&z[r * 8], 1);
    const float f[8] = {1.0f, 0.66608f, 0.7653669f, 0.785695f, 1.0f, 1.1758755f, 1.847759f, 3.3486104f};
    for (int i = 0; i < 64; ++i) z[i] *= f[i / 8] * f[i % 8] / 8.0f;
}

void literalInverse32f(Block32f& z) {
    const float g[8] = {1.0f, 2.5629156f, 1.306563f, 2.1727347f, 1.0f, 1.451775f, 0.5411961f, 0.5097956f};
    const auto line = [](float* v, int st) {
        const float a0 = v[0], a1 = v[st], a2 = v[2 * st], a3 = v[3 * st];
        const float a4 = v[4 * st], a5 = v[5 * st], a6 = v[6 * st], a7 = v[7 * st];
        const float t0 = (a0 + a4) + (a2 + a6), t4 = (a0 + a4) - (a2 + a6);
        const float e = 1.4142135f * (a2 - a6) - (a2 + a6);
        const float t6 = (a0 - a4) + e, t2 = (a0 - a4) - e;
        const float t7 = 0.5411961f * ((a3 + a5) + (a1 + a7));
        const float t1 = (a1 - a7) - 0.41421357f * (a5 - a3) - t7;
        const float t5 = 0.76536685f * ((a1 + a7) - (a3 + a5)) - t1;
        const float t3 = (a5 - a3) + 0.41421357f * (a1 - a7) - t5;
        const float t[8] = {t0, t1, t2, t3, t4, t5, t6, t7};
        for (int k = 0; k < 8; ++k) v[k * st] = t[k];
    };
    for (int i = 0; i < 64; ++i) z[i] *= g[i / 8] * g[i % 8] / 8.0f;
    for (int r = 0; r < 8; ++r) line(&z[r * 8], 1);
    for (int c = 0; c < 8; ++c) line(&z[c], 8);
    // y_k, y_(7-k) from t_a, t_b; the four values of an output, row pairs first.
    const int pa[4] = {0, 6, 2, 4}, pb[4] = {7, 1, 5, 3};
    Block32f out;
    for (int i = 0; i < 4; ++i) {
        for (int j = 0; j < 4; ++j) {
            const float aa = z[pa[i] * 8 + pa[j]], ab = z[pa[i] * 8 + pb[j]];
            const float ba = z[pb[i] * 8 + pa[j]], bb = z[pb[i] * 8 + pb[j]];
            const float s1 = aa + ab, d1 = aa - ab, s2 = ba + bb, d2 = ba - bb;
            out[i * 8 + j] = s1 + s2, out[(7 - i) * 8 + j] = s1 - s2;
            out[i * 8 + 7 - j] = d1 + d2, out[(7 - i) * 8 + 7 - j] = d1 - d2;
        }
    }
    z = out;
}

Block32f randomFloats(std::mt19937& rng) {
    std::uniform_real_distribution<float> d(-3000.0f, 3000.0f);
    Block32f b;
    for (auto& v : b) v = d(rng);
    return b;
}

}  // namespace

TEST(KernelLiteral, FloatForwardInTheStatedOrder) {
    std::mt19937 rng(32);
    for (int n = 0; n < 2000; ++n) {
        Block32f got = randomFloats(rng), want = got;
        ASSERT_EQ(vqcj::ownDCT8x8Fwd32f(got.data()), vqcStatusOk);
        literalForward32f(want);
        ASSERT_EQ(std::memcmp(got.data(), want.data(), sizeof got), 0) << "block " << n;
    }
    EXPECT_EQ(vqcj::ownDCT8x8Fwd32f(nullptr), vqcStatusNullPtr);
}

TEST(KernelLiteral, FloatInverseInTheStatedOrder) {
    std::mt19937 rng(23);
    for (int n = 0; n < 2000; ++n) {
        Block32f got = randomFloats(rng), want = got;
        vqcj::ownDCT8x8Inv32f(got.data());
        literalInverse32f(want);
        ASSERT_EQ(std::memcmp(got.data(), want.data(), sizeof got), 0) << "block " << n;
    }
}
