// Progressive coders against libjpeg-turbo on files it made from
// photographs: its default script (successive approximation) and custom
// scripts with spectral bands and Al up to 5, colour and grey, with and
// without restart intervals (progressive files always carry optimised
// tables). Decoding every scan into the same blocks ends in exactly the
// coefficients of jpeg_read_coefficients; encoding scan by scan with the
// file's tables gives every segment byte for byte; the statistics passes
// and the optimiser give every scan's DHT lists.
#include <gtest/gtest.h>
#include <vqcj.h>

#include <cstring>
#include <string>

#include "jpeg/entropy/scan_walk.h"
#include "photos.h"
#include "support/jpeg_streams.h"

namespace {

void checkFile(JpegFile& f, const std::string& what) {
    SCOPED_TRACE(what);
    std::vector<JpegComponent> acc = f.comps;  // our decoding, scan after scan
    for (auto& c : acc) std::fill(c.blocks.begin(), c.blocks.end(), 0);
    for (size_t si = 0; si < f.scans.size(); ++si) {
        const JpegScan& s = f.scans[si];
        SCOPED_TRACE("scan " + std::to_string(si));
        ScanCoder coder(s);
        ASSERT_TRUE(coder.t.ok);
        const int mcus = f.mcusPerRow(s) * f.mcuRows(s), ri = s.restartInterval;
        VqciDecodeHuffmanState ds;
        vqciDecodeHuffmanStateInit_JPEG_8u(&ds);
        int32_t pos = 0, marker = 0;
        Vqc16s pred[4] = {};
        for (int m = 0; m < mcus; ++m) {
            if (ri && m && m % ri == 0) {
                passRestart(s, pos, marker, m / ri);
                vqciDecodeHuffmanStateInit_JPEG_8u(&ds);
                std::memset(pred, 0, sizeof pred);
            }
            for (const auto& b : f.mcuBlocks(s, m)) {
                const int i = slot(s, b[0]);
                ASSERT_EQ(coder.decode(s.data.data(), static_cast<int32_t>(s.data.size()), &pos,
                                       acc[b[0]].block(b[1], b[2]), &pred[i], &marker, i, &ds),
                          0)
                    << "mcu " << m;
            }
        }
        // Encoding and statistics, one restart interval at a time.
        Vqc32s dc[4][257] = {}, ac[4][257] = {};
        VqciEncodeHuffmanState gs;
        for (size_t seg = 0; seg < s.segments.size(); ++seg) {
            const auto& want = s.segments[seg];
            const int first = ri ? static_cast<int>(seg) * ri : 0, last = ri ? std::min(mcus, first + ri) : mcus;
            std::vector<Vqc8u> out(want.size() + 1);
            const int32_t len = static_cast<int32_t>(want.size());
            VqciEncodeHuffmanState es;
            vqciEncodeHuffmanStateInit_JPEG_8u(&es);
            vqciEncodeHuffmanStateInit_JPEG_8u(&gs);
            int32_t opos = 0;
            Vqc16s epred[4] = {}, gpred[4] = {};
            for (int m = first; m < last; ++m)
                for (const auto& b : f.mcuBlocks(s, m)) {
                    const int i = slot(s, b[0]);
                    const Vqc16s* blk = f.comps[b[0]].block(b[1], b[2]);
                    ASSERT_EQ(coder.encode(blk, out.data(), len, &opos, &epred[i], i, &es, 0), 0) << "mcu " << m;
                    ASSERT_EQ(coder.stats(blk, dc, ac, &gpred[i], i, &gs, 0), 0) << "mcu " << m;
                }
            ASSERT_EQ(coder.encode(nullptr, out.data(), len, &opos, nullptr, 0, &es, 1), 0);
            ASSERT_EQ(coder.stats(nullptr, dc, ac, nullptr, 0, &gs, 1), 0);
            out.resize(opos);
            EXPECT_EQ(out, want) << "segment " << seg;
        }
        for (int i = 0; i < s.compCount; ++i) {
            const bool isDc = coder.pass == kDCFirst;
            if (!isDc && coder.pass != kACFirst && coder.pass != kACRefine) continue;
            const JpegHuffTable& table = isDc ? s.dc[s.td[i]] : s.ac[s.ta[i]];
            Vqc8u bits[16], vals[256] = {};
            ASSERT_EQ(vqciEncodeHuffmanRawTableInit_JPEG_8u(isDc ? dc[s.td[i]] : ac[s.ta[i]], bits, vals), 0);
            int n = 0;
            for (int l = 0; l < 16; ++l) n += bits[l];
            EXPECT_EQ(std::memcmp(bits, table.bits.data(), 16), 0);
            EXPECT_EQ(std::memcmp(vals, table.vals.data(), n), 0);
        }
    }
    for (size_t c = 0; c < acc.size(); ++c) EXPECT_EQ(acc[c].blocks, f.comps[c].blocks) << "component " << c;
}

}  // namespace

