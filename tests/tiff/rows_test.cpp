// TIFF rows: PackBits rows and streams worked by hand with the packet, fold
// and destination limits, bounded fuzz with guarded buffers (run it under
// the sanitizers too), join and split, and the argument checks of all four
// exports.
#include <gtest/gtest.h>
#include <vqcj.h>

#include <algorithm>
#include <random>
#include <string>
#include <tuple>

#include "support/simd.h"
#include "support/testutil.h"

using namespace std::string_literals;
using Bytes = std::vector<uint8_t>;
constexpr VqcStatus kOk = vqcStatusOk, kOver = vqcStatusRowOverrun, kNull = vqcStatusNullPtr;
constexpr uint8_t kFill = '.';  // what a call must leave alone

static Bytes bytes(const std::string& s) { return Bytes(s.begin(), s.end()); }
static std::string ramp(int first, int last) {  // no two neighbours equal
    std::string s;
    while (first < last) s += static_cast<char>(first++);
    return s;
}

// The status, the count or position after the call, and the encoder's
// pDst[0, count) or the decoder's whole row.
struct Out { VqcStatus st; int32_t pos; Bytes bytes; };

// Runs the encoder (limit is dstLenMax) or the decoder (limit is dstLen) on
// a copy of `in` in a block of exactly its size (libstdc++ allocates no
// more), so that the sanitizer sees a read past it: our encoder reads no
// byte after the row. The one exception: a last byte that may be a replicate
// header, whose value the decoder takes from srcLen, gets `after` behind it. The destination has 64 bytes of guard
// fill after `limit`, and nothing after the count may change.
static Out run(bool encode, const Bytes& in, int32_t limit, uint8_t after = 'z') {
    Bytes src(in.size() + (!encode && in.back() > 0x80), after), dst(static_cast<size_t>(limit) + 64, kFill);
    std::copy(in.begin(), in.end(), src.begin());
    int32_t n = 0;
    const VqcStatus st = encode ? vqciPackBitsRow_TIFF_8u_C1(src.data(), int32_t(in.size()), dst.data(), &n, limit)
                                : vqciUnpackBitsRow_TIFF_8u_C1(src.data(), &n, int32_t(in.size()), dst.data(), limit);
    const auto end = dst.begin() + (encode ? std::clamp(n, 0, limit) : limit);
    EXPECT_EQ(std::count(end, dst.end(), kFill), dst.end() - end) << "write past the count or the row";
    return {st, n, Bytes(dst.begin(), end)};
}
static Out pack(const Bytes& row, int32_t limit) { return run(true, row, limit); }
static Out unpack(const Bytes& s, int32_t dstLen, uint8_t after = 'z') { return run(false, s, dstLen, after); }

