// Chroma sampling against libjpeg-turbo on real photographs.
//
// The peer's encoder halves chroma with the same alternating-bias box filters
// as our row forms, and its decoder's "fancy" upsampling is our triangle
// rows. Both are reached without the peer's colour conversion in the way:
// the encoder side gives full-rate (444) and halved (422, 420) planes of the
// same conversion, and the decoder side gives the decoded halved planes (raw)
// and, asked for YCbCr output, the upsampled planes themselves.
#include <gtest/gtest.h>
#include <jpeglib.h>
#include <turbojpeg.h>
#include <vqcj.h>

#include <algorithm>
#include <csetjmp>
#include <vector>

#include "jpegerr.h"
#include "photos.h"

namespace {

struct Plane {
    int w = 0, h = 0;
    std::vector<uint8_t> px;
    const uint8_t* row(int y) const { return px.data() + size_t(y) * w; }
};

// The peer's Y, Cb, Cr planes of an RGB image at the given subsampling.
std::vector<Plane> encodePlanes(const vqcjphoto::Image& img, int samp) {
    std::vector<Plane> planes(3);
    unsigned char* ptrs[3];
    for (int c = 0; c < 3; ++c) {
        planes[c].w = tjPlaneWidth(c, img.width, samp);
        planes[c].h = tjPlaneHeight(c, img.height, samp);
        // One spare byte: a box row of odd width reads one past its row.
        planes[c].px.resize(size_t(planes[c].w) * planes[c].h + 1);
        ptrs[c] = planes[c].px.data();
    }
    tjhandle tj = tjInitCompress();
    const int rc = tjEncodeYUVPlanes(tj, img.pixels.data(), img.width, 0, img.height, TJPF_RGB, ptrs, nullptr, samp, 0);
    tjDestroy(tj);
    EXPECT_EQ(rc, 0) << tjGetErrorStr();
    return planes;
}

std::vector<uint8_t> compress(const vqcjphoto::Image& img, int samp) {
    tjhandle tj = tjInitCompress();
    unsigned char* buf = nullptr;
    unsigned long size = 0;
    const int rc = tjCompress2(tj, img.pixels.data(), img.width, 0, img.height, TJPF_RGB, &buf, &size, samp, 90, 0);
    EXPECT_EQ(rc, 0) << tjGetErrorStr();
    std::vector<uint8_t> out(buf, buf + size);
    tjFree(buf);
    tjDestroy(tj);
    return out;
}

// The decoded halved planes, before any upsampling.
std::vector<Plane> decodeRaw(const std::vector<uint8_t>& jpeg, int width, int height, int samp) {
    std::vector<Plane> planes(3);
    unsigned char* ptrs[3];
    for (int c = 0; c < 3; ++c) {
        planes[c] = {tjPlaneWidth(c, width, samp), tjPlaneHeight(c, height, samp), {}};
        planes[c].px.resize(size_t(planes[c].w) * planes[c].h);
        ptrs[c] = planes[c].px.data();
    }
    tjhandle tj = tjInitDecompress();
    const int rc = tjDecompressToYUVPlanes(tj, jpeg.data(), jpeg.size(), ptrs, width, nullptr, height, 0);
    tjDestroy(tj);
    EXPECT_EQ(rc, 0) << tjGetErrorStr();
    return planes;
}

// The peer's fancy-upsampled planes: YCbCr output skips its colour conversion.
std::vector<Plane> decodeUpsampled(const std::vector<uint8_t>& jpeg) {
    std::vector<Plane> planes(3);
    jpeg_decompress_struct cinfo;
    vqcjphoto::JpegErrorJump err;
    cinfo.err = err.install();
    if (setjmp(err.jump)) {
        jpeg_destroy_decompress(&cinfo);
        ADD_FAILURE() << "libjpeg could not decode";
        return {};
    }
    jpeg_create_decompress(&cinfo);
    jpeg_mem_src(&cinfo, jpeg.data(), jpeg.size());
    jpeg_read_header(&cinfo, TRUE);
    cinfo.out_color_space = JCS_YCbCr;
    cinfo.do_fancy_upsampling = TRUE;
    jpeg_start_decompress(&cinfo);
    const int w = int(cinfo.output_width), h = int(cinfo.output_height);
    for (auto& p : planes) p = {w, h, std::vector<uint8_t>(size_t(w) * h)};
    std::vector<uint8_t> line(size_t(w) * 3);
    while (cinfo.output_scanline < cinfo.output_height) {
        const int y = int(cinfo.output_scanline);
        JSAMPROW r = line.data();
        jpeg_read_scanlines(&cinfo, &r, 1);
        for (int x = 0; x < w; ++x)
            for (int c = 0; c < 3; ++c) planes[c].px[size_t(y) * w + x] = line[size_t(x) * 3 + c];
    }
    jpeg_finish_decompress(&cinfo);
    jpeg_destroy_decompress(&cinfo);
    return planes;
}

// The plane with one replicated column and row on every side: the border
// bytes our image forms read, filled the way the peer closes its edges.
Plane withEdgeBorder(const Plane& p) {
    Plane b{p.w + 2, p.h + 2, std::vector<uint8_t>(size_t(p.w + 2) * (p.h + 2))};
    for (int y = -1; y <= p.h; ++y)
        for (int x = -1; x <= p.w; ++x)
            b.px[size_t(y + 1) * b.w + x + 1] = p.row(std::clamp(y, 0, p.h - 1))[std::clamp(x, 0, p.w - 1)];
    return b;
}

class SamplingInterop : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        for (auto& img : vqcjphoto::loadPhotos(VQCJ_PHOTO_DIR))
            if (img.channels == 3) photos_.push_back(std::move(img));
    }
    void SetUp() override { ASSERT_FALSE(photos_.empty()) << "no colour photographs in " << VQCJ_PHOTO_DIR; }
    static std::vector<vqcjphoto::Image> photos_;
};
std::vector<vqcjphoto::Image> SamplingInterop::photos_;

