// Pieces shared by the encoder, the decoder and the describer: the standard
// tables, the frame model and the marker parser.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace vqcjpeg {

// Natural index of each zig-zag position.
inline constexpr uint8_t kZigZag[64] = {0,  1,  8,  16, 9,  2,  3,  10, 17, 24, 32, 25, 18, 11, 4,  5,
                                        12, 19, 26, 33, 40, 48, 41, 34, 27, 20, 13, 6,  7,  14, 21, 28,
                                        35, 42, 49, 56, 57, 50, 43, 36, 29, 22, 15, 23, 30, 37, 44, 51,
                                        58, 59, 52, 45, 38, 31, 39, 46, 53, 60, 61, 54, 47, 55, 62, 63};

// The example tables of ITU-T T.81 Annex K, natural order.
inline constexpr uint8_t kStdLuminance[64] = {
    16, 11, 10, 16, 24,  40,  51,  61,  12, 12, 14, 19, 26,  58,  60,  55,  14, 13, 16, 24,  40, 57,
    69, 56, 14, 17, 22,  29,  51,  87,  80, 62, 18, 22, 37,  56,  68,  109, 103, 77, 24, 35, 55, 64,
    81, 104, 113, 92, 49, 64, 78,  87,  103, 121, 120, 101, 72, 92, 95, 98, 112, 100, 103, 99};
inline constexpr uint8_t kStdChrominance[64] = {
    17, 18, 24, 47, 99, 99, 99, 99, 18, 21, 26, 66, 99, 99, 99, 99, 24, 26, 56, 99, 99, 99,
    99, 99, 47, 66, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99,
    99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99};

struct HuffLists {
    uint8_t bits[16] = {};
    std::vector<uint8_t> vals;
};
HuffLists stdHuffman(bool ac, bool chroma);

struct Component {
    int id = 0, h = 1, v = 1, tq = 0;
    int width = 0, height = 0;     // samples of this component
    int blocksW = 0, blocksH = 0;  // blocks covering the component (not padded)
    int paddedW = 0, paddedH = 0;  // blocks covering whole MCUs
    std::vector<int16_t> coef;     // paddedW * paddedH blocks of 64, natural order
};

struct ScanComponent {
    int index = 0;  // into Frame::comps
    int td = 0, ta = 0;
};

struct Scan {
    std::vector<ScanComponent> comps;
    int ss = 0, se = 63, ah = 0, al = 0;
};

struct Frame {
    int sof = -1;  // 0xC0..0xC3 low nibble
    int precision = 8;
    int width = 0, height = 0;
    int hmax = 1, vmax = 1;
    int mcusX = 0, mcusY = 0;
    std::vector<Component> comps;
    bool progressive() const { return sof == 2; }
    bool lossless() const { return sof == 3; }
    void layout();  // fills the derived sizes from the sampling factors
};

// A parsed stream: the frame, the tables as last defined before each scan,
// and the scans with where their entropy-coded data lie.
struct ParsedScan {
    Scan scan;
    size_t dataBegin = 0;
    std::array<HuffLists, 4> dc, ac;
    std::array<bool, 4> haveDc{}, haveAc{};
    std::array<std::array<uint16_t, 64>, 4> quant{};  // zig-zag order
    std::array<bool, 4> haveQuant{};
    int restart = 0;
};

struct Parsed {
    Frame frame;
    std::vector<ParsedScan> scans;
    std::vector<std::string> notes;  // APPn and COM segments seen, for the describer
};

// Reads the markers of a whole file; entropy-coded data are skipped here and
// decoded later from dataBegin. Returns an empty string or the reason.
std::string parse(const uint8_t* data, size_t size, Parsed& out);

// Parses a DCT-coded file and decodes all its scans into the components'
// coefficient arrays (quantised, natural order).
std::string decodeScans(const uint8_t* data, size_t size, Parsed& p);

// Visits the blocks of a scan in stream order: fn(component, block) for each
// block, and restart(unit) before every restart unit after the first.
template <class Block, class Restart>
inline std::string walkScan(Frame& f, const Scan& s, int restart, Block&& block, Restart&& onRestart) {
    long unit = 0;
    auto boundary = [&]() -> std::string {
        if (restart > 0 && unit > 0 && unit % restart == 0) return onRestart(static_cast<int>((unit / restart - 1) & 7));
        return {};
    };
    if (s.comps.size() == 1) {
        const int ci = s.comps[0].index;
        Component& c = f.comps[ci];
        for (int by = 0; by < c.blocksH; ++by)
            for (int bx = 0; bx < c.blocksW; ++bx, ++unit) {
                if (std::string e = boundary(); !e.empty()) return e;
                if (std::string e = block(0, &c.coef[(size_t(by) * c.paddedW + bx) * 64]); !e.empty()) return e;
            }
        return {};
    }
    for (int my = 0; my < f.mcusY; ++my)
        for (int mx = 0; mx < f.mcusX; ++mx, ++unit) {
            if (std::string e = boundary(); !e.empty()) return e;
            for (size_t k = 0; k < s.comps.size(); ++k) {
                Component& c = f.comps[s.comps[k].index];
                for (int v = 0; v < c.v; ++v)
                    for (int h = 0; h < c.h; ++h) {
                        const size_t b = size_t(my * c.v + v) * c.paddedW + size_t(mx * c.h + h);
                        if (std::string e = block(static_cast<int>(k), &c.coef[b * 64]); !e.empty()) return e;
                    }
            }
        }
    return {};
}

// Finds the next marker at or after pos (0xFF followed by neither 0x00 nor
// 0xFF); returns its code and leaves pos behind it, or -1 at the end.
int nextMarker(const uint8_t* data, size_t size, size_t& pos);

}  // namespace vqcjpeg
