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

// The argument checks of both AC decoders, in their order.
VqcStatus checkAcDecode(const Vqc8u* pSrc, int32_t srcLenBytes, const int32_t* pSrcCurrPos, const Vqc16s* pDst,
                        const int32_t* pMarker, int32_t Ss, int32_t Se, int32_t Al, const void* acTable,
                        const void* pState) {
    return Check()
        .ptr(pSrc)
        .size(srcLenBytes)
        .ptr(pSrcCurrPos)
        .ptr(pDst)
        .ptr(pMarker)
        .fail(badScan(Ss, Se, Al), vqcStatusBadArg)
        .ptr(acTable)
        .ptr(pState);
}

// Bit k set for each non-zero coefficient at zig-zag position k of Ss..Se.
uint64_t bandMask(const Vqc16s* pSrc, int32_t Ss, int32_t Se) {
    return ownHuffZigzagMask(pSrc) & (~uint64_t{0} >> (63 - Se) >> Ss << Ss);
}

uint32_t magnitude(int32_t v) { return static_cast<uint32_t>(v < 0 ? -v : v); }

// Room that no AC block can exceed: up to 1024 correction bits, two EOB
// runs of 60 bits, 63 symbols of 17 bits and three 0xF0 codes in a
// refinement pass (fewer in a first pass) is 2263 bits; doubled for
// stuffing.
constexpr int32_t kBlockRoom = 640;

// The writer with its destination and table, for the passes' many small
// writes; Bits is HuffExactBits, or HuffFastBits where the room is known.
template <class Bits>
struct Writer {
    Bits out;
    VqciEncodeHuffmanState* st;
    const VqciEncodeHuffmanSpec* table;

    VqcStatus code(uint32_t sym) { return out.code(table->codeWord[sym]); }
    VqcStatus bits(uint32_t v, uint32_t n) { return out.bits(v, n); }

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

// Refinement magnitudes of the block in natural order, a mask of the
// band's non-zero ones in zig-zag order, and the last position of the band
// that becomes newly non-zero (0 when none). Natural order lets compilers
// work on vectors; the zig-zag order comes from the masks.
uint32_t refineMagnitudes(const Vqc16s* pSrc, int32_t Ss, int32_t Se, int32_t Al, uint16_t a[64], uint64_t* nonZero) {
    uint8_t nz[64], one[64];
    for (int i = 0; i < 64; ++i) {
        a[i] = static_cast<uint16_t>(magnitude(pSrc[i]) >> Al);
        nz[i] = a[i] != 0;
        one[i] = a[i] == 1;
    }
    const uint64_t band = ~uint64_t{0} >> (63 - Se) >> Ss << Ss;
    *nonZero = ownHuffZigzagBits(nz) & band;
    const uint64_t ones = ownHuffZigzagBits(one) & band;
    return ones != 0 ? 63 - static_cast<uint32_t>(__builtin_clzll(ones)) : 0;
}

// The AC refinement walk, shared by the encoder and its statistics pass so
// that both make the same decisions. Correction bits of earlier blocks (be)
// wait at the start of the buffer, this block's (br) behind them. The sink:
// pending(be) writes or counts the EOB run with the be bits that belong to
// it; zeroRuns(r, be, br) the runs of 16 zeros before a new coefficient,
// leaving r below 16; newBit(i, bit) keeps a correction bit; coefficient(r,
// positive, be, br) a newly non-zero coefficient with the br bits after it.
template <class Sink>
VqcStatus refineWalk(Sink& out, const Vqc16s* pSrc, int32_t Ss, int32_t Se, int32_t Al, VqciEncodeHuffmanState* st) {
    uint16_t a[64];
    uint64_t nonZero;
    const uint32_t lastNew = refineMagnitudes(pSrc, Ss, Se, Al, a, &nonZero);
    int32_t be = st->correctionCount, br = 0;
    // Zero positions only add to the run, so the walk visits the others.
    uint32_t r = 0, prev = static_cast<uint32_t>(Ss) - 1;
    for (; nonZero != 0; nonZero &= nonZero - 1) {
        const uint32_t k = static_cast<uint32_t>(__builtin_ctzll(nonZero));
        r += k - prev - 1;
        prev = k;
        const uint32_t t = a[ownZigzag[k]];
        // Runs of 16 zeros are coded only where a new coefficient follows;
        // others become part of the EOB run.
        if (r > 15 && k <= lastNew) {
            if (VqcStatus s = out.zeroRuns(r, be, br)) return s;
            be = br = 0;
        }
        if (t > 1) {
            out.newBit(be + br++, t & 1);
            continue;
        }
        if (VqcStatus s = out.coefficient(r, pSrc[ownZigzag[k]] >= 0, be, br)) return s;
        be = br = 0;
        r = 0;
    }
    r += static_cast<uint32_t>(Se) - prev;
    if (r < 1 && br < 1) {
        st->correctionCount = be;
        return vqcStatusOk;
    }
    ++st->eobRun;
    be += br;
    if (st->eobRun != kMaxEobRun && be < kCorrectionLimit) {
        st->correctionCount = be;
        return vqcStatusOk;
    }
    if (VqcStatus s = out.pending(be)) return s;
    st->correctionCount = 0;
    return vqcStatusOk;
}

template <class Bits>
struct RefineWriter {
    Writer<Bits>& w;
    uint8_t* buf;

