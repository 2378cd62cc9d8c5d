// The core library's three services, as the primitives library imports them.
#pragma once

#include <stdint.h>

#if defined(VQCCORE_BUILDING) && defined(__GNUC__)
#define VQCCORE_API __attribute__((visibility("default")))
#else
#define VQCCORE_API
#endif

extern "C" {
// Allocates length bytes aligned to 64; null on exhaustion or length below 1.
VQCCORE_API void* vqcMalloc(int32_t length);
// Releases what vqcMalloc gave; null is accepted.
VQCCORE_API void vqcFree(void* p);
// Threads a parallel region of the primitives is to use, at least 1.
VQCCORE_API int32_t ownGetNumThreads(void);
}
