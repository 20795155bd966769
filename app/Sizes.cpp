#include "Sizes.h"

#include <CLI/Error.hpp>

#include <charconv>

namespace Kavra::App {

std::pair<int, int> ParseSize(const std::string& text, int smallest) {
    const char* const end = text.data() + text.size();
    int width = 0;
    int height = 0;
    const auto first = std::from_chars(text.data(), end, width);
    bool good = first.ec == std::errc() && first.ptr != end && (*first.ptr == 'x' || *first.ptr == 'X');
    if (good) {
        const auto second = std::from_chars(first.ptr + 1, end, height);
        good = second.ec == std::errc() && second.ptr == end && width >= smallest && height >= smallest;
    }
    if (!good) throw CLI::ValidationError("--size", text + " is no size; write WIDTHxHEIGHT, as in 640x480");
    return {width, height};
}

}  // namespace Kavra::App
