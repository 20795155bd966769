/// Sums and products of byte counts that stop at the largest number instead of wrapping around.
#pragma once

#include <cstdint>
#include <limits>

namespace Kavra::Devices {

inline constexpr std::int64_t kMostBytes = std::numeric_limits<std::int64_t>::max();

/// Neither number is negative.
constexpr std::int64_t Sum(std::int64_t a, std::int64_t b) {
    return a > kMostBytes - b ? kMostBytes : a + b;
}

constexpr std::int64_t Product(std::int64_t a, std::int64_t b) {
    return b != 0 && a > kMostBytes / b ? kMostBytes : a * b;
}

}  // namespace Kavra::Devices
