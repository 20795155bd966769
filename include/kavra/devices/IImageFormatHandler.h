/// The host's say in the format of a load.
#pragma once

#include <kavra/devices/EFormat.h>
#include <kavra/devices/Export.h>

namespace Kavra::Devices {

/// What a texture is for, as `IImageFormatHandler::ChooseFormat` is told.
enum ETextureUsage : int {
    kUsageTexture2D = 8,
    kUsageTextureCube = 16,
    kUsageTextureVolume = 32,
};

/// Implemented by the host, borrowed by a module for one call. Slots: 0 destructor, 1 `Delete`, 2 `ChooseFormat`.
class KAVRA_DEVICES_API IImageFormatHandler : public IDelete {
public:
    ~IImageFormatHandler() override;

    /// The format in which to load a file whose own format is `fileFormat`, for a use out of `ETextureUsage`.
    /// `kUnknown` means the file's own.
    virtual EFormat ChooseFormat(EFormat fileFormat, int usage) = 0;
};

}  // namespace Kavra::Devices
