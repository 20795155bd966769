/// Running a bare reader in either reading.
#pragma once

#include "readers/Decode.h"

#include <kavra/devices/LegacyReading.h>

#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

namespace Kavra::Tests {

/// What a reader makes of a file in one reading, and what it says of the other one: empty where that is nothing.
struct Read : Decoded {
    std::string note;
};

template <class Reader>
Read ReadIn(Devices::ELegacyReading reading, const std::filesystem::path& path, int frame = 0) {
    const MessageRecorder recorder;
    Read result;
    Reader reader(reading);
    reader.LookForDifferences();
    result.opened = reader.Open(Wide(path));
    if (result.opened) ReadFrame(reader, frame, result);
    result.messages = recorder.Texts();
    if (reader.GetDifference() != nullptr) result.note = reader.GetDifference();
    return result;
}

/// The elements of a block.
template <class Element>
std::vector<Element> ElementsOf(const Decoded& decoded) {
    std::vector<Element> elements(decoded.block.size() / sizeof(Element));
    if (!elements.empty()) std::memcpy(elements.data(), decoded.block.data(), elements.size() * sizeof(Element));
    return elements;
}

}  // namespace Kavra::Tests
