// PackBits encode and decode beside libtiff's PackBits codec, and the 16-bit
// row join and split.
//
// Each data set is a plane of rows: a grey photograph, the interleaved rows
// of a colour photograph, and noise (all literals). How the two sides are
// made to do the same work:
//  - Both code the whole plane row by row (libtiff's codec also packs each
//    row on its own) and are charged the raw plane size, so MB/s counts
//    image bytes on either side.
//  - libtiff works on one strip holding the whole plane, in a TIFF kept in
//    memory (TIFFClientOpen), so that its per-call bookkeeping is spread
//    over the plane as our per-row calls are. Decoding maps the memory file,
//    so libtiff reads the packets in place, without a copy.
//  - Encoding with libtiff opens, writes and closes a fresh memory file per
//    iteration (rewriting a strip in place is not what a writer does); the
//    directory written at the close is a few hundred bytes against
//    megabytes of pixels.
//  - Both decoders read the same packets: ours, stored as the raw strip.
#include <benchmark/benchmark.h>
#include <vqcj.h>

#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "../tests/tiff/plane.h"

#ifdef VQCJ_HAVE_PEERS
#include "../tests/tiff/memtiff.h"
#include "photos.h"
#endif

namespace {

using tiffplane::Bytes;

struct Plane : tiffplane::Plane {
    Bytes packed;  // our packets, rows one after another
    int64_t size() const { return static_cast<int64_t>(data.size()); }
};

size_t packedBound(const Plane& p) {
    return static_cast<size_t>(p.height) * static_cast<size_t>(tiffplane::packedBound(p.rowBytes));
}

void BM_EncodeOurs(benchmark::State& state, const Plane* p) {
    Bytes out(packedBound(*p));
    int32_t count = 0;
    for (auto _ : state) {
        count = tiffplane::packRows(*p, out);
        benchmark::DoNotOptimize(out.data());
    }
    state.SetBytesProcessed(state.iterations() * p->size());
    state.counters["ratio"] = static_cast<double>(count) / static_cast<double>(p->size());
}

void BM_DecodeOurs(benchmark::State& state, const Plane* p) {
    Bytes out(p->data.size());
    for (auto _ : state) {
        tiffplane::unpackRows(p->packed, p->rowBytes, p->height, out);
        benchmark::DoNotOptimize(out.data());
    }
    state.SetBytesProcessed(state.iterations() * p->size());
    if (out != p->data) state.SkipWithError("decoded plane differs");
}

#ifdef VQCJ_HAVE_PEERS

void BM_EncodeLibtiff(benchmark::State& state, const Plane* p) {
    memtiff::File file;
    file.bytes.reserve(packedBound(*p) + 4096);
    for (auto _ : state) {
        TIFF* tif = memtiff::open(file, "w");
        memtiff::setPlaneFields(tif, p->rowBytes, p->height);
        TIFFWriteEncodedStrip(tif, 0, const_cast<uint8_t*>(p->data.data()), p->size());
        TIFFClose(tif);
        benchmark::DoNotOptimize(file.bytes.data());
    }
    state.SetBytesProcessed(state.iterations() * p->size());
}

void BM_DecodeLibtiff(benchmark::State& state, const Plane* p) {
    memtiff::File file;
    memtiff::writePlane(file, p->rowBytes, p->height, p->packed.data(), p->packed.size(), true);
    Bytes out(p->data.size());
    TIFF* tif = memtiff::open(file, "r");
    for (auto _ : state) {
        if (TIFFReadEncodedStrip(tif, 0, out.data(), p->size()) != p->size()) state.SkipWithError("libtiff failed");
        benchmark::DoNotOptimize(out.data());
    }
    TIFFClose(tif);
    state.SetBytesProcessed(state.iterations() * p->size());
    if (out != p->data) state.SkipWithError("decoded plane differs");
}

#endif

void BM_JoinRow(benchmark::State& state) {
    const int len = 4096;
    Bytes hi(len, 1), lo(len, 2), row(2 * len);
    const Vqc8u* planes[2] = {hi.data(), lo.data()};
    for (auto _ : state) {
        vqciJoinRow_TIFF_8u16u_C1(planes, row.data(), len);
        benchmark::DoNotOptimize(row.data());
    }
    state.SetBytesProcessed(state.iterations() * 2 * len);
}

void BM_SplitRow(benchmark::State& state) {
    const int len = 4096;
    Bytes hi(len), lo(len), row(2 * len, 3);
    Vqc8u* planes[2] = {hi.data(), lo.data()};
    for (auto _ : state) {
        vqciSplitRow_TIFF_16u8u_C1(row.data(), planes, len);
        benchmark::DoNotOptimize(hi.data());
        benchmark::DoNotOptimize(lo.data());
    }
    state.SetBytesProcessed(state.iterations() * 2 * len);
}

std::vector<Plane> dataSets() {
    std::vector<Plane> sets;
    constexpr int kWidth = 2048, kHeight = 1536;
#ifdef VQCJ_HAVE_PEERS
    const std::vector<vqcjphoto::Image> photos = vqcjphoto::loadPhotos(VQCJ_PHOTO_DIR);
    for (int channels : {1, 3}) {
        for (const vqcjphoto::Image& img : photos) {
            if (img.channels != channels) continue;
            const vqcjphoto::Image tiled = vqcjphoto::tileTo(img, kWidth / channels, kHeight);
            sets.push_back({{(channels == 1 ? "grey:" : "rgb:") + img.name, tiled.width * channels, kHeight,
                             tiled.pixels},
                            {}});
            break;
        }
    }
#else
    // Without the photographs: short runs among literals, as a stand-in.
    std::mt19937 rng(1);
    Plane runs{{"runs", kWidth, kHeight, {}}, {}};
    while (runs.data.size() < size_t{kWidth} * kHeight)
        runs.data.insert(runs.data.end(), 1 + rng() % 4, static_cast<uint8_t>(rng()));
    runs.data.resize(size_t{kWidth} * kHeight);
    sets.push_back(std::move(runs));
#endif
    Plane noise{{"noise", kWidth, kHeight, Bytes(size_t{kWidth} * kHeight)}, {}};
    std::mt19937 rng(2);
    for (auto& b : noise.data) b = static_cast<uint8_t>(rng() >> 24);
    sets.push_back(std::move(noise));
    for (Plane& p : sets) p.packed = tiffplane::packRows(p);
    return sets;
}

}  // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    static const std::vector<Plane> sets = dataSets();
    for (const Plane& p : sets) {
        benchmark::RegisterBenchmark(("PackBitsEncode/" + p.name + "/vqcj").c_str(), BM_EncodeOurs, &p);
#ifdef VQCJ_HAVE_PEERS
        benchmark::RegisterBenchmark(("PackBitsEncode/" + p.name + "/libtiff").c_str(), BM_EncodeLibtiff, &p);
#endif
    }
    for (const Plane& p : sets) {
        benchmark::RegisterBenchmark(("PackBitsDecode/" + p.name + "/vqcj").c_str(), BM_DecodeOurs, &p);
#ifdef VQCJ_HAVE_PEERS
        benchmark::RegisterBenchmark(("PackBitsDecode/" + p.name + "/libtiff").c_str(), BM_DecodeLibtiff, &p);
#endif
    }
    benchmark::RegisterBenchmark("JoinRow16/4096", BM_JoinRow);
    benchmark::RegisterBenchmark("SplitRow16/4096", BM_SplitRow);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
