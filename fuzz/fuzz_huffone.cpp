// Single-value decoding (lossless JPEG differences) over arbitrary data,
// with the DC table of the input, until the source is used up.
#include "fuzz_huff.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* in, size_t n) {
    fuzzhuff::Input t;
    fuzzhuff::parse(in, n, t);
    if (!t.ok || t.size == 0) return 0;
    const auto src = fuzzhuff::exactCopy(t);
    const int32_t len = static_cast<int32_t>(t.size);
    Vqc16s v;
    fuzzhuff::drive(len, 8 * len + 8, [&](int32_t* pos, int32_t* marker, VqciDecodeHuffmanState* st) {
        return vqciDecodeHuffmanOne_JPEG_1u16s_C1(src.get(), len, pos, &v, marker, &t.dc, st);
    });
    return 0;
}
