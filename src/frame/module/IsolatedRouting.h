/// Operations that the host wants isolated, handed to its decoder.
#pragma once

#include "common/LoadRequest.h"

#include <kavra/devices/IImageInspector.h>
#include <kavra/devices/ImageDesc.h>
#include <kavra/devices/ImageDescription.h>
#include <kavra/objects/IMemoryWrapper.h>

#include <optional>

namespace Kavra::Devices {

/// Whether the thread's preferences ask for it, of a host that has a decoder.
bool WantsIsolation(const LoadPreferences& preferences);

/// The answers of `LoadTexture`, `GetImageDesc` and `Inspect`, where `WantsIsolation`.
IMemoryWrapper<void>* LoadTextureIsolated(ImageDescription& desc, const KString& path, const LoadRequest& request);
ImageDesc* DescribeImageIsolated(const KString& path);
IFileInspection* InspectFileIsolated(const KString& path);

}  // namespace Kavra::Devices
