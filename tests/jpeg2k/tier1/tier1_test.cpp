// Tier-1 encoder and decoder: hand-worked vectors, argument-check orders,
// round trips over sizes, subbands, every flag combination and truncated
// pass counts, resumable stores, and damaged streams.
#include "support/j2k_tier1.h"
#include "support/testutil.h"

#include <gtest/gtest.h>

#include <memory>
#include <random>

using namespace vqcjtest;

namespace {

constexpr int kNoClosing = 0x40000;

using EncPtr = std::unique_ptr<VqciEncodeState_JPEG2K, VqcStatus (*)(VqciEncodeState_JPEG2K*)>;
EncPtr newEncoder(int w, int h) {
    VqciEncodeState_JPEG2K* s = nullptr;
    EXPECT_EQ(vqciEncodeInitAlloc_JPEG2K(&s, {w, h}), vqcStatusOk);
    return EncPtr(s, vqciEncodeFree_JPEG2K);
}

// Magnitudes like a wavelet detail band's: mostly small, a few large.
T1Block randomBlock(int w, int h, int subband, int magnBits, uint32_t seed, double scale) {
    std::mt19937 rng(seed);
    std::exponential_distribution<double> ex(1.0);
    T1Block b{w, h, subband, {}};
    const double limit = (1u << std::min(magnBits, 30)) - 1;
    for (int i = 0; i < w * h; ++i) {
        uint32_t mag = uint32_t(std::min(ex(rng) * scale * ((rng() & 15) == 0 ? 40 : 1), limit));
        mag = (rng() & 3) == 0 ? 0 : mag << (31 - magnBits);
        b.smag.push_back(int32_t(mag | ((rng() & 1) ? 0x80000000u : 0)));
    }
    return b;
}

std::vector<int32_t> decodeOneCall(const T1Coded& c, const T1Block& b, int nPasses, int flags, VqcStatus* st = nullptr,
                                   int32_t* errPlane = nullptr) {
    std::vector<int32_t> out(b.w * b.h, 0x5A5A5A5A);
    int32_t size = 0;
    vqciDecodeGetBufSize_JPEG2K(b.w, b.h, &size);
    std::vector<uint8_t> mem(size);
    const auto lens = t1SegmentsFor(c, nPasses);
    const uint8_t dummy = 0;
    const VqcStatus s = vqciDecodeCodeBlock_JPEG2K_1u32s_C1R(
        c.bytes.empty() ? &dummy : c.bytes.data(), out.data(), 4 * b.w, b.w, b.h, b.subband, c.sfBits, nPasses,
        lens.empty() ? &c.nPasses : lens.data(), int32_t(lens.size()), flags, errPlane,
        reinterpret_cast<VqciDecodeCBProgrState_JPEG2K*>(mem.data()));
    if (st) *st = s;
    else EXPECT_EQ(s, vqcStatusOk);
    return out;
}

// After n passes every bit above the current plane is exact, the current
// plane holds only true bits, and nothing lies below it.
void expectPrefix(const T1Block& b, const std::vector<int32_t>& got, int sfBits, int n) {
    const bool planeDone = n == 0 || n % 3 == 1;  // nothing yet, or a cleanup last
    const int low = n == 0 ? sfBits : planeDone ? sfBits - 1 - (n - 1) / 3 : sfBits - 1 - (n + 1) / 3;
    const uint32_t exact = (planeDone ? (low >= 31 ? 0u : ~((1u << low) - 1)) : ~((2u << low) - 1)) & 0x7FFFFFFF;
    const uint32_t partial = planeDone ? 0u : 1u << low;
    for (size_t i = 0; i < got.size(); ++i) {
        const uint32_t m = b.smag[i] & 0x7FFFFFFF, g = got[i] & 0x7FFFFFFF;
        ASSERT_EQ(g & exact, m & exact) << "coefficient " << i << " after " << n << " passes";
        ASSERT_EQ(g & ~exact & ~(partial & m), 0u) << "false or low bits, coefficient " << i;
        ASSERT_EQ(got[i] < 0, g && b.smag[i] < 0) << "sign, coefficient " << i;
    }
}

}  // namespace

