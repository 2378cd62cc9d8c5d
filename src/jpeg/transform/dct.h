// 8x8 DCT kernels. The fixed-point pair works on 16-bit blocks and wraps on
// 32 bits, keeping the intermediate pass in 16 bits; the single-precision
// pair serves 12-bit samples. Blocks are 64 values, row-major, contiguous.
#pragma once

#include <vqcj.h>

#include <array>

namespace vqcj {

namespace detail {
constexpr std::array<Vqc32f, 64> outerScale(const std::array<Vqc32f, 8>& f) {
    std::array<Vqc32f, 64> t{};
    for (int r = 0; r < 8; ++r)
        for (int c = 0; c < 8; ++c) t[r * 8 + c] = f[r] * f[c] / 8.0f;
    return t;
}
}  // namespace detail

// Post-scale of the floating forward kernel: f[r] * f[c] / 8.
inline constexpr std::array<Vqc32f, 64> ownDctFwdScale32f = detail::outerScale(
    {1.0f, 0.66608f, 0.7653669f, 0.785695f, 1.0f, 1.1758755f, 1.847759f, 3.3486104f});

// Pre-scale of the floating inverse kernel: g[r] * g[c] / 8.
inline constexpr std::array<Vqc32f, 64> ownDctInvScale32f = detail::outerScale(
    {1.0f, 2.5629156f, 1.306563f, 2.1727347f, 1.0f, 1.451775f, 0.5411961f, 0.5097956f});

// Forward fixed-point DCT, rows then columns; pSrc and pDst may be the same
// block. Null: -8.
VqcStatus ownDCT8x8Fwd16s(const Vqc16s* pSrc, Vqc16s* pDst);

// Inverse fixed-point DCT, columns then rows; pSrc and pDst may be the same.
void ownDCT8x8Inv16s(const Vqc16s* pSrc, Vqc16s* pDst);

// Inverse fixed-point DCT, then 128 added and saturated to bytes, rows
// written dstStep apart in order.
void ownDCT8x8InvLS16s8u(const Vqc16s* pSrc, Vqc8u* pDst, int32_t dstStep);

// Floating kernels, in place on 64 values. The forward one checks for null.
VqcStatus ownDCT8x8Fwd32f(Vqc32f* pSrcDst);
void ownDCT8x8Inv32f(Vqc32f* pSrcDst);

}  // namespace vqcj
