// Raw level-shift workers of the row exports: the frame and the dispatched
// kernel, no checks. The forward DCT shifts its own block inside its kernel.
#pragma once

#include <vqcj.h>

namespace vqcj {

void ownSub128(const Vqc8u* pSrc, int32_t srcStep, Vqc16s* pDst, int32_t dstStep, VqciSize roiSize);
void ownAdd128(const Vqc16s* pSrc, int32_t srcStep, Vqc8u* pDst, int32_t dstStep, VqciSize roiSize);

}  // namespace vqcj
