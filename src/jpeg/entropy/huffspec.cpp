// Huffman tables from BITS and HUFFVAL lists, and the optimiser that makes
// such lists from a symbol histogram.
#include <cstddef>

#include "frame/check.h"
#include "frame/memory.h"
#include "frame/wrap.h"
#include "huff.h"

namespace vqcj {

namespace {

// Code sizes of the list in order, closed by a zero; -64 as soon as the
// running count passes 256 (exactly 256 is accepted).
VqcStatus deriveSizes(const Vqc8u* listBits, uint8_t sizes[257], int32_t* total) {
    int32_t k = 0;
    for (int32_t l = 1; l <= 16; ++l) {
        const int32_t n = listBits[l - 1];
        if (k + n > 256) return vqcStatusBadHuffmanTable;
        for (int32_t i = 0; i < n; ++i) sizes[k++] = static_cast<uint8_t>(l);
    }
    sizes[k] = 0;
    *total = k;
    return vqcStatusOk;
}

VqcStatus buildEncode(const Vqc8u* listBits, const Vqc8u* listVals, VqciEncodeHuffmanSpec* spec) {
    std::memset(spec, 0, sizeof *spec);
    uint8_t sizes[257];
    int32_t total;
    if (VqcStatus st = deriveSizes(listBits, sizes, &total)) return st;
    uint32_t codes[256];
    uint32_t code = 0;
    int32_t k = 0;
    for (uint32_t l = 1; l <= 16; ++l) {
        for (; k < total && sizes[k] == l; ++k) codes[k] = code++;
        // The next free code must still fit the length: this refuses the
        // all-ones code, which JPEG reserves.
        if (code >= (1u << l)) return vqcStatusBadHuffmanTable;
        code <<= 1;
    }
    for (int32_t i = 0; i < total; ++i) spec->codeWord[listVals[i]] = static_cast<uint32_t>(sizes[i]) << 16 | codes[i];
    return vqcStatusOk;
}

// The decoder accepts what the encoder refuses (all-ones codes, overfull
// long lengths); only short codes are checked, through their lookup index.
VqcStatus buildDecode(const Vqc8u* listBits, const Vqc8u* listVals, VqciDecodeHuffmanSpec* spec) {
    std::memset(spec, 0, sizeof *spec);
    uint8_t sizes[257];
    int32_t total;
    if (VqcStatus st = deriveSizes(listBits, sizes, &total)) return st;
    uint32_t codes[256];
    uint32_t code = 0;
    int32_t k = 0;
    for (uint32_t l = 1; l <= 16; ++l) {
        const int32_t first = k;
        for (; k < total && sizes[k] == l; ++k) codes[k] = code++;
        if (k > first) {
            spec->valPtr[l] = static_cast<uint16_t>(first);
            spec->minCode[l] = static_cast<uint16_t>(codes[first]);
            spec->maxCode[l] = static_cast<uint16_t>(codes[k - 1]);
        } else {
            spec->maxCode[l] = 0xFFFF;
        }
        code <<= 1;
    }
    spec->maxCode[17] = 0xFFFF;
    for (int32_t i = 0; i < total; ++i) spec->huffVal[i] = listVals[i];
    // Lookahead words, written through the record's bytes: an overfull list
    // may end exactly on the word behind the array, the start of minCode,
    // which is accepted; anything further is refused.
    auto* words = reinterpret_cast<uint8_t*>(spec) + offsetof(VqciDecodeHuffmanSpec, fastLookup);
    for (int32_t i = 0; i < total && sizes[i] <= 8; ++i) {
        const uint32_t l = sizes[i], shift = 8 - l;
        const uint32_t word = listVals[i] | l << 16;
        const uint64_t start = static_cast<uint64_t>(codes[i]) << shift;
        for (uint64_t j = 0; j < (1u << shift); ++j) {
            if (start + j > 256) return vqcStatusBadHuffmanTable;
            std::memcpy(words + 4 * (start + j), &word, 4);
        }
    }
    return vqcStatusOk;
}

template <class Spec, class Build>
VqcStatus initAlloc(const Vqc8u* listBits, const Vqc8u* listVals, Spec** spec, Build build) {
    if (VqcStatus st = Check().ptr(listBits).ptr(listVals).ptr(spec)) return st;
    auto* p = static_cast<Spec*>(ownMalloc(sizeof(Spec)));
    if (p == nullptr) return vqcStatusNullPtr;
    *spec = p;
    return build(listBits, listVals, p);
}

}  // namespace

VqcStatus ownHuffLimitLengths(uint8_t bits[33]) {
    // Incomplete codes (counts that never merged) or a wrapped byte can
    // leave an odd count or nothing shorter to split; there is no sensible
    // table then.
    for (int32_t i = 32; i > 16; --i) {
        while (bits[i] != 0) {
            if (bits[i] < 2) return vqcStatusBadHuffmanTable;
            int32_t j = i - 2;
            while (j > 0 && bits[j] == 0) --j;
            if (j == 0) return vqcStatusBadHuffmanTable;
            bits[i] = static_cast<uint8_t>(bits[i] - 2);
            ++bits[i - 1];
            bits[j + 1] = static_cast<uint8_t>(bits[j + 1] + 2);
            --bits[j];
        }
    }
    return vqcStatusOk;
}

VqcStatus ownHuffFree(void* p) {
    if (p == nullptr) return vqcStatusNullPtr;
    ownFree(p);
    return vqcStatusOk;
}

}  // namespace vqcj

