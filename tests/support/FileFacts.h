/// All that a description says of a file, to be compared as a whole.
#pragma once

#include <kavra/devices/ImageDesc.h>

#include <ostream>

namespace Kavra::Tests {

/// Unless said otherwise: one flat 8-bit picture with colour, upright.
struct FileFacts {
    int width = 0;
    int height = 0;
    int depth = 1;
    Devices::EFormat format = Devices::kR8G8B8A8;
    Devices::ETextureType textureType = Devices::kTexture2D;
    int frameCount = 1;
    Devices::EDataOrientation orientation = Devices::kTopLeft;
    double gamma = 2.2;

    bool operator==(const FileFacts&) const = default;
    friend std::ostream& operator<<(std::ostream& out, const FileFacts& facts) {
        return out << facts.width << " x " << facts.height << " x " << facts.depth << ", format " << facts.format
                   << ", texture type " << facts.textureType << ", frames " << facts.frameCount << ", orientation "
                   << facts.orientation << ", gamma " << facts.gamma;
    }
};

inline FileFacts FactsOf(const Devices::ImageDesc& desc) {
    return {desc.width,       desc.height,     desc.depth,       desc.format,
            desc.textureType, desc.frameCount, desc.orientation, desc.gamma};
}

}  // namespace Kavra::Tests
