// JPEG XR core transform and block coding on a photograph, beside jxrlib.
//
// The plane is a photograph tiled to 1024x1024 (green channel, centred on
// zero). Transform: one forward and one inverse pass over every 4x4 block per
// iteration, ours in place through the 16x16 export per macroblock, jxrlib's
// strDCT4x4Stage1/strIDCT4x4Stage1 on the same blocks in its own order.
// Block coding: the forward-transformed blocks with AC quantised by 2, coded
// and decoded through the adaptive coder with one Adapt per macroblock;
// bytes are those of the 16-bit coefficients. jxrlib keeps its coder behind
// the whole-image API, so its share is taken from a profile of JxrEncApp
// (see the README), not from this program.
#include <benchmark/benchmark.h>
#include <vqcj.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

#ifdef VQCJ_HAVE_PEERS
#include "photos.h"
#include "support/jpegxr_peer.h"
#endif

namespace {

constexpr int kSide = 1024;
constexpr int kBlocks = (kSide / 4) * (kSide / 4);

struct Data {
    std::vector<int32_t> plane = std::vector<int32_t>(size_t{kSide} * kSide);
    std::vector<int32_t> blocks;  // row-major 4x4 blocks, forward transformed and quantised
    std::vector<uint8_t> stream = std::vector<uint8_t>(size_t{kBlocks} * 160);

