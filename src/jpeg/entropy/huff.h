// Huffman bit writer, bit reader and symbol decoder of the JPEG entropy
// coders, shared by the baseline, progressive and lossless members.
//
// Writer: pending bits wait in the state's 32-bit buffer, the first at bit
// 23; each complete byte leaves at once, followed by 0x00 when it is 0xFF.
// Reader: fetched bits sit in the low 32 bits of the state's buffer, newest
// at bit 0; a refill tops the count up to at least 25 a byte at a time and
// stops at the end of the source or at a marker. Neither rolls back: on a
// failure the position, marker and counts stand where the failure left them.
#pragma once

#include <vqcj.h>

#include "frame/bytes.h"

#include <cstdint>
#include <cstring>

namespace vqcj {

static_assert(sizeof(VqciEncodeHuffmanSpec) == 1024);
static_assert(sizeof(VqciDecodeHuffmanSpec) == 1644);
static_assert(sizeof(VqciEncodeHuffmanState) == 1048);
static_assert(sizeof(VqciDecodeHuffmanState) == 24);

// Natural index of each zig-zag position, then 16 entries of 63 so that a
// run overshooting the block by up to 15 positions lands on the last
// coefficient instead of outside the block.
inline constexpr uint8_t ownZigzag[80] = {
    0,  1,  8,  16, 9,  2,  3,  10, 17, 24, 32, 25, 18, 11, 4,  5,  12, 19, 26, 33, 40, 48, 41, 34, 27, 20, 13,
    6,  7,  14, 21, 28, 35, 42, 49, 56, 57, 50, 43, 36, 29, 22, 15, 23, 30, 37, 44, 51, 58, 59, 52, 45, 38, 31,
    39, 46, 53, 60, 61, 54, 47, 55, 62, 63, 63, 63, 63, 63, 63, 63, 63, 63, 63, 63, 63, 63, 63, 63, 63, 63};

struct CategoryTable {
    uint8_t v[256];
};
constexpr CategoryTable makeCategoryTable() {
    CategoryTable t{};
    for (int m = 1; m < 256; ++m) t.v[m] = static_cast<uint8_t>(t.v[m >> 1] + 1);
    return t;
}
inline constexpr CategoryTable ownCategory8 = makeCategoryTable();

// Significant bits of a magnitude below 65536.
inline uint32_t ownHuffCategory(uint32_t m) {
    return m < 256 ? ownCategory8.v[m] : ownCategory8.v[(m >> 8) & 0xFF] + 8u;
}

// The low n bits, n from 0 to 32.
inline uint32_t lowMask(uint32_t n) { return n >= 32 ? 0xFFFFFFFFu : (1u << n) - 1u; }

// Magnitude bits of v for category c: v itself, or v - 1 when negative.
inline uint32_t extraBits(int32_t v) { return static_cast<uint32_t>(v) - (static_cast<uint32_t>(v) >> 31); }

// Value of s bits read from the stream: with the top bit clear the value is
// negative, v + 1 - 2^s.
inline int32_t extendValue(uint32_t v, uint32_t s) {
    const uint32_t half = (1u << s) >> 1;
    return static_cast<int32_t>(v < half ? v + 1u - (1u << s) : v);
}

inline bool hasByteFF(uint32_t w, uint32_t mask) { return (ownZeroByteFlags(~w) & mask) != 0; }

// Bit k set for each non-zero AC coefficient at zig-zag position k (bit 0
// clear). Four coefficients a word: the top bit of each non-zero lane,
// gathered into four adjacent bits by one multiply (the partial products do
// not overlap, so nothing carries). zz receives the coefficients in zig-zag
// order.
inline uint64_t ownHuffNonZeroMask(const Vqc16s* pSrc, int16_t zz[64]) {
    zz[0] = 0;
    for (int k = 1; k < 64; ++k) zz[k] = pSrc[ownZigzag[k]];
    uint64_t mask = 0;
    for (int i = 0; i < 16; ++i) {
        uint64_t w;
        std::memcpy(&w, zz + 4 * i, 8);
        const uint64_t nz = (((w & 0x7FFF7FFF7FFF7FFFu) + 0x7FFF7FFF7FFF7FFFu) | w) & 0x8000800080008000u;
        mask |= (((nz >> 15) * 0x0000200040008001u) >> 45 & 0xF) << (4 * i);
    }
    return mask;
}

// Bit of each zig-zag position for the eight flags of one row.
struct ZigzagRows {
    uint64_t v[8][256];
};
constexpr ZigzagRows makeZigzagRows() {
    ZigzagRows t{};
    for (int k = 0; k < 64; ++k)
        for (int b = 0; b < 256; ++b)
            if (b >> (ownZigzag[k] & 7) & 1) t.v[ownZigzag[k] >> 3][b] |= uint64_t{1} << k;
    return t;
}
inline constexpr ZigzagRows ownZigzagRows = makeZigzagRows();

// Bit k set for each flag (0 or 1, in natural order) at zig-zag position
// k. A multiply gathers a row's eight flag bytes into eight bits.
inline uint64_t ownHuffZigzagBits(const uint8_t flags[64]) {
    uint64_t mask = 0;
    for (int r = 0; r < 8; ++r) {
        uint64_t x;
        std::memcpy(&x, flags + 8 * r, 8);
        mask |= ownZigzagRows.v[r][(x * 0x0102040810204080u) >> 56];
    }
    return mask;
}

// Bit k set for each non-zero coefficient at zig-zag position k, DC
// included. The compare is written so that compilers do it on vectors.
inline uint64_t ownHuffZigzagMask(const Vqc16s* pSrc) {
    uint8_t nz[64];
    for (int i = 0; i < 64; ++i) nz[i] = pSrc[i] != 0;
    return ownHuffZigzagBits(nz);
}

// Visits the non-zero AC coefficients of a block in zig-zag order as
// f(run of zeros before it, value), stopping at the first non-zero status.
// Returns that status, and the zeros after the last one in *trailing. The
// walk branches per coefficient coded rather than per position.
template <class F>
inline VqcStatus ownHuffWalkAC(const Vqc16s* pSrc, uint32_t* trailing, F&& f) {
    uint64_t mask = ownHuffZigzagMask(pSrc) & ~uint64_t{1};
    uint32_t last = 0;
    while (mask != 0) {
        const uint32_t k = static_cast<uint32_t>(__builtin_ctzll(mask));
        mask &= mask - 1;
        if (VqcStatus st = f(k - last - 1, static_cast<int32_t>(pSrc[ownZigzag[k]]))) return st;
        last = k;
    }
    *trailing = 63 - last;
    return vqcStatusOk;
}

// ---- writer ---------------------------------------------------------------

inline void ownHuffInitEncodeState(VqciEncodeHuffmanState* pState) {
    pState->bitBuffer = 0;
    pState->bitCount = 0;
    pState->eobRun = 0;
    pState->correctionCount = 0;
    std::memset(pState->correctionBits, 0, sizeof pState->correctionBits);
}

// Appends the low nbits of value. A count of 0 is how a symbol without a
// code shows itself, so it is refused with nothing changed. Bytes stored
// before the destination ends stay stored; the state is written only on
// success.
inline VqcStatus ownHuffWriteBits(uint32_t value, int32_t nbits, Vqc8u* pDst, int32_t dstLenBytes,
                                  int32_t* pDstCurrPos, VqciEncodeHuffmanState* pState) {
    if (nbits == 0) return vqcStatusBadHuffmanTable;
    int32_t total = pState->bitCount + nbits;
    uint32_t buf = static_cast<uint32_t>(pState->bitBuffer) |
                   (value & lowMask(static_cast<uint32_t>(nbits))) << ((24 - total) & 31);
    int32_t pos = *pDstCurrPos;
    while (total >= 8) {
        if (static_cast<uint32_t>(pos) >= static_cast<uint32_t>(dstLenBytes)) {
            *pDstCurrPos = pos;
            return vqcStatusOutOfBuffer;
        }
        const uint8_t b = static_cast<uint8_t>(buf >> 16);
        pDst[pos++] = b;
        if (b == 0xFF) {
            if (pos >= dstLenBytes) {
                *pDstCurrPos = pos;
                return vqcStatusOutOfBuffer;
            }
            pDst[pos++] = 0;
        }
        total -= 8;
        buf <<= 8;
    }
    *pDstCurrPos = pos;
    pState->bitBuffer = buf;
    pState->bitCount = total;
    return vqcStatusOk;
}

// A table word as the writer takes it: lengths above 16 are no code either,
// since no table of ours holds one and the writer could not place it.
inline VqcStatus ownHuffWriteCode(uint32_t word, Vqc8u* pDst, int32_t dstLenBytes, int32_t* pDstCurrPos,
                                  VqciEncodeHuffmanState* pState) {
    const uint32_t len = word >> 16;
    if (len > 16) return vqcStatusBadHuffmanTable;
    return ownHuffWriteBits(word & 0xFFFF, static_cast<int32_t>(len), pDst, dstLenBytes, pDstCurrPos, pState);
}

// Pads the last byte with ones and resets the state, whatever the write did.
inline VqcStatus ownHuffFlush(Vqc8u* pDst, int32_t dstLenBytes, int32_t* pDstCurrPos,
                              VqciEncodeHuffmanState* pState) {
    const VqcStatus st = ownHuffWriteBits(127, 7, pDst, dstLenBytes, pDstCurrPos, pState);
    ownHuffInitEncodeState(pState);
    return st;
}

// Writer for a destination known to have room for all a call can write.
// Bits gather in 64 and a full word leaves in one store, byte by byte only
// when it holds a 0xFF. Only complete bytes are stored, as by the writer
// above, so the caller converts back to its own format at the end.
struct HuffFastWriter {
    Vqc8u* p;      // next byte
    uint64_t acc;  // the latest 64 bits of the stream, the newest at bit 0
    uint64_t n;    // how many of them are not stored yet, 0 to 63

