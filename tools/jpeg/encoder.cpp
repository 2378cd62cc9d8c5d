// The encoder: baseline, progressive and lossless files from the library's
// colour, sampling, transform and entropy primitives.
#include <vqcj.h>

#include <algorithm>
#include <cstring>

#include "codec.h"
#include "jpegint.h"

namespace vqcjpeg {

namespace {

// Bytes out, with room kept ahead of the entropy coders: they write into a
// caller-sized buffer and cannot resume a block that ran out of room.
class Writer {
public:
    // Bytes already in `out` are reused as they stand, not cleared again.
    Writer(std::vector<uint8_t>& out, size_t expected) : out_(out) {
        if (out_.size() < expected) out_.resize(expected);
    }
    void byte(int b) { reserve(1), out_[pos_++] = static_cast<uint8_t>(b); }
    void word(int w) { byte(w >> 8), byte(w & 255); }
    void bytes(const uint8_t* p, size_t n) {
        reserve(n);
        std::memcpy(out_.data() + pos_, p, n);
        pos_ += n;
    }
    void marker(int m) { byte(0xFF), byte(m); }
    void reserve(size_t n) {
        if (out_.size() - pos_ < n) out_.resize(std::max(out_.size() + out_.size() / 2, pos_ + n + 65536));
    }
    // The entropy coders' view: buffer, its length and the position.
    uint8_t* data() { return out_.data(); }
    int32_t length() const { return static_cast<int32_t>(std::min<size_t>(out_.size(), 0x7FFFFFFF)); }
    int32_t* position() { return &pos_; }
    void finish() { out_.resize(pos_); }

private:
    std::vector<uint8_t>& out_;
    int32_t pos_ = 0;
};

// Room for the worst block (every coefficient with a 16-bit code and 16
// extra bits, each byte stuffed) and for a pending correction buffer.
constexpr size_t kBlockRoom = 64 * 4 * 2 + 1100;

struct Tables {
    VqciEncodeHuffmanSpec dc[2], ac[2];
    HuffLists dcLists[2], acLists[2];
};

std::string status(const char* what, VqcStatus st) {
    return std::string(what) + " failed with status " + std::to_string(st);
}

void writeDht(Writer& w, const HuffLists* lists[], const int classes[], const int ids[], int n) {
    int len = 2;
    for (int i = 0; i < n; ++i) len += 17 + static_cast<int>(lists[i]->vals.size());
    w.marker(0xC4);
    w.word(len);
    for (int i = 0; i < n; ++i) {
        w.byte(classes[i] << 4 | ids[i]);
        w.bytes(lists[i]->bits, 16);
        w.bytes(lists[i]->vals.data(), lists[i]->vals.size());
    }
}

std::string buildSpec(const HuffLists& h, VqciEncodeHuffmanSpec& spec) {
    const VqcStatus st = vqciEncodeHuffmanSpecInit_JPEG_8u(h.bits, h.vals.data(), &spec);
    return st < 0 ? status("Huffman table", st) : std::string{};
}

// Optimal lists from a histogram of 257 words.
std::string optimal(const int32_t* hist, HuffLists& h) {
    uint8_t vals[256] = {};
    const VqcStatus st = vqciEncodeHuffmanRawTableInit_JPEG_8u(hist, h.bits, vals);
    if (st < 0) return status("Huffman optimiser", st);
    int n = 0;
    for (int i = 0; i < 16; ++i) n += h.bits[i];
    h.vals.assign(vals, vals + n);
    return {};
}

void writeHeader(Writer& w, const Frame& f, const uint8_t raw[2][64], int nQuant, bool jfif) {
    w.marker(0xD8);
    if (jfif) {
        static const uint8_t app0[] = {'J', 'F', 'I', 'F', 0, 1, 1, 0, 0, 1, 0, 1, 0, 0};
        w.marker(0xE0);
        w.word(2 + sizeof app0);
        w.bytes(app0, sizeof app0);
    }
    if (nQuant > 0) {
        w.marker(0xDB);
        w.word(2 + 65 * nQuant);
        for (int t = 0; t < nQuant; ++t) {
            w.byte(t);
            w.bytes(raw[t], 64);
        }
    }
    w.marker(0xC0 + f.sof);
    w.word(8 + 3 * static_cast<int>(f.comps.size()));
    w.byte(f.precision);
    w.word(f.height);
    w.word(f.width);
    w.byte(static_cast<int>(f.comps.size()));
    for (const Component& c : f.comps) {
        w.byte(c.id);
        w.byte(c.h << 4 | c.v);
        w.byte(c.tq);
    }
}

void writeSos(Writer& w, const Frame& f, const Scan& s) {
    w.marker(0xDA);
    w.word(6 + 2 * static_cast<int>(s.comps.size()));
    w.byte(static_cast<int>(s.comps.size()));
    for (const ScanComponent& sc : s.comps) {
        w.byte(f.comps[sc.index].id);
        w.byte(sc.td << 4 | sc.ta);
    }
    w.byte(s.ss);
    w.byte(s.se);
    w.byte(s.ah << 4 | s.al);
}

// The front end: one MCU of the picture at a time, turned into quantised
// blocks in natural order, the luma blocks in raster order first, then Cb
// and Cr. MCUs that reach past the picture are first copied into a small
// buffer that repeats the last column and row, as libjpeg pads its edges;
// all others are read straight from the picture's rows.
class McuFront {
public:
    McuFront(const Image& img, const Frame& f, const Vqc16u (*fwd)[64])
        : img_(img), fwd_(fwd), mw_(8 * f.hmax), mh_(8 * f.vmax), luma_(f.hmax * f.vmax),
          blocks_(f.comps.size() == 3 ? luma_ + 2 : 1) {
        if (f.comps.size() == 3)
            convert_ = f.hmax == 1 ? vqciRGBToYCbCr444LS_MCU_8u16s_C3P3R
                       : f.vmax == 1 ? vqciRGBToYCbCr422LS_MCU_8u16s_C3P3R
                                     : vqciRGBToYCbCr411LS_MCU_8u16s_C3P3R;
    }
    int blocks() const { return blocks_; }
    int lumaBlocks() const { return luma_; }

