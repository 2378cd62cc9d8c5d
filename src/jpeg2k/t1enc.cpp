// Tier-1 code-block encoder. Loading runs every coding pass over the flag
// buffer and only records decisions and contexts, two bytes per decision,
// with the distortion reduction per pass; storing runs the recorded
// decisions through the MQ coder or the raw packer, stopping wherever the
// caller's buffer is full and going on from there at the next call.
#include "frame/check.h"
#include "frame/memory.h"
#include "mqenc.h"
#include "t1common.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>

using namespace vqcj;
using namespace vqcj::t1;

namespace {

constexpr int kMaxPasses = 110;
constexpr int kMaxDistPasses = 109;

struct OwnT1Coder {
    uint8_t queue[kQueueSize];
    uint32_t qWrite, qRead;
    uint32_t B;
    int32_t first;
    uint32_t A, C;
    int32_t CT;
    uint8_t ctx[20];
    int32_t bytesOut;  // bytes committed to the queue for this code-block
    uint32_t rawByte;
    int32_t rawPos, rawAfterFF;
    int32_t emitPos;  // next decision of the pass being emitted
    int32_t mqTermType;
    uint8_t* decBuf;
    uint8_t* ctxBuf;
    int32_t nPasses, nTermPasses;
    int32_t passLen[kMaxPasses];    // decisions
    int32_t passStart[kMaxPasses + 1];
    int32_t passBytes[kMaxPasses];
    uint8_t passKind[kMaxPasses];   // 0 MQ, 1 raw
    int32_t passRate[kMaxPasses];   // cumulative
    int32_t emitPass;
    int32_t segFirst;    // first pass of the open segment
    int32_t delivered;   // bytes handed to the caller
    int32_t bytesAtPassEnd;
    int32_t firstUnchecked;  // first pass whose rate may still end in 0xFF
    uint8_t lastDelivered;
    int32_t reset, termAll;
};

}  // namespace

struct VqciEncodeState_JPEG2K {
    uint32_t tag;
    OwnT1Coder* coder;
    uint32_t dist[kMaxDistPasses];
    int32_t distExp[kMaxDistPasses];
    int32_t curExp;
    int32_t lossless, stopPlane;
    uint32_t* flags;
};

namespace {

// Distortion reduction, in units of the plane, indexed by the six bits
// below a newly significant bit or by the refined bit and the six below.
constexpr std::array<int32_t, 64> makeSigDist(bool lossless) {
    std::array<int32_t, 64> t{};
    for (int i = 0; i < 64; ++i) t[i] = lossless ? 2 * (64 + i) * (64 + i) : 6144 + 384 * i;
    return t;
}
constexpr std::array<int32_t, 128> makeRefDist(bool lossless) {
    std::array<int32_t, 128> t{};
    for (int i = 0; i < 128; ++i) {
        const int d = i - 64;
        t[i] = lossless ? 2 * d * d : 128 * (d < 0 ? -d : d) - 2048;
    }
    return t;
}
constexpr auto kSigDist = makeSigDist(false);
constexpr auto kSigDistLossless = makeSigDist(true);
constexpr auto kRefDist = makeRefDist(false);
constexpr auto kRefDistLossless = makeRefDist(true);

inline uint32_t load32(const uint8_t* p) {
    uint32_t v;
    std::memcpy(&v, p, 4);
    return v;
}

// The passes over one code-block, recording into the decision buffers.
struct PassRunner {
    const uint8_t* src;
    int32_t step, w, h;
    uint32_t* fl;  // word of rows 0 and 1, column 0
    int32_t fs;    // words per flag row
    uint8_t* dec;
    uint8_t* cx;
    uint32_t n;
    const uint8_t* zc;
    bool vc;
    int plane;
    uint32_t acc;
    const int32_t* sigD;
    const int32_t* refD;
    int shr, shl;

    void put(uint32_t d, uint32_t c) {
        dec[n] = static_cast<uint8_t>(d);
        cx[n] = static_cast<uint8_t>(c);
        ++n;
    }
    uint32_t distIndex(uint32_t x) const { return (x >> shr) << shl; }

