// Whole JPEG files through the codec of the command-line tool: parser, scan
// driver and every entropy decoder it calls, on whatever bytes come.
#include <cstddef>
#include <cstdint>

#include "codec.h"
#include "jpegint.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 9 || size >= (1 << 20)) return 0;
    // A header can declare 65535 x 65535 in a few bytes; large frames only
    // cost memory and time here, so they are left to the parser alone.
    vqcjpeg::Parsed p;
    if (!vqcjpeg::parse(data, size, p).empty()) return 0;
    long samples = 0;
    for (const vqcjpeg::Component& c : p.frame.comps) samples += long(c.paddedW) * c.paddedH * 64;
    if (samples > (1L << 21)) return 0;
    // The file's length picks the decoder's path: default, fast
    // up-sampling, or a scaled output.
    vqcjpeg::DecodeOptions opt;
    opt.fastUpsample = size % 4 == 1;
    opt.scaleDenom = size % 4 == 2 ? 2 : size % 4 == 3 ? 8 : 1;
    vqcjpeg::Image img;
    (void)vqcjpeg::decode(data, size, img, opt);
    return 0;
}
