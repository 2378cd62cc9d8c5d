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
// for stuffing.
constexpr int32_t kBlockRoom = 600;

uint32_t magnitude(int32_t v) { return static_cast<uint32_t>(v < 0 ? -v : v); }

// Writer through the state, one write per symbol and value: every failure
// point is exactly where the destination ends.
struct ExactSink : HuffExactBits {
    VqcStatus symbol(uint32_t word, int32_t v, uint32_t c) {
        if (VqcStatus s = code(word)) return s;
        return c != 0 ? bits(extraBits(v), c) : vqcStatusOk;
    }
};

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
    VqcStatus code(uint32_t word) { return symbol(word, 0, 0); }
    VqcStatus symbol(uint32_t word, int32_t v, uint32_t c) {
        const uint32_t len = word >> 16;
        if (len - 1 < 16) bits(word & 0xFFFF, len);
        if (c != 0) bits(extraBits(v), c);
        return vqcStatusOk;
    }
};

// One block, a write at a time. Category 16 after a run of 15 would index
// the word behind the 256-word table; it is a symbol without a code.
template <class Sink>
VqcStatus exactBlock(Sink& out, const Vqc16s* pSrc, Vqc16s* lastDC, const VqciEncodeHuffmanSpec* dc,
                     const VqciEncodeHuffmanSpec* ac) {
    const int32_t diff = pSrc[0] - *lastDC;
    *lastDC = pSrc[0];
    const uint32_t dcCat = ownHuffCategory(magnitude(diff));
    if (VqcStatus s = out.symbol(dc->codeWord[dcCat], diff, dcCat)) return s;
    uint32_t trailing = 0;
    const VqcStatus st = ownHuffWalkAC(pSrc, &trailing, [&](uint32_t r, int32_t v) -> VqcStatus {
        for (; r > 15; r -= 16)
            if (VqcStatus s = out.code(ac->codeWord[0xF0])) return s;
        const uint32_t c = ownHuffCategory(magnitude(v));
        const uint32_t sym = r * 16 + c;
        return out.symbol(sym < 256 ? ac->codeWord[sym] : 0, v, c);
    });
    if (st != vqcStatusOk) return st;
    return trailing > 0 ? out.code(ac->codeWord[0]) : vqcStatusOk;
}

// The fast path's tables in one place, so that one register reaches them:
// the low n bits for n from 0 to 32 (by table rather than by two shifts),
// the zig-zag order, and the category and value bits of -128 to 127, which
// are nearly all AC coefficients (by table rather than by arithmetic).
struct FastTables {
    uint64_t lowBits[33];
    uint8_t zigzag[64];
    uint8_t cat[256], bits[256];  // indexed by v + 128
};
constexpr FastTables makeFastTables() {
    FastTables t{};
    for (int n = 0; n <= 32; ++n) t.lowBits[n] = (uint64_t{1} << n) - 1;
    for (int k = 0; k < 64; ++k) t.zigzag[k] = ownZigzag[k];
    for (int v = -128; v < 128; ++v) {
        const int m = v < 0 ? -v : v;
        int c = 0;
        while (m >> c) ++c;
        t.cat[v + 128] = static_cast<uint8_t>(c);
        t.bits[v + 128] = static_cast<uint8_t>((v < 0 ? v - 1 : v) & ((1 << c) - 1));
    }
    return t;
}
constexpr FastTables kFast = makeFastTables();

// Code and value bits of one symbol in one write: the code shifted up by
// c and the value bits (below 2^c), masked to len + c bits so that only
// the code's own len bits stay. A symbol without a code stops the stateful
// coder; Direct writes its value bits alone.
template <bool kDirect>
inline bool fastSymbol(HuffFastWriter& w, uint32_t word, uint64_t bits, uint64_t c) {
    uint64_t len = word >> 16;
    if (len - 1 > 15) [[unlikely]] {
        if (!kDirect) return false;
        len = 0;
    }
    const uint64_t size = len + c;
    w.put((static_cast<uint64_t>(word) << c | bits) & kFast.lowBits[size], size);
    return true;
}

// Category and value bits of v by arithmetic.
inline void valueBits(int64_t v, uint64_t* c, uint64_t* bits) {
    const int64_t sign = v >> 63;
    const uint64_t m = static_cast<uint64_t>((v ^ sign) - sign);
    *c = (m != 0) + (63 ^ static_cast<uint64_t>(__builtin_clzll(m | 1)));
    *bits = static_cast<uint64_t>(v + sign) & kFast.lowBits[*c];
}

