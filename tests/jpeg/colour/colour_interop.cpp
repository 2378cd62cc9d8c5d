// Against libjpeg-turbo on real photographs. Its full-rate conversions use the
// same fixed-point tables (19595/38470/7471 with 0x807FFF chroma, and the
// 91881/116130/46802/22554 inverse), so the table forms must agree with
// TurboJPEG's 4:4:4 planes bit for bit both ways, and the luminance form with
// its greyscale plane. The four-channel, fused and subsampled forms round
// differently on purpose and are not compared.
#include <gtest/gtest.h>
#include <turbojpeg.h>
#include <vqcj.h>

#include <vector>

#include "photos.h"

namespace {

using Bytes = std::vector<uint8_t>;

TEST(ColourInterop, TableFormsMatchTurboJpeg444BothWays) {
    int photos = 0;
    tjhandle enc = tjInitCompress(), dec = tjInitDecompress();
    for (const auto& im : vqcjphoto::loadPhotos(VQCJ_PHOTO_DIR)) {
        if (im.channels != 3) continue;
        SCOPED_TRACE(im.name);
        ++photos;
        const int w = im.width, h = im.height, n = w * h;
        const VqciSize sz{w, h};
        int strides[3] = {w, w, w};
        const unsigned char* rgb = im.pixels.data();
        Bytes peer(3 * n), ours(3 * n), grey(n), y(n);
        unsigned char* peerPlanes[3] = {peer.data(), peer.data() + n, peer.data() + 2 * n};
        unsigned char* ourPlanes[3] = {ours.data(), ours.data() + n, ours.data() + 2 * n};
        unsigned char* greyPlanes[3] = {grey.data(), nullptr, nullptr};
        ASSERT_EQ(tjEncodeYUVPlanes(enc, rgb, w, 0, h, TJPF_RGB, peerPlanes, strides, TJSAMP_444, 0), 0);
        ASSERT_EQ(tjEncodeYUVPlanes(enc, rgb, w, 0, h, TJPF_RGB, greyPlanes, strides, TJSAMP_GRAY, 0), 0);
        ASSERT_EQ(vqciRGBToYCbCr_JPEG_8u_C3P3R(rgb, 3 * w, ourPlanes, w, sz), 0);
        ASSERT_EQ(vqciRGBToY_JPEG_8u_C3C1R(rgb, 3 * w, y.data(), w, sz), 0);
        EXPECT_TRUE(ours == peer);
        EXPECT_TRUE(y == grey);

        // Back, into both channel orders, from the peer's planes and from the
        // photograph's bytes read as planes, whose chroma leaves the gamut.
        for (const unsigned char* base : {static_cast<const unsigned char*>(peer.data()), rgb}) {
            const unsigned char* yuv[3] = {base, base + n, base + 2 * n};
            Bytes peerRgb(3 * n), peerBgr(3 * n), rgbOut(3 * n), bgrOut(3 * n);
            ASSERT_EQ(tjDecodeYUVPlanes(dec, yuv, strides, TJSAMP_444, peerRgb.data(), w, 0, h, TJPF_RGB, 0), 0);
            ASSERT_EQ(tjDecodeYUVPlanes(dec, yuv, strides, TJSAMP_444, peerBgr.data(), w, 0, h, TJPF_BGR, 0), 0);
            ASSERT_EQ(vqciYCbCrToRGB_JPEG_8u_P3C3R(yuv, w, rgbOut.data(), 3 * w, sz), 0);
            ASSERT_EQ(vqciYCbCrToBGR_JPEG_8u_P3C3R(yuv, w, bgrOut.data(), 3 * w, sz), 0);
            EXPECT_TRUE(rgbOut == peerRgb);
            EXPECT_TRUE(bgrOut == peerBgr);
        }
    }
    tjDestroy(enc);
    tjDestroy(dec);
    EXPECT_GT(photos, 0) << "no photographs in " << VQCJ_PHOTO_DIR;
}

}  // namespace
