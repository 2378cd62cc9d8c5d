// A plane of byte rows, packed and unpacked row by row with our PackBits
// exports, for the interop tests and the benchmark.
#pragma once

#include <vqcj.h>

#include <cstdint>
#include <string>
#include <vector>

namespace tiffplane {

using Bytes = std::vector<uint8_t>;

struct Plane {
    std::string name;
    int rowBytes = 0, height = 0;
    Bytes data;
};

// The most a row of n bytes can take: each plain literal costs a header, and
// the worst rows repeat a single byte and two pairs (6 bytes for 5).
inline int32_t packedBound(int32_t n) { return n + (n + 4) / 5; }

// Every row appended to `out`, which must hold packedBound of each; returns
// the bytes written, or -1 when a row fails.
inline int32_t packRows(const Plane& p, Bytes& out) {
    int32_t count = 0;
    const auto cap = static_cast<int32_t>(out.size());
    for (int y = 0; y < p.height; ++y)
        if (vqciPackBitsRow_TIFF_8u_C1(p.data.data() + static_cast<size_t>(y) * p.rowBytes, p.rowBytes, out.data(),
                                        &count, cap) != vqcStatusOk)
            return -1;
    return count;
}

inline Bytes packRows(const Plane& p) {
    Bytes out(static_cast<size_t>(p.height) * static_cast<size_t>(packedBound(p.rowBytes)));
    const int32_t n = packRows(p, out);
    out.resize(n < 0 ? 0 : static_cast<size_t>(n));
    return out;
}

// Rows decoded one after another with one position into `out` (rowBytes x
// height); true when every row succeeds and the position lands on the end.
inline bool unpackRows(const Bytes& stream, int rowBytes, int height, Bytes& out) {
    int32_t pos = 0;
    const auto len = static_cast<int32_t>(stream.size());
    for (int y = 0; y < height; ++y)
        if (vqciUnpackBitsRow_TIFF_8u_C1(stream.data(), &pos, len, out.data() + static_cast<size_t>(y) * rowBytes,
                                          rowBytes) != vqcStatusOk)
            return false;
    return pos == len;
}

}  // namespace tiffplane
