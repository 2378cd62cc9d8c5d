#include <vqcj.h>

namespace {
// The version text and the build number are two separate facts: 58 and 1032
// do not agree, and must not be made to.
constexpr VqcLibraryVersion kVersion = {
    7, 0, 205, 1032, {'p', 'x', '\0', '\0'}, "vqcjpx-7.0.dll", "7.0 build 205.58", "Apr 18 2011",
};
}  // namespace

extern "C" const VqcLibraryVersion* vqcjGetLibVersion(void) { return &kVersion; }