// The same block as exactBlock, for a destination with room for it.
template <bool kDirect>
inline VqcStatus fastWalk(HuffFastWriter& w, const Vqc16s* pSrc, Vqc16s* lastDC, const VqciEncodeHuffmanSpec* dc,
                          const VqciEncodeHuffmanSpec* ac) {
    const int32_t diff = pSrc[0] - *lastDC;
    *lastDC = pSrc[0];
    uint64_t c, bits;
    valueBits(diff, &c, &bits);
    if (!fastSymbol<kDirect>(w, dc->codeWord[c], bits, c)) return vqcStatusBadHuffmanTable;
    const uint32_t* words = ac->codeWord;
    uint64_t mask = ownHuffZigzagMask(pSrc) & ~uint64_t{1};
    uint64_t next = 1;  // the position after the last coefficient coded
    while (mask != 0) {
        const uint64_t k = static_cast<uint64_t>(__builtin_ctzll(mask));
        mask &= mask - 1;
        uint64_t r = k - next;
        next = k + 1;
        const int64_t v = pSrc[kFast.zigzag[k]];
        if (static_cast<uint64_t>(v + 128) < 256) [[likely]] {
            c = kFast.cat[v + 128];
            bits = kFast.bits[v + 128];
        } else {
            valueBits(v, &c, &bits);
        }
        uint32_t word;
        // Runs of 16 and more, and category 16 after 15 zeros, are rare.
        if (r * 16 + c < 256) [[likely]] {
            word = words[r * 16 + c];
        } else {
            for (; r > 15; r -= 16)
                if (!fastSymbol<kDirect>(w, words[0xF0], 0, 0)) return vqcStatusBadHuffmanTable;
            word = r * 16 + c < 256 ? words[r * 16 + c] : 0;
        }
        if (!fastSymbol<kDirect>(w, word, bits, c)) return vqcStatusBadHuffmanTable;
    }
    if (next < 64 && !fastSymbol<kDirect>(w, words[0], 0, 0)) return vqcStatusBadHuffmanTable;
    return vqcStatusOk;
}

// The stateful block through the fast writer, from and back to the state.
// Out of line with the writer in locals, so that it all stays in registers.
[[gnu::noinline]] VqcStatus fastBlock(const Vqc16s* pSrc, Vqc8u* pDst, int32_t* pDstCurrPos, Vqc16s* lastDC,
                                      const VqciEncodeHuffmanSpec* dc, const VqciEncodeHuffmanSpec* ac,
                                      VqciEncodeHuffmanState* pState) {
    HuffFastWriter w = HuffFastWriter::fromState(pDst, *pDstCurrPos, pState);
    const VqcStatus st = fastWalk<false>(w, pSrc, lastDC, dc, ac);
    w.toState(pDst, pDstCurrPos, pState);
    return st;
}

// Direct: a block that writes no bit touches nothing; any other clears the
// rest of the byte it ends in.
[[gnu::noinline]] void fastBlockDirect(const Vqc16s* pSrc, Vqc8u* pDst, int32_t* pDstBitsLen, Vqc16s* lastDC,
                                       const VqciEncodeHuffmanSpec* dc, const VqciEncodeHuffmanSpec* ac) {
    const uint32_t pos = static_cast<uint32_t>(*pDstBitsLen);
    Vqc8u* start = pDst + (pos >> 3);
    const uint32_t n0 = pos & 7;
    HuffFastWriter w{start, static_cast<uint64_t>(*start >> (8 - n0)), n0};
    fastWalk<true>(w, pSrc, lastDC, dc, ac);
    if (w.p != start || w.n != n0) {
        w.storeBytes();
        *w.p = static_cast<Vqc8u>(w.acc << (8 - w.n));
        *pDstBitsLen = static_cast<int32_t>(static_cast<uint32_t>(w.p - pDst) * 8 + w.n);
    }
}

// The checks in their order, the flush, and the exact writer for a
// destination near its end.
[[gnu::noinline]] VqcStatus slowBlock(const Vqc16s* pSrc, Vqc8u* pDst, int32_t dstLenBytes, int32_t* pDstCurrPos,
                                      Vqc16s* lastDC, const VqciEncodeHuffmanSpec* dcTable,
                                      const VqciEncodeHuffmanSpec* acTable, VqciEncodeHuffmanState* pState,
                                      int32_t flushState) {
    if (VqcStatus st = Check().ptr(pDst).size(dstLenBytes).ptr(pDstCurrPos).ptr(pState)) return st;
    if (flushState != 0) return ownHuffFlush(pDst, dstLenBytes, pDstCurrPos, pState);
    if (VqcStatus st = Check().ptr(pSrc).ptr(lastDC).ptr(dcTable).ptr(acTable)) return st;
    return ownHuffEncodeBlockExact(pSrc, pDst, dstLenBytes, pDstCurrPos, lastDC, dcTable, acTable, pState);
}

}  // namespace

VqcStatus ownHuffEncodeBlockExact(const Vqc16s* pSrc, Vqc8u* pDst, int32_t dstLenBytes, int32_t* pDstCurrPos,
                                  Vqc16s* lastDC, const VqciEncodeHuffmanSpec* dcTable,
                                  const VqciEncodeHuffmanSpec* acTable, VqciEncodeHuffmanState* pState) {
    ExactSink out{{pDst, dstLenBytes, pDstCurrPos, pState}};
    return exactBlock(out, pSrc, lastDC, dcTable, acTable);
}

