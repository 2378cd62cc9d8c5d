// The JPEG XR bit stream as the coders share it: 16 bits at a time through
// memory, first byte high, with the caller's stream pointer, left-aligned
// buffer word and bit count copied into locals for the length of a call and
// stored back at its end. No bound and no stuffing: the caller provides room.
#pragma once

#include "frame/check.h"

#include <cstddef>
#include <cstdint>
#include <type_traits>

namespace vqcj::jxr {

// The stream arguments in a check chain: the pointer to the stream pointer,
// the stream pointer itself, the buffer word, the count.
inline Check& checkStream(Check& c, uint8_t** pp, const uint32_t* pBitBuf, const uint32_t* pNumBits) {
    c.ptr(pp);
    if (c == vqcStatusOk) c.ptr(*pp);
    return c.ptr(pBitBuf).ptr(pNumBits);
}

// An element of a 4x4 block, rows step bytes apart. Row and column are
// taken modulo 4, so that scan entries of a forged record stay in the block.
template <class E>
inline E& at(E* p, int32_t step, uint32_t row, uint32_t col) {
    using B = std::conditional_t<std::is_const_v<E>, const char, char>;
    return reinterpret_cast<E*>(reinterpret_cast<B*>(p) + static_cast<ptrdiff_t>(step) * (row & 3))[col & 3];
}

// Writer. Invariant between puts: at most 16 bits pending.
struct BitWriter {
    uint8_t* p;
    uint32_t buf;
    uint32_t n;

    BitWriter(uint8_t* const* pp, const uint32_t* pBuf, const uint32_t* pN) : p(*pp), buf(*pBuf), n(*pN) {}
    void store(uint8_t** pp, uint32_t* pBuf, uint32_t* pN) const { *pp = p, *pBuf = buf, *pN = n; }

    void flush16() {
        p[0] = static_cast<uint8_t>(buf >> 24);
        p[1] = static_cast<uint8_t>(buf >> 16);
        p += 2;
        buf <<= 16;
        n -= 16;
    }
    // Entry: a caller may hand over up to 32 pending bits.
    void enter() {
        if (n > 16) flush16();
    }
    // len 1..16, v already within len bits.
    void put(uint32_t v, uint32_t len) {
        buf |= v << (32 - n - len);
        n += len;
        if (n > 16) flush16();
    }
};

// Codes are gathered in a local word and passed to the writer about once per
// 32 bits; the stream and the final buffer state are those of one put per code.
struct BitPacker {
    BitWriter& w;
    uint32_t word = 0;
    uint32_t cnt = 0;

    explicit BitPacker(BitWriter& wr) : w(wr) {}
    void drain() {
        if (cnt > 16) {
            w.put(word >> 16, cnt - 16);
            w.put(word & 0xFFFFu, 16);
        } else if (cnt != 0) {
            w.put(word, cnt);
        }
        word = 0;
        cnt = 0;
    }
    // len 0..16.
    void put(uint32_t v, uint32_t len) {
        if (cnt + len > 32) drain();
        word = len ? (word << len) | v : word;
        cnt += len;
    }
    // Up to 32 bits, split so that no single put exceeds 16.
    void putLong(uint32_t v, uint32_t len) {
        if (len > 16) {
            put(v >> 16, len - 16);
            put(v & 0xFFFFu, 16);
        } else {
            put(v, len);
        }
    }
};

// Reader. Invariant between reads: at least 16 bits at hand.
struct BitReader {
    const uint8_t* p;
    uint32_t buf;
    uint32_t n;

    BitReader(uint8_t* const* pp, const uint32_t* pBuf, const uint32_t* pN) : p(*pp), buf(*pBuf), n(*pN) {}
    void store(uint8_t** pp, uint32_t* pBuf, uint32_t* pN) const {
        *pp = const_cast<uint8_t*>(p), *pBuf = buf, *pN = n;
    }
    void fill() {
        if (n < 16) {
            buf |= ((static_cast<uint32_t>(p[0]) << 8) | p[1]) << (16 - n);
            p += 2;
            n += 16;
        }
    }
    // k 1..16.
    uint32_t peek(uint32_t k) const { return buf >> (32 - k); }
    // k 0..16.
    void skip(uint32_t k) {
        buf = k ? buf << k : buf;
        n -= k;
        fill();
    }
    uint32_t get(uint32_t k) {
        if (k == 0) return 0;
        const uint32_t v = peek(k);
        skip(k);
        return v;
    }
    uint32_t getLong(uint32_t k) {
        if (k > 16) {
            const uint32_t hi = get(k - 16);
            return (hi << 16) | get(16);
        }
        return get(k);
    }
};

}  // namespace vqcj::jxr
