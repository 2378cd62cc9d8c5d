// Tier-1 code-block decoder: the step-by-step state, one call per
// terminated segment, and the one-call form built on it. Reading past a
// segment's end yields ones, as the encoder's flushes assume, so no input
// makes the decoder read or write outside its buffers.
#include "frame/check.h"
#include "frame/memory.h"
#include "frame/wrap.h"
#include "t1common.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>

using namespace vqcj;
using namespace vqcj::t1;

// Pass kinds, in the order they come: the top plane's cleanup, then
// significance, refinement and cleanup on every lower plane.
enum : int32_t { kPassFirst = 0, kPassSig = 1, kPassRef = 2, kPassClean = 3 };

enum : int32_t {
    kKeepBitsOnError = 0x10000,
    kKeepDst = 0x20000,
    kNoClosing = 0x40000,
    kKeepFlags = 0x80000,
};

struct VqciDecodeCBProgrState_JPEG2K {
    uint32_t tag;
    int32_t attached;
    uint8_t* dst;
    int32_t dstStep, width, height, subband, flags;
    int32_t plane, bypassPlane, passCounter, passKind;
    uint32_t* flagBuf;  // 32-byte aligned, inside the record's memory
    int32_t flagStride;  // bytes
    const uint8_t* zc;
    uint32_t A;
    uint64_t C;
    int32_t CT;
    uint8_t ctx[20];
};

namespace {

constexpr int32_t kStateHeader = 388;
static_assert(sizeof(VqciDecodeCBProgrState_JPEG2K) + 31 <= kStateHeader);

// The MQ decoder with its code register widened to 64 bits: the 16 bits
// compared with Qe sit at the top, and up to 40 bits of the stream wait
// below them, so that bytes come in a few at a time and a symbol needs no
// test for them. Bytes enter exactly where the standard's byte-in would
// put them, so every comparison sees the same bits.
struct MqDec {
    uint32_t A;
    uint64_t C;
    int32_t CT;  // stream bits waiting below the top 16
    const uint8_t* bp;
    const uint8_t* end;

    uint32_t at(const uint8_t* p) const { return p < end ? *p : 0xFF; }
    void fill() {
        while (CT <= 32) {
            if (at(bp) == 0xFF) {
                const uint32_t b1 = end - bp > 1 ? bp[1] : 0xFF;
                if (b1 > 0x8F) {  // a marker or the end: ones from here on
                    C += uint64_t{0xFF} << (40 - CT);
                    CT += 8;
                } else {
                    ++bp;
                    C += uint64_t{b1} << (41 - CT);  // seven bits after 0xFF
                    CT += 7;
                }
            } else {
                ++bp;
                C += uint64_t{at(bp)} << (40 - CT);
                CT += 8;
            }
        }
    }
    void init(const uint8_t* p, int32_t len) {
        bp = p;
        end = p + len;
        C = uint64_t{at(bp)} << 48;
        CT = 0;
        fill();
        C <<= 7;
        CT -= 7;
        A = 0x8000;
    }
    // Branch-free but for the refill. The symbol is the MPS unless exactly
    // one of "C in the lower share" and "conditional exchange" holds; A
    // becomes Qe in the lower share, C drops by Qe in the upper one.
    uint32_t decode(uint8_t* cx) {
        const uint32_t s = *cx;
        const MqStep e = kMqSteps[s];
        const uint32_t qe = e.qe;
        const uint32_t a = A - qe;
        const uint32_t lower = static_cast<uint32_t>(C >> 48) < qe;
        const uint32_t d = (s & 1) ^ lower ^ (a < qe);
        C -= (uint64_t{qe} << 48) & (uint64_t{lower} - 1);
        A = lower ? qe : a;
        const uint32_t mpsNext = (A & 0x8000) ? s : e.nmps;
        *cx = static_cast<uint8_t>(d != (s & 1) ? e.nlps : mpsNext);
        const int n = std::countl_zero(A) - 16;
        A <<= n;
        C <<= n;
        CT -= n;
        if (CT < 16) [[unlikely]] fill();
        return d;
    }
};

struct RawDec {
    const uint8_t* bp;
    const uint8_t* end;
    uint32_t c;
    int32_t ct;
    uint32_t decode(uint8_t*) {
        if (ct == 0) {
            ct = c == 0xFF ? 7 : 8;  // the byte after 0xFF carries 7 bits
            c = bp < end ? *bp++ : 0xFF;
        }
        --ct;
        return (c >> ct) & 1;
    }
};

struct PassDecoder {
    uint8_t* dst;
    int32_t step, w, h;
    uint32_t* fl;  // word of rows 0 and 1, column 0
    int32_t fs;
    const uint8_t* zc;
    uint8_t* ctx;
    bool vc;
    int plane;

