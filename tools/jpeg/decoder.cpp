// The decoder: sequential and progressive Huffman files with 8-bit samples,
// and lossless files, through the library's entropy, transform, sampling and
// colour primitives. This file drives the scans; decrows.cpp turns
// coefficients into rows.
#include <vqcj.h>

#include <algorithm>
#include <cstring>

#include "codec.h"
#include "decrows.h"
#include "jpegint.h"

namespace vqcjpeg {

namespace {

std::string status(const char* what, VqcStatus st) {
    return std::string("corrupt data: ") + what + " failed with status " + std::to_string(st);
}

struct DecodeTables {
    VqciDecodeHuffmanSpec dc[4], ac[4];
};

std::string buildTables(const ParsedScan& ps, DecodeTables& t, bool needDc, bool needAc) {
    for (const ScanComponent& sc : ps.scan.comps) {
        if (needDc) {
            if (!ps.haveDc[sc.td]) return "missing Huffman table (DC " + std::to_string(sc.td) + ")";
            const VqcStatus st = vqciDecodeHuffmanSpecInit_JPEG_8u(ps.dc[sc.td].bits, ps.dc[sc.td].vals.data(), &t.dc[sc.td]);
            if (st < 0) return status("Huffman table", st);
        }
        if (needAc) {
            if (!ps.haveAc[sc.ta]) return "missing Huffman table (AC " + std::to_string(sc.ta) + ")";
            const VqcStatus st = vqciDecodeHuffmanSpecInit_JPEG_8u(ps.ac[sc.ta].bits, ps.ac[sc.ta].vals.data(), &t.ac[sc.ta]);
            if (st < 0) return status("Huffman table", st);
        }
    }
    return {};
}

// Reads the restart marker that should stand next: the reader may have met
// it already; otherwise it is looked for from the current position.
std::string takeRestart(const uint8_t* data, size_t size, int32_t& pos, int32_t& marker) {
    int m = marker;
    if (m == 0) {
        size_t p = static_cast<size_t>(pos);
        m = nextMarker(data, size, p);
        pos = static_cast<int32_t>(p);
    }
    if (m < 0xD0 || m > 0xD7) return "corrupt data: restart marker missing";
    marker = 0;
    return {};
}

std::string decodeScan(const uint8_t* data, size_t size, Frame& f, const ParsedScan& ps) {
    const Scan& s = ps.scan;
    const bool prog = f.progressive(), dcScan = s.ss == 0;
    if (prog && s.comps.size() > 1 && !dcScan) return "bad progressive scan: interleaved AC";
    DecodeTables t;
    if (std::string e = buildTables(ps, t, !prog || (dcScan && !s.ah), !prog || !dcScan); !e.empty()) return e;
    VqciDecodeHuffmanState state;
    vqciDecodeHuffmanStateInit_JPEG_8u(&state);
    int32_t pos = static_cast<int32_t>(ps.dataBegin), marker = 0;
    const int32_t len = static_cast<int32_t>(size);
    int16_t pred[4] = {};
    auto block = [&](int k, int16_t* blk) -> std::string {
        const ScanComponent& sc = s.comps[k];
        VqcStatus st;
        if (!prog)
            st = vqciDecodeHuffman8x8_JPEG_1u16s_C1(data, len, &pos, blk, &pred[k], &marker, &t.dc[sc.td], &t.ac[sc.ta], &state);
        else if (dcScan && s.ah)
            st = vqciDecodeHuffman8x8_DCRefine_JPEG_1u16s_C1(data, len, &pos, blk, &marker, s.al, &state);
        else if (dcScan)
            st = vqciDecodeHuffman8x8_DCFirst_JPEG_1u16s_C1(data, len, &pos, blk, &pred[k], &marker, s.al, &t.dc[sc.td], &state);
        else if (s.ah)
            st = vqciDecodeHuffman8x8_ACRefine_JPEG_1u16s_C1(data, len, &pos, blk, &marker, s.ss, s.se, s.al, &t.ac[sc.ta], &state);
        else
            st = vqciDecodeHuffman8x8_ACFirst_JPEG_1u16s_C1(data, len, &pos, blk, &marker, s.ss, s.se, s.al, &t.ac[sc.ta], &state);
        return st < 0 ? status("entropy decoder", st) : std::string{};
    };
    return walkScan(f, s, ps.restart, block, [&](int) -> std::string {
        if (std::string e = takeRestart(data, size, pos, marker); !e.empty()) return e;
        vqciDecodeHuffmanStateInit_JPEG_8u(&state);
        std::memset(pred, 0, sizeof pred);
        return {};
    });
}

// A sequential file whose one scan holds every component: each MCU is
// decoded into one reused buffer and handed to the back end at once, with
// how far each block's coefficients reach.
std::string decodeOnePass(const uint8_t* data, size_t size, const Frame& f, const ParsedScan& ps, RowWriter& w) {
    const Scan& s = ps.scan;
    DecodeTables t;
    if (std::string e = buildTables(ps, t, true, true); !e.empty()) return e;
    // An MCU's blocks by component in frame order, each in raster order;
    // the stream gives them in scan order.
    int first[3] = {}, total = 0;
    for (size_t c = 0; c < f.comps.size(); ++c) first[c] = total, total += f.comps[c].h * f.comps[c].v;
    alignas(64) int16_t blocks[12][64];
    int32_t used[12];
    McuBlocks mcu;
    for (size_t c = 0; c < f.comps.size(); ++c) mcu.blocks[c] = blocks[first[c]], mcu.stride[c] = f.comps[c].h;
    mcu.counts = used;
    int16_t pred[4] = {};
    struct Job {
        int block, k;
        const VqciDecodeHuffmanSpec *dc, *ac;
    } jobs[12];
    int n = 0;
    for (size_t k = 0; k < s.comps.size(); ++k) {
        const ScanComponent& sc = s.comps[k];
        const Component& c = f.comps[sc.index];
        for (int b = first[sc.index]; b < first[sc.index] + c.h * c.v; ++b) jobs[n++] = {b, int(k), &t.dc[sc.td], &t.ac[sc.ta]};
    }
    VqciDecodeHuffmanState state;
    vqciDecodeHuffmanStateInit_JPEG_8u(&state);
    int32_t pos = static_cast<int32_t>(ps.dataBegin), marker = 0;
    const int32_t len = static_cast<int32_t>(size);
    long unit = 0;
    for (int my = 0; my < f.mcusY; ++my) {
        for (int mx = 0; mx < f.mcusX; ++mx, ++unit) {
            if (ps.restart > 0 && unit > 0 && unit % ps.restart == 0) {
                if (std::string e = takeRestart(data, size, pos, marker); !e.empty()) return e;
                vqciDecodeHuffmanStateInit_JPEG_8u(&state);
                std::memset(pred, 0, sizeof pred);
            }
            for (const Job* j = jobs; j < jobs + n; ++j) {
                const VqcStatus st = vqciDecodeHuffman8x8_JPEG_1u16s_C1(data, len, &pos, blocks[j->block], &pred[j->k], &marker,
                                                                       j->dc, j->ac, &state);
                if (st < 0) return status("entropy decoder", st);
                used[j->block] = state.coefCount;
            }
            w.mcu(my, mx, mcu);
        }
        if (std::string e = w.endRow(my); !e.empty()) return e;
    }
    return w.finish();
}

// Any other file: the coefficients of the whole picture, then the same back
// end row by row.
std::string decodeWhole(const uint8_t* data, size_t size, Parsed& p, RowWriter& w) {
    if (std::string e = decodeScans(data, size, p); !e.empty()) return e;
    const Frame& f = p.frame;
    McuBlocks mcu;
    for (int my = 0; my < f.mcusY; ++my) {
        for (int mx = 0; mx < f.mcusX; ++mx) {
            for (size_t c = 0; c < f.comps.size(); ++c) {
                const Component& comp = f.comps[c];
                mcu.blocks[c] = &comp.coef[(size_t(my) * comp.v * comp.paddedW + size_t(mx) * comp.h) * 64];
                mcu.stride[c] = comp.paddedW;
            }
            w.mcu(my, mx, mcu);
        }
        if (std::string e = w.endRow(my); !e.empty()) return e;
    }
    return w.finish();
}

// One scan with each component once.
bool onePass(const Parsed& p) {
    if (p.frame.progressive() || p.scans.size() != 1) return false;
    const Scan& s = p.scans[0].scan;
    if (s.comps.size() != p.frame.comps.size()) return false;
    for (size_t k = 0; k < s.comps.size(); ++k)
        for (size_t j = 0; j < k; ++j)
            if (s.comps[j].index == s.comps[k].index) return false;
    return true;
}

std::string decodeLossless(const uint8_t* data, size_t size, Parsed& p, Image& out) {
    Frame& f = p.frame;
    const int n = static_cast<int>(f.comps.size());
    for (const Component& c : f.comps)
        if (c.h != 1 || c.v != 1) return "lossless files with sub-sampled components are not supported";
    const int w = f.width, h = f.height;
    std::vector<uint16_t> samples(size_t(w) * h * n);
    std::vector<bool> seen(n);
    for (const ParsedScan& ps : p.scans) {
        const Scan& s = ps.scan;
        const int nc = static_cast<int>(s.comps.size());
        if (nc > 4) return "bad lossless scan";
        if (ps.restart > 0 && ps.restart % w != 0) return "restart intervals that split rows are not supported";
        DecodeTables t;
        if (std::string e = buildTables(ps, t, true, false); !e.empty()) return e;
        VqciDecodeHuffmanState state;
        vqciDecodeHuffmanStateInit_JPEG_8u(&state);
        int32_t pos = static_cast<int32_t>(ps.dataBegin), marker = 0;
        std::vector<Vqc16s> diff(size_t(w) * nc), cur(size_t(w) * nc), prev(size_t(w) * nc);
        Vqc16s* rows[4];
        const VqciDecodeHuffmanSpec* tables[4];
        for (int k = 0; k < 4; ++k) {
            rows[k] = &diff[size_t(std::min(k, nc - 1)) * w];
            tables[k] = &t.dc[s.comps[std::min(k, nc - 1)].td];
        }
        const int rowsPerInterval = ps.restart > 0 ? ps.restart / w : 0;
        for (int y = 0; y < h; ++y) {
            bool first = y == 0;
            if (rowsPerInterval > 0 && y > 0 && y % rowsPerInterval == 0) {
                if (std::string e = takeRestart(data, size, pos, marker); !e.empty()) return e;
                vqciDecodeHuffmanStateInit_JPEG_8u(&state);
                first = true;
            }
            VqcStatus st = vqciDecodeHuffmanRow_JPEG_1u16s_C1P4(data, static_cast<int32_t>(size), &pos, rows, w, nc, &marker,
                                                                tables, &state);
            if (st < 0) return status("row decoder", st);
            for (int k = 0; k < nc; ++k) {
                Vqc16s* c = &cur[size_t(k) * w];
                st = first ? vqciReconstructPredFirstRow_JPEG_16s_C1(rows[k], c, w, f.precision, s.al)
                           : vqciReconstructPredRow_JPEG_16s_C1(rows[k], &prev[size_t(k) * w], c, w, s.ss);
                if (st < 0) return status("reconstruction", st);
                const int ci = s.comps[k].index;
                seen[ci] = true;
                for (int x = 0; x < w; ++x)
                    samples[(size_t(y) * w + x) * n + ci] = static_cast<uint16_t>(static_cast<uint16_t>(c[x]) << s.al);
            }
            std::swap(cur, prev);
        }
    }
    for (int c = 0; c < n; ++c)
        if (!seen[c]) return "a component has no scan";
    out.width = w;
    out.height = h;
    out.channels = n;
    out.precision = f.precision;
    const uint16_t mask = static_cast<uint16_t>((1u << f.precision) - 1);
    if (f.precision > 8) {
        out.wide.resize(samples.size());
        for (size_t i = 0; i < samples.size(); ++i) out.wide[i] = samples[i] & mask;
    } else {
        out.pixels.resize(samples.size());
        for (size_t i = 0; i < samples.size(); ++i) out.pixels[i] = static_cast<uint8_t>(samples[i] & mask);
    }
    return {};
}

}  // namespace

std::string decode(const uint8_t* data, size_t size, Image& out, int scaleDenom) {
    DecodeOptions opt;
    opt.scaleDenom = scaleDenom;
    return decode(data, size, out, opt);
}

std::string decode(const uint8_t* data, size_t size, Image& out, const DecodeOptions& opt) {
    if (size > 0x7FFFFFFF) return "file too large";
    Parsed p;
    if (std::string e = parse(data, size, p); !e.empty()) return e;
    // Every block, or every sample of a lossless file, takes at least one bit
    // of coded data: a header that promises more than the file can hold is
    // refused before any picture-sized buffer is made.
    long long units = 0;
    for (const Component& c : p.frame.comps) units += static_cast<long long>(c.blocksW) * c.blocksH;
    if (units > 8 * static_cast<long long>(size))
        return "corrupt data: too short for a " + std::to_string(p.frame.width) + "x" + std::to_string(p.frame.height) + " picture";
    const int scale = opt.scaleDenom;
    if (p.frame.lossless()) return scale == 1 ? decodeLossless(data, size, p, out) : "lossless files decode at full size only";
    if (scale != 1 && scale != 2 && scale != 4 && scale != 8) return "scale must be 1/1, 1/2, 1/4 or 1/8";
    // A lone component is coded block by block whatever its sampling factors.
    if (p.frame.comps.size() == 1) {
        p.frame.comps[0].h = p.frame.comps[0].v = 1;
        p.frame.layout();
    }
    RowWriter w;
    if (std::string e = w.init(p.frame, p.scans.back(), opt, out); !e.empty()) return e;
    return onePass(p) ? decodeOnePass(data, size, p.frame, p.scans[0], w) : decodeWhole(data, size, p, w);
}

std::string decodeScans(const uint8_t* data, size_t size, Parsed& p) {
    Frame& f = p.frame;
    if (f.lossless()) return "a lossless file has no coefficients";
    for (Component& c : f.comps) c.coef.assign(size_t(c.paddedW) * c.paddedH * 64, 0);
    for (const ParsedScan& ps : p.scans)
        if (std::string e = decodeScan(data, size, f, ps); !e.empty()) return e;
    return {};
}

std::string describe(const uint8_t* data, size_t size, std::string& text) {
    Parsed p;
    if (std::string e = parse(data, size, p); !e.empty()) return e;
    const Frame& f = p.frame;
    static const char* const kinds[] = {"baseline", "extended sequential", "progressive", "lossless"};
    char line[256];
    std::snprintf(line, sizeof line, "frame: SOF%d %s, %d-bit, %dx%d, %zu component%s\n", f.sof, kinds[f.sof],
                  f.precision, f.width, f.height, f.comps.size(), f.comps.size() == 1 ? "" : "s");
    text = line;
    for (const Component& c : f.comps) {
        std::snprintf(line, sizeof line, "component: id %d, sampling %dx%d, quantisation table %d\n", c.id, c.h, c.v, c.tq);
        text += line;
    }
    const ParsedScan& last = p.scans.back();
    for (int t = 0; t < 4; ++t)
        if (last.haveQuant[t]) {
            std::snprintf(line, sizeof line, "quantisation table %d: first values %d %d %d\n", t, last.quant[t][0],
                          last.quant[t][1], last.quant[t][2]);
            text += line;
        }
    for (const std::string& note : p.notes) text += "segment: " + note + "\n";
    int i = 0;
    for (const ParsedScan& ps : p.scans) {
        std::string comps;
        for (const ScanComponent& sc : ps.scan.comps) {
            char one[48];
            std::snprintf(one, sizeof one, "%s%d(dc%d ac%d)", comps.empty() ? "" : ",", f.comps[sc.index].id, sc.td, sc.ta);
            comps += one;
        }
        std::snprintf(line, sizeof line, "scan %d: components %s, Ss %d, Se %d, Ah %d, Al %d, restart %d\n", i++,
                      comps.c_str(), ps.scan.ss, ps.scan.se, ps.scan.ah, ps.scan.al, ps.restart);
        text += line;
    }
    return {};
}

}  // namespace vqcjpeg
