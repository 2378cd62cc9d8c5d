// Baseline Huffman decoding of 8x8 blocks and single values, and the
// Direct block decoder that keeps its bits in the caller's variables.
#include "frame/check.h"
#include "frame/memory.h"
#include "frame/wrap.h"
#include "huff.h"

namespace vqcj {

namespace {

// Direct reader: no length, bounded by the markers in the stream, so bytes
// are fetched one at a time and never beyond a marker.
struct DirectReader {
    const Vqc8u* src;
    uint32_t pos;
    int32_t* marker;
    uint32_t bits;
    int32_t count;

    void fetch() {
        while (*marker == 0 && count < 25) {
            uint32_t b = src[pos++];
            if (b == 0xFF) {
                uint32_t next;
                while ((next = src[pos++]) == 0xFF) {
                }
                if (next != 0) {
                    *marker = static_cast<int32_t>(next);
                    return;
                }
            }
            bits = (bits << 8) | b;
            count += 8;
        }
    }
    uint32_t take(uint32_t n) {
        const uint32_t v = (bits >> ((count - static_cast<int32_t>(n)) & 31)) & lowMask(n);
        count -= static_cast<int32_t>(n);
        return v;
    }

    static constexpr int32_t kEndOfData = -256;
    static constexpr int32_t kTooLong = -1;

    // A symbol, kEndOfData when the bits run out, kTooLong past 16 bits.
    int32_t symbol(const VqciDecodeHuffmanSpec* t) {
        if (count < 8) fetch();
        if (count <= 0) return kEndOfData;
        // After a marker the last bits are looked up left-aligned.
        const uint32_t idx = count >= 8 ? (bits >> (count - 8)) & 0xFF : (bits << (8 - count)) & 0xFF;
        const uint32_t e = t->fastLookup[idx];
        if (const int32_t len = static_cast<int32_t>(e >> 16); len != 0) {
            if (len > count) return kEndOfData;
            count -= len;
            return static_cast<int32_t>(e & 0xFFFF);
        }
        // Long codes may need more than the bits at hand.
        if (count < 16) fetch();
        if (count < 9) return kEndOfData;
        uint32_t l = 9, code = take(9);
        for (;;) {
            const uint32_t maxc = t->maxCode[l];
            if (maxc != 0xFFFF && code <= maxc) {
                const uint32_t i = t->valPtr[l] - static_cast<uint32_t>(t->minCode[l]) + code;
                return i > 255 ? kTooLong : t->huffVal[i];
            }
            if (++l > 16) return kTooLong;
            if (count < 1) return kEndOfData;
            code = (code << 1) | take(1);
        }
    }

    // s value bits, extended; false when none at all can be had. A short
    // supply after a marker is padded with zeros.
    bool value(uint32_t s, int32_t* v) {
        if (count < static_cast<int32_t>(s)) fetch();
        uint32_t raw;
        if (count >= static_cast<int32_t>(s)) {
            raw = take(s);
        } else {
            if (count < 1) return false;
            raw = (bits & lowMask(static_cast<uint32_t>(count))) << (s - static_cast<uint32_t>(count));
            count = 0;
        }
        *v = extendValue(raw, s);
        return true;
    }
};

}  // namespace

}  // namespace vqcj

using namespace vqcj;