    std::string mcu(int mx, int my, Vqc16s* blk) {
        const int x0 = mx * mw_, y0 = my * mh_, ch = img_.channels;
        const int vw = std::min(mw_, img_.width - x0), vh = std::min(mh_, img_.height - y0);
        const uint8_t* src = &img_.pixels[(size_t(y0) * img_.width + x0) * ch];
        int step = img_.width * ch;
        VqcStatus st;
        if (convert_) {
            if (vw < mw_ || vh < mh_) {
                for (int y = 0; y < vh; ++y) std::memcpy(&pix_[y * mw_ * 3], src + size_t(y) * step, size_t(vw) * 3);
                extend(3, vw, vh);
                src = pix_, step = mw_ * 3;
            }
            Vqc16s* const dst[3] = {blk, blk + 64 * luma_, blk + 64 * (luma_ + 1)};
            if ((st = convert_(src, step, dst)) < 0) return status("colour conversion", st);
            for (int b = 0; b < blocks_; ++b)
                if ((st = vqciDCTQuantFwd8x8_JPEG_16s_C1I(blk + 64 * b, fwd_[b < luma_ ? 0 : 1])) < 0)
                    return status("forward DCT", st);
            return {};
        }
        if (ch == 3) {  // grey from colour: the luma of the part inside, then padded
            if ((st = vqciRGBToY_JPEG_8u_C3C1R(src, step, pix_, 8, VqciSize{vw, vh})) < 0) return status("colour conversion", st);
            extend(1, vw, vh);
            src = pix_, step = 8;
        } else if (vw < 8 || vh < 8) {
            for (int y = 0; y < vh; ++y) std::memcpy(&pix_[y * 8], src + size_t(y) * step, vw);
            extend(1, vw, vh);
            src = pix_, step = 8;
        }
        if ((st = vqciDCTQuantFwd8x8LS_JPEG_8u16s_C1R(src, step, blk, fwd_[0])) < 0) return status("forward DCT", st);
        return {};
    }

private:
    // Repeats the last of the vw columns and vh rows of pix_ over the MCU.
    void extend(int ch, int vw, int vh) {
        const int row = mw_ * ch;
        for (int y = 0; y < vh; ++y) {
            uint8_t* p = &pix_[y * row];
            for (int x = vw * ch; x < row; ++x) p[x] = p[x - ch];
        }
        for (int y = vh; y < mh_; ++y) std::memcpy(&pix_[y * row], &pix_[(vh - 1) * row], row);
    }

