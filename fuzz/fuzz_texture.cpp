// Texture blocks of arbitrary bytes: every decoder on an image of a size
// taken from the input, with the source and destination cut to the exact
// sizes the image needs, so that ASan sees any read or write beyond them;
// then, for some inputs, the BC7 encoder on the first 64 bytes in the mode
// the input names.
#include <vqcj.h>

#include <cstddef>
#include <cstdint>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 3) return 0;
    const int32_t w = 1 + data[0] % 19, h = 1 + data[1] % 19;
    const uint32_t pad = data[2] % 7;
    const size_t blocks = size_t((w + 3) / 4) * size_t((h + 3) / 4);
    std::vector<uint8_t> in(data + 3, data + size);
    in.resize(16 * blocks);
    const VqciSize roi{w, h};
    auto run = [&](size_t blockBytes, uint32_t bpp, auto decode) {
        const std::vector<uint8_t> src(in.begin(), in.begin() + std::ptrdiff_t(blockBytes * blocks));
        const uint32_t step = bpp * uint32_t(w) + pad;
        std::vector<uint8_t> dst(size_t(step) * size_t(h - 1) + bpp * uint32_t(w));
        decode(src.data(), dst.data(), step);
    };
    run(8, 4, [&](const uint8_t* s, uint8_t* d, uint32_t st) { vqciTextureDecodeBlockToRGBA_DXT1_8u_C1C4R(s, d, st, roi); });
    run(16, 4, [&](const uint8_t* s, uint8_t* d, uint32_t st) { vqciTextureDecodeBlockToRGBA_DXT3_8u_C1C4R(s, d, st, roi); });
    run(16, 4, [&](const uint8_t* s, uint8_t* d, uint32_t st) { vqciTextureDecodeBlockToRGBA_DXT5_8u_C1C4R(s, d, st, roi); });
    run(8, 1, [&](const uint8_t* s, uint8_t* d, uint32_t st) { vqciTextureDecodeBlock_BC4_8u_C1R(s, d, st, roi); });
    run(16, 2, [&](const uint8_t* s, uint8_t* d, uint32_t st) { vqciTextureDecodeBlockToRG_BC5_8u_C1C2R(s, d, st, roi); });
    run(16, 4, [&](const uint8_t* s, uint8_t* d, uint32_t st) { vqciTextureDecodeBlockToRGBA_BC7_8u_C1C4R(s, d, st, roi); });
    // BC6 rows are 16-bit words: keep the step even.
    const uint32_t pad2 = pad & ~1u;
    for (int sign = 0; sign < 2; ++sign) {
        const std::vector<uint8_t> src(in.begin(), in.begin() + std::ptrdiff_t(16 * blocks));
        const uint32_t step = 6 * uint32_t(w) + pad2;
        std::vector<uint16_t> dst((size_t(step) * size_t(h - 1) + 6 * uint32_t(w)) / 2);
        if (sign) vqciTextureDecodeBlockToRGB_BC6_16s_C1C3R(src.data(), reinterpret_cast<Vqc16s*>(dst.data()), step, roi);
        else vqciTextureDecodeBlockToRGB_BC6_16u_C1C3R(src.data(), dst.data(), step, roi);
    }
    // The encoder searches for milliseconds; one input in 32 keeps the run brisk.
    if (size >= 3 + 64 && (data[1] & 0xF8) == 0) {
        const std::vector<uint8_t> px(data + 3, data + 3 + 64);
        uint8_t block[16];
        int32_t err = 0;
        vqciTextureEncodeBlock4x4FromRGBA_BC7_8u_C4C1R(px.data(), 16, block, &err, data[2] % 8);
    }
    return 0;
}
