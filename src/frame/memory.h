// Memory services shared by all families: allocation through the core
// library, and zero, fill and copy routines whose tail handling is the same
// everywhere. The raw forms carry no checks; the 8u/16s/32s forms check.
#pragma once

#include <vqcj.h>

#include <cstdint>

namespace vqcj {

// Length below 1: null without calling the allocator.
void* ownMalloc(int32_t length);
// No null test of its own: the core library's free accepts null.
void ownFree(void* p);

void ownZeroBytes(void* p, int32_t length);
VqcStatus ownZero8u(Vqc8u* p, int32_t length);
VqcStatus ownZero16s(Vqc16s* p, int32_t length);
VqcStatus ownZero32s(Vqc32s* p, int32_t length);

void ownFillBytes(Vqc8u value, void* p, int32_t length);
VqcStatus ownFill8u(Vqc8u value, Vqc8u* p, int32_t length);
Vqc32s* ownFill32s(Vqc32s value, Vqc32s* p, int32_t length);

// Forward copy. Above 96 bytes, ranges more than `length` apart go to memcpy;
// everything else is a plain forward byte loop, which callers rely on to
// replicate a pattern when the destination sits just above the source.
void* ownCopyBytes(const void* src, void* dst, int32_t length);

// The decision of ownCopyBytes: the distances are taken as signed 32-bit
// differences and must be strictly greater than the length.
constexpr bool ownCopyTakesBlockCopy(uintptr_t src, uintptr_t dst, int32_t length) {
    const auto ahead = static_cast<int32_t>(static_cast<uint32_t>(dst - src));
    const auto behind = static_cast<int32_t>(static_cast<uint32_t>(src - dst));
    return length > 96 && (ahead > length || behind > length);
}
VqcStatus ownCopy8u(const Vqc8u* src, Vqc8u* dst, int32_t length);

}  // namespace vqcj
