// Down- and up-sampling against plain references written from the formulas,
// hand vectors for the rounding rules, and the argument-check orders.
#include <gtest/gtest.h>
#include <vqcj.h>

#include <functional>
#include <vector>

#include "support/testutil.h"

namespace {

using vqcjtest::Guarded;
using vqcjtest::randomBytes;
using ImageFn = VqcStatus (*)(const Vqc8u*, int32_t, VqciSize, Vqc8u*, int32_t, VqciSize);
using RowFn = VqcStatus (*)(const Vqc8u*, const Vqc8u*, int32_t, Vqc8u*);

// A random plane with one spare column and row on every side, read with
// signed coordinates: the up forms read one beyond each border.
struct Plane {
    int w, h, step;
    std::vector<uint8_t> buf;
    Plane(int width, int height, uint32_t seed)
        : w(width), h(height), step(width + 5), buf(randomBytes(size_t(step) * (height + 2), seed)) {}
    const uint8_t* origin() const { return buf.data() + step + 1; }
    int operator()(int x, int y) const { return origin()[y * step + x]; }
};

// Each image export with its own formula for output (x, y).
struct ImageCase {
    const char* name;
    ImageFn fn;
    bool up, twoRows, framed;
    int (*ref)(const Plane& s, int x, int y);
};

const ImageCase kImageCases[] = {
    {"DownH2V1", vqciSampleDownH2V1_JPEG_8u_C1R, false, false, true,
     [](const Plane& s, int x, int y) { return (s(2 * x, y) + s(2 * x + 1, y) + 1) >> 1; }},
    {"DownH2V2", vqciSampleDownH2V2_JPEG_8u_C1R, false, true, true,
     [](const Plane& s, int x, int y) {
         return (s(2 * x, 2 * y) + s(2 * x + 1, 2 * y) + s(2 * x, 2 * y + 1) + s(2 * x + 1, 2 * y + 1) + 3) >> 2;
     }},
    {"UpH2V1", vqciSampleUpH2V1_JPEG_8u_C1R, true, false, false,
     [](const Plane& s, int x, int y) {
         const int k = x / 2;
         return x % 2 == 0 ? (3 * s(k, y) + s(k - 1, y) + 1) >> 2 : (3 * s(k, y) + s(k + 1, y) + 2) >> 2;
     }},
    {"UpH2V2", vqciSampleUpH2V2_JPEG_8u_C1R, true, true, true,
     [](const Plane& s, int x, int y) {
         const int k = x / 2, n = y / 2, f = y % 2 == 0 ? n - 1 : n + 1;
         return x % 2 == 0 ? (9 * s(k, n) + 3 * s(k, f) + 3 * s(k - 1, n) + s(k - 1, f) + 8) >> 4
                           : (9 * s(k, n) + 3 * s(k, f) + 3 * s(k + 1, n) + s(k + 1, f) + 7) >> 4;
     }},
};

// Runs an image export into a destination with gap bytes after each row and
// guards around it; fails the test if anything outside the region changed.
std::vector<uint8_t> runImage(const ImageCase& c, const Plane& src, VqciSize dst, VqciSize srcRoi) {
    const int dstStep = dst.width + 3;
    Guarded out(size_t(dstStep) * dst.height);
    EXPECT_EQ(c.fn(src.origin(), src.step, srcRoi, out.data(), dstStep, dst), vqcStatusOk);
    EXPECT_TRUE(out.guardsIntact()) << c.name;
    std::vector<uint8_t> got;
    for (int y = 0; y < dst.height; ++y)
        for (int x = 0; x < dstStep; ++x) {
            const uint8_t v = out.data()[y * dstStep + x];
            if (x < dst.width) got.push_back(v);
            else EXPECT_EQ(v, 0xA5) << c.name << " wrote past the row at y=" << y;
        }
    return got;
}

Plane sourceFor(const ImageCase& c, VqciSize dst, uint32_t seed) {
    const int h = c.twoRows ? (c.up ? (dst.height + 1) / 2 : 2 * dst.height) : dst.height;
    return Plane(c.up ? (dst.width + 1) / 2 : 2 * dst.width, h, seed);
}

TEST(SampleImage, MatchesReferenceAtOddEvenSizesAndAnyThreadCount) {
    // 64x128 sits on the threshold (serial); 64x129 and 301x37 open a region.
    const VqciSize sizes[] = {{1, 1}, {2, 1}, {3, 2}, {8, 8}, {17, 9}, {64, 128}, {64, 129}, {301, 37}};
    for (const auto& c : kImageCases)
        for (VqciSize d : sizes) {
            const Plane src = sourceFor(c, d, uint32_t(d.width * 1000 + d.height));
            std::vector<uint8_t> want;
            for (int y = 0; y < d.height; ++y)
                for (int x = 0; x < d.width; ++x) want.push_back(uint8_t(c.ref(src, x, y)));
            for (int threads : {1, 2, 3})
                vqcjtest::withThreads(threads, [&] {
                    EXPECT_EQ(runImage(c, src, d, {src.w, src.h}), want)
                        << c.name << " " << d.width << "x" << d.height << " threads " << threads;
                });
        }
}

TEST(SampleImage, HandVectors) {
    Vqc8u out[4] = {};
    const Vqc8u pair[2] = {1, 2};
    EXPECT_EQ(vqciSampleDownH2V1_JPEG_8u_C1R(pair, 2, {2, 1}, out, 1, {1, 1}), vqcStatusOk);
    EXPECT_EQ(out[0], 2);
    const Vqc8u flat[4] = {200, 200, 200, 200}, lifted[4] = {0, 0, 0, 1};
    vqciSampleDownH2V2_JPEG_8u_C1R(flat, 2, {2, 2}, out, 1, {1, 1});
    EXPECT_EQ(out[0], 200);
    vqciSampleDownH2V2_JPEG_8u_C1R(lifted, 2, {2, 2}, out, 1, {1, 1});
    EXPECT_EQ(out[0], 1) << "the bias 3 lifts any non-zero group";

    // Source rows alternating 0 and 2 (border rows included): near 0 with
    // far 2 sums to 8 on every output, near 2 with far 0 to 24, so the bias
    // 8 against 7 splits even and odd columns by one in every row.
    Plane src(4, 3, 1);
    for (int y = -1; y <= 3; ++y)
        for (int x = -1; x <= 4; ++x) src.buf[(y + 1) * src.step + x + 1] = (y & 1) ? 2 : 0;
    Vqc8u up[6 * 8];
    EXPECT_EQ(vqciSampleUpH2V2_JPEG_8u_C1R(src.origin(), src.step, {4, 3}, up, 8, {8, 6}), vqcStatusOk);
    for (int y = 0; y < 6; ++y)
        for (int x = 0; x < 8; ++x) EXPECT_EQ(up[y * 8 + x], (y / 2 % 2 ? 2 : 1) - x % 2) << x << "," << y;
}

TEST(SampleImage, SizesAreNotCompared) {
    // A 1x1 source with a 100x100 destination passes the checks; the buffer
    // behind the source is large enough, so the call matches one that states
    // the true source size.
    for (const auto& c : kImageCases) {
        const Plane src = sourceFor(c, {100, 100}, 7);
        EXPECT_EQ(runImage(c, src, {100, 100}, {1, 1}), runImage(c, src, {100, 100}, {src.w, src.h})) << c.name;
    }
}

// The row forms, each from its own text, steps in the stated order.
std::vector<uint8_t> refRow(int form, const uint8_t* p, const uint8_t* q, int n) {
    std::vector<uint8_t> out;
    if (form < 2) {
        for (int i = 0, b = 0; i < n; i += 2, b ^= 1)
            out.push_back(form == 0 ? (p[i] + p[i + 1] + b) >> 1 : (p[i] + p[i + 1] + q[i] + q[i + 1] + 1 + b) >> 2);
        return out;
    }
    out.resize(2 * size_t(n));
    const auto c = [&](int i) { return form == 2 ? int(p[i]) : 3 * p[i] + q[i]; };
    const int s = form == 2 ? 2 : 4, e = form == 2 ? 1 : 8, o = form == 2 ? 2 : 7;
    out[0] = (4 * c(0) + e) >> s;
    out[1] = (3 * c(0) + c(1) + o) >> s;
    for (int i = 1; i <= n - 2; ++i) {
        out[2 * i] = (3 * c(i) + c(i - 1) + e) >> s;
        out[2 * i + 1] = (3 * c(i) + c(i + 1) + o) >> s;
    }
    out[2 * n - 2] = (3 * c(n - 1) + c(n - 2) + e) >> s;
    out[2 * n - 1] = (4 * c(n - 1) + o) >> s;
    return out;
}

const RowFn kRowFns[] = {
    [](const Vqc8u* p, const Vqc8u*, int32_t n, Vqc8u* d) { return vqciSampleDownRowH2V1_Box_JPEG_8u_C1(p, n, d); },
    vqciSampleDownRowH2V2_Box_JPEG_8u_C1,
    [](const Vqc8u* p, const Vqc8u*, int32_t n, Vqc8u* d) {
        return vqciSampleUpRowH2V1_Triangle_JPEG_8u_C1(p, n, d);
    },
    vqciSampleUpRowH2V2_Triangle_JPEG_8u_C1,
};

std::vector<uint8_t> runRow(int form, const uint8_t* p, const uint8_t* q, int n) {
    const size_t len = form < 2 ? size_t(n + 1) / 2 : 2 * size_t(n);
    Guarded out(len);
    EXPECT_EQ(kRowFns[form](p, q, n, out.data()), vqcStatusOk);
    EXPECT_TRUE(out.guardsIntact()) << "form " << form << " width " << n;
    return std::vector<uint8_t>(out.data(), out.data() + len);
}

TEST(SampleRow, MatchesReference) {
    for (int form = 0; form < 4; ++form)
        for (int n : {2, 3, 4, 5, 6, 7, 16, 17, 31, 32, 33, 1001}) {
            // One spare byte: an odd box width reads one past the row.
            const auto p = randomBytes(n + 1, n), q = randomBytes(n + 1, n + 500);
            EXPECT_EQ(runRow(form, p.data(), q.data(), n), refRow(form, p.data(), q.data(), n))
                << "form " << form << " width " << n;
        }
}

TEST(SampleRow, HandVectors) {
    // Alternating bias: the pair 1, 2 gives 1 at even outputs and 2 at odd.
    const Vqc8u pairs[4] = {1, 2, 1, 2}, zeros[4] = {0, 0, 0, 0}, ones[4] = {0, 1, 0, 1};
    EXPECT_EQ(runRow(0, pairs, nullptr, 4), (std::vector<uint8_t>{1, 2}));
    // The group 0, 0, 0, 1 stays 0 at both phases (biases 1 and 2).
    EXPECT_EQ(runRow(1, zeros, ones, 4), (std::vector<uint8_t>{0, 0}));
    EXPECT_EQ(runRow(1, ones, ones, 4), (std::vector<uint8_t>{0, 1}));
    // Flat rows come back flat through both triangles.
    for (int v : {0, 1, 127, 254, 255}) {
        const std::vector<uint8_t> flat(5, uint8_t(v));
        EXPECT_EQ(runRow(2, flat.data(), nullptr, 5), std::vector<uint8_t>(10, v));
        EXPECT_EQ(runRow(3, flat.data(), flat.data(), 5), std::vector<uint8_t>(10, v));
    }
    // The ends are copies of the end samples.
    const Vqc8u s[4] = {10, 50, 90, 200};
    EXPECT_EQ(runRow(2, s, nullptr, 4), (std::vector<uint8_t>{10, 20, 40, 60, 80, 118, 172, 200}));
    // Width 1 runs the last step after the first: it reads one sample on each
    // side, here inside the array, and keeps what the last step wrote.
    const Vqc8u one[3] = {40, 100, 200};
    EXPECT_EQ(runRow(2, one + 1, nullptr, 1), (std::vector<uint8_t>{(300 + 40 + 1) >> 2, 100}));
}

// Each fault alone gives its status and writes nothing; faults from the
// k-th on together give the k-th status, which pins the order.
template <class Args, class Call>
void checkOrder(const char* name, Args good, const std::vector<std::pair<std::function<void(Args&)>, VqcStatus>>& faults,
                Call call, uint8_t* dst, size_t dstLen) {
    for (size_t k = 0; k < faults.size(); ++k) {
        std::vector<uint8_t> before(dst, dst + dstLen);
        Args a = good;
        faults[k].first(a);
        EXPECT_EQ(call(a), faults[k].second) << name << " fault " << k << " alone";
        EXPECT_EQ(std::vector<uint8_t>(dst, dst + dstLen), before) << name << " wrote after fault " << k;
        a = good;
        for (size_t j = k; j < faults.size(); ++j) faults[j].first(a);
        EXPECT_EQ(call(a), faults[k].second) << name << " faults from " << k;
    }
}

TEST(SampleChecks, ImageFormsInBufferOrder) {
    struct A { const Vqc8u* src; int32_t srcStep; VqciSize srcRoi; Vqc8u* dst; int32_t dstStep; VqciSize dstRoi; };
    std::vector<uint8_t> src(64 * 64, 9), dst(64 * 64, 0xA5);
    const std::vector<std::pair<std::function<void(A&)>, VqcStatus>> faults = {
        {[](A& a) { a.src = nullptr; }, vqcStatusNullPtr},  {[](A& a) { a.srcStep = 0; }, vqcStatusBadStep},
        {[](A& a) { a.srcRoi.width = 0; }, vqcStatusBadSize}, {[](A& a) { a.srcRoi.height = -1; }, vqcStatusBadSize},
        {[](A& a) { a.dst = nullptr; }, vqcStatusNullPtr},  {[](A& a) { a.dstStep = -64; }, vqcStatusBadStep},
        {[](A& a) { a.dstRoi.width = -3; }, vqcStatusBadSize}, {[](A& a) { a.dstRoi.height = 0; }, vqcStatusBadSize},
    };
    for (const auto& c : kImageCases)
        checkOrder(c.name, A{src.data() + 65, 64, {8, 8}, dst.data(), 64, {8, 8}}, faults,
                   [&](const A& a) { return c.fn(a.src, a.srcStep, a.srcRoi, a.dst, a.dstStep, a.dstRoi); },
                   dst.data(), dst.size());
}

TEST(SampleChecks, RowFormsPointersThenWidth) {
    struct A { const Vqc8u* p; const Vqc8u* q; int32_t n; Vqc8u* d; };
    std::vector<uint8_t> src(64, 9), dst(64, 0xA5);
    for (int form = 0; form < 4; ++form) {
        std::vector<std::pair<std::function<void(A&)>, VqcStatus>> faults = {
            {[](A& a) { a.p = nullptr; }, vqcStatusNullPtr}, {[](A& a) { a.q = nullptr; }, vqcStatusNullPtr},
            {[](A& a) { a.d = nullptr; }, vqcStatusNullPtr}, {[](A& a) { a.n = 0; }, vqcStatusBadSize},
            {[](A& a) { a.n = -5; }, vqcStatusBadSize}};
        if (form % 2 == 0) faults.erase(faults.begin() + 1);  // single-row forms have no second source
        checkOrder("row", A{src.data(), src.data(), 8, dst.data()}, faults,
                   [&](const A& a) { return kRowFns[form](a.p, a.q, a.n, a.d); }, dst.data(), dst.size());
    }
}

}  // namespace