// One coefficient of 1: a cleanup of two decisions, zero coding (LPS in
// context 2 from state 4) and the sign (MPS in context 11), then the flush,
// worked out by hand down to the byte. Distortion of 1 << 10: significance
// in the top plane adds 6144 at exponent 2 * 10 - 13, the first refinement
// 128 * 64 - 2048 at exponent 5; the lossless table at the last plane gives
// 2 * 64 * 64 / 2^13.
TEST(Tier1, HandWorkedVectors) {
    auto enc = newEncoder(1, 1);
    const T1Block one{1, 1, 0, {1}};
    const T1Coded c = t1Encode(enc.get(), one, 31, 0, 0);
    EXPECT_EQ(c.sfBits * 10 + c.nPasses, 11);
    ASSERT_EQ(c.bytes, std::vector<uint8_t>{0x03});
    EXPECT_EQ(c.rates[0], 1);
    EXPECT_EQ(decodeOneCall(c, one, 1, kNoClosing)[0], 1);
    t1Encode(enc.get(), T1Block{1, 1, 0, {1 << 10}}, 31, 0, 0);
    double d0 = 0, d2 = 0;
    ASSERT_EQ(vqciEncodeGetDist_JPEG2K(enc.get(), 0, &d0) | vqciEncodeGetDist_JPEG2K(enc.get(), 2, &d2), 0);
    EXPECT_EQ(d0, 6144.0 * 128);
    EXPECT_EQ(d2, 6144.0 * 128 + 6144.0 * 32);
    EXPECT_EQ(t1Encode(enc.get(), T1Block{1, 1, 0, {1 << 10}}, 21, 32, 0).nPasses, 1);
    ASSERT_EQ(vqciEncodeGetDist_JPEG2K(enc.get(), 0, &d0), vqcStatusOk);
    EXPECT_EQ(d0, 1.0);
}

