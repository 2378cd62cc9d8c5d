// MCU conversions: each fused form against the plain exports it replaces,
// called MCU by MCU over a 2048 x 1024 photograph (colour conversion on the
// MCU's rows, then the level shift of each block, or the reverse), and
// against libjpeg-turbo's AVX2 kernels doing the same conversion and
// resampling on the same pixels, a stripe of MCUs a call as libjpeg does. As
// in a codec, the blocks (or planes) stay in cache: the forward runs write
// those of one stripe over and over, the inverse runs read the first
// stripe's for every stripe; the image side is the whole image. The reduced
// inverse DCTs against libjpeg's on the blocks of real JPEG files. Items are
// MCUs (or blocks) per second.
#include <benchmark/benchmark.h>
#include <vqcj.h>

#include <algorithm>
#include <array>
#include <vector>

#ifdef VQCJ_HAVE_PEERS
#include "../tests/support/mcu_jpeg.h"
#include "photos.h"
#endif
#ifdef VQCJ_HAVE_JSIMD
#include <cstdio>

#include <jpeglib.h>

// libjpeg-turbo's AVX2 kernels, from its static archive.
extern "C" {
void jsimd_rgb_ycc_convert_avx2(JDIMENSION, JSAMPARRAY, JSAMPIMAGE, JDIMENSION, int);
void jsimd_ycc_rgb_convert_avx2(JDIMENSION, JSAMPIMAGE, JDIMENSION, JSAMPARRAY, int);
void jsimd_h2v1_downsample_avx2(JDIMENSION, int, JDIMENSION, JDIMENSION, JSAMPARRAY, JSAMPARRAY);
void jsimd_h2v2_downsample_avx2(JDIMENSION, int, JDIMENSION, JDIMENSION, JSAMPARRAY, JSAMPARRAY);
void jsimd_h2v1_upsample_avx2(int, JDIMENSION, JSAMPARRAY, JSAMPARRAY*);
void jsimd_h2v2_upsample_avx2(int, JDIMENSION, JSAMPARRAY, JSAMPARRAY*);
}
#endif

