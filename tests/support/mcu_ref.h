// The MCU conversions written out pixel by pixel from their documented rules,
// and a table of the exports with their layouts, shared by the MCU tests.
#pragma once

#include <vqcj.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

namespace vqcjtest {

// Pixel side of a form.
enum class McuPix { Rgb, Bgr, Bgr555, Bgr565, Cmyk, Ycc, Pairs };

struct McuForm {
    std::string name;
    McuPix pix;
    int h, v;     // pixels per chroma sample across and down
    bool colour;  // colour arithmetic, else sampling only
    VqcStatus (*fwd)(const void*, int32_t, Vqc16s* const*);
    VqcStatus (*inv)(const Vqc16s* const*, void*, int32_t);

    int width() const { return 8 * h; }
    int height() const { return 8 * v; }
    int bytesPerPixel() const { return pix == McuPix::Cmyk ? 4 : pix == McuPix::Rgb || pix == McuPix::Bgr || pix == McuPix::Ycc ? 3 : 2; }
    int planes() const { return pix == McuPix::Cmyk ? 4 : 3; }
    // Values in all blocks, in the order Y, Cb, Cr (, K).
    int blockValues() const { return 64 * (h * v * (planes() == 4 ? 2 : 1) + 2); }
};

// Every forward form has its inverse form at the same index.
const std::vector<McuForm>& mcuForms();

// Blocks of one MCU (contiguous, Y, Cb, Cr, K) and the pointers into them.
struct McuBlocks {
    std::vector<Vqc16s> v;
    Vqc16s* p[4] = {};
    explicit McuBlocks(const McuForm& f);
};

// The documented forward rule on the MCU at src (rows step bytes apart).
std::vector<Vqc16s> mcuFwdReference(const McuForm& f, const uint8_t* src, int step);
// The documented inverse rule: the pixel bytes of the MCU, rows packed.
std::vector<uint8_t> mcuInvReference(const McuForm& f, const Vqc16s* const* blocks);

// Pixel bytes of an MCU in the form's layout from RGB pixels (rows of
// width() * 3 bytes); K, where there is one, from the complement of green.
std::vector<uint8_t> mcuPixelsFromRgb(const McuForm& f, const uint8_t* rgb);

}  // namespace vqcjtest
