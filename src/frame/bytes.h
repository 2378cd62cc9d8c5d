// Byte tests on whole words, shared by the entropy coders and the TIFF rows.
#pragma once

#include <cstdint>
#include <type_traits>

namespace vqcj {

// The top bit of each zero byte of v set. A borrow can also flag a byte
// above a true zero byte, never one below it, so "any" and "the lowest" are
// exact. For 0xFF bytes, pass ~v.
template <class T>
constexpr T ownZeroByteFlags(T v) {
    static_assert(std::is_unsigned_v<T>);
    constexpr T ones = static_cast<T>(~T{0}) / 255;
    return static_cast<T>((v - ones) & ~v & static_cast<T>(ones << 7));
}

}  // namespace vqcj
