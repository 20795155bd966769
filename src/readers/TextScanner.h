/// Values out of text, as the C library's `scanf` reads them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace Kavra::Devices {

/// Whether two texts are equal, ignoring the case of the letters A to Z.
bool EqualNoCase(std::string_view a, std::string_view b);

/// Reads values one after another. Each operation skips white space, line ends included, and takes what its `scanf`
/// conversion would take; nothing is the answer where that conversion fails, and the scanner then stays where it was.
/// Unlike `scanf` it never reads past the text and knows what to do with numbers that are too large.
class TextScanner {
public:
    /// The text stays its owner's.
    explicit TextScanner(std::string_view text) : mRest(text) {}

    /// "%d". A number beyond 32 bits becomes the nearest one that fits.
    std::optional<std::int32_t> Integer();

    /// "%lf", always with a point before the decimals. Numbers beyond the range become infinite or zero.
    std::optional<double> Real();

    /// "%s" with a width: a word, cut at `maximum` characters. Part of the scanner's text.
    std::optional<std::string_view> Word(std::size_t maximum);

    /// The rest of a line without the white space at its end, cut at `maximum` characters. Part of the scanner's text.
    std::optional<std::string_view> Line(std::size_t maximum);

private:
    std::string_view mRest;
};

}  // namespace Kavra::Devices
