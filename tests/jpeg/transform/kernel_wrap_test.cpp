// The fixed-point kernels regroup their products for 16-bit multiplies;
// this checks them against the butterflies written out term by term, with
// 32-bit wrap, on blocks that use the whole 16-bit range, where every pass
// overflows.
#include <gtest/gtest.h>

#include <array>
#include <cstdint>
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

TEST(KernelWrap, ForwardMatchesTheButterflyTermByTerm) {
    std::mt19937 rng(16);
    for (int n = 0; n < 4000; ++n) {
        const Block in = testBlock(rng, n);
        Block out;
        ASSERT_EQ(vqcj::ownDCT8x8Fwd16s(in.data(), out.data()), vqcStatusOk);
        ASSERT_EQ(out, literalForward(in)) << "block " << n;
    }
}

TEST(KernelWrap, InverseMatchesTheButterflyTermByTerm) {
    std::mt19937 rng(61);
    for (int n = 0; n < 4000; ++n) {
        const Block in = testBlock(rng, n);
        Block out;
        vqcj::ownDCT8x8Inv16s(in.data(), out.data());
        ASSERT_EQ(out, literalInverse(in)) << "block " << n;
    }
}
