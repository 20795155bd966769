/// Running the PCX reader in either reading.
#pragma once

#include "readers/Decode.h"
#include "readers/pcx/PcxBytes.h"
#include "readers/pcx/PcxReader.h"

#include <string>

namespace Kavra::Tests {

/// What a reading makes of a file, and what it says of the other one.
struct PcxShown : Decoded {
    std::string difference;  ///< empty where there is none
};

inline PcxShown ShowPcx(const ByteBuilder& file, Devices::ELegacyReading reading, int frame = 0) {
    const TemporaryFolder folder;
    const MessageRecorder recorder;
    PcxShown shown;
    Devices::PCXReader reader(reading);
    reader.LookForDifferences();
    shown.opened = reader.Open(Wide(folder.Write("file", file.Bytes()))) && reader.SelectFrame(frame);
    if (shown.opened) ReadFrame(reader, frame, shown);
    shown.messages = recorder.Texts();
    if (reader.GetDifference() != nullptr) shown.difference = reader.GetDifference();
    return shown;
}

inline PcxShown InCommon(const ByteBuilder& file, int frame = 0) {
    return ShowPcx(file, Devices::kLegacyCommon, frame);
}

inline PcxShown InContract(const ByteBuilder& file) {
    return ShowPcx(file, Devices::kLegacyContract);
}

/// Opaque pixels of these colours: 0xRRGGBB each.
inline Bytes Colours(std::initializer_list<unsigned> colours) {
    Bytes pixels;
    for (const unsigned colour : colours) {
        pixels.insert(pixels.end(), {static_cast<unsigned char>(colour >> 16), static_cast<unsigned char>(colour >> 8),
                                     static_cast<unsigned char>(colour), 255});
    }
    return pixels;
}

/// Puts colours from entry `first` of the header's palette on.
inline void SetColours(Devices::PcxHeader& header, std::size_t first, std::initializer_list<unsigned> colours) {
    auto next = header.palette.begin() + static_cast<std::ptrdiff_t>(3 * first);
    for (const unsigned colour : colours) {
        *next++ = static_cast<unsigned char>(colour >> 16);
        *next++ = static_cast<unsigned char>(colour >> 8);
        *next++ = static_cast<unsigned char>(colour);
    }
}

}  // namespace Kavra::Tests
