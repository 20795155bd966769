#include "readers/TextScanner.h"

#include <algorithm>
#include <clocale>
#include <cstdlib>
#include <limits>
#include <string>

namespace Kavra::Devices {

namespace {

constexpr std::string_view kWhiteSpace = " \t\n\v\f\r";

bool IsDigit(char character) {
    return character >= '0' && character <= '9';
}

char Upper(char character) {
    return character >= 'a' && character <= 'z' ? static_cast<char>(character - 'a' + 'A') : character;
}

std::string_view WithoutLeadingSpace(std::string_view text) {
    return text.substr(std::min(text.find_first_not_of(kWhiteSpace), text.size()));
}

/// The locale whose decimals begin with a point, whatever the host has set.
locale_t PlainLocale() {
    static const locale_t locale = newlocale(LC_ALL_MASK, "C", nullptr);
    return locale;
}

}  // namespace

bool EqualNoCase(std::string_view a, std::string_view b) {
    return std::ranges::equal(a, b, {}, Upper, Upper);
}

std::optional<std::int32_t> TextScanner::Integer() {
    std::string_view text = WithoutLeadingSpace(mRest);
    const bool negative = text.starts_with('-');
    if (negative || text.starts_with('+')) text.remove_prefix(1);
    if (text.empty() || !IsDigit(text.front())) return std::nullopt;

    constexpr std::int64_t kMax = std::numeric_limits<std::int32_t>::max();
    std::int64_t number = 0;
    for (; !text.empty() && IsDigit(text.front()); text.remove_prefix(1)) {
        number = std::min(number * 10 + (text.front() - '0'), kMax + 1);
    }
    mRest = text;
    return static_cast<std::int32_t>(negative ? -number : std::min(number, kMax));
}

std::optional<double> TextScanner::Real() {
    TextScanner ahead(*this);
    const std::optional<std::string_view> word = ahead.Word(mRest.size());
    if (!word) return std::nullopt;
    const std::string terminated(*word);
    char* end = nullptr;
    const double number = strtod_l(terminated.c_str(), &end, PlainLocale());
    const auto taken = static_cast<std::size_t>(end - terminated.c_str());
    if (taken == 0) return std::nullopt;
    mRest = WithoutLeadingSpace(mRest).substr(taken);
    return number;
}

std::optional<std::string_view> TextScanner::Word(std::size_t maximum) {
    const std::string_view text = WithoutLeadingSpace(mRest);
    const std::size_t length = std::min({text.find_first_of(kWhiteSpace), text.size(), maximum});
    if (length == 0) return std::nullopt;
    mRest = text.substr(length);
    return text.substr(0, length);
}

std::optional<std::string_view> TextScanner::Line(std::size_t maximum) {
    const std::string_view text = WithoutLeadingSpace(mRest);
    std::string_view line = text.substr(0, text.find('\n'));
    if (line.empty()) return std::nullopt;
    mRest = text.substr(line.size());
    line = line.substr(0, line.find_last_not_of(kWhiteSpace) + 1);
    return line.substr(0, maximum);
}

}  // namespace Kavra::Devices
