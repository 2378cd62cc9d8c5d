// MQ arithmetic encoder and raw bit packer writing into a small byte queue.
// The encoder's last byte B stays out of the queue until the next byte-out,
// because a carry may still change it; bytes in the queue are final.
#pragma once

#include "t1common.h"

#include <bit>
#include <cstdint>

namespace vqcj::t1 {

constexpr uint32_t kQueueSize = 64;  // power of two
constexpr uint32_t kQueueMask = kQueueSize - 1;

struct MqEnc {
    uint32_t A, C, B;
    int32_t CT;
    int32_t first;  // no byte begun yet: B is a placeholder and is not sent
    uint8_t* q;
    uint32_t qw;

    void commit(uint32_t b) { q[qw++ & kQueueMask] = static_cast<uint8_t>(b); }

    void byteOut() {
        if (!first) {
            if (B == 0xFF) {
                commit(B);
                B = C >> 20;
                C &= 0xFFFFF;
                CT = 7;
                return;
            }
            if (C >= 0x8000000) {
                ++B;  // the carry; a placeholder never receives one
                if (B == 0xFF) {
                    C &= 0x7FFFFFF;
                    commit(B);
                    B = C >> 20;
                    C &= 0xFFFFF;
                    CT = 7;
                    return;
                }
            }
            commit(B);
        }
        first = 0;
        B = C >> 19;
        C &= 0x7FFFF;
        CT = 8;
    }

    void renorm() {
        // Shift as far as the bit counter allows at once; no shift at all
        // when A is already normalised.
        int n = std::countl_zero(A) - 16;
        if (n >= CT) [[unlikely]] {
            do {
                A <<= CT;
                C <<= CT;
                n -= CT;
                byteOut();
            } while (n >= CT);
        }
        A <<= n;
        C <<= n;
        CT -= n;
    }

    // Branch-free but for the byte-out: with x the conditional exchange
    // (the MPS share smaller than the LPS share), C moves up by Qe exactly
    // when the coded symbol takes the upper share, and A keeps its value
    // then, else becomes Qe. The state changes on an LPS, or on an MPS that
    // renormalises; the shift count of the renormalisation is zero when A
    // needs none.
    void encode(uint8_t* ctx, uint32_t d) {
        const uint32_t s = *ctx;
        const MqStep e = kMqSteps[s];
        const uint32_t qe = e.qe;
        const uint32_t a = A - qe;
        const uint32_t lps = d ^ (s & 1);
        const uint32_t upper = (a < qe) ^ lps ^ 1;
        C += qe & (0u - upper);
        A = upper ? a : qe;
        const uint32_t mpsNext = (A & 0x8000) ? s : e.nmps;
        *ctx = static_cast<uint8_t>(lps ? e.nlps : mpsNext);
        renorm();
    }

    // Ends a codeword segment; every byte of it is then in the queue and the
    // register's remainder is dropped. The decoder reads ones past the end.
    void flush(int32_t type) {
        if (type == 1) {
            // The standard's flush: as many set low bits as the interval allows.
            const uint32_t top = C + A;
            C |= 0xFFFF;
            if (C >= top) C -= 0x8000;
            C <<= CT;
            byteOut();
            C <<= CT;
            byteOut();
            if (B != 0xFF && !first) commit(B);
        } else if (type == 2) {
            // Short flush: the bits down to the interval's width, then B.
            int32_t k = 12 - CT;
            while (k > 0) {
                C <<= CT;
                CT = 0;
                byteOut();
                k -= CT;
            }
            if (B != 0xFF) byteOut();
        } else {
            const uint32_t top = C + A;
            C |= 0xFFFF;
            if (C >= top) C -= 0x8000;
            C <<= CT;
            byteOut();
            C |= 0x7FFF;
            C <<= CT;
            byteOut();
            C |= 0x7FFF;
            if (B != 0xFF) {
                C <<= CT;
                byteOut();
            }
        }
    }
};

struct RawEnc {
    uint32_t byte;
    int32_t pos;  // next bit to fill; 6 in the byte after a 0xFF
    int32_t afterFF;
    uint8_t* q;
    uint32_t qw;

    bool partial() const { return pos < (afterFF ? 6 : 7); }
    void put(uint32_t bit) {
        byte |= bit << pos;
        if (--pos < 0) {
            q[qw++ & kQueueMask] = static_cast<uint8_t>(byte);
            afterFF = byte == 0xFF;
            pos = afterFF ? 6 : 7;
            byte = 0;
        }
    }
    // Pads the last byte with 0, 1, 0, ... so it can never be 0xFF.
    void flush() {
        uint32_t pad = 0;
        while (partial()) {
            put(pad);
            pad ^= 1;
        }
    }
};

}  // namespace vqcj::t1
