// Colour conversion on a 4096 x 2160 photograph, ours beside TurboJPEG's
// YUV encoder and decoder doing the same work. The full-rate forms compare
// with 4:4:4; the fused 422/411 forms with TurboJPEG's 4:2:2/4:2:0, which
// converts at full rate and then downsamples (or upsamples) separately.
// Ours_*/threads:N runs the row-parallel members with N threads; the fused
// and CMYK-by-words forms are serial or have no peer.
//
// Kernel level, libjpeg-turbo's AVX2 kernels from its static archive over the
// whole image in one call each, as its encoder and decoder use them: the
// full-rate conversions; for 422/420 the conversion then the down-sampler,
// and back its merged up-sampler (chroma repeated over each pair, as ours).
#include <benchmark/benchmark.h>
#include <omp.h>
#include <vqcj.h>

#include <vector>

#ifdef VQCJ_HAVE_PEERS
#include <turbojpeg.h>

#include "photos.h"
#endif

namespace {

constexpr int kW = 4096, kH = 2160;
constexpr size_t kN = size_t(kW) * kH;
constexpr VqciSize kSize{kW, kH};

using Bytes = std::vector<uint8_t>;

// RGB pixels of a photograph tiled to the benchmark size (a gradient when
// no photograph is at hand).
const Bytes& rgbImage() {
    static const Bytes px = [] {
#ifdef VQCJ_HAVE_PEERS
        for (const auto& im : vqcjphoto::loadPhotos(VQCJ_PHOTO_DIR))
            if (im.channels == 3) return vqcjphoto::tileTo(im, kW, kH).pixels;
#endif
        Bytes g(3 * kN);
        for (size_t i = 0; i < g.size(); ++i) g[i] = uint8_t(i * 7 / 3 + (i >> 12));
        return g;
    }();
    return px;
}

struct Planes {
    Bytes p[4];
    Vqc8u* planes[4];
    Planes() {
        for (int k = 0; k < 4; ++k) p[k].assign(kN, 128), planes[k] = p[k].data();
    }
    const Vqc8u* const* in() const { return const_cast<const Vqc8u* const*>(planes); }
};

// YCbCr planes of the photograph, for the inverse conversions.
const Planes& yccImage() {
    static const Planes ycc = [] {
        Planes p;
        vqciRGBToYCbCr_JPEG_8u_C3P3R(rgbImage().data(), 3 * kW, p.planes, kW, kSize);
        return p;
    }();
    return ycc;
}

void count(benchmark::State& state, int64_t bytesPerPixel) {
    state.SetItemsProcessed(state.iterations() * int64_t(kN));
    state.SetBytesProcessed(state.iterations() * int64_t(kN) * bytesPerPixel);
}

// Runs fn with the benchmark's thread count (range 0) for our members.
template <class Fn>
void ours(benchmark::State& state, int64_t bytesPerPixel, Fn fn) {
    rgbImage(), yccImage();  // built once, outside the timing
    const int old = omp_get_max_threads();
    omp_set_num_threads(int(state.range(0)));
    for (auto _ : state) benchmark::DoNotOptimize(fn());
    omp_set_num_threads(old);
    count(state, bytesPerPixel);
}

void BM_Ours_RGBToYCbCr_C3P3R(benchmark::State& state) {
    Planes out;
    ours(state, 6, [&] { return vqciRGBToYCbCr_JPEG_8u_C3P3R(rgbImage().data(), 3 * kW, out.planes, kW, kSize); });
}
void BM_Ours_YCbCrToRGB_P3C3R(benchmark::State& state) {
    Bytes out(3 * kN);
    ours(state, 6, [&] { return vqciYCbCrToRGB_JPEG_8u_P3C3R(yccImage().in(), kW, out.data(), 3 * kW, kSize); });
}
void BM_Ours_RGBToYCbCr422_C3P3R(benchmark::State& state) {
    Planes out;
    const int32_t steps[3] = {kW, kW, kW};
    ours(state, 5, [&] { return vqciRGBToYCbCr422_JPEG_8u_C3P3R(rgbImage().data(), 3 * kW, out.planes, steps, kSize); });
}
void BM_Ours_RGBToYCbCr411_C3P3R(benchmark::State& state) {
    Planes out;
    const int32_t steps[3] = {kW, kW, kW};
    ours(state, 5, [&] { return vqciRGBToYCbCr411_JPEG_8u_C3P3R(rgbImage().data(), 3 * kW, out.planes, steps, kSize); });
}
void BM_Ours_YCbCr422ToRGB_P3C3R(benchmark::State& state) {
    Bytes out(3 * kN);
    const int32_t steps[3] = {kW, kW, kW};
    ours(state, 5, [&] { return vqciYCbCr422ToRGB_JPEG_8u_P3C3R(yccImage().in(), steps, out.data(), 3 * kW, kSize); });
}
void BM_Ours_YCbCr411ToRGB_P3C3R(benchmark::State& state) {
    Bytes out(3 * kN);
    const int32_t steps[3] = {kW, kW, kW};
    ours(state, 5, [&] { return vqciYCbCr411ToRGB_JPEG_8u_P3C3R(yccImage().in(), steps, out.data(), 3 * kW, kSize); });
}
void BM_Ours_CMYKToYCCK_C4P4R(benchmark::State& state) {
    Planes out;
    const Bytes cmyk(4 * kN, 60);
    ours(state, 8, [&] { return vqciCMYKToYCCK_JPEG_8u_C4P4R(cmyk.data(), 4 * kW, out.planes, kW, kSize); });
}
void BM_Ours_YCCKToCMYK_P4C4R(benchmark::State& state) {
    Bytes out(4 * kN);
    ours(state, 8, [&] { return vqciYCCKToCMYK_JPEG_8u_P4C4R(yccImage().in(), kW, out.data(), 4 * kW, kSize); });
}

BENCHMARK(BM_Ours_RGBToYCbCr_C3P3R)->ArgName("threads")->Arg(1)->Arg(2)->UseRealTime();
BENCHMARK(BM_Ours_YCbCrToRGB_P3C3R)->ArgName("threads")->Arg(1)->Arg(2)->UseRealTime();
BENCHMARK(BM_Ours_CMYKToYCCK_C4P4R)->ArgName("threads")->Arg(1)->Arg(2)->UseRealTime();
BENCHMARK(BM_Ours_YCCKToCMYK_P4C4R)->ArgName("threads")->Arg(1)->Arg(2)->UseRealTime();
// Serial members: the thread count is given only to show it does not matter.
BENCHMARK(BM_Ours_RGBToYCbCr422_C3P3R)->ArgName("threads")->Arg(1)->UseRealTime();
BENCHMARK(BM_Ours_RGBToYCbCr411_C3P3R)->ArgName("threads")->Arg(1)->UseRealTime();
BENCHMARK(BM_Ours_YCbCr422ToRGB_P3C3R)->ArgName("threads")->Arg(1)->UseRealTime();
BENCHMARK(BM_Ours_YCbCr411ToRGB_P3C3R)->ArgName("threads")->Arg(1)->UseRealTime();

#ifdef VQCJ_HAVE_PEERS
// TurboJPEG, single-threaded by design.
void peerEncode(benchmark::State& state, int subsamp, int64_t bytesPerPixel) {
    rgbImage();
    tjhandle h = tjInitCompress();
    Planes out;
    int strides[3] = {kW, kW, kW};
    for (auto _ : state)
        benchmark::DoNotOptimize(tjEncodeYUVPlanes(h, rgbImage().data(), kW, 3 * kW, kH, TJPF_RGB, out.planes, strides,
                                                   subsamp, 0));
    tjDestroy(h);
    count(state, bytesPerPixel);
}
void peerDecode(benchmark::State& state, int subsamp, int64_t bytesPerPixel) {
    yccImage();
    tjhandle h = tjInitDecompress();
    Bytes out(3 * kN);
    int strides[3] = {kW, kW, kW};
    const unsigned char* in[3] = {yccImage().p[0].data(), yccImage().p[1].data(), yccImage().p[2].data()};
    for (auto _ : state)
        benchmark::DoNotOptimize(tjDecodeYUVPlanes(h, in, strides, subsamp, out.data(), kW, 3 * kW, kH, TJPF_RGB, 0));
    tjDestroy(h);
    count(state, bytesPerPixel);
}
void BM_Peer_tjEncodeYUVPlanes_444(benchmark::State& s) { peerEncode(s, TJSAMP_444, 6); }
void BM_Peer_tjEncodeYUVPlanes_422(benchmark::State& s) { peerEncode(s, TJSAMP_422, 5); }
void BM_Peer_tjEncodeYUVPlanes_420(benchmark::State& s) { peerEncode(s, TJSAMP_420, 5); }
void BM_Peer_tjDecodeYUVPlanes_444(benchmark::State& s) { peerDecode(s, TJSAMP_444, 6); }
void BM_Peer_tjDecodeYUVPlanes_422(benchmark::State& s) { peerDecode(s, TJSAMP_422, 5); }
void BM_Peer_tjDecodeYUVPlanes_420(benchmark::State& s) { peerDecode(s, TJSAMP_420, 5); }
BENCHMARK(BM_Peer_tjEncodeYUVPlanes_444)->UseRealTime();
BENCHMARK(BM_Peer_tjDecodeYUVPlanes_444)->UseRealTime();
BENCHMARK(BM_Peer_tjEncodeYUVPlanes_422)->UseRealTime();
BENCHMARK(BM_Peer_tjEncodeYUVPlanes_420)->UseRealTime();
BENCHMARK(BM_Peer_tjDecodeYUVPlanes_422)->UseRealTime();
BENCHMARK(BM_Peer_tjDecodeYUVPlanes_420)->UseRealTime();
#endif

#ifdef VQCJ_HAVE_JSIMD
}  // namespace
extern "C" {
using JDIMENSION = unsigned int;
using JSAMPROW = unsigned char*;
using JSAMPARRAY = JSAMPROW*;
using JSAMPIMAGE = JSAMPARRAY*;
void jsimd_rgb_ycc_convert_avx2(JDIMENSION, JSAMPARRAY, JSAMPIMAGE, JDIMENSION, int);
void jsimd_ycc_rgb_convert_avx2(JDIMENSION, JSAMPIMAGE, JDIMENSION, JSAMPARRAY, int);
void jsimd_h2v1_downsample_avx2(JDIMENSION, int, JDIMENSION, JDIMENSION, JSAMPARRAY, JSAMPARRAY);
void jsimd_h2v2_downsample_avx2(JDIMENSION, int, JDIMENSION, JDIMENSION, JSAMPARRAY, JSAMPARRAY);
void jsimd_h2v1_merged_upsample_avx2(JDIMENSION, JSAMPIMAGE, JDIMENSION, JSAMPARRAY);
void jsimd_h2v2_merged_upsample_avx2(JDIMENSION, JSAMPIMAGE, JDIMENSION, JSAMPARRAY);
}
namespace {

// Row pointers of a plane of `rows` rows, `step` apart.
std::vector<JSAMPROW> rowsOf(const uint8_t* p, int rows, size_t step) {
    std::vector<JSAMPROW> r(rows);
    for (int y = 0; y < rows; ++y) r[y] = const_cast<JSAMPROW>(p + y * step);
    return r;
}

// Full-rate conversion, then (V > 0) the chroma down-sampled by 2 x V.
void peerKernelEncode(benchmark::State& state, int v) {
    rgbImage();
    Planes out, sub;
    auto in = rowsOf(rgbImage().data(), kH, 3 * kW);
    std::vector<JSAMPROW> rows[3], half[2];
    for (int c = 0; c < 3; ++c) rows[c] = rowsOf(out.planes[c], kH, kW);
    for (int c = 0; c < 2; ++c) half[c] = rowsOf(sub.planes[c], kH, kW);
    JSAMPARRAY image[3] = {rows[0].data(), rows[1].data(), rows[2].data()};
    for (auto _ : state) {
        jsimd_rgb_ycc_convert_avx2(kW, in.data(), image, 0, kH);
        if (v == 1)
            for (int c = 0; c < 2; ++c) jsimd_h2v1_downsample_avx2(kW, kH, kH, kW / 16, rows[c + 1].data(), half[c].data());
        if (v == 2)
            for (int c = 0; c < 2; ++c)
                jsimd_h2v2_downsample_avx2(kW, kH, kH / 2, kW / 16, rows[c + 1].data(), half[c].data());
        benchmark::DoNotOptimize(sub.planes[0]);
    }
    count(state, v ? 5 : 6);
}

// Full-rate, or (V > 0) merged up-sampling of chroma at 2 x V.
void peerKernelDecode(benchmark::State& state, int v) {
    yccImage();
    Bytes out(3 * kN);
    auto orow = rowsOf(out.data(), kH, 3 * kW);
    std::vector<JSAMPROW> rows[3];
    for (int c = 0; c < 3; ++c) rows[c] = rowsOf(yccImage().p[c].data(), kH, kW);
    JSAMPARRAY image[3] = {rows[0].data(), rows[1].data(), rows[2].data()};
    for (auto _ : state) {
        if (v == 0) jsimd_ycc_rgb_convert_avx2(kW, image, 0, orow.data(), kH);
        if (v == 1)
            for (int y = 0; y < kH; ++y) jsimd_h2v1_merged_upsample_avx2(kW, image, y, &orow[y]);
        if (v == 2)
            for (int g = 0; g < kH / 2; ++g) jsimd_h2v2_merged_upsample_avx2(kW, image, g, &orow[2 * g]);
        benchmark::DoNotOptimize(out.data());
    }
    count(state, v ? 5 : 6);
}
BENCHMARK_CAPTURE(peerKernelEncode, 444, 0)->Name("BM_Peer_jsimd_rgb_ycc_convert_avx2")->UseRealTime();
BENCHMARK_CAPTURE(peerKernelDecode, 444, 0)->Name("BM_Peer_jsimd_ycc_rgb_convert_avx2")->UseRealTime();
BENCHMARK_CAPTURE(peerKernelEncode, 422, 1)->Name("BM_Peer_jsimd_rgb_ycc_convert+h2v1_downsample_avx2")->UseRealTime();
BENCHMARK_CAPTURE(peerKernelEncode, 420, 2)->Name("BM_Peer_jsimd_rgb_ycc_convert+h2v2_downsample_avx2")->UseRealTime();
BENCHMARK_CAPTURE(peerKernelDecode, 422, 1)->Name("BM_Peer_jsimd_h2v1_merged_upsample_avx2")->UseRealTime();
BENCHMARK_CAPTURE(peerKernelDecode, 420, 2)->Name("BM_Peer_jsimd_h2v2_merged_upsample_avx2")->UseRealTime();
#endif

}  // namespace

BENCHMARK_MAIN();
