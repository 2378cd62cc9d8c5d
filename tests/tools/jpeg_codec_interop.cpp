// The JPEG codec of the command-line tool against libjpeg-turbo: our files
// decode with it as well as its own do, its files decode with ours to its
// coefficients exactly, lossless files come back exactly, and broken files
// end in an error.
#include <gtest/gtest.h>
#include <turbojpeg.h>
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

// TurboJPEG's decode with the given flags, RGB or grey as the file is.
std::vector<uint8_t> turboDecode(const std::vector<uint8_t>& file, const Image& like, int flags) {
    tjhandle tj = tjInitDecompress();
    std::vector<uint8_t> px(size_t(like.width) * like.height * like.channels);
    const int rc = tjDecompress2(tj, file.data(), file.size(), px.data(), like.width, 0, like.height,
                                 like.channels == 1 ? TJPF_GRAY : TJPF_RGB, flags);
    tjDestroy(tj);
    if (rc != 0) px.clear();
    return px;
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
        {"one scan per component 420", {80, 2, 2, false, false, false, 0, {{{1, 2}, 0, 63, 0, 0}, {{0}, 0, 63, 0, 0}}},
         45, 37, false},
        {"3x2 444", {90, 1, 1}, 3, 2, false},
        {"2x5 422 restart 1", {90, 2, 1, false, false, false, 1}, 2, 5, false},
        {"31x1 420 progressive", {70, 2, 2, false, true}, 31, 1, false},
        {"1x1 grey", {90, 1, 1}, 1, 1, true},
        {"440", {90, 1, 2}, 99, 67, false},
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
        // Chroma replicated, beside TurboJPEG's fast up-sampling.
        vqcjpeg::DecodeOptions fast;
        fast.fastUpsample = true;
        ASSERT_EQ(vqcjpeg::decode(file.data(), file.size(), ours, fast), "");
        const auto theirs = turboDecode(file, ours, TJFLAG_FASTUPSAMPLE | TJFLAG_ACCURATEDCT);
        ASSERT_FALSE(theirs.empty());
        EXPECT_GE(vqcjtest::psnr(theirs, ours.pixels), 45.0);
    }
}

// Component c of decoded coefficients through the full inverse transform,
// block by block, paddedW * 8 samples a row.
std::vector<uint8_t> fullTransform(const vqcjpeg::Parsed& p, int c) {
    const auto& comp = p.frame.comps[c];
    uint8_t raw[64];
    for (int i = 0; i < 64; ++i) raw[i] = static_cast<uint8_t>(p.scans.back().quant[comp.tq][i]);
    Vqc16u inv[64];
    vqciQuantInvTableInit_JPEG_8u16u(raw, inv);
    const int step = comp.paddedW * 8;
    std::vector<uint8_t> plane(size_t(step) * comp.paddedH * 8);
    for (int by = 0; by < comp.paddedH; ++by)
        for (int bx = 0; bx < comp.paddedW; ++bx)
            vqciDCTQuantInv8x8LS_JPEG_16s8u_C1R(&comp.coef[(size_t(by) * comp.paddedW + bx) * 64],
                                                &plane[size_t(by) * 8 * step + bx * 8], step, inv);
    return plane;
}

// Grey output is each block's full inverse transform, whichever transform
// the decoder picks for sparse blocks, in one pass and from whole-picture
// coefficients alike.
TEST(JpegCodec, GreyBlocksAreTheFullTransform) {
    const Image img = crop(photo("camera"), 251, 163, 60, 60);
    for (int quality : {10, 30, 60, 97})
        for (bool progressive : {false, true}) {
            SCOPED_TRACE("quality " + std::to_string(quality) + (progressive ? " progressive" : ""));
            PeerOptions o{};
            o.quality = quality, o.progressive = progressive;
            const auto file = vqcjtest::peerEncode(img.pixels.data(), img.width, img.height, 1, o);
            vqcjpeg::Parsed p;
            ASSERT_EQ(vqcjpeg::parse(file.data(), file.size(), p), "");
            ASSERT_EQ(vqcjpeg::decodeScans(file.data(), file.size(), p), "");
            const std::vector<uint8_t> want = fullTransform(p, 0);
            const int step = p.frame.comps[0].paddedW * 8;
            Image ours;
            ASSERT_EQ(vqcjpeg::decode(file.data(), file.size(), ours), "");
            for (int y = 0; y < img.height; ++y)
                ASSERT_TRUE(std::equal(&ours.pixels[size_t(y) * img.width], &ours.pixels[size_t(y + 1) * img.width],
                                       &want[size_t(y) * step]))
                    << "row " << y;
        }
}

