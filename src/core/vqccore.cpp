#include "vqccore.h"

#include <omp.h>

#include <cstdlib>

extern "C" {

void* vqcMalloc(int32_t length) {
    if (length < 1) return nullptr;
    // 64 bytes: a cache line, and enough for any vector width the compiler picks.
    void* p = nullptr;
    if (posix_memalign(&p, 64, static_cast<size_t>(length)) != 0) return nullptr;
    return p;
}

void vqcFree(void* p) { std::free(p); }

int32_t ownGetNumThreads(void) {
    const int n = omp_get_max_threads();
    return n < 1 ? 1 : n;
}

}  // extern "C"