TEST(EntropyProgressiveInterop, DecodeEncodeAndOptimiseLikeLibjpegTurbo) {
    auto photos = vqcjphoto::loadPhotos(VQCJ_PHOTO_DIR);
    ASSERT_FALSE(photos.empty()) << "no photographs in " << VQCJ_PHOTO_DIR;
    using Scan = JpegOptions::Scan;
    // Bands 1-5 and 6-63 with successive approximation down from Al 5.
    const std::vector<Scan> colour = {
        {3, {0, 1, 2}, 0, 0, 0, 2}, {1, {0}, 1, 5, 0, 5},  {1, {0}, 6, 63, 0, 2}, {1, {1}, 1, 63, 0, 1},
        {1, {2}, 1, 63, 0, 0},      {1, {0}, 1, 5, 5, 4},  {1, {0}, 1, 5, 4, 3},  {1, {0}, 1, 5, 3, 2},
        {1, {0}, 1, 5, 2, 1},       {1, {0}, 1, 5, 1, 0},  {1, {0}, 6, 63, 2, 1}, {1, {0}, 6, 63, 1, 0},
        {3, {0, 1, 2}, 0, 0, 2, 1}, {3, {0, 1, 2}, 0, 0, 1, 0}, {1, {1}, 1, 63, 1, 0}};
    const std::vector<Scan> grey = {{1, {0}, 0, 0, 0, 1},  {1, {0}, 1, 1, 0, 2},  {1, {0}, 2, 63, 0, 3},
                                    {1, {0}, 1, 1, 2, 1},  {1, {0}, 1, 1, 1, 0},  {1, {0}, 2, 63, 3, 2},
                                    {1, {0}, 2, 63, 2, 1}, {1, {0}, 2, 63, 1, 0}, {1, {0}, 0, 0, 1, 0}};
    struct Case {
        size_t photo;
        int w, h;
        JpegOptions opt;
    };
    std::vector<Case> cases;
    for (size_t p = 0; p < std::min<size_t>(photos.size(), 2); ++p) {
        cases.push_back({p, 0, 0, {75, true, 0, false, true, {}}});
        cases.push_back({p, 237, 151, {90, true, 5, false, true, {}}});
        cases.push_back({p, 0, 0, {85, true, 0, false, true, colour}});
        cases.push_back({p, 203, 97, {60, true, 2, true, true, grey}});
        cases.push_back({p, 160, 120, {95, true, 0, true, true, {}}});
    }
    for (const auto& c : cases) {
        auto im = photos[c.photo];
        if (c.w) im = vqcjphoto::tileTo(im, c.w, c.h);
        if (!c.opt.scans.empty() && c.opt.scans[0].compCount == 3 && im.channels != 3) continue;
        const auto file = makeJpeg(im.pixels.data(), im.width, im.height, im.channels, c.opt);
        JpegFile f = readJpeg(file);
        ASSERT_GT(f.scans.size(), 1u);
        checkFile(f, im.name + " " + std::to_string(im.width) + "x" + std::to_string(im.height) + " q" +
                         std::to_string(c.opt.quality) + (c.opt.grey ? " grey" : "") + " ri " +
                         std::to_string(c.opt.restartInterval) + (c.opt.scans.empty() ? " default" : " custom"));
    }
}
