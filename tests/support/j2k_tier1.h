// Code-block plumbing shared by the tier-1 tests and benchmark: encode one
// block into one byte string with its rates and segment lengths, cut it
// after any pass, and cut a photograph's reversible 5/3 wavelet bands into
// sign-magnitude code-blocks.
#pragma once

#include <vqcj.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <vector>

namespace vqcjtest {

struct T1Block {
    int w = 0, h = 0, subband = 0;
    std::vector<int32_t> smag;  // sign-magnitude, rows packed
};

struct T1Coded {
    std::vector<uint8_t> bytes;
    int32_t sfBits = 0, nPasses = 0, nTerm = 0;
    std::vector<int32_t> rates, termLens;
    std::vector<int> segOfPass;  // segment index of each pass
};

// Encodes with stores of `chunk` bytes at a time (0: one call).
inline T1Coded t1Encode(VqciEncodeState_JPEG2K* st, const T1Block& b, int magnBits, int flags, int termType,
                        int chunk = 0) {
    T1Coded r;
    vqciEncodeLoadCodeBlock_JPEG2K_32s_C1R(b.smag.data(), 4 * b.w, {b.w, b.h}, st, b.subband, magnBits, termType,
                                           0, flags, &r.sfBits, &r.nPasses, &r.nTerm);
    std::vector<uint8_t> buf(chunk > 0 ? chunk : 1 << 20);
    for (int notFinished = 1; notFinished && r.nPasses;) {
        int32_t len = static_cast<int32_t>(buf.size());
        if (vqciEncodeStoreBits_JPEG2K_1u(buf.data(), &len, st, &notFinished) != vqcStatusOk) std::abort();
        r.bytes.insert(r.bytes.end(), buf.begin(), buf.begin() + len);
    }
    r.rates.resize(r.nPasses);
    for (int p = 0; p < r.nPasses; ++p) vqciEncodeGetRate_JPEG2K(st, p, &r.rates[p]);
    r.termLens.resize(r.nTerm);
    for (int t = 0; t < r.nTerm; ++t) vqciEncodeGetTermPassLen_JPEG2K(st, t, &r.termLens[t]);
    // A segment ends after every pass with "terminate each", else where
    // the passes switch between MQ and raw coding.
    auto raw = [&](int p) { return (flags & 2) && p % 3 != 0 && r.sfBits - 1 - (p + 2) / 3 < r.sfBits - 4; };
    for (int p = 0, seg = 0; p < r.nPasses; ++p)
        r.segOfPass.push_back(seg += p > 0 && ((flags & 4) || raw(p) != raw(p - 1)));
    return r;
}

// The segment lengths a decoder gets for the first n passes: the whole
// segments before the last one, and that one cut at the pass's rate.
inline std::vector<int32_t> t1SegmentsFor(const T1Coded& c, int n) {
    std::vector<int32_t> lens;
    int32_t used = 0;
    for (int s = 0; n > 0 && s < c.segOfPass[n - 1]; ++s) lens.push_back(c.termLens[s]), used += c.termLens[s];
    if (n > 0) lens.push_back(c.rates[n - 1] - used);
    return lens;
}

// Reversible 5/3 lifting of one line in place (symmetric extension).
inline void lift53(int32_t* x, int n, int stride) {
    if (n < 2) return;
    auto at = [&](int i) -> int32_t& { return x[i * stride]; };
    for (int i = 1; i < n; i += 2) at(i) -= (at(i - 1) + at(i + 1 < n ? i + 1 : i - 1)) >> 1;
    for (int i = 0; i < n; i += 2) at(i) += (at(i > 0 ? i - 1 : 1) + at(i + 1 < n ? i + 1 : i - 1) + 2) >> 2;
    std::vector<int32_t> t(n);
    for (int i = 0; i < n; ++i) t[(i & 1) ? n / 2 + n % 2 + i / 2 : i / 2] = at(i);
    for (int i = 0; i < n; ++i) at(i) = t[i];
}

// Code-blocks of every band of a `levels`-level transform of a grey plane,
// left-aligned so that `magnBits` planes hold them (guard bits included).
inline std::vector<T1Block> waveletCodeBlocks(const uint8_t* px, int w, int h, int stride, int levels, int cbw,
                                              int cbh, int magnBits) {
    std::vector<int32_t> a(static_cast<size_t>(w) * h);
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) a[y * w + x] = px[y * stride + x] - 128;
    struct Band {
        int x0, y0, bw, bh, sb;
    };
    std::vector<Band> bands;
    int lw = w, lh = h;
    for (int l = 0; l < levels; ++l, lw = (lw + 1) / 2, lh = (lh + 1) / 2) {
        for (int y = 0; y < lh; ++y) lift53(&a[y * w], lw, 1);
        for (int x = 0; x < lw; ++x) lift53(&a[x], lh, w);
        const int lo_w = (lw + 1) / 2, lo_h = (lh + 1) / 2;
        bands.push_back({lo_w, 0, lw - lo_w, lo_h, 2});          // HL
        bands.push_back({0, lo_h, lo_w, lh - lo_h, 1});          // LH
        bands.push_back({lo_w, lo_h, lw - lo_w, lh - lo_h, 3});  // HH
    }
    bands.push_back({0, 0, lw, lh, 0});
    std::vector<T1Block> out;
    for (const Band& b : bands)
        for (int y0 = 0; y0 < b.bh; y0 += cbh)
            for (int x0 = 0; x0 < b.bw; x0 += cbw) {
                T1Block cb{std::min(cbw, b.bw - x0), std::min(cbh, b.bh - y0), b.sb, {}};
                for (int y = 0; y < cb.h; ++y)
                    for (int x = 0; x < cb.w; ++x) {
                        const int32_t v = a[(b.y0 + y0 + y) * w + b.x0 + x0 + x];
                        const uint32_t m = static_cast<uint32_t>(v < 0 ? -v : v) << (31 - magnBits);
                        cb.smag.push_back(static_cast<int32_t>((v < 0 ? 0x80000000u : 0u) | m));
                    }
                if (cb.w > 0 && cb.h > 0) out.push_back(std::move(cb));
            }
    return out;
}

}  // namespace vqcjtest
