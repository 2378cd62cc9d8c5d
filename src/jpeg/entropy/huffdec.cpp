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
            if (const int32_t m = ownHuffMatch(t, l, code); m != kHuffNoMatch) return m < 0 ? kTooLong : m;
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

// The fast reader's steps of a block, for as long as it can take them. k
// is 0 while the DC is to be done, then the next zig-zag position; true
// when the block is complete.
template <bool Direct>
[[gnu::always_inline]] inline bool fastSteps(HuffFastReader<Direct>& f, Vqc16s* pDst, Vqc16s* lastDC,
                                             const VqciDecodeHuffmanSpec* dcTable,
                                             const VqciDecodeHuffmanSpec* acTable, uint32_t& k) {
    uint32_t sym;
    // A Direct load brings four bytes at most, so twice at the start.
    if (!(f.refill() || (Direct && f.refill())) || !f.decode(dcTable, &sym)) return false;
    if (const uint32_t s = sym & 15) *lastDC = static_cast<Vqc16s>(*lastDC + f.value(0, s));
    pDst[0] = *lastDC;
    k = 1;
    for (;;) {
        // A step leaves at least 17 bits, so the lookup need not wait for
        // the load.
        const uint32_t e = acTable->fastLookup[f.buf >> 56];
        if (!f.refill()) return false;
        f.need(8);
        uint32_t len = e >> 16;
        sym = e & 0xFFFF;
        if (len - 1 >= 8) {
            // A length above 8 comes from no table that Init builds.
            if (len != 0 || !f.decodeLong(acTable, &sym)) return false;
            len = 0;
        }
        if (const uint32_t s = sym & 15) {
            k += sym >> 4;
            pDst[ownHuffFast.zigzag[k++]] = static_cast<Vqc16s>(f.value(len, s));
        } else {
            // End of block; runs of 16 and above (no table of Init's has
            // them) end it in the Direct form and not in the other, as in
            // the exact steps.
            f.skip(len);
            if (Direct ? sym >> 4 != 15 : sym >> 4 < 15) return true;
            k += 16;
        }
        if (k > 63) return true;
    }
}

// Every entry lies inside the block, so the fast steps need no index test.
constexpr bool zigzagInBlock() {
    for (uint8_t i : ownZigzag)
        if (i > 63) return false;
    return true;
}
static_assert(zigzagInBlock());

// The exact reader's part of a stateful block, from zig-zag position k (0:
// from the DC).
[[gnu::noinline]] VqcStatus exactSteps(HuffReader& r, uint32_t k, Vqc16s* pDst, Vqc16s* lastDC,
                                       const VqciDecodeHuffmanSpec* dcTable, const VqciDecodeHuffmanSpec* acTable,
                                       int32_t* pSrcCurrPos, VqciDecodeHuffmanState* pState) {
    uint32_t sym;
    VqcStatus st = vqcStatusOk;
    if (k == 0) {
        st = r.decode(dcTable, &sym);
        if (st == vqcStatusOk && (sym & 15) != 0) {
            int32_t diff;
            if ((st = r.receive(sym & 15, &diff)) == vqcStatusOk) *lastDC = static_cast<Vqc16s>(*lastDC + diff);
        }
        if (st != vqcStatusOk) {
            r.store(pSrcCurrPos, pState);
            pState->coefCount = 0;
            return st;
        }
        pDst[0] = *lastDC;
        k = 1;
    }

    // k + remaining stays 64, so k is at most 63 before a run of up to 15.
    int32_t remaining = 64 - static_cast<int32_t>(k);
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
            int32_t v;
            if ((st = r.receive(s, &v)) != vqcStatusOk) break;
            const uint32_t idx = ownZigzag[k++];
            if (idx > 63) {
                r.store(pSrcCurrPos, pState);
                return vqcStatusBadScanIndex;
            }
            pDst[idx] = static_cast<Vqc16s>(v);
        }
        if (remaining < 1) break;
    }
    r.store(pSrcCurrPos, pState);
    pState->coefCount = 64 - remaining;
    return st;
}

template <bool Fast>
VqcStatus decode8x8(const Vqc8u* pSrc, int32_t srcLenBytes, int32_t* pSrcCurrPos, Vqc16s* pDst, Vqc16s* lastDC,
                    int32_t* pMarker, const VqciDecodeHuffmanSpec* dcTable, const VqciDecodeHuffmanSpec* acTable,
                    VqciDecodeHuffmanState* pState) {
    std::memset(pDst, 0, 64 * sizeof(Vqc16s));
    HuffReader r(pSrc, srcLenBytes, pSrcCurrPos, pMarker, pState);
    uint32_t k = 0;
    if (Fast && ownHuffFastSteps(r, [&](HuffFastReader<false>& f) {
            return fastSteps(f, pDst, lastDC, dcTable, acTable, k);
        })) {
        r.store(pSrcCurrPos, pState);
        pState->coefCount = static_cast<int32_t>(k);
        return vqcStatusOk;
    }
    return exactSteps(r, k, pDst, lastDC, dcTable, acTable, pSrcCurrPos, pState);
}

