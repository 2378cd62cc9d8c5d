// The Direct 8x8 block decoder over arbitrary data. It has no length and
// reads until a marker, so the data is closed with an EOI marker, as the
// caller must; no read may pass it.
#include <memory>

#include "fuzz_huff.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* in, size_t n) {
    fuzzhuff::Input t;
    fuzzhuff::parse(in, n, t);
    if (!t.ok) return 0;
    std::unique_ptr<Vqc8u[]> src(new Vqc8u[t.size + 2]);
    for (size_t i = 0; i < t.size; ++i) src[i] = t.data[i];
    src[t.size] = 0xFF, src[t.size + 1] = 0xD9;
    int32_t bitPos = 0, marker = 0, count = 0;
    uint32_t bits = 0;
    Vqc16s dc = 0, blk[64];
    for (size_t b = 0; b < 4 * t.size + 8; ++b) {
        const VqcStatus s = vqciDecodeHuffman8x8_Direct_JPEG_1u16s_C1(src.get(), &bitPos, blk, &dc, &marker, &bits,
                                                                      &count, &t.dc, &t.ac);
        if (bitPos < 0 || static_cast<size_t>(bitPos) > 8 * (t.size + 2)) __builtin_trap();
        if (s != 0 || (marker != 0 && count == 0)) break;
    }
    return 0;
}
