/// What the codes of DDS headers stand for: one table of DXGI numbers, and the older codes by the number that means
/// the same.
#pragma once

#include "common/PixelFormats.h"
#include "common/dds/DdsCodes.h"

#include <kavra/devices/EFormat.h>

#include <cstdint>
#include <optional>

namespace Kavra::Devices::Dds {

/// The smallest piece that pixels are stored in: a pixel, a pair of pixels or a block.
struct StoredUnit {
    std::uint8_t bytes = 0;
    std::uint8_t width = 1;   ///< pixels across
    std::uint8_t height = 1;  ///< pixels down

    constexpr bool IsBlock() const { return height > 1; }
    bool operator==(const StoredUnit&) const = default;
};

constexpr StoredUnit PixelUnit(std::uint8_t bytes) {
    return {.bytes = bytes};
}

/// Two pixels that share two of three channels.
constexpr StoredUnit PairUnit() {
    return {.bytes = 4, .width = 2};
}

constexpr StoredUnit BlockUnit(std::uint8_t bytes) {
    return {.bytes = bytes, .width = 4, .height = 4};
}

/// A block or pixel of `format`; of 0 bytes where the format has neither.
constexpr StoredUnit UnitOf(EFormat format) {
    const Common::PixelFormat& facts = Common::FactsOf(format);
    const bool isBlock = facts.bytesPerBlock > 0;
    return isBlock ? BlockUnit(static_cast<std::uint8_t>(facts.bytesPerBlock))
                   : PixelUnit(static_cast<std::uint8_t>(facts.BytesPerPixel()));
}

struct DxgiRow {
    Dxgi code;
    StoredUnit unit;
    EFormat format = kUnknown;  ///< the one whose pixels these are byte for byte; `kUnknown` if none
    bool hasAlpha = false;
    bool isSrgb = false;  ///< the number says that colours are on the sRGB curve
};

/// The row of a number. Null for one that is not known.
const DxgiRow* FindDxgi(std::uint32_t code);

/// The row of the number that pixels of `format` are written as. Null if there is none.
const DxgiRow* FindDxgiOf(EFormat format);

/// The row of the number that says sRGB of pixels of `format`, plain or sRGB. Null if there is none.
const DxgiRow* FindSrgbDxgiOf(EFormat format);

/// The number that means the same as a legacy code; `kDxgiUnknown` if none does.
Dxgi DxgiOfLegacy(std::uint32_t fourCC);

/// The legacy code that a number is written as where there is one.
std::optional<LegacyCode> LegacyOfDxgi(Dxgi code);

/// A pixel of so many bits. Nothing unless they are one to four whole bytes.
std::optional<StoredUnit> UnitOfBits(std::uint32_t bitCount);

}  // namespace Kavra::Devices::Dds
