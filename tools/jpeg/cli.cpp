// `vqcj jpeg encode|decode|info`: the command line of the codec.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "cli.h"
#include "codec.h"

namespace vqcjpeg {

namespace {

std::string readFile(const char* path, std::vector<uint8_t>& data) {
    FILE* f = std::fopen(path, "rb");
    if (!f) return std::string("cannot open ") + path;
    uint8_t buf[65536];
    size_t n;
    while ((n = std::fread(buf, 1, sizeof buf, f)) > 0) data.insert(data.end(), buf, buf + n);
    std::fclose(f);
    return {};
}

int fail(const std::string& why) {
    std::fprintf(stderr, "vqcj jpeg: %s\n", why.c_str());
    return 1;
}

bool number(const char* s, int lo, int hi, int& out) {
    char* end;
    const long v = std::strtol(s, &end, 10);
    if (*s == 0 || *end != 0 || v < lo || v > hi) return false;
    out = static_cast<int>(v);
    return true;
}

constexpr const char* kUsage =
    "usage: vqcj jpeg encode IN OUT.jpg [--quality 1..100] [--sampling 444|422|420] [--gray]\n"
    "                        [--progressive] [--optimize] [--restart N] [--lossless PREDICTOR]\n"
    "       vqcj jpeg decode IN.jpg OUT.png|OUT.ppm|OUT.pgm [--scale 1/2|1/4|1/8] [--fast-upsample]\n"
    "       vqcj jpeg info IN.jpg\n";

}  // namespace

int jpegMain(int argc, char** argv) {
    if (argc < 1) return std::fprintf(stderr, "%s", kUsage), 2;
    const std::string cmd = argv[0];
    if (cmd == "encode" && argc >= 3) {
        EncodeOptions opt;
        for (int i = 3; i < argc; ++i) {
            const std::string a = argv[i];
            const char* v = i + 1 < argc ? argv[i + 1] : "";
            if (a == "--quality" && number(v, 1, 100, opt.quality)) ++i;
            else if (a == "--sampling" && number(v, 420, 444, opt.sampling)) ++i;
            else if (a == "--restart" && number(v, 0, 65535, opt.restart)) ++i;
            else if (a == "--lossless" && number(v, 1, 7, opt.lossless)) ++i;
            else if (a == "--gray" || a == "--grey") opt.gray = true;
            else if (a == "--progressive") opt.progressive = true;
            else if (a == "--optimize" || a == "--optimise") opt.optimize = true;
            else return fail("bad option " + a + (*v ? std::string(" ") + v : ""));
        }
        Image img;
        if (std::string e = readImage(argv[1], img); !e.empty()) return fail(e);
        std::vector<uint8_t> out;
        if (std::string e = encode(img, opt, out); !e.empty()) return fail(e);
        FILE* f = std::fopen(argv[2], "wb");
        if (!f || std::fwrite(out.data(), 1, out.size(), f) != out.size()) return fail(std::string("cannot write ") + argv[2]);
        std::fclose(f);
        return 0;
    }
    if (cmd == "decode" && argc >= 3) {
        DecodeOptions opt;
        for (int i = 3; i < argc; ++i) {
            const std::string a = argv[i];
            const char* v = i + 1 < argc ? argv[i + 1] : "";
            if (a == "--scale") {
                opt.scaleDenom = !std::strcmp(v, "1/2") ? 2 : !std::strcmp(v, "1/4") ? 4 : !std::strcmp(v, "1/8") ? 8 : 0;
                if (!opt.scaleDenom) return fail("--scale takes 1/2, 1/4 or 1/8");
                ++i;
            } else if (a == "--fast-upsample") {
                opt.fastUpsample = true;
            } else {
                return fail("bad option " + a);
            }
        }
        std::vector<uint8_t> data;
        if (std::string e = readFile(argv[1], data); !e.empty()) return fail(e);
        Image img;
        if (std::string e = decode(data.data(), data.size(), img, opt); !e.empty()) return fail(e);
        if (std::string e = writeImage(argv[2], img); !e.empty()) return fail(e);
        return 0;
    }
    if (cmd == "info" && argc == 2) {
        std::vector<uint8_t> data;
        if (std::string e = readFile(argv[1], data); !e.empty()) return fail(e);
        std::string text;
        if (std::string e = describe(data.data(), data.size(), text); !e.empty()) return fail(e);
        std::fputs(text.c_str(), stdout);
        return 0;
    }
    std::fprintf(stderr, "%s", kUsage);
    return 2;
}

}  // namespace vqcjpeg
