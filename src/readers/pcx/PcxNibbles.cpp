#include "readers/pcx/PcxNibbles.h"

#include <algorithm>
#include <atomic>

namespace Kavra::Devices {

namespace {

constexpr unsigned char kGreyStep = 17;  // 15 steps make 255

std::array<std::atomic<unsigned char>, 16> theNibbles;

}  // namespace

void SetPcxNibbles(bool isGreyRamp) {
    unsigned char value = 0;
    for (std::atomic<unsigned char>& nibble : theNibbles) {
        nibble.store(value, std::memory_order_relaxed);
        value = static_cast<unsigned char>(value + (isGreyRamp ? kGreyStep : 1));
    }
}

PcxNibbles CurrentPcxNibbles() {
    PcxNibbles nibbles;
    std::ranges::transform(theNibbles, nibbles.begin(),
                           [](const auto& nibble) { return nibble.load(std::memory_order_relaxed); });
    return nibbles;
}

}  // namespace Kavra::Devices