TEST_F(SamplingInterop, BoxRowsMatchPeerDownsampling) {
    for (const auto& img : photos_) {
        const auto full = encodePlanes(img, TJSAMP_444);
        const auto h422 = encodePlanes(img, TJSAMP_422), h420 = encodePlanes(img, TJSAMP_420);
        // The peer pads an odd width by repeating the last column and an odd
        // height by repeating the last row; we read one byte past the row
        // instead. Only the outputs that do not touch the padding are
        // compared: the first W/2 columns and, for 420, the first H/2 rows.
        // The image forms are no match here: their fixed biases (1, and 3
        // over four samples) sit above the peer's alternating 0,1 and 1,2.
        const int W = img.width, H = img.height, cols = W / 2;
        std::vector<uint8_t> out(size_t(W + 1) / 2);
        for (int c = 1; c < 3; ++c) {
            for (int y = 0; y < H; ++y) {
                ASSERT_EQ(vqciSampleDownRowH2V1_Box_JPEG_8u_C1(full[c].row(y), W, out.data()), vqcStatusOk);
                ASSERT_TRUE(std::equal(out.begin(), out.begin() + cols, h422[c].row(y)))
                    << img.name << " 422 plane " << c << " row " << y;
            }
            for (int y = 0; y < H / 2; ++y) {
                vqciSampleDownRowH2V2_Box_JPEG_8u_C1(full[c].row(2 * y), full[c].row(2 * y + 1), W, out.data());
                ASSERT_TRUE(std::equal(out.begin(), out.begin() + cols, h420[c].row(y)))
                    << img.name << " 420 plane " << c << " row " << y;
            }
        }
    }
}

TEST_F(SamplingInterop, TrianglesMatchPeerFancyUpsampling) {
    for (const auto& img : photos_)
        for (int samp : {TJSAMP_422, TJSAMP_420}) {
            const auto jpeg = compress(img, samp);
            const auto raw = decodeRaw(jpeg, img.width, img.height, samp);
            const auto up = decodeUpsampled(jpeg);
            ASSERT_EQ(up.size(), 3u);
            const int W = img.width, H = img.height;
            for (int c = 1; c < 3; ++c) {
                const Plane& p = raw[c];
                ASSERT_GT(p.w, 2) << "the peer upsamples two-column planes by plain repetition";
                // Row forms: the peer's first and last image rows lean on
                // themselves as the far row, so those pass the near row twice.
                std::vector<uint8_t> out(2 * size_t(p.w));
                for (int y = 0; y < H; ++y) {
                    if (samp == TJSAMP_422) {
                        vqciSampleUpRowH2V1_Triangle_JPEG_8u_C1(p.row(y), p.w, out.data());
                    } else {
                        const int n = y / 2, f = std::clamp(y % 2 ? n + 1 : n - 1, 0, p.h - 1);
                        vqciSampleUpRowH2V2_Triangle_JPEG_8u_C1(p.row(n), p.row(f), p.w, out.data());
                    }
                    ASSERT_TRUE(std::equal(out.begin(), out.begin() + W, up[c].row(y)))
                        << img.name << " samp " << samp << " plane " << c << " row " << y;
                }
                // Image forms: they read a border instead of closing the row;
                // given the edge repeated there, they land on the peer's values.
                const Plane b = withEdgeBorder(p);
                std::vector<uint8_t> img2(size_t(W) * H);
                const auto fn = samp == TJSAMP_422 ? vqciSampleUpH2V1_JPEG_8u_C1R : vqciSampleUpH2V2_JPEG_8u_C1R;
                ASSERT_EQ(fn(b.px.data() + b.w + 1, b.w, {p.w, p.h}, img2.data(), W, {W, H}), vqcStatusOk);
                EXPECT_EQ(img2, up[c].px) << img.name << " samp " << samp << " plane " << c;
            }
        }
}

}  // namespace
