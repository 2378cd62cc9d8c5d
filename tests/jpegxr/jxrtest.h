// Helpers of the JPEG XR coding tests: a ready state and a stream buffer
// with the caller's three stream variables.
#pragma once

#include <vqcj.h>

#include <cstring>
#include <string>
#include <vector>

namespace jxrtest {

// Init, every scan's counters reset, one scan in force.
inline VqciVLCState freshState(uint32_t scan = 0) {
    VqciVLCState s;
    std::memset(&s, 0, sizeof s);
    vqciVLCInit_JPEGXR(&s);
    for (int t = 0; t < 3; ++t) vqciVLCScanReset_JPEGXR(&s, t);
    vqciVLCScanSet_JPEGXR(&s, scan);
    return s;
}

struct Stream {
    std::vector<uint8_t> mem;
    Vqc8u* p;
    uint32_t buf = 0, n = 0;

    explicit Stream(size_t size = 256) : mem(size), p(mem.data()) {}
    Stream(Stream&&) = default;  // the buffer moves with p
    Stream(const Stream&) = delete;

    // Bits written so far, the pending ones included.
    std::string bits() const {
        std::string s;
        for (const uint8_t* q = mem.data(); q < p; ++q)
            for (int b = 7; b >= 0; --b) s += static_cast<char>('0' + (*q >> b & 1));
        for (uint32_t b = 0; b < n; ++b) s += static_cast<char>('0' + (buf >> (31 - b) & 1));
        return s;
    }
    // A stream to read, holding the given bits.
    static Stream of(const std::string& bits) {
        Stream s;
        for (size_t i = 0; i < bits.size(); ++i) s.mem[i / 8] |= static_cast<uint8_t>((bits[i] - '0') << (7 - i % 8));
        return s;
    }
    // Pending bits out, then back to the start for reading.
    void rewind() {
        if (n) p[0] = static_cast<uint8_t>(buf >> 24), p[1] = static_cast<uint8_t>(buf >> 16);
        p = mem.data(), buf = 0, n = 0;
    }
    size_t used() const { return static_cast<size_t>(p - mem.data()) * 8 - n; }
};

}  // namespace jxrtest
