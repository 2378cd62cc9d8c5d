// Blocks per second of the 8x8 transform exports beside libjpeg-turbo's
// integer DCTs: its AVX2 kernels from the static archive (sample loading
// with the level shift, DCT, reciprocal quantiser; the inverse DCT with its
// dequantisation and range limit), and its scalar C ones (jpeg_fdct_islow
// with a rounding division per coefficient, jpeg_idct_islow).
//
// The blocks are cut from a photograph tiled to 2048x2048 (green channel),
// 65536 blocks visited in turn. The coefficients of the inverse side are
// those blocks quantised with the T.81 luminance table at quality 75.
#include <benchmark/benchmark.h>
#include <vqcj.h>

#include <array>
#include <cstdint>
#include <cstring>
#include <vector>

#include "jpeg/transform/quant.h"

#ifdef VQCJ_HAVE_PEERS
#include <cstdio>

#include <jpeglib.h>

#include "photos.h"

// libjpeg-turbo's DCT entry points; with its SIMD build (as in Debian)
// DCTELEM and ISLOW_MULT_TYPE are 16-bit.
extern "C" {
void jpeg_fdct_islow(short* data);
void jpeg_idct_islow(j_decompress_ptr cinfo, jpeg_component_info* compptr, JCOEFPTR coef_block,
                     JSAMPARRAY output_buf, JDIMENSION output_col);
// The AVX2 kernels libjpeg-turbo picks on this machine.
void jsimd_convsamp_avx2(JSAMPARRAY sample_data, JDIMENSION start_col, short* workspace);
void jsimd_fdct_islow_avx2(short* data);
void jsimd_quantize_avx2(JCOEFPTR coef_block, short* divisors, short* workspace);
void jsimd_idct_islow_avx2(void* dct_table, JCOEFPTR coef_block, JSAMPARRAY output_buf, JDIMENSION output_col);
}
#endif

namespace {

constexpr int kSide = 2048;
constexpr int kBlocks = (kSide / 8) * (kSide / 8);

// T.81 table K.1, natural order.
constexpr unsigned kLuminance[64] = {16, 11, 10, 16, 24,  40,  51,  61,  12, 12, 14, 19, 26,  58,  60,  55,
                                     14, 13, 16, 24, 40,  57,  69,  56,  14, 17, 22, 29, 51,  87,  80,  62,
                                     18, 22, 37, 56, 68,  109, 103, 77,  24, 35, 55, 64, 81,  104, 113, 92,
                                     49, 64, 78, 87, 103, 121, 120, 101, 72, 92, 95, 98, 112, 100, 103, 99};

struct Data {
    std::vector<Vqc8u> plane = std::vector<Vqc8u>(size_t{kSide} * kSide);
    std::vector<Vqc16u> plane12 = std::vector<Vqc16u>(size_t{kSide} * kSide);
    std::vector<Vqc16s> centred;  // blocks, 64 each, level-shifted
    std::vector<Vqc16s> coefStore;
    Vqc16s* coef = nullptr;       // blocks, 64 each, quantised, 32-byte aligned as the AVX2 peer may want
    std::array<Vqc16u, 64> fwdTable{}, invTable{};
    std::array<Vqc32f, 64> fwdTable32f{}, invTable32f{};
    std::array<unsigned, 64> divisors{};  // natural order
    std::array<int, 64> divisors8{};      // the same, times the scale of libjpeg's DCT output

    Data() {
#ifdef VQCJ_HAVE_PEERS
        const auto photos = vqcjphoto::loadPhotos(VQCJ_PHOTO_DIR);
        if (photos.empty()) {
            std::fprintf(stderr, "no photographs in %s\n", VQCJ_PHOTO_DIR);
            std::exit(1);
        }
        const auto tiled = vqcjphoto::tileTo(photos.front(), kSide, kSide);
        const int ch = tiled.channels == 3 ? 1 : 0;
        for (size_t i = 0; i < plane.size(); ++i) plane[i] = tiled.pixels[i * tiled.channels + ch];
#else
        for (int y = 0; y < kSide; ++y)  // a smooth synthetic image without peers
            for (int x = 0; x < kSide; ++x) plane[size_t{kSide} * y + x] = static_cast<Vqc8u>((x * x + y * 3) >> 6);
#endif
        for (size_t i = 0; i < plane.size(); ++i) plane12[i] = static_cast<Vqc16u>(plane[i] * 16 + (i & 15));

        // Quality 75 luminance table in the library's three forms, and the
        // same divisors for the peer.
        std::array<Vqc8u, 64> raw{};
        for (int i = 0; i < 64; ++i) raw[vqcj::ownZigzagPos[i]] = static_cast<Vqc8u>(kLuminance[i]);
        vqciQuantFwdRawTableInit_JPEG_8u(raw.data(), 75);
        vqciQuantFwdTableInit_JPEG_8u16u(raw.data(), fwdTable.data());
        vqciQuantInvTableInit_JPEG_8u16u(raw.data(), invTable.data());
        for (int i = 0; i < 64; ++i) {
            divisors[i] = invTable[i];
            divisors8[i] = 8 * invTable[i];
            fwdTable32f[i] = 1.0f / invTable[i];
            invTable32f[i] = static_cast<float>(invTable[i]);
        }

        centred.resize(size_t{kBlocks} * 64);
        coefStore.resize(size_t{kBlocks} * 64 + 16);
        coef = coefStore.data() + (-(reinterpret_cast<uintptr_t>(coefStore.data()) / 2) & 15);
        for (int b = 0; b < kBlocks; ++b) {
            const Vqc8u* src = block(b);
            for (int r = 0; r < 8; ++r)
                for (int c = 0; c < 8; ++c)
                    centred[size_t{64} * b + r * 8 + c] = static_cast<Vqc16s>(src[r * kSide + c] - 128);
            vqciDCTQuantFwd8x8LS_JPEG_8u16s_C1R(src, kSide, &coef[size_t{64} * b], fwdTable.data());
        }
    }

