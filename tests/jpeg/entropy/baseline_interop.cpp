// Baseline coders against libjpeg-turbo on files it made from photographs
// (several qualities, standard and optimised tables, grey and colour, odd
// sizes with edge blocks, with and without restart intervals):
//  - our decoders, stateful and Direct, walking each scan across its RST
//    markers, give exactly jpeg_read_coefficients' coefficients;
//  - our encoders, fed those coefficients and the file's tables, give each
//    entropy-coded segment byte for byte;
//  - our statistics plus the optimiser give the file's optimised DHT lists.
#include <gtest/gtest.h>
#include <vqcj.h>

#include <cstring>
#include <string>

#include "photos.h"
#include "support/jpeg_streams.h"

using namespace vqcjtest;

namespace {

struct Tables {
    VqciEncodeHuffmanSpec encDc[4], encAc[4];
    VqciDecodeHuffmanSpec decDc[4], decAc[4];
    explicit Tables(const JpegScan& s) {
        for (int i = 0; i < 4; ++i) {
            if (s.dc[i].present) {
                EXPECT_EQ(vqciEncodeHuffmanSpecInit_JPEG_8u(s.dc[i].bits.data(), s.dc[i].vals.data(), &encDc[i]), 0);
                EXPECT_EQ(vqciDecodeHuffmanSpecInit_JPEG_8u(s.dc[i].bits.data(), s.dc[i].vals.data(), &decDc[i]), 0);
            }
            if (s.ac[i].present) {
                EXPECT_EQ(vqciEncodeHuffmanSpecInit_JPEG_8u(s.ac[i].bits.data(), s.ac[i].vals.data(), &encAc[i]), 0);
                EXPECT_EQ(vqciDecodeHuffmanSpecInit_JPEG_8u(s.ac[i].bits.data(), s.ac[i].vals.data(), &decAc[i]), 0);
            }
        }
    }
};

int slot(const JpegScan& s, int comp) {
    for (int i = 0; i < s.compCount; ++i)
        if (s.comps[i] == comp) return i;
    return 0;
}

// Steps over the RST marker that ends an interval when the reader has not
// met it yet, or accepts the one it met.
void passRestart(const JpegScan& s, int32_t& pos, int32_t& marker, int interval) {
    const int expected = 0xD0 + ((interval - 1) & 7);
    if (marker == 0) {
        ASSERT_EQ(s.data[pos], 0xFF);
        ASSERT_EQ(s.data[pos + 1], expected);
        pos += 2;
    } else {
        ASSERT_EQ(marker, expected);
        marker = 0;
    }
}

void checkScan(JpegFile& f, const JpegScan& s, bool optimised, const std::string& what) {
    SCOPED_TRACE(what);
    Tables t(s);
    const int mcus = f.mcusPerRow(s) * f.mcuRows(s);
    const int ri = s.restartInterval;
    const int32_t len = static_cast<int32_t>(s.data.size());

    // Stateful decoder across the whole scan.
    {
        VqciDecodeHuffmanState st;
        vqciDecodeHuffmanStateInit_JPEG_8u(&st);
        int32_t pos = 0, marker = 0;
        Vqc16s pred[4] = {}, blk[64];
        for (int m = 0; m < mcus; ++m) {
            if (ri && m && m % ri == 0) {
                passRestart(s, pos, marker, m / ri);
                vqciDecodeHuffmanStateInit_JPEG_8u(&st);
                std::memset(pred, 0, sizeof pred);
            }
            for (const auto& b : f.mcuBlocks(s, m)) {
                const int i = slot(s, b[0]);
                ASSERT_EQ(vqciDecodeHuffman8x8_JPEG_1u16s_C1(s.data.data(), len, &pos, blk, &pred[i], &marker,
                                                             &t.decDc[s.td[i]], &t.decAc[s.ta[i]], &st),
                          0)
                    << "mcu " << m;
                ASSERT_EQ(std::memcmp(blk, f.comps[b[0]].block(b[1], b[2]), 128), 0) << "mcu " << m;
            }
        }
    }
    // Direct decoder across the whole scan; it needs the marker at the end.
    {
        int32_t bitPos = 0, marker = 0, count = 0;
        uint32_t bits = 0;
        Vqc16s pred[4] = {}, blk[64];
        for (int m = 0; m < mcus; ++m) {
            if (ri && m && m % ri == 0) {
                int32_t pos = bitPos >> 3;
                passRestart(s, pos, marker, m / ri);
                bitPos = pos * 8, count = 0, bits = 0;
                std::memset(pred, 0, sizeof pred);
            }
            for (const auto& b : f.mcuBlocks(s, m)) {
                const int i = slot(s, b[0]);
                ASSERT_EQ(vqciDecodeHuffman8x8_Direct_JPEG_1u16s_C1(s.data.data(), &bitPos, blk, &pred[i], &marker,
                                                                    &bits, &count, &t.decDc[s.td[i]],
                                                                    &t.decAc[s.ta[i]]),
                          0);
                ASSERT_EQ(std::memcmp(blk, f.comps[b[0]].block(b[1], b[2]), 128), 0) << "direct mcu " << m;
            }
        }
    }
    // Encoders, one segment per restart interval. The stateful one gets a
    // buffer of exactly the segment's length, so its last blocks go through
    // the bounded path.
    for (size_t seg = 0; seg < s.segments.size(); ++seg) {
        const auto& want = s.segments[seg];
        const int first = ri ? static_cast<int>(seg) * ri : 0;
        const int last = ri ? std::min(mcus, first + ri) : mcus;
        std::vector<Vqc8u> out(want.size() + 1), direct(want.size() + 16, 0xAA);
        VqciEncodeHuffmanState st;
        vqciEncodeHuffmanStateInit_JPEG_8u(&st);
        int32_t pos = 0, bitPos = 0;
        Vqc16s pred[4] = {}, predD[4] = {};
        const int32_t outLen = static_cast<int32_t>(want.size());
        for (int m = first; m < last; ++m)
            for (const auto& b : f.mcuBlocks(s, m)) {
                const int i = slot(s, b[0]);
                const Vqc16s* blk = f.comps[b[0]].block(b[1], b[2]);
                ASSERT_EQ(vqciEncodeHuffman8x8_JPEG_16s1u_C1(blk, out.data(), outLen, &pos, &pred[i],
                                                             &t.encDc[s.td[i]], &t.encAc[s.ta[i]], &st, 0),
                          0);
                ASSERT_EQ(vqciEncodeHuffman8x8_Direct_JPEG_16s1u_C1(blk, direct.data(), &bitPos, &predD[i],
                                                                    &t.encDc[s.td[i]], &t.encAc[s.ta[i]]),
                          0);
            }
        ASSERT_EQ(vqciEncodeHuffman8x8_JPEG_16s1u_C1(nullptr, out.data(), outLen, &pos, nullptr, nullptr, nullptr,
                                                     &st, 1),
                  0);
        out.resize(pos);
        EXPECT_EQ(out, want) << "segment " << seg;
        // The caller pads the Direct form's last byte with ones.
        if (bitPos & 7) {
            Vqc8u& b = direct[bitPos >> 3];
            b |= static_cast<Vqc8u>((1u << (8 - (bitPos & 7))) - 1);
            bitPos = ((bitPos >> 3) + (b == 0xFF ? 2 : 1)) * 8;
            if (b == 0xFF) direct[(bitPos >> 3) - 1] = 0;
        }
        direct.resize(bitPos >> 3);
        EXPECT_EQ(direct, want) << "direct segment " << seg;
    }
    // Statistics of the whole scan and the optimiser: libjpeg-turbo's lists.
    if (optimised) {
        Vqc32s dc[4][257] = {}, ac[4][257] = {};
        Vqc16s pred[4] = {};
        for (int m = 0; m < mcus; ++m) {
            if (ri && m && m % ri == 0) std::memset(pred, 0, sizeof pred);
            for (const auto& b : f.mcuBlocks(s, m)) {
                const int i = slot(s, b[0]);
                ASSERT_EQ(vqciGetHuffmanStatistics8x8_JPEG_16s_C1(f.comps[b[0]].block(b[1], b[2]), dc[s.td[i]],
                                                                  ac[s.ta[i]], &pred[i]),
                          0);
            }
        }
        for (int i = 0; i < s.compCount; ++i) {
            for (auto [stats, table] : {std::pair{dc[s.td[i]], &s.dc[s.td[i]]}, std::pair{ac[s.ta[i]], &s.ac[s.ta[i]]}}) {
                Vqc8u bits[16], vals[256] = {};
                ASSERT_EQ(vqciEncodeHuffmanRawTableInit_JPEG_8u(stats, bits, vals), 0);
                int n = 0;
                for (int l = 0; l < 16; ++l) n += bits[l];
                EXPECT_EQ(std::memcmp(bits, table->bits.data(), 16), 0);
                EXPECT_EQ(std::memcmp(vals, table->vals.data(), n), 0);
            }
        }
    }
}

}  // namespace

