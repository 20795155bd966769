#include <kavra/devices/ImageLimits.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <mutex>

namespace Kavra::Devices {

namespace {

constinit std::mutex gMutex;
constinit ImageLimits gLimits;

/// Copies what both know. `size` itself stays each one's own.
void CopyKnown(const ImageLimits& from, ImageLimits& to) {
    constexpr std::size_t kFirst = offsetof(ImageLimits, maxBytes);
    const std::size_t known = std::min({std::size_t{from.size}, std::size_t{to.size}, sizeof(ImageLimits)});
    if (known <= kFirst) return;
    std::memcpy(reinterpret_cast<unsigned char*>(&to) + kFirst, reinterpret_cast<const unsigned char*>(&from) + kFirst,
                known - kFirst);
}

}  // namespace

void SetImageLimits(const ImageLimits& limits) {
    ImageLimits whole;
    CopyKnown(limits, whole);
    const std::lock_guard lock(gMutex);
    gLimits = whole;
}

void GetImageLimits(ImageLimits& limits) {
    const std::lock_guard lock(gMutex);
    CopyKnown(gLimits, limits);
}

}  // namespace Kavra::Devices
