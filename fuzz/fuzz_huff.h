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

#include "support/jpeg_tables.h"

namespace fuzzhuff {

using vqcjtest::kAcBits;
using vqcjtest::kAcVals;
using vqcjtest::kDcBits;
using vqcjtest::kDcVals;

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
