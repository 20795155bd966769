/// Any bytes as an OpenEXR file: read whole or refused, never anything else.
#include "FuzzFile.h"

#include <kavra/devices/EXRHandler.h>
#include <kavra/objects/ObjModel.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <span>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using Kavra::Devices::EXRHandler;
    Kavra::Objects::ObjModel::SetBlockCeiling(std::size_t{64} << 20);
    const Kavra::Fuzz::FuzzFile file(std::span(data, size), ".exr");
    const bool preferred = EXRHandler::IsPreferedHandler(file.Name());
    if (preferred != (size >= 4 && std::memcmp(data, "\x76\x2F\x31\x01", 4) == 0)) std::abort();

    EXRHandler handler(true);
    const bool read = handler.ReadFromFile(file.Name());
    if (read != (handler.internalBuffer() != nullptr) || (read && !preferred)) std::abort();
    if (!read) return 0;
    // Every float is there to be read.
    const std::size_t channels = handler.supportsAlpha() ? 4 : 3;
    const std::size_t count = static_cast<std::size_t>(handler.width()) * static_cast<std::size_t>(handler.height());
    volatile float last = 0;
    for (std::size_t i = 0; i < count * channels; ++i)
        last = handler.internalBuffer()[i];
    static_cast<void>(last);
    return 0;
}
