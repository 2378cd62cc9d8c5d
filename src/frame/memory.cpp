#include "memory.h"

#include "../core/vqccore.h"

namespace vqcj {

void* ownMalloc(int32_t length) { return length < 1 ? nullptr : vqcMalloc(length); }

void ownFree(void* p) { vqcFree(p); }

}  // namespace vqcj
