// The JPEG codec of the command-line tool against libjpeg-turbo: our files
// decode with it as well as its own do, its files decode with ours to its
// coefficients exactly, lossless files come back exactly, and broken files
// end in an error.
#include <gtest/gtest.h>
#include <vqcj.h>

#include <algorithm>
#include <cmath>
#include <cstring>

#include "codec.h"
#include "jpegint.h"
#include "photos.h"
#include "support/peerjpeg.h"
#include "support/testutil.h"

// The cases below name only the options they set.
#pragma GCC diagnostic ignored "-Wmissing-field-initializers"

namespace {

using vqcjpeg::Image;
using vqcjtest::PeerOptions;

Image crop(const vqcjphoto::Image& p, int w, int h, int x0 = 0, int y0 = 0) {
    Image img;
    img.width = w, img.height = h, img.channels = p.channels;
    for (int y = 0; y < h; ++y) {
        const uint8_t* row = &p.pixels[(size_t(y0 + y) * p.width + x0) * p.channels];
        img.pixels.insert(img.pixels.end(), row, row + size_t(w) * p.channels);
    }
    return img;
}

const std::vector<vqcjphoto::Image>& photos() {
    static const auto all = vqcjphoto::loadPhotos(VQCJ_PHOTO_DIR);
    return all;
}

const vqcjphoto::Image& photo(const char* name) {
    for (const auto& p : photos())
        if (p.name.find(name) != std::string::npos) return p;
    static vqcjphoto::Image none;
    return none;
}

struct Mode {
    const char* name;
    vqcjpeg::EncodeOptions ours;
};

PeerOptions peerOf(const vqcjpeg::EncodeOptions& o) {
    PeerOptions p{};
    p.quality = o.quality;
    p.h = o.sampling == 444 ? 1 : 2;
    p.v = o.sampling == 420 ? 2 : 1;
    p.gray = o.gray;
    p.progressive = o.progressive;
    p.optimize = o.optimize;
    p.restart = o.restart;
    return p;
}

// What a decoded file is measured against: the source, or for grey files
// from colour its luma.
std::vector<uint8_t> reference(const Image& img, bool gray) {
    if (!gray || img.channels == 1) return img.pixels;
    std::vector<uint8_t> y(size_t(img.width) * img.height);
    vqciRGBToY_JPEG_8u_C3C1R(img.pixels.data(), img.width * 3, y.data(), img.width, {img.width, img.height});
    return y;
}

TEST(JpegCodec, OurFilesAgainstThePeersOwn) {
    ASSERT_FALSE(photos().empty());
    const Mode modes[] = {
        {"baseline 420 q90", {90, 420}},
        {"baseline 444 q75", {75, 444}},
        {"optimised 422 q50", {50, 422, false, false, true}},
        {"grey q85", {85, 420, true}},
        {"progressive q90", {90, 420, false, true}},
        {"progressive grey q60", {60, 420, true, true}},
        {"restart 7 q80", {80, 420, false, false, false, 7}},
    };
    for (const char* name : {"astronaut", "chelsea"}) {
        const Image img = crop(photo(name), 301, 203, 7, 5);
        for (const Mode& m : modes) {
            SCOPED_TRACE(std::string(name) + ", " + m.name);
            std::vector<uint8_t> ours;
            ASSERT_EQ(vqcjpeg::encode(img, m.ours, ours), "");
            const auto theirs = vqcjtest::peerEncode(img.pixels.data(), img.width, img.height, 3, peerOf(m.ours));
            const auto a = vqcjtest::peerDecode(ours), b = vqcjtest::peerDecode(theirs);
            ASSERT_TRUE(a.ok && b.ok);
            EXPECT_EQ(a.warnings, 0);
            const std::vector<uint8_t> ref = reference(img, m.ours.gray);
            const double pa = vqcjtest::psnr(ref, a.pixels), pb = vqcjtest::psnr(ref, b.pixels);
            EXPECT_NEAR(pa, pb, 0.3);
            EXPECT_NEAR(double(ours.size()) / theirs.size(), 1.0, 0.03) << ours.size() << " against " << theirs.size();
            // Our decoder on our file, beside the peer's decoder.
            Image back;
            ASSERT_EQ(vqcjpeg::decode(ours.data(), ours.size(), back), "");
            EXPECT_GE(vqcjtest::psnr(a.pixels, back.pixels), 45.0);
        }
    }
}

// Every size from 1 to 17 each way, so that the MCUs on the right and at the
// bottom hold from one pixel to all of them: libjpeg-turbo decodes our file
// about as close to the source as its own.
TEST(JpegCodec, EdgeMcusAtEverySize) {
    const std::pair<const char*, Mode> cases[] = {
        {"chelsea", {"444", {90, 444}}},
        {"chelsea", {"422 progressive", {90, 422, false, true}}},
        {"chelsea", {"420 optimised restart 2", {90, 420, false, false, true, 2}}},
        {"chelsea", {"420 progressive", {75, 420, false, true}}},
        {"chelsea", {"grey from colour", {90, 420, true}}},
        {"camera", {"grey optimised", {90, 420, false, false, true}}},
    };
    for (const auto& [source, m] : cases)
        for (int w = 1; w <= 17; ++w)
            for (int h = 1; h <= 17; ++h) {
                SCOPED_TRACE(std::string(m.name) + ", " + std::to_string(w) + "x" + std::to_string(h));
                const Image img = crop(photo(source), w, h, 100 + 3 * w, 50 + 5 * h);
                std::vector<uint8_t> ours;
                ASSERT_EQ(vqcjpeg::encode(img, m.ours, ours), "");
                const auto theirs = vqcjtest::peerEncode(img.pixels.data(), w, h, img.channels, peerOf(m.ours));
                const auto a = vqcjtest::peerDecode(ours), b = vqcjtest::peerDecode(theirs);
                ASSERT_TRUE(a.ok && b.ok);
                ASSERT_EQ(a.warnings, 0);
                ASSERT_EQ(a.pixels.size(), b.pixels.size());
                const std::vector<uint8_t> ref = reference(img, m.ours.gray);
                const double pa = vqcjtest::psnr(ref, a.pixels), pb = vqcjtest::psnr(ref, b.pixels);
                // Near-lossless tiny pictures differ in dB by noise alone: compare errors.
                auto mse = [](double p) { return 65025.0 / std::pow(10.0, p / 10); };
                EXPECT_LE(mse(pa), 2 * mse(pb) + 1);
            }
}

TEST(JpegCodec, PeerFilesDecodeToItsCoefficients) {
    const auto& colour = photo("coffee");
    const auto& grey = photo("camera");
    // Spectral bands 1-5 and 6-63 and successive approximation down from
    // Al 5, each refinement one bit.
    std::vector<vqcjtest::PeerScan> bands = {{{0, 1, 2}, 0, 0, 0, 1}, {{0}, 1, 5, 0, 2}, {{0}, 6, 63, 0, 1},
                                             {{1}, 1, 63, 0, 5},     {{2}, 1, 63, 0, 0}, {{0}, 1, 5, 2, 1},
                                             {{0}, 1, 5, 1, 0},      {{0}, 6, 63, 1, 0}};
    for (int al = 4; al >= 0; --al) bands.push_back({{1}, 1, 63, al + 1, al});
    bands.push_back({{0, 1, 2}, 0, 0, 1, 0});
    struct Case {
        const char* name;
        PeerOptions opt;
        int w, h;
        bool useGrey;
    } cases[] = {
        {"baseline 420", {90, 2, 2}, 333, 211, false},
        {"optimised 422", {70, 2, 1, false, false, true}, 200, 99, false},
        {"444 restart 5", {95, 1, 1, false, false, false, 5}, 65, 47, false},
        {"progressive", {85, 2, 2, false, true}, 257, 130, false},
        {"progressive restart 3", {75, 2, 2, false, true, false, 3}, 97, 61, false},
        {"custom bands", {80, 1, 1, false, false, false, 0, bands}, 123, 77, false},
        {"grey progressive", {90, 1, 1, false, true}, 211, 150, true},
        {"grey restart 1", {60, 1, 1, false, false, true, 1}, 33, 17, true},
        {"1x1", {90, 2, 2}, 1, 1, false},
        {"1x1 grey progressive", {90, 1, 1, false, true}, 1, 1, true},
        {"17x9 progressive 422", {50, 2, 1, false, true}, 17, 9, false},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        const Image img = crop(c.useGrey ? grey : colour, c.w, c.h, 11, 13);
        const auto file = vqcjtest::peerEncode(img.pixels.data(), img.width, img.height, img.channels, c.opt);
        ASSERT_FALSE(file.empty());
        const auto peer = vqcjtest::peerDecode(file);
        ASSERT_TRUE(peer.ok);
        vqcjpeg::Parsed p;
        ASSERT_EQ(vqcjpeg::parse(file.data(), file.size(), p), "");
        ASSERT_EQ(vqcjpeg::decodeScans(file.data(), file.size(), p), "");
        ASSERT_EQ(p.frame.comps.size(), peer.coef.size());
        for (size_t k = 0; k < peer.coef.size(); ++k) {
            const auto& comp = p.frame.comps[k];
            ASSERT_EQ(comp.blocksW, peer.blocksW[k]);
            ASSERT_EQ(comp.blocksH, peer.blocksH[k]);
            for (int by = 0; by < comp.blocksH; ++by)
                ASSERT_TRUE(std::equal(&comp.coef[size_t(by) * comp.paddedW * 64],
                                       &comp.coef[(size_t(by) * comp.paddedW + comp.blocksW) * 64],
                                       &peer.coef[k][size_t(by) * comp.blocksW * 64]))
                    << "component " << k << " block row " << by;
        }
        Image ours;
        ASSERT_EQ(vqcjpeg::decode(file.data(), file.size(), ours), "");
        EXPECT_GE(vqcjtest::psnr(peer.pixels, ours.pixels), 45.0);
    }
}

// Scaled decoding: grey pictures exactly as libjpeg scales them (the same
// reduced transforms), colour ones close, their chroma being filtered apart.
TEST(JpegCodec, ScaledDecoding) {
    for (const char* name : {"camera", "coffee"}) {
        const Image img = crop(photo(name), 203, 101, 3, 3);
        vqcjpeg::EncodeOptions o;
        o.quality = 85;
        std::vector<uint8_t> file;
        ASSERT_EQ(vqcjpeg::encode(img, o, file), "");
        for (int s : {2, 4, 8}) {
            SCOPED_TRACE(std::string(name) + " 1/" + std::to_string(s));
            const auto peer = vqcjtest::peerDecode(file, s);
            Image ours;
            ASSERT_EQ(vqcjpeg::decode(file.data(), file.size(), ours, s), "");
            ASSERT_EQ(ours.width, peer.width);
            ASSERT_EQ(ours.height, peer.height);
            if (img.channels == 1)
                EXPECT_EQ(ours.pixels, peer.pixels);
            else
                EXPECT_GE(vqcjtest::psnr(peer.pixels, ours.pixels), 30.0);
        }
    }
}

TEST(JpegCodec, LosslessRoundTrips) {
    const Image rgb = crop(photo("astronaut"), 67, 31, 100, 100);
    const Image grey = crop(photo("camera"), 45, 29, 200, 100);
    Image deep;  // 12-bit samples, full range
    deep.width = 37, deep.height = 23, deep.channels = 1, deep.precision = 12;
    const auto noise = vqcjtest::randomBytes(2 * 37 * 23, 5);
    for (size_t i = 0; i < 37 * 23; ++i) deep.wide.push_back((noise[2 * i] | noise[2 * i + 1] << 8) & 0xFFF);
    for (const Image* img : std::initializer_list<const Image*>{&rgb, &grey, &deep})
        for (int pred = 1; pred <= 7; ++pred) {
            SCOPED_TRACE("predictor " + std::to_string(pred) + ", " + std::to_string(img->channels) + " channels");
            vqcjpeg::EncodeOptions o;
            o.lossless = pred;
            std::vector<uint8_t> file;
            ASSERT_EQ(vqcjpeg::encode(*img, o, file), "");
            Image back;
            ASSERT_EQ(vqcjpeg::decode(file.data(), file.size(), back), "");
            EXPECT_EQ(back.pixels, img->pixels);
            EXPECT_EQ(back.wide, img->wide);
        }
}

// Cut and damaged files: an error or a picture, never a crash (the sanitizer
// build watches the accesses); a file cut inside its data is always an error.
TEST(JpegCodec, BrokenFiles) {
    const Image img = crop(photo("chelsea"), 96, 64);
    for (bool progressive : {false, true}) {
        vqcjpeg::EncodeOptions o;
        o.progressive = progressive;
        o.restart = progressive ? 0 : 4;
        std::vector<uint8_t> file;
        ASSERT_EQ(vqcjpeg::encode(img, o, file), "");
        for (size_t cut = 0; cut + 2 < file.size(); cut += 1 + cut / 16) {
            Image out;
            std::vector<uint8_t> part(file.begin(), file.begin() + cut);
            EXPECT_NE(vqcjpeg::decode(part.data(), part.size(), out), "") << "cut at " << cut;
        }
        const auto noise = vqcjtest::randomBytes(4096, progressive);
        for (int trial = 0; trial < 300; ++trial) {
            std::vector<uint8_t> bad = file;
            for (int k = 0; k < 4; ++k) bad[noise[(trial * 8 + 2 * k) % 4096] * bad.size() / 256] ^= noise[(trial * 8 + 2 * k + 1) % 4096] | 1;
            Image out;
            (void)vqcjpeg::decode(bad.data(), bad.size(), out);
        }
    }
}

}  // namespace
