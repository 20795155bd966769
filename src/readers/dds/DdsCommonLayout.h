/// What the pixels of a DDS file are by the published descriptions, kind by kind, for the common reading.
///
/// - Microsoft: "Programming Guide for DDS" (https://learn.microsoft.com/windows/win32/direct3ddds/dx-graphics-dds-pguide),
///   D3DFORMAT, DXGI_FORMAT, and the Direct3D 11 functional specification, "Data Conversion" and "Block Compression".
/// - Where these say what a shader samples and not what a picture shows, what programs agree on: one channel is grey, two
///   are red and green, signed values lie around the middle of the range.
#pragma once

#include "common/blocks/BlockDecoders.h"
#include "common/dds/DdsCodes.h"
#include "common/dds/DdsHeader.h"
#include "common/dds/DdsShape.h"
#include "common/dds/DdsStoredLayouts.h"

#include <kavra/devices/Export.h>

#include <cstddef>
#include <cstdint>
#include <optional>

namespace Kavra::Devices::Dds {

inline constexpr std::size_t kPaletteBytes = 1024;  ///< 256 colours: red, green, blue, alpha

struct CommonLayout {
    StoredLayout pixels;                        ///< what is stored, what is delivered, and the way where it is by rows
    Common::DecodeBlock decodeBlock = nullptr;  ///< of blocks
    bool hasPalette = false;                    ///< which stands before the pixels
    int colourChannels = 3;                     ///< that are stored: 1 is grey
    bool isPremultiplied = false;               ///< colours are multiplied by their alpha
    bool dropsAlpha = false;                    ///< what is stored as alpha is none
    bool isLeftToLibrary = false;               ///< the image library shows these pixels right
    const char* difference =
        nullptr;  ///< what the contract's reading does otherwise (`ILegacyObserver`); null: nothing
};

/// The layout that a header describes, also where its flags miss; nothing when it is none that is known.
std::optional<CommonLayout> FindCommonLayout(const Header& header);

}  // namespace Kavra::Devices::Dds
