// OpenJPEG plumbing for the tier-1 interop tests and benchmark: memory
// streams, a lossless encode and decode through OpenJPEG's public API, and
// the minimal codestream around one code-block (no wavelet level, one
// layer, one packet), written or parsed here.
#pragma once

#include <openjpeg.h>

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>
#include <vector>

namespace vqcjtest {

struct OpjMem {
    std::vector<uint8_t> data;
    size_t pos = 0;
};

inline opj_stream_t* opjMemStream(OpjMem* m, bool input) {
    opj_stream_t* s = opj_stream_create(1 << 16, input ? OPJ_TRUE : OPJ_FALSE);
    opj_stream_set_user_data(s, m, nullptr);
    opj_stream_set_user_data_length(s, m->data.size());
    opj_stream_set_read_function(s, [](void* buf, OPJ_SIZE_T n, void* u) -> OPJ_SIZE_T {
        auto* m = static_cast<OpjMem*>(u);
        if (m->pos >= m->data.size()) return static_cast<OPJ_SIZE_T>(-1);
        n = std::min(n, m->data.size() - m->pos);
        std::memcpy(buf, m->data.data() + m->pos, n);
        m->pos += n;
        return n;
    });
    opj_stream_set_write_function(s, [](void* buf, OPJ_SIZE_T n, void* u) -> OPJ_SIZE_T {
        auto* m = static_cast<OpjMem*>(u);
        if (m->data.size() < m->pos + n) m->data.resize(m->pos + n);
        std::memcpy(m->data.data() + m->pos, buf, n);
        m->pos += n;
        return n;
    });
    opj_stream_set_skip_function(s, [](OPJ_OFF_T n, void* u) -> OPJ_OFF_T {
        static_cast<OpjMem*>(u)->pos += n;
        return n;
    });
    opj_stream_set_seek_function(s, [](OPJ_OFF_T n, void* u) -> OPJ_BOOL {
        static_cast<OpjMem*>(u)->pos = static_cast<size_t>(n);
        return OPJ_TRUE;
    });
    return s;
}

// Lossless 8-bit grey codestream with 64x64 code-blocks and OpenJPEG's
// code-block style `mode`; one resolution and up to 64x64 samples make it
// a single code-block.
inline std::vector<uint8_t> opjEncodeOneBlock(const uint8_t* px, int w, int h, int mode, int numResolutions = 1) {
    opj_cparameters_t p;
    opj_set_default_encoder_parameters(&p);
    p.numresolution = numResolutions;
    p.cblockw_init = p.cblockh_init = 64;
    p.mode = mode;
    p.tcp_numlayers = 1;
    p.tcp_rates[0] = 0;
    p.cp_disto_alloc = 1;
    opj_image_cmptparm_t cp{};
    cp.dx = cp.dy = 1;
    cp.w = w;
    cp.h = h;
    cp.prec = 8;
    opj_image_t* im = opj_image_create(1, &cp, OPJ_CLRSPC_GRAY);
    im->x1 = w;
    im->y1 = h;
    for (int i = 0; i < w * h; ++i) im->comps[0].data[i] = px[i];
    opj_codec_t* c = opj_create_compress(OPJ_CODEC_J2K);
    OpjMem m;
    opj_stream_t* s = opjMemStream(&m, false);
    const bool ok = opj_setup_encoder(c, &p, im) && opj_start_compress(c, im, s) && opj_encode(c, s) &&
                    opj_end_compress(c, s);
    opj_stream_destroy(s);
    opj_destroy_codec(c);
    opj_image_destroy(im);
    if (!ok) m.data.clear();
    return m.data;
}

// Decodes a codestream to 8-bit samples; empty on failure.
inline std::vector<int32_t> opjDecode(const std::vector<uint8_t>& cs, int* w, int* h) {
    opj_dparameters_t p;
    opj_set_default_decoder_parameters(&p);
    opj_codec_t* c = opj_create_decompress(OPJ_CODEC_J2K);
    opj_setup_decoder(c, &p);
    OpjMem m{cs, 0};
    opj_stream_t* s = opjMemStream(&m, true);
    opj_image_t* im = nullptr;
    std::vector<int32_t> out;
    if (opj_read_header(s, c, &im) && opj_decode(c, s, im) && opj_end_decompress(c, s)) {
        *w = static_cast<int>(im->comps[0].w);
        *h = static_cast<int>(im->comps[0].h);
        out.assign(im->comps[0].data, im->comps[0].data + *w * *h);
    }
    if (im) opj_image_destroy(im);
    opj_stream_destroy(s);
    opj_destroy_codec(c);
    return out;
}

// Passes per codeword segment for OpenJPEG's style bits (1 bypass, 4
// terminate all), and the length bits of a segment of n passes.
inline std::vector<int> j2kSegments(int nPasses, int mode) {
    std::vector<int> segs;
    for (int p = 0, n; p < nPasses; p += n) {
        n = (mode & 4) ? 1 : !(mode & 1) ? nPasses : p < 10 ? 10 : (p - 10) % 3 == 0 ? 2 : 1;
        segs.push_back(n = std::min(n, nPasses - p));
    }
    return segs;
}
inline int j2kLenBits(int lblock, int n) { return lblock + std::bit_width(unsigned(n)) - 1; }

// The one code-block of a single-packet codestream.
struct J2kBlock {
    int zeroPlanes = 0, nPasses = 0, mb = 0, mode = 0;
    std::vector<int32_t> segLens;
    std::vector<uint8_t> data;
};

inline bool j2kParseOneBlock(const std::vector<uint8_t>& cs, J2kBlock* b) {
    size_t pos = 2;
    auto u16 = [&](size_t at) { return (cs[at] << 8) | cs[at + 1]; };
    for (int marker; pos + 4 <= cs.size() && (marker = u16(pos)) != 0xFF93;) {
        if (marker == 0xFF52) b->mode = cs[pos + 12];
        if (marker == 0xFF5C) b->mb = (cs[pos + 4] >> 5) + (cs[pos + 5] >> 3) - 1;  // guard bits + exponent - 1
        pos += marker == 0xFF90 ? 12 : 2 + u16(pos + 2);
    }
    pos += 2;
    int bit = 0, cur = 0;  // packet header bits; a byte after 0xFF carries seven
    auto get = [&]() {
        if (bit == 0) {
            bit = cur == 0xFF ? 7 : 8;
            cur = pos < cs.size() ? cs[pos++] : 0;
        }
        return (cur >> --bit) & 1;
    };
    auto bits = [&](int n) {
        int v = 0;
        while (n--) v = (v << 1) | get();
        return v;
    };
    if (!get() || !get()) return false;  // empty packet or block not included
    while (!get()) ++b->zeroPlanes;
    int n = 1, t;
    if (get()) n = !get() ? 2 : (t = bits(2)) < 3 ? 3 + t : (t = bits(5)) < 31 ? 6 + t : 37 + bits(7);
    b->nPasses = n;
    int lblock = 3;
    while (get()) ++lblock;
    for (int sp : j2kSegments(n, b->mode)) b->segLens.push_back(bits(j2kLenBits(lblock, sp)));
    if (cur == 0xFF) ++pos;  // the zero byte after a final 0xFF
    int total = 0;
    for (int l : b->segLens) total += l;
    if (pos + total > cs.size()) return false;
    b->data.assign(cs.begin() + pos, cs.begin() + pos + total);
    return true;
}

// A codestream around one code-block of an 8-bit grey image, 2 guard bits.
inline std::vector<uint8_t> j2kWrapOneBlock(int w, int h, int mode, int zeroPlanes, int nPasses,
                                            const std::vector<int32_t>& segLens, const uint8_t* data) {
    std::vector<uint8_t> o;
    auto b8 = [&](int v) { o.push_back(static_cast<uint8_t>(v)); };
    auto b16 = [&](int v) { b8(v >> 8), b8(v); };
    auto b32 = [&](uint32_t v) { b16(v >> 16), b16(v & 0xFFFF); };
    b16(0xFF4F);
    b16(0xFF51), b16(41), b16(0), b32(w), b32(h), b32(0), b32(0), b32(w), b32(h), b32(0), b32(0);
    b16(1), b8(7), b8(1), b8(1);
    b16(0xFF52), b16(12), b8(0), b8(0), b16(1), b8(0), b8(0), b8(4), b8(4), b8(mode), b8(1);
    b16(0xFF5C), b16(4), b8(2 << 5), b8(8 << 3);
    const size_t sot = o.size();
    b16(0xFF90), b16(10), b16(0), b32(0), b8(0), b8(1), b16(0xFF93);
    int cur = 0, nb = 0, limit = 8;  // packet header
    auto put = [&](int v) {
        cur = (cur << 1) | (v & 1);
        if (++nb == limit) b8(cur), limit = cur == 0xFF ? 7 : 8, cur = nb = 0;
    };
    auto puts = [&](int v, int n) { while (n--) put(v >> n); };
    put(1), put(1);
    for (int i = 0; i < zeroPlanes; ++i) put(0);
    put(1);
    if (nPasses == 1) put(0);
    else if (nPasses == 2) puts(2, 2);
    else if (nPasses <= 5) puts(12 + nPasses - 3, 4);
    else if (nPasses <= 36) puts(15, 4), puts(nPasses - 6, 5);
    else puts(511, 9), puts(nPasses - 37, 7);
    const auto segs = j2kSegments(nPasses, mode);
    int lblock = 3;
    for (size_t s = 0; s < segs.size(); ++s)
        while (segLens[s] >= (1 << j2kLenBits(lblock, segs[s]))) ++lblock, put(1);
    put(0);
    for (size_t s = 0; s < segs.size(); ++s) puts(segLens[s], j2kLenBits(lblock, segs[s]));
    while (nb) put(0);
    if (o.back() == 0xFF) b8(0);
    int total = 0;
    for (int l : segLens) total += l;
    o.insert(o.end(), data, data + total);
    const uint32_t psot = static_cast<uint32_t>(o.size() - sot);
    for (int i = 0; i < 4; ++i) o[sot + 6 + i] = static_cast<uint8_t>(psot >> (24 - 8 * i));
    b16(0xFFD9);
    return o;
}

}  // namespace vqcjtest
