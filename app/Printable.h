/// Text from files, as it may be printed.
#pragma once

#include <string>
#include <string_view>

namespace Kavra::App {

/// UTF-8 text with nothing in it that a terminal obeys: line ends and tabs as \n, \r and \t, all other control
/// characters as \x1B or \u202E. Bytes that are no UTF-8 come as \xFF.
std::string Printable(std::string_view text);

/// The same, but bytes that are no UTF-8 stay as they are: names of files, and what is said of them, have their own.
std::string PrintableName(std::string_view name);

/// `Printable` of its first `maxBytes` bytes, with "..." where that is not all.
std::string Printable(std::string_view text, std::size_t maxBytes);

}  // namespace Kavra::App
