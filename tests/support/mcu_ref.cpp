#include "support/mcu_ref.h"

namespace vqcjtest {
namespace {

struct Px {
    int a, b, c, k;  // R, G, B, K or Y, Cb, Cr
};

Px readPixel(const McuForm& f, const uint8_t* row, int x) {
    const uint8_t* p = row + x * f.bytesPerPixel();
    uint16_t w;
    std::memcpy(&w, row + 2 * x, 2);
    switch (f.pix) {
        case McuPix::Rgb: return {p[0], p[1], p[2], 0};
        case McuPix::Bgr: return {p[2], p[1], p[0], 0};
        case McuPix::Bgr555: return {(w >> 10 & 31) << 3, (w >> 5 & 31) << 3, (w & 31) << 3, 0};
        case McuPix::Bgr565: return {(w >> 11) << 3, (w >> 5 & 63) << 2, (w & 31) << 3, 0};
        case McuPix::Cmyk: return {255 - p[0], 255 - p[1], 255 - p[2], p[3]};
        case McuPix::Ycc: return {p[0], p[1], p[2], 0};
        case McuPix::Pairs: return {row[2 * x], row[x / 2 * 4 + 1], row[x / 2 * 4 + 3], 0};
    }
    return {};
}

int lumaAt(const McuForm& f, int x, int y) { return (y / 8 * f.h + x / 8) * 64 + y % 8 * 8 + x % 8; }

int sat(int v) { return std::clamp(v, 0, 255); }

}  // namespace

McuBlocks::McuBlocks(const McuForm& f) : v(f.blockValues(), Vqc16s(0x5A5A)) {
    const int luma = 64 * f.h * f.v;
    p[0] = v.data(), p[1] = p[0] + luma, p[2] = p[1] + 64, p[3] = f.planes() == 4 ? p[2] + 64 : nullptr;
}

std::vector<Vqc16s> mcuFwdReference(const McuForm& f, const uint8_t* src, int step) {
    McuBlocks out(f);
    const int n = f.h * f.v, k = n == 4 ? 2 : n - 1;
    for (int y = 0; y < f.height(); ++y)
        for (int x = 0; x < f.width(); ++x) {
            const Px q = readPixel(f, src + y * step, x);
            out.p[0][lumaAt(f, x, y)] = Vqc16s(f.colour ? ((19595 * q.a + 38470 * q.b + 7471 * q.c + 32768) >> 16) - 128 : q.a - 128);
            if (f.planes() == 4) out.p[3][lumaAt(f, x, y)] = Vqc16s(q.k - 128);
        }
    for (int cy = 0; cy < 8; ++cy)
        for (int cx = 0; cx < 8; ++cx) {
            int scb = 0, scr = 0;
            for (int dy = 0; dy < f.v; ++dy)
                for (int dx = 0; dx < f.h; ++dx) {
                    const Px q = readPixel(f, src + (f.v * cy + dy) * step, f.h * cx + dx);
                    scb += f.colour ? 32768 * q.c - 21709 * q.b - 11059 * q.a : q.b;
                    scr += f.colour ? 32768 * q.a - 27439 * q.b - 5329 * q.c : q.c;
                }
            if (f.colour) {
                out.p[1][cy * 8 + cx] = Vqc16s((scb + (1 << (15 + k))) >> (16 + k));
                out.p[2][cy * 8 + cx] = Vqc16s((scr + (1 << (15 + k))) >> (16 + k));
            } else if (f.pix == McuPix::Pairs) {  // no averaging: both pixels of a pair read the same byte
                out.p[1][cy * 8 + cx] = Vqc16s(scb / 2 - 128), out.p[2][cy * 8 + cx] = Vqc16s(scr / 2 - 128);
            } else {
                out.p[1][cy * 8 + cx] = Vqc16s(((scb + n / 2) >> k) - 128);
                out.p[2][cy * 8 + cx] = Vqc16s(((scr + n / 2) >> k) - 128);
            }
        }
    return out.v;
}

std::vector<uint8_t> mcuInvReference(const McuForm& f, const Vqc16s* const* blocks) {
    const int bpp = f.bytesPerPixel(), rowBytes = f.width() * bpp;
    std::vector<uint8_t> out(size_t(rowBytes) * f.height());
    const auto byte = [](Vqc16s v) { return std::clamp<int>(v, -128, 127) + 128; };
    for (int y = 0; y < f.height(); ++y)
        for (int x = 0; x < f.width(); ++x) {
            const int c = y / f.v * 8 + x / f.h;
            const int Y = byte(blocks[0][lumaAt(f, x, y)]), cb = byte(blocks[1][c]), cr = byte(blocks[2][c]);
            int r = Y, g = cb, b = cr;
            if (f.colour) {
                r = sat((91880 * cr + 65536 * Y - 11727880) >> 16);
                g = sat((65536 * Y - 22553 * cb - 46801 * cr + 8910128) >> 16);
                b = sat((116128 * cb + 65536 * Y - 14831618) >> 16);
            }
            uint8_t* p = out.data() + y * rowBytes + x * bpp;
            const uint16_t w555 = uint16_t((r & 0xF8) << 7 | (g & 0xF8) << 2 | b >> 3);
            const uint16_t w565 = uint16_t((r & 0xF8) << 8 | (g & 0xFC) << 3 | b >> 3);
            switch (f.pix) {
                case McuPix::Rgb: case McuPix::Ycc: p[0] = uint8_t(r), p[1] = uint8_t(g), p[2] = uint8_t(b); break;
                case McuPix::Bgr: p[0] = uint8_t(b), p[1] = uint8_t(g), p[2] = uint8_t(r); break;
                case McuPix::Bgr555: std::memcpy(p, &w555, 2); break;
                case McuPix::Bgr565: std::memcpy(p, &w565, 2); break;
                case McuPix::Cmyk:
                    p[0] = uint8_t(255 - r), p[1] = uint8_t(255 - g), p[2] = uint8_t(255 - b);
                    p[3] = uint8_t(byte(blocks[3][lumaAt(f, x, y)]));
                    break;
                case McuPix::Pairs:
                    p[0] = uint8_t(Y), p[1] = uint8_t(x % 2 ? cr : cb);
                    break;
            }
        }
    return out;
}

std::vector<uint8_t> mcuPixelsFromRgb(const McuForm& f, const uint8_t* rgb) {
    const int bpp = f.bytesPerPixel();
    std::vector<uint8_t> out(size_t(f.width()) * bpp * f.height());
    for (int i = 0; i < f.width() * f.height(); ++i) {
        const uint8_t r = rgb[3 * i], g = rgb[3 * i + 1], b = rgb[3 * i + 2];
        uint8_t* p = out.data() + i * bpp;
        const uint16_t w555 = uint16_t(r >> 3 << 10 | g >> 3 << 5 | b >> 3), w565 = uint16_t(r >> 3 << 11 | g >> 2 << 5 | b >> 3);
        switch (f.pix) {
            case McuPix::Rgb: case McuPix::Ycc: p[0] = r, p[1] = g, p[2] = b; break;
            case McuPix::Bgr: p[0] = b, p[1] = g, p[2] = r; break;
            case McuPix::Bgr555: std::memcpy(p, &w555, 2); break;
            case McuPix::Bgr565: std::memcpy(p, &w565, 2); break;
            case McuPix::Cmyk: p[0] = uint8_t(255 - r), p[1] = uint8_t(255 - g), p[2] = uint8_t(255 - b), p[3] = uint8_t(255 - g); break;
            case McuPix::Pairs: p[0] = g, p[1] = i % 2 ? r : b; break;
        }
    }
    return out;
}

#define VQCJ_FWD(fn, T) [](const void* s, int32_t st, Vqc16s* const* d) { return fn(static_cast<const T*>(s), st, d); }
#define VQCJ_INV(fn, T) [](const Vqc16s* const* s, void* d, int32_t st) { return fn(s, static_cast<T*>(d), st); }
#define VQCJ_FORM(name, pix, h, v, colour, fwd, inv, T, U) {name, McuPix::pix, h, v, colour, VQCJ_FWD(fwd, T), VQCJ_INV(inv, U)}

const std::vector<McuForm>& mcuForms() {
    static const std::vector<McuForm> forms = {
        VQCJ_FORM("RGB444", Rgb, 1, 1, true, vqciRGBToYCbCr444LS_MCU_8u16s_C3P3R, vqciYCbCr444ToRGBLS_MCU_16s8u_P3C3R, Vqc8u, Vqc8u),
        VQCJ_FORM("RGB422", Rgb, 2, 1, true, vqciRGBToYCbCr422LS_MCU_8u16s_C3P3R, vqciYCbCr422ToRGBLS_MCU_16s8u_P3C3R, Vqc8u, Vqc8u),
        VQCJ_FORM("RGB411", Rgb, 2, 2, true, vqciRGBToYCbCr411LS_MCU_8u16s_C3P3R, vqciYCbCr411ToRGBLS_MCU_16s8u_P3C3R, Vqc8u, Vqc8u),
        VQCJ_FORM("BGR444", Bgr, 1, 1, true, vqciBGRToYCbCr444LS_MCU_8u16s_C3P3R, vqciYCbCr444ToBGRLS_MCU_16s8u_P3C3R, Vqc8u, Vqc8u),
        VQCJ_FORM("BGR422", Bgr, 2, 1, true, vqciBGRToYCbCr422LS_MCU_8u16s_C3P3R, vqciYCbCr422ToBGRLS_MCU_16s8u_P3C3R, Vqc8u, Vqc8u),
        VQCJ_FORM("BGR411", Bgr, 2, 2, true, vqciBGRToYCbCr411LS_MCU_8u16s_C3P3R, vqciYCbCr411ToBGRLS_MCU_16s8u_P3C3R, Vqc8u, Vqc8u),
        VQCJ_FORM("BGR555-444", Bgr555, 1, 1, true, vqciBGR555ToYCbCr444LS_MCU_16u16s_C3P3R, vqciYCbCr444ToBGR555LS_MCU_16s16u_P3C3R, Vqc16u, Vqc16u),
        VQCJ_FORM("BGR555-422", Bgr555, 2, 1, true, vqciBGR555ToYCbCr422LS_MCU_16u16s_C3P3R, vqciYCbCr422ToBGR555LS_MCU_16s16u_P3C3R, Vqc16u, Vqc16u),
        VQCJ_FORM("BGR555-411", Bgr555, 2, 2, true, vqciBGR555ToYCbCr411LS_MCU_16u16s_C3P3R, vqciYCbCr411ToBGR555LS_MCU_16s16u_P3C3R, Vqc16u, Vqc16u),
        VQCJ_FORM("BGR565-444", Bgr565, 1, 1, true, vqciBGR565ToYCbCr444LS_MCU_16u16s_C3P3R, vqciYCbCr444ToBGR565LS_MCU_16s16u_P3C3R, Vqc16u, Vqc16u),
        VQCJ_FORM("BGR565-422", Bgr565, 2, 1, true, vqciBGR565ToYCbCr422LS_MCU_16u16s_C3P3R, vqciYCbCr422ToBGR565LS_MCU_16s16u_P3C3R, Vqc16u, Vqc16u),
        VQCJ_FORM("BGR565-411", Bgr565, 2, 2, true, vqciBGR565ToYCbCr411LS_MCU_16u16s_C3P3R, vqciYCbCr411ToBGR565LS_MCU_16s16u_P3C3R, Vqc16u, Vqc16u),
        VQCJ_FORM("CMYK444", Cmyk, 1, 1, true, vqciCMYKToYCCK444LS_MCU_8u16s_C4P4R, vqciYCCK444ToCMYKLS_MCU_16s8u_P4C4R, Vqc8u, Vqc8u),
        VQCJ_FORM("CMYK422", Cmyk, 2, 1, true, vqciCMYKToYCCK422LS_MCU_8u16s_C4P4R, vqciYCCK422ToCMYKLS_MCU_16s8u_P4C4R, Vqc8u, Vqc8u),
        VQCJ_FORM("CMYK411", Cmyk, 2, 2, true, vqciCMYKToYCCK411LS_MCU_8u16s_C4P4R, vqciYCCK411ToCMYKLS_MCU_16s8u_P4C4R, Vqc8u, Vqc8u),
        VQCJ_FORM("Sample444", Ycc, 1, 1, false, vqciSampleDown444LS_MCU_8u16s_C3P3R, vqciSampleUp444LS_MCU_16s8u_P3C3R, Vqc8u, Vqc8u),
        VQCJ_FORM("Sample422", Ycc, 2, 1, false, vqciSampleDown422LS_MCU_8u16s_C3P3R, vqciSampleUp422LS_MCU_16s8u_P3C3R, Vqc8u, Vqc8u),
        VQCJ_FORM("Sample411", Ycc, 2, 2, false, vqciSampleDown411LS_MCU_8u16s_C3P3R, vqciSampleUp411LS_MCU_16s8u_P3C3R, Vqc8u, Vqc8u),
        VQCJ_FORM("Pairs422", Pairs, 2, 1, false, vqciSplit422LS_MCU_8u16s_C2P3R, vqciJoin422LS_MCU_16s8u_P3C2R, Vqc8u, Vqc8u),
    };
    return forms;
}

}  // namespace vqcjtest
