// PackBits against libtiff's codec, both ways: our packets written as a raw
// strip and decoded by libtiff, libtiff's packets read raw and decoded by us,
// on the rows of real photographs and on random rows with runs of every
// length from 1 to 300. Each plane is one strip, so our decoder also walks
// from row to row with one position, as a TIFF reader would.
#include <gtest/gtest.h>
#include <vqcj.h>

#include <cstdio>
#include <random>
#include <string>
#include <vector>

#include "photos.h"
#include "support/testutil.h"
#include "tiff/memtiff.h"
#include "tiff/plane.h"

namespace {

using tiffplane::Bytes;
using tiffplane::Plane;

struct Sizes {
    size_t ours, theirs;
    bool same;  // byte for byte
};

// Both directions on one plane; returns the two encoded sizes.
Sizes crossCheck(const Plane& p) {
    memtiff::File file;
    const Bytes ours = tiffplane::packRows(p);
    EXPECT_FALSE(ours.empty()) << p.name << ": a row failed to pack";
    EXPECT_TRUE(memtiff::writePlane(file, p.rowBytes, p.height, ours.data(), ours.size(), true));
    EXPECT_TRUE(memtiff::readPlane(file, false) == p.data) << p.name << ": libtiff does not decode our packets";

    EXPECT_TRUE(memtiff::writePlane(file, p.rowBytes, p.height, p.data.data(), p.data.size(), false));
    const Bytes theirs = memtiff::readPlane(file, true);
    EXPECT_FALSE(theirs.empty());
    Bytes decoded(p.data.size());
    EXPECT_TRUE(tiffplane::unpackRows(theirs, p.rowBytes, p.height, decoded)) << p.name;
    EXPECT_TRUE(decoded == p.data) << p.name << ": we do not decode libtiff's packets";
    return {ours.size(), theirs.size(), ours == theirs};
}

// Each channel plane and the interleaved rows of the RGB photographs, and the
// grey ones as they are.
std::vector<Plane> photoPlanes() {
    std::vector<Plane> planes;
    for (const vqcjphoto::Image& img : vqcjphoto::loadPhotos(VQCJ_PHOTO_DIR)) {
        const size_t pixels = static_cast<size_t>(img.width) * static_cast<size_t>(img.height);
        planes.push_back({img.name + (img.channels == 3 ? " RGB" : ""), img.width * img.channels, img.height, img.pixels});
        if (img.channels == 1) continue;
        for (int c = 0; c < 3; ++c) {
            Plane p{img.name + " " + "RGB"[c], img.width, img.height, Bytes(pixels)};
            for (size_t i = 0; i < pixels; ++i) p.data[i] = img.pixels[3 * i + static_cast<size_t>(c)];
            planes.push_back(std::move(p));
        }
    }
    return planes;
}

void report(const std::string& name, size_t raw, const Sizes& s) {
    std::printf("  %-28s raw %9zu  ours %9zu  libtiff %9zu  (%+.3f%%)%s\n", name.c_str(), raw, s.ours, s.theirs,
                100.0 * (static_cast<double>(s.ours) / static_cast<double>(s.theirs) - 1.0), s.same ? "  same bytes" : "");
}

TEST(PackBitsInterop, Photographs) {
    const std::vector<Plane> planes = photoPlanes();
    ASSERT_FALSE(planes.empty()) << "no photographs in " << VQCJ_PHOTO_DIR;
    Sizes total{0, 0, true};
    size_t raw = 0;
    for (const Plane& p : planes) {
        const Sizes s = crossCheck(p);
        report(p.name, p.data.size(), s);
        total = {total.ours + s.ours, total.theirs + s.theirs, total.same && s.same};
        raw += p.data.size();
    }
    report("all planes", raw, total);
}

// Row y holds a run of y + 1 bytes between a random literal and random runs,
// so every run length from 1 to 300 meets every kind of neighbour.
TEST(PackBitsInterop, RunsOfEveryLength) {
    std::mt19937 rng(23);
    Plane p{"runs", 700, 300, {}};
    for (int y = 0; y < p.height; ++y) {
        Bytes row = vqcjtest::randomBytes(rng() % 200, rng());
        row.insert(row.end(), static_cast<size_t>(y + 1), static_cast<uint8_t>(rng()));
        while (row.size() < static_cast<size_t>(p.rowBytes)) {
            const size_t len = std::min<size_t>(1 + rng() % (rng() % 2 ? 3 : 140), p.rowBytes - row.size());
            row.insert(row.end(), len, static_cast<uint8_t>(rng() % 3));
        }
        p.data.insert(p.data.end(), row.begin(), row.begin() + p.rowBytes);
    }
    crossCheck(p);
    p.name = "noise";
    p.data = vqcjtest::randomBytes(p.data.size(), 29);
    crossCheck(p);
}

}  // namespace