    template <bool RAW>
    [[gnu::always_inline]] void becomeSignificant(uint32_t* p, int sh, uint32_t x, uint32_t f, int i) {
        const uint32_t neg = x >> 31;
        if (RAW) {
            put(neg, 0);
        } else {
            const uint32_t e = kSc[(f >> 4) & 511];
            put(neg ^ (e >> 31), e & 15);
        }
        markSignificant(p, fs, sh != 0, neg, vc && i == 0);
        acc += static_cast<uint32_t>(sigD[distIndex(x) & 63]);
    }

    template <bool RAW>
    void significance() {
        eachColumn(w, h, fl, fs, src, step, [&](uint32_t* p0, int rows, const uint8_t* q0) __attribute__((always_inline)) {
            if (!hasSigCandidate(p0[0], p0[fs])) return;
            eachRow(rows, 0, p0, fs, q0, step, [&](uint32_t* p, int sh, const uint8_t* q, int i) __attribute__((always_inline)) {
                const uint32_t f = *p >> sh;
                if ((f & (kSig | kNbr)) != kNbr) return;
                const uint32_t x = load32(q);
                const uint32_t v = (x >> plane) & 1;
                put(v, RAW ? 0 : zc[f & 0xFF]);
                *p |= kVisit << sh;
                if (v) becomeSignificant<RAW>(p, sh, x, f, i);
            });
        });
    }

    template <bool RAW>
    void refinement() {
        eachColumn(w, h, fl, fs, src, step, [&](uint32_t* p0, int rows, const uint8_t* q0) __attribute__((always_inline)) {
            if (!hasSignificant(p0[0], p0[fs])) return;
            eachRow(rows, 0, p0, fs, q0, step, [&](uint32_t* p, int sh, const uint8_t* q, int) __attribute__((always_inline)) {
                const uint32_t f = *p >> sh;
                if ((f & (kSig | kVisit)) != kSig) return;
                const uint32_t x = load32(q);
                put((x >> plane) & 1, RAW ? 0 : kMr[f & 511]);
                *p |= kRefined << sh;
                acc += static_cast<uint32_t>(refD[distIndex(x) & 127]);
            });
        });
    }

