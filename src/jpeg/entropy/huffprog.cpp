// Progressive Huffman coding of 8x8 blocks: DC first and refinement, AC
// first and refinement, each as encoder, decoder and (but DC refinement)
// statistics pass. The statistics passes walk exactly as their encoders, so
// that the symbols counted are the symbols later written.
#include "frame/check.h"
#include "frame/wrap.h"
#include "huff.h"

namespace vqcj {

namespace {

// Correction bits wait at most 937 after a block, and a block adds 63.
constexpr int32_t kCorrectionLimit = 938;
constexpr int32_t kMaxCorrectionCount = 1024 - 63;
constexpr int32_t kMaxEobRun = 32767;

bool badScan(int32_t Ss, int32_t Se, int32_t Al) { return Ss < 1 || Ss > 63 || Se < Ss || Se > 63 || Al < 0 || Al > 13; }

// floor(log2 n); 0 for 0.
uint32_t ownHuffLog2(uint32_t n) {
    return n < 256 ? ownCategory8.v[n] - (n != 0) : ownCategory8.v[(n >> 8) & 0xFF] + 7u;
}

uint32_t magnitude(int32_t v) { return static_cast<uint32_t>(v < 0 ? -v : v); }

// The writer with its destination, for the passes' many small writes.
struct Writer {
    Vqc8u* dst;
    int32_t len;
    int32_t* pPos;
    VqciEncodeHuffmanState* st;
    const VqciEncodeHuffmanSpec* table;

    VqcStatus code(uint32_t sym) { return ownHuffWriteCode(table->codeWord[sym], dst, len, pPos, st); }
    VqcStatus bits(uint32_t v, uint32_t n) { return ownHuffWriteBits(v, static_cast<int32_t>(n), dst, len, pPos, st); }

    // Buffered correction bits, up to 16 to a write.
    VqcStatus corrections(const uint8_t* b, int32_t n) {
        for (int32_t i = 0; i < n;) {
            const int32_t m = n - i < 16 ? n - i : 16;
            uint32_t v = 0;
            for (int32_t j = 0; j < m; ++j) v = v << 1 | (b[i + j] & 1u);
            if (VqcStatus s = bits(v, static_cast<uint32_t>(m))) return s;
            i += m;
        }
        return vqcStatusOk;
    }

    // The pending EOB run: symbol 0 for one block, else its category and
    // the bits below the top one.
    VqcStatus emitEobRun() {
        int32_t run = st->eobRun;
        if (run == 0) return vqcStatusOk;
        VqcStatus s;
        if (run == 1) {
            s = code(0);
        } else {
            if (run > kMaxEobRun) {
                if ((s = code(0xE0)) || (s = bits(static_cast<uint32_t>(run) & 0x3FFF, 14))) return s;
                st->eobRun = run -= kMaxEobRun;
            }
            const uint32_t c = ownHuffLog2(static_cast<uint32_t>(run));
            if (c >= 15) return vqcStatusBadHuffmanCode;
            if ((s = code(c * 16))) return s;
            s = bits(static_cast<uint32_t>(run), c);
        }
        if (s == vqcStatusOk) st->eobRun = 0;
        return s;
    }
};

// The statistics counterpart of emitEobRun.
VqcStatus countEobRun(Vqc32s* stats, VqciEncodeHuffmanState* st) {
    int32_t run = st->eobRun;
    if (run == 0) return vqcStatusOk;
    uint32_t sym = 0;
    if (run > 1) {
        if (run > kMaxEobRun) {
            stats[0xE0] = addW(stats[0xE0], 1);
            run -= kMaxEobRun;
        }
        const uint32_t c = ownHuffLog2(static_cast<uint32_t>(run));
        if (c >= 15) return vqcStatusBadHuffmanCode;
        sym = c * 16;
    }
    stats[sym] = addW(stats[sym], 1);
    st->eobRun = 0;
    return vqcStatusOk;
}

// Refinement magnitudes of the band and the last position that becomes
// newly non-zero (0 when none).
uint32_t refineMagnitudes(const Vqc16s* pSrc, int32_t Ss, int32_t Se, int32_t Al, uint32_t a[64]) {
    uint32_t lastNew = 0;
    for (int32_t k = Ss; k <= Se; ++k) {
        a[k] = magnitude(pSrc[ownZigzag[k]]) >> Al;
        if (a[k] == 1) lastNew = static_cast<uint32_t>(k);
    }
    return lastNew;
}

}  // namespace

}  // namespace vqcj

