/// Data format descriptors: what pixels and blocks are made of
/// (https://registry.khronos.org/DataFormat/specs/1.3/dataformat.1.3.html, the basic descriptor block).
#pragma once

#include <kavra/devices/EFormat.h>

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace Kavra::Devices::Ktx {

/// What a descriptor says beyond the format.
struct ColourMeaning {
    bool isSrgb = false;
    bool isPremultiplied = false;
    bool isOpaque = false;  ///< of `kBC1` alone: the blocks have no alpha
};

/// The descriptor of pixels or blocks of `format`, its total size first. Grey and a lone alpha are red, X is alpha. Empty
/// for formats that are neither.
std::vector<unsigned char> ComposeDescriptor(EFormat format, const ColourMeaning& meaning);

/// What a descriptor says; nothing where its sizes contradict each other or it begins with no basic block. What it says
/// of samples is left to the format.
std::optional<ColourMeaning> ParseDescriptor(std::span<const unsigned char> bytes);

}  // namespace Kavra::Devices::Ktx
