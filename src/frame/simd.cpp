#include "simd.h"

#include <cstdlib>
#include <cstring>

namespace vqcj {

namespace {

// The targets a name allows, best first in Highway's order (lower bit is
// better); an unknown name leaves the choice to the processor.
int64_t ownSimdCap(const char* name) {
    struct Entry {
        const char* name;
        int64_t target;
    };
    static constexpr Entry kNames[] = {
        {"scalar", HWY_SCALAR}, {"sse2", HWY_SCALAR}, {"ssse3", HWY_SSSE3},
        {"sse4", HWY_SSE4},     {"avx2", HWY_AVX2},   {"avx512", HWY_AVX3},
    };
    for (const Entry& e : kNames)
        if (std::strcmp(name, e.name) == 0) return e.target;
    return 0;
}

}  // namespace

bool ownSimdApplyEnvironment() {
    const char* name = std::getenv("VQCJ_SIMD");
    if (name == nullptr) return true;
    const int64_t cap = ownSimdCap(name);
    // Every target better than the cap has a lower bit.
    if (cap != 0) hwy::DisableTargets(cap - 1);
    return true;
}

}  // namespace vqcj
