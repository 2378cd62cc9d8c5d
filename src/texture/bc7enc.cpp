// BC7 encoder for one block in a named mode. Within the mode it scores every
// partition cheaply on unquantised principal-axis endpoints, refines the
// best quarter by a logarithmic then a windowed exhaustive search over the
// quantised endpoints, and keeps the block with the least squared error.
// The blocks and the errors it reports are the interface, so the search's
// quirks (only moves of endpoint A stick during the perturbation, the
// window's exclusive upper bound for B) are kept on purpose.
#include <vqcj.h>

#include <cfloat>
#include <cmath>

#include "frame/check.h"
#include "texture/bc7.h"
#include "texture/texture.h"

namespace vqcj {

// The singular value decomposition's Householder vector. The library's one
// writable array: this encoder must not run on two threads at once.
float gSvdHouse[16];

namespace {

using Real = long double;

constexpr Real kSvdEps = 1.1920928955078125e-07L;

Real pythag(Real a, Real b) {
    const Real x = std::fabs(a), y = std::fabs(b);
    if (x > y) return x * std::sqrt(1 + (y / x) * (y / x));
    return y == 0 ? 0 : y * std::sqrt(1 + (x / y) * (x / y));
}
Real withSign(Real a, Real b) { return b >= 0 ? std::fabs(a) : -std::fabs(a); }

// Singular values w and right singular vectors (rows of vt) of the m x 3
// matrix a: Householder bidiagonalisation, then implicit shifted QR. The
// left vectors are not needed and not formed.
void ownSvd(float a[][3], int m, float w[3], float vt[3][3]) {
    constexpr int n = 3;
    Real rv1[n], ww[n], v[n][n];
    Real g = 0, scale = 0, anorm = 0;
    Real aa[16][n];
    for (int i = 0; i < m; ++i)
        for (int j = 0; j < n; ++j) aa[i][j] = a[i][j];
    int l = 0;
    for (int i = 0; i < n; ++i) {
        l = i + 1;
        rv1[i] = scale * g;
        g = scale = 0;
        Real s = 0;
        if (i < m) {
            for (int k = i; k < m; ++k) scale += std::fabs(aa[k][i]);
            if (scale != 0) {
                // The column's Householder vector, scaled by its sum of
                // magnitudes, lives in the library-wide array.
                for (int k = i; k < m; ++k) {
                    gSvdHouse[k] = float(aa[k][i] / scale);
                    s += Real(gSvdHouse[k]) * gSvdHouse[k];
                }
                const Real f = gSvdHouse[i];
                g = -withSign(std::sqrt(s), f);
                const Real h = f * g - s;
                gSvdHouse[i] = float(f - g);
                for (int j = l; j < n; ++j) {
                    Real t = 0;
                    for (int k = i; k < m; ++k) t += gSvdHouse[k] * aa[k][j];
                    const Real ff = t / h;
                    for (int k = i; k < m; ++k) aa[k][j] += ff * gSvdHouse[k];
                }
            }
        }
        ww[i] = scale * g;
        g = s = scale = 0;
        if (i < m && i != n - 1) {
            for (int k = l; k < n; ++k) scale += std::fabs(aa[i][k]);
            if (scale != 0) {
                for (int k = l; k < n; ++k) {
                    aa[i][k] /= scale;
                    s += aa[i][k] * aa[i][k];
                }
                const Real f = aa[i][l];
                g = -withSign(std::sqrt(s), f);
                const Real h = f * g - s;
                aa[i][l] = f - g;
                for (int k = l; k < n; ++k) rv1[k] = aa[i][k] / h;
                for (int j = l; j < m; ++j) {
                    Real t = 0;
                    for (int k = l; k < n; ++k) t += aa[j][k] * aa[i][k];
                    for (int k = l; k < n; ++k) aa[j][k] += t * rv1[k];
                }
                for (int k = l; k < n; ++k) aa[i][k] *= scale;
            }
        }
        const Real t = std::fabs(ww[i]) + std::fabs(rv1[i]);
        anorm = t > anorm ? t : anorm;
    }
    for (int i = n - 1; i >= 0; --i) {
        if (i < n - 1) {
            if (g != 0) {
                for (int j = l; j < n; ++j) v[j][i] = (aa[i][j] / aa[i][l]) / g;
                for (int j = l; j < n; ++j) {
                    Real s = 0;
                    for (int k = l; k < n; ++k) s += aa[i][k] * v[k][j];
                    for (int k = l; k < n; ++k) v[k][j] += s * v[k][i];
                }
            }
            for (int j = l; j < n; ++j) v[i][j] = v[j][i] = 0;
        }
        v[i][i] = 1;
        g = rv1[i];
        l = i;
    }
    const Real tol = kSvdEps * anorm;
    for (int k = n - 1; k >= 0; --k) {
        for (int its = 1; its <= 30; ++its) {
            bool flag = true;
            int nm = 0;
            for (l = k; l >= 0; --l) {
                nm = l - 1;
                if (l == 0 || std::fabs(rv1[l]) <= tol) {
                    flag = false;
                    break;
                }
                if (std::fabs(ww[nm]) <= tol) break;
            }
            if (flag) {
                Real c = 0, s = 1;
                for (int i = l; i <= k; ++i) {
                    const Real f = s * rv1[i];
                    rv1[i] = c * rv1[i];
                    if (std::fabs(f) <= tol) break;
                    const Real gg = ww[i];
                    Real h = pythag(f, gg);
                    ww[i] = h;
                    h = 1 / h;
                    c = gg * h;
                    s = -f * h;
                }
            }
            Real z = ww[k];
            if (l == k) {
                if (z < 0) {
                    ww[k] = -z;
                    for (int j = 0; j < n; ++j) v[j][k] = -v[j][k];
                }
                break;
            }
            if (its == 30) break;  // accepted as it stands
            Real x = ww[l];
            nm = k - 1;
            Real y = ww[nm];
            Real gg = rv1[nm];
            Real h = rv1[k];
            Real f = ((y - z) * (y + z) + (gg - h) * (gg + h)) / (2 * h * y);
            gg = pythag(f, 1);
            f = ((x - z) * (x + z) + h * ((y / (f + withSign(gg, f))) - h)) / x;
            Real c = 1, s = 1;
            for (int j = l; j <= nm; ++j) {
                const int i = j + 1;
                gg = rv1[i];
                y = ww[i];
                h = s * gg;
                gg = c * gg;
                z = pythag(f, h);
                rv1[j] = z;
                c = f / z;
                s = h / z;
                f = x * c + gg * s;
                gg = gg * c - x * s;
                h = y * s;
                y *= c;
                for (int jj = 0; jj < n; ++jj) {
                    const Real xv = v[jj][j], zv = v[jj][i];
                    v[jj][j] = xv * c + zv * s;
                    v[jj][i] = zv * c - xv * s;
                }
                z = pythag(f, h);
                ww[j] = z;
                if (z != 0) {
                    z = 1 / z;
                    c = f * z;
                    s = h * z;
                }
                f = c * gg + s * y;
                x = c * y - s * gg;
            }
            rv1[l] = 0;
            rv1[k] = f;
            ww[k] = x;
        }
    }
    // Descending singular values, vectors alongside: row 0 is the principal axis.
    int order[n] = {0, 1, 2};
    for (int i = 0; i < n - 1; ++i) {
        int best = i;
        for (int j = i + 1; j < n; ++j)
            if (ww[order[j]] > ww[order[best]]) best = j;
        const int t = order[i];
        order[i] = order[best], order[best] = t;
    }
    for (int i = 0; i < n; ++i) {
        w[i] = float(ww[order[i]]);
        for (int j = 0; j < n; ++j) vt[i][j] = float(v[j][order[i]]);
    }
}

using Endpoints = int[3][2][4];  // [subset][A, B][R, G, B, A]

struct Palette {
    int c[16][4];
    int a[8];
    int nc, na;
};

struct Search {
    const BC7Mode* m;
    int mode, colorBits, alphaBits;
    bool sepAlpha;
    int prec[4], precP[4];
    uint8_t px[16][4];
    int ns;
};

// Least error over a palette scan, which stops at the first rise in error
// since the entries lie on a line, and keeps the lower index on a tie.
template <int From, int To>
inline double scan(const int (*pal)[4], int n, const uint8_t* p, int& at) {
    double best = DBL_MAX;
    at = 0;
    for (int k = 0; k < n && best > 0; ++k) {
        double e = 0;
        for (int c = From; c < To; ++c) {
            const double d = double(p[c] - pal[k][c]);
            e += d * d;
        }
        if (e > best) break;
        if (e < best) best = e, at = k;
    }
    return best;
}

inline double scanAlpha(const int* pal, int n, const uint8_t* p, int& at) {
    double best = DBL_MAX;
    at = 0;
    for (int k = 0; k < n && best > 0; ++k) {
        const double d = double(p[3] - pal[k]);
        const double e = d * d;
        if (e > best) break;
        if (e < best) best = e, at = k;
    }
    return best;
}

inline double texelError(const Search& s, const Palette& pal, const uint8_t* p, int& ci, int& ai) {
    ai = 0;
    if (s.sepAlpha) return scan<0, 3>(pal.c, pal.nc, p, ci) + scanAlpha(pal.a, pal.na, p, ai);
    return scan<0, 4>(pal.c, pal.nc, p, ci);
}

inline int lerp(int a, int b, int w) { return ((64 - w) * a + w * b + 32) >> 6; }

// Palette of one subset from 8-bit endpoints.
void palette8(const Search& s, const int a[4], const int b[4], Palette& pal) {
    const uint8_t* wc = kBC7Weights[s.colorBits];
    pal.nc = 1 << s.colorBits;
    const int chans = s.sepAlpha ? 3 : 4;
    for (int k = 0; k < pal.nc; ++k)
        for (int c = 0; c < 4; ++c) pal.c[k][c] = c < chans ? lerp(a[c], b[c], wc[k]) : 0;
    pal.na = 0;
    if (s.sepAlpha) {
        const uint8_t* wa = kBC7Weights[s.alphaBits];
        pal.na = 1 << s.alphaBits;
        for (int k = 0; k < pal.na; ++k) pal.a[k] = lerp(a[3], b[3], wa[k]);
    }
}

// Palette from quantised endpoints, each widened by its precision with P-bit.
void ownBC7Palette(const Search& s, const int qa[4], const int qb[4], Palette& pal) {
    int a[4], b[4];
    for (int c = 0; c < 4; ++c) {
        const int p = s.precP[c];
        if (p == 0) {
            a[c] = b[c] = 255;
        } else {
            const int xa = (qa[c] << (8 - p)) & 255, xb = (qb[c] << (8 - p)) & 255;
            a[c] = xa | (xa >> p), b[c] = xb | (xb >> p);
        }
    }
    palette8(s, a, b, pal);
}

// Score of a partition on unquantised endpoints, which it also leaves in ep.
double ownBC7RoughError(const Search& s, int part, Endpoints ep) {
    for (int sub = 0; sub < s.ns; ++sub) {
        int members[16] = {}, n = 0;
        for (int i = 0; i < 16; ++i)
            if (ownSubset(s.ns, part, i) == sub) members[n++] = i;
        int* A = ep[sub][0];
        int* B = ep[sub][1];
        if (n <= 2) {
            for (int c = 0; c < 4; ++c) A[c] = s.px[members[0]][c], B[c] = s.px[members[n - 1]][c];
            continue;
        }
        int sum[3] = {0, 0, 0};
        int amin = 255, amax = 0;
        for (int k = 0; k < n; ++k) {
            const uint8_t* p = s.px[members[k]];
            for (int c = 0; c < 3; ++c) sum[c] += p[c];
            amin = p[3] < amin ? p[3] : amin;
            amax = p[3] > amax ? p[3] : amax;
        }
        const float inv = 1.0f / float(n);
        float mean[3], mat[16][3];
        for (int c = 0; c < 3; ++c) mean[c] = float(sum[c]) * inv;
        for (int k = 0; k < n; ++k)
            for (int c = 0; c < 3; ++c) mat[k][c] = float(s.px[members[k]][c]) - mean[c];
        float w[3], vt[3][3];
        ownSvd(mat, n, w, vt);
        float lo = FLT_MAX, hi = -FLT_MAX;
        for (int k = 0; k < n; ++k) {
            float t = mat[k][0] * vt[0][0];
            t += mat[k][1] * vt[0][1];
            t += mat[k][2] * vt[0][2];
            lo = t < lo ? t : lo;
            hi = t > hi ? t : hi;
        }
        for (int c = 0; c < 3; ++c) {
            const float fa = mean[c] + lo * vt[0][c], fb = mean[c] + hi * vt[0][c];
            A[c] = !(fa > 0) ? 0 : !(fa < 255) ? 255 : int(fa);
            B[c] = !(fb > 0) ? 0 : !(fb < 255) ? 255 : int(fb);
        }
        A[3] = amin, B[3] = amax;
    }
    Palette pal[3];
    for (int sub = 0; sub < s.ns; ++sub) palette8(s, ep[sub][0], ep[sub][1], pal[sub]);
    double err = 0;
    for (int i = 0; i < 16; ++i) {
        int ci, ai;
        err += texelError(s, pal[ownSubset(s.ns, part, i)], s.px[i], ci, ai);
    }
    return err;
}

// Error of one subset's texels with the given quantised endpoints; a running
// sum above `bound` gives up and reports the largest value.
double subsetError(const Search& s, int part, int sub, const int qa[4], const int qb[4], double bound) {
    Palette pal;
    ownBC7Palette(s, qa, qb, pal);
    double err = 0;
    for (int i = 0; i < 16; ++i) {
        if (ownSubset(s.ns, part, i) != sub) continue;
        int ci, ai;
        err += texelError(s, pal, s.px[i], ci, ai);
        if (err > bound) return DBL_MAX;
    }
    return err;
}

// Indices and per-subset errors; then each subset whose anchor index has its
// top bit set gets its endpoints exchanged and its indices reversed, so the
// anchor's top bit can be left out of the block.
void ownBC7AssignIndices(const Search& s, int part, Endpoints q, uint8_t ci[16], uint8_t ai[16], double err[3]) {
    Palette pal[3];
    for (int sub = 0; sub < s.ns; ++sub) {
        ownBC7Palette(s, q[sub][0], q[sub][1], pal[sub]);
        err[sub] = 0;
    }
    for (int i = 0; i < 16; ++i) {
        const int sub = ownSubset(s.ns, part, i);
        int c, a;
        err[sub] += texelError(s, pal[sub], s.px[i], c, a);
        ci[i] = uint8_t(c), ai[i] = uint8_t(a);
    }
    const int nc = 1 << s.colorBits, chans = s.sepAlpha ? 3 : 4;
    for (int sub = 0; sub < s.ns; ++sub) {
        if (!(ci[ownAnchor(s.ns, part, sub)] & (nc >> 1))) continue;
        for (int c = 0; c < chans; ++c) {
            const int t = q[sub][0][c];
            q[sub][0][c] = q[sub][1][c], q[sub][1][c] = t;
        }
        for (int i = 0; i < 16; ++i)
            if (ownSubset(s.ns, part, i) == sub) ci[i] = uint8_t(nc - 1 - ci[i]);
    }
    if (s.sepAlpha && (ai[0] & ((1 << s.alphaBits) >> 1))) {
        const int t = q[0][0][3];
        q[0][0][3] = q[0][1][3], q[0][1][3] = t;
        for (int i = 0; i < 16; ++i) ai[i] = uint8_t((1 << s.alphaBits) - 1 - ai[i]);
    }
}

// Logarithmic search on one channel of endpoint `e`, from `cur`, against
// `bound`. Returns the least error found (the bound if none is below it)
// and the endpoints with that move in `out`.
double perturb(const Search& s, int part, int sub, const int cur[2][4], int e, int ch, double bound, int out[2][4]) {
    const int p = s.precP[ch];
    for (int j = 0; j < 2; ++j)
        for (int c = 0; c < 4; ++c) out[j][c] = cur[j][c];
    double best = bound;
    for (int step = 1 << (p - 1); step; step >>= 1) {
        int move = 0;
        for (int sign = -1; sign <= 1; sign += 2) {
            const int t = out[e][ch] + sign * step;
            if (t < 0 || t >= (1 << p)) continue;
            int trial[2][4];
            for (int j = 0; j < 2; ++j)
                for (int c = 0; c < 4; ++c) trial[j][c] = out[j][c];
            trial[e][ch] = t;
            const double err = subsetError(s, part, sub, trial[0], trial[1], best);
            if (err < best) best = err, move = sign * step;
        }
        out[e][ch] += move;
    }
    return best;
}

// Every pair in a window of 5 around the current endpoints of one channel.
// b' stops short of bhigh in both orders, on purpose.
void ownBC7ExhaustiveSearch(const Search& s, int part, int sub, int ch, int cur[2][4], double& err) {
    if (err == 0) return;
    const int p = s.precP[ch], top = (1 << p) - 1;
    const int a = cur[0][ch], b = cur[1][ch];
    const int alow = a - 5 > 0 ? a - 5 : 0, ahigh = a + 5 < top ? a + 5 : top;
    const int blow = b - 5 > 0 ? b - 5 : 0, bhigh = b + 5 < top ? b + 5 : top;
    double best = DBL_MAX;
    int bestA = a, bestB = b;
    int trial[2][4];
    for (int j = 0; j < 2; ++j)
        for (int c = 0; c < 4; ++c) trial[j][c] = cur[j][c];
    auto tryPair = [&](int ta, int tb) {
        trial[0][ch] = ta, trial[1][ch] = tb;
        const double e = subsetError(s, part, sub, trial[0], trial[1], best);
        if (e < best) best = e, bestA = ta, bestB = tb;
    };
    if (a > b) {
        for (int tb = blow; tb < bhigh; ++tb)
            for (int ta = alow > tb ? alow : tb; ta <= ahigh; ++ta) tryPair(ta, tb);
    } else {
        for (int ta = alow; ta <= ahigh; ++ta)
            for (int tb = blow > ta ? blow : ta; tb < bhigh; ++tb) tryPair(ta, tb);
    }
    if (best < err) {
        cur[0][ch] = bestA, cur[1][ch] = bestB;
        err = best;
    }
}

// Per-channel descent of one subset. Only the move of A found by the first
// perturbation is ever stored; better moves of B, and those found while
// alternating, only lower the bound.
void optimiseSubset(const Search& s, int part, int sub, int cur[2][4], double& opt) {
    for (int ch = 0; ch < 4; ++ch) {
        if (s.precP[ch] == 0) continue;
        int first[2][4], other[2][4];
        const double errA = perturb(s, part, sub, cur, 0, ch, opt, first);
        const double errB = perturb(s, part, sub, cur, 1, ch, opt, other);
        int next;
        if (errB <= errA) {
            if (!(errB < opt)) continue;
            opt = errB, cur[1][ch] = first[1][ch], next = 0;
        } else {
            if (!(errA < opt)) continue;
            opt = errA, cur[0][ch] = first[0][ch], next = 1;
        }
        for (;;) {
            const double e = perturb(s, part, sub, cur, next, ch, opt, other);
            if (!(e < opt)) break;
            cur[next][ch] = first[next][ch];
            opt = e;
            next ^= 1;
        }
    }
    for (int ch = 0; ch < 4; ++ch)
        if (s.precP[ch] != 0) ownBC7ExhaustiveSearch(s, part, sub, ch, cur, opt);
}

struct BitWriter {
    uint64_t w[2] = {0, 0};
    int at = 0;
    void put(uint32_t v, int n) {
        for (int k = 0; k < n; ++k, ++at) w[at >> 6] |= uint64_t((v >> k) & 1) << (at & 63);
    }
};

// P-bits by majority vote of the endpoints' low bits, then the fields in
// block order with each anchor's top index bit left out.
void ownBC7EmitBlock(const Search& s, int part, int rot, int im, Endpoints q, const uint8_t ci[16],
                     const uint8_t ai[16], uint8_t out[16]) {
    const BC7Mode& m = *s.m;
    int pbit[6] = {};
    if (m.pBits) {
        int votes[6] = {}, ones[6] = {};
        for (int c = 0; c < 4; ++c) {
            if (s.prec[c] == s.precP[c]) continue;
            for (int sub = 0; sub < s.ns; ++sub) {
                const int pa = (2 * m.pBits * sub) / (2 * s.ns), pb = (2 * m.pBits * sub + m.pBits) / (2 * s.ns);
                ++votes[pa], ones[pa] += q[sub][0][c] & 1;
                ++votes[pb], ones[pb] += q[sub][1][c] & 1;
                q[sub][0][c] >>= 1, q[sub][1][c] >>= 1;
            }
        }
        for (int k = 0; k < m.pBits; ++k) pbit[k] = votes[k] / 2 < ones[k];
    }
    BitWriter bw;
    bw.put(1u << s.mode, s.mode + 1);
    bw.put(uint32_t(part), m.partBits);
    bw.put(uint32_t(rot), m.rotBits);
    bw.put(uint32_t(im), m.selBits);
    const int chans = m.alphaPrec ? 4 : 3;
    for (int c = 0; c < chans; ++c)
        for (int sub = 0; sub < s.ns; ++sub)
            for (int e = 0; e < 2; ++e) bw.put(uint32_t(q[sub][e][c]), s.prec[c]);
    for (int k = 0; k < m.pBits; ++k) bw.put(uint32_t(pbit[k]), 1);
    // First field: colour unless selector 1 puts the 3-bit colour second.
    const uint8_t* f1 = im ? ai : ci;
    const uint8_t* f2 = im ? ci : ai;
    for (int i = 0; i < 16; ++i) {
        bool anchor = false;
        for (int sub = 0; sub < s.ns; ++sub) anchor |= ownAnchor(s.ns, part, sub) == i;
        bw.put(f1[i], m.idxBits - anchor);
    }
    if (m.idx2Bits)
        for (int i = 0; i < 16; ++i) bw.put(f2[i], m.idx2Bits - (i == 0));
    st64(out, bw.w[0]), st64(out + 8, bw.w[1]);
}

double ownBC7Refine(const Search& s, int part, int rot, int im, Endpoints rough, uint8_t out[16]) {
    Endpoints q0, q1;
    for (int sub = 0; sub < s.ns; ++sub)
        for (int e = 0; e < 2; ++e)
            for (int c = 0; c < 4; ++c) {
                const int p = s.precP[c], v = rough[sub][e][c] + (128 >> p);
                q0[sub][e][c] = p == 0 ? 255 : (v < 255 ? v : 255) >> (8 - p);
            }
    uint8_t ci0[16], ai0[16], ci1[16], ai1[16];
    double err0[3], err1[3];
    ownBC7AssignIndices(s, part, q0, ci0, ai0, err0);
    for (int sub = 0; sub < s.ns; ++sub)
        for (int e = 0; e < 2; ++e)
            for (int c = 0; c < 4; ++c) q1[sub][e][c] = q0[sub][e][c];
    for (int sub = 0; sub < s.ns; ++sub) {
        double opt = err0[sub];
        optimiseSubset(s, part, sub, q1[sub], opt);
    }
    ownBC7AssignIndices(s, part, q1, ci1, ai1, err1);
    double sum0 = 0, sum1 = 0;
    for (int sub = 0; sub < s.ns; ++sub) sum0 += err0[sub], sum1 += err1[sub];
    if (sum0 > sum1) {
        ownBC7EmitBlock(s, part, rot, im, q1, ci1, ai1, out);
        return sum1;
    }
    ownBC7EmitBlock(s, part, rot, im, q0, ci0, ai0, out);
    return sum0;
}

}  // namespace

}  // namespace vqcj