// The exact reader's part of a Direct block, from zig-zag position k.
[[gnu::noinline]] VqcStatus exactStepsDirect(DirectReader& r, uint32_t k, Vqc16s* pDst, Vqc16s* lastDC,
                                             const VqciDecodeHuffmanSpec* dcTable,
                                             const VqciDecodeHuffmanSpec* acTable, int32_t* pSrcBitsLen,
                                             uint32_t* prefetchedBits, int32_t* prefetchedCount) {
    auto finish = [&](VqcStatus st) {
        *pSrcBitsLen = static_cast<int32_t>(r.pos * 8);
        *prefetchedBits = r.bits;
        *prefetchedCount = r.count;
        return st;
    };
    if (k == 0) {
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
        k = 1;
    }
    while (k < 64) {
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

template <bool Fast>
VqcStatus decode8x8Direct(const Vqc8u* pSrc, int32_t* pSrcBitsLen, Vqc16s* pDst, Vqc16s* lastDC, int32_t* pMarker,
                          uint32_t* prefetchedBits, int32_t* prefetchedCount, const VqciDecodeHuffmanSpec* dcTable,
                          const VqciDecodeHuffmanSpec* acTable) {
    std::memset(pDst, 0, 64 * sizeof(Vqc16s));
    DirectReader r{pSrc, static_cast<uint32_t>(*pSrcBitsLen) >> 3, pMarker, *prefetchedBits, *prefetchedCount};
    uint32_t k = 0;
    if (Fast && *pMarker == 0 && static_cast<uint32_t>(r.count) <= 32) {
        const uint32_t pos0 = r.pos;
        HuffFastReader<true> f(pSrc, 0, pos0, r.bits, r.count);
        const bool done = fastSteps(f, pDst, lastDC, dcTable, acTable, k);
        r.pos = f.pos(pSrc);
        r.count = static_cast<int32_t>(f.cnt);
        r.bits = f.acc(pSrc, pos0, r.bits, r.pos);
        if (done) {
            *pSrcBitsLen = static_cast<int32_t>(r.pos * 8);
            *prefetchedBits = r.bits;
            *prefetchedCount = r.count;
            return vqcStatusOk;
        }
    }
    return exactStepsDirect(r, k, pDst, lastDC, dcTable, acTable, pSrcBitsLen, prefetchedBits, prefetchedCount);
}

}  // namespace

}  // namespace vqcj

using namespace vqcj;

VqcStatus vqcj::ownHuffDecode8x8(const Vqc8u* pSrc, int32_t srcLenBytes, int32_t* pSrcCurrPos, Vqc16s* pDst,
                                 Vqc16s* lastDC, int32_t* pMarker, const VqciDecodeHuffmanSpec* dcTable,
                                 const VqciDecodeHuffmanSpec* acTable, VqciDecodeHuffmanState* pState, bool fast) {
    return (fast ? decode8x8<true> : decode8x8<false>)(pSrc, srcLenBytes, pSrcCurrPos, pDst, lastDC, pMarker, dcTable,
                                                       acTable, pState);
}

VqcStatus vqcj::ownHuffDecode8x8Direct(const Vqc8u* pSrc, int32_t* pSrcBitsLen, Vqc16s* pDst, Vqc16s* lastDC,
                                       int32_t* pMarker, uint32_t* prefetchedBits, int32_t* prefetchedCount,
                                       const VqciDecodeHuffmanSpec* dcTable, const VqciDecodeHuffmanSpec* acTable,
                                       bool fast) {
    return (fast ? decode8x8Direct<true> : decode8x8Direct<false>)(pSrc, pSrcBitsLen, pDst, lastDC, pMarker,
                                                                   prefetchedBits, prefetchedCount, dcTable, acTable);
}

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
    return decode8x8<true>(pSrc, srcLenBytes, pSrcCurrPos, pDst, lastDC, pMarker, dcTable, acTable, pState);
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
    return decode8x8Direct<true>(pSrc, pSrcBitsLen, pDst, lastDC, pMarker, prefetchedBits, prefetchedCount, dcTable,
                                 acTable);
}

}  // extern "C"