    // size from 0 to 32, bits below 2^size.
    void put(uint64_t bits, uint64_t size) {
        n += size;
        if (n >= 64) [[unlikely]] {
            n -= 64;
            storeWord(acc << (size - n) | bits >> n);
        }
        acc = acc << size | bits;
    }
    void byte(uint32_t b) {
        *p++ = static_cast<Vqc8u>(b);
        if (b == 0xFF) *p++ = 0;
    }
    void storeWord(uint64_t w) {
        if (ownZeroByteFlags(~w) == 0) {
            const uint64_t be = __builtin_bswap64(w);
            std::memcpy(p, &be, 8);
            p += 8;
            return;
        }
        for (int s = 56; s >= 0; s -= 8) byte(static_cast<uint32_t>(w >> s) & 0xFF);
    }
    // Stores the complete bytes; fewer than 8 bits stay. Without a 0xFF
    // among them, up to seven bytes leave in three stores, each either to
    // the destination or to a scratch word, which keeps it free of branches.
    void storeBytes() {
        // Top-aligned, so that the bytes behind the complete ones hold a
        // zero bit and cannot be taken for 0xFF.
        const uint64_t w = acc << (63 - n) << 1;
        if (ownZeroByteFlags(~w) != 0) {
            for (; n >= 8; n -= 8) byte(static_cast<uint32_t>(acc >> (n - 8)) & 0xFF);
            return;
        }
        uint64_t be = __builtin_bswap64(w), scratch;
        auto* junk = reinterpret_cast<Vqc8u*>(&scratch);
        const uint32_t nb = n >> 3, n4 = nb & 4, n2 = nb & 2, n1 = nb & 1;
        std::memcpy(n4 ? p : junk, &be, 4);
        p += n4;
        be >>= 8 * n4;
        std::memcpy(n2 ? p : junk, &be, 2);
        p += n2;
        be >>= 8 * n2;
        *(n1 ? p : junk) = static_cast<Vqc8u>(be);
        p += n1;
        n &= 7;
    }

