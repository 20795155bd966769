/// Which way of loading or describing is tried when.
#pragma once

#include "common/LoadRequest.h"

#include <kavra/devices/ImageDesc.h>
#include <kavra/devices/ImageDescription.h>

namespace Kavra::Devices {

/// What `IImageHandler::LoadTexture` does. Throws what the allocator and the libraries throw.
IMemoryWrapper<void>* LoadTexture(ImageDescription& desc, const KString& path, const LoadRequest& request);

/// What `IImageHandler::GetImageDesc` does. Throws what the allocator and the libraries throw.
ImageDesc* DescribeImage(const KString& path);

}  // namespace Kavra::Devices
