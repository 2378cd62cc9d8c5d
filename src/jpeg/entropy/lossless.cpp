// Lossless JPEG: differences from the seven predictors and their inverse,
// one row at a time, and Huffman coding of interleaved rows of differences.
// All sample arithmetic is modulo 2^16.
#include "frame/check.h"
#include "frame/wrap.h"
#include "huff.h"

namespace vqcj {

namespace {

// Sign-extended halving: a sample of 0x8000 or more counts as negative,
// in the forward and the inverse direction alike.
inline int32_t half(int32_t a, int32_t b) { return (static_cast<int16_t>(a) + static_cast<int16_t>(b)) >> 1; }
inline int32_t halfDiff(int32_t a, int32_t b) { return (static_cast<int16_t>(a) - static_cast<int16_t>(b)) >> 1; }

template <int P>
inline int32_t predict(int32_t ra, int32_t rb, int32_t rc) {
    if constexpr (P == 1) return ra;
    if constexpr (P == 2) return rb;
    if constexpr (P == 3) return rc;
    if constexpr (P == 4) return ra + rb - rc;
    if constexpr (P == 5) return ra + halfDiff(rb, rc);
    if constexpr (P == 6) return rb + halfDiff(ra, rc);
    if constexpr (P == 7) return half(ra, rb);
}

template <int P>
void diffRow(const Vqc16s* src, const Vqc16s* prev, Vqc16s* dst, int32_t width) {
    dst[0] = static_cast<Vqc16s>(src[0] - prev[0]);
    for (int32_t x = 1; x < width; ++x)
        dst[x] = static_cast<Vqc16s>(src[x] - predict<P>(src[x - 1], prev[x], prev[x - 1]));
}

template <int P>
void reconstructRow(const Vqc16s* src, const Vqc16s* prev, Vqc16s* dst, int32_t width) {
    dst[0] = static_cast<Vqc16s>(src[0] + prev[0]);
    for (int32_t x = 1; x < width; ++x)
        dst[x] = static_cast<Vqc16s>(src[x] + predict<P>(dst[x - 1], prev[x], prev[x - 1]));
}

using RowFn = void (*)(const Vqc16s*, const Vqc16s*, Vqc16s*, int32_t);
constexpr RowFn kDiff[8] = {nullptr,      diffRow<1>, diffRow<2>, diffRow<3>,
                            diffRow<4>,   diffRow<5>, diffRow<6>, diffRow<7>};
constexpr RowFn kReconstruct[8] = {nullptr,           reconstructRow<1>, reconstructRow<2>, reconstructRow<3>,
                                   reconstructRow<4>, reconstructRow<5>, reconstructRow<6>, reconstructRow<7>};

// 1 << (P - Pt - 1) with the count taken modulo 32, cut to 16 bits.
inline int32_t firstTerm(int32_t P, int32_t Pt) {
    return static_cast<Vqc16s>(1u << (static_cast<uint32_t>(P - Pt - 1) & 31));
}

}  // namespace

}  // namespace vqcj

using namespace vqcj;

