// Run-level coding of the DC layer of a macroblock: 15 positions through
// scan 2 for 444, 14 and 6 positions in index order for 422 and 420. The
// encoders take finished pairs; the decoders give plain levels back.
#include "frame/check.h"
#include "jpegxr/runlevel.h"

namespace vqcj::jxr {
namespace {

// Positions are counted so that the last one of every shape is 15.
constexpr Shape shape444(int32_t chroma) {
    const int c = chroma != 0;
    return Shape{5 + 3 * c, 6 + 3 * c, 11, 1};
}
constexpr Shape kShape422{8, 9, 11, 2};
constexpr Shape kShape420{8, 9, 11, 10};

// *ppBitStream is deliberately not tested by these encoders.
VqcStatus encodeDC(const int32_t* pRunLevel, int32_t numPairs, bool tooMany, const Shape& sh, Vqc8u** pp,
                   uint32_t* pBitBuf, uint32_t* pNumBits, VqciVLCState* pState) {
    if (VqcStatus st = Check().ptr(pState).ptr(pRunLevel).ptr(pp).ptr(pBitBuf).ptr(pNumBits))
        return st;
    if (*pNumBits > 32 || tooMany) return vqcStatusBadRange;
    BitWriter w(pp, pBitBuf, pNumBits);
    w.enter();
    BitPacker bp(w);
    PairEncoder{pState, bp}.pairs(pRunLevel, numPairs, sh);
    bp.drain();
    w.store(pp, pBitBuf, pNumBits);
    return vqcStatusOk;
}

VqcStatus decodeChecks(Vqc8u** pp, uint32_t* pBitBuf, uint32_t* pNumBits, const void* pDst, int32_t* pNumPairs,
                       VqciVLCState* pState) {
    Check c;
    c.ptr(pState).ptr(pDst).ptr(pNumPairs);
    checkStream(c, pp, pBitBuf, pNumBits);
    if (c == vqcStatusOk) c.fail(*pNumBits > 32, vqcStatusBadRange);
    return c;
}

struct PairList {
    int32_t run[16];
    int32_t level[16];
    int32_t n = 0;
};

int32_t decodeList(BitReader& br, VqciVLCState* s, const Shape& sh, PairList& pl) {
    return PairDecoder{s, br}.pairs<false>(sh, [&](int32_t run, int32_t, bool neg, uint32_t a) {
        const int32_t k = pl.n++ & 15;
        pl.run[k] = run;
        pl.level[k] = neg ? -static_cast<int32_t>(a) : static_cast<int32_t>(a);
    });
}

// Index-order shapes: a walk past the last position stops at once and
// leaves *pNumPairs as it was, the one sign of that event.
VqcStatus decodeIndexed(Vqc8u** pp, uint32_t* pBitBuf, uint32_t* pNumBits, int32_t* pDst, int32_t* pNumPairs,
                        VqciVLCState* pState, const Shape& sh, int32_t n) {
    if (VqcStatus st = decodeChecks(pp, pBitBuf, pNumBits, pDst, pNumPairs, pState)) return st;
    BitReader br(pp, pBitBuf, pNumBits);
    br.fill();
    PairList pl;
    const int32_t count = decodeList(br, pState, sh, pl);
    br.store(pp, pBitBuf, pNumBits);
    for (int32_t i = 0; i < n; ++i) pDst[i] = 0;
    int64_t i = 0;
    for (int32_t k = 0; k < count; ++k) {
        i += pl.run[k];
        if (i > n - 1) return vqcStatusOk;
        pDst[i++] = pl.level[k];
    }
    *pNumPairs = count;
    return vqcStatusOk;
}

}  // namespace
}  // namespace vqcj::jxr

using namespace vqcj;
using namespace vqcj::jxr;

extern "C" {

VQCJ_API VqcStatus vqciVLCEncodeDC444_JPEGXR_32s1u(const Vqc32s* pRunLevel, int32_t numPairs, int32_t chroma,
                                                   Vqc8u** ppBitStream, uint32_t* pBitBuf, uint32_t* pNumBits,
                                                   VqciVLCState* pState) {
    // Signed here, so a negative count passes, unlike the other two shapes.
    return encodeDC(pRunLevel, numPairs, numPairs > 16, shape444(chroma), ppBitStream, pBitBuf, pNumBits, pState);
}

VQCJ_API VqcStatus vqciVLCEncodeDC422_JPEGXR_32s1u(const Vqc32s* pRunLevel, int32_t numPairs, Vqc8u** ppBitStream,
                                                   uint32_t* pBitBuf, uint32_t* pNumBits, VqciVLCState* pState) {
    return encodeDC(pRunLevel, numPairs, static_cast<uint32_t>(numPairs) > 14, kShape422, ppBitStream, pBitBuf,
                    pNumBits, pState);
}

VQCJ_API VqcStatus vqciVLCEncodeDC420_JPEGXR_32s1u(const Vqc32s* pRunLevel, int32_t numPairs, Vqc8u** ppBitStream,
                                                   uint32_t* pBitBuf, uint32_t* pNumBits, VqciVLCState* pState) {
    return encodeDC(pRunLevel, numPairs, static_cast<uint32_t>(numPairs) > 6, kShape420, ppBitStream, pBitBuf,
                    pNumBits, pState);
}

// Levels land at the coefficient numbers of scan 2, whatever scan is in
// force, and scan 2 moves as the encoder's pair scan moved it. Positions
// past the table wrap as in the block decoders, so forged data stays in
// the 16 elements.
VQCJ_API VqcStatus vqciVLCDecodeDC444_JPEGXR_1u32s(Vqc8u** ppBitStream, uint32_t* pBitBuf, uint32_t* pNumBits,
                                                   Vqc32s* pDst, int32_t chroma, int32_t* pNumPairs,
                                                   VqciVLCState* pState) {
    if (VqcStatus st = decodeChecks(ppBitStream, pBitBuf, pNumBits, pDst, pNumPairs, pState)) return st;
    BitReader br(ppBitStream, pBitBuf, pNumBits);
    br.fill();
    PairList pl;
    const int32_t count = decodeList(br, pState, shape444(chroma), pl);
    br.store(ppBitStream, pBitBuf, pNumBits);
    VqciVLCScanEntry* scan = pState->scanTables[2];
    uint32_t e = 1;
    for (int32_t k = 0; k < count; ++k) {
        e = (e + static_cast<uint32_t>(pl.run[k])) & 15;
        pDst[scan[e].index & 15] = pl.level[k];
        scanHit<1>(scan, e);
        ++e;
    }
    *pNumPairs = count;
    return vqcStatusOk;
}

VQCJ_API VqcStatus vqciVLCDecodeDC422_JPEGXR_1u32s(Vqc8u** ppBitStream, uint32_t* pBitBuf, uint32_t* pNumBits,
                                                   Vqc32s* pDst, int32_t* pNumPairs, VqciVLCState* pState) {
    return decodeIndexed(ppBitStream, pBitBuf, pNumBits, pDst, pNumPairs, pState, kShape422, 14);
}

VQCJ_API VqcStatus vqciVLCDecodeDC420_JPEGXR_1u32s(Vqc8u** ppBitStream, uint32_t* pBitBuf, uint32_t* pNumBits,
                                                   Vqc32s* pDst, int32_t* pNumPairs, VqciVLCState* pState) {
    return decodeIndexed(ppBitStream, pBitBuf, pNumBits, pDst, pNumPairs, pState, kShape420, 6);
}

}  // extern "C"
