// One level of the JPEG 2000 wavelets on a 4096 x 4096 tile component,
// beside OpenJPEG's own DWT (its internal one-level transform, linked from
// the static archive, single-threaded) on the same samples:
//  - 5/3: our 2D in-place forms on 16-bit and 32-bit samples; OpenJPEG
//    works on 32-bit samples only.
//  - 9/7: our 2D forms (16s: 14-bit fixed point, 32s: single precision on
//    integers); OpenJPEG's works on floats in place.
//  - the row and column line forms over the same plane, for reference.
// Each iteration transforms a fresh copy made outside the timing (pause),
// so every run sees the same input; MP/s counts component samples.
#include <benchmark/benchmark.h>
#include <vqcj.h>

#include <cstdint>
#include <random>
#include <vector>

#ifdef VQCJ_HAVE_OPJ_DWT
#include "support/jpeg2k_wavelet_peer.h"
#endif

namespace {

constexpr int kSide = 4096;

// A smooth image with texture, in 12-bit range, like a photograph's tile.
template <class T>
const std::vector<T>& plane() {
    static const std::vector<T> p = [] {
        std::vector<T> v(size_t(kSide) * kSide);
        std::mt19937 rng(1);
        for (int y = 0; y < kSide; ++y)
            for (int x = 0; x < kSide; ++x)
                v[size_t(y) * kSide + x] = T(((x * 7 + y * 3) & 1023) + int(rng() & 63) - 512);
        return v;
    }();
    return p;
}

template <class T, class Fn>
void run2D(benchmark::State& st, Fn fn) {
    std::vector<T> img;
    for (auto _ : st) {
        st.PauseTiming();
        img = plane<T>();
        st.ResumeTiming();
        fn(img.data());
        benchmark::ClobberMemory();
    }
    st.counters["MP/s"] =
        benchmark::Counter(double(kSide) * kSide * st.iterations() / 1e6, benchmark::Counter::kIsRate);
}

template <class T, class Get, class Op>
void ours2D(benchmark::State& st, Get get, Op op) {
    const VqciRect r{0, 0, kSide, kSide};
    int32_t sz = 0;
    get(&r, &sz);
    std::vector<uint8_t> buf(sz);
    run2D<T>(st, [&](T* p) { op(p, int32_t(kSide * sizeof(T)), &r, buf.data()); });
}

void B53Fwd16s(benchmark::State& st) {
    ours2D<Vqc16s>(st, vqciWTGetBufSize_B53_JPEG2K_16s_C1IR, vqciWTFwd_B53_JPEG2K_16s_C1IR);
}
void B53Inv16s(benchmark::State& st) {
    ours2D<Vqc16s>(st, vqciWTGetBufSize_B53_JPEG2K_16s_C1IR, vqciWTInv_B53_JPEG2K_16s_C1IR);
}
void B53Fwd32s(benchmark::State& st) {
    ours2D<Vqc32s>(st, vqciWTGetBufSize_B53_JPEG2K_32s_C1IR, vqciWTFwd_B53_JPEG2K_32s_C1IR);
}
void B53Inv32s(benchmark::State& st) {
    ours2D<Vqc32s>(st, vqciWTGetBufSize_B53_JPEG2K_32s_C1IR, vqciWTInv_B53_JPEG2K_32s_C1IR);
}
void D97Fwd16s(benchmark::State& st) {
    ours2D<Vqc16s>(st, vqciWTGetBufSize_D97_JPEG2K_16s_C1IR, vqciWTFwd_D97_JPEG2K_16s_C1IR);
}
void D97Inv16s(benchmark::State& st) {
    ours2D<Vqc16s>(st, vqciWTGetBufSize_D97_JPEG2K_16s_C1IR, vqciWTInv_D97_JPEG2K_16s_C1IR);
}
void D97Fwd32s(benchmark::State& st) {
    ours2D<Vqc32s>(st, vqciWTGetBufSize_D97_JPEG2K_32s_C1IR, vqciWTFwd_D97_JPEG2K_32s_C1IR);
}
void D97Inv32s(benchmark::State& st) {
    ours2D<Vqc32s>(st, vqciWTGetBufSize_D97_JPEG2K_32s_C1IR, vqciWTInv_D97_JPEG2K_32s_C1IR);
}
BENCHMARK(B53Fwd16s)->Unit(benchmark::kMillisecond);
BENCHMARK(B53Fwd32s)->Unit(benchmark::kMillisecond);
BENCHMARK(B53Inv16s)->Unit(benchmark::kMillisecond);
BENCHMARK(B53Inv32s)->Unit(benchmark::kMillisecond);
BENCHMARK(D97Fwd16s)->Unit(benchmark::kMillisecond);
BENCHMARK(D97Fwd32s)->Unit(benchmark::kMillisecond);
BENCHMARK(D97Inv16s)->Unit(benchmark::kMillisecond);
BENCHMARK(D97Inv32s)->Unit(benchmark::kMillisecond);

// Line forms over the plane: the source rows hold their own border, so
// the transform covers the inner part; both bands are a plane's half.
template <class T, class Op>
void rows(benchmark::State& st, Op op) {
    const std::vector<T>& src = plane<T>();
    const int w = kSide / 2 - 8;
    std::vector<T> lo(size_t(w) * kSide), hi(size_t(w) * kSide);
    for (auto _ : st) {
        op(src.data() + 8, int32_t(kSide * sizeof(T)), lo.data(), int32_t(w * sizeof(T)), hi.data(),
           int32_t(w * sizeof(T)), VqciSize{w, kSide}, 0);
        benchmark::ClobberMemory();
    }
    st.counters["MP/s"] = benchmark::Counter(2.0 * w * kSide * st.iterations() / 1e6, benchmark::Counter::kIsRate);
}
template <class T, class Op>
void cols(benchmark::State& st, Op op) {
    const std::vector<T>& src = plane<T>();
    const int h = kSide / 2 - 8;
    std::vector<T> lo(size_t(h) * kSide), hi(size_t(h) * kSide);
    for (auto _ : st) {
        op(src.data() + 8 * kSide, int32_t(kSide * sizeof(T)), lo.data(), int32_t(kSide * sizeof(T)), hi.data(),
           int32_t(kSide * sizeof(T)), VqciSize{kSide, h}, 0);
        benchmark::ClobberMemory();
    }
    st.counters["MP/s"] = benchmark::Counter(2.0 * h * kSide * st.iterations() / 1e6, benchmark::Counter::kIsRate);
}
void B53Row16s(benchmark::State& st) { rows<Vqc16s>(st, vqciWTFwdRow_B53_JPEG2K_16s_C1R); }
void B53Col16s(benchmark::State& st) { cols<Vqc16s>(st, vqciWTFwdCol_B53_JPEG2K_16s_C1R); }
void D97Row16s(benchmark::State& st) { rows<Vqc16s>(st, vqciWTFwdRow_D97_JPEG2K_16s_C1R); }
void D97Row32f(benchmark::State& st) { rows<Vqc32f>(st, vqciWTFwdRow_D97_JPEG2K_32f_C1R); }
void D97Col32f(benchmark::State& st) { cols<Vqc32f>(st, vqciWTFwdCol_D97_JPEG2K_32f_C1R); }
BENCHMARK(B53Row16s)->Unit(benchmark::kMillisecond);
BENCHMARK(B53Col16s)->Unit(benchmark::kMillisecond);
BENCHMARK(D97Row16s)->Unit(benchmark::kMillisecond);
BENCHMARK(D97Row32f)->Unit(benchmark::kMillisecond);
BENCHMARK(D97Col32f)->Unit(benchmark::kMillisecond);

#ifdef VQCJ_HAVE_OPJ_DWT
void OpjB53Fwd(benchmark::State& st) {
    run2D<int32_t>(st, [](int32_t* p) { vqcjtest::opjDwt53Forward(p, 0, 0, kSide, kSide); });
}
void OpjB53Inv(benchmark::State& st) {
    run2D<int32_t>(st, [](int32_t* p) { vqcjtest::opjDwt53Inverse(p, 0, 0, kSide, kSide); });
}
void OpjD97Fwd(benchmark::State& st) {
    run2D<float>(st, [](float* p) { vqcjtest::opjDwt97Forward(p, 0, 0, kSide, kSide); });
}
void OpjD97Inv(benchmark::State& st) {
    run2D<float>(st, [](float* p) { vqcjtest::opjDwt97Inverse(p, 0, 0, kSide, kSide); });
}
BENCHMARK(OpjB53Fwd)->Unit(benchmark::kMillisecond);
BENCHMARK(OpjB53Inv)->Unit(benchmark::kMillisecond);
BENCHMARK(OpjD97Fwd)->Unit(benchmark::kMillisecond);
BENCHMARK(OpjD97Inv)->Unit(benchmark::kMillisecond);
#endif

}  // namespace

BENCHMARK_MAIN();