    const Vqc8u* block(int b) const {
        return plane.data() + size_t{kSide} * 8 * (b / (kSide / 8)) + 8 * (b % (kSide / 8));
    }
    const Vqc16u* block12(int b) const {
        return plane12.data() + size_t{kSide} * 8 * (b / (kSide / 8)) + 8 * (b % (kSide / 8));
    }
};

const Data& data() {
    static const Data d;
    return d;
}

// Runs op(data, block index) on the blocks in turn, one block an iteration.
template <class Op>
void runBlocks(benchmark::State& state, Op op) {
    const Data& d = data();
    int b = 0;
    for (auto _ : state) {
        op(d, b);
        b = (b + 1) % kBlocks;
    }
    state.SetItemsProcessed(state.iterations());  // blocks
    state.SetBytesProcessed(state.iterations() * 64);
}

const Vqc16s* centred(const Data& d, int b) { return &d.centred[size_t{64} * b]; }
const Vqc16s* coef(const Data& d, int b) { return d.coef + size_t{64} * b; }

// Output scratch; the in-place forms get a fresh copy of their block.
alignas(32) Vqc16s out16s[64];
alignas(32) Vqc16u out16u[64];
alignas(32) Vqc8u out8u[64];

void fresh(const Vqc16s* block) { std::memcpy(out16s, block, sizeof out16s); }

void BM_FwdLS_8u16s(benchmark::State& state) {
    runBlocks(state, [](const Data& d, int b) {
        vqciDCTQuantFwd8x8LS_JPEG_8u16s_C1R(d.block(b), kSide, out16s, d.fwdTable.data());
        benchmark::DoNotOptimize(out16s);
    });
}

void BM_FwdLS_16u16s(benchmark::State& state) {
    runBlocks(state, [](const Data& d, int b) {
        vqciDCTQuantFwd8x8LS_JPEG_16u16s_C1R(d.block12(b), 2 * kSide, out16s, d.fwdTable32f.data());
        benchmark::DoNotOptimize(out16s);
    });
}

void BM_Fwd_16s_C1(benchmark::State& state) {
    runBlocks(state, [](const Data& d, int b) {
        vqciDCTQuantFwd8x8_JPEG_16s_C1(centred(d, b), out16s, d.fwdTable.data());
        benchmark::DoNotOptimize(out16s);
    });
}

void BM_Fwd_16s_C1I(benchmark::State& state) {
    runBlocks(state, [](const Data& d, int b) {
        fresh(centred(d, b));
        vqciDCTQuantFwd8x8_JPEG_16s_C1I(out16s, d.fwdTable.data());
        benchmark::DoNotOptimize(out16s);
    });
}

void BM_QuantFwd(benchmark::State& state) {
    runBlocks(state, [](const Data& d, int b) {
        fresh(centred(d, b));
        vqciQuantFwd8x8_JPEG_16s_C1I(out16s, d.fwdTable.data());
        benchmark::DoNotOptimize(out16s);
    });
}

void BM_InvLS_16s8u(benchmark::State& state) {
    runBlocks(state, [](const Data& d, int b) {
        vqciDCTQuantInv8x8LS_JPEG_16s8u_C1R(coef(d, b), out8u, 8, d.invTable.data());
        benchmark::DoNotOptimize(out8u);
    });
}

void BM_InvLS_16s16u(benchmark::State& state) {
    runBlocks(state, [](const Data& d, int b) {
        vqciDCTQuantInv8x8LS_JPEG_16s16u_C1R(coef(d, b), out16u, 16, d.invTable32f.data());
        benchmark::DoNotOptimize(out16u);
    });
}

void BM_Inv_16s_C1(benchmark::State& state) {
    runBlocks(state, [](const Data& d, int b) {
        vqciDCTQuantInv8x8_JPEG_16s_C1(coef(d, b), out16s, d.invTable.data());
        benchmark::DoNotOptimize(out16s);
    });
}

void BM_Inv_16s_C1I(benchmark::State& state) {
    runBlocks(state, [](const Data& d, int b) {
        fresh(coef(d, b));
        vqciDCTQuantInv8x8_JPEG_16s_C1I(out16s, d.invTable.data());
        benchmark::DoNotOptimize(out16s);
    });
}

void BM_QuantInv(benchmark::State& state) {
    runBlocks(state, [](const Data& d, int b) {
        fresh(coef(d, b));
        vqciQuantInv8x8_JPEG_16s_C1I(out16s, d.invTable.data());
        benchmark::DoNotOptimize(out16s);
    });
}

#ifdef VQCJ_HAVE_PEERS

// Sample loading with the level shift, the islow DCT, and the quantisation
// of libjpeg's classic forward_DCT: a rounding division by 8 * divisor.
void BM_PeerFwd(benchmark::State& state) {
    runBlocks(state, [](const Data& d, int b) {
        alignas(16) short work[64];
        const Vqc8u* src = d.block(b);
        for (int r = 0; r < 8; ++r)
            for (int c = 0; c < 8; ++c) work[r * 8 + c] = static_cast<short>(src[r * kSide + c] - 128);
        jpeg_fdct_islow(work);
        for (int i = 0; i < 64; ++i) {
            const int q = d.divisors8[i];
            int t = work[i];
            if (t < 0) {
                t = -t + (q >> 1);
                t = t >= q ? t / q : 0;
                t = -t;
            } else {
                t += q >> 1;
                t = t >= q ? t / q : 0;
            }
            out16s[i] = static_cast<JCOEF>(t);
        }
        benchmark::DoNotOptimize(out16s);
    });
}

// libjpeg-turbo's divisor table for its SIMD quantiser, as jcdctmgr.c's
// compute_reciprocal lays it out: reciprocal, correction, scale and shift,
// 64 entries each, for divisors 8 q (the islow DCT's output scale).
struct PeerQuant {
    alignas(32) std::array<short, 256> table{};

