/// The order of channels that a KTX2 file says beside its format, for the formats that Vulkan does not have.
#pragma once

#include "common/dds/DdsTexture.h"

#include <kavra/devices/EFormat.h>

#include <string>
#include <string_view>

namespace Kavra::Devices::Ktx {

/// Makes of red what the order says: grey ("rrr1"), alpha ("000r"), grey and alpha ("rrrg"); and of an alpha none where
/// it is said to be 1. False for all other orders than the usual one, which change what pixels are.
bool ApplySwizzle(std::string_view swizzle, Dds::StoredTexture& texture);

/// The order that says what `format` is beyond its number, and an alpha that is none; empty where there is nothing to
/// say.
std::string_view SwizzleOf(EFormat format, bool isOpaque);

/// For messages: what is no letter of an order is a question mark.
std::string PrintableSwizzle(std::string_view swizzle);

}  // namespace Kavra::Devices::Ktx
