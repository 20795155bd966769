/// How DDS files store pixels: each layout, which format it is delivered in, and how a row gets there.
#pragma once

#include "common/dds/DdsCodeTable.h"
#include "common/dds/DdsHeader.h"

#include <kavra/devices/EFormat.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace Kavra::Devices::Dds {

struct StoredLayout;

/// Turns the stored bytes of one row into `width` pixels of the layout's format at `out`.
using WidenRow = void (*)(const StoredLayout& layout, std::span<const unsigned char> row, unsigned char* out,
                          std::size_t width);

/// The bits of each channel within a stored pixel, red first; 0 for a channel that is not stored.
using Masks = std::array<std::uint64_t, 4>;

struct StoredLayout {
    EFormat format = kUnknown;
    bool hasAlpha = false;
    StoredUnit unit = {};
    WidenRow widen = nullptr;         ///< null: what is stored is what is delivered
    Masks masks = {};                 ///< for the layouts that are widened by masks
    std::uint8_t signedChannels = 0;  ///< bit c: channel c of `masks` is in two's complement

    bool IsCompressed() const { return unit.IsBlock(); }
};

/// The layout that a header describes; nothing when it is none that is known.
std::optional<StoredLayout> FindLayout(const Header& header);

/// Sets the pixel format of a header, legacy where the format has a legacy form that every reader knows, otherwise
/// with the DX10 extension. False for formats that DDS cannot hold.
bool DescribeFormat(EFormat format, Header& header);

}  // namespace Kavra::Devices::Dds