    // Whether a call may go through this writer: room for all it can
    // write, and a state that ownHuffWriteBits could have left. Such a
    // state holds the last byte stored in bits 24-31 and the pending bits
    // below it, so that it reads as the stream's latest bits.
    static bool fits(int32_t dstLenBytes, int32_t pos, int32_t room, const VqciEncodeHuffmanState* pState) {
        const uint32_t pending = static_cast<uint32_t>(pState->bitCount);
        return pos >= 0 && dstLenBytes - pos >= room && pending < 8 &&
               (static_cast<uint32_t>(pState->bitBuffer) & lowMask(24 - pending)) == 0;
    }
    static HuffFastWriter fromState(Vqc8u* pDst, int32_t pos, const VqciEncodeHuffmanState* pState) {
        const uint32_t pending = static_cast<uint32_t>(pState->bitCount);
        return {pDst + pos, static_cast<uint32_t>(pState->bitBuffer) >> (24 - pending), pending};
    }
    // Back to what ownHuffWriteBits would have left after the same writes;
    // with no bit written (a first write refused) it left the state alone,
    // high half included.
    void toState(Vqc8u* pDst, int32_t* pDstCurrPos, VqciEncodeHuffmanState* pState) {
        if (p - pDst == *pDstCurrPos && n == static_cast<uint32_t>(pState->bitCount)) return;
        storeBytes();
        pState->bitBuffer = static_cast<uint32_t>(acc << (24 - n));
        pState->bitCount = static_cast<int32_t>(n);
        *pDstCurrPos = static_cast<int32_t>(p - pDst);
    }
};

// Codes (table words) and value bits (up to 16), through the state one
// write at a time, or through the fast writer. Both refuse a code length
// outside 1 to 16 and a count of 0, with nothing written.
struct HuffExactBits {
    Vqc8u* dst;
    int32_t len;
    int32_t* pPos;
    VqciEncodeHuffmanState* st;
    VqcStatus code(uint32_t word) { return ownHuffWriteCode(word, dst, len, pPos, st); }
    VqcStatus bits(uint32_t v, uint32_t n) { return ownHuffWriteBits(v, static_cast<int32_t>(n), dst, len, pPos, st); }
};
struct HuffFastBits {
    HuffFastWriter w;
    VqcStatus code(uint32_t word) { return bits(word & 0xFFFF, (word >> 16) - 1 < 16 ? word >> 16 : 0); }
    VqcStatus bits(uint32_t v, uint32_t n) {
        if (n == 0) return vqcStatusBadHuffmanTable;
        w.put(v & lowMask(n), n);
        return vqcStatusOk;
    }
};

// The block coders one write at a time, which the fast paths must match.
VqcStatus ownHuffEncodeBlockExact(const Vqc16s* pSrc, Vqc8u* pDst, int32_t dstLenBytes, int32_t* pDstCurrPos,
                                  Vqc16s* lastDC, const VqciEncodeHuffmanSpec* dcTable,
                                  const VqciEncodeHuffmanSpec* acTable, VqciEncodeHuffmanState* pState);
void ownHuffEncodeBlockDirectExact(const Vqc16s* pSrc, Vqc8u* pDst, int32_t* pDstBitsLen, Vqc16s* lastDC,
                                   const VqciEncodeHuffmanSpec* dcTable, const VqciEncodeHuffmanSpec* acTable);

// ---- reader ---------------------------------------------------------------

// The symbol of an l-bit code in the long-code search; kHuffNoMatch when
// the code lies beyond the last of its length (or the length has none, its
// 0xFFFF reading as none), kHuffBadIndex when the list overfills a length
// and so points outside its values.
inline constexpr int32_t kHuffNoMatch = -1, kHuffBadIndex = -2;
inline int32_t ownHuffMatch(const VqciDecodeHuffmanSpec* t, uint32_t l, uint32_t code) {
    const uint32_t maxc = t->maxCode[l];
    if (maxc == 0xFFFF || code > maxc) return kHuffNoMatch;
    const uint32_t idx = t->valPtr[l] - static_cast<uint32_t>(t->minCode[l]) + code;
    return idx > 255 ? kHuffBadIndex : t->huffVal[idx];
}

// The reader's fields held in locals for the length of one call; load from
// and store to the caller's state and position around the work.
struct HuffReader {
    const Vqc8u* src;
    int32_t len;
    int32_t pos;
    int32_t* marker;
    uint32_t acc;
    int32_t cnt;