// Each row packs to these bytes into a limit of exactly their size; one byte
// less is refused with the count at the end of the last whole packet
// (`less`): a failed fold leaves the pair as it was. Each stream decodes
// with that status, position and row; -128 fills nothing, the decoder stops
// at the packet that fills the row, and a packet past srcLen or the row is
// refused after its header and writes nothing ('.'). A replicate header on
// the last byte takes its value from srcLen ('z').
TEST(PackBits, WorkedByHand) {
    const std::string r121 = ramp(0, 121), r125 = ramp(0, 125), r126 = ramp(0, 126);
    const std::tuple<std::string, std::string, int32_t> rows[] = {
        {"P", "\x00P"s, 0}, {"PQQR", "\x03PQQR", 4}, {"PQQ", "\x00P\xFFQ"s, 2}, {"QQR", "\xFFQ\x00R"s, 2},
        {"PQQRRS", "\x00P\xFFQ\xFFR\x00S"s, 6}, {"PQQRSST", "\x06PQQRSST", 7},
        {"PQQQR", "\x00P\xFEQ\x00R"s, 4},  // only a pair folds
        {std::string(129, 'v'), "\x81v\x00v"s, 2}, {std::string(300, 'v'), "\x81v\x81v\xD5v", 4},
        {ramp(0, 129), "\x7F"s + ramp(0, 128) + "\x00\x80"s, 129},
        // Folds: header 124 reaches 128 with one new byte, 125 does not fold,
        // 120 takes 125 - 120 new bytes and the rest opens a literal.
        {r125 + "QQRS", "\x7F"s + r125 + "QQR\x00S"s, 129}, {r126 + "QQR", "\x7D"s + r126 + "\xFFQ\x00R"s, 129},
        {r121 + "QQ" + ramp(200, 210), "\x7F"s + r121 + "QQ" + ramp(200, 205) + "\x04" + ramp(205, 210), 129},
    };
    for (const auto& [row, want, less] : rows) {
        const Out p = pack(bytes(row), static_cast<int32_t>(want.size())), q = pack(bytes(row), p.pos - 1);
        EXPECT_TRUE(p.st == kOk && p.bytes == bytes(want) && q.st == kOver && q.pos == less) << row.size();
    }
    const std::tuple<std::string, int32_t, VqcStatus, int32_t, std::string> streams[] = {
        {"\x80\x80\xFEv\x80", 3, kOk, 4, "vvv"}, {"\x80\x01gh\xFFi", 4, kOk, 6, "ghii"}, {"\x80", 4, kOver, 1, "...."},
        {"\x00g\xFE"s, 4, kOk, 4, "gzzz"}, {"\x03ghij", 2, kOver, 1, ".."}, {"\xFDv", 3, kOver, 1, "..."},
        {"\x03gh", 4, kOver, 1, "...."}, {"\x00g\x02h"s, 4, kOver, 3, "g..."}, {"\x00g"s, 4, kOver, 2, "g..."}};
    for (const auto& [stream, dstLen, st, pos, row] : streams) {
        const Out u = unpack(bytes(stream), dstLen);
        EXPECT_TRUE(u.st == st && u.pos == pos && u.bytes == bytes(row)) << row << " " << u.pos;
    }
}

// Random rows, from noise to long runs: the whole stream decodes to the row,
// and every cut of it and every smaller limit to a prefix of the row and
// fill. The rows as streams end in a status and a position in bounds.
TEST(PackBits, FuzzCutsAndLimits) {
    std::mt19937 rng(7);
    for (uint32_t iter = 0; iter < 120; ++iter) {
        Bytes row = vqcjtest::randomBytes(1 + rng() % 400, iter);
        for (size_t i = 1; i < row.size(); ++i) row[i] = rng() % 120 < iter ? row[i - 1] : row[i];
        const auto n = static_cast<int32_t>(row.size());
        const Out full = pack(row, n + (n + 4) / 5), self = unpack(row, 1 + static_cast<int32_t>(rng() % 300));
        ASSERT_TRUE(full.st == kOk && unpack(full.bytes, n).bytes == row);
        ASSERT_TRUE((self.st == kOk || self.st == kOver) && self.pos >= 1 && self.pos <= n + 1);
        const auto prefix = [&row](const Bytes& got) {
            const auto from = std::mismatch(got.begin(), got.end(), row.begin()).first;
            return std::count(from, got.end(), kFill) == got.end() - from;
        };
        for (int32_t cut = 1; cut < full.pos; ++cut) {
            const Out u = unpack(Bytes(full.bytes.begin(), full.bytes.begin() + cut), n, full.bytes[size_t(cut)]);
            const Out p = pack(row, cut);
            ASSERT_TRUE(u.st == kOk ? u.bytes == row : u.st == kOver && prefix(u.bytes));
            ASSERT_TRUE(p.st == kOver && p.pos <= cut && (p.pos == 0 || prefix(unpack(p.bytes, n).bytes)));
        }
    }
}

