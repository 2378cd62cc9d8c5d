#include "support/testutil.h"

namespace vqcjtest {

std::vector<uint8_t> randomBytes(size_t n, uint32_t seed) {
    std::mt19937 rng(seed);
    std::vector<uint8_t> v(n);
    for (auto& b : v) b = static_cast<uint8_t>(rng() >> 24);
    return v;
}

Guarded::Guarded(size_t n, uint8_t fill, size_t guard)
    : n_(n), guard_(guard), fill_(fill), buf_(n + 2 * guard, fill) {}

bool Guarded::guardsIntact() const {
    for (size_t i = 0; i < guard_; ++i)
        if (buf_[i] != fill_ || buf_[guard_ + n_ + i] != fill_) return false;
    return true;
}

}  // namespace vqcjtest
