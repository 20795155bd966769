/// Levels of KTX2 files that are packed by Zstandard (RFC 8878).
#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <vector>

namespace Kavra::Devices {

inline constexpr int kMaxZstdLevel = 22;

/// Unpacks frames that must make exactly the bytes of `to`, and takes no memory for what they claim.
bool UnpackZstd(std::span<const unsigned char> from, std::span<unsigned char> to);

/// Packs into one frame with its size and checksum, on all cores, at a level of 1 to `kMaxZstdLevel`. The bytes are the
/// same whatever the number of cores. Throws `std::bad_alloc`.
std::vector<unsigned char> PackZstd(std::span<const unsigned char> from, int level);

}  // namespace Kavra::Devices
