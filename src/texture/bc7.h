// BC7 mode table shared by the decoder and the encoder.
#pragma once

#include <cstdint>

namespace vqcj {

struct BC7Mode {
    int subsets;     // 1 to 3
    int partBits;    // partition number width
    int pBits;       // P-bit count: one per endpoint, or one per subset (mode 1)
    int rotBits;     // channel rotation width
    int selBits;     // index selector width
    int idxBits;     // first index field, per texel
    int idx2Bits;    // second index field (modes 4 and 5), else 0
    int colorPrec;   // stored bits of R, G, B
    int alphaPrec;   // stored bits of A, 0 where alpha is not stored
};

inline constexpr BC7Mode kBC7Modes[8] = {
    {3, 4, 6, 0, 0, 3, 0, 4, 0}, {2, 6, 2, 0, 0, 3, 0, 6, 0}, {3, 6, 0, 0, 0, 2, 0, 5, 0},
    {2, 6, 4, 0, 0, 2, 0, 7, 0}, {1, 0, 0, 2, 1, 2, 3, 5, 6}, {1, 0, 0, 2, 0, 2, 2, 7, 8},
    {1, 0, 2, 0, 0, 4, 0, 7, 7}, {2, 6, 4, 0, 0, 2, 0, 5, 5},
};

// Which P-bit endpoint j (= 2*subset + end) uses.
constexpr int ownBC7PBitOf(const BC7Mode& m, int j) { return j * m.pBits / (2 * m.subsets); }

}  // namespace vqcj
