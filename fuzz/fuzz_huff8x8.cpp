// The stateful 8x8 block decoder over arbitrary data, driven as a decoder of
// one component would: blocks one after another, a marker cleared and the
// state reset as at a restart, until the source is used up.
#include "fuzz_huff.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* in, size_t n) {
    fuzzhuff::Input t;
    fuzzhuff::parse(in, n, t);
    if (!t.ok) return 0;
    const auto src = fuzzhuff::exactCopy(t);
    const int32_t len = static_cast<int32_t>(t.size);
    Vqc16s dc = 0, blk[64];
    fuzzhuff::drive(len, 4 * len + 8, [&](int32_t* pos, int32_t* marker, VqciDecodeHuffmanState* st) {
        const VqcStatus s = vqciDecodeHuffman8x8_JPEG_1u16s_C1(src.get(), len, pos, blk, &dc, marker, &t.dc, &t.ac, st);
        if (s != 0 || *marker != 0) dc = 0;
        return s;
    });
    return 0;
}
