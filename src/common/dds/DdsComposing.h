/// The headers of DDS files that are written.
#pragma once

#include "common/dds/DdsHeader.h"
#include "common/dds/DdsShape.h"
#include "common/dds/DdsStoredLayouts.h"

#include <kavra/devices/EFormat.h>

#include <cstdint>
#include <optional>

namespace Kavra::Devices::Dds {

/// What a header says beside a format and a shape. As it stands: nothing, and old programs get an old header where there
/// is one.
struct Extras {
    std::uint32_t elements = 0;  ///< of an array; 0: no array
    AlphaMode alpha = kAlphaModeUnknown;
    bool isSrgb = false;      ///< also where the format does not say so
    bool isExtended = false;  ///< a number of DXGI also where an older code says as much

    bool operator==(const Extras&) const = default;
};

/// The header of a texture: legacy where that says everything that every reader knows, otherwise with the DX10
/// extension. Nothing for what DDS cannot say.
///
/// In the extension grey is red, and `kR8G8B8X8` is `kR8G8B8A8` whose alpha is opaque. What alpha is, is left out where a
/// format without any has no number.
std::optional<Header> DescribeTexture(EFormat format, const Shape& shape, const Extras& extras = {});

/// The layout that `format` is written in; nothing where DDS cannot hold it.
std::optional<StoredLayout> LayoutToWrite(EFormat format);

}  // namespace Kavra::Devices::Dds