TEST(Tier1, EncoderCheckOrder) {
    auto enc = newEncoder(8, 8);
    VqciEncodeState_JPEG2K *e = enc.get(), *out = e;
    VqciDecodeCBProgrState_JPEG2K* dstate = nullptr;
    ASSERT_EQ(vqciDecodeCBProgrInitAlloc_JPEG2K(&dstate, 8, 8), vqcStatusOk);
    auto* wrong = reinterpret_cast<VqciEncodeState_JPEG2K*>(dstate);
    int32_t src[64] = {}, i1 = 0, i2 = 0, i3 = 0, len = 0, nf = 0;
    uint8_t dst[16];
    double dd;
    EXPECT_EQ(vqciEncodeInitAlloc_JPEG2K(nullptr, {0, 0}), vqcStatusNullPtr);
    EXPECT_EQ(vqciEncodeInitAlloc_JPEG2K(&out, {4, 0}), vqcStatusBadSize);
    EXPECT_EQ(out, e);  // a refusal writes nothing
    EXPECT_EQ(vqciEncodeFree_JPEG2K(nullptr), vqcStatusNullPtr);
    auto load = [&](const int32_t* s, int step, VqciSize sz, VqciEncodeState_JPEG2K* st, int32_t* a, int32_t* c) {
        return vqciEncodeLoadCodeBlock_JPEG2K_32s_C1R(s, step, sz, st, 0, 31, 0, 0, 0, a, &i2, c);
    };
    EXPECT_EQ(load(nullptr, 0, {0, 0}, nullptr, nullptr, &i3), vqcStatusNullPtr);
    EXPECT_EQ(load(nullptr, 0, {0, 0}, wrong, nullptr, &i3), vqcStatusBadContext);
    EXPECT_EQ(load(nullptr, 0, {0, 0}, e, &i1, nullptr), vqcStatusNullPtr);
    EXPECT_EQ(load(nullptr, 0, {1, 0}, e, &i1, &i3), vqcStatusBadSize);
    EXPECT_EQ(load(nullptr, 0, {8, 8}, e, &i1, &i3), vqcStatusNullPtr);
    EXPECT_EQ(load(src, 0, {8, 8}, e, &i1, &i3), vqcStatusBadStep);
    EXPECT_EQ(vqciEncodeStoreBits_JPEG2K_1u(nullptr, nullptr, nullptr, nullptr), vqcStatusNullPtr);
    EXPECT_EQ(vqciEncodeStoreBits_JPEG2K_1u(nullptr, nullptr, wrong, nullptr), vqcStatusBadContext);
    EXPECT_EQ(vqciEncodeStoreBits_JPEG2K_1u(dst, &len, e, nullptr), vqcStatusNullPtr);
    EXPECT_EQ(vqciEncodeStoreBits_JPEG2K_1u(dst, &len, e, &nf), vqcStatusBadSize);
    src[9] = 5;
    ASSERT_EQ(load(src, 32, {8, 8}, e, &i1, &i3), vqcStatusOk);
    EXPECT_EQ(i2, 7);
    EXPECT_EQ(vqciEncodeGetRate_JPEG2K(nullptr, -1, nullptr), vqcStatusNullPtr);
    EXPECT_EQ(vqciEncodeGetRate_JPEG2K(wrong, -1, nullptr), vqcStatusBadContext);
    EXPECT_EQ(vqciEncodeGetRate_JPEG2K(e, -1, nullptr), vqcStatusNullPtr);
    EXPECT_EQ(vqciEncodeGetRate_JPEG2K(e, -1, &len), vqcStatusJPEG2KBadPassNumber);
    EXPECT_EQ(vqciEncodeGetRate_JPEG2K(e, 7, &len), vqcStatusJPEG2KBadPassNumber);
    EXPECT_EQ(vqciEncodeGetDist_JPEG2K(wrong, 0, nullptr), vqcStatusBadContext);
    EXPECT_EQ(vqciEncodeGetDist_JPEG2K(e, 7, &dd), vqcStatusJPEG2KBadPassNumber);
    EXPECT_EQ(vqciEncodeGetDist_JPEG2K(e, 6, &dd), vqcStatusOk);
    EXPECT_EQ(vqciEncodeGetTermPassLen_JPEG2K(e, 1, &len), vqcStatusJPEG2KBadPassNumber);
    EXPECT_EQ(vqciEncodeGetTermPassLen_JPEG2K(e, 0, nullptr), vqcStatusNullPtr);
    // An all-zero block: no bit-planes, no pass, one (empty) segment, nothing to store.
    src[9] = 0;
    ASSERT_EQ(load(src, 32, {8, 8}, e, &i1, &i3), vqcStatusOk);
    EXPECT_EQ(i1 | i2 | (i3 - 1), 0);
    len = 16, nf = 7;
    EXPECT_EQ(vqciEncodeStoreBits_JPEG2K_1u(dst, &len, e, &nf), vqcStatusOk);
    EXPECT_EQ(len | nf, 0);
    EXPECT_EQ(vqciEncodeGetRate_JPEG2K(e, 0, &len), vqcStatusJPEG2KBadPassNumber);
    vqciDecodeCBProgrFree_JPEG2K(dstate);
}

