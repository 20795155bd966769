#include "common/KnownFields.h"

#include <kavra/devices/ImageLimits.h>

#include <mutex>

namespace Kavra::Devices {

namespace {

constinit std::mutex gMutex;
constinit ImageLimits gLimits;

}  // namespace

void SetImageLimits(const ImageLimits& limits) {
    ImageLimits whole;
    Common::CopyKnownFields(limits, whole);
    const std::lock_guard lock(gMutex);
    gLimits = whole;
}

void GetImageLimits(ImageLimits& limits) {
    const std::lock_guard lock(gMutex);
    Common::CopyKnownFields(gLimits, limits);
}

}  // namespace Kavra::Devices
