// The decoder: sequential and progressive Huffman files with 8-bit samples,
// and lossless files, through the library's entropy, transform, sampling and
// colour primitives.
#include <vqcj.h>

#include <algorithm>
#include <cstring>

#include "codec.h"
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

// A plane with a border of one repeated sample on every side, as the
// up-samplers read one beyond each edge.
std::vector<uint8_t> bordered(const uint8_t* src, int step, int w, int h, int& bstep) {
    bstep = w + 2;
    std::vector<uint8_t> b(size_t(bstep) * (h + 2));
    for (int y = -1; y <= h; ++y) {
        const uint8_t* s = src + size_t(std::clamp(y, 0, h - 1)) * step;
        uint8_t* d = &b[size_t(y + 1) * bstep];
        std::memcpy(d + 1, s, w);
        d[0] = s[0];
        d[w + 1] = s[w - 1];
    }
    return b;
}

// One block to n x n samples: the full inverse for 8, the scaled ones below;
// 1 keeps the DC alone, rounded as libjpeg's 1x1 transform does.
void inverseBlock(const int16_t* coef, uint8_t* dst, int step, const Vqc16u* inv, int n) {
    switch (n) {
        case 8: vqciDCTQuantInv8x8LS_JPEG_16s8u_C1R(coef, dst, step, inv); break;
        case 4: vqciDCTQuantInv8x8To4x4LS_JPEG_16s8u_C1R(coef, dst, step, inv); break;
        case 2: vqciDCTQuantInv8x8To2x2LS_JPEG_16s8u_C1R(coef, dst, step, inv); break;
        default: *dst = static_cast<uint8_t>(std::clamp(((coef[0] * static_cast<int16_t>(inv[0]) + 4) >> 3) + 128, 0, 255));
    }
}

std::string finishDct(Frame& f, const ParsedScan& last, Image& out, int scale) {
    const int bs = 8 / scale;  // samples per block side
    const int padW = f.mcusX * f.hmax * bs, padH = f.mcusY * f.vmax * bs;
    const int outW = (f.width * bs + 7) / 8, outH = (f.height * bs + 7) / 8;
    const int n = static_cast<int>(f.comps.size());
    std::vector<std::vector<uint8_t>> planes(n);
    for (int c = 0; c < n; ++c) {
        Component& comp = f.comps[c];
        if (!last.haveQuant[comp.tq]) return "missing quantisation table " + std::to_string(comp.tq);
        uint8_t raw[64];
        for (int i = 0; i < 64; ++i) {
            if (last.quant[comp.tq][i] > 255) return "16-bit quantisation tables are not supported";
            raw[i] = static_cast<uint8_t>(last.quant[comp.tq][i]);
        }
        Vqc16u inv[64];
        vqciQuantInvTableInit_JPEG_8u16u(raw, inv);
        const int step = comp.paddedW * bs;
        planes[c].resize(size_t(step) * comp.paddedH * bs);
        for (int by = 0; by < comp.paddedH; ++by)
            for (int bx = 0; bx < comp.paddedW; ++bx)
                inverseBlock(&comp.coef[(size_t(by) * comp.paddedW + bx) * 64],
                             &planes[c][size_t(by) * bs * step + size_t(bx) * bs], step, inv, bs);
    }
    out.width = outW;
    out.height = outH;
    out.precision = 8;
    out.channels = n == 1 ? 1 : 3;
    out.pixels.resize(size_t(outW) * outH * out.channels);
    if (n == 1) {
        const int step = f.comps[0].paddedW * bs;
        for (int y = 0; y < outH; ++y) std::memcpy(&out.pixels[size_t(y) * outW], &planes[0][size_t(y) * step], outW);
        return {};
    }
    // Every plane at full rate with one common step, then one conversion.
    std::vector<uint8_t> full[3];
    for (int c = 0; c < 3; ++c) {
        const Component& comp = f.comps[c];
        const int fx = f.hmax / comp.h, fy = f.vmax / comp.v;
        const int w = comp.paddedW * bs, h = comp.paddedH * bs;
        if (fx == 1 && fy == 1) {
            full[c] = std::move(planes[c]);
            continue;
        }
        full[c].resize(size_t(padW) * padH);
        if (fx == 2) {
            int bstep;
            const std::vector<uint8_t> b = bordered(planes[c].data(), w, w, h, bstep);
            const VqciSize src{w, h}, dst{padW, padH};
            const VqcStatus st = fy == 2 ? vqciSampleUpH2V2_JPEG_8u_C1R(&b[bstep + 1], bstep, src, full[c].data(), padW, dst)
                                         : vqciSampleUpH2V1_JPEG_8u_C1R(&b[bstep + 1], bstep, src, full[c].data(), padW, dst);
            if (st < 0) return status("up-sampling", st);
        } else {  // 1x2: rows repeated
            for (int y = 0; y < padH; ++y) std::memcpy(&full[c][size_t(y) * padW], &planes[c][size_t(y / 2) * w], padW);
        }
    }
    const Vqc8u* src[3] = {full[0].data(), full[1].data(), full[2].data()};
    const bool rgb = f.comps[0].id == 'R' && f.comps[1].id == 'G' && f.comps[2].id == 'B';
    if (rgb) {
        for (int y = 0; y < outH; ++y)
            for (int x = 0; x < outW; ++x)
                for (int c = 0; c < 3; ++c) out.pixels[(size_t(y) * outW + x) * 3 + c] = src[c][size_t(y) * padW + x];
        return {};
    }
    const VqcStatus st = vqciYCbCrToRGB_JPEG_8u_P3C3R(src, padW, out.pixels.data(), outW * 3, VqciSize{outW, outH});
    return st < 0 ? status("colour conversion", st) : std::string{};
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
    if (size > 0x7FFFFFFF) return "file too large";
    Parsed p;
    if (std::string e = parse(data, size, p); !e.empty()) return e;
    if (p.frame.lossless()) return scaleDenom == 1 ? decodeLossless(data, size, p, out) : "lossless files decode at full size only";
    if (scaleDenom != 1 && scaleDenom != 2 && scaleDenom != 4 && scaleDenom != 8) return "scale must be 1/1, 1/2, 1/4 or 1/8";
    if (std::string e = decodeScans(data, size, p); !e.empty()) return e;
    return finishDct(p.frame, p.scans.back(), out, scaleDenom);
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
