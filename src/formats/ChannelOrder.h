/// The order of the colour channels in 8-bit colour formats.
#pragma once

#include <kavra/devices/EFormat.h>

namespace Kavra::Devices {

constexpr bool IsRedFirst(EFormat format) {
    return format == kR8G8B8A8 || format == kR8G8B8X8;
}

constexpr bool IsBlueFirst(EFormat format) {
    return format == kB8G8R8A8 || format == kB8G8R8X8;
}

}  // namespace Kavra::Devices
