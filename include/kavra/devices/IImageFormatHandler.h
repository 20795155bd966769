/// \file
/// The host's say in the format of a load.
#pragma once

#include <kavra/devices/EFormat.h>
#include <kavra/devices/Export.h>

namespace Kavra::Devices {

/// What a texture is for, as `IImageFormatHandler::ChooseFormat` is told. It follows from the file.
enum ETextureUsage : int {
    kUsageTexture2D = 8,       ///< a flat picture, or a frame of one
    kUsageTextureCube = 16,    ///< a cube map
    kUsageTextureVolume = 32,  ///< a volume
};

/// Chooses the format of a load once the file is known. Implemented by the host, passed to `IImageHandler::LoadTexture`
/// and borrowed for that call only.
///
///     class EightBits : public IImageFormatHandler {
///         EFormat ChooseFormat(EFormat, int) override { return kR8G8B8A8; }   // whatever the file has
///     };
///
/// It is asked when the load names no format (`kUnknown`) and the image library decodes the file; then exactly once, on
/// the thread of the load, after the header was read and before any pixel. Loads that name a format, files of the
/// legacy formats, and files that only the host's own DDS or OpenEXR reader can decode come without a question, in
/// their own format.
///
/// Vtable slots: 0 destructor, 1 `Delete`, 2 `ChooseFormat`.
class KAVRA_DEVICES_API IImageFormatHandler : public IDelete {
public:
    ~IImageFormatHandler() override;

    /// Returns the format in which to load a file whose own format is `fileFormat`, for a use out of `ETextureUsage`.
    ///
    /// `kUnknown` means the file's own. A format that the image library cannot hold (block-compressed, `kR32G32B32F`,
    /// `kR8G8B8A8Alt`, no format at all) makes its load fail with the warning "format is not supported"; where the
    /// host's own DDS or OpenEXR reader knows the file, the load then goes on with that one and the file's own format.
    /// An exception makes the load return null without a message.
    virtual EFormat ChooseFormat(EFormat fileFormat, int usage) = 0;
};

}  // namespace Kavra::Devices
