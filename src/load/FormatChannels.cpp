#include "load/FormatChannels.h"

#include "formats/PixelFormatMapping.h"

#include <array>
#include <string_view>

namespace Kavra::Devices {

const char* TypeName(OIIO::TypeDesc type) {
    switch (type.basetype) {
        case OIIO::TypeDesc::UINT8:
            return "uint8";
        case OIIO::TypeDesc::INT8:
            return "int8";
        case OIIO::TypeDesc::UINT16:
            return "uint16";
        case OIIO::TypeDesc::INT16:
            return "int16";
        case OIIO::TypeDesc::UINT32:
            return "uint32";
        case OIIO::TypeDesc::INT32:
            return "int32";
        case OIIO::TypeDesc::HALF:
            return "half";
        case OIIO::TypeDesc::FLOAT:
            return "float";
        case OIIO::TypeDesc::DOUBLE:
            return "double";
        default:
            return "";
    }
}

std::string_view ChannelLetters(const Common::PixelFormat& format) {
    if (format.IsAlphaOnly()) return "A";
    constexpr std::array<std::string_view, 5> kNames = {"", "Y", "RG", "RGB", "RGBA"};
    if (format.channels == 4 && !format.hasAlpha) return format.blueFirst ? "BGR" : "RGB";
    if (format.blueFirst) return "BGRA";
    return kNames[static_cast<std::size_t>(format.channels)];
}

void SetChannels(PartFacts& facts, const Common::PixelFormat& format) {
    FilePart& part = facts.part;
    for (const char letter : ChannelLetters(format))
        facts.channels.push_back({std::string(1, letter), TypeName(LibraryType(format.element))});
    const bool isFloat = format.element == ElementType::kHalf || format.element == ElementType::kFloat;
    part.elements = 1;
    part.bitsPerSample = 8 * Common::BytesOf(format.element);
    part.alpha = format.hasAlpha && !format.IsAlphaOnly() ? kAlphaStraight : kAlphaNone;
    part.transfer = isFloat ? kTransferLinear : kTransferSrgb;
    part.gamma = isFloat ? 1 : 2.2;
}

}  // namespace Kavra::Devices