// The default colour decode done on whole planes, as a reference for the
// decoder that streams MCU rows: every block transformed, each chroma plane
// bordered by its edge samples and interpolated, then one conversion.
std::vector<uint8_t> wholePlaneDecode(const std::vector<uint8_t>& file) {
    vqcjpeg::Parsed p;
    if (!vqcjpeg::parse(file.data(), file.size(), p).empty() || !vqcjpeg::decodeScans(file.data(), file.size(), p).empty())
        return {};
    const vqcjpeg::Frame& f = p.frame;
    std::vector<uint8_t> full[3];
    for (int c = 0; c < 3; ++c) {
        const auto& comp = f.comps[c];
        const std::vector<uint8_t> plane = fullTransform(p, c);
        const int step = comp.paddedW * 8;
        const int w = comp.width, h = comp.height, bstep = w + 2;
        std::vector<uint8_t> b(size_t(bstep) * (h + 2));
        for (int y = -1; y <= h; ++y)
            for (int x = -1; x <= w; ++x)
                b[size_t(y + 1) * bstep + x + 1] = plane[size_t(std::clamp(y, 0, h - 1)) * step + std::clamp(x, 0, w - 1)];
        full[c].resize(size_t(f.width) * f.height);
        const VqciSize src{w, h}, dst{f.width, f.height};
        if (f.hmax == comp.h && f.vmax == comp.v)
            for (int y = 0; y < f.height; ++y) std::memcpy(&full[c][size_t(y) * f.width], &b[size_t(y + 1) * bstep + 1], w);
        else if (f.vmax == comp.v)
            vqciSampleUpH2V1_JPEG_8u_C1R(&b[bstep + 1], bstep, src, full[c].data(), f.width, dst);
        else
            vqciSampleUpH2V2_JPEG_8u_C1R(&b[bstep + 1], bstep, src, full[c].data(), f.width, dst);
    }
    std::vector<uint8_t> rgb(size_t(f.width) * f.height * 3);
    const Vqc8u* planes[3] = {full[0].data(), full[1].data(), full[2].data()};
    vqciYCbCrToRGB_JPEG_8u_P3C3R(planes, f.width, rgb.data(), f.width * 3, {f.width, f.height});
    return rgb;
}

// Streaming by MCU rows, with one row of chroma context above and below,
// gives the whole-plane result exactly: at every size, with an odd or even
// number of MCU rows, in one pass and from whole-picture coefficients.
TEST(JpegCodec, RowsAsWholePlanes) {
    const auto& colour = photo("astronaut");
    const int sizes[][2] = {{1, 1}, {2, 2}, {17, 9}, {33, 47}, {64, 48}, {100, 1}, {5, 100}, {61, 80}};
    for (const auto& sz : sizes)
        for (int sampling : {420, 422, 444})
            for (bool progressive : {false, true}) {
                SCOPED_TRACE(std::to_string(sz[0]) + "x" + std::to_string(sz[1]) + " " + std::to_string(sampling) +
                             (progressive ? " progressive" : ""));
                const Image img = crop(colour, sz[0], sz[1], 200, 150);
                PeerOptions o{};
                o.quality = 80, o.h = sampling == 444 ? 1 : 2, o.v = sampling == 420 ? 2 : 1, o.progressive = progressive;
                o.restart = progressive ? 0 : 3;
                const auto file = vqcjtest::peerEncode(img.pixels.data(), img.width, img.height, 3, o);
                Image ours;
                ASSERT_EQ(vqcjpeg::decode(file.data(), file.size(), ours), "");
                ASSERT_TRUE(ours.pixels == wholePlaneDecode(file));
            }
}

// Scaled decoding: grey pictures exactly as libjpeg scales them (the same
// reduced transforms), colour ones within 45 dB (their sub-sampled chroma
// transformed to a larger size, or interpolated, as libjpeg does).
TEST(JpegCodec, ScaledDecoding) {
    for (int sampling : {0, 420, 422}) {
        const Image img = crop(photo(sampling ? "coffee" : "camera"), 203, 101, 3, 3);
        vqcjpeg::EncodeOptions o;
        o.quality = 85;
        o.sampling = sampling ? sampling : 420;
        std::vector<uint8_t> file;
        ASSERT_EQ(vqcjpeg::encode(img, o, file), "");
        for (int s : {2, 4, 8}) {
            SCOPED_TRACE(std::to_string(sampling) + " 1/" + std::to_string(s));
            const auto peer = vqcjtest::peerDecode(file, s);
            Image ours;
            ASSERT_EQ(vqcjpeg::decode(file.data(), file.size(), ours, s), "");
            ASSERT_EQ(ours.width, peer.width);
            ASSERT_EQ(ours.height, peer.height);
            if (img.channels == 1)
                EXPECT_EQ(ours.pixels, peer.pixels);
            else
                EXPECT_GE(vqcjtest::psnr(peer.pixels, ours.pixels), 45.0);
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
        // A frame header that promises 65535 x 65535: refused before any
        // picture-sized buffer is made.
        std::vector<uint8_t> huge = file;
        for (size_t i = 0; i + 9 < huge.size(); ++i)
            if (huge[i] == 0xFF && (huge[i + 1] == 0xC0 || huge[i + 1] == 0xC2)) {
                std::fill(&huge[i + 5], &huge[i + 9], 0xFF);
                break;
            }
        Image none;
        EXPECT_NE(vqcjpeg::decode(huge.data(), huge.size(), none).find("too short"), std::string::npos);
        const auto noise = vqcjtest::randomBytes(4096, progressive);
        for (int trial = 0; trial < 300; ++trial) {
            std::vector<uint8_t> bad = file;
            for (int k = 0; k < 4; ++k) bad[noise[(trial * 8 + 2 * k) % 4096] * bad.size() / 256] ^= noise[(trial * 8 + 2 * k + 1) % 4096] | 1;
            for (vqcjpeg::DecodeOptions opt : {vqcjpeg::DecodeOptions{}, vqcjpeg::DecodeOptions{1, true}, vqcjpeg::DecodeOptions{4}}) {
                Image out;
                (void)vqcjpeg::decode(bad.data(), bad.size(), out, opt);
            }
        }
    }
}

}  // namespace
