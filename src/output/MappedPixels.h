/// Reading the pixels of a target or texture.
#pragma once

#include "common/Boundary.h"

#include <kavra/devices/IMappedMemory.h>

#include <utility>

namespace Kavra::Devices {

/// The memory of a target or texture from when it is handed out to when it is given back: whatever happens in between,
/// it is unmapped if it was mapped, and then released.
class MappedPixels {
public:
    /// Takes over `memory`, which may be null. Does not map it yet.
    explicit MappedPixels(IMappedMemory* memory) : mMemory(memory) {}
    ~MappedPixels() { GiveBack(); }
    MappedPixels(const MappedPixels&) = delete;
    MappedPixels& operator=(const MappedPixels&) = delete;

    bool Exists() const { return mMemory != nullptr; }

    /// Maps for reading, once; false when there is no memory to be mapped.
    bool Map() {
        if (mMemory != nullptr) mData = static_cast<const unsigned char*>(mMemory->Map(kMapRead, mPitch));
        return mData != nullptr;
    }

    /// The first row, and the bytes from one row to the next as the host said them: any number.
    const unsigned char* Data() const { return mData; }
    int Pitch() const { return mPitch; }

    void Unmap() {
        if (std::exchange(mData, nullptr) != nullptr) Try([&] { mMemory->Unmap(); });
    }

    /// Unmaps and releases; the second time it does nothing.
    void GiveBack() {
        Unmap();
        if (IMappedMemory* const memory = std::exchange(mMemory, nullptr)) Try([&] { memory->Release(); });
    }

    /// Forgets the memory as it is: mapped, and never released.
    void Abandon() {
        mData = nullptr;
        mMemory = nullptr;
    }

private:
    /// A host that cannot even take its memory back does not end the process.
    template <class Action>
    static void Try(Action action) {
        Common::AtBoundary(false, [&] { return action(), true; });
    }

    IMappedMemory* mMemory;
    const unsigned char* mData = nullptr;
    int mPitch = 0;
};

}  // namespace Kavra::Devices
