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
