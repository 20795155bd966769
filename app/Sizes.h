/// Sizes and places on the command line.
#pragma once

#include <kavra/devices/EFormat.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace Kavra::App {

/// Whole pixels from the top left corner.
struct Rect {
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;
};

/// What two numbers with an x between them are called, how they are written, and an example.
struct PairWords {
    std::string_view what;
    std::string_view form;
    std::string_view example;
};

/// "640x480" as two numbers, each `smallest` or more; throws `CLI::ValidationError`, said of `option`, for anything
/// else.
std::pair<int, int> ParsePair(const std::string& text, const std::string& option, int smallest, const PairWords& words);

/// The same for a width and a height.
std::pair<int, int> ParseSize(const std::string& text, int smallest, const std::string& option = "--size");

/// "640x480" as a box of which a side may be 0, but not both.
std::pair<int, int> ParseFit(const std::string& text);

/// "50%" or "12.5%" in millionths of the whole, 1 or more, up to a thousand times it.
long long ParsePercentage(const std::string& text, const std::string& option);

/// "10,20,640,480" as a rectangle of at least one pixel; throws `CLI::ValidationError` for anything else.
Rect ParseRect(const std::string& text, const std::string& option);

/// "10,-20" as x and y; nothing for anything else.
std::optional<std::pair<int, int>> ParsePosition(std::string_view text);

/// "500", "4G" or "4g" as a number of at least 1, where K stands for `kilo`, M and G for its second and third power;
/// throws `CLI::ValidationError` for anything else and for what 64 bits do not hold.
std::uint64_t ParseAmount(const std::string& text, std::uint64_t kilo, const std::string& option);

/// Why there can be no picture of this size; empty when there can: a row is described in 31 bits, and all of it has to
/// fit in memory.
std::string SizeObstacle(long long width, long long height, Devices::EFormat format);

}  // namespace Kavra::App
