// Baseline Huffman coding of a whole scan: a photograph tiled to 2048x2048,
// colour 4:2:0 at quality 75 with the standard tables, made and decoded to
// coefficients by libjpeg-turbo. Ours: the stateful 8x8 coders and the
// Direct members over every block of the scan. Peer: libjpeg-turbo writing
// the same coefficients (jpeg_write_coefficients into memory) and reading
// them back (jpeg_read_coefficients from memory); both are dominated by its
// Huffman coders. Bytes are those of the entropy-coded scan.
#include <benchmark/benchmark.h>
#include <vqcj.h>

#include <cstdio>
#include <cstdlib>
#include <vector>

#ifdef VQCJ_HAVE_PEERS
#include <jpeglib.h>

#include "photos.h"
#include "support/jpeg_streams.h"

namespace {

struct Data {
    std::vector<uint8_t> file;
    vqcjtest::JpegFile f;
    std::vector<const Vqc16s*> blocks;  // in scan order
    std::vector<int> slot, comp;        // table slot and component of each block
    VqciEncodeHuffmanSpec encDc[2], encAc[2];
    VqciDecodeHuffmanSpec decDc[2], decAc[2];

    Data() {
        const auto photos = vqcjphoto::loadPhotos(VQCJ_PHOTO_DIR);
        if (photos.empty()) {
            std::fprintf(stderr, "no photographs in %s\n", VQCJ_PHOTO_DIR);
            std::exit(1);
        }
        const auto im = vqcjphoto::tileTo(photos.front(), 2048, 2048);
        file = vqcjtest::makeJpeg(im.pixels.data(), im.width, im.height, im.channels, {});
        f = vqcjtest::readJpeg(file);
        const auto& s = f.scans[0];
        for (int m = 0; m < f.mcusPerRow(s) * f.mcuRows(s); ++m)
            for (const auto& b : f.mcuBlocks(s, m)) {
                blocks.push_back(f.comps[b[0]].block(b[1], b[2]));
                slot.push_back(b[0] == 0 ? 0 : 1);
                comp.push_back(b[0]);
            }
        for (int i = 0; i < 2; ++i) {
            vqciEncodeHuffmanSpecInit_JPEG_8u(s.dc[i].bits.data(), s.dc[i].vals.data(), &encDc[i]);
            vqciEncodeHuffmanSpecInit_JPEG_8u(s.ac[i].bits.data(), s.ac[i].vals.data(), &encAc[i]);
            vqciDecodeHuffmanSpecInit_JPEG_8u(s.dc[i].bits.data(), s.dc[i].vals.data(), &decDc[i]);
            vqciDecodeHuffmanSpecInit_JPEG_8u(s.ac[i].bits.data(), s.ac[i].vals.data(), &decAc[i]);
        }
    }
    const std::vector<uint8_t>& scan() const { return f.scans[0].data; }
};

const Data& data() {
    static const Data d;
    return d;
}

void counters(benchmark::State& state, const Data& d) {
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * d.scan().size()));
    state.counters["blocks/s"] =
        benchmark::Counter(static_cast<double>(d.blocks.size()), benchmark::Counter::kIsIterationInvariantRate);
}

void encodeOurs(benchmark::State& state) {
    const Data& d = data();
    std::vector<Vqc8u> out(d.scan().size() + 4096);
    VqciEncodeHuffmanState st;
    for (auto _ : state) {
        vqciEncodeHuffmanStateInit_JPEG_8u(&st);
        int32_t pos = 0;
        Vqc16s pred[3] = {};
        for (size_t b = 0; b < d.blocks.size(); ++b) {
            const int t = d.slot[b];
            vqciEncodeHuffman8x8_JPEG_16s1u_C1(d.blocks[b], out.data(), static_cast<int32_t>(out.size()), &pos,
                                               &pred[d.comp[b]], &d.encDc[t], &d.encAc[t], &st, 0);
        }
        vqciEncodeHuffman8x8_JPEG_16s1u_C1(nullptr, out.data(), static_cast<int32_t>(out.size()), &pos, nullptr,
                                           nullptr, nullptr, &st, 1);
        benchmark::DoNotOptimize(out.data());
    }
    counters(state, d);
}

void encodeOursDirect(benchmark::State& state) {
    const Data& d = data();
    std::vector<Vqc8u> out(d.scan().size() + 4096);
    for (auto _ : state) {
        int32_t bitPos = 0;
        Vqc16s pred[3] = {};
        for (size_t b = 0; b < d.blocks.size(); ++b) {
            const int t = d.slot[b];
            vqciEncodeHuffman8x8_Direct_JPEG_16s1u_C1(d.blocks[b], out.data(), &bitPos, &pred[d.comp[b]], &d.encDc[t],
                                                      &d.encAc[t]);
        }
        benchmark::DoNotOptimize(out.data());
    }
    counters(state, d);
}

