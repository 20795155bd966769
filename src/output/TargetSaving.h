/// Writing a render target to a file.
#pragma once

#include <kavra/devices/IImageHandler.h>

namespace Kavra::Devices {

/// What `IImageHandler::SaveTarget` does; the file is written by the `SaveTexture` of `handler`.
bool SaveTarget(IImageHandler& handler, const KString& path, ATarget* target, bool stretch);

}  // namespace Kavra::Devices
