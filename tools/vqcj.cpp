// vqcj: command-line front end of the library.
//   vqcj demo [image]   version, exports present, and the library at work:
//                       the road of a baseline JPEG codec through the
//                       primitives, on a photograph or a synthetic image
#include <dlfcn.h>
#include <omp.h>
#include <vqcj.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#ifdef VQCJ_HAVE_PHOTOS
#include "photos.h"
#endif
#ifdef VQCJ_HAVE_JPEG
#include "jpeg/cli.h"
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

struct Rgb {
    std::string name;
    int width = 0, height = 0;
    std::vector<Vqc8u> pixels;  // interleaved R, G, B
};

// Smooth shading with edges and fine texture, standing in for a photograph.
Rgb syntheticImage(int w, int h) {
    Rgb img{"synthetic", w, h, std::vector<Vqc8u>(size_t{3} * w * h)};
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) {
            const double fx = x / double(w), fy = y / double(h);
            const bool disc = (fx - 0.6) * (fx - 0.6) + (fy - 0.4) * (fy - 0.4) < 0.05;
            const double tex = 12 * std::sin(x * 0.9) * std::sin(y * 0.7);
            Vqc8u* p = &img.pixels[(size_t{3} * (size_t(y) * w + x))];
            p[0] = static_cast<Vqc8u>(std::clamp(disc ? 230 - 60 * fy : 40 + 180 * fx + tex, 0.0, 255.0));
            p[1] = static_cast<Vqc8u>(std::clamp(disc ? 90 + tex : 60 + 150 * fy, 0.0, 255.0));
            p[2] = static_cast<Vqc8u>(std::clamp(disc ? 40.0 : 200 - 120 * fx * fy + tex, 0.0, 255.0));
        }
    return img;
}

Rgb loadImage(const char* path) {
#ifdef VQCJ_HAVE_PHOTOS
    std::vector<vqcjphoto::Image> photos;
    if (path) {
        const std::string p(path);
        const auto slash = p.find_last_of('/');
        for (auto& img : vqcjphoto::loadPhotos(slash == std::string::npos ? "." : p.substr(0, slash)))
            if (img.name == p.substr(slash + 1)) photos.push_back(std::move(img));
    } else {
        photos = vqcjphoto::loadPhotos(VQCJ_PHOTO_DIR);
    }
    for (auto& img : photos)
        if (img.channels == 3) return Rgb{img.name, img.width, img.height, std::move(img.pixels)};
    if (path) std::fprintf(stderr, "no RGB image read from %s; using a synthetic one\n", path);
#else
    if (path) std::fprintf(stderr, "built without image readers; using a synthetic image\n");
#endif
    return syntheticImage(1024, 768);
}

// A plane with its own step and a border of replicated samples around it,
// as the up-sampling image forms read one sample beyond each edge.
struct Plane {
    int width, height, step, border;
    std::vector<Vqc8u> data;
    Plane(int w, int h, int b = 0) : width(w), height(h), step(w + 2 * b), border(b), data(size_t(step) * (h + 2 * b)) {}
    Vqc8u* at(int x, int y) { return data.data() + size_t(y + border) * step + x + border; }
    void replicateBorder() {
        for (int y = 0; y < height; ++y)
            for (int b = 1; b <= border; ++b) {
                *at(-b, y) = *at(0, y);
                *at(width - 1 + b, y) = *at(width - 1, y);
            }
        for (int b = 1; b <= border; ++b) {
            std::memcpy(at(-border, -b), at(-border, 0), step);
            std::memcpy(at(-border, height - 1 + b), at(-border, height - 1), step);
        }
    }
};

// The example tables of ITU T.81 Annex K, natural order.
constexpr Vqc8u kLumaNatural[64] = {
    16, 11, 10, 16, 24,  40,  51,  61,  12, 12, 14, 19, 26,  58,  60,  55,  14, 13, 16, 24, 40,  57,
    69, 56, 14, 17, 22,  29,  51,  87,  80, 62, 18, 22, 37,  56,  68,  109, 103, 77, 24, 35, 55, 64,
    81, 104, 113, 92, 49, 64, 78,  87,  103, 121, 120, 101, 72, 92, 95, 98, 112, 100, 103, 99};
