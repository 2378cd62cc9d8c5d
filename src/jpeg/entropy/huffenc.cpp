// Baseline Huffman encoding of 8x8 blocks and single values, the stateless
// Direct block encoder, and the histograms for optimal tables.
#include "frame/check.h"
#include "frame/memory.h"
#include "frame/wrap.h"
#include "huff.h"

namespace vqcj {

namespace {

// Room that no block can exceed: 16-bit code and 16 value bits for the DC
// and each of 63 coefficients, four 0xF0 runs and EOB is 2128 bits; doubled
// for stuffing and rounded up to the 4-byte stores.
constexpr int32_t kBlockRoom = 600;

// Writer through the state, one write per symbol and value: every failure
// point is exactly where the destination ends.
struct ExactSink {
    Vqc8u* dst;
    int32_t len;
    int32_t* pPos;
    VqciEncodeHuffmanState* st;
    VqcStatus code(uint32_t word) { return ownHuffWriteCode(word, dst, len, pPos, st); }
    VqcStatus bits(uint32_t v, uint32_t n) { return ownHuffWriteBits(v, static_cast<int32_t>(n), dst, len, pPos, st); }
    VqcStatus done(VqcStatus s) { return s; }
};

// Writer for a block that is known to fit: bits gather in a 64-bit word and
// leave four bytes at a time. It ends in the very state, bytes and position
// that the exact writer would have produced, including after a symbol
// without a code: the state's buffer then holds the last whole byte in
// bits 24-31 and the pending bits from bit 23 down.
struct FastSink {
    Vqc8u* dst;
    int32_t* pPos;
    VqciEncodeHuffmanState* st;
    int32_t pos;
    uint64_t acc;
    uint32_t n;
    uint32_t lastByte;

    FastSink(Vqc8u* d, int32_t* p, VqciEncodeHuffmanState* s) : dst(d), pPos(p), st(s), pos(*p) {
        const uint32_t buf = static_cast<uint32_t>(s->bitBuffer);
        n = static_cast<uint32_t>(s->bitCount);
        acc = (buf >> (24 - n)) & lowMask(n);
        lastByte = buf >> 24;
    }
    // Only states the exact writer could have left are taken over.
    static bool fits(const VqciEncodeHuffmanState* s) {
        const uint32_t c = static_cast<uint32_t>(s->bitCount);
        return c < 8 && (static_cast<uint32_t>(s->bitBuffer) & lowMask(24 - c)) == 0;
    }

