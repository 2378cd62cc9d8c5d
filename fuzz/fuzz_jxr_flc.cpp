// Fixed-length layer decoders of JPEG XR on arbitrary bits, every numBits,
// refine and quant taken from the input; each decoded 32-bit block is then
// written back in the direct mode and read again, which must give it back.
#include <vqcj.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 3) return 0;
    const uint32_t numBits = data[0] % 16;
    const int32_t refine = data[0] >> 7;
    const int32_t quant = static_cast<int8_t>(data[1]);
    std::vector<uint8_t> buf(data + 2, data + size);
    const size_t end = buf.size();
    buf.resize(end + 64);
    Vqc8u* p = buf.data();
    uint32_t bits = 0, n = 0;
    int32_t blk[16] = {};
    int16_t h[16] = {};
    std::vector<uint8_t> enc(128);
    // numBits 0 reads nothing, so the count of blocks is bounded too.
    for (uint32_t k = 0; static_cast<size_t>(p - buf.data()) < end && k < 512; ++k) {
        vqciFLCDecode4x4_JPEGXR_1u16s_C1IR(&p, &bits, &n, h, 8, numBits, static_cast<int16_t>(quant), refine);
        int32_t fresh[16] = {};
        vqciFLCDecode4x4_JPEGXR_1u32s_C1IR(&p, &bits, &n, k & 1 ? blk : fresh, 16, numBits, 1, 0);
        if (k & 1) continue;
        // Magnitudes below 2^numBits with quant 1 survive a direct write and read.
        Vqc8u* q = enc.data();
        uint32_t eb = 0, en = 0;
        vqciFLCEncode4x4_JPEGXR_32s1u_C1R(fresh, 16, fresh, &q, &eb, &en, numBits, 0, 0);
        if (en) *q = static_cast<uint8_t>(eb >> 24), q[1] = static_cast<uint8_t>(eb >> 16);
        Vqc8u* r = enc.data();
        uint32_t rb = 0, rn = 0;
        int32_t back[16] = {};
        vqciFLCDecode4x4_JPEGXR_1u32s_C1IR(&r, &rb, &rn, back, 16, numBits, 1, 0);
        for (int i = 1; i < 16; ++i)
            if (back[i] != fresh[i]) abort();
    }
    return 0;
}
