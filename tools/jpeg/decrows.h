// The decoder's back end: the coefficient blocks of one MCU row in, output
// rows out. Inverse transforms, chroma up-sampling and colour conversion run
// per MCU row on buffers a few rows high, so that a sequential file decodes
// in one pass with the output image as its only picture-sized buffer.
#pragma once

#include <vqcj.h>

#include <cstdint>
#include <string>
#include <vector>

#include "codec.h"
#include "jpegint.h"

namespace vqcjpeg {

// The blocks of one MCU. Component c's v x h blocks start at blocks[c]; its
// block rows stand stride[c] blocks apart, its blocks in a row side by side.
// counts, when not null, holds for each block (components in frame order,
// each in raster order) how many zig-zag positions the entropy decoder
// used: no coefficient from there on is non-zero.
struct McuBlocks {
    const int16_t* blocks[3] = {};
    int stride[3] = {};
    const int32_t* counts = nullptr;
};

class RowWriter {
public:
    // The frame must be laid out, with one component or three; quantisation
    // tables are taken from tables.
    std::string init(const Frame& f, const ParsedScan& tables, const DecodeOptions& opt, Image& out);
    // Every MCU of a row, left to right, then endRow; finish after the last.
    void mcu(int my, int mx, const McuBlocks& b);
    std::string endRow(int my);
    std::string finish();

private:
    enum class Mode { Grey, Fused, Planes };
    // How one component reaches full rate.
    struct Plane {
        Vqc16u inv[64];
        int h = 1, v = 1;       // blocks per MCU
        int bs = 8;             // samples per block side after the inverse transform
        int fx = 1, fy = 1;     // up-sampling factors
        int width = 0, height = 0;  // samples that lie inside the picture
        int rows = 0;           // sample rows per MCU row
        int first = 0;          // index of its first block in an MCU's counts
        uint8_t* buf = nullptr;  // two strips with their context rows
        uint8_t* chunk = nullptr;  // its up-sampled rows of one conversion
    };
    uint8_t* origin(const Plane& p, int strip) const;
    void contextRows(int strip, bool below);
    void lastStrip(int strip);
    std::string emit(int strip);

    const Frame* f_ = nullptr;
    Image* out_ = nullptr;
    Mode mode_ = Mode::Planes;
    int n_ = 0, outW_ = 0, outH_ = 0;
    int mcuW_ = 0, mcuH_ = 0;  // output samples per MCU
    bool rgb_ = false;          // components coded as R, G, B: no colour conversion
    bool smooth_ = false;       // chroma interpolated rather than replicated
    bool lag_ = false;          // a component needs the next MCU row as context
    VqcStatus (*fused_)(const Vqc16s* const[3], Vqc8u*, int32_t) = nullptr;  // the MCU form, in Fused mode
    int step_ = 0;              // bytes per row of every strip and chunk
    VqcStatus worst_ = 0;       // the lowest status of the per-block calls
    Plane p_[3];
    std::vector<uint8_t> store_;
};

}  // namespace vqcjpeg
