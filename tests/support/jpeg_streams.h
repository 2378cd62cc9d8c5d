// JPEG files made and read with libjpeg-turbo for the entropy-coding
// interop tests and benchmarks: a file from pixels with chosen coding
// options, its quantised coefficients as libjpeg-turbo decodes them, and its
// marker segments taken apart into tables and scans.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace vqcjtest {

struct JpegOptions {
    int quality = 75;
    bool optimize = false;
    int restartInterval = 0;  // in MCUs
    bool grey = false;
    bool progressive = false;  // libjpeg-turbo's default script unless scans is set
    // Custom scans: {comps..., Ss, Se, Ah, Al} with compCount components.
    struct Scan {
        int compCount;
        int comps[4];
        int Ss, Se, Ah, Al;
    };
    std::vector<Scan> scans;
};

// rows packed, channels 1 or 3
std::vector<uint8_t> makeJpeg(const uint8_t* pixels, int width, int height, int channels, const JpegOptions& opt);

struct JpegComponent {
    int id = 0, h = 1, v = 1;
    int widthInBlocks = 0, heightInBlocks = 0;  // the component's own blocks
    int stride = 0, rows = 0;                   // of `blocks`, padded to whole MCUs
    std::vector<int16_t> blocks;                // natural order, 64 per block
    int16_t* block(int bx, int by) { return blocks.data() + (size_t(by) * stride + bx) * 64; }
};

struct JpegHuffTable {
    bool present = false;
    std::array<uint8_t, 16> bits{};
    std::array<uint8_t, 256> vals{};
};

struct JpegScan {
    int compCount = 0;
    int comps[4] = {};  // indices into the frame's components
    int td[4] = {}, ta[4] = {};
    int Ss = 0, Se = 63, Ah = 0, Al = 0;
    JpegHuffTable dc[4], ac[4];  // the tables in force at this scan
    int restartInterval = 0;
    std::vector<uint8_t> data;  // entropy-coded data with its RST markers, then the next marker
    std::vector<std::vector<uint8_t>> segments;  // the data cut at each RST, markers removed
};

struct JpegFile {
    int width = 0, height = 0, maxH = 1, maxV = 1;
    std::vector<JpegComponent> comps;
    std::vector<JpegScan> scans;
    int mcusPerRow(const JpegScan& s) const;
    int mcuRows(const JpegScan& s) const;
    // Blocks of MCU m of scan s, in coding order: {component, bx, by}.
    std::vector<std::array<int, 3>> mcuBlocks(const JpegScan& s, int m) const;
};

// Marker segments parsed; the coefficients as jpeg_read_coefficients gives them.
JpegFile readJpeg(const std::vector<uint8_t>& file);

}  // namespace vqcjtest
