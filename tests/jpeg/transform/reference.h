// Double-precision orthonormal 8x8 DCT pair and block helpers shared by the
// transform tests.
#pragma once

#include <vqcj.h>

#include <array>
#include <cmath>
#include <cstdint>

namespace vqcjtest {

using Block64d = std::array<double, 64>;

// Separable orthonormal DCT-II (forward) or DCT-III (inverse) in double.
inline Block64d referenceDct(const Block64d& in, bool inverse) {
    static const auto basis = [] {
        std::array<double, 64> b{};  // b[k*8+n] = C(k)/2 cos((2n+1)k pi/16)
        for (int k = 0; k < 8; ++k)
            for (int n = 0; n < 8; ++n)
                b[k * 8 + n] = (k == 0 ? std::sqrt(0.5) : 1.0) / 2.0 * std::cos((2 * n + 1) * k * M_PI / 16.0);
        return b;
    }();
    const auto mat = [&](int k, int n) { return inverse ? basis[n * 8 + k] : basis[k * 8 + n]; };
    Block64d tmp{}, out{};
    for (int r = 0; r < 8; ++r)
        for (int k = 0; k < 8; ++k)
            for (int n = 0; n < 8; ++n) tmp[r * 8 + k] += mat(k, n) * in[r * 8 + n];
    for (int c = 0; c < 8; ++c)
        for (int k = 0; k < 8; ++k)
            for (int n = 0; n < 8; ++n) out[k * 8 + c] += mat(k, n) * tmp[n * 8 + c];
    return out;
}

// A table of 64 equal entries.
template <class T>
std::array<T, 64> flatTable(T v) {
    std::array<T, 64> t;
    t.fill(v);
    return t;
}

}  // namespace vqcjtest

#include <algorithm>
#include <cstdio>
#include <string>

namespace vqcjtest {

// Error statistics in the manner of IEEE 1180: peak absolute error, and per
// position and overall mean error and mean square error.
class ErrorStats {
public:
    void add(const int32_t* got, const int32_t* want) {
        for (int i = 0; i < 64; ++i) {
            const int64_t e = static_cast<int64_t>(got[i]) - want[i];
            peak_ = std::max<int64_t>(peak_, e < 0 ? -e : e);
            sum_[i] += e;
            sq_[i] += e * e;
        }
        ++blocks_;
    }
    int64_t peak() const { return peak_; }
    double posMse(int i) const { return static_cast<double>(sq_[i]) / blocks_; }
    double posMean(int i) const { return static_cast<double>(sum_[i]) / blocks_; }
    double worstPosMse() const {
        double w = 0;
        for (int i = 0; i < 64; ++i) w = std::max(w, posMse(i));
        return w;
    }
    double worstPosMean() const {
        double w = 0;
        for (int i = 0; i < 64; ++i) w = std::max(w, std::fabs(posMean(i)));
        return w;
    }
    double mse() const {
        double s = 0;
        for (int i = 0; i < 64; ++i) s += posMse(i);
        return s / 64;
    }
    double mean() const {
        double s = 0;
        for (int i = 0; i < 64; ++i) s += posMean(i);
        return s / 64;
    }
    void print(const std::string& label) const {
        std::printf("  %-44s %7lld %6lld %9.5f %9.5f %9.5f %9.5f\n", label.c_str(), static_cast<long long>(blocks_),
                    static_cast<long long>(peak_), worstPosMse(), mse(), worstPosMean(), mean());
    }
    static void printHeader(const char* title) {
        std::printf("%s\n  %-44s %7s %6s %9s %9s %9s %9s\n", title, "case", "blocks", "peak", "pos mse", "mse",
                    "pos mean", "mean");
    }

private:
    int64_t peak_ = 0, blocks_ = 0;
    std::array<int64_t, 64> sum_{}, sq_{};
};

}  // namespace vqcjtest
