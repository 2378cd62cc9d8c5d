// Our coders against libjpeg-turbo on files it made from photographs:
// baseline (qualities, standard and optimised tables, grey and colour, odd
// sizes, restart intervals) and progressive (its default script, and custom
// ones with spectral bands and Al up to 5). Over every scan, across its RST
// markers, our decoders (baseline: also Direct) end in jpeg_read_coefficients'
// coefficients; our encoders, given those and the file's tables, give each
// segment byte for byte; our statistics and optimiser give its DHT lists.
#include <gtest/gtest.h>
#include <vqcj.h>

#include <cstring>
#include <functional>
#include <string>

#include "photos.h"
#include "support/jpeg_passes.h"
#include "support/jpeg_streams.h"

using namespace vqcjtest;

namespace {

// fn(file's block, our block in acc, slot in the scan) for the blocks of
// MCUs first to last-1, until it fails; restart(n) where the nth restart
// interval begins.
VqcStatus walk(JpegFile& f, std::vector<JpegComponent>& acc, const JpegScan& s, int first, int last,
               const std::function<void(int)>& restart,
               const std::function<VqcStatus(const Vqc16s*, Vqc16s*, int)>& fn) {
    for (int m = first; m < last; ++m) {
        if (s.restartInterval && m > first && m % s.restartInterval == 0) restart(m / s.restartInterval);
        for (const auto& b : f.mcuBlocks(s, m)) {
            int i = 0;
            while (i < s.compCount - 1 && s.comps[i] != b[0]) ++i;
            if (VqcStatus st = fn(f.comps[b[0]].block(b[1], b[2]), acc[b[0]].block(b[1], b[2]), i)) return st;
        }
    }
    return 0;
}

// Steps over the RST marker that ends an interval when the reader has not
// met it yet, or accepts the one it met.
void passRestart(const JpegScan& s, int32_t& pos, int32_t& marker, int interval) {
    const int expected = 0xD0 + ((interval - 1) & 7);
    if (marker == 0) {
        EXPECT_TRUE(s.data[pos] == 0xFF && s.data[pos + 1] == expected);
        pos += 2;
    }
    EXPECT_TRUE(marker == 0 || marker == expected);
    marker = 0;
}

std::vector<JpegComponent> zeroed(const JpegFile& f) {
    std::vector<JpegComponent> acc = f.comps;
    for (auto& c : acc) std::fill(c.blocks.begin(), c.blocks.end(), 0);
    return acc;
}

void expectOptimised(const Vqc32s* stats, const JpegHuffTable& table) {
    Vqc8u bits[16], vals[256] = {};
    ASSERT_EQ(vqciEncodeHuffmanRawTableInit_JPEG_8u(stats, bits, vals), 0);
    int n = 0;
    for (int l = 0; l < 16; ++l) n += bits[l];
    EXPECT_EQ(std::memcmp(bits, table.bits.data(), 16), 0);
    EXPECT_EQ(std::memcmp(vals, table.vals.data(), n), 0);
}

// One scan decoded into acc, and encoded and counted segment by segment.
void checkScan(JpegFile& f, const JpegScan& s, std::vector<JpegComponent>& acc, bool baseline, bool optimised) {
    ScanCoder coder(s);
    const Tables& t = coder.t;
    ASSERT_TRUE(t.ok);
    const int mcus = f.mcusPerRow(s) * f.mcuRows(s), ri = s.restartInterval;
    const int32_t len = static_cast<int32_t>(s.data.size());
    const Vqc8u* data = s.data.data();
    VqciDecodeHuffmanState ds{};
    int32_t pos = 0, marker = 0, bitPos = 0, count = 0;
    uint32_t bits = 0;
    Vqc16s pred[4] = {};
    auto restart = [&](int n) {
        passRestart(s, pos, marker, n);
        ds = {};
        std::memset(pred, 0, sizeof pred);
    };
    ASSERT_EQ(walk(f, acc, s, 0, mcus, restart,
                   [&](const Vqc16s*, Vqc16s* blk, int i) {
                       return baseline ? vqciDecodeHuffman8x8_JPEG_1u16s_C1(data, len, &pos, blk, &pred[i], &marker,
                                                                            &t.decDc[s.td[i]], &t.decAc[s.ta[i]], &ds)
                                       : coder.decode(data, len, &pos, blk, &pred[i], &marker, i, &ds);
                   }),
              0);
    if (baseline) {  // the Direct decoder, which reads up to the marker behind the data
        auto accD = zeroed(f);
        marker = 0;
        std::memset(pred, 0, sizeof pred);
        auto restartD = [&](int n) {
            pos = bitPos >> 3;
            restart(n);
            bitPos = pos * 8, count = 0, bits = 0;
        };
        ASSERT_EQ(walk(f, accD, s, 0, mcus, restartD,
                       [&](const Vqc16s*, Vqc16s* blk, int i) {
                           return vqciDecodeHuffman8x8_Direct_JPEG_1u16s_C1(data, &bitPos, blk, &pred[i], &marker,
                                                                            &bits, &count, &t.decDc[s.td[i]],
                                                                            &t.decAc[s.ta[i]]);
                       }),
                  0);
        for (size_t c = 0; c < acc.size(); ++c) EXPECT_EQ(accD[c].blocks, f.comps[c].blocks) << "Direct, comp " << c;
    }
    // The encoders, and the statistics. The stateful encoder gets exactly
    // the segment's length, so its last blocks go through the exact writer.
    Vqc32s dc[4][257] = {}, ac[4][257] = {};
    for (size_t seg = 0; seg < s.segments.size(); ++seg) {
        const auto& want = s.segments[seg];
        const int first = ri ? static_cast<int>(seg) * ri : 0, last = ri ? std::min(mcus, first + ri) : mcus;
        const int32_t outLen = static_cast<int32_t>(want.size());
        std::vector<Vqc8u> out(want.size() + 1), direct(want.size() + 16, 0xAA);
        VqciEncodeHuffmanState es{}, gs{};
        Vqc16s epred[4] = {}, gpred[4] = {}, dpred[4] = {};
        pos = bitPos = 0;
        ASSERT_EQ(walk(f, acc, s, first, last, nullptr,
                       [&](const Vqc16s* blk, Vqc16s*, int i) {
                           if (!baseline)
                               return coder.encode(blk, out.data(), outLen, &pos, &epred[i], i, &es, 0) |
                                      coder.stats(blk, dc, ac, &gpred[i], i, &gs, 0);
                           const auto *d = &t.encDc[s.td[i]], *a = &t.encAc[s.ta[i]];
                           return vqciEncodeHuffman8x8_JPEG_16s1u_C1(blk, out.data(), outLen, &pos, &epred[i], d, a,
                                                                     &es, 0) |
                                  vqciEncodeHuffman8x8_Direct_JPEG_16s1u_C1(blk, direct.data(), &bitPos, &dpred[i], d,
                                                                            a) |
                                  vqciGetHuffmanStatistics8x8_JPEG_16s_C1(blk, dc[s.td[i]], ac[s.ta[i]], &gpred[i]);
                       }),
                  0);
        // A baseline scan is a DC-first pass to ScanCoder: the plain flush.
        ASSERT_EQ(coder.encode(nullptr, out.data(), outLen, &pos, nullptr, 0, &es, 1), 0);
        ASSERT_EQ(coder.stats(nullptr, dc, ac, nullptr, 0, &gs, 1), 0);
        out.resize(pos);
        EXPECT_EQ(out, want) << "segment " << seg;
        if (!baseline) continue;
        // The caller pads the Direct form's last byte with ones.
        if (bitPos & 7) {
            Vqc8u& b = direct[bitPos >> 3];
            b |= static_cast<Vqc8u>((1u << (8 - (bitPos & 7))) - 1);
            bitPos = ((bitPos >> 3) + (b == 0xFF ? 2 : 1)) * 8;
            if (b == 0xFF) direct[(bitPos >> 3) - 1] = 0;
        }
        direct.resize(bitPos >> 3);
        EXPECT_EQ(direct, want) << "Direct, segment " << seg;
    }
    for (int i = 0; optimised && i < s.compCount; ++i) {
        if (baseline || coder.pass == kDCFirst) expectOptimised(dc[s.td[i]], s.dc[s.td[i]]);
        if (baseline || coder.pass == kACFirst || coder.pass == kACRefine) expectOptimised(ac[s.ta[i]], s.ac[s.ta[i]]);
    }
}

}  // namespace

