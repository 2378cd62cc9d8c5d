// 32-bit wrapping arithmetic and saturation shared by every family.
//
// The arithmetic of the primitives is defined on 32 bits with wrap-around;
// signed overflow is undefined in C++, so every operation that can overflow
// goes through unsigned arithmetic here. Right shifts of signed values are
// arithmetic and narrowing conversions are modular (both guaranteed by C++20).
#pragma once

#include <algorithm>
#include <cstdint>

namespace vqcj {

constexpr int32_t addW(int32_t a, int32_t b) {
    return static_cast<int32_t>(static_cast<uint32_t>(a) + static_cast<uint32_t>(b));
}
constexpr int32_t subW(int32_t a, int32_t b) {
    return static_cast<int32_t>(static_cast<uint32_t>(a) - static_cast<uint32_t>(b));
}
constexpr int32_t mulW(int32_t a, int32_t b) {
    return static_cast<int32_t>(static_cast<uint32_t>(a) * static_cast<uint32_t>(b));
}
constexpr int32_t shlW(int32_t a, int n) {
    return static_cast<int32_t>(static_cast<uint32_t>(a) << n);
}
// Logical right shift of the 32-bit pattern.
constexpr uint32_t shrL(int32_t a, int n) { return static_cast<uint32_t>(a) >> n; }

// Truncation to 16 bits, re-read with sign (no saturation).
constexpr int16_t cut16s(int32_t v) { return static_cast<int16_t>(v); }

// Saturation: 255 and above give 255, below 0 gives 0. Spelled as max/min
// so that loops using them vectorise.
constexpr uint8_t sat8u(int32_t v) { return static_cast<uint8_t>(std::min(std::max(v, 0), 255)); }
constexpr int16_t sat16s(int32_t v) { return static_cast<int16_t>(std::min(std::max(v, -32768), 32767)); }

// A 16-bit sample plus 128, saturated to 0..255. Clamping to -128..127 in
// 16 bits first is the same saturation and keeps eight lanes per vector.
constexpr uint8_t add128Sat8u(int16_t v) {
    return static_cast<uint8_t>(std::min<int16_t>(std::max<int16_t>(v, -128), 127) + 128);
}

}  // namespace vqcj
