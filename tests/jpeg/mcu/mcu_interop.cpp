// The scaled transforms against libjpeg's on the blocks of real files, and
// the MCU forms on real photographs.
#include <gtest/gtest.h>
#include <vqcj.h>

#include "photos.h"
#include "support/mcu_jpeg.h"
#include "support/mcu_ref.h"
#include "support/simd.h"

TEST(McuInterop, ScaledIdctsMatchLibjpegOnEveryTarget) {
    vqcjtest::CoefBlocks real;
    for (const char* name : {"rocket.jpg", "retina.jpg", "hubble_deep_field.jpg"})
        ASSERT_TRUE(vqcjtest::readCoefficients(std::string(VQCJ_PHOTO_DIR) + "/" + name, real)) << name;
    ASSERT_GT(real.blocks.size(), 100000u);
    vqcjtest::forEachSimdTarget([&](const char* target) {
    vqcjtest::LibjpegReducedIdct peer;
    int table = -1;
    for (size_t i = 0; i < real.blocks.size(); ++i) {
        if (real.tableOf[i] != table) peer.setTable(real.tables[table = real.tableOf[i]].data());
        for (int n : {4, 2}) {
            uint8_t want[4 * 6], got[4 * 6];
            std::memset(want, 0xEE, sizeof want), std::memset(got, 0xEE, sizeof got);
            peer.run(n, real.blocks[i].data(), want, 6);
            ASSERT_EQ((n == 4 ? vqciDCTQuantInv8x8To4x4LS_JPEG_16s8u_C1R : vqciDCTQuantInv8x8To2x2LS_JPEG_16s8u_C1R)(
                          real.blocks[i].data(), got, 6, real.tables[table].data()),
                      0);
            ASSERT_EQ(std::memcmp(want, got, sizeof want), 0) << n << "x" << n << ", block " << i << " on " << target;
        }
    }
    });
}

// MCUs cut from photographs, in every layout: forward against the rules, and
// the forward result back through the inverse against the rules.
TEST(McuInterop, PhotographMcus) {
    const auto photos = vqcjphoto::loadPhotos(VQCJ_PHOTO_DIR);
    ASSERT_GE(photos.size(), 4u);
    for (const auto& img : photos) {
        if (img.channels != 3) continue;
        for (const auto& f : vqcjtest::mcuForms()) {
            const int w = f.width(), h = f.height();
            for (int y0 = 0; y0 + h <= img.height; y0 += 7 * h)
                for (int x0 = 0; x0 + w <= img.width; x0 += 5 * w) {
                    std::vector<uint8_t> rgb(size_t(w) * h * 3);
                    for (int y = 0; y < h; ++y) std::memcpy(&rgb[size_t(y) * w * 3], &img.pixels[(size_t(y0 + y) * img.width + x0) * 3], size_t(w) * 3);
                    const auto px = vqcjtest::mcuPixelsFromRgb(f, rgb.data());
                    const int step = w * f.bytesPerPixel();
                    vqcjtest::McuBlocks blocks(f);
                    ASSERT_EQ(f.fwd(px.data(), step, blocks.p), 0);
                    ASSERT_EQ(blocks.v, vqcjtest::mcuFwdReference(f, px.data(), step)) << img.name << " " << f.name;
                    std::vector<uint8_t> back(px.size());
                    ASSERT_EQ(f.inv(blocks.p, back.data(), step), 0);
                    ASSERT_EQ(back, vqcjtest::mcuInvReference(f, blocks.p)) << img.name << " " << f.name;
                }
        }
    }
}
