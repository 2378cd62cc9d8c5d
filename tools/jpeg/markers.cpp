#include <algorithm>
#include <cstdio>
#include <cstring>

#include "jpegint.h"

namespace vqcjpeg {

namespace {

constexpr uint8_t kDcBitsY[16] = {0, 1, 5, 1, 1, 1, 1, 1, 1, 0, 0, 0, 0, 0, 0, 0};
constexpr uint8_t kDcBitsC[16] = {0, 3, 1, 1, 1, 1, 1, 1, 1, 1, 1, 0, 0, 0, 0, 0};
constexpr uint8_t kAcBitsY[16] = {0, 2, 1, 3, 3, 2, 4, 3, 5, 5, 4, 4, 0, 0, 1, 0x7d};
constexpr uint8_t kAcBitsC[16] = {0, 2, 1, 2, 4, 4, 3, 4, 7, 5, 4, 4, 0, 1, 2, 0x77};
constexpr uint8_t kAcValsY[162] = {
    0x01, 0x02, 0x03, 0x00, 0x04, 0x11, 0x05, 0x12, 0x21, 0x31, 0x41, 0x06, 0x13, 0x51, 0x61, 0x07, 0x22, 0x71,
    0x14, 0x32, 0x81, 0x91, 0xa1, 0x08, 0x23, 0x42, 0xb1, 0xc1, 0x15, 0x52, 0xd1, 0xf0, 0x24, 0x33, 0x62, 0x72,
    0x82, 0x09, 0x0a, 0x16, 0x17, 0x18, 0x19, 0x1a, 0x25, 0x26, 0x27, 0x28, 0x29, 0x2a, 0x34, 0x35, 0x36, 0x37,
    0x38, 0x39, 0x3a, 0x43, 0x44, 0x45, 0x46, 0x47, 0x48, 0x49, 0x4a, 0x53, 0x54, 0x55, 0x56, 0x57, 0x58, 0x59,
    0x5a, 0x63, 0x64, 0x65, 0x66, 0x67, 0x68, 0x69, 0x6a, 0x73, 0x74, 0x75, 0x76, 0x77, 0x78, 0x79, 0x7a, 0x83,
    0x84, 0x85, 0x86, 0x87, 0x88, 0x89, 0x8a, 0x92, 0x93, 0x94, 0x95, 0x96, 0x97, 0x98, 0x99, 0x9a, 0xa2, 0xa3,
    0xa4, 0xa5, 0xa6, 0xa7, 0xa8, 0xa9, 0xaa, 0xb2, 0xb3, 0xb4, 0xb5, 0xb6, 0xb7, 0xb8, 0xb9, 0xba, 0xc2, 0xc3,
    0xc4, 0xc5, 0xc6, 0xc7, 0xc8, 0xc9, 0xca, 0xd2, 0xd3, 0xd4, 0xd5, 0xd6, 0xd7, 0xd8, 0xd9, 0xda, 0xe1, 0xe2,
    0xe3, 0xe4, 0xe5, 0xe6, 0xe7, 0xe8, 0xe9, 0xea, 0xf1, 0xf2, 0xf3, 0xf4, 0xf5, 0xf6, 0xf7, 0xf8, 0xf9, 0xfa};
constexpr uint8_t kAcValsC[162] = {
    0x00, 0x01, 0x02, 0x03, 0x11, 0x04, 0x05, 0x21, 0x31, 0x06, 0x12, 0x41, 0x51, 0x07, 0x61, 0x71, 0x13, 0x22,
    0x32, 0x81, 0x08, 0x14, 0x42, 0x91, 0xa1, 0xb1, 0xc1, 0x09, 0x23, 0x33, 0x52, 0xf0, 0x15, 0x62, 0x72, 0xd1,
    0x0a, 0x16, 0x24, 0x34, 0xe1, 0x25, 0xf1, 0x17, 0x18, 0x19, 0x1a, 0x26, 0x27, 0x28, 0x29, 0x2a, 0x35, 0x36,
    0x37, 0x38, 0x39, 0x3a, 0x43, 0x44, 0x45, 0x46, 0x47, 0x48, 0x49, 0x4a, 0x53, 0x54, 0x55, 0x56, 0x57, 0x58,
    0x59, 0x5a, 0x63, 0x64, 0x65, 0x66, 0x67, 0x68, 0x69, 0x6a, 0x73, 0x74, 0x75, 0x76, 0x77, 0x78, 0x79, 0x7a,
    0x82, 0x83, 0x84, 0x85, 0x86, 0x87, 0x88, 0x89, 0x8a, 0x92, 0x93, 0x94, 0x95, 0x96, 0x97, 0x98, 0x99, 0x9a,
    0xa2, 0xa3, 0xa4, 0xa5, 0xa6, 0xa7, 0xa8, 0xa9, 0xaa, 0xb2, 0xb3, 0xb4, 0xb5, 0xb6, 0xb7, 0xb8, 0xb9, 0xba,
    0xc2, 0xc3, 0xc4, 0xc5, 0xc6, 0xc7, 0xc8, 0xc9, 0xca, 0xd2, 0xd3, 0xd4, 0xd5, 0xd6, 0xd7, 0xd8, 0xd9, 0xda,
    0xe2, 0xe3, 0xe4, 0xe5, 0xe6, 0xe7, 0xe8, 0xe9, 0xea, 0xf2, 0xf3, 0xf4, 0xf5, 0xf6, 0xf7, 0xf8, 0xf9, 0xfa};

int be16(const uint8_t* p) { return (p[0] << 8) | p[1]; }

std::string fmt(const char* f, int a, int b = 0) {
    char buf[128];
    std::snprintf(buf, sizeof buf, f, a, b);
    return buf;
}

std::string parseSof(const uint8_t* p, int len, int sof, Frame& f) {
    if (f.sof >= 0) return "more than one frame header";
    if (len < 6) return "truncated frame header";
    f.sof = sof;
    f.precision = p[0];
    f.height = be16(p + 1);
    f.width = be16(p + 3);
    const int n = p[5];
    if (len < 6 + 3 * n) return "truncated frame header";
    if (f.width < 1 || f.height < 1) return "image without size (DNL is not supported)";
    if (n != 1 && n != 3) return fmt("%d components: only 1 and 3 are supported", n);
    if (f.lossless() ? (f.precision < 2 || f.precision > 16) : f.precision != 8)
        return fmt("%d-bit samples are not supported in this mode", f.precision);
    for (int i = 0; i < n; ++i) {
        Component c;
        c.id = p[6 + 3 * i];
        c.h = p[7 + 3 * i] >> 4;
        c.v = p[7 + 3 * i] & 15;
        c.tq = p[8 + 3 * i];
        if (c.h < 1 || c.h > 2 || c.v < 1 || c.v > 2) return "sampling factors other than 1 and 2";
        if (c.tq > 3) return "bad quantisation table number";
        f.comps.push_back(c);
    }
    f.layout();
    return {};
}

std::string parseDht(const uint8_t* p, int len, ParsedScan& t) {
    while (len > 0) {
        if (len < 17) return "truncated Huffman table";
        const int cls = p[0] >> 4, id = p[0] & 15;
        if (cls > 1 || id > 3) return "bad Huffman table class or number";
        HuffLists h;
        int total = 0;
        for (int i = 0; i < 16; ++i) total += h.bits[i] = p[1 + i];
        if (total > 256 || len < 17 + total) return "bad Huffman table";
        h.vals.assign(p + 17, p + 17 + total);
        (cls ? t.ac : t.dc)[id] = std::move(h);
        (cls ? t.haveAc : t.haveDc)[id] = true;
        p += 17 + total;
        len -= 17 + total;
    }
    return {};
}

std::string parseDqt(const uint8_t* p, int len, ParsedScan& t) {
    while (len > 0) {
        const int pq = p[0] >> 4, id = p[0] & 15;
        const int n = 1 + 64 * (pq + 1);
        if (pq > 1 || id > 3) return "bad quantisation table";
        if (len < n) return "truncated quantisation table";
        for (int i = 0; i < 64; ++i) t.quant[id][i] = pq ? be16(p + 1 + 2 * i) : p[1 + i];
        t.haveQuant[id] = true;
        p += n;
        len -= n;
    }
    return {};
}

std::string parseSos(const uint8_t* p, int len, const Frame& f, Scan& s) {
    if (f.sof < 0) return "scan before the frame header";
    if (len < 1) return "truncated scan header";
    const int n = p[0];
    if (n < 1 || n > 4 || len < 4 + 2 * n) return "bad scan header";
    for (int i = 0; i < n; ++i) {
        ScanComponent sc;
        const int id = p[1 + 2 * i];
        sc.index = -1;
        for (size_t k = 0; k < f.comps.size(); ++k)
            if (f.comps[k].id == id) sc.index = static_cast<int>(k);
        if (sc.index < 0) return "scan names an unknown component";
        sc.td = p[2 + 2 * i] >> 4;
        sc.ta = p[2 + 2 * i] & 15;
        if (sc.td > 3 || sc.ta > 3) return "bad Huffman table number in scan";
        s.comps.push_back(sc);
    }
    s.ss = p[1 + 2 * n];
    s.se = p[2 + 2 * n];
    s.ah = p[3 + 2 * n] >> 4;
    s.al = p[3 + 2 * n] & 15;
    if (f.progressive()) {
        if (s.ss > s.se || s.se > 63 || (s.ss == 0 && s.se != 0) || (s.ss > 0 && n != 1) || s.al > 13)
            return "bad progressive scan parameters";
    } else if (f.lossless()) {
        if (s.ss < 1 || s.ss > 7) return "bad lossless predictor";
    } else if (s.ss != 0 || s.se != 63 || s.ah || s.al) {
        return "bad sequential scan parameters";
    }
    return {};
}

}  // namespace

HuffLists stdHuffman(bool ac, bool chroma) {
    HuffLists h;
    const uint8_t* bits = ac ? (chroma ? kAcBitsC : kAcBitsY) : (chroma ? kDcBitsC : kDcBitsY);
    std::copy(bits, bits + 16, h.bits);
    if (ac) {
        const uint8_t* v = chroma ? kAcValsC : kAcValsY;
        h.vals.assign(v, v + 162);
    } else {
        for (int i = 0; i < 12; ++i) h.vals.push_back(static_cast<uint8_t>(i));
    }
    return h;
}

void Frame::layout() {
    hmax = vmax = 1;
    for (const Component& c : comps) {
        hmax = std::max(hmax, c.h);
        vmax = std::max(vmax, c.v);
    }
    const int unit = lossless() ? 1 : 8;
    mcusX = (width + hmax * unit - 1) / (hmax * unit);
    mcusY = (height + vmax * unit - 1) / (vmax * unit);
    for (Component& c : comps) {
        c.width = (width * c.h + hmax - 1) / hmax;
        c.height = (height * c.v + vmax - 1) / vmax;
        c.blocksW = (c.width + unit - 1) / unit;
        c.blocksH = (c.height + unit - 1) / unit;
        c.paddedW = mcusX * c.h;
        c.paddedH = mcusY * c.v;
    }
}

int nextMarker(const uint8_t* data, size_t size, size_t& pos) {
    // memchr skips the coded data to each 0xFF far faster than a byte loop.
    while (pos + 1 < size) {
        const void* ff = std::memchr(data + pos, 0xFF, size - 1 - pos);
        if (!ff) break;
        pos = static_cast<size_t>(static_cast<const uint8_t*>(ff) - data);
        if (data[pos + 1] != 0x00 && data[pos + 1] != 0xFF) {
            pos += 2;
            return data[pos - 1];
        }
        ++pos;
    }
    pos = size;
    return -1;
}

std::string parse(const uint8_t* data, size_t size, Parsed& out) {
    if (size < 4 || data[0] != 0xFF || data[1] != 0xD8) return "not a JPEG file (no SOI marker)";
    size_t pos = 2;
    ParsedScan tables;  // the tables in force, copied into each scan
    for (;;) {
        if (pos + 1 >= size) return "truncated file (no EOI marker)";
        if (data[pos] != 0xFF) return fmt("bad marker: byte 0x%02X where a marker should stand", data[pos]);
        while (pos < size && data[pos] == 0xFF) ++pos;  // fill bytes
        if (pos >= size) return "truncated file";
        const int m = data[pos++];
        if (m == 0xD9) break;
        if (m == 0xD8 || (m >= 0xD0 && m <= 0xD7) || m == 0x01) continue;  // stand-alone
        if (pos + 2 > size) return "truncated marker segment";
        const int len = be16(data + pos) - 2;
        if (len < 0 || pos + 2 + static_cast<size_t>(len) > size) return "truncated marker segment";
        const uint8_t* p = data + pos + 2;
        pos += 2 + len;
        std::string err;
        if (m >= 0xC0 && m <= 0xC3) {
            err = parseSof(p, len, m & 15, out.frame);
        } else if (m >= 0xC5 && m <= 0xCF && m != 0xC8 && m != 0xCC) {
            err = (m & 8) ? "arithmetic coding is not supported" : "hierarchical JPEG is not supported";
        } else if (m == 0xC4) {
            err = parseDht(p, len, tables);
        } else if (m == 0xDB) {
            err = parseDqt(p, len, tables);
        } else if (m == 0xDD) {
            if (len < 2) return "truncated restart interval";
            tables.restart = be16(p);
        } else if (m == 0xDA) {
            ParsedScan s = tables;
            s.scan = Scan{};
            err = parseSos(p, len, out.frame, s.scan);
            if (!err.empty()) return err;
            s.dataBegin = pos;
            out.scans.push_back(std::move(s));
            // Pass over the entropy-coded data and its restart markers.
            for (;;) {
                size_t at = pos;
                const int next = nextMarker(data, size, at);
                if (next < 0) return "truncated file (scan data without end)";
                if (next >= 0xD0 && next <= 0xD7) {
                    pos = at;
                    continue;
                }
                pos = at - 2;
                while (pos > 0 && data[pos - 1] == 0xFF) --pos;  // fill bytes before the marker
                break;
            }
        } else if ((m >= 0xE0 && m <= 0xEF) || m == 0xFE) {
            out.notes.push_back(fmt(m == 0xFE ? "COM, %d bytes" : "APP%d, %d bytes", m == 0xFE ? len : m - 0xE0, len));
        } else if (m == 0xDC || m == 0xDE || m == 0xDF) {
            err = "DNL and hierarchical markers are not supported";
        }
        if (!err.empty()) return err;
    }
    if (out.frame.sof < 0) return "no frame header";
    if (out.scans.empty()) return "no scan";
    return {};
}

}  // namespace vqcjpeg
