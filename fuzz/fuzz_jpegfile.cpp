// Whole JPEG files through the codec of the command-line tool: parser, scan
// driver and every entropy decoder it calls, on whatever bytes come.
#include <cstddef>
#include <cstdint>

#include "codec.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    vqcjpeg::Image img;
    // Pictures above a few megapixels only cost time here.
    if (size >= 9 && size < (1 << 20)) (void)vqcjpeg::decode(data, size, img);
    return 0;
}
