/// One load through OpenImageIO on its way: what its steps hand to each other.
#pragma once

#include "common/ByteSource.h"
#include "common/LoadRequest.h"
#include "common/PixelBlock.h"
#include "load/DdsSlices.h"

#include <kavra/devices/ImageDesc.h>
#include <kavra/devices/ImageDescription.h>

#include <OpenImageIO/imageio.h>

#include <algorithm>
#include <cstddef>
#include <memory>
#include <optional>

namespace Kavra::Devices {

/// Loads one frame or mip level of a file through the image library. `open` is the file where it is open already. Null
/// on failure, with or without a message. Throws what the allocator and the library throw.
Common::PixelBlock LoadTextureByOIIO(ImageDescription& desc, const KString& path, const LoadRequest& request,
                                     int fileType, Common::ByteSource* open = nullptr);

/// What was asked for, what the file holds and what was chosen, in the order in which it becomes known.
struct TextureLoad {
    TextureLoad(ImageDescription& description, const KString& file, const LoadRequest& wanted, int type)
        : desc(description),
          path(file),
          request(wanted),
          fileType(type),
          index(std::max(wanted.level, 0)),
          format(wanted.format) {}

    ImageDescription& desc;  ///< the caller's: what the block holds
    const KString& path;
    const LoadRequest& request;
    const int fileType;  ///< an `ImageFileType`
    const int index;     ///< the mip level of a DDS, else the subimage; 0 and up
    EFormat format;      ///< the wanted one, then the chosen one

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
    bool NeedsReorientation() const { return request.orientation != fileDesc.orientation; }

    /// Whether the pixels are read as `nativeSpec` and then go through the conversion engine, or are read as
    /// `targetSpec`.
    bool Converts() const;
};

/// Packed pixels and how many bytes they are: a description, or an image over them, never claims more.
struct Pixels {
    Common::PixelBlock block;  ///< null: there are none
    std::size_t bytes = 0;

    explicit operator bool() const { return block != nullptr; }
};

/// Pixels with unspecified contents, or all zero. Throw `std::bad_alloc`.
inline Pixels NewPixels(std::size_t bytes) {
    return {Common::NewBlock(bytes), bytes};
}
inline Pixels NewZeroedPixels(std::size_t bytes) {
    return {Common::NewZeroedBlock(bytes), bytes};
}

/// Pixels of a load in the layout that they were read as.
struct ReadPixels {
    Pixels pixels;            ///< none: the file could not be read
    bool lacksAlpha = false;  ///< nothing stands in the alpha channel yet: it is to be set to opaque
};

/// Reads the subimage as `nativeSpec` or `targetSpec` (`as`): one block and one read, straight into it, but for files
/// whose few channels are spread over four in another type than the file's. Sets `desc.hasAlpha` where only the pixels
/// tell. Throws what the allocator throws.
ReadPixels ReadTexturePixels(TextureLoad& load, const OIIO::ImageSpec& as);

}  // namespace Kavra::Devices
