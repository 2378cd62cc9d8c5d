// PackBits row decoding of arbitrary bytes: rows of a length taken from the
// input, decoded one after another as a TIFF reader would.
#include <vqcj.h>

#include <cstddef>
#include <cstdint>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 2) return 0;
    const int32_t rowLen = 1 + (data[0] | (data[1] << 8)) % 4096;
    // An exact-size copy plus the one byte at srcLen that a replicate header
    // on the last byte takes its value from; ASan sees any read beyond it.
    std::vector<uint8_t> src(data + 2, data + size);
    const int32_t len = static_cast<int32_t>(src.size());
    src.push_back(0);
    std::vector<uint8_t> row(rowLen);
    int32_t pos = 0;
    while (pos < len) {
        if (vqciUnpackBitsRow_TIFF_8u_C1(src.data(), &pos, len, row.data(), rowLen) != vqcStatusOk) break;
    }
    return 0;
}