    HuffReader(const Vqc8u* s, int32_t n, const int32_t* pPos, int32_t* pMarker, const VqciDecodeHuffmanState* st)
        : src(s), len(n), pos(*pPos), marker(pMarker), acc(static_cast<uint32_t>(st->bitBuffer)), cnt(st->bitCount) {}

    void store(int32_t* pPos, VqciDecodeHuffmanState* st) const {
        *pPos = pos;
        st->bitBuffer = acc;
        st->bitCount = cnt;
    }

    bool atEnd() const { return static_cast<uint32_t>(pos) >= static_cast<uint32_t>(len); }

    // Tops the count up to at least 25. Ok when `need` bits are at hand, or
    // when a marker stopped the fetch (the caller sees it in *marker).
    VqcStatus fill(int32_t need) {
        if (*marker != 0) return need > cnt ? vqcStatusBadHuffmanCode : vqcStatusOk;
        while (cnt < 25) {
            if (atEnd()) return need > cnt ? vqcStatusOutOfBuffer : vqcStatusOk;
            // Whole bytes at once when the next ones hold no 0xFF.
            if (cnt >= 0 && len - pos >= 4) {
                const uint32_t nb = static_cast<uint32_t>(32 - cnt) >> 3;
                uint32_t w;
                std::memcpy(&w, src + pos, 4);
                w = __builtin_bswap32(w);
                if (!hasByteFF(w, 0xFFFFFFFFu << (32 - 8 * nb))) {
                    acc = static_cast<uint32_t>((static_cast<uint64_t>(acc) << (8 * nb)) | (w >> (32 - 8 * nb)));
                    cnt += static_cast<int32_t>(8 * nb);
                    pos += static_cast<int32_t>(nb);
                    return vqcStatusOk;
                }
            }
            uint32_t b = src[pos++];
            if (b == 0xFF) {
                for (;;) {
                    if (atEnd()) return vqcStatusOutOfBuffer;
                    const uint32_t next = src[pos++];
                    if (next == 0) break;
                    if (next == 0xFF) continue;  // fill byte
                    *marker = static_cast<int32_t>(next);
                    return vqcStatusOk;
                }
            }
            acc = (acc << 8) | b;
            cnt += 8;
        }
        return vqcStatusOk;
    }

