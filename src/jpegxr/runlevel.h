// The run-level stream of the block and DC coders: first symbol, later
// symbols, levels with their escape, and the three run classes. One encoder
// and one decoder serve every shape; a shape only names its contexts and its
// first position.
#pragma once

#include "frame/wrap.h"
#include "jpegxr/bitio.h"
#include "jpegxr/vlcstate.h"

#include <bit>
#include <cstdint>

namespace vqcj::jxr {

// Run classes: 0 for mx 11 to 15, 1 for 7 to 10, 2 for 5 and 6.
constexpr uint8_t kRunBase[3][5] = {{1, 2, 3, 5, 7}, {1, 2, 3, 5, 7}, {1, 2, 3, 4, 5}};
constexpr uint8_t kRunExtra[3][5] = {{0, 0, 1, 1, 3}, {0, 0, 1, 1, 2}, {0, 0, 0, 0, 1}};
// Reverse lookup, run 0 to 15 (0 only reached by forged pairs).
constexpr uint8_t kRunSymbol[3][16] = {{0, 0, 1, 2, 2, 3, 3, 4, 4, 4, 4, 4, 4, 4, 4, 4},
                                       {0, 0, 1, 2, 2, 3, 3, 4, 4, 4, 4, 4, 4, 4, 4, 4},
                                       {0, 0, 1, 2, 3, 4, 4, 4, 4, 4, 4, 4, 4, 4, 4, 4}};
constexpr int runClass(int mx) { return mx >= 11 ? 0 : mx >= 7 ? 1 : 2; }

// Fixed code of the symbol at position 14: 0, 110, 10, 111.
constexpr uint8_t kPos14Code[4] = {0, 6, 2, 7};
constexpr uint8_t kPos14Len[4] = {1, 3, 2, 3};

inline uint32_t absU(int32_t v) { return v < 0 ? 0u - static_cast<uint32_t>(v) : static_cast<uint32_t>(v); }

// ---- Encoding -------------------------------------------------------------

struct PairEncoder {
    VqciVLCState* s;
    BitPacker& bp;

    void symbol(int ctx, uint32_t sym) {
        const int32_t* e = codeTable(s->encodeTable[ctx]).enc;
        bp.put(static_cast<uint32_t>(e[1 + 2 * sym]), static_cast<uint32_t>(e[2 + 2 * sym]));
    }
    void adapt(int ctx, uint32_t sym, bool both) {
        s->discriminant1[ctx] = addW(s->discriminant1[ctx], deltaRow(s->delta1[ctx])[sym]);
        if (both) s->discriminant2[ctx] = addW(s->discriminant2[ctx], deltaRow(s->delta2[ctx])[sym]);
    }
    void level(int ctx, uint32_t a) {
        const uint32_t L = a - 2;
        uint32_t sym, nx = 0, base = 0;
        if (L < 2) {
            sym = L;
        } else if (L < 4) {
            sym = 2, nx = 1, base = 2;
        } else if (L < 16) {
            sym = 2 + (L >> 2), nx = 2, base = L & ~3u;
        } else {
            sym = 6;
        }
        symbol(ctx, sym);
        adapt(ctx, sym, false);
        if (sym < 6) {
            bp.put(L - base, nx);
            return;
        }
        const uint32_t n = 31 - static_cast<uint32_t>(std::countl_zero(L));
        if (n < 19) {
            bp.put(n - 4, 4);
        } else if (n < 22) {
            bp.put(15, 4);
            bp.put(n - 19, 2);
        } else {
            bp.put(15, 4);
            bp.put(3, 2);
            bp.put((n - 22) & 7, 3);
        }
        bp.putLong(L & ((1u << n) - 1), n);
    }
    void classRun(int cls, int32_t run) {
        const uint32_t r = static_cast<uint32_t>(run);
        const uint32_t sym = kRunSymbol[cls][r < 15 ? r : 15];
        symbol(0, sym);
        const uint32_t nx = kRunExtra[cls][sym];
        bp.put((r + 1) & ((1u << nx) - 1), nx);
    }
    void laterRun(int32_t mx, int32_t run) {
        if (mx <= 1) return;
        if (mx <= 4) {
            const int32_t r = run < 1 ? 1 : run > mx ? mx : run;
            if (r < mx)
                bp.put(1, static_cast<uint32_t>(r));
            else
                bp.put(0, static_cast<uint32_t>(mx - 1));
            return;
        }
        classRun(runClass(mx), run);
    }