    // On failure the bits still wait.
    VqcStatus pending(int32_t be) {
        VqcStatus s = w.emitEobRun();
        if (s == vqcStatusOk) s = w.corrections(buf, be);
        if (s != vqcStatusOk) w.st->correctionCount = be;
        return s;
    }
    // Failures after the pending bits leave none waiting.
    VqcStatus lost(VqcStatus s) {
        w.st->correctionCount = 0;
        return s;
    }
    VqcStatus zeroRuns(uint32_t& r, int32_t be, int32_t br) {
        for (; r > 15; r -= 16, be = br = 0) {
            if (VqcStatus s = pending(be)) return s;
            VqcStatus s = w.code(0xF0);
            if (s == vqcStatusOk) s = w.corrections(buf + be, br);
            if (s != vqcStatusOk) return lost(s);
        }
        return vqcStatusOk;
    }
    void newBit(int32_t i, uint32_t bit) { buf[i] = static_cast<uint8_t>(bit); }
    VqcStatus coefficient(uint32_t r, bool positive, int32_t be, int32_t br) {
        if (VqcStatus s = pending(be)) return s;
        VqcStatus s = w.code(r * 16 + 1);
        if (s == vqcStatusOk) s = w.bits(positive ? 1 : 0, 1);
        if (s == vqcStatusOk) s = w.corrections(buf + be, br);
        return s != vqcStatusOk ? lost(s) : s;
    }
};

struct RefineCounter {
    Vqc32s* stats;
    VqciEncodeHuffmanState* st;

