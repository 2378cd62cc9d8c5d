// The lossless row decoder over arbitrary data: rows of up to four
// components and a width taken from the input, row after row.
#include <memory>
#include <vector>

#include "fuzz_huff.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* in, size_t n) {
    if (n < 2) return 0;
    const int32_t comps = 1 + in[0] % 5, cols = 1 + in[1] % 64;
    fuzzhuff::Input t;
    fuzzhuff::parse(in + 2, n - 2, t);
    if (!t.ok || t.size == 0) return 0;
    const int32_t len = static_cast<int32_t>(t.size);
    std::unique_ptr<Vqc8u[]> src(new Vqc8u[t.size]);
    for (size_t i = 0; i < t.size; ++i) src[i] = t.data[i];
    std::vector<Vqc16s> rows(4 * static_cast<size_t>(cols));
    Vqc16s* dst[4] = {&rows[0], &rows[cols], &rows[2 * cols], &rows[3 * cols]};
    const VqciDecodeHuffmanSpec* tables[4] = {&t.dc, &t.ac, &t.dc, &t.ac};
    VqciDecodeHuffmanState st;
    vqciDecodeHuffmanStateInit_JPEG_8u(&st);
    int32_t pos = 0, marker = 0;
    for (int32_t r = 0; r < len + 8; ++r) {
        const VqcStatus s =
            vqciDecodeHuffmanRow_JPEG_1u16s_C1P4(src.get(), len, &pos, dst, cols, comps, &marker, tables, &st);
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
