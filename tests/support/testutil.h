// Small helpers shared by the test programs.
#pragma once

#include <vqcj.h>

#include <cstdint>
#include <random>
#include <vector>

namespace vqcjtest {

// Deterministic random bytes, so a failure reproduces.
std::vector<uint8_t> randomBytes(size_t n, uint32_t seed);

// A buffer with guard bytes on both sides; check() tells whether any guard
// byte changed, which catches writes beyond the region under test.
class Guarded {
public:
    explicit Guarded(size_t n, uint8_t fill = 0xA5, size_t guard = 64);
    uint8_t* data() { return buf_.data() + guard_; }
    const uint8_t* data() const { return buf_.data() + guard_; }
    size_t size() const { return n_; }
    bool guardsIntact() const;

private:
    size_t n_, guard_;
    uint8_t fill_;
    std::vector<uint8_t> buf_;
};

// Runs fn once with each given OpenMP thread count, restoring the old one.
template <class Fn>
void withThreads(int n, Fn&& fn);

}  // namespace vqcjtest

#include <omp.h>

template <class Fn>
void vqcjtest::withThreads(int n, Fn&& fn) {
    const int old = omp_get_max_threads();
    omp_set_num_threads(n);
    fn();
    omp_set_num_threads(old);
}
