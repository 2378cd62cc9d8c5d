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

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#ifdef VQCJ_HAVE_PEERS
#include <tiffio.h>

#include "photos.h"
#endif

namespace {

using Bytes = std::vector<uint8_t>;

struct Plane {
    std::string name;
    int rowBytes = 0, height = 0;
    Bytes data;
    Bytes packed;  // our packets, rows one after another
    int64_t size() const { return static_cast<int64_t>(data.size()); }
};

// Every row appended to `out`, which must hold the bound of each (see
// packedBound); the bytes written, or -1 when a row fails.
int32_t packRows(const Plane& p, Bytes& out) {
    int32_t count = 0;
    const auto cap = static_cast<int32_t>(out.size());
    for (int y = 0; y < p.height; ++y)
        if (vqciPackBitsRow_TIFF_8u_C1(p.data.data() + static_cast<size_t>(y) * static_cast<size_t>(p.rowBytes),
                                        p.rowBytes, out.data(), &count, cap) != vqcStatusOk)
            return -1;
    return count;
}

// Rows decoded one after another with one position; true when every row
// succeeds and the position lands on the end.
bool unpackRows(const Bytes& stream, const Plane& p, Bytes& out) {
    int32_t pos = 0;
    const auto len = static_cast<int32_t>(stream.size());
    for (int y = 0; y < p.height; ++y)
        if (vqciUnpackBitsRow_TIFF_8u_C1(stream.data(), &pos, len,
                                          out.data() + static_cast<size_t>(y) * static_cast<size_t>(p.rowBytes),
                                          p.rowBytes) != vqcStatusOk)
            return false;
    return pos == len;
}

#ifdef VQCJ_HAVE_PEERS

// A TIFF file in memory for libtiff (TIFFClientOpen). Reading maps the
// buffer, so libtiff decodes straight from it.
struct MemFile {
    Bytes bytes;
    uint64_t pos = 0;
};

MemFile& of(thandle_t h) { return *static_cast<MemFile*>(h); }

// Reads or writes n bytes at the position; a write grows the file first.
template <bool kWrite>
tmsize_t transfer(thandle_t h, void* buf, tmsize_t n) {
    MemFile& f = of(h);
    if (kWrite && f.pos + static_cast<uint64_t>(n) > f.bytes.size()) f.bytes.resize(f.pos + static_cast<uint64_t>(n));
    n = std::clamp<tmsize_t>(static_cast<tmsize_t>(f.bytes.size()) - static_cast<tmsize_t>(f.pos), 0, n);
    uint8_t* at = f.bytes.data() + f.pos;
    if (n > 0) kWrite ? std::memcpy(at, buf, static_cast<size_t>(n)) : std::memcpy(buf, at, static_cast<size_t>(n));
    f.pos += static_cast<uint64_t>(n);
    return n;
}

// mode as for TIFFOpen: "w" starts an empty file, "r" reads it.
TIFF* openMem(MemFile& f, const char* mode) {
    if (mode[0] == 'w') f.bytes.clear();
    f.pos = 0;
    const auto seek = [](thandle_t h, toff_t off, int whence) -> toff_t {
        const uint64_t base = whence == SEEK_CUR ? of(h).pos : whence == SEEK_END ? of(h).bytes.size() : 0;
        return of(h).pos = base + off;
    };
    const auto map = [](thandle_t h, void** base, toff_t* size) {
        *base = of(h).bytes.data();
        *size = of(h).bytes.size();
        return 1;
    };
    return TIFFClientOpen("memory", mode, &f, transfer<false>, transfer<true>, seek, [](thandle_t) { return 0; },
                          [](thandle_t h) -> toff_t { return of(h).bytes.size(); }, map, [](thandle_t, void*, toff_t) {});
}

// The whole plane in one PackBits strip (interleaved rows go in as one wide
// grey row: PackBits works on bytes).
void setPlaneFields(TIFF* tif, const Plane& p) {
    const uint32_t fields[][2] = {{TIFFTAG_IMAGEWIDTH, static_cast<uint32_t>(p.rowBytes)},
                                  {TIFFTAG_IMAGELENGTH, static_cast<uint32_t>(p.height)},
                                  {TIFFTAG_ROWSPERSTRIP, static_cast<uint32_t>(p.height)},
                                  {TIFFTAG_BITSPERSAMPLE, 8},
                                  {TIFFTAG_SAMPLESPERPIXEL, 1},
                                  {TIFFTAG_COMPRESSION, COMPRESSION_PACKBITS},
                                  {TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISBLACK}};
    for (const auto& field : fields) TIFFSetField(tif, field[0], field[1]);
}

#endif

// The most the plane can take: a row of n bytes packs to at most
// n + ceil(n / 5).
size_t packedBound(const Plane& p) {
    return static_cast<size_t>(p.height) * static_cast<size_t>(p.rowBytes + (p.rowBytes + 4) / 5);
}

void BM_EncodeOurs(benchmark::State& state, const Plane* p) {
    Bytes out(packedBound(*p));
    int32_t count = 0;
    for (auto _ : state) {
        count = packRows(*p, out);
        benchmark::DoNotOptimize(out.data());
    }
    state.SetBytesProcessed(state.iterations() * p->size());
    state.counters["ratio"] = static_cast<double>(count) / static_cast<double>(p->size());
}

void BM_DecodeOurs(benchmark::State& state, const Plane* p) {
    Bytes out(p->data.size());
    for (auto _ : state) {
        unpackRows(p->packed, *p, out);
        benchmark::DoNotOptimize(out.data());
    }
    state.SetBytesProcessed(state.iterations() * p->size());
    if (out != p->data) state.SkipWithError("decoded plane differs");
}

#ifdef VQCJ_HAVE_PEERS

void BM_EncodeLibtiff(benchmark::State& state, const Plane* p) {
    MemFile file;
    file.bytes.reserve(packedBound(*p) + 4096);
    for (auto _ : state) {
        TIFF* tif = openMem(file, "w");
        setPlaneFields(tif, *p);
        TIFFWriteEncodedStrip(tif, 0, const_cast<uint8_t*>(p->data.data()), p->size());
        TIFFClose(tif);
        benchmark::DoNotOptimize(file.bytes.data());
    }
    state.SetBytesProcessed(state.iterations() * p->size());
}

void BM_DecodeLibtiff(benchmark::State& state, const Plane* p) {
    MemFile file;
    TIFF* tif = openMem(file, "w");
    setPlaneFields(tif, *p);
    TIFFWriteRawStrip(tif, 0, const_cast<uint8_t*>(p->packed.data()), static_cast<tmsize_t>(p->packed.size()));
    TIFFClose(tif);
    Bytes out(p->data.size());
    tif = openMem(file, "r");
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
            sets.push_back({(channels == 1 ? "grey:" : "rgb:") + img.name, tiled.width * channels, kHeight,
                            tiled.pixels, {}});
            break;
        }
    }
#else
    // Without the photographs: short runs among literals, as a stand-in.
    std::mt19937 rng(1);
    Plane runs{"runs", kWidth, kHeight, {}, {}};
    while (runs.data.size() < size_t{kWidth} * kHeight)
        runs.data.insert(runs.data.end(), 1 + rng() % 4, static_cast<uint8_t>(rng()));
    runs.data.resize(size_t{kWidth} * kHeight);
    sets.push_back(std::move(runs));
#endif
    Plane noise{"noise", kWidth, kHeight, Bytes(size_t{kWidth} * kHeight), {}};
    std::mt19937 noiseRng(2);
    for (auto& b : noise.data) b = static_cast<uint8_t>(noiseRng() >> 24);
    sets.push_back(std::move(noise));
    for (Plane& p : sets) {
        p.packed.resize(packedBound(p));
        p.packed.resize(static_cast<size_t>(std::max(packRows(p, p.packed), 0)));
    }
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
