// Texture block codecs on a 4096x4096 photograph (tiled, mirrored): every
// decoder and fast encoder, the BC7 encoder per block, and libsquish's
// BC1/BC3 decoders and range-fit encoders (cluster fit on a 1024x1024 cut,
// it is two orders slower) in the same run. Figures are megapixels a second.
//  - Both sides decode the same blocks (ours, from the fast encoders).
//  - BC7 blocks come from the best of all modes on a 64x64 cut, repeated;
//    BC6H blocks are random bits in the valid modes (there is no BC6H encoder).
#include <benchmark/benchmark.h>
#include <vqcj.h>

#include <cstdint>
#include <cstring>
#include <random>
#include <vector>

#ifdef VQCJ_HAVE_PEERS
#include <squish.h>

#include "photos.h"
#endif

namespace {

using Bytes = std::vector<uint8_t>;
constexpr int kW = 4096, kH = 4096;

struct Data {
    Bytes rgba, rg, grey, ycocg;
    Bytes dxt1, dxt3, dxt5, bc4, bc5, bc7, bc6;
};

const Data& data() {
    static const Data d = [] {
        Data d;
        d.rgba.assign(size_t(kW) * kH * 4, 255);
        std::mt19937 rng(3);
#ifdef VQCJ_HAVE_PEERS
        const auto photos = vqcjphoto::loadPhotos(VQCJ_PHOTO_DIR);
        if (!photos.empty()) {
            const auto im = vqcjphoto::tileTo(photos[0], kW, kH);
            for (size_t i = 0; i < size_t(kW) * kH; ++i)
                for (size_t c = 0; c < 3; ++c) d.rgba[4 * i + c] = im.pixels[i * size_t(im.channels) + (im.channels == 3 ? c : 0)];
        } else
#endif
            for (auto& v : d.rgba) v = uint8_t(rng());
        const size_t n = size_t(kW) * kH;
        d.rg.resize(2 * n), d.grey.resize(n), d.ycocg.resize(3 * n);
        for (size_t i = 0; i < n; ++i) {
            const int r = d.rgba[4 * i], g = d.rgba[4 * i + 1], b = d.rgba[4 * i + 2];
            d.rg[2 * i] = uint8_t(r), d.rg[2 * i + 1] = uint8_t(g), d.grey[i] = uint8_t(g);
            d.ycocg[3 * i] = uint8_t((r + 2 * g + b + 2) >> 2);
            d.ycocg[3 * i + 1] = uint8_t(((r - b + 1) >> 1) + 128);
            d.ycocg[3 * i + 2] = uint8_t(((2 * g - r - b + 2) >> 2) + 128);
        }
        const size_t blocks = n / 16;
        d.dxt1.resize(8 * blocks), d.bc4.resize(8 * blocks);
        d.dxt3.resize(16 * blocks), d.dxt5.resize(16 * blocks), d.bc5.resize(16 * blocks);
        vqciTextureEncodeBlockFromRGBA_DXT1_8u_C4C1R(d.rgba.data(), kW * 4, {kW, kH}, d.dxt1.data());
        vqciTextureEncodeBlockFromRGBA_DXT3_8u_C4C1R(d.rgba.data(), kW * 4, {kW, kH}, d.dxt3.data());
        vqciTextureEncodeBlockFromRGBA_DXT5_8u_C4C1R(d.rgba.data(), kW * 4, {kW, kH}, d.dxt5.data());
        vqciTextureEncodeBlock_BC4_8u_C1R(d.grey.data(), kW, {kW, kH}, d.bc4.data());
        vqciTextureEncodeBlockFromRG_BC5_8u_C2C1R(d.rg.data(), kW * 2, {kW, kH}, d.bc5.data());
        // BC7: best mode per block of a 64x64 cut, repeated over the image.
        Bytes cut(16 * 16 * 16);
        for (int b = 0; b < 256; ++b) {
            const uint8_t* src = &d.rgba[size_t(((b / 16) * 4) * kW + (b % 16) * 4) * 4];
            int32_t best = INT32_MAX;
            for (uint32_t mode = 0; mode < 8; ++mode) {
                uint8_t blk[16];
                int32_t err = 0;
                vqciTextureEncodeBlock4x4FromRGBA_BC7_8u_C4C1R(src, kW * 4, blk, &err, mode);
                if (err < best) best = err, std::memcpy(&cut[size_t(16 * b)], blk, 16);
            }
        }
        d.bc7.resize(16 * blocks), d.bc6.resize(16 * blocks);
        for (size_t k = 0; k < blocks; ++k) std::memcpy(&d.bc7[16 * k], &cut[16 * (k % 256)], 16);
        static const uint8_t valid[14] = {0x00, 0x01, 0x02, 0x06, 0x0A, 0x0E, 0x12, 0x16, 0x1A, 0x1E, 0x03, 0x07, 0x0B, 0x0F};
        for (size_t k = 0; k < 16 * blocks; ++k) d.bc6[k] = uint8_t(rng());
        for (size_t k = 0; k < blocks; ++k) d.bc6[16 * k] = uint8_t((d.bc6[16 * k] & 0xE0) | valid[k % 14]);
        return d;
    }();
    return d;
}

void rate(benchmark::State& state, double pixels) {
    state.counters["MP/s"] = benchmark::Counter(pixels * double(state.iterations()) / 1e6, benchmark::Counter::kIsRate);
}

template <class F>
void decodeBench(benchmark::State& state, const Bytes& blocks, int bpp, F dec) {
    Bytes out(size_t(kW) * kH * size_t(bpp));
    for (auto _ : state) {
        dec(blocks.data(), out.data(), uint32_t(kW * bpp), VqciSize{kW, kH});
        benchmark::DoNotOptimize(out.data());
    }
    rate(state, double(kW) * kH);
}

template <class F>
void encodeBench(benchmark::State& state, const Bytes& src, int bpp, size_t blockBytes, F enc) {
    Bytes out(size_t(kW) * kH / 16 * blockBytes);
    for (auto _ : state) {
        enc(src.data(), uint32_t(kW * bpp), VqciSize{kW, kH}, out.data());
        benchmark::DoNotOptimize(out.data());
    }
    rate(state, double(kW) * kH);
}

void BM_DecodeDXT1(benchmark::State& s) { decodeBench(s, data().dxt1, 4, vqciTextureDecodeBlockToRGBA_DXT1_8u_C1C4R); }
void BM_DecodeDXT3(benchmark::State& s) { decodeBench(s, data().dxt3, 4, vqciTextureDecodeBlockToRGBA_DXT3_8u_C1C4R); }
void BM_DecodeDXT5(benchmark::State& s) { decodeBench(s, data().dxt5, 4, vqciTextureDecodeBlockToRGBA_DXT5_8u_C1C4R); }
void BM_DecodeBC4(benchmark::State& s) { decodeBench(s, data().bc4, 1, vqciTextureDecodeBlock_BC4_8u_C1R); }
void BM_DecodeBC5(benchmark::State& s) { decodeBench(s, data().bc5, 2, vqciTextureDecodeBlockToRG_BC5_8u_C1C2R); }
void BM_DecodeBC7(benchmark::State& s) { decodeBench(s, data().bc7, 4, vqciTextureDecodeBlockToRGBA_BC7_8u_C1C4R); }
void BM_DecodeBC6U(benchmark::State& s) {
    decodeBench(s, data().bc6, 6, [](const Vqc8u* b, Vqc8u* o, uint32_t st, VqciSize r) {
        return vqciTextureDecodeBlockToRGB_BC6_16u_C1C3R(b, reinterpret_cast<Vqc16u*>(o), st, r);
    });
}
void BM_DecodeBC6S(benchmark::State& s) {
    decodeBench(s, data().bc6, 6, [](const Vqc8u* b, Vqc8u* o, uint32_t st, VqciSize r) {
        return vqciTextureDecodeBlockToRGB_BC6_16s_C1C3R(b, reinterpret_cast<Vqc16s*>(o), st, r);
    });
}
void BM_EncodeDXT1(benchmark::State& s) { encodeBench(s, data().rgba, 4, 8, vqciTextureEncodeBlockFromRGBA_DXT1_8u_C4C1R); }
void BM_EncodeDXT3(benchmark::State& s) { encodeBench(s, data().rgba, 4, 16, vqciTextureEncodeBlockFromRGBA_DXT3_8u_C4C1R); }
void BM_EncodeDXT5(benchmark::State& s) { encodeBench(s, data().rgba, 4, 16, vqciTextureEncodeBlockFromRGBA_DXT5_8u_C4C1R); }
void BM_EncodeBC4(benchmark::State& s) { encodeBench(s, data().grey, 1, 8, vqciTextureEncodeBlock_BC4_8u_C1R); }
void BM_EncodeBC5(benchmark::State& s) { encodeBench(s, data().rg, 2, 16, vqciTextureEncodeBlockFromRG_BC5_8u_C2C1R); }
void BM_EncodeYCoCgDXT5(benchmark::State& s) {
    encodeBench(s, data().ycocg, 3, 16, vqciTextureEncodeBlockFromYCoCg_DXT5_8u_C3C1R);
}
// One block at a time over a 64x64 cut, in the named mode.
void BM_EncodeBC7(benchmark::State& s) {
    const Data& d = data();
    const auto mode = uint32_t(s.range(0));
    uint8_t blk[16];
    int32_t err = 0;
    for (auto _ : s)
        for (int b = 0; b < 256; ++b) {
            vqciTextureEncodeBlock4x4FromRGBA_BC7_8u_C4C1R(&d.rgba[size_t(((b / 16) * 4) * kW + (b % 16) * 4) * 4], kW * 4,
                                                           blk, &err, mode);
            benchmark::DoNotOptimize(blk);
        }
    rate(s, 64.0 * 64.0);
}

BENCHMARK(BM_DecodeDXT1)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_DecodeDXT3)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_DecodeDXT5)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_DecodeBC4)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_DecodeBC5)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_DecodeBC7)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_DecodeBC6U)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_DecodeBC6S)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_EncodeDXT1)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_EncodeDXT3)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_EncodeDXT5)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_EncodeBC4)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_EncodeBC5)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_EncodeYCoCgDXT5)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_EncodeBC7)->DenseRange(0, 7)->Unit(benchmark::kMillisecond);

