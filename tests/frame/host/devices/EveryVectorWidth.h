/// Repeats a check with each vector width that the machine can run.
#pragma once

// The widths that the kernels are compiled for.
#define HWY_DISABLED_TARGETS (HWY_SSSE3 | HWY_AVX3_DL | HWY_AVX3_ZEN4 | HWY_AVX3_SPR | HWY_AVX10_2)

#include <gtest/gtest.h>
#include <hwy/targets.h>

#include <cstdint>

namespace Kavra::Tests {

/// Restores the machine's own choice at its end.
class VectorWidth {
public:
    explicit VectorWidth(std::int64_t target) { hwy::SetSupportedTargetsForTest(target); }
    ~VectorWidth() { hwy::SetSupportedTargetsForTest(0); }
    VectorWidth(const VectorWidth&) = delete;
    VectorWidth& operator=(const VectorWidth&) = delete;
};

template <class Body>
void ForEveryVectorWidth(const Body& body) {
    for (const std::int64_t target : hwy::SupportedAndGeneratedTargets()) {
        SCOPED_TRACE(hwy::TargetName(target));
        const VectorWidth width(target);
        body();
    }
}

}  // namespace Kavra::Tests