TEST(Tier1, DecoderCheckOrder) {
    auto enc = newEncoder(4, 4);
    auto* wrong = reinterpret_cast<VqciDecodeCBProgrState_JPEG2K*>(enc.get());
    int32_t size = 0, r = 0, dst[16];
    const uint8_t src[4] = {};
    EXPECT_EQ(vqciDecodeCBProgrGetStateSize_JPEG2K(0, 4, nullptr), vqcStatusBadSize);
    EXPECT_EQ(vqciDecodeGetBufSize_JPEG2K(4, 0, nullptr), vqcStatusBadSize);
    EXPECT_EQ(vqciDecodeCBProgrGetStateSize_JPEG2K(4, 4, nullptr), vqcStatusNullPtr);
    // 4 * 5 + 8 rounds to 32 bytes, (5 + 1) / 2 + 2 rows, plus 388.
    ASSERT_EQ(vqciDecodeCBProgrGetStateSize_JPEG2K(5, 5, &size), vqcStatusOk);
    EXPECT_EQ(size, 32 * 5 + 388);
    ASSERT_EQ(vqciDecodeGetBufSize_JPEG2K(7, 1, &size), vqcStatusOk);
    EXPECT_EQ(size, 64 * 3 + 388);
    EXPECT_EQ(vqciDecodeGetBufSize_JPEG2K(1 << 30, 4, &size), vqcStatusBadSize);  // more than 32 bits hold
    EXPECT_EQ(vqciDecodeCBProgrInitAlloc_JPEG2K(nullptr, 0, 0), vqcStatusNullPtr);
    VqciDecodeCBProgrState_JPEG2K* s = nullptr;
    EXPECT_EQ(vqciDecodeCBProgrInitAlloc_JPEG2K(&s, 4, 0), vqcStatusBadSize);
    ASSERT_EQ(vqciDecodeCBProgrInitAlloc_JPEG2K(&s, 4, 4), vqcStatusOk);
    EXPECT_EQ(vqciDecodeCBProgrInit_JPEG2K(nullptr), vqcStatusNullPtr);
    EXPECT_EQ(vqciDecodeCBProgrFree_JPEG2K(nullptr), vqcStatusNullPtr);
    EXPECT_EQ(vqciDecodeCBProgrFree_JPEG2K(wrong), vqcStatusBadContext);
    EXPECT_EQ(vqciDecodeCBProgrStep_JPEG2K(src, 4, s), vqcStatusJPEG2KNotAttached);
    auto attach = [&](int32_t* d, int step, int h, VqciDecodeCBProgrState_JPEG2K* st) {
        return vqciDecodeCBProgrAttach_JPEG2K_32s_C1R(d, step, 0, h, st, 0, 0, 0);
    };
    EXPECT_EQ(attach(nullptr, 0, 0, nullptr), vqcStatusNullPtr);
    EXPECT_EQ(attach(nullptr, 0, 0, wrong), vqcStatusBadContext);
    EXPECT_EQ(attach(nullptr, 0, 0, s), vqcStatusNullPtr);
    EXPECT_EQ(attach(dst, 0, 0, s), vqcStatusBadStep);
    EXPECT_EQ(attach(dst, 16, 1, s), vqcStatusBadSize);
    // The two getters test pointer and tag in different orders.
    EXPECT_EQ(vqciDecodeCBProgrGetCurBitPlaneNum_JPEG2K(wrong, nullptr), vqcStatusBadContext);
    EXPECT_EQ(vqciDecodeCBProgrGetPassCounter_JPEG2K(wrong, nullptr), vqcStatusNullPtr);
    EXPECT_EQ(vqciDecodeCBProgrGetPassCounter_JPEG2K(wrong, &r), vqcStatusBadContext);
    EXPECT_EQ(vqciDecodeCBProgrSetPassCounter_JPEG2K(3, nullptr), vqcStatusNullPtr);
    EXPECT_EQ(vqciDecodeCBProgrSetPassCounter_JPEG2K(3, wrong), vqcStatusBadContext);
    EXPECT_EQ(vqciDecodeCBProgrStep_JPEG2K(nullptr, 0, s), vqcStatusNullPtr);
    EXPECT_EQ(vqciDecodeCBProgrStep_JPEG2K(src, 0, wrong), vqcStatusBadContext);
    const int32_t lens[1] = {4};
    auto one = [&](int32_t* d, int step, int w, int h, const int32_t* l, VqciDecodeCBProgrState_JPEG2K* st) {
        return vqciDecodeCodeBlock_JPEG2K_1u32s_C1R(src, d, step, w, h, 0, 3, 1, l, 1, 0, nullptr, st);
    };
    EXPECT_EQ(one(nullptr, 0, 0, 4, nullptr, nullptr), vqcStatusNullPtr);
    EXPECT_EQ(one(nullptr, 0, 4, 0, nullptr, s), vqcStatusBadSize);
    EXPECT_EQ(one(dst, 0, 4, 4, nullptr, s), vqcStatusNullPtr);
    EXPECT_EQ(one(nullptr, 0, 4, 4, lens, s), vqcStatusNullPtr);
    EXPECT_EQ(one(dst, 0, 4, 4, lens, s), vqcStatusBadStep);
    ASSERT_EQ(vqciDecodeCBProgrFree_JPEG2K(s), vqcStatusOk);
}