    const Image& img_;
    const Vqc16u (*fwd_)[64];
    int mw_, mh_, luma_, blocks_;
    VqcStatus (*convert_)(const Vqc8u*, int32_t, Vqc16s* const[3]) = nullptr;
    uint8_t pix_[16 * 16 * 3];
};

// Visits the MCUs of the frame in stream order: mcu(mx, my, blocks) for
// each, and restart(unit) before every restart interval after the first.
template <class Mcu, class Restart>
std::string walkMcus(const Frame& f, McuFront& front, int restart, Mcu&& mcu, Restart&& onRestart) {
    alignas(64) Vqc16s blk[6 * 64];
    long unit = 0;
    for (int my = 0; my < f.mcusY; ++my)
        for (int mx = 0; mx < f.mcusX; ++mx, ++unit) {
            if (restart > 0 && unit > 0 && unit % restart == 0)
                if (std::string e = onRestart(static_cast<int>((unit / restart - 1) & 7)); !e.empty()) return e;
            if (std::string e = front.mcu(mx, my, blk); !e.empty()) return e;
            if (std::string e = mcu(mx, my, static_cast<const Vqc16s*>(blk)); !e.empty()) return e;
        }
    return {};
}

Component component(int id, int h, int v, int tq) {
    Component c;
    c.id = id, c.h = h, c.v = v, c.tq = tq;
    return c;
}

// The usual progression with successive approximation.
std::vector<Scan> progression(int ncomps) {
    auto one = [](int c, int ss, int se, int ah, int al) {
        Scan s;
        s.comps.push_back({c, 0, 0});
        s.ss = ss, s.se = se, s.ah = ah, s.al = al;
        return s;
    };
    std::vector<Scan> script;
    Scan dc;
    for (int c = 0; c < ncomps; ++c) dc.comps.push_back({c, 0, 0});
    dc.ss = dc.se = 0;
    dc.al = 1;
    script.push_back(dc);
    script.push_back(one(0, 1, 5, 0, 2));
    if (ncomps == 3) script.push_back(one(2, 1, 63, 0, 1)), script.push_back(one(1, 1, 63, 0, 1));
    script.push_back(one(0, 6, 63, 0, 2));
    script.push_back(one(0, 1, 63, 2, 1));
    dc.ah = 1, dc.al = 0;
    script.push_back(dc);
    if (ncomps == 3) script.push_back(one(2, 1, 63, 1, 0)), script.push_back(one(1, 1, 63, 1, 0));
    script.push_back(one(0, 1, 63, 1, 0));
    return script;
}

// One progressive scan over the stored coefficients: its statistics, then
// its entropy-coded data.
struct ScanCoder {
    Frame& f;
    const Scan& s;
    int restart;
    Writer& w;
    VqciEncodeHuffmanState state{};
    int16_t pred[4] = {};

    std::string gather(int32_t dcHist[2][257], int32_t acHist[2][257]) {
        VqciEncodeHuffmanState st{};
        vqciEncodeHuffmanStateInit_JPEG_8u(&st);
        std::memset(pred, 0, sizeof pred);
        const bool dcScan = s.ss == 0;
        auto flushAc = [&]() -> std::string {
            if (dcScan) return {};
            const int t = s.comps[0].ta;
            const VqcStatus r = s.ah ? vqciGetHuffmanStatistics8x8_ACRefine_JPEG_16s_C1(nullptr, acHist[t], s.ss, s.se, s.al, &st, 1)
                                     : vqciGetHuffmanStatistics8x8_ACFirst_JPEG_16s_C1(nullptr, acHist[t], s.ss, s.se, s.al, &st, 1);
            return r < 0 ? status("statistics", r) : std::string{};
        };
        std::string e = walkScan(
            f, s, restart,
            [&](int k, const int16_t* blk) -> std::string {
                const ScanComponent& sc = s.comps[k];
                VqcStatus r;
                if (dcScan)
                    r = s.ah ? vqcStatusOk : vqciGetHuffmanStatistics8x8_DCFirst_JPEG_16s_C1(blk, dcHist[sc.td], &pred[k], s.al);
                else if (s.ah)
                    r = vqciGetHuffmanStatistics8x8_ACRefine_JPEG_16s_C1(blk, acHist[sc.ta], s.ss, s.se, s.al, &st, 0);
                else
                    r = vqciGetHuffmanStatistics8x8_ACFirst_JPEG_16s_C1(blk, acHist[sc.ta], s.ss, s.se, s.al, &st, 0);
                return r < 0 ? status("statistics", r) : std::string{};
            },
            [&](int) -> std::string {
                std::memset(pred, 0, sizeof pred);
                return flushAc();
            });
        if (!e.empty()) return e;
        return flushAc();
    }

