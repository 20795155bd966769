/// Pictures in memory at another size, by the resize service.
#pragma once

#include "LoadOptions.h"
#include "Messages.h"

#include <kavra/devices/IImageHandler.h>

namespace Kavra::App {

/// One call of the resize service for a flat picture that `desc` describes; `block` is null when it gave none.
LoadedImage CallResize(Devices::IImageHandler& handler, const Devices::ImageDescription& desc, const void* data,
                       vec2<int> size, Devices::EResizeMethod method, Devices::EImageFilterType filter);

/// A picture resampled, each face or slice by itself. Messages go to the report, and a failure with its reason; `block`
/// is then null.
LoadedImage Resampled(Devices::IImageHandler& handler, Report& report, const LoadedImage& image, vec2<long long> size,
                      const Resampling& resampling);

/// A picture as the target says: resampled where its size is another, and its middle cut out. Fails as `Resampled`.
LoadedImage BroughtTo(Devices::IImageHandler& handler, Report& report, LoadedImage image, const TargetSize& target,
                      const Resampling& resampling);

}  // namespace Kavra::App
