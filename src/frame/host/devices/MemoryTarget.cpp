#include "frame/host/devices/MemoryPixels.h"

#include <kavra/devices/MemoryTarget.h>

namespace Kavra::Devices {

struct MemoryTarget::Storage {
    Storage(int width, int height, EFormat format, int pitch) : pixels(width, height, format, pitch) {}

    MemoryPixels pixels;
};

MemoryTarget::MemoryTarget(int width, int height, EFormat format, int pitch)
    : mStorage(std::make_unique<Storage>(width, height, format, pitch)) {}

MemoryTarget::~MemoryTarget() = default;

int MemoryTarget::Width() const {
    return mStorage->pixels.Width();
}

int MemoryTarget::Height() const {
    return mStorage->pixels.Height();
}

EFormat MemoryTarget::Format() const {
    return mStorage->pixels.Format();
}

IMappedMemory* MemoryTarget::MemoryWrapper(int index) {
    return mStorage->pixels.HandOut(index);
}

unsigned char* MemoryTarget::Pixels() {
    return mStorage->pixels.Pixels();
}

int MemoryTarget::Pitch() const {
    return mStorage->pixels.Pitch();
}

int MemoryTarget::MapCount() const {
    return mStorage->pixels.MapCount();
}

int MemoryTarget::WrapperCount() const {
    return mStorage->pixels.WrapperCount();
}

}  // namespace Kavra::Devices