extern "C" {

VQCJ_API VqcStatus vqciDecodeHuffmanStateGetBufSize_JPEG_8u(int32_t* size) {
    if (size == nullptr) return vqcStatusNullPtr;
    *size = sizeof(VqciDecodeHuffmanState);
    return vqcStatusOk;
}

// Clears the fields, not the padding behind them.
static void initDecodeState(VqciDecodeHuffmanState* p) {
    p->bitBuffer = 0;
    p->bitCount = 0;
    p->eobRun = 0;
    p->coefCount = 0;
}

VQCJ_API VqcStatus vqciDecodeHuffmanStateInit_JPEG_8u(VqciDecodeHuffmanState* pState) {
    if (pState == nullptr) return vqcStatusNullPtr;
    initDecodeState(pState);
    return vqcStatusOk;
}

VQCJ_API VqcStatus vqciDecodeHuffmanStateInitAlloc_JPEG_8u(VqciDecodeHuffmanState** pState) {
    if (pState == nullptr) return vqcStatusNullPtr;
    auto* p = static_cast<VqciDecodeHuffmanState*>(ownMalloc(sizeof(VqciDecodeHuffmanState)));
    if (p == nullptr) return vqcStatusNullPtr;
    initDecodeState(p);
    *pState = p;
    return vqcStatusOk;
}

VQCJ_API VqcStatus vqciDecodeHuffmanStateFree_JPEG_8u(VqciDecodeHuffmanState* pState) { return ownHuffFree(pState); }

VQCJ_API VqcStatus vqciDecodeHuffman8x8_JPEG_1u16s_C1(const Vqc8u* pSrc, int32_t srcLenBytes, int32_t* pSrcCurrPos,
                                                       Vqc16s* pDst, Vqc16s* lastDC, int32_t* pMarker,
                                                       const VqciDecodeHuffmanSpec* dcTable,
                                                       const VqciDecodeHuffmanSpec* acTable,
                                                       VqciDecodeHuffmanState* pState) {
    if (VqcStatus st = Check()
                           .ptr(pSrc)
                           .fail(srcLenBytes < 0, vqcStatusBadArg)
                           .ptr(pSrcCurrPos)
                           .ptr(pDst)
                           .ptr(lastDC)
                           .ptr(pMarker)
                           .ptr(dcTable)
                           .ptr(acTable)
                           .ptr(pState))
        return st;
    std::memset(pDst, 0, 64 * sizeof(Vqc16s));
    HuffReader r(pSrc, srcLenBytes, pSrcCurrPos, pMarker, pState);
    uint32_t sym;
    VqcStatus st = r.decode(dcTable, &sym);
    if (st == vqcStatusOk && (sym & 15) != 0) {
        const uint32_t s = sym & 15;
        if (r.cnt < static_cast<int32_t>(s)) st = r.fill(static_cast<int32_t>(s));
        if (st == vqcStatusOk) *lastDC = static_cast<Vqc16s>(*lastDC + extendValue(r.take(s), s));
    }
    if (st != vqcStatusOk) {
        r.store(pSrcCurrPos, pState);
        pState->coefCount = 0;
        return st;
    }
    pDst[0] = *lastDC;

    // k + remaining stays 64, so k is at most 63 before a run of up to 15.
    int32_t remaining = 63;
    uint32_t k = 1;
    for (;;) {
        if ((st = r.decode(acTable, &sym)) != vqcStatusOk) break;
        const uint32_t run = sym >> 4, s = sym & 15;
        if (s == 0) {
            if (run < 15) break;
            k += 16;
            remaining -= 16;
        } else {
            k += run;
            remaining -= static_cast<int32_t>(run) + 1;
            if (r.cnt < static_cast<int32_t>(s) && (st = r.fill(static_cast<int32_t>(s))) != vqcStatusOk) break;
            const uint32_t bits = r.take(s);
            const uint32_t idx = ownZigzag[k++];
            if (idx > 63) {
                r.store(pSrcCurrPos, pState);
                return vqcStatusBadScanIndex;
            }
            pDst[idx] = static_cast<Vqc16s>(extendValue(bits, s));
        }
        if (remaining < 1) break;
    }
    r.store(pSrcCurrPos, pState);
    pState->coefCount = 64 - remaining;
    return st;
}

VQCJ_API VqcStatus vqciDecodeHuffmanOne_JPEG_1u16s_C1(const Vqc8u* pSrc, int32_t srcLenBytes, int32_t* pSrcCurrPos,
                                                       Vqc16s* pDst, int32_t* pMarker,
                                                       const VqciDecodeHuffmanSpec* table,
                                                       VqciDecodeHuffmanState* pState) {
    if (VqcStatus st = Check()
                           .ptr(pSrc)
                           .size(srcLenBytes)
                           .ptr(pSrcCurrPos)
                           .ptr(pDst)
                           .ptr(pMarker)
                           .ptr(table)
                           .ptr(pState))
        return st;
    HuffReader r(pSrc, srcLenBytes, pSrcCurrPos, pMarker, pState);
    int32_t v;
    const VqcStatus st = ownHuffDecodeDifference(r, table, &v);
    if (st == vqcStatusOk) *pDst = static_cast<Vqc16s>(v);
    r.store(pSrcCurrPos, pState);
    return st;
}

VQCJ_API VqcStatus vqciDecodeHuffman8x8_Direct_JPEG_1u16s_C1(const Vqc8u* pSrc, int32_t* pSrcBitsLen, Vqc16s* pDst,
                                                              Vqc16s* lastDC, int32_t* pMarker,
                                                              uint32_t* prefetchedBits, int32_t* prefetchedCount,
                                                              const VqciDecodeHuffmanSpec* dcTable,
                                                              const VqciDecodeHuffmanSpec* acTable) {
    if (VqcStatus st = Check().ptr(pSrc).ptr(pSrcBitsLen)) return st;
    if (*pSrcBitsLen < 0) return vqcStatusBadArg;
    if (VqcStatus st = Check().ptr(pDst).ptr(lastDC).ptr(pMarker).ptr(prefetchedBits).ptr(prefetchedCount)) return st;
    if (*prefetchedCount < 0) return vqcStatusBadArg;
    if (VqcStatus st = Check().ptr(dcTable).ptr(acTable)) return st;

    std::memset(pDst, 0, 64 * sizeof(Vqc16s));
    DirectReader r{pSrc, static_cast<uint32_t>(*pSrcBitsLen) >> 3, pMarker, *prefetchedBits, *prefetchedCount};
    auto finish = [&](VqcStatus st) {
        *pSrcBitsLen = static_cast<int32_t>(r.pos * 8);
        *prefetchedBits = r.bits;
        *prefetchedCount = r.count;
        return st;
    };

    // Running out of data before the DC leaves the block not begun.
    const int32_t dcSym = r.symbol(dcTable);
    if (dcSym == DirectReader::kEndOfData) return vqcStatusOk;
    if (dcSym < 0) return finish(vqcStatusBadHuffmanCode);
    if (const uint32_t s = static_cast<uint32_t>(dcSym) & 15; s != 0) {
        int32_t diff;
        if (!r.value(s, &diff)) return finish(vqcStatusOutOfBuffer);
        *lastDC = static_cast<Vqc16s>(*lastDC + diff);
    }
    pDst[0] = *lastDC;

    for (uint32_t k = 1; k < 64;) {
        const int32_t sym = r.symbol(acTable);
        if (sym == DirectReader::kEndOfData) {
            r.count = 0;
            return finish(vqcStatusOk);
        }
        if (sym < 0) return finish(vqcStatusBadHuffmanCode);
        const uint32_t run = static_cast<uint32_t>(sym) >> 4, s = static_cast<uint32_t>(sym) & 15;
        if (s == 0) {
            if (run != 15) break;
            k += 16;
            continue;
        }
        k += run;
        int32_t v;
        if (!r.value(s, &v)) return finish(vqcStatusOutOfBuffer);
        pDst[ownZigzag[k]] = static_cast<Vqc16s>(v);
        ++k;
    }
    return finish(vqcStatusOk);
}

}  // extern "C"
