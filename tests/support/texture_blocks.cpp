#include "support/texture_blocks.h"

#include <cmath>

#if __has_include("photos.h")
#include "photos.h"
#define VQCJTEX_PHOTOS 1
#endif

namespace vqcjtex {

void setBits(uint8_t* block, int at, int n, uint64_t v) {
    for (int k = 0; k < n; ++k, ++at) {
        const uint8_t bit = uint8_t(1u << (at & 7));
        block[at >> 3] = uint8_t((v >> k) & 1 ? block[at >> 3] | bit : block[at >> 3] & ~bit);
    }
}

std::vector<uint8_t> rgbaPhoto(int index, int width, int height) {
#ifndef VQCJTEX_PHOTOS
    (void)index, (void)width, (void)height;
    return {};
#else
    static const std::vector<vqcjphoto::Image> photos = vqcjphoto::loadPhotos(VQCJ_PHOTO_DIR);
    if (photos.empty()) return {};
    const vqcjphoto::Image im = vqcjphoto::tileTo(photos[size_t(index) % photos.size()], width, height);
    std::vector<uint8_t> out(size_t(width) * size_t(height) * 4, 255);
    for (size_t i = 0; i < size_t(width) * size_t(height); ++i)
        for (int c = 0; c < 3; ++c) out[4 * i + size_t(c)] = im.pixels[i * size_t(im.channels) + size_t(im.channels == 3 ? c : 0)];
    return out;
#endif
}

double psnr(const uint8_t* a, const uint8_t* b, int n, int stride, int channels) {
    double se = 0;
    for (int i = 0; i < n; ++i)
        for (int c = 0; c < channels; ++c) {
            const double d = double(a[i * stride + c]) - double(b[i * stride + c]);
            se += d * d;
        }
    return se == 0 ? 99.0 : 10.0 * std::log10(255.0 * 255.0 * n * channels / se);
}

}  // namespace vqcjtex
