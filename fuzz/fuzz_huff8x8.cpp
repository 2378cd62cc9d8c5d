// The stateful 8x8 block decoder over arbitrary data, driven as a decoder of
// one component would: blocks one after another, a marker cleared and the
// state reset as at a restart, until the source is used up.
#include <memory>

#include "fuzz_huff.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* in, size_t n) {
    fuzzhuff::Input t;
    fuzzhuff::parse(in, n, t);
    if (!t.ok) return 0;
    // An exact-size copy, so that ASan sees any read beyond srcLenBytes.
    const int32_t len = static_cast<int32_t>(t.size);
    std::unique_ptr<Vqc8u[]> src(new Vqc8u[t.size]);
    for (size_t i = 0; i < t.size; ++i) src[i] = t.data[i];
    VqciDecodeHuffmanState st;
    vqciDecodeHuffmanStateInit_JPEG_8u(&st);
    int32_t pos = 0, marker = 0;
    Vqc16s dc = 0, blk[64];
    for (int32_t b = 0; b < 4 * len + 8; ++b) {
        const VqcStatus s =
            vqciDecodeHuffman8x8_JPEG_1u16s_C1(src.get(), len, &pos, blk, &dc, &marker, &t.dc, &t.ac, &st);
        if (pos < 0 || pos > len || (s != 0 && s != vqcStatusOutOfBuffer && s != vqcStatusBadHuffmanCode))
            __builtin_trap();
        if (s == vqcStatusOutOfBuffer) break;
        if (marker != 0 || s != 0) {
            marker = 0;
            vqciDecodeHuffmanStateInit_JPEG_8u(&st);
            dc = 0;
        }
    }
    return 0;
}
