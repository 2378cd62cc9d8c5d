// Chroma down- and up-sampling on a 4096x2160 plane, ours beside
// libjpeg-turbo's.
//
// Every figure counts full-rate samples: the source of a down-sampling, the
// destination of an up-sampling. The frame members run with 1 and 2 threads.
//
// The peer has no standalone resampling call for one plane:
//  - down: its downsampler method, which works on all three components of a
//    row group at once, copying Y and halving Cb and Cr. Ours is timed on the
//    same work (a row copy and our box rows), counted as three planes.
//  - up: the upsampler also converts colour into the output rows, so the
//    peer's cost is a difference timed per iteration (manual time): libjpeg
//    decoding one 422 or 420 JPEG to YCbCr with fancy upsampling, minus the
//    same with plain replication. Huffman decoding, the inverse DCT and the
//    output interleave cancel; the replication subtracted with them makes the
//    figure a lower bound of the peer's cost. Two planes are upsampled.
// (TurboJPEG's own YUV decoder never upsamples fancily, so it is no peer.)
//
// Kernel level, the same row forms beside libjpeg-turbo's AVX2 down- and
// fancy up-samplers from its static archive, over the whole plane in one
// call each as its encoder and decoder use them.
#include <benchmark/benchmark.h>
#include <omp.h>
#include <vqcj.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <random>
#include <vector>

#ifdef VQCJ_HAVE_PEERS
#include <jpeglib.h>
// The downsampler method, which TurboJPEG's own YUV encoder calls directly.
#include <jpegint.h>
#include <turbojpeg.h>

#include "photos.h"
#endif

