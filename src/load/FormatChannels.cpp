#include "load/FormatChannels.h"

#include <array>
#include <string_view>
#include <utility>

namespace Kavra::Devices {

namespace {

const char* TypeName(Common::ElementType element) {
    switch (element) {
        case Common::ElementType::kUInt8:
            return "uint8";
        case Common::ElementType::kUInt16:
            return "uint16";
        case Common::ElementType::kHalf:
            return "half";
        case Common::ElementType::kFloat:
            return "float";
        default:
            return "";
    }
}

}  // namespace

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
        facts.channels.push_back({std::string(1, letter), TypeName(format.element)});
    const bool isFloat = format.element == ElementType::kHalf || format.element == ElementType::kFloat;
    part.elements = 1;
    part.bitsPerSample = 8 * Common::BytesOf(format.element);
    part.alpha = format.hasAlpha && !format.IsAlphaOnly() ? kAlphaStraight : kAlphaNone;
    part.transfer = isFloat ? kTransferLinear : kTransferSrgb;
    part.gamma = isFloat ? 1 : 2.2;
}

}  // namespace Kavra::Devices