void decodeOurs(benchmark::State& state) {
    const Data& d = data();
    const auto& scan = d.scan();
    Vqc16s blk[64];
    VqciDecodeHuffmanState st;
    for (auto _ : state) {
        vqciDecodeHuffmanStateInit_JPEG_8u(&st);
        int32_t pos = 0, marker = 0;
        Vqc16s pred[3] = {};
        for (size_t b = 0; b < d.blocks.size(); ++b) {
            const int t = d.slot[b];
            vqciDecodeHuffman8x8_JPEG_1u16s_C1(scan.data(), static_cast<int32_t>(scan.size()), &pos, blk,
                                               &pred[d.comp[b]], &marker, &d.decDc[t], &d.decAc[t], &st);
            benchmark::DoNotOptimize(blk);
        }
    }
    counters(state, d);
}

void decodeOursDirect(benchmark::State& state) {
    const Data& d = data();
    const auto& scan = d.scan();
    Vqc16s blk[64];
    for (auto _ : state) {
        int32_t bitPos = 0, marker = 0, count = 0;
        uint32_t bits = 0;
        Vqc16s pred[3] = {};
        for (size_t b = 0; b < d.blocks.size(); ++b) {
            const int t = d.slot[b];
            vqciDecodeHuffman8x8_Direct_JPEG_1u16s_C1(scan.data(), &bitPos, blk, &pred[d.comp[b]], &marker, &bits,
                                                      &count, &d.decDc[t], &d.decAc[t]);
            benchmark::DoNotOptimize(blk);
        }
    }
    counters(state, d);
}

void peerError(j_common_ptr) { std::abort(); }

void encodePeer(benchmark::State& state) {
    const Data& d = data();
    jpeg_decompress_struct src{};
    jpeg_error_mgr err{};
    src.err = jpeg_std_error(&err);
    err.error_exit = peerError;
    jpeg_create_decompress(&src);
    jpeg_mem_src(&src, d.file.data(), static_cast<unsigned long>(d.file.size()));
    jpeg_read_header(&src, TRUE);
    jvirt_barray_ptr* coefs = jpeg_read_coefficients(&src);
    std::vector<unsigned char> buf(d.file.size() + 65536);
    for (auto _ : state) {
        jpeg_compress_struct dst{};
        jpeg_error_mgr err2{};
        dst.err = jpeg_std_error(&err2);
        err2.error_exit = peerError;
        jpeg_create_compress(&dst);
        unsigned char* out = buf.data();
        unsigned long outSize = buf.size();
        jpeg_mem_dest(&dst, &out, &outSize);
        jpeg_copy_critical_parameters(&src, &dst);
        dst.optimize_coding = FALSE;
        jpeg_write_coefficients(&dst, coefs);
        jpeg_finish_compress(&dst);
        jpeg_destroy_compress(&dst);
        benchmark::DoNotOptimize(out);
        if (out != buf.data()) std::free(out);
    }
    jpeg_finish_decompress(&src);
    jpeg_destroy_decompress(&src);
    counters(state, d);
}

void decodePeer(benchmark::State& state) {
    const Data& d = data();
    for (auto _ : state) {
        jpeg_decompress_struct src{};
        jpeg_error_mgr err{};
        src.err = jpeg_std_error(&err);
        err.error_exit = peerError;
        jpeg_create_decompress(&src);
        jpeg_mem_src(&src, d.file.data(), static_cast<unsigned long>(d.file.size()));
        jpeg_read_header(&src, TRUE);
        benchmark::DoNotOptimize(jpeg_read_coefficients(&src));
        jpeg_finish_decompress(&src);
        jpeg_destroy_decompress(&src);
    }
    counters(state, d);
}

}  // namespace

BENCHMARK(encodeOurs)->Name("Encode/8x8/vqcj")->Unit(benchmark::kMillisecond);
BENCHMARK(encodeOursDirect)->Name("Encode/8x8_Direct/vqcj")->Unit(benchmark::kMillisecond);
BENCHMARK(encodePeer)->Name("Encode/8x8/libjpeg_write_coefficients")->Unit(benchmark::kMillisecond);
BENCHMARK(decodeOurs)->Name("Decode/8x8/vqcj")->Unit(benchmark::kMillisecond);
BENCHMARK(decodeOursDirect)->Name("Decode/8x8_Direct/vqcj")->Unit(benchmark::kMillisecond);
BENCHMARK(decodePeer)->Name("Decode/8x8/libjpeg_read_coefficients")->Unit(benchmark::kMillisecond);
#endif

BENCHMARK_MAIN();
