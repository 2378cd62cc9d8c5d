// Level shift against memcpy on a 4096x4096 plane, serial and threaded.
//
// The reference copies the 16-bit plane (32 MiB), the side of the level
// shift that moves the most bytes; the shift itself reads or writes the
// 8-bit plane as well. The counter vs_memcpy is memcpy time over shift time
// for the same thread count: 1.0 means as fast as a copy of the wide plane.
#include <benchmark/benchmark.h>
#include <omp.h>
#include <vqcj.h>

#include <cstring>
#include <map>
#include <vector>

namespace {

constexpr int kSide = 4096;
constexpr VqciSize kRoi{kSide, kSide};

struct Planes {
    std::vector<Vqc8u> narrow = std::vector<Vqc8u>(size_t{kSide} * kSide);
    std::vector<Vqc16s> wide = std::vector<Vqc16s>(size_t{kSide} * kSide);
    std::vector<Vqc16s> copy = std::vector<Vqc16s>(size_t{kSide} * kSide);
    Planes() {
        for (size_t i = 0; i < narrow.size(); ++i) narrow[i] = static_cast<Vqc8u>(i * 2654435761u >> 24);
        vqciSub128_JPEG_8u16s_C1R(narrow.data(), kSide, wide.data(), 2 * kSide, kRoi);
    }
};

Planes& planes() {
    static Planes p;
    return p;
}

std::map<int, double> memcpySeconds;  // per thread count

void finish(benchmark::State& state, int64_t bytes) {
    state.SetBytesProcessed(state.iterations() * bytes);
}

void BM_Memcpy16sPlane(benchmark::State& state) {
    const int threads = static_cast<int>(state.range(0));
    auto& p = planes();
    omp_set_num_threads(threads);
    for (auto _ : state) {
        // Row runs per thread, as the frame divides them.
#pragma omp parallel for schedule(static) num_threads(threads)
        for (int y = 0; y < kSide; ++y)
            std::memcpy(p.copy.data() + size_t{kSide} * y, p.wide.data() + size_t{kSide} * y, 2 * kSide);
        benchmark::ClobberMemory();
    }
    finish(state, int64_t{kSide} * kSide * 2);
}

template <bool Down>
void BM_LevelShift(benchmark::State& state) {
    const int threads = static_cast<int>(state.range(0));
    auto& p = planes();
    omp_set_num_threads(threads);
    for (auto _ : state) {
        if (Down)
            vqciSub128_JPEG_8u16s_C1R(p.narrow.data(), kSide, p.wide.data(), 2 * kSide, kRoi);
        else
            vqciAdd128_JPEG_16s8u_C1R(p.wide.data(), 2 * kSide, p.narrow.data(), kSide, kRoi);
        benchmark::ClobberMemory();
    }
    finish(state, int64_t{kSide} * kSide * 2);
}

}  // namespace

// memcpy runs first for each thread count; its time per iteration is kept so
// that the shifts can report their ratio to it.
class RatioReporter : public benchmark::ConsoleReporter {
public:
    void ReportRuns(const std::vector<Run>& runs) override {
        std::vector<Run> out = runs;
        for (auto& r : out) {
            const double t = r.GetAdjustedRealTime();
            const std::string name = r.benchmark_name();
            const int threads = name.back() - '0';
            if (name.find("Memcpy") != std::string::npos) memcpySeconds[threads] = t;
            else if (memcpySeconds.count(threads)) r.counters["vs_memcpy"] = memcpySeconds[threads] / t;
        }
        ConsoleReporter::ReportRuns(out);
    }
};

BENCHMARK(BM_Memcpy16sPlane)->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_LevelShift<true>)->Name("Sub128_8u16s")->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_LevelShift<false>)->Name("Add128_16s8u")->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond)->UseRealTime();

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
}