    void cleanup(bool segSym) {
        auto row = [&](uint32_t* p, int sh, const uint8_t* q, int i) __attribute__((always_inline)) {
            const uint32_t f = *p >> sh;
            if (f & (kSig | kVisit)) return;
            const uint32_t x = load32(q);
            const uint32_t v = (x >> plane) & 1;
            put(v, zc[f & 0xFF]);
            if (v) becomeSignificant<false>(p, sh, x, f, i);
        };
        const intptr_t st = step;
        eachColumn(w, h, fl, fs, src, step, [&](uint32_t* p0, int rows, const uint8_t* q) __attribute__((always_inline)) {
            if (rows == 4 && (p0[0] | p0[fs]) == 0) {
                // Run mode: one decision for four quiet coefficients.
                const uint32_t bits = ((load32(q) >> plane) & 1) | (((load32(q + st) >> plane) & 1) << 1) |
                                      (((load32(q + 2 * st) >> plane) & 1) << 2) |
                                      (((load32(q + 3 * st) >> plane) & 1) << 3);
                if (bits == 0) {
                    put(0, kCtxRun);
                    return;
                }
                const int r = std::countr_zero(bits);
                put(1, kCtxRun);
                put(static_cast<uint32_t>(r >> 1), kCtxUni);
                put(static_cast<uint32_t>(r & 1), kCtxUni);
                becomeSignificant<false>(p0 + (r >> 1) * fs, (r & 1) * 16, load32(q + r * st), 0, r);
                eachRow(rows, r + 1, p0, fs, q, step, row);
            } else {
                eachRow(rows, 0, p0, fs, q, step, row);
            }
            clearVisits(p0, fs);
        });
        if (segSym) {
            put(1, kCtxUni);
            put(0, kCtxUni);
            put(1, kCtxUni);
            put(0, kCtxUni);
        }
    }
};

void resetSegment(OwnT1Coder& k) {
    k.A = 0x8000;
    k.C = 0;
    k.CT = 12;
    k.B = 0;
    k.first = 1;
    k.rawByte = 0;
    k.rawPos = 7;
    k.rawAfterFF = 0;
}

// Keeps the registers of the coder in use, and counts what it queued.
void keepCoder(OwnT1Coder& k, const MqEnc& mq, const RawEnc& raw, bool isRaw) {
    const uint32_t qw = isRaw ? raw.qw : mq.qw;
    k.bytesOut += static_cast<int32_t>(qw - k.qWrite);
    k.qWrite = qw;
    if (isRaw) {
        k.rawByte = raw.byte;
        k.rawPos = raw.pos;
        k.rawAfterFF = raw.afterFF;
    } else {
        k.A = mq.A;
        k.C = mq.C;
        k.CT = mq.CT;
        k.B = mq.B;
        k.first = mq.first;
    }
}

// Closes the pass being emitted: termination at a segment's end, the pass's
// byte count and its rate, the optional context reset.
void finishPass(OwnT1Coder& k, MqEnc& mq, RawEnc& raw) {
    const int32_t pass = k.emitPass;
    const bool isRaw = k.passKind[pass] != 0;
    const bool segEnd = k.termAll || pass == k.nPasses - 1 || k.passKind[pass + 1] != k.passKind[pass];
    int32_t rate;
    if (segEnd) {
        if (isRaw) raw.flush();
        else mq.flush(k.mqTermType);
    }
    keepCoder(k, mq, raw, isRaw);
    if (segEnd) {
        rate = k.bytesOut;
        for (int32_t q = k.segFirst; q < pass; ++q) k.passRate[q] = std::min(k.passRate[q], rate);
        k.segFirst = pass + 1;
    } else if (isRaw) {
        rate = k.bytesOut + (raw.partial() ? 1 : 0);
    } else {
        // Enough bytes to carry every bit of C, with one to spare for the
        // bit lost after each 0xFF: a decoder reading ones past the end then
        // takes the same decisions as with the whole segment.
        rate = k.bytesOut + (mq.first ? 0 : 1) + (27 - mq.CT + 7) / 8 + 1;
    }
    if (pass > 0) rate = std::max(rate, k.passRate[pass - 1]);
    k.passRate[pass] = rate;
    k.passBytes[pass] = k.bytesOut - k.bytesAtPassEnd;
    k.bytesAtPassEnd = k.bytesOut;
    if (segEnd) resetSegment(k);
    if (k.reset) resetContexts(k.ctx);
    ++k.emitPass;
    k.emitPos = 0;
}

// Emits decisions of the current pass while fewer than `limit` bytes wait
// in the queue; finishes the pass when its decisions run out.
void emitSome(OwnT1Coder& k, uint32_t limit) {
    const int32_t pass = k.emitPass;
    const uint8_t* d = k.decBuf + k.passStart[pass];
    const uint8_t* cx = k.ctxBuf + k.passStart[pass];
    const int32_t end = k.passLen[pass];
    int32_t pos = k.emitPos;
    const uint32_t stop = k.qRead + limit;
    MqEnc mq{k.A, k.C, k.B, k.CT, k.first, k.queue, k.qWrite};
    RawEnc raw{k.rawByte, k.rawPos, k.rawAfterFF, k.queue, k.qWrite};
    if (k.passKind[pass] == 0) {
        uint8_t* ctx = k.ctx;
        while (pos < end && static_cast<int32_t>(mq.qw - stop) < 0) {
            mq.encode(ctx + cx[pos], d[pos]);
            ++pos;
        }
    } else {
        while (pos < end && static_cast<int32_t>(raw.qw - stop) < 0) raw.put(d[pos++]);
    }
    k.emitPos = pos;
    if (pos == end) finishPass(k, mq, raw);
    else keepCoder(k, mq, raw, k.passKind[pass] != 0);
}

void freeState(VqciEncodeState_JPEG2K* s) {
    if (s->coder) {
        if (s->coder->decBuf) ownFree(s->coder->decBuf);
        if (s->coder->ctxBuf) ownFree(s->coder->ctxBuf);
        ownFree(s->coder);
    }
    if (s->flags) ownFree(s->flags);
    ownFree(s);
}

VqcStatus checkQuery(const VqciEncodeState_JPEG2K* s, const void* result, int32_t n, bool segments) {
    if (VqcStatus st = Check().ptr(s).fail(s && s->tag != kTagEncode, vqcStatusBadContext).ptr(result))
        return st;
    const int32_t count = segments ? s->coder->nTermPasses : s->coder->nPasses;
    return (n < 0 || n >= count) ? vqcStatusJPEG2KBadPassNumber : vqcStatusOk;
}

}  // namespace