    Data() {
#ifdef VQCJ_HAVE_PEERS
        const auto photos = vqcjphoto::loadPhotos(VQCJ_PHOTO_DIR);
        if (photos.empty()) {
            std::fprintf(stderr, "no photographs in %s\n", VQCJ_PHOTO_DIR);
            std::exit(1);
        }
        const auto img = vqcjphoto::tileTo(photos[0], kSide, kSide);
        for (size_t i = 0; i < plane.size(); ++i)
            plane[i] = img.pixels[i * img.channels + (img.channels == 3)] - 128;
#else
        for (size_t i = 0; i < plane.size(); ++i) plane[i] = static_cast<int32_t>((i * 2654435761u >> 24) & 255) - 128;
#endif
        std::vector<int32_t> t = plane;
        vqciPCTFwd_JPEGXR_32s_C1IR(t.data(), kSide * 4, {kSide, kSide});
        blocks.resize(size_t{kBlocks} * 16);
        int32_t* b = blocks.data();
        for (int y = 0; y < kSide; y += 4)
            for (int x = 0; x < kSide; x += 4, b += 16)
                for (int i = 0; i < 16; ++i) {
                    const int32_t v = t[size_t(y + i / 4) * kSide + x + i % 4];
                    b[i] = i == 0 ? v : v / 2;
                }
    }
};

const Data& data() {
    static const Data d;
    return d;
}

VqciVLCState freshState() {
    VqciVLCState s;
    std::memset(&s, 0, sizeof s);
    vqciVLCInit_JPEGXR(&s);
    for (int t = 0; t < 3; ++t) vqciVLCScanReset_JPEGXR(&s, t);
    vqciVLCScanSet_JPEGXR(&s, 0);
    return s;
}

void BM_PCT_ours(benchmark::State& st) {
    std::vector<int32_t> p = data().plane;
    for (auto _ : st) {
        for (int y = 0; y < kSide; y += 16)
            for (int x = 0; x < kSide; x += 16) vqciPCTFwd16x16_JPEGXR_32s_C1IR(&p[size_t(y) * kSide + x], kSide * 4);
        for (int y = 0; y < kSide; y += 16)
            for (int x = 0; x < kSide; x += 16) vqciPCTInv16x16_JPEGXR_32s_C1IR(&p[size_t(y) * kSide + x], kSide * 4);
        benchmark::DoNotOptimize(p.data());
    }
    st.SetItemsProcessed(st.iterations() * 2 * kSide * kSide);
}
BENCHMARK(BM_PCT_ours)->Unit(benchmark::kMillisecond);

void BM_PCT16s_ours(benchmark::State& st) {
    std::vector<int16_t> p(data().plane.begin(), data().plane.end());
    for (auto _ : st) {
        vqciPCTFwd_JPEGXR_16s_C1IR(p.data(), kSide * 2, {kSide, kSide});
        vqciPCTInv_JPEGXR_16s_C1IR(p.data(), kSide * 2, {kSide, kSide});
        benchmark::DoNotOptimize(p.data());
    }
    st.SetItemsProcessed(st.iterations() * 2 * kSide * kSide);
}
BENCHMARK(BM_PCT16s_ours)->Unit(benchmark::kMillisecond);

#ifdef VQCJ_HAVE_PEERS
void BM_PCT_jxrlib(benchmark::State& st) {
    // Blocks of 16 in jxrlib's order, one after another as its macroblock
    // buffers hold them.
    std::vector<int> p(size_t{kSide} * kSide);
    int* b = p.data();
    for (int y = 0; y < kSide; y += 4)
        for (int x = 0; x < kSide; x += 4, b += 16)
            for (int i = 0; i < 16; ++i) b[vqcjtest::kJxrPlace[i]] = data().plane[size_t(y + i / 4) * kSide + x + i % 4];
    for (auto _ : st) {
        for (int k = 0; k < kBlocks; ++k) strDCT4x4Stage1(&p[size_t(k) * 16]);
        for (int k = 0; k < kBlocks; ++k) strIDCT4x4Stage1(&p[size_t(k) * 16]);
        benchmark::DoNotOptimize(p.data());
    }
    st.SetItemsProcessed(st.iterations() * 2 * kSide * kSide);
}
BENCHMARK(BM_PCT_jxrlib)->Unit(benchmark::kMillisecond);
#endif

// Encodes every block (one Adapt per 16 blocks); returns the stream end.
Vqc8u* encodeAll(VqciVLCState& s, std::vector<uint8_t>& out) {
    Vqc8u* p = out.data();
    uint32_t buf = 0, n = 0;
    int32_t pairs;
    const int32_t* b = data().blocks.data();
    for (int k = 0; k < kBlocks; ++k, b += 16) {
        vqciVLCEncode4x4_JPEGXR_32s1u_C1R(b, 16, 0, 0, &p, &buf, &n, &pairs, &s);
        if ((k & 15) == 15) vqciVLCAdapt_JPEGXR(&s, 1);
    }
    return p;
}

void BM_VLCEncode_ours(benchmark::State& st) {
    std::vector<uint8_t> out(data().stream.size());
    size_t bytes = 0;
    for (auto _ : st) {
        VqciVLCState s = freshState();
        bytes = static_cast<size_t>(encodeAll(s, out) - out.data());
        benchmark::DoNotOptimize(out.data());
    }
    st.SetBytesProcessed(st.iterations() * kBlocks * 32);
    st.counters["stream_bytes"] = static_cast<double>(bytes);
}
BENCHMARK(BM_VLCEncode_ours)->Unit(benchmark::kMillisecond);

void BM_VLCDecode_ours(benchmark::State& st) {
    std::vector<uint8_t> in(data().stream.size());
    std::vector<int32_t> pairs(kBlocks);
    {
        VqciVLCState s = freshState();
        Vqc8u* p = in.data();
        uint32_t buf = 0, n = 0;
        const int32_t* b = data().blocks.data();
        for (int k = 0; k < kBlocks; ++k, b += 16) {
            vqciVLCEncode4x4_JPEGXR_32s1u_C1R(b, 16, 0, 0, &p, &buf, &n, &pairs[k], &s);
            if ((k & 15) == 15) vqciVLCAdapt_JPEGXR(&s, 1);
        }
        p[0] = static_cast<uint8_t>(buf >> 24), p[1] = static_cast<uint8_t>(buf >> 16);
    }
    int32_t out[16];
    for (auto _ : st) {
        VqciVLCState s = freshState();
        Vqc8u* p = in.data();
        uint32_t buf = 0, n = 0;
        int32_t coded;
        for (int k = 0; k < kBlocks; ++k) {
            if (pairs[k]) vqciVLCDecode4x4_JPEGXR_1u32s_C1R(&p, &buf, &n, 8, out, 16, 0, &coded, &s);
            if ((k & 15) == 15) vqciVLCAdapt_JPEGXR(&s, 1);
        }
        benchmark::DoNotOptimize(out);
    }
    st.SetBytesProcessed(st.iterations() * kBlocks * 32);
}
BENCHMARK(BM_VLCDecode_ours)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
