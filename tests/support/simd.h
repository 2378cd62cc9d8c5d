// Runs a dispatched operation on every SIMD target this machine has, against
// the baseline target, whose kernels are the plain C++ routines.
#pragma once

#include <gtest/gtest.h>

#include <hwy/targets.h>

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

namespace vqcjtest {

// fn(name) runs once per target, baseline first; the library dispatches to
// that target meanwhile.
template <class Fn>
void forEachSimdTarget(Fn&& fn) {
    std::vector<int64_t> targets = hwy::SupportedAndGeneratedTargets();
    // Baseline first: it holds the highest bit.
    std::reverse(targets.begin(), targets.end());
    for (int64_t t : targets) {
        hwy::SetSupportedTargetsForTest(t);
        fn(hwy::TargetName(t));
    }
    hwy::SetSupportedTargetsForTest(0);
}

// run() returns the bytes an operation wrote; every target must write the
// baseline's bytes.
template <class Run>
void expectSameOnEveryTarget(Run&& run, const std::string& what) {
    std::vector<uint8_t> reference;
    bool first = true;
    forEachSimdTarget([&](const char* name) {
        std::vector<uint8_t> got = run();
        if (first) {
            reference = std::move(got);
            first = false;
            return;
        }
        ASSERT_EQ(got.size(), reference.size()) << what << " on " << name;
        for (size_t i = 0; i < got.size(); ++i)
            if (got[i] != reference[i]) {
                ADD_FAILURE() << what << " on " << name << ": byte " << i << " is " << int(got[i])
                              << ", baseline " << int(reference[i]);
                return;
            }
    });
}

}  // namespace vqcjtest