    std::string flush(const Tables& t) {
        w.reserve(kBlockRoom * 2);
        VqcStatus r;
        if (s.ss > 0) {
            const VqciEncodeHuffmanSpec* ac = &t.ac[s.comps[0].ta];
            r = s.ah ? vqciEncodeHuffman8x8_ACRefine_JPEG_16s1u_C1(nullptr, w.data(), w.length(), w.position(), s.ss, s.se, s.al, ac, &state, 1)
                     : vqciEncodeHuffman8x8_ACFirst_JPEG_16s1u_C1(nullptr, w.data(), w.length(), w.position(), s.ss, s.se, s.al, ac, &state, 1);
        } else {
            r = vqciEncodeHuffman8x8_JPEG_16s1u_C1(nullptr, w.data(), w.length(), w.position(), nullptr, nullptr, nullptr, &state, 1);
        }
        return r < 0 ? status("entropy coder flush", r) : std::string{};
    }

    std::string encode(const Tables& t) {
        vqciEncodeHuffmanStateInit_JPEG_8u(&state);
        std::memset(pred, 0, sizeof pred);
        const bool dcScan = s.ss == 0;
        std::string e = walkScan(
            f, s, restart,
            [&](int k, const int16_t* blk) -> std::string {
                const ScanComponent& sc = s.comps[k];
                w.reserve(kBlockRoom);
                uint8_t* d = w.data();
                const int32_t n = w.length();
                int32_t* pos = w.position();
                VqcStatus r;
                if (dcScan && s.ah)
                    r = vqciEncodeHuffman8x8_DCRefine_JPEG_16s1u_C1(blk, d, n, pos, s.al, &state, 0);
                else if (dcScan)
                    r = vqciEncodeHuffman8x8_DCFirst_JPEG_16s1u_C1(blk, d, n, pos, &pred[k], s.al, &t.dc[sc.td], &state, 0);
                else if (s.ah)
                    r = vqciEncodeHuffman8x8_ACRefine_JPEG_16s1u_C1(blk, d, n, pos, s.ss, s.se, s.al, &t.ac[sc.ta], &state, 0);
                else
                    r = vqciEncodeHuffman8x8_ACFirst_JPEG_16s1u_C1(blk, d, n, pos, s.ss, s.se, s.al, &t.ac[sc.ta], &state, 0);
                return r < 0 ? status("entropy coder", r) : std::string{};
            },
            [&](int rst) -> std::string {
                if (std::string fe = flush(t); !fe.empty()) return fe;
                w.marker(0xD0 + rst);
                std::memset(pred, 0, sizeof pred);
                return {};
            });
        if (!e.empty()) return e;
        return flush(t);
    }
};

// Progressive scans revisit every block, so the whole picture's coefficients
// are kept; each scan gets tables to measure, as the example tables have no
// EOB runs.
std::string encodeProgressive(Frame& f, McuFront& front, int restart, Writer& w) {
    for (Component& c : f.comps) c.coef.resize(size_t(c.paddedW) * c.paddedH * 64);
    std::string e = walkMcus(
        f, front, 0,
        [&](int mx, int my, const Vqc16s* blk) -> std::string {
            for (Component& c : f.comps)
                for (int v = 0; v < c.v; ++v)
                    for (int h = 0; h < c.h; ++h, blk += 64)
                        std::memcpy(&c.coef[(size_t(my * c.v + v) * c.paddedW + size_t(mx * c.h + h)) * 64], blk, 64 * sizeof(Vqc16s));
            return {};
        },
        [](int) { return std::string(); });
    if (!e.empty()) return e;
    std::vector<Scan> script = progression(static_cast<int>(f.comps.size()));
    Tables t;
    for (Scan& s : script) {
        for (ScanComponent& sc : s.comps) sc.td = sc.ta = sc.index > 0 ? 1 : 0;
        ScanCoder sc{f, s, restart, w};
        if (!(s.ss == 0 && s.ah)) {  // DC refinement codes no symbols
            int32_t dcHist[2][257] = {}, acHist[2][257] = {};
            if (std::string e = sc.gather(dcHist, acHist); !e.empty()) return e;
            const HuffLists* lists[4];
            int classes[4], ids[4], n = 0;
            for (const ScanComponent& c : s.comps) {
                const bool dc = s.ss == 0;
                const int id = dc ? c.td : c.ta;
                bool seen = false;
                for (int i = 0; i < n; ++i) seen |= ids[i] == id;
                if (seen) continue;
                HuffLists& l = dc ? t.dcLists[id] : t.acLists[id];
                if (std::string e = optimal(dc ? dcHist[id] : acHist[id], l); !e.empty()) return e;
                if (std::string e = buildSpec(l, dc ? t.dc[id] : t.ac[id]); !e.empty()) return e;
                lists[n] = &l, classes[n] = dc ? 0 : 1, ids[n] = id, ++n;
            }
            writeDht(w, lists, classes, ids, n);
        }
        writeSos(w, f, s);
        if (std::string e = sc.encode(t); !e.empty()) return e;
    }
    return {};
}

// Baseline: one pass over the MCUs, each block coded as soon as it is made;
// optimised tables take a first pass that only counts symbols.
std::string encodeSequential(const Frame& f, McuFront& front, const EncodeOptions& opt, Writer& w) {
    const int nb = front.blocks(), nt = f.comps.size() == 3 ? 2 : 1;
    int comp[6];  // component of each block of an MCU
    for (int b = 0; b < nb; ++b) comp[b] = b < front.lumaBlocks() ? 0 : 1 + b - front.lumaBlocks();
    Tables t;
    for (int k = 0; k < nt; ++k) t.dcLists[k] = stdHuffman(false, k), t.acLists[k] = stdHuffman(true, k);
    Vqc16s pred[3] = {};
    auto restartPred = [&](int) {
        std::memset(pred, 0, sizeof pred);
        return std::string();
    };
    if (opt.optimize) {
        int32_t dcHist[2][257] = {}, acHist[2][257] = {};
        std::string e = walkMcus(
            f, front, opt.restart,
            [&](int, int, const Vqc16s* blk) -> std::string {
                for (int b = 0; b < nb; ++b) {
                    const int c = comp[b], k = c > 0;
                    const VqcStatus r = vqciGetHuffmanStatistics8x8_JPEG_16s_C1(blk + 64 * b, dcHist[k], acHist[k], &pred[c]);
                    if (r < 0) return status("statistics", r);
                }
                return {};
            },
            restartPred);
        if (!e.empty()) return e;
        for (int k = 0; k < nt; ++k) {
            if (std::string e = optimal(dcHist[k], t.dcLists[k]); !e.empty()) return e;
            if (std::string e = optimal(acHist[k], t.acLists[k]); !e.empty()) return e;
        }
        std::memset(pred, 0, sizeof pred);
    }
    const HuffLists* lists[4];
    int classes[4], ids[4];
    for (int k = 0; k < nt; ++k) {
        lists[2 * k] = &t.dcLists[k], classes[2 * k] = 0, ids[2 * k] = k;
        lists[2 * k + 1] = &t.acLists[k], classes[2 * k + 1] = 1, ids[2 * k + 1] = k;
        if (std::string e = buildSpec(t.dcLists[k], t.dc[k]); !e.empty()) return e;
        if (std::string e = buildSpec(t.acLists[k], t.ac[k]); !e.empty()) return e;
    }
    writeDht(w, lists, classes, ids, 2 * nt);
    Scan s;
    for (int c = 0; c < static_cast<int>(f.comps.size()); ++c) s.comps.push_back({c, c > 0, c > 0});
    writeSos(w, f, s);

    VqciEncodeHuffmanState state;
    vqciEncodeHuffmanStateInit_JPEG_8u(&state);
    auto flush = [&]() -> std::string {
        w.reserve(kBlockRoom);
        const VqcStatus r = vqciEncodeHuffman8x8_JPEG_16s1u_C1(nullptr, w.data(), w.length(), w.position(), nullptr, nullptr, nullptr, &state, 1);
        return r < 0 ? status("entropy coder flush", r) : std::string{};
    };
    std::string e = walkMcus(
        f, front, opt.restart,
        [&](int, int, const Vqc16s* blk) -> std::string {
            w.reserve(nb * kBlockRoom);
            uint8_t* d = w.data();
            const int32_t n = w.length();
            for (int b = 0; b < nb; ++b) {
                const int c = comp[b], k = c > 0;
                const VqcStatus r = vqciEncodeHuffman8x8_JPEG_16s1u_C1(blk + 64 * b, d, n, w.position(), &pred[c], &t.dc[k], &t.ac[k], &state, 0);
                if (r < 0) return status("entropy coder", r);
            }
            return {};
        },
        [&](int rst) -> std::string {
            if (std::string fe = flush(); !fe.empty()) return fe;
            w.marker(0xD0 + rst);
            return restartPred(rst);
        });
    if (!e.empty()) return e;
    return flush();
}

std::string encodeDct(const Image& img, const EncodeOptions& opt, std::vector<uint8_t>& out) {
    Frame f;
    f.sof = opt.progressive ? 2 : 0;
    f.width = img.width;
    f.height = img.height;
    const bool grey = opt.gray || img.channels == 1;
    const int hy = grey ? 1 : (opt.sampling == 444 ? 1 : 2), vy = grey ? 1 : (opt.sampling == 420 ? 2 : 1);
    f.comps.push_back(component(1, hy, vy, 0));
    if (!grey) f.comps.push_back(component(2, 1, 1, 1)), f.comps.push_back(component(3, 1, 1, 1));
    f.layout();

    // Quantisation: the example tables scaled by quality, in zig-zag order.
    uint8_t raw[2][64];
    Vqc16u fwd[2][64];
    for (int t = 0; t < 2; ++t) {
        for (int i = 0; i < 64; ++i) raw[t][i] = (t ? kStdChrominance : kStdLuminance)[kZigZag[i]];
        VqcStatus st = vqciQuantFwdRawTableInit_JPEG_8u(raw[t], opt.quality);
        if (st >= 0) st = vqciQuantFwdTableInit_JPEG_8u16u(raw[t], fwd[t]);
        if (st < 0) return status("quantisation table", st);
    }

    // The output is sized from a generous guess of the coded size of a
    // photograph at this quality, so that it seldom has to grow.
    size_t samples = 0;
    for (const Component& c : f.comps) samples += size_t(c.paddedW) * c.paddedH * 64;
    Writer w(out, samples / (opt.quality >= 95 ? 2 : opt.quality >= 85 ? 4 : 8) + 4096);
    writeHeader(w, f, raw, grey ? 1 : 2, true);
    if (opt.restart > 0) {
        w.marker(0xDD);
        w.word(4);
        w.word(opt.restart);
    }
    McuFront front(img, f, fwd);
    std::string e = opt.progressive ? encodeProgressive(f, front, opt.restart, w) : encodeSequential(f, front, opt, w);
    if (!e.empty()) return e;
    w.marker(0xD9);
    w.finish();
    return {};
}

std::string encodeLossless(const Image& img, const EncodeOptions& opt, std::vector<uint8_t>& out) {
    Frame f;
    f.sof = 3;
    f.width = img.width;
    f.height = img.height;
    f.precision = img.precision;
    const int n = img.channels;
    // Colour stays RGB: component ids 'R', 'G', 'B' say so.
    for (int c = 0; c < n; ++c) f.comps.push_back(component(n == 3 ? "RGB"[c] : 1, 1, 1, 0));
    f.layout();
    Scan s;
    for (int c = 0; c < n; ++c) s.comps.push_back({c, c, 0});
    s.ss = opt.lossless;
    s.se = 0;

    const int w = img.width;
    auto sample = [&](int x, int y, int c) -> int {
        const size_t i = (size_t(y) * w + x) * n + c;
        return img.precision > 8 ? img.wide[i] : img.pixels[i];
    };
    // Differences of the whole image, row after row, component by component.
    std::vector<Vqc16s> diff(size_t(w) * img.height * n);
    std::vector<Vqc16s> cur(w), prev(w);
    for (int c = 0; c < n; ++c)
        for (int y = 0; y < img.height; ++y) {
            for (int x = 0; x < w; ++x) cur[x] = static_cast<Vqc16s>(sample(x, y, c));
            Vqc16s* d = &diff[(size_t(c) * img.height + y) * w];
            const VqcStatus st = y == 0 ? vqciDiffPredFirstRow_JPEG_16s_C1(cur.data(), d, w, f.precision, 0)
                                        : vqciDiffPredRow_JPEG_16s_C1(cur.data(), prev.data(), d, w, opt.lossless);
            if (st < 0) return status("prediction", st);
            std::swap(cur, prev);
        }
    // Tables to measure: lossless categories reach 16, beyond the example tables.
    HuffLists lists[3];
    VqciEncodeHuffmanSpec specs[3];
    for (int c = 0; c < n; ++c) {
        int32_t hist[257] = {};
        const Vqc16s* d = &diff[size_t(c) * img.height * w];
        for (size_t i = 0; i < size_t(w) * img.height; ++i) vqciGetHuffmanStatisticsOne_JPEG_16s_C1(&d[i], hist);
        if (std::string e = optimal(hist, lists[c]); !e.empty()) return e;
        if (std::string e = buildSpec(lists[c], specs[c]); !e.empty()) return e;
    }
    Writer wr(out, 0);
    writeHeader(wr, f, nullptr, 0, false);
    const HuffLists* lp[3] = {&lists[0], &lists[1], &lists[2]};
    const int classes[3] = {0, 0, 0}, ids[3] = {0, 1, 2};
    writeDht(wr, lp, classes, ids, n);
    writeSos(wr, f, s);
    VqciEncodeHuffmanState state;
    vqciEncodeHuffmanStateInit_JPEG_8u(&state);
    const VqciEncodeHuffmanSpec* tables[4] = {&specs[0], &specs[n > 1 ? 1 : 0], &specs[n > 2 ? 2 : 0], &specs[0]};
    for (int y = 0; y < img.height; ++y) {
        const Vqc16s* rows[4];
        for (int c = 0; c < 4; ++c) rows[c] = &diff[(size_t(c < n ? c : 0) * img.height + y) * w];
        wr.reserve(size_t(w) * n * 5 + 16);
        const VqcStatus st = vqciEncodeHuffmanRow_JPEG_16s1u_P4C1(rows, w, n, wr.data(), wr.length(), wr.position(),
                                                                  tables, &state, 0);
        if (st < 0) return status("row coder", st);
    }
    wr.reserve(16);
    const VqcStatus st = vqciEncodeHuffmanRow_JPEG_16s1u_P4C1(nullptr, w, n, wr.data(), wr.length(), wr.position(),
                                                              nullptr, &state, 1);
    if (st < 0) return status("row coder flush", st);
    wr.marker(0xD9);
    wr.finish();
    return {};
}

}  // namespace

std::string encode(const Image& img, const EncodeOptions& opt, std::vector<uint8_t>& out) {
    if (img.width < 1 || img.height < 1 || img.width > 65535 || img.height > 65535)
        return "image size must be 1 to 65535 in each direction";
    if (img.channels != 1 && img.channels != 3) return "only grey and RGB images are supported";
    if (opt.lossless) {
        if (opt.lossless < 1 || opt.lossless > 7) return "the lossless predictor must be 1 to 7";
        if (opt.progressive) return "--lossless and --progressive do not go together";
        if (opt.gray && img.channels == 3) return "--gray is not supported with --lossless";
        return encodeLossless(img, opt, out);
    }
    if (img.precision != 8) return "DCT coding takes 8-bit images only";
    if (opt.quality < 1 || opt.quality > 100) return "quality must be 1 to 100";
    if (opt.sampling != 444 && opt.sampling != 422 && opt.sampling != 420) return "sampling must be 444, 422 or 420";
    if (opt.restart < 0 || opt.restart > 65535) return "restart interval must be 0 to 65535";
    return encodeDct(img, opt, out);
}

}  // namespace vqcjpeg
