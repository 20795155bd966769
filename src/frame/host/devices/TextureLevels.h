/// The levels of an open texture file, whatever its kind.
#pragma once

#include "common/FileHandle.h"
#include "common/dds/DdsTexture.h"
#include "common/ktx/KtxTexture.h"

#include <kavra/devices/TextureFile.h>

#include <cstdint>
#include <expected>
#include <memory>
#include <string>
#include <vector>

namespace Kavra::Devices {

class TextureLevels {
public:
    virtual ~TextureLevels() = default;

    virtual ETextureFileKind Kind() const = 0;
    virtual const Dds::StoredTexture& Texture() const = 0;
    virtual bool IsBottomUp() const { return false; }
    /// Whether halves of blocks change places on the way.
    virtual bool IsExchanged() const { return false; }

    /// Reads a level of a face that is in the file, as it is delivered. False where the bytes cannot be read. Throws
    /// `std::bad_alloc`.
    virtual bool Read(int element, int face, int level, unsigned char* out) = 0;
    /// Gives back what is kept of a level.
    virtual void Forget(int /*level*/) {}
};

/// Tells kinds apart and reads what stands before the levels. Throws `std::bad_alloc`.
std::expected<std::unique_ptr<TextureLevels>, std::string> OpenTextureLevels(Common::FileHandle file);

}  // namespace Kavra::Devices