    VqcStatus pending(int32_t) { return countEobRun(stats, st); }
    VqcStatus zeroRuns(uint32_t& r, int32_t, int32_t) {
        if (VqcStatus s = countEobRun(stats, st)) return s;
        stats[0xF0] = addW(stats[0xF0], static_cast<int32_t>(r / 16));
        r &= 15;
        return vqcStatusOk;
    }
    void newBit(int32_t, uint32_t) {}
    VqcStatus coefficient(uint32_t r, bool, int32_t, int32_t) {
        if (VqcStatus s = countEobRun(stats, st)) return s;
        stats[r * 16 + 1] = addW(stats[r * 16 + 1], 1);
        return vqcStatusOk;
    }
};

// Runs pass(writer) through the fast writer when the destination has room
// for any block, else through the exact one.
template <class Pass>
VqcStatus withWriter(Vqc8u* pDst, int32_t dstLenBytes, int32_t* pDstCurrPos, VqciEncodeHuffmanState* pState,
                     const VqciEncodeHuffmanSpec* table, Pass&& pass) {
    if (HuffFastWriter::fits(dstLenBytes, *pDstCurrPos, kBlockRoom, pState)) {
        Writer<HuffFastBits> w{{HuffFastWriter::fromState(pDst, *pDstCurrPos, pState)}, pState, table};
        const VqcStatus st = pass(w);
        w.out.w.toState(pDst, pDstCurrPos, pState);
        return st;
    }
    Writer<HuffExactBits> w{{pDst, dstLenBytes, pDstCurrPos, pState}, pState, table};
    return pass(w);
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
    Writer<HuffExactBits> w{{pDst, dstLenBytes, pDstCurrPos, pState}, pState, dcTable};
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
        int32_t diff;
        if ((st = r.receive(sym & 15, &diff)) == vqcStatusOk) *lastDC = static_cast<Vqc16s>(*lastDC + diff);
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
    if (flushState != 0) {
        Writer<HuffExactBits> w{{pDst, dstLenBytes, pDstCurrPos, pState}, pState, acTable};
        // Failures of the run and of the correction bits are dropped: the
        // status is that of the padding.
        if (w.emitEobRun() == vqcStatusOk) {
            const int32_t n = pState->correctionCount;
            if (n > 0 && n <= 1024) w.corrections(pState->correctionBits, n);
        }
        return ownHuffFlush(pDst, dstLenBytes, pDstCurrPos, pState);
    }
    if (VqcStatus st = Check().ptr(pSrc).fail(badScan(Ss, Se, Al), vqcStatusBadArg)) return st;
    return withWriter(pDst, dstLenBytes, pDstCurrPos, pState, acTable, [&](auto& w) -> VqcStatus {
        // Zeros, and coefficients that shift to zero, only add to the run.
        uint32_t r = 0, prev = static_cast<uint32_t>(Ss) - 1;
        for (uint64_t nz = bandMask(pSrc, Ss, Se); nz != 0; nz &= nz - 1) {
            const uint32_t k = static_cast<uint32_t>(__builtin_ctzll(nz));
            const int32_t v = pSrc[ownZigzag[k]];
            const uint32_t t = magnitude(v) >> Al;
            if (t == 0) continue;
            r += k - prev - 1;
            prev = k;
            if (VqcStatus st = w.emitEobRun()) return st;
            for (; r > 15; r -= 16)
                if (VqcStatus st = w.code(0xF0)) return st;
            const uint32_t n = ownHuffCategory(t);
            if (n > 11) return vqcStatusBadHuffmanCode;
            if (VqcStatus st = w.code(r * 16 + n)) return st;
            if (VqcStatus st = w.bits(v < 0 ? ~t : t, n)) return st;
            r = 0;
        }
        r += static_cast<uint32_t>(Se) - prev;
        if (r < 1) return vqcStatusOk;
        if (++pState->eobRun == kMaxEobRun) {
            if (VqcStatus st = w.code(0xE0); st != vqcStatusOk) return st;
            if (VqcStatus st = w.bits(kMaxEobRun, 14); st != vqcStatusOk) return st;
            pState->eobRun = 0;
        }
        return vqcStatusOk;
    });
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
    uint32_t r = 0, prev = static_cast<uint32_t>(Ss) - 1;
    for (uint64_t nz = bandMask(pSrc, Ss, Se); nz != 0; nz &= nz - 1) {
        const uint32_t k = static_cast<uint32_t>(__builtin_ctzll(nz));
        const uint32_t t = magnitude(pSrc[ownZigzag[k]]) >> Al;
        if (t == 0) continue;
        r += k - prev - 1;
        prev = k;
        if (VqcStatus st = countEobRun(acStatistics, pState)) return st;
        acStatistics[0xF0] = addW(acStatistics[0xF0], static_cast<int32_t>(r / 16));
        r &= 15;
        const uint32_t n = ownHuffCategory(t);
        if (n > 10) return vqcStatusBadHuffmanCode;
        acStatistics[r * 16 + n] = addW(acStatistics[r * 16 + n], 1);
        r = 0;
    }
    r += static_cast<uint32_t>(Se) - prev;
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
    if (VqcStatus st = checkAcDecode(pSrc, srcLenBytes, pSrcCurrPos, pDst, pMarker, Ss, Se, Al, acTable, pState))
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
        int32_t v;
        if ((st = rd.receive(s, &v)) != vqcStatusOk) break;
        pDst[ownZigzag[k]] = static_cast<Vqc16s>(shlW(v, Al));
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
    uint8_t* buf = pState->correctionBits;
    if (flushState != 0) {
        Writer<HuffExactBits> w{{pDst, dstLenBytes, pDstCurrPos, pState}, pState, acTable};
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
    return withWriter(pDst, dstLenBytes, pDstCurrPos, pState, acTable, [&](auto& w) {
        RefineWriter<decltype(w.out)> out{w, buf};
        return refineWalk(out, pSrc, Ss, Se, Al, pState);
    });
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
    RefineCounter out{acStatistics, pState};
    return refineWalk(out, pSrc, Ss, Se, Al, pState);
}

VQCJ_API VqcStatus vqciDecodeHuffman8x8_ACRefine_JPEG_1u16s_C1(const Vqc8u* pSrc, int32_t srcLenBytes,
                                                                int32_t* pSrcCurrPos, Vqc16s* pDst, int32_t* pMarker,
                                                                int32_t Ss, int32_t Se, int32_t Al,
                                                                const VqciDecodeHuffmanSpec* acTable,
                                                                VqciDecodeHuffmanState* pState) {
    if (VqcStatus st = checkAcDecode(pSrc, srcLenBytes, pSrcCurrPos, pDst, pMarker, Ss, Se, Al, acTable, pState))
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
        // Within a run every non-zero coefficient of the band takes a bit:
        // found through a mask, as most positions are zero.
        if (k <= se) {
            int16_t zz[64];
            uint64_t mask = ownHuffNonZeroMask(pDst, zz) >> k << k;
            if (se < 63) mask &= (uint64_t{2} << se) - 1;
            for (; mask != 0; mask &= mask - 1)
                if ((st = refine(pDst + ownZigzag[__builtin_ctzll(mask)])) != vqcStatusOk) goto done;
        }
        --pState->eobRun;
    }
done:
    rd.store(pSrcCurrPos, pState);
    return st;
}

}  // extern "C"
