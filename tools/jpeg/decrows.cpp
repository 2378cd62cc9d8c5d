// The decoder's back end: inverse transforms, up-sampling and colour
// conversion, one MCU row at a time.
#include "decrows.h"

#include <algorithm>
#include <cstring>

namespace vqcjpeg {

namespace {

std::string failed(const char* what, VqcStatus st) {
    return std::string(what) + " failed with status " + std::to_string(st);
}

// The smallest top-left corner, 1x1, 2x2 or else the whole 8x8, that holds
// every non-zero coefficient: from the number of zig-zag positions the block
// used (positions 0-2 lie in the 2x2 corner) or from the coefficients. The
// 4x4 corner transform measures no faster than the whole one, so it is not
// told apart.
int cornerOfUsed(int used) { return used <= 1 ? 1 : used <= 3 ? 2 : 8; }

int cornerOfBlock(const int16_t* b) {
    int beyond2 = 0;
    for (int i = 0; i < 64; ++i) beyond2 |= (i & 7) < 2 && i < 16 ? 0 : b[i];
    return beyond2 ? 8 : b[1] | b[8] | b[9] ? 2 : 1;
}

// One block to bs x bs samples. At full size the corner forms give the full
// transform's samples for blocks that are zero outside their corner, for less
// work; the smaller sizes are the scaled transforms, and 1 keeps the DC alone,
// rounded as libjpeg's 1x1 transform does.
VqcStatus inverse(const int16_t* coef, uint8_t* dst, int step, const Vqc16u* inv, int bs, int corner) {
    switch (bs) {
        case 8:
            switch (corner) {
                case 1: return vqciDCTQuantInv8x8LS_1x1_JPEG_16s8u_C1R(coef, dst, step, inv);
                case 2: return vqciDCTQuantInv8x8LS_2x2_JPEG_16s8u_C1R(coef, dst, step, inv);
                default: return vqciDCTQuantInv8x8LS_JPEG_16s8u_C1R(coef, dst, step, inv);
            }
        case 4: return vqciDCTQuantInv8x8To4x4LS_JPEG_16s8u_C1R(coef, dst, step, inv);
        case 2: return vqciDCTQuantInv8x8To2x2LS_JPEG_16s8u_C1R(coef, dst, step, inv);
        default:
            *dst = static_cast<uint8_t>(std::clamp(((coef[0] * static_cast<int16_t>(inv[0]) + 4) >> 3) + 128, 0, 255));
            return vqcStatusOk;
    }
}

// Copies the w x h top-left part of a block of samples.
void copyRect(const uint8_t* src, int srcStep, uint8_t* dst, int dstStep, int w, int h) {
    for (int y = 0; y < h; ++y) std::memcpy(dst + size_t(y) * dstStep, src + size_t(y) * srcStep, w);
}

}  // namespace

std::string RowWriter::init(const Frame& f, const ParsedScan& tables, const DecodeOptions& opt, Image& out) {
    f_ = &f;
    out_ = &out;
    n_ = static_cast<int>(f.comps.size());
    if (n_ != 1 && n_ != 3) return "only one or three components are supported";
    const int bsMin = 8 / opt.scaleDenom;
    outW_ = (f.width * bsMin + 7) / 8;
    outH_ = (f.height * bsMin + 7) / 8;
    mcuW_ = f.hmax * bsMin;
    mcuH_ = f.vmax * bsMin;
    int first = 0;
    for (int c = 0; c < n_; ++c) {
        const Component& comp = f.comps[c];
        Plane& p = p_[c];
        if (!tables.haveQuant[comp.tq]) return "missing quantisation table " + std::to_string(comp.tq);
        uint8_t raw[64];
        for (int i = 0; i < 64; ++i) {
            if (tables.quant[comp.tq][i] > 255) return "16-bit quantisation tables are not supported";
            raw[i] = static_cast<uint8_t>(tables.quant[comp.tq][i]);
        }
        vqciQuantInvTableInit_JPEG_8u16u(raw, p.inv);
        p.h = comp.h, p.v = comp.v;
        // As libjpeg does when scaling: a component sampled at a lower rate
        // is transformed to a larger size rather than up-sampled, where that
        // reaches the rate of the output in both directions.
        p.bs = bsMin;
        while (p.bs < 8 && mcuW_ % (p.h * p.bs * 2) == 0 && mcuH_ % (p.v * p.bs * 2) == 0) p.bs *= 2;
        p.fx = mcuW_ / (p.h * p.bs);
        p.fy = mcuH_ / (p.v * p.bs);
        p.width = static_cast<int>((long(f.width) * p.h * p.bs + f.hmax * 8 - 1) / (f.hmax * 8));
        p.height = static_cast<int>((long(f.height) * p.v * p.bs + f.vmax * 8 - 1) / (f.vmax * 8));
        p.rows = p.v * p.bs;
        p.first = first;
        first += p.h * p.v;
    }
    rgb_ = n_ == 3 && f.comps[0].id == 'R' && f.comps[1].id == 'G' && f.comps[2].id == 'B';
    // The fused MCU forms replicate chroma, so they serve fast up-sampling
    // of a luma MCU of 2x1 or 2x2 blocks with one block of each chroma. At
    // 4:4:4 the transforms into rows and the conversion of whole rows
    // measure faster than the 8x8 fused form.
    const bool oneChroma = n_ == 3 && p_[1].h == 1 && p_[1].v == 1 && p_[2].h == 1 && p_[2].v == 1 &&
                           p_[0].h == f.hmax && p_[0].v == f.vmax;
    fused_ = nullptr;
    if (bsMin == 8 && opt.fastUpsample && oneChroma && !rgb_ && f.hmax == 2)
        fused_ = f.vmax == 1 ? vqciYCbCr422ToRGBLS_MCU_16s8u_P3C3R : vqciYCbCr411ToRGBLS_MCU_16s8u_P3C3R;
    mode_ = n_ == 1 ? Mode::Grey : fused_ ? Mode::Fused : Mode::Planes;
    if (n_ == 1 && (p_[0].h != 1 || p_[0].v != 1)) return "a single component must be laid out as 1x1";

    out.width = outW_;
    out.height = outH_;
    out.precision = 8;
    out.channels = n_ == 1 ? 1 : 3;
    out.wide.clear();
    out.pixels.resize(size_t(outW_) * outH_ * out.channels);
    if (mode_ != Mode::Planes) return {};

    // Interpolated chroma unless asked otherwise; libjpeg replicates at 1/8
    // scale too.
    smooth_ = bsMin > 1 && !opt.fastUpsample;
    // Strips as wide as the widest component, with a border sample on each
    // side; two strips and their context rows for each component.
    step_ = (f.mcusX * mcuW_ + 2 + 31) & ~31;
    size_t total = 0;
    for (int c = 0; c < n_; ++c) {
        const Plane& p = p_[c];
        lag_ = lag_ || (smooth_ && p.fx == 2 && p.fy == 2);
        total += size_t(2 * p.rows + 3) * step_ + (p.fx > 1 || p.fy > 1 ? 2 * size_t(step_) : 0);
    }
    store_.assign(total, 0);
    uint8_t* at = store_.data();
    for (int c = 0; c < n_; ++c) {
        Plane& p = p_[c];
        p.buf = at;
        at += size_t(2 * p.rows + 3) * step_;
        if (p.fx > 1 || p.fy > 1) p.chunk = at, at += 2 * size_t(step_);
    }
    return {};
}

// Strips alternate between two places when the next one is needed as
// context: rows 1.. and rows+2.., with the row above each and the row below
// each beside it (the second strip's row above is the first one's row below).
uint8_t* RowWriter::origin(const Plane& p, int strip) const {
    return p.buf + size_t(lag_ && (strip & 1) ? p.rows + 2 : 1) * step_ + 1;
}

void RowWriter::mcu(int my, int mx, const McuBlocks& b) {
    Image& out = *out_;
    if (mode_ == Mode::Grey) {
        const Plane& p = p_[0];
        const int x = mx * p.bs, y = my * p.bs;
        const int corner = p.bs < 8 ? 8 : b.counts ? cornerOfUsed(b.counts[0]) : cornerOfBlock(b.blocks[0]);
        if (x + p.bs <= outW_ && y + p.bs <= outH_) {
            worst_ = std::min(worst_, inverse(b.blocks[0], &out.pixels[size_t(y) * outW_ + x], outW_, p.inv, p.bs, corner));
            return;
        }
        uint8_t edge[64];
        worst_ = std::min(worst_, inverse(b.blocks[0], edge, 8, p.inv, p.bs, corner));
        copyRect(edge, 8, &out.pixels[size_t(y) * outW_ + x], outW_, std::min(p.bs, outW_ - x), std::min(p.bs, outH_ - y));
        return;
    }
    if (mode_ == Mode::Fused) {
        // Luma blocks in raster order, then Cb and Cr, as the MCU forms take them.
        alignas(64) Vqc16s blocks[6][64];
        int k = 0;
        for (int c = 0; c < 3; ++c)
            for (int v = 0; v < p_[c].v; ++v)
                for (int h = 0; h < p_[c].h; ++h, ++k) {
                    const int16_t* blk = b.blocks[c] + (size_t(v) * b.stride[c] + h) * 64;
                    const int corner = b.counts ? cornerOfUsed(b.counts[p_[c].first + v * p_[c].h + h]) : cornerOfBlock(blk);
                    if (corner == 8) {
                        worst_ = std::min(worst_, vqciDCTQuantInv8x8_JPEG_16s_C1(blk, blocks[k], p_[c].inv));
                        continue;
                    }
                    // A sparse block through the cheaper corner transform: its
                    // samples less 128 are what the MCU forms clamp and shift back.
                    alignas(16) uint8_t px[64];
                    worst_ = std::min(worst_, inverse(blk, px, 8, p_[c].inv, 8, corner));
                    for (int i = 0; i < 64; ++i) blocks[k][i] = static_cast<Vqc16s>(px[i] - 128);
                }
        const Vqc16s* const src[3] = {blocks[0], blocks[k - 2], blocks[k - 1]};
        const int x = mx * mcuW_, y = my * mcuH_;
        uint8_t* dst = &out.pixels[(size_t(y) * outW_ + x) * 3];
        if (x + mcuW_ <= outW_ && y + mcuH_ <= outH_) {
            worst_ = std::min(worst_, fused_(src, dst, outW_ * 3));
            return;
        }
        uint8_t edge[16 * 16 * 3];
        worst_ = std::min(worst_, fused_(src, edge, 16 * 3));
        copyRect(edge, 16 * 3, dst, outW_ * 3, std::min(mcuW_, outW_ - x) * 3, std::min(mcuH_, outH_ - y));
        return;
    }
    for (int c = 0; c < n_; ++c) {
        const Plane& p = p_[c];
        uint8_t* o = origin(p, my);
        for (int v = 0; v < p.v; ++v)
            for (int h = 0; h < p.h; ++h) {
                const int16_t* blk = b.blocks[c] + (size_t(v) * b.stride[c] + h) * 64;
                const int corner = p.bs < 8 ? 8 : b.counts ? cornerOfUsed(b.counts[p.first + v * p.h + h]) : cornerOfBlock(blk);
                worst_ = std::min(worst_, inverse(blk, o + size_t(v) * p.bs * step_ + size_t(mx * p.h + h) * p.bs, step_,
                                                  p.inv, p.bs, corner));
            }
    }
}

// The row above a strip (below false) or below it, for the components that
// are interpolated vertically: the neighbouring strip's nearest row, or at
// the top the strip's own first row.
void RowWriter::contextRows(int strip, bool below) {
    for (int c = 0; c < n_; ++c) {
        const Plane& p = p_[c];
        if (p.fx != 2 || p.fy != 2) continue;
        uint8_t* o = origin(p, strip) - 1;
        if (below)
            std::memcpy(o + size_t(p.rows) * step_, origin(p, strip + 1) - 1, step_);
        else
            std::memcpy(o - step_, strip == 0 ? o : origin(p, strip - 1) - 1 + size_t(p.rows - 1) * step_, step_);
    }
}

// Below the picture's last row, that row repeated, as the interpolation
// reads one row beyond.
void RowWriter::lastStrip(int strip) {
    for (int c = 0; c < n_; ++c) {
        const Plane& p = p_[c];
        if (p.fx != 2 || p.fy != 2) continue;
        uint8_t* o = origin(p, strip) - 1;
        const int inside = p.height - strip * p.rows;
        for (int r = inside; r <= p.rows; ++r) std::memcpy(o + size_t(r) * step_, o + size_t(inside - 1) * step_, step_);
    }
}

std::string RowWriter::endRow(int my) {
    if (worst_ < 0) return failed("inverse transform", worst_);
    if (mode_ != Mode::Planes) return {};
    // Beside the picture's first and last columns, those columns repeated,
    // for the horizontal interpolation.
    for (int c = 0; c < n_; ++c) {
        const Plane& p = p_[c];
        if (p.fx != 2) continue;
        uint8_t* o = origin(p, my);
        for (int r = 0; r < p.rows; ++r, o += step_) o[-1] = o[0], o[p.width] = o[p.width - 1];
    }
    if (!lag_) return emit(my);
    // The strip before is complete now that its row below is known; the
    // last strip's own row below is its last row repeated.
    if (my > 0) {
        contextRows(my - 1, true);
        if (std::string e = emit(my - 1); !e.empty()) return e;
    }
    contextRows(my, false);
    if (my == f_->mcusY - 1) lastStrip(my);
    return {};
}

std::string RowWriter::finish() {
    if (worst_ < 0) return failed("inverse transform", worst_);
    return mode_ == Mode::Planes && lag_ ? emit(f_->mcusY - 1) : std::string{};
}

// The output rows of one strip, two at a time so that the up-sampled rows
// stay in the first-level cache until they are converted.
std::string RowWriter::emit(int strip) {
    Image& out = *out_;
    const int y0 = strip * mcuH_, rows = std::min(mcuH_, outH_ - y0);
    for (int r0 = 0; r0 < rows; r0 += 2) {
        const int n = std::min(2, rows - r0);
        const Vqc8u* planes[3];
        for (int c = 0; c < n_; ++c) {
            const Plane& p = p_[c];
            const uint8_t* o = origin(p, strip);
            VqcStatus st = vqcStatusOk;
            if (p.fx == 1 && p.fy == 1) {
                planes[c] = o + size_t(r0) * step_;
                continue;
            }
            if (smooth_ && p.fx == 2 && p.fy == 2)
                st = vqciSampleUpH2V2_JPEG_8u_C1R(o + size_t(r0 / 2) * step_, step_, {p.width, 1}, p.chunk, step_, {outW_, n});
            else if (smooth_ && p.fx == 2)
                st = vqciSampleUpH2V1_JPEG_8u_C1R(o + size_t(r0) * step_, step_, {p.width, n}, p.chunk, step_, {outW_, n});
            else
                for (int i = 0; i < n; ++i) {
                    const uint8_t* s = o + size_t((r0 + i) / p.fy) * step_;
                    uint8_t* d = p.chunk + size_t(i) * step_;
                    if (p.fx == 1)
                        std::memcpy(d, s, outW_);
                    else
                        for (int x = 0; x < outW_; ++x) d[x] = s[x / p.fx];
                }
            if (st < 0) return failed("up-sampling", st);
            planes[c] = p.chunk;
        }
        uint8_t* dst = &out.pixels[size_t(y0 + r0) * outW_ * 3];
        if (rgb_) {
            for (int i = 0; i < n; ++i)
                for (int x = 0; x < outW_; ++x)
                    for (int c = 0; c < 3; ++c) dst[(size_t(i) * outW_ + x) * 3 + c] = planes[c][size_t(i) * step_ + x];
            continue;
        }
        const VqcStatus st = vqciYCbCrToRGB_JPEG_8u_P3C3R(planes, step_, dst, outW_ * 3, {outW_, n});
        if (st < 0) return failed("colour conversion", st);
    }
    return {};
}

}  // namespace vqcjpeg
