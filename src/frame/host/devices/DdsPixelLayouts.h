/// The pixel layouts of DDS files: how each is stored, which format it is delivered in, and how a row gets there.
#pragma once

#include "frame/host/devices/DdsHeader.h"

#include <kavra/devices/EFormat.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace Kavra::Devices::Dds {

struct PixelLayout;

/// Turns the stored bytes of one row into `width` pixels of the layout's format at `out`.
using WidenRow = void (*)(const PixelLayout& layout, std::span<const std::uint8_t> row, std::uint8_t* out,
                          std::size_t width);

/// The bits of each channel within a stored pixel, red first; 0 for a channel that is not stored.
using Masks = std::array<std::uint64_t, 4>;

struct PixelLayout {
    EFormat format = kUnknown;
    bool hasAlpha = false;
    std::uint8_t unitBytes = 0;       ///< stored bytes of the smallest piece: a pixel, a pair of pixels or a block
    std::uint8_t unitWidth = 1;       ///< pixels across such a piece
    std::uint8_t unitHeight = 1;      ///< pixels down
    WidenRow widen = nullptr;         ///< null: what is stored is what is delivered
    Masks masks = {};                 ///< for the layouts that are widened by masks
    std::uint8_t signedChannels = 0;  ///< bit c: channel c of `masks` is in two's complement

    bool IsCompressed() const { return unitHeight > 1; }
};

/// The layout that a header describes; nothing when it is none that is known.
std::optional<PixelLayout> FindLayout(const Header& header);

/// Sets the pixel format of a header, legacy where the format has a legacy form that every reader knows, otherwise
/// with the DX10 extension. False for formats that DDS cannot hold.
bool DescribeFormat(EFormat format, Header& header);

}  // namespace Kavra::Devices::Dds
