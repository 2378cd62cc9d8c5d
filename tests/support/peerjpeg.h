// libjpeg-turbo as the reference codec: whole files written and read through
// its own API, for the interop tests of our codec.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace vqcjtest {

struct PeerScan {
    std::vector<int> comps;
    int ss, se, ah, al;
};

struct PeerOptions {
    int quality = 90;
    int h = 2, v = 2;  // luma sampling factors; chroma is 1x1
    bool gray = false, progressive = false, optimize = false;
    int restart = 0;                // MCUs
    std::vector<PeerScan> scans;    // a custom script, when not empty
};

// width x height, channels 1 or 3, rows packed.
std::vector<uint8_t> peerEncode(const uint8_t* pixels, int width, int height, int channels, const PeerOptions& opt);

struct PeerDecoded {
    bool ok = false;
    int warnings = 0;
    int width = 0, height = 0, channels = 0;
    std::vector<uint8_t> pixels;
    std::vector<std::vector<int16_t>> coef;  // per component, blocks in raster order, natural order
    std::vector<int> blocksW, blocksH;
};
// Pixels with its default (islow, fancy up-sampling) settings, and the
// quantised coefficients as jpeg_read_coefficients gives them.
// scaleDenom 2, 4 or 8 asks for its scaled output instead.
PeerDecoded peerDecode(const std::vector<uint8_t>& file, int scaleDenom = 1);

double psnr(const std::vector<uint8_t>& a, const std::vector<uint8_t>& b);

}  // namespace vqcjtest