// Every flag combination, the three terminations, sizes from 1x1 to 1024x4,
// all subbands, magnBits up to 31; each pass count decoded in one call and
// step by step; stores in small chunks give the same bytes as one store.
TEST(Tier1, RoundTripAllFlagsAndTruncations) {
    const int shapes[][2] = {{1, 1}, {3, 5}, {4, 4}, {7, 13}, {16, 16}, {33, 17}, {64, 64}, {1024, 4}, {4, 1024}, {5, 2}};
    auto enc = newEncoder(1024, 1024);
    VqciDecodeCBProgrState_JPEG2K* ds = nullptr;
    ASSERT_EQ(vqciDecodeCBProgrInitAlloc_JPEG2K(&ds, 1024, 1024), vqcStatusOk);
    uint32_t seed = 1;
    for (const auto& sh : shapes) {
        const bool big = sh[0] * sh[1] > 300;
        for (int flags = 0; flags < 64; flags += big ? 7 : 1, ++seed) {
            const int term = seed % 3, magnBits = big ? 12 + seed % 19 : 3 + seed % 29;
            const T1Block b = randomBlock(sh[0], sh[1], seed % 4, magnBits, seed, magnBits > 8 ? 12.0 : 1.5);
            const T1Coded c = t1Encode(enc.get(), b, magnBits, flags, term);
            SCOPED_TRACE(testing::Message() << sh[0] << "x" << sh[1] << " flags " << flags << " term " << term
                                            << " magnBits " << magnBits << " passes " << c.nPasses);
            const T1Coded part = t1Encode(enc.get(), b, magnBits, flags, term, seed % 5 ? 1 + seed % 61 : 1);
            ASSERT_TRUE(part.bytes == c.bytes && part.rates == c.rates && part.termLens == c.termLens);
            ASSERT_EQ(c.termLens.size(), size_t(c.nPasses ? c.segOfPass.back() + 1 : c.termLens.size()));
            int32_t total = 0;
            for (int32_t l : c.termLens) total += l;
            ASSERT_EQ(total, int32_t(c.bytes.size()));
            // Rates never fall, and never end on a 0xFF (a decoder reads ones there).
            for (int p = 0; p < c.nPasses; ++p) {
                ASSERT_LE(p ? c.rates[p - 1] : 0, c.rates[p]);
                ASSERT_LE(c.rates[p], total);
                ASSERT_TRUE(!c.rates[p] || c.bytes[c.rates[p] - 1] != 0xFF) << p;
            }
            for (int n = c.nPasses, step = big ? std::max(1, c.nPasses / 5) : 1; n >= 0; n -= step) {
                const auto got = decodeOneCall(c, b, n, flags | kNoClosing);
                expectPrefix(b, got, c.sfBits, n);  // all passes: exact down to the last coded plane
            }
            for (const int n : {c.nPasses, c.nPasses / 2}) {  // step by step, one segment at a time
                std::vector<int32_t> got(b.w * b.h);
                ASSERT_EQ(vqciDecodeCBProgrAttach_JPEG2K_32s_C1R(got.data(), 4 * b.w, b.w, b.h, ds, b.subband,
                                                                 c.sfBits, flags), vqcStatusOk);
                ASSERT_EQ(vqciDecodeCBProgrSetPassCounter_JPEG2K(n, ds), vqcStatusOk);
                size_t off = 0;
                for (int32_t l : t1SegmentsFor(c, n)) {
                    ASSERT_EQ(vqciDecodeCBProgrStep_JPEG2K(c.bytes.data() + off, l, ds), vqcStatusOk);
                    off += l;
                }
                int32_t left = -1, plane = 0;
                vqciDecodeCBProgrGetPassCounter_JPEG2K(ds, &left);
                vqciDecodeCBProgrGetCurBitPlaneNum_JPEG2K(ds, &plane);
                EXPECT_EQ(left, 0);
                EXPECT_TRUE(!n || plane == c.sfBits - 1 - (n + 2) / 3) << plane;
                expectPrefix(b, got, c.sfBits, n);
            }
        }
    }
    vqciDecodeCBProgrFree_JPEG2K(ds);
}