    void byte(uint32_t b) {
        dst[pos++] = static_cast<Vqc8u>(b);
        if (b == 0xFF) dst[pos++] = 0;
    }
    void put(uint32_t v, uint32_t len) {
        acc = (acc << len) | v;
        n += len;
        if (n >= 32) flush32();
    }
    void flush32() {
        {
            n -= 32;
            const uint32_t w = static_cast<uint32_t>(acc >> n);
            if (!hasByteFF(w, 0xFFFFFFFFu)) {
                const uint32_t be = __builtin_bswap32(w);
                std::memcpy(dst + pos, &be, 4);
                pos += 4;
            } else {
                byte(w >> 24), byte((w >> 16) & 0xFF), byte((w >> 8) & 0xFF), byte(w & 0xFF);
            }
            lastByte = w & 0xFF;
        }
    }
    VqcStatus code(uint32_t word) {
        const uint32_t len = word >> 16;
        if (len - 1 > 15) return vqcStatusBadHuffmanTable;
        put(word & 0xFFFF, len);
        return vqcStatusOk;
    }
    VqcStatus bits(uint32_t v, uint32_t len) {
        put(v & lowMask(len), len);
        return vqcStatusOk;
    }
    // Code and value bits in one put: at most 32 bits.
    VqcStatus symbol(uint32_t word, int32_t v, uint32_t c) {
        const uint32_t len = word >> 16;
        if (len - 1 > 15) return vqcStatusBadHuffmanTable;
        const uint64_t bits = static_cast<uint64_t>(word & 0xFFFF) << c | (extraBits(v) & lowMask(c));
        acc = (acc << len << c) | bits;
        n += len + c;
        if (n >= 32) flush32();
        return vqcStatusOk;
    }
    VqcStatus done(VqcStatus s) {
        for (; n >= 8; n -= 8) {
            lastByte = static_cast<uint32_t>(acc >> (n - 8)) & 0xFF;
            byte(lastByte);
        }
        const uint32_t pending = static_cast<uint32_t>(acc) & lowMask(n);
        st->bitBuffer = lastByte << 24 | pending << (24 - n);
        st->bitCount = static_cast<int32_t>(n);
        *pPos = pos;
        return s;
    }
};

// Code and value bits of one coefficient.
inline VqcStatus putSymbol(ExactSink& out, uint32_t word, int32_t v, uint32_t c) {
    if (VqcStatus s = out.code(word)) return s;
    return c != 0 ? out.bits(extraBits(v), c) : vqcStatusOk;
}
inline VqcStatus putSymbol(FastSink& out, uint32_t word, int32_t v, uint32_t c) { return out.symbol(word, v, c); }

// One block. Category 16 after a run of 15 would index the word behind the
// 256-word table; it is a symbol without a code.
template <class Sink>
VqcStatus encodeBlock(Sink& out, const Vqc16s* pSrc, Vqc16s* lastDC, const VqciEncodeHuffmanSpec* dc,
                      const VqciEncodeHuffmanSpec* ac) {
    const int32_t diff = pSrc[0] - *lastDC;
    *lastDC = pSrc[0];
    const uint32_t dcCat = ownHuffCategory(static_cast<uint32_t>(diff < 0 ? -diff : diff));
    if (VqcStatus s = putSymbol(out, dc->codeWord[dcCat], diff, dcCat)) return out.done(s);
    uint32_t trailing = 0;
    const VqcStatus st = ownHuffWalkAC(pSrc, &trailing, [&](uint32_t r, int32_t v) -> VqcStatus {
        for (; r > 15; r -= 16)
            if (VqcStatus s = out.code(ac->codeWord[0xF0])) return s;
        const uint32_t c = ownHuffCategory(static_cast<uint32_t>(v < 0 ? -v : v));
        const uint32_t sym = r * 16 + c;
        return putSymbol(out, sym < 256 ? ac->codeWord[sym] : 0, v, c);
    });
    if (st != vqcStatusOk) return out.done(st);
    if (trailing > 0) return out.done(out.code(ac->codeWord[0]));
    return out.done(vqcStatusOk);
}

// Direct writer: a bit position into unbounded memory. Each write clears
// the rest of the byte it ends in, and one ending on a byte boundary clears
// the byte after it.
struct DirectSink {
    Vqc8u* dst;
    uint32_t pos;

    void bits(uint32_t value, uint32_t n) {
        uint32_t i = pos >> 3, free = 8 - (pos & 7);
        uint32_t b = dst[i] & (0xFF00u >> (8 - free)) & 0xFF;
        pos += n;
        if (n >= free) {
            do {
                n -= free;
                b |= (value >> n) & lowMask(free);
                dst[i++] = static_cast<Vqc8u>(b);
                if (b == 0xFF) {
                    dst[i++] = 0;
                    pos += 8;
                }
                free = 8;
                b = 0;
            } while (n >= 8);
        }
        b |= (value & lowMask(n)) << (free - n);
        dst[i] = static_cast<Vqc8u>(b);
    }
    // A symbol without a code writes nothing; its value bits still go out.
    void symbol(uint32_t word, int32_t v, uint32_t c) {
        const uint32_t len = word >> 16;
        if (len - 1 < 16) bits(word & 0xFFFF, len);
        if (c != 0) bits(extraBits(v), c);
    }
};

}  // namespace

}  // namespace vqcj