    template <bool RAW, class D>
    [[gnu::always_inline]] void becomeSignificant(D& dec, uint32_t* p, int sh, uint32_t f, int i, uint8_t* smp) {
        uint32_t neg;
        if (RAW) {
            neg = dec.decode(nullptr);
        } else {
            const uint32_t e = kSc[(f >> 4) & 511];
            neg = dec.decode(ctx + (e & 15)) ^ (e >> 31);
        }
        const uint32_t v = (neg << 31) | (1u << plane);
        std::memcpy(smp, &v, 4);
        markSignificant(p, fs, sh != 0, neg, vc && i == 0);
    }

    template <bool RAW, class D>
    void significance(D& dec) {
        eachColumn(w, h, fl, fs, dst, step, [&](uint32_t* p0, int rows, uint8_t* q0) __attribute__((always_inline)) {
            if (!hasSigCandidate(p0[0], p0[fs])) return;
            eachRow(rows, 0, p0, fs, q0, step, [&](uint32_t* p, int sh, uint8_t* smp, int i) __attribute__((always_inline)) {
                const uint32_t f = *p >> sh;
                if ((f & (kSig | kNbr)) != kNbr) return;
                const uint32_t v = dec.decode(ctx + zc[f & 0xFF]);
                *p |= kVisit << sh;
                if (v) becomeSignificant<RAW>(dec, p, sh, f, i, smp);
            });
        });
    }

    template <class D>
    void refinement(D& dec) {
        eachColumn(w, h, fl, fs, dst, step, [&](uint32_t* p0, int rows, uint8_t* q0) __attribute__((always_inline)) {
            if (!hasSignificant(p0[0], p0[fs])) return;
            eachRow(rows, 0, p0, fs, q0, step, [&](uint32_t* p, int sh, uint8_t* smp, int) __attribute__((always_inline)) {
                const uint32_t f = *p >> sh;
                if ((f & (kSig | kVisit)) != kSig) return;
                uint32_t v;
                std::memcpy(&v, smp, 4);
                v |= dec.decode(ctx + kMr[f & 511]) << plane;
                std::memcpy(smp, &v, 4);
                *p |= kRefined << sh;
            });
        });
    }

