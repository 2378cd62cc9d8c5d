// Our coders driven over the scans of a libjpeg-turbo file: the scan's
// tables in our four forms, and one block of any pass of a scan decoded,
// encoded or counted. Shared by the entropy interop tests and benchmark.
#pragma once

#include <vqcj.h>

#include "support/jpeg_streams.h"

namespace vqcjtest {

struct Tables {
    VqciEncodeHuffmanSpec encDc[4], encAc[4];
    VqciDecodeHuffmanSpec decDc[4], decAc[4];
    bool ok = true;
    explicit Tables(const JpegScan& s) {
        for (int i = 0; i < 4; ++i) {
            if (s.dc[i].present) {
                ok &= vqciEncodeHuffmanSpecInit_JPEG_8u(s.dc[i].bits.data(), s.dc[i].vals.data(), &encDc[i]) == 0;
                ok &= vqciDecodeHuffmanSpecInit_JPEG_8u(s.dc[i].bits.data(), s.dc[i].vals.data(), &decDc[i]) == 0;
            }
            if (s.ac[i].present) {
                ok &= vqciEncodeHuffmanSpecInit_JPEG_8u(s.ac[i].bits.data(), s.ac[i].vals.data(), &encAc[i]) == 0;
                ok &= vqciDecodeHuffmanSpecInit_JPEG_8u(s.ac[i].bits.data(), s.ac[i].vals.data(), &decAc[i]) == 0;
            }
        }
    }
};

enum Pass { kDCFirst, kDCRefine, kACFirst, kACRefine };

inline Pass passOf(const JpegScan& s) {
    if (s.Ss == 0) return s.Ah ? kDCRefine : kDCFirst;
    return s.Ah ? kACRefine : kACFirst;
}

struct ScanCoder {
    const JpegScan& s;
    Tables t;
    Pass pass;
    explicit ScanCoder(const JpegScan& sc) : s(sc), t(sc), pass(passOf(sc)) {}

    VqcStatus decode(const Vqc8u* src, int32_t len, int32_t* pos, Vqc16s* blk, Vqc16s* pred, int32_t* marker, int i,
                     VqciDecodeHuffmanState* st) {
        switch (pass) {
            case kDCFirst:
                return vqciDecodeHuffman8x8_DCFirst_JPEG_1u16s_C1(src, len, pos, blk, pred, marker, s.Al,
                                                                  &t.decDc[s.td[i]], st);
            case kDCRefine:
                return vqciDecodeHuffman8x8_DCRefine_JPEG_1u16s_C1(src, len, pos, blk, marker, s.Al, st);
            case kACFirst:
                return vqciDecodeHuffman8x8_ACFirst_JPEG_1u16s_C1(src, len, pos, blk, marker, s.Ss, s.Se, s.Al,
                                                                  &t.decAc[s.ta[i]], st);
            default:
                return vqciDecodeHuffman8x8_ACRefine_JPEG_1u16s_C1(src, len, pos, blk, marker, s.Ss, s.Se, s.Al,
                                                                   &t.decAc[s.ta[i]], st);
        }
    }
    // AC scans have one component, so i is 0 there and the flush needs no block.
    VqcStatus encode(const Vqc16s* blk, Vqc8u* out, int32_t len, int32_t* pos, Vqc16s* pred, int i,
                     VqciEncodeHuffmanState* st, int flush) {
        switch (pass) {
            case kDCFirst:
                return vqciEncodeHuffman8x8_DCFirst_JPEG_16s1u_C1(blk, out, len, pos, pred, s.Al, &t.encDc[s.td[i]],
                                                                  st, flush);
            case kDCRefine:
                return vqciEncodeHuffman8x8_DCRefine_JPEG_16s1u_C1(blk, out, len, pos, s.Al, st, flush);
            case kACFirst:
                return vqciEncodeHuffman8x8_ACFirst_JPEG_16s1u_C1(blk, out, len, pos, s.Ss, s.Se, s.Al,
                                                                  &t.encAc[s.ta[i]], st, flush);
            default:
                return vqciEncodeHuffman8x8_ACRefine_JPEG_16s1u_C1(blk, out, len, pos, s.Ss, s.Se, s.Al,
                                                                   &t.encAc[s.ta[i]], st, flush);
        }
    }
    VqcStatus stats(const Vqc16s* blk, Vqc32s (*dc)[257], Vqc32s (*ac)[257], Vqc16s* pred, int i,
                    VqciEncodeHuffmanState* st, int flush) {
        switch (pass) {
            case kDCFirst:
                return flush ? 0 : vqciGetHuffmanStatistics8x8_DCFirst_JPEG_16s_C1(blk, dc[s.td[i]], pred, s.Al);
            case kDCRefine:
                return 0;
            case kACFirst:
                return vqciGetHuffmanStatistics8x8_ACFirst_JPEG_16s_C1(blk, ac[s.ta[i]], s.Ss, s.Se, s.Al, st, flush);
            default:
                return vqciGetHuffmanStatistics8x8_ACRefine_JPEG_16s_C1(blk, ac[s.ta[i]], s.Ss, s.Se, s.Al, st, flush);
        }
    }
};

}  // namespace vqcjtest
