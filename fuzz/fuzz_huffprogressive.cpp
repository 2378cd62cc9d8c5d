// The four progressive block decoders over arbitrary data, one pass per
// input, accumulating into blocks as a progressive decoder does. Input: the
// pass, Al and a band byte, then the layout of the other Huffman targets.
#include "fuzz_huff.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* in, size_t n) {
    if (n < 4) return 0;
    const int pass = in[0] & 3, Al = in[1] % 14;
    const int Ss = 1 + in[2] % 63, Se = Ss + (in[2] >> 1) % (64 - Ss);
    fuzzhuff::Input t;
    fuzzhuff::parse(in + 3, n - 3, t);
    if (!t.ok || t.size == 0) return 0;
    const auto src = fuzzhuff::exactCopy(t);
    const int32_t len = static_cast<int32_t>(t.size);
    Vqc16s dc = 0, blk[4][64] = {};
    int b = 0;
    fuzzhuff::drive(len, 4 * len + 8, [&](int32_t* pos, int32_t* marker, VqciDecodeHuffmanState* st) {
        Vqc16s* p = blk[b++ & 3];
        const Vqc8u* s = src.get();
        switch (pass) {
            case 0: return vqciDecodeHuffman8x8_DCFirst_JPEG_1u16s_C1(s, len, pos, p, &dc, marker, Al, &t.dc, st);
            case 1: return vqciDecodeHuffman8x8_DCRefine_JPEG_1u16s_C1(s, len, pos, p, marker, Al, st);
            case 2: return vqciDecodeHuffman8x8_ACFirst_JPEG_1u16s_C1(s, len, pos, p, marker, Ss, Se, Al, &t.ac, st);
            default: return vqciDecodeHuffman8x8_ACRefine_JPEG_1u16s_C1(s, len, pos, p, marker, Ss, Se, Al, &t.ac, st);
        }
    });
    return 0;
}