    // False when the segmentation symbol does not read back.
    bool cleanup(MqDec& dec, bool segSym) {
        auto row = [&](uint32_t* p, int sh, uint8_t* smp, int i) __attribute__((always_inline)) {
            const uint32_t f = *p >> sh;
            if (f & (kSig | kVisit)) return;
            if (dec.decode(ctx + zc[f & 0xFF])) becomeSignificant<false>(dec, p, sh, f, i, smp);
        };
        eachColumn(w, h, fl, fs, dst, step, [&](uint32_t* p0, int rows, uint8_t* q) __attribute__((always_inline)) {
            if (rows == 4 && (p0[0] | p0[fs]) == 0) {
                if (!dec.decode(ctx + kCtxRun)) return;
                int r = static_cast<int>(dec.decode(ctx + kCtxUni)) << 1;
                r |= static_cast<int>(dec.decode(ctx + kCtxUni));
                becomeSignificant<false>(dec, p0 + (r >> 1) * fs, (r & 1) * 16, 0, r,
                                         q + static_cast<intptr_t>(r) * step);
                eachRow(rows, r + 1, p0, fs, q, step, row);
            } else {
                eachRow(rows, 0, p0, fs, q, step, row);
            }
            clearVisits(p0, fs);
        });
        if (!segSym) return true;
        uint32_t sym = 0;
        for (int k = 0; k < 4; ++k) sym = (sym << 1) | dec.decode(ctx + kCtxUni);
        return sym == 0xA;
    }
};

bool rawPass(const VqciDecodeCBProgrState_JPEG2K* s, int32_t kind) {
    return (s->flags & kBypass) && (kind == kPassSig || kind == kPassRef) && s->plane < s->bypassPlane;
}

VqcStatus checkTagged(const VqciDecodeCBProgrState_JPEG2K* s) {
    return Check().ptr(s).fail(s && s->tag != kTagDecode, vqcStatusBadContext);
}

// Decodes passes of one segment until it ends or the pass counter runs out.
VqcStatus stepSegment(VqciDecodeCBProgrState_JPEG2K* s, const uint8_t* src, int32_t len) {
    if (s->passCounter <= 0) return vqcStatusOk;
    if (len < 0) return vqcStatusJPEG2KStreamError;
    PassDecoder pd{s->dst, s->dstStep, s->width, s->height, s->flagBuf + s->flagStride / 4 + 1, s->flagStride / 4,
                   s->zc, s->ctx, (s->flags & kVCausal) != 0, 0};
    const bool raw = rawPass(s, s->passKind);
    MqDec mq{};
    RawDec rd{src, src + len, 0, 0};
    if (!raw) mq.init(src, len);
    for (;;) {
        if (s->plane < 0 || s->plane > 30) return vqcStatusJPEG2KStreamError;
        pd.plane = s->plane;
        const int32_t kind = s->passKind;
        bool ok = true;
        if (kind == kPassSig) {
            if (raw) pd.significance<true>(rd);
            else pd.significance<false>(mq);
        } else if (kind == kPassRef) {
            if (raw) pd.refinement(rd);
            else pd.refinement(mq);
        } else {
            ok = pd.cleanup(mq, (s->flags & kSegSym) != 0);
        }
        if (!ok) return vqcStatusJPEG2KStreamError;
        --s->passCounter;
        if (s->flags & kReset) resetContexts(s->ctx);
        if (kind == kPassFirst || kind == kPassClean) {
            s->plane = subW(s->plane, 1);
            s->passKind = kPassSig;
        } else {
            s->passKind = kind + 1;
        }
        if (s->passCounter <= 0 || (s->flags & kTermAll) || rawPass(s, s->passKind) != raw) break;
    }
    s->A = mq.A;
    s->C = mq.C;
    s->CT = mq.CT;
    return vqcStatusOk;
}

void initState(VqciDecodeCBProgrState_JPEG2K* s) {
    s->tag = kTagDecode;
    s->attached = 0;
    const uintptr_t base = reinterpret_cast<uintptr_t>(s) + sizeof(*s);
    s->flagBuf = reinterpret_cast<uint32_t*>((base + 31) & ~static_cast<uintptr_t>(31));
}

}  // namespace