using namespace vqcj;

extern "C" {

// ---- DC ----------------------------------------------------------------------

VQCJ_API VqcStatus vqciEncodeHuffman8x8_DCFirst_JPEG_16s1u_C1(const Vqc16s* pSrc, Vqc8u* pDst, int32_t dstLenBytes,
                                                               int32_t* pDstCurrPos, Vqc16s* lastDC, int32_t Al,
                                                               const VqciEncodeHuffmanSpec* dcTable,
                                                               VqciEncodeHuffmanState* pState, int32_t flushState) {
    if (VqcStatus st = Check().ptr(pDst).size(dstLenBytes).ptr(pDstCurrPos).ptr(pState)) return st;
    if (flushState != 0) return ownHuffFlush(pDst, dstLenBytes, pDstCurrPos, pState);
    if (VqcStatus st = Check().ptr(pSrc).ptr(lastDC).fail(Al < 0 || Al > 13, vqcStatusBadArg).ptr(dcTable)) return st;
    const int32_t t = pSrc[0] >> Al;
    const int32_t diff = t - *lastDC;
    *lastDC = static_cast<Vqc16s>(t);
    const uint32_t c = ownHuffCategory(magnitude(diff));
    if (c > 11) return vqcStatusBadHuffmanCode;
    Writer w{pDst, dstLenBytes, pDstCurrPos, pState, dcTable};
    if (VqcStatus st = w.code(c); st != vqcStatusOk || c == 0) return st;
    return w.bits(extraBits(diff), c);
}

VQCJ_API VqcStatus vqciEncodeHuffman8x8_DCRefine_JPEG_16s1u_C1(const Vqc16s* pSrc, Vqc8u* pDst, int32_t dstLenBytes,
                                                                int32_t* pDstCurrPos, int32_t Al,
                                                                VqciEncodeHuffmanState* pState, int32_t flushState) {
    if (VqcStatus st = Check().ptr(pDst).size(dstLenBytes).ptr(pDstCurrPos).ptr(pState)) return st;
    if (flushState != 0) return ownHuffFlush(pDst, dstLenBytes, pDstCurrPos, pState);
    if (VqcStatus st = Check().ptr(pSrc).fail(Al < 0 || Al > 13, vqcStatusBadArg)) return st;
    return ownHuffWriteBits(static_cast<uint32_t>(pSrc[0] >> Al), 1, pDst, dstLenBytes, pDstCurrPos, pState);
}

VQCJ_API VqcStatus vqciGetHuffmanStatistics8x8_DCFirst_JPEG_16s_C1(const Vqc16s* pSrc, Vqc32s* dcStatistics,
                                                                    Vqc16s* lastDC, int32_t Al) {
    if (VqcStatus st = Check().ptr(pSrc).ptr(dcStatistics).ptr(lastDC).fail(Al < 0 || Al > 13, vqcStatusBadArg))
        return st;
    const int32_t t = pSrc[0] >> Al;
    const int32_t diff = t - *lastDC;
    *lastDC = static_cast<Vqc16s>(t);
    const uint32_t c = ownHuffCategory(magnitude(diff));
    if (c > 11) return vqcStatusBadHuffmanCode;
    dcStatistics[c] = addW(dcStatistics[c], 1);
    return vqcStatusOk;
}

VQCJ_API VqcStatus vqciDecodeHuffman8x8_DCFirst_JPEG_1u16s_C1(const Vqc8u* pSrc, int32_t srcLenBytes,
                                                               int32_t* pSrcCurrPos, Vqc16s* pDst, Vqc16s* lastDC,
                                                               int32_t* pMarker, int32_t Al,
                                                               const VqciDecodeHuffmanSpec* dcTable,
                                                               VqciDecodeHuffmanState* pState) {
    if (VqcStatus st = Check()
                           .ptr(pSrc)
                           .size(srcLenBytes)
                           .ptr(pSrcCurrPos)
                           .ptr(pDst)
                           .ptr(lastDC)
                           .ptr(pMarker)
                           .fail(Al < 0 || Al > 13, vqcStatusBadArg)
                           .ptr(dcTable)
                           .ptr(pState))
        return st;
    HuffReader r(pSrc, srcLenBytes, pSrcCurrPos, pMarker, pState);
    uint32_t sym;
    VqcStatus st = r.decode(dcTable, &sym);
    if (st == vqcStatusOk && sym != 0) {
        const uint32_t s = sym & 15;
        if (r.cnt < static_cast<int32_t>(s)) st = r.fill(static_cast<int32_t>(s));
        if (st == vqcStatusOk) *lastDC = static_cast<Vqc16s>(*lastDC + extendValue(r.take(s), s));
    }
    if (st == vqcStatusOk) pDst[0] = static_cast<Vqc16s>(shlW(*lastDC, Al));
    r.store(pSrcCurrPos, pState);
    return st;
}

VQCJ_API VqcStatus vqciDecodeHuffman8x8_DCRefine_JPEG_1u16s_C1(const Vqc8u* pSrc, int32_t srcLenBytes,
                                                                int32_t* pSrcCurrPos, Vqc16s* pDst, int32_t* pMarker,
                                                                int32_t Al, VqciDecodeHuffmanState* pState) {
    if (VqcStatus st = Check()
                           .ptr(pSrc)
                           .size(srcLenBytes)
                           .ptr(pSrcCurrPos)
                           .ptr(pDst)
                           .ptr(pMarker)
                           .fail(Al < 0 || Al > 13, vqcStatusBadArg)
                           .ptr(pState))
        return st;
    HuffReader r(pSrc, srcLenBytes, pSrcCurrPos, pMarker, pState);
    VqcStatus st = r.cnt < 1 ? r.fill(1) : vqcStatusOk;
    if (st == vqcStatusOk && r.take(1)) pDst[0] = static_cast<Vqc16s>(pDst[0] | (1 << Al));
    r.store(pSrcCurrPos, pState);
    return st;
}

// ---- AC first ----------------------------------------------------------------

VQCJ_API VqcStatus vqciEncodeHuffman8x8_ACFirst_JPEG_16s1u_C1(const Vqc16s* pSrc, Vqc8u* pDst, int32_t dstLenBytes,
                                                               int32_t* pDstCurrPos, int32_t Ss, int32_t Se,
                                                               int32_t Al, const VqciEncodeHuffmanSpec* acTable,
                                                               VqciEncodeHuffmanState* pState, int32_t flushState) {
    if (VqcStatus st = Check().ptr(pDst).size(dstLenBytes).ptr(pDstCurrPos).ptr(acTable).ptr(pState)) return st;
    Writer w{pDst, dstLenBytes, pDstCurrPos, pState, acTable};
    if (flushState != 0) {
        // Failures of the run and of the correction bits are dropped: the
        // status is that of the padding.
        if (w.emitEobRun() == vqcStatusOk) {
            const int32_t n = pState->correctionCount;
            if (n > 0 && n <= 1024) w.corrections(pState->correctionBits, n);
        }
        return ownHuffFlush(pDst, dstLenBytes, pDstCurrPos, pState);
    }
    if (VqcStatus st = Check().ptr(pSrc).fail(badScan(Ss, Se, Al), vqcStatusBadArg)) return st;
    uint32_t r = 0;
    for (int32_t k = Ss; k <= Se; ++k) {
        const int32_t v = pSrc[ownZigzag[k]];
        if (v == 0) {
            ++r;
            continue;
        }
        // A coefficient that shifts to zero joins the run like a zero.
        const uint32_t t = magnitude(v) >> Al;
        if (t == 0) {
            ++r;
            continue;
        }
        if (VqcStatus st = w.emitEobRun()) return st;
        for (; r > 15; r -= 16)
            if (VqcStatus st = w.code(0xF0)) return st;
        const uint32_t n = ownHuffCategory(t);
        if (n > 11) return vqcStatusBadHuffmanCode;
        if (VqcStatus st = w.code(r * 16 + n)) return st;
        if (VqcStatus st = w.bits(v < 0 ? ~t : t, n)) return st;
        r = 0;
    }
    if (r < 1) return vqcStatusOk;
    if (++pState->eobRun == kMaxEobRun) {
        if (VqcStatus st = w.code(0xE0); st != vqcStatusOk) return st;
        if (VqcStatus st = w.bits(kMaxEobRun, 14); st != vqcStatusOk) return st;
        pState->eobRun = 0;
    }
    return vqcStatusOk;
}

VQCJ_API VqcStatus vqciGetHuffmanStatistics8x8_ACFirst_JPEG_16s_C1(const Vqc16s* pSrc, Vqc32s* acStatistics,
                                                                    int32_t Ss, int32_t Se, int32_t Al,
                                                                    VqciEncodeHuffmanState* pState,
                                                                    int32_t flushState) {
    if (VqcStatus st = Check().ptr(acStatistics).ptr(pState)) return st;
    if (flushState != 0) {
        const VqcStatus st = countEobRun(acStatistics, pState);
        ownHuffInitEncodeState(pState);
        return st;
    }
    if (VqcStatus st = Check().ptr(pSrc).fail(badScan(Ss, Se, Al), vqcStatusBadArg)) return st;
    uint32_t r = 0;
    for (int32_t k = Ss; k <= Se; ++k) {
        const uint32_t t = magnitude(pSrc[ownZigzag[k]]) >> Al;
        if (t == 0) {
            ++r;
            continue;
        }
        if (VqcStatus st = countEobRun(acStatistics, pState)) return st;
        acStatistics[0xF0] = addW(acStatistics[0xF0], static_cast<int32_t>(r / 16));
        r &= 15;
        const uint32_t n = ownHuffCategory(t);
        if (n > 10) return vqcStatusBadHuffmanCode;
        acStatistics[r * 16 + n] = addW(acStatistics[r * 16 + n], 1);
        r = 0;
    }
    if (r >= 1 && ++pState->eobRun == kMaxEobRun) {
        acStatistics[0xE0] = addW(acStatistics[0xE0], 1);
        pState->eobRun = 0;
    }
    return vqcStatusOk;
}

VQCJ_API VqcStatus vqciDecodeHuffman8x8_ACFirst_JPEG_1u16s_C1(const Vqc8u* pSrc, int32_t srcLenBytes,
                                                               int32_t* pSrcCurrPos, Vqc16s* pDst, int32_t* pMarker,
                                                               int32_t Ss, int32_t Se, int32_t Al,
                                                               const VqciDecodeHuffmanSpec* acTable,
                                                               VqciDecodeHuffmanState* pState) {
    if (VqcStatus st = Check()
                           .ptr(pSrc)
                           .size(srcLenBytes)
                           .ptr(pSrcCurrPos)
                           .ptr(pDst)
                           .ptr(pMarker)
                           .fail(badScan(Ss, Se, Al), vqcStatusBadArg)
                           .ptr(acTable)
                           .ptr(pState))
        return st;
    if (pState->eobRun > 0) {
        --pState->eobRun;
        return vqcStatusOk;
    }
    HuffReader rd(pSrc, srcLenBytes, pSrcCurrPos, pMarker, pState);
    VqcStatus st = vqcStatusOk;
    // k stays below 64 at the top, so k + 15 stays inside the table.
    for (uint32_t k = static_cast<uint32_t>(Ss); k <= static_cast<uint32_t>(Se); ++k) {
        uint32_t sym;
        if ((st = rd.decode(acTable, &sym)) != vqcStatusOk) break;
        const uint32_t r = sym >> 4, s = sym & 15;
        if (s == 0) {
            if (r == 15) {
                k += 15;
                continue;
            }
            int32_t run = 1 << r;
            if (r != 0) {
                if (rd.cnt < static_cast<int32_t>(r) && (st = rd.fill(static_cast<int32_t>(r))) != vqcStatusOk) break;
                run += static_cast<int32_t>(rd.take(r));
            }
            pState->eobRun = run - 1;
            break;
        }
        k += r;
        if (rd.cnt < static_cast<int32_t>(s) && (st = rd.fill(static_cast<int32_t>(s))) != vqcStatusOk) break;
        pDst[ownZigzag[k]] = static_cast<Vqc16s>(shlW(extendValue(rd.take(s), s), Al));
    }
    rd.store(pSrcCurrPos, pState);
    return st;
}

// ---- AC refinement -----------------------------------------------------------

VQCJ_API VqcStatus vqciEncodeHuffman8x8_ACRefine_JPEG_16s1u_C1(const Vqc16s* pSrc, Vqc8u* pDst, int32_t dstLenBytes,
                                                                int32_t* pDstCurrPos, int32_t Ss, int32_t Se,
                                                                int32_t Al, const VqciEncodeHuffmanSpec* acTable,
                                                                VqciEncodeHuffmanState* pState, int32_t flushState) {
    if (VqcStatus st = Check().ptr(pDst).size(dstLenBytes).ptr(pDstCurrPos).ptr(acTable).ptr(pState)) return st;
    Writer w{pDst, dstLenBytes, pDstCurrPos, pState, acTable};
    uint8_t* buf = pState->correctionBits;
    if (flushState != 0) {
        // The first failure is kept, unless the padding fails too.
        VqcStatus first = w.emitEobRun();
        if (first == vqcStatusOk) {
            const int32_t n = pState->correctionCount;
            if (n > 0 && n <= 1024) first = w.corrections(buf, n);
        }
        const VqcStatus pad = ownHuffFlush(pDst, dstLenBytes, pDstCurrPos, pState);
        return pad != vqcStatusOk ? pad : first;
    }
    if (VqcStatus st = Check()
                           .ptr(pSrc)
                           .fail(badScan(Ss, Se, Al), vqcStatusBadArg)
                           .fail(static_cast<uint32_t>(pState->correctionCount) > kMaxCorrectionCount, vqcStatusBadArg))
        return st;
    uint32_t a[64];
    const uint32_t lastNew = refineMagnitudes(pSrc, Ss, Se, Al, a);
    int32_t be = pState->correctionCount, br = 0;
    uint32_t r = 0;
    // Writes the run and the correction bits that belong to it; on failure
    // the bits still wait.
    auto emitPending = [&]() -> VqcStatus {
        VqcStatus st = w.emitEobRun();
        if (st == vqcStatusOk) st = w.corrections(buf, be);
        if (st != vqcStatusOk) pState->correctionCount = be;
        return st;
    };
    for (int32_t k = Ss; k <= Se; ++k) {
        const uint32_t t = a[k];
        if (t == 0) {
            ++r;
            continue;
        }
        // Runs of 16 zeros are coded only where a new coefficient follows.
        while (r > 15 && static_cast<uint32_t>(k) <= lastNew) {
            if (VqcStatus st = emitPending()) return st;
            VqcStatus st = w.code(0xF0);
            if (st == vqcStatusOk) st = w.corrections(buf + be, br);
            if (st != vqcStatusOk) {
                pState->correctionCount = 0;
                return st;
            }
            r -= 16;
            be = br = 0;
        }
        if (t > 1) {
            buf[be + br++] = static_cast<uint8_t>(t & 1);
            continue;
        }
        if (VqcStatus st = emitPending()) return st;
        VqcStatus st = w.code(r * 16 + 1);
        if (st == vqcStatusOk) st = w.bits(pSrc[ownZigzag[k]] < 0 ? 0 : 1, 1);
        if (st == vqcStatusOk) st = w.corrections(buf + be, br);
        if (st != vqcStatusOk) {
            pState->correctionCount = 0;
            return st;
        }
        be = br = 0;
        r = 0;
    }
    if (r < 1 && br < 1) {
        pState->correctionCount = be;
        return vqcStatusOk;
    }
    ++pState->eobRun;
    be += br;
    if (pState->eobRun != kMaxEobRun && be < kCorrectionLimit) {
        pState->correctionCount = be;
        return vqcStatusOk;
    }
    if (VqcStatus st = emitPending()) return st;
    pState->correctionCount = 0;
    return vqcStatusOk;
}

VQCJ_API VqcStatus vqciGetHuffmanStatistics8x8_ACRefine_JPEG_16s_C1(const Vqc16s* pSrc, Vqc32s* acStatistics,
                                                                     int32_t Ss, int32_t Se, int32_t Al,
                                                                     VqciEncodeHuffmanState* pState,
                                                                     int32_t flushState) {
    if (VqcStatus st = Check().ptr(acStatistics).ptr(pState)) return st;
    if (flushState != 0) {
        const VqcStatus st = countEobRun(acStatistics, pState);
        ownHuffInitEncodeState(pState);
        return st;
    }
    if (VqcStatus st = Check().ptr(pSrc).fail(badScan(Ss, Se, Al), vqcStatusBadArg)) return st;
    uint32_t a[64];
    const uint32_t lastNew = refineMagnitudes(pSrc, Ss, Se, Al, a);
    int32_t be = pState->correctionCount, br = 0;
    uint32_t r = 0;
    for (int32_t k = Ss; k <= Se; ++k) {
        const uint32_t t = a[k];
        if (t == 0) {
            ++r;
            continue;
        }
        if (r > 15 && static_cast<uint32_t>(k) <= lastNew) {
            if (VqcStatus st = countEobRun(acStatistics, pState)) return st;
            acStatistics[0xF0] = addW(acStatistics[0xF0], static_cast<int32_t>(r / 16));
            r &= 15;
            be = br = 0;
        }
        if (t > 1) {
            ++br;
            continue;
        }
        if (VqcStatus st = countEobRun(acStatistics, pState)) return st;
        acStatistics[r * 16 + 1] = addW(acStatistics[r * 16 + 1], 1);
        be = br = 0;
        r = 0;
    }
    if (r < 1 && br < 1) {
        pState->correctionCount = be;
        return vqcStatusOk;
    }
    ++pState->eobRun;
    be += br;
    if (pState->eobRun != kMaxEobRun && be < kCorrectionLimit) {
        pState->correctionCount = be;
        return vqcStatusOk;
    }
    if (VqcStatus st = countEobRun(acStatistics, pState)) return st;
    pState->correctionCount = 0;
    return vqcStatusOk;
}

VQCJ_API VqcStatus vqciDecodeHuffman8x8_ACRefine_JPEG_1u16s_C1(const Vqc8u* pSrc, int32_t srcLenBytes,
                                                                int32_t* pSrcCurrPos, Vqc16s* pDst, int32_t* pMarker,
                                                                int32_t Ss, int32_t Se, int32_t Al,
                                                                const VqciDecodeHuffmanSpec* acTable,
                                                                VqciDecodeHuffmanState* pState) {
    if (VqcStatus st = Check()
                           .ptr(pSrc)
                           .size(srcLenBytes)
                           .ptr(pSrcCurrPos)
                           .ptr(pDst)
                           .ptr(pMarker)
                           .fail(badScan(Ss, Se, Al), vqcStatusBadArg)
                           .ptr(acTable)
                           .ptr(pState))
        return st;
    const int32_t p1 = 1 << Al, m1 = shlW(-1, Al);
    HuffReader rd(pSrc, srcLenBytes, pSrcCurrPos, pMarker, pState);
    VqcStatus st = vqcStatusOk;
    // One correction bit for a coefficient already non-zero; a set bit adds
    // p1 away from zero unless that bit is there already.
    auto refine = [&](Vqc16s* c) -> VqcStatus {
        if (rd.cnt < 1) {
            if (VqcStatus s = rd.fill(1)) return s;
        }
        if (rd.take(1) && (*c & p1) == 0) *c = static_cast<Vqc16s>(addW(*c, *c >= 0 ? p1 : m1));
        return vqcStatusOk;
    };
    uint32_t k = static_cast<uint32_t>(Ss);
    const uint32_t se = static_cast<uint32_t>(Se);
    if (pState->eobRun == 0) {
        while (k <= se) {
            uint32_t sym;
            if ((st = rd.decode(acTable, &sym)) != vqcStatusOk) goto done;
            int32_t r = static_cast<int32_t>(sym >> 4);
            int32_t value = 0;
            if ((sym & 15) != 0) {
                if (rd.cnt < 1 && (st = rd.fill(1)) != vqcStatusOk) goto done;
                value = rd.take(1) ? p1 : m1;
            } else if (r != 15) {
                int32_t run = 1 << r;
                if (r != 0) {
                    if (rd.cnt < r && (st = rd.fill(r)) != vqcStatusOk) goto done;
                    run += static_cast<int32_t>(rd.take(static_cast<uint32_t>(r)));
                }
                pState->eobRun = run;
                break;
            }
            // Pass r zero coefficients, refining the non-zero ones met; the
            // new value goes on the zero after them.
            for (; k <= se; ++k) {
                Vqc16s* c = pDst + ownZigzag[k];
                if (*c != 0) {
                    if ((st = refine(c)) != vqcStatusOk) goto done;
                } else if (--r < 0) {
                    break;
                }
            }
            if (value != 0) pDst[ownZigzag[k]] = static_cast<Vqc16s>(value);
            ++k;
        }
    }
    if (pState->eobRun > 0) {
        for (; k <= se; ++k) {
            Vqc16s* c = pDst + ownZigzag[k];
            if (*c != 0 && (st = refine(c)) != vqcStatusOk) goto done;
        }
        --pState->eobRun;
    }
done:
    rd.store(pSrcCurrPos, pState);
    return st;
}

}  // extern "C"