using namespace vqcj;

extern "C" VQCJ_API VqcStatus vqciTextureEncodeBlock4x4FromRGBA_BC7_8u_C4C1R(const Vqc8u* pSrc, uint32_t srcStep,
                                                                            Vqc8u* pDst, int32_t* pError,
                                                                            uint32_t mode) {
    if (VqcStatus st = Check().ptr(pSrc).ptr(pDst).ptr(pError).fail(srcStep == 0, vqcStatusBadStep).fail(
            mode > 7, vqcStatusBadMode))
        return st;
    Search s;
    s.m = &kBC7Modes[mode];
    s.mode = int(mode);
    s.ns = s.m->subsets;
    for (int i = 0; i < 16; ++i) std::memcpy(s.px[i], pSrc + size_t(i >> 2) * srcStep + 4 * (i & 3), 4);
    for (int c = 0; c < 4; ++c) {
        s.prec[c] = c < 3 ? s.m->colorPrec : s.m->alphaPrec;
        s.precP[c] = s.prec[c] + (s.m->pBits && s.prec[c] ? 1 : 0);
    }
    const int shapes = 1 << s.m->partBits, rotations = 1 << s.m->rotBits, selectors = 1 << s.m->selBits;
    const int items = (shapes >> 2) ? shapes >> 2 : 1;
    double best = DBL_MAX;
    for (int r = 0; r < rotations && best > 0; ++r) {
        for (int im = 0; im < selectors && best > 0; ++im) {
            s.colorBits = im ? s.m->idx2Bits : s.m->idxBits;
            s.alphaBits = im ? s.m->idxBits : s.m->idx2Bits;
            s.sepAlpha = s.alphaBits != 0;
            if (r)
                for (int i = 0; i < 16; ++i) {
                    const uint8_t t = s.px[i][3];
                    s.px[i][3] = s.px[i][r - 1], s.px[i][r - 1] = t;
                }
            double rough[64];
            int part[64];
            Endpoints ep[64];
            for (int k = 0; k < shapes; ++k) {
                rough[k] = ownBC7RoughError(s, k, ep[k]);
                part[k] = k;
            }
            // Partial selection of the best quarter; its order is the order of trial.
            for (int i = 0; i < items; ++i)
                for (int j = i + 1; j < shapes; ++j)
                    if (rough[i] > rough[j]) {
                        const double t = rough[i];
                        rough[i] = rough[j], rough[j] = t;
                        const int u = part[i];
                        part[i] = part[j], part[j] = u;
                    }
            for (int i = 0; i < items && best > 0; ++i) {
                uint8_t tmp[16];
                const double err = ownBC7Refine(s, part[i], r, im, ep[part[i]], tmp);
                if (err < best) {
                    std::memcpy(pDst, tmp, 16);
                    best = err;
                }
            }
            if (r)
                for (int i = 0; i < 16; ++i) {
                    const uint8_t t = s.px[i][3];
                    s.px[i][3] = s.px[i][r - 1], s.px[i][r - 1] = t;
                }
        }
    }
    *pError = int32_t(best);
    return vqcStatusOk;
}
