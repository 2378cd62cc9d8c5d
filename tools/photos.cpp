#include "photos.h"

#include "jpegerr.h"

#include <png.h>

#include <algorithm>
#include <csetjmp>
#include <cstdio>
#include <filesystem>

namespace vqcjphoto {
namespace {

bool loadPng(const std::string& path, Image& img) {
    png_image p{};
    p.version = PNG_IMAGE_VERSION;
    if (!png_image_begin_read_from_file(&p, path.c_str())) return false;
    const bool grey = (p.format & PNG_FORMAT_FLAG_COLOR) == 0;
    p.format = grey ? PNG_FORMAT_GRAY : PNG_FORMAT_RGB;
    img.width = static_cast<int>(p.width);
    img.height = static_cast<int>(p.height);
    img.channels = grey ? 1 : 3;
    img.pixels.resize(PNG_IMAGE_SIZE(p));
    if (!png_image_finish_read(&p, nullptr, img.pixels.data(), 0, nullptr)) {
        png_image_free(&p);
        return false;
    }
    return true;
}

bool loadJpeg(const std::string& path, Image& img) {
    FILE* f = std::fopen(path.c_str(), "rb");
    if (!f) return false;
    jpeg_decompress_struct cinfo;
    JpegErrorJump err;
    cinfo.err = err.install();
    if (setjmp(err.jump)) {
        jpeg_destroy_decompress(&cinfo);
        std::fclose(f);
        return false;
    }
    jpeg_create_decompress(&cinfo);
    jpeg_stdio_src(&cinfo, f);
    jpeg_read_header(&cinfo, TRUE);
    cinfo.out_color_space = cinfo.num_components == 1 ? JCS_GRAYSCALE : JCS_RGB;
    jpeg_start_decompress(&cinfo);
    img.width = static_cast<int>(cinfo.output_width);
    img.height = static_cast<int>(cinfo.output_height);
    img.channels = cinfo.output_components;
    const size_t stride = static_cast<size_t>(img.width) * img.channels;
    img.pixels.resize(stride * img.height);
    while (cinfo.output_scanline < cinfo.output_height) {
        JSAMPROW row = img.pixels.data() + stride * cinfo.output_scanline;
        jpeg_read_scanlines(&cinfo, &row, 1);
    }
    jpeg_finish_decompress(&cinfo);
    jpeg_destroy_decompress(&cinfo);
    std::fclose(f);
    return true;
}

}  // namespace

std::vector<Image> loadPhotos(const std::string& dir) {
    std::vector<Image> out;
    std::error_code ec;
    std::vector<std::filesystem::path> files;
    for (const auto& e : std::filesystem::directory_iterator(dir, ec)) files.push_back(e.path());
    std::sort(files.begin(), files.end());
    for (const auto& path : files) {
        Image img;
        img.name = path.filename().string();
        const auto ext = path.extension().string();
        const bool ok = ext == ".png" ? loadPng(path.string(), img) : ext == ".jpg" && loadJpeg(path.string(), img);
        if (ok) out.push_back(std::move(img));
    }
    std::stable_sort(out.begin(), out.end(), [](const Image& a, const Image& b) { return a.channels > b.channels; });
    return out;
}

Image tileTo(const Image& src, int width, int height) {
    Image out;
    out.name = src.name;
    out.width = width;
    out.height = height;
    out.channels = src.channels;
    out.pixels.resize(static_cast<size_t>(width) * height * src.channels);
    for (int y = 0; y < height; ++y) {
        const int ty = y / src.height, sy0 = y % src.height;
        const int sy = (ty & 1) ? src.height - 1 - sy0 : sy0;
        for (int x = 0; x < width; ++x) {
            const int tx = x / src.width, sx0 = x % src.width;
            const int sx = (tx & 1) ? src.width - 1 - sx0 : sx0;
            for (int c = 0; c < src.channels; ++c)
                out.pixels[(static_cast<size_t>(y) * width + x) * src.channels + c] =
                    src.pixels[(static_cast<size_t>(sy) * src.width + sx) * src.channels + c];
        }
    }
    return out;
}

}  // namespace vqcjphoto
