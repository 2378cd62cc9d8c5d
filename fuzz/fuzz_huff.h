// Shared by the Huffman decoder targets: the T.81 example luminance tables,
// or an AC table taken from the input itself (decoder tables accept lists
// that are overfull or hold all-ones codes, and those must stay safe too).
// Input: a flag byte, then with flag bit 0 set 16 BITS counts and their
// symbols, then the entropy-coded data.
#pragma once

#include <vqcj.h>

#include <cstddef>
#include <cstdint>
#include <memory>

namespace fuzzhuff {

inline const Vqc8u kDcBits[16] = {0, 1, 5, 1, 1, 1, 1, 1, 1};
inline const Vqc8u kDcVals[12] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11};
inline const Vqc8u kAcBits[16] = {0, 2, 1, 3, 3, 2, 4, 3, 5, 5, 4, 4, 0, 0, 1, 0x7d};
inline const Vqc8u kAcVals[162] = {
    0x01, 0x02, 0x03, 0x00, 0x04, 0x11, 0x05, 0x12, 0x21, 0x31, 0x41, 0x06, 0x13, 0x51, 0x61, 0x07, 0x22, 0x71, 0x14,
    0x32, 0x81, 0x91, 0xa1, 0x08, 0x23, 0x42, 0xb1, 0xc1, 0x15, 0x52, 0xd1, 0xf0, 0x24, 0x33, 0x62, 0x72, 0x82, 0x09,
    0x0a, 0x16, 0x17, 0x18, 0x19, 0x1a, 0x25, 0x26, 0x27, 0x28, 0x29, 0x2a, 0x34, 0x35, 0x36, 0x37, 0x38, 0x39, 0x3a,
    0x43, 0x44, 0x45, 0x46, 0x47, 0x48, 0x49, 0x4a, 0x53, 0x54, 0x55, 0x56, 0x57, 0x58, 0x59, 0x5a, 0x63, 0x64, 0x65,
    0x66, 0x67, 0x68, 0x69, 0x6a, 0x73, 0x74, 0x75, 0x76, 0x77, 0x78, 0x79, 0x7a, 0x83, 0x84, 0x85, 0x86, 0x87, 0x88,
    0x89, 0x8a, 0x92, 0x93, 0x94, 0x95, 0x96, 0x97, 0x98, 0x99, 0x9a, 0xa2, 0xa3, 0xa4, 0xa5, 0xa6, 0xa7, 0xa8, 0xa9,
    0xaa, 0xb2, 0xb3, 0xb4, 0xb5, 0xb6, 0xb7, 0xb8, 0xb9, 0xba, 0xc2, 0xc3, 0xc4, 0xc5, 0xc6, 0xc7, 0xc8, 0xc9, 0xca,
    0xd2, 0xd3, 0xd4, 0xd5, 0xd6, 0xd7, 0xd8, 0xd9, 0xda, 0xe1, 0xe2, 0xe3, 0xe4, 0xe5, 0xe6, 0xe7, 0xe8, 0xe9, 0xea,
    0xf1, 0xf2, 0xf3, 0xf4, 0xf5, 0xf6, 0xf7, 0xf8, 0xf9, 0xfa};

struct Input {
    VqciDecodeHuffmanSpec dc, ac;
    const uint8_t* data = nullptr;  // the entropy-coded part
    size_t size = 0;
    bool ok = false;
};

inline void parse(const uint8_t* in, size_t n, Input& out) {
    if (n < 1) return;
    const uint8_t flag = in[0];
    ++in, --n;
    vqciDecodeHuffmanSpecInit_JPEG_8u(kDcBits, kDcVals, &out.dc);
    if (flag & 1) {
        if (n < 16) return;
        size_t total = 0;
        for (int i = 0; i < 16; ++i) total += in[i];
        if (total > 256 || n < 16 + total) return;
        if (vqciDecodeHuffmanSpecInit_JPEG_8u(in, in + 16, &out.ac) != vqcStatusOk) return;
        // The same odd list as DC table too, when asked.
        if (flag & 2) vqciDecodeHuffmanSpecInit_JPEG_8u(in, in + 16, &out.dc);
        in += 16 + total, n -= 16 + total;
    } else {
        vqciDecodeHuffmanSpecInit_JPEG_8u(kAcBits, kAcVals, &out.ac);
    }
    out.data = in, out.size = n, out.ok = true;
}

// An exact-size copy of the data, so that ASan sees any read beyond it.
inline std::unique_ptr<Vqc8u[]> exactCopy(const Input& t) {
    std::unique_ptr<Vqc8u[]> p(new Vqc8u[t.size]);
    for (size_t i = 0; i < t.size; ++i) p[i] = t.data[i];
    return p;
}

// Runs a decoding call up to `calls` times as a decoder would: a marker is
// cleared and the state reset as at a restart, the end of the source stops.
// A position outside the source or an undocumented status traps.
template <class F>
inline void drive(int32_t len, int32_t calls, F&& decode) {
    VqciDecodeHuffmanState st;
    vqciDecodeHuffmanStateInit_JPEG_8u(&st);
    int32_t pos = 0, marker = 0;
    for (int32_t i = 0; i < calls; ++i) {
        const VqcStatus s = decode(&pos, &marker, &st);
        if (pos < 0 || pos > len || (s != 0 && s != vqcStatusOutOfBuffer && s != vqcStatusBadHuffmanCode))
            __builtin_trap();
        if (s == vqcStatusOutOfBuffer) break;
        if (marker != 0 || s != 0) {
            marker = 0;
            vqciDecodeHuffmanStateInit_JPEG_8u(&st);
        }
    }
}

}  // namespace fuzzhuff