extern "C" {

VQCJ_API VqcStatus vqciEncodeInitAlloc_JPEG2K(VqciEncodeState_JPEG2K** ppState, VqciSize size) {
    if (VqcStatus st = Check().ptr(ppState).size(size.height).size(size.width)) return st;
    const int64_t w = size.width, h = size.height;
    const int64_t recBytes = w * 1090 * ((h + 3) / 4);
    const int64_t flagBytes = flagBufferBytes(size.width, size.height);
    *ppState = nullptr;
    if (recBytes > INT32_MAX || flagBytes > INT32_MAX || 4 * w + 40 > INT32_MAX) return vqcStatusNoMemory;
    auto* s = static_cast<VqciEncodeState_JPEG2K*>(ownMalloc(sizeof(VqciEncodeState_JPEG2K)));
    if (!s) return vqcStatusNoMemory;
    ownZeroBytes(s, sizeof(*s));
    s->coder = static_cast<OwnT1Coder*>(ownMalloc(sizeof(OwnT1Coder)));
    if (s->coder) {
        ownZeroBytes(s->coder, sizeof(OwnT1Coder));
        s->coder->decBuf = static_cast<uint8_t*>(ownMalloc(static_cast<int32_t>(recBytes)));
        s->coder->ctxBuf = static_cast<uint8_t*>(ownMalloc(static_cast<int32_t>(recBytes)));
    }
    s->flags = static_cast<uint32_t*>(ownMalloc(static_cast<int32_t>(flagBytes)));
    if (!s->coder || !s->coder->decBuf || !s->coder->ctxBuf || !s->flags) {
        freeState(s);
        return vqcStatusNoMemory;
    }
    s->tag = kTagEncode;
    *ppState = s;
    return vqcStatusOk;
}

VQCJ_API VqcStatus vqciEncodeFree_JPEG2K(VqciEncodeState_JPEG2K* pState) {
    if (!pState) return vqcStatusNullPtr;
    freeState(pState);
    return vqcStatusOk;
}

VQCJ_API VqcStatus vqciEncodeLoadCodeBlock_JPEG2K_32s_C1R(const Vqc32s* pSrc, int32_t srcStep, VqciSize size,
                                                           VqciEncodeState_JPEG2K* pState, int32_t subband,
                                                           int32_t magnBits, int32_t mqTermType,
                                                           int32_t /*mqRateAppr*/, int32_t codeStyleFlags,
                                                           int32_t* pSfBits, int32_t* pNOfPasses,
                                                           int32_t* pNOfTermPasses) {
    if (VqcStatus st = Check()
                           .ptr(pState)
                           .fail(pState && pState->tag != kTagEncode, vqcStatusBadContext)
                           .ptr(pSfBits)
                           .ptr(pNOfPasses)
                           .ptr(pNOfTermPasses)
                           .size(size.height)
                           .size(size.width)
                           .ptr(pSrc)
                           .step(srcStep))
        return st;
    OwnT1Coder& k = *pState->coder;
    const int32_t w = size.width, h = size.height;
    const int32_t fs = static_cast<int32_t>(flagStrideBytes(w) / 4);
    const int32_t rowsF = static_cast<int32_t>(flagRows(h));
    for (int32_t r = 0; r < rowsF; ++r) ownZeroBytes(pState->flags + r * fs, 4 * w + 8);

    // Coder reset.
    k.nPasses = 0;
    k.nTermPasses = 0;
    resetSegment(k);
    resetContexts(k.ctx);
    k.mqTermType = mqTermType;
    k.reset = (codeStyleFlags & kReset) != 0;
    k.termAll = (codeStyleFlags & kTermAll) != 0;
    k.qWrite = k.qRead = 0;
    k.bytesOut = k.delivered = k.bytesAtPassEnd = 0;
    k.emitPass = k.emitPos = k.segFirst = k.firstUnchecked = 0;
    k.passStart[0] = 0;

    const auto* src = reinterpret_cast<const uint8_t*>(pSrc);
    uint32_t any = 0;
    for (int32_t r = 0; r < h; ++r) {
        const uint8_t* row = src + static_cast<intptr_t>(r) * srcStep;
        for (int32_t c = 0; c < w; ++c) any |= load32(row + 4 * c);
    }
    any &= 0x7FFFFFFF;
    const int32_t numBits = any ? 32 - std::countl_zero(any) : 0;
    *pSfBits = numBits;
    // Planes below 0 hold nothing: magnBits above 31 codes down to plane 0;
    // a negative one leaves nothing to code.
    const int32_t stopPlane = magnBits >= 31 ? 0 : magnBits < 0 ? 32 : 31 - magnBits;
    const int32_t topPlane = numBits - 1;
    pState->stopPlane = stopPlane;
    pState->lossless = (codeStyleFlags & kLossless) != 0;
    pState->curExp = 2 * (topPlane - stopPlane) - 13;

    PassRunner pr{};
    pr.src = src;
    pr.step = srcStep;
    pr.w = w;
    pr.h = h;
    pr.fl = pState->flags + fs + 1;
    pr.fs = fs;
    pr.dec = k.decBuf;
    pr.cx = k.ctxBuf;
    pr.zc = zcTable(subband);
    pr.vc = (codeStyleFlags & kVCausal) != 0;
    const bool bypass = (codeStyleFlags & kBypass) != 0;
    const bool segSym = (codeStyleFlags & kSegSym) != 0;

    auto endPass = [&](uint8_t kind) {
        const int32_t np = k.nPasses;
        k.passLen[np] = static_cast<int32_t>(pr.n) - k.passStart[np];
        k.passStart[np + 1] = static_cast<int32_t>(pr.n);
        k.passKind[np] = kind;
        pState->dist[np] = pr.acc;
        pState->distExp[np] = pState->curExp;
        pr.acc = 0;
        k.nPasses = np + 1;
    };
    for (int32_t plane = topPlane; plane >= stopPlane; --plane) {
        pr.plane = plane;
        pr.shr = std::max(plane - 6, 0);
        pr.shl = std::max(6 - plane, 0);
        const bool ll = pState->lossless && plane == stopPlane;
        pr.sigD = ll ? kSigDistLossless.data() : kSigDist.data();
        pr.refD = ll ? kRefDistLossless.data() : kRefDist.data();
        if (plane != topPlane) {
            const bool raw = bypass && plane < numBits - 4;
            if (raw) pr.significance<true>();
            else pr.significance<false>();
            endPass(raw);
            if (raw) pr.refinement<true>();
            else pr.refinement<false>();
            endPass(raw);
        }
        pr.cleanup(segSym);
        endPass(0);
        pState->curExp -= 2;
    }

    int32_t segs = 1;
    for (int32_t p = 1; p < k.nPasses; ++p) segs += k.passKind[p] != k.passKind[p - 1];
    k.nTermPasses = k.termAll ? k.nPasses : segs;
    *pNOfPasses = k.nPasses;
    *pNOfTermPasses = k.nTermPasses;
    resetContexts(k.ctx);
    return vqcStatusOk;
}

VQCJ_API VqcStatus vqciEncodeStoreBits_JPEG2K_1u(Vqc8u* pDst, int32_t* pDstLen, VqciEncodeState_JPEG2K* pState,
                                                  int32_t* pIsNotFinish) {
    if (VqcStatus st = Check()
                           .ptr(pState)
                           .fail(pState && pState->tag != kTagEncode, vqcStatusBadContext)
                           .ptr(pDst)
                           .ptr(pDstLen)
                           .ptr(pIsNotFinish)
                           .fail(pDstLen && *pDstLen < 1, vqcStatusBadSize))
        return st;
    OwnT1Coder& k = *pState->coder;
    const int32_t cap = *pDstLen;
    const int32_t callStart = k.delivered;
    int32_t out = 0;
    for (;;) {
        while (k.qRead != k.qWrite && out < cap) pDst[out++] = k.queue[k.qRead++ & kQueueMask];
        if (out == cap || k.emitPass >= k.nPasses) break;
        emitSome(k, static_cast<uint32_t>(std::min<int32_t>(cap - out, kQueueSize - 8)));
    }
    const uint8_t prevLast = k.lastDelivered;
    k.delivered += out;
    if (out > 0) k.lastDelivered = pDst[out - 1];
    *pDstLen = out;
    *pIsNotFinish = (k.emitPass < k.nPasses || k.qRead != k.qWrite) ? 1 : 0;

    // A segment need not end in 0xFF: the decoder reads ones past its end.
    // Rates never fall from pass to pass, so the checked ones are a prefix.
    for (int32_t p = k.firstUnchecked; p < k.emitPass; ++p) {
        const int32_t r = k.passRate[p];
        if (r > k.delivered) break;
        if (r > callStart) {
            if (pDst[r - 1 - callStart] == 0xFF) k.passRate[p] = r - 1;
        } else if (r > 0 && r == callStart && prevLast == 0xFF) {
            k.passRate[p] = r - 1;  // its last byte came with an earlier call
        }
        k.firstUnchecked = p + 1;
    }
    return vqcStatusOk;
}

VQCJ_API VqcStatus vqciEncodeGetRate_JPEG2K(VqciEncodeState_JPEG2K* pState, int32_t passNumber, int32_t* pRate) {
    if (VqcStatus st = checkQuery(pState, pRate, passNumber, false)) return st;
    *pRate = pState->coder->passRate[passNumber];
    return vqcStatusOk;
}

VQCJ_API VqcStatus vqciEncodeGetDist_JPEG2K(VqciEncodeState_JPEG2K* pState, int32_t passNumber, double* pDist) {
    if (VqcStatus st = checkQuery(pState, pDist, passNumber, false)) return st;
    double sum = 0;
    for (int32_t p = 0; p <= passNumber; ++p) {
        const int32_t e = pState->distExp[p];
        const int32_t mag = e < 0 ? -e : e;
        double pw = static_cast<double>(static_cast<int32_t>(1u << (mag & 31)));
        if (e <= 0) pw = 1.0 / pw;
        sum += static_cast<double>(pState->dist[p]) * pw;
    }
    *pDist = sum;
    return vqcStatusOk;
}

VQCJ_API VqcStatus vqciEncodeGetTermPassLen_JPEG2K(VqciEncodeState_JPEG2K* pState, int32_t termPassNumber,
                                                   int32_t* pLength) {
    if (VqcStatus st = checkQuery(pState, pLength, termPassNumber, true))
        return st;
    const OwnT1Coder& k = *pState->coder;
    if (k.termAll) {
        *pLength = k.passBytes[termPassNumber];
        return vqcStatusOk;
    }
    int32_t seg = 0, len = 0;
    for (int32_t p = 0; p < k.nPasses; ++p) {
        if (p > 0 && k.passKind[p] != k.passKind[p - 1]) ++seg;
        if (seg == termPassNumber) len += k.passBytes[p];
    }
    *pLength = len;
    return vqcStatusOk;
}

}  // extern "C"
