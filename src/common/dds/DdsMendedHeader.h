/// DDS headers that leave out what others say.
#pragma once

#include "common/dds/DdsHeader.h"

#include <optional>

namespace Kavra::Devices::Dds {

/// The header with the flags that its other fields ask for, and masks for the numbers of D3DFORMAT that mean them. One
/// with the DX10 extension stays as it is.
Header Mended(Header header);

/// The number that some writers' own codes mean, where there is no legacy code for it. Nothing for all other headers.
std::optional<Dxgi> WritersNumber(const Header& header);

}  // namespace Kavra::Devices::Dds