using namespace vqcj;

extern "C" {

VQCJ_API VqcStatus vqciEncodeHuffmanSpecGetBufSize_JPEG_8u(int32_t* size) {
    if (size == nullptr) return vqcStatusNullPtr;
    *size = sizeof(VqciEncodeHuffmanSpec);
    return vqcStatusOk;
}

VQCJ_API VqcStatus vqciDecodeHuffmanSpecGetBufSize_JPEG_8u(int32_t* size) {
    if (size == nullptr) return vqcStatusNullPtr;
    *size = sizeof(VqciDecodeHuffmanSpec);
    return vqcStatusOk;
}

VQCJ_API VqcStatus vqciEncodeHuffmanSpecInit_JPEG_8u(const Vqc8u* listBits, const Vqc8u* listVals,
                                                      VqciEncodeHuffmanSpec* spec) {
    if (VqcStatus st = Check().ptr(listBits).ptr(listVals).ptr(spec)) return st;
    return buildEncode(listBits, listVals, spec);
}

VQCJ_API VqcStatus vqciDecodeHuffmanSpecInit_JPEG_8u(const Vqc8u* listBits, const Vqc8u* listVals,
                                                      VqciDecodeHuffmanSpec* spec) {
    if (VqcStatus st = Check().ptr(listBits).ptr(listVals).ptr(spec)) return st;
    return buildDecode(listBits, listVals, spec);
}

VQCJ_API VqcStatus vqciEncodeHuffmanSpecInitAlloc_JPEG_8u(const Vqc8u* listBits, const Vqc8u* listVals,
                                                           VqciEncodeHuffmanSpec** spec) {
    return initAlloc(listBits, listVals, spec, buildEncode);
}

VQCJ_API VqcStatus vqciDecodeHuffmanSpecInitAlloc_JPEG_8u(const Vqc8u* listBits, const Vqc8u* listVals,
                                                           VqciDecodeHuffmanSpec** spec) {
    return initAlloc(listBits, listVals, spec, buildDecode);
}

VQCJ_API VqcStatus vqciEncodeHuffmanSpecFree_JPEG_8u(VqciEncodeHuffmanSpec* spec) { return ownHuffFree(spec); }
VQCJ_API VqcStatus vqciDecodeHuffmanSpecFree_JPEG_8u(VqciDecodeHuffmanSpec* spec) { return ownHuffFree(spec); }

// Annex K optimiser. Symbol 256 is a pseudo-symbol with count 1 that takes
// the all-ones code and is removed again at the end. Merging picks the
// smallest non-zero count (the larger symbol on ties) with signed compares
// against a ceiling of 10^9, so huge counts never merge.
VQCJ_API VqcStatus vqciEncodeHuffmanRawTableInit_JPEG_8u(const Vqc32s statistics[257], Vqc8u* listBits,
                                                          Vqc8u* listVals) {
    if (VqcStatus st = Check().ptr(statistics).ptr(listBits).ptr(listVals)) return st;
    int32_t freq[257], codesize[257], others[257];
    for (int32_t i = 0; i < 257; ++i) {
        freq[i] = statistics[i];
        codesize[i] = 0;
        others[i] = -1;
    }
    freq[256] = 1;
    uint8_t bits[33] = {};

    // Each pass zeroes at least one non-zero count, so the loop ends.
    for (;;) {
        int32_t c1 = -1, c2 = -1, v = 1000000000;
        for (int32_t i = 0; i <= 256; ++i)
            if (freq[i] != 0 && freq[i] <= v) v = freq[i], c1 = i;
        v = 1000000000;
        for (int32_t i = 0; i <= 256; ++i)
            if (freq[i] != 0 && freq[i] <= v && i != c1) v = freq[i], c2 = i;
        if (c2 < 0) break;
        freq[c1] = addW(freq[c1], freq[c2]);
        freq[c2] = 0;
        ++codesize[c1];
        while (others[c1] >= 0) {
            c1 = others[c1];
            ++codesize[c1];
        }
        others[c1] = c2;
        ++codesize[c2];
        while (others[c2] >= 0) {
            c2 = others[c2];
            ++codesize[c2];
        }
    }
    for (int32_t i = 0; i <= 256; ++i) {
        if (codesize[i] == 0) continue;
        if (codesize[i] > 32) return vqcStatusBadHuffmanTable;
        ++bits[codesize[i]];  // a byte: 256 codes of one length wrap to 0
    }
    if (VqcStatus st = ownHuffLimitLengths(bits)) return st;
    int32_t i = 16;
    while (i > 0 && bits[i] == 0) --i;
    if (i > 0) --bits[i];

    for (int32_t l = 1; l <= 16; ++l) listBits[l - 1] = bits[l];
    int32_t p = 0;
    for (int32_t size = 1; size <= 32; ++size)
        for (int32_t s = 0; s < 256; ++s)
            if (codesize[s] == size) listVals[p++] = static_cast<Vqc8u>(s);
    return vqcStatusOk;
}

}  // extern "C"