    // The next n bits (n up to 16). After a marker the count may be short;
    // the value is then meaningless but the shift stays defined.
    uint32_t peek(uint32_t n) const { return (acc >> ((cnt - static_cast<int32_t>(n)) & 31)) & lowMask(n); }
    uint32_t take(uint32_t n) {
        const uint32_t v = peek(n);
        cnt -= n;
        return v;
    }

    // s value bits, with a fill if they are not at hand, extended.
    VqcStatus receive(uint32_t s, int32_t* v) {
        if (cnt < static_cast<int32_t>(s)) {
            if (VqcStatus st = fill(static_cast<int32_t>(s))) return st;
        }
        *v = extendValue(take(s), s);
        return vqcStatusOk;
    }

    // Codes longer than the 8-bit lookahead, or any code when fewer than 8
    // bits remain: one bit at a time against the last code of each length.
    VqcStatus decodeSlow(const VqciDecodeHuffmanSpec* t, uint32_t l, uint32_t* sym) {
        if (cnt < static_cast<int32_t>(l)) {
            if (VqcStatus st = fill(static_cast<int32_t>(l)); st < 0) return st;
        }
        uint32_t code = take(l);
        for (;;) {
            const uint32_t maxc = t->maxCode[l];
            if (maxc != 0xFFFF && code <= maxc) {
                // Only lists that overfill a length can point outside them.
                const uint32_t idx = t->valPtr[l] - static_cast<uint32_t>(t->minCode[l]) + code;
                if (idx > 255) break;
                *sym = t->huffVal[idx];
                return vqcStatusOk;
            }
            if (cnt < 1) {
                if (VqcStatus st = fill(1); st < 0) return st;
            }
            code = (code << 1) | take(1);
            if (++l > 16) break;
        }
        *sym = 0;
        return vqcStatusBadHuffmanCode;
    }

