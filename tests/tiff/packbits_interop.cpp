// PackBits against libtiff's codec both ways, one strip per plane: our
// packets decoded by libtiff, and libtiff's decoded by us, walking from row
// to row with one position as a TIFF reader does. The planes are the
// photographs' rows and rows with runs of every length from 1 to 300 among
// short runs and noise.
#include <gtest/gtest.h>
#include <tiffio.h>
#include <vqcj.h>

#include <algorithm>
#include <cstdio>

#include "photos.h"
#include "support/testutil.h"

using Bytes = std::vector<uint8_t>;

// libtiff's side, through the one strip of a TIFF file: `in` encoded, or
// (as packets) decoded.
static Bytes viaLibtiff(const uint8_t* in, size_t size, uint32_t rowBytes, uint32_t height, bool encode) {
    const std::string path = testing::TempDir() + "vqcj_packbits_interop.tif";
    TIFF* tif = TIFFOpen(path.c_str(), "w");
    const uint32_t fields[][2] = {{TIFFTAG_IMAGEWIDTH, rowBytes}, {TIFFTAG_IMAGELENGTH, height},
                                  {TIFFTAG_BITSPERSAMPLE, 8}, {TIFFTAG_COMPRESSION, COMPRESSION_PACKBITS}};
    for (const auto& field : fields) TIFFSetField(tif, field[0], field[1]);
    (encode ? TIFFWriteEncodedStrip : TIFFWriteRawStrip)(tif, 0, const_cast<uint8_t*>(in), static_cast<tmsize_t>(size));
    TIFFClose(tif);
    tif = TIFFOpen(path.c_str(), "r");
    Bytes out(encode ? TIFFGetStrileByteCount(tif, 0) : static_cast<uint64_t>(TIFFStripSize(tif)));
    (encode ? TIFFReadRawStrip : TIFFReadEncodedStrip)(tif, 0, out.data(), static_cast<tmsize_t>(out.size()));
    TIFFClose(tif);
    std::remove(path.c_str());
    return out;
}

TEST(PackBitsInterop, PhotographsAndRunsOfEveryLength) {
    std::vector<std::pair<Bytes, int32_t>> planes;  // bytes, row length
    for (const auto& im : vqcjphoto::loadPhotos(VQCJ_PHOTO_DIR)) planes.push_back({im.pixels, im.width * im.channels});
    ASSERT_FALSE(planes.empty()) << "no photographs in " << VQCJ_PHOTO_DIR;
    // Row y of 700: noise where an odd byte repeats its neighbour, and a run
    // of y + 1 bytes at offset y.
    Bytes runs = vqcjtest::randomBytes(300 * 700, 23);
    for (size_t i = 1; i < runs.size(); ++i) runs[i] = runs[i] & 1 ? runs[i - 1] : runs[i];
    for (size_t y = 0; y < 300; ++y) std::fill_n(runs.begin() + 701 * y, y + 1, static_cast<uint8_t>(y));
    planes.push_back({runs, 700});
    size_t raw = 0, ours = 0, theirs = 0;
    for (const auto& [plane, width] : planes) {
        const auto height = static_cast<uint32_t>(plane.size() / static_cast<size_t>(width));
        const Bytes their = viaLibtiff(plane.data(), plane.size(), width, height, true);
        Bytes packed(2 * plane.size()), back(plane.size());
        int32_t count = 0, pos = 0, cap = int32_t(packed.size()), theirLen = int32_t(their.size());
        for (size_t y = 0; y < height; ++y) {
            ASSERT_EQ(vqciPackBitsRow_TIFF_8u_C1(&plane[y * width], width, packed.data(), &count, cap), vqcStatusOk);
            ASSERT_EQ(vqciUnpackBitsRow_TIFF_8u_C1(their.data(), &pos, theirLen, &back[y * width], width), vqcStatusOk);
        }
        EXPECT_TRUE(viaLibtiff(packed.data(), count, width, height, false) == plane) << "libtiff fails on our packets";
        EXPECT_TRUE(pos == theirLen && back == plane) << "we fail on libtiff's packets";
        raw += plane.size(), ours += static_cast<size_t>(count), theirs += their.size();
    }
    std::printf("PackBits on %zu planes of %zu bytes: ours %zu bytes, libtiff %zu\n", planes.size(), raw, ours, theirs);
}