TEST(EntropyBaselineInterop, DecodeEncodeAndOptimiseLikeLibjpegTurbo) {
    auto photos = vqcjphoto::loadPhotos(VQCJ_PHOTO_DIR);
    ASSERT_FALSE(photos.empty()) << "no photographs in " << VQCJ_PHOTO_DIR;
    struct Case {
        size_t photo;
        int w, h;  // 0: whole photograph
        JpegOptions opt;
    };
    std::vector<Case> cases;
    for (size_t p = 0; p < std::min<size_t>(photos.size(), 3); ++p) {
        cases.push_back({p, 0, 0, {75, false, 0, false, false, {}}});
        cases.push_back({p, 301, 203, {95, true, 7, false, false, {}}});
        cases.push_back({p, 0, 0, {30, true, 0, true, false, {}}});
        cases.push_back({p, 117, 77, {100, false, 3, true, false, {}}});
        cases.push_back({p, 250, 180, {50, true, 0, false, false, {}}});
    }
    for (const auto& c : cases) {
        auto im = photos[c.photo];
        if (c.w) im = vqcjphoto::tileTo(im, c.w, c.h);
        const auto file = makeJpeg(im.pixels.data(), im.width, im.height, im.channels, c.opt);
        JpegFile f = readJpeg(file);
        ASSERT_EQ(f.scans.size(), 1u);
        const std::string what = im.name + " " + std::to_string(im.width) + "x" + std::to_string(im.height) + " q" +
                                 std::to_string(c.opt.quality) + (c.opt.optimize ? " optimised" : "") +
                                 (c.opt.grey ? " grey" : "") + " ri " + std::to_string(c.opt.restartInterval);
        checkScan(f, f.scans[0], c.opt.optimize, what);
    }
}