    VqcStatus decode(const VqciDecodeHuffmanSpec* t, uint32_t* sym) {
        if (cnt < 8) {
            if (VqcStatus st = fill(0); st < 0) return st;
            if (cnt < 8) return decodeSlow(t, 1, sym);
        }
        const uint32_t e = t->fastLookup[(acc >> (cnt - 8)) & 0xFF];
        if (e >> 16) {
            cnt -= static_cast<int32_t>(e >> 16);
            *sym = e & 0xFFFF;
            return vqcStatusOk;
        }
        return decodeSlow(t, 9, sym);
    }
};

// The fast reader's tables, side by side so that one base reaches them all.
// fetched: bits that the exact reader fetches before a step that needs n
// bits (up to 16) with c bits at hand (up to 32): none from n on, else a
// byte at a time up to 25 or more, which is floor((32 - c) / 8) bytes.
// negative: 1 - 2^s, added to s value bits whose top bit is clear.
// zigzag: ownZigzag again.
struct HuffFastTables {
    uint8_t fetched[17][64];
    uint32_t negative[16];
    uint8_t zigzag[80];
};
constexpr HuffFastTables makeHuffFastTables() {
    HuffFastTables t{};
    for (int n = 0; n <= 16; ++n)
        for (int c = 0; c < n; ++c) t.fetched[n][c] = static_cast<uint8_t>((32 - c) & ~7);
    for (uint32_t s = 0; s < 16; ++s) t.negative[s] = 1u - (1u << s);
    for (int k = 0; k < 80; ++k) t.zigzag[k] = ownZigzag[k];
    return t;
}
inline constexpr HuffFastTables ownHuffFast = makeHuffFastTables();

// The fast reader, for stretches of plain bytes. The exact reader above
// fetches only when its count is below what the next step needs (8 before a
// lookup; 9 before a long code, then 1 before each further bit; s before s
// value bits), and then a byte at a time up to 25 or more. Its count thus
// follows from the bits taken and those trigger points alone, whatever the
// bytes; `cnt` replays it (need()). The 64-bit buffer meanwhile holds `bits`
// loaded bits, up to eight bytes a load, and every bit taken lowers both
// counts.
//
// Each step (a symbol and its value, at most 16 + 15 bits) begins with at
// least 48 bits loaded. A replayed fetch inside it comes after at most 16 of
// them and leaves cnt at most 32, so bits >= cnt holds throughout: the exact
// reader never fetches a byte that was not loaded here. Only bytes other
// than 0xFF are loaded, so those it fetched are the source's next ones, one
// for one. Between steps it therefore stands (bits - cnt) / 8 bytes behind
// the loads, with count cnt and, as register, the last four bytes it
// fetched, read back from the source. What the fast reader cannot do (a
// 0xFF or the end ahead, no code within 16 bits) it leaves to the exact one
// from such a point, where the two agree.
//
// Direct: the reader of the Direct block decoder, which has no length. It
// loads byte by byte, each only after the one before it proved not to be
// 0xFF, so nothing past the closing marker is read; its exact reader fetches
// for a long code once, below 16 bits.
template <bool Direct>
struct HuffFastReader {
    const Vqc8u* next;  // the next byte to load
    const Vqc8u* last;  // the last place an 8-byte load may start (not Direct)
    uint64_t buf;       // unread bits from the top; below them bytes from next on, or zeros
    int32_t bits;       // unread bits loaded, 0 to 63
    uint32_t cnt;       // the exact reader's count, 0 to 32, never above bits

    // Not Direct: at least 8 bytes from pos to len. count from 0 to 32.
    HuffFastReader(const Vqc8u* src, int32_t len, uint32_t pos, uint32_t acc, int32_t count)
        : next(src + pos),
          last(Direct ? src : src + (len - 8)),
          buf((uint64_t{acc} << 32) << (32 - count)),
          bits(count),
          cnt(static_cast<uint32_t>(count)) {}

