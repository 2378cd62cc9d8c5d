// Helpers for the texture tests and benchmark: block bit fields, RGBA
// images from the photographs, and PSNR.
#pragma once

#include <cstdint>
#include <vector>

namespace vqcjtex {

// Writes the low n bits of v at bit `at` of a little-endian block.
void setBits(uint8_t* block, int at, int n, uint64_t v);

// An RGBA image (alpha 255) from a photograph's RGB or grey pixels, cut or
// tiled to width x height.
std::vector<uint8_t> rgbaPhoto(int index, int width, int height);

// PSNR over `channels` of every `stride` bytes, n pixels.
double psnr(const uint8_t* a, const uint8_t* b, int n, int stride, int channels);

}  // namespace vqcjtex