namespace {

constexpr int kW = 2048, kH = 1024;
using Bytes = std::vector<uint8_t>;

const Bytes& rgbImage() {
    static const Bytes px = [] {
#ifdef VQCJ_HAVE_PEERS
        for (const auto& im : vqcjphoto::loadPhotos(VQCJ_PHOTO_DIR))
            if (im.channels == 3) return vqcjphoto::tileTo(im, kW, kH).pixels;
#endif
        Bytes g(size_t(3) * kW * kH);
        for (size_t i = 0; i < g.size(); ++i) g[i] = uint8_t(i * 7 / 3 + (i >> 12));
        return g;
    }();
    return px;
}

// Blocks of one MCU of up to 16x16 pixels: 4 luma blocks, Cb, Cr.
struct Mcu {
    alignas(32) Vqc16s v[6 * 64];
    Vqc16s* p[3];
    explicit Mcu(int lumaBlocks) { p[0] = v, p[1] = v + 64 * lumaBlocks, p[2] = p[1] + 64; }
};

// The level-shifted blocks of every MCU of the image, for the inverse runs.
std::vector<Vqc16s> blocksOf(int h, int v) {
    const int per = 64 * (h * v + 2), n = (kW / (8 * h)) * (kH / (8 * v));
    std::vector<Vqc16s> all(size_t(per) * n);
    Mcu m(h * v);
    Vqc16s* dst[3];
    int i = 0;
    for (int y = 0; y < kH; y += 8 * v)
        for (int x = 0; x < kW; x += 8 * h, ++i) {
            dst[0] = &all[size_t(per) * i], dst[1] = dst[0] + 64 * h * v, dst[2] = dst[1] + 64;
            const Vqc8u* s = &rgbImage()[(size_t(y) * kW + x) * 3];
            (h == 1 ? vqciRGBToYCbCr444LS_MCU_8u16s_C3P3R : v == 1 ? vqciRGBToYCbCr422LS_MCU_8u16s_C3P3R
                                                                   : vqciRGBToYCbCr411LS_MCU_8u16s_C3P3R)(s, 3 * kW, dst);
        }
    return all;
}

template <int H, int V>
void fwdFused(benchmark::State& state) {
    const auto fn = H == 1 ? vqciRGBToYCbCr444LS_MCU_8u16s_C3P3R
                           : V == 1 ? vqciRGBToYCbCr422LS_MCU_8u16s_C3P3R : vqciRGBToYCbCr411LS_MCU_8u16s_C3P3R;
    Mcu m(H * V);
    for (auto _ : state) {
        for (int y = 0; y < kH; y += 8 * V)
            for (int x = 0; x < kW; x += 8 * H) {
                fn(&rgbImage()[(size_t(y) * kW + x) * 3], 3 * kW, m.p);
                benchmark::DoNotOptimize(m.v);
            }
    }
    state.SetItemsProcessed(state.iterations() * (kW / (8 * H)) * (kH / (8 * V)));
}

// The plain sequence: colour conversion of the MCU's rows into 8-bit planes,
// then the level shift of each block.
template <int H, int V>
void fwdComposed(benchmark::State& state) {
    Mcu m(H * V);
    alignas(32) Vqc8u y[256], cb[64], cr[64];
    Vqc8u* planes[3] = {y, cb, cr};
    const int32_t steps[3] = {8 * H, 8, 8};
    for (auto _ : state) {
        for (int r = 0; r < kH; r += 8 * V)
            for (int x = 0; x < kW; x += 8 * H) {
                const Vqc8u* s = &rgbImage()[(size_t(r) * kW + x) * 3];
                if constexpr (H == 1) vqciRGBToYCbCr_JPEG_8u_C3P3R(s, 3 * kW, planes, 8, {8, 8});
                else if constexpr (V == 1) vqciRGBToYCbCr422_JPEG_8u_C3P3R(s, 3 * kW, planes, steps, {16, 8});
                else vqciRGBToYCbCr411_JPEG_8u_C3P3R(s, 3 * kW, planes, steps, {16, 16});
                for (int b = 0; b < H * V; ++b) vqciSub128_JPEG_8u16s_C1R(y + b / H * 64 * H + b % H * 8, 8 * H, m.p[0] + 64 * b, 16, {8, 8});
                vqciSub128_JPEG_8u16s_C1R(cb, 8, m.p[1], 16, {8, 8});
                vqciSub128_JPEG_8u16s_C1R(cr, 8, m.p[2], 16, {8, 8});
                benchmark::DoNotOptimize(m.v);
            }
    }
    state.SetItemsProcessed(state.iterations() * (kW / (8 * H)) * (kH / (8 * V)));
}

template <int H, int V>
void invFused(benchmark::State& state) {
    const auto fn = H == 1 ? vqciYCbCr444ToRGBLS_MCU_16s8u_P3C3R
                           : V == 1 ? vqciYCbCr422ToRGBLS_MCU_16s8u_P3C3R : vqciYCbCr411ToRGBLS_MCU_16s8u_P3C3R;
    static const auto blocks = blocksOf(H, V);
    const int per = 64 * (H * V + 2);
    Bytes out(size_t(3) * kW * kH);
    for (auto _ : state) {
        for (int y = 0; y < kH; y += 8 * V)
            for (int x = 0, i = 0; x < kW; x += 8 * H, ++i) {
                const Vqc16s* src[3] = {&blocks[size_t(per) * i], &blocks[size_t(per) * i + 64 * H * V],
                                        &blocks[size_t(per) * i + 64 * H * V + 64]};
                fn(src, &out[(size_t(y) * kW + x) * 3], 3 * kW);
            }
        benchmark::DoNotOptimize(out.data());
    }
    state.SetItemsProcessed(state.iterations() * (kW / (8 * H)) * (kH / (8 * V)));
}

// The plain sequence: level shift of each block into 8-bit planes, then the
// colour conversion with chroma replication.
template <int H, int V>
void invComposed(benchmark::State& state) {
    static const auto blocks = blocksOf(H, V);
    const int per = 64 * (H * V + 2);
    Bytes out(size_t(3) * kW * kH);
    alignas(32) Vqc8u y[256], cb[64], cr[64];
    const Vqc8u* planes[3] = {y, cb, cr};
    const int32_t steps[3] = {8 * H, 8, 8};
    for (auto _ : state) {
        for (int r = 0; r < kH; r += 8 * V)
            for (int x = 0, i = 0; x < kW; x += 8 * H, ++i) {
                const Vqc16s* b0 = &blocks[size_t(per) * i];
                for (int b = 0; b < H * V; ++b) vqciAdd128_JPEG_16s8u_C1R(b0 + 64 * b, 16, y + b / H * 64 * H + b % H * 8, 8 * H, {8, 8});
                vqciAdd128_JPEG_16s8u_C1R(b0 + 64 * H * V, 16, cb, 8, {8, 8});
                vqciAdd128_JPEG_16s8u_C1R(b0 + 64 * H * V + 64, 16, cr, 8, {8, 8});
                Vqc8u* d = &out[(size_t(r) * kW + x) * 3];
                if constexpr (H == 1) vqciYCbCrToRGB_JPEG_8u_P3C3R(planes, 8, d, 3 * kW, {8, 8});
                else if constexpr (V == 1) vqciYCbCr422ToRGB_JPEG_8u_P3C3R(planes, steps, d, 3 * kW, {16, 8});
                else vqciYCbCr411ToRGB_JPEG_8u_P3C3R(planes, steps, d, 3 * kW, {16, 16});
            }
        benchmark::DoNotOptimize(out.data());
    }
    state.SetItemsProcessed(state.iterations() * (kW / (8 * H)) * (kH / (8 * V)));
}

#ifdef VQCJ_HAVE_JSIMD
// Rows of a plane, step bytes apart.
std::vector<JSAMPROW> rowsOf(const uint8_t* p, int rows, size_t step) {
    std::vector<JSAMPROW> r(rows);
    for (int y = 0; y < rows; ++y) r[y] = const_cast<JSAMPROW>(p + y * step);
    return r;
}

// The peer of the forward forms: for each stripe of MCUs (8 V rows of the
// image), RGB to full-rate YCbCr, then the chroma down-sampled by H x V.
template <int H, int V>
void fwdPeer(benchmark::State& state) {
    constexpr int kRows = 8 * V;
    Bytes planes(size_t(3) * kRows * kW), half(size_t(2) * 8 * kW);
    std::vector<JSAMPROW> full[3], sub[2];
    for (int c = 0; c < 3; ++c) full[c] = rowsOf(&planes[size_t(c) * kRows * kW], kRows, kW);
    for (int c = 0; c < 2; ++c) sub[c] = rowsOf(&half[size_t(c) * 8 * kW], 8, kW);
    JSAMPARRAY image[3] = {full[0].data(), full[1].data(), full[2].data()};
    auto in = rowsOf(rgbImage().data(), kH, 3 * kW);
    for (auto _ : state) {
        for (int y = 0; y < kH; y += kRows) {
            jsimd_rgb_ycc_convert_avx2(kW, &in[y], image, 0, kRows);
            for (int c = 0; c < 2 && H == 2; ++c) {
                if (V == 1) jsimd_h2v1_downsample_avx2(kW, kRows, 8, kW / 16, image[c + 1], sub[c].data());
                else jsimd_h2v2_downsample_avx2(kW, kRows, 8, kW / 16, image[c + 1], sub[c].data());
            }
            benchmark::DoNotOptimize(half.data());
        }
    }
    state.SetItemsProcessed(state.iterations() * (kW / (8 * H)) * (kH / (8 * V)));
}

// The peer of the inverse forms, from the first stripe's 8-bit planes as
// the fused runs use its blocks: for each stripe, the chroma replicated up by
// H x V, then YCbCr to RGB.
template <int H, int V>
void invPeer(benchmark::State& state) {
    constexpr int kRows = 8 * V, kCw = kW / H;
    // The planes of the first stripe's blocks, level shift undone.
    static const std::vector<Bytes> src = [] {
        std::vector<Bytes> p = {Bytes(size_t(kW) * kRows), Bytes(size_t(kCw) * 8), Bytes(size_t(kCw) * 8)};
        const auto blocks = blocksOf(H, V);
        const int per = 64 * (H * V + 2);
        for (int m = 0; m < kW / (8 * H); ++m)
            for (int b = 0; b < H * V + 2; ++b)
                for (int i = 0; i < 64; ++i) {
                    const int c = b < H * V ? 0 : b - H * V + 1;
                    const int x = c ? 8 * m + i % 8 : 8 * (H * m + b % H) + i % 8, y = c ? i / 8 : 8 * (b / H) + i / 8;
                    p[c][size_t(y) * (c ? kCw : kW) + x] = uint8_t(std::clamp(blocks[size_t(per) * m + 64 * b + i] + 128, 0, 255));
                }
        return p;
    }();
    Bytes up(size_t(2) * kRows * (kW + 64)), out(size_t(3) * kW * kH);
    std::vector<JSAMPROW> upRows[2];
    for (int c = 0; c < 2; ++c) upRows[c] = rowsOf(&up[size_t(c) * kRows * (kW + 64)], kRows, kW + 64);
    auto yRows = rowsOf(src[0].data(), kRows, kW), cbRows = rowsOf(src[1].data(), 8, kCw),
         crRows = rowsOf(src[2].data(), 8, kCw), outRows = rowsOf(out.data(), kH, 3 * kW);
    for (auto _ : state) {
        for (int y = 0; y < kH; y += kRows) {
            JSAMPARRAY image[3] = {yRows.data(), cbRows.data(), crRows.data()};
            if (H == 2)
                for (int c = 0; c < 2; ++c) {
                    JSAMPARRAY dst = upRows[c].data();
                    if (V == 1) jsimd_h2v1_upsample_avx2(kRows, kW, image[c + 1], &dst);
                    else jsimd_h2v2_upsample_avx2(kRows, kW, image[c + 1], &dst);
                    image[c + 1] = dst;
                }
            jsimd_ycc_rgb_convert_avx2(kW, image, 0, &outRows[y], kRows);
        }
        benchmark::DoNotOptimize(out.data());
    }
    state.SetItemsProcessed(state.iterations() * (kW / (8 * H)) * (kH / (8 * V)));
}
#endif

#ifdef VQCJ_HAVE_JSIMD
#define VQCJ_PEER(name, ...) BENCHMARK(__VA_ARGS__)->Name(name);
#else
#define VQCJ_PEER(name, ...)
#endif
BENCHMARK(fwdFused<1, 1>)->Name("RGBToYCbCr444_MCU/fused");
VQCJ_PEER("RGBToYCbCr444_MCU/jsimd_rgb_ycc_convert_avx2", fwdPeer<1, 1>)
BENCHMARK(fwdComposed<1, 1>)->Name("RGBToYCbCr444_MCU/plain_sequence");
BENCHMARK(fwdFused<2, 1>)->Name("RGBToYCbCr422_MCU/fused");
VQCJ_PEER("RGBToYCbCr422_MCU/jsimd_rgb_ycc_convert+h2v1_downsample_avx2", fwdPeer<2, 1>)
BENCHMARK(fwdComposed<2, 1>)->Name("RGBToYCbCr422_MCU/plain_sequence");
BENCHMARK(fwdFused<2, 2>)->Name("RGBToYCbCr411_MCU/fused");
VQCJ_PEER("RGBToYCbCr411_MCU/jsimd_rgb_ycc_convert+h2v2_downsample_avx2", fwdPeer<2, 2>)
BENCHMARK(fwdComposed<2, 2>)->Name("RGBToYCbCr411_MCU/plain_sequence");
BENCHMARK(invFused<1, 1>)->Name("YCbCr444ToRGB_MCU/fused");
VQCJ_PEER("YCbCr444ToRGB_MCU/jsimd_ycc_rgb_convert_avx2", invPeer<1, 1>)
BENCHMARK(invComposed<1, 1>)->Name("YCbCr444ToRGB_MCU/plain_sequence");
BENCHMARK(invFused<2, 1>)->Name("YCbCr422ToRGB_MCU/fused");
VQCJ_PEER("YCbCr422ToRGB_MCU/jsimd_h2v1_upsample+ycc_rgb_convert_avx2", invPeer<2, 1>)
BENCHMARK(invComposed<2, 1>)->Name("YCbCr422ToRGB_MCU/plain_sequence");
BENCHMARK(invFused<2, 2>)->Name("YCbCr411ToRGB_MCU/fused");
VQCJ_PEER("YCbCr411ToRGB_MCU/jsimd_h2v2_upsample+ycc_rgb_convert_avx2", invPeer<2, 2>)
BENCHMARK(invComposed<2, 2>)->Name("YCbCr411ToRGB_MCU/plain_sequence");

#ifdef VQCJ_HAVE_PEERS
const vqcjtest::CoefBlocks& realBlocks() {
    static const vqcjtest::CoefBlocks all = [] {
        vqcjtest::CoefBlocks b;
        for (const char* name : {"rocket.jpg", "retina.jpg", "hubble_deep_field.jpg"})
            vqcjtest::readCoefficients(std::string(VQCJ_PHOTO_DIR) + "/" + name, b);
        return b;
    }();
    return all;
}

template <int N>
void scaledOurs(benchmark::State& state) {
    const auto& real = realBlocks();
    const auto fn = N == 4 ? vqciDCTQuantInv8x8To4x4LS_JPEG_16s8u_C1R : vqciDCTQuantInv8x8To2x2LS_JPEG_16s8u_C1R;
    uint8_t out[16];
    for (auto _ : state) {
        for (size_t i = 0; i < real.blocks.size(); ++i) {
            fn(real.blocks[i].data(), out, 4, real.tables[real.tableOf[i]].data());
            benchmark::DoNotOptimize(out);
        }
    }
    state.SetItemsProcessed(state.iterations() * real.blocks.size());
}

template <int N>
void scaledLibjpeg(benchmark::State& state) {
    const auto& real = realBlocks();
    vqcjtest::LibjpegReducedIdct peer;
    uint8_t out[16];
    for (auto _ : state) {
        int table = -1;
        for (size_t i = 0; i < real.blocks.size(); ++i) {
            if (real.tableOf[i] != table) peer.setTable(real.tables[table = real.tableOf[i]].data());
            peer.run(N, real.blocks[i].data(), out, 4);
            benchmark::DoNotOptimize(out);
        }
    }
    state.SetItemsProcessed(state.iterations() * real.blocks.size());
}

BENCHMARK(scaledOurs<4>)->Name("IdctTo4x4/ours");
BENCHMARK(scaledLibjpeg<4>)->Name("IdctTo4x4/libjpeg");
BENCHMARK(scaledOurs<2>)->Name("IdctTo2x2/ours");
BENCHMARK(scaledLibjpeg<2>)->Name("IdctTo2x2/libjpeg");
#endif

// Corner-only blocks: the reduced forms against the full inverse.
template <int N>
void corner(benchmark::State& state) {
    const auto fn = N == 1 ? vqciDCTQuantInv8x8LS_1x1_JPEG_16s8u_C1R
                    : N == 2 ? vqciDCTQuantInv8x8LS_2x2_JPEG_16s8u_C1R
                    : N == 4 ? vqciDCTQuantInv8x8LS_4x4_JPEG_16s8u_C1R : vqciDCTQuantInv8x8LS_JPEG_16s8u_C1R;
    std::vector<std::array<Vqc16s, 64>> blocks(1024);
    for (size_t b = 0; b < blocks.size(); ++b)
        for (int i = 0; i < 64; ++i) blocks[b][i] = i / 8 < (N ? N : 4) && i % 8 < (N ? N : 4) ? Vqc16s((b * 37 + i * 11) % 41 - 20) : 0;
    const std::vector<Vqc16u> table(64, 8);
    uint8_t out[64];
    for (auto _ : state) {
        for (const auto& b : blocks) {
            fn(b.data(), out, 8, table.data());
            benchmark::DoNotOptimize(out);
        }
    }
    state.SetItemsProcessed(state.iterations() * blocks.size());
}
BENCHMARK(corner<1>)->Name("IdctCorner/LS_1x1");
BENCHMARK(corner<2>)->Name("IdctCorner/LS_2x2");
BENCHMARK(corner<4>)->Name("IdctCorner/LS_4x4");
BENCHMARK(corner<0>)->Name("IdctCorner/full_on_4x4_corner");

}  // namespace

BENCHMARK_MAIN();