    // Loads what fits; true when a step can begin, with at least 48 bits.
    bool refill() {
        uint64_t w = 0;
        if constexpr (Direct) {
            // Two bytes cover most steps; two more when they do not.
            for (int i = 0; i < 2; ++i) {
                uint32_t n = 0;
                for (w = 0; n < 2; ++n) {
                    const uint64_t c = next[n];
                    if (c == 0xFF) break;
                    w |= c << (56 - 8 * n);
                }
                if (load(w, n)) return true;
                if (n < 2) return false;
            }
            return false;
        } else {
            if (next > last) return bits >= 48;
            std::memcpy(&w, next, 8);
            w = __builtin_bswap64(w);
            // Any 0xFF among the eight (a borrow runs only from a real one):
            // the bytes before the first.
            if (ownZeroByteFlags(~w) != 0) {
                const uint64_t x = ~w, lo7 = 0x7F7F7F7F7F7F7F7Fu;
                return load(w, static_cast<uint32_t>(__builtin_clzll(~(((x & lo7) + lo7) | x) & ~lo7)) >> 3);
            }
            // Bytes past the ones taken land below the unread bits as they
            // stand in the source, so a later load writes the same bits there.
            buf |= w >> bits;
            next += static_cast<uint32_t>(63 - bits) >> 3;
            bits |= 56;
            return true;
        }
    }
    // Up to n bytes from the top of w, as many as fit.
    bool load(uint64_t w, uint32_t n) {
        const uint32_t fit = static_cast<uint32_t>(63 - bits) >> 3, k = n < fit ? n : fit;
        buf |= w >> bits;
        next += k;
        bits += static_cast<int32_t>(8 * k);
        return bits >= 48;
    }

    // The exact reader's fetch before a step that needs n bits, from a
    // table: whether it fetches is as good as random, so a branch would miss.
    void need(uint32_t n) { cnt += ownHuffFast.fetched[n][cnt]; }
    void skip(uint32_t n) {
        buf <<= n;
        bits -= static_cast<int32_t>(n);
        cnt -= n;
    }
    // n from 1 to 16.
    uint32_t take(uint32_t n) {
        const uint32_t v = static_cast<uint32_t>(buf >> (64 - n));
        skip(n);
        return v;
    }
    // Skips the len bits of a code, then takes s value bits (1 to 15),
    // extended: a clear top bit makes the value negative.
    int32_t value(uint32_t len, uint32_t s) {
        cnt -= len;
        need(s);
        cnt -= s;
        const uint64_t v = buf << len;
        buf <<= len + s;
        bits -= static_cast<int32_t>(len + s);
        // Masked rather than chosen: the sign is random, a branch would miss.
        const uint32_t negative = static_cast<uint32_t>(v >> 63) - 1;
        return static_cast<int32_t>(static_cast<uint32_t>(v >> (64 - s)) + (ownHuffFast.negative[s] & negative));
    }

    // A symbol; false, with the state as at the start of the symbol's
    // decode, when no code of up to 16 bits matches.
    bool decode(const VqciDecodeHuffmanSpec* t, uint32_t* sym) {
        need(8);
        const uint32_t e = t->fastLookup[buf >> 56], l8 = e >> 16;
        if (l8 - 1 < 8) {
            skip(l8);
            *sym = e & 0xFFFF;
            return true;
        }
        // A length above 8 comes from no table that Init builds.
        return l8 == 0 && decodeLong(t, sym);
    }
    bool decodeLong(const VqciDecodeHuffmanSpec* t, uint32_t* sym) {
        const uint64_t buf0 = buf;
        const int32_t bits0 = bits;
        const uint32_t cnt0 = cnt;
        need(Direct ? 16 : 9);
        uint32_t l = 9, code = take(9);
        for (;;) {
            if (const int32_t m = ownHuffMatch(t, l, code); m != kHuffNoMatch) {
                if (m < 0) break;
                *sym = static_cast<uint32_t>(m);
                return true;
            }
            if (++l > 16) break;
            if (!Direct) need(1);
            code = (code << 1) | take(1);
        }
        buf = buf0, bits = bits0, cnt = cnt0;
        return false;
    }

