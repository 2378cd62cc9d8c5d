// End-to-end JPEG encode and decode of a 12-megapixel photograph, single
// threaded: our codec (tools/jpeg) beside TurboJPEG at the same quality and
// sampling. Run once as is and once with JSIMD_FORCENONE=1 for the peer's
// plain C code.
#include <benchmark/benchmark.h>
#include <omp.h>

#include <cstdio>
#include <cstdlib>

#include "codec.h"

#ifdef VQCJ_HAVE_PEERS
#include <turbojpeg.h>

#include "photos.h"

namespace {

struct Data {
    vqcjpeg::Image img;
    std::vector<uint8_t> ours, theirs;  // the same picture, coded by each side
    Data() {
        omp_set_num_threads(1);
        const auto photos = vqcjphoto::loadPhotos(VQCJ_PHOTO_DIR);
        if (photos.empty()) std::fprintf(stderr, "no photographs in %s\n", VQCJ_PHOTO_DIR), std::exit(1);
        const auto big = vqcjphoto::tileTo(photos.front(), 4000, 3000);
        img.width = big.width, img.height = big.height, img.channels = big.channels;
        img.pixels = big.pixels;
    }
};

Data& data() {
    static Data d;
    return d;
}

int tjSamp(int sampling) { return sampling == 444 ? TJSAMP_444 : sampling == 422 ? TJSAMP_422 : TJSAMP_420; }

void Encode_vqcj(benchmark::State& state) {
    Data& d = data();
    vqcjpeg::EncodeOptions opt;
    opt.quality = static_cast<int>(state.range(0));
    opt.sampling = static_cast<int>(state.range(1));
    for (auto _ : state) {
        if (!vqcjpeg::encode(d.img, opt, d.ours).empty()) state.SkipWithError("encode failed");
        benchmark::DoNotOptimize(d.ours.data());
    }
    state.counters["MP/s"] = benchmark::Counter(d.img.width * double(d.img.height) / 1e6, benchmark::Counter::kIsIterationInvariantRate);
    state.counters["bytes"] = static_cast<double>(d.ours.size());
}

void Encode_TurboJPEG(benchmark::State& state) {
    Data& d = data();
    tjhandle h = tjInitCompress();
    unsigned char* buf = nullptr;
    unsigned long size = 0;
    for (auto _ : state) {
        if (tjCompress2(h, d.img.pixels.data(), d.img.width, 0, d.img.height, TJPF_RGB, &buf, &size,
                        tjSamp(static_cast<int>(state.range(1))), static_cast<int>(state.range(0)), TJFLAG_ACCURATEDCT) != 0)
            state.SkipWithError("tjCompress2 failed");
    }
    d.theirs.assign(buf, buf + size);
    state.counters["MP/s"] = benchmark::Counter(d.img.width * double(d.img.height) / 1e6, benchmark::Counter::kIsIterationInvariantRate);
    state.counters["bytes"] = static_cast<double>(size);
    tjFree(buf);
    tjDestroy(h);
}

// Our file for both decoders, so that both read the same stream.
const std::vector<uint8_t>& ourFile(Data& d, const benchmark::State& state) {
    vqcjpeg::EncodeOptions opt;
    opt.quality = static_cast<int>(state.range(0));
    opt.sampling = static_cast<int>(state.range(1));
    vqcjpeg::encode(d.img, opt, d.ours);
    return d.ours;
}

void decodeOurs(benchmark::State& state, bool fast) {
    Data& d = data();
    const std::vector<uint8_t>& file = ourFile(d, state);
    vqcjpeg::DecodeOptions opt;
    opt.fastUpsample = fast;
    vqcjpeg::Image out;
    for (auto _ : state)
        if (!vqcjpeg::decode(file.data(), file.size(), out, opt).empty()) state.SkipWithError("decode failed");
    state.counters["MP/s"] = benchmark::Counter(d.img.width * double(d.img.height) / 1e6, benchmark::Counter::kIsIterationInvariantRate);
}

void decodeTheirs(benchmark::State& state, int flags) {
    Data& d = data();
    const std::vector<uint8_t>& file = ourFile(d, state);
    tjhandle h = tjInitDecompress();
    std::vector<uint8_t> out(d.img.pixels.size());
    for (auto _ : state)
        if (tjDecompress2(h, file.data(), file.size(), out.data(), d.img.width, 0, d.img.height, TJPF_RGB,
                          TJFLAG_ACCURATEDCT | flags) != 0)
            state.SkipWithError("tjDecompress2 failed");
    state.counters["MP/s"] = benchmark::Counter(d.img.width * double(d.img.height) / 1e6, benchmark::Counter::kIsIterationInvariantRate);
    tjDestroy(h);
}

void Decode_vqcj(benchmark::State& state) { decodeOurs(state, false); }
void Decode_TurboJPEG(benchmark::State& state) { decodeTheirs(state, 0); }
// Chroma replicated rather than interpolated on both sides.
void DecodeFastUpsample_vqcj(benchmark::State& state) { decodeOurs(state, true); }
void DecodeFastUpsample_TurboJPEG(benchmark::State& state) { decodeTheirs(state, TJFLAG_FASTUPSAMPLE); }

void Args(benchmark::internal::Benchmark* b) {
    b->Args({90, 420})->Args({75, 444})->Unit(benchmark::kMillisecond)->UseRealTime();
}

BENCHMARK(Encode_vqcj)->Apply(Args);
BENCHMARK(Encode_TurboJPEG)->Apply(Args);
BENCHMARK(Decode_vqcj)->Apply(Args);
BENCHMARK(Decode_TurboJPEG)->Apply(Args);
BENCHMARK(DecodeFastUpsample_vqcj)->Apply(Args);
BENCHMARK(DecodeFastUpsample_TurboJPEG)->Apply(Args);

}  // namespace
#endif

BENCHMARK_MAIN();