#ifdef VQCJ_HAVE_PEERS
void BM_DecodeDXT1Libsquish(benchmark::State& s) {
    decodeBench(s, data().dxt1, 4, [](const Vqc8u* b, Vqc8u* o, uint32_t, VqciSize r) {
        squish::DecompressImage(o, r.width, r.height, b, squish::kDxt1);
        return 0;
    });
}
void BM_DecodeDXT5Libsquish(benchmark::State& s) {
    decodeBench(s, data().dxt5, 4, [](const Vqc8u* b, Vqc8u* o, uint32_t, VqciSize r) {
        squish::DecompressImage(o, r.width, r.height, b, squish::kDxt5);
        return 0;
    });
}
void squishEncode(benchmark::State& s, int flags, int size) {
    const Data& d = data();
    Bytes out(size_t(size) * size_t(size));
    for (auto _ : s) {
        squish::CompressImage(d.rgba.data(), size, size, kW * 4, out.data(), flags);
        benchmark::DoNotOptimize(out.data());
    }
    rate(s, double(size) * size);
}
void BM_EncodeDXT1LibsquishRange(benchmark::State& s) { squishEncode(s, squish::kDxt1 | squish::kColourRangeFit, kW); }
void BM_EncodeDXT5LibsquishRange(benchmark::State& s) { squishEncode(s, squish::kDxt5 | squish::kColourRangeFit, kW); }
void BM_EncodeDXT1LibsquishCluster1024(benchmark::State& s) { squishEncode(s, squish::kDxt1 | squish::kColourClusterFit, 1024); }
BENCHMARK(BM_DecodeDXT1Libsquish)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_DecodeDXT5Libsquish)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_EncodeDXT1LibsquishRange)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_EncodeDXT5LibsquishRange)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_EncodeDXT1LibsquishCluster1024)->Unit(benchmark::kMillisecond);
#endif

}  // namespace

BENCHMARK_MAIN();