    // Where the exact reader stands.
    uint32_t pos(const Vqc8u* src) const {
        return static_cast<uint32_t>(next - src) - (static_cast<uint32_t>(bits) - cnt) / 8;
    }
    // Its register: the last four bytes it fetched, after those of the
    // register it started with.
    static uint32_t acc(const Vqc8u* src, uint32_t pos0, uint32_t acc0, uint32_t pos) {
        if (pos < 4) {
            uint64_t a = acc0;
            for (uint32_t i = pos0; i < pos; ++i) a = (a << 8) | src[i];
            return static_cast<uint32_t>(a);
        }
        uint32_t w;
        std::memcpy(&w, src + pos - 4, 4);
        const uint32_t n = pos - pos0 < 4 ? 8 * (pos - pos0) : 32;
        return static_cast<uint32_t>((uint64_t{acc0} << n) | (__builtin_bswap32(w) & ((uint64_t{1} << n) - 1)));
    }
};

// Runs steps(fast reader) when the exact reader's state allows it (no
// marker met, a count of at most 32, eight bytes left) and hands the state
// back; true when the steps finished the work.
template <class Steps>
inline bool ownHuffFastSteps(HuffReader& r, Steps&& steps) {
    if (*r.marker != 0 || r.pos < 0 || r.pos > r.len - 8 || static_cast<uint32_t>(r.cnt) > 32) return false;
    const uint32_t pos0 = static_cast<uint32_t>(r.pos);
    HuffFastReader<false> f(r.src, r.len, pos0, r.acc, r.cnt);
    const bool done = steps(f);
    r.pos = static_cast<int32_t>(f.pos(r.src));
    r.cnt = static_cast<int32_t>(f.cnt);
    r.acc = HuffFastReader<false>::acc(r.src, pos0, r.acc, static_cast<uint32_t>(r.pos));
    return done;
}

// The block decoders, with the fast reader or with the exact one alone.
VqcStatus ownHuffDecode8x8(const Vqc8u* pSrc, int32_t srcLenBytes, int32_t* pSrcCurrPos, Vqc16s* pDst,
                           Vqc16s* lastDC, int32_t* pMarker, const VqciDecodeHuffmanSpec* dcTable,
                           const VqciDecodeHuffmanSpec* acTable, VqciDecodeHuffmanState* pState, bool fast);
VqcStatus ownHuffDecode8x8Direct(const Vqc8u* pSrc, int32_t* pSrcBitsLen, Vqc16s* pDst, Vqc16s* lastDC,
                                 int32_t* pMarker, uint32_t* prefetchedBits, int32_t* prefetchedCount,
                                 const VqciDecodeHuffmanSpec* dcTable, const VqciDecodeHuffmanSpec* acTable,
                                 bool fast);

// A single difference: symbol 0 is 0, 1 to 15 take that many value bits,
// 16 and above are -32768 (category 16) without value bits.
inline VqcStatus ownHuffDecodeDifference(HuffReader& r, const VqciDecodeHuffmanSpec* table, int32_t* v) {
    uint32_t sym;
    if (VqcStatus st = r.decode(table, &sym)) return st;
    if (sym == 0 || sym >= 16) {
        *v = sym == 0 ? 0 : -32768;
        return vqcStatusOk;
    }
    return r.receive(sym, v);
}

// Tops up the state's bits; see HuffReader::fill.
inline VqcStatus ownHuffFillBits(const Vqc8u* pSrc, int32_t srcLenBytes, int32_t* pSrcCurrPos, int32_t* pMarker,
                                 int32_t nbits, VqciDecodeHuffmanState* pState) {
    HuffReader r(pSrc, srcLenBytes, pSrcCurrPos, pMarker, pState);
    const VqcStatus st = r.fill(nbits);
    r.store(pSrcCurrPos, pState);
    return st;
}

// One symbol; 0 with -63 when no code of up to 16 bits matches.
inline VqcStatus ownHuffDecodeSymbol(const Vqc8u* pSrc, int32_t srcLenBytes, int32_t* pSrcCurrPos, int32_t* pMarker,
                                     uint32_t* pSymbol, const VqciDecodeHuffmanSpec* table,
                                     VqciDecodeHuffmanState* pState) {
    HuffReader r(pSrc, srcLenBytes, pSrcCurrPos, pMarker, pState);
    const VqcStatus st = r.decode(table, pSymbol);
    r.store(pSrcCurrPos, pState);
    return st;
}

// Moves code lengths above 16 up to 16 (bits[l]: codes of length l);
// -64 when that cannot be done.
VqcStatus ownHuffLimitLengths(uint8_t bits[33]);

// The Free of every table and state: null -8, else released.
VqcStatus ownHuffFree(void* p);

}  // namespace vqcj
