// All eight sampling members against the worked vectors and one model of
// their filters, and the order of their argument checks.
#include <gtest/gtest.h>
#include <vqcj.h>

#include <algorithm>

#include "support/testutil.h"

namespace {

// Every member is called alike: source p with rows step apart (a two-row form
// takes the next row as its second), destination d; w x h is the destination
// of an image form, whose source size is 1x1 as the sizes are never compared,
// and w the width of a row form.
struct Args { const Vqc8u* p; int step; Vqc8u* d; int dstStep, w, h; };

// Each member with the status of each of its checks in order; bit i of the
// mask passes the argument that fails check i.
constexpr VqcStatus N = vqcStatusNullPtr, S = vqcStatusBadStep, Z = vqcStatusBadSize;
#define IMAGE(f) {#f, {N, S, Z, Z, N, S, Z, Z}, [](auto& a, auto m) { return f(m & 1 ? nullptr : a.p, m & 2 ? 0 : a.step, \
    {m & 4 ? 0 : 1, m & 8 ? -1 : 1}, m & 16 ? nullptr : a.d, m & 32 ? -1 : a.dstStep, {m & 64 ? -3 : a.w, m & 128 ? 0 : a.h}); }}
#define ROW1(f) {#f, {N, N, Z}, [](auto& a, auto m) { return f(m & 1 ? nullptr : a.p, m & 4 ? 0 : a.w, m & 2 ? nullptr : a.d); }}
#define ROW2(f) {#f, {N, N, N, Z}, [](auto& a, auto m) { \
    return f(m & 1 ? nullptr : a.p, m & 2 ? nullptr : a.p + a.step, m & 8 ? 0 : a.w, m & 4 ? nullptr : a.d); }}
const struct { const char* name; std::vector<VqcStatus> checks; VqcStatus (*call)(const Args&, unsigned); } kForms[] = {
    IMAGE(vqciSampleDownH2V1_JPEG_8u_C1R), IMAGE(vqciSampleDownH2V2_JPEG_8u_C1R),
    IMAGE(vqciSampleUpH2V1_JPEG_8u_C1R), IMAGE(vqciSampleUpH2V2_JPEG_8u_C1R),
    ROW1(vqciSampleDownRowH2V1_Box_JPEG_8u_C1), ROW2(vqciSampleDownRowH2V2_Box_JPEG_8u_C1),
    ROW1(vqciSampleUpRowH2V1_Triangle_JPEG_8u_C1), ROW2(vqciSampleUpRowH2V2_Triangle_JPEG_8u_C1)};

// The worked vectors: a form by its index above, source rows step apart from
// src[at], w x h as in Args.
const struct { int form, at, step, w, h; std::vector<uint8_t> src, want; } kVectors[] = {
    {0, 0, 2, 1, 1, {1, 2}, {2}},
    {1, 0, 2, 1, 1, {0, 0, 0, 1}, {1}},  // any non-zero sample lifts a zero group
    {3, 4, 3, 2, 2, {2, 2, 2, 0, 0, 0, 2, 2, 2}, {1, 0, 1, 0}},  // biases 8, 7 in every row
    {4, 0, 0, 4, 1, {1, 2, 1, 2}, {1, 2}},  // biases 0, 1
    {5, 0, 4, 4, 1, {0, 0, 0, 0, 0, 1, 0, 1}, {0, 0}},  // biases 1, 2
    {6, 0, 0, 4, 1, {10, 50, 90, 200}, {10, 20, 40, 60, 80, 118, 172, 200}},  // the ends copy the end samples
    {7, 0, 3, 3, 1, {255, 255, 255, 255, 255, 255}, {255, 255, 255, 255, 255, 255}},  // flat stays flat
};

// Output (x, y) of a form from the source at row 1, column 1 of src. The
// image forms read one beyond every border. The row forms see rows 0 and 1
// of width n; their triangles take the end column for the missing neighbour,
// except that width 1 runs the last step after the first, reading column -1.
uint8_t model(int form, const std::vector<uint8_t>& src, int step, int n, int x, int y) {
    const auto s = [&](int i, int r) { return int(src[(r + 1) * step + i + 1]); };
    const int k = x / 2, odd = x % 2, row = form >= 4, near = row ? 0 : y / 2, far = row ? 1 : near + 2 * (y % 2) - 1;
    const int j = !row ? k + 2 * odd - 1 : odd ? std::min(k + 1, n - 1) : k == n - 1 ? k - 1 : std::max(k - 1, 0);
    const auto box = [&](int r) { return s(2 * x, r) + s(2 * x + 1, r); };
    return form % 4 == 0 ? (box(y) + (row ? odd : 1)) >> 1
         : form % 4 == 1 ? (box(2 * y) + box(2 * y + 1) + (row ? 1 + odd : 3)) >> 2
         : form % 4 == 2 ? (3 * s(k, y) + s(j, y) + 1 + odd) >> 2
                         : (9 * s(k, near) + 3 * s(k, far) + 3 * s(j, near) + s(j, far) + 8 - odd) >> 4;
}

TEST(Sampling, EveryFormMatchesVectorsAndModelAtOddEvenSizesAndThreadCounts) {
    for (const auto& v : kVectors) {
        std::vector<uint8_t> out(v.want.size(), 0xA5);  // a byte no vector wants
        EXPECT_EQ(kForms[v.form].call({v.src.data() + v.at, v.step, out.data(), v.w, v.w, v.h}, 0), vqcStatusOk);
        EXPECT_EQ(out, v.want) << kForms[v.form].name;
    }
    // w x h as in Args; 64x128 is on the frame's threshold, 64x129 and 301x37 above it.
    for (int threads : {1, 2, 3})
        for (int form = 0; form < 8; ++form)
            for (auto [w, h] : {std::pair{1, 1}, {2, 1}, {3, 2}, {17, 9}, {64, 128}, {64, 129}, {301, 37}}) {
                const int step = 2 * w + 4, ow = form < 4 ? w : form < 6 ? (w + 1) / 2 : 2 * w, oh = form < 4 ? h : 1;
                const auto src = vqcjtest::randomBytes(size_t(step) * (2 * h + 4), form * 1000 + w);
                std::vector<uint8_t> want(size_t(ow + 2) * oh, 0xA5);  // two gap bytes after each row keep their fill
                for (int i = 0; i < ow * oh; ++i) want[i / ow * (ow + 2) + i % ow] = model(form, src, step, w, i % ow, i / ow);
                vqcjtest::Guarded out(want.size());
                const Args a{src.data() + step + 1, step, out.data(), ow + 2, w, oh};
                vqcjtest::withThreads(threads, [&] { EXPECT_EQ(kForms[form].call(a, 0), vqcStatusOk); });
                EXPECT_TRUE(out.guardsIntact() && std::equal(want.begin(), want.end(), out.data()))
                    << kForms[form].name << ' ' << w << 'x' << h << " threads " << threads;
            }
}

TEST(Sampling, ChecksInOrderRefuseWithoutWriting) {
    std::vector<uint8_t> src(4096, 9), dst(4096, 0xA5);
    for (const auto& f : kForms)
        for (size_t i = 0; i < f.checks.size(); ++i)
            for (unsigned mask : {1u << i, ~0u << i})  // alone, and with every later check failing
                EXPECT_EQ(f.call({src.data() + 65, 64, dst.data(), 64, 8, 8}, mask), f.checks[i]) << f.name << '/' << mask;
    EXPECT_EQ(std::count(dst.begin(), dst.end(), 0xA5), 4096) << "a refusal wrote";
}

}  // namespace
