// vqcj: command-line front end of the library.
//   vqcj demo    version, exports present, and the library at work
#include <dlfcn.h>
#include <omp.h>
#include <vqcj.h>

#include <chrono>
#include <cstdio>
#include <cstring>
#include <vector>

namespace {

const char* const kExports[] = {
#include "exports.inc"
};

int countExports() {
    int n = 0;
    for (const char* name : kExports) n += dlsym(RTLD_DEFAULT, name) != nullptr;
    return n;
}

// Best of several runs, in milliseconds.
template <class Fn>
double bestMs(int runs, Fn&& fn) {
    double best = 1e30;
    for (int i = 0; i < runs; ++i) {
        const auto t0 = std::chrono::steady_clock::now();
        fn();
        const auto t1 = std::chrono::steady_clock::now();
        best = std::min(best, std::chrono::duration<double, std::milli>(t1 - t0).count());
    }
    return best;
}

void printVersion() {
    const VqcLibraryVersion* v = vqcjGetLibVersion();
    std::printf("library      %s (%s), version %d.%d, build %d.%d, target %s, built %s\n", v->name, v->version,
                v->major, v->minor, v->majorBuild, v->build, v->targetCpu, v->buildDate);
    std::printf("exports      %d of %zu present\n", countExports(), sizeof kExports / sizeof *kExports);
}

void levelShiftTiming() {
    const int side = 4096;
    const VqciSize roi{side, side};
    std::vector<Vqc8u> plane(size_t{side} * side), back(plane.size());
    std::vector<Vqc16s> shifted(plane.size());
    for (size_t i = 0; i < plane.size(); ++i) plane[i] = static_cast<Vqc8u>((i * 2654435761u) >> 24);
    const int maxThreads = omp_get_max_threads();
    std::printf("level shift  4096x4096 plane, best of 5 (ms)\n");
    for (int threads : {1, maxThreads}) {
        omp_set_num_threads(threads);
        const double down = bestMs(5, [&] { vqciSub128_JPEG_8u16s_C1R(plane.data(), side, shifted.data(), 2 * side, roi); });
        const double up = bestMs(5, [&] { vqciAdd128_JPEG_16s8u_C1R(shifted.data(), 2 * side, back.data(), side, roi); });
        std::printf("  %d thread%s  Sub128 %7.2f   Add128 %7.2f\n", threads, threads == 1 ? " " : "s", down, up);
        if (maxThreads == 1) break;
    }
    omp_set_num_threads(maxThreads);
    std::printf("  round trip %s\n", back == plane ? "exact" : "FAILED");
}

int demo() {
    printVersion();
    levelShiftTiming();
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc >= 2 && std::strcmp(argv[1], "demo") == 0) return demo();
    std::fprintf(stderr, "usage: vqcj demo\n");
    return 2;
}
