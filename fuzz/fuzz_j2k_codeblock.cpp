// JPEG 2000 code-block decoding of arbitrary bytes. A six-byte header picks
// the block size, subband, style flags, top plane, pass count and number of
// segments; 16-bit segment lengths follow, then the coded data, decoded in
// one call or step by step. The seeds are code-blocks of a photograph.
// Every segment is an exact-size copy, so ASan sees any read beyond it.
#include <vqcj.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 6) return 0;
    const int w = 1 + (data[0] & 63), h = 1 + (data[1] & 63);
    const int subband = data[2] & 3;
    const int flags = (data[2] >> 2) & 31;
    const bool stepwise = data[2] & 0x80;
    const int sfBits = data[3] & 31;
    const int nPasses = data[4] % 100;
    const int nSegs = 1 + (data[5] & 7);
    data += 6;
    size -= 6;
    // Segment lengths: 16 bits each, little-endian, cut to the data left.
    if (size < size_t(2 * nSegs)) return 0;
    const uint8_t* lenBytes = data;
    data += 2 * nSegs;
    size -= 2 * nSegs;
    std::vector<std::vector<uint8_t>> segs;
    size_t pos = 0;
    for (int s = 0; s < nSegs; ++s) {
        const size_t len = std::min<size_t>(lenBytes[2 * s] | (lenBytes[2 * s + 1] << 8), size - pos);
        segs.emplace_back(data + pos, data + pos + len);
        pos += len;
    }
    std::vector<int32_t> out(w * h);
    int32_t stateSize = 0;
    vqciDecodeGetBufSize_JPEG2K(w, h, &stateSize);
    std::vector<uint8_t> mem(stateSize);
    auto* st = reinterpret_cast<VqciDecodeCBProgrState_JPEG2K*>(mem.data());
    vqciDecodeCBProgrInit_JPEG2K(st);
    if (stepwise) {
        vqciDecodeCBProgrAttach_JPEG2K_32s_C1R(out.data(), 4 * w, w, h, st, subband, sfBits, flags);
        vqciDecodeCBProgrSetPassCounter_JPEG2K(nPasses, st);
        for (auto& s : segs) {
            std::vector<uint8_t> exact(s);
            const uint8_t none = 0;
            if (vqciDecodeCBProgrStep_JPEG2K(exact.empty() ? &none : exact.data(), int32_t(exact.size()), st) != 0)
                break;
        }
        return 0;
    }
    // The one-call form reads the segments back to back.
    std::vector<uint8_t> all;
    std::vector<int32_t> lens;
    for (auto& s : segs) {
        all.insert(all.end(), s.begin(), s.end());
        lens.push_back(int32_t(s.size()));
    }
    std::vector<uint8_t> exact(all);
    const uint8_t none = 0;
    int32_t errPlane = 0;
    vqciDecodeCodeBlock_JPEG2K_1u32s_C1R(exact.empty() ? &none : exact.data(), out.data(), 4 * w, w, h, subband,
                                         sfBits, nPasses, lens.data(), nSegs, flags | (stepwise ? 0 : 0x10000),
                                         &errPlane, st);
    return 0;
}
