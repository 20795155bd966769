#include "common/PackedLayout.h"
#include "frame/host/devices/MemoryPixels.h"

#include <kavra/devices/IImageHandler.h>
#include <kavra/devices/MemoryTexture.h>
#include <kavra/devices/Sys.h>

#include <atomic>

namespace Kavra::Devices {

struct MemoryTexture::Storage {
    Storage(int width, int height, EFormat format, int pitch) : pixels(width, height, format, pitch) {}

    MemoryPixels pixels;
    std::atomic<int> references{0};
};

MemoryTexture::MemoryTexture(int width, int height, EFormat format, int pitch)
    : mStorage(std::make_unique<Storage>(width, height, format, pitch)) {}

MemoryTexture::~MemoryTexture() = default;

int MemoryTexture::Width() const {
    return mStorage->pixels.Width();
}

int MemoryTexture::Height() const {
    return mStorage->pixels.Height();
}

EFormat MemoryTexture::Format() const {
    return mStorage->pixels.Format();
}

IMappedMemory* MemoryTexture::MemoryWrapper(int index) {
    return mStorage->pixels.HandOut(index);
}

bool MemoryTexture::Save(const KString& path) {
    IImageHandler* const handler = Sys::ImageHandler();
    if (handler == nullptr) return false;
    ImageDescription desc = Common::DescribePacked(Width(), Height(), Format());
    desc.rowPitch = Pitch();
    desc.dataSize = static_cast<std::uint64_t>(Pitch()) * static_cast<std::uint64_t>(Height());
    return handler->SaveTexture(path, desc, Pixels());
}

void MemoryTexture::AddRef() {
    ++mStorage->references;
}

void MemoryTexture::ReleaseRef() {
    if (--mStorage->references <= 0) delete this;
}

unsigned char* MemoryTexture::Pixels() {
    return mStorage->pixels.Pixels();
}

int MemoryTexture::Pitch() const {
    return mStorage->pixels.Pitch();
}

int MemoryTexture::RefCount() const {
    return mStorage->references;
}

int MemoryTexture::MapCount() const {
    return mStorage->pixels.MapCount();
}

int MemoryTexture::WrapperCount() const {
    return mStorage->pixels.WrapperCount();
}

}  // namespace Kavra::Devices
