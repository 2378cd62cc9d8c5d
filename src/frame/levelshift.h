// Raw level-shift workers: the frame and the loop, no checks. The forward
// DCT calls ownSub128 on its 8x8 block, where the size alone keeps it serial.
#pragma once

#include <vqcj.h>

namespace vqcj {

void ownSub128(const Vqc8u* pSrc, int32_t srcStep, Vqc16s* pDst, int32_t dstStep, VqciSize roiSize);
void ownAdd128(const Vqc16s* pSrc, int32_t srcStep, Vqc8u* pDst, int32_t dstStep, VqciSize roiSize);

}  // namespace vqcj
