/// Which way of loading or describing is tried when.
#pragma once

#include "common/HostExtras.h"
#include "common/LoadRequest.h"
#include "readers/FileTypeDetection.h"

#include <kavra/devices/EXRHandler.h>
#include <kavra/devices/ImageDesc.h>
#include <kavra/devices/ImageDescription.h>

namespace Kavra::Devices {

/// What `IImageHandler::LoadTexture` does. Throws what the allocator and the libraries throw.
IMemoryWrapper<void>* LoadTexture(ImageDescription& desc, const KString& path, const LoadRequest& request);

/// Whether the host's OpenEXR reader wants a file.
inline bool PrefersExrHandler(const KString& path, const DetectedFile& file) {
    return file.start ? Common::PrefersExrHandler(path, *file.start) : EXRHandler::IsPreferedHandler(path);
}

/// What `IImageHandler::GetImageDesc` does. Throws what the allocator and the libraries throw.
ImageDesc* DescribeImage(const KString& path);

}  // namespace Kavra::Devices
