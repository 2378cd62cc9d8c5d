// OpenJPEG's own one-level DWT, linked from its static archive, on a tile
// component held as 32-bit samples (floats for 9/7) with the component's
// origin and size. For the wavelet tests and benchmark: link
// libopenjp2.a to use these.
#pragma once

#include <cstdint>

namespace vqcjtest {

// In place, one decomposition level; the bands end up as OpenJPEG places
// them (lows first in each direction). Return false when the peer fails.
bool opjDwt53Forward(int32_t* data, int x0, int y0, int width, int height);
bool opjDwt53Inverse(int32_t* data, int x0, int y0, int width, int height);
bool opjDwt97Forward(float* data, int x0, int y0, int width, int height);
bool opjDwt97Inverse(float* data, int x0, int y0, int width, int height);

}  // namespace vqcjtest