namespace {

constexpr int kW = 4096, kH = 2160;
constexpr int64_t kFullRate = int64_t(kW) * kH;

// The tiled photograph (RGB) and one plane of it, with a spare row and column
// around every plane for the up forms' border reads.
struct Data {
    std::vector<uint8_t> rgb, full, half;  // full: kW x kH, half: kW/2 x kH
    int step = kW + 64;
    Data() {
        std::vector<uint8_t> plane(static_cast<size_t>(kFullRate));
#ifdef VQCJ_HAVE_PEERS
        const auto photos = vqcjphoto::loadPhotos(VQCJ_PHOTO_DIR);
        for (const auto& p : photos)
            if (p.channels == 3) {
                rgb = vqcjphoto::tileTo(p, kW, kH).pixels;
                break;
            }
        for (size_t i = 0; i < plane.size() && !rgb.empty(); ++i) plane[i] = rgb[3 * i + 1];
#endif
        if (rgb.empty()) {
            std::mt19937 rng(1);
            for (auto& b : plane) b = uint8_t(rng());
        }
        full.assign(size_t(step) * (kH + 2), 0);
        half.assign(size_t(step) * (kH + 2), 0);
        for (int y = 0; y < kH; ++y)
            for (int x = 0; x < kW; ++x) {
                full[size_t(y + 1) * step + x + 1] = plane[size_t(y) * kW + x];
                if (x < kW / 2) half[size_t(y + 1) * step + x + 1] = plane[size_t(y) * kW + 2 * x];
            }
    }
    const uint8_t* fullAt(int y) const { return full.data() + size_t(y + 1) * step + 1; }
    const uint8_t* halfAt(int y) const { return half.data() + size_t(y + 1) * step + 1; }
};

const Data& data() {
    static const Data d;
    return d;
}

void count(benchmark::State& state, int64_t planes = 1) {
    state.SetItemsProcessed(state.iterations() * kFullRate * planes);
    state.SetBytesProcessed(state.iterations() * kFullRate * planes * 3 / 2);
}

// Image forms. Down: full-rate source to the halved destination; up: the
// halved source (kH/2 rows for H2V2) to a full-rate destination.
template <VqcStatus (*Fn)(const Vqc8u*, int32_t, VqciSize, Vqc8u*, int32_t, VqciSize), bool Up, bool TwoRows>
void BM_Ours_Image(benchmark::State& state) {
    const Data& d = data();
    const int old = omp_get_max_threads();
    omp_set_num_threads(int(state.range(0)));
    const VqciSize fullSize{kW, kH}, halfSize{kW / 2, TwoRows ? kH / 2 : kH};
    const VqciSize src = Up ? halfSize : fullSize, dst = Up ? fullSize : halfSize;
    std::vector<uint8_t> out(static_cast<size_t>(kFullRate));
    for (auto _ : state) {
        Fn(Up ? d.halfAt(0) : d.fullAt(0), d.step, src, out.data(), dst.width, dst);
        benchmark::DoNotOptimize(out.data());
    }
    omp_set_num_threads(old);
    count(state);
}

BENCHMARK(BM_Ours_Image<vqciSampleDownH2V1_JPEG_8u_C1R, false, false>)
    ->Name("Ours/DownH2V1_Image")->ArgName("threads")->Arg(1)->Arg(2);
BENCHMARK(BM_Ours_Image<vqciSampleDownH2V2_JPEG_8u_C1R, false, true>)
    ->Name("Ours/DownH2V2_Image")->ArgName("threads")->Arg(1)->Arg(2);
BENCHMARK(BM_Ours_Image<vqciSampleUpH2V1_JPEG_8u_C1R, true, false>)
    ->Name("Ours/UpH2V1_Image_serial")->ArgName("threads")->Arg(1);
BENCHMARK(BM_Ours_Image<vqciSampleUpH2V2_JPEG_8u_C1R, true, true>)
    ->Name("Ours/UpH2V2_Image")->ArgName("threads")->Arg(1)->Arg(2);

// Row forms, called row by row over the same plane as a codec would.
void BM_Ours_DownRowH2V1_Box(benchmark::State& state) {
    const Data& d = data();
    std::vector<uint8_t> out(kW / 2);
    for (auto _ : state)
        for (int y = 0; y < kH; ++y) {
            vqciSampleDownRowH2V1_Box_JPEG_8u_C1(d.fullAt(y), kW, out.data());
            benchmark::DoNotOptimize(out.data());
        }
    count(state);
}
void BM_Ours_DownRowH2V2_Box(benchmark::State& state) {
    const Data& d = data();
    std::vector<uint8_t> out(kW / 2);
    for (auto _ : state)
        for (int y = 0; y < kH; y += 2) {
            vqciSampleDownRowH2V2_Box_JPEG_8u_C1(d.fullAt(y), d.fullAt(y + 1), kW, out.data());
            benchmark::DoNotOptimize(out.data());
        }
    count(state);
}
void BM_Ours_UpRowH2V1_Triangle(benchmark::State& state) {
    const Data& d = data();
    std::vector<uint8_t> out(kW);
    for (auto _ : state)
        for (int y = 0; y < kH; ++y) {
            vqciSampleUpRowH2V1_Triangle_JPEG_8u_C1(d.halfAt(y), kW / 2, out.data());
            benchmark::DoNotOptimize(out.data());
        }
    count(state);
}
void BM_Ours_UpRowH2V2_Triangle(benchmark::State& state) {
    const Data& d = data();
    std::vector<uint8_t> out(kW);
    for (auto _ : state)
        for (int y = 0; y < kH; ++y) {
            const int n = y / 2, f = y % 2 ? n + 1 : n - 1;
            vqciSampleUpRowH2V2_Triangle_JPEG_8u_C1(d.halfAt(n), d.halfAt(f), kW / 2, out.data());
            benchmark::DoNotOptimize(out.data());
        }
    count(state);
}
BENCHMARK(BM_Ours_DownRowH2V1_Box)->Name("Ours/DownRowH2V1_Box");
BENCHMARK(BM_Ours_DownRowH2V2_Box)->Name("Ours/DownRowH2V2_Box");
BENCHMARK(BM_Ours_UpRowH2V1_Triangle)->Name("Ours/UpRowH2V1_Triangle");
BENCHMARK(BM_Ours_UpRowH2V2_Triangle)->Name("Ours/UpRowH2V2_Triangle");

#ifdef VQCJ_HAVE_PEERS

double seconds(std::chrono::steady_clock::time_point a, std::chrono::steady_clock::time_point b) {
    return std::chrono::duration<double>(b - a).count();
}

// Runs `with` and `without` alternately, reporting the difference.
template <class With, class Without>
void timeDifference(benchmark::State& state, With with, Without without) {
    if (data().rgb.empty()) {
        state.SkipWithError("no colour photograph");
        return;
    }
    for (auto _ : state) {
        const auto t0 = std::chrono::steady_clock::now();
        with();
        const auto t1 = std::chrono::steady_clock::now();
        without();
        const auto t2 = std::chrono::steady_clock::now();
        state.SetIterationTime(std::max(seconds(t0, t1) - seconds(t1, t2), 1e-9));
    }
    count(state, 2);
}

// The peer's downsampler as tjEncodeYUVPlanes drives it, one row group per
// call on Y, Cb and Cr rows: Y is copied (it sets the full rate), Cb and Cr
// halved. Ours does the same work: a row copy of Y and the box rows.
struct PeerDownsampler {
    jpeg_compress_struct cinfo;
    jpeg_error_mgr err;
    std::vector<uint8_t> header = std::vector<uint8_t>(4096);
    unsigned char* headerBuf = header.data();
    unsigned long headerSize = header.size();
    explicit PeerDownsampler(int vSamp) {
        cinfo.err = jpeg_std_error(&err);
        jpeg_create_compress(&cinfo);
        jpeg_mem_dest(&cinfo, &headerBuf, &headerSize);
        cinfo.image_width = kW;
        cinfo.image_height = kH;
        cinfo.input_components = 3;
        cinfo.in_color_space = JCS_YCbCr;
        jpeg_set_defaults(&cinfo);
        cinfo.comp_info[0].h_samp_factor = 2;
        cinfo.comp_info[0].v_samp_factor = vSamp;
        jpeg_start_compress(&cinfo, TRUE);
    }
    ~PeerDownsampler() { jpeg_destroy_compress(&cinfo); }
};

// Three full-rate planes in and a Y plane plus two halved planes out, as
// row-pointer arrays for the peer.
struct ThreePlanes {
    std::vector<uint8_t> in, out;
    std::vector<JSAMPROW> inRows[3], outRows[3];
    explicit ThreePlanes(int vSamp) : in(size_t(kFullRate) * 3), out(size_t(kFullRate) * 2) {
        for (int c = 0; c < 3; ++c)
            for (int y = 0; y < kH; ++y) {
                std::copy_n(data().fullAt(y), kW, &in[(size_t(c) * kH + y) * kW]);
                inRows[c].push_back(&in[(size_t(c) * kH + y) * kW]);
                if (c == 0) outRows[c].push_back(&out[size_t(y) * kW]);
                else if (y < kH / vSamp) outRows[c].push_back(&out[kFullRate + (size_t(c - 1) * kH + y) * kW / 2]);
            }
    }
};

void BM_Peer_Down(benchmark::State& state, int vSamp) {
    PeerDownsampler peer(vSamp);
    ThreePlanes p(vSamp);
    JSAMPARRAY in[3], out[3];
    for (auto _ : state)
        for (int g = 0; g < kH / vSamp; ++g) {
            for (int c = 0; c < 3; ++c) in[c] = p.inRows[c].data(), out[c] = p.outRows[c].data();
            peer.cinfo.downsample->downsample(&peer.cinfo, in, JDIMENSION(g * vSamp), out, JDIMENSION(g));
            benchmark::DoNotOptimize(p.out.data());
        }
    count(state, 3);
}

void BM_Ours_Down3(benchmark::State& state, int vSamp) {
    ThreePlanes p(vSamp);
    for (auto _ : state)
        for (int g = 0; g < kH / vSamp; ++g) {
            for (int r = 0; r < vSamp; ++r) std::memcpy(p.outRows[0][g * vSamp + r], p.inRows[0][g * vSamp + r], kW);
            for (int c = 1; c < 3; ++c) {
                const auto& rows = p.inRows[c];
                if (vSamp == 1) vqciSampleDownRowH2V1_Box_JPEG_8u_C1(rows[g], kW, p.outRows[c][g]);
                else vqciSampleDownRowH2V2_Box_JPEG_8u_C1(rows[2 * g], rows[2 * g + 1], kW, p.outRows[c][g]);
            }
            benchmark::DoNotOptimize(p.out.data());
        }
    count(state, 3);
}

BENCHMARK_CAPTURE(BM_Ours_Down3, 422, 1)->Name("Ours/Down422_CopyY_BoxRowH2V1_CbCr");
BENCHMARK_CAPTURE(BM_Peer_Down, 422, 1)->Name("Peer/Down422_CopyY_BoxRowH2V1_CbCr_libjpeg_downsample");
BENCHMARK_CAPTURE(BM_Ours_Down3, 420, 2)->Name("Ours/Down420_CopyY_BoxRowH2V2_CbCr");
BENCHMARK_CAPTURE(BM_Peer_Down, 420, 2)->Name("Peer/Down420_CopyY_BoxRowH2V2_CbCr_libjpeg_downsample");

void decodeYCbCr(const std::vector<uint8_t>& jpeg, bool fancy, std::vector<uint8_t>& out) {
    jpeg_decompress_struct cinfo;
    jpeg_error_mgr err;
    cinfo.err = jpeg_std_error(&err);
    jpeg_create_decompress(&cinfo);
    jpeg_mem_src(&cinfo, jpeg.data(), jpeg.size());
    jpeg_read_header(&cinfo, TRUE);
    cinfo.out_color_space = JCS_YCbCr;
    cinfo.do_fancy_upsampling = fancy ? TRUE : FALSE;
    jpeg_start_decompress(&cinfo);
    while (cinfo.output_scanline < cinfo.output_height) {
        JSAMPROW row = out.data() + size_t(cinfo.output_scanline) * kW * 3;
        jpeg_read_scanlines(&cinfo, &row, 1);
    }
    jpeg_finish_decompress(&cinfo);
    jpeg_destroy_decompress(&cinfo);
}

void BM_Peer_Up(benchmark::State& state, int samp) {
    std::vector<uint8_t> jpeg, out(size_t(kFullRate) * 3);
    if (!data().rgb.empty()) {
        tjhandle tj = tjInitCompress();
        unsigned char* buf = nullptr;
        unsigned long size = 0;
        tjCompress2(tj, data().rgb.data(), kW, 0, kH, TJPF_RGB, &buf, &size, samp, 75, 0);
        jpeg.assign(buf, buf + size);
        tjFree(buf);
        tjDestroy(tj);
    }
    timeDifference(state, [&] { decodeYCbCr(jpeg, true, out); }, [&] { decodeYCbCr(jpeg, false, out); });
}

BENCHMARK_CAPTURE(BM_Peer_Up, 422, TJSAMP_422)
    ->Name("Peer/UpH2V1_Triangle_libjpeg422_fancy_minus_plain")->UseManualTime();
BENCHMARK_CAPTURE(BM_Peer_Up, 420, TJSAMP_420)
    ->Name("Peer/UpH2V2_Triangle_libjpeg420_fancy_minus_plain")->UseManualTime();

#endif

#ifdef VQCJ_HAVE_JSIMD
}  // namespace
extern "C" {
void jsimd_h2v1_downsample_avx2(JDIMENSION, int, JDIMENSION, JDIMENSION, JSAMPARRAY, JSAMPARRAY);
void jsimd_h2v2_downsample_avx2(JDIMENSION, int, JDIMENSION, JDIMENSION, JSAMPARRAY, JSAMPARRAY);
void jsimd_h2v1_fancy_upsample_avx2(int, JDIMENSION, JSAMPARRAY, JSAMPARRAY*);
void jsimd_h2v2_fancy_upsample_avx2(int, JDIMENSION, JSAMPARRAY, JSAMPARRAY*);
}
namespace {

// Row pointers of the full plane (kH rows), of the half plane with one
// context row above and below (kH + 2), and of an output plane.
struct KernelRows {
    std::vector<JSAMPROW> full, half, out;
    std::vector<uint8_t> dst = std::vector<uint8_t>(size_t(kW + 64) * kH);
    KernelRows() {
        for (int y = 0; y < kH; ++y) full.push_back(const_cast<JSAMPROW>(data().fullAt(y)));
        for (int y = -1; y <= kH; ++y) half.push_back(const_cast<JSAMPROW>(data().halfAt(y)));
        for (int y = 0; y < kH; ++y) out.push_back(&dst[size_t(y) * (kW + 64)]);
    }
};

void BM_Jsimd_Down(benchmark::State& state, int v) {
    KernelRows k;
    for (auto _ : state) {
        if (v == 1) jsimd_h2v1_downsample_avx2(kW, kH, kH, kW / 16, k.full.data(), k.out.data());
        else jsimd_h2v2_downsample_avx2(kW, kH, kH / 2, kW / 16, k.full.data(), k.out.data());
        benchmark::DoNotOptimize(k.dst.data());
    }
    count(state);
}
void BM_Jsimd_Up(benchmark::State& state, int v) {
    KernelRows k;
    JSAMPARRAY out = k.out.data();
    for (auto _ : state) {
        // Half-width rows; H2V2 reads rows -1..kH/2 and writes two rows each.
        if (v == 1) jsimd_h2v1_fancy_upsample_avx2(kH, kW / 2, k.half.data() + 1, &out);
        else jsimd_h2v2_fancy_upsample_avx2(kH, kW / 2, k.half.data() + 1, &out);
        benchmark::DoNotOptimize(k.dst.data());
    }
    count(state);
}
BENCHMARK_CAPTURE(BM_Jsimd_Down, h2v1, 1)->Name("Peer/DownRowH2V1_Box_jsimd_h2v1_downsample_avx2");
BENCHMARK_CAPTURE(BM_Jsimd_Down, h2v2, 2)->Name("Peer/DownRowH2V2_Box_jsimd_h2v2_downsample_avx2");
BENCHMARK_CAPTURE(BM_Jsimd_Up, h2v1, 1)->Name("Peer/UpRowH2V1_Triangle_jsimd_h2v1_fancy_upsample_avx2");
BENCHMARK_CAPTURE(BM_Jsimd_Up, h2v2, 2)->Name("Peer/UpRowH2V2_Triangle_jsimd_h2v2_fancy_upsample_avx2");
#endif

}  // namespace

BENCHMARK_MAIN();
