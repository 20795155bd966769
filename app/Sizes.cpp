#include "Sizes.h"

#include <kavra/devices/AFormatConvertor.h>
#include <kavra/objects/ObjModel.h>

#include <CLI/Error.hpp>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <format>
#include <limits>

namespace Kavra::App {
namespace {

constexpr long long kMinInt = std::numeric_limits<int>::min();
constexpr long long kMaxInt = std::numeric_limits<int>::max();

/// `Count` numbers with one of `separators` between each two, and nothing else. What is too large stays too large.
template <std::size_t Count>
std::optional<std::array<long long, Count>> ParseNumbers(std::string_view text, std::string_view separators) {
    std::array<long long, Count> numbers{};
    const char* at = text.data();
    const char* const end = at + text.size();
    for (std::size_t i = 0; i < Count; ++i) {
        if (i > 0) {
            if (at == end || !separators.contains(*at)) return std::nullopt;
            ++at;
        }
        const auto [next, error] = std::from_chars(at, end, numbers[i]);
        if (error == std::errc::result_out_of_range) {
            numbers[i] = *at == '-' ? kMinInt - 1 : kMaxInt + 1;
        } else if (error != std::errc()) {
            return std::nullopt;
        }
        at = next;
    }
    return at == end ? std::optional(numbers) : std::nullopt;
}

bool IsTooLarge(long long number) {
    return number < kMinInt || number > kMaxInt;
}

}  // namespace

std::pair<int, int> ParsePair(const std::string& text, const std::string& option, int smallest,
                              const PairWords& words) {
    const auto numbers = ParseNumbers<2>(text, "xX");
    if (!numbers) {
        throw CLI::ValidationError(
            option, std::format("{} is no {}; write {}, as in {}", text, words.what, words.form, words.example));
    }
    if (std::ranges::min(*numbers) < smallest) {
        throw CLI::ValidationError(option, std::format("{} is too small; each number is {} or more", text, smallest));
    }
    if (std::ranges::any_of(*numbers, IsTooLarge)) {
        throw CLI::ValidationError(option, std::format("{} is too large; each number is at most {}", text, kMaxInt));
    }
    return {static_cast<int>((*numbers)[0]), static_cast<int>((*numbers)[1])};
}

std::pair<int, int> ParseSize(const std::string& text, int smallest, const std::string& option) {
    return ParsePair(text, option, smallest, {"size", "WIDTHxHEIGHT", "640x480"});
}

std::pair<int, int> ParseFit(const std::string& text) {
    const std::pair<int, int> size = ParseSize(text, 0, "--fit");
    if (size.first == 0 && size.second == 0) {
        throw CLI::ValidationError("--fit", text + " is no box; one of the numbers is 1 or more");
    }
    return size;
}

long long ParsePercentage(const std::string& text, const std::string& option) {
    constexpr double kMillionths = 10'000;  // in a hundredth
    constexpr double kMin = 0.0001, kMax = 100'000;
    double percent = 0;
    const char* const end = text.data() + text.size();
    const auto [next, error] = std::from_chars(text.data(), end, percent);
    if (error == std::errc::invalid_argument || std::string_view(next, end) != "%" || std::isnan(percent)) {
        throw CLI::ValidationError(option, text + " is no percentage; write as in 50%");
    }
    if (error == std::errc::result_out_of_range || percent > kMax || percent < kMin) {
        throw CLI::ValidationError(option, text + " is no percentage from 0.0001% to 100000%");
    }
    return std::llround(percent * kMillionths);
}

Rect ParseRect(const std::string& text, const std::string& option) {
    const auto numbers = ParseNumbers<4>(text, ",");
    if (!numbers) {
        throw CLI::ValidationError(option, text + " is no rectangle; write X,Y,WIDTH,HEIGHT, as in 10,20,640,480");
    }
    const auto& [x, y, width, height] = *numbers;
    if (std::ranges::any_of(*numbers, IsTooLarge)) {
        throw CLI::ValidationError(option, std::format("{} is too large; each number is at most {}", text, kMaxInt));
    }
    if (width < 1 || height < 1) {
        throw CLI::ValidationError(option, text + " is too small; width and height are 1 or more");
    }
    return {static_cast<int>(x), static_cast<int>(y), static_cast<int>(width), static_cast<int>(height)};
}

std::optional<std::pair<int, int>> ParsePosition(std::string_view text) {
    const auto numbers = ParseNumbers<2>(text, ",");
    if (!numbers || std::ranges::any_of(*numbers, IsTooLarge)) return std::nullopt;
    return std::pair(static_cast<int>((*numbers)[0]), static_cast<int>((*numbers)[1]));
}

std::uint64_t ParseAmount(const std::string& text, std::uint64_t kilo, const std::string& option) {
    constexpr std::string_view kUnits = "KMG";
    std::uint64_t amount = 0;
    const char* const end = text.data() + text.size();
    const auto [next, error] = std::from_chars(text.data(), end, amount);
    const std::string_view unit(next, end);
    const std::size_t power =
        unit.empty() ? 0 : kUnits.find(static_cast<char>(unit.front() & ~0x20)) + 1;  // 0 for what is no unit
    bool fits = error == std::errc() && amount > 0 && unit.size() <= 1 && (unit.empty() || power > 0);
    for (std::size_t step = 0; fits && step < power; ++step) {
        fits = amount <= std::numeric_limits<std::uint64_t>::max() / kilo;
        amount *= kilo;
    }
    if (!fits) throw CLI::ValidationError(option, text + " is no amount; write a number, as in 500M or 4G");
    return amount;
}

std::string SizeObstacle(long long width, long long height, Devices::EFormat format) {
    constexpr long long kMax = std::numeric_limits<std::int32_t>::max();
    const int bytes = Utilities::AFormatConvertor::BytesPerPixel(format);
    const std::string size = std::format("{} x {} pixels", width, height);
    if (width > kMax / std::max(bytes, 1) || height > kMax) return size + " are more than a picture can have";
    const auto total = static_cast<std::uint64_t>(width) * static_cast<std::uint64_t>(height);  // below 2^62
    if (total > Objects::ObjModel::BlockCeiling() / static_cast<std::uint64_t>(std::max(bytes, 1))) {
        return size + " are more than the memory of this machine holds";
    }
    return {};
}

}  // namespace Kavra::App