TEST(EntropyInterop, DecodeEncodeAndOptimiseLikeLibjpegTurbo) {
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
    // A size (0: the whole photograph) and {quality, optimise, restart
    // interval, grey, progressive, scan script}.
    const std::pair<std::array<int, 2>, JpegOptions> cases[] = {
        {{0, 0}, {75, false, 0, false, false, {}}},   {{301, 203}, {95, true, 7, false, false, {}}},
        {{0, 0}, {30, true, 0, true, false, {}}},     {{117, 77}, {100, false, 3, true, false, {}}},
        {{250, 180}, {50, true, 0, false, false, {}}}, {{0, 0}, {75, true, 0, false, true, {}}},
        {{237, 151}, {90, true, 5, false, true, {}}},  {{0, 0}, {85, true, 0, false, true, colour}},
        {{203, 97}, {60, true, 2, true, true, grey}},  {{160, 120}, {95, true, 0, true, true, {}}}};
    for (size_t p = 0; p < std::min<size_t>(photos.size(), 3); ++p)
        for (const auto& [size, opt] : cases) {
            const auto im = size[0] ? vqcjphoto::tileTo(photos[p], size[0], size[1]) : photos[p];
            if (!opt.scans.empty() && opt.scans[0].compCount == 3 && im.channels != 3) continue;
            JpegFile f = readJpeg(makeJpeg(im.pixels.data(), im.width, im.height, im.channels, opt));
            SCOPED_TRACE(im.name + " " + std::to_string(im.width) + "x" + std::to_string(im.height) + " q" +
                         std::to_string(opt.quality) + (opt.optimize ? " optimised" : "") + (opt.grey ? " grey" : "") +
                         " ri " + std::to_string(opt.restartInterval) + (opt.progressive ? " progressive" : ""));
            ASSERT_EQ(f.scans.size() > 1, opt.progressive);
            auto acc = zeroed(f);
            for (size_t si = 0; si < f.scans.size(); ++si) {
                SCOPED_TRACE("scan " + std::to_string(si));
                checkScan(f, f.scans[si], acc, !opt.progressive, opt.optimize);
            }
            for (size_t c = 0; c < acc.size(); ++c) EXPECT_EQ(acc[c].blocks, f.comps[c].blocks) << "component " << c;
        }
}
