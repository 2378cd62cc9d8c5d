// A JPEG encoder and decoder made only of the library's public primitives:
// what a codec author would write on top of vqcj. The library itself writes
// no markers and parses no files; this code does, and calls the library for
// all arithmetic and entropy coding.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace vqcjpeg {

struct Image {
    int width = 0, height = 0, channels = 0;  // 1 grey, 3 RGB
    int precision = 8;                        // bits per sample; above 8 only for lossless
    std::vector<uint16_t> wide;               // samples when precision is above 8
    std::vector<uint8_t> pixels;              // rows packed, width * channels bytes each
};

struct EncodeOptions {
    int quality = 90;
    int sampling = 420;  // 444, 422 or 420
    bool gray = false;
    bool progressive = false;
    bool optimize = false;
    int restart = 0;   // MCUs per restart interval, 0 for none
    int lossless = 0;  // predictor 1..7, 0 for DCT coding
};

struct DecodeOptions {
    int scaleDenom = 1;         // 1, 2, 4 or 8: decode at that fraction of the size
    bool fastUpsample = false;  // chroma replicated over its pixels, not interpolated
};

// Both return an empty string on success, else a one-line reason.
std::string encode(const Image& img, const EncodeOptions& opt, std::vector<uint8_t>& out);
// scaleDenom 1, 2, 4 or 8 decodes at that fraction of the size.
std::string decode(const uint8_t* data, size_t size, Image& out, int scaleDenom = 1);
std::string decode(const uint8_t* data, size_t size, Image& out, const DecodeOptions& opt);
// The frame, components, tables and scans, one line each.
std::string describe(const uint8_t* data, size_t size, std::string& text);

// PNG (8-bit grey or RGB; alpha and palettes are converted), PPM and PGM.
std::string readImage(const std::string& path, Image& img);
std::string writeImage(const std::string& path, const Image& img);

}  // namespace vqcjpeg
