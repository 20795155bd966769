#include "FormatNames.h"

#include <algorithm>
#include <charconv>

namespace Kavra::App {
namespace {

using namespace Devices;

bool EqualIgnoringCase(std::string_view a, std::string_view b) {
    constexpr auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; };
    return std::ranges::equal(a, b, {}, lower, lower);
}

}  // namespace

std::vector<EFormat> AllFormats() {
    std::vector<EFormat> formats = {kUnknown};
    for (EFormat format = NextFormat(kUnknown); format != kUnknown; format = NextFormat(format))
        formats.push_back(format);
    return formats;
}

FormatFacts Facts(EFormat format) {
    FormatFacts facts;
    if (!GetFormatFacts(format, facts)) (void)GetFormatFacts(kUnknown, facts);
    return facts;
}

EFormat FormatOf(ElementType element, int channels) {
    switch (element) {
        case ElementType::kUInt8:
            return channels == 1 ? kL8 : channels == 2 ? kUnknown : kR8G8B8A8;
        case ElementType::kUInt16:
            return channels == 1 ? kL16 : channels == 2 ? kR16G16 : kR16G16B16A16;
        case ElementType::kHalf:
            return channels == 1 ? kR16F : channels == 2 ? kR16G16F : kR16G16B16A16F;
        case ElementType::kFloat:
            return channels == 1 ? kR32F : channels == 2 ? kR32G32F : kR32G32B32A32F;
        case ElementType::kNone:
            return kUnknown;
    }
    return kUnknown;
}

std::optional<EFormat> ParseFormat(std::string_view text) {
    int number = -1;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    const bool isNumber = error == std::errc() && end == text.data() + text.size();
    for (const EFormat format : AllFormats()) {
        const FormatFacts facts = Facts(format);
        const std::string_view shortName = facts.shortName;
        if (isNumber
                ? format == number
                : EqualIgnoringCase(text, facts.name) || (!shortName.empty() && EqualIgnoringCase(text, shortName))) {
            return format;
        }
    }
    return std::nullopt;
}

std::string Enumerator(EFormat format) {
    FormatFacts facts;
    return GetFormatFacts(format, facts) ? facts.name : std::to_string(static_cast<int>(format));
}

}  // namespace Kavra::App
