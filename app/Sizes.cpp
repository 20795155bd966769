#include "Sizes.h"

#include <kavra/devices/AFormatConvertor.h>
#include <kavra/objects/ObjModel.h>

#include <CLI/Error.hpp>

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <format>
#include <limits>

namespace Kavra::App {
namespace {

/// `Count` numbers with one of `separators` between each two, and nothing else.
template <std::size_t Count>
std::optional<std::array<int, Count>> ParseNumbers(std::string_view text, std::string_view separators) {
    std::array<int, Count> numbers{};
    const char* at = text.data();
    const char* const end = at + text.size();
    for (std::size_t i = 0; i < Count; ++i) {
        if (i > 0) {
            if (at == end || !separators.contains(*at)) return std::nullopt;
            ++at;
        }
        const auto [next, error] = std::from_chars(at, end, numbers[i]);
        if (error != std::errc()) return std::nullopt;
        at = next;
    }
    return at == end ? std::optional(numbers) : std::nullopt;
}

}  // namespace

std::pair<int, int> ParseSize(const std::string& text, int smallest, const std::string& option) {
    const auto numbers = ParseNumbers<2>(text, "xX");
    if (!numbers || (*numbers)[0] < smallest || (*numbers)[1] < smallest) {
        throw CLI::ValidationError(option, text + " is no size; write WIDTHxHEIGHT, as in 640x480");
    }
    return {(*numbers)[0], (*numbers)[1]};
}

Rect ParseRect(const std::string& text, const std::string& option) {
    const auto numbers = ParseNumbers<4>(text, ",");
    if (!numbers || (*numbers)[2] < 1 || (*numbers)[3] < 1) {
        throw CLI::ValidationError(option, text + " is no rectangle; write X,Y,WIDTH,HEIGHT, as in 10,20,640,480");
    }
    return {(*numbers)[0], (*numbers)[1], (*numbers)[2], (*numbers)[3]};
}

std::optional<std::pair<int, int>> ParsePosition(std::string_view text) {
    const auto numbers = ParseNumbers<2>(text, ",");
    if (!numbers) return std::nullopt;
    return std::pair((*numbers)[0], (*numbers)[1]);
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
    constexpr long long kMost = std::numeric_limits<std::int32_t>::max();
    const int bytes = Utilities::AFormatConvertor::BytesPerPixel(format);
    const std::string size = std::format("{} x {} pixels", width, height);
    if (width > kMost / std::max(bytes, 1) || height > kMost) return size + " are more than a picture can have";
    const auto total = static_cast<std::uint64_t>(width) * static_cast<std::uint64_t>(height);  // below 2^62
    if (total > Objects::ObjModel::BlockCeiling() / static_cast<std::uint64_t>(std::max(bytes, 1))) {
        return size + " are more than the memory of this machine holds";
    }
    return {};
}

}  // namespace Kavra::App
