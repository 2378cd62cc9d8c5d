// Block and DC decoders of JPEG XR on arbitrary bits, with one state carried
// across the calls and adapted, reset and switched between them as a codec
// would. The stream is padded so that the read-ahead of a call stays inside.
#include <vqcj.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 4) return 0;
    const uint8_t ops = data[0], chroma = data[1] & 1;
    const int32_t quant = static_cast<int8_t>(data[2]) * 37;
    std::vector<uint8_t> buf(data + 3, data + size);
    const size_t end = buf.size();
    buf.resize(end + 512);
    VqciVLCState s;
    std::memset(&s, 0, sizeof s);
    vqciVLCInit_JPEGXR(&s);
    for (int t = 0; t < 3; ++t) vqciVLCScanReset_JPEGXR(&s, t);
    Vqc8u* p = buf.data();
    uint32_t bits = 0, n = 0;
    int32_t out32[16], count = 0;
    int16_t out16[16];
    for (uint32_t k = 0; static_cast<size_t>(p - buf.data()) < end && k < 4096; ++k) {
        switch ((ops >> (k % 8)) & 7 ^ (k & 7)) {
            case 0: vqciVLCDecode4x4_JPEGXR_1u32s_C1R(&p, &bits, &n, quant, out32, 16, chroma, &count, &s); break;
            case 1: vqciVLCDecode4x4_JPEGXR_1u16s_C1R(&p, &bits, &n, static_cast<int16_t>(quant), out16, 8, chroma, &count, &s); break;
            case 2: vqciVLCDecodeDC444_JPEGXR_1u32s(&p, &bits, &n, out32, chroma, &count, &s); break;
            case 3: vqciVLCDecodeDC422_JPEGXR_1u32s(&p, &bits, &n, out32, &count, &s); break;
            case 4: vqciVLCDecodeDC420_JPEGXR_1u32s(&p, &bits, &n, out32, &count, &s); break;
            case 5: vqciVLCAdapt_JPEGXR(&s, k & 1); break;
            case 6: vqciVLCScanReset_JPEGXR(&s, static_cast<int32_t>(k % 3)); break;
            default: vqciVLCScanSet_JPEGXR(&s, k % 3); break;
        }
    }
    return 0;
}
