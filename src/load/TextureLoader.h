/// One load through OpenImageIO on its way: what its steps hand to each other.
#pragma once

#include "common/ByteSource.h"
#include "common/LoadRequest.h"
#include "common/PixelBlock.h"
#include "load/ChosenChannels.h"
#include "load/DdsSlices.h"
#include "load/ReadSubimage.h"
#include "load/geometry/Reshape.h"

#include <kavra/devices/ImageDesc.h>
#include <kavra/devices/ImageDescription.h>

#include <OpenImageIO/imageio.h>

#include <algorithm>
#include <cstddef>
#include <memory>
#include <optional>
#include <string>

namespace Kavra::Devices {

/// Loads one frame or mip level of a file through the image library. `open` is the file where it is open already. Null
/// on failure, with or without a message. Throws what the allocator and the library throw.
Common::PixelBlock LoadTextureByOIIO(ImageDescription& desc, const KString& path, const LoadRequest& request,
                                     int fileType, Common::ByteSource* open = nullptr);

/// What a texture is for, as `IImageFormatHandler::ChooseFormat` is told.
int UsageOf(ETextureType type);

/// What was asked for, what the file holds and what was chosen, in the order in which it becomes known.
struct TextureLoad {
    TextureLoad(ImageDescription& description, const KString& file, const LoadRequest& wanted, int type)
        : desc(description),
          path(file),
          request(wanted),
          fileType(type),
          index(std::max(wanted.level, 0)),
          level(IsDds() ? index : std::max(wanted.preferences.mipLevel, 0)),
          format(wanted.format) {}

    ImageDescription& desc;  ///< the caller's: what the block holds
    const KString& path;
    const LoadRequest& request;
    const int fileType;  ///< an `ImageFileType`
    const int index;     ///< the mip level of a DDS, else the subimage; 0 and up
    int level;           ///< the mip level that is read
    EFormat format;      ///< the wanted one, then the chosen one

    std::unique_ptr<OIIO::ImageInput> input;  ///< stands at the subimage and level
    std::optional<DdsSlices> slices;          ///< for every DDS that it knows
    EFormat hostFormat = kUnknown;            ///< what the host's reader makes of a DDS
    int slice = -1;                           ///< the face or slice that is loaded by itself; -1: all
    std::optional<ChosenChannels> chosen;     ///< channels that were chosen by name

    ImageDesc fileDesc;          ///< the subimage as the host sees it
    OIIO::ImageSpec fileSpec;    ///< the subimage as the library sees it
    OIIO::ImageSpec nativeSpec;  ///< the same in the host format that holds it
    OIIO::ImageSpec targetSpec;  ///< the same in the chosen format

    std::string errors;  ///< what the library said of pixels that it could not read
    bool isCut = false;  ///< it gave pixels that the file does not have

    int outWidth = 0;   ///< the size to deliver, in the file's row and column order
    int outHeight = 0;  ///< of one face for a cube map
    int outDepth = 0;

    bool IsDds() const;
    int Subimage() const { return IsDds() ? 0 : index; }
    bool IsCube() const { return fileDesc.textureType == kTextureCube; }
    bool IsVolume() const { return fileDesc.textureType == kTextureVolume; }
    bool NeedsResize() const;
    bool NeedsReorientation() const { return request.orientation != fileDesc.orientation; }

    /// What becomes of the pixels once they are in the chosen format.
    Reshaping Wanted() const;

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

/// The pixels of a load as they are read: in the layout of `nativeSpec` or `targetSpec`, all rows at once or band by
/// band from the top down. The rows are those of all faces and slices.
class TexturePixels {
public:
    /// `as` is one of the load's specs. Sets `desc.hasAlpha` where only the channels tell. The load lives longer.
    TexturePixels(TextureLoad& load, const OIIO::ImageSpec& as);

    int RowCount() const;

    /// The rows from `top` on that are best read at a time: all where they cannot be read in parts.
    int BandFrom(int top) const;

    /// Whether any number of rows may be read at a time, and not only whole bands.
    bool AreDecodedAlone() const { return mRows && mRows->AreDecodedAlone(); }

    /// Whether each byte is written. Memory for other pixels is to be zero.
    bool FillsAll() const;

    /// Reads rows `top` to `top` + `count` - 1 into `out`, packed. Sets `desc.hasAlpha` where only the pixels tell. False
    /// where the file cannot be read. Throws what the allocator throws.
    bool Read(int top, int count, unsigned char* out);

private:
    enum class Kind {
        kOrdinary,        ///< the file's channels are the first ones of the layout
        kLuminanceAlpha,  ///< two channels that are spread over four
        kSingleChannel,   ///< an OpenEXR channel that is
        kChosen,          ///< channels that were chosen by name
        kHostLevel        ///< a level of a DDS that the host's reader has
    };
    static Kind KindOf(const TextureLoad& load);

    void ChooseChannels();
    bool IsNativeLayout() const;
    std::size_t PixelsIn(int rows) const;
    bool ReadChannels(int top, int count, unsigned char* out);
    bool ReadNative(int top, int count, unsigned char* out);
    bool ReadLuminanceAlpha(int top, int count, unsigned char* out);
    bool ReadSingleChannel(int top, int count, unsigned char* out);
    bool ReadChosen(int top, int count, unsigned char* out);
    bool Recast(const unsigned char* native, int count, unsigned char* out) const;

    TextureLoad& mLoad;
    const OIIO::ImageSpec& mAs;
    const Kind mKind;
    int mFirst = 0, mChannels = 0;  // what is read of the file, and how
    OIIO::TypeDesc mType;
    std::size_t mPixelStride = 0;
    bool mLacksAlpha = false;           // nothing is read into the alpha channel: it is set to opaque
    bool mAddsAlpha = false;            // while the rest is read
    std::optional<bool> mIsMask;        // whether luminance is alpha in every pixel, once that is known
    std::optional<SubimageRows> mRows;  // of what comes from the library itself
};

}  // namespace Kavra::Devices
