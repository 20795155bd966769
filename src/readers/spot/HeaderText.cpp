#include "readers/spot/HeaderText.h"

#include <algorithm>

namespace Kavra::Devices {

namespace {

/// The text from the keyword on.
std::optional<std::string_view> Find(std::string_view text, std::string_view keyword) {
    for (;;) {
        if (EqualNoCase(text.substr(0, keyword.size()), keyword)) return text;
        const std::size_t feed = text.find('\n');
        if (feed == std::string_view::npos) break;
        text.remove_prefix(feed + 1);
    }
    const std::size_t inside = text.find(keyword);
    return inside == std::string_view::npos ? std::nullopt : std::optional(text.substr(inside));
}

}  // namespace

std::optional<TextScanner> HeaderText::After(std::string_view keyword) const {
    const std::optional<std::string_view> found = Find(mText, keyword);
    if (!found || found->size() == keyword.size()) return std::nullopt;
    const std::string_view value = found->substr(keyword.size() + 1);
    return TextScanner(value.substr(std::min(value.find_first_not_of(' '), value.size())));
}

std::optional<std::int32_t> HeaderText::Integer(std::string_view keyword) const {
    return After(keyword).and_then([](TextScanner scanner) { return scanner.Integer(); });
}

std::optional<double> HeaderText::Real(std::string_view keyword) const {
    return After(keyword).and_then([](TextScanner scanner) { return scanner.Real(); });
}

std::optional<std::string_view> HeaderText::Word(std::string_view keyword, std::size_t maximum) const {
    return After(keyword).and_then([maximum](TextScanner scanner) { return scanner.Word(maximum); });
}

std::optional<std::string_view> HeaderText::Line(std::string_view keyword, std::size_t maximum) const {
    return After(keyword).and_then([maximum](TextScanner scanner) { return scanner.Line(maximum); });
}

}  // namespace Kavra::Devices
