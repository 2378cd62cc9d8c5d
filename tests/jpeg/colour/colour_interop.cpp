// Against libjpeg-turbo on real photographs. Its full-rate RGB to YCbCr and
// YCbCr to RGB use the same fixed-point tables (19595/38470/7471 with
// 0x807FFF chroma, and the 91881/116130/46802/22554 inverse), so the table
// forms must agree with TurboJPEG's 4:4:4 planes bit for bit, in both
// directions and both channel orders, and the luminance forms with its
// greyscale planes.
//
// Not compared: the four-channel forms and the fused 422/411 forms round
// differently on purpose (one quarter or one eighth instead of one half, Y
// rounding per member), and TurboJPEG reduces chroma after conversion with
// its own filter, so no member of those groups coincides with it. The
// multiplication arithmetic of the inverse also uses other weights.
#include <gtest/gtest.h>
#include <turbojpeg.h>
#include <vqcj.h>

#include <vector>

#include "photos.h"

namespace {

using Bytes = std::vector<uint8_t>;

struct Planes {
    Bytes p[3];
    unsigned char* planes[3];
    explicit Planes(size_t n) {
        for (int k = 0; k < 3; ++k) p[k].assign(n, 0), planes[k] = p[k].data();
    }
};

std::vector<vqcjphoto::Image> rgbPhotos() {
    std::vector<vqcjphoto::Image> out;
    for (auto& im : vqcjphoto::loadPhotos(VQCJ_PHOTO_DIR))
        if (im.channels == 3) out.push_back(std::move(im));
    return out;
}

Bytes swapRB(const Bytes& px) {
    Bytes out(px);
    for (size_t i = 0; i + 2 < out.size(); i += 3) std::swap(out[i], out[i + 2]);
    return out;
}

TEST(ColourInterop, TableFormsMatchTurboJpeg444) {
    const auto photos = rgbPhotos();
    ASSERT_FALSE(photos.empty()) << "no photographs in " << VQCJ_PHOTO_DIR;
    tjhandle enc = tjInitCompress(), dec = tjInitDecompress();
    for (const auto& im : photos) {
        SCOPED_TRACE(im.name);
        const int w = im.width, h = im.height;
        const size_t n = size_t(w) * h;
        const VqciSize sz{w, h};
        const Bytes bgr = swapRB(im.pixels);
        int strides[3] = {w, w, w};

        // Forward: RGB and BGR, and the planar source, against the peer's planes.
        Planes peer(n), ours(n), oursBgr(n), oursPlanar(n), peerGrey(n);
        ASSERT_EQ(tjEncodeYUVPlanes(enc, im.pixels.data(), w, 3 * w, h, TJPF_RGB, peer.planes, strides, TJSAMP_444, 0), 0)
            << tjGetErrorStr2(enc);
        ASSERT_EQ(vqciRGBToYCbCr_JPEG_8u_C3P3R(im.pixels.data(), 3 * w, ours.planes, w, sz), 0);
        ASSERT_EQ(vqciBGRToYCbCr_JPEG_8u_C3P3R(bgr.data(), 3 * w, oursBgr.planes, w, sz), 0);
        Planes split(n);
        for (size_t i = 0; i < n; ++i)
            for (int k = 0; k < 3; ++k) split.p[k][i] = im.pixels[3 * i + k];
        const Vqc8u* rgbPlanes[3] = {split.planes[0], split.planes[1], split.planes[2]};
        ASSERT_EQ(vqciRGBToYCbCr_JPEG_8u_P3R(rgbPlanes, w, oursPlanar.planes, w, sz), 0);
        for (int k = 0; k < 3; ++k) {
            EXPECT_TRUE(ours.p[k] == peer.p[k]) << "plane " << k;
            EXPECT_TRUE(oursBgr.p[k] == peer.p[k]) << "plane " << k;
            EXPECT_TRUE(oursPlanar.p[k] == peer.p[k]) << "plane " << k;
        }

        // Luminance alone: the peer's greyscale encoding.
        Bytes y(n);
        ASSERT_EQ(tjEncodeYUVPlanes(enc, im.pixels.data(), w, 3 * w, h, TJPF_RGB, peerGrey.planes, strides, TJSAMP_GRAY, 0), 0);
        ASSERT_EQ(vqciRGBToY_JPEG_8u_C3C1R(im.pixels.data(), 3 * w, y.data(), w, sz), 0);
        EXPECT_TRUE(y == peerGrey.p[0]);

        // Inverse, from the converted planes back to RGB and BGR pixels.
        const unsigned char* yuv[3] = {peer.planes[0], peer.planes[1], peer.planes[2]};
        Bytes peerRgb(3 * n), peerBgr(3 * n), rgb(3 * n), bgrOut(3 * n);
        ASSERT_EQ(tjDecodeYUVPlanes(dec, yuv, strides, TJSAMP_444, peerRgb.data(), w, 3 * w, h, TJPF_RGB, 0), 0)
            << tjGetErrorStr2(dec);
        ASSERT_EQ(tjDecodeYUVPlanes(dec, yuv, strides, TJSAMP_444, peerBgr.data(), w, 3 * w, h, TJPF_BGR, 0), 0);
        ASSERT_EQ(vqciYCbCrToRGB_JPEG_8u_P3C3R(yuv, w, rgb.data(), 3 * w, sz), 0);
        ASSERT_EQ(vqciYCbCrToBGR_JPEG_8u_P3C3R(yuv, w, bgrOut.data(), 3 * w, sz), 0);
        EXPECT_TRUE(rgb == peerRgb);
        EXPECT_TRUE(bgrOut == peerBgr);

        // And from planes with saturating chroma: the photograph's own bytes
        // read as Y, Cb, Cr reach far outside the gamut.
        const unsigned char* raw[3] = {split.planes[0], split.planes[1], split.planes[2]};
        ASSERT_EQ(tjDecodeYUVPlanes(dec, raw, strides, TJSAMP_444, peerRgb.data(), w, 3 * w, h, TJPF_RGB, 0), 0);
        ASSERT_EQ(vqciYCbCrToRGB_JPEG_8u_P3C3R(raw, w, rgb.data(), 3 * w, sz), 0);
        EXPECT_TRUE(rgb == peerRgb);
    }
    tjDestroy(enc);
    tjDestroy(dec);
}

}  // namespace
