// PNG through libpng; PPM and PGM by hand.
#include <png.h>

#include <cstdio>
#include <cstring>
#include <memory>

#include "codec.h"

namespace vqcjpeg {

namespace {

bool endsWith(const std::string& s, const char* tail) {
    const size_t n = std::strlen(tail);
    if (s.size() < n) return false;
    for (size_t i = 0; i < n; ++i)
        if (std::tolower(static_cast<unsigned char>(s[s.size() - n + i])) != tail[i]) return false;
    return true;
}

struct File {
    FILE* f;
    explicit File(const std::string& path, const char* mode) : f(std::fopen(path.c_str(), mode)) {}
    ~File() {
        if (f) std::fclose(f);
    }
};

std::string readPng(FILE* fp, Image& img) {
    // Warnings (such as a colour profile libpng dislikes) do not stop a read.
    png_structp png = png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, [](png_structp, png_const_charp) {});
    png_infop info = png ? png_create_info_struct(png) : nullptr;
    if (!info) return "out of memory";
    std::vector<png_bytep> rows;
    if (setjmp(png_jmpbuf(png))) {
        png_destroy_read_struct(&png, &info, nullptr);
        return "corrupt PNG file";
    }
    png_init_io(png, fp);
    png_read_info(png, info);
    png_set_expand(png);
    png_set_strip_alpha(png);
    if (png_get_bit_depth(png, info) == 16) png_set_swap(png);  // host order
    png_read_update_info(png, info);
    const int depth = png_get_bit_depth(png, info), ch = png_get_channels(png, info);
    img.width = static_cast<int>(png_get_image_width(png, info));
    img.height = static_cast<int>(png_get_image_height(png, info));
    img.channels = ch;
    img.precision = depth;
    if (ch != 1 && ch != 3) {
        png_destroy_read_struct(&png, &info, nullptr);
        return "unsupported PNG colour type";
    }
    const size_t rowBytes = png_get_rowbytes(png, info);
    std::vector<uint8_t> buf(rowBytes * img.height);
    for (int y = 0; y < img.height; ++y) rows.push_back(&buf[y * rowBytes]);
    png_read_image(png, rows.data());
    png_destroy_read_struct(&png, &info, nullptr);
    if (depth == 16) {
        img.wide.resize(buf.size() / 2);
        std::memcpy(img.wide.data(), buf.data(), buf.size());
    } else {
        img.pixels = std::move(buf);
    }
    return {};
}

std::string writePng(FILE* fp, const Image& img) {
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png ? png_create_info_struct(png) : nullptr;
    if (!info) return "out of memory";
    if (setjmp(png_jmpbuf(png))) {
        png_destroy_write_struct(&png, &info);
        return "cannot write PNG file";
    }
    const bool wide = img.precision > 8;
    png_init_io(png, fp);
    png_set_IHDR(png, info, img.width, img.height, wide ? 16 : 8, img.channels == 1 ? PNG_COLOR_TYPE_GRAY : PNG_COLOR_TYPE_RGB,
                 PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    png_write_info(png, info);
    if (wide) png_set_swap(png);
    const size_t rowBytes = size_t(img.width) * img.channels * (wide ? 2 : 1);
    const uint8_t* base = wide ? reinterpret_cast<const uint8_t*>(img.wide.data()) : img.pixels.data();
    for (int y = 0; y < img.height; ++y) png_write_row(png, const_cast<png_bytep>(base + y * rowBytes));
    png_write_end(png, nullptr);
    png_destroy_write_struct(&png, &info);
    return {};
}

int readNumber(FILE* f) {
    int c = std::fgetc(f);
    while (c == '#' || std::isspace(c)) {
        if (c == '#')
            while (c != '\n' && c != EOF) c = std::fgetc(f);
        c = std::fgetc(f);
    }
    long v = 0;
    if (!std::isdigit(c)) return -1;
    while (std::isdigit(c) && v < 1000000) v = v * 10 + (c - '0'), c = std::fgetc(f);
    return static_cast<int>(v);
}

std::string readPnm(FILE* f, Image& img) {
    char magic[2];
    if (std::fread(magic, 1, 2, f) != 2 || magic[0] != 'P' || (magic[1] != '5' && magic[1] != '6'))
        return "not a binary PPM or PGM file";
    img.channels = magic[1] == '6' ? 3 : 1;
    img.width = readNumber(f);
    img.height = readNumber(f);
    const int maxval = readNumber(f);
    if (img.width < 1 || img.height < 1 || maxval < 1 || maxval > 65535) return "bad PPM/PGM header";
    img.precision = 1;
    while ((1 << img.precision) - 1 < maxval) ++img.precision;
    const size_t n = size_t(img.width) * img.height * img.channels;
    if (maxval < 256) {
        img.precision = 8;
        img.pixels.resize(n);
        if (std::fread(img.pixels.data(), 1, n, f) != n) return "truncated PPM/PGM file";
    } else {
        std::vector<uint8_t> be(2 * n);
        if (std::fread(be.data(), 1, be.size(), f) != be.size()) return "truncated PPM/PGM file";
        img.wide.resize(n);
        for (size_t i = 0; i < n; ++i) img.wide[i] = static_cast<uint16_t>(be[2 * i] << 8 | be[2 * i + 1]);
    }
    return {};
}

std::string writePnm(FILE* f, const Image& img) {
    const bool wide = img.precision > 8;
    std::fprintf(f, "P%c\n%d %d\n%d\n", img.channels == 3 ? '6' : '5', img.width, img.height,
                 wide ? (1 << img.precision) - 1 : 255);
    if (!wide) {
        std::fwrite(img.pixels.data(), 1, img.pixels.size(), f);
    } else {
        std::vector<uint8_t> be(2 * img.wide.size());
        for (size_t i = 0; i < img.wide.size(); ++i) be[2 * i] = img.wide[i] >> 8, be[2 * i + 1] = img.wide[i] & 255;
        std::fwrite(be.data(), 1, be.size(), f);
    }
    return std::ferror(f) ? "cannot write file" : "";
}

}  // namespace

std::string readImage(const std::string& path, Image& img) {
    File f(path, "rb");
    if (!f.f) return "cannot open " + path;
    return endsWith(path, ".png") ? readPng(f.f, img) : readPnm(f.f, img);
}

std::string writeImage(const std::string& path, const Image& img) {
    File f(path, "wb");
    if (!f.f) return "cannot create " + path;
    if (endsWith(path, ".png")) return writePng(f.f, img);
    if (img.channels == 3 && endsWith(path, ".pgm")) return "a colour image cannot be written as PGM";
    return writePnm(f.f, img);
}

}  // namespace vqcjpeg