    // rl holds k (run, level) pairs; at least the first is coded.
    void pairs(const int32_t* rl, int32_t k, const Shape& sh) {
        const int firstClass = runClass(15 - sh.firstPos);
        int32_t run = rl[0];
        uint32_t a = absU(rl[1]);
        uint32_t iSL = a > 1;
        uint32_t next = k > 1 ? (rl[2] == 0 ? 1 : 2) : 0;
        const uint32_t iSR = run == 0;
        const uint32_t sym = iSR + 2 * iSL + 4 * next;
        uint32_t cont = iSR & (next == 1);
        adapt(sh.firstCtx, sym, true);
        symbol(sh.firstCtx, sym);
        bp.put(rl[1] < 0, 1);
        if (iSL) level(sh.levelCtx + static_cast<int>(cont), a);
        if (!iSR) classRun(firstClass, run);
        int64_t pos = sh.firstPos + static_cast<int64_t>(run) + 1;
        for (int32_t i = 1; next != 0; ++i) {
            if (next == 2) {
                run = rl[2 * i];
                laterRun(static_cast<int32_t>(15 - pos), run);
                pos += run;
            }
            const int32_t lev = rl[2 * i + 1];
            a = absU(lev);
            iSL = a > 1;
            uint32_t nxt = i + 1 < k ? (rl[2 * i + 2] == 0 ? 1 : 2) : 0;
            if (pos < 14) {
                const int ctx = sh.laterCtx + static_cast<int>(cont);
                const uint32_t ls = iSL + 2 * nxt;
                adapt(ctx, ls, true);
                symbol(ctx, ls);
                bp.put(lev < 0, 1);
            } else if (pos == 14) {
                const uint32_t ls = (iSL + 2 * nxt) & 3;
                bp.put(kPos14Code[ls], kPos14Len[ls]);
                bp.put(lev < 0, 1);
            } else {
                bp.put(iSL, 1);
                bp.put(lev < 0, 1);
                nxt = 0;
            }
            cont &= nxt == 1;
            if (iSL) level(sh.levelCtx + static_cast<int>(cont), a);
            ++pos;
            next = nxt;
        }
    }
};

// ---- Decoding -------------------------------------------------------------

struct PairDecoder {
    VqciVLCState* s;
    BitReader& br;

    uint32_t symbol(int ctx) {
        const uint32_t v = codeTable(s->decodeTable[ctx]).dec[br.peek(8)];
        br.skip(v & 15);
        return v >> 4;
    }
    void adapt(int ctx, uint32_t sym, bool both) {
        s->discriminant1[ctx] = addW(s->discriminant1[ctx], deltaRow(s->delta1[ctx])[sym]);
        if (both) s->discriminant2[ctx] = addW(s->discriminant2[ctx], deltaRow(s->delta2[ctx])[sym]);
    }
    // |level|, which is at most 2^30 + 1.
    uint32_t level(int ctx) {
        const uint32_t sym = symbol(ctx);
        adapt(ctx, sym, false);
        uint32_t L;
        if (sym < 2) {
            L = sym;
        } else if (sym == 2) {
            L = 2 + br.get(1);
        } else if (sym < 6) {
            L = ((sym - 2) << 2) + br.get(2);
        } else {
            uint32_t n = br.get(4);
            if (n < 15) {
                n += 4;
            } else {
                n = br.get(2);
                n = n < 3 ? 19 + n : 22 + br.get(3);
            }
            L = (1u << n) | br.getLong(n);
        }
        return L + 2;
    }
    int32_t classRun(int cls) {
        const uint32_t sym = symbol(0) % 5;
        return kRunBase[cls][sym] + static_cast<int32_t>(br.get(kRunExtra[cls][sym]));
    }
    // mx of 1 or less, which no valid stream reaches past its end, reads
    // nothing and gives 1.
    int32_t laterRun(int32_t mx) {
        if (mx <= 1) return 1;
        if (mx <= 4) {
            int32_t r = 1;
            while (r < mx && br.get(1) == 0) ++r;
            return r;
        }
        return classRun(runClass(mx));
    }

    // Calls emit(run, pos, negative, |level|) per coefficient and returns the
    // number of pairs; with kStopPast, a position past 15 ends the walk and
    // the result is -1.
    template <bool kStopPast, class Emit>
    int32_t pairs(const Shape& sh, Emit&& emit) {
        const int firstClass = runClass(15 - sh.firstPos);
        const uint32_t sym = symbol(sh.firstCtx);
        adapt(sh.firstCtx, sym, true);
        const uint32_t iSR = sym & 1;
        uint32_t next = sym >> 2;
        uint32_t cont = iSR & (next == 1);
        bool neg = br.get(1);
        uint32_t a = (sym & 2) ? level(sh.levelCtx + static_cast<int>(cont)) : 1;
        int32_t run = iSR ? 0 : classRun(firstClass);
        int32_t pos = sh.firstPos + run;
        emit(run, pos, neg, a);
        int32_t count = 1;
        ++pos;
        while (next != 0) {
            run = 0;
            if (next == 2) {
                run = laterRun(15 - pos);
                pos += run;
                if (kStopPast && pos >= 16) return -1;
            }
            uint32_t iSL, nxt;
            if (pos < 14) {
                const int ctx = sh.laterCtx + static_cast<int>(cont);
                const uint32_t ls = symbol(ctx);
                adapt(ctx, ls, true);
                iSL = ls & 1, nxt = ls >> 1;
            } else if (pos == 14) {
                uint32_t ls = 0;
                if (br.get(1)) ls = br.get(1) ? 1 + 2 * br.get(1) : 2;
                iSL = ls & 1, nxt = ls >> 1;
            } else {
                iSL = br.get(1), nxt = 0;
            }
            neg = br.get(1);
            cont &= nxt == 1;
            a = iSL ? level(sh.levelCtx + static_cast<int>(cont)) : 1;
            emit(run, pos, neg, a);
            ++count;
            ++pos;
            next = nxt;
        }
        return count;
    }
};

}  // namespace vqcj::jxr
