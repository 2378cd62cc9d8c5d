// Memory services shared by all families: allocation through the core
// library, and zero, fill and copy routines. The raw forms carry no checks;
// the 8u/16s/32s forms check the pointer (-8) and then the length (-6).
//
// Zero and fill write exactly [p, p + length) and nothing else; which stores
// do it cannot change a byte, so they go to memset. The copy's result is
// that of a forward byte loop, which callers rely on to replicate a pattern
// when the destination sits just above the source; where the ranges do not
// overlap every copy order writes the same bytes, so memcpy does it. They are
// inline because families call them once per packet on short lengths.
#pragma once

#include <vqcj.h>

#include <cstdint>
#include <cstring>

namespace vqcj {

namespace detail {

// Up to 16 bytes between ranges that do not overlap, without a call: two
// word moves that may overlap each other cover any length from their width
// to twice it.
template <class W>
inline void copyTwo(const uint8_t* s, uint8_t* d, int32_t n) {
    W a, b;
    std::memcpy(&a, s, sizeof(W));
    std::memcpy(&b, s + n - sizeof(W), sizeof(W));
    std::memcpy(d, &a, sizeof(W));
    std::memcpy(d + n - sizeof(W), &b, sizeof(W));
}

inline void copyShort(const uint8_t* s, uint8_t* d, int32_t n) {
    if (n >= 8) copyTwo<uint64_t>(s, d, n);
    else if (n >= 4) copyTwo<uint32_t>(s, d, n);
    else {
        d[0] = s[0];
        d[n >> 1] = s[n >> 1];
        d[n - 1] = s[n - 1];
    }
}

inline void fillShort(uint8_t* d, uint8_t v, int32_t n) {
    const uint64_t w = v * 0x0101010101010101u;
    if (n >= 8) {
        std::memcpy(d, &w, 8);
        std::memcpy(d + n - 8, &w, 8);
    } else if (n >= 4) {
        std::memcpy(d, &w, 4);
        std::memcpy(d + n - 4, &w, 4);
    } else {
        d[0] = d[n >> 1] = d[n - 1] = v;
    }
}

}  // namespace detail

// Length below 1: null without calling the allocator.
void* ownMalloc(int32_t length);
// No null test of its own: the core library's free accepts null.
void ownFree(void* p);

inline void ownFillBytes(Vqc8u value, void* p, int32_t length) {
    if (length > 16) std::memset(p, value, static_cast<size_t>(length));
    else if (length > 0) detail::fillShort(static_cast<uint8_t*>(p), value, length);
}

inline void ownZeroBytes(void* p, int32_t length) { ownFillBytes(0, p, length); }

inline VqcStatus ownZero8u(Vqc8u* p, int32_t length) {
    if (p == nullptr) return vqcStatusNullPtr;
    if (length < 1) return vqcStatusBadSize;
    ownZeroBytes(p, length);
    return vqcStatusOk;
}

// Lengths in elements; the byte count wraps on 32 bits as the count does.
inline VqcStatus ownZero16s(Vqc16s* p, int32_t length) {
    if (p == nullptr) return vqcStatusNullPtr;
    if (length < 1) return vqcStatusBadSize;
    ownZeroBytes(p, static_cast<int32_t>(static_cast<uint32_t>(length) * 2u));
    return vqcStatusOk;
}

inline VqcStatus ownZero32s(Vqc32s* p, int32_t length) {
    if (p == nullptr) return vqcStatusNullPtr;
    if (length < 1) return vqcStatusBadSize;
    ownZeroBytes(p, static_cast<int32_t>(static_cast<uint32_t>(length) * 4u));
    return vqcStatusOk;
}

inline VqcStatus ownFill8u(Vqc8u value, Vqc8u* p, int32_t length) {
    if (p == nullptr) return vqcStatusNullPtr;
    if (length < 1) return vqcStatusBadSize;
    ownFillBytes(value, p, length);
    return vqcStatusOk;
}

// Returns p; a length below 1 does nothing.
inline Vqc32s* ownFill32s(Vqc32s value, Vqc32s* p, int32_t length) {
    for (int32_t i = 0; i < length; ++i) p[i] = value;
    return p;
}

// True when [src, src + length) and [dst, dst + length) share a byte.
constexpr bool ownRangesOverlap(uintptr_t src, uintptr_t dst, int32_t length) {
    const uintptr_t distance = dst > src ? dst - src : src - dst;
    return distance < static_cast<uintptr_t>(length);
}

// Returns dst; a length below 1 does nothing.
inline void* ownCopyBytes(const void* src, void* dst, int32_t length) {
    if (length < 1) return dst;
    if (!ownRangesOverlap(reinterpret_cast<uintptr_t>(src), reinterpret_cast<uintptr_t>(dst), length)) {
        if (length <= 16) {
            detail::copyShort(static_cast<const uint8_t*>(src), static_cast<uint8_t*>(dst), length);
            return dst;
        }
        // GCC warns about this branch where constant arguments make it dead.
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wrestrict"
#endif
        return std::memcpy(dst, src, static_cast<size_t>(length));
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic pop
#endif
    }
    // Overlapping: in order, one byte at a time. Not a memmove, deliberately.
    const auto* s = static_cast<const uint8_t*>(src);
    auto* d = static_cast<uint8_t*>(dst);
    for (int32_t i = 0; i < length; ++i) d[i] = s[i];
    return dst;
}

inline VqcStatus ownCopy8u(const Vqc8u* src, Vqc8u* dst, int32_t length) {
    if (src == nullptr || dst == nullptr) return vqcStatusNullPtr;
    if (length < 1) return vqcStatusBadSize;
    ownCopyBytes(src, dst, length);
    return vqcStatusOk;
}

}  // namespace vqcj
