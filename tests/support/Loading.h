/// Whole loads through the handler, as a host makes them.
#pragma once

#include "common/LoadRequest.h"

#include <kavra/devices/IImageHandler.h>

#include <filesystem>
#include <optional>
#include <vector>

namespace Kavra::Tests {

/// What a load gave: the description and a copy of the whole block, of a cube map all six faces.
struct Loaded {
    Devices::ImageDescription desc;
    std::vector<unsigned char> bytes;
};

using Devices::LoadRequest;

/// Loads through slot 2 and frees the block; nothing when the load failed.
std::optional<Loaded> LoadFile(Devices::IImageHandler& handler, const std::filesystem::path& path,
                               const LoadRequest& request = {});

/// Whether the file is described; the description is freed.
bool IsDescribed(Devices::IImageHandler& handler, const std::filesystem::path& path);

/// The project's sample images, in order of name.
std::vector<std::filesystem::path> AllSamples();

}  // namespace Kavra::Tests
