/// Small files and owners for the tests of the whole module.
#pragma once

#include "support/FailingAllocator.h"
#include "support/TemporaryFolder.h"

#include <kavra/devices/EFormat.h>
#include <kavra/devices/ETextureType.h>
#include <kavra/objects/IMemoryWrapper.h>
#include <kavra/objects/ObjModel.h>

#include <OpenImageIO/imageio.h>

#include <cstddef>
#include <filesystem>
#include <memory>
#include <string_view>
#include <vector>

namespace Kavra::Tests {

/// Destroys an object that the module handed out.
struct Deleter {
    void operator()(Objects::IDelete* object) const { object->Delete(); }
};
template <class T>
using Owned = std::unique_ptr<T, Deleter>;
using OwnedBlock = Owned<Objects::IMemoryWrapper<void>>;

/// Writes a picture through OpenImageIO: `pixels` are tight rows of type T, in the order of `spec`'s channels,
/// stored as they are.
template <class T>
std::filesystem::path WritePicture(const TemporaryFolder& folder, std::string_view name, const OIIO::ImageSpec& spec,
                                   const std::vector<T>& pixels);

struct DdsPicture {
    Devices::EFormat format;
    int width;
    int height;
    int depth = 1;
    int levels = 1;
    Devices::ETextureType type = Devices::kTexture2D;
};

/// Writes a DDS whose bytes after the header are `data`.
template <class T>
std::filesystem::path WriteDds(const TemporaryFolder& folder, std::string_view name, const DdsPicture& picture,
                               const std::vector<T>& data);

/// 0, 1, 2, ... as T.
template <class T>
std::vector<T> Counting(std::size_t count) {
    std::vector<T> values(count);
    for (std::size_t i = 0; i < count; ++i)
        values[i] = static_cast<T>(i);
    return values;
}

/// What the host's two allocators have given out and not got back.
struct Live {
    std::size_t blocks = Objects::ObjModel::BlockCounters().liveBlocks;
    std::size_t objects = Objects::ObjModel::ObjectCounters().liveBlocks;
    bool operator==(const Live&) const = default;
};

}  // namespace Kavra::Tests
