// JPEG 2000 tier-1: code-block encoding (load and store) and decoding of the
// 64x64 code-blocks of a photograph's three-level reversible 5/3 bands,
// against OpenJPEG's lossless encode and decode of the same 1024x1024 grey
// image (its tier-1 share comes from a profile; see the README). Rates are
// in coefficients per second: one coefficient per 8-bit image sample.
#include <benchmark/benchmark.h>
#include <vqcj.h>

#include <vector>

#include "../tests/support/j2k_tier1.h"

#ifdef VQCJ_HAVE_PEERS
#include "../tests/support/j2k_openjpeg.h"
#include "photos.h"
#endif

namespace {

constexpr int kSide = 1024, kMagnBits = 16;

struct Data {
    std::vector<uint8_t> grey;
    std::vector<vqcjtest::T1Block> blocks;
    std::vector<vqcjtest::T1Coded> coded;
    int64_t coefs = 0;
};

const Data& data() {
    static const Data d = [] {
        Data d;
        d.grey.resize(size_t(kSide) * kSide);
#ifdef VQCJ_HAVE_PEERS
        const auto photos = vqcjphoto::loadPhotos(VQCJ_PHOTO_DIR);
        if (!photos.empty()) {
            const auto t = vqcjphoto::tileTo(photos.front(), kSide, kSide);
            for (int i = 0; i < kSide * kSide; ++i) d.grey[i] = t.pixels[size_t(i) * t.channels];
        }
#endif
        d.blocks = vqcjtest::waveletCodeBlocks(d.grey.data(), kSide, kSide, kSide, 3, 64, 64, kMagnBits);
        VqciEncodeState_JPEG2K* st = nullptr;
        vqciEncodeInitAlloc_JPEG2K(&st, {64, 64});
        for (const auto& b : d.blocks) {
            d.coded.push_back(vqcjtest::t1Encode(st, b, kMagnBits, 0, 1));
            d.coefs += int64_t(b.w) * b.h;
        }
        vqciEncodeFree_JPEG2K(st);
        return d;
    }();
    return d;
}

void BM_Encode(benchmark::State& state) {
    const Data& d = data();
    VqciEncodeState_JPEG2K* st = nullptr;
    vqciEncodeInitAlloc_JPEG2K(&st, {64, 64});
    std::vector<uint8_t> out(1 << 16);
    for (auto _ : state) {
        for (const auto& b : d.blocks) {
            int32_t sf, np, nt, len = int32_t(out.size()), more = 0;
            vqciEncodeLoadCodeBlock_JPEG2K_32s_C1R(b.smag.data(), 4 * b.w, {b.w, b.h}, st, b.subband, kMagnBits, 1,
                                                   0, 0, &sf, &np, &nt);
            vqciEncodeStoreBits_JPEG2K_1u(out.data(), &len, st, &more);
            benchmark::DoNotOptimize(out.data());
        }
    }
    vqciEncodeFree_JPEG2K(st);
    state.SetItemsProcessed(state.iterations() * d.coefs);
    state.SetBytesProcessed(state.iterations() * d.coefs);
}

void BM_Decode(benchmark::State& state) {
    const Data& d = data();
    int32_t size = 0;
    vqciDecodeGetBufSize_JPEG2K(64, 64, &size);
    std::vector<uint8_t> mem(size);
    std::vector<int32_t> out(64 * 64);
    for (auto _ : state) {
        for (size_t i = 0; i < d.blocks.size(); ++i) {
            const auto& b = d.blocks[i];
            const auto& c = d.coded[i];
            const uint8_t none = 0;
            vqciDecodeCodeBlock_JPEG2K_1u32s_C1R(c.bytes.empty() ? &none : c.bytes.data(), out.data(), 4 * b.w, b.w,
                                                 b.h, b.subband, c.sfBits, c.nPasses, c.termLens.data(), c.nTerm, 0,
                                                 nullptr, reinterpret_cast<VqciDecodeCBProgrState_JPEG2K*>(mem.data()));
            benchmark::DoNotOptimize(out.data());
        }
    }
    state.SetItemsProcessed(state.iterations() * d.coefs);
    state.SetBytesProcessed(state.iterations() * d.coefs);
}

#ifdef VQCJ_HAVE_PEERS
void BM_PeerEncode(benchmark::State& state) {
    const Data& d = data();
    for (auto _ : state) benchmark::DoNotOptimize(vqcjtest::opjEncodeOneBlock(d.grey.data(), kSide, kSide, 0, 4));
    state.SetItemsProcessed(state.iterations() * int64_t(kSide) * kSide);
    state.SetBytesProcessed(state.iterations() * int64_t(kSide) * kSide);
}

void BM_PeerDecode(benchmark::State& state) {
    const Data& d = data();
    const auto cs = vqcjtest::opjEncodeOneBlock(d.grey.data(), kSide, kSide, 0, 4);
    int w = 0, h = 0;
    for (auto _ : state) benchmark::DoNotOptimize(vqcjtest::opjDecode(cs, &w, &h));
    state.SetItemsProcessed(state.iterations() * int64_t(kSide) * kSide);
    state.SetBytesProcessed(state.iterations() * int64_t(kSide) * kSide);
}
#endif

}  // namespace

BENCHMARK(BM_Encode)->Name("Tier1/Encode_LoadStore/vqcj")->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Decode)->Name("Tier1/Decode_CodeBlock/vqcj")->Unit(benchmark::kMillisecond);
#ifdef VQCJ_HAVE_PEERS
BENCHMARK(BM_PeerEncode)->Name("Tier1/LosslessEncode_whole/openjpeg")->Unit(benchmark::kMillisecond);
BENCHMARK(BM_PeerDecode)->Name("Tier1/LosslessDecode_whole/openjpeg")->Unit(benchmark::kMillisecond);
#endif

BENCHMARK_MAIN();
