// PackBits row encoder and decoder: hand-worked rows, the fold and its
// limits, overruns, the row-to-row walk, and bounded fuzz loops with guard
// buffers (run them under the sanitizer build).
#include <gtest/gtest.h>
#include <vqcj.h>

#include <memory>
#include <random>
#include <string>
#include <vector>

#include "support/testutil.h"
#include "tiff/plane.h"
#include "tiff/rows.h"

namespace {

using Bytes = std::vector<uint8_t>;
using vqcjtest::Guarded;

Bytes text(const std::string& s) { return Bytes(s.begin(), s.end()); }

Bytes cat(std::initializer_list<Bytes> parts) {
    Bytes out;
    for (const Bytes& p : parts) out.insert(out.end(), p.begin(), p.end());
    return out;
}

// first, first+1, ...: no two neighbours equal.
Bytes ramp(int n, int first = 0) {
    Bytes b(static_cast<size_t>(n));
    for (int i = 0; i < n; ++i) b[static_cast<size_t>(i)] = static_cast<uint8_t>(first + i);
    return b;
}

// A copy in a heap block of exactly its size, so that the sanitizer sees any
// read past the end; `extra` adds that many bytes of the given value.
std::unique_ptr<uint8_t[]> exact(const Bytes& b, size_t extra = 0, uint8_t value = 0) {
    auto p = std::make_unique<uint8_t[]>(b.size() + extra);
    std::copy(b.begin(), b.end(), p.get());
    std::fill(p.get() + b.size(), p.get() + b.size() + extra, value);
    return p;
}

struct Packed {
    VqcStatus st;
    int32_t count;
    Bytes bytes;  // pDst[0 .. count)
    Bytes all;    // the whole output buffer after the call
};

constexpr uint8_t kFill = 0xEE;

// Packs row into a guarded buffer of dstLenMax bytes (just enough for any row
// when 0), starting at `entry`, which holds `entry` bytes of fill first.
Packed pack(const Bytes& row, int32_t dstLenMax = 0, int32_t entry = 0) {
    const auto n = static_cast<int32_t>(row.size());
    if (dstLenMax == 0) dstLenMax = entry + tiffplane::packedBound(n);
    Guarded dst(static_cast<size_t>(dstLenMax), kFill);
    const auto src = exact(row);
    int32_t count = entry;
    const VqcStatus st = vqciPackBitsRow_TIFF_8u_C1(src.get(), n, dst.data(), &count, dstLenMax);
    EXPECT_TRUE(dst.guardsIntact()) << "write beyond dstLenMax";
    Packed r{st, count, {}, Bytes(dst.data(), dst.data() + dstLenMax)};
    if (count >= 0 && count <= dstLenMax) r.bytes.assign(dst.data(), dst.data() + count);
    return r;
}

Bytes packOk(const Bytes& row) {
    Packed p = pack(row);
    EXPECT_EQ(p.st, vqcStatusOk);
    return p.bytes;
}

struct Unpacked {
    VqcStatus st;
    int32_t pos;
    Bytes row;  // the whole destination after the call
};

// Decodes dstLen bytes from `stream` at `pos`, with a source block of exactly
// the stream (plus `extra` bytes of `after`), into a guarded row of fill.
Unpacked unpack(const Bytes& stream, int32_t dstLen, int32_t pos = 0, size_t extra = 0, uint8_t after = 0) {
    const auto src = exact(stream, extra, after);
    Guarded dst(static_cast<size_t>(dstLen), kFill);
    const VqcStatus st =
        vqciUnpackBitsRow_TIFF_8u_C1(src.get(), &pos, static_cast<int32_t>(stream.size()), dst.data(), dstLen);
    EXPECT_TRUE(dst.guardsIntact()) << "write beyond dstLen";
    return {st, pos, Bytes(dst.data(), dst.data() + dstLen)};
}

// Random row with runs: each step a run of 1 to maxRun equal bytes (often
// 2, the length that folds) in a value different from the previous one.
Bytes runRow(std::mt19937& rng, size_t n, int maxRun) {
    Bytes row;
    int last = -1;
    while (row.size() < n) {
        int v = static_cast<int>(rng() % 4 == 0 ? rng() % 3 : rng() % 256);
        if (v == last) v = (v + 1) & 255;
        const uint32_t pick = rng() % 8;
        const int len = pick < 3 ? 1 : pick < 6 ? 2 : 1 + static_cast<int>(rng() % static_cast<uint32_t>(maxRun));
        row.insert(row.end(), std::min<size_t>(static_cast<size_t>(len), n - row.size()), static_cast<uint8_t>(v));
        last = v;
    }
    return row;
}

// ---- Encoder ---------------------------------------------------------------

TEST(PackBitsEncode, HandWorkedRows) {
    const struct {
        const char* row;
        Bytes packed;
    } cases[] = {
        {"P", {0x00, 'P'}},
        {"PQ", {0x01, 'P', 'Q'}},
        {"QQ", {0xFF, 'Q'}},
        {"PQQR", {0x03, 'P', 'Q', 'Q', 'R'}},                         // literal, pair, literal: one packet
        {"PQQ", {0x00, 'P', 0xFF, 'Q'}},                             // no literal after the pair
        {"QQR", {0xFF, 'Q', 0x00, 'R'}},                             // no literal before the pair
        {"PQQRRS", {0x00, 'P', 0xFF, 'Q', 0xFF, 'R', 0x00, 'S'}},    // a run comes first and resets the history
        {"PQQRSST", {0x06, 'P', 'Q', 'Q', 'R', 'S', 'S', 'T'}},      // two folds into one packet
        {"PQQQR", {0x00, 'P', 0xFE, 'Q', 0x00, 'R'}},                // only a pair folds
        {"PQQRSTT", {0x04, 'P', 'Q', 'Q', 'R', 'S', 0xFF, 'T'}},     // the fold's literal stops before T T
        {"PQQRSSTUUV", {0x09, 'P', 'Q', 'Q', 'R', 'S', 'S', 'T', 'U', 'U', 'V'}},
    };
    for (const auto& c : cases) EXPECT_EQ(packOk(text(c.row)), c.packed) << c.row;
}

TEST(PackBitsEncode, FoldLimits) {
    const Bytes qqr = text("QQR");
    // Header 124: the pair and one byte make the packet 128 long; the bytes
    // after start a plain literal.
    EXPECT_EQ(packOk(cat({ramp(125), qqr})), cat({{0x7F}, ramp(125), qqr}));
    EXPECT_EQ(packOk(cat({ramp(125), qqr, text("ST")})), cat({{0x7F}, ramp(125), qqr, {0x01, 'S', 'T'}}));
    // Header 125 does not fold.
    EXPECT_EQ(packOk(cat({ramp(126), qqr})), cat({{0x7D}, ramp(126), {0xFF, 'Q', 0x00, 'R'}}));
    // Header 120: the fold takes 125 - 120 = 5 new bytes, the rest is a new literal.
    const Bytes tail = ramp(10, 200);
    EXPECT_EQ(packOk(cat({ramp(121), text("QQ"), tail})),
              cat({{0x7F}, ramp(121), text("QQ"), Bytes(tail.begin(), tail.begin() + 5), {0x04},
                   Bytes(tail.begin() + 5, tail.end())}));
}

TEST(PackBitsEncode, PacketLengthLimits) {
    const auto run = [](int n) { return Bytes(static_cast<size_t>(n), 'v'); };
    EXPECT_EQ(packOk(run(128)), Bytes({0x81, 'v'}));
    EXPECT_EQ(packOk(run(129)), Bytes({0x81, 'v', 0x00, 'v'}));
    EXPECT_EQ(packOk(run(130)), Bytes({0x81, 'v', 0xFF, 'v'}));
    EXPECT_EQ(packOk(run(300)), Bytes({0x81, 'v', 0x81, 'v', 0xD5, 'v'}));
    // Literals: 128 at most; the last byte of the row is always taken.
    const Bytes lit = ramp(300);
    EXPECT_EQ(packOk(lit), cat({{0x7F}, ramp(128), {0x7F}, ramp(128, 128), {0x2B}, ramp(44, 256)}));
    EXPECT_EQ(packOk(ramp(129)), cat({{0x7F}, ramp(128), {0x00, 128}}));
}

TEST(PackBitsEncode, DestinationLimit) {
    const Bytes row = text("PQQRSST");
    EXPECT_EQ(pack(row, 8).st, vqcStatusOk);
    // One less: the last fold does not fit; the pair and the literal header
    // stay as they were.
    const Packed p = pack(row, 7);
    EXPECT_EQ(p.st, vqcStatusRowOverrun);
    EXPECT_EQ(p.count, 7);
    EXPECT_EQ(p.bytes, Bytes({0x03, 'P', 'Q', 'Q', 'R', 0xFF, 'S'}));

    // Appending after bytes already there.
    const Packed a = pack(text("PQQR"), 8, 3);
    EXPECT_EQ(a.st, vqcStatusOk);
    EXPECT_EQ(a.count, 8);
    EXPECT_EQ(a.all, Bytes({kFill, kFill, kFill, 0x03, 'P', 'Q', 'Q', 'R'}));

    // An entry count at or beyond the limit: nothing fits.
    for (int32_t entry : {4, 5, 100}) {
        int32_t count = entry;
        Bytes dst(4, kFill);
        EXPECT_EQ(vqciPackBitsRow_TIFF_8u_C1(text("PQ").data(), 2, dst.data(), &count, 4), vqcStatusRowOverrun);
        EXPECT_EQ(count, entry);
        EXPECT_EQ(dst, Bytes(4, kFill));
    }
}

// Whatever the limit, an overrun leaves whole packets that decode to a prefix
// of the row, and nothing at or after the returned count is touched.
TEST(PackBitsEncode, EveryLimitLeavesValidPackets) {
    std::mt19937 rng(7);
    for (int iter = 0; iter < 40; ++iter) {
        const Bytes row = runRow(rng, 1 + rng() % 400, 300);
        const Bytes full = packOk(row);
        for (int32_t limit = 1; limit < static_cast<int32_t>(full.size()); ++limit) {
            const Packed p = pack(row, limit);
            ASSERT_EQ(p.st, vqcStatusRowOverrun);
            ASSERT_LE(p.count, limit);
            for (int32_t i = p.count; i < limit; ++i) ASSERT_EQ(p.all[static_cast<size_t>(i)], kFill);
            if (p.count == 0) continue;
            const Unpacked u = unpack(p.bytes, static_cast<int32_t>(row.size()));
            ASSERT_EQ(u.st, vqcStatusRowOverrun);  // the stream ends before the row
            ASSERT_EQ(u.pos, p.count);
            size_t k = 0;
            while (k < row.size() && u.row[k] == row[k]) ++k;
            for (size_t i = k; i < row.size(); ++i) ASSERT_EQ(u.row[i], kFill);
        }
    }
}

// The byte after the row must never change what is written.
TEST(PackBitsEncode, ByteAfterRowIsIgnored) {
    std::mt19937 rng(11);
    for (int iter = 0; iter < 300; ++iter) {
        const Bytes row = runRow(rng, 1 + rng() % 300, 140);
        const auto n = static_cast<int32_t>(row.size());
        Bytes out[2];
        for (int k = 0; k < 2; ++k) {
            const uint8_t after = static_cast<uint8_t>(k == 0 ? row.back() : row.back() ^ 1);
            const auto src = exact(row, 1, after);
            Bytes dst(static_cast<size_t>(2 * n + 2), kFill);
            int32_t count = 0;
            ASSERT_EQ(vqciPackBitsRow_TIFF_8u_C1(src.get(), n, dst.data(), &count, 2 * n + 2), vqcStatusOk);
            out[k].assign(dst.begin(), dst.begin() + count);
        }
        ASSERT_EQ(out[0], out[1]);
    }
}

// Single byte, pair, pair: the second pair is a run before any literal, so
// the next single byte needs a header of its own every time.
TEST(PackBitsEncode, WorstRowsCostSixForFive) {
    Bytes row;
    for (int k = 0; k < 40; ++k) {
        const auto v = static_cast<uint8_t>(3 * k);
        row.insert(row.end(), {v, static_cast<uint8_t>(v + 1), static_cast<uint8_t>(v + 1), static_cast<uint8_t>(v + 2),
                               static_cast<uint8_t>(v + 2)});
    }
    EXPECT_EQ(packOk(row).size(), 240u);
    EXPECT_EQ(pack(row, 239).st, vqcStatusRowOverrun);
}

TEST(PackBitsEncode, RoundTripAndSizeBound) {
    std::mt19937 rng(3);
    for (int iter = 0; iter < 400; ++iter) {
        const size_t n = 1 + rng() % 700;
        const Bytes row = iter % 4 == 0 ? vqcjtest::randomBytes(n, static_cast<uint32_t>(iter)) : runRow(rng, n, 300);
        const Bytes packed = packOk(row);
        ASSERT_LE(packed.size(), static_cast<size_t>(tiffplane::packedBound(static_cast<int32_t>(n))));
        const Unpacked u = unpack(packed, static_cast<int32_t>(n));
        ASSERT_EQ(u.st, vqcStatusOk);
        ASSERT_EQ(u.pos, static_cast<int32_t>(packed.size()));
        ASSERT_EQ(u.row, row);
    }
}

// The word-at-a-time scans against their byte-at-a-time definitions, at every
// alignment and near every end.
TEST(PackBitsEncode, ScansMatchTheirDefinitions) {
    std::mt19937 rng(5);
    for (int iter = 0; iter < 200; ++iter) {
        const Bytes row = runRow(rng, 1 + rng() % 64, iter % 2 ? 3 : 20);
        const auto n = static_cast<int32_t>(row.size());
        const auto src = exact(row);
        for (int32_t pos = 0; pos < n; ++pos) {
            const uint8_t* p = src.get() + pos;
            const int32_t left = n - pos;
            for (int32_t limit = 1; limit <= left + 1; ++limit) {
                const int32_t cap = std::min(limit, left);
                int32_t run = 1;
                while (run < cap && p[run] == p[0]) ++run;
                ASSERT_EQ(vqcj::ownRunLength(p, cap), run);
                int32_t lit = 1;
                while (lit < cap && !(lit + 1 < left && p[lit] == p[lit + 1])) ++lit;
                ASSERT_EQ(vqcj::ownLiteralLength(p, left, limit), lit) << pos << " " << limit;
            }
        }
    }
}

// ---- Decoder ---------------------------------------------------------------

TEST(PackBitsDecode, Packets) {
    // -128 is passed over and fills nothing.
    Unpacked u = unpack({0x80, 0x80, 0xFE, 'v', 0x80}, 3);
    EXPECT_EQ(u.st, vqcStatusOk);
    EXPECT_EQ(u.row, text("vvv"));
    EXPECT_EQ(u.pos, 4);  // stops at the packet that fills the row
    u = unpack({0x80, 0x01, 'a', 'b', 0xFF, 'c'}, 4);
    EXPECT_EQ(u.st, vqcStatusOk);
    EXPECT_EQ(u.row, text("abcc"));
    EXPECT_EQ(u.pos, 6);
}

TEST(PackBitsDecode, Overruns) {
    const Bytes fill(4, kFill);
    const struct {
        Bytes stream;
        int32_t dstLen, pos, endPos;
        Bytes row;
    } cases[] = {
        {{0x03, 'a', 'b', 'c', 'd'}, 2, 0, 1, Bytes(2, kFill)},       // literal longer than the row
        {{0xFD, 'v'}, 3, 0, 1, Bytes(3, kFill)},                      // replicate longer than the row
        {{0x03, 'a', 'b'}, 4, 0, 1, fill},                            // literal past srcLen
        {{0x00, 'a', 0x02, 'b'}, 4, 0, 3, {'a', kFill, kFill, kFill}},  // earlier packets stay
        {{0x00, 'a'}, 4, 0, 2, {'a', kFill, kFill, kFill}},           // stream ends first
        {{0x00, 'a'}, 4, 2, 2, fill},                                 // nothing left on entry
        {{0x00, 'a'}, 4, 7, 7, fill},                                 // position past the end
        {{0x80}, 4, 0, 1, fill},                                      // only a no-op
    };
    for (const auto& c : cases) {
        const Unpacked u = unpack(c.stream, c.dstLen, c.pos);
        EXPECT_EQ(u.st, vqcStatusRowOverrun);
        EXPECT_EQ(u.pos, c.endPos);
        EXPECT_EQ(u.row, c.row);
    }
}

// A replicate header on the last byte of the limit passes, and its value is
// the byte at srcLen.
TEST(PackBitsDecode, ReplicateHeaderOnLastByte) {
    const Unpacked u = unpack({0x00, 'a', 0xFE}, 4, 0, 1, 'z');
    EXPECT_EQ(u.st, vqcStatusOk);
    EXPECT_EQ(u.row, text("azzz"));
    EXPECT_EQ(u.pos, 4);
}

TEST(PackBitsDecode, WalksRowByRow) {
    std::mt19937 rng(13);
    const int32_t width = 97, height = 30;
    std::vector<Bytes> rows;
    Bytes stream(static_cast<size_t>(height * (width + 1)));
    int32_t count = 0;
    for (int y = 0; y < height; ++y) {
        rows.push_back(runRow(rng, width, 60));
        ASSERT_EQ(vqciPackBitsRow_TIFF_8u_C1(rows.back().data(), width, stream.data(), &count,
                                              static_cast<int32_t>(stream.size())),
                  vqcStatusOk);
    }
    stream.resize(static_cast<size_t>(count));
    const auto src = exact(stream);
    int32_t pos = 0;
    for (int y = 0; y < height; ++y) {
        Bytes row(width);
        ASSERT_EQ(vqciUnpackBitsRow_TIFF_8u_C1(src.get(), &pos, count, row.data(), width), vqcStatusOk);
        ASSERT_EQ(row, rows[static_cast<size_t>(y)]);
    }
    EXPECT_EQ(pos, count);
}

// Random streams and truncated valid ones: never a write past dstLen, never a
// read past srcLen except the byte at srcLen behind a final replicate header
// (the source block has that byte only then), and a failed packet leaves
// nothing of itself in the row.
TEST(PackBitsDecode, CorruptAndTruncatedStreams) {
    std::mt19937 rng(17);
    // `after` is the byte at srcLen, present only behind a possible header.
    const auto check = [](const Bytes& stream, int32_t dstLen, uint8_t after, const Bytes* row) {
        const bool lastIsReplicate = stream.back() >= 0x81;
        const Unpacked u = unpack(stream, dstLen, 0, lastIsReplicate ? 1 : 0, after);
        ASSERT_TRUE(u.st == vqcStatusOk || u.st == vqcStatusRowOverrun);
        ASSERT_GE(u.pos, 1);
        ASSERT_LE(u.pos, static_cast<int32_t>(stream.size()) + (lastIsReplicate ? 1 : 0));
        if (!row) return;
        size_t k = 0;
        while (k < row->size() && u.row[k] == (*row)[k]) ++k;
        if (u.st == vqcStatusOk) {
            ASSERT_EQ(k, row->size());
        }
        for (size_t i = k; i < row->size(); ++i) ASSERT_EQ(u.row[i], kFill);
    };
    for (int iter = 0; iter < 2000; ++iter) {
        const Bytes stream = vqcjtest::randomBytes(1 + rng() % 80, static_cast<uint32_t>(iter));
        check(stream, 1 + static_cast<int32_t>(rng() % 300), 'z', nullptr);
    }
    for (int iter = 0; iter < 60; ++iter) {
        const Bytes row = runRow(rng, 1 + rng() % 300, 200);
        const Bytes packed = packOk(row);
        for (size_t cut = 1; cut <= packed.size(); ++cut)
            check(Bytes(packed.begin(), packed.begin() + static_cast<ptrdiff_t>(cut)),
                  static_cast<int32_t>(row.size()), cut < packed.size() ? packed[cut] : 'z', &row);
    }
}

// ---- Argument checks -------------------------------------------------------

TEST(PackBitsChecks, Order) {
    uint8_t src[4] = {1, 2, 3, 4}, dst[8] = {};
    int32_t count = 0;
    const struct {
        const uint8_t* s;
        uint8_t* d;
        int32_t* c;
        int32_t len, max;
        VqcStatus want;
    } enc[] = {
        {nullptr, nullptr, nullptr, 0, 0, vqcStatusNullPtr}, {src, nullptr, nullptr, 0, 0, vqcStatusNullPtr},
        {src, dst, nullptr, 0, 0, vqcStatusNullPtr},         {src, dst, &count, 0, 0, vqcStatusBadSize},
        {src, dst, &count, -1, 8, vqcStatusBadSize},         {src, dst, &count, 4, 0, vqcStatusBadSize},
        {nullptr, dst, &count, 4, 8, vqcStatusNullPtr},
    };
    for (const auto& c : enc) {
        EXPECT_EQ(vqciPackBitsRow_TIFF_8u_C1(c.s, c.len, c.d, c.c, c.max), c.want);
        EXPECT_EQ(count, 0);
        EXPECT_EQ(dst[0], 0);
    }
    int32_t pos = 0;
    const struct {
        const uint8_t* s;
        int32_t* p;
        int32_t len;
        uint8_t* d;
        int32_t dlen;
        VqcStatus want;
    } dec[] = {
        {nullptr, nullptr, 0, nullptr, 0, vqcStatusNullPtr}, {src, nullptr, 0, nullptr, 0, vqcStatusNullPtr},
        {src, &pos, 0, nullptr, 0, vqcStatusNullPtr},         {src, &pos, 0, dst, 0, vqcStatusBadSize},
        {src, &pos, 4, dst, 0, vqcStatusBadSize},             {src, &pos, -3, dst, 4, vqcStatusBadSize},
    };
    for (const auto& c : dec) {
        EXPECT_EQ(vqciUnpackBitsRow_TIFF_8u_C1(c.s, c.p, c.len, c.d, c.dlen), c.want);
        EXPECT_EQ(pos, 0);
        EXPECT_EQ(dst[0], 0);
    }
}

}  // namespace