extern "C" {

VQCJ_API VqcStatus vqciDiffPredFirstRow_JPEG_16s_C1(const Vqc16s* pSrc, Vqc16s* pDst, int32_t width, int32_t P,
                                                    int32_t Pt) {
    if (VqcStatus st = Check().ptr(pSrc).ptr(pDst).size(width).fail(P < 2 || P > 16 || Pt < 0, vqcStatusBadArg))
        return st;
    pDst[0] = static_cast<Vqc16s>(pSrc[0] - firstTerm(P, Pt));
    for (int32_t x = 1; x < width; ++x) pDst[x] = static_cast<Vqc16s>(pSrc[x] - pSrc[x - 1]);
    return vqcStatusOk;
}

VQCJ_API VqcStatus vqciReconstructPredFirstRow_JPEG_16s_C1(const Vqc16s* pSrc, Vqc16s* pDst, int32_t width, int32_t P,
                                                           int32_t Pt) {
    if (VqcStatus st = Check().ptr(pSrc).ptr(pDst).size(width).fail(P < 2 || P > 16 || Pt < 0, vqcStatusBadArg))
        return st;
    pDst[0] = static_cast<Vqc16s>(pSrc[0] + firstTerm(P, Pt));
    for (int32_t x = 1; x < width; ++x) pDst[x] = static_cast<Vqc16s>(pSrc[x] + pDst[x - 1]);
    return vqcStatusOk;
}

VQCJ_API VqcStatus vqciDiffPredRow_JPEG_16s_C1(const Vqc16s* pSrc, const Vqc16s* pPrevRow, Vqc16s* pDst, int32_t width,
                                               int32_t predictor) {
    if (VqcStatus st = Check().ptr(pSrc).ptr(pPrevRow).ptr(pDst).size(width).fail(predictor < 1 || predictor > 7,
                                                                                   vqcStatusBadArg))
        return st;
    kDiff[predictor](pSrc, pPrevRow, pDst, width);
    return vqcStatusOk;
}

VQCJ_API VqcStatus vqciReconstructPredRow_JPEG_16s_C1(const Vqc16s* pSrc, const Vqc16s* pPrevRow, Vqc16s* pDst,
                                                      int32_t width, int32_t predictor) {
    if (VqcStatus st = Check().ptr(pSrc).ptr(pPrevRow).ptr(pDst).size(width).fail(predictor < 1 || predictor > 7,
                                                                                   vqcStatusBadArg))
        return st;
    kReconstruct[predictor](pSrc, pPrevRow, pDst, width);
    return vqcStatusOk;
}

VQCJ_API VqcStatus vqciEncodeHuffmanRow_JPEG_16s1u_P4C1(const Vqc16s* const pSrc[4], int32_t nCols, int32_t nComps,
                                                        Vqc8u* pDst, int32_t dstLenBytes, int32_t* pDstCurrPos,
                                                        const VqciEncodeHuffmanSpec* const tables[4],
                                                        VqciEncodeHuffmanState* pState, int32_t flushState) {
    if (VqcStatus st = Check().ptr(pDst).size(dstLenBytes).ptr(pDstCurrPos).ptr(pState)) return st;
    if (flushState != 0) return ownHuffFlush(pDst, dstLenBytes, pDstCurrPos, pState);
    if (VqcStatus st = Check().ptr(pSrc).size(nCols).size(nComps).ptr(tables)) return st;
    const int32_t n = nComps < 4 ? nComps : 4;
    for (int32_t i = 0; i < n; ++i)
        if (VqcStatus st = Check().ptr(pSrc[i]).ptr(tables[i])) return st;
    VqcStatus st = vqcStatusOk;
    for (int32_t x = 0; x < nCols; ++x)
        for (int32_t i = 0; i < n; ++i) {
            const int32_t v = pSrc[i][x];
            const uint32_t c = ownHuffCategory(static_cast<uint32_t>(v < 0 ? -v : v));
            if ((st = ownHuffWriteCode(tables[i]->codeWord[c], pDst, dstLenBytes, pDstCurrPos, pState))) return st;
            // Category 16 (-32768) has no value bits.
            if (c - 1 < 15 &&
                (st = ownHuffWriteBits(extraBits(v), static_cast<int32_t>(c), pDst, dstLenBytes, pDstCurrPos, pState)))
                return st;
        }
    return st;
}

VQCJ_API VqcStatus vqciDecodeHuffmanRow_JPEG_1u16s_C1P4(const Vqc8u* pSrc, int32_t srcLenBytes, int32_t* pSrcCurrPos,
                                                        Vqc16s* const pDst[4], int32_t nCols, int32_t nComps,
                                                        int32_t* pMarker,
                                                        const VqciDecodeHuffmanSpec* const tables[4],
                                                        VqciDecodeHuffmanState* pState) {
    if (VqcStatus st = Check()
                           .ptr(pSrc)
                           .size(srcLenBytes)
                           .ptr(pSrcCurrPos)
                           .ptr(pDst)
                           .size(nCols)
                           .size(nComps)
                           .ptr(pMarker)
                           .ptr(tables)
                           .ptr(pState))
        return st;
    const int32_t n = nComps < 4 ? nComps : 4;
    for (int32_t i = 0; i < n; ++i)
        if (VqcStatus st = Check().ptr(pDst[i]).ptr(tables[i])) return st;
    HuffReader r(pSrc, srcLenBytes, pSrcCurrPos, pMarker, pState);
    VqcStatus st = vqcStatusOk;
    for (int32_t x = 0; x < nCols && st == vqcStatusOk; ++x)
        for (int32_t i = 0; i < n; ++i) {
            int32_t v;
            if ((st = ownHuffDecodeDifference(r, tables[i], &v)) != vqcStatusOk) break;
            pDst[i][x] = static_cast<Vqc16s>(v);
        }
    r.store(pSrcCurrPos, pState);
    return st;
}

}  // extern "C"
