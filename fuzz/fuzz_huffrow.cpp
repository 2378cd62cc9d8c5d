// The lossless row decoder over arbitrary data: rows of up to four
// components (five counts as four) and a width taken from the input.
#include <vector>

#include "fuzz_huff.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* in, size_t n) {
    if (n < 2) return 0;
    const int32_t comps = 1 + in[0] % 5, cols = 1 + in[1] % 64;
    fuzzhuff::Input t;
    fuzzhuff::parse(in + 2, n - 2, t);
    if (!t.ok || t.size == 0) return 0;
    const auto src = fuzzhuff::exactCopy(t);
    const int32_t len = static_cast<int32_t>(t.size);
    std::vector<Vqc16s> rows(4 * static_cast<size_t>(cols));
    Vqc16s* dst[4] = {&rows[0], &rows[cols], &rows[2 * cols], &rows[3 * cols]};
    const VqciDecodeHuffmanSpec* tables[4] = {&t.dc, &t.ac, &t.dc, &t.ac};
    fuzzhuff::drive(len, len + 8, [&](int32_t* pos, int32_t* marker, VqciDecodeHuffmanState* st) {
        return vqciDecodeHuffmanRow_JPEG_1u16s_C1P4(src.get(), len, pos, dst, cols, comps, marker, tables, st);
    });
    return 0;
}