void ownHuffEncodeBlockDirectExact(const Vqc16s* pSrc, Vqc8u* pDst, int32_t* pDstBitsLen, Vqc16s* lastDC,
                                   const VqciEncodeHuffmanSpec* dcTable, const VqciEncodeHuffmanSpec* acTable) {
    DirectSink out{pDst, static_cast<uint32_t>(*pDstBitsLen)};
    exactBlock(out, pSrc, lastDC, dcTable, acTable);
    *pDstBitsLen = static_cast<int32_t>(out.pos);
}

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
    // Every check passed and room for any block: the fast path.
    if (pDst && pDstCurrPos && pState && pSrc && lastDC && dcTable && acTable && flushState == 0 &&
        HuffFastWriter::fits(dstLenBytes, *pDstCurrPos, kBlockRoom, pState))
        return fastBlock(pSrc, pDst, pDstCurrPos, lastDC, dcTable, acTable, pState);
    return slowBlock(pSrc, pDst, dstLenBytes, pDstCurrPos, lastDC, dcTable, acTable, pState, flushState);
}

VQCJ_API VqcStatus vqciEncodeHuffmanOne_JPEG_16s1u_C1(const Vqc16s* pSrc, Vqc8u* pDst, int32_t dstLenBytes,
                                                       int32_t* pDstCurrPos, const VqciEncodeHuffmanSpec* table,
                                                       VqciEncodeHuffmanState* pState, int32_t flushState) {
    if (VqcStatus st = Check().ptr(pDst).size(dstLenBytes).ptr(pDstCurrPos).ptr(pState)) return st;
    if (flushState != 0) return ownHuffFlush(pDst, dstLenBytes, pDstCurrPos, pState);
    if (VqcStatus st = Check().ptr(pSrc).ptr(table)) return st;
    const int32_t v = *pSrc;
    const uint32_t c = ownHuffCategory(magnitude(v));
    // Category 16 (-32768) is complete without value bits, as lossless JPEG has it.
    if (VqcStatus st = ownHuffWriteCode(table->codeWord[c], pDst, dstLenBytes, pDstCurrPos, pState)) return st;
    if (c == 0 || c >= 16) return vqcStatusOk;
    return ownHuffWriteBits(extraBits(v), static_cast<int32_t>(c), pDst, dstLenBytes, pDstCurrPos, pState);
}

VQCJ_API VqcStatus vqciEncodeHuffman8x8_Direct_JPEG_16s1u_C1(const Vqc16s* pSrc, Vqc8u* pDst, int32_t* pDstBitsLen,
                                                              Vqc16s* lastDC, const VqciEncodeHuffmanSpec* dcTable,
                                                              const VqciEncodeHuffmanSpec* acTable) {
    if (VqcStatus st = Check().ptr(pSrc).ptr(pDst).ptr(pDstBitsLen).ptr(lastDC).ptr(dcTable).ptr(acTable)) return st;
    // Far below the end of the position's range, which the exact writer
    // would wrap around.
    if (static_cast<uint32_t>(*pDstBitsLen) < 0xFFFF0000u) {
        fastBlockDirect(pSrc, pDst, pDstBitsLen, lastDC, dcTable, acTable);
        return vqcStatusOk;
    }
    ownHuffEncodeBlockDirectExact(pSrc, pDst, pDstBitsLen, lastDC, dcTable, acTable);
    return vqcStatusOk;
}

VQCJ_API VqcStatus vqciGetHuffmanStatistics8x8_JPEG_16s_C1(const Vqc16s* pSrc, Vqc32s* dcStatistics,
                                                            Vqc32s* acStatistics, Vqc16s* lastDC) {
    if (VqcStatus st = Check().ptr(pSrc).ptr(dcStatistics).ptr(acStatistics).ptr(lastDC)) return st;
    const int32_t diff = pSrc[0] - *lastDC;
    *lastDC = pSrc[0];
    const uint32_t dcCat = ownHuffCategory(magnitude(diff));
    if (dcCat > 15) return vqcStatusBadHuffmanCode;
    dcStatistics[dcCat] = addW(dcStatistics[dcCat], 1);
    uint32_t trailing = 0;
    const VqcStatus st = ownHuffWalkAC(pSrc, &trailing, [&](uint32_t r, int32_t v) -> VqcStatus {
        acStatistics[0xF0] = addW(acStatistics[0xF0], static_cast<int32_t>(r / 16));
        const uint32_t c = ownHuffCategory(magnitude(v));
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
    const uint32_t c = ownHuffCategory(magnitude(v));
    if (c > 16) return vqcStatusBadRange;
    statistics[c] = addW(statistics[c], 1);
    return vqcStatusOk;
}

}  // extern "C"
