// The walk over a scan's restart markers, shared by the interop tests.
#pragma once

#include <gtest/gtest.h>
#include <vqcj.h>

#include "support/jpeg_passes.h"
#include "support/jpeg_streams.h"

namespace {

using namespace vqcjtest;

inline int slot(const JpegScan& s, int comp) {
    for (int i = 0; i < s.compCount; ++i)
        if (s.comps[i] == comp) return i;
    return 0;
}

// Steps over the RST marker that ends an interval when the reader has not
// met it yet, or accepts the one it met.
inline void passRestart(const JpegScan& s, int32_t& pos, int32_t& marker, int interval) {
    const int expected = 0xD0 + ((interval - 1) & 7);
    if (marker == 0) {
        ASSERT_EQ(s.data[pos], 0xFF);
        ASSERT_EQ(s.data[pos + 1], expected);
        pos += 2;
    } else {
        ASSERT_EQ(marker, expected);
        marker = 0;
    }
}

}  // namespace