constexpr Vqc8u kChromaNatural[64] = {
    17, 18, 24, 47, 99, 99, 99, 99, 18, 21, 26, 66, 99, 99, 99, 99, 24, 26, 56, 99, 99, 99,
    99, 99, 47, 66, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99,
    99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99};
constexpr int kZigzag[64] = {0,  1,  8,  16, 9,  2,  3,  10, 17, 24, 32, 25, 18, 11, 4,  5,
                             12, 19, 26, 33, 40, 48, 41, 34, 27, 20, 13, 6,  7,  14, 21, 28,
                             35, 42, 49, 56, 57, 50, 43, 36, 29, 22, 15, 23, 30, 37, 44, 51,
                             58, 59, 52, 45, 38, 31, 39, 46, 53, 60, 61, 54, 47, 55, 62, 63};

struct Tables {
    Vqc16u fwd[64], inv[64];
};

Tables qualityTables(const Vqc8u (&natural)[64], int quality) {
    Vqc8u raw[64];
    for (int k = 0; k < 64; ++k) raw[k] = natural[kZigzag[k]];
    Tables t;
    vqciQuantFwdRawTableInit_JPEG_8u(raw, quality);
    vqciQuantFwdTableInit_JPEG_8u16u(raw, t.fwd);
    vqciQuantInvTableInit_JPEG_8u16u(raw, t.inv);
    return t;
}

// Forward DCT and quantisation of every block of a plane, then back; returns
// the number of non-zero coefficients, the figure an entropy coder pays for.
long transformPlane(Plane& p, const Tables& t, std::vector<Vqc16s>& coef) {
    long nonzero = 0;
    for (int by = 0; by < p.height; by += 8)
        for (int bx = 0; bx < p.width; bx += 8) {
            Vqc16s* c = coef.data();
            vqciDCTQuantFwd8x8LS_JPEG_8u16s_C1R(p.at(bx, by), p.step, c, t.fwd);
            for (int i = 0; i < 64; ++i) nonzero += c[i] != 0;
            vqciDCTQuantInv8x8LS_JPEG_16s8u_C1R(c, p.at(bx, by), p.step, t.inv);
        }
    return nonzero;
}

double psnr(const std::vector<Vqc8u>& a, const std::vector<Vqc8u>& b) {
    double se = 0;
    for (size_t i = 0; i < a.size(); ++i) se += (a[i] - b[i]) * double(a[i] - b[i]);
    return se == 0 ? INFINITY : 10 * std::log10(255.0 * 255.0 * a.size() / se);
}

using Clock = std::chrono::steady_clock;
double msSince(Clock::time_point t0) { return std::chrono::duration<double, std::milli>(Clock::now() - t0).count(); }

