// Real photographs for interop tests, benchmarks and the demo, read with the
// peers' own decoders (libpng, libjpeg). tools/fetch-photos puts them in place.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace vqcjphoto {

struct Image {
    std::string name;
    int width = 0, height = 0, channels = 0;  // channels 1 (grey) or 3 (RGB)
    std::vector<uint8_t> pixels;              // rows packed, width * channels bytes each
};

// Every photograph in dir, RGB ones first; empty when the folder is missing.
std::vector<Image> loadPhotos(const std::string& dir);

// The image repeated, alternately mirrored, to fill width x height, so that
// a benchmark plane keeps the statistics of a photograph without seams.
Image tileTo(const Image& src, int width, int height);

}  // namespace vqcjphoto
