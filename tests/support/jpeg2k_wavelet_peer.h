// OpenJPEG's own one-level DWT, linked from its static archive (link
// libopenjp2.a to use these), in place on a tile component of 32-bit samples
// (floats for 9/7) with the component's origin and size; the bands end up
// where OpenJPEG puts them. False when the peer fails.
#pragma once

#include <cstdint>

namespace vqcjtest {

bool opjDwt53Forward(int32_t* data, int x0, int y0, int width, int height);
bool opjDwt53Inverse(int32_t* data, int x0, int y0, int width, int height);
bool opjDwt97Forward(float* data, int x0, int y0, int width, int height);
bool opjDwt97Inverse(float* data, int x0, int y0, int width, int height);

}  // namespace vqcjtest