void jpegRoad(const Rgb& src, int quality) {
    // Whole 16x16 macroblocks: the image is cut to a multiple of 16.
    const int w = src.width & ~15, h = src.height & ~15, cw = w / 2, ch = h / 2;
    std::printf("JPEG road    %s, %dx%d, 4:2:0, quality %d\n", src.name.c_str(), w, h, quality);
    Plane y(w, h), cbFull(w, h), crFull(w, h), cb(cw, ch, 1), cr(cw, ch, 1);
    std::vector<Vqc16s> coef(64);
    const Tables luma = qualityTables(kLumaNatural, quality), chroma = qualityTables(kChromaNatural, quality);

    auto t0 = Clock::now();
    Vqc8u* planes[3] = {y.at(0, 0), cbFull.at(0, 0), crFull.at(0, 0)};
    vqciRGBToYCbCr_JPEG_8u_C3P3R(src.pixels.data(), 3 * src.width, planes, w, {w, h});
    const double tColour = msSince(t0);
    t0 = Clock::now();
    vqciSampleDownH2V2_JPEG_8u_C1R(cbFull.at(0, 0), w, {w, h}, cb.at(0, 0), cb.step, {cw, ch});
    vqciSampleDownH2V2_JPEG_8u_C1R(crFull.at(0, 0), w, {w, h}, cr.at(0, 0), cr.step, {cw, ch});
    const double tDown = msSince(t0);
    t0 = Clock::now();
    const long nz = transformPlane(y, luma, coef) + transformPlane(cb, chroma, coef) + transformPlane(cr, chroma, coef);
    const double tDct = msSince(t0);
    t0 = Clock::now();
    cb.replicateBorder();
    cr.replicateBorder();
    vqciSampleUpH2V2_JPEG_8u_C1R(cb.at(0, 0), cb.step, {cw, ch}, cbFull.at(0, 0), w, {w, h});
    vqciSampleUpH2V2_JPEG_8u_C1R(cr.at(0, 0), cr.step, {cw, ch}, crFull.at(0, 0), w, {w, h});
    const double tUp = msSince(t0);
    std::vector<Vqc8u> out(size_t{3} * w * h), ref(out.size());  // touched before the clock starts
    t0 = Clock::now();
    const Vqc8u* back[3] = {y.at(0, 0), cbFull.at(0, 0), crFull.at(0, 0)};
    vqciYCbCrToRGB_JPEG_8u_P3C3R(back, w, out.data(), 3 * w, {w, h});
    const double tInv = msSince(t0);

    for (int r = 0; r < h; ++r) std::memcpy(&ref[size_t{3} * w * r], &src.pixels[size_t{3} * src.width * r], size_t{3} * w);
    const double blocks = (w / 8.0) * (h / 8.0) * 1.5;
    std::printf("  colour to YCbCr      %7.2f ms\n", tColour);
    std::printf("  chroma down 2x2      %7.2f ms\n", tDown);
    std::printf("  DCT, quantise, back  %7.2f ms  (%.0f blocks, %.1f Mblocks/s)\n", tDct, blocks, blocks / tDct / 1e3);
    std::printf("  chroma up 2x2        %7.2f ms\n", tUp);
    std::printf("  YCbCr to RGB         %7.2f ms\n", tInv);
    std::printf("  non-zero coefficients %.2f per block, PSNR %.2f dB\n", nz / blocks, psnr(ref, out));

    // TIFF: PackBits on the rows of the decoded luminance, and back.
    std::vector<Vqc8u> packed(size_t(w + w / 128 + 1) * h + 16), row(w);
    int32_t count = 0, pos = 0;
    bool same = true;
    for (int r = 0; r < h; ++r) vqciPackBitsRow_TIFF_8u_C1(y.at(0, r), w, packed.data(), &count, int32_t(packed.size()));
    for (int r = 0; r < h && same; ++r) {
        same = vqciUnpackBitsRow_TIFF_8u_C1(packed.data(), &pos, count, row.data(), w) == vqcStatusOk &&
               std::memcmp(row.data(), y.at(0, r), w) == 0;
    }
    std::printf("PackBits     luminance rows %d -> %d bytes (%.1f%%), unpacked %s\n", w * h, count,
                100.0 * count / (double(w) * h), same ? "exactly" : "WRONGLY");
}

int demo(const char* image) {
    printVersion();
    levelShiftTiming();
    jpegRoad(loadImage(image), 75);
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc >= 2 && std::strcmp(argv[1], "demo") == 0) return demo(argc >= 3 ? argv[2] : nullptr);
#ifdef VQCJ_HAVE_JPEG
    if (argc >= 2 && std::strcmp(argv[1], "jpeg") == 0) return vqcjpeg::jpegMain(argc - 2, argv + 2);
#endif
    std::fprintf(stderr, "usage: vqcj demo [image.png|image.jpg]\n       vqcj jpeg encode|decode|info ...\n");
    return 2;
}
