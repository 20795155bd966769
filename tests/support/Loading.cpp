#include "support/Loading.h"

#include "support/TemporaryFolder.h"

#include <algorithm>

namespace Kavra::Tests {

using namespace Devices;

std::optional<Loaded> LoadFile(IImageHandler& handler, const std::filesystem::path& path, const LoadRequest& request) {
    Loaded loaded;
    IMemoryWrapper<void>* block =
        handler.LoadTexture(loaded.desc, Wide(path), request.width, request.height, 1, request.format,
                            request.highQuality, request.level, request.orientation, request.formatHandler);
    if (block == nullptr) return std::nullopt;
    const std::size_t bytes = loaded.desc.dataSize * (loaded.desc.textureType == kTextureCube ? 6 : 1);
    const auto* data = static_cast<const unsigned char*>(block->mData);
    loaded.bytes.assign(data, data + bytes);
    block->Delete();
    return loaded;
}

bool IsDescribed(IImageHandler& handler, const std::filesystem::path& path) {
    ImageDesc* desc = handler.GetImageDesc(Wide(path));
    if (desc == nullptr) return false;
    desc->Delete();
    return true;
}

std::vector<std::filesystem::path> AllSamples() {
    std::vector<std::filesystem::path> samples;
    for (const auto& entry :
         std::filesystem::directory_iterator(std::filesystem::path(KAVRA_SOURCE_DIR) / "examples")) {
        const bool isAbout = entry.path().extension() == ".md" || entry.path().filename() == "SHA256SUMS";
        if (entry.is_regular_file() && !isAbout) samples.push_back(entry.path());
    }
    std::ranges::sort(samples);
    return samples;
}

}  // namespace Kavra::Tests