    explicit PeerQuant(const std::array<unsigned, 64>& q) {
        for (int i = 0; i < 64; ++i) {
            const unsigned divisor = 8 * q[i];
            short* t = table.data() + i;
            if (divisor == 1) {
                t[0] = 1, t[64] = 0, t[128] = 1, t[192] = -16;
                continue;
            }
            int r = 16 + (31 - __builtin_clz(divisor));
            unsigned fq = (1u << r) / divisor;
            const unsigned fr = (1u << r) % divisor;
            unsigned c = divisor / 2;
            if (fr == 0) {
                fq >>= 1;
                --r;
            } else if (fr <= divisor / 2) {
                ++c;
            } else {
                ++fq;
            }
            t[0] = static_cast<short>(fq), t[64] = static_cast<short>(c);
            t[128] = static_cast<short>(1 << (32 - r)), t[192] = static_cast<short>(r - 16);
        }
    }
};

// Row pointers of the plane, for the peer's sample loader.
std::vector<JSAMPROW> planeRows(const Data& d) {
    std::vector<JSAMPROW> rows(kSide);
    for (int y = 0; y < kSide; ++y) rows[y] = const_cast<JSAMPLE*>(d.plane.data()) + size_t{kSide} * y;
    return rows;
}

// Sample loading with the level shift, DCT and quantiser: the forward path
// of libjpeg-turbo's compressor on AVX2.
void BM_PeerAvx2Fwd(benchmark::State& state) {
    static PeerQuant quant(data().divisors);
    static std::vector<JSAMPROW> rows = planeRows(data());
    // The divisor table is checked once against the rounding division.
    {
        alignas(32) short work[64];
        jsimd_convsamp_avx2(rows.data(), 0, work);
        jsimd_fdct_islow_avx2(work);
        for (int i = 0; i < 64; ++i) {
            const int q = data().divisors8[i], t = work[i], m = (t < 0 ? -t : t) + q / 2;
            const int want = (t < 0 ? -1 : 1) * (m >= q ? m / q : 0);
            jsimd_quantize_avx2(out16s, quant.table.data(), work);
            if (out16s[i] != want) state.SkipWithError("peer divisor table");
        }
    }
    runBlocks(state, [](const Data&, int b) {
        alignas(32) short work[64];
        jsimd_convsamp_avx2(&rows[8 * (b / (kSide / 8))], 8 * (b % (kSide / 8)), work);
        jsimd_fdct_islow_avx2(work);
        jsimd_quantize_avx2(out16s, quant.table.data(), work);
        benchmark::DoNotOptimize(out16s);
    });
}

void BM_PeerAvx2Inv(benchmark::State& state) {
    alignas(32) static std::array<short, 64> mult{};
    for (int i = 0; i < 64; ++i) mult[i] = static_cast<short>(data().divisors[i]);
    static JSAMPROW rows[8];
    for (int r = 0; r < 8; ++r) rows[r] = out8u + 8 * r;
    runBlocks(state, [](const Data& d, int b) {
        jsimd_idct_islow_avx2(mult.data(), const_cast<JCOEF*>(coef(d, b)), rows, 0);
        benchmark::DoNotOptimize(out8u);
    });
}

// The decompressor state jpeg_idct_islow reads: the range-limit table as
// jdmaster.c's prepare_range_limit_table lays it out, and the multipliers.
struct PeerIdct {
    jpeg_decompress_struct cinfo{};
    jpeg_component_info comp{};
    std::array<JSAMPLE, 5 * 256 + 128> range{};
    std::array<short, 64> mult{};