extern "C" {

VQCJ_API VqcStatus vqciDecodeCBProgrGetStateSize_JPEG2K(int32_t width, int32_t height, int32_t* pSize) {
    const int64_t n = flagBufferBytes(width, height) + kStateHeader;
    if (VqcStatus st = Check().size(width).size(height).ptr(pSize).fail(n > INT32_MAX, vqcStatusBadSize))
        return st;
    *pSize = static_cast<int32_t>(n);
    return vqcStatusOk;
}

VQCJ_API VqcStatus vqciDecodeGetBufSize_JPEG2K(int32_t width, int32_t height, int32_t* pSize) {
    return vqciDecodeCBProgrGetStateSize_JPEG2K(width, height, pSize);
}

VQCJ_API VqcStatus vqciDecodeCBProgrInitAlloc_JPEG2K(VqciDecodeCBProgrState_JPEG2K** ppState, int32_t width,
                                                     int32_t height) {
    if (VqcStatus st = Check().ptr(ppState).size(width).size(height)) return st;
    *ppState = nullptr;
    const int64_t n = flagBufferBytes(width, height) + kStateHeader;
    if (n > INT32_MAX) return vqcStatusNoMemory;
    auto* s = static_cast<VqciDecodeCBProgrState_JPEG2K*>(ownMalloc(static_cast<int32_t>(n)));
    if (!s) return vqcStatusNoMemory;
    ownZeroBytes(s, static_cast<int32_t>(n));  // a first attach may keep the flags
    initState(s);
    *ppState = s;
    return vqcStatusOk;
}

VQCJ_API VqcStatus vqciDecodeCBProgrInit_JPEG2K(VqciDecodeCBProgrState_JPEG2K* pState) {
    if (!pState) return vqcStatusNullPtr;
    initState(pState);
    return vqcStatusOk;
}

VQCJ_API VqcStatus vqciDecodeCBProgrFree_JPEG2K(VqciDecodeCBProgrState_JPEG2K* pState) {
    if (VqcStatus st = checkTagged(pState)) return st;
    ownFree(pState);
    return vqcStatusOk;
}

VQCJ_API VqcStatus vqciDecodeCBProgrAttach_JPEG2K_32s_C1R(Vqc32s* pDst, int32_t dstStep, int32_t width,
                                                          int32_t height, VqciDecodeCBProgrState_JPEG2K* pState,
                                                          int32_t subband, int32_t sfBits, int32_t flags) {
    if (VqcStatus st = Check()
                           .ptr(pState)
                           .fail(pState && pState->tag != kTagDecode, vqcStatusBadContext)
                           .ptr(pDst)
                           .step(dstStep)
                           .size(height)
                           .size(width))
        return st;
    VqciDecodeCBProgrState_JPEG2K* s = pState;
    s->dst = reinterpret_cast<uint8_t*>(pDst);
    s->dstStep = dstStep;
    s->width = width;
    s->height = height;
    s->subband = subband;
    s->flags = flags;
    if (!(flags & kKeepDst))
        for (int32_t r = 0; r < height; ++r) ownZeroBytes(s->dst + static_cast<intptr_t>(r) * dstStep, 4 * width);
    s->flagStride = static_cast<int32_t>(flagStrideBytes(width));
    if (!(flags & kKeepFlags))
        ownZeroBytes(s->flagBuf, static_cast<int32_t>(flagBufferBytes(width, height)));
    s->bypassPlane = (flags & kBypass) ? std::max(subW(sfBits, 4), 0) : 0;
    s->plane = subW(sfBits, 1);
    s->passCounter = 0;
    s->passKind = kPassFirst;
    s->zc = zcTable(subband);
    resetContexts(s->ctx);
    s->attached = 1;
    return vqcStatusOk;
}

VQCJ_API VqcStatus vqciDecodeCBProgrGetCurBitPlaneNum_JPEG2K(VqciDecodeCBProgrState_JPEG2K* pState,
                                                             int32_t* pResult) {
    if (VqcStatus st = Check().ptr(pState).fail(pState && pState->tag != kTagDecode, vqcStatusBadContext).ptr(pResult))
        return st;
    *pResult = pState->plane;
    return vqcStatusOk;
}

VQCJ_API VqcStatus vqciDecodeCBProgrGetPassCounter_JPEG2K(VqciDecodeCBProgrState_JPEG2K* pState,
                                                          int32_t* pResult) {
    if (VqcStatus st = Check().ptr(pState).ptr(pResult).fail(pState && pState->tag != kTagDecode, vqcStatusBadContext))
        return st;
    *pResult = pState->passCounter;
    return vqcStatusOk;
}

VQCJ_API VqcStatus vqciDecodeCBProgrSetPassCounter_JPEG2K(int32_t passCounter,
                                                          VqciDecodeCBProgrState_JPEG2K* pState) {
    if (VqcStatus st = checkTagged(pState)) return st;
    pState->passCounter = passCounter;
    return vqcStatusOk;
}

VQCJ_API VqcStatus vqciDecodeCBProgrStep_JPEG2K(const Vqc8u* pSrc, int32_t srcLen,
                                                VqciDecodeCBProgrState_JPEG2K* pState) {
    if (VqcStatus st = Check()
                           .ptr(pSrc)
                           .ptr(pState)
                           .fail(pState && pState->tag != kTagDecode, vqcStatusBadContext)
                           .fail(pState && !pState->attached, vqcStatusJPEG2KNotAttached))
        return st;
    return stepSegment(pState, pSrc, srcLen);
}

VQCJ_API VqcStatus vqciDecodeCodeBlock_JPEG2K_1u32s_C1R(const Vqc8u* pSrc, Vqc32s* pDst, int32_t dstStep,
                                                        int32_t width, int32_t height, int32_t subband,
                                                        int32_t sfBits, int32_t nOfPasses,
                                                        const int32_t* pTermPassLen, int32_t nOfTermPasses,
                                                        int32_t flags, int32_t* pErrorPlane,
                                                        VqciDecodeCBProgrState_JPEG2K* pState) {
    if (VqcStatus st = Check()
                           .ptr(pSrc)
                           .ptr(pState)
                           .size(height)
                           .size(width)
                           .ptr(pTermPassLen)
                           .ptr(pDst)
                           .step(dstStep))
        return st;
    VqciDecodeCBProgrState_JPEG2K* s = pState;
    initState(s);
    vqciDecodeCBProgrAttach_JPEG2K_32s_C1R(pDst, dstStep, width, height, s, subband, sfBits, flags);
    s->passCounter = nOfPasses;
    VqcStatus st = vqcStatusOk;
    const uint8_t* seg = pSrc;
    for (int32_t i = 0; i < nOfTermPasses && s->passCounter > 0; ++i) {
        st = stepSegment(s, seg, pTermPassLen[i]);
        if (st != vqcStatusOk) break;
        seg += pTermPassLen[i];
    }
    auto* d = reinterpret_cast<uint8_t*>(pDst);
    if (st == vqcStatusJPEG2KStreamError) {
        if (pErrorPlane) *pErrorPlane = s->plane;
        // The failing plane is untrustworthy: keep what lies above it, with
        // the middle of the remaining range in what is left non-zero.
        if ((flags & kKeepBitsOnError) && s->plane >= 0 && s->plane <= 30) {
            const uint32_t keep = ~((2u << s->plane) - 1) & 0x7FFFFFFFu, mid = 1u << s->plane;
            for (int32_t r = 0; r < height; ++r) {
                auto* row = reinterpret_cast<uint32_t*>(d + static_cast<intptr_t>(r) * dstStep);
                for (int32_t c = 0; c < width; ++c) {
                    const uint32_t m = row[c] & keep;
                    row[c] = m ? (row[c] & 0x80000000u) | m | mid : 0;
                }
            }
        }
        return st;
    }
    // Closing pass: every non-zero magnitude gets the middle of the range
    // its undecoded bits span. Mid-plane, the current plane's bit is known
    // for the coefficients visited so far, so the middle is one plane lower.
    if (!(flags & kNoClosing) && s->plane >= 1 && s->plane <= 30) {
        const int q = (s->passKind == kPassRef || s->passKind == kPassClean) ? s->plane - 1 : s->plane;
        if (q >= 1) {
            const uint32_t mid = 1u << q;
            for (int32_t r = 0; r < height; ++r) {
                auto* row = reinterpret_cast<uint32_t*>(d + static_cast<intptr_t>(r) * dstStep);
                for (int32_t c = 0; c < width; ++c)
                    if (row[c] & 0x7FFFFFFFu) row[c] |= mid;
            }
        }
    }
    return st;
}

}  // extern "C"
