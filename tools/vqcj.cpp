// vqcj: command-line front end of the library.
//   vqcj demo [image]            the JPEG codec made of the library's
//                                primitives, on the sample photograph
//   vqcj jpeg encode|decode|info the codec itself
#include <dlfcn.h>
#include <vqcj.h>

#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#ifdef VQCJ_HAVE_JPEG
#include "jpeg/cli.h"
#include "jpeg/codec.h"
#endif

namespace {

const char* const kExports[] = {
#include "exports.inc"
};

int countExports() {
    int n = 0;
    for (const char* name : kExports) n += dlsym(RTLD_DEFAULT, name) != nullptr;
    return n;
}

void printVersion() {
    const VqcLibraryVersion* v = vqcjGetLibVersion();
    std::printf("library   %s (%s), version %d.%d, build %d.%d, target %s, built %s\n", v->name, v->version, v->major,
                v->minor, v->majorBuild, v->build, v->targetCpu, v->buildDate);
    std::printf("exports   %d of %zu present\n", countExports(), sizeof kExports / sizeof *kExports);
}

#ifdef VQCJ_HAVE_JPEG
using Clock = std::chrono::steady_clock;

// Best of several runs, in seconds.
template <class Fn>
double bestSeconds(int runs, Fn&& fn) {
    double best = 1e30;
    for (int i = 0; i < runs; ++i) {
        const auto t0 = Clock::now();
        fn();
        best = std::min(best, std::chrono::duration<double>(Clock::now() - t0).count());
    }
    return best;
}

double psnr(const vqcjpeg::Image& a, const vqcjpeg::Image& b) {
    double se = 0;
    for (size_t i = 0; i < a.pixels.size(); ++i) se += double(a.pixels[i] - b.pixels[i]) * (a.pixels[i] - b.pixels[i]);
    return se == 0 ? INFINITY : 10 * std::log10(255.0 * 255.0 * a.pixels.size() / se);
}

int demo(const char* path) {
    printVersion();
    vqcjpeg::Image img;
    if (std::string e = vqcjpeg::readImage(path, img); !e.empty()) {
        std::fprintf(stderr, "vqcj demo: %s\n", e.c_str());
        return 1;
    }
    std::printf("image     %s, %dx%d, %d channel%s\n\n", path, img.width, img.height, img.channels,
                img.channels == 1 ? "" : "s");
    struct Mode {
        const char* name;
        vqcjpeg::EncodeOptions opt;
    } modes[] = {
        {"baseline q90 4:2:0", {}},
        {"baseline q90 optimised", {90, 420, false, false, true}},
        {"progressive q90", {90, 420, false, true}},
        {"baseline q75 4:4:4, restarts", {75, 444, false, false, false, 16}},
        {"lossless, predictor 1", {90, 420, false, false, false, 0, 1}},
        {"lossless, predictor 7", {90, 420, false, false, false, 0, 7}},
    };
    const double mp = img.width * double(img.height) / 1e6;
    std::printf("%-30s %10s %8s %9s %12s %12s\n", "mode", "bytes", "bits/px", "PSNR dB", "encode MP/s", "decode MP/s");
    for (const Mode& m : modes) {
        std::vector<uint8_t> file;
        std::string err;
        const double enc = bestSeconds(3, [&] { err = vqcjpeg::encode(img, m.opt, file); });
        vqcjpeg::Image back;
        const double dec = bestSeconds(3, [&] { err += vqcjpeg::decode(file.data(), file.size(), back); });
        if (!err.empty()) {
            std::printf("%-30s failed: %s\n", m.name, err.c_str());
            return 1;
        }
        std::printf("%-30s %10zu %8.3f %9.2f %12.1f %12.1f\n", m.name, file.size(), 8.0 * file.size() / (mp * 1e6),
                    psnr(img, back), mp / enc, mp / dec);
    }
    std::printf("\nEvery file decodes with any JPEG reader: try `vqcj jpeg encode %s out.jpg` and `djpeg`.\n", path);
    return 0;
}
#else
int demo(const char*) {
    printVersion();
    std::printf("built without libpng: the JPEG codec is not part of this build\n");
    return 0;
}
#endif

}  // namespace

int main(int argc, char** argv) {
    if (argc >= 2 && std::strcmp(argv[1], "demo") == 0) return demo(argc >= 3 ? argv[2] : VQCJ_SAMPLE_PHOTO);
#ifdef VQCJ_HAVE_JPEG
    if (argc >= 2 && std::strcmp(argv[1], "jpeg") == 0) return vqcjpeg::jpegMain(argc - 2, argv + 2);
#endif
    std::fprintf(stderr, "usage: vqcj demo [image.png|image.ppm]\n       vqcj jpeg encode|decode|info ...\n");
    return 2;
}
