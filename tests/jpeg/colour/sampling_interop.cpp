// The row forms against libjpeg-turbo on photographs. Its encoder halves
// chroma as our box rows do. Its decoder's "fancy" upsampling is our triangle
// rows: the decoded planes upsampled by us and converted by the peer, which
// then has nothing left to upsample, give exactly the pixels it decodes.
#include <gtest/gtest.h>
#include <turbojpeg.h>
#include <vqcj.h>

#include <algorithm>

#include "photos.h"

TEST(SamplingInterop, BoxAndTriangleRowsMatchPeerOnPhotographs) {
    const auto photos = vqcjphoto::loadPhotos(VQCJ_PHOTO_DIR);
    ASSERT_TRUE(!photos.empty() && photos[0].channels == 3) << "no colour photographs in " VQCJ_PHOTO_DIR;
    tjhandle tj = tjInitTransform();
    for (const auto& img : photos) {
        if (img.channels != 3) continue;
        const int W = img.width, H = img.height;
        // Row y of plane c in an unpadded planar buffer, which has one spare
        // byte at its end: an odd box row reads one past, an odd triangle row
        // writes one past.
        const auto row = [&](std::vector<uint8_t>& b, int samp, int c, int y) {
            return b.data() + (c ? tjPlaneSizeYUV(0, W, 0, H, samp) + (c - 1) * tjPlaneSizeYUV(1, W, 0, H, samp) : 0) +
                   size_t(y) * tjPlaneWidth(c, W, samp);
        };
        std::vector<uint8_t> full(tjBufSizeYUV2(W, 1, H, TJSAMP_444) + 1), ours(full), out(W);
        std::vector<uint8_t> half(tjBufSizeYUV2(W, 1, H, TJSAMP_422) + 1), raw(half), rgb(size_t(W) * H * 3), peer(rgb);
        ASSERT_EQ(tjEncodeYUV3(tj, img.pixels.data(), W, 0, H, TJPF_RGB, full.data(), 1, TJSAMP_444, 0), 0);
        for (int samp : {TJSAMP_422, TJSAMP_420}) {
            const int v2 = samp == TJSAMP_420, cw = tjPlaneWidth(1, W, samp), ch = tjPlaneHeight(1, H, samp);
            unsigned char* jpeg = nullptr;
            unsigned long size = 0;
            ASSERT_EQ(tjEncodeYUV3(tj, img.pixels.data(), W, 0, H, TJPF_RGB, half.data(), 1, samp, 0), 0);
            ASSERT_EQ(tjCompress2(tj, img.pixels.data(), W, 0, H, TJPF_RGB, &jpeg, &size, samp, 90, 0), 0);
            ASSERT_EQ(tjDecompressToYUV2(tj, jpeg, size, raw.data(), W, 1, H, 0), 0);
            ASSERT_EQ(tjDecompress2(tj, jpeg, size, peer.data(), W, 0, H, TJPF_RGB, 0), 0);
            tjFree(jpeg);
            for (int y = 0; y < H; ++y) std::copy_n(row(raw, samp, 0, y), W, row(ours, 0, 0, y));  // Y rows are padded
            // Our triangle rows fill the chroma of ours, the first and last
            // rows leaning on themselves. On the way the box rows meet the
            // peer's halved planes where these are clear of its padding: it
            // repeats the last column and row of an odd size where we read one
            // past, so W/2 columns and, for 420, H/2 rows.
            for (int c = 1; c < 3; ++c)
                for (int y = 0; y < H; ++y) {
                    const int n = v2 ? y / 2 : y, f = std::clamp(y % 2 ? n + 1 : n - 1, 0, ch - 1);
                    if (v2) vqciSampleUpRowH2V2_Triangle_JPEG_8u_C1(row(raw, samp, c, n), row(raw, samp, c, f), cw, row(ours, 0, c, y));
                    else vqciSampleUpRowH2V1_Triangle_JPEG_8u_C1(row(raw, samp, c, n), cw, row(ours, 0, c, y));
                    if (y >= H / (1 + v2)) continue;
                    if (v2) vqciSampleDownRowH2V2_Box_JPEG_8u_C1(row(full, 0, c, 2 * y), row(full, 0, c, 2 * y) + W, W, out.data());
                    else vqciSampleDownRowH2V1_Box_JPEG_8u_C1(row(full, 0, c, y), W, out.data());
                    ASSERT_TRUE(std::equal(out.data(), out.data() + W / 2, row(half, samp, c, y))) << img.name << ' ' << y;
                }
            ASSERT_EQ(tjDecodeYUV(tj, ours.data(), 1, TJSAMP_444, rgb.data(), W, 0, H, TJPF_RGB, 0), 0);
            EXPECT_TRUE(rgb == peer) << img.name << " samp " << samp;
        }
    }
    tjDestroy(tj);
}
