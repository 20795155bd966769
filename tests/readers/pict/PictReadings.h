/// Pictures in both readings.
#pragma once

#include "readers/Decode.h"
#include "readers/pict/PictMaker.h"
#include "readers/pict/PictReader.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>

namespace Kavra::Tests {

inline Decoded DecodePictAs(const ByteBuilder& file, Devices::ELegacyReading reading, std::string* note = nullptr) {
    const TemporaryFolder folder;
    const auto path = folder.Write("file", file.Bytes());
    const MessageRecorder recorder;
    Decoded decoded;
    Devices::PictReader reader(reading);
    if (note != nullptr) reader.LookForDifferences();
    decoded.opened = reader.Open(Wide(path));
    if (decoded.opened) ReadFrame(reader, 0, decoded);
    decoded.messages = recorder.Texts();
    if (note != nullptr && reader.GetDifference() != nullptr) *note = reader.GetDifference();
    return decoded;
}

inline Decoded DecodeCommon(const ByteBuilder& file) {
    return DecodePictAs(file, Devices::kLegacyCommon);
}

/// What the contract's reading says of how it differs; empty where it says nothing.
inline std::string NoteOf(const ByteBuilder& file) {
    std::string note;
    DecodePictAs(file, Devices::kLegacyContract, &note);
    return note;
}

/// The pixels from three bytes each, opaque.
inline Bytes Opaque(const std::vector<std::array<unsigned char, 3>>& pixels) {
    Bytes block;
    for (const auto& [red, green, blue] : pixels)
        block.insert(block.end(), {red, green, blue, 255});
    return block;
}

/// Their red alone, of grey pixels.
inline Bytes Reds(const Decoded& decoded) {
    Bytes reds;
    for (std::size_t at = 0; at < decoded.block.size(); at += 4)
        reds.push_back(decoded.block[at]);
    return reds;
}

/// Rows of up to 8 one-bit pixels, set where a character is '#'.
inline PictMap Drawing(const std::vector<std::string>& rows, unsigned mode = 0) {
    PictMap map{
        .bounds = {0, 0, static_cast<int>(rows.size()), static_cast<int>(rows[0].size())}, .mode = mode, .rowBytes = 2};
    for (const std::string& row : rows) {
        unsigned bits = 0;
        for (std::size_t x = 0; x < row.size(); ++x)
            bits |= row[x] == '#' ? 0x8000U >> x : 0U;
        map.data.push_back(static_cast<unsigned char>(bits >> 8));
        map.data.push_back(static_cast<unsigned char>(bits & 0xFF));
    }
    return map;
}

/// A pixel map of 8 bits, up to 7 columns wide: grey i has the value i.
inline PictMap GreyMap(int left, int top, const std::vector<Bytes>& rows, unsigned mode = 0) {
    std::vector<unsigned> values(256);
    for (unsigned i = 0; i < values.size(); ++i)
        values[i] = i;
    PictMap map{.bounds = {top, left, top + static_cast<int>(rows.size()), left + static_cast<int>(rows[0].size())},
                .mode = mode,
                .rowBytes = 0x8000 + static_cast<unsigned>(rows[0].size()),
                .colours = Greys(values)};
    for (const Bytes& row : rows)
        map.data.insert(map.data.end(), row.begin(), row.end());
    return map;
}

}  // namespace Kavra::Tests
