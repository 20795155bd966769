/// One load through OpenImageIO on its way: what its steps hand to each other.
#pragma once

#include "common/PixelBlock.h"
#include "load/DdsSlices.h"

#include <kavra/devices/ImageDesc.h>
#include <kavra/devices/ImageDescription.h>

#include <OpenImageIO/imageio.h>

#include <memory>
#include <optional>

namespace Kavra::Devices {

/// What was asked for, what the file holds and what was chosen, in the order in which it becomes known.
struct TextureLoad {
    TextureLoad(ImageDescription& description, const KString& file, int type)
        : desc(description), path(file), fileType(type) {}

    ImageDescription& desc;  ///< the caller's: what the block holds
    const KString& path;
    const int fileType;  ///< an `ImageFileType`
    int index = 0;       ///< the mip level of a DDS, else the subimage; 0 and up
    bool highQuality = false;
    EDataOrientation orientation = kTopLeft;  ///< the wanted one
    EFormat format = kUnknown;                ///< the wanted one, then the chosen one

    std::unique_ptr<OIIO::ImageInput> input;  ///< stands at the subimage and level
    std::optional<DdsSlices> slices;          ///< for every DDS that it knows
    EFormat hostFormat = kUnknown;            ///< what the host's reader makes of a DDS

    ImageDesc fileDesc;          ///< the subimage as the host sees it
    OIIO::ImageSpec fileSpec;    ///< the subimage as the library sees it
    OIIO::ImageSpec nativeSpec;  ///< the same in the host format that holds it
    OIIO::ImageSpec targetSpec;  ///< the same in the chosen format

    int outWidth = 0;   ///< the size to deliver, in the file's row and column order
    int outHeight = 0;  ///< of one face for a cube map
    int outDepth = 0;

    bool IsDds() const;
    bool IsCube() const { return fileDesc.textureType == kTextureCube; }
    bool IsVolume() const { return fileDesc.textureType == kTextureVolume; }
    bool NeedsResize() const;
    bool NeedsReorientation() const { return orientation != fileDesc.orientation; }

    /// Whether the pixels are read as `nativeSpec` and then go through the conversion engine, or are read as
    /// `targetSpec`.
    bool Converts() const;
};

/// Pixels of a load, packed, in the layout that they were read as.
struct ReadPixels {
    Common::PixelBlock block;  ///< null: the file could not be read
    bool lacksAlpha = false;   ///< nothing stands in the alpha channel yet: it is to be set to opaque
};

/// Reads the subimage as `nativeSpec` or `targetSpec` (`as`): one block and one read, straight into it, but for files
/// whose few channels are spread over four in another type than the file's. Sets `desc.hasAlpha` where only the pixels
/// tell. Throws what the allocator throws.
ReadPixels ReadTexturePixels(TextureLoad& load, const OIIO::ImageSpec& as);

/// Brings a block in the layout of `targetSpec` to the wanted size, row and column order, and updates `desc`. Null when
/// that cannot be done. Throws what the allocator and the library throw.
Common::PixelBlock ReshapeTexture(TextureLoad& load, Common::PixelBlock block);

}  // namespace Kavra::Devices
