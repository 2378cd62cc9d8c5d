// The four progressive block decoders over arbitrary data, one pass per
// input, accumulating into blocks as a progressive decoder does. Input: the
// pass, Al and a band byte, then the layout of the other Huffman targets.
#include <memory>

#include "fuzz_huff.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* in, size_t n) {
    if (n < 4) return 0;
    const int pass = in[0] & 3, Al = in[1] % 14;
    const int Ss = 1 + in[2] % 63, Se = Ss + (in[2] >> 1) % (64 - Ss);
    fuzzhuff::Input t;
    fuzzhuff::parse(in + 3, n - 3, t);
    if (!t.ok || t.size == 0) return 0;
    const int32_t len = static_cast<int32_t>(t.size);
    std::unique_ptr<Vqc8u[]> src(new Vqc8u[t.size]);
    for (size_t i = 0; i < t.size; ++i) src[i] = t.data[i];
    VqciDecodeHuffmanState st;
    vqciDecodeHuffmanStateInit_JPEG_8u(&st);
    int32_t pos = 0, marker = 0;
    Vqc16s dc = 0, blk[4][64] = {};
    for (int32_t b = 0; b < 4 * len + 8; ++b) {
        Vqc16s* p = blk[b & 3];
        VqcStatus s;
        switch (pass) {
            case 0: s = vqciDecodeHuffman8x8_DCFirst_JPEG_1u16s_C1(src.get(), len, &pos, p, &dc, &marker, Al, &t.dc, &st); break;
            case 1: s = vqciDecodeHuffman8x8_DCRefine_JPEG_1u16s_C1(src.get(), len, &pos, p, &marker, Al, &st); break;
            case 2: s = vqciDecodeHuffman8x8_ACFirst_JPEG_1u16s_C1(src.get(), len, &pos, p, &marker, Ss, Se, Al, &t.ac, &st); break;
            default: s = vqciDecodeHuffman8x8_ACRefine_JPEG_1u16s_C1(src.get(), len, &pos, p, &marker, Ss, Se, Al, &t.ac, &st); break;
        }
        if (pos < 0 || pos > len || (s != 0 && s != vqcStatusOutOfBuffer && s != vqcStatusBadHuffmanCode))
            __builtin_trap();
        if (s == vqcStatusOutOfBuffer) break;
        if (marker != 0 || s != 0) {
            marker = 0;
            vqciDecodeHuffmanStateInit_JPEG_8u(&st);
        }
    }
    return 0;
}
