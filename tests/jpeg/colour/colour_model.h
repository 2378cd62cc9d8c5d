// Reference arithmetic of the colour conversions, written the plain way: the
// twelve conversion tables built by their rules, and the multiplication
// forms on 32 bits with wrap. The library computes the same values without
// tables and on 16-bit lanes; the tests hold the two against each other.
#pragma once

#include <array>
#include <cstdint>

namespace model {

using Table = std::array<int32_t, 256>;
template <class F>
constexpr Table table(F f) {
    Table t{};
    for (int i = 0; i < 256; ++i) t[i] = f(i);
    return t;
}

inline constexpr Table yFromR = table([](int i) { return 19595 * i; });
inline constexpr Table yFromG = table([](int i) { return 38470 * i; });
inline constexpr Table yFromB = table([](int i) { return 7471 * i + 32768; });
inline constexpr Table cbFromR = table([](int i) { return -11059 * i; });
inline constexpr Table cbFromG = table([](int i) { return -21709 * i; });
inline constexpr Table chromaFull = table([](int i) { return 32768 * i + 8421375; });
inline constexpr Table crFromG = table([](int i) { return -27439 * i; });
inline constexpr Table crFromB = table([](int i) { return -5329 * i; });
inline constexpr Table rFromCr = table([](int i) { return (91881 * (i - 128) + 32768) >> 16; });
inline constexpr Table bFromCb = table([](int i) { return (116130 * (i - 128) + 32768) >> 16; });
inline constexpr Table gFromCr = table([](int i) { return -46802 * (i - 128); });
inline constexpr Table gFromCb = table([](int i) { return -22554 * (i - 128) + 32768; });

constexpr uint8_t lo8(uint32_t v, int shift) { return static_cast<uint8_t>(v >> shift); }
constexpr uint8_t sat(int32_t v) { return static_cast<uint8_t>(v < 0 ? 0 : v > 255 ? 255 : v); }

struct Ycc {
    uint8_t y, cb, cr;
    bool operator==(const Ycc&) const = default;
};
struct Rgb {
    uint8_t r, g, b;
    bool operator==(const Rgb&) const = default;
};

// Table forms.
constexpr Ycc fwdTable(int r, int g, int b) {
    return {lo8(yFromR[r] + yFromG[g] + yFromB[b], 16), lo8(cbFromR[r] + cbFromG[g] + chromaFull[b], 16),
            lo8(chromaFull[r] + crFromG[g] + crFromB[b], 16)};
}
constexpr Rgb invTable(int y, int cb, int cr) {
    return {sat(y + rFromCr[cr]), sat(y + ((gFromCb[cb] + gFromCr[cr]) >> 16)), sat(y + bFromCb[cb])};
}

// Four-channel forward forms, each with its own Y rounding.
constexpr Ycc fwdFour(uint32_t r, uint32_t g, uint32_t b, uint32_t yRound) {
    return {lo8(7471 * b + 38470 * g + 19595 * r + yRound, 16), lo8(32768 * b - 21709 * g - 11059 * r - 8372224, 16),
            lo8(32768 * r - 5329 * b - 27439 * g - 8372224, 16)};
}
// Fused chroma from sums of 2 (shift 17) or 4 (shift 18) pixels.
constexpr Ycc fusedChroma(uint32_t r, uint32_t g, uint32_t b, uint32_t k, int shift) {
    return {0, lo8(32768 * b - 21709 * g - 11059 * r - k, shift), lo8(32768 * r - 5329 * b - 27439 * g - k, shift)};
}
// Multiplication arithmetic of the inverse.
constexpr Rgb invMul(int32_t y, int32_t cb, int32_t cr) {
    return {sat((91880 * cr + 65536 * y - 11727880) >> 16), sat((65536 * y - 22553 * cb - 46801 * cr + 8910128) >> 16),
            sat((116128 * cb + 65536 * y - 14831618) >> 16)};
}

}  // namespace model