    explicit PeerIdct(const std::array<unsigned, 64>& divisors) {
        JSAMPLE* t = range.data() + 256;  // negative subscripts of the simple table are 0
        for (int i = 0; i < 256; ++i) t[i] = static_cast<JSAMPLE>(i);
        JSAMPLE* post = t + 128;
        for (int i = 128; i < 512; ++i) post[i] = 255;
        for (int i = 512; i < 1024 - 128; ++i) post[i] = 0;
        std::memcpy(post + 1024 - 128, t, 128);
        cinfo.sample_range_limit = t;
        for (int i = 0; i < 64; ++i) mult[i] = static_cast<short>(divisors[i]);
        comp.dct_table = mult.data();
    }
};

void BM_PeerInv(benchmark::State& state) {
    static PeerIdct peer(data().divisors);
    static JSAMPROW rows[8];
    for (int r = 0; r < 8; ++r) rows[r] = out8u + 8 * r;
    runBlocks(state, [](const Data& d, int b) {
        jpeg_idct_islow(&peer.cinfo, &peer.comp, const_cast<JCOEF*>(coef(d, b)), rows, 0);
        benchmark::DoNotOptimize(out8u);
    });
}

#endif

}  // namespace

BENCHMARK(BM_FwdLS_8u16s)->Name("Fwd/DCTQuantFwd8x8LS_8u16s/vqcj");
#ifdef VQCJ_HAVE_PEERS
BENCHMARK(BM_PeerAvx2Fwd)->Name("Fwd/DCTQuantFwd8x8LS_8u16s/libjpeg_avx2_convsamp+fdct_islow+quantize");
BENCHMARK(BM_PeerFwd)->Name("Fwd/DCTQuantFwd8x8LS_8u16s/libjpeg_fdct_islow+divide");
#endif
BENCHMARK(BM_Fwd_16s_C1)->Name("Fwd/DCTQuantFwd8x8_16s_C1/vqcj");
BENCHMARK(BM_Fwd_16s_C1I)->Name("Fwd/DCTQuantFwd8x8_16s_C1I/vqcj");
BENCHMARK(BM_FwdLS_16u16s)->Name("Fwd/DCTQuantFwd8x8LS_16u16s_float/vqcj");
BENCHMARK(BM_QuantFwd)->Name("Fwd/QuantFwd8x8_16s_C1I/vqcj");

BENCHMARK(BM_InvLS_16s8u)->Name("Inv/DCTQuantInv8x8LS_16s8u/vqcj");
#ifdef VQCJ_HAVE_PEERS
BENCHMARK(BM_PeerAvx2Inv)->Name("Inv/DCTQuantInv8x8LS_16s8u/libjpeg_avx2_idct_islow");
BENCHMARK(BM_PeerInv)->Name("Inv/DCTQuantInv8x8LS_16s8u/libjpeg_idct_islow");
#endif
BENCHMARK(BM_Inv_16s_C1)->Name("Inv/DCTQuantInv8x8_16s_C1/vqcj");
BENCHMARK(BM_Inv_16s_C1I)->Name("Inv/DCTQuantInv8x8_16s_C1I/vqcj");
BENCHMARK(BM_InvLS_16s16u)->Name("Inv/DCTQuantInv8x8LS_16s16u_float/vqcj");
BENCHMARK(BM_QuantInv)->Name("Inv/QuantInv8x8_16s_C1I/vqcj");

BENCHMARK_MAIN();