// The closing pass puts the middle of the undecoded range into non-zero
// magnitudes; attach flags keep the destination and report stream errors.
TEST(Tier1, ClosingPassAndStreamErrors) {
    auto enc = newEncoder(16, 16);
    const T1Block b = randomBlock(16, 16, 3, 16, 5, 30.0);
    const T1Coded c = t1Encode(enc.get(), b, 16, 16, 0);  // with segmentation symbols
    const auto plain = decodeOneCall(c, b, 4, 16 | kNoClosing);  // top cleanup and one full plane
    const auto closed = decodeOneCall(c, b, 4, 16);
    for (size_t i = 0; i < plain.size(); ++i)
        EXPECT_EQ(uint32_t(closed[i]), (plain[i] & 0x7FFFFFFF) ? uint32_t(plain[i]) | (1u << (c.sfBits - 3)) : 0u);
    // A damaged byte breaks the segmentation symbol: -112, the plane where
    // it happened, and with 0x10000 only the planes above it are kept.
    T1Coded bad = c;
    bad.bytes[bad.bytes.size() / 2] ^= 0x5A;
    VqcStatus st = 0;
    int32_t errPlane = -99;
    const auto got = decodeOneCall(bad, b, c.nPasses, 16 | 0x10000, &st, &errPlane);
    ASSERT_EQ(st, vqcStatusJPEG2KStreamError);
    ASSERT_GE(errPlane, 0);
    const uint32_t keep = ~((2u << errPlane) - 1) & 0x7FFFFFFF;
    for (int32_t g : got) EXPECT_TRUE(!(g & 0x7FFFFFFF) || (g & 0x7FFFFFFF & ~keep) == 1u << errPlane);
    decodeOneCall(bad, b, c.nPasses, 16, &st, nullptr);  // no plane wanted
    EXPECT_EQ(st, vqcStatusJPEG2KStreamError);
    // More passes than the planes allow cannot be followed.
    T1Coded extra = c;
    extra.sfBits = 1;
    decodeOneCall(extra, b, 5, 16, &st);
    EXPECT_EQ(st, vqcStatusJPEG2KStreamError);
    // 0x20000 leaves the destination as it was before the first decoded bit.
    std::vector<int32_t> dst(256, 0x1000);
    VqciDecodeCBProgrState_JPEG2K* ds = nullptr;
    vqciDecodeCBProgrInitAlloc_JPEG2K(&ds, 16, 16);
    vqciDecodeCBProgrAttach_JPEG2K_32s_C1R(dst.data(), 64, 16, 16, ds, 3, c.sfBits, 0x20000);
    EXPECT_EQ(dst[0], 0x1000);
    vqciDecodeCBProgrAttach_JPEG2K_32s_C1R(dst.data(), 64, 16, 16, ds, 3, c.sfBits, 0);
    EXPECT_EQ(dst[0], 0);
    vqciDecodeCBProgrFree_JPEG2K(ds);
}

// Truncated and corrupted streams: any status but a crash, no write outside
// the destination (guard bytes), no read outside the segments (sanitizer).
TEST(Tier1, DamagedStreamsStayInBounds) {
    auto enc = newEncoder(32, 32);
    std::mt19937 rng(9);
    int32_t size = 0;
    vqciDecodeGetBufSize_JPEG2K(32, 32, &size);
    std::vector<uint8_t> mem(size);
    for (int round = 0; round < 60; ++round) {
        const int flags = rng() & 31;
        T1Coded c = t1Encode(enc.get(), randomBlock(32, 32, round % 4, 24, round, 40.0), 24, flags, round % 3);
        for (int k = 0; k < 4 && !c.bytes.empty(); ++k) c.bytes[rng() % c.bytes.size()] = uint8_t(rng());
        int32_t left = c.bytes.empty() ? 0 : int32_t(rng() % c.bytes.size());
        const std::vector<uint8_t> exact(c.bytes.begin(), c.bytes.begin() + left);  // cut with no slack
        std::vector<int32_t> lens;
        for (int32_t l : c.termLens) lens.push_back(std::min(l, left)), left -= lens.back();
        Guarded out(32 * 32 * 4);
        const VqcStatus st = vqciDecodeCodeBlock_JPEG2K_1u32s_C1R(
            exact.empty() ? mem.data() : exact.data(), reinterpret_cast<int32_t*>(out.data()), 128, 32, 32,
            round % 4, c.sfBits + int(rng() % 3) - 1, c.nPasses + int(rng() % 7), lens.data(), int32_t(lens.size()),
            flags | int(rng() & 0x10000), nullptr, reinterpret_cast<VqciDecodeCBProgrState_JPEG2K*>(mem.data()));
        EXPECT_TRUE(st == vqcStatusOk || st == vqcStatusJPEG2KStreamError) << st;
        EXPECT_TRUE(out.guardsIntact());
    }
}