// Plane 0 holds the high bytes of the little-endian samples; 67 of them
// take a vector body and a tail.
TEST(TiffRows, SplitAndJoin) {
    const Bytes row = vqcjtest::randomBytes(134, 67);
    Bytes hi(68, kFill), lo(68, kFill), joined(135, kFill);
    Vqc8u* planes[2] = {hi.data(), lo.data()};
    ASSERT_EQ(vqciSplitRow_TIFF_16u8u_C1(row.data(), planes, 67), kOk);
    ASSERT_EQ(vqciJoinRow_TIFF_8u16u_C1(planes, joined.data(), 67), kOk);
    for (size_t i = 0; i < 68; ++i)
        EXPECT_TRUE(hi[i] == (i < 67 ? row[2 * i + 1] : kFill) && lo[i] == (i < 67 ? row[2 * i] : kFill)) << i;
    EXPECT_TRUE(std::equal(row.begin(), row.end(), joined.begin()) && joined[134] == kFill);
}

// Pointers (-8) before lengths (-6, or -14 for join and split, whose plane
// pointers inside the array are never examined). Each row holds for members
// m and m + 1 (pack and unpack, join and split); bit k of `nulls` nulls the
// k-th pointer argument, bit 2 of join and split the planes instead.
TEST(TiffRows, CheckOrder) {
    uint8_t b[8] = {};
    int32_t n = 0;
    Vqc8u *planes[2] = {b, b}, *none[2] = {};
    const auto call = [&](int m, unsigned nulls, int32_t len, int32_t len2) {
        const auto p = [nulls](int k, auto* ptr) { return (nulls >> k & 1) ? nullptr : ptr; };
        return m == 0   ? vqciPackBitsRow_TIFF_8u_C1(p(0, b), len, p(1, b), p(2, &n), len2)
               : m == 1 ? vqciUnpackBitsRow_TIFF_8u_C1(p(0, b), p(1, &n), len, p(2, b), len2)
               : m == 2 ? vqciJoinRow_TIFF_8u16u_C1(p(0, nulls & 4 ? none : planes), p(1, b), len)
                        : vqciSplitRow_TIFF_16u8u_C1(p(0, b), p(1, nulls & 4 ? none : planes), len);
    };
    const VqcStatus kSize = vqcStatusBadSize, kStep = vqcStatusBadStep;
    const std::tuple<int, unsigned, int32_t, int32_t, VqcStatus> rows[] = {
        {0, 1, 0, 0, kNull}, {0, 2, 0, 0, kNull}, {0, 4, 0, 0, kNull}, {0, 0, 0, 8, kSize}, {0, 0, 4, 0, kSize},
        {0, 0, -1, 8, kSize}, {2, 1, 0, 0, kNull}, {2, 2, 0, 0, kNull}, {2, 4, 0, 0, kStep}, {2, 0, -5, 0, kStep}};
    for (const auto& [m, nulls, len, len2, want] : rows)
        for (const int member : {m, m + 1}) EXPECT_EQ(call(member, nulls, len, len2), want) << member << " " << nulls;
}

// Every SIMD target against the baseline: lengths that cover each vector
// width with every tail, and one long row.
TEST(TiffRows, SplitAndJoinEveryTarget) {
    for (int len = 1; len <= 200; len += len < 70 ? 1 : 61) {
        const Bytes row = vqcjtest::randomBytes(2 * size_t(len), len);
        vqcjtest::expectSameOnEveryTarget(
            [&] {
                Bytes out(4 * size_t(len) + 2, kFill);
                Vqc8u* planes[2] = {out.data(), out.data() + len + 1};
                EXPECT_EQ(vqciSplitRow_TIFF_16u8u_C1(row.data(), planes, len), kOk);
                const Vqc8u* in[2] = {row.data(), row.data() + len};
                EXPECT_EQ(vqciJoinRow_TIFF_8u16u_C1(in, out.data() + 2 * len + 2, len), kOk);
                return out;
            },
            "length " + std::to_string(len));
    }
}
