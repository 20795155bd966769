/// The text of a raster's header: a keyword and a value on each line.
#pragma once

#include "readers/TextScanner.h"

#include <optional>
#include <string_view>

namespace Kavra::Devices {

/// Looks values up by keyword.
///
/// A line has a keyword when it begins with it, in any case, whatever follows: "NCOLSX 5" has NCOLS. The first such
/// line counts. In a last line without a line feed the keyword may stand anywhere, then in its own case. Exactly one
/// character after the keyword is skipped, whatever it is, and spaces after that; the value begins there, possibly on a
/// later line. So "NCOLS=5", "NCOLS 5" and "NCOLS\t5" say 5, and "NCOLS15" says 5 as well. A NUL ends the text.
class HeaderText {
public:
    /// The text stays its owner's.
    explicit HeaderText(std::string_view text) : mText(text.substr(0, text.find('\0'))) {}

    /// What follows a keyword; nothing when the keyword is absent, or the very last thing in the text.
    std::optional<TextScanner> After(std::string_view keyword) const;

    std::optional<std::int32_t> Integer(std::string_view keyword) const;
    std::optional<double> Real(std::string_view keyword) const;
    /// A word, cut at `maximum` characters.
    std::optional<std::string_view> Word(std::string_view keyword, std::size_t maximum) const;
    /// The rest of the line, likewise cut.
    std::optional<std::string_view> Line(std::string_view keyword, std::size_t maximum) const;

private:
    std::string_view mText;
};

}  // namespace Kavra::Devices