using namespace vqcj;

extern "C" {

VQCJ_API VqcStatus vqciEncodeHuffmanStateGetBufSize_JPEG_8u(int32_t* size) {
    if (size == nullptr) return vqcStatusNullPtr;
    *size = sizeof(VqciEncodeHuffmanState);
    return vqcStatusOk;
}

VQCJ_API VqcStatus vqciEncodeHuffmanStateInit_JPEG_8u(VqciEncodeHuffmanState* pState) {
    if (pState == nullptr) return vqcStatusNullPtr;
    ownHuffInitEncodeState(pState);
    return vqcStatusOk;
}

VQCJ_API VqcStatus vqciEncodeHuffmanStateInitAlloc_JPEG_8u(VqciEncodeHuffmanState** pState) {
    if (pState == nullptr) return vqcStatusNullPtr;
    auto* p = static_cast<VqciEncodeHuffmanState*>(ownMalloc(sizeof(VqciEncodeHuffmanState)));
    if (p == nullptr) return vqcStatusNullPtr;
    ownHuffInitEncodeState(p);
    *pState = p;
    return vqcStatusOk;
}

VQCJ_API VqcStatus vqciEncodeHuffmanStateFree_JPEG_8u(VqciEncodeHuffmanState* pState) { return ownHuffFree(pState); }

VQCJ_API VqcStatus vqciEncodeHuffman8x8_JPEG_16s1u_C1(const Vqc16s* pSrc, Vqc8u* pDst, int32_t dstLenBytes,
                                                       int32_t* pDstCurrPos, Vqc16s* lastDC,
                                                       const VqciEncodeHuffmanSpec* dcTable,
                                                       const VqciEncodeHuffmanSpec* acTable,
                                                       VqciEncodeHuffmanState* pState, int32_t flushState) {
    if (VqcStatus st = Check().ptr(pDst).size(dstLenBytes).ptr(pDstCurrPos).ptr(pState)) return st;
    if (flushState != 0) return ownHuffFlush(pDst, dstLenBytes, pDstCurrPos, pState);
    if (VqcStatus st = Check().ptr(pSrc).ptr(lastDC).ptr(dcTable).ptr(acTable)) return st;
    const int32_t pos = *pDstCurrPos;
    if (pos >= 0 && dstLenBytes - pos >= kBlockRoom && FastSink::fits(pState)) {
        FastSink out(pDst, pDstCurrPos, pState);
        return encodeBlock(out, pSrc, lastDC, dcTable, acTable);
    }
    ExactSink out{pDst, dstLenBytes, pDstCurrPos, pState};
    return encodeBlock(out, pSrc, lastDC, dcTable, acTable);
}

VQCJ_API VqcStatus vqciEncodeHuffmanOne_JPEG_16s1u_C1(const Vqc16s* pSrc, Vqc8u* pDst, int32_t dstLenBytes,
                                                       int32_t* pDstCurrPos, const VqciEncodeHuffmanSpec* table,
                                                       VqciEncodeHuffmanState* pState, int32_t flushState) {
    if (VqcStatus st = Check().ptr(pDst).size(dstLenBytes).ptr(pDstCurrPos).ptr(pState)) return st;
    if (flushState != 0) return ownHuffFlush(pDst, dstLenBytes, pDstCurrPos, pState);
    if (VqcStatus st = Check().ptr(pSrc).ptr(table)) return st;
    const int32_t v = *pSrc;
    const uint32_t c = ownHuffCategory(static_cast<uint32_t>(v < 0 ? -v : v));
    // Category 16 (-32768) is complete without value bits, as lossless JPEG has it.
    if (VqcStatus st = ownHuffWriteCode(table->codeWord[c], pDst, dstLenBytes, pDstCurrPos, pState)) return st;
    if (c == 0 || c >= 16) return vqcStatusOk;
    return ownHuffWriteBits(extraBits(v), static_cast<int32_t>(c), pDst, dstLenBytes, pDstCurrPos, pState);
}

VQCJ_API VqcStatus vqciEncodeHuffman8x8_Direct_JPEG_16s1u_C1(const Vqc16s* pSrc, Vqc8u* pDst, int32_t* pDstBitsLen,
                                                              Vqc16s* lastDC, const VqciEncodeHuffmanSpec* dcTable,
                                                              const VqciEncodeHuffmanSpec* acTable) {
    if (VqcStatus st = Check().ptr(pSrc).ptr(pDst).ptr(pDstBitsLen).ptr(lastDC).ptr(dcTable).ptr(acTable)) return st;
    DirectSink out{pDst, static_cast<uint32_t>(*pDstBitsLen)};
    const int32_t diff = pSrc[0] - *lastDC;
    *lastDC = pSrc[0];
    const uint32_t dcCat = ownHuffCategory(static_cast<uint32_t>(diff < 0 ? -diff : diff));
    out.symbol(dcTable->codeWord[dcCat], diff, dcCat);
    uint32_t trailing = 0;
    ownHuffWalkAC(pSrc, &trailing, [&](uint32_t r, int32_t v) {
        for (; r > 15; r -= 16) out.symbol(acTable->codeWord[0xF0], 0, 0);
        const uint32_t c = ownHuffCategory(static_cast<uint32_t>(v < 0 ? -v : v));
        const uint32_t sym = r * 16 + c;
        out.symbol(sym < 256 ? acTable->codeWord[sym] : 0, v, c);
        return vqcStatusOk;
    });
    if (trailing > 0) out.symbol(acTable->codeWord[0], 0, 0);
    *pDstBitsLen = static_cast<int32_t>(out.pos);
    return vqcStatusOk;
}

VQCJ_API VqcStatus vqciGetHuffmanStatistics8x8_JPEG_16s_C1(const Vqc16s* pSrc, Vqc32s* dcStatistics,
                                                            Vqc32s* acStatistics, Vqc16s* lastDC) {
    if (VqcStatus st = Check().ptr(pSrc).ptr(dcStatistics).ptr(acStatistics).ptr(lastDC)) return st;
    const int32_t diff = pSrc[0] - *lastDC;
    *lastDC = pSrc[0];
    const uint32_t dcCat = ownHuffCategory(static_cast<uint32_t>(diff < 0 ? -diff : diff));
    if (dcCat > 15) return vqcStatusBadHuffmanCode;
    dcStatistics[dcCat] = addW(dcStatistics[dcCat], 1);
    uint32_t trailing = 0;
    const VqcStatus st = ownHuffWalkAC(pSrc, &trailing, [&](uint32_t r, int32_t v) -> VqcStatus {
        acStatistics[0xF0] = addW(acStatistics[0xF0], static_cast<int32_t>(r / 16));
        const uint32_t c = ownHuffCategory(static_cast<uint32_t>(v < 0 ? -v : v));
        if (c > 14) return vqcStatusBadHuffmanCode;
        const uint32_t sym = (r & 15) * 16 + c;
        acStatistics[sym] = addW(acStatistics[sym], 1);
        return vqcStatusOk;
    });
    if (st != vqcStatusOk) return st;
    if (trailing > 0) acStatistics[0] = addW(acStatistics[0], 1);
    return vqcStatusOk;
}

VQCJ_API VqcStatus vqciGetHuffmanStatisticsOne_JPEG_16s_C1(const Vqc16s* pSrc, Vqc32s* statistics) {
    if (VqcStatus st = Check().ptr(pSrc).ptr(statistics)) return st;
    const int32_t v = *pSrc;
    const uint32_t c = ownHuffCategory(static_cast<uint32_t>(v < 0 ? -v : v));
    if (c > 16) return vqcStatusBadRange;
    statistics[c] = addW(statistics[c], 1);
    return vqcStatusOk;
}

}  // extern "C"
