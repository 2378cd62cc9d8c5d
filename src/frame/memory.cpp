#include "memory.h"

#include <cstdint>
#include <cstring>

#include "../core/vqccore.h"

namespace vqcj {

void* ownMalloc(int32_t length) { return length < 1 ? nullptr : vqcMalloc(length); }

void ownFree(void* p) { vqcFree(p); }

namespace {

// Bytes to the next 4-byte boundary, then 32-byte groups of 32-bit stores,
// then the last 0 to 31 bytes: the shape shared by zero and fill.
void fillShape(uint8_t* d, int32_t length, uint8_t value) {
    if (length <= 0) return;
    while ((reinterpret_cast<uintptr_t>(d) & 3u) != 0) {
        *d++ = value;
        if (--length == 0) return;
    }
    const uint32_t word = value * 0x01010101u;
    for (int32_t groups = length >> 5; groups > 0; --groups) {
        for (int i = 0; i < 8; ++i) std::memcpy(d + 4 * i, &word, 4);
        d += 32;
    }
    for (int32_t rest = length & 31; rest > 0; --rest) *d++ = value;
}

}  // namespace

void ownZeroBytes(void* p, int32_t length) { fillShape(static_cast<uint8_t*>(p), length, 0); }

void ownFillBytes(Vqc8u value, void* p, int32_t length) {
    fillShape(static_cast<uint8_t*>(p), length, value);
}

VqcStatus ownZero8u(Vqc8u* p, int32_t length) {
    if (p == nullptr) return vqcStatusNullPtr;
    if (length < 1) return vqcStatusBadSize;
    ownZeroBytes(p, length);
    return vqcStatusOk;
}

VqcStatus ownZero16s(Vqc16s* p, int32_t length) {
    if (p == nullptr) return vqcStatusNullPtr;
    if (length < 1) return vqcStatusBadSize;
    ownZeroBytes(p, static_cast<int32_t>(static_cast<uint32_t>(length) * 2u));
    return vqcStatusOk;
}

VqcStatus ownZero32s(Vqc32s* p, int32_t length) {
    if (p == nullptr) return vqcStatusNullPtr;
    if (length < 1) return vqcStatusBadSize;
    ownZeroBytes(p, static_cast<int32_t>(static_cast<uint32_t>(length) * 4u));
    return vqcStatusOk;
}

VqcStatus ownFill8u(Vqc8u value, Vqc8u* p, int32_t length) {
    if (p == nullptr) return vqcStatusNullPtr;
    if (length < 1) return vqcStatusBadSize;
    ownFillBytes(value, p, length);
    return vqcStatusOk;
}

Vqc32s* ownFill32s(Vqc32s value, Vqc32s* p, int32_t length) {
    if (length < 1) return p;
    Vqc32s* d = p;
    for (int32_t groups = length >> 3; groups > 0; --groups) {
        for (int i = 0; i < 8; ++i) d[i] = value;
        d += 8;
    }
    for (int32_t rest = length & 7; rest > 0; --rest) *d++ = value;
    return p;
}

void* ownCopyBytes(const void* src, void* dst, int32_t length) {
    if (length < 1) return dst;
    if (ownCopyTakesBlockCopy(reinterpret_cast<uintptr_t>(src), reinterpret_cast<uintptr_t>(dst), length))
        return std::memcpy(dst, src, static_cast<size_t>(length));
    // In order, one byte at a time: with dst a little above src this
    // replicates the leading pattern. Not a memmove, deliberately.
    const auto* sp = static_cast<const uint8_t*>(src);
    auto* dp = static_cast<uint8_t*>(dst);
    for (int32_t i = 0; i < length; ++i) dp[i] = sp[i];
    return dst;
}

VqcStatus ownCopy8u(const Vqc8u* src, Vqc8u* dst, int32_t length) {
    if (src == nullptr || dst == nullptr) return vqcStatusNullPtr;
    if (length < 1) return vqcStatusBadSize;
    ownCopyBytes(src, dst, length);
    return vqcStatusOk;
}

}  // namespace vqcj
